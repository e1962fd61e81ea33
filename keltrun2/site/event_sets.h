// The data sets of a whole event: classes, courses that classes share, segments.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "keltrun2/analysis/data_set.h"
#include "keltrun2/model/event_model.h"
#include "keltrun2/report/report_data.h"

namespace keltrun {

/// Finds the runners of classes and courses of an event.
class EventSets {
 public:
  EventSets() = default;
  explicit EventSets(const EventModel& model);

  /// The class of a choice, or all classes of its course.
  std::vector<std::shared_ptr<clsClassData>> ClassesOf(const ClassAndCourseChoice& choice) const;

  /// Fills a data set with the runners of a choice, whose classes are given.
  void AddRunners(DataSet& set, const ClassAndCourseChoice& choice,
                  const std::vector<std::shared_ptr<clsClassData>>& classes) const;

 private:
  const EventModel* model_ = nullptr;
  std::unordered_map<std::int32_t, std::vector<std::shared_ptr<clsClassData>>> classes_of_course_;
};

/// Takes the step that makes the set of a name. A step that throws must not end the export.
using MakeSet = std::function<void(const std::string& name, const std::function<void()>& step)>;

/// Everything that a reader of the report can choose: classes, other courses that runners of them
/// had, courses that classes share, and the first segments.
std::vector<ReportPageSet> ReportSets(const EventModel& model, const std::string& untimed_legs,
                                      const MakeSet& make_set);

}  // namespace keltrun
