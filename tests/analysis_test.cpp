// Data sets, the split analysis and result lists.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>
#include <random>
#include <sstream>

#include "keltrun2/model/result_status.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

struct Entry {
  std::string Name, Result, Rank;
  std::vector<double> Laps;  // seconds or markers
};

/// Entries from "name result lap,lap,... rank; ...", "-" for an empty result.
std::vector<Entry> Entries(const std::string& text) {
  std::vector<Entry> entries;
  std::istringstream all(text);
  for (std::string one; std::getline(all, one, ';');) {
    Entry& entry = entries.emplace_back();
    std::string laps, lap;
    std::istringstream(one) >> entry.Name >> entry.Result >> laps >> entry.Rank;
    if (entry.Result == "-") entry.Result.clear();
    std::istringstream list(laps);
    while (std::getline(list, lap, ',')) entry.Laps.push_back(std::stod(lap));
  }
  return entries;
}

/// A class and an analyzer filled from it, with as many legs as the first runner or as given.
struct Event {
  explicit Event(const std::vector<Entry>& entries, std::size_t legs = 0) {
    for (const Entry& entry : entries) {
      AddRunner(*klass, entry.Name, entry.Result, entry.Laps)->Rank = entry.Rank;
    }
    analyzer->AddClass(1);
    analyzer->ControlCount = static_cast<std::int32_t>(legs ? legs : entries[0].Laps.size()) - 1;
  }
  explicit Event(const std::string& entries) : Event(Entries(entries)) {}
  std::shared_ptr<clsAnalyzer> Analyzed() const {
    analyzer->Execute();
    return analyzer;
  }
  std::shared_ptr<clsKeltrun2> root = NewRoot();
  std::shared_ptr<clsClassData> klass = root->AddClass("M21A");
  std::shared_ptr<clsAnalyzer> analyzer = root->NewAnalyzer();
};

std::string NameOf(const clsAnalyzedRunnerData& runner) { return runner.RunnerName(); }
std::string NameOf(const clsLapData& runner) { return runner.RunnerName; }
template <typename Set>
std::string Names(const Set& set) {
  std::string names;
  for (std::int32_t i = 1; i <= set.Count(); ++i) names += NameOf(*set.Item(i)) + " ";
  return names;
}

template <typename... Values>
std::string Text(const char* format, Values... values) {
  char text[200];
  std::snprintf(text, sizeof text, format, values...);
  return text;
}

/// Days as whole seconds; markers are unchanged.
long WholeSeconds(DateTime time) {
  return std::lround(time == -1 || time == -2 ? time : time * 86400);
}

// Per leg: split in seconds or its marker, "v" for a valid lap, "s" for a valid split, range.
TEST(AddLap, SplitsValidityAndRanges) {
  for (const auto& [laps, expected] : Rows<std::string, std::string>{
           {"100,110", "100vs 210vs "},
           {"300,-1,-1,420", "300vs -1s2-4 -1s2-4 720s2-4 "},
           {"-1,200,50", "-1s1-2 200s1-2 250vs "},
           {"-1,9,-1,-1,8", "-1s1-2 9s1-2 -1s3-5 -1s3-5 17s3-5 "},
           {"100,0,120,130", "100vs 0 220v 350v "},
           {"100,-2,120,130", "100vs -2 220 350v "},
           {"100,-1,-1", "100vs 0 0 "},  // skips that no later time covers are missing data
           {"50,-1,-2", "50vs 0 -2 "},
           // A lap after missing data is a lap by itself, also at the end of a range.
           {"-1,0,50", "-1s1-3 01-3 50v1-3 "},
           {"-1,-2,50,60", "-1s1-3 -21-3 501-3 110v "},
           {"100,-1,120", "100vs -1s2-3 220s2-3 "}}) {
    const Event event("A - " + laps);
    const clsAnalyzedRunnerData& r = *event.analyzer->FullSetItem(1);
    std::string legs;
    for (std::int32_t leg = 1; leg <= r.OtherData()->LegCount(); ++leg) {
      legs += Text("%ld%s%s", WholeSeconds(r.SplitTime(leg)), r.IsValidLapTime(leg) ? "v" : "",
                   r.IsValidSplitTime(leg) ? "s" : "");
      if (r.TotalLapTo(leg) > 0) legs += Text("%d-%d", r.TotalLapFrom(leg), r.TotalLapTo(leg));
      legs += " ";
      EXPECT_EQ(r.LapTime(leg) == 0, r.SplitTime(leg) == 0) << "lost in the record too";
    }
    EXPECT_EQ(legs, expected) << laps;
  }
}

