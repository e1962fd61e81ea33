// What all readers of other programs' files share: courses, laps, results and clocks.
#include "keltrun2/io/foreign/foreign_event.h"

#include <gtest/gtest.h>

#include "keltrun2/loading/feed_model.h"
#include "keltrun2/model/process_state.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using std::string;

// A runner from a line "name status start time code:seconds ...", each part "-" when it is missing;
// "31" is a missed control.
ForeignRunner RunnerOf(ForeignEvent& event, const string& line) {
  std::istringstream words(line);
  const auto milliseconds = [](const string& text) -> std::optional<Milliseconds> {
    if (text == "-") return std::nullopt;
    return static_cast<Milliseconds>(std::stod(text) * 1000);
  };
  ForeignRunner runner;
  string status, start, time;
  words >> runner.name >> status >> start >> time;
  if (status != "-") runner.status = RunnerStatusOfName(status);
  runner.start = milliseconds(start);
  runner.time = milliseconds(time);
  for (string word; words >> word;) {
    const std::size_t colon = word.find(':');
    Punch punch{event.Code(word.substr(0, colon)), std::nullopt};
    if (colon != string::npos) punch.time = milliseconds(word.substr(colon + 1));
    runner.punches.push_back(punch);
  }
  return runner;
}

struct Made {
  LapRecords records;
  string remarks;
};

// One class "A" from lines of runners.
Made MakeClass(const std::vector<string>& lines, std::int32_t controls = 0) {
  RemarkList remarks;
  ForeignEvent event(remarks);
  for (const string& line : lines) {
    ForeignRunner runner = RunnerOf(event, line);
    ForeignClass& klass = event.ClassNamed("A");
    klass.control_count = controls;
    klass.runners.push_back(std::move(runner));
  }
  Made made{std::move(event).Take(), ""};
  for (const LoadRemark& remark : remarks.Take()) made.remarks += remark.Text + "\n";
  return made;
}

// "laps result status", with "-" for no data and "+" for a skipped leg.
string Shown(clsLapData& runner) {
  string out;
  for (std::int32_t leg = 1; leg <= runner.LegCount(); ++leg) {
    const DateTime lap = runner.Lap(leg);
    const auto milliseconds = std::lround(lap * 86'400'000);
    out += lap > 0            ? milliseconds == 1 ? "0" : std::to_string(milliseconds / 1000)
                      : lap == kTimeSkip ? "+"
                              : "-";
    out += ' ';
  }
  return out + runner.Result() + " " + string(RunnerStatusName(runner.Status));
}

TEST(ForeignEvent, LapsOfOneRunnerAmongOthersOnTheCourse) {
  for (const auto& [line, expected] : Rows<string, string>{
           {"x OK - 100 31:10 32:30 33:60", "10 20 30 40 0:01:40 OK"},
           {"x OK - 100 31:10 32 33:60", "10 + 50 40 0:01:40 OK"},
           {"x OK - 100 31:10 33:60", "10 + 50 40 0:01:40 OK"},
           {"x MissingPunch - 100 31:10 99:20 32:30 33:60", "10 20 30 40 MP MissingPunch"},
           {"x MissingPunch - 100 32:30 31:40 33:60", "40 + 20 40 MP MissingPunch"},
           {"x DidNotFinish - - 31:10 32 33", "10 DNF DidNotFinish"},
           {"x DidNotStart - - 31 32 33", "DNS DidNotStart"},
           {"x DidNotStart - 0 31:0 32:0 33:0", "DNS DidNotStart"},
           {"x DidNotStart - 100 31:10 32:30 33:60", "10 20 30 40 DNS DidNotStart"},
           {"x OK - 100 31:10 31:12 32:30 33:60", "10 20 30 40 0:01:40 OK"},
           {"x OK - 100 31:10 32:10 33:60", "10 0 50 40 0:01:40 OK"},
           {"x OK - 100 31:10 32:5 33:60", "10 - 50 40 0:01:40 OK"},
           {"x OK - 100 31:70 32:30 33:60", "- 30 30 40 0:01:40 OK"},
           {"x OK - 100 31:10 32:300 33:60", "10 - 50 40 0:01:40 OK"},
           {"x OK - 100 31:-5 32:30 33:60", "- 30 30 40 0:01:40 OK"},
           {"x OK - 100 31:0 32:30 33:60", "0 30 30 40 0:01:40 OK"},
           {"x OK - 100 31:10 32:0 33:60", "10 + 50 40 0:01:40 OK"},
           {"x OK - 100 31 32:0 33:60", "+ + 60 40 0:01:40 OK"},
           {"x MissingPunch - 100 31:0 32:30 33:60", "+ 30 30 40 MP MissingPunch"},
           {"x Disqualified - 20 31:10 32:30 33:60", "10 20 30 DISQ Disqualified"},
           {"x OK - - 31:10 32:30 33:60 F1:100", "10 20 30 40 0:01:40 OK"},
           {"x - - - 31:10 32:30 33:60 999:100", "10 20 30 40 0:01:40 OK"},
           {"x - - 100 31:10 32 33:60", "10 + 50 40 MP MissingPunch"},
           {"x - - - 31:10", "10 DNF DidNotFinish"},
           {"x - - -", "DNS DidNotStart"},
           {"x OK - 100.25 31:10.5 32:30 33:60", "10 19 30 40 0:01:40.2 OK"},
           {"x NotCompeting - 100 31:10 32:30 33:60", "10 20 30 40 0:01:40 NotCompeting"},
           {"x OverTime - 100 31:10 32:30 33:60", "10 20 30 40 OCL OverTime"},
           {"x OK - 100", "+ + + 100 0:01:40 OK"},
           {"x OK - -", " OK"}}) {
    const Made made = MakeClass({"a OK - 90 31:9 32:20 33:50", "b OK - 90 31:9 32:20 33:50",
                                 "c OK - 90 31:9 32:20 33:50", line});
    ASSERT_EQ(made.records.classes.at(0).codes, (std::vector<std::int32_t>{31, 32, 33})) << line;
    EXPECT_EQ(Shown(*made.records.classes[0].runners.at(3)), expected) << line;
  }
}

