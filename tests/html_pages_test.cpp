// The analysis page and the result page, to the letter; and whole pages of the examples against the
// golden files, which KELTRUN2_APPROVE=1 rewrites.
#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/test_support.h"

namespace keltrun::test {
namespace {

std::size_t CountOf(const std::string& page, std::string_view text) {
  std::size_t count = 0;
  for (std::size_t at = page.find(text); at != std::string::npos; at = page.find(text, at + 1)) {
    ++count;
  }
  return count;
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
  std::string Analysis(std::string_view style = "", std::string_view charset = "x-sjis") const {
    const auto analyzer = root->NewAnalyzer();
    analyzer->AddClass(1);
    analyzer->Execute();
    return root->HtmlControl()->OutputAnalysis(analyzer, style, charset);
  }
  std::shared_ptr<clsKeltrun2> root;
  std::shared_ptr<clsClassData> klass = root->AddClass("M21 \"A\"");
};

// References 600, 190, 230; see there.
constexpr std::string_view kAnalysisPage =
    R"(<html>
<head>
<meta http-equiv="Content-Type" content="text/html; charset=x-sjis">
<meta name="generator" content="Keltrun Ver.2.27">
<style type="text/css">
<!--
table { border-width: 0px 0px 1px 1px ; border-color: black }
td { font-family: 'ＭＳ ゴシック'; font-size: 10pt;border-width: 1px 1px 0px 0px ; border-color: black }
-->
</style>
</head><body>
<table border="1" cellspacing="0" cellpadding="1" bgcolor="white" class="lap">
<tr bgcolor="#3030A0"><td colspan="7"  class="lap-title"">&nbsp;<font color="#ffffff" size="+1"><b>M21 &quot;A&quot;</b></font><font color="#ffffff"> - Cup &amp; &lt;Test&gt; [森 1]  2024年05月06日 - 4.5km ↑120m</font></td></tr>)"
    R"({names}{clubs}{results})"
    R"(<tr bgcolor="#FFDD99"><td colspan="7"  class="lh">◆ ラップタイム</td></tr><tr align="right" nowrap>
<td bgcolor="#dddd77" class="ll">S→1</td>
<td bgcolor="#ffdde8" class="lt2">10:00</td><td bgcolor="#ffdde8" class="lr2">2</td>
<td bgcolor="#ffccdc" class="lt1">9:00</td><td bgcolor="#ffccdc" class="lr1">1</td>
<td bgcolor="#ffeef4" class="lt3">11:00</td><td bgcolor="#ffeef4" class="lr3">3</td>
</tr>
<tr align="right" nowrap>
<td bgcolor="#dddd77" class="ll">1→2</td>
<td bgcolor="#ffdde8" class="lt2">3:20</td><td bgcolor="#ffdde8" class="lr2">2</td>
<td rowspan="2" class="lt">8:30</td><td rowspan="2" class="lr">-</td>
<td bgcolor="#ffccdc" class="lt1">3:00</td><td bgcolor="#ffccdc" class="lr1">1</td>
</tr>
<tr align="right" nowrap>
<td bgcolor="#dddd77" class="ll">2→F</td>
<td bgcolor="#ffccdc" class="lt1">3:40</td><td bgcolor="#ffccdc" class="lr1">1</td>
<td bgcolor="#ffdde8" class="lt2">4:00</td><td bgcolor="#ffdde8" class="lr2">2</td>
</tr>
<tr bgcolor="#FFDD99"><td colspan="7"  class="eh">◆ 積算タイム</td></tr><tr align="right">
<td bgcolor="#bbdd99" nowrap class="el">S→1</td>
<td bgcolor="#ffdde8" class="et2">10:00</td><td bgcolor="#ffdde8" class="er2">2</td>
<td bgcolor="#ffccdc" class="et1">9:00</td><td bgcolor="#ffccdc" class="er1">1</td>
<td bgcolor="#ffeef4" class="et3">11:00</td><td bgcolor="#ffeef4" class="er3">3</td>
</tr>
<tr align="right">
<td bgcolor="#bbdd99" nowrap class="el">1→2</td>
<td bgcolor="#ffdde8" class="et2">13:20</td><td bgcolor="#ffdde8" class="er2">2</td>
<td bgcolor="#ffccdc" class="et1">↓</td><td bgcolor="#ffccdc" class="er1">1</td>
<td bgcolor="#ffeef4" class="et3">14:00</td><td bgcolor="#ffeef4" class="er3">3</td>
</tr>
<tr align="right">
<td bgcolor="#bbdd99" nowrap class="el">2→F</td>
<td bgcolor="#ffccdc" class="et1">17:00</td><td bgcolor="#ffccdc" class="er1">1</td>
<td bgcolor="#ffdde8" class="et2">17:30</td><td bgcolor="#ffdde8" class="er2">2</td>
<td bgcolor="#ffeef4" class="et3">18:00</td><td bgcolor="#ffeef4" class="er3">3</td>
</tr>
{names}<tr bgcolor="#FFDD99"><td colspan="7"  class="ch">◆ 巡行速度(%)</td></tr><tr align="right">
<td bgcolor="#bbccdd" class="cl">&nbsp;</td>
<td colspan="2" class="cv">98.8</td>
<td colspan="2" class="cv">90.0</td>
<td colspan="2" class="cv">105.9</td>
</tr>
<tr bgcolor="#FFDD99"><td colspan="7"  class="sh">◆ ミス率(%)</td></tr><tr align="right">
<td bgcolor="#bbccdd" class="sl">&nbsp;</td>
<td colspan="2" class="sv">1.9</td>
<td colspan="2" class="sv">12.6</td>
<td colspan="2" class="sv">2.3</td>
</tr>
{names}<tr bgcolor="#FFDD99"><td colspan="7"  class="rh">◆ ラップ上位３人に対する相対値(%)</td></tr><tr align="right">
<td bgcolor="#dddd77" nowrap class="rl">S→1</td>
<td colspan="2" class="rv">100</td>
<td colspan="2" class="rv">90</td>
<td colspan="2" class="rv">110</td>
</tr>
<tr align="right">
<td bgcolor="#dddd77" nowrap class="rl">1→2</td>
<td colspan="2" class="rv">105</td>
<td colspan="2" rowspan="2" class="rv">121</td>
<td colspan="2" class="rv">95</td>
</tr>
<tr align="right">
<td bgcolor="#dddd77" nowrap class="rl">2→F</td>
<td colspan="2" class="rv">96</td>
<td colspan="2" class="rv">104</td>
</tr>
<tr align="right" bgcolor="#eeeeee">
<td bgcolor="#cccccc" class="ral">合計</td>
<td colspan="2" class="rav">100</td>
<td colspan="2" class="rav">103</td>
<td colspan="2" class="rav">106</td>
</tr>
<tr bgcolor="#FFDD99"><td colspan="7"  class="mh">◆ ミスタイム</td></tr><tr align="right" nowrap>
<td bgcolor="#bbdd99" class="ml">S→1</td>
<td colspan="2" class="mv">0:07</td>
<td colspan="2" class="mv">0:00</td>
<td colspan="2" class="mv">0:25</td>
</tr>
<tr align="right" nowrap>
<td bgcolor="#bbdd99" class="ml">1→2</td>
<td colspan="2" class="mv">0:12</td>
<td colspan="2" rowspan="2" class="mv">2:12</td>
<td colspan="2" class="mv">-0:21</td>
</tr>
<tr align="right" nowrap>
<td bgcolor="#bbdd99" class="ml">2→F</td>
<td colspan="2" class="mv">-0:07</td>
<td colspan="2" class="mv">-0:04</td>
</tr>
<tr align="right" bgcolor="#eeeeee">
<td bgcolor="#cccccc" class="mtl">合計</td>
<td colspan="2" class="mtv">0:20</td>
<td colspan="2" class="mtv">2:12</td>
<td colspan="2" class="mtv">0:25</td>
</tr>
<tr bgcolor="#FFDD99"><td colspan="7"  class="wh">◆ ミスを除いたタイム</td></tr><tr align="right">
<td bgcolor="#bbccdd" class="wl">&nbsp;</td>
<td colspan="2" class="wv">16:40</td>
<td colspan="2" class="wv">15:18</td>
<td colspan="2" class="wv">17:35</td>
</tr>
{names}{clubs}{results}</table><br><a href="https://keltrun.example/">Made with ケルトラン２ (Ver.2.27)</a>
</body></html>)";
constexpr std::string_view kNameRow = R"(<tr bgcolor="#bbddff">
<td class="nl" bgcolor="#99bbdd">氏名</td>
<td colspan="2" class="nv">山田太郎</td>
<td colspan="2" class="nv">Sk&lt;p</td>
<td colspan="2" class="nv">Slow</td>
</tr>
)";
constexpr std::string_view kClubRow = R"(<tr bgcolor="#bbddff">
<td class="zl" bgcolor="#99bbdd">所属</td>
<td colspan="2" class="zv">Club&quot;A&quot;</td>
<td colspan="2" class="zv">&nbsp;</td>
<td colspan="2" class="zv">&nbsp;</td>
</tr>
)";
constexpr std::string_view kResultRows = R"(<tr align="right" bgcolor="#ddeeff">
<td align="left" class="kl" bgcolor="#bbccdd">記録</td>
<td colspan="2" nowrap class="kv">&nbsp;&nbsp;&nbsp;0:17:00</td>
<td colspan="2" nowrap class="kv">&nbsp;&nbsp;&nbsp;0:17:30</td>
<td colspan="2" nowrap class="kv">&nbsp;&nbsp;&nbsp;0:18:00</td>
</tr>
<tr align="right" bgcolor="#ddeeff">
<td align="left" class="jl" bgcolor="#bbccdd">順位</td>
<td colspan="2" class="jv">1</td>
<td colspan="2" class="jv">2</td>
<td colspan="2" class="jv">3</td>
</tr>
)";

