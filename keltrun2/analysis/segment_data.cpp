#include "keltrun2/analysis/segment_data.h"

#include <algorithm>

#include "keltrun2/analysis/data_set_internal.h"
#include "keltrun2/analysis/segment_runs.h"
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

// A record with only the legs of the run, which is in no class. It keeps the serial number.
std::shared_ptr<clsLapData> SegmentLap(const clsLapData& runner, std::int32_t start,
                                       std::int32_t legs) {
  auto copy = std::make_shared<clsLapData>();
  copy->Age = runner.Age;
  LapDataInternal::ShareClassName(*copy, runner);
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
  for (const SegmentRun& run : RunsOfSegment(segment, *CurrentModel("clsSegmentData"))) {
    if (!sex.empty() && run.record->Sex != sex) continue;
    set->AddLap(SegmentLap(*run.record, run.legs_before, legs));
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
