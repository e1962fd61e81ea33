// Runner records, classes, courses, the event header and the root object with its registries.
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/model/result_status.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using Names = std::vector<std::string>;

// The number of the automation error that the call raises; 0 for none.
template <typename Call>
std::int32_t ErrorNumberOf(Call call) {
  try {
    call();
  } catch (const AutomationError& error) {
    return error.Number();
  }
  return 0;
}

Names ClassNames(const clsKeltrun2& root) {
  Names names;
  for (std::int32_t i = 1; i <= root.ClassCount(); ++i) {
    names.push_back(root.ClassData(i)->ClassName());
  }
  return names;
}

std::string RunnerNames(const clsClassData& klass) {
  std::string names;
  for (std::int32_t i = 1; i <= klass.LapCount(); ++i) names += klass.LapData(i)->RunnerName;
  return names;
}

// --- runner record ---

TEST(RunnerRecord, StartsEmpty) {
  clsLapData runner;
  EXPECT_EQ(runner.LegCount(), 0);
  EXPECT_EQ(runner.Result(), "");
  EXPECT_EQ(runner.SerialNum(), 0);
  EXPECT_EQ(runner.StartTime()->Value(), 0);
}

TEST(RunnerRecord, ReadingAndWritingLapsRaisesTheLegCount) {
  clsLapData runner;
  runner.SetLap(3, Seconds(83));
  EXPECT_EQ(runner.LegCount(), 3);
  EXPECT_EQ(runner.Lap(1), 0);
  EXPECT_EQ(runner.Lap(5), 0);
  EXPECT_EQ(runner.LegCount(), 5);
  EXPECT_EQ(runner.LapToString(7), "－");
  EXPECT_EQ(runner.LapToString(3, "h:nn:ss"), "0:01:23");
  EXPECT_EQ(runner.LegCount(), 7);
  runner.SetLap(0, Seconds(1));
  EXPECT_EQ(runner.LegCount(), 7);
}

TEST(RunnerRecord, LegCountHidesLapsWithoutClearingThem) {
  clsLapData runner;
  runner.SetLap(4, Seconds(60));
  runner.SetLegCount(2);
  EXPECT_EQ(runner.LegCount(), 2);
  EXPECT_EQ(runner.Lap(4), Seconds(60));
  for (const std::int32_t any : {-5, 0, 200}) {
    runner.SetLegCount(any);
    EXPECT_EQ(runner.LegCount(), any);
  }
}

TEST(RunnerRecord, AnIndexOutsideTheTableFailsAndChangesNothing) {
  clsLapData runner;
  runner.SetLap(2, Seconds(1));
  for (const std::int32_t index : {-1, 51, 1000, INT32_MIN, INT32_MAX}) {
    SCOPED_TRACE(index);
    EXPECT_EQ(ErrorNumberOf([&] { runner.Lap(index); }), 9);
    EXPECT_EQ(ErrorNumberOf([&] { runner.SetLap(index, 1); }), 9);
    EXPECT_EQ(ErrorNumberOf([&] { runner.LapToString(index); }), 9);
    EXPECT_EQ(runner.LegCount(), 2);
  }
  EXPECT_EQ(ErrorNumberOf([&] { runner.SetLap(50, Seconds(9)); }), 0);
  EXPECT_EQ(runner.Lap(50), Seconds(9));
}

TEST(RunnerRecord, AStartTimeThatIsSetIsSharedAndNullMakesANewOne) {
  clsLapData runner;
  const auto start = std::make_shared<clsTimeValue>(Seconds(60));
  runner.SetStartTime(start);
  start->SetValue(Seconds(90));
  EXPECT_EQ(runner.StartTime()->Value(), Seconds(90));
  runner.SetStartTime(nullptr);
  ASSERT_TRUE(runner.StartTime());
  EXPECT_EQ(runner.StartTime()->Value(), 0);
}