TEST(AddLap, RefusedRecordsAndExactTotals) {
  const Event event("A 0:10:00 100");
  const auto record = event.klass->LapData(1);
  record->SetLegCount(0);
  event.analyzer->AddLap(record);
  record->SetLegCount(52);
  EXPECT_THROW(event.analyzer->AddLap(record), AutomationError);
  EXPECT_THROW(event.analyzer->AddLap(nullptr), AutomationError);
  EXPECT_EQ(event.analyzer->FullSetCount(), 1) << "no legs, too many legs, no record";
  record->SetLegCount(51);
  // Sums of tenths differ in their last bits unless they are rounded to whole milliseconds.
  for (std::int32_t leg = 1; leg <= 50; ++leg) record->SetLap(leg, 61'700 / kMillisecondsPerDay);
  event.analyzer->AddLap(record);
  EXPECT_EQ(event.analyzer->FullSetItem(2)->SplitTime(50), 50 * 61'700 / kMillisecondsPerDay);
}

// Analyzers and results holders are named and filled from classes in the same way.
template <typename Set>
class DataSetTest : public testing::Test {};
using DataSets = testing::Types<clsAnalyzer, clsResultsHolder>;
TYPED_TEST_SUITE(DataSetTest, DataSets);

TYPED_TEST(DataSetTest, ClassesAndCourses) {
  const auto root = NewRoot();
  for (const auto& [name, course, controls, length, climb, cut_off] :
       {std::tuple("M21A", 1, 9, 4500, 120, 8), {"Open", 1, 0, 4600, 0, 2}}) {
    const auto klass = root->AddClass(name);
    std::tie(klass->CourseNum, klass->ControlCount, klass->Length, klass->Climb,
             klass->CutOffRank) = std::tuple(course, controls, length, climb, cut_off);
    AddRunner(*klass, name, "0:01:40", {100});
  }
  TypeParam set;
  const auto facts = [&set] {
    return set.DataSetName() + " " + set.DataSetFileName +
           Text(" %d %d %d %d %d %d", set.DataSetIsMix, set.ControlCount, set.Length, set.Climb,
                set.CutOffRank, set.FullSetCount());
  };
  // Name, file name, mix; controls, length, climb, cut-off rank; runners. The second class's 0
  // controls and 0 climb leave the first one's.
  for (const auto& [expected, fill] : Rows<std::string, std::function<void()>>{
           {"M21A m21a 0 9 4500 120 8 1", [&] { set.AddClass("m21a"); }},
           {"Open open 0 0 4600 0 2 1", [&] { set.AddClass(2); }},
           {"M21A/Open m21a_open 1 9 4600 120 0 2", [&] { set.AddCourse(1); }},
           {"All/M21A all_m21a 1 9 4500 120 0 1",
            [&] { set.SetDataSetName("All"), set.AddClass(1); }},
           {"  0 0 0 0 7 0", [&] {
              for (const std::int32_t number : {0, 3, -1}) set.AddClass(number);
              for (const char* name : {"nobody", "1", ""}) set.AddClass(name);
              for (const std::int32_t course : {0, -1, 3}) set.AddCourse(course);
            }}}) {
    fill();
    EXPECT_EQ(facts(), expected);
    set.CutOffRank = 7;
    set.Clear();
    EXPECT_EQ(facts(), "  0 0 0 0 7 0") << "the cut-off rank survives Clear";
  }
  constexpr bool kAnalyzer = std::is_same_v<TypeParam, clsAnalyzer>;
  for (const auto& [name, file_name] : Rows<const char*, const char*>{
           {"A:B|C>D<E'F\"G", "abcdefg"},
           {"Day<1>.TXT", "day1.txt"},
           {"Ｍ２１Ａ　ｂ＃￥Z", kAnalyzer ? "M21A b#\\z" : "Ｍ２１Ａ　ｂ＃￥z"}}) {
    set.SetDataSetName(name);
    EXPECT_EQ(set.DataSetFileName, file_name);
  }
}

/// One line per runner: name, rank, cruise speed, then for each leg relative lap, loss in seconds,
/// ranks (lap, split and both modified).
std::vector<std::string> FiguresText(const clsAnalyzer& analyzer, int scale = 1) {
  std::vector<std::string> lines;
  for (std::int32_t i = 1; i <= analyzer.Count(); ++i) {
    const clsAnalyzedRunnerData& r = *analyzer.Item(i);
    std::string& line = lines.emplace_back(r.RunnerName() + " " + r.Rank());
    line += Text(" %.2f", r.CruiseSpeed()->Value() * 100.);
    for (std::int32_t leg = 1; leg <= analyzer.ControlCount + 1; ++leg) {
      const DateTime miss = r.MissTime(leg)->Value();
      line += Text(" | %s %ld %d%d%d%d", r.LapRelative(leg)->ToString().c_str(),
                   WholeSeconds(miss == -1 ? miss : miss / scale), r.LapRank(leg), r.SplitRank(leg),
                   r.ModifiedLapRank(leg), r.ModifiedSplitRank(leg));
    }
  }
  return lines;
}

TEST(Execute, FiguresByHand) {
  for (const auto& [entries, expected] : Rows<std::string, std::vector<std::string>>{
           // References 100, 100: each leg is exactly half the course: the better leg decides.
           {"A 0:03:40 90,130; B 0:03:00 110,70",
            {"B 1 70.00 | 110 40 2222 | 70 0 1111", "A 2 90.00 | 90 0 1111 | 130 40 2222"}},
           // Shares 0.4, 0.3, 0.3: the leg that passes the half counts whole, A: 620/700.
           {"A 0:16:40 320,300,380; B DNF 480,300,220",
            {"A 1 88.57 | 80 -34 1111 | 100 34 1111 | 127 114 2121",
             "B  86.67 | 120 133 2222 | 100 40 1212 | 73 -40 1111"}},
           // References 100, 100, 115, 125. All takes legs 1, 3, 4: 320/340; Disq legs 1, 4:
           // 230/225; Gap legs 3, 1: 230/215. A lap after a disqualified leg is not used.
           {"Disq MP 100,-2,120,130; Gap DNF 110,0,120,0; All 0:07:00 90,100,110,120",
            {"All 1 94.12 | 90 -4 1111 | 100 6 1111 | 96 2 1111 | 96 2 1111",
             "Disq  102.22 | 100 -2 2222 | － 0 0000 | － 0 0000 | 104 2 2020",
             "Gap  106.98 | 110 3 3333 | － 0 0000 | 104 -3 2020 | － 0 0000"}},
           // References 95, 0, 410/3, 35. No runner has leg 2: later splits are comparable, but
           // C misses leg 1 as well. A takes legs 4, 3: 150/171.67; B legs 1, 3; C leg 3.
           {"A 0:03:40 100,0,120,30; B 0:03:50 90,0,140,0; C 0:05:00 0,0,150,40",
            {"A 1 87.38 | 105 17 2222 | － 0 0000 | 88 1 1111 | 86 -1 1111",
             "B 2 99.28 | 95 -4 1111 | － 0 0000 | 102 4 2222 | － 0 0000",
             "C 3 109.76 | － 0 0000 | － 0 0000 | 110 0 3030 | 114 2 2020"}},
           // One skip shows that the control was there: A has no splits after it. References 100,
           // 0, 124, 40. Of A's equal factors at legs 1 and 3 the later leg comes first: 154/164.
           {"A 0:04:14 100,0,124,30; D MP 100,-1,130,50",
            {"A 1 93.90 | 100 6 1111 | － 0 0000 | 100 8 1010 | 75 -8 1010",
             "D  102.68 | 100 -3 1111 | ↓ -1 0001 | 105 3 0121 | 125 9 2121"}},
           // Legs without a reference: the range is shared in equal parts, nothing is lost on it.
           {"A 0:02:00 -1,120", {"A 1 0.00 | ↓ -1 0011 | － 0 0111"}}}) {
    EXPECT_EQ(FiguresText(*Event(entries).Analyzed()), expected);
  }
}

TEST(Execute, ResultsAndTies) {
  // Of equal results the runner added last comes first; of equal laps, likewise, the one who is
  // last in result order.
  const Event ties("A 0:01:50 110; B 0:01:30 90; C 0:02:00 120; D 0:01:40 100; E 0:01:40 100");
  EXPECT_EQ(Names(*ties.Analyzed()), "B E D A C ");
  std::string upper;
  for (std::int32_t i = 1; ties.analyzer->GeneralData()->IsUpperLapExists(1, i); ++i) {
    upper += ties.analyzer->GeneralData()->UpperLapObject(1, i)->RunnerName();
  }
  EXPECT_EQ(upper, "BDEAC");
  // The full set is now in result order, so the next run reverses the tie again.
  EXPECT_EQ(Names(*ties.Analyzed()), "B D E A C ");
  // "lap" has no result; the split is used, in whole seconds 1:00:00, added after "h". The
  // last split of "gap" is not valid. A day and 1:03:07 is a key of 1.04.
  const Event event(
      "mp MP 9; gap - 300,0,423; h 1:00:00 60; lap - 3599.5; day 25:03:07 9; long - 86400,3600;"
      "skip - 300,-1,423");
  const auto analyzer = event.Analyzed();
  EXPECT_EQ(Names(*analyzer), "skip lap h long day mp gap ");
  EXPECT_EQ(analyzer->Item(1)->Result() + " " + analyzer->Item(4)->Result(), "0:12:03 25:00:00");
  EXPECT_EQ(analyzer->Item(7)->Result(), "");
  EXPECT_EQ(analyzer->Item(1)->ModifiedLapTimeToString(3), "00:12:03") << "the time at the control";
}

TEST(Execute, AgainOnChangedData) {
  const Event event("A 0:06:00 100,120,140; B 0:07:00 110,150,160; S 0:08:00 130,-1,350");
  const auto analyzer = event.Analyzed();
  const auto kept = analyzer->GeneralData();
  const auto a = analyzer->Item(1), b = analyzer->Item(2);
  const float rate = b->MissRate()->Value();
  ASSERT_GT(rate, 0);
  b->OtherData()->SetResult("DNF");
  b->OtherData()->SetLap(1, Seconds(80));
  a->OtherData()->SetLap(2, 0);
  analyzer->Execute();
  // Computed anew: order, ranks of laps and references. The old general data keeps its figures.
  EXPECT_EQ(Names(*analyzer), "A S B ");
  EXPECT_EQ(Text("%d%d", b->LapRank(1), a->LapRank(1)), "12");
  EXPECT_NEAR(kept->UpperLapAverage(1), Seconds(340 / 3.0), 1e-12);
  EXPECT_NEAR(analyzer->GeneralData()->UpperLapAverage(1), Seconds(310 / 3.0), 1e-12);
  // Kept: the rank text of a runner who no longer has a time, the totals, the rank on a leg that
  // the modified lap no longer has, and the splits, which were computed when the runner was added.
  EXPECT_EQ(b->RankInDataSet() + b->Rank(), "22");
  EXPECT_EQ(b->MissRate()->Value(), rate);
  EXPECT_EQ(a->ModifiedLapTime(2) + a->ModifiedLapRank(2), 1);
  EXPECT_EQ(b->SplitTime(1), Seconds(110));
  analyzer->AddLap(AddRunner(*event.klass, "New", "0:01:00", {60}));
  EXPECT_EQ(analyzer->IsExecuted() * 10 + analyzer->Count(), 3);
  analyzer->ControlCount = 0;
  EXPECT_EQ(Names(*event.Analyzed()), "New A S B ");
  EXPECT_EQ(analyzer->GeneralData()->LegLength(1) - analyzer->GeneralData()->LegLength(2), 1);
}

TEST(Execute, NumberOfLegs) {
  const Event event("A 0:01:40 100");
  const auto general = event.analyzer->GeneralData();
  const auto length = [&](std::int32_t leg) {
    return event.analyzer->GeneralData()->LegLength(leg);
  };
  event.analyzer->ControlCount = 51;
  EXPECT_THROW(event.analyzer->Execute(), AutomationError);
  EXPECT_TRUE(event.analyzer->GeneralData() == general && !event.analyzer->IsExecuted());
  event.analyzer->ControlCount = 50;
  EXPECT_EQ(event.Analyzed()->Item(1)->LapTime(51), 0);
  EXPECT_EQ(event.klass->LapData(1)->LegCount(), 1) << "reading laps never raises LegCount";
  event.analyzer->ControlCount = -7;  // becomes one leg
  event.analyzer->Execute();
  EXPECT_EQ(length(1), 1);
  event.analyzer->Clear();
  EXPECT_FALSE(event.analyzer->IsExecuted());
  event.analyzer->ControlCount = 3;
  event.analyzer->Execute();  // without runners
  EXPECT_EQ(length(4) + length(5), 0.25F);
}

TEST(Analyzer, Selection) {
  const Event event("A DNF 60; B 0:02:00 60; C 0:01:00 60");
  const auto analyzer = event.analyzer;
  analyzer->SelectAll();
  EXPECT_EQ(Names(*analyzer), "A B C ") << "before Execute in the order of adding";
  analyzer->SelectSort();
  EXPECT_EQ(Names(*analyzer), "C B A ");
  analyzer->SelectNone();
  for (const std::int32_t serial : {1, 2, 2, 9}) analyzer->SelectItem(serial);
  EXPECT_EQ(Names(*analyzer), "A B B ");
  for (const std::int32_t index : {0, -1, 4}) {
    EXPECT_TRUE(!analyzer->Item(index) && !analyzer->FullSetItem(index));
  }
  EXPECT_EQ(Names(*event.Analyzed()), "C B A ") << "Execute selects everybody";
  EXPECT_THROW((void)analyzer->Item(1)->SplitRank(52), AutomationError);
  analyzer->SetCourseData(event.root->AddCourse(1));
  const auto general = analyzer->GeneralData();
  analyzer->Clear();
  EXPECT_TRUE(analyzer->CourseData() && analyzer->GeneralData() != general);
}

/// Checks order, ranks, references and times against their definitions, each given the figures that
/// it is made of.
struct Definitions {
  using Data = clsAnalyzedRunnerData;
  using R = const Data&;

  explicit Definitions(const clsAnalyzer& a) : legs(a.ControlCount + 1), general(a.GeneralData()) {
    for (int i = 1; i <= a.Count(); ++i) {
      runners.push_back(a.Item(i));
      for (int k = 1; k <= legs; ++k) has_ranges |= IsRangeEnd(*a.Item(i), k);
    }
  }
  static bool IsRangeEnd(R r, int i) { return !r.IsValidLapTime(i) && r.TotalLapTo(i) == i; }

  // One more than the number of better runners. A negative key means that the runner has no rank.
  template <typename Key>
  int RankOf(R r, Key key) const {
    const auto is_better = [&](auto& other) { return key(*other) >= 0 && key(*other) < key(r); };
    return key(r) < 0 ? 0 : 1 + static_cast<int>(std::ranges::count_if(runners, is_better));
  }

  void CheckOrder() const {
    const auto key = [](R r) { return ResultSortKey(r.Result()); };
    const auto place = [&](auto& r) { return std::pair(key(*r), -r->SerialNum()); };
    EXPECT_TRUE(std::ranges::is_sorted(runners, {}, place));
    const auto is_official = [](auto& r) { return !r->ResultRank().empty(); };
    const bool official = std::ranges::count_if(runners, is_official) >= 2;
    for (const auto& r : runners) {
      EXPECT_EQ(r->RankInDataSet(), key(*r) < 1 ? std::to_string(RankOf(*r, key)) : "");
      EXPECT_EQ(r->Rank(), official ? r->ResultRank() : r->RankInDataSet());
    }
  }

  void CheckLeg(int i) const {
    std::vector<DateTime> best;
    const auto lap = [i](R r) { return r.IsValidLapTime(i) ? r.LapTime(i) : -1; };
    const auto modified = [i](R r) { return r.ModifiedLapTime(i) > 0 ? r.ModifiedLapTime(i) : -1; };
    const auto split = [i](R r) {
      return r.IsValidSplitTime(i) && r.SplitTime(i) > 0 ? r.SplitTime(i) : -1;
    };
    const auto modified_split = [&](R r) {
      const bool spread = has_ranges && r.IsValidSplitTime(i) && r.TotalLapFrom(i) > 0;
      return spread ? r.ModifiedSplitTime(i) : split(r);
    };
    for (const auto& r : runners) {
      if (r->IsValidLapTime(i)) best.push_back(r->LapTime(i));
      EXPECT_EQ(r->LapRank(i), RankOf(*r, lap));
      EXPECT_EQ(r->SplitRank(i), RankOf(*r, split));
      EXPECT_EQ(r->ModifiedLapRank(i), RankOf(*r, modified));
      EXPECT_EQ(r->ModifiedSplitRank(i), RankOf(*r, modified_split));
    }
    std::ranges::sort(best);
    best.resize(std::min<std::size_t>(best.size(), 3));
    const DateTime reference = general->UpperLapAverage(i), total = general->UpperLapTotal();
    const DateTime sum = std::accumulate(best.begin(), best.end(), 0.);
    EXPECT_NEAR(reference * static_cast<double>(best.size()), sum, 1e-12);
    EXPECT_NEAR(general->LegLength(i), total > 0 ? reference / total : 1. / legs, 1e-6);
  }

  void CheckTimes(R r) const {
    bool valid = true, opened = false;  // opened: after a leg that no runner has
    DateTime sum = 0, lost = 0;
    for (int i = 1; i <= legs; ++i) {
      const DateTime lap = r.LapTime(i), split = r.SplitTime(i);
      const int from = r.TotalLapFrom(i), to = r.TotalLapTo(i);
      const bool nobody = std::ranges::all_of(runners, [i](auto& a) { return a->LapTime(i) == 0; });
      opened |= nobody;
      valid &= nobody || (opened ? r.IsValidLapTime(i) : lap > 0 || lap == -1);
      EXPECT_EQ(r.IsValidSplitTime(i), valid);
      DateTime modified = r.IsValidLapTime(i) ? lap : 0;
      if (from > 0 && to <= legs && IsRangeEnd(r, to)) {
        double range = 0;
        for (int k = from; k <= to; ++k) range += general->LegLength(k);
        modified =
            r.LapTime(to) * (range > 0 ? general->LegLength(i) / range : 1. / (to - from + 1));
      }
      EXPECT_NEAR(r.ModifiedLapTime(i), modified, 1e-9);
      const DateTime spread = from > 0 ? r.ModifiedSplitTime(i - 1) + modified : 0;
      const DateTime in_ranges = !valid ? 0 : split > 0 ? split : spread;
      EXPECT_NEAR(r.ModifiedSplitTime(i), has_ranges ? in_ranges : std::max(split, 0.), 1e-9);
      sum += modified, lost += std::max(r.MissTime(i)->Value(), 0.);
    }
    const bool finished = valid && r.SplitTime(legs) > 0 && general->UpperLapTotal() > 0;
    EXPECT_NEAR(r.TotalTimeRelative()->Value(),
                finished ? r.SplitTime(legs) / general->UpperLapTotal() : 0, 1e-6);
    const bool timed = ResultSortKey(r.Result()) < 1 && sum > 0;
    EXPECT_NEAR(r.MissTimeTotal()->Value(), timed ? lost : 0, 1e-9);
    EXPECT_NEAR(r.MissRate()->Value(), timed ? lost / sum : 0, 1e-6);
  }

  void Check() const {
    CheckOrder();
    for (int i = 1; i <= legs; ++i) CheckLeg(i);
    for (const auto& r : runners) CheckTimes(*r);
  }

  std::vector<std::shared_ptr<Data>> runners;
  int legs;
  std::shared_ptr<const clsAnalyzedGeneralData> general;
  bool has_ranges = false;
};

/// A small event with every kind of leg and result, and many ties.
struct RandomEvent {
  explicit RandomEvent(unsigned seed) : random(seed), legs(1 + Pick(7)) {
    const int lost = Pick(3 * legs) + 1;  // sometimes a control failed
    for (int r = Pick(9); r >= 0; --r) {
      Entry& entry = entries.emplace_back(Entry{std::to_string(r), "", "", {}});
      const int last = Pick(8) == 0 ? legs + Pick(2) : legs;
      for (int leg = 1; leg <= last; ++leg) {
        const int marker = std::array{0, -1, -1, -2}[Pick(4)];
        const int lap = Pick(6) == 0 ? marker : 60 + Pick(4) + (leg % 3) * 40;
        entry.Laps.push_back(leg == lost ? 0 : lap);
      }
      const char* statuses[] = {"P", "DNF", "MP", "P1", "DSQ", "DNS", "?", "OCL"};
      entry.Result = Pick(2) == 0 ? statuses[Pick(8)] : Total(entry.Laps);
      if (Pick(6) == 0) entry.Rank = std::to_string(1 + Pick(9));
    }
  }
  static std::string Total(const std::vector<double>& laps) {
    double total = 0;
    for (const double lap : laps) total += std::max(lap, 0.);
    return total > 0 ? clsTimeValue(Seconds(total)).ToString("h:nn:ss") : "";
  }
  int Pick(int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); }
  std::shared_ptr<clsAnalyzer> Analyzed() const { return Event(entries, legs).Analyzed(); }
  std::mt19937 random;
  int legs;
  std::vector<Entry> entries;
};

TEST(Execute, RandomEvents) {
  for (unsigned seed = 1; seed <= 300 && !testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    RandomEvent event(seed), doubled = event;
    const auto analyzer = event.Analyzed();
    Definitions(*analyzer).Check();
    std::vector<std::string> once = FiguresText(*analyzer), shuffled;
    // Doubling all times keeps ranks and ratios.
    for (Entry& entry : doubled.entries) {
      for (double& lap : entry.Laps) lap *= lap > 0 ? 2 : 1;
      if (entry.Result.find(':') != std::string::npos) entry.Result = event.Total(entry.Laps);
    }
    EXPECT_EQ(FiguresText(*doubled.Analyzed(), 2), once);
    // The order of adding changes no figure.
    std::ranges::shuffle(event.entries, event.random);
    shuffled = FiguresText(*event.Analyzed());
    std::ranges::sort(once);
    std::ranges::sort(shuffled);
    EXPECT_EQ(shuffled, once);
  }
}

TEST(ResultsHolder, OrderAndRanks) {
  const Event event(
      "hour 1:05:10 0 2; best 58:20 0 1; dnf DNF; mp MP; none - 3600; tie 1:05:10; dns DNS;"
      "tenth 1:05:10.4; day 24:00:00; p3 P3; p P; open :; dsq DISQ; dnq DNQ; ocl OCL");
  const auto results = event.root->NewResultsHolder();
  results->AddClass(1);
  const auto ranks = [&] {
    std::string text = results->RankIsAvalilable() ? "official " : "";
    for (std::int32_t i = 1; i <= results->Count(); ++i) text += results->RankInDataSet(i) + ",";
    return text;
  };
  EXPECT_EQ(Names(*results), "best tie hour tenth day p3 mp dnf ocl dnq dsq open p dns ");
  EXPECT_EQ(ranks(), "0,0,0,0,0,,,,,,,,,,") << "before CalcRank";
  results->CalcRank();
  EXPECT_EQ(ranks(), "official 1,2,2,4,5,,,,,,,,,,");
  for (const std::int32_t index : {0, 15, -1}) {
    EXPECT_THROW((void)results->RankInDataSet(index), AutomationError);
    EXPECT_TRUE(!results->Item(index) && !results->FullSetItem(index));
  }
  EXPECT_THROW(results->AddLap(nullptr), AutomationError);
  const auto select = [&](const std::vector<std::int32_t>& serials) {
    results->SelectNone();
    for (const std::int32_t serial : serials) results->SelectItem(serial);
    results->CalcRank();
    return Names(*results) + ranks();
  };
  EXPECT_EQ(select({}), "official ") << "an empty selection changes nothing";
  EXPECT_EQ(select({6, 2, 2, 999}), "best best tie official 1,1,3,") << "the best counts twice";
  EXPECT_EQ(select({1}), "hour 1,") << "one rank text is not enough";
  results->SelectAll();
  EXPECT_EQ(results->Count(), 14);
  results->CalcRank();
  results->Clear();
  EXPECT_EQ(Names(*results) + ranks(), "official ") << "Clear keeps it";
  // Two records of one number, which only different events bring: both are selected.
  const auto first = event.klass->LapData(1);
  event.root->Clear();
  results->AddLap(first);
  results->AddLap(AddRunner(*event.root->AddClass("B"), "B", "0:09:00", {}));
  EXPECT_EQ(select({1}), "B hour 1,2,");
}

}  // namespace
}  // namespace keltrun::test
