// Data sets, the split analysis and result lists.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <random>
#include <sstream>

#include "keltrun2/config/settings_internal.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using Runner = std::shared_ptr<clsAnalyzedRunnerData>;

struct Entry {
  std::string Name, Result, Rank;
  std::vector<double> Laps;  // seconds or markers
};

/// Entries from "name result lap,lap,... rank; ...", "-" for an empty result and for no laps.
std::vector<Entry> Entries(const std::string& text) {
  std::vector<Entry> entries;
  std::istringstream all(text);
  for (std::string one; std::getline(all, one, ';');) {
    Entry& entry = entries.emplace_back();
    std::string laps, lap;
    std::istringstream(one) >> entry.Name >> entry.Result >> laps >> entry.Rank;
    if (entry.Result == "-") entry.Result.clear();
    std::istringstream list(laps == "-" ? "" : laps);
    while (std::getline(list, lap, ',')) entry.Laps.push_back(std::stod(lap));
  }
  return entries;
}

/// A root with one class.
struct Event {
  explicit Event(const std::vector<Entry>& entries, std::int32_t controls = 0) {
    klass->ControlCount = controls;
    for (const Entry& entry : entries) {
      AddRunner(*klass, entry.Name, entry.Result, entry.Laps)->Rank = entry.Rank;
    }
  }
  explicit Event(const std::string& entries = "", std::int32_t controls = 0)
      : Event(Entries(entries), controls) {}
  std::shared_ptr<clsAnalyzer> Analyzed() const {
    const auto analyzer = root->NewAnalyzer();
    analyzer->AddClass(1);
    analyzer->ControlCount = klass->ControlCount;
    analyzer->Execute();
    return analyzer;
  }
  std::shared_ptr<clsKeltrun2> root = NewRoot();
  std::shared_ptr<clsClassData> klass = root->AddClass("M21A");
};

std::string NameOf(const clsAnalyzedRunnerData& runner) { return runner.RunnerName(); }
std::string NameOf(const clsLapData& runner) { return runner.RunnerName; }
template <typename Set>
std::string Names(const Set& set) {
  std::string names;
  for (std::int32_t i = 1; i <= set.Count(); ++i) names += NameOf(*set.Item(i)) + " ";
  return names;
}

Runner Find(const clsAnalyzer& analyzer, std::string_view name) {
  for (std::int32_t i = 1; i <= analyzer.FullSetCount(); ++i) {
    if (analyzer.FullSetItem(i)->RunnerName() == name) return analyzer.FullSetItem(i);
  }
  return nullptr;
}

std::int32_t ErrorOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const AutomationError& error) {
    return error.Number();
  }
  return 0;
}

template <typename... Values>
std::string Text(const char* format, Values... values) {
  char text[200];
  std::snprintf(text, sizeof text, format, values...);
  return text;
}

double SecondsOf(DateTime time) { return time < 0 ? time : time * 86400; }

/// A leg as text: split in seconds or its marker, "v" for a valid lap, "s" for a valid split,
/// range.
std::string LegText(const clsAnalyzedRunnerData& runner, std::int32_t leg) {
  std::string text = std::to_string(std::lround(SecondsOf(runner.SplitTime(leg))));
  if (runner.IsValidLapTime(leg)) text += "v";
  if (runner.IsValidSplitTime(leg)) text += "s";
  const std::int32_t from = runner.TotalLapFrom(leg), to = runner.TotalLapTo(leg);
  return from == 0 && to == 0 ? text : text + Text("%d-%d", from, to);
}

TEST(AddLap, SplitsValidityAndRanges) {
  const std::pair<const char*, const char*> cases[] = {
      {"100,110", "100vs 210vs "},
      {"300,-1,-1,420", "300vs -1s2-4 -1s2-4 720s2-4 "},
      {"-1,200,50", "-1s1-2 200s1-2 250vs "},
      {"-1,9,-1,-1,8", "-1s1-2 9s1-2 -1s3-5 -1s3-5 17s3-5 "},
      {"100,0,120,130", "100vs 0 220v 350v "},
      {"100,-2,120,130", "100vs -2 220 350v "},
      {"100,-1,-1", "100vs 0 0 "},  // skips that no later time covers are missing data
      {"50,-1,-2", "50vs 0 -2 "},
      // A lap behind missing data counts as a lap of its own, also at the end of a range.
      {"-1,0,50", "-1s1-3 01-3 50v1-3 "},
      {"-1,-2,50,60", "-1s1-3 -21-3 501-3 110v "},
      {"100,-3,120", "100vs 0 220 "},  // an unknown marker leaves its leg untouched
  };
  for (const auto& [laps, expected] : cases) {
    SCOPED_TRACE(laps);
    const std::vector<Entry> entries = Entries(std::string("A - ") + laps);
    const Event event(entries);
    const auto record = event.klass->LapData(1);
    const auto analyzer = event.root->NewAnalyzer();
    analyzer->AddLap(record);
    ASSERT_EQ(analyzer->FullSetCount(), 1);
    EXPECT_EQ(analyzer->Count(), 0);
    const Runner runner = analyzer->FullSetItem(1);
    EXPECT_EQ(runner->OtherData(), record);
    std::string legs;
    for (std::int32_t leg = 1; leg <= record->LegCount(); ++leg) {
      legs += LegText(*runner, leg) + " ";
      const double lap = entries[0].Laps[leg - 1];
      const bool open = lap == -1 && runner->TotalLapFrom(leg) == 0;  // rewritten in the record
      EXPECT_EQ(record->Lap(leg), open ? 0 : lap > 0 ? Seconds(lap) : lap) << leg;
    }
    EXPECT_EQ(legs, expected);
  }
}

