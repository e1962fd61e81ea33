// Publishing an event as a web site.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <numeric>
#include <set>
#include <sstream>

#include "keltrun2/platform/clock.h"
#include "keltrun2/platform/encodings.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

/// What OutputHtml is called with.
struct Options {
  std::string Index = "index.html", Analysis = "a_*.html", Result = "r_*.html", Lap2 = "";
  bool OfficialSite = false, AddMode = false, AnalysisCourse = false, ResultCourse = false;
  std::string Style = "";
};

class SiteTest : public testing::Test {
 protected:
  SiteTest() {
    std::filesystem::create_directory(site);
    SetClock([] { return 45418 + (12 * 60 + 34) / 1440.0; });  // 2024-05-06 12:34
  }
  ~SiteTest() override { SetClock({}); }

  /// A class of one runner.
  std::shared_ptr<clsClassData> AddClass(std::string_view name, std::int32_t course = 0,
                                         std::string_view result = "0:05:00") const {
    const auto klass = root->AddClass(name);
    klass->CourseNum = course;
    AddRunner(*klass, "R", result, {300});
    return klass;
  }
  bool Publish(const Options& o = {}) const {
    return root->FileControl()->OutputHtml(site, o.Index, o.Analysis, o.Result, o.Lap2, "",
                                           o.OfficialSite, o.AddMode, "", "", o.AnalysisCourse,
                                           o.ResultCourse, "", false, "", false, "", o.Style);
  }
  /// A page of the site as UTF-8 text.
  std::string Page(const std::string& name = "index.html") const {
    return Decode(ReadBytes(site + "/" + name), Charset::kShiftJis).Text;
  }
  bool IndexHas(std::string_view text) const { return Page().find(text) != std::string::npos; }
  /// The names of the files in the site, in order.
  std::string Files() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(site)) {
      names.insert(entry.path().filename().string() + " ");
    }
    return std::accumulate(names.begin(), names.end(), std::string());
  }

  TemporaryFolder folder;
  std::string site = folder.Path("site");
  std::shared_ptr<clsKeltrun2> root = NewRoot();
};