TEST(RunnerRecord, ResultsAreNormalised) {
  RestartIn(Mode::kJapaneseTexts);
  const struct {
    const char* result;
    Names texts;
  } kCases[] = {
      {"1:02:03", {"10203", "01:02:03", "１：０２：０３", "1:02:03 (5)", "1:02'03\"", "01.02.03"}},
      {"1:02:03.4", {"1:02:03.45", "01:02:03.4", "1:02:03.499"}},
      {"0:12:34", {"1234", "12:34", "12.34", " 00:12:34 "}},
      {"1:02:05", {"6205", "62:05", "62.05", "062:05"}},  // minutes carry into hours
      {"25:03:07", {"25:03:07"}},
      {"0:00:00.5", {"0:00:00.5"}},
      {"DNF", {"dnf", "ＤＮＦ", "ｄｎｆ"}},
      {"É", {"é"}},
      {"", {""}},
      {"DISQ", {"0:00:00", "00", "0:00"}}};
  for (const auto& c : kCases) {
    for (const std::string& text : c.texts) {
      clsLapData runner;
      runner.SetResult(text);
      EXPECT_EQ(runner.Result(), c.result) << text;
    }
  }
}

TEST(RunnerRecord, StatusCodes) {
  const struct {
    const char* text;
    std::int32_t code, code_in_japanese_mode;
  } kCases[] = {{"", 98, 98},    {"  ", 98, 98},   {"12'30", 0, 0},   {"1:02:03", 0, 0},
                {"D:", 0, 0},    {"dns", 99, 99},  {" DNS ", 99, 99}, {"P3", 3, 3},
                {"P", 0, 0},     {"PX", 0, 0},     {"P2.5", 2, 2},    {"P3.5", 4, 4},
                {"mp", 50, 50},  {"MPX", 98, 98},  {"DNF", 90, 90},   {"ocl", 91, 91},
                {"CL", 98, 98},  {"OCLX", 98, 98}, {"DNQ", 92, 92},   {"DISQ", 93, 93},
                {"dsq", 93, 93}, {"OK", 98, 98},   {"ＭＰ", 98, 50},  {"ｄｎｆ", 98, 90},
                {"Ｐ４", 98, 4}, {"あCL", 91, 91}};
  for (const Mode mode : {Mode::kEnglishTexts, Mode::kJapaneseTexts, Mode::kJapaneseMode}) {
    RestartIn(mode);
    for (const auto& c : kCases) {
      SCOPED_TRACE(c.text);
      EXPECT_EQ(ResultStatusCode(c.text),
                mode == Mode::kJapaneseMode ? c.code_in_japanese_mode : c.code);
    }
  }
}

// --- classes ---

TEST(Classes, ClassInfo) {
  const struct {
    std::int32_t length, climb;
    const char* info;
  } kCases[] = {{5200, 0, "5.2km"},     {12000, 0, "12km"},         {3450, 0, "3.45km"},
                {0, 150, ""},           {5200, 150, "5.2km ↑150m"}, {7, 0, "0.007km"},
                {100, -5, "0.1km ↑-5m"}};
  const auto root = NewRoot();
  const auto klass = root->AddClass("M21A");
  for (const auto& c : kCases) {
    klass->Length = c.length;
    klass->Climb = c.climb;
    EXPECT_EQ(klass->ClassInfo(), c.info);
  }
}

TEST(Classes, FileBaseNamesDeriveFromTheName) {
  const struct {
    const char *name, *base;
  } kCases[] = {{"M21A", "m21a"},
                {"女子Ａ", "u5973u5b50A"},  // the full-width letter keeps its case
                {"M/W", "w"},
                {"Ｍ／Ｗ", "M/W"},  // full-width symbols are folded after the path is cut
                {"D:\\Data\\M 21", "d:\\data\\m 21"},
                {"a:b", "a:\\b"},       // the folder "a:" gets its separator
                {"x/y:z", "x/y:\\yz"},  // the title begins behind "/", the folder ends at ":"
                {"a<b>|c\"d'", "abcd"},
                {"Éé", "Éé"},  // below U+0100, and no ASCII letter
                {"ⅣＡ　１", "u2163A 1"},
                {"😀", "ud83dude00"},
                {"ｱ", "uff71"},
                {"", ""}};
  const auto root = NewRoot();
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(root->AddClass(c.name)->FileName(), c.base);
    const auto other = root->AddClass("Other");
    other->SetFileName(c.name);
    EXPECT_EQ(other->FileName(), *c.name == '\0' ? "other" : c.base);
  }
  const auto klass = root->ClassData("M21A");
  klass->SetFileName("Result File");
  EXPECT_EQ(klass->FileName(), "result file");
  klass->SetFileName("0");
  EXPECT_EQ(klass->FileName(), "m21a");
}

