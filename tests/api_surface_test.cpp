// The public interface: every member once, with its defaults, and every enumeration value. Code of
// hosts must still compile and keep its meaning.
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

/// All of these have exactly the type that hosts rely on.
template <typename Type, typename... Values>
void Are(const Values&...) {
  static_assert((std::is_same_v<Type, Values> && ...));
}

/// The texts for no data, skipped, disqualified and 1:02:03 from a member with its defaults.
template <typename Member>
void ExpectFourTexts(const Member& text) {
  EXPECT_EQ(text(1) + text(2) + text(3) + text(4), "－↓×01:02:03");
}

/// An analyzed class of one runner, with a leg of each kind.
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

TEST(ApiSurface, Values) {
  const DateTime times[] = {0, -1, -2, Seconds(3723)};
  ExpectFourTexts([&](int i) { return clsTimeValue(times[i - 1]).ToString(); });
  clsTimeValue time;
  clsDateValue date;
  time.SetValue(.5);
  date.SetValue(45418);
  const clsMissTimeValue miss;
  const clsPercentValue percent;
  const clsLegRankValue rank;
  Are<DateTime>(time.Value(), date.Value(), miss.Value());
  Are<float>(percent.Value());
  Are<Long>(rank.Value());
  EXPECT_EQ(miss.ToString() + percent.ToString() + rank.ToString() + clsDateValue().ToString(),
            "－－-");
  EXPECT_EQ(date.ToString(), "2024/05/06");
}

TEST(ApiSurface, Records) {
  Surface s;
  clsLapData& r = *s.runner;
  Are<Text>(r.RunnerName, r.ClubName, r.Rank, r.RankFix, r.Seed, r.Age, r.Sex, r.CompetitorId,
            r.Bib, r.ControlCard, r.GivenName, r.FamilyName, r.Nationality, r.ClassName(),
            r.Result(), r.LapToString(1));
  Are<Long>(r.ID, r.Ecard, r.SerialNum(), r.LegCount(), r.CourseNum);
  Are<RunnerStatus>(r.Status);
  Are<DateTime>(r.Lap(1));
  r.SetClassName("B");
  r.SetLap(5, .25);
  r.SetLegCount(2);
  r.SetResult("dnf");
  const auto start = std::make_shared<clsTimeValue>(.5);
  r.SetStartTime(start);
  EXPECT_EQ(r.StartTime(), start) << "shared, not copied";
  ExpectFourTexts([&](Long i) { return r.LapToString(i); });

  clsClassData& c = *s.klass;
  Are<Long>(c.ControlCount, c.CourseNum, c.Length, c.Climb, c.CutOffRank, c.LapCount());
  c.SetFileName("File");
  Are<Text>(c.ClassName(), c.ClassInfo(), c.FileName());
  Are<bool>(c.AddLapObject(std::make_shared<clsLapData>()),
            c.AddLapObject(s.runner, KR_LOADMODE_APPEND));
  Are<std::shared_ptr<clsLapData>>(c.AddLap(), c.LapData(1));
  c.RemoveLap(1);
  c.SortLap();
  c.ClearLap();
  clsCourseData course;
  course.SetCourseIndex(3);
  course.SetControlCount(1);
  course.SetControlNum(1, 31);
  course.SetControlCodeText(1, "F1");
  Are<Long>(course.CourseIndex(), course.ControlCount(), course.ControlNum(1));
  Are<Text>(course.ControlCodeText(1));
  Are<bool>(course.HasCodeText(1));
  clsEventData& e = *s.root->EventData();
  Are<Text>(e.EventName, e.Terrain, e.Memo, e.FileName, e.OfficialSite, e.ToString());
  e.SetEventDate(nullptr);
  Are<std::shared_ptr<clsDateValue>>(e.EventDate());
  const clsMetaData& m = *s.root->MetaData();
  Are<Text>(m.CreateApplication, m.CreateUserName, m.LastUpdateApplication, m.LastUpdateUserName);
  Are<DateTime>(m.CreateDate, m.LastUpdateDate);
}

