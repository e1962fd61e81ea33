#include "keltrun2/report/json.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string_view>

#include "keltrun2/analysis/analyzer_internal.h"
#include "keltrun2/analysis/event_remarks.h"
#include "keltrun2/analysis/leg_facts.h"
#include "keltrun2/base/version.h"
#include "keltrun2/config/leg_labels.h"
#include "keltrun2/model/class_data_internal.h"
#include "keltrun2/model/lap_data_internal.h"
#include "keltrun2/model/result_status.h"
#include "keltrun2/model/time_values_internal.h"
#include "keltrun2/report/json_writer.h"
#include "keltrun2/report/set_course.h"
#include "keltrun2/report/set_points.h"
#include "keltrun2/text/numbers.h"

namespace keltrun {
namespace {

constexpr std::int32_t kFormatVersion = 1;

constexpr std::string_view kDatePattern = "yyyy-mm-dd";
constexpr std::string_view kDateTimePattern = "yyyy-mm-dd hh:nn:ss";

// An array that lists `items`, one per line.
template <typename Items, typename WriteItem>
void WriteLines(JsonWriter& json, std::string_view key, const Items& items, WriteItem write_item) {
  json.NewLine();
  json.BeginArray(key);
  for (const auto& item : items) {
    json.NewLine();
    json.BeginObject();
    write_item(item);
    json.EndObject();
    json.NewLine();
  }
  json.EndArray();
}

void WriteTexts(JsonWriter& json, std::string_view key, const std::vector<std::string>& texts) {
  json.BeginArray(key);
  for (const std::string& text : texts) json.Text(text);
  json.EndArray();
}

void WriteEvent(JsonWriter& json, const clsEventData& event) {
  json.NewLine();
  json.BeginObject("event");
  json.Text("name", event.EventName);
  json.Date("date", event.EventDate()->Value(), kDatePattern);
  json.Text("terrain", event.Terrain);
  json.Text("memo", event.Memo);
  json.Text("site", event.OfficialSite);
  json.EndObject();
}

void BeginDocument(JsonWriter& json, std::string_view format, const EventModel& model) {
  json.BeginObject();
  json.Text("format", format);
  json.Integer("version", kFormatVersion);
  json.Text("generator", "Keltrun " + VersionText(false));
  WriteEvent(json, *model.Event);
  if (model.Corrections.empty()) return;
  json.NewLine();
  WriteTexts(json, "corrections", model.Corrections);
}

void EndDocument(JsonWriter& json, std::string& out) {
  json.EndObject();
  out += '\n';
}

void WriteSetHead(JsonWriter& json, const DataSet& set, DataSetKind kind,
                  std::string_view class_info) {
  json.Text("name", set.DataSetName());
  json.Text("fileName", set.DataSetFileName);
  json.Text("kind", KindWord(kind));
  json.Bool("mix", set.DataSetIsMix);
  json.Integer("controls",
               std::clamp(set.ControlCount, 0, clsAnalyzedRunnerData::kMostAnalyzedLegs - 1));
  json.Integer("length", set.Length);
  json.Integer("climb", set.Climb);
  json.Integer("cutOffRank", set.CutOffRank);
  json.Text("classInfo", class_info);
  json.Integer("leftOut", set.LeftOutCount());
}

// The texts of the codes, if some of them are not numbers.
void WriteCodeTexts(JsonWriter& json, const clsCourseData& course, std::int32_t count) {
  bool any = false;
  for (std::int32_t i = 1; i <= count; ++i) any = any || course.HasCodeText(i);
  if (!any) return;
  WriteNumbered(json, "codeTexts", count,
                [&](std::int32_t control) { json.Text(course.ControlCodeText(control)); });
}

void WriteCodes(JsonWriter& json, const clsCourseData& course, std::int32_t most) {
  const std::int32_t count = std::min({most, course.ControlCount(), clsCourseData::kMostControls});
  WriteNumbered(json, "codes", count,
                [&](std::int32_t control) { json.Integer(course.ControlNum(control)); });
  WriteCodeTexts(json, course, count);
}

// What both kinds of document say about a runner's record.
void WriteRecord(JsonWriter& json, const clsLapData& record) {
  json.Integer("serial", record.SerialNum());
  json.Text("name", record.RunnerName);
  json.Text("club", record.ClubName);
  json.Text("class", record.ClassName());
  json.Integer("id", record.ID);
  json.Integer("ecard", record.Ecard);
  json.Text("competitorId", record.CompetitorId);
  json.Text("sex", record.Sex);
  json.Text("age", record.Age);
  json.Text("seed", record.Seed);
  json.Text("bib", record.Bib);
  json.Text("card", record.ControlCard);
  json.Text("givenName", record.GivenName);
  json.Text("familyName", record.FamilyName);
  json.Text("nationality", record.Nationality);
  json.Text("status", RunnerStatusName(record.Status));
  json.Text("outcome", OutcomeCode(record.Status, record.Result()));
  json.Integer("course", record.CourseNum);
  json.TimeOrNull("start", record.StartTime()->Value());
}

// The result as a time and how far it is behind the first one of the list; `best` becomes that.
void WriteTimeAndBehind(JsonWriter& json, std::string_view result, std::optional<DateTime>& best) {
  const auto time = TotalTime(result);
  if (!time) {
    json.Null("time");
    return json.Null("behind");
  }
  if (!best) best = time;
  json.Time("time", *time);
  json.Time("behind", *time - *best);
}

// The runners whom a data set is about, also those without laps, who are in no analysis.
template <typename Visit>
void ForEachRunner(const EventModel& model, const clsAnalyzer& analyzer, DataSetKind kind,
                   const clsCourseData* course, Visit visit) {
  if (kind == DataSetKind::kSegment || (kind == DataSetKind::kCourse && course == nullptr)) {
    for (const auto& runner : AnalyzerInternal::Selected(analyzer)) visit(*runner->OtherData());
    return;
  }
  for (const auto& klass : model.Classes()) {
    if (kind == DataSetKind::kClass && klass->ClassName() != analyzer.DataSetName()) continue;
    for (const auto& record : ClassDataInternal::Runners(*klass)) {
      if (kind == DataSetKind::kClass ||
          ClassDataInternal::CourseOf(*klass, *record) == course->CourseIndex()) {
        visit(*record);
      }
    }
  }
}

// Writes one analysis. Legs run from 1 to legs_.
class AnalysisDocument {
 public:
  AnalysisDocument(JsonWriter& json, const EventModel& model, const clsAnalyzer& analyzer,
                   const clsEstimate* estimate)
      : json_(json),
        model_(model),
        analyzer_(analyzer),
        estimate_(estimate),
        legs_(AnalyzerInternal::LegCount(analyzer)) {}

