// Publishing an event as a web site.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

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
    SetClock([] { return 45418 + (12 * 60 + 34) / 1440.0; });  // 2024-05-06 12:34
  }
  ~SiteTest() override { SetClock({}); }

  std::shared_ptr<clsClassData> AddClass(std::string_view name, std::int32_t course = 0) const {
    const auto klass = root->AddClass(name);
    klass->CourseNum = course;
    return klass;
  }
  /// A class of one runner.
  std::shared_ptr<clsClassData> AddClassOfOne(std::string_view name, std::int32_t course = 0,
                                              std::string_view result = "0:05:00") const {
    const auto klass = AddClass(name, course);
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
  /// The names of the files in the site, in order.
  std::string Files() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(site)) {
      names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    std::string all;
    for (const std::string& name : names) all += name + " ";
    return all;
  }
  bool IndexHas(const std::string& text) const { return Page().find(text) != std::string::npos; }

  TemporaryFolder folder;
  std::string site = folder.Path("site");
  std::shared_ptr<clsKeltrun2> root = NewRoot();
  bool made = std::filesystem::create_directory(site);
};

TEST_F(SiteTest, IndexAndPagesToTheLetter) {
  root->EventData()->EventName = "Cup & <1>";
  root->EventData()->Terrain = "森\"";
  root->EventData()->SetEventDate(std::make_shared<clsDateValue>(45418));
  root->EventData()->OfficialSite = "HTTPS://x.example/?a=1&b=2";
  const auto klass = AddClass("M21 A");
  klass->Length = 4500;
  klass->Climb = 120;
  AddRunner(*klass, "Second", "0:18:00", {1080});
  AddRunner(*klass, "山田 太郎", "0:17:00", {1020});
  AddClass("Nobody");
  AddRunner(*AddClass("<W>"), "A&B", "MP", {0, 100});
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
  results->AddClass(3);
  results->CalcRank();
  EXPECT_EQ(Page("r_w.html"),
            root->HtmlControl()->OutputResult(results,
                                              "<a href=\"r_m21%20a.html\">M21 A</a> "
                                              "<a href=\"r_w.html\">&lt;W&gt;</a> <hr>\r\n",
                                              "style.css") +
                "\r\n");
  const auto analyzer = root->NewAnalyzer();
  analyzer->AddClass(1);
  analyzer->Execute();
  EXPECT_EQ(Page("a_m21 a.html"),
            root->HtmlControl()->OutputAnalysis(analyzer, "style.css") + "\r\n");
  const auto copy = NewRoot();
  EXPECT_TRUE(copy->FileControl()->LoadLapFile(site + "/my data.lxm"));
  EXPECT_EQ(copy->ClassCount(), 3);
}

TEST_F(SiteTest, OutputsAndCoursesByFlag) {
  AddClassOfOne("A", 1);
  AddClassOfOne("B", 1, "0:04:00");
  AddClassOfOne("C", 2);
  const std::string pages = "a_a.html a_b.html a_c.html ", results = "r_a.html r_b.html r_c.html ";
  const struct {
    Options options;
    std::string files;
  } cases[] = {
      {{.Index = "", .Analysis = ""}, results},
      {{.Result = ""}, pages + "index.html "},
      {{}, pages + "index.html " + results},
      {{.AnalysisCourse = true}, "a_a.html a_a_b.html a_b.html a_c.html index.html " + results},
      {{.ResultCourse = true}, pages + "index.html r_a.html r_a_b.html r_b.html r_c.html "},
      {{.Analysis = "", .Result = ""}, "index.html "},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.files);
    std::filesystem::remove_all(site);
    std::filesystem::create_directory(site);
    ASSERT_TRUE(Publish(c.options));
    EXPECT_EQ(Files(), c.files);
    const bool course = c.options.AnalysisCourse || c.options.ResultCourse;
    if (c.options.Index.empty()) continue;
    // The course's winner is the best of its classes, with and without a result page.
    EXPECT_EQ(IndexHas("<B>&nbsp;A/B&nbsp;</B>"), course);
    EXPECT_EQ(IndexHas("R&nbsp;&nbsp;&nbsp;&nbsp;&nbsp;&nbsp;0:04:00</td>"),
              !c.options.Result.empty() || !c.options.Analysis.empty());
    if (c.options.Result.empty()) continue;
    EXPECT_EQ(Page("r_c.html").find("&nbsp;&nbsp;<a href=\"r_a_b.html\">A/B</a> <hr>") !=
                  std::string::npos,
              c.options.ResultCourse);
    EXPECT_NE(Page("r_c.html")
                  .find("<body>\r\n<a href=\"r_a.html\">A</a> <a href=\"r_b.html\">B</a> "
                        "<a href=\"r_c.html\">C</a> "),
              std::string::npos);
  }
}