TEST(ApiSurface, RootObject) {
  Surface s;
  clsKeltrun2& root = *s.root;
  root.SetFileName("f");
  root.SetFileDate(2);
  root.RenameClass("M21A", "B");
  root.RemoveClass("X");
  Are<std::shared_ptr<clsClassData>>(root.AddClass("b"), root.ClassData("B"), root.ClassData(1));
  Are<std::shared_ptr<clsCourseData>>(root.AddCourse(5), root.CourseData("5"), root.CourseData(1));
  EXPECT_TRUE(root.GraphicControl() && root.TextControl() && root.ConfigControl());
  Are<bool>(root.IsClassExists("b"), root.IsCourseExists(5));
  root.RemoveCourse(6);
  root.ClearCourse();
  root.SortLap();
  root.SortClass("1");
  root.MakeSegmentSet();
  Are<Long>(root.ClassCount(), root.CourseCount(), root.SegmentCount());
  EXPECT_THROW((void)root.SegmentData(1), AutomationError);
  clsSegmentData segment(std::make_shared<SegmentSet>(SegmentSet{{}, {}, 1, "S-31-F", "0"}));
  EXPECT_EQ(segment.SegmentName() + std::to_string(segment.ControlCount()), "S-31-F1");
  segment.SetTargetClassList({"A;0"});
  segment.SetTargetCourseTable({"1\t0"});
  Are<std::vector<Text>>(segment.TargetClassList(), segment.TargetCourseTable());
  EXPECT_EQ(segment.SegmentBinaryName(), "0");
  EXPECT_EQ(segment.Analyzer()->Count() + segment.ResultsHolder()->Count(), 0);
  Are<std::vector<Text>>(root.ClassAndCourseList());
  const ClassAndCourseValue v = root.SeparateClassAndCourseValue(",1,A/C,a_c,17");
  Are<Text>(v.ValueName, v.FileName, root.FileName(), root.ErrorComment(), root.Version(),
            root.SegmentRemark());
  Are<Long>(v.ClassIndex, v.CourseNum, v.RunnerCount);
  Are<DateTime>(root.FileDate());
  EXPECT_EQ(root.Version() + root.Version(false), "2.27 ( Build 242 )2.27");
  root.Clear();
}

TEST(ApiSurface, UntimedLegsAndGaps) {
  const Surface surface;
  EXPECT_EQ(surface.analyzer->UntimedLegs(), "none");
  surface.analyzer->SetUntimedLegs("1,3");
  EXPECT_THROW(surface.analyzer->SetUntimedLegs("some"), AutomationError);
  EXPECT_EQ(surface.analyzer->UntimedLegs(), "1,3");
  EXPECT_TRUE(surface.analyzer->GeneralData()->IsTimed(3));
  surface.analyzer->Execute();
  EXPECT_FALSE(surface.analyzer->GeneralData()->IsTimed(3));
}

TEST(ApiSurface, ChartOptionsAreOff) {
  clsChartObject chart;
  Are<bool>(chart.AutoSize, chart.BridgeGaps, chart.Titles, chart.AutoColors, chart.ClearNames,
            chart.FitMost);
  EXPECT_FALSE(chart.AutoSize || chart.BridgeGaps || chart.Titles || chart.AutoColors ||
               chart.ClearNames || chart.FitMost);
  EXPECT_EQ(TextStyle().Halo, 0);
  EXPECT_FALSE(clsGraphicControl().PrintHeads);
  EXPECT_EQ(kChartColors.size(), 8U);
  Are<ChartRunnerFlagConst>(KR_CHART_FLAG_NAME, KR_CHART_FLAG_LEGEND, KR_CHART_FLAG_HIDE,
                            KR_CHART_FLAG_DASH);
}