TEST(Classes, RunnersAreNumberedAcrossClassesAndFoundByPosition) {
  const auto root = NewRoot();
  const auto a = root->AddClass("A"), b = root->AddClass("B");
  EXPECT_EQ(a->AddLap()->SerialNum(), 1);
  EXPECT_EQ(b->AddLap()->SerialNum(), 2);
  const auto third = a->AddLap();
  EXPECT_EQ(third->SerialNum(), 3);
  EXPECT_EQ(third->ClassName(), "A");
  for (const std::int32_t none : {0, 3, -1}) {
    EXPECT_EQ(a->LapData(none), nullptr);
    a->RemoveLap(none);
  }
  EXPECT_EQ(a->LapCount(), 2);
  a->RemoveLap(1);
  EXPECT_EQ(a->LapData(1), third);
  a->ClearLap();
  EXPECT_EQ(a->LapCount(), 0);
  EXPECT_EQ(a->AddLap()->SerialNum(), 4);
}

TEST(Classes, SortLapOrdersByResultAndTurnsEqualOnesAround) {
  const auto root = NewRoot();
  const auto klass = root->AddClass("M21A");
  char name = 'a';
  for (const char* result : {"1:05:00", "DNF", "58:30", "", "DNS", "MP", "P2", "25:03:07",
                             "1:05:00", "OCL", "DNQ", "DSQ", "XYZ", "0:58:30.4"}) {
    AddRunner(*klass, std::string(1, name++), result, {});
  }
  klass->SortLap();
  // A time of 24 hours and more is no time of day: its code 0 comes before everybody.
  EXPECT_EQ(RunnerNames(*klass), "hcniagfbjklmde");
  root->SortLap();
  EXPECT_EQ(RunnerNames(*klass), "hcnaigfbjkldme");
}

// --- courses and event header ---

TEST(Courses, ControlCodes) {
  clsCourseData course;
  for (std::int32_t i = 0; i <= 50; ++i) course.SetControlNum(i, 100 + i);
  EXPECT_EQ(course.ControlCount(), 0);
  EXPECT_EQ(course.ControlNum(1), 9999);
  const struct {
    std::int32_t count, index, code;
  } kCases[] = {{3, 0, 0},     {3, 3, 103},    {3, 4, 9999}, {3, 60, 9999},
                {50, 50, 150}, {60, 61, 9999}, {-1, 0, 0},   {-1, 1, 9999}};
  for (const auto& c : kCases) {
    course.SetControlCount(c.count);
    EXPECT_EQ(course.ControlNum(c.index), c.code) << c.count << " controls, index " << c.index;
  }
  course.SetControlCount(60);
  for (const std::int32_t index : {-1, 51}) {
    EXPECT_EQ(ErrorNumberOf([&] { course.ControlNum(index); }), 9);
    EXPECT_EQ(ErrorNumberOf([&] { course.SetControlNum(index, 1); }), 9);
  }
}

TEST(EventHeader, TextHoldsWhatIsKnown) {
  const struct {
    const char* terrain;
    DateTime date;  // 45948 is 2025-10-18
    const char *japanese, *english;
  } kCases[] = {{"", 0, "Cup", "Cup"},
                {"North", 0, "Cup [North] ", "Cup [North] "},
                {"", 45948, "Cup 2025年10月18日", "Cup 2025-10-18"},
                {"North", 45948, "Cup [North]  2025年10月18日", "Cup [North]  2025-10-18"},
                {"", -3, "Cup", "Cup"}};
  for (const auto& c : kCases) {
    clsEventData event;
    event.EventName = "Cup";
    event.Terrain = c.terrain;
    event.EventDate()->SetValue(c.date);
    RestartIn(Mode::kJapaneseTexts);
    EXPECT_EQ(event.ToString(), c.japanese);
    RestartIn(Mode::kEnglishTexts);
    EXPECT_EQ(event.ToString(), c.english);
  }
  clsEventData event;
  event.SetEventDate(nullptr);
  ASSERT_TRUE(event.EventDate());
  EXPECT_EQ(event.EventDate()->Value(), 0);
}

// --- root object ---