TEST_F(SiteTest, FileNames) {
  const char* const file_names[][2] = {{"Ａ", nullptr},        {"A", nullptr},   {"<>", nullptr},
                                       {"up", "..\\..\\evil"}, {"up2", "../.."}, {"ctl", "a\tb\nc"},
                                       {"a%", "x y&é%#"},      {"Ａ２", "A_2"},  {"dots", "..\\.."},
                                       {"root", "/etc/pass"}};
  for (const auto& [name, file_name] : file_names) {
    const auto klass = AddClassOfOne(name);
    if (file_name != nullptr) klass->SetFileName(file_name);
  }
  const std::string model_name = root->ClassData(2)->FileName();
  ASSERT_TRUE(Publish({.Analysis = ""}));
  const std::string files = " " + Files();
  // Equal names but for case are numbered in the order of the classes, an empty name is replaced.
  for (const char* name :
       {" r_A.html ", " r_a_2.html ", " r_a_2_2.html ", " r_class3.html ", " r_x y&é%#.html "}) {
    EXPECT_NE(files.find(name), std::string::npos) << name << " in " << files;
  }
  EXPECT_TRUE(IndexHas("<a href=\"r_x%20y%26%C3%A9%25%23.html\""));
  EXPECT_TRUE(IndexHas("<a href=\"r_a_2.html\"") && IndexHas("<a href=\"r_class3.html\""));
  EXPECT_EQ(root->ClassData(2)->FileName(), model_name) << "the model's name stays";
  // Nothing left the folder, nothing was lost, no name holds a control character.
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(site), {}), 11);
  EXPECT_EQ(std::distance(std::filesystem::recursive_directory_iterator(folder.Path()), {}), 12);
  EXPECT_TRUE(std::none_of(files.begin(), files.end(), [](char c) { return c > 0 && c < 0x20; }));
}

TEST_F(SiteTest, OfficialSiteIsALinkOnlyForWebAddresses) {
  AddClassOfOne("A");
  const std::pair<const char*, bool> sites[] = {
      {"http://x.example/", true},        {"Https://x.example/", true},  {"www.x.example", false},
      {"javascript:alert(\"1\")", false}, {" http://x.example/", false}, {"http:/x", false}};
  for (const auto& [address, link] : sites) {
    root->EventData()->OfficialSite = address;
    ASSERT_TRUE(Publish({.OfficialSite = true}));
    EXPECT_EQ(IndexHas(" target=\"_blank\">公式サイト</a>"), link) << address;
    const std::string row = Page().substr(Page().find("t-event-info"));
    EXPECT_EQ(row.substr(0, row.find("</td>")).find("<a ") != std::string::npos, link);
    EXPECT_EQ(IndexHas("alert(&quot;1&quot;)"), std::string_view(address).starts_with("java"));
  }
  ASSERT_TRUE(Publish());
  EXPECT_FALSE(IndexHas("t-event-info")) << "nothing to show";
  EXPECT_FALSE(IndexHas("t-link"));
}

