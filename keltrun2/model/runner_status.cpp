#include "keltrun2/model/runner_status.h"

#include <algorithm>
#include <array>

namespace keltrun {
namespace {

// In the order of RunnerStatus.
constexpr std::array<std::string_view, 16> kNames = {
    "",        "OK",          "Finished",    "MissingPunch",       "Disqualified", "DidNotFinish",
    "Active",  "Inactive",    "OverTime",    "SportingWithdrawal", "NotCompeting", "Moved",
    "MovedUp", "DidNotStart", "DidNotEnter", "Cancelled",
};

}  // namespace

std::string_view RunnerStatusName(RunnerStatus Status) {
  const auto index = static_cast<std::size_t>(Status);
  return index < kNames.size() ? kNames[index] : kNames[0];
}

std::optional<RunnerStatus> RunnerStatusOfName(std::string_view Name) {
  const auto found = std::find(kNames.begin() + 1, kNames.end(), Name);
  if (found == kNames.end()) return std::nullopt;
  return static_cast<RunnerStatus>(found - kNames.begin());
}

}  // namespace keltrun
