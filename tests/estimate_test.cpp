// The estimate of an event as hosts see it, and the legs that were not timed.
#include "keltrun2/analysis/estimate.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "keltrun2/analysis/untimed_legs.h"
#include "keltrun2/model/time_text.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

// Days as seconds.
double InSeconds(DateTime days) { return days * kSecondsPerDay; }

void ExpectFigures(std::istream& line, std::initializer_list<double> figures, double scale,
                   const std::string& where) {
  constexpr double kRelative = 1e-6;
  for (const double figure : figures) {
    double expected = -1;
    line >> expected;
    EXPECT_NEAR(figure, expected, kRelative * std::fabs(expected) + 1e-9 * scale) << where;
  }
}

void ExpectLap(std::istream& line, const clsEstimatedRunnerData& runner, int leg,
               const std::string& where) {
  const bool known = (line >> std::ws).peek() != 'u';
  ASSERT_EQ(runner.IsKnown(leg), known) << where;
  if (!known) return;
  const double normal = InSeconds(runner.NormalTime(leg));
  ExpectFigures(line,
                {normal, InSeconds(runner.LeastLoss(leg)), InSeconds(runner.LargestLoss(leg))},
                normal, where);
  double any_mistake = 0;
  line >> any_mistake;
  ExpectFigures(line, {runner.MistakeChance(leg), InSeconds(runner.MistakeTime(leg))}, normal,
                where);
}

// Files with the answers of tests/data/estimate/make_reference.py.
TEST(Estimate, EqualsTheReferenceOnRealEvents) {
  for (const std::string name : {"hoshinomori", "midorigaoka"}) {
    const auto root = NewRoot();
    ASSERT_TRUE(root->FileControl()->LoadLapFile(ExampleFile(name + "/event.lxm")));
    const auto estimate = root->NewEstimate();
    std::ifstream file(DataFile("estimate/" + name + ".txt"));
    int lines = 0;
    for (std::string text; std::getline(file, text); ++lines) {
      std::istringstream line(text);
      std::string subject, class_name;
      int serial = 0, leg = 0;
      line >> subject >> class_name;
      if (subject == "event") continue;
      std::replace(class_name.begin(), class_name.end(), '_', ' ');
      const auto klass = estimate->ClassData(class_name);
      ASSERT_TRUE(klass) << text;
      if (subject == "leg") {
        line >> leg;
        ++leg;
        ExpectFigures(
            line, {InSeconds(klass->NormalTime(leg)), klass->Spread(leg), klass->MistakeRate(leg)},
            1, text);
        continue;
      }
      line >> serial;
      const auto runner = estimate->RunnerData(serial);
      ASSERT_TRUE(runner) << text;
      EXPECT_EQ(runner->OtherData()->ClassName(), class_name);
      if (subject == "lap") {
        line >> leg;
        ExpectLap(line, *runner, leg + 1, text);
      } else {
        ExpectFigures(line,
                      {runner->Speed(), runner->SpeedError(), runner->Spread(),
                       static_cast<double>(runner->MistakeCount()), InSeconds(runner->TimeLost())},
                      1, text);
        // The range is the time lost and its error, which are about as large.
        ExpectFigures(line,
                      {InSeconds(runner->LeastTimeLost()), InSeconds(runner->LargestTimeLost())},
                      1000 * InSeconds(runner->LargestTimeLost()), text);
      }
    }
    EXPECT_GT(lines, 600);
  }
}

// Four runners on four legs, of which the third is untimed.
struct CrossingEvent {
  CrossingEvent() {
    klass->ControlCount = 3;
    AddRunner(*klass, "A", "0:10:00", {100, 200, 0, 300});
    AddRunner(*klass, "B", "0:11:00", {110, 220, 0, 330});
    AddRunner(*klass, "C", "0:12:00", {120, 240, 0.001, 360});
    stray = AddRunner(*klass, "D", "0:13:00", {130, 260, 5, 390});
  }
  std::shared_ptr<clsKeltrun2> root = NewRoot();
  std::shared_ptr<clsClassData> klass = root->AddClass("M");
  std::shared_ptr<clsLapData> stray;
};

