// Runner records, classes, courses, the event header and the root object with its registries.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <functional>
#include <optional>
#include <sstream>

#include "keltrun2/model/result_status.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using std::string;
using std::to_string;

std::vector<string> Words(const string& text) {
  std::istringstream words(text);
  return {std::istream_iterator<string>(words), {}};
}

// Every row of the table, up to a ";", is a result and the inputs that the call converts to it.
template <typename Call>
void ExpectForAll(const string& table, Call call) {
  std::istringstream rows(table);
  for (string row; std::getline(rows, row, ';');) {
    const auto words = Words(row);
    for (std::size_t i = 1; i < words.size(); ++i) EXPECT_EQ(call(words[i]), words[0]) << words[i];
  }
}

// The number of the automation error that the call raises; 0 if it raises none.
template <typename Call>
int ErrorNumberOf(Call call) {
  try {
    call();
  } catch (const AutomationError& error) {
    return error.Number();
  }
  return 0;
}

std::shared_ptr<clsKeltrun2> RootWith(const string& classes) {
  const auto root = NewRoot();
  for (const string& name : Words(classes)) root->AddClass(name);
  return root;
}

string ClassNames(const clsKeltrun2& root) {
  string names;
  for (int i = 1; i <= root.ClassCount(); ++i) names += root.ClassData(i)->ClassName() + " ";
  return names;
}

TEST(RunnerRecord, LapsAndLegCount) {
  clsLapData runner;
  runner.SetLap(3, Seconds(83));
  EXPECT_EQ(runner.LegCount(), 3);
  EXPECT_EQ(runner.Lap(5), 0);
  EXPECT_EQ(runner.LegCount(), 5) << "reading increases the count too";
  EXPECT_EQ(runner.LapToString(7) + runner.LapToString(3, "h:nn:ss"), "－0:01:23");
  EXPECT_EQ(runner.LegCount(), 7);
  for (const int any : {-5, 200, 2}) {
    runner.SetLegCount(any);
    EXPECT_EQ(runner.LegCount(), any);
  }
  for (const int outside : {-1, 51, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(ErrorNumberOf([&] { runner.Lap(outside); }), 9) << outside;
    EXPECT_EQ(ErrorNumberOf([&] { runner.SetLap(outside, 1); }), 9) << outside;
    EXPECT_EQ(ErrorNumberOf([&] { runner.LapToString(outside); }), 9) << outside;
    EXPECT_EQ(runner.LegCount(), 2);
  }
  EXPECT_EQ(runner.Lap(3), Seconds(83)) << "a lower count hides laps without clearing them";
  runner.SetLap(50, Seconds(9));
  EXPECT_EQ(runner.Lap(50), Seconds(9));
  runner.SetStartTime(nullptr);  // makes a new one
  EXPECT_EQ(runner.StartTime()->Value(), 0);
}

TEST(RunnerRecord, ResultsAreNormalised) {
  RestartIn(Mode::kJapaneseTexts);
  ExpectForAll(R"(1:02:03 10203 01:02:03 １：０２：０３ 1:02:03(5) 1:02'03" 01.02.03;
                  1:02:03.4 1:02:03.45 01:02:03.4 1:02:03.499; 0:00:00.5 0:00:00.5;
                  1:02:05 6205 62:05 062:05; 25:03:07 25:03:07; DNF dnf ＤＮＦ ｄｎｆ;
                  DISQ 0:00:00 00 0:00)",
               [](const string& text) {
                 clsLapData runner;
                 runner.SetResult(text);
                 return runner.Result();
               });
}

TEST(RunnerRecord, StatusCodes) {
  const auto code = [](const string& text) { return to_string(ResultStatusCode(text)); };
  const string both = R"(0 12'30 1:02:03 D: P PX; 2 P2.5; 3 P3; 50 mp; 90 DNF; 91 ocl あCL; 92 DNQ;
                         93 DISQ dsq; 98 MPX OK CL OCLX; 99 dns;)";
  RestartIn(Mode::kEnglishTexts);
  ExpectForAll(both + "98 ＭＰ ｄｎｆ Ｐ４", code);
  RestartIn(Mode::kJapaneseMode);  // accepts full-width letters too
  ExpectForAll(both + "50 ＭＰ; 90 ｄｎｆ; 4 Ｐ４", code);
  EXPECT_EQ(code("") + code("  ") + code(" DNS "), "989899");
}

