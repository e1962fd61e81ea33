// The report as the library writes it; tests/report/report_test.py reads it in a browser.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "keltrun2/codec/gzip.h"
#include "keltrun2/model/result_status.h"
#include "tests/data_block.h"

namespace keltrun::test {
namespace {

using Json = nlohmann::json;

Json DataOf(std::string_view page) {
  constexpr std::string_view kOpening = "<script type=\"application/gzip\" id=\"data\">";
  const std::size_t start = page.find(kOpening);
  if (start == std::string_view::npos) return {};
  page.remove_prefix(start + kOpening.size());
  return Json::parse(Unpacked(FromBase64(page.substr(0, page.find('<')))));
}

bool Holds(std::string_view page, std::string_view text) {
  return page.find(text) != std::string_view::npos;
}

std::shared_ptr<clsAnalyzer> Analyze(const clsKeltrun2& root) {
  auto analyzer = root.NewAnalyzer();
  analyzer->AddClass(1);
  analyzer->SetUntimedLegs("auto");
  analyzer->Execute();
  return analyzer;
}

// A class in which one runner loses five minutes on leg 2, one skips control 2 and one did not
// start.
std::shared_ptr<clsKeltrun2> SmallClass() {
  auto root = NewRoot(Mode::kEnglishTexts);
  const auto klass = root->AddClass("M\"21<b>");
  klass->ControlCount = 3;
  AddRunner(*klass, "Ann", "0:13:20", {200, 200, 200, 200});
  AddRunner(*klass, "Bo", "0:13:36", {204, 204, 204, 204});
  AddRunner(*klass, "</script><script>alert(1)", "0:18:52", {208, 508, 208, 208});
  AddRunner(*klass, "Di", "MP", {210, -1, 430, 210});
  AddRunner(*klass, "Ed & Co", "DNS", {});
  return root;
}

// A compressed file must end with its data: a browser refuses bytes after it.
TEST(Gzip, PacksWithoutPadding) {
  for (const std::size_t size : {std::size_t{1}, std::size_t{10240}, std::size_t{300000}}) {
    std::string bytes(size, 'x');
    for (std::size_t i = 0; i < size; i += 7) bytes[i] = static_cast<char>(i * i >> 3 & 0xFF);
    const std::string packed = Gzip(bytes);
    EXPECT_EQ(Unpacked(packed), bytes);
    std::uint32_t stated = 0;  // the last four bytes are the size of the data
    for (int i = 1; i <= 4; ++i)
      stated = stated << 8 | static_cast<std::uint8_t>(packed.rbegin()[i - 1]);
    EXPECT_EQ(stated, size);
  }
}

TEST(ReportPage, FirstViewAndListsAreHtml) {
  const auto root = SmallClass();
  root->EventData()->EventName = "A & B</title><script>";
  const std::string page = root->HtmlControl()->OutputViewer({{Analyze(*root)}});
  for (const std::string_view text :
       {"<html lang=\"en\">", "<title>A &amp; B&lt;/title&gt;&lt;script&gt;</title>",
        "href=\"#class=M%2221%3Cb%3E\"", "id=\"class=M&quot;21&lt;b&gt;\"", "5 runners",
        "3 controls", "<span class=\"t\">13:20</span>", "<span class=\"t\">+0:16</span>",
        "<td>Ed &amp; Co<td><td>DNS",
        "<td>&lt;/script&gt;&lt;script&gt;alert(1)<td><td>18:52<td>+5:32",
        "<td><td>Di<td><td>MP<td>"}) {
    EXPECT_TRUE(Holds(page, text)) << text;
  }
  EXPECT_FALSE(Holds(page, "<script>alert(1)"));
  EXPECT_FALSE(Holds(page, "unsafe-inline"));
}

TEST(ReportPage, CountsOfOneAndRunnersOutOfCompetitionInTheFirstView) {
  const auto root = NewRoot(Mode::kEnglishTexts);
  const auto klass = root->AddClass("Open");
  klass->ControlCount = 1;
  AddRunner(*klass, "Guest", "0:05:00", {150, 150})->Rank = "(1)";
  AddRunner(*klass, "Ann", "0:06:00", {180, 180})->Rank = "1";
  AddRunner(*klass, "Bo", "0:06:30", {200, 190})->Rank = "2";
  const auto single = root->AddClass("Solo");
  single->ControlCount = 2;
  AddRunner(*single, "Cy", "0:05:00", {100, 100, 100});
  const std::string page = root->HtmlControl()->OutputViewer({{Analyze(*root)}});
  for (const std::string_view text :
       {"<span>1 control</span>", "<span class=\"n\">1 runner</span>",
        "Guest</span><span class=\"t\">\u22121:00<", "Ann</span><span class=\"t\">6:00<",
        "Bo</span><span class=\"t\">+0:30<", "<td>Guest<td><td>5:00<td>\u22121:00",
        "<td>Ann<td><td>6:00<td>\n"}) {
    EXPECT_TRUE(Holds(page, text)) << text;
  }
}

TEST(ReportPage, DataHasEverythingOnce) {
  const auto root = SmallClass();
  const auto analyzer = Analyze(*root);
  const Json data = DataOf(root->HtmlControl()->OutputViewer({{analyzer}}, root->NewEstimate()));
  EXPECT_EQ(data["runners"].size(), 5U);
  EXPECT_EQ(data["runners"][4], Json::parse(R"([5, "Ed & Co", 0, 0, 0, "DNS", "dns", []])"));
  const Json& set = data["sets"][0];
  EXPECT_EQ(set["points"], Json::parse(R"(["S", "", "", "", "F"])"));
  EXPECT_EQ(set["legs"][1][0], 3) << "the lap over a skipped control is of no leg";
  EXPECT_EQ(set["legs"][1][1], 1) << "the five minutes";
  const Json& skipper = set["rows"][3];
  EXPECT_EQ(skipper[2], nullptr);
  EXPECT_EQ(skipper[11]["ranges"], Json::parse("[2, 3]"));
  EXPECT_EQ(skipper[11]["split"][3], 850);
  EXPECT_FALSE(set["rows"][0][11].contains("split")) << "it is the sum of the laps";
}

TEST(ReportPage, WithoutAnEstimateLossesAreThoseOfTheAnalysis) {
  const auto root = SmallClass();
  const Json data = DataOf(root->HtmlControl()->OutputViewer({{Analyze(*root)}}));
  EXPECT_EQ(data["runners"][0].size(), 8U);
  EXPECT_EQ(data["sets"][0]["legs"][1][1], 1);
  EXPECT_TRUE(data["sets"][0]["rows"][2][11].contains("loss"));
}

// The laps of a segment are not written again: a row says where they begin among the runner's own.
TEST(ReportPage, SegmentsUseTheLapsAndTheEstimateOfTheCourse) {
  const auto root = NewRoot();
  ASSERT_TRUE(root->FileControl()->LoadLapFile(ExampleFile("hoshinomori/event.lxm")));
  root->MakeSegmentSet();
  const auto analyzer = root->SegmentData(1)->Analyzer();
  analyzer->Execute();
  const Json data = DataOf(
      root->HtmlControl()->OutputViewer({{analyzer, DataSetKind::kSegment}}, root->NewEstimate()));
  const Json& set = data["sets"][0];
  std::set<int> places;
  int estimated_mistakes = 0;
  for (const Json& row : set["rows"]) {
    const Json& runner = data["runners"][row[0].get<std::size_t>()];
    const auto from = row[11]["from"].get<std::size_t>();
    if (row[2].is_null()) continue;
    EXPECT_EQ(runner[7][from].get<double>() + runner[7][from + 1].get<double>(),
              row[2].get<double>())
        << runner[1];
    places.insert(static_cast<int>(from));
    if (runner.size() < 9) continue;
    EXPECT_FALSE(row[11].contains("loss")) << runner[1];
    estimated_mistakes += runner[8][7].get<std::string>()[from] >= '2' ? 1 : 0;
  }
  EXPECT_GT(places.size(), 1U) << "the segment ends courses of several lengths";
  EXPECT_EQ(set["legs"][0][1], estimated_mistakes);
}

// Everybody of a class is in its results, with the ranks of all; the laps of those who had another
// course are in the set of that course.
TEST(ReportPage, RunnersOfForksAreListedWithTheirClass) {
  const auto root = NewRoot(Mode::kEnglishTexts);
  for (const std::int32_t number : {1, 2}) {
    const auto course = root->AddCourse(number);
    course->SetControlCount(2);
    course->SetControlNum(1, 30 + number);
    course->SetControlNum(2, 40);
  }
  const auto klass = root->AddClass("Relay");
  klass->CourseNum = 1;
  klass->ControlCount = 2;
  AddRunner(*klass, "Second", "0:05:10", {100, 110, 100});
  AddRunner(*klass, "First", "0:05:00", {100, 100, 100})->CourseNum = 2;
  AddRunner(*klass, "Third", "0:05:20", {110, 110, 100})->CourseNum = 2;
  AddRunner(*klass, "Fourth", "0:05:40", {110, 130, 100});
  AddRunner(*klass, "Ill", "DNS", {});
  klass->SortLap();
  std::vector<clsHtmlControl::ViewerSet> sets = {{Analyze(*root)}};
  for (const auto& analyzer : root->NewAnalyzersOfOtherCourses(1)) {
    EXPECT_EQ(analyzer->DataSetName(), "Relay (2)");
    analyzer->Execute();
    sets.push_back({analyzer, DataSetKind::kCourse});
  }
  ASSERT_EQ(sets.size(), 2U);
  EXPECT_TRUE(root->NewAnalyzersOfOtherCourses(2).empty());
  const std::string page = root->HtmlControl()->OutputViewer(sets, root->NewEstimate());
  const Json data = DataOf(page);
  const auto name_of = [&data](const Json& row) {
    return data["runners"][row[0].get<std::size_t>()][1].get<std::string>() +
           row[1].get<std::string>();
  };
  const Json& set = data["sets"][0];
  ASSERT_EQ(set["rows"].size(), 2U);
  EXPECT_EQ(name_of(set["rows"][0]) + name_of(set["rows"][1]), "Second2Fourth4");
  ASSERT_EQ(set["others"].size(), 2U);
  EXPECT_EQ(name_of(set["others"][0]) + name_of(set["others"][1]), "First1Third3");
  EXPECT_EQ(set["others"][1][3], 1) << "one row before it";
  EXPECT_EQ(data["sets"][1]["points"], Json({"S", "32", "40", "F"}));
  EXPECT_FALSE(data["sets"][1].contains("others"));
  for (const Json& row : data["sets"][1]["rows"]) {
    EXPECT_EQ(data["runners"][row[0].get<std::size_t>()].size(), 9U) << "with an estimate";
  }
  const std::size_t list = page.find("<h2 id=\"class=Relay\">");
  ASSERT_NE(list, std::string::npos);
  std::size_t at = list;
  for (const std::string_view runner : {"First", "Second", "Third", "Fourth", "Ill"}) {
    at = page.find(runner, at);
    EXPECT_NE(at, std::string::npos) << runner << " is in the list, in this order";
  }
}

TEST(ReportPage, RunnersWithATimeButNoLapsHaveTheirPlace) {
  const auto root = SmallClass();
  const auto klass = root->ClassData(1);
  AddRunner(*klass, "Broken card", "0:13:30", {});
  klass->SortLap();
  const std::string page =
      root->HtmlControl()->OutputViewer({{Analyze(*root)}}, root->NewEstimate());
  const Json data = DataOf(page);
  const Json& set = data["sets"][0];
  EXPECT_EQ(set["rows"].size(), 4U);
  ASSERT_EQ(set["others"].size(), 1U) << "not who did not start";
  const Json& other = set["others"][0];
  EXPECT_EQ(data["runners"][other[0].get<std::size_t>()][1], "Broken card");
  EXPECT_EQ(Json({other[1], other[2], other[3]}), Json({"2", 810, 1}));
  EXPECT_EQ(set["rows"][1][1], "3") << "Bo is behind";
  const std::size_t list = page.find("<h2 id=\"class=");
  const std::size_t in_list = page.find("Broken card", list);
  EXPECT_NE(in_list, std::string::npos);
  EXPECT_EQ(page.find("Broken card", in_list + 1), std::string::npos) << "once";
}

TEST(ReportPage, NeedsAnalyses) {
  const auto root = NewRoot();
  EXPECT_THROW((void)root->HtmlControl()->OutputViewer({{nullptr}}), AutomationError);
  EXPECT_TRUE(Holds(root->HtmlControl()->OutputViewer({}), "</html>"))
      << "an event without classes";
}

TEST(Outcome, IsThatOfTheStatusElseOfTheResult) {
  for (const auto& [status, result, expected] :
       Rows<RunnerStatus, std::string, std::string>{{RunnerStatus::kUnknown, "0:31:24", "ok"},
                                                    {RunnerStatus::kUnknown, "25:00:01", "ok"},
                                                    {RunnerStatus::kUnknown, "MP", "mp"},
                                                    {RunnerStatus::kUnknown, "P3", "mp"},
                                                    {RunnerStatus::kUnknown, "DNF", "dnf"},
                                                    {RunnerStatus::kUnknown, "DISQ", "dsq"},
                                                    {RunnerStatus::kUnknown, "OCL", "dsq"},
                                                    {RunnerStatus::kUnknown, "DNS", "dns"},
                                                    {RunnerStatus::kUnknown, "", ""},
                                                    {RunnerStatus::kUnknown, "N/A", ""},
                                                    {RunnerStatus::kNotCompeting, "0:31:24", "nc"},
                                                    {RunnerStatus::kDidNotStart, "0:31:24", "dns"},
                                                    {RunnerStatus::kActive, "DNF", "dnf"},
                                                    {RunnerStatus::kOverTime, "0:31:24", "dsq"}}) {
    EXPECT_EQ(OutcomeCode(status, result), expected) << result;
  }
}

}  // namespace
}  // namespace keltrun::test