TEST(Root, ClassesAreFoundWithoutRegardToCase) {
  const auto root = NewRoot();
  const auto klass = root->AddClass("M21A");
  EXPECT_EQ(root->AddClass("M21A"), klass);
  EXPECT_EQ(root->AddClass("m21a"), klass);
  const auto wide = root->AddClass("Ｍ２１Ａ");
  EXPECT_NE(wide, klass);  // width is not folded
  EXPECT_EQ(root->ClassData("ｍ２１ａ"), wide);
  const auto umlaut = root->AddClass("Ärzte");
  EXPECT_EQ(root->ClassData("äRZTE"), umlaut);
  const auto two = root->AddClass("2");
  EXPECT_EQ(root->ClassData("2"), two);
  EXPECT_EQ(root->ClassData(2), wide);
  for (const std::int32_t none : {0, 5, -1}) EXPECT_EQ(root->ClassData(none), nullptr);
  EXPECT_EQ(root->ClassData("none"), nullptr);
  root->RemoveClass("none");
  root->RemoveClass("m21A");
  EXPECT_FALSE(root->IsClassExists("M21A"));
  EXPECT_EQ(ClassNames(*root), (Names{"Ｍ２１Ａ", "Ärzte", "2"}));
}

TEST(Root, RenameClass) {
  const auto root = NewRoot();
  for (const char* name : {"A", "B", "C"}) root->AddClass(name);
  const auto b = root->ClassData("B");
  const auto runner = b->AddLap();
  b->SetFileName("own name");
  root->RenameClass("b", "X");  // names are compared exactly
  EXPECT_EQ(ClassNames(*root), (Names{"A", "B", "C"}));
  for (const char* taken : {"C", "c", "a"}) {
    EXPECT_EQ(ErrorNumberOf([&] { root->RenameClass("B", taken); }), 457);
  }
  EXPECT_EQ(ClassNames(*root), (Names{"A", "B", "C"}));
  EXPECT_EQ(b->FileName(), "own name");
  root->RenameClass("B", "New");
  EXPECT_EQ(ClassNames(*root), (Names{"A", "New", "C"}));
  EXPECT_EQ(root->ClassData("NEW"), b);
  EXPECT_FALSE(root->IsClassExists("B"));
  EXPECT_EQ(b->FileName(), "new");
  EXPECT_EQ(runner->ClassName(), "New");
  root->RenameClass("New", "NEW");  // another case of its own name
  EXPECT_EQ(ClassNames(*root), (Names{"A", "NEW", "C"}));
  EXPECT_EQ(root->ClassData("new"), b);
}

TEST(Root, Courses) {
  const auto root = NewRoot();
  for (const std::int32_t number : {7, 3, -2}) {
    EXPECT_EQ(root->AddCourse(number)->CourseIndex(), number);
  }
  EXPECT_EQ(root->AddCourse(3), root->CourseData(2));
  EXPECT_EQ(root->CourseData("3"), root->CourseData(2));
  EXPECT_EQ(root->CourseData("-2"), root->CourseData(3));
  EXPECT_EQ(root->CourseData("03"), nullptr);
  EXPECT_EQ(root->CourseData(4), nullptr);
  EXPECT_TRUE(root->IsCourseExists(7));
  root->RemoveCourse(7);
  root->RemoveCourse(99);
  EXPECT_FALSE(root->IsCourseExists(7));
  EXPECT_EQ(root->CourseCount(), 2);
  root->ClearCourse();
  EXPECT_EQ(root->CourseCount(), 0);
}

TEST(Root, SortClass) {
  const struct {
    const char* order;
    Names names;
    std::int32_t error;
  } kCases[] = {{"3,1", {"C", "A", "B"}, 0},       {"", {"A", "B", "C"}, 0},
                {"0,-1,x,,2", {"B", "A", "C"}, 0}, {" 3 , 2 ", {"C", "B", "A"}, 0},
                {"2,2,2", {"B", "A", "C"}, 0},     {"2.5", {"B", "A", "C"}, 0},  // half to even
                {"4", {"A", "B", "C"}, 9},         {"3,99", {"A", "B", "C"}, 9}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.order);
    const auto root = NewRoot();
    for (const char* name : {"A", "B", "C"}) root->AddClass(name);
    EXPECT_EQ(ErrorNumberOf([&] { root->SortClass(c.order); }), c.error);
    EXPECT_EQ(ClassNames(*root), c.names);
    EXPECT_EQ(root->ClassData("a")->ClassName(), "A");
  }
}

struct ClassOnCourse {
  const char* name;
  std::int32_t course, runners;
};