// Which texts are times depends on who asks.
TEST(RunnerRecord, QuestionsAboutResults) {
  const auto seconds = [](const std::optional<DateTime>& time) {
    return time ? to_string(std::lround(*time * 86400)) : "-";
  };
  ExpectForAll(R"(3723,3723,3723,rank,3723 1:02:03; -,90187,90187,-,0 25:03:07;
                  -,-,754,rank,8467200 1234; -,-,754,rank,0 12:34.4; -,-,-,-,4320000 MP)",
               [&](const string& text) {
                 return seconds(FinishTime(text)) + "," + seconds(TotalTime(text)) + "," +
                        seconds(ReadableTime(text)) + "," +
                        (IsTimeKey(ResultSortKey(text)) ? "rank" : "-") + "," +
                        seconds(ClassSortKey(text));
               });
}

TEST(Classes, InfoAndFileBaseName) {
  const auto root = NewRoot();
  // Wide letters keep their case, wide symbols are folded after the path is removed, characters up
  // to U+00FF are kept. The title begins after "/", but the folder ends at ":".
  ExpectForAll(R"(m21a M21A; u5973u5b50A 女子Ａ; w M/W; M/W Ｍ／Ｗ; d:\data\m21 D:\Data\M21;
                  x/y:\yz x/y:z; abcd a<b>|c"d'; Éé Éé; ud83dude00uff71 😀ｱ)",
               [&](const string& name) {
                 const auto klass = root->AddClass(name);
                 const string derived = klass->FileName();
                 for (const char* again : {"", "0", name.c_str()}) {
                   klass->SetFileName("own");
                   klass->SetFileName(again);
                   EXPECT_EQ(klass->FileName(), derived);
                 }
                 return derived;
               });
  const auto klass = root->ClassData(1);
  const Rows<int, int, string> infos = {
      {3450, 0, "3.45km"}, {0, 150, ""}, {12000, 150, "12km ↑150m"}, {7, -5, "0.007km ↑-5m"}};
  for (const auto& [length, climb, info] : infos) {
    klass->Length = length;
    klass->Climb = climb;
    EXPECT_EQ(klass->ClassInfo(), info);
  }
}

TEST(Classes, RunnersAreNumberedAcrossClassesAndFoundByPosition) {
  const auto root = RootWith("A B");
  const auto a = root->ClassData(1), b = root->ClassData(2);
  EXPECT_EQ(ErrorNumberOf([&] { a->AddLapObject(nullptr); }), 91);
  for (const auto& klass : {a, b, a}) klass->AddLap();
  const auto third = a->LapData(2);
  EXPECT_EQ(third->ClassName() + to_string(third->SerialNum()), "A3");
  for (const int none : {0, 3, -1}) {
    EXPECT_EQ(a->LapData(none), nullptr);
    a->RemoveLap(none);
  }
  EXPECT_EQ(a->LapCount(), 2);
  a->RemoveLap(1);
  EXPECT_EQ(a->LapData(1), third);
  a->RemoveLap(1);
  EXPECT_EQ(a->LapCount(), 0);
  EXPECT_EQ(a->AddLap()->SerialNum(), 4);
}

TEST(Classes, SortLapOrdersByResultAndTurnsEqualOnesAround) {
  const auto root = RootWith("M21A");
  for (const string& entry : Words("a=1:05:00 b=DNF c=58:30 d= e=DNS f=MP g=P2 h=25:03:07 "
                                   "i=1:05:00 j=OCL k=DNQ l=DSQ m=XYZ n=0:58:30.4")) {
    AddRunner(*root->ClassData(1), entry.substr(0, 1), entry.substr(2), {});
  }
  // A time of 24 hours or more is not a time of day: its code 0 comes before all others.
  for (const char* expected : {"hcniagfbjklmde", "hcnaigfbjkldme"}) {
    root->SortLap();
    string names;
    for (int i = 1; i <= 14; ++i) names += root->ClassData(1)->LapData(i)->RunnerName;
    EXPECT_EQ(names, expected);
  }
}