TEST(ApiSurface, Estimate) {
  const Surface surface;
  EXPECT_TRUE(surface.root->NewAnalyzersOfOtherCourses(1).empty());
  const auto estimate = surface.root->NewEstimate();
  EXPECT_EQ(estimate->ClassCount(), 1);
  const auto klass = estimate->ClassData("m21a");
  EXPECT_EQ(klass, estimate->ClassData(1));
  EXPECT_FALSE(estimate->ClassData(2) || estimate->ClassData("W") || estimate->RunnerData(99));
  EXPECT_EQ(klass->ClassName() + std::to_string(klass->LegCount()), "M21A4");
  Are<double>(klass->NormalTime(1), klass->Spread(1), klass->MistakeRate(1));
  EXPECT_TRUE(klass->IsTimed(4) && !klass->IsTimed(0) && !klass->IsTimed(51));
  EXPECT_EQ(klass->Count(), 1);
  EXPECT_FALSE(klass->Item(0) || klass->Item(2));
  const auto runner = klass->Item(1);
  EXPECT_EQ(runner, estimate->RunnerData(runner->SerialNum()));
  EXPECT_EQ(runner->OtherData(), surface.runner);
  EXPECT_EQ(runner->RunnerName(), "A");
  Are<double>(runner->Speed(), runner->SpeedError(), runner->Spread(), runner->TimeLost(),
              runner->LeastTimeLost(), runner->LargestTimeLost(), runner->MistakeSize(),
              runner->NormalTime(1), runner->Loss(1), runner->LeastLoss(1), runner->LargestLoss(1),
              runner->MistakeTime(1), runner->MistakeChance(1));
  EXPECT_EQ(runner->MistakeCount(), 0);
  EXPECT_EQ(runner->LegCount(), 4);
  EXPECT_TRUE(runner->IsTimed(4) && !runner->IsTimed(5));
  EXPECT_FALSE(runner->IsKnown(4) || runner->IsMistake(51));
  EXPECT_EQ(runner->MistakeWord(1), MistakeWord::kNone);
  EXPECT_THROW((void)runner->Loss(52), AutomationError);
  EXPECT_THROW((void)klass->Spread(-1), AutomationError);
  EXPECT_TRUE(surface.root->EventRemarks().empty());
  Are<Long>(surface.root->ShiftClock(99, 1));
  const auto& texts = *surface.root->TextControl();
  EXPECT_TRUE(texts.OutputEstimateText(estimate, "M21A").starts_with("* M21A"));
  EXPECT_TRUE(texts.OutputEstimateCsv(estimate).starts_with("class,serial,name,"));
  EXPECT_THROW((void)texts.OutputEstimateText(nullptr), AutomationError);
  EXPECT_THROW((void)texts.OutputEstimateCsv(nullptr), AutomationError);
  EXPECT_EQ(SiteOptions().UntimedLegs, "none");
  EXPECT_FALSE(SiteOptions().BridgeGaps);
  EXPECT_EQ(SiteOptions().ChartFormat, KR_PICTURE_PNG);
  EXPECT_EQ(ReportSiteOptions().ChartFormat, KR_PICTURE_PNG);
  EXPECT_TRUE(SiteOptions().Jobs == 1 && ReportSiteOptions().Jobs == 1);
  EXPECT_EQ(MistakeWordName(MistakeWord::kPerhaps), "perhaps");
  EXPECT_EQ(MistakeWordName(MistakeWord::kLikely), "likely");
  EXPECT_EQ(MistakeWordName(MistakeWord::kSure), "sure");
  EXPECT_EQ(MistakeWordName(MistakeWord::kNone), "");
}

TEST(ApiSurface, FilesAndPages) {
  Surface s;
  TemporaryFolder folder;
  clsFileControl& files = *s.root->FileControl();
  files.SetProgressVisible(false);
  files.SetRenewRanks(false);
  files.SetInputCharset("x-sjis");
  Are<Text>(files.InputCharset());
  files.SetOutputCharset("cp932");
  Are<Text>(files.OutputCharset());
  files.SetOutputCharset("");
  Are<std::vector<LoadRemark>>(files.LoadRemarks(), files.SaveRemarks());
  ProgressHandle handle = files.OnProgress([](std::int32_t) {});
  handle.Detach();
  Are<bool>(files.ProgressVisible(), files.RenewRanks(), files.SaveLapFile(folder.Path("a.lxm")),
            files.SaveLapFile(folder.Path("b"), KR_FILETYPE_KELTRUN2, KR_SAVEMODE_FULL));
  EXPECT_TRUE(files.LoadLapFile(folder.Path("a.lxm")));
  EXPECT_EQ(s.root->ClassData(1)->LapCount(), 1)
      << "the default is to load in place of what was there";
  Are<bool>(files.LoadLapFile("", KR_FILETYPE_KELTRUN2, KR_LOADMODE_APPEND, "<keltrun/>"));
  Are<KrLapFileTypeConst>(files.FileSaveMode(3));
  Are<std::vector<Text>>(files.SiteFiles({.IndexFile = "i", .IndexReplaceBlock = true}));
  Are<std::vector<Text>>(files.SiteConflicts({.IndexFile = "i"}));
  const ReportSiteOptions site = {.OutputFolder = folder.Path("report"),
                                  .Prefix = "p_",
                                  .AddToIndex = true,
                                  .ReplaceOthers = false,
                                  .OfficialSite = false,
                                  .ChartOption = "0",
                                  .ChartIncludeCourse = true,
                                  .UntimedLegs = "auto",
                                  .ClassicIndex = "classic.html"};
  std::filesystem::create_directory(site.OutputFolder);
  EXPECT_TRUE(files.ReportSiteConflicts(site).empty());
  EXPECT_TRUE(files.OutputReportSite(site)) << s.root->ErrorComment();
  for (const Text& name : files.ReportSiteFiles(site)) {
    EXPECT_TRUE(std::filesystem::exists(name)) << name;
  }
  EXPECT_EQ(ReportSiteOptions().UntimedLegs, "none");
  std::filesystem::create_directory(folder.Path("site"));
  EXPECT_TRUE(files.OutputHtml(folder.Path("site")));
  EXPECT_TRUE(std::filesystem::is_empty(folder.Path("site"))) << "every output is off by default";
  const clsHtmlControl& html = *s.root->HtmlControl();
  EXPECT_EQ(html.OutputAnalysis(s.analyzer), html.OutputAnalysis(s.analyzer, "", "x-sjis"));
  EXPECT_EQ(html.OutputResult(s.results), html.OutputResult(s.results, "", "", "x-sjis"));
  Are<Text>(files.FileSaveFilter(), files.FileLoadFilter(), html.OutputResult(s.results));
  EXPECT_EQ(html.OutputViewer({{s.analyzer}}), html.OutputViewer({{s.analyzer}}, nullptr));
}