  void WriteSet(DataSetKind kind, const clsCourseData* course) {
    json_.NewLine();
    json_.BeginObject("set");
    WriteSetHead(json_, analyzer_, kind, analyzer_.ClassInfo());
    WriteCodesOrNull(course);
    WriteLegs("legLabels", [this](std::int32_t leg) {
      json_.Text(LegLabel(analyzer_.ControlCount, true, leg));
    });
    WriteTexts(json_, "points", PointsOfSet(model_, analyzer_, kind));
    WriteCounts(kind, course);
    json_.EndObject();
  }

  void WriteGeneral() {
    const clsAnalyzedGeneralData& general = *analyzer_.GeneralData();
    json_.NewLine();
    json_.BeginObject("general");
    json_.Time("upperLapTotal", general.UpperLapTotal());
    WriteLegs("upperLapAverage", [&](auto leg) { json_.Time(general.UpperLapAverage(leg)); });
    WriteLegs("legLength", [&](auto leg) { json_.Factor(general.LegLength(leg)); });
    WriteLegs("difficulty", [&](auto leg) { json_.Factor(general.LegDifficulty(leg)->Value()); });
    WriteLegs("timed", [&](auto leg) { json_.Bool(general.IsTimed(leg)); });
    WriteLegs("upper", [&](auto leg) { WriteUpperRunners(general, leg); });
    WriteLegFacts();
    WriteLegEstimates();
    json_.EndObject();
  }