TEST(Courses, ControlCodes) {
  clsCourseData course;
  for (int i = 0; i <= 50; ++i) course.SetControlNum(i, 100 + i);
  const Rows<int, int, int> cases = {{3, 0, 0},      {3, 3, 103},   {3, 4, 9999},
                                     {50, 50, 150},  {0, 1, 9999},  {3, 60, 9999},
                                     {60, 61, 9999}, {-1, 1, 9999}, {-1, 0, 0}};
  for (const auto& [controls, index, code] : cases) {
    course.SetControlCount(controls);
    EXPECT_EQ(course.ControlNum(index), code) << controls << " controls, index " << index;
  }
  EXPECT_EQ(ErrorNumberOf([&] { course.ControlNum(-1); }), 9);
  course.SetControlCount(60);
  EXPECT_EQ(ErrorNumberOf([&] { course.ControlNum(51); }), 9);
  EXPECT_EQ(ErrorNumberOf([&] { course.SetControlNum(51, 1); }), 9);
}

TEST(EventHeader, TextHoldsWhatIsKnown) {
  const Rows<string, DateTime, string> cases = {{"", -3, "Cup"},
                                                {"North", 0, "Cup [North] "},
                                                {"", 45948, "Cup 2025年10月18日"},
                                                {"A", 45948, "Cup [A]  2025年10月18日"}};
  RestartIn(Mode::kJapaneseTexts);
  clsEventData event;
  event.EventName = "Cup";
  for (const auto& [terrain, date, text] : cases) {
    event.Terrain = terrain;
    event.EventDate()->SetValue(date);
    EXPECT_EQ(event.ToString(), text);
  }
  event.SetEventDate(nullptr);  // makes a new one
  EXPECT_EQ(event.EventDate()->Value(), 0);
}

TEST(Root, ClassesAndCoursesAreFoundByNameAndPosition) {
  const auto root = RootWith("M21A m21a Ｍ２１Ａ Ärzte 2");
  EXPECT_EQ(ClassNames(*root), "M21A Ｍ２１Ａ Ärzte 2 ");  // case is folded, width is not
  EXPECT_EQ(root->ClassData("ｍ２１ａ"), root->ClassData(2));
  EXPECT_EQ(root->ClassData("äRZTE"), root->ClassData(3));
  EXPECT_EQ(root->ClassData("2"), root->ClassData(4));
  for (const int none : {0, 5, -1}) EXPECT_EQ(root->ClassData(none), nullptr);
  EXPECT_EQ(root->ClassData("none"), nullptr);
  for (const char* name : {"none", "m21A"}) root->RemoveClass(name);
  EXPECT_EQ(ClassNames(*root), "Ｍ２１Ａ Ärzte 2 ");
  EXPECT_FALSE(root->IsClassExists("M21A"));

  for (const int number : {7, 3, -2, 3}) root->AddCourse(number);
  EXPECT_EQ(root->CourseData("-2"), root->CourseData(3));
  EXPECT_EQ(root->CourseData(3)->CourseIndex(), -2);
  EXPECT_FALSE(root->CourseData("03") || root->CourseData(4) || root->CourseData(0));
  for (const int number : {7, 99}) root->RemoveCourse(number);
  EXPECT_EQ(root->CourseCount(), 2);
  EXPECT_FALSE(root->IsCourseExists(7));
}

TEST(Root, RenameClass) {
  const auto root = RootWith("A B C");
  const auto b = root->ClassData("B");
  const auto runner = b->AddLap();
  b->SetFileName("own");
  root->RenameClass("b", "X");  // names are compared exactly
  for (const char* taken : {"C", "c", "a"}) {
    EXPECT_EQ(ErrorNumberOf([&] { root->RenameClass("B", taken); }), 457);
  }
  EXPECT_EQ(ClassNames(*root) + b->FileName(), "A B C own");
  root->RenameClass("B", "New");
  EXPECT_EQ(root->ClassData("NEW"), b);
  EXPECT_FALSE(root->IsClassExists("B"));
  EXPECT_EQ(b->FileName() + " " + runner->ClassName(), "new New");
  root->RenameClass("New", "NEW");  // another case of its own name
  EXPECT_EQ(ClassNames(*root), "A NEW C ");
  EXPECT_EQ(root->ClassData("new"), b);
}

