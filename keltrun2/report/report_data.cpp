#include "keltrun2/report/report_data.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "keltrun2/analysis/analyzer_internal.h"
#include "keltrun2/analysis/leg_facts.h"
#include "keltrun2/analysis/segment_runs.h"
#include "keltrun2/base/version.h"
#include "keltrun2/model/class_data_internal.h"
#include "keltrun2/model/lap_data_internal.h"
#include "keltrun2/model/result_status.h"
#include "keltrun2/model/time_values_internal.h"
#include "keltrun2/report/class_lists.h"
#include "keltrun2/report/json.h"
#include "keltrun2/report/json_writer.h"
#include "keltrun2/report/set_points.h"

namespace keltrun {
namespace {

// Whole seconds, the unit of figures that are estimates anyway.
std::int32_t WholeSeconds(DateTime days) {
  constexpr double kMost = 1e9;
  return static_cast<std::int32_t>(std::clamp(std::round(days * kSecondsPerDay), -kMost, kMost));
}

// Texts that appear many times, such as clubs, by their number.
class TextNumbers {
 public:
  std::int32_t Of(const std::string& text) {
    const auto [place, is_new] =
        numbers_.try_emplace(text, static_cast<std::int32_t>(texts_.size()));
    if (is_new) texts_.push_back(text);
    return place->second;
  }
  const std::vector<std::string>& Texts() const { return texts_; }

 private:
  std::unordered_map<std::string, std::int32_t> numbers_;
  std::vector<std::string> texts_;
};

class ReportDocument {
 public:
  ReportDocument(JsonWriter& json, const EventModel& model, const std::vector<ReportPageSet>& sets,
                 const clsEstimate* estimate, const ReportSurroundings& surroundings)
      : json_(json), model_(model), sets_(sets), estimate_(estimate), surroundings_(surroundings) {}

  void Write() {
    json_.BeginObject();
    json_.Text("generator", "Keltrun " + VersionText(false));
    WriteEvent();
    WriteLinks();
    WriteClasses();
    WriteRunners();
    WriteTextList("clubs", clubs_.Texts());
    const std::vector<ClassList> lists = ListsOfClasses(model_, sets_);
    json_.BeginArray("sets");
    for (const ReportPageSet& set : sets_) {
      const auto list = std::find_if(lists.begin(), lists.end(), [&set](const ClassList& each) {
        return each.analyzer == set.Analyzer;
      });
      WriteSet(set, list != lists.end() ? &*list : nullptr);
    }
    for (const ClassList& list : lists) {
      if (!list.analyzer) WriteList(list);
    }
    json_.EndArray();
    json_.EndObject();
  }

 private:
  void WriteEvent() {
    const clsEventData& event = *model_.Event;
    json_.BeginObject("event");
    json_.Text("name", event.EventName);
    json_.Date("date", event.EventDate()->Value(), "yyyy-mm-dd");
    json_.Text("terrain", event.Terrain);
    json_.Text("memo", event.Memo);
    json_.Text("site", surroundings_.OfficialSite ? event.OfficialSite : "");
    json_.EndObject();
  }

  void WriteLinks() {
    if (surroundings_.Links.empty()) return;
    json_.BeginArray("links");
    for (const ReportLink& link : surroundings_.Links) {
      json_.BeginArray();
      json_.Text(ReportLinkWord(link.Kind));
      json_.Text(link.Address);
      json_.EndArray();
    }
    json_.EndArray();
  }

  void WriteTextList(std::string_view key, const std::vector<std::string>& texts) {
    json_.BeginArray(key);
    for (const std::string& text : texts) json_.Text(text);
    json_.EndArray();
  }

  void WriteClasses() {
    json_.BeginArray("classes");
    for (const auto& klass : model_.Classes()) {
      json_.BeginObject();
      json_.Text("name", klass->ClassName());
      json_.Integer("runners", klass->LapCount());
      json_.Integer("length", klass->Length);
      json_.Integer("climb", klass->Climb);
      json_.Integer("controls", klass->ControlCount);
      json_.EndObject();
    }
    json_.EndArray();
  }

  void WriteRunners() {
    json_.BeginArray("runners");
    std::int32_t class_number = 0;
    for (const auto& klass : model_.Classes()) {
      for (const auto& record : ClassDataInternal::Runners(*klass)) {
        runner_numbers_.emplace(record->SerialNum(),
                                static_cast<std::int32_t>(runner_numbers_.size()));
        WriteRunner(*record, class_number);
      }
      ++class_number;
    }
    json_.EndArray();
  }

