#include "keltrun2/analysis/segment_runs.h"

#include <map>
#include <optional>

#include "keltrun2/model/class_data_internal.h"
#include "keltrun2/model/lap_data_internal.h"
#include "keltrun2/text/numbers.h"

namespace keltrun {
namespace {

// The legs after which the run begins, for each course that has it.
std::map<std::int32_t, std::int32_t> StartsOfCourses(const SegmentSet& segment) {
  std::map<std::int32_t, std::int32_t> starts;
  for (const std::string& target : segment.TargetCourseTable) {
    const std::size_t separator = target.find('\t');
    if (separator == std::string::npos) continue;
    starts.emplace(NumericLong(std::string_view(target).substr(0, separator)),
                   NumericLong(std::string_view(target).substr(separator + 1)));
  }
  return starts;
}

// Where the run begins for a runner of a class that is listed with `start`; nullopt when their
// course does not have it. The list has a class once, whichever of its runners' courses has the
// run.
std::optional<std::int32_t> StartFor(const clsClassData& klass, const clsLapData& runner,
                                     std::int32_t start, bool has_several_courses,
                                     const std::map<std::int32_t, std::int32_t>& starts) {
  if (!has_several_courses) return start;
  const auto found = starts.find(ClassDataInternal::CourseOf(klass, runner));
  if (found == starts.end()) return std::nullopt;
  return found->second;
}

}  // namespace

std::vector<SegmentRun> RunsOfSegment(const SegmentSet& segment, const EventModel& model) {
  std::vector<SegmentRun> runs;
  const auto starts = StartsOfCourses(segment);
  for (const std::string& target : segment.TargetClassList) {
    const std::size_t separator = target.rfind(';');  // a class name can contain one
    if (separator == std::string::npos) continue;
    const auto klass = model.ClassByName(std::string_view(target).substr(0, separator));
    if (!klass) continue;
    const std::int32_t start = NumericLong(std::string_view(target).substr(separator + 1));
    const bool has_several_courses = ClassDataInternal::RunnersOfCourses(*klass).size() > 1;
    for (const auto& runner : ClassDataInternal::Runners(*klass)) {
      const auto at = StartFor(*klass, *runner, start, has_several_courses, starts);
      if (at) runs.push_back({runner.get(), *at});
    }
  }
  return runs;
}

std::unordered_map<std::int32_t, SegmentRun> RunsBySerialNum(std::string_view segment_name,
                                                             const EventModel& model) {
  std::unordered_map<std::int32_t, SegmentRun> by_serial;
  for (const auto& segment : model.Segments) {
    if (segment->SegmentName != segment_name) continue;
    for (const SegmentRun& run : RunsOfSegment(*segment, model)) {
      by_serial.emplace(run.record->SerialNum(), run);
    }
    break;
  }
  return by_serial;
}

}  // namespace keltrun