TEST(Root, SortClass) {
  ExpectForAll("312:0 3,1; 321:0 3,2; 213:0 0,-1,x,,2 2,2,2 2.5; 123:0 ,; 123:9 4 3,99",
               [](const string& order) {
                 const auto root = RootWith("1 2 3");
                 const int error = ErrorNumberOf([&] { root->SortClass(order); });
                 string names = ClassNames(*root);
                 std::erase(names, ' ');
                 return names + ":" + to_string(error);
               });
}

TEST(Root, ChoicesOfClassesAndCourses) {
  // Classes are given as a letter, a course and a number of runners.
  const auto choices = [](const string& classes) {
    const auto root = NewRoot();
    for (const string& text : Words(classes)) {
      const auto klass = root->AddClass(text.substr(0, 1));
      klass->CourseNum = text[1] - '0';
      for (char i = '0'; i < text[2]; ++i) klass->AddLap();
    }
    string list;
    for (const string& choice : root->ClassAndCourseList()) list += choice + " ";
    return list;
  };
  EXPECT_EQ(choices("A19 B25 C17 D03"), "1,,A,a,9 2,,B,b,5 3,,C,c,7 4,,D,d,3 ,1,A/C,a_c,16 ");
  // Shared courses are in the order of their last class.
  EXPECT_EQ(choices("A11 B21 C21 D10"),
            "1,,A,a,1 2,,B,b,1 3,,C,c,1 4,,D,d,0 ,2,B/C,b_c,2 ,1,A/D,a_d,1 ");
  const auto separated = [](const char* text) {
    const ClassAndCourseValue value = NewRoot()->SeparateClassAndCourseValue(text);
    return value.ValueName + "|" + value.FileName + "|" + to_string(value.ClassIndex) + "|" +
           to_string(value.CourseNum) + "|" + to_string(value.RunnerCount);
  };
  EXPECT_EQ(separated(",1,A/C,a_c,17"), "A/C|a_c|0|1|17");
  EXPECT_EQ(separated(" 2 , x , B b , b "), "B b|b|2|0|0");
}

// Two classes with long names that share 5,000 courses: the choices must not repeat the names as
// often as that. The classes and their runners keep them.
TEST(Root, LongClassNamesAreShortInTheChoicesOfCourses) {
  constexpr std::int32_t kCourses = 5000;
  constexpr std::size_t kLength = 20000;
  const auto root = NewRoot();
  for (const char letter : {'a', 'b'}) {
    const string name(kLength, letter);
    const auto klass = root->AddClass(name);
    for (std::int32_t course = 1; course <= kCourses; ++course) klass->AddLap()->CourseNum = course;
    EXPECT_EQ(klass->LapData(kCourses)->ClassName(), name);
  }
  const auto choices = root->ClassAndCourseList();
  ASSERT_EQ(choices.size(), 2u + kCourses);
  EXPECT_EQ(choices[1].size(), string("2,,,,5000").size() + 2 * kLength);
  EXPECT_EQ(choices[2], ",1," + string(200, 'a') + "/" + string(200, 'b') + "," + string(200, 'a') +
                            "_" + string(200, 'b') + ",2");
  root->RenameClass(string(kLength, 'a'), "short");
  EXPECT_EQ(root->ClassData(1)->LapData(1)->ClassName(), "short");
  EXPECT_EQ(root->ClassData(2)->LapData(1)->ClassName(), string(kLength, 'b'));
}

TEST(Root, ClearEmptiesTheModelAndKeepsTheServices) {
  const auto root = RootWith("A");
  const auto event = root->EventData();
  const auto meta = root->MetaData();
  const auto service = root->FileControl();
  EXPECT_FALSE(service->LoadLapFile("missing.lxm", KR_FILETYPE_AUTODETECT, KR_LOADMODE_APPEND));
  const string error = root->ErrorComment();
  const auto runner = AddRunner(*root->ClassData(1), "a", "1:00:00", {60});
  root->AddCourse(1);
  root->SetFileName("a.lxm");
  root->SetFileDate(45948);
  root->Clear();
  EXPECT_EQ(root->ClassCount() + root->CourseCount() + root->SegmentCount(), 0);
  EXPECT_TRUE(root->EventData() != event && root->MetaData() != meta);
  EXPECT_TRUE(root->FileName().empty() && root->FileDate() == 0);
  EXPECT_TRUE(root->FileControl() == service && runner->RunnerName == "a");
  EXPECT_EQ(root->ErrorComment(), error);
  EXPECT_NE(error, "");
  EXPECT_EQ(root->AddClass("B")->AddLap()->SerialNum(), 1);
}