  void WriteRunner(const clsLapData& record, std::int32_t class_number) {
    json_.BeginArray();
    json_.Integer(record.SerialNum());
    json_.Text(record.RunnerName);
    json_.Integer(clubs_.Of(record.ClubName));
    json_.Integer(class_number);
    json_.Integer(WholeSeconds(record.StartTime()->Value()));
    json_.Text(record.Result());
    json_.Text(OutcomeCode(record.Status, record.Result()));
    json_.BeginArray();
    for (std::int32_t leg = 1; leg <= LapDataInternal::HeldLegs(record); ++leg) {
      json_.MarkedTime(LapDataInternal::Lap(record, leg));
    }
    json_.EndArray();
    WriteEstimate(record);
    json_.EndArray();
  }

  void WriteEstimate(const clsLapData& record) {
    if (estimate_ == nullptr) return;
    const auto figures = estimate_->RunnerData(record.SerialNum());
    if (!figures || figures->Speed() == 0) return;
    const std::int32_t legs = figures->LegCount();
    const auto write_known = [&](auto value) {
      WriteLegs(legs, [&](std::int32_t leg) {
        figures->IsKnown(leg) ? json_.Integer(value(leg)) : json_.Null();
      });
    };
    json_.BeginArray();
    json_.Factor(figures->Speed());
    json_.Integer(WholeSeconds(figures->TimeLost()));
    json_.Integer(figures->MistakeCount());
    write_known([&](auto leg) { return WholeSeconds(figures->NormalTime(leg)); });
    // The ends of the range as distances from the loss, which take less room.
    write_known(
        [&](auto leg) { return WholeSeconds(figures->Loss(leg) - figures->LeastLoss(leg)); });
    write_known(
        [&](auto leg) { return WholeSeconds(figures->LargestLoss(leg) - figures->Loss(leg)); });
    write_known([&](auto leg) { return WholeSeconds(figures->MistakeTime(leg)); });
    std::string words;
    for (std::int32_t leg = 1; leg <= legs; ++leg) {
      words += static_cast<char>('0' + static_cast<int>(figures->MistakeWord(leg)));
    }
    json_.Text(words);
    json_.Integer(WholeSeconds(figures->LeastTimeLost()));
    json_.Integer(WholeSeconds(figures->LargestTimeLost()));
    json_.EndArray();
  }

  template <typename WriteLeg>
  void WriteLegs(std::int32_t legs, WriteLeg write_leg) {
    json_.BeginArray();
    for (std::int32_t leg = 1; leg <= legs; ++leg) write_leg(leg);
    json_.EndArray();
  }

  // `list` is null for a set that is no class.
  void WriteSet(const ReportPageSet& set, const ClassList* list) {
    const clsAnalyzer& analyzer = *set.Analyzer;
    const bool is_segment = set.Kind == DataSetKind::kSegment;
    const std::int32_t legs = AnalyzerInternal::LegCount(analyzer);
    const SegmentRuns runs =
        is_segment ? RunsBySerialNum(analyzer.DataSetName(), model_) : SegmentRuns();
    const clsAnalyzedGeneralData& general = *analyzer.GeneralData();
    json_.BeginObject();
    json_.Text("kind", KindWord(set.Kind));
    json_.Text("name", analyzer.DataSetName());
    json_.Integer("controls", legs - 1);
    json_.Integer("length", analyzer.Length);
    json_.Integer("climb", analyzer.Climb);
    WriteTextList("points", PointsOfSet(model_, analyzer, set.Kind));
    WriteNumbered(json_, "ref", legs,
                  [&](std::int32_t leg) { json_.Time(general.UpperLapAverage(leg)); });
    WriteNumbered(json_, "timed", legs,
                  [&](std::int32_t leg) { json_.Integer(general.IsTimed(leg) ? 1 : 0); });
    // The host may show a segment that the event no longer has, about whose runners nothing is
    // known.
    const clsEstimate* estimate = is_segment && runs.empty() ? nullptr : estimate_;
    WriteFacts(FactsOfLegs(analyzer, estimate, runs));
    const auto ranks = list != nullptr ? RanksOf(*list) : Ranks();
    json_.BeginArray("rows");
    for (const auto& runner : AnalyzerInternal::Selected(analyzer)) {
      WriteRow(*runner, {general, set.Kind, legs, estimate, runs, ranks});
    }
    json_.EndArray();
    if (list != nullptr) WriteOthers(*list);
    json_.EndObject();
  }

  // The runners of a class whom its analysis leaves out because they had another course or have no
  // laps, with the number of rows before them.
  void WriteOthers(const ClassList& list) {
    std::unordered_set<std::int32_t> analyzed;
    for (const auto& runner : AnalyzerInternal::Selected(*list.analyzer)) {
      analyzed.insert(runner->SerialNum());
    }
    std::int32_t rows_before = 0;
    bool is_first = true;
    for (const auto& [record, rank, time] : list.runners) {
      if (analyzed.contains(record->SerialNum())) {
        ++rows_before;
        continue;
      }
      if (std::exchange(is_first, false)) json_.BeginArray("others");
      json_.BeginArray();
      json_.Integer(runner_numbers_.at(record->SerialNum()));
      json_.Text(rank);
      time ? json_.Time(*time) : json_.Null();
      json_.Integer(rows_before);
      json_.EndArray();
    }
    if (!is_first) json_.EndArray();
  }

