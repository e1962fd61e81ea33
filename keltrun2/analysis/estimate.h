// What the laps of an event would have been without mistakes.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/base/export.h"
#include "keltrun2/model/lap_data.h"

namespace keltrun {

/// How likely it is that a mistake cost more than 20 s. The shape of noise in real laps is not
/// known well enough to say it in percent.
enum class MistakeWord : std::int32_t {
  kNone,     ///< Nothing is said: the probability is below 0.2 or not known.
  kPerhaps,  ///< From 0.2 on.
  kLikely,   ///< From 0.5 on.
  kSure,     ///< From 0.95 on.
};

/// The word in English: "perhaps", "likely", "sure"; empty for kNone.
KELTRUN2_API std::string_view MistakeWordName(MistakeWord Word);

/// The estimate for one runner. Legs are numbered from 1 to 51; an index outside 0 to 51 raises
/// subscript out of range (9). Times are in days. The figures of a lap are 0 where IsKnown is
/// false: without a valid lap, on an untimed leg, and where too few other laps tell anything about
/// it. Each lap is compared with what the other runners and the runner's other legs say.
class KELTRUN2_API clsEstimatedRunnerData {
 public:
  clsEstimatedRunnerData(const clsEstimatedRunnerData&) = delete;
  clsEstimatedRunnerData& operator=(const clsEstimatedRunnerData&) = delete;

  /// The runner record itself, not a copy.
  const std::shared_ptr<clsLapData>& OtherData() const { return other_data_; }
  /// The record's serial number, which no other runner of the event has.
  std::int32_t SerialNum() const { return other_data_->SerialNum(); }
  /// The record's name of the runner.
  const std::string& RunnerName() const { return other_data_->RunnerName; }

  /// How many times as long as the mean of the three fastest of the class the runner needs without
  /// mistakes: 1.2 is 20 percent slower. 0 for a runner without laps.
  double Speed() const { return speed_; }
  /// The standard error of Speed, as a factor of it.
  double SpeedError() const { return speed_error_; }
  /// How much the runner's laps vary without mistakes: the standard deviation as a factor of the
  /// normal time. Only a rough figure.
  double Spread() const { return spread_; }
  /// The time that mistakes cost, on all legs together, in days: its expected value.
  DateTime TimeLost() const { return time_lost_; }
  /// The lower end of the range in which the time that mistakes really cost lies for nine of ten
  /// runners, in days; never negative. The range is one for all legs together, and wide: mistakes
  /// of a few seconds cannot be told from ordinary variation.
  DateTime LeastTimeLost() const { return least_time_lost_; }
  /// The upper end of that range, in days.
  DateTime LargestTimeLost() const { return largest_time_lost_; }
  /// The number of legs with IsMistake.
  std::int32_t MistakeCount() const { return mistake_count_; }
  /// The mean time that mistakes cost on the legs with IsMistake, in days; 0 if there are none.
  DateTime MistakeSize() const { return mistake_size_; }

  /// Number of legs of the runner's course, 1 to 51.
  std::int32_t LegCount() const { return static_cast<std::int32_t>(legs_.size()); }
  /// Whether the leg was timed. An untimed leg has no figures; false above LegCount and for 0.
  bool IsTimed(std::int32_t Index) const { return Leg(Index).timed; }
  /// Whether there are figures for the lap.
  bool IsKnown(std::int32_t Index) const { return Leg(Index).known; }
  /// What the runner needs for the leg without a mistake.
  DateTime NormalTime(std::int32_t Index) const { return Leg(Index).normal_time; }
  /// The lap minus the normal time; negative for a leg that went better.
  DateTime Loss(std::int32_t Index) const { return Leg(Index).loss; }
  /// The lower end of the range that has nine of ten losses of laps.
  DateTime LeastLoss(std::int32_t Index) const { return Leg(Index).least_loss; }
  /// The upper end of the range that has nine of ten losses of laps.
  DateTime LargestLoss(std::int32_t Index) const { return Leg(Index).largest_loss; }
  /// The expected value of the time that mistakes cost on the leg. It is less than the loss where
  /// the loss may be ordinary variation, and never negative.
  DateTime MistakeTime(std::int32_t Index) const { return Leg(Index).mistake_time; }
  /// The probability that a mistake cost more than 20 s, 0 to 1. Show MistakeWord instead.
  double MistakeChance(std::int32_t Index) const { return Leg(Index).mistake_chance; }
  /// MistakeChance as a word.
  keltrun::MistakeWord MistakeWord(std::int32_t Index) const;
  /// Whether a mistake of more than 20 s is more likely than not.
  bool IsMistake(std::int32_t Index) const;

 private:
  friend class EstimateInternal;