  void WriteRunners() {
    WriteLines(json_, "runners", AnalyzerInternal::Selected(analyzer_),
               [this](const auto& runner) { WriteRunner(*runner); });
  }

 private:
  template <typename WriteLeg>
  void WriteLegs(std::string_view key, WriteLeg write_leg) {
    WriteNumbered(json_, key, legs_, write_leg);
  }

  void WriteCodesOrNull(const clsCourseData* course) {
    if (course == nullptr) return json_.Null("codes");
    WriteCodes(json_, *course, analyzer_.ControlCount);
  }

  void WriteUpperRunners(const clsAnalyzedGeneralData& general, std::int32_t leg) {
    json_.BeginArray();
    for (std::int32_t rank = 1; rank <= clsAnalyzedGeneralData::kMostUpperLaps; ++rank) {
      const auto runner = general.UpperLapObject(leg, rank);
      if (!runner) break;
      json_.Integer(runner->SerialNum());
    }
    json_.EndArray();
  }

  void WriteCounts(DataSetKind kind, const clsCourseData* course) {
    std::int32_t starters = 0;
    std::int32_t finishers = 0;
    ForEachRunner(model_, analyzer_, kind, course, [&](const clsLapData& record) {
      if (OutcomeCode(record.Status, record.Result()) != "dns") ++starters;
      if (IsFinished(record.Result())) ++finishers;
    });
    json_.Integer("starters", starters);
    json_.Integer("finishers", finishers);
  }

  void WriteLegFacts() {
    json_.BeginArray("legs");
    for (const LegFacts& leg : FactsOfLegs(analyzer_, estimate_)) {
      json_.BeginObject();
      json_.Integer("laps", leg.laps);
      json_.Integer("mistakes", leg.mistakes);
      json_.Time("cost", leg.cost);
      json_.Time("decisive", leg.decisive);
      json_.EndObject();
    }
    json_.EndArray();
  }

  // The legs of a course have figures in each of its classes.
  void WriteLegEstimates() {
    if (estimate_ == nullptr) return;
    const auto klass =
        analyzer_.DataSetIsMix ? nullptr : estimate_->ClassData(analyzer_.DataSetName());
    if (!klass) return json_.Null("estimate");
    json_.BeginObject("estimate");
    WriteLegs("normalTime", [&](auto leg) { json_.MarkedTime(klass->NormalTime(leg)); });
    WriteLegs("spread", [&](auto leg) { json_.Factor(klass->Spread(leg)); });
    WriteLegs("mistakeRate", [&](auto leg) { json_.Factor(klass->MistakeRate(leg)); });
    json_.EndObject();
  }

  void WriteEstimate(const clsAnalyzedRunnerData& runner) {
    if (estimate_ == nullptr) return;
    const auto estimated = estimate_->RunnerData(runner.SerialNum());
    if (!estimated || estimated->Speed() == 0) return json_.Null("estimate");
    const clsEstimatedRunnerData& figures = *estimated;
    json_.BeginObject("estimate");
    json_.Factor("speed", figures.Speed());
    json_.Factor("speedError", figures.SpeedError());
    json_.Factor("spread", figures.Spread());
    json_.Time("timeLost", figures.TimeLost());
    json_.Time("leastTimeLost", figures.LeastTimeLost());
    json_.Time("largestTimeLost", figures.LargestTimeLost());
    json_.Integer("mistakes", figures.MistakeCount());
    json_.Time("mistakeSize", figures.MistakeSize());
    const auto write_known = [&](std::string_view key, auto write) {
      WriteLegs(key, [&](auto leg) { figures.IsKnown(leg) ? write(leg) : json_.Null(); });
    };
    write_known("normalTime", [&](auto leg) { json_.Time(figures.NormalTime(leg)); });
    write_known("loss", [&](auto leg) { json_.Time(figures.Loss(leg)); });
    write_known("leastLoss", [&](auto leg) { json_.Time(figures.LeastLoss(leg)); });
    write_known("largestLoss", [&](auto leg) { json_.Time(figures.LargestLoss(leg)); });
    write_known("mistakeTime", [&](auto leg) { json_.Time(figures.MistakeTime(leg)); });
    write_known("mistakeChance", [&](auto leg) { json_.Factor(figures.MistakeChance(leg)); });
    write_known("mistake",
                [&](auto leg) { json_.Text(MistakeWordName(figures.MistakeWord(leg))); });
    json_.EndObject();
  }