TEST(Estimate, LapsOfUntimedLegsCountForNobody) {
  const CrossingEvent event;
  const auto klass = event.root->NewEstimate()->ClassData(1);
  EXPECT_TRUE(klass->IsTimed(2));
  EXPECT_FALSE(klass->IsTimed(3));
  EXPECT_EQ(klass->NormalTime(3), 0);
  EXPECT_FALSE(klass->Item(4)->IsKnown(3));
  EXPECT_TRUE(klass->Item(4)->IsKnown(4));
  const auto all = event.root->NewEstimate("none")->ClassData(1);
  EXPECT_TRUE(all->IsTimed(3));
  EXPECT_GT(all->NormalTime(3), 0);
  const auto listed = event.root->NewEstimate("1,3")->ClassData(1);
  EXPECT_FALSE(listed->IsTimed(1));
  EXPECT_TRUE(listed->IsTimed(4));
}

// Runners with a course of their own have figures on its legs, with the help of everybody who ran
// between the same controls.
TEST(Estimate, RunnersOfForksAreComparedOnTheirOwnLegs) {
  const auto root = NewRoot();
  const std::int32_t codes[][3] = {{31, 32, 33}, {31, 40, 33}};
  for (const std::int32_t number : {1, 2}) {
    const auto course = root->AddCourse(number);
    course->SetControlCount(3);
    for (int i = 0; i < 3; ++i) course->SetControlNum(i + 1, codes[number - 1][i]);
  }
  const auto klass = root->AddClass("Forked");
  klass->CourseNum = 1;
  klass->ControlCount = 3;
  constexpr double kFactors[] = {1.0, 1.1, 1.2, 1.3, 1.05, 1.15};
  for (const double factor : kFactors) {
    const bool is_forked = klass->LapCount() % 2 != 0;
    const double way = is_forked ? 400 : 200;
    AddRunner(*klass, "R", "", {100 * factor, way * factor, way * factor, 60 * factor})->CourseNum =
        is_forked ? 2 : 0;
  }
  const auto estimate = root->NewEstimate()->ClassData(1);
  ASSERT_EQ(estimate->Count(), 6);
  for (std::int32_t i = 1; i <= 6; ++i) {
    const auto runner = estimate->Item(i);
    EXPECT_EQ(runner->OtherData(), klass->LapData(i));
    EXPECT_TRUE(runner->IsKnown(2)) << i;
    const double lap = klass->LapData(i)->Lap(2);
    EXPECT_NEAR(runner->NormalTime(2), lap, 0.08 * lap) << i;
    // All are compared with the three fastest of the class, whichever fork these had.
    EXPECT_NEAR(runner->Speed(), kFactors[i - 1] / 1.05, 0.03) << i;
  }
}

// A course that has little in common with that of the class says nothing about its speeds, and a
// pair of controls that comes twice is two legs.
TEST(Estimate, OtherCoursesOfAClassStandAlone) {
  const auto root = NewRoot();
  const std::vector<std::vector<std::int32_t>> codes = {{31, 32, 31, 32}, {41, 42, 43, 44}};
  for (std::int32_t number = 1; number <= 2; ++number) {
    const auto course = root->AddCourse(number);
    course->SetControlCount(4);
    for (int i = 0; i < 4; ++i) {
      course->SetControlNum(
          i + 1, codes[static_cast<std::size_t>(number) - 1][static_cast<std::size_t>(i)]);
    }
  }
  const auto klass = root->AddClass("Mixed");
  klass->CourseNum = 1;
  klass->ControlCount = 4;
  for (const double factor : {1.0, 1.1, 1.2, 1.0, 1.1, 1.2}) {
    const bool other = klass->LapCount() >= 3;
    const double way = other ? 500 : 100;
    const double second_time = other ? 500 : 130;
    AddRunner(*klass, "R", "",
              {way * factor, way * factor, way * factor, second_time * factor, 60 * factor})
        ->CourseNum = other ? 2 : 0;
  }
  const auto estimate = root->NewEstimate()->ClassData(1);
  for (std::int32_t i = 1; i <= 3; ++i) {
    EXPECT_NEAR(estimate->Item(i)->Speed(), estimate->Item(i + 3)->Speed(), 1e-3) << i;
    const double lap = klass->LapData(i)->Lap(4);
    EXPECT_NEAR(estimate->Item(i)->NormalTime(4), lap, 0.05 * lap) << i;
  }
}

struct ZeroCase {
  const char* what;
  std::vector<std::vector<double>> runners;  // laps in seconds
  const char* untimed;
};