Names ChoicesOf(const std::vector<ClassOnCourse>& classes) {
  const auto root = NewRoot();
  for (const auto& c : classes) {
    const auto klass = root->AddClass(c.name);
    klass->CourseNum = c.course;
    for (std::int32_t i = 0; i < c.runners; ++i) klass->AddLap();
  }
  return root->ClassAndCourseList();
}

TEST(Root, ClassAndCourseList) {
  EXPECT_EQ(ChoicesOf({{"A", 1, 10}, {"B", 2, 5}, {"C", 1, 7}, {"D", 0, 3}}),
            (Names{"1,,A,a,10", "2,,B,b,5", "3,,C,c,7", "4,,D,d,3", ",1,A/C,a_c,17"}));
  // Shared courses stand in the order of the last class that joined them.
  EXPECT_EQ(
      ChoicesOf({{"A", 1, 1}, {"B", 2, 1}, {"C", 2, 1}, {"D", 1, 0}}),
      (Names{"1,,A,a,1", "2,,B,b,1", "3,,C,c,1", "4,,D,d,0", ",2,B/C,b_c,2", ",1,A/D,a_d,1"}));
  EXPECT_TRUE(ChoicesOf({}).empty());
}

TEST(Root, SeparateClassAndCourseValue) {
  const struct {
    const char* text;
    std::int32_t class_index, course;
    const char *name, *file;
    std::int32_t runners;
  } kCases[] = {{",1,A/C,a_c,17", 0, 1, "A/C", "a_c", 17},
                {"2,,B,b,5", 2, 0, "B", "b", 5},
                {" 1 , x , B b , b ", 1, 0, "B b", "b", 0},
                {"1.5,2.5", 2, 2, "", "", 0},
                {"", 0, 0, "", "", 0},
                {"99999999999,,,,", 0, 0, "", "", 0}};
  const auto root = NewRoot();
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.text);
    const ClassAndCourseValue value = root->SeparateClassAndCourseValue(c.text);
    EXPECT_EQ(value.ClassIndex, c.class_index);
    EXPECT_EQ(value.CourseNum, c.course);
    EXPECT_EQ(value.ValueName, c.name);
    EXPECT_EQ(value.FileName, c.file);
    EXPECT_EQ(value.RunnerCount, c.runners);
  }
}

TEST(Root, ErrorsOfObjectsAndPositions) {
  const auto root = NewRoot();
  const auto klass = root->AddClass("A");
  EXPECT_EQ(ErrorNumberOf([&] { klass->AddLapObject(nullptr); }), 91);
  EXPECT_EQ(klass->LapCount(), 0);
  EXPECT_EQ(klass->AddLap()->SerialNum(), 1);
  for (const std::int32_t index : {0, 1, -1}) {
    EXPECT_EQ(ErrorNumberOf([&] { root->SegmentData(index); }), 9);
  }
  EXPECT_EQ(root->Version(), "2.27 ( Build 242 )");
  EXPECT_EQ(root->Version(false), "2.27");
}

TEST(Root, ClearEmptiesTheModelAndKeepsTheServices) {
  const auto root = NewRoot();
  root->FileControl()->LoadLapFile("missing.lxm");
  const std::string error = root->ErrorComment();
  ASSERT_FALSE(error.empty());
  const auto runner = AddRunner(*root->AddClass("A"), "a", "1:00:00", {60});
  root->AddCourse(1);
  root->SetFileName("a.lxm");
  root->SetFileDate(45948);
  const auto event = root->EventData();
  const auto meta = root->MetaData();
  const auto service = root->FileControl();
  event->EventName = "Cup";
  root->Clear();
  EXPECT_EQ(root->ClassCount() + root->CourseCount() + root->SegmentCount(), 0);
  EXPECT_NE(root->EventData(), event);
  EXPECT_NE(root->MetaData(), meta);
  EXPECT_EQ(root->EventData()->EventName + root->FileName(), "");
  EXPECT_EQ(root->FileDate(), 0);
  EXPECT_EQ(root->FileControl(), service);
  EXPECT_EQ(root->ErrorComment(), error);
  EXPECT_EQ(runner->RunnerName, "a");
  EXPECT_EQ(root->AddClass("B")->AddLap()->SerialNum(), 1);
}