TEST_F(SiteTest, AddMode) {
  AddClassOfOne("新人");
  const std::string start = "<!-- ### KELTRUN START ### -->";
  const std::string sjis = "\x90\x58";  // 森
  const struct {
    const char* name;
    std::string before, after;
    bool utf8;
  } cases[] = {
      {"two blocks", "<html>\r\n" + sjis + "\r\n",
       start + "\r\nold\r\n" + start + "\r\nolder\r\n</body>\r\n", false},
      {"line feeds only", "<html>\nx\n", start + "\nold\n</body>\n", false},
      {"marker within a line is none", "<p>" + start + "\r\n", "</body>\r\n</html>\r\n", false},
      {"no marker, two bodies", "a\r\n</body>\r\nb\r\n", "</body>\r\n" + sjis + "\r\n", false},
      {"neither marker nor body", "a\r\n" + sjis + "\r\n", "", false},
      {"UTF-8", "<meta content=\"text/html; charset=UTF-8\">\r\n森\r\n", start + "\r\n😀\r\n", true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const auto lines = [](std::string text) {  // as the insertion writes them
      std::erase(text, '\r');
      return CrLf(text);
    };
    WriteBytes(site + "/index.html", c.before + c.after);
    ASSERT_TRUE(Publish({.AddMode = true}));
    EXPECT_EQ(root->ErrorComment(), "");
    const std::string page = ReadBytes(site + "/index.html");
    EXPECT_TRUE(page.starts_with(lines(c.before) + "\r\n" + start + "\r\n<table"));
    const std::size_t end = page.find("<!-- ### KELTRUN FINISH ### -->\r\n\r\n");
    ASSERT_NE(end, std::string::npos);
    std::string rest = page.substr(end + 35);
    if (rest == lines(c.after) + "\r\n") rest.resize(rest.size() - 2);
    EXPECT_EQ(rest, lines(c.after));
    EXPECT_NE(page.find(c.utf8 ? "新人" : "\x90\x56\x90\x6c"), std::string::npos);
  }
  // Newest first; a page is made when there is none.
  std::filesystem::remove(site + "/index.html");
  for (const char* name : {"One", "Two", "Three"}) {
    root->EventData()->EventName = name;
    ASSERT_TRUE(Publish({.AddMode = true}));
  }
  const std::string page = Page();
  EXPECT_TRUE(page.starts_with("<html>\r\n<head>"));
  EXPECT_LT(page.find("Three&nbsp;"), page.find("Two&nbsp;"));
  EXPECT_LT(page.find("Two&nbsp;"), page.find("One&nbsp;"));
  EXPECT_EQ(page.find("<head>"), page.rfind("<head>"));
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
  AddClassOfOne("A");
  const auto windows = std::make_shared<AnsweringWindows>();
  SetHostWindows(windows);
  site = folder.Path("new") + "/deep/";
  EXPECT_FALSE(Publish());
  EXPECT_NE(root->ErrorComment(), "");
  EXPECT_FALSE(std::filesystem::exists(folder.Path("new")));
  EXPECT_EQ(windows->asked,
            "ファイル出力: 出力先のフォルダがありません。\r\n新しく作成しますか？\n");
  windows->answer = true;
  EXPECT_TRUE(Publish());
  EXPECT_EQ(root->ErrorComment(), "");
  EXPECT_EQ(Files(), "a_a.html index.html r_a.html ");
  windows->asked.clear();
  EXPECT_TRUE(Publish());
  EXPECT_EQ(windows->asked, "") << "an existing folder is no question";
  SetHostWindows(nullptr);
}

TEST_F(SiteTest, PagesThatCannotBeWritten) {
  AddClassOfOne("A");
  AddClassOfOne("B");
  std::filesystem::create_directory(site + "/a_a.html");  // in the way
  std::filesystem::create_directory(site + "/data.lxm");
  EXPECT_TRUE(Publish({.Lap2 = "data.lxm"}));
  EXPECT_NE(root->ErrorComment().find("a_a.html"), std::string::npos);
  EXPECT_NE(root->ErrorComment().find("data.lxm"), std::string::npos);
  EXPECT_EQ(root->ErrorComment().find("a_b.html"), std::string::npos);
  EXPECT_EQ(Files(), "a_a.html a_b.html data.lxm index.html r_a.html r_b.html ");
  EXPECT_FALSE(IndexHas("\"data.lxm\"")) << "a copy that failed has no link";
  std::filesystem::remove(site + "/a_a.html");
  EXPECT_TRUE(Publish());
  EXPECT_EQ(root->ErrorComment(), "") << "emptied at the start";
}

TEST_F(SiteTest, BytesAreShiftJis) {
  AddRunner(*AddClass("髙"), "Müller\U0001F600", "0:05:00", {300});
  ASSERT_TRUE(Publish());
  for (const char* page : {"r_u9ad9.html", "a_u9ad9.html"}) {
    const std::string bytes = ReadBytes(site + "/" + page);
    EXPECT_NE(bytes.find("M&#252;ller&#128512;"), std::string::npos) << page;
    EXPECT_NE(bytes.find("\xFB\xFC"), std::string::npos) << "髙 is in code page 932";
    EXPECT_NE(bytes.find("charset=x-sjis"), std::string::npos);
  }
}

TEST_F(SiteTest, JapaneseModeWidensShortClassNames) {
  root = NewRoot(Mode::kJapaneseMode);
  for (const char* name : {"M21-A", "ABCDEFGHIJ", "ABCDEFGHIJK", "女子 A"}) AddClassOfOne(name);
  ASSERT_TRUE(Publish());
  for (const char* name : {"Ｍ２１－Ａ", "ＡＢＣＤＥＦＧＨＩＪ", "ABCDEFGHIJK", "女子　Ａ"}) {
    EXPECT_TRUE(IndexHas("<B>&nbsp;" + std::string(name) + "&nbsp;</B>")) << name;
  }
}

TEST_F(SiteTest, PublishingLeavesTheEventAsItWas) {
  const auto klass = AddClassOfOne("A", 1);
  klass->ControlCount = 3;
  AddRunner(*klass, "Skipped", "MP", {100, -1, 120, -1});
  AddRunner(*klass, "Last", "DNF", {100, -1, -1});
  AddClassOfOne("B", 1);
  ASSERT_TRUE(root->FileControl()->SaveLapFile(folder.Path("before.lxm")));
  ASSERT_TRUE(Publish({.Lap2 = "copy.lxm", .AnalysisCourse = true, .ResultCourse = true}));
  ASSERT_TRUE(root->FileControl()->SaveLapFile(folder.Path("after.lxm")));
  const std::string before = ReadBytes(folder.Path("before.lxm"));
  EXPECT_NE(before.find("index=\"4\" laptime=\"+\""), std::string::npos);
  EXPECT_EQ(ReadBytes(folder.Path("after.lxm")), before);
  EXPECT_EQ(ReadBytes(site + "/copy.lxm"), before);
}

TEST_F(SiteTest, Progress) {
  AddClassOfOne("A");
  AddClass("Nobody");
  AddClassOfOne("B");
  std::string percents;
  auto handle = root->FileControl()->OnProgress(
      [&](std::int32_t percent) { percents += std::to_string(percent) + " "; });
  ASSERT_TRUE(Publish());
  EXPECT_EQ(percents, "0 33 67 100 100 ");
  handle.Detach();
}

}  // namespace
}  // namespace keltrun::test