TEST(ForeignEvent, UnitsAtStartAndFinishAreNoControls) {
  const auto shown = [](const std::vector<string>& lines) {
    const Made made = MakeClass(lines);
    string text = std::to_string(made.records.classes[0].codes.size()) + ":";
    for (const auto& runner : made.records.classes[0].runners) text += " " + Shown(*runner) + ",";
    return text;
  };
  const string a = "a OK - 90 31:9 100:90", b = "b OK - 80 31:8 100:80";
  EXPECT_EQ(shown({a, "b OK - 80 31:8 100:80.4", "c MissingPunch - 70 31 100:70",
                   "d DidNotFinish - - 31:5 100"}),
            "1: 9 81 0:01:30 OK, 8 72 0:01:20 OK, + 70 MP MissingPunch, 5 DNF DidNotFinish,");
  EXPECT_EQ(shown({a, b, "c OK - 70 31:7 100:60"}),
            "2: 9 81 0 0:01:30 OK, 8 72 0 0:01:20 OK, 7 53 10 0:01:10 OK,");
  EXPECT_EQ(shown({a, a, a, b, b, b, b, b, b, "c OK - 70 31:7 100:60"}).substr(0, 2), "1:");
  EXPECT_EQ(shown({a}), "2: 9 81 0 0:01:30 OK,");
  EXPECT_EQ(shown({"a OK - 90 0:0 31:9 FIN1:90", "b OK - 80 0:0 31:8 Finish2:80"}),
            "1: 9 81 0:01:30 OK, 8 72 0:01:20 OK,");
}

TEST(ForeignEvent, ForksAreCoursesOfTheirOwn) {
  const Made made = MakeClass({"a OK - 90 31:9 41:20 33:50", "b OK - 90 31:9 32:20 33:50",
                               "c OK - 90 31:9 32:20 33:50", "d MissingPunch - 80 31:9 41:20",
                               "e OK - 90 31:9 41:20 33:50", "f OK - 90 31:9 32:20 33:50"});
  const ClassRecords& klass = made.records.classes.at(0);
  EXPECT_EQ(klass.codes, (std::vector<std::int32_t>{31, 32, 33}));
  EXPECT_EQ(klass.other_codes, (std::vector<std::vector<std::int32_t>>{{31, 41, 33}}));
  EXPECT_EQ(klass.list_of_runner, (std::vector<std::size_t>{1, 0, 0, 1, 1, 0}));
  EXPECT_NE(made.remarks.find("2 courses; its analysis leaves out 3 runners"), string::npos)
      << made.remarks;
}