TEST(UntimedLegs, AreFoundByTheZerosOfRunnersWhoWentOn) {
  const ZeroCase kCases[] = {
      {"three of four", {{9, 0, 9}, {9, 0, 9}, {9, 0, 9}, {9, 4, 9}}, "2"},
      {"three of six are half",
       {{9, 0, 9}, {9, 0, 9}, {9, 0, 9}, {9, 4, 9}, {9, 4, 9}, {9, 4, 9}},
       "2"},
      {"two are too few", {{9, 0, 9}, {9, 0, 9}, {9, 4, 9}}, "none"},
      {"fewer than half",
       {{9, 0, 9}, {9, 0, 9}, {9, 0, 9}, {9, 4, 9}, {9, 4, 9}, {9, 4, 9}, {9, 4, 9}},
       "none"},
      {"runners who stopped do not count", {{9, 0, 0}, {9, 0, 0}, {9, 0, 0}, {9, 4, 9}}, "none"},
      {"the last leg", {{9, 9, 0}, {9, 9, 0}, {9, 9, 0}}, "none"},
      {"a lap of 0 s is stored as a millisecond", {{9, .001, 9}, {9, 0, 9}, {9, .001, 9}}, "2"},
      {"a skipped control is no zero", {{9, -1, 9}, {9, -1, 9}, {9, -1, 9}, {9, 4, 9}}, "none"},
      {"two legs in a row", {{9, 0, 0, 9}, {9, 0, 0, 9}, {9, 0, 0, 9}}, "2,3"},
      {"the first leg", {{0, 9, 9}, {0, 9, 9}, {0, 9, 9}}, "1"},
  };
  for (const ZeroCase& test : kCases) {
    const auto root = NewRoot();
    const auto klass = root->AddClass("M");
    std::vector<ZeroLaps> counts(test.runners.front().size());
    for (const auto& laps : test.runners) {
      CountZeroLaps(*AddRunner(*klass, "R", "", laps), counts);
    }
    EXPECT_EQ(LegNumbers(FindUntimedLegs(counts, {}, nullptr)), test.untimed) << test.what;
  }
}

// The small class cannot tell by itself; the others that run from 31 to 32 can.
TEST(UntimedLegs, AreThoseWhoseControlsAreUntimedInOtherClasses) {
  const auto root = NewRoot();
  const auto add = [&](const char* name, int course, const std::vector<std::int32_t>& codes,
                       const std::vector<std::vector<double>>& runners) {
    const auto made = root->AddCourse(course);
    made->SetControlCount(static_cast<std::int32_t>(codes.size()));
    for (std::size_t i = 0; i < codes.size(); ++i) {
      made->SetControlNum(static_cast<std::int32_t>(i) + 1, codes[i]);
    }
    const auto klass = root->AddClass(name);
    klass->CourseNum = course;
    klass->ControlCount = made->ControlCount();
    for (const auto& laps : runners) AddRunner(*klass, name, "", laps);
  };
  add("Large", 1, {31, 32, 33}, {{9, 0, 9, 9}, {9, 0, 9, 9}, {9, 0, 9, 9}});
  add("Small", 2, {40, 31, 32}, {{9, 9, 3, 9}, {9, 9, 0, 9}});
  add("One", 3, {31, 32}, {{9, 3, 9}});
  add("Timed", 4, {31, 32}, {{9, 9, 9}, {9, 9, 9}, {9, 9, 9}, {9, 9, 9}});
  add("Other", 5, {31, 33, 32}, {{9, 0, 9, 9}});
  const auto estimate = root->NewEstimate();
  const auto untimed = [&](const char* name) {
    std::string legs;
    const auto klass = estimate->ClassData(name);
    for (std::int32_t leg = 1; leg <= klass->LegCount(); ++leg) {
      if (!klass->IsTimed(leg)) legs += std::to_string(leg);
    }
    return legs;
  };
  EXPECT_EQ(untimed("Large"), "2");
  EXPECT_EQ(untimed("Small"), "");  // four of ten: those of the class Timed decide
  EXPECT_EQ(untimed("Timed"), "");
  EXPECT_EQ(untimed("Other"), "");
  root->RemoveClass("Timed");
  EXPECT_EQ(root->NewEstimate()->ClassData("Small")->IsTimed(3), false);
  EXPECT_EQ(root->NewEstimate()->ClassData("One")->IsTimed(2), false);
}