TEST(Root, ServicesWorkOnTheYoungestRootAndObjectsOutliveIt) {
  const auto first = RootWith("First");
  auto second = std::make_shared<clsKeltrun2>();
  for (const char* name : {"A", "B"}) second->AddClass(name);
  const auto event = second->EventData();
  const auto runner = AddRunner(*second->ClassData(1), "a", "0:03:00", {60, 120});
  const auto analyzer = first->NewAnalyzer();
  analyzer->AddClass("A");
  first->SortClass("2");
  EXPECT_EQ(ClassNames(*second), "B A ");
  EXPECT_EQ(first->ClassAndCourseList().back(), "2,,A,a,1");
  ASSERT_TRUE(first->FileControl()->LoadLapFile(ExampleFile("midorigaoka/event.lxm")));
  EXPECT_EQ(second->ClassCount(), 11);
  second.reset();
  analyzer->Execute();
  EXPECT_EQ(analyzer->Count(), 1);
  EXPECT_EQ(event->ToString(), "");
}

TEST(Root, ATemporaryRootGivesWayToTheOneBefore) {
  const TemporaryFolder folder;
  const string file = folder.Path("e.lxm");
  auto first = RootWith("First");
  const auto files = first->FileControl();
  {
    const auto second = std::make_shared<clsKeltrun2>();
    auto third = std::make_shared<clsKeltrun2>();
    third.reset();
    second->AddClass("Second");
    EXPECT_EQ(first->ClassAndCourseList().back(), "1,,Second,second,0");
  }
  EXPECT_EQ(first->ClassAndCourseList().back(), "1,,First,first,0");
  ASSERT_TRUE(files->SaveLapFile(file)) << first->ErrorComment();
  const string saved = ReadBytes(file);
  EXPECT_NE(saved.find("First"), string::npos);

  // Without a root there is no event, and nothing is read, written or returned.
  const auto analyzer = first->NewAnalyzer();
  const auto html = first->HtmlControl();
  const auto texts = first->TextControl();
  const auto graphics = first->GraphicControl();
  first.reset();
  SiteOptions site;
  site.OutputFolder = folder.Path();
  site.IndexFile = "index.html";
  const auto fails = [](bool done) {
    return !done && NewRoot()->ErrorComment().find("no root object") != string::npos;
  };
  EXPECT_TRUE(fails(files->SaveLapFile(file)));
  EXPECT_TRUE(fails(files->LoadLapFile(file)));
  EXPECT_TRUE(fails(files->OutputSite(site)));
  EXPECT_EQ(ReadBytes(file), saved);
  EXPECT_FALSE(std::filesystem::exists(folder.Path("index.html")));
  using Call = std::function<void()>;
  for (const Call& call :
       {Call([&] { analyzer->AddClass("First"); }), Call([&] { analyzer->AddCourse(1); }),
        Call([&] { (void)html->OutputAnalysis(analyzer); }),
        Call([&] { (void)html->OutputViewer({}); }),
        Call([&] { (void)texts->OutputTextMail(analyzer); }),
        Call([&] { (void)texts->OutputInfoJson(); }),
        Call([&] { graphics->PrintAnalysis(analyzer, std::make_shared<clsPrintBook>()); })}) {
    EXPECT_EQ(ErrorNumberOf(call), KR_ERROR_OBJECT_NOT_SET);
  }
}

constexpr auto kMergeId = KR_LOADMODE_MERGE_ID;
constexpr auto kMergeName = KR_LOADMODE_MERGE_NAME;
constexpr auto kPriority = KR_LOADMODE_PRIORITY_NEWDATA;
constexpr auto kNoAdd = KR_LOADMODE_NOTADD_NEWDATA;

// A runner whose texts, numbers and laps are all the same; they are empty with "" and 0.
std::shared_ptr<clsLapData> Filled(const string& text, int number, int legs) {
  const auto r = std::make_shared<clsLapData>();
  r->Age = r->ClubName = r->Rank = r->Seed = r->Sex = r->RankFix = r->CompetitorId = text;
  r->SetResult(text);
  r->Ecard = number;
  r->StartTime()->SetValue(Seconds(number));
  for (int leg = 1; leg <= legs; ++leg) r->SetLap(leg, Seconds(number));
  return r;
}