TEST(AnalysisPage, ToTheLetter) {
  std::string expected(kAnalysisPage);
  const std::pair<std::string, std::string_view> rows[] = {
      {"{names}", kNameRow}, {"{clubs}", kClubRow}, {"{results}", kResultRows}};
  for (const auto& [mark, row] : rows) {
    for (std::size_t at; (at = expected.find(mark)) != std::string::npos;) {
      expected.replace(at, mark.size(), row);
    }
  }
  const PageEvent event;
  EXPECT_EQ(event.Analysis(), CrLf(expected));
  // The style sheet's address is the host's own HTML, the charset is only declared.
  const std::string linked = event.Analysis("a&b.css", "utf-8");
  EXPECT_NE(linked.find("</style>\r\n<link rel=\"stylesheet\" type=\"text/css\" href=\"a&b.css\">"
                        "\r\n</head><body>"),
            std::string::npos);
  EXPECT_NE(linked.find("charset=utf-8\">"), std::string::npos);
}

TEST(AnalysisPage, NobodyToAnalyse) {
  const auto root = NewRoot();
  for (const bool loaded : {false, true}) {
    if (loaded) root->AddClass("A");
    const std::string page = root->HtmlControl()->OutputAnalysis(root->NewAnalyzer());
    const std::string body = page.substr(page.find("<body>"));
    EXPECT_EQ(body, CrLf(std::string("<body>\n") +
                         (loaded ? "" : "ファイルが読み込まれてません。<br>\n") +
                         "解析できません。<br>\n<br><a href=\"https://keltrun.example/\">"
                         "Made with ケルトラン２ (Ver.2.27)</a>\n</body></html>"));
  }
}