TEST(UntimedLegs, AreChosenByAText) {
  for (const char* text : {"none", "auto", "8", "1,51", "8,15"}) {
    const auto choice = UntimedLegsChoice::Parse(text);
    ASSERT_TRUE(choice) << text;
    EXPECT_EQ(choice->ToString(), text);
  }
  for (const char* text : {"", "0", "52", "8,", ",8", "8;15", "8, 15", "-1", "all", "none,8",
                           "99999999999999999999999"}) {
    EXPECT_FALSE(UntimedLegsChoice::Parse(text)) << text;
    EXPECT_THROW((void)NewRoot()->NewEstimate(text), AutomationError) << text;
  }
}

TEST(UntimedLegs, OfTheExamples) {
  const auto root = NewRoot();
  for (const char* name : {"hoshinomori", "midorigaoka"}) {
    ASSERT_TRUE(root->FileControl()->LoadLapFile(ExampleFile(std::string(name) + "/event.lxm")));
    const auto estimate = root->NewEstimate();
    std::string found;
    for (std::int32_t i = 1; i <= estimate->ClassCount(); ++i) {
      const auto klass = estimate->ClassData(i);
      for (std::int32_t leg = 1; leg <= klass->LegCount(); ++leg) {
        if (!klass->IsTimed(leg)) found += klass->ClassName() + " " + std::to_string(leg) + " ";
      }
    }
    const bool has_crossing = std::string(name) == "hoshinomori";
    EXPECT_EQ(found, has_crossing ? "M20E 8 M20E 15 M21A 8 M21A 15 " : "");
  }
}

// The laps, splits and losses of the crossing on leg 3 with and without the option.
TEST(UntimedLegs, LeaveTheSplitsComparable) {
  const CrossingEvent event;
  const auto analyzer = event.root->NewAnalyzer();
  analyzer->AddClass("M");
  analyzer->Execute();
  const auto rank_of_stray = [&](int leg) { return analyzer->Item(4)->SplitRank(leg); };
  EXPECT_EQ(rank_of_stray(4), 2);  // only C and D have a lap on the crossing
  EXPECT_EQ(WholeSeconds(analyzer->Item(4)->SplitTime(4)), 785);
  EXPECT_GT(analyzer->GeneralData()->LegLength(3), 0);

  analyzer->SetUntimedLegs("auto");
  analyzer->Execute();
  analyzer->ExtraAnalyze();
  const auto& general = *analyzer->GeneralData();
  EXPECT_FALSE(general.IsTimed(3));
  EXPECT_EQ(general.LegLength(3), 0);
  EXPECT_EQ(general.UpperLapAverage(3), 0);
  EXPECT_FALSE(general.IsUpperLapExists(3, 1));
  EXPECT_EQ(general.LegDifficulty(3)->Value(), 0);
  float difficulties = 0;
  for (int leg = 1; leg <= 4; ++leg) difficulties += general.LegDifficulty(leg)->Value();
  EXPECT_NEAR(difficulties, 3, 1e-5);  // 1 is the mean of the timed legs
  const auto& stray = *analyzer->Item(4);
  EXPECT_EQ(WholeSeconds(stray.LapTime(3)), 5);  // the record is as it was
  EXPECT_FALSE(stray.IsValidLapTime(3));
  EXPECT_EQ(stray.MissTime(3)->Value(), 0);
  EXPECT_EQ(stray.LapRelative(3)->Value(), 0);
  EXPECT_EQ(WholeSeconds(stray.SplitTime(4)), 780);
  for (int position = 1; position <= 4; ++position) {
    EXPECT_TRUE(analyzer->Item(position)->IsValidSplitTime(4));
    EXPECT_EQ(analyzer->Item(position)->SplitRank(4), position);
  }

  analyzer->SetUntimedLegs("none");
  analyzer->Execute();
  EXPECT_TRUE(analyzer->GeneralData()->IsTimed(3));
  EXPECT_EQ(rank_of_stray(4), 2);
  EXPECT_EQ(WholeSeconds(analyzer->Item(4)->SplitTime(4)), 785);
}

