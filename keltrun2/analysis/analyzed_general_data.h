// What the analysis computed for the legs of a data set.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "keltrun2/analysis/analyzed_runner_data.h"
#include "keltrun2/base/export.h"

namespace keltrun {

/// The figures of a data set, leg by leg. Legs are numbered from 1 to 51; index 0 exists but is
/// never filled. An index outside 0 to 51 raises subscript out of range (9). Every Execute makes a
/// new object, so an older one that was kept does not change.
class KELTRUN2_API clsAnalyzedGeneralData {
 public:
  /// The highest leg.
  static constexpr std::int32_t kMostAnalyzedLegs = clsAnalyzedRunnerData::kMostAnalyzedLegs;
  /// The number of positions in the lap order of a leg that are kept.
  static constexpr std::int32_t kMostUpperLaps = 6;

  /// Estimated difficulty of the leg; null at index 0. Valid as long as this object lives.
  const clsPercentValue* LegDifficulty(std::int32_t LegIndex) const;

  /// Whether there is a runner at the position (1 to 6) in the lap order of the leg. A position
  /// outside 0 to 6 raises subscript out of range (9).
  bool IsUpperLapExists(std::int32_t LegIndex, std::int32_t RankIndex) const;

  /// The reference lap: the mean of the three best valid laps (of fewer, if there are not three),
  /// in days; 0 when no runner has a valid lap.
  DateTime UpperLapAverage(std::int32_t LegIndex) const;

  /// Estimated share of the course on a leg: a factor, legs 1 to L sum to 1. Not a distance.
  float LegLength(std::int32_t LegIndex) const;

  /// Sum of the reference laps.
  DateTime UpperLapTotal() const { return upper_lap_total_; }

  /// Whether the laps of the leg count: false for the legs that clsAnalyzer::UntimedLegs leaves
  /// out. An untimed leg has no ranks and no reference lap, its share, difficulty and losses are 0,
  /// and it interrupts no split.
  bool IsTimed(std::int32_t LegIndex) const { return Leg(LegIndex).timed; }

  /// The runner at the position (1 to 6) in the lap order of the leg, or null. Raises the same
  /// error as IsUpperLapExists.
  std::shared_ptr<clsAnalyzedRunnerData> UpperLapObject(std::int32_t LegIndex,
                                                        std::int32_t RankIndex) const;

 private:
  friend class AnalyzedGeneralInternal;

  struct LegFigures {
    DateTime upper_lap_average = 0;
    float leg_length = 0;
    bool timed = true;
    clsPercentValue difficulty;
    std::array<std::shared_ptr<clsAnalyzedRunnerData>, kMostUpperLaps + 1> upper_laps;
  };

  const LegFigures& Leg(std::int32_t index) const;

  DateTime upper_lap_total_ = 0;
  std::array<LegFigures, kMostAnalyzedLegs + 1> legs_;
};

}  // namespace keltrun