TEST_F(SiteTest, IndexAndPagesToTheLetter) {
  root->EventData()->EventName = "Cup & <1>";
  root->EventData()->Terrain = "森\"";
  root->EventData()->SetEventDate(std::make_shared<clsDateValue>(45418));
  root->EventData()->OfficialSite = "HTTPS://x.example/?a=1&b=2";
  const auto klass = root->AddClass("M21 A");
  klass->Length = 4500;
  klass->Climb = 120;
  AddRunner(*klass, "Second", "0:18:00", {1080});
  AddRunner(*klass, "山田 太郎", "0:17:00", {1020});
  root->AddClass("Nobody");
  AddRunner(*root->AddClass("<W>"), "A&B", "MP", {0, 100});
  ASSERT_TRUE(Publish({.Lap2 = "my data.lxm", .OfficialSite = true, .Style = "style.css"}));
  EXPECT_EQ(root->ErrorComment(), "");
  EXPECT_EQ(Page(), CrLf(R"(<html>
<head>
<meta http-equiv="Content-Type" content="text/html; charset=x-sjis">
<meta name="generator" content="Keltrun Ver.2.27">
<style type="text/css">
<!--
table { border-width: 0px 0px 1px 1px ; border-color: black }
td { font-size:10pt; border-width: 1px 1px 0px 0px ; border-color: black }
-->
</style>
<link rel="stylesheet" type="text/css" href="style.css">
</head>
<body bgcolor="#ffffff">

<!-- ### KELTRUN START ### -->
<table cellpadding="2" cellspacing="0" border="1" width="650" class="top">
<tr><td nowrap colspan="4" bgcolor="#c04040" class="t-event-name"><font size="+1" color="white"><b>&nbsp;Cup &amp; &lt;1&gt;&nbsp;</b></font></td></tr>
<tr><td nowrap colspan="4" bgcolor="#ffdddd" class="t-event-info">2024年05月06日&nbsp;&nbsp;[森&quot;]&nbsp;<a href="HTTPS://x.example/?a=1&amp;b=2" target="_blank">公式サイト</a></td></tr>
<tr><td nowrap colspan="4" bgcolor="#f0f0f0" align="right" class="t-link">
&nbsp;[<a href="my%20data.lxm">ケルトラン２用データ</a>]
</td></tr>
<tr><td nowrap bgcolor="#405080" width="125" class="t-class-head"><font color="white"><B>&nbsp;M21 A&nbsp;</B></font></td>
<td nowrap bgcolor="#ffffff" width="300" class="t-class-body">
&nbsp;<a href="r_m21%20a.html" target="_blank">成績表</a>&nbsp;<a href="a_m21%20a.html" target="_blank">ラップ解析</a></td>
<td nowrap bgcolor="#ddffdd" align="center" width="100" class="t-class-length">4.5km ↑120m</td>
<td nowrap align="center" bgcolor="#ffffcc" width="100" class="t-class-winner">山田太&nbsp;0:17:00</td>
</tr>
<tr><td nowrap bgcolor="#405080" width="125" class="t-class-head"><font color="white"><B>&nbsp;&lt;W&gt;&nbsp;</B></font></td>
<td nowrap bgcolor="#ffffff" width="300" class="t-class-body">
&nbsp;<a href="r_w.html" target="_blank">成績表</a>&nbsp;<a href="a_w.html" target="_blank">ラップ解析</a></td>
<td nowrap bgcolor="#ddffdd" align="center" width="100" class="t-class-length">&nbsp;</td>
<td nowrap align="center" bgcolor="#ffffcc" width="100" class="t-class-winner">A&amp;B&nbsp;&nbsp;&nbsp;&nbsp;&nbsp;&nbsp;&nbsp;&nbsp;&nbsp;MP</td>
</tr>
<tr><td nowrap colspan="4" bgcolor="#f0f0f0" align="right" class="t-output">出力日時 : 2024/05/06 12:34</td></tr>
</table>
<br>
<!-- ### KELTRUN FINISH ### -->

</body>
</html>
)"));
  EXPECT_EQ(Files(), "a_m21 a.html a_w.html index.html my data.lxm r_m21 a.html r_w.html ");
  // Every page is the one that the HTML service makes; result pages carry the bar of links.
  const auto results = root->NewResultsHolder();
  const auto analyzer = root->NewAnalyzer();
  results->AddClass(3);
  results->CalcRank();
  analyzer->AddClass(1);
  analyzer->Execute();
  const auto html = root->HtmlControl();
  EXPECT_EQ(Page("a_m21 a.html"), html->OutputAnalysis(analyzer, "style.css") + "\r\n");
  const std::string bar =
      "<a href=\"r_m21%20a.html\">M21 A</a> <a href=\"r_w.html\">&lt;W&gt;</a> <hr>\r\n";
  EXPECT_EQ(Page("r_w.html"), html->OutputResult(results, bar, "style.css") + "\r\n");
}

TEST_F(SiteTest, OutputsAndCoursesByFlag) {
  AddClass("A", 1);
  AddClass("B", 1, "0:04:00");
  AddClass("C", 2);
  const std::string pages = "a_a.html a_b.html a_c.html ", results = "r_a.html r_b.html r_c.html ";
  const std::pair<Options, std::string> cases[] = {
      {{.Index = "", .Analysis = ""}, results},
      {{.Result = ""}, pages + "index.html "},
      {{}, pages + "index.html " + results},
      {{.AnalysisCourse = true}, "a_a.html a_a_b.html a_b.html a_c.html index.html " + results},
      {{.Analysis = "", .Result = ""}, "index.html "},
      {{.ResultCourse = true}, pages + "index.html r_a.html r_a_b.html r_b.html r_c.html "}};
  for (const auto& [options, files] : cases) {
    std::filesystem::remove_all(site);
    std::filesystem::create_directory(site);
    ASSERT_TRUE(Publish(options));
    EXPECT_EQ(Files(), files);
    if (options.Index.empty()) continue;
    // The course's winner is the best of its classes, with and without a result page.
    const bool course = options.AnalysisCourse || options.ResultCourse;
    EXPECT_EQ(IndexHas("<B>&nbsp;A/B&nbsp;</B>"), course) << files;
    EXPECT_EQ(IndexHas("R&nbsp;&nbsp;&nbsp;&nbsp;&nbsp;&nbsp;0:04:00</td>"),
              files != "index.html ");
  }
  EXPECT_NE(Page("r_c.html")
                .find("<a href=\"r_c.html\">C</a> "
                      "&nbsp;&nbsp;<a href=\"r_a_b.html\">A/B</a> <hr>"),
            std::string::npos);
}

TEST_F(SiteTest, FileNames) {
  std::istringstream names(
      "Ａ,;A,;<>,;up,..\\..\\evil;up2,../..;ctl,a\tb\nc;a%,x y&é%#;Ａ２,A_2;root,/etc/pass;");
  for (std::string name, file_name; std::getline(names, name, ',');) {
    const auto klass = AddClass(name);
    if (std::getline(names, file_name, ';') && !file_name.empty()) klass->SetFileName(file_name);
  }
  const std::string model_name = root->ClassData(2)->FileName();
  ASSERT_TRUE(Publish({.Analysis = "", .Lap2 = "../../x.lxm"}));
  const std::string files = " " + Files();
  // Equal names but for case are numbered in the order of the classes, an empty name is replaced.
  for (const char* name :
       {" r_A.html ", " r_a_2.html ", " r_a_2_2.html ", " r_class3.html ", " r_x y&é%#.html "}) {
    EXPECT_NE(files.find(name), std::string::npos) << name << " in " << files;
  }
  EXPECT_TRUE(IndexHas("<a href=\"r_x%20y%26%C3%A9%25%23.html\"") &&
              IndexHas("<a href=\"r_a_2.html\"") && IndexHas("<a href=\"r_class3.html\""));
  EXPECT_EQ(root->ClassData(2)->FileName(), model_name) << "the model's name stays";
  // Nothing left the folder, nothing was lost, no name holds a control character.
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(site), {}), 11);
  EXPECT_EQ(std::distance(std::filesystem::recursive_directory_iterator(folder.Path()), {}), 12);
  EXPECT_TRUE(std::ranges::none_of(files, [](char c) { return c > 0 && c < 0x20; }));
}

