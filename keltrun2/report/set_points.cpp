#include "keltrun2/report/set_points.h"

#include <algorithm>
#include <string_view>

#include "keltrun2/analysis/analyzer_internal.h"
#include "keltrun2/report/set_course.h"

namespace keltrun {
namespace {

constexpr std::string_view kStart = "S";
constexpr std::string_view kFinish = "F";
constexpr char kBetweenCodes = '-';  // in the names of segments

// The parts of the name of a segment; empty when it does not have that many.
std::vector<std::string> PointsOfName(std::string_view name, std::size_t count) {
  std::vector<std::string> points;
  for (std::size_t begin = 0; begin <= name.size();) {
    const std::size_t end = std::min(name.find(kBetweenCodes, begin), name.size());
    points.emplace_back(name.substr(begin, end - begin));
    begin = end + 1;
  }
  return points.size() == count ? points : std::vector<std::string>(count);
}

}  // namespace

std::vector<std::string> PointsOfSet(const EventModel& model, const clsAnalyzer& analyzer,
                                     DataSetKind kind) {
  const std::int32_t legs = AnalyzerInternal::LegCount(analyzer);
  const auto count = static_cast<std::size_t>(legs) + 1;
  if (kind == DataSetKind::kSegment) return PointsOfName(analyzer.DataSetName(), count);
  std::vector<std::string> points(count);
  points.front() = kStart;
  points.back() = kFinish;
  const auto course = CourseOfSet(model, analyzer, kind);
  for (std::int32_t i = 1; course && i < legs && i <= course->ControlCount(); ++i) {
    points[static_cast<std::size_t>(i)] = course->ControlCodeText(i);
  }
  return points;
}

}  // namespace keltrun
