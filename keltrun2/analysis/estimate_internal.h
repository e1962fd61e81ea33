// Makes the estimate of an event.
#pragma once

#include <memory>
#include <vector>

#include "keltrun2/analysis/course_groups.h"
#include "keltrun2/analysis/estimate.h"
#include "keltrun2/analysis/lap_estimate.h"
#include "keltrun2/analysis/untimed_legs.h"
#include "keltrun2/model/event_model.h"

namespace keltrun {

class EstimateInternal {
 public:
  /// The estimate of all classes of the event.
  static std::shared_ptr<clsEstimate> Make(const EventModel& model,
                                           const UntimedLegsChoice& untimed);

 private:
  static std::shared_ptr<clsEstimatedClassData> MakeClass(const CourseGroup& group,
                                                          const LegSet& untimed,
                                                          const ClassEstimate& figures);
  static std::shared_ptr<clsEstimatedRunnerData> MakeRunner(
      const std::shared_ptr<clsLapData>& record, const RunnerFigures& figures,
      const LapFigures* laps, std::size_t legs, const LegSet& untimed);
};

/// The untimed legs of every group by a choice. The legs of a list are those of every group.
std::vector<LegSet> UntimedLegsOf(const std::vector<CourseGroup>& groups,
                                  const UntimedLegsChoice& choice);

}  // namespace keltrun
