// The pages row by row, and whole pages of the examples compared byte by byte with the golden
// files, which KELTRUN2_APPROVE=1 rewrites.
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

/// The table as text: one line for each row, "|" after each cell, the number of rows that a cell
/// spans before it. CSS classes of ranks are shown as "1st ", "2nd ", "3rd ".
std::string TableText(const std::string& page) {
  std::string text = page.substr(page.find("<table"));
  for (const auto& [pattern, replacement] :
       Rows<const char*, const char*>{{"\r\n", ""},
                                      {"</tr>", "\n"},
                                      {"</td>", "|"},
                                      {"<td[^>]* rowspan=\"(.)\"[^>]*>", "$1 rows "},
                                      {"<td bgcolor=\"#ffccdc\" class=\".[tr]1\">", "1st "},
                                      {"<td bgcolor=\"#ffdde8\" class=\".[tr]2\">", "2nd "},
                                      {"<td bgcolor=\"#ffeef4\" class=\".[tr]3\">", "3rd "},
                                      {"<[^>]*>", ""}}) {
    text = std::regex_replace(text, std::regex(pattern), replacement);
  }
  return text;
}

/// An event whose class has three runners on three legs; "Sk<p" missed the second control. The
/// figures are those of the analysis test of the same laps.
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

TEST(AnalysisPage, RowByRow) {
  const PageEvent event;
  const std::string names = "氏名|山田太郎|Sk&lt;p|Slow|\n";
  const std::string clubs_and_results = R"(所属|Club&quot;A&quot;|&nbsp;|&nbsp;|
記録|&nbsp;&nbsp;&nbsp;0:17:00|&nbsp;&nbsp;&nbsp;0:17:30|&nbsp;&nbsp;&nbsp;0:18:00|
順位|1|2|3|
)";
  // The title's class attribute ends in two quotes.
  EXPECT_EQ(
      TableText(event.Analysis()),
      "&nbsp;M21 &quot;A&quot; - Cup &amp; &lt;Test&gt; [森 1]  2024年05月06日 - 4.5km ↑120m|\n" +
          names + clubs_and_results + R"(◆ ラップタイム|
S→1|2nd 10:00|2nd 2|1st 9:00|1st 1|3rd 11:00|3rd 3|
1→2|2nd 3:20|2nd 2|2 rows 8:30|2 rows -|1st 3:00|1st 1|
2→F|1st 3:40|1st 1|2nd 4:00|2nd 2|
◆ 積算タイム|
S→1|2nd 10:00|2nd 2|1st 9:00|1st 1|3rd 11:00|3rd 3|
1→2|2nd 13:20|2nd 2|1st ↓|1st 1|3rd 14:00|3rd 3|
2→F|1st 17:00|1st 1|2nd 17:30|2nd 2|3rd 18:00|3rd 3|
)" + names +
          R"(◆ 巡行速度(%)|
&nbsp;|98.8|90.0|105.9|
◆ ミス率(%)|
&nbsp;|1.9|12.6|2.3|
)" + names +
          R"(◆ ラップ上位３人に対する相対値(%)|
S→1|100|90|110|
1→2|105|2 rows 121|95|
2→F|96|104|
合計|100|103|106|
◆ ミスタイム|
S→1|0:07|0:00|0:25|
1→2|0:12|2 rows 2:12|-0:21|
2→F|-0:07|-0:04|
合計|0:20|2:12|0:25|
◆ ミスを除いたタイム|
&nbsp;|16:40|15:18|17:35|
)" + names +
          clubs_and_results + "Made with ケルトラン２ (Ver.2.27)");
  // The address of the style sheet is HTML of the host, and the charset is only declared.
  const std::string linked =
      event.root->HtmlControl()->OutputAnalysis(event.Analyzed(), "a&b.css", "utf-8");
  EXPECT_EQ(CountOf(linked,
                    "</style>\r\n<link rel=\"stylesheet\" type=\"text/css\" "
                    "href=\"a&b.css\">\r\n</head><body>"),
            1U);
  EXPECT_EQ(CountOf(linked, "charset=utf-8\">"), 1U);
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

TEST(AnalysisPage, ElevenRunners) {
  const PageEvent event;
  for (int i = 4; i <= 11; ++i) {
    AddRunner(*event.klass, "R", "0:20:0" + std::to_string(i % 10), {700. + i, 300, 250});
  }
  const std::string page = event.Analysis();
  EXPECT_EQ(CountOf(page, "<td colspan=\"24\""), 8U) << "Int(10 / 10) + 2 * 11 + 1 columns";
  // The label is repeated before the eleventh runner. Ranks 4 to 6 have classes but no color.
  for (const char* label : {"ll\">1→2", "el\">2→F", "ml\">1→2", "cl\">", "ral\">", "mtl\">"}) {
    EXPECT_EQ(CountOf(page, label), 2U) << label;
  }
  EXPECT_EQ(CountOf(page, "<td class=\"lt6\">11:46</td><td class=\"lr6\">6</td>"), 1U);
  EXPECT_EQ(CountOf(page, "<td class=\"lt\">11:47</td><td class=\"lr\">7</td>"), 1U);
}

