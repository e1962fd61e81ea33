// Keeps the event unchanged while it is analyzed.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "keltrun2/model/class_data_internal.h"
#include "keltrun2/model/event_model.h"
#include "keltrun2/model/lap_data_internal.h"

namespace keltrun {

/// Analyzing turns skipped legs at the end of a record into missing ones. Publishing must leave the
/// event as it was, so the skipped legs are put back when this goes out of scope.
class SkippedLegsKeeper {
 public:
  explicit SkippedLegsKeeper(const EventModel& model) {
    for (const auto& klass : model.Classes()) {
      for (const auto& runner : ClassDataInternal::Runners(*klass)) Remember(runner);
    }
  }
  ~SkippedLegsKeeper() {
    for (const auto& [runner, leg] : skipped_) LapDataInternal::ReplaceLap(*runner, leg, kTimeSkip);
  }
  SkippedLegsKeeper(const SkippedLegsKeeper&) = delete;
  SkippedLegsKeeper& operator=(const SkippedLegsKeeper&) = delete;

 private:
  void Remember(const std::shared_ptr<clsLapData>& runner) {
    for (std::int32_t leg = 1; leg <= LapDataInternal::HeldLegs(*runner); ++leg) {
      if (LapDataInternal::Lap(*runner, leg) == kTimeSkip) skipped_.emplace_back(runner, leg);
    }
  }

  std::vector<std::pair<std::shared_ptr<clsLapData>, std::int32_t>> skipped_;
};

}  // namespace keltrun
