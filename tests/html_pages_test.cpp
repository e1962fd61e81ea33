// What pages hold; and whole pages of the examples, to the letter, against the golden files, which
// KELTRUN2_APPROVE=1 rewrites.
#include <gtest/gtest.h>

#include <regex>

#include "tests/test_support.h"

namespace keltrun::test {
namespace {

std::size_t CountOf(const std::string& page, std::string_view text) {
  std::size_t count = 0, at = 0;
  for (; (at = page.find(text, at)) != std::string::npos; ++at) ++count;
  return count;
}

/// How texts come out, and the name of that in golden files.
const Rows<Mode, std::string> kModes = {
    {Mode::kJapaneseTexts, "ja"}, {Mode::kEnglishTexts, "en"}, {Mode::kJapaneseMode, "japanese"}};

/// The table as text: a line for each row, "|" behind each cell.
std::string TableText(const std::string& page) {
  std::string text = page.substr(page.find("<table"));
  for (const auto& [pattern, replacement] : Rows<const char*, const char*>{
           {"\r\n", ""}, {"</tr>", "\n"}, {"</td>", "|"}, {"<[^>]*>", ""}}) {
    text = std::regex_replace(text, std::regex(pattern), replacement);
  }
  return text;
}

/// An event whose class has three runners on three legs; "Sk<p" missed the second control.
struct PageEvent {
  explicit PageEvent(Mode mode = Mode::kJapaneseTexts) : root(NewRoot(mode)) {
    root->EventData()->EventName = "Cup & <Test>";
    root->EventData()->Terrain = "森 1";
    root->EventData()->SetEventDate(std::make_shared<clsDateValue>(45418));  // 2024-05-06
    klass->ControlCount = 2;
    klass->Length = 4500;
    klass->Climb = 120;
    AddRunner(*klass, "山田 太郎", "0:17:00", {600, 200, 220})->ClubName = "Club \"A\"";
    AddRunner(*klass, "Slow", "0:18:00", {660, 180, 240});
    AddRunner(*klass, "Sk<p", "0:17:30", {540, -1, 510});
  }
  std::shared_ptr<clsAnalyzer> Analyzed(bool mix = false) const {
    const auto analyzer = root->NewAnalyzer();
    analyzer->AddClass(1);
    analyzer->DataSetIsMix = mix;
    analyzer->Execute();
    return analyzer;
  }
  std::string Analysis(bool mix = false) const {
    return root->HtmlControl()->OutputAnalysis(Analyzed(mix));
  }
  std::shared_ptr<clsKeltrun2> root;
  std::shared_ptr<clsClassData> klass = root->AddClass("M21 \"A\"");
};

TEST(AnalysisPage, TitleRunnersAndHead) {
  const PageEvent event;
  // The style sheet's address is the host's own HTML, the charset is only declared.
  const std::string page =
      event.root->HtmlControl()->OutputAnalysis(event.Analyzed(), "a&b.css", "utf-8");
  EXPECT_EQ(CountOf(page,
                    "</style>\r\n<link rel=\"stylesheet\" type=\"text/css\" "
                    "href=\"a&b.css\">\r\n</head><body>"),
            1U);
  EXPECT_EQ(CountOf(page, "charset=utf-8\">"), 1U);
  const std::string rows =
      "&nbsp;M21 &quot;A&quot; - Cup &amp; &lt;Test&gt; [森 1]  2024年05月06日 - 4.5km ↑120m|\n"
      "氏名|山田太郎|Sk&lt;p|Slow|\n所属|Club&quot;A&quot;|&nbsp;|&nbsp;|\n"
      "記録|&nbsp;&nbsp;&nbsp;0:17:00|&nbsp;&nbsp;&nbsp;0:17:30|&nbsp;&nbsp;&nbsp;0:18:00|\n"
      "順位|1|2|3|\n◆ ラップタイム|\nS→1|10:00|2|9:00|1|11:00|3|\n1→2|3:20|2|8:30|-|3:00|1|\n";
  EXPECT_EQ(TableText(page).substr(0, rows.size()), rows);
}

TEST(AnalysisPages, NobodyToAnalyse) {
  const auto root = NewRoot();
  const auto html = root->HtmlControl();
  const auto nobody = root->NewAnalyzer();
  for (const std::string first : {"ファイルが読み込まれてません。<br>\r\n", ""}) {
    for (const std::string& page : {html->OutputAnalysis(nobody), html->OutputLegData(nobody),
                                    html->OutputChart(nobody, "?.png", "0")}) {
      EXPECT_EQ(CountOf(page, "<body>\r\n" + first + "解析できません。<br>\r\n<br><a href="), 1U);
    }
    root->AddClass("A");
  }
}

TEST(AnalysisPage, NamesClubsResultsAndRanks) {
  // A cut never splits a surrogate pair: the pair goes to the next piece.
  for (const auto& [text, shown] : Table<2>(R"("" "" | 0123456789 0123456789
           "0123456789 012345　6789" 0123456789<br>0123456789
           01234567890123456789012345678901 0123456789<br>0123456789<br>012345678901
           あいうえおかきくけこさ あいうえおかきくけこ<br>さ | 012345678𠮟1 012345678<br>𠮟1
           012345678<&>" 012345678&lt;<br>&amp;&gt;&quot;)")) {
    const PageEvent event;
    event.klass->LapData(1)->RunnerName = event.klass->LapData(1)->ClubName = text;
    const std::string page = event.Analysis(), club = shown.empty() ? "&nbsp;" : shown;
    EXPECT_EQ(CountOf(page, "氏名</td>\r\n<td colspan=\"2\" class=\"nv\">" + shown + "</td>"), 4U);
    EXPECT_EQ(CountOf(page, "所属</td>\r\n<td colspan=\"2\" class=\"zv\">" + club + "</td>"), 2U);
  }
  // A result of more than ten columns is cut; blanks in it become no-break spaces.
  const PageEvent event;
  event.klass->LapData(1)->SetResult("途中 棄権 <b>");
  event.klass->LapData(1)->Rank = "<1>";
  event.klass->LapData(2)->Rank = "2";
  EXPECT_EQ(CountOf(TableText(event.Analysis()), "\n順位|&nbsp;|2|&lt;1&gt;|\n"), 2U);
  EXPECT_EQ(CountOf(event.Analysis(), "class=\"kv\">途中&nbsp;棄権&nbsp;</td>"), 2U);
  // In a mixed set the class name, a blank and the rank, also when the rank is empty.
  EXPECT_EQ(CountOf(TableText(event.Analysis(true)),
                    "\n順位|M21 &quot;A&quot; |M21 &quot;A&quot; 2|M21 &quot;A&quot; &lt;1&gt;|\n"),
            2U);
}

TEST(AnalysisPage, LabelsWithACourse) {
  const PageEvent event(Mode::kJapaneseMode);
  event.klass->ControlCount = 10;
  const auto analyzer = event.Analyzed();
  const auto course = event.root->AddCourse(1);
  course->SetControlCount(10);
  for (std::int32_t i = 1; i <= 10; ++i) course->SetControlNum(i, 30 + i);
  analyzer->SetCourseData(course);
  const std::string page = event.root->HtmlControl()->OutputAnalysis(analyzer);
  // The lap section shows control codes in half width, the others the legs in full width.
  for (const char* label : {"ll\">→(31)", "ll\">(31)→(32)", "ll\">(40)→", "el\">S→１", "rl\">９→10",
                            "<b>Ｍ２１　＂Ａ＂</b>"}) {
    EXPECT_EQ(CountOf(page, label), 1U) << label;
  }
}

TEST(ResultPage, SingleAndMixedSets) {
  const PageEvent event(Mode::kJapaneseMode);
  const auto results = event.root->NewResultsHolder();
  const auto page = [&] {
    results->CalcRank();
    return event.root->HtmlControl()->OutputResult(results, "<b>top</b>", "s&.css", "utf-8");
  };
  EXPECT_EQ(TableText(page()), "&nbsp;|\n") << "no runners";
  event.klass->LapData(1)->Rank = "1";
  event.klass->LapData(1)->Seed = "S & 1";
  event.klass->LapData(2)->Rank = "失\"格";
  event.klass->LapData(2)->SetResult("MP");
  event.klass->LapData(3)->Rank = "2";
  event.klass->CutOffRank = 1;
  results->AddClass(1);
  EXPECT_EQ(TableText(page()), R"(&nbsp;Ｍ２１　＂Ａ＂ - 4.5km ↑120m|
1|S &amp; 1|山田 太郎|0:17:00|&nbsp;|Club &quot;A&quot;|
|
2|&nbsp;|Sk&lt;p|0:17:30|&nbsp;|&nbsp;|
失&quot;格|&nbsp;|Slow|MP|&nbsp;|&nbsp;|
)");
  EXPECT_EQ(CountOf(page(), "class=\"r-rank失&quot;格\">"), 6U) << "escaped in attributes too";
  EXPECT_EQ(CountOf(page(), "<tr width=\"500\" class=\"r-border\">\r\n<td colspan=\"6\"><hr>"), 1U);
  EXPECT_EQ(CountOf(page(), "href=\"s&.css\">\r\n</head><body>\r\n<b>top</b>\r\n<table"), 1U);
  results->SetDataSetName("Ｗ21 <E>");
  results->CutOffRank = results->Climb = 0;
  EXPECT_EQ(TableText(page()), R"(&nbsp;Ｗ２１　＜Ｅ＞ - 4.5km|
1|(M21 &quot;A&quot;)|山田 太郎|0:17:00|&nbsp;|Club &quot;A&quot;|
2|(M21 &quot;A&quot;)|Sk&lt;p|0:17:30|&nbsp;|&nbsp;|
&nbsp;|(M21 &quot;A&quot;)|Slow|MP|&nbsp;|&nbsp;|
)");
  EXPECT_EQ(CountOf(page(), R"(<td align="center" width="80" class="r-rank">)"), 1U);
  results->Length = 0;
  results->Climb = 150;
  EXPECT_TRUE(TableText(page()).starts_with("&nbsp;Ｗ２１　＜Ｅ＞|\n"))
      << "no climb without length";
}

TEST(ResultPage, BorderBehindTheCutOffRank) {
  // The cut-off rank, the runners' ranks, and after how many of them the border comes.
  for (const auto& [cut_off, ranks, expected] : Table<3>(R"(
      2 1,2,3,4 2 | 0 1,2 "" | -1 1 "" | 5 1,2,3 "" | 1 ,(2),3 2 | 1 2,3 0)")) {
    const auto root = NewRoot();
    const auto klass = root->AddClass("A");
    klass->CutOffRank = std::stoi(cut_off);
    std::string result = "0:10:00", behind;
    std::istringstream list(ranks);
    for (std::string rank; std::getline(list, rank, ','); ++result[3]) {
      AddRunner(*klass, "R", result, {})->Rank = rank;
    }
    const auto results = root->NewResultsHolder();
    results->AddClass(1);
    const std::string table = TableText(root->HtmlControl()->OutputResult(results));
    for (std::size_t at = 0; (at = table.find("\n|\n", at)) != std::string::npos; ++at) {
      behind += std::to_string(CountOf(table.substr(0, at), "\n"));
    }
    EXPECT_EQ(behind, expected);
  }
}

// Reference laps 600, (200 + 180) / 2 and (220 + 240) / 2 of 1020 s. Losses as a share of the total
// time, of the runners ranked 1 and 2 on the leg: 7.23 / 1020 and 0; 12.29 / 1020 and
// -21.18 / 1080; -7.23 / 1020 and -3.53 / 1080. Half their differences over the mean of these are
// the difficulties: 0.003544, 0.015828 and 0.001910 over 0.007094.
TEST(LegDataPage, ToTheLetter) {
  for (const auto& [mode, name] : kModes) {
    const PageEvent event(mode);
    const auto analyzer = event.Analyzed();
    analyzer->ExtraAnalyze();
    ExpectGolden("legs-three-runners-" + name + ".html",
                 event.root->HtmlControl()->OutputLegData(analyzer, "a&b.css", "utf-8"));
  }
}

TEST(ViewerControlPage, ToTheLetter) {
  const std::string address = "http://x.example/?a&b\".lxm";
  ExpectGolden("viewer-control.html", NewRoot()->HtmlControl()->OutputActiveXPage(address));
}

TEST(ChartPage, PicturesByOption) {
  const std::string first = "<h3>◎ 標準</h3><img src=\"a&amp;0b0.png\"><br><hr>",
                    second = "<h3>◎ リアルタイム</h3><img src=\"a&amp;1b1.png\"><br><hr>";
  const PageEvent event;
  const auto html = event.root->HtmlControl();
  EXPECT_EQ(CountOf(html->OutputChart(event.Analyzed(), "?", "1"), "<h3>"), 0U) << "no start time";
  event.klass->LapData(2)->StartTime()->SetValue(Seconds(36000));
  for (const auto& [option, pictures] : Rows<const char*, std::string>{
           {"0,7", first},
           {" 1 ,0,01,1.0", second + first + second + second},
           {",x,0x,,.5,8,-1,1e9,99999999999999999999,0,0", first + first},
           {"", ""}}) {
    const std::string page = html->OutputChart(event.Analyzed(), "a&?b?.png", option);
    EXPECT_EQ(page.substr(page.find("<body>")),
              "<body>\r\n" + pictures +
                  "<br><a href=\"https://keltrun.example/\">Made with "
                  "ケルトラン２ (Ver.2.27)</a>\r\n</body></html>");
  }
}

void ExpectGoldenPages(const clsKeltrun2& root, const std::string& name, bool course,
                       std::string_view klass) {
  const auto analyzer = root.NewAnalyzer();
  const auto results = root.NewResultsHolder();
  for (DataSet* set :
       {static_cast<DataSet*>(analyzer.get()), static_cast<DataSet*>(results.get())}) {
    course ? set->AddCourse(4) : set->AddClass(klass);
  }
  analyzer->Execute();
  analyzer->ExtraAnalyze();
  results->CalcRank();
  if (course) {  // every second runner: keeps the files small, and pages hold the selected set
    analyzer->SelectNone();
    for (std::int32_t i = 1; i <= analyzer->FullSetCount(); i += 2) {
      analyzer->SelectItem(analyzer->FullSetItem(i)->SerialNum());
    }
  }
  const auto html = root.HtmlControl();
  ExpectGolden("analysis" + name, html->OutputAnalysis(analyzer));
  ExpectGolden("legs" + name, html->OutputLegData(analyzer));
  ExpectGolden("result" + name, html->OutputResult(results, "", "style.css"));
  if (course) return;
  ExpectGolden("chart" + name, html->OutputChart(analyzer, "c_?.png", "0,1,2,3,4,5,6,7"));
}

TEST(GoldenPages, ExamplesInEveryMode) {
  for (const auto& [mode, mode_name] : kModes) {
    for (const std::string event : {"midorigaoka", "hoshinomori"}) {
      const auto root = NewRoot(mode);
      ASSERT_TRUE(root->FileControl()->LoadLapFile(ExampleFile(event + "/event.lxm")));
      const char* klass = event == "midorigaoka" ? "N/G" : "初心者";
      ExpectGoldenPages(*root, "-" + event + "-class-" + mode_name + ".html", false, klass);
      ExpectGoldenPages(*root, "-" + event + "-course-" + mode_name + ".html", true, klass);
    }
  }
}

}  // namespace
}  // namespace keltrun::test