/// The members that both kinds of data sets have.
template <typename Item, typename Set>
void UseDataSet(Set& set, const std::shared_ptr<clsLapData>& runner) {
  Are<Long>(set.ControlCount, set.Length, set.Climb, set.CutOffRank, set.Count(),
            set.FullSetCount());
  Are<bool>(set.DataSetIsMix);
  Are<Text>(set.DataSetFileName, set.DataSetName(), set.ClassInfo());
  Are<std::shared_ptr<Item>>(set.Item(1), set.FullSetItem(1));
  set.SelectItem(1);
  set.SelectNone();
  set.SelectAll();
  set.AddLap(runner);
  set.AddCourse(1);
  set.SetDataSetName("N");
  set.Clear();
}

TEST(ApiSurface, DataSetsAndFigures) {
  Surface s;
  using R = clsAnalyzedRunnerData;
  R& r = *s.analyzer->Item(1);
  r.SetVesmerX(1);
  r.SetVesmerY(2);
  Are<double>(r.VesmerX(), r.VesmerY());
  Are<Long>(s.analyzer->FinisherCount(), kFewestOnMap, kMostOnMap);
  Are<void (R::*)(Long, Long)>(&R::SetSplitRank, &R::SetLapRank, &R::SetModifiedSplitRank,
                               &R::SetModifiedLapRank);
  Are<Long>(r.SplitRank(1), r.LapRank(1), r.ModifiedSplitRank(1), r.ModifiedLapRank(1),
            r.TotalLapFrom(4), r.TotalLapTo(4), r.SerialNum());
  EXPECT_EQ(r.SplitRankToString(1) + r.LapRankToString(1) + r.ModifiedSplitRankToString(1) +
                r.ModifiedLapRankToString(1),
            "----");
  Are<bool>(r.IsValidLapTime(4), r.IsValidSplitTime(4));
  Are<const clsPercentValue*>(r.CruiseSpeed(), r.FirstHalfCruiseSpeed(), r.SecondHalfCruiseSpeed(),
                              r.TotalTimeRelative(), r.LapRelative(1), r.MissRate());
  Are<Text>(r.MissTime(1)->ToString(), r.MissTimeTotal()->ToString(),
            r.TotalTimeWithoutMiss()->ToString(), r.RunnerName(), r.ClubName(), r.Result(),
            r.ResultRank(), r.RankInDataSet(), r.Rank());
  Are<void (R::*)(Long, DateTime)>(&R::SetSplitTime, &R::SetModifiedSplitTime,
                                   &R::SetModifiedLapTime);
  for (Long leg = 1; leg <= 4; ++leg) {
    r.SetSplitTime(leg, r.LapTime(leg));
    r.SetModifiedSplitTime(leg, r.LapTime(leg));
    r.SetModifiedLapTime(leg, 1);
  }
  ExpectFourTexts([&](Long i) { return r.LapTimeToString(i); });
  ExpectFourTexts([&](Long i) { return r.SplitTimeToString(i); });
  ExpectFourTexts([&](Long i) { return r.ModifiedLapTimeToString(i); });
  ExpectFourTexts([&](Long i) { return r.ModifiedSplitTimeToString(i); });
  const clsAnalyzedGeneralData& g = *s.analyzer->GeneralData();
  Are<DateTime>(r.LapTime(1), r.SplitTime(1), r.ModifiedLapTime(1), r.ModifiedSplitTime(1),
                r.StartTime(), g.UpperLapAverage(4), g.UpperLapTotal());
  Are<float>(g.LegDifficulty(1)->Value(), g.LegLength(4));
  Are<bool>(g.IsUpperLapExists(4, 1), s.analyzer->IsExecuted(), s.results->RankIsAvalilable());
  Are<std::shared_ptr<R>>(g.UpperLapObject(4, 1));
  Are<std::shared_ptr<clsLapData>>(r.OtherData());
  s.analyzer->SetCourseData(nullptr);
  Are<std::shared_ptr<clsCourseData>>(s.analyzer->CourseData());
  Are<Text>(s.results->RankInDataSet(1));
  s.analyzer->SelectSort();
  UseDataSet<R>(*s.analyzer, s.runner);
  UseDataSet<clsLapData>(*s.results, s.runner);
}

}  // namespace
}  // namespace keltrun::test