TEST(AnalysisPage, ElevenRunners) {
  const PageEvent event;
  for (int i = 4; i <= 11; ++i) {
    AddRunner(*event.klass, "R" + std::to_string(i), "0:20:0" + std::to_string(i % 10),
              {700. + i, 300. + i, 250. + i});
  }
  const std::string page = event.Analysis();
  EXPECT_EQ(CountOf(page, "<td colspan=\"24\""), 8U) << "Int(10 / 10) + 2 * 11 + 1 columns";
  EXPECT_EQ(CountOf(page, "氏名</td>"), 2U * 4);
  for (const char* label :
       {"class=\"ll\">1→2", "class=\"el\">2→F", "class=\"rl\">1→2", "class=\"ml\">1→2",
        "class=\"cl\">", "class=\"sl\">", "class=\"wl\">", "class=\"ral\">", "class=\"mtl\">"}) {
    EXPECT_EQ(CountOf(page, label), 2U) << label;
  }
  EXPECT_EQ(CountOf(page, "記録</td>\r\n<td colspan=\"2\" nowrap class=\"kv\">"), 2U * 2);
  // Ranks 4 to 6 have classes but no colour, from 7 on neither.
  EXPECT_NE(page.find("<td class=\"lt6\">11:46</td><td class=\"lr6\">6</td>"), std::string::npos);
  EXPECT_NE(page.find("<td class=\"lt\">11:47</td><td class=\"lr\">7</td>"), std::string::npos);
  EXPECT_NE(page.find("<td class=\"et\">11:47</td><td class=\"er\">7</td>"), std::string::npos);
}