TEST(AnalysisPage, NamesClubsResultsAndRanks) {
  for (const auto& [text, shown] : Rows<const char*, std::string>{
           {"", ""},
           {"0123456789", "0123456789"},
           {"0123456789 012345　6789", "0123456789<br>0123456789"},
           {"01234567890123456789012345678901", "0123456789<br>0123456789<br>012345678901"},
           {"あいうえおかきくけこさ", "あいうえおかきくけこ<br>さ"},
           {"012345678<&>\"", "012345678&lt;<br>&amp;&gt;&quot;"},
           // A cut never splits a surrogate pair: the whole pair goes to the next piece.
           {"012345678\U00020B9F1", "012345678<br>\U00020B9F1"}}) {
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
  // In a mix: the class name, a blank and the rank, even if the rank is empty.
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
  // The lap section shows half-width control codes, the other sections full-width leg numbers.
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
  // The cut-off rank, the ranks of the runners, and the rows (with the title) before each border.
  for (const auto& [cut_off, ranks, expected] :
       Rows<std::int32_t, std::vector<const char*>, std::vector<std::size_t>>{
           {2, {"1", "2", "3", "4"}, {3}},
           {0, {"1", "2"}, {}},
           {-1, {"1"}, {}},
           {5, {"1", "2", "3"}, {}},
           {1, {"", "(2)", "3"}, {3}},
           {1, {"2", "3"}, {1}}}) {
    const auto root = NewRoot();
    const auto klass = root->AddClass("A");
    klass->CutOffRank = cut_off;
    std::string result = "0:10:00";
    for (const char* rank : ranks) AddRunner(*klass, "R", result, {})->Rank = rank, ++result[3];
    const auto results = root->NewResultsHolder();
    results->AddClass(1);
    const std::string table = TableText(root->HtmlControl()->OutputResult(results));
    std::vector<std::size_t> rows;
    for (std::size_t at = 0; (at = table.find("\n|\n", at)) != std::string::npos; ++at) {
      rows.push_back(CountOf(table.substr(0, at + 1), "\n"));
    }
    EXPECT_EQ(rows, expected);
  }
}

// Reference laps 600, (200 + 180) / 2 and (220 + 240) / 2 of 1020 s. Losses as a share of the total
// time, of the runners ranked 1 and 2 on the leg: 7.23 / 1020 and 0; 12.29 / 1020 and
// -21.18 / 1080; -7.23 / 1020 and -3.53 / 1080. Half their differences over the mean of these are
// the difficulties: 0.003544, 0.015828 and 0.001910 over 0.007094.
TEST(LegDataPage, ToTheLetter) {
  for (const auto& [mode, name] : Rows<Mode, const char*>{{Mode::kJapaneseTexts, "ja"},
                                                          {Mode::kEnglishTexts, "en"},
                                                          {Mode::kJapaneseMode, "japanese"}}) {
    const PageEvent event(mode);
    const auto analyzer = event.Analyzed();
    analyzer->ExtraAnalyze();
    ExpectGolden("legs-three-runners-" + std::string(name) + ".html",
                 event.root->HtmlControl()->OutputLegData(analyzer, "a&b.css", "utf-8"));
  }
}

TEST(ViewerControlPage, ToTheLetter) {
  const std::string address = "http://x.example/?a&b\".lxm";
  ExpectGolden("viewer-control.html", NewRoot()->HtmlControl()->OutputActiveXPage(address));
}

TEST(LegDataPage, SixFastestWhoHaveARank) {
  const PageEvent event;
  for (int i = 4; i <= 8; ++i) {
    AddRunner(*event.klass, "R" + std::to_string(i) + " x", "0:20:0" + std::to_string(i),
              {540, 900. + i, 0});
  }
  const std::string page = event.root->HtmlControl()->OutputLegData(event.Analyzed());
  const std::string blanks = "&nbsp;&nbsp;&nbsp;&nbsp;&nbsp;&nbsp;&nbsp;&nbsp;";
  // Of runners with equal ranks, the last one in the set comes first.
  EXPECT_EQ(CountOf(page, "</td><td>R8" + blanks + "&nbsp;9:00</td><td>R7"), 1U);
  // The total row shows the first six of the set.
  EXPECT_EQ(CountOf(page, "nowrap>R6" + blanks + "0:20:06</td>\r\n</table>"), 1U);
  EXPECT_EQ(CountOf(page, "<td>&nbsp;</td>"), 1U + 4U) << "two ranked runners on the last leg";
}

TEST(ChartPage, PicturesByOption) {
  const auto picture = [](const char* heading, int mode) {
    return "<h3>◎ " + std::string(heading) + "</h3><img src=\"a&" + std::to_string(mode) + "b" +
           std::to_string(mode) + ".png\"><br><hr>";
  };
  const std::string normal = picture("標準", 0), real_time = picture("リアルタイム", 1);
  const std::string others = picture("上位平均110％相対", 3) + picture("上位平均130％相対", 4) +
                             picture("巡航速度－ミス率", 5) + picture("巡航速度－前後半比", 6);
  for (const auto& [option, starts, pictures] : Rows<const char*, bool, std::string>{
           {"0,2,7", false, normal + picture("上位平均相対", 2)},
           {"1", false, ""},
           {" 1 ,0,01,1.0", true, real_time + normal + real_time + real_time},
           {",x,0x,,0.5,8,-1,1e9,99999999999999999999,0,0", false, normal + normal},
           {"3,4,5,6", true, others},
           {"", true, ""}}) {
    const PageEvent event;
    if (starts) event.klass->LapData(2)->StartTime()->SetValue(Seconds(36000));
    const std::string page =
        event.root->HtmlControl()->OutputChart(event.Analyzed(), "a&?b?.png", option);
    EXPECT_EQ(page.substr(page.find("<body>")),
              "<body>\r\n" + pictures +
                  "<br><a href=\"https://keltrun.example/\">Made with "
                  "ケルトラン２ (Ver.2.27)</a>\r\n</body></html>");
    EXPECT_EQ(CountOf(page, "charset=x-sjis\">"), 1U);
    EXPECT_EQ(CountOf(page, "td { font-family: 'ＭＳ ゴシック'; font-size: 10pt;border"), 1U);
  }
}

TEST(ChartPage, SaysThatThereIsNoMapOfTooMany) {
  const PageEvent event;
  const std::string note =
      "<h3>◎ ミスの地図</h3>完走者が5001人いるため、地図はありません（5000人まで）。<br><hr>";
  for (const auto& [finishers, notes] : Rows<std::int32_t, std::size_t>{{5000, 0}, {5001, 1}}) {
    for (int i = event.Analyzed()->FinisherCount(); i < finishers; ++i)
      AddRunner(*event.klass, "R", "0:20:00", {1, 1, 1});
    const auto html = event.root->HtmlControl();
    EXPECT_EQ(CountOf(html->OutputChart(event.Analyzed(), "?.png", "7"), note), notes);
    EXPECT_EQ(CountOf(html->OutputChart(event.Analyzed(), "?.png", "0"), "<h3>"), 1U);
  }
}

/// Keeps the files small, and shows that pages contain only the selected runners.
void SelectEverySecond(clsAnalyzer& analyzer) {
  analyzer.SelectNone();
  for (std::int32_t i = 1; i <= analyzer.FullSetCount(); i += 2) {
    analyzer.SelectItem(analyzer.FullSetItem(i)->SerialNum());
  }
}

TEST(GoldenPages, ExamplesInEveryMode) {
  for (const auto& [mode, mode_name, event, klass] :
       Rows<Mode, const char*, std::string, const char*>{
           {Mode::kJapaneseTexts, "ja", "midorigaoka", "N/G"},
           {Mode::kEnglishTexts, "en", "midorigaoka", "N/G"},
           {Mode::kJapaneseMode, "japanese", "midorigaoka", "N/G"},
           {Mode::kJapaneseTexts, "ja", "hoshinomori", "初心者"},
           {Mode::kEnglishTexts, "en", "hoshinomori", "初心者"},
           {Mode::kJapaneseMode, "japanese", "hoshinomori", "初心者"}}) {
    const auto root = NewRoot(mode);
    ASSERT_TRUE(root->FileControl()->LoadLapFile(ExampleFile(event + "/event.lxm")));
    for (const bool course : {false, true}) {
      const auto analyzer = root->NewAnalyzer();
      const auto results = root->NewResultsHolder();
      for (DataSet* set :
           {static_cast<DataSet*>(analyzer.get()), static_cast<DataSet*>(results.get())}) {
        course ? set->AddCourse(4) : set->AddClass(klass);
      }
      analyzer->Execute();
      analyzer->ExtraAnalyze();
      if (course) SelectEverySecond(*analyzer);
      results->CalcRank();
      const std::string name =
          "-" + event + (course ? "-course-" : "-class-") + mode_name + ".html";
      const auto html = root->HtmlControl();
      ExpectGolden("analysis" + name, html->OutputAnalysis(analyzer));
      ExpectGolden("legs" + name, html->OutputLegData(analyzer));
      ExpectGolden("result" + name, html->OutputResult(results, "", "style.css"));
      if (course) continue;
      ExpectGolden("chart" + name, html->OutputChart(analyzer, "c_?.png", "0,1,2,3,4,5,6,7"));
    }
  }
}

}  // namespace
}  // namespace keltrun::test