  // A class without laps has the form of a set without legs.
  void WriteList(const ClassList& list) {
    json_.BeginObject();
    json_.Text("kind", KindWord(DataSetKind::kClass));
    json_.Text("name", list.klass->ClassName());
    json_.Integer("controls", list.klass->ControlCount);
    json_.Integer("length", list.klass->Length);
    json_.Integer("climb", list.klass->Climb);
    for (const std::string_view key : {"points", "ref", "timed", "legs"}) {
      json_.BeginArray(key);
      json_.EndArray();
    }
    json_.BeginArray("rows");
    for (const auto& [record, rank, time] : list.runners) {
      json_.BeginArray();
      json_.Integer(runner_numbers_.at(record->SerialNum()));
      json_.Text(rank);
      time ? json_.Time(*time) : json_.Null();
      for (const bool is_known : {true, true, false, true, true, true}) {
        is_known ? json_.Integer(0) : json_.Null();  // speed ... of WriteFigures; no time lost
      }
      json_.BeginArray();
      json_.EndArray();
      json_.BeginArray();
      json_.EndArray();
      json_.BeginObject();
      json_.EndObject();
      json_.EndArray();
    }
    json_.EndArray();
    json_.EndObject();
  }

  void WriteFacts(const std::vector<LegFacts>& facts) {
    json_.BeginArray("legs");
    for (const LegFacts& leg : facts) {
      json_.BeginArray();
      json_.Integer(leg.laps);
      json_.Integer(leg.mistakes);
      json_.Integer(WholeSeconds(leg.cost));
      json_.Integer(WholeSeconds(leg.decisive));
      json_.EndArray();
    }
    json_.EndArray();
  }

  using Ranks = std::unordered_map<std::int32_t, std::string_view>;  // by serial number

  // Where an analysis leaves out runners of its class, its own ranks may not count them.
  static Ranks RanksOf(const ClassList& list) {
    Ranks ranks;
    for (const auto& [record, rank, time] : list.runners) ranks.emplace(record->SerialNum(), rank);
    return ranks;
  }

  // What the rows of a set need to know of it.
  struct RowContext {
    const clsAnalyzedGeneralData& general;
    DataSetKind kind;
    std::int32_t legs;
    const clsEstimate* estimate;
    const SegmentRuns& runs;
    const Ranks& ranks;  // in place of those of the analysis
  };

  static std::string RankOf(const clsAnalyzedRunnerData& runner, const RowContext& set) {
    if (set.kind != DataSetKind::kClass) return runner.RankInDataSet();
    const auto rank = set.ranks.find(runner.SerialNum());
    return rank != set.ranks.end() ? std::string(rank->second) : runner.Rank();
  }

  void WriteRow(const clsAnalyzedRunnerData& runner, const RowContext& set) {
    const auto number = runner_numbers_.find(runner.SerialNum());
    if (number == runner_numbers_.end()) return;
    const RunnerEstimate estimate = EstimateOfRunner(runner, set.estimate, set.runs);
    json_.BeginArray();
    json_.Integer(number->second);
    json_.Text(RankOf(runner, set));
    const auto time = TotalTime(runner.Result());
    time ? json_.Time(*time) : json_.Null();
    WriteFigures(runner, estimate, set.kind);
    WriteLegs(set.legs, [&](auto leg) { json_.Integer(runner.LapRank(leg)); });
    WriteLegs(set.legs, [&](auto leg) { json_.Integer(runner.SplitRank(leg)); });
    WriteExtras(runner, estimate, set);
    json_.EndArray();
  }

  // Speed, loss rate, time lost, time without losses, speeds of the halves: zeros where they are
  // not shown, because a segment is too short for them and the estimate has better ones.
  void WriteFigures(const clsAnalyzedRunnerData& runner, const RunnerEstimate& estimate,
                    DataSetKind kind) {
    const bool is_estimated = estimate.figures != nullptr;
    const auto factor = [&](const auto& value, bool is_shown) {
      is_shown ? json_.Factor(value->Value()) : json_.Integer(0);
    };
    factor(runner.CruiseSpeed(), !is_estimated && kind != DataSetKind::kSegment);
    factor(runner.MissRate(), !is_estimated && kind != DataSetKind::kSegment);
    if (is_estimated) {
      json_.Integer(0);
      json_.Integer(0);
    } else {
      AnalysisValue::IsSet(*runner.MissTimeTotal()) ? json_.Time(runner.MissTimeTotal()->Value())
                                                    : json_.Null();
      json_.Time(runner.TotalTimeWithoutMiss()->Value());
    }
    factor(runner.FirstHalfCruiseSpeed(), kind != DataSetKind::kSegment);
    factor(runner.SecondHalfCruiseSpeed(), kind != DataSetKind::kSegment);
  }