TEST(ForeignEvent, RemarksOnContradictions) {
  for (const auto& [lines, remark] : Rows<std::vector<string>, string>{
           {{"x OK - - 31:5"}, "result: 1 runner of status OK has no time and so no result\n"},
           {{"x Active - 9 31:5", "y Inactive - 9 31:5"},
            "status: 2 runners had not finished when the file was written: they have no "
            "result\n"},
           {{"x Moved - - 31:5"},
            "status: 1 runner with split times, but a status of those who did not start: the "
            "splits are kept\n"},
           {{"x OK - 5 31:5"},
            "class \"A\": finish: 1 runner with a lap of 0 seconds, which is stored as a "
            "millisecond\n"}}) {
    EXPECT_EQ(MakeClass(lines).remarks, remark);
  }
}

// Most runners show the course, whatever single ones punched or the file says.
TEST(ForeignEvent, TheCourseIsWhatMostRunnersPunched) {
  const std::vector<string> lines = {"a OK - 90 31:9 32:20", "b OK - 90 31:9 32:20",
                                     "c OK - 90 31:9 32:20", "d OK - 90 31:9 32:20 77:30"};
  for (const std::int32_t controls : {0, 2, 5}) {
    const Made made = MakeClass(lines, controls);
    EXPECT_EQ(made.records.classes[0].codes, (std::vector<std::int32_t>{31, 32})) << controls;
    EXPECT_TRUE(made.records.classes[0].other_codes.empty()) << controls;
    EXPECT_NE(made.remarks.find("punches: 1 "), string::npos) << made.remarks;
  }
}

// Small classes, in which nobody or a single runner punched all controls in order.
TEST(ForeignEvent, FewRunnersShowTheCourseToo) {
  const string good = "a OK - 90 31:9 32:20 33:40", more = "b OK - 90 31:9 77:10 32:20 33:40";
  const string twice = "c OK - 90 31:9 32:20 31:25 33:40";
  const string fork = "d OK - 90 31:9 42:20 33:40";
  const string first = "x MissingPunch - 90 32:20 33:40", last = "y MissingPunch - 90 31:20 32:40";
  const string all = "z MissingPunch - 90 31:20 32 33:60";
  for (const auto& [lines, controls, courses] : Rows<std::vector<string>, std::int32_t, string>{
           {{good}, 0, "31 32 33 "},
           {{good, more}, 0, "31 32 33 "},
           {{more, good}, 0, "31 32 33 "},
           {{twice, more, good}, 0, "31 32 33 "},
           {{good, fork}, 0, "31 32 33 /31 42 33 "},
           {{more}, 0, "31 77 32 33 "},
           {{more, first, last}, 3, "31 32 33 "},
           {{more, first, last}, 4, "31 77 32 33 "},
           {{first, last, last}, 0, "31 32 "},
           {{first, last, all}, 3, "31 32 33 "},
           {{all, "d MissingPunch - 90 31:9 42 33:40"}, 0, "31 32 33 /31 42 33 "}}) {
    const Made made = MakeClass(lines, controls);
    string text;
    for (const std::int32_t code : made.records.classes[0].codes)
      text += std::to_string(code) + " ";
    for (const auto& list : made.records.classes[0].other_codes) {
      text += "/";
      for (const std::int32_t code : list) text += std::to_string(code) + " ";
    }
    EXPECT_EQ(text, courses) << lines[0] << controls;
  }
}