TEST(Root, ServicesOfTheFirstWorkOnTheRootCreatedLast) {
  const auto first = NewRoot();
  first->AddClass("First");
  auto second = std::make_shared<clsKeltrun2>();
  second->AddClass("A");
  second->AddClass("B");
  EXPECT_EQ(first->ClassAndCourseList(), (Names{"1,,A,a,0", "2,,B,b,0"}));
  first->SortClass("2");
  EXPECT_EQ(ClassNames(*second), (Names{"B", "A"}));
  EXPECT_EQ(ClassNames(*first), (Names{"First"}));
  ASSERT_TRUE(first->FileControl()->LoadLapFile(ExampleFile("midorigaoka/event.lxm")));
  EXPECT_EQ(second->ClassCount(), 11);
  EXPECT_EQ(ClassNames(*first), (Names{"First"}));
  const auto analyzer = first->NewAnalyzer();
  EXPECT_NE(first->NewAnalyzer(), analyzer);
  analyzer->AddClass("M21A");
  EXPECT_EQ(analyzer->FullSetCount(), 15);  // 17 runners, two of them did not start
  second.reset();
  EXPECT_TRUE(first->ClassAndCourseList().empty());
  EXPECT_EQ(ClassNames(*first), (Names{"First"}));
}

TEST(Root, ObjectsOutliveTheRoot) {
  auto root = NewRoot();
  const auto klass = root->AddClass("A");
  const auto runner = AddRunner(*klass, "a", "0:03:00", {60, 120});
  const auto event = root->EventData();
  const auto service = root->FileControl();
  const auto analyzer = root->NewAnalyzer();
  analyzer->AddClass("A");
  analyzer->ControlCount = 1;
  root.reset();
  analyzer->Execute();
  EXPECT_EQ(analyzer->Count(), 1);
  EXPECT_EQ(klass->LapData(1), runner);
  EXPECT_EQ(event->ToString(), "");
  EXPECT_TRUE(service->LoadLapFile(ExampleFile("midorigaoka/event.lxm")));
}

// --- merging ---

// A runner whose fields are all set, told apart by the mark.
std::shared_ptr<clsLapData> FullRunner(const std::string& mark, std::int32_t number,
                                       std::int32_t legs) {
  const auto runner = std::make_shared<clsLapData>();
  runner->RunnerName = "Name " + mark;
  for (std::string* field : {&runner->Age, &runner->ClubName, &runner->Rank, &runner->Seed,
                             &runner->Sex, &runner->RankFix, &runner->CompetitorId}) {
    *field = mark;
  }
  runner->ID = runner->Ecard = number;
  runner->StartTime()->SetValue(Seconds(number));
  runner->SetResult(mark);
  for (std::int32_t leg = 1; leg <= legs; ++leg) runner->SetLap(leg, Seconds(number));
  return runner;
}

std::string Texts(const clsLapData& r) {
  return r.Age + r.ClubName + r.Rank + r.Result() + r.Seed + r.Sex + "|" + r.RankFix +
         r.CompetitorId;
}

constexpr auto kMergeId = KR_LOADMODE_MERGE_ID;
constexpr auto kMergeName = KR_LOADMODE_MERGE_NAME;
constexpr auto kPriority = KR_LOADMODE_PRIORITY_NEWDATA;
constexpr auto kNoAdd = KR_LOADMODE_NOTADD_NEWDATA;

TEST(Merging, EveryFieldFollowsThePriority) {
  const struct {
    const char* name;
    bool old_full, new_full;
    KrLapFileLoadModeCosnt mode;
    const char* texts;
    std::int32_t number, legs;
  } kCases[] = {
      {"existing values win", true, true, kMergeId, "OOOOOO|OO", 5, 2},
      {"the original flag only names it", true, true, kMergeId | KR_LOADMODE_PRIORITY_ORIGINAL,
       "OOOOOO|OO", 5, 2},
      {"new values win", true, true, kMergeId | kPriority, "NNNNNN|OO", 6, 3},
      {"empty values are filled", false, true, kMergeName, "NNNNNN|", 6, 3},
      {"empty new values never overwrite", true, false, kMergeName | kPriority, "OOOOOO|OO", 5, 2}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    const auto root = NewRoot();
    const auto klass = root->AddClass("A");
    const auto before = c.old_full ? FullRunner("O", 5, 2) : std::make_shared<clsLapData>();
    const auto after = c.new_full ? FullRunner("N", 6, 3) : std::make_shared<clsLapData>();
    before->RunnerName = after->RunnerName = "Same";
    if (c.mode % 4096 == kMergeId) before->ID = after->ID = 77;
    ASSERT_TRUE(klass->AddLapObject(before));
    EXPECT_FALSE(klass->AddLapObject(after, c.mode));
    EXPECT_EQ(klass->LapCount(), 1);
    EXPECT_EQ(Texts(*before), c.texts);
    EXPECT_EQ(before->Ecard, c.number);
    EXPECT_EQ(before->ID, c.mode % 4096 == kMergeId ? 77 : c.number);
    EXPECT_EQ(before->StartTime()->Value(), Seconds(c.number));
    ASSERT_EQ(before->LegCount(), c.legs);
    EXPECT_EQ(before->Lap(c.legs), Seconds(c.number));
    EXPECT_EQ(after->SerialNum(), 0);
    EXPECT_EQ(after->ClassName(), "A");
    EXPECT_EQ(klass->AddLap()->SerialNum(), 2);  // merging took no number
  }
}