  struct LegFigures {
    DateTime normal_time = 0;
    DateTime loss = 0;
    DateTime least_loss = 0;
    DateTime largest_loss = 0;
    DateTime mistake_time = 0;
    double mistake_chance = 0;
    bool known = false;
    bool timed = false;
  };

  explicit clsEstimatedRunnerData(std::shared_ptr<clsLapData> record)
      : other_data_(std::move(record)) {}

  const LegFigures& Leg(std::int32_t index) const;

  std::shared_ptr<clsLapData> other_data_;
  double speed_ = 0;
  double speed_error_ = 0;
  double spread_ = 0;
  DateTime time_lost_ = 0;
  DateTime least_time_lost_ = 0;
  DateTime largest_time_lost_ = 0;
  DateTime mistake_size_ = 0;
  std::int32_t mistake_count_ = 0;
  std::vector<LegFigures> legs_;  // leg 1 first
};

/// The estimate for one class: its runners, and the legs of its course as clsEstimatedRunnerData
/// numbers them. With forks, runners whose courses share at least half of their legs with that of
/// the class are estimated together with it, others with those of the class who had the same
/// course; the legs of other forks have figures only with their runners.
class KELTRUN2_API clsEstimatedClassData {
 public:
  clsEstimatedClassData(const clsEstimatedClassData&) = delete;
  clsEstimatedClassData& operator=(const clsEstimatedClassData&) = delete;

  /// Name of the class when the estimate was made.
  const std::string& ClassName() const { return class_name_; }
  /// Number of legs, 1 to 51.
  std::int32_t LegCount() const { return static_cast<std::int32_t>(legs_.size()); }

  /// Whether the leg was timed. An untimed leg has no figures; false above LegCount and for 0.
  bool IsTimed(std::int32_t LegIndex) const { return Leg(LegIndex).timed; }
  /// What the leg takes without a mistake, for the mean of the three fastest runners of the class,
  /// in days; 0 when nobody has a lap.
  DateTime NormalTime(std::int32_t LegIndex) const { return Leg(LegIndex).normal_time; }
  /// How much the laps without mistakes vary on the leg, compared with the other legs: 1 is usual.
  double Spread(std::int32_t LegIndex) const { return Leg(LegIndex).spread; }
  /// How often mistakes happen on the leg, compared with the other legs: 1 is usual.
  double MistakeRate(std::int32_t LegIndex) const { return Leg(LegIndex).mistake_rate; }

  /// Number of runners.
  std::int32_t Count() const { return static_cast<std::int32_t>(runners_.size()); }
  /// The runner at a position, in the order of the class; null outside 1 to Count.
  std::shared_ptr<clsEstimatedRunnerData> Item(std::int32_t Index) const;

 private:
  friend class EstimateInternal;

  struct LegFigures {
    DateTime normal_time = 0;
    double spread = 0;
    double mistake_rate = 0;
    bool timed = false;
  };

  clsEstimatedClassData() = default;

  const LegFigures& Leg(std::int32_t index) const;

  std::string class_name_;
  std::vector<LegFigures> legs_;  // leg 1 first
  std::vector<std::shared_ptr<clsEstimatedRunnerData>> runners_;
};

/// What every lap of the event would have been without mistakes, and how likely mistakes are. All
/// classes are estimated at once, because those that run between the same two controls say more
/// about a leg together. docs/analysis.md has the method, and when not to trust it.
///
///     auto estimate = root->NewEstimate();
///     auto klass = estimate->ClassData("M21A");
///     for (int i = 1; i <= klass->Count(); ++i) show(*klass->Item(i));
///
/// The estimate is that of the event when it was made; later changes do not show in it.
class KELTRUN2_API clsEstimate {
 public:
  clsEstimate(const clsEstimate&) = delete;
  clsEstimate& operator=(const clsEstimate&) = delete;

  /// Number of classes.
  std::int32_t ClassCount() const { return static_cast<std::int32_t>(classes_.size()); }
  /// The class at a position, from 1, in the order of the event; null when there is none.
  std::shared_ptr<clsEstimatedClassData> ClassData(std::int32_t ClassID) const;
  /// The class with this name, without regard to letter case; null when there is none.
  std::shared_ptr<clsEstimatedClassData> ClassData(std::string_view ClassID) const;
  /// The runner with this serial number; null when there is none.
  std::shared_ptr<clsEstimatedRunnerData> RunnerData(std::int32_t SerialNum) const;

 private:
  friend class EstimateInternal;

  clsEstimate() = default;

  std::vector<std::shared_ptr<clsEstimatedClassData>> classes_;
  std::vector<std::shared_ptr<clsEstimatedRunnerData>> by_serial_;  // in the order of the numbers
};

}  // namespace keltrun