TEST(AddLap, RefusedRecordsAndExactTotals) {
  const Event event("A 0:10:00 -");
  const auto record = event.klass->LapData(1);
  const auto analyzer = event.root->NewAnalyzer();
  analyzer->AddLap(record);
  record->SetLegCount(52);
  EXPECT_EQ(ErrorOf([&] { analyzer->AddLap(record); }), 9);
  EXPECT_EQ(ErrorOf([&] { analyzer->AddLap(nullptr); }), 91);
  EXPECT_EQ(analyzer->FullSetCount(), 0) << "no legs, too many legs, no record";
  record->SetLegCount(51);
  analyzer->AddLap(record);
  EXPECT_EQ(analyzer->FullSetCount(), 1);
  EXPECT_EQ(record->LegCount(), 51);
  // Sums of tenths differ in their last bits unless they are put back on whole milliseconds.
  for (std::int32_t leg = 1; leg <= 50; ++leg) record->SetLap(leg, 61'700 / kMillisecondsPerDay);
  analyzer->AddLap(record);
  EXPECT_EQ(analyzer->FullSetItem(2)->SplitTime(50), 50 * 61'700 / kMillisecondsPerDay);
}

// Analyzers and result lists are named and filled from classes in the same way.
template <typename Set>
class DataSetTest : public testing::Test {};
using DataSets = testing::Types<clsAnalyzer, clsResultsHolder>;
TYPED_TEST_SUITE(DataSetTest, DataSets);

TYPED_TEST(DataSetTest, ClassesAndCourses) {
  const auto root = NewRoot();
  const auto add_class = [&root](const char* name, const std::array<std::int32_t, 5>& facts) {
    const auto klass = root->AddClass(name);
    klass->CourseNum = facts[0];
    klass->ControlCount = facts[1];
    klass->Length = facts[2];
    klass->Climb = facts[3];
    klass->CutOffRank = facts[4];
    AddRunner(*klass, name, "0:01:40", {100});
  };
  add_class("M21A", {1, 9, 4500, 120, 8});
  add_class("女子", {2, 5, 3000, 0, 3});
  add_class("Open", {1, 0, 4600, 0, 2});
  // Name, file name, mix; controls, length, climb, cut-off rank; runners.
  const std::pair<const char*, std::function<void(DataSet&)>> cases[] = {
      {"M21A m21a 0 9 4500 120 8 1", [](DataSet& set) { set.AddClass("m21a"); }},
      {"女子 u5973u5b50 0 5 3000 0 3 1", [](DataSet& set) { set.AddClass(2); }},
      // The second class's 0 controls and 0 climb leave the first one's.
      {"M21A/Open m21a_open 1 9 4600 120 0 2", [](DataSet& set) { set.AddCourse(1); }},
      {"M21A/M21A m21a_m21a 1 9 4500 120 0 2",
       [](DataSet& set) { set.AddClass(1), set.AddClass(1); }},
      {"All/Open all_open 1 0 4600 0 0 1",
       [](DataSet& set) { set.SetDataSetName("All"), set.AddClass(3); }},
      {"  0 0 0 0 0 0",
       [](DataSet& set) {
         for (const std::int32_t number : {0, 4, -1}) set.AddClass(number);
         for (const char* name : {"nobody", "1", ""}) set.AddClass(name);
         for (const std::int32_t course : {0, -1, 3}) set.AddCourse(course);
       }},
  };
  for (const auto& [expected, fill] : cases) {
    TypeParam set;
    fill(set);
    EXPECT_EQ(Text("%s %s %d %d %d %d %d %d", set.DataSetName().c_str(),
                   set.DataSetFileName.c_str(), set.DataSetIsMix, set.ControlCount, set.Length,
                   set.Climb, set.CutOffRank, set.FullSetCount()),
              expected);
    set.CutOffRank = 7;
    set.Clear();
    EXPECT_EQ(set.DataSetName() + set.DataSetFileName, "");
    EXPECT_FALSE(set.DataSetIsMix);
    EXPECT_EQ(set.ControlCount + set.Length + set.Climb + set.FullSetCount() + set.Count(), 0);
    EXPECT_EQ(set.CutOffRank, 7) << "the cut-off rank survives Clear";
  }
}

TYPED_TEST(DataSetTest, NamesAndCourseFacts) {
  constexpr bool kAnalyzer = std::is_same_v<TypeParam, clsAnalyzer>;
  TemporaryFolder folder;  // with a climb symbol of its own
  WriteBytes(folder.Path("Keltrun2.ini"), "LANGUAGE=xx\r\n");
  WriteBytes(folder.Path("Keltrun2Res-xx.txt"), "RES_META_CLIMB_SYMBOLE\t^\r\n");
  RestartSettings({.Language = {}, .Locale = {}, .Folder = folder.Path()});
  const std::array<const char*, 3> names[] = {
      // file names of analyzers, of result lists
      {"M21A/W21A", "m21aw21a", "m21aw21a"},
      {"A:B|C>D<E'F\"G", "abcdefg", "abcdefg"},
      {"Day<1>.TXT", "day1.txt", "day1.txt"},
      {"Ｍ２１Ａ　ｂ＃￥Z", "M21A b#\\z", "Ｍ２１Ａ　ｂ＃￥z"},
  };
  for (const auto& [name, analyzer_file, results_file] : names) {
    TypeParam set;
    set.SetDataSetName(name);
    EXPECT_EQ(set.DataSetName(), name);
    EXPECT_EQ(set.DataSetFileName, kAnalyzer ? analyzer_file : results_file);
    EXPECT_TRUE(set.DataSetIsMix);
  }
  const std::tuple<std::int32_t, std::int32_t, const char*> facts[] = {
      {12500, 0, "12.5km"},
      {4500, 120, kAnalyzer ? "4.5km ^120m" : "4.5km ↑120m"},
      {5000, 0, "5km"},
      {1234, 0, "1.234km"},
      {0, 150, ""}};
  for (const auto& [length, climb, info] : facts) {
    TypeParam set;
    set.Length = length;
    set.Climb = climb;
    EXPECT_EQ(set.ClassInfo(), info);
  }
}

// Three legs; "Skip" missed the second control. All figures by hand:
//   reference laps: (600+660+540)/3 = 600, (200+180)/2 = 190, (220+240)/2 = 230; total 1020
//   Skip's 510 s spread as 190 : 230 = 230.714 + 279.286
//   cruise speeds: Fast takes leg 3 (0.957), then leg 1 (1.0): (220+600)/830; Slow needs all three:
//   1080/1020; Skip's leg 1 alone is more than half the course: 540/600
TEST(Execute, FiguresOfASetWithARange) {
  const Event event("Fast 0:17:00 600,200,220; Slow 0:18:00 660,180,240; Skip 0:17:30 540,-1,510",
                    2);
  const auto analyzer = event.Analyzed();
  EXPECT_TRUE(analyzer->IsExecuted());
  EXPECT_EQ(Names(*analyzer), "Fast Skip Slow ");
  EXPECT_EQ(analyzer->FullSetItem(2)->RunnerName(), "Skip");
  const clsAnalyzedGeneralData& general = *analyzer->GeneralData();
  EXPECT_NEAR(SecondsOf(general.UpperLapTotal()), 1020, 1e-6);
  for (const auto& [leg, reference] : {std::pair(1, 600.0), {2, 190.0}, {3, 230.0}}) {
    EXPECT_NEAR(SecondsOf(general.UpperLapAverage(leg)), reference, 1e-6);
    EXPECT_FLOAT_EQ(general.LegLength(leg), static_cast<float>(reference / 1020));
  }
  // Ranks of lap, split, modified lap and modified split; modified lap and split in seconds; lap
  // relative and miss time. Total relative, cruise speed, miss total and rate, time without misses.
  const std::array<const char*, 6> cases[] = {
      {"Fast", "1", "2 2 2 2 600.0 600.0 100.00 7.2", "2 1 2 2 200.0 800.0 105.26 12.3",
       "1 1 1 1 220.0 1020.0 95.65 -7.2", "100.00 98.80 19.5 1.91 1000.5"},
      {"Skip", "2", "1 1 1 1 540.0 540.0 90.00 0.0", "0 0 3 1 230.7 770.7 0.00 -1.0",
       "0 2 3 2 279.3 1050.0 121.43 132.0", "102.94 90.00 132.0 12.57 918.0"},
      {"Slow", "3", "3 3 3 3 660.0 660.0 110.00 24.7", "1 2 1 3 180.0 840.0 94.74 -21.2",
       "2 3 2 3 240.0 1080.0 104.35 -3.5", "105.88 105.88 24.7 2.29 1055.3"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c[0]);
    const Runner r = Find(*analyzer, c[0]);
    EXPECT_EQ(r->RankInDataSet(), c[1]);
    EXPECT_EQ(r->Rank(), c[1]);
    for (std::int32_t leg = 1; leg <= 3; ++leg) {
      const DateTime miss = r->MissTime(leg)->Value();
      EXPECT_EQ(Text("%d %d %d %d %.1f %.1f %.2f %.1f", r->LapRank(leg), r->SplitRank(leg),
                     r->ModifiedLapRank(leg), r->ModifiedSplitRank(leg),
                     r->ModifiedLapTime(leg) * 86400, r->ModifiedSplitTime(leg) * 86400,
                     r->LapRelative(leg)->Value() * 100., miss == -1 ? miss : miss * 86400),
                c[leg + 1]);
    }
    EXPECT_EQ(Text("%.2f %.2f %.1f %.2f %.1f", r->TotalTimeRelative()->Value() * 100.,
                   r->CruiseSpeed()->Value() * 100., r->MissTimeTotal()->Value() * 86400,
                   r->MissRate()->Value() * 100., r->TotalTimeWithoutMiss()->Value() * 86400),
              c[5]);
  }
}

/// Cruise speed, then per leg relative lap, miss time, ranks (lap, split and both modified).
std::string FiguresText(const clsAnalyzer& analyzer, const clsAnalyzedRunnerData& r) {
  std::string text = r.RunnerName() + Text(" %.2f", r.CruiseSpeed()->Value() * 100.);
  for (std::int32_t leg = 1; leg <= analyzer.ControlCount + 1; ++leg) {
    text += Text(" | %s %s %d%d%d%d", r.LapRelative(leg)->ToString().c_str(),
                 r.MissTime(leg)->ToString("hh:nn:ss", true).c_str(), r.LapRank(leg),
                 r.SplitRank(leg), r.ModifiedLapRank(leg), r.ModifiedSplitRank(leg));
  }
  return text;
}

TEST(Execute, FiguresOfSpecialSets) {
  const struct {
    const char *name, *entries;
    std::vector<const char*> runners;
  } cases[] = {
      // References 100, 100: each leg is exactly half the course, so the better leg alone decides.
      {"half",
       "A 0:03:40 90,130; B 0:03:00 110,70",
       {"B 70.00 | 110 0:40 2222 | 70 0:00 1111", "A 90.00 | 90 0:00 1111 | 130 0:40 2222"}},
      // Shares 0.4, 0.3, 0.3: the leg that passes the half counts whole, A: (320+300)/(400+300).
      {"passing the half",
       "A 0:16:40 320,300,380; B DNF 480,300,220",
       {"A 88.57 | 80 -0:34 1111 | 100 0:34 1111 | 127 1:54 2121",
        "B 86.67 | 120 2:13 2222 | 100 0:40 1212 | 73 -0:40 1111"}},
      // References 100, 100, 115, 125. All takes legs 1, 3, 4: 320/340; Disq legs 1, 4: 230/225;
      // Gap
      // legs 3, 1: 230/215. A lap behind a disqualified leg is no lap of its own.
      {"missing legs",
       "Disq MP 100,-2,120,130; Gap DNF 110,0,120,0; All 0:07:00 90,100,110,120",
       {"All 94.12 | 90 -0:04 1111 | 100 0:06 1111 | 96 0:02 1111 | 96 0:02 1111",
        "Disq 102.22 | 100 -0:02 2222 | － － 0000 | － － 0000 | 104 0:02 2020",
        "Gap 106.98 | 110 0:03 3333 | － － 0000 | 104 -0:03 2020 | － － 0000"}},
      // References 95, 0, 410/3, 35. Nobody has leg 2: splits behind it stay comparable, but C
      // misses
      // leg 1 as well. A takes legs 4, 3: 150/171.67; B legs 1, 3; C leg 3.
      {"nobody punched",
       "A 0:03:40 100,0,120,30; B 0:03:50 90,0,140,0; C 0:05:00 0,0,150,40",
       {"A 87.38 | 105 0:17 2222 | － － 0000 | 88 0:01 1111 | 86 -0:01 1111",
        "B 99.28 | 95 -0:04 1111 | － － 0000 | 102 0:04 2222 | － － 0000",
        "C 109.76 | － － 0000 | － － 0000 | 110 0:00 3030 | 114 0:02 2020"}},
      // One skip shows that the control was there: A has no splits behind it. References 100, 0,
      // 124
      // and 40. Of A's equal factors at legs 1 and 3 the later leg comes first: (30+124)/164.
      {"one skipped",
       "A 0:04:14 100,0,124,30; D MP 100,-1,130,50",
       {"A 93.90 | 100 0:06 1111 | － － 0000 | 100 0:08 1010 | 75 -0:08 1010",
        "D 102.68 | 100 -0:03 1111 | ↓ ↓ 0001 | 105 0:03 0121 | 125 0:09 2121"}},
      // Legs without a reference: the range is shared in equal parts, nothing is relative to it.
      {"no reference",
       "A 0:03:40 100,-1,120",
       {"A 100.00 | 100 0:00 1111 | ↓ ↓ 0011 | － 0:00 0111"}},
      {"no reference at all", "A 0:02:00 -1,120", {"A 0.00 | ↓ ↓ 0011 | － 0:00 0111"}},
      // One runner is his own reference.
      {"alone", "A 0:03:30 100,110", {"A 100.00 | 100 0:00 1111 | 100 0:00 1111"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const auto entries = Entries(c.entries);
    const auto analyzer =
        Event(entries, static_cast<std::int32_t>(entries[0].Laps.size()) - 1).Analyzed();
    for (std::int32_t i = 1; i <= analyzer->Count(); ++i) {
      const clsAnalyzedRunnerData& r = *analyzer->Item(i);
      EXPECT_EQ(FiguresText(*analyzer, r), c.runners[i - 1]);
      const bool finished = r.Result().find(':') != std::string::npos;
      EXPECT_EQ(r.RankInDataSet(), finished ? std::to_string(i) : "");
      if (finished) continue;  // without a time no totals
      EXPECT_EQ(r.MissTimeTotal()->ToString() + r.TotalTimeWithoutMiss()->ToString(), "－－");
      EXPECT_EQ(r.MissRate()->Value(), 0);
    }
  }
  const Runner equal = Event("A 0:03:40 100,-1,120", 2).Analyzed()->Item(1);
  EXPECT_NEAR(SecondsOf(equal->ModifiedLapTime(2)), 60, 1e-6);
  EXPECT_NEAR(SecondsOf(equal->ModifiedLapTime(3)), 60, 1e-6);
  EXPECT_EQ(Event("A 0:02:00 -1,120", 1).Analyzed()->GeneralData()->LegLength(1), 0.5F);
}

TEST(Execute, UpperLapsAndTies) {
  const Event event("A 0:01:50 110; B 0:01:30 90; C 0:02:00 120; D 0:01:40 100; E 0:01:40 100");
  const auto analyzer = event.Analyzed();
  // Among equal results the runner added last comes first, and so among equal laps the one who
  // stands last in result order.
  EXPECT_EQ(Names(*analyzer), "B E D A C ");
  const clsAnalyzedGeneralData& general = *analyzer->GeneralData();
  EXPECT_NEAR(SecondsOf(general.UpperLapAverage(1)), (90 + 100 + 100) / 3.0, 1e-6);
  std::string upper;
  for (std::int32_t i = 1; general.IsUpperLapExists(1, i); ++i) {
    const Runner r = general.UpperLapObject(1, i);
    upper += r->RunnerName() + Text("%d%d", r->LapRank(1), r->SplitRank(1)) + r->Rank() + " ";
  }
  EXPECT_EQ(upper, "B111 D222 E222 A444 C555 ");
  EXPECT_FALSE(general.IsUpperLapExists(1, 0));
  EXPECT_EQ(general.UpperLapObject(1, 6), nullptr);
  EXPECT_EQ(ErrorOf([&] { general.UpperLapObject(1, 7); }), 9);
  EXPECT_EQ(ErrorOf([&] { general.IsUpperLapExists(52, 1); }), 9);
  // The full set now stands in result order, so the next run turns the tie round again.
  analyzer->Execute();
  EXPECT_EQ(Names(*analyzer), "B D E A C ");
}

TEST(Execute, RanksAndOrderOfResults) {
  // Official ranks count from two on, then for everybody.
  const std::pair<const char*, const char*> cases[] = {
      {"A 0:01:00 60; B 0:02:00 120; C DNF 90", "1,2,,"},
      {"A 0:01:00 60 7; B 0:02:00 120; C DNF 90", "1,2,,"},
      {"A 0:01:00 60 7; B 0:02:00 120; C DNF 90 (3)", "7,,(3),"}};
  for (const auto& [entries, expected] : cases) {
    const auto analyzer = Event(entries).Analyzed();
    std::string ranks, in_set;
    for (std::int32_t i = 1; i <= 3; ++i) {
      ranks += analyzer->Item(i)->Rank() + ",";
      in_set += analyzer->Item(i)->RankInDataSet() + ",";
    }
    EXPECT_EQ(ranks, expected);
    EXPECT_EQ(in_set, "1,2,,");
  }
  const auto analyzer =
      Event(
          "dns DNS 60; open : 60; p P 60; mp MP 60; ocl OCL 60; p3 P3 60; dnf DNF 60; dsq DSQ 60;"
          "dnq DNQ 60; day 25:03:07 60; h 1:00:00 60; tenth 0:59:59.9 60; lap - 3599.5; none - 0")
          .Analyzed();
  // "lap" has no result and counts with his split, as whole seconds 1:00:00, added after "h".
  // A day and 1:03:07 is a key of 1.04, behind no code but "P1". Unknown texts count as 98.
  EXPECT_EQ(Names(*analyzer), "tenth lap h day p3 mp dnf ocl dnq dsq none p open dns ");
  EXPECT_EQ(Find(*analyzer, "lap")->Result(), "1:00:00");
  EXPECT_EQ(Find(*analyzer, "lap")->RankInDataSet(), "2");
  EXPECT_EQ(Find(*analyzer, "none")->Result(), "");
}

TEST(Execute, AgainOnChangedData) {
  const Event event("A 0:06:00 100,120,140; B 0:07:00 110,150,160; S 0:08:00 130,-1,350", 2);
  const auto analyzer = event.Analyzed();
  const auto kept = analyzer->GeneralData();
  const Runner a = Find(*analyzer, "A"), b = Find(*analyzer, "B");
  const float rate = b->MissRate()->Value();
  ASSERT_GT(rate, 0);
  b->OtherData()->SetResult("DNF");
  b->OtherData()->SetLap(1, Seconds(80));
  a->OtherData()->SetLap(2, 0);
  analyzer->Execute();
  // Computed anew: order, ranks of laps and references. The old general data keeps its figures.
  EXPECT_EQ(Names(*analyzer), "A S B ");
  EXPECT_EQ(b->LapRank(1) * 10 + a->LapRank(1), 12);
  EXPECT_NEAR(SecondsOf(kept->UpperLapAverage(1)), 340 / 3.0, 1e-6);
  EXPECT_NEAR(SecondsOf(analyzer->GeneralData()->UpperLapAverage(1)), 310 / 3.0, 1e-6);
  EXPECT_EQ(a->ModifiedLapTime(2), 0);
  // Kept: the rank text of a runner who lost his time, his totals, the rank on a leg that his
  // modified lap no longer has, and the splits, which were added up when he was added.
  EXPECT_EQ(b->RankInDataSet() + b->Rank(), "22");
  EXPECT_EQ(b->MissRate()->Value(), rate);
  EXPECT_EQ(a->ModifiedLapRank(2), 1);
  EXPECT_NEAR(SecondsOf(b->SplitTime(1)), 110, 1e-6);
  // Another number of legs, another runner.
  analyzer->ControlCount = 0;
  analyzer->Execute();
  EXPECT_EQ(analyzer->GeneralData()->LegLength(1) - analyzer->GeneralData()->LegLength(2), 1);
  EXPECT_EQ(a->TotalTimeRelative()->Value(), static_cast<float>(100 / (310 / 3.0)));
  analyzer->AddLap(AddRunner(*event.klass, "New", "0:01:00", {60}));
  EXPECT_FALSE(analyzer->IsExecuted());
  EXPECT_EQ(analyzer->Count(), 3);
  analyzer->Execute();
  EXPECT_EQ(Names(*analyzer), "New A S B ");
}

TEST(Execute, NumberOfLegs) {
  const Event event("A 0:01:40 100");
  const auto analyzer = event.root->NewAnalyzer();
  analyzer->AddClass(1);
  const auto general = analyzer->GeneralData();
  analyzer->ControlCount = 51;
  EXPECT_EQ(ErrorOf([&] { analyzer->Execute(); }), 9);
  EXPECT_TRUE(analyzer->GeneralData() == general && !analyzer->IsExecuted());
  EXPECT_EQ(analyzer->Count(), 0);
  analyzer->ControlCount = 50;
  analyzer->Execute();
  EXPECT_EQ(analyzer->Item(1)->LapTime(51) + analyzer->Item(1)->LapRelative(51)->Value(), 0);
  EXPECT_EQ(analyzer->Item(1)->TotalTimeRelative()->Value(), 0);
  EXPECT_EQ(event.klass->LapData(1)->LegCount(), 1) << "reading laps never raises LegCount";
  analyzer->ControlCount = -7;  // at least one leg
  analyzer->Execute();
  EXPECT_EQ(analyzer->GeneralData()->LegLength(1), 1);
  analyzer->Clear();
  EXPECT_FALSE(analyzer->IsExecuted());
  analyzer->ControlCount = 3;
  analyzer->Execute();  // of nobody
  EXPECT_TRUE(analyzer->IsExecuted());
  EXPECT_EQ(analyzer->GeneralData()->LegLength(4) + analyzer->GeneralData()->LegLength(5), 0.25F);
}

TEST(Analyzer, Selection) {
  const Event event("A DNF 60; B 0:02:00 60; C 0:01:00 60");
  const auto analyzer = event.root->NewAnalyzer();
  analyzer->AddClass(1);
  EXPECT_EQ(Names(*analyzer), "");
  analyzer->SelectAll();
  EXPECT_EQ(Names(*analyzer), "A B C ") << "before Execute in the order of adding";
  analyzer->SelectSort();
  EXPECT_EQ(Names(*analyzer), "C B A ");
  analyzer->SelectNone();
  for (const std::int32_t serial : {1, 2, 2, 9}) analyzer->SelectItem(serial);
  EXPECT_EQ(Names(*analyzer), "A B B ");
  EXPECT_FALSE(analyzer->IsExecuted());
  for (const std::int32_t index : {0, -1, 4}) {
    EXPECT_EQ(analyzer->Item(index), nullptr);
    EXPECT_EQ(analyzer->FullSetItem(index), nullptr);
  }
  analyzer->Execute();
  EXPECT_EQ(Names(*analyzer), "C B A ") << "Execute selects everybody";
  analyzer->SelectNone();
  EXPECT_TRUE(analyzer->IsExecuted());
  const auto course = event.root->AddCourse(1);
  analyzer->SetCourseData(course);
  const auto general = analyzer->GeneralData();
  analyzer->Clear();
  EXPECT_EQ(analyzer->CourseData(), course);
  EXPECT_NE(analyzer->GeneralData(), general);
}

TEST(AnalyzedRunner, Texts) {
  const auto analyzer = Event("A - 300,-1,423; B - 300,0,423; C - 86400,3600", 2).Analyzed();
  const Runner a = Find(*analyzer, "A");
  EXPECT_EQ(a->Result(), "0:12:03");
  EXPECT_EQ(Find(*analyzer, "B")->Result(), "") << "the last split is not valid";
  EXPECT_EQ(Find(*analyzer, "C")->Result(), "25:00:00");
  EXPECT_EQ(a->ModifiedLapTimeToString(3), "00:12:03") << "the time at the control";
  EXPECT_EQ(a->ModifiedLapTimeToString(2), "↓");
  EXPECT_EQ(
      a->LapRankToString(2) + a->LapRankToString(2, false) + a->LapRankToString(2, true, true),
      "--)");
  EXPECT_EQ(ErrorOf([&] { a->SplitRank(52); }), 9);
  EXPECT_EQ(ErrorOf([&] { a->MissTime(-1); }), 9);
}

// A second, plain implementation of the analysis, every step written out. Times are days, so that
// equal factors of the cruise speed are rounded as they are in the library.
struct ModelLeg {
  double lap = 0, split = 0, modified_lap = 0, modified_split = 0, relative = 0, miss = 0;
  int from = 0, to = 0, lap_rank = 0, split_rank = 0, modified_lap_rank = 0,
      modified_split_rank = 0;
  bool valid_lap = false, valid_split = false;
};

struct ModelRunner {
  std::array<ModelLeg, 12> leg;
  int legs = 0;
  bool has_result = false;
  double time = 0, status = 98;  // of the result; no time is 0
  std::string official, rank, rank_in_set;
  double total_relative = 0, cruise = 0, miss_total = 0, miss_rate = 0, without_miss = 0;

  explicit ModelRunner(const Entry& entry)
      : has_result(!entry.Result.empty()), official(entry.Rank) {
    int h = 0, m = 0, s = 0;
    if (std::sscanf(entry.Result.c_str(), "%d:%d:%d", &h, &m, &s) == 3) {
      time = (h * 3600 + m * 60 + s) / 86400.0;
    }
    const std::map<std::string, int> codes = {{"DNF", 90}, {"MP", 50},  {"P3", 3},
                                              {"DSQ", 93}, {"DNS", 99}, {"OCL", 91}};
    if (const auto code = codes.find(entry.Result); code != codes.end()) status = code->second;
    for (const double lap : entry.Laps) leg[++legs].lap = lap > 0 ? lap / 86400 : lap;
    double total = 0;
    for (int i = 1; i <= legs; ++i) {
      if (leg[i].lap == -1 && leg[i].from == 0) {
        int j = i + 1;
        while (j <= legs && leg[j].lap <= 0) ++j;
        if (j > legs) leg[i].lap = 0;
        for (int k = i; j <= legs && k <= j; ++k) leg[k].from = i, leg[k].to = j;
      }
      ModelLeg& l = leg[i];
      const bool valid_before = i == 1 || leg[i - 1].valid_split;
      if (l.lap > 0) total = std::round((total + l.lap) * 86400000) / 86400000;
      l.split = l.lap > 0 ? total : l.lap;
      l.valid_lap = l.lap > 0 && (i == 1 || leg[i - 1].lap >= 0);
      l.valid_split = (l.lap > 0 || l.lap == -1) && valid_before;
    }
  }
  /// The split at the last leg stands in for a missing result.
  double Time() const {
    return has_result || !leg[legs].valid_split ? time : std::max(leg[legs].split, 0.0);
  }
  double Key() const { return Time() > 0 ? Time() : status; }
};

using Keys = std::vector<std::pair<double, int>>;
void Insert(Keys& keys, double key, int item) {  // before its equals
  const auto at = std::find_if(keys.begin(), keys.end(), [key](auto& k) { return k.first >= key; });
  keys.insert(at, {key, item});
}
int RankAt(const Keys& keys, int position) {
  while (position > 0 && keys[position - 1].first == keys[position].first) --position;
  return position + 1;
}

struct Model {
  std::vector<ModelRunner> runners;
  std::vector<double> reference, share;
  double reference_total = 0;

  // Ranks the runners for whom `key` is not negative on the leg.
  Keys Rank(int leg, int ModelLeg::*rank, const std::function<double(ModelRunner&)>& key) {
    Keys keys;
    for (int r = 0; r < std::ssize(runners); ++r) {
      if (const double k = key(runners[r]); k >= 0) Insert(keys, k, r);
    }
    for (int p = 0; p < std::ssize(keys); ++p) {
      runners[keys[p].second].leg[leg].*rank = RankAt(keys, p);
    }
    return keys;
  }

  void Execute(int legs) {
    Keys order;
    for (int r = 0; r < std::ssize(runners); ++r) Insert(order, runners[r].Key(), r);
    std::vector<ModelRunner> sorted;
    int officials = 0;
    for (int p = 0; p < std::ssize(order); ++p) {
      ModelRunner& runner = sorted.emplace_back(runners[order[p].second]);
      runner.rank_in_set = order[p].first < 1 ? std::to_string(RankAt(order, p)) : runner.rank;
      officials += runner.official.empty() ? 0 : 1;
    }
    runners = sorted;
    for (auto& r : runners) r.rank = officials < 2 ? r.rank_in_set : r.official;
    reference.assign(legs + 1, 0), share.assign(legs + 1, 0), reference_total = 0;
    for (int i = 1; i <= legs; ++i) {
      const Keys best = Rank(i, &ModelLeg::lap_rank,
                             [i](auto& r) { return r.leg[i].valid_lap ? r.leg[i].lap : -1; });
      const int n = std::min(3, static_cast<int>(best.size()));
      for (int p = 0; p < n; ++p) reference[i] += best[p].first;
      if (n > 0) reference[i] /= n;
      reference_total += reference[i];
    }
    bool ranges = false;
    for (int i = 1; i <= legs; ++i) {
      const double part = reference_total > 0 ? reference[i] / reference_total : 1.0 / legs;
      share[i] = static_cast<float>(part);
      const bool nobody =
          std::all_of(runners.begin(), runners.end(), [i](auto& r) { return r.leg[i].lap == 0; });
      for (auto& r : runners) {
        if (!nobody || (i > 1 && !r.leg[i - 1].valid_split)) continue;
        r.leg[i].valid_split = true;
        for (int k = i + 1; k <= legs && r.leg[k].valid_lap; ++k) r.leg[k].valid_split = true;
      }
    }
    for (auto& r : runners) {
      for (int i = 1; i <= legs; ++i) r.leg[i].modified_lap = r.leg[i].valid_lap ? r.leg[i].lap : 0;
      for (int i = 1; i <= legs; ++i) {
        if (r.leg[i].valid_lap || r.leg[i].to != i) continue;
        ranges = true;
        double sum = 0;
        for (int k = r.leg[i].from; k <= i; ++k) sum += share[k];
        for (int k = r.leg[i].from; k <= i; ++k) {
          r.leg[k].modified_lap =
              sum > 0 ? share[k] * r.leg[i].lap / sum : r.leg[i].lap / (i - r.leg[i].from + 1);
        }
      }
    }
    for (int i = 1; i <= legs; ++i) RankSplits(i, ranges);
    for (auto& r : runners) CalcFigures(r, legs);
  }

  void RankSplits(int i, bool ranges) {
    Rank(i, &ModelLeg::split_rank,
         [i](auto& r) { return r.leg[i].valid_split && r.leg[i].split > 0 ? r.leg[i].split : -1; });
    for (auto& r : runners) {
      if (ranges) break;
      r.leg[i].modified_lap_rank = r.leg[i].lap_rank;
      r.leg[i].modified_split_rank = r.leg[i].split_rank;
      r.leg[i].modified_split = std::max(r.leg[i].split, 0.0);
    }
    if (!ranges) return;
    Rank(i, &ModelLeg::modified_lap_rank,
         [i](auto& r) { return r.leg[i].modified_lap > 0 ? r.leg[i].modified_lap : -1; });
    Rank(i, &ModelLeg::modified_split_rank, [i](auto& r) {
      ModelLeg& leg = r.leg[i];
      if (!leg.valid_split || (leg.split <= 0 && leg.from == 0)) return -1.0;
      const double spread = r.leg[i - 1].modified_split + leg.modified_lap;
      return leg.modified_split = leg.split > 0 ? leg.split : spread;
    });
  }

  void CalcFigures(ModelRunner& r, int legs) const {
    Keys factors;
    for (int i = 1; i <= legs; ++i) {
      if (r.leg[i].modified_lap == 0 || reference[i] == 0) continue;
      Insert(factors, r.leg[i].modified_lap / reference[i], i);
    }
    double course = 0, own = 0, others = 0;
    for (int p = 0; p < std::ssize(factors) && course < 0.5; ++p) {
      const int i = factors[p].second;
      course += share[i], own += r.leg[i].modified_lap, others += reference[i];
    }
    r.cruise = static_cast<float>(others > 0 ? own / others : 0);
    const ModelLeg& finish = r.leg[legs];
    const bool finished = finish.valid_split && finish.split > 0 && reference_total > 0;
    r.total_relative = finished ? finish.split / reference_total : 0;
    double sum = 0, lost = 0;
    for (int i = 1; i <= legs; ++i) {
      ModelLeg& leg = r.leg[i];
      sum += leg.modified_lap;
      const bool range_end = !leg.valid_lap && leg.to == i;
      leg.relative = 0;
      leg.miss = leg.lap == -1 ? -1 : 0;
      if (!leg.valid_lap && !range_end) continue;
      double references = 0, miss = 0;
      for (int k = range_end ? leg.from : i; k <= i; ++k) {
        references += reference[k];
        if (reference[k] > 0) miss += r.leg[k].modified_lap - reference[k] * r.cruise;
      }
      leg.relative = references > 0 ? leg.lap / references : 0;
      leg.miss = miss;
      lost += std::max(miss, 0.0);
    }
    if (r.Time() == 0 || sum == 0) return;
    r.miss_total = lost;
    r.miss_rate = lost / sum;
    r.without_miss = (1 - r.miss_rate) * r.Time();
  }
};

/// All figures in a row: ratios, then times.
struct Figures {
  std::string ranks;
  std::vector<double> ratios, times;
  bool operator==(const Figures&) const = default;
};
Figures FiguresOf(const ModelRunner& r, int legs) {
  Figures f{r.rank + "," + r.rank_in_set,
            {r.total_relative, r.cruise, r.miss_rate},
            {r.miss_total, r.without_miss}};
  for (int i = 1; i <= legs; ++i) {
    const ModelLeg& leg = r.leg[i];
    f.ranks += Text(" %d/%d/%d/%d%s", leg.lap_rank, leg.split_rank, leg.modified_lap_rank,
                    leg.modified_split_rank, leg.valid_split ? "s" : "");
    f.ratios.push_back(leg.relative);
    for (const double time : {leg.modified_lap, leg.modified_split, leg.miss}) {
      f.times.push_back(time);
    }
  }
  return f;
}
Figures FiguresOf(const clsAnalyzedRunnerData& r, int legs) {
  Figures f{r.Rank() + "," + r.RankInDataSet(),
            {r.TotalTimeRelative()->Value(), r.CruiseSpeed()->Value(), r.MissRate()->Value()},
            {r.MissTimeTotal()->Value(), r.TotalTimeWithoutMiss()->Value()}};
  for (int i = 1; i <= legs; ++i) {
    f.ranks += Text(" %d/%d/%d/%d%s", r.LapRank(i), r.SplitRank(i), r.ModifiedLapRank(i),
                    r.ModifiedSplitRank(i), r.IsValidSplitTime(i) ? "s" : "");
    f.ratios.push_back(r.LapRelative(i)->Value());
    for (const double time :
         {r.ModifiedLapTime(i), r.ModifiedSplitTime(i), r.MissTime(i)->Value()}) {
      f.times.push_back(time);
    }
  }
  return f;
}
void ExpectNear(const std::vector<double>& a, const std::vector<double>& b, double tolerance) {
  ASSERT_EQ(a.size(), b.size());
  for (std::size_t i = 0; i < a.size(); ++i) EXPECT_NEAR(a[i], b[i], tolerance) << i;
}

/// A small event with every kind of leg and result, and many ties.
struct RandomEvent {
  explicit RandomEvent(unsigned seed) : random(seed), legs(1 + Pick(7)) {
    const int lost = Pick(3 * legs) + 1;  // sometimes a control that failed
    for (int r = Pick(9); r >= 0; --r) {
      Entry entry{std::to_string(r), "", Pick(6) == 0 ? std::to_string(1 + Pick(9)) : "", {}};
      double total = 0;
      for (int leg = 1; leg <= legs + (Pick(8) == 0 ? Pick(3) - 1 : 0); ++leg) {
        const double markers[] = {0, -1, -1, -2};
        const double lap = Pick(6) == 0 ? markers[Pick(4)] : 60 + Pick(4) + (leg % 3) * 40;
        entry.Laps.push_back(leg == lost ? 0 : lap);
        total += std::max(entry.Laps.back(), 0.0);
      }
      const char* statuses[] = {"", "DNF", "MP", "P3", "DSQ", "DNS", "?", "OCL"};
      const int which = Pick(16);
      if (which < 8) entry.Result = statuses[which];
      if (which >= 8 && total > 0) entry.Result = clsTimeValue(Seconds(total)).ToString("h:nn:ss");
      if (!entry.Laps.empty()) entries.push_back(entry);
    }
  }
  int Pick(int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); }
  std::mt19937 random;
  int legs;
  std::vector<Entry> entries;
};

TEST(Execute, AgreesWithAPlainModelOnRandomEvents) {
  for (unsigned seed = 1; seed <= 300 && !HasFailure(); ++seed) {
    RandomEvent random(seed);
    const auto analyzer = Event(random.entries, random.legs - 1).Analyzed();
    Model model;
    for (const Entry& entry : random.entries) model.runners.emplace_back(entry);
    for (int run = 1; run <= 3; ++run) {
      if (run > 1) analyzer->Execute();
      model.Execute(random.legs);
      ASSERT_EQ(analyzer->Count(), std::ssize(model.runners));
      for (int i = 0; i < analyzer->Count(); ++i) {
        SCOPED_TRACE(Text("seed %u, run %d, place %d", seed, run, i + 1));
        const Figures actual = FiguresOf(*analyzer->Item(i + 1), random.legs);
        const Figures expected = FiguresOf(model.runners[i], random.legs);
        EXPECT_EQ(actual.ranks, expected.ranks);
        ExpectNear(actual.ratios, expected.ratios, 1e-5);
        ExpectNear(actual.times, expected.times, 1e-8);
      }
      // For the next run somebody is disqualified: his old figures stay where the rules keep them.
      if (analyzer->Count() == 0) break;
      const int changed = random.Pick(analyzer->Count());
      analyzer->Item(changed + 1)->OtherData()->SetResult("DSQ");
      model.runners[changed].time = 0;
      model.runners[changed].status = 93;
      model.runners[changed].has_result = true;
    }
  }
}

TEST(Execute, DoubledTimesAndAnotherOrderOfAdding) {
  for (unsigned seed = 301; seed <= 400 && !HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    RandomEvent random(seed);
    const auto once = Event(random.entries, random.legs - 1).Analyzed();
    std::vector<Entry> entries = random.entries;
    for (Entry& entry : entries) {
      for (double& lap : entry.Laps) lap *= lap > 0 ? 2 : 1;
      const double time = ModelRunner(entry).time;
      if (time > 0) entry.Result = clsTimeValue(2 * time).ToString("h:nn:ss");
    }
    const auto doubled = Event(entries, random.legs - 1).Analyzed();
    EXPECT_EQ(Names(*once), Names(*doubled));
    std::shuffle(random.entries.begin(), random.entries.end(), random.random);
    const auto shuffled = Event(random.entries, random.legs - 1).Analyzed();
    for (std::int32_t i = 1; i <= once->Count(); ++i) {
      const std::string name = once->Item(i)->RunnerName();
      Figures figures = FiguresOf(*once->Item(i), random.legs);
      // The order of adding changes no figure, not in the last bit.
      EXPECT_TRUE(figures == FiguresOf(*Find(*shuffled, name), random.legs)) << name;
      // Doubling all times keeps ranks and ratios.
      for (double& time : figures.times) time *= time == -1 ? 1 : 2;
      EXPECT_TRUE(figures == FiguresOf(*Find(*doubled, name), random.legs)) << name;
    }
  }
}

TEST(ResultsHolder, OrderAndRanks) {
  const Event event(
      "hour 1:05:10 - 2; best 58:20 - 1; dnf DNF -; mp MP -; none - 3600; tie 1:05:10 -;"
      "tenth 1:05:10.4 -; day 24:00:00 -; p3 P3 -; open : -; disq DISQ -");
  const auto results = event.root->NewResultsHolder();
  results->AddClass(1);
  EXPECT_EQ(Names(*results), "best tie hour tenth day p3 mp dnf disq open ");
  const auto ranks = [&] {
    std::string text;
    for (std::int32_t i = 1; i <= results->Count(); ++i) text += results->RankInDataSet(i) + ",";
    return text;
  };
  EXPECT_EQ(ranks(), "0,0,0,0,0,,,,,,") << "before CalcRank";
  EXPECT_FALSE(results->RankIsAvalilable());
  results->CalcRank();
  EXPECT_EQ(ranks(), "1,2,2,4,5,,,,,,");
  EXPECT_TRUE(results->RankIsAvalilable());
  for (const std::int32_t index : {0, 11, -1}) {
    EXPECT_EQ(ErrorOf([&] { (void)results->RankInDataSet(index); }), 9);
    EXPECT_EQ(results->Item(index), nullptr);
    EXPECT_EQ(results->FullSetItem(index), nullptr);
  }
  EXPECT_EQ(ErrorOf([&] { results->AddLap(nullptr); }), 91);
  results->SelectNone();
  results->CalcRank();
  EXPECT_TRUE(results->RankIsAvalilable()) << "an empty selection changes nothing";
  for (const std::int32_t serial : {6, 2, 2, 999}) results->SelectItem(serial);
  results->CalcRank();
  EXPECT_EQ(Names(*results) + ranks(), "best best tie 1,1,3,");
  EXPECT_TRUE(results->RankIsAvalilable()) << "the best runner counts twice";
  results->SelectNone();
  results->SelectItem(1);
  results->CalcRank();
  EXPECT_FALSE(results->RankIsAvalilable()) << "one rank text is not enough";
  results->SelectAll();
  EXPECT_EQ(results->Count(), 10);
  results->CalcRank();
  results->Clear();
  EXPECT_EQ(results->Count() + results->FullSetCount(), 0);
  EXPECT_TRUE(results->RankIsAvalilable()) << "Clear keeps it";
  // Two records of one number, which only different events bring: both are selected.
  const auto first = event.klass->LapData(1);
  event.root->Clear();
  const auto second = AddRunner(*event.root->AddClass("B"), "B", "0:09:00", {});
  ASSERT_EQ(first->SerialNum(), second->SerialNum());
  results->AddLap(first);
  results->AddLap(second);
  results->SelectNone();
  results->SelectItem(1);
  EXPECT_EQ(Names(*results), "B hour ");
}

}  // namespace
}  // namespace keltrun::test