// A runner who skipped the control before the crossing has a lap that covers both legs, and one who
// is disqualified there has no comparable splits.
TEST(UntimedLegs, KeepTheMarkersOfRunners) {
  CrossingEvent event;
  AddRunner(*event.klass, "E", "MP", {100, -1, 207, 310});
  AddRunner(*event.klass, "F", "DISQ", {100, 200, -2, 300});
  AddRunner(*event.klass, "G", "MP", {100, 200, -1, 302});
  const auto analyzer = event.root->NewAnalyzer();
  analyzer->SetUntimedLegs("3");
  analyzer->AddClass(1);
  analyzer->Execute();
  const auto runner = [&](const std::string& name) {
    for (std::int32_t i = 1; i <= analyzer->Count(); ++i) {
      if (analyzer->Item(i)->RunnerName() == name) return analyzer->Item(i);
    }
    return std::shared_ptr<clsAnalyzedRunnerData>();
  };
  EXPECT_EQ(runner("E")->TotalLapFrom(3), 2);
  EXPECT_EQ(WholeSeconds(runner("E")->ModifiedLapTime(2)), 207);
  EXPECT_EQ(WholeSeconds(runner("E")->ModifiedLapTime(3)), 0);
  EXPECT_EQ(WholeSeconds(runner("E")->SplitTime(4)), 617);
  EXPECT_FALSE(runner("F")->IsValidSplitTime(4));
  EXPECT_EQ(WholeSeconds(runner("G")->ModifiedLapTime(4)), 302);
  EXPECT_TRUE(runner("G")->IsValidSplitTime(4));
}

// The set of a segment knows where its legs are in the event.
TEST(UntimedLegs, OfASegmentAreThoseOfItsControls) {
  const auto root = NewRoot();
  for (const int course : {1, 2}) {
    const auto made = root->AddCourse(course);
    made->SetControlCount(4);
    const std::int32_t codes[] = {40 + course, 31, 32, 33};
    for (int i = 0; i < 4; ++i) made->SetControlNum(i + 1, codes[i]);
    const auto klass = root->AddClass("Class" + std::to_string(course));
    klass->CourseNum = course;
    klass->ControlCount = 4;
    for (int i = 0; i < (course == 1 ? 3 : 1); ++i) {
      AddRunner(*klass, "R", "", {50, 60, course == 1 ? 0.0 : 4.0, 70, 80});
    }
  }
  root->MakeSegmentSet();
  ASSERT_EQ(root->SegmentCount(), 1);
  const auto analyzer = root->SegmentData(1)->Analyzer();
  analyzer->SetUntimedLegs("auto");
  analyzer->Execute();
  EXPECT_FALSE(analyzer->GeneralData()->IsTimed(1));
  EXPECT_TRUE(analyzer->GeneralData()->IsTimed(2));
  // The second class alone leaves it to the event.
  const auto alone = root->NewAnalyzer();
  alone->AddClass("Class2");
  alone->SetUntimedLegs("auto");
  alone->Execute();
  EXPECT_FALSE(alone->GeneralData()->IsTimed(3));
}

// A class in which one runner loses three minutes on leg 3 of 4, and leg 2 is untimed.
std::shared_ptr<clsKeltrun2> EventWithMistake(Mode mode) {
  auto root = NewRoot(mode);
  const auto klass = root->AddClass("W \"A\"");
  klass->ControlCount = 3;
  for (const double factor : {1.0, 1.1, 1.2}) {
    AddRunner(*klass, "R", "0:10:00", {100 * factor, 0, 200 * factor, 300 * factor});
  }
  const auto late = AddRunner(*klass, "Late", "0:20:00", {130, 4, 500, 390});
  late->Rank = "4";
  late->ClubName = "Club, 1";
  return root;
}

TEST(Estimate, TextTellsWhereTheTimeWent) {
  for (const Mode mode : {Mode::kEnglishTexts, Mode::kJapaneseTexts}) {
    const auto root = EventWithMistake(mode);
    const auto estimate = root->NewEstimate();
    const std::string text = root->TextControl()->OutputEstimateText(estimate, "w \"a\"");
    EXPECT_EQ(text, root->TextControl()->OutputEstimateText(estimate));
    EXPECT_EQ(root->TextControl()->OutputEstimateText(estimate, "none"), "");
    const std::string of_late = text.substr(text.find("* W \"A\"  4  Late  Club, 1  0:20:00"));
    EXPECT_EQ(of_late.find('%' + std::string("1")), std::string::npos);
    const bool english = mode == Mode::kEnglishTexts;
    const auto late = estimate->ClassData(1)->Item(4);
    const std::string total =
        CompactTime(std::round(late->TimeLost() * kSecondsPerDay) / kSecondsPerDay);
    const std::string largest =
        CompactTime(std::round(late->LargestTimeLost() * kSecondsPerDay) / kSecondsPerDay);
    const std::string kTotal =
        english ? "cost about " + total + " together" : "合わせて約" + total + "。10人";
    const std::string kLargest = english ? "and " + largest + ".\r" : "から" + largest + "の間";
    const std::string kSaid[] = {
        kTotal,
        kLargest,
        english ? "One leg looks like a mistake" : "20秒を超えるミスとみられるレッグは1つ",
        english ? "Leg 2→3: 8:20 instead of about 4:" : "2→3: 通常なら約4:",
        english ? "surely a mistake" : "確実にミス",
        english ? "not timed: 1→2" : "計時されていないレッグ: 1→2"};
    for (const std::string& part : kSaid) {
      EXPECT_NE(of_late.find(part), std::string::npos) << part << " in " << of_late;
    }
  }
}