string Described(clsLapData& r) {
  const auto seconds = [](DateTime time) { return to_string(std::lround(time * 86400)); };
  string text = r.Age + r.ClubName + r.Rank + r.Result() + r.Seed + r.Sex + " " + r.RankFix +
                r.CompetitorId + " " + to_string(r.Ecard) + seconds(r.StartTime()->Value());
  for (int leg = 1; leg <= r.LegCount(); ++leg) text += " " + seconds(r.Lap(leg));
  return text;
}

TEST(Merging, EveryFieldFollowsThePriority) {
  const auto merged = [](auto before, auto added, KrLapFileLoadModeCosnt mode) {
    const auto klass = RootWith("A")->ClassData(1);
    EXPECT_TRUE(klass->AddLapObject(before));
    EXPECT_FALSE(klass->AddLapObject(added, mode));
    EXPECT_EQ(added->ClassName() + to_string(added->SerialNum()), "A0");
    EXPECT_EQ(klass->AddLap()->SerialNum(), 2) << "merging took no number";
    return Described(*before);
  };
  const auto old_one = [] { return Filled("O", 5, 2); };
  const auto new_one = [] { return Filled("N", 6, 3); };
  EXPECT_EQ(merged(old_one(), new_one(), kMergeId), "OOOOOO OO 55 5 5");
  EXPECT_EQ(merged(old_one(), new_one(), kMergeId | KR_LOADMODE_PRIORITY_ORIGINAL),
            "OOOOOO OO 55 5 5");
  EXPECT_EQ(merged(old_one(), new_one(), kMergeId | kPriority), "NNNNNN OO 66 6 6 6");
  EXPECT_EQ(merged(Filled("", 0, 0), new_one(), kMergeName), "NNNNNN  66 6 6 6");
  EXPECT_EQ(merged(old_one(), Filled("", 0, 0), kMergeName | kPriority), "OOOOOO OO 55 5 5");
  // New laps are used whatever their value; the laps after them are kept.
  EXPECT_EQ(merged(new_one(), Filled("", 0, 2), kMergeName | kPriority), "NNNNNN NN 66 0 0 6");
}

TEST(Merging, MatchesByIdOrNameKey) {
  // Adds a runner to four others and marks those who have the new club afterwards.
  const auto club_of = [](const string& name, int id, KrLapFileLoadModeCosnt mode) {
    const auto klass = RootWith("A")->ClassData(1);
    for (const char* known : {"Anna Berger", "川田　一", "Ｂｏｂ", "BOB"}) {
      AddRunner(*klass, known, "", {});
    }
    klass->LapData(2)->ID = klass->LapData(4)->ID = 12;
    const auto runner = Filled("x", 1, 1);
    runner->RunnerName = name;
    runner->ID = id;
    const bool added = klass->AddLapObject(runner, mode);
    EXPECT_EQ(klass->LapCount(), added ? 5 : 4);
    string marks;
    for (int i = 1; i <= klass->LapCount(); ++i) marks += klass->LapData(i)->ClubName + ".";
    return marks;
  };
  ExpectForAll(".x... 12; x.... 0; ....x. 13",  // without a number: the first without one
               [&](const string& id) { return club_of("?", std::stoi(id), kMergeId); });
  // In the key, a wide capital keeps its case but an ASCII capital becomes lower-case.
  ExpectForAll("x.... anna\u3000BERGER; .x... 川田一; ...x. Bob ｂｏｂ; ..x.. Ｂ\u3000ob",
               [&](const string& name) { return club_of(name, 5, kMergeName); });
  EXPECT_EQ(club_of("?", 13, kMergeId | kNoAdd), "....");
  EXPECT_EQ(club_of("Carl", 0, kMergeName | kNoAdd | kPriority), "....");
  EXPECT_EQ(club_of("Anna Berger ", 12, kMergeName), "x....");
  EXPECT_EQ(club_of("BOB", 12, KR_LOADMODE_APPEND), "....x.");
  EXPECT_EQ(club_of("BOB", 12, kPriority), "....x.");
  EXPECT_EQ(club_of("BOB", 12, KR_LOADMODE_APPEND | kNoAdd), "....");
}

}  // namespace
}  // namespace keltrun::test