  void WriteRunner(const clsAnalyzedRunnerData& runner) {
    WriteRecord(json_, *runner.OtherData());
    json_.Text("result", runner.Result());
    json_.Text("officialRank", runner.ResultRank());
    json_.Text("rank", runner.Rank());
    json_.Text("rankInDataSet", runner.RankInDataSet());
    WriteTimeAndBehind(json_, runner.Result(), best_);
    WriteTimes(runner);
    WriteRanks(runner);
    WriteRanges(runner);
    WriteRelatives(runner);
    WriteMissTimes(runner);
    WriteFigures(runner);
    WriteEstimate(runner);
  }

  void WriteTimes(const clsAnalyzedRunnerData& runner) {
    WriteLegs("lap", [&](auto leg) { json_.MarkedTime(runner.LapTime(leg)); });
    WriteLegs("split", [&](auto leg) { json_.MarkedTime(runner.SplitTime(leg)); });
    WriteLegs("modifiedLap", [&](auto leg) { json_.Time(runner.ModifiedLapTime(leg)); });
    WriteLegs("modifiedSplit", [&](auto leg) { json_.Time(runner.ModifiedSplitTime(leg)); });
  }

  void WriteRanks(const clsAnalyzedRunnerData& runner) {
    WriteLegs("lapRank", [&](auto leg) { json_.Integer(runner.LapRank(leg)); });
    WriteLegs("splitRank", [&](auto leg) { json_.Integer(runner.SplitRank(leg)); });
    WriteLegs("modifiedLapRank", [&](auto leg) { json_.Integer(runner.ModifiedLapRank(leg)); });
    WriteLegs("modifiedSplitRank", [&](auto leg) { json_.Integer(runner.ModifiedSplitRank(leg)); });
  }

  void WriteRanges(const clsAnalyzedRunnerData& runner) {
    WriteLegs("validLap", [&](auto leg) { json_.Bool(runner.IsValidLapTime(leg)); });
    WriteLegs("validSplit", [&](auto leg) { json_.Bool(runner.IsValidSplitTime(leg)); });
    WriteLegs("rangeFrom", [&](auto leg) { json_.Integer(runner.TotalLapFrom(leg)); });
    WriteLegs("rangeTo", [&](auto leg) { json_.Integer(runner.TotalLapTo(leg)); });
  }

  void WriteRelatives(const clsAnalyzedRunnerData& runner) {
    WriteLegs("lapRelative", [&](auto leg) {
      const clsPercentValue& relative = *runner.LapRelative(leg);
      if (AnalysisValue::Stored(relative) == kTimeSkip) return json_.Text(kSkipWord);
      if (relative.Value() == 0) return json_.Null();
      json_.Factor(relative.Value());
    });
  }

  // Unlike a lap, a loss of 0 is a value.
  void WriteMissTimes(const clsAnalyzedRunnerData& runner) {
    WriteLegs("missTime", [&](auto leg) {
      const clsMissTimeValue& miss = *runner.MissTime(leg);
      if (!AnalysisValue::IsSet(miss)) return json_.Null();
      if (miss.Value() == kTimeSkip) return json_.Text(kSkipWord);
      json_.Time(miss.Value());
    });
  }

