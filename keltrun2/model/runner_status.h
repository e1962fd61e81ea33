// How a runner's race ended, in the terms of IOF XML.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "keltrun2/base/export.h"

namespace keltrun {

/// How a runner's race ended. The names are those of the result status in IOF XML 3.0.
enum class RunnerStatus : std::int32_t {
  kUnknown,             ///< The source does not say.
  kOk,                  ///< Finished; the time counts.
  kFinished,            ///< Finished; the result has not been checked yet.
  kMissingPunch,        ///< A control was missed or punched out of order.
  kDisqualified,        ///< Disqualified for any other reason.
  kDidNotFinish,        ///< Started but did not finish.
  kActive,              ///< On the course.
  kInactive,            ///< Has not started yet.
  kOverTime,            ///< Finished after the time limit.
  kSportingWithdrawal,  ///< Gave up to help somebody else.
  kNotCompeting,        ///< Ran outside the competition: a time, but no rank.
  kMoved,               ///< Moved to another class.
  kMovedUp,             ///< Moved to a better class.
  kDidNotStart,         ///< Did not start.
  kDidNotEnter,         ///< Did not enter the start list.
  kCancelled,           ///< Withdrew before the race.
};

/// The name of a status in IOF XML 3.0, such as "MissingPunch"; empty for kUnknown.
KELTRUN2_API std::string_view RunnerStatusName(RunnerStatus Status);

/// The status with a name as RunnerStatusName gives it; nullopt for any other text.
KELTRUN2_API std::optional<RunnerStatus> RunnerStatusOfName(std::string_view Name);

}  // namespace keltrun