// An event with more courses could not be loaded again.
TEST(ForeignEvent, AnEventHasNotMoreCoursesThanAFileCanHold) {
  std::vector<string> lines;
  for (int code = 1; code <= 100; ++code) {
    for (int other = 201; other <= 301; ++other) {
      lines.push_back("x OK - 90 " + std::to_string(code) + ":5 " + std::to_string(other) + ":9");
    }
  }
  const Made made = MakeClass(lines);
  EXPECT_EQ(made.records.classes[0].runners.size(), 10'100u);
  EXPECT_EQ(made.records.classes[0].other_codes.size(), 9'999u);
  EXPECT_NE(made.remarks.find("100 more courses than an event can have"), string::npos);
}

TEST(ForeignEvent, LegsBeyondARecordAreJoined) {
  string line = "a OK - 7000";
  for (int control = 1; control <= 60; ++control) {
    line += " " + std::to_string(100 + control) + ":" + std::to_string(100 * control);
  }
  const Made made = MakeClass({line});
  clsLapData& runner = *made.records.classes[0].runners[0];
  EXPECT_EQ(made.records.classes[0].codes.size(), 49u);
  EXPECT_EQ(runner.LegCount(), 50);
  EXPECT_EQ(std::lround(runner.Lap(49) * 86400), 100);
  EXPECT_EQ(std::lround(runner.Lap(50) * 86400), 2100);
  EXPECT_NE(made.remarks.find("more than 49 controls"), string::npos) << made.remarks;
}

// Only what every runner shows is mended.
TEST(ForeignEvent, ClocksThatWereWrongForEverybodyAreMended) {
  const auto first = [](const Made& made) { return Shown(*made.records.classes[0].runners[0]); };
  const std::vector<string> late = {"a OK - 90 31:3609 32:3620", "b OK - 80 31:3619 32:3630",
                                    "c OK - 70 31:3610 32:3640"};
  EXPECT_EQ(first(MakeClass(late)), "9 11 70 0:01:30 OK");
  const std::vector<string> noon = {"a OK - 90 31:9 32:-43180", "b OK - 80 31:19 32:-43170",
                                    "c OK - 70 31:-43190 32:-43160"};
  EXPECT_EQ(first(MakeClass(noon)), "9 11 70 0:01:30 OK");
  auto one_is_right = late;
  one_is_right.push_back("d OK - 70 31:10 32:40");
  EXPECT_EQ(first(MakeClass(one_is_right)), "3609 11 0:01:30 OK");
}

TEST(ForeignEvent, CodesThatAreNoNumbersKeepTheirTextInEveryFile) {
  const auto root = NewRoot();
  const auto model = CurrentModel();
  const auto load = [&](const string& name, const string& codes) {
    RemarkList remarks;
    ForeignEvent event(remarks);
    event.ClassNamed(name).runners.push_back(RunnerOf(event, "a OK - 90 " + codes));
    ProgressReport progress(std::make_shared<ProgressHandlers>(), false);
    FeedModel(*model, std::move(event).Take(), EventNameRule::kNormalLoad, KR_LOADMODE_APPEND,
              progress, remarks);
    const auto course = root->CourseData(std::to_string(root->ClassData(name)->CourseNum));
    string texts;
    for (std::int32_t i = 1; i <= course->ControlCount(); ++i) {
      texts += std::to_string(course->ControlNum(i)) + "=" + course->ControlCodeText(i) + " ";
    }
    return texts;
  };
  EXPECT_EQ(load("A", "31:5 A1:6 12345:7"), "31=31 10001=A1 10002=12345 ");
  EXPECT_EQ(load("B", "B2:5 A1:6 031:7"), "10003=B2 10001=A1 31=31 ");
}

TEST(ForeignEvent, ValuesOfManyLanguages) {
  for (const auto& [text, seconds] : Rows<string, double>{{"1:02:03", 3723},
                                                          {"119:03", 7143},
                                                          {"12:34,5", 754.5},
                                                          {"978.3", 978.3},
                                                          {"-0:45:00", -2700},
                                                          {" 00:09 ", 9},
                                                          {"1:2:3.4567", 3723.456}}) {
    const auto time = ForeignTime(text);
    ASSERT_TRUE(time) << text;
    EXPECT_EQ(*time, std::llround(seconds * 1000)) << text;
  }
  for (const char* text :
       {"", "-----", "--:--:--", "1:60", "1:2:3:4", "mp", "9999999:00", "1:", "."}) {
    EXPECT_FALSE(ForeignTime(text)) << text;
  }
  EXPECT_EQ(ForeignClock("9:05"), 32'700'000);
  EXPECT_FALSE(ForeignClock("24:00:00"));
  EXPECT_FALSE(ForeignClock("905"));
  EXPECT_EQ(Meters("4,4", "km"), 4400);
  EXPECT_EQ(Meters("1000", "ft"), 305);
  EXPECT_EQ(Meters("-5", "m") + Meters("x", "km") + Meters("1e9", "km"), 0);
  EXPECT_EQ(ShownName("Åke", "Öberg"), "Åke Öberg");
  EXPECT_EQ(ShownName("大輔", "川崎"), "川崎 大輔");
  EXPECT_EQ(ShownName("", "\u00A0Pelé\u00A0"), "Pelé");
  for (const auto& [text, sex] : Rows<string, string>{
           {"m", "M"}, {"Herr", "Herr"}, {"H", "M"}, {"W", "F"}, {"D", "F"}, {"男", "男"}}) {
    EXPECT_EQ(NormalSex(text), sex) << text;
  }
}

// --- what the model does with it ---

// Class A with runners of two courses, one of whom runs outside the competition, and class B.
std::shared_ptr<clsKeltrun2> ForkedEvent() {
  const auto root = NewRoot();
  for (const auto& [number, codes] : Rows<std::int32_t, std::vector<std::int32_t>>{
           {1, {31, 32, 33, 34}}, {2, {31, 42, 33, 34}}}) {
    const auto course = root->AddCourse(number);
    course->SetControlCount(4);
    for (std::int32_t i = 1; i <= 4; ++i)
      course->SetControlNum(i, codes[static_cast<std::size_t>(i - 1)]);
  }
  for (const char* name : {"A", "B"}) {
    root->AddClass(name)->ControlCount = 4;
    root->AddClass(name)->CourseNum = 1;
  }
  const auto klass = root->AddClass("A");
  AddRunner(*klass, "guest", "0:01:00", {10, 10, 10, 10, 20})->Status = RunnerStatus::kNotCompeting;
  AddRunner(*klass, "first", "0:01:10", {10, 20, 10, 10, 20});
  AddRunner(*klass, "fork", "0:01:20", {10, 20, 20, 10, 20})->CourseNum = 2;
  AddRunner(*klass, "second", "0:01:30", {10, 20, 20, 20, 20});
  AddRunner(*root->AddClass("B"), "other", "0:01:40", {10, 20, 20, 20, 30});
  root->MakeSegmentSet();
  return root;
}

// "name:rank" for each runner of a set.
template <typename Set, typename Rank, typename Name>
string Ranks(const Set& set, Rank rank, Name name) {
  string out;
  for (std::int32_t i = 1; i <= set.Count(); ++i) out += name(i) + ":" + rank(i) + " ";
  return out;
}

string AnalysisRanks(clsAnalyzer& analyzer) {
  analyzer.Execute();
  return Ranks(
      analyzer, [&](auto i) { return analyzer.Item(i)->Rank(); },
      [&](auto i) { return analyzer.Item(i)->OtherData()->RunnerName; });
}

TEST(ForeignEvent, RunnersAreComparedOnTheirOwnCourse) {
  const auto root = ForkedEvent();
  const auto of_class = root->NewAnalyzer();
  of_class->AddClass("A");
  EXPECT_EQ(AnalysisRanks(*of_class), "guest: first:1 second:2 ");
  EXPECT_EQ(of_class->LeftOutCount(), 1);
  const auto of_course = root->NewAnalyzer();
  of_course->AddCourse(1);
  EXPECT_EQ(AnalysisRanks(*of_course), "guest: first:1 second:2 other:3 ");
  const auto of_fork = root->NewAnalyzer();
  of_fork->AddCourse(2);
  EXPECT_EQ(AnalysisRanks(*of_fork), "fork:1 ");
  EXPECT_EQ(of_fork->ControlCount, 4);
  const auto list = root->NewResultsHolder();
  list->AddClass("A");
  list->CalcRank();
  const auto ranks = Ranks(
      *list, [&](auto i) { return list->RankInDataSet(i); },
      [&](auto i) { return list->Item(i)->RunnerName; });
  EXPECT_EQ(ranks, "guest: first:1 fork:2 second:3 ");
  EXPECT_EQ(list->LeftOutCount(), 0);
  EXPECT_EQ(root->ClassAndCourseList().back(), ",1,A/B,a_b,4");
  // The courses share 33-34-F, and the segment has the runners of both.
  ASSERT_EQ(root->SegmentCount(), 1);
  EXPECT_EQ(root->SegmentData(1)->Analyzer()->FullSetCount(), 5);
}

TEST(ForeignEvent, NativeFilesKeepWhatOtherProgramsKnow) {
  const auto root = ForkedEvent();
  clsLapData& runner = *root->ClassData("A")->LapData(1);
  runner.Bib = "H-1";
  runner.ControlCard = "SIAC 8";
  runner.GivenName = "Gu";
  runner.FamilyName = "Est";
  runner.Nationality = "NZL";
  root->CourseData("2")->SetControlCodeText(2, "X2");
  const TemporaryFolder folder;
  ASSERT_TRUE(root->FileControl()->SaveLapFile(folder.Path("a.lxm")));
  const auto again = NewRoot();
  ASSERT_TRUE(again->FileControl()->LoadLapFile(folder.Path("a.lxm")));
  const clsLapData& read = *again->ClassData("A")->LapData(1);
  EXPECT_EQ(read.Bib + read.ControlCard + read.GivenName + read.FamilyName + read.Nationality,
            "H-1SIAC 8GuEstNZL");
  EXPECT_EQ(read.Status, RunnerStatus::kNotCompeting);
  EXPECT_EQ(again->ClassData("A")->LapData(3)->CourseNum, 2);
  EXPECT_EQ(again->CourseData("2")->ControlCodeText(2), "X2");
  EXPECT_FALSE(again->CourseData("2")->HasCodeText(1));
}

}  // namespace
}  // namespace keltrun::test