  void WriteMissTimeTotal(const clsMissTimeValue& total) {
    if (!AnalysisValue::IsSet(total)) return json_.Null("missTimeTotal");
    json_.Time("missTimeTotal", total.Value());
  }

  void WriteFigures(const clsAnalyzedRunnerData& runner) {
    json_.Factor("cruiseSpeed", runner.CruiseSpeed()->Value());
    json_.Factor("missRate", runner.MissRate()->Value());
    WriteMissTimeTotal(*runner.MissTimeTotal());
    json_.TimeOrNull("totalTimeWithoutMiss", runner.TotalTimeWithoutMiss()->Value());
    json_.FactorOrNull("totalTimeRelative", runner.TotalTimeRelative()->Value());
    json_.Factor("firstHalfCruiseSpeed", runner.FirstHalfCruiseSpeed()->Value());
    json_.Factor("secondHalfCruiseSpeed", runner.SecondHalfCruiseSpeed()->Value());
    json_.BeginArray("map");
    json_.Factor(runner.VesmerX());
    json_.Factor(runner.VesmerY());
    json_.EndArray();
  }

  JsonWriter& json_;
  const EventModel& model_;
  const clsAnalyzer& analyzer_;
  const clsEstimate* estimate_;
  const std::int32_t legs_;
  std::optional<DateTime> best_;
};

void WriteResultLine(JsonWriter& json, const clsResultsHolder& results, std::int32_t position,
                     std::optional<DateTime>& best) {
  const auto record = results.Item(position);
  json.NewLine();
  json.BeginObject();
  WriteRecord(json, *record);
  json.Text("result", record->Result());
  json.Text("rank", record->Rank);
  json.Text("rankFix", record->RankFix);
  json.Text("rankInDataSet", results.RankInDataSet(position));
  WriteTimeAndBehind(json, record->Result(), best);
  WriteNumbered(json, "laps", LapDataInternal::HeldLegs(*record),
                [&](std::int32_t leg) { json.MarkedTime(LapDataInternal::Lap(*record, leg)); });
  json.EndObject();
  json.NewLine();
}

void WriteResultSet(JsonWriter& json, const clsResultsHolder& results, DataSetKind kind) {
  json.BeginObject("set");
  WriteSetHead(json, results, kind, results.ClassInfo());
  json.EndObject();
  json.Bool("rankIsAvailable", results.RankIsAvalilable());
  std::optional<DateTime> best;
  WriteNumbered(json, "runners", results.Count(),
                [&](std::int32_t position) { WriteResultLine(json, results, position, best); });
}

void WriteOrigin(JsonWriter& json, std::string_view key, std::string_view application,
                 DateTime date, std::string_view user) {
  json.BeginObject(key);
  json.Text("application", application);
  json.Date("date", date, kDateTimePattern);
  json.Text("user", user);
  json.EndObject();
}

void WriteFile(JsonWriter& json, const EventModel& model) {
  const clsMetaData& meta = *model.Meta;
  json.NewLine();
  json.BeginObject("file");
  json.Text("name", model.FileName);
  json.Date("date", model.FileDate, kDateTimePattern);
  json.Text("format", model.FileFormat);
  WriteOrigin(json, "created", meta.CreateApplication, meta.CreateDate, meta.CreateUserName);
  WriteOrigin(json, "lastUpdate", meta.LastUpdateApplication, meta.LastUpdateDate,
              meta.LastUpdateUserName);
  json.EndObject();
}

void WriteClass(JsonWriter& json, const clsClassData& klass) {
  json.Text("name", klass.ClassName());
  json.Text("fileName", klass.FileName());
  json.Integer("runners", klass.LapCount());
  json.Integer("controls", klass.ControlCount);
  json.Integer("length", klass.Length);
  json.Integer("climb", klass.Climb);
  json.Integer("course", klass.CourseNum);
  json.Integer("cutOffRank", klass.CutOffRank);
  json.Text("classInfo", klass.ClassInfo());
}

void WriteCourse(JsonWriter& json, const clsCourseData& course) {
  json.Integer("number", course.CourseIndex());
  json.Integer("controls", course.ControlCount());
  WriteCodes(json, course, course.ControlCount());
}

// An entry that ends in a separator and a position, as a pair; `write_first` writes the part before
// the separator.
template <typename WriteFirst>
void WritePair(JsonWriter& json, std::string_view entry, char separator, WriteFirst write_first) {
  const std::size_t at = std::min(entry.rfind(separator), entry.size());
  json.BeginArray();
  write_first(entry.substr(0, at));
  json.Integer(NumericLong(entry.substr(std::min(at + 1, entry.size()))));
  json.EndArray();
}

void WriteSegment(JsonWriter& json, const SegmentSet& segment) {
  json.Text("name", segment.SegmentName);
  json.Text("binaryName", segment.SegmentBinaryName);
  json.Integer("controls", segment.ControlCount);
  json.BeginArray("targets");
  for (const std::string& entry : segment.TargetCourseTable) {
    WritePair(json, entry, '\t', [&](auto course) { json.Integer(NumericLong(course)); });
  }
  json.EndArray();
  json.BeginArray("classes");
  for (const std::string& entry : segment.TargetClassList) {
    WritePair(json, entry, ';', [&](auto name) { json.Text(name); });
  }
  json.EndArray();
}

void WriteChoice(JsonWriter& json, const ClassAndCourseChoice& choice) {
  json.Integer("classIndex", choice.ClassIndex);
  json.Integer("courseNum", choice.CourseNum);
  json.Text("name", choice.ValueName);
  json.Text("fileName", choice.FileName);
  json.Integer("runners", choice.RunnerCount);
}

}  // namespace

std::string_view KindWord(DataSetKind kind) {
  switch (kind) {
    case DataSetKind::kClass:
      return "class";
    case DataSetKind::kCourse:
      return "course";
    case DataSetKind::kSegment:
      return "segment";
  }
  return "";
}

std::string AnalysisJson(const EventModel& model, const clsAnalyzer& analyzer, DataSetKind kind,
                         const clsEstimate* estimate) {
  if (kind == DataSetKind::kSegment) estimate = nullptr;  // its legs have other numbers
  std::string out;
  JsonWriter json(out);
  AnalysisDocument document(json, model, analyzer, estimate);
  BeginDocument(json, "keltrun2-analysis", model);
  document.WriteSet(kind, CourseOfSet(model, analyzer, kind).get());
  document.WriteGeneral();
  document.WriteRunners();
  EndDocument(json, out);
  return out;
}

std::string ResultJson(const EventModel& model, const std::vector<ResultJsonSet>& sets) {
  std::string out;
  JsonWriter json(out);
  BeginDocument(json, "keltrun2-results", model);
  WriteLines(json, "sets", sets,
             [&](const ResultJsonSet& set) { WriteResultSet(json, *set.Results, set.Kind); });
  EndDocument(json, out);
  return out;
}

std::string InfoJson(const EventModel& model) {
  std::string out;
  JsonWriter json(out);
  BeginDocument(json, "keltrun2-info", model);
  WriteFile(json, model);
  json.NewLine();
  WriteTexts(json, "remarks", EventRemarks(model));
  WriteLines(json, "classes", model.Classes(), [&](const auto& k) { WriteClass(json, *k); });
  WriteLines(json, "courses", model.Courses(), [&](const auto& c) { WriteCourse(json, *c); });
  WriteLines(json, "segments", model.Segments, [&](const auto& s) { WriteSegment(json, *s); });
  WriteLines(json, "choices", model.Choices(), [&](const auto& c) { WriteChoice(json, c); });
  EndDocument(json, out);
  return out;
}

}  // namespace keltrun