TEST(AnalysisPage, NamesClubsResultsAndRanks) {
  const struct {
    const char *text, *shown;
  } names[] = {{"", ""},
               {"0123456789", "0123456789"},
               {"01234567890", "0123456789<br>0"},
               {"0123456789 012345　6789", "0123456789<br>0123456789"},
               {"012345678901234567890", "0123456789<br>0123456789<br>0"},
               {"あいうえおかきくけこさ", "あいうえおかきくけこ<br>さ"},
               {"012345678<&>\"", "012345678&lt;<br>&amp;&gt;&quot;"},
               // A cut never splits a surrogate pair: the pair goes to the next piece.
               {"012345678\U00020B9F1", "012345678<br>\U00020B9F1"}};
  for (const auto& c : names) {
    const PageEvent event;
    event.klass->LapData(1)->RunnerName = c.text;
    event.klass->LapData(1)->ClubName = c.text;
    const std::string page = event.Analysis(), shown = c.shown;
    EXPECT_EQ(CountOf(page, "氏名</td>\r\n<td colspan=\"2\" class=\"nv\">" + shown + "</td>"), 4U)
        << c.text;
    const std::string club = shown.empty() ? "&nbsp;" : shown;
    EXPECT_EQ(CountOf(page, "所属</td>\r\n<td colspan=\"2\" class=\"zv\">" + club + "</td>"), 2U);
  }
  // A result of ten columns and more is cut; blanks in it become no-break spaces.
  PageEvent event;
  event.klass->LapData(1)->SetResult("途中 棄権 <b>");
  event.klass->LapData(1)->Rank = "<1>";
  event.klass->LapData(2)->Rank = "2";
  event.klass->LapData(3)->Rank = "";
  std::string page = event.Analysis();
  EXPECT_EQ(CountOf(page, CrLf(R"(順位</td>
<td colspan="2" class="jv">&nbsp;</td>
<td colspan="2" class="jv">2</td>
<td colspan="2" class="jv">&lt;1&gt;</td>
</tr>)")),
            2U);
  EXPECT_EQ(CountOf(page, "class=\"kv\">途中&nbsp;棄権&nbsp;</td>"), 2U);
  // In a mixed set the class name, a blank and the rank, also when the rank is empty.
  const auto analyzer = event.root->NewAnalyzer();
  analyzer->AddClass(1);
  analyzer->DataSetIsMix = true;
  analyzer->Execute();
  page = event.root->HtmlControl()->OutputAnalysis(analyzer);
  EXPECT_EQ(CountOf(page, "class=\"jv\">M21 &quot;A&quot; </td>"), 2U);
  EXPECT_EQ(CountOf(page, "class=\"jv\">M21 &quot;A&quot; &lt;1&gt;</td>"), 2U);
}

TEST(AnalysisPage, LabelsByModeAndCourse) {
  for (const bool japanese : {false, true}) {
    const PageEvent event(japanese ? Mode::kJapaneseMode : Mode::kEnglishTexts);
    event.klass->ControlCount = 10;
    const auto analyzer = event.root->NewAnalyzer();
    analyzer->AddClass(1);
    analyzer->Execute();
    std::string page = event.root->HtmlControl()->OutputAnalysis(analyzer);
    const char* labels[][2] = {
        {"S→1", "S→１"}, {"1→2", "１→２"}, {"8→9", "８→９"}, {"9→10", "９→10"}, {"10→F", "10→F"}};
    for (const auto& label : labels) {
      EXPECT_EQ(CountOf(page, ">" + std::string(label[japanese ? 1 : 0]) + "</td>"), 4U)
          << label[0];
    }
    EXPECT_NE(page.find(japanese ? "<b>Ｍ２１　＂Ａ＂</b>" : "<b>M21 &quot;A&quot;</b>"),
              std::string::npos);
    EXPECT_NE(page.find(japanese ? "2024年05月06日 - " : "2024-05-06 - "), std::string::npos);
    // With a course the lap section shows control codes instead, in half width.
    const auto course = event.root->AddCourse(1);
    course->SetControlCount(10);
    for (std::int32_t i = 1; i <= 10; ++i) course->SetControlNum(i, 30 + i);
    analyzer->SetCourseData(course);
    page = event.root->HtmlControl()->OutputAnalysis(analyzer);
    EXPECT_EQ(CountOf(page, "class=\"ll\">→(31)</td>"), 1U);
    EXPECT_EQ(CountOf(page, "class=\"ll\">(31)→(32)</td>"), 1U);
    EXPECT_EQ(CountOf(page, "class=\"ll\">(40)→</td>"), 1U);
    EXPECT_EQ(CountOf(page, "class=\"el\">" + std::string(labels[0][japanese ? 1 : 0])), 1U);
  }
}

TEST(ResultPage, ToTheLetter) {
  const PageEvent event;
  event.klass->LapData(1)->Rank = "1";
  event.klass->LapData(1)->Seed = "S & 1";
  event.klass->LapData(3)->Rank = "2";
  event.klass->LapData(2)->Rank = "失\"格";
  event.klass->CutOffRank = 1;
  const auto results = event.root->NewResultsHolder();
  results->AddClass(1);
  results->CalcRank();
  EXPECT_EQ(event.root->HtmlControl()->OutputResult(results, "<b>top</b>", "s.css", "utf-8"),
            CrLf(R"(<html>
<head>
<meta http-equiv="Content-Type" content="text/html; charset=utf-8">
<meta name="generator" content="Keltrun Ver.2.27">
<link rel="stylesheet" type="text/css" href="s.css">
</head><body>
<b>top</b>
<table border="0" cellspacing="0" cellpadding="1" bgcolor="white" class="result">
<tr align="left" width="500" bgcolor="#000080#">
<td colspan="6" class="result-title"><font color="#ffffff" size="+1"><b>&nbsp;M21 &quot;A&quot;</b></font><font color="#ffffff"> - 4.5km ↑120m</font></td></tr>
<tr width="500" class="r-odd">
<td align="right" width="30" class="r-rank1">1</td><td align="center" width="40" class="r-rank1">S &amp; 1</td><td width="140" class="r-rank1">山田 太郎</td><td align="right" width="80" class="r-rank1">0:17:00</td><td width="30" class="r-rank1">&nbsp;</td><td width="180" class="r-rank1">Club &quot;A&quot;</td></tr>
<tr width="500" class="r-border">
<td colspan="6"><hr></td></tr>
<tr bgcolor="#eeeeee" width="500" class="r-even">
<td align="right" width="30" class="r-rank2">2</td><td align="center" width="40" class="r-rank2">&nbsp;</td><td width="140" class="r-rank2">Sk&lt;p</td><td align="right" width="80" class="r-rank2">0:17:30</td><td width="30" class="r-rank2">&nbsp;</td><td width="180" class="r-rank2">&nbsp;</td></tr>
<tr width="500" class="r-odd">
<td align="right" width="30" class="r-rank失&quot;格">失&quot;格</td><td align="center" width="40" class="r-rank失&quot;格">&nbsp;</td><td width="140" class="r-rank失&quot;格">Slow</td><td align="right" width="80" class="r-rank失&quot;格">0:18:00</td><td width="30" class="r-rank失&quot;格">&nbsp;</td><td width="180" class="r-rank失&quot;格">&nbsp;</td></tr>
</table></body></html>)"));
}

TEST(ResultPage, MixedSetsTitlesAndEmptyLists) {
  const PageEvent event(Mode::kJapaneseMode);
  const auto results = event.root->NewResultsHolder();
  const auto page = [&] { return event.root->HtmlControl()->OutputResult(results); };
  const std::string empty = page();
  EXPECT_EQ(empty.substr(empty.find("<body>")), CrLf(R"(<body>

<table border="0" cellspacing="0" cellpadding="1" bgcolor="white" class="result">
<tr align="left" width="500" bgcolor="#000080#">
<td colspan="6" class="result-title"><font color="#ffffff" size="+1"><b>&nbsp;</b></font></td></tr>
</table></body></html>)"));
  event.klass->LapData(2)->SetResult("MP");
  results->AddClass(1);
  results->SetDataSetName("Ｗ21 <E>");
  results->Length = 5000;
  results->Climb = 0;
  results->CalcRank();
  const std::string mixed = page();
  EXPECT_NE(
      mixed.find("<b>&nbsp;Ｗ２１　＜Ｅ＞</b></font><font color=\"#ffffff\"> - 5km</font></td>"),
      std::string::npos);
  EXPECT_NE(mixed.find(R"(<td align="right" width="30" class="r-rank1">1</td>)"
                       R"(<td align="center" width="80" class="r-rank1">(M21 &quot;A&quot;)</td>)"
                       R"(<td width="100" class="r-rank1">山田 太郎</td>)"),
            std::string::npos);
  EXPECT_NE(mixed.find(R"(<td align="right" width="30" class="r-rank">&nbsp;</td>)"
                       R"(<td align="center" width="80" class="r-rank">(M21 &quot;A&quot;)</td>)"
                       R"(<td width="100" class="r-rank">Slow</td>)"),
            std::string::npos);
  results->Length = 0;
  results->Climb = 150;
  EXPECT_NE(page().find("</b></font></td></tr>"), std::string::npos) << "no climb without length";
}

TEST(ResultPage, BorderBehindTheCutOffRank) {
  const struct {
    std::int32_t cut_off;
    std::vector<const char*> ranks;
    std::size_t behind;  // rows in front of the border, 0: no border
  } cases[] = {
      {2, {"1", "2", "3", "4"}, 2}, {0, {"1", "2"}, 0},       {-1, {"1"}, 0},
      {5, {"1", "2", "3"}, 0},      {1, {"", "(2)", "3"}, 2}, {1, {"2", "3"}, 0},
  };
  for (const auto& c : cases) {
    const auto root = NewRoot();
    const auto klass = root->AddClass("A");
    klass->CutOffRank = c.cut_off;
    int minute = 10;
    for (const char* rank : c.ranks) {
      AddRunner(*klass, "R", "0:" + std::to_string(minute++) + ":00", {})->Rank = rank;
    }
    const auto results = root->NewResultsHolder();
    results->AddClass(1);
    const std::string page = root->HtmlControl()->OutputResult(results);
    const std::size_t border = page.find("class=\"r-border\"");
    const bool first = c.ranks.size() == 2 && c.cut_off == 1;  // nobody reached the cut-off
    EXPECT_EQ(border != std::string::npos, c.behind > 0 || first);
    EXPECT_EQ(CountOf(page, "r-border"), c.behind > 0 || first ? 1U : 0U);
    EXPECT_EQ(CountOf(page.substr(0, border), "class=\"r-odd\"") +
                  CountOf(page.substr(0, border), "class=\"r-even\""),
              c.behind > 0 || first ? c.behind : c.ranks.size());
    EXPECT_EQ(CountOf(page, "class=\"r-odd\""), (c.ranks.size() + 1) / 2);
  }
}

/// Compares a page with a golden file, or rewrites the file.
void ExpectGolden(const std::string& name, const std::string& page) {
  const std::string file = KELTRUN2_TEST_DATA "/../golden/" + name;
  const char* approve = std::getenv("KELTRUN2_APPROVE");
  if (approve != nullptr && std::string_view(approve) == "1") WriteBytes(file, page);
  EXPECT_EQ(ReadBytes(file), page) << name;
}

/// Keeps the files small, and shows that pages hold the selected set.
void SelectEverySecond(clsAnalyzer& analyzer) {
  analyzer.SelectNone();
  for (std::int32_t i = 1; i <= analyzer.FullSetCount(); i += 2) {
    analyzer.SelectItem(analyzer.FullSetItem(i)->SerialNum());
  }
}

TEST(GoldenPages, ExamplesInEveryMode) {
  const struct {
    const char *event, *klass;
    std::int32_t course;
  } events[] = {{"midorigaoka", "N/G", 4}, {"hoshinomori", "初心者", 4}};
  const std::pair<Mode, const char*> modes[] = {
      {Mode::kJapaneseTexts, "ja"}, {Mode::kEnglishTexts, "en"}, {Mode::kJapaneseMode, "japanese"}};
  for (const auto& e : events) {
    for (const auto& [mode, mode_name] : modes) {
      const auto root = NewRoot(mode);
      const std::string example = e.event;
      ASSERT_TRUE(root->FileControl()->LoadLapFile(ExampleFile(example + "/event.lxm")));
      const auto output = [&](const char* kind, const auto& fill) {
        const std::string name = example + "-" + kind + "-" + mode_name + ".html";
        const auto analyzer = root->NewAnalyzer();
        fill(*analyzer);
        analyzer->Execute();
        if (analyzer->DataSetIsMix) SelectEverySecond(*analyzer);
        ExpectGolden("analysis-" + name, root->HtmlControl()->OutputAnalysis(analyzer));
        const auto results = root->NewResultsHolder();
        fill(*results);
        results->CalcRank();
        ExpectGolden("result-" + name, root->HtmlControl()->OutputResult(results, "", "style.css"));
      };
      output("class", [&](DataSet& set) { set.AddClass(e.klass); });
      output("course", [&](DataSet& set) { set.AddCourse(e.course); });
    }
  }
}

}  // namespace
}  // namespace keltrun::test
