#include "keltrun2/analysis/segment_data.h"

#include <algorithm>
#include <map>
#include <optional>

#include "keltrun2/analysis/data_set_internal.h"
#include "keltrun2/model/class_data_internal.h"
#include "keltrun2/model/event_model.h"
#include "keltrun2/model/lap_data_internal.h"
#include "keltrun2/model/process_state.h"
#include "keltrun2/model/time_text.h"
#include "keltrun2/text/numbers.h"
#include "keltrun2/text/split.h"

namespace keltrun {
namespace {

// Sets the time at which the runner reached the first control of the run: their start time and the
// laps up to there.
void CopyStartTime(const clsLapData& runner, std::int32_t start, clsLapData& copy) {
  if (runner.StartTime()->Value() == 0) return;
  if (start == 0) {
    copy.SetStartTime(runner.StartTime());
    return;
  }
  DateTime time = runner.StartTime()->Value();
  for (std::int32_t leg = 1; leg <= start; ++leg) {
    const DateTime lap = LapDataInternal::Lap(runner, leg);
    if (lap > 0) time = Canonical(time + lap);
  }
  copy.StartTime()->SetValue(time);
}

// The result is the sum of the laps if the runner has all of them.
void CopyLaps(const clsLapData& runner, std::int32_t start, std::int32_t legs, clsLapData& copy) {
  DateTime sum = 0;
  bool complete = true;
  for (std::int32_t leg = 1; leg <= legs; ++leg) {
    const DateTime lap = LapDataInternal::Lap(runner, start + leg);
    copy.SetLap(leg, lap);
    complete = complete && lap > 0;
    if (lap > 0) sum = Canonical(sum + lap);
  }
  copy.SetResult(complete ? FormatTime(sum, "h:nn:ss", false) : "N/A");
}

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

// A record with only the legs of the run, which is in no class. It keeps the serial number.
std::shared_ptr<clsLapData> SegmentLap(const clsLapData& runner, std::int32_t start,
                                       std::int32_t legs) {
  auto copy = std::make_shared<clsLapData>();
  copy->Age = runner.Age;
  copy->SetClassName(runner.ClassName());
  copy->ClubName = runner.ClubName;
  copy->Ecard = runner.Ecard;
  copy->ID = runner.ID;
  copy->Rank = runner.Rank;
  copy->RankFix = runner.RankFix;
  copy->RunnerName = runner.RunnerName;
  copy->Seed = runner.Seed;
  LapDataInternal::SetSerialNum(*copy, runner.SerialNum());
  copy->Sex = runner.Sex;
  copy->Status = runner.Status;
  copy->Bib = runner.Bib;
  copy->ControlCard = runner.ControlCard;
  copy->GivenName = runner.GivenName;
  copy->FamilyName = runner.FamilyName;
  copy->Nationality = runner.Nationality;
  CopyStartTime(runner, start, *copy);
  CopyLaps(runner, start, legs, *copy);
  return copy;
}

template <typename Set>
std::shared_ptr<Set> Fill(const SegmentSet& segment, std::string_view sex) {
  auto set = std::make_shared<Set>();
  set->ControlCount = segment.ControlCount;
  if (!segment.TargetCourseTable.empty()) {  // the codes are the same in all of its courses
    const auto [course, start] = SplitAt(segment.TargetCourseTable.front(), "\t");
    DataSetInternal::SetCourse(*set, NumericLong(course), NumericLong(start));
  }
  // Courses with 50 controls can share 51 legs, but no record has a lap for the last one.
  const std::int32_t legs = std::min(segment.ControlCount + 1, clsLapData::kMostLegs);
  const auto model = CurrentModel("clsSegmentData");
  const auto starts = StartsOfCourses(segment);
  for (const std::string& target : segment.TargetClassList) {
    const std::size_t separator = target.rfind(';');  // a class name can contain one
    if (separator == std::string::npos) continue;
    const auto klass = model->ClassByName(std::string_view(target).substr(0, separator));
    if (!klass) continue;
    const std::int32_t start = NumericLong(std::string_view(target).substr(separator + 1));
    const bool has_several_courses = ClassDataInternal::RunnersOfCourses(*klass).size() > 1;
    for (const auto& runner : ClassDataInternal::Runners(*klass)) {
      if (!sex.empty() && runner->Sex != sex) continue;
      const auto at = StartFor(*klass, *runner, start, has_several_courses, starts);
      if (at) set->AddLap(SegmentLap(*runner, *at, legs));
    }
  }
  set->SetDataSetName(sex.empty() ? segment.SegmentName
                                  : segment.SegmentName + " - " + std::string(sex));
  return set;
}

}  // namespace

std::shared_ptr<clsAnalyzer> clsSegmentData::Analyzer(std::string_view SexOption) const {
  return Fill<clsAnalyzer>(*segment_, SexOption);
}

std::shared_ptr<clsResultsHolder> clsSegmentData::ResultsHolder(std::string_view SexOption) const {
  return Fill<clsResultsHolder>(*segment_, SexOption);
}

}  // namespace keltrun