TEST_F(SiteTest, OfficialSiteIsALinkOnlyForWebAddresses) {
  AddClass("A");
  for (const auto& [address, shown] : Rows<const char*, std::string>{
           {"http://x.example/", "<a href=\"http://x.example/\" target=\"_blank\">公式サイト</a>"},
           {"Https://x/", "<a href=\"Https://x/\" target=\"_blank\">公式サイト</a>"},
           {"www.x.example", "www.x.example"},
           {"javascript:alert(\"1\")", "javascript:alert(&quot;1&quot;)"},
           {" http://x.example/", " http://x.example/"},
           {"http:/x", "http:/x"}}) {
    root->EventData()->OfficialSite = address;
    ASSERT_TRUE(Publish({.OfficialSite = true}));
    EXPECT_TRUE(IndexHas("class=\"t-event-info\">&nbsp;" + shown + "</td>")) << address;
  }
  ASSERT_TRUE(Publish());
  EXPECT_FALSE(IndexHas("t-event-info") || IndexHas("t-link")) << "nothing to show";
}

TEST_F(SiteTest, AddMode) {
  AddClass("新人");
  const std::string start = "<!-- ### KELTRUN START ### -->",
                    finish = "<!-- ### KELTRUN FINISH ### -->";
  const std::string sjis = "\x90\x58";  // 森
  // What stands in front of the block and behind it.
  for (const auto& [before, after] : Rows<std::string, std::string>{
           {"<html>\r\n" + sjis + "\r\n",
            start + "\r\nold\r\n" + start + "\r\nolder\r\n</body>\r\n"},
           {"<html>\nx\n", start + "\nold\n</body>\n"},         // comes out with CR LF
           {"<p>" + start + "\r\n", "</body>\r\n</html>\r\n"},  // within a line it is no marker
           {"a\r\n</body>\r\nb\r\n", "</body>\r\n" + sjis + "\r\n"},
           {"a\r\n" + sjis + "\r\n", ""},
           {"<meta content=\"text/html; charset=UTF-8\">\r\n森\r\n", start + "\r\n😀\r\n"}}) {
    WriteBytes(site + "/index.html", before + after);
    ASSERT_TRUE(Publish({.AddMode = true}));
    std::string page = ReadBytes(site + "/index.html"), kept = before + "\n" + after;
    const bool utf8 = before.find("UTF-8") != std::string::npos;
    EXPECT_NE(page.find(utf8 ? "新人" : "\x90\x56\x90\x6c"), std::string::npos);
    const std::size_t block = page.find(start + "\r\n<table"), end = page.find(finish);
    ASSERT_TRUE(block != std::string::npos && end != std::string::npos) << page;
    std::erase(kept, '\r');
    page.erase(block, end + finish.size() + 4 - block);
    EXPECT_TRUE(page == CrLf(kept) || page == CrLf(kept + "\n")) << page << "\nfor\n" << kept;
  }
  // Newest first; a page is made when there is none.
  std::filesystem::remove(site + "/index.html");
  for (const char* name : {"One", "Two", "Three"}) {
    root->EventData()->EventName = name;
    ASSERT_TRUE(Publish({.AddMode = true}));
  }
  const std::string page = Page();
  EXPECT_TRUE(page.starts_with("<html>\r\n<head>") && page.find("<head>") == page.rfind("<head>"));
  EXPECT_LT(page.find("Three&nbsp;"), page.find("Two&nbsp;"));
  EXPECT_LT(page.find("Two&nbsp;"), page.find("One&nbsp;"));
  ASSERT_TRUE(Publish());
  EXPECT_FALSE(IndexHas("Two&nbsp;")) << "without add mode the page is new";
}

