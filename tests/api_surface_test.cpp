// The public interface: every member once, with its defaults, and every enumeration value. What a
// host compiled against keeps compiling and keeps its meaning.
#include <gtest/gtest.h>

#include <type_traits>

#include "tests/test_support.h"

namespace keltrun::test {
namespace {

static_assert(KR_TIME_NODATA == 0 && KR_TIME_SKIP == -1 && KR_TIME_DISQ == -2);
static_assert(KR_FILETYPE_AUTODETECT == 0 && KR_FILETYPE_UNKNOWN == 1 &&
              KR_FILETYPE_KELTRUN2 == 2 && KR_FILETYPE_KELTRUN1 == 3 &&
              KR_FILETYPE_SPORTIDENT == 4 && KR_FILETYPE_OEVENT == 5 &&
              KR_FILETYPE_IMPORT_ONLY == 6 && KR_FILETYPE_IOF_XML_20_RESULT == 7);
static_assert(KR_SAVEMODE_NORMAL == 0 && KR_SAVEMODE_FULL == 1);
static_assert(KR_LOADMODE_NORMAL == 0 && KR_LOADMODE_APPEND == 1 && KR_LOADMODE_MERGE_ID == 16 &&
              KR_LOADMODE_MERGE_NAME == 17 && KR_LOADMODE_NOTADD_NEWDATA == 4096 &&
              KR_LOADMODE_PRIORITY_ORIGINAL == 8192 && KR_LOADMODE_PRIORITY_NEWDATA == 16384);
static_assert(KR_ERROR_INVALID_CALL == 5 && KR_ERROR_SUBSCRIPT_OUT_OF_RANGE == 9 &&
              KR_ERROR_OBJECT_NOT_SET == 91 && KR_ERROR_DUPLICATE_KEY == 457);
template <typename... Enums>
constexpr bool kLong = (std::is_same_v<std::underlying_type_t<Enums>, std::int32_t> && ...);
static_assert(kLong<LapTimeConst, KrLapFileTypeConst, KrLapFileSaveModeCosnt,
                    KrLapFileLoadModeCosnt, AutomationErrorConst>);

using Long = std::int32_t;
using Text = std::string;

/// The value, after a check that it has exactly the type that hosts rely on.
template <typename Type, typename Value>
Type Typed(const Value& value) {
  static_assert(std::is_same_v<Type, Value>);
  return value;
}

/// Texts of no data, skipped, disqualified and 1:02:03 by a member with its defaults.
template <typename Member>
Text FourTexts(const Member& text) {
  return text(1) + text(2) + text(3) + text(4);
}
constexpr std::string_view kFourTexts = "－↓×01:02:03";

/// A class of one runner, analysed: a leg of each kind.
struct Surface {
  Surface() {
    klass->ControlCount = 3;
    runner = AddRunner(*klass, "A", "1:02:03", {0, -1, -2, 3723});
    analyzer->AddClass("M21A");
    analyzer->Execute();
    results->AddClass(1);
    results->CalcRank();
  }
  std::shared_ptr<clsKeltrun2> root = NewRoot();
  std::shared_ptr<clsClassData> klass = root->AddClass("M21A");
  std::shared_ptr<clsLapData> runner;
  std::shared_ptr<clsAnalyzer> analyzer = root->NewAnalyzer();
  std::shared_ptr<clsResultsHolder> results = root->NewResultsHolder();
};

TEST(ApiSurface, ValueClasses) {
  const DateTime times[] = {0, -1, -2, Seconds(3723)};
  EXPECT_EQ(FourTexts([&](int i) { return Typed<Text>(clsTimeValue(times[i - 1]).ToString()); }),
            kFourTexts);
  clsTimeValue time;
  time.SetValue(Seconds(75));
  EXPECT_EQ(Typed<DateTime>(time.Value()), Seconds(75));
  clsDateValue date;
  EXPECT_EQ(date.ToString(), "");
  date.SetValue(45418);
  EXPECT_EQ(Typed<DateTime>(date.Value()), 45418);
  EXPECT_EQ(Typed<Text>(date.ToString()), "2024/05/06");
  const clsMissTimeValue miss;
  EXPECT_EQ(Typed<Text>(miss.ToString()), "－");
  EXPECT_EQ(Typed<DateTime>(miss.Value()), 0);
  const clsPercentValue percent;
  EXPECT_EQ(Typed<Text>(percent.ToString()), "－");
  EXPECT_EQ(Typed<float>(percent.Value()), 0);
  const clsLegRankValue rank;
  EXPECT_EQ(Typed<Text>(rank.ToString()), "-");
  EXPECT_EQ(Typed<Long>(rank.Value()), 0);
}

TEST(ApiSurface, RunnerRecord) {
  Surface s;
  clsLapData& r = *s.runner;
  for (Text* field : {&r.RunnerName, &r.ClubName, &r.Rank, &r.RankFix, &r.Seed, &r.Age, &r.Sex,
                      &r.CompetitorId}) {
    *field = "x";
  }
  Typed<Long>(r.ID = 1);
  Typed<Long>(r.Ecard = 2);
  const auto start = std::make_shared<clsTimeValue>(0.5);
  r.SetStartTime(start);
  EXPECT_EQ(Typed<std::shared_ptr<clsTimeValue>>(r.StartTime()), start) << "shared, not copied";
  r.SetStartTime(nullptr);
  EXPECT_EQ(r.StartTime()->Value(), 0) << "null stores a new value 0";
  EXPECT_EQ(Typed<Long>(r.SerialNum()), 1);
  r.SetClassName("B");
  EXPECT_EQ(Typed<Text>(r.ClassName()), "B");
  EXPECT_EQ(FourTexts([&](Long i) { return Typed<Text>(r.LapToString(i)); }), kFourTexts);
  r.SetLap(5, Seconds(60));
  EXPECT_EQ(Typed<DateTime>(r.Lap(5)), Seconds(60));
  EXPECT_EQ(Typed<Long>(r.LegCount()), 5);
  r.SetLegCount(2);
  r.SetResult("dnf");
  EXPECT_EQ(Typed<Text>(r.Result()), "DNF");
}

TEST(ApiSurface, ClassesCoursesAndHeaders) {
  Surface s;
  clsClassData& c = *s.klass;
  for (Long* field : {&c.ControlCount, &c.CourseNum, &c.Length, &c.Climb, &c.CutOffRank})
    *field = 7;
  EXPECT_EQ(Typed<Text>(c.ClassName()), "M21A");
  EXPECT_EQ(Typed<Text>(c.ClassInfo()), "0.007km ↑7m");
  c.SetFileName("File");
  EXPECT_EQ(Typed<Text>(c.FileName()), "file");
  EXPECT_TRUE(Typed<bool>(c.AddLapObject(std::make_shared<clsLapData>())));
  EXPECT_TRUE(c.AddLapObject(std::make_shared<clsLapData>(), KR_LOADMODE_APPEND));
  const auto added = Typed<std::shared_ptr<clsLapData>>(c.AddLap());
  EXPECT_EQ(c.LapData(4), added);
  c.RemoveLap(1);
  EXPECT_EQ(Typed<Long>(c.LapCount()), 3);
  c.SortLap();
  c.ClearLap();
  EXPECT_EQ(c.LapData(1), nullptr);
  clsCourseData course;
  course.SetCourseIndex(3);
  course.SetControlCount(1);
  course.SetControlNum(1, 31);
  EXPECT_EQ(Typed<Long>(course.CourseIndex()) + Typed<Long>(course.ControlCount()), 4);
  EXPECT_EQ(Typed<Long>(course.ControlNum(1)), 31);
  const std::shared_ptr<clsEventData> event = s.root->EventData();
  for (Text* field :
       {&event->EventName, &event->Terrain, &event->Memo, &event->FileName, &event->OfficialSite}) {
    *field = "x";
  }
  event->SetEventDate(nullptr);
  EXPECT_EQ(Typed<std::shared_ptr<clsDateValue>>(event->EventDate())->Value(), 0);
  EXPECT_EQ(Typed<Text>(event->ToString()), "x [x] ");
  const std::shared_ptr<clsMetaData> meta = s.root->MetaData();
  for (Text* field : {&meta->CreateApplication, &meta->CreateUserName, &meta->LastUpdateApplication,
                      &meta->LastUpdateUserName}) {
    *field = "x";
  }
  for (DateTime* field : {&meta->CreateDate, &meta->LastUpdateDate}) *field = 1;
}

TEST(ApiSurface, RootObject) {
  Surface s;
  clsKeltrun2& root = *s.root;
  root.SetFileName("f");
  root.SetFileDate(2);
  EXPECT_EQ(Typed<Text>(root.FileName()), "f");
  EXPECT_EQ(Typed<DateTime>(root.FileDate()), 2);
  EXPECT_EQ(Typed<Text>(root.ErrorComment()), "");
  EXPECT_TRUE(root.FileControl() && root.GraphicControl() && root.HtmlControl() &&
              root.TextControl() && root.ConfigControl());
  EXPECT_NE(root.NewAnalyzer(), root.NewAnalyzer());
  EXPECT_NE(root.NewResultsHolder(), root.NewResultsHolder());
  EXPECT_EQ(root.AddClass("m21a"), root.ClassData("M21A"));
  root.RenameClass("M21A", "B");
  EXPECT_EQ(root.ClassData(1)->ClassName(), "B");
  root.RemoveClass("X");
  EXPECT_EQ(Typed<Long>(root.ClassCount()), 1);
  EXPECT_TRUE(Typed<bool>(root.IsClassExists("b")));
  const std::shared_ptr<clsCourseData> course = root.AddCourse(5);
  EXPECT_EQ(root.CourseData("5"), course);
  EXPECT_EQ(root.CourseData(1), course);
  EXPECT_TRUE(Typed<bool>(root.IsCourseExists(5)));
  root.RemoveCourse(5);
  root.AddCourse(6);
  root.ClearCourse();
  EXPECT_EQ(Typed<Long>(root.CourseCount()), 0);
  EXPECT_EQ(Typed<std::vector<Text>>(root.ClassAndCourseList()), std::vector<Text>{"1,,B,b,1"});
  const ClassAndCourseValue value = root.SeparateClassAndCourseValue(",1,A/C,a_c,17");
  EXPECT_EQ(value.ValueName + "," + value.FileName, "A/C,a_c");
  EXPECT_EQ(value.ClassIndex * 10000 + value.CourseNum * 100 + value.RunnerCount, 117);
  root.SortLap();
  root.SortClass("1");
  root.MakeSegmentSet();
  EXPECT_EQ(Typed<Long>(root.SegmentCount()), 0);
  EXPECT_THROW((void)root.SegmentData(1), AutomationError);
  const clsSegmentData segment(SegmentSet{{}, {}, 1, "S-31-F", "000000319999"});
  EXPECT_EQ(Typed<Text>(segment.SegmentName()), "S-31-F");
  EXPECT_EQ(Typed<Long>(segment.ControlCount()), 1);
  EXPECT_EQ(Typed<Text>(root.Version()), "2.27 ( Build 242 )");
  EXPECT_EQ(root.Version(false), "2.27");
  root.Clear();
  EXPECT_EQ(root.ClassCount(), 0);
}

TEST(ApiSurface, FileControl) {
  Surface s;
  TemporaryFolder folder;
  clsFileControl& files = *s.root->FileControl();
  EXPECT_FALSE(Typed<bool>(files.ProgressVisible()));
  files.SetProgressVisible(true);
  EXPECT_TRUE(files.ProgressVisible());
  files.SetProgressVisible(false);
  int events = 0;
  ProgressHandle handle = files.OnProgress([&](std::int32_t) { ++events; });
  EXPECT_TRUE(Typed<bool>(files.SaveLapFile(folder.Path("a.lxm"))));
  EXPECT_TRUE(Typed<bool>(files.LoadLapFile(folder.Path("a.lxm"))));
  EXPECT_EQ(s.root->ClassCount(), 1) << "the default is to load in place of what was there";
  EXPECT_GE(events, 2);
  handle.Detach();
  const Text data = ReadBytes(folder.Path("a.lxm"));
  EXPECT_TRUE(files.LoadLapFile("", KR_FILETYPE_KELTRUN2, KR_LOADMODE_APPEND, data));
  EXPECT_EQ(s.root->ClassData(1)->LapCount(), 2);
  EXPECT_TRUE(files.SaveLapFile(folder.Path("b"), KR_FILETYPE_KELTRUN2, KR_SAVEMODE_FULL));
  EXPECT_EQ(Typed<KrLapFileTypeConst>(files.FileSaveMode(3)), KR_FILETYPE_IOF_XML_20_RESULT);
  EXPECT_NE(Typed<Text>(files.FileSaveFilter()), "");
  EXPECT_NE(Typed<Text>(files.FileLoadFilter()), "");
  std::filesystem::create_directory(folder.Path("site"));
  EXPECT_TRUE(Typed<bool>(files.OutputHtml(folder.Path("site"))));
  EXPECT_TRUE(std::filesystem::is_empty(folder.Path("site"))) << "every output is off by default";
}

TEST(ApiSurface, DataSets) {
  Surface s;
  for (DataSet* set :
       {static_cast<DataSet*>(s.analyzer.get()), static_cast<DataSet*>(s.results.get())}) {
    for (Long* field : {&set->Length, &set->Climb, &set->CutOffRank}) *field = 0;
    EXPECT_EQ(set->ControlCount, 3);
    EXPECT_FALSE(Typed<bool>(set->DataSetIsMix));
    EXPECT_EQ(Typed<Text>(set->DataSetFileName), "m21a");
    EXPECT_EQ(Typed<Text>(set->DataSetName()), "M21A");
    set->AddCourse(1);
  }
  clsAnalyzer& a = *s.analyzer;
  EXPECT_EQ(Typed<std::shared_ptr<clsCourseData>>(a.CourseData()), nullptr);
  a.SetCourseData(nullptr);
  EXPECT_TRUE(Typed<bool>(a.IsExecuted()));
  EXPECT_EQ(Typed<Text>(a.ClassInfo()), "");
  EXPECT_EQ(Typed<Long>(a.Count()) + Typed<Long>(a.FullSetCount()), 2);
  EXPECT_EQ(Typed<std::shared_ptr<clsAnalyzedRunnerData>>(a.Item(1)), a.FullSetItem(1));
  a.SelectItem(1);
  a.SelectSort();
  a.SelectNone();
  a.SelectAll();
  a.AddLap(s.runner);
  a.SetDataSetName("N");
  a.Clear();
  clsResultsHolder& r = *s.results;
  EXPECT_EQ(Typed<Text>(r.ClassInfo()), "");
  EXPECT_EQ(Typed<Long>(r.Count()) + Typed<Long>(r.FullSetCount()), 2);
  EXPECT_EQ(Typed<std::shared_ptr<clsLapData>>(r.Item(1)), r.FullSetItem(1));
  EXPECT_EQ(Typed<Text>(r.RankInDataSet(1)), "1");
  EXPECT_FALSE(Typed<bool>(r.RankIsAvalilable()));
  r.SelectItem(1);
  r.SelectNone();
  r.SelectAll();
  r.AddLap(s.runner);
  r.SetDataSetName("N");
  r.Clear();
}

TEST(ApiSurface, AnalysisResults) {
  Surface s;
  clsAnalyzedRunnerData& r = *s.analyzer->Item(1);
  r.SetVesmerX(1);
  r.SetVesmerY(2);
  EXPECT_EQ(Typed<double>(r.VesmerX()) + Typed<double>(r.VesmerY()), 3);
  using R = clsAnalyzedRunnerData;
  const struct {
    void (R::*set)(Long, Long);
    Long (R::*get)(Long) const;
    Text (R::*text)(Long, bool, bool) const;
  } ranks[] = {{&R::SetSplitRank, &R::SplitRank, &R::SplitRankToString},
               {&R::SetLapRank, &R::LapRank, &R::LapRankToString},
               {&R::SetModifiedSplitRank, &R::ModifiedSplitRank, &R::ModifiedSplitRankToString},
               {&R::SetModifiedLapRank, &R::ModifiedLapRank, &R::ModifiedLapRankToString}};
  Long value = 10;
  for (const auto& rank : ranks) {
    (r.*rank.set)(51, ++value);
    EXPECT_EQ((r.*rank.get)(51), value);
    EXPECT_EQ((r.*rank.text)(51, true, true), std::to_string(value) + ")");
  }
  EXPECT_EQ(r.SplitRankToString(1) + r.LapRankToString(1) + r.ModifiedSplitRankToString(1) +
                r.ModifiedLapRankToString(1),
            "----");
  EXPECT_EQ(Typed<Long>(r.TotalLapFrom(4)) * 10 + Typed<Long>(r.TotalLapTo(4)), 24);
  EXPECT_FALSE(Typed<bool>(r.IsValidLapTime(4)) || Typed<bool>(r.IsValidSplitTime(4)));
  EXPECT_EQ(Typed<Text>(r.RankInDataSet()) + Typed<Text>(r.Rank()), "11");
  for (const clsPercentValue* percent :
       {r.CruiseSpeed(), r.FirstHalfCruiseSpeed(), r.SecondHalfCruiseSpeed(), r.TotalTimeRelative(),
        r.LapRelative(1), r.MissRate()}) {
    EXPECT_EQ(percent->Value(), 0) << "the only lap is that of a range without references";
  }
  EXPECT_EQ(r.MissTime(1)->ToString() + r.MissTimeTotal()->ToString(), "－00:00:00");
  EXPECT_EQ(r.TotalTimeWithoutMiss()->ToString(), "01:02:03");
  EXPECT_EQ(Typed<DateTime>(r.LapTime(2)), -1);
  for (Long leg = 1; leg <= 4; ++leg) {
    r.SetSplitTime(leg, r.LapTime(leg));
    r.SetModifiedSplitTime(leg, r.LapTime(leg));
    r.SetModifiedLapTime(leg, 1);
  }
  EXPECT_EQ(r.SplitTime(2) + r.ModifiedSplitTime(2) + r.ModifiedLapTime(2), -1);
  EXPECT_EQ(FourTexts([&](Long i) { return Typed<Text>(r.LapTimeToString(i)); }), kFourTexts);
  EXPECT_EQ(FourTexts([&](Long i) { return Typed<Text>(r.SplitTimeToString(i)); }), kFourTexts);
  EXPECT_EQ(FourTexts([&](Long i) { return Typed<Text>(r.ModifiedLapTimeToString(i)); }),
            kFourTexts);
  EXPECT_EQ(FourTexts([&](Long i) { return Typed<Text>(r.ModifiedSplitTimeToString(i)); }),
            kFourTexts);
  EXPECT_EQ(Typed<Long>(r.SerialNum()), 1);
  EXPECT_EQ(r.RunnerName() + r.ClubName() + r.Result() + r.ResultRank(), "A1:02:03");
  EXPECT_EQ(Typed<DateTime>(r.StartTime()), 0);
  EXPECT_EQ(Typed<std::shared_ptr<clsLapData>>(r.OtherData()), s.runner);
  const clsAnalyzedGeneralData& g = *s.analyzer->GeneralData();
  EXPECT_EQ(g.LegDifficulty(0), nullptr);
  EXPECT_EQ(g.LegDifficulty(1)->Value(), 0);
  EXPECT_FALSE(Typed<bool>(g.IsUpperLapExists(4, 1)));
  EXPECT_EQ(Typed<DateTime>(g.UpperLapAverage(4)) + Typed<DateTime>(g.UpperLapTotal()), 0);
  EXPECT_EQ(Typed<float>(g.LegLength(4)), 0.25F);
  EXPECT_EQ(Typed<std::shared_ptr<clsAnalyzedRunnerData>>(g.UpperLapObject(4, 1)), nullptr);
}

TEST(ApiSurface, Pages) {
  Surface s;
  const clsHtmlControl& html = *s.root->HtmlControl();
  EXPECT_EQ(html.OutputAnalysis(s.analyzer), html.OutputAnalysis(s.analyzer, "", "x-sjis"));
  EXPECT_EQ(html.OutputResult(s.results), html.OutputResult(s.results, "", "", "x-sjis"));
  EXPECT_THROW((void)html.OutputAnalysis(nullptr), AutomationError);
  EXPECT_THROW((void)html.OutputResult(nullptr), AutomationError);
}

}  // namespace
}  // namespace keltrun::test
