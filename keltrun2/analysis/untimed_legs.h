// Legs that were not timed: a road crossing, a control station that failed.
#pragma once

#include <bitset>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/analysis/analyzed_runner_data.h"
#include "keltrun2/analysis/course_groups.h"
#include "keltrun2/model/event_model.h"

namespace keltrun {

/// Legs of a data set, by number from 1.
using LegSet = std::bitset<clsAnalyzedRunnerData::kMostAnalyzedLegs + 1>;

/// Which legs count as untimed: none, those that are found, or those of a list.
class UntimedLegsChoice {
 public:
  /// "none", "auto", or the numbers of legs from 1 to 51, "8,15". nullopt for any other text.
  static std::optional<UntimedLegsChoice> Parse(std::string_view text);

  /// The text from which the choice is read.
  std::string ToString() const;

  bool IsAutomatic() const { return automatic_; }
  /// The legs of the list; empty for "none" and "auto".
  const LegSet& Legs() const { return legs_; }

 private:
  bool automatic_ = false;
  LegSet legs_;
};

/// The choice of a text that a host gave to `member`. Raises invalid call (5) for a wrong one.
UntimedLegsChoice CheckedUntimedLegs(std::string_view text, const char* member);

/// The text of legs, "8,15"; "none" for none.
std::string LegNumbers(const LegSet& legs);

/// Whether a lap of a record says that no time ran: no data, or the millisecond as which a lap of
/// 0 s is stored.
bool IsZeroLap(DateTime lap);

/// What the runners of a data set, or of an event, say about one leg.
struct ZeroLaps {
  std::int32_t runners = 0;  // who have a lap after the leg
  std::int32_t zeros = 0;    // those of them who show 0 on it

  /// At least half of them show 0, from three such runners on.
  bool SaysUntimed() const { return zeros >= kFewestZeros && 2 * zeros >= runners; }
  /// Whether the runners leave room for another opinion.
  bool IsInDoubt() const { return zeros > 0 || runners < kFewestZeros; }

  static constexpr std::int32_t kFewestZeros = 3;
};

/// Adds the laps of a record to the counts of legs 1 to the size of `legs`.
void CountZeroLaps(const clsLapData& record, std::vector<ZeroLaps>& legs);

/// The untimed legs of a data set, from what its own runners say (leg 1 first): those on which at
/// least half of the runners who have a lap after them show 0, from three such runners on, and
/// those whose pair of controls is untimed in the event as a whole. `pairs` are the pairs of the
/// legs, empty if not known, and `model` is the event or null. It is asked only about legs on which
/// the own runners are in doubt, and only up to kMostAskedRunners of it, so that a call takes a
/// limited time.
LegSet FindUntimedLegs(const std::vector<ZeroLaps>& own, const std::vector<ControlPair>& pairs,
                       const EventModel* model);
inline constexpr std::int32_t kMostAskedRunners = 2000;

/// The untimed legs of all groups of an event by the same rule, for which everybody is asked.
std::vector<LegSet> FindUntimedLegs(const std::vector<CourseGroup>& groups);

}  // namespace keltrun
