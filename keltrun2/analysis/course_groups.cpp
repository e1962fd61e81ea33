#include "keltrun2/analysis/course_groups.h"

#include <algorithm>
#include <map>

#include "keltrun2/analysis/analyzed_runner_data.h"
#include "keltrun2/model/class_data_internal.h"

namespace keltrun {
namespace {

constexpr std::int32_t kMostAnalyzedControls = clsAnalyzedRunnerData::kMostAnalyzedLegs - 1;

CourseGroup MakeGroup(const EventModel& model, const clsClassData& klass, std::int32_t number) {
  const auto course = number != 0 ? model.CourseByNumber(number) : nullptr;
  const bool is_of_class = number == klass.CourseNum;
  const std::int32_t controls =
      is_of_class || !course ? klass.ControlCount : course->ControlCount();
  CourseGroup group;
  group.klass = &klass;
  group.course_num = number;
  group.legs = std::clamp(controls, 0, kMostAnalyzedControls) + 1;
  if (course && course->ControlCount() == group.legs - 1) {
    group.pairs = LegPairs(model, number, 0, group.legs);
  }
  return group;
}

}  // namespace

std::vector<ControlPair> LegPairs(const EventModel& model, std::int32_t course_num,
                                  std::int32_t start, std::int32_t legs) {
  std::vector<ControlPair> pairs;
  const auto course = course_num != 0 ? model.CourseByNumber(course_num) : nullptr;
  if (!course || course->ControlCount() > clsCourseData::kMostControls) return pairs;
  const std::int32_t last = course->ControlCount() + 1;  // the finish
  if (start < 0 || start > last || legs < 1 || legs > last - start) return pairs;
  for (std::int32_t control = start; control < start + legs; ++control) {
    pairs.emplace_back(course->ControlNum(control), course->ControlNum(control + 1));
  }
  return pairs;
}

std::vector<CourseGroup> CourseGroups(const EventModel& model, const clsClassData& klass,
                                      std::size_t most) {
  std::vector<CourseGroup> groups = {MakeGroup(model, klass, klass.CourseNum)};
  std::map<std::int32_t, std::size_t> places = {{klass.CourseNum, 0}};
  const auto& runners = ClassDataInternal::Runners(klass);
  most = std::min(most, runners.size());
  for (std::size_t i = 0; i < most; ++i) {
    const std::int32_t number = ClassDataInternal::CourseOf(klass, *runners[i]);
    const auto [place, is_new] = places.try_emplace(number, groups.size());
    if (is_new) groups.push_back(MakeGroup(model, klass, number));
    groups[place->second].runners.push_back(runners[i]);
  }
  return groups;
}

std::vector<CourseGroup> CourseGroups(const EventModel& model) {
  std::vector<CourseGroup> groups;
  for (const auto& klass : model.Classes()) {
    for (CourseGroup& group : CourseGroups(model, *klass)) groups.push_back(std::move(group));
  }
  return groups;
}

}  // namespace keltrun