TEST(Merging, NewLapsAreTakenWhateverTheirValueAndLaterOnesStay) {
  const auto root = NewRoot();
  const auto klass = root->AddClass("A");
  const auto before = AddRunner(*klass, "A", "", {60, 60, 60});
  const auto after = std::make_shared<clsLapData>();
  after->SetLap(1, KR_TIME_SKIP);
  after->SetLap(2, KR_TIME_NODATA);
  klass->AddLapObject(after, kMergeId | kPriority);
  EXPECT_EQ(before->LegCount(), 3);
  EXPECT_EQ(before->Lap(1), -1);
  EXPECT_EQ(before->Lap(2), 0);
  EXPECT_EQ(before->Lap(3), Seconds(60));
}

TEST(Merging, MatchesByIdOrNameKey) {
  struct Known {
    const char* name;
    std::int32_t id;
  };
  constexpr Known kKnown[] = {{"Anna Berger", 0}, {"川田　一", 12}, {"Ｂｏｂ", 0}, {"BOB", 12}};
  const struct {
    Known runner;
    KrLapFileLoadModeCosnt mode;
    std::int32_t match;  // position of the runner it merges into, 0 = added, -1 = dropped
  } kCases[] = {
      {{"x", 12}, kMergeId, 2},
      {{"x", 0}, kMergeId, 1},  // without a number: the first without one
      {{"x", 13}, kMergeId, 0},
      {{"x", 13}, kMergeId | kNoAdd, -1},
      {{"anna\u3000BERGER ", 5}, kMergeName, 1},
      {{"川田一", 5}, kMergeName, 2},
      {{"Bob", 5}, kMergeName, 4},     // a full-width "Ｂ" keeps its case, an ASCII one is lowered
      {{"ｂｏｂ", 5}, kMergeName, 4},  // full-width small letters equal lowered ASCII ones
      {{"Ｂ ob", 5}, kMergeName, 3},
      {{"Carl", 0}, kMergeName | kNoAdd | kPriority, -1},
      {{"BOB", 12}, KR_LOADMODE_NORMAL, 0},
      {{"BOB", 12}, KR_LOADMODE_APPEND, 0},
      {{"BOB", 12}, kNoAdd, -1},
      {{"BOB", 12}, kPriority, 0},
      {{"BOB", 12}, KR_LOADMODE_APPEND | kNoAdd, -1}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(std::string(c.runner.name) + " mode " + std::to_string(c.mode));
    const auto root = NewRoot();
    const auto klass = root->AddClass("A");
    for (const Known& known : kKnown) AddRunner(*klass, known.name, "", {})->ID = known.id;
    const auto runner = std::make_shared<clsLapData>();
    runner->RunnerName = c.runner.name;
    runner->ID = c.runner.id;
    runner->ClubName = "Club";
    EXPECT_EQ(klass->AddLapObject(runner, c.mode), c.match == 0);
    EXPECT_EQ(klass->LapCount(), c.match == 0 ? 5 : 4);
    EXPECT_EQ(runner->SerialNum(), c.match == 0 ? 5 : 0);
    for (std::int32_t i = 1; i <= 4; ++i) {
      EXPECT_EQ(klass->LapData(i)->ClubName, i == c.match ? "Club" : "") << "runner " << i;
    }
  }
}

}  // namespace
}  // namespace keltrun::test