/// Windows that answer without a user.
class AnsweringWindows : public HostWindows {
 public:
  std::unique_ptr<frmProgressBar> OpenProgress(std::string_view) override { return nullptr; }
  std::optional<std::size_t> ChooseName(std::string_view,
                                        const std::vector<std::string>&) override {
    return std::nullopt;
  }
  bool AskYesNo(std::string_view text, std::string_view title) override {
    asked += std::string(title) + ": " + std::string(text) + "\n";
    return answer;
  }
  bool answer = false;
  std::string asked;
};

TEST_F(SiteTest, MissingFolder) {
  AddClass("A");
  const auto windows = std::make_shared<AnsweringWindows>();
  SetHostWindows(windows);
  site = folder.Path("new") + "/deep/";
  EXPECT_FALSE(Publish());
  EXPECT_NE(root->ErrorComment(), "");
  EXPECT_FALSE(std::filesystem::exists(folder.Path("new")));
  windows->answer = true;
  for (int run = 0; run < 2; ++run) EXPECT_TRUE(Publish());
  const std::string question =
      "ファイル出力: 出力先のフォルダがありません。\r\n新しく作成しますか？\n";
  EXPECT_EQ(windows->asked, question + question) << "an existing folder is no question";
  EXPECT_EQ(root->ErrorComment() + Files(), "a_a.html index.html r_a.html ");
  SetHostWindows(nullptr);
}

TEST_F(SiteTest, PagesThatCannotBeWritten) {
  AddClass("A");
  AddClass("B");
  for (const char* name : {"/a_a.html", "/data.lxm"}) {
    std::filesystem::create_directory(site + name);  // in the way
  }
  EXPECT_TRUE(Publish({.Lap2 = "data.lxm"}));
  for (const auto& [name, failed] :
       Rows<const char*, bool>{{"a_a.html", true}, {"data.lxm", true}, {"a_b.html", false}}) {
    EXPECT_EQ(root->ErrorComment().find(name) != std::string::npos, failed) << name;
  }
  EXPECT_EQ(Files(), "a_a.html a_b.html data.lxm index.html r_a.html r_b.html ");
  EXPECT_FALSE(IndexHas("\"data.lxm\"")) << "a copy that failed has no link";
  std::filesystem::remove(site + "/a_a.html");
  EXPECT_TRUE(Publish());
  EXPECT_EQ(root->ErrorComment(), "") << "emptied at the start";
}

TEST_F(SiteTest, BytesAreShiftJisAndShortClassNamesWideInJapaneseMode) {
  root = NewRoot(Mode::kJapaneseMode);
  for (const char* name : {"M21-A", "ABCDEFGHIJ", "ABCDEFGHIJK", "髙"}) AddClass(name);
  root->ClassData(4)->LapData(1)->RunnerName = "Müller\U0001F600";
  ASSERT_TRUE(Publish());
  for (const char* name : {"Ｍ２１－Ａ", "ＡＢＣＤＥＦＧＨＩＪ", "ABCDEFGHIJK"}) {
    EXPECT_TRUE(IndexHas("<B>&nbsp;" + std::string(name) + "&nbsp;</B>")) << name;
  }
  const std::string bytes = ReadBytes(site + "/r_u9ad9.html");
  for (const char* text : {"M&#252;ller&#128512;", "\xFB\xFC" /* 髙 */, "charset=x-sjis"}) {
    EXPECT_NE(bytes.find(text), std::string::npos) << text;
  }
}

TEST_F(SiteTest, PublishingLeavesTheEventAsItWas) {
  const auto klass = AddClass("A", 1);
  klass->ControlCount = 3;
  AddRunner(*klass, "Skipped", "MP", {100, -1, 120, -1});
  AddRunner(*klass, "Last", "DNF", {100, -1, -1});
  ASSERT_TRUE(root->FileControl()->SaveLapFile(folder.Path("before.lxm")));
  ASSERT_TRUE(Publish({.Lap2 = "copy.lxm", .AnalysisCourse = true, .ResultCourse = true}));
  ASSERT_TRUE(root->FileControl()->SaveLapFile(folder.Path("after.lxm")));
  const std::string before = ReadBytes(folder.Path("before.lxm"));
  EXPECT_NE(before.find("index=\"4\" laptime=\"+\""), std::string::npos);
  EXPECT_EQ(ReadBytes(folder.Path("after.lxm")), before);
  EXPECT_EQ(ReadBytes(site + "/copy.lxm"), before);
}

TEST_F(SiteTest, Progress) {
  AddClass("A");
  root->AddClass("Nobody");
  AddClass("B");
  std::string percents;
  auto handle = root->FileControl()->OnProgress(
      [&](std::int32_t percent) { percents += std::to_string(percent) + " "; });
  ASSERT_TRUE(Publish());
  EXPECT_EQ(percents, "0 33 67 100 100 ");
  handle.Detach();
}

}  // namespace
}  // namespace keltrun::test