TEST(Estimate, CsvHasALineForEachLap) {
  const auto root = EventWithMistake(Mode::kEnglishTexts);
  const auto estimate = root->NewEstimate();
  const std::string csv = root->TextControl()->OutputEstimateCsv(estimate);
  std::istringstream lines(csv);
  int count = 0;
  std::string stray, mistake;
  for (std::string line; std::getline(lines, line); ++count) {
    EXPECT_TRUE(line.ends_with('\r'));
    // Two commas are in quotes.
    const bool is_late = line.find("Late") != std::string::npos;
    EXPECT_EQ(std::count(line.begin(), line.end(), ','), is_late ? 15 : 14) << line;
    if (line.find("Late") == std::string::npos) continue;
    if (line.find(",2,1→2,") != std::string::npos) stray = line;
    if (line.find(",3,2→3,") != std::string::npos) mistake = line;
  }
  EXPECT_EQ(count, 1 + 3 * 3 + 4);
  EXPECT_TRUE(stray.ends_with("1→2,0,4.0,,,,,,,\r")) << stray;
  EXPECT_TRUE(mistake.starts_with("\"W \"\"A\"\"\",")) << mistake;
  EXPECT_TRUE(mistake.ends_with(",sure\r")) << mistake;
}

TEST(Estimate, RemarksNameUntimedLegs) {
  const auto root = NewRoot();
  ASSERT_TRUE(root->FileControl()->LoadLapFile(ExampleFile("hoshinomori/event.lxm")));
  const auto remarks = root->EventRemarks();
  ASSERT_EQ(remarks.size(), 2U);
  EXPECT_EQ(remarks[0],
            "leg 80-81 is untimed in 2 classes; the times of 2 runners on it count for nobody");
  EXPECT_EQ(remarks[1],
            "leg 81-87 is untimed in 2 classes; the times of 11 runners on it count for nobody");
  EXPECT_TRUE(NewRoot()->EventRemarks().empty());
}

// Whatever can be loaded, the seeds of the fuzz targets included.
TEST(Estimate, IsFiniteForEveryFile) {
  int estimated = 0;
  for (const std::string& folder : {ExampleFile("../fuzz/corpus"), DataFile("foreign")}) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
      if (!entry.is_regular_file()) continue;
      const auto root = NewRoot();
      if (!root->FileControl()->LoadLapFile(entry.path().string())) continue;
      const auto estimate = root->NewEstimate();
      for (std::int32_t i = 1; i <= estimate->ClassCount(); ++i) {
        const auto klass = estimate->ClassData(i);
        for (std::int32_t position = 1; position <= klass->Count(); ++position) {
          const auto runner = klass->Item(position);
          double sum = runner->Speed() + runner->SpeedError() + runner->Spread() +
                       runner->TimeLost() + runner->LeastTimeLost() + runner->LargestTimeLost() +
                       runner->MistakeSize();
          for (std::int32_t leg = 1; leg <= runner->LegCount(); ++leg) {
            sum += runner->NormalTime(leg) + runner->LeastLoss(leg) + runner->LargestLoss(leg) +
                   runner->MistakeTime(leg) + runner->MistakeChance(leg);
          }
          EXPECT_TRUE(std::isfinite(sum)) << entry.path();
          ++estimated;
        }
      }
      (void)root->EventRemarks();
    }
  }
  EXPECT_GT(estimated, 50);
}

}  // namespace
}  // namespace keltrun::test