  // What only some rows need: they differ in it from what is said elsewhere.
  void WriteExtras(const clsAnalyzedRunnerData& runner, const RunnerEstimate& estimate,
                   const RowContext& set) {
    json_.BeginObject();
    if (set.kind == DataSetKind::kSegment) WriteSegmentLaps(runner, set);
    if (!SplitsAreSums(runner, set.general, set.legs)) {
      WriteNumbered(json_, "split", set.legs,
                    [&](auto leg) { json_.Time(runner.ModifiedSplitTime(leg)); });
    }
    WriteRanges(runner, set.legs);
    if (NeedsLosses(runner, estimate, set.legs)) {
      WriteNumbered(json_, "loss", set.legs, [&](auto leg) { WriteLoss(*runner.MissTime(leg)); });
    }
    json_.EndObject();
  }

  void WriteSegmentLaps(const clsAnalyzedRunnerData& runner, const RowContext& set) {
    if (!TotalTime(runner.Result())) json_.Text("result", runner.Result());
    if (const auto run = set.runs.find(runner.SerialNum()); run != set.runs.end()) {
      json_.Integer("from", run->second.legs_before);
    } else {
      WriteNumbered(json_, "lap", set.legs,
                    [&](auto leg) { json_.MarkedTime(runner.LapTime(leg)); });
    }
  }

  // Whether the splits are the running sums of the laps, which the page makes itself. On an untimed
  // leg no time goes by.
  static bool SplitsAreSums(const clsAnalyzedRunnerData& runner,
                            const clsAnalyzedGeneralData& general, std::int32_t legs) {
    constexpr DateTime kMillisecond = 1 / kMillisecondsPerDay;
    DateTime sum = 0;
    for (std::int32_t leg = 1; leg <= legs; ++leg) {
      if (runner.LapTime(leg) < 0) return false;
      sum += runner.LapTime(leg);
      if (!general.IsTimed(leg) && runner.LapTime(leg) == 0) continue;
      if (std::fabs(runner.ModifiedSplitTime(leg) - sum) > kMillisecond) return false;
    }
    return true;
  }

  void WriteRanges(const clsAnalyzedRunnerData& runner, std::int32_t legs) {
    std::vector<std::int32_t> ends;
    for (std::int32_t leg = 1; leg <= legs; ++leg) {
      if (runner.TotalLapTo(leg) == leg) {
        ends.insert(ends.end(), {runner.TotalLapFrom(leg), leg});
      }
    }
    if (ends.empty()) return;
    json_.BeginArray("ranges");
    for (const std::int32_t leg : ends) json_.Integer(leg);
    json_.EndArray();
  }

  // The losses of the analysis are shown where the estimate has none.
  static bool NeedsLosses(const clsAnalyzedRunnerData& runner, const RunnerEstimate& estimate,
                          std::int32_t legs) {
    for (std::int32_t leg = 1; leg <= legs; ++leg) {
      if (!estimate.IsKnown(leg) && HasLoss(*runner.MissTime(leg))) return true;
    }
    return false;
  }

  static bool HasLoss(const clsMissTimeValue& loss) {
    return AnalysisValue::IsSet(loss) && loss.Value() != kTimeSkip;
  }

  void WriteLoss(const clsMissTimeValue& loss) {
    HasLoss(loss) ? json_.Time(loss.Value()) : json_.Null();
  }

  JsonWriter& json_;
  const EventModel& model_;
  const std::vector<ReportPageSet>& sets_;
  const clsEstimate* estimate_;
  const ReportSurroundings& surroundings_;
  TextNumbers clubs_;
  std::unordered_map<std::int32_t, std::int32_t> runner_numbers_;  // by serial number
};

}  // namespace

std::string_view ReportLinkWord(ReportLinkKind kind) {
  constexpr std::string_view kWords[] = {"lxm", "xml", "csv", "charts", "classic", "events"};
  return kWords[static_cast<std::size_t>(kind)];
}

bool IsFileToTake(ReportLinkKind kind) { return kind <= ReportLinkKind::kTable; }

std::string ReportData(const EventModel& model, const std::vector<ReportPageSet>& sets,
                       const clsEstimate* estimate, const ReportSurroundings& surroundings) {
  std::string out;
  JsonWriter json(out);
  ReportDocument(json, model, sets, estimate, surroundings).Write();
  return out;
}

}  // namespace keltrun
