// Publishing an event as a web site.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <numeric>
#include <regex>
#include <set>
#include <sstream>

#include "keltrun2/platform/clock.h"
#include "keltrun2/platform/encodings.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

namespace fs = std::filesystem;
using std::string;

/// Answers without a user, and writes down what it is asked.
class AnsweringWindows : public HostWindows {
 public:
  std::unique_ptr<frmProgressBar> OpenProgress(std::string_view) override { return nullptr; }
  std::optional<std::size_t> ChooseName(std::string_view, const std::vector<string>&) override {
    return {};
  }
  bool AskYesNo(std::string_view text, std::string_view title) override {
    asked += string(title) + ": " + string(text) + "\n";
    return answer;
  }
  bool answer = true;
  string asked;
};

bool Has(const string& text, std::string_view part) { return text.find(part) != string::npos; }

class SiteTest : public testing::Test {
 protected:
  SiteTest() {
    fs::create_directory(site);
    SetHostWindows(windows);
    SetClock([] { return 45418 + (12 * 60 + 34) / 1440.0; });  // 2024-05-06 12:34
  }
  ~SiteTest() override {
    SetClock({});
    SetHostWindows(nullptr);
  }

  /// A class of one runner.
  std::shared_ptr<clsClassData> AddClass(std::string_view name, std::int32_t course = 0,
                                         std::string_view result = "0:05:00") const {
    const auto klass = root->AddClass(name);
    klass->CourseNum = course;
    AddRunner(*klass, "R", result, {300});
    return klass;
  }
  /// Publishes an index, results and analyses besides what is asked for; or that alone.
  bool Publish(SiteOptions options = {}, bool alone = false) const {
    options.OutputFolder = site;
    if (!alone) {
      options.IndexFile = "index.html";
      options.AnalysisFile = "a_*.html";
      options.ResultFile = "r_*.html";
    }
    return root->FileControl()->OutputSite(options);
  }
  /// What publishing into an empty folder complains about, and the files there, in order.
  string Published(const SiteOptions& options, bool alone = false) const {
    fs::remove_all(site);
    fs::create_directory(site);
    EXPECT_TRUE(Publish(options, alone));
    return root->ErrorComment() + Files();
  }
  /// What else there is to publish; with courses or without.
  static SiteOptions Everything(bool courses) {
    SiteOptions options = {.LegDataFile = "l_*.html", .ChartFile = "c_*.html", .ChartOption = "0"};
    options.ResultIncludeCourse = options.AnalysisIncludeCourse = courses;
    options.LegDataIncludeCourse = options.ChartIncludeCourse = courses;
    options.Lap1File = "old.lap", options.Lap2File = "my data.lxm";
    options.ActiveXFile = "v.html", options.ActiveXAddress = "x.lxm";
    options.LinkStyleFile = "style.css";
    options.OfficialSite = true;
    return options;
  }
  /// A page of the site as UTF-8 text.
  string Page(const string& name = "index.html") const {
    return Decode(ReadBytes(site + "/" + name), Charset::kShiftJis).Text;
  }
  bool IndexHas(std::string_view text) const { return Has(Page(), text); }
  string Files() const {
    std::set<string> names;
    for (const auto& entry : fs::directory_iterator(site))
      names.insert(entry.path().filename().string() + " ");
    return std::accumulate(names.begin(), names.end(), string());
  }

  TemporaryFolder folder;
  string site = folder.Path("site");
  std::shared_ptr<AnsweringWindows> windows = std::make_shared<AnsweringWindows>();
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
  EXPECT_EQ(Published(Everything(false)),
            "a_m21 a.html a_w.html c_m21 a.html c_m21 a_0.png c_w.html c_w_0.png index.html "
            "l_m21 a.html l_w.html my data.lxm old.lap r_m21 a.html r_w.html ");
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
&nbsp;[<a href="old.lap">ケルトラン用データ</a>]&nbsp;[<a href="my%20data.lxm">ケルトラン２用データ</a>]
</td></tr>
<tr><td nowrap bgcolor="#405080" width="125" class="t-class-head"><font color="white"><B>&nbsp;M21 A&nbsp;</B></font></td>
<td nowrap bgcolor="#ffffff" width="300" class="t-class-body">
&nbsp;<a href="r_m21%20a.html" target="_blank">成績表</a>&nbsp;<a href="a_m21%20a.html" target="_blank">ラップ解析</a>&nbsp;<a href="l_m21%20a.html" target="_blank">レッグ解析</a>&nbsp;<a href="c_m21%20a.html" target="_blank">チャート</a></td>
<td nowrap bgcolor="#ddffdd" align="center" width="100" class="t-class-length">4.5km ↑120m</td>
<td nowrap align="center" bgcolor="#ffffcc" width="100" class="t-class-winner">山田太&nbsp;0:17:00</td>
</tr>
<tr><td nowrap bgcolor="#405080" width="125" class="t-class-head"><font color="white"><B>&nbsp;&lt;W&gt;&nbsp;</B></font></td>
<td nowrap bgcolor="#ffffff" width="300" class="t-class-body">
&nbsp;<a href="r_w.html" target="_blank">成績表</a>&nbsp;<a href="a_w.html" target="_blank">ラップ解析</a>&nbsp;<a href="l_w.html" target="_blank">レッグ解析</a>&nbsp;<a href="c_w.html" target="_blank">チャート</a></td>
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
  // Every page is the one that the HTML service makes; result pages carry the bar of links.
  const auto results = root->NewResultsHolder();
  const auto analyzer = root->NewAnalyzer();
  results->AddClass(3);
  results->CalcRank();
  analyzer->AddClass(1);
  analyzer->Execute();
  const auto html = root->HtmlControl();
  EXPECT_EQ(Page("a_m21 a.html"), html->OutputAnalysis(analyzer, "style.css") + "\r\n");
  analyzer->ExtraAnalyze();
  EXPECT_EQ(Page("c_m21 a.html"), html->OutputChart(analyzer, "c_m21%20a_?.png", "0") + "\r\n");
  string legs;  // what their charset lacks is a reference
  AppendEncoded(legs, html->OutputLegData(analyzer, "style.css") + "\r\n", Charset::kWindows1252,
                MissingCharacter::kCharacterReference);
  EXPECT_EQ(ReadBytes(site + "/l_m21 a.html"), legs);
  const string bar =
      "<a href=\"r_m21%20a.html\">M21 A</a> <a href=\"r_w.html\">&lt;W&gt;</a> <hr>\r\n";
  EXPECT_EQ(Page("r_w.html"), html->OutputResult(results, bar, "style.css") + "\r\n");
}

TEST_F(SiteTest, EveryKindOfPageWithAndWithoutCourses) {
  AddClass("A", 1);
  AddClass("B", 1, "0:04:00");
  AddClass("C", 2);
  const Rows<string SiteOptions::*, bool SiteOptions::*> kinds = {
      {&SiteOptions::AnalysisFile, &SiteOptions::AnalysisIncludeCourse},
      {&SiteOptions::ChartFile, &SiteOptions::ChartIncludeCourse},
      {&SiteOptions::LegDataFile, &SiteOptions::LegDataIncludeCourse},
      {&SiteOptions::ResultFile, &SiteOptions::ResultIncludeCourse}};
  for (const auto& [pattern, kind] : kinds) {
    for (const bool courses : {false, true}) {
      SiteOptions options = {.IndexFile = "i"};
      for (const auto& other : kinds) options.*std::get<1>(other) = !courses;
      options.*kind = courses;
      options.*pattern = "p_*";
      EXPECT_EQ(Published(options, true), courses ? "i p_a p_a_b p_b p_c " : "i p_a p_b p_c ");
      const string bar = courses ? "&nbsp;&nbsp;<a href=\"p_a_b\">A/B</a> " : "";
      EXPECT_EQ(Has(Page("p_c"), "<a href=\"p_c\">C</a> " + bar + "<hr>"),
                pattern == &SiteOptions::ResultFile);
      // The course's winner is the best of its classes, with and without a result page.
      const std::regex row("<B>&nbsp;A/B&nbsp;</B>[^]*R(&nbsp;){6}0:04:00</td>");
      EXPECT_EQ(std::regex_search(Page("i"), row), courses);
    }
  }
}

TEST_F(SiteTest, OutputHtmlTakesTheSameOptions) {
  root = NewRoot(Mode::kJapaneseMode);
  root->EventData()->OfficialSite = "http://x.example/";
  AddClass("A", 1);
  AddClass("B", 1);
  SiteOptions options = Everything(true);
  options.AnalysisIncludeCourse = options.ChartIncludeCourse = false;
  const string files = Published(options), index = Page();
  EXPECT_EQ(files,
            "a_a.html a_b.html c_a.html c_a_0.png c_b.html c_b_0.png index.html l_a.html "
            "l_a_b.html l_b.html my data.lxm old.lap r_a.html r_a_b.html r_b.html v.html ");
  EXPECT_TRUE(
      IndexHas("&nbsp;[<a href=\"v.html\" target = \"_blank\">"
               "ビューアで見る（ActiveX版）</a>]&nbsp;[<a href=\"old"));
  EXPECT_EQ(Page("v.html"), root->HtmlControl()->OutputActiveXPage("x.lxm") + "\r\n");
  for (const auto& file : fs::directory_iterator(site)) fs::remove(file);
  WriteBytes(site + "/index.html", "kept\r\n");
  ASSERT_TRUE(root->FileControl()->OutputHtml(
      site, "index.html", "a_*.html", "r_*.html", "my data.lxm", "old.lap", true, true, "v.html",
      "x.lxm", false, true, "l_*.html", true, "c_*.html", false, "0", "style.css"));
  EXPECT_EQ(Files(), files);
  EXPECT_TRUE(Has(index, Page().substr(6))) << "the same block behind what was there";
  // The viewer control wants a page and an address; and the Japanese mode.
  for (const SiteOptions& half : {SiteOptions{.ActiveXFile = "v"}, {.ActiveXAddress = "v"}}) {
    EXPECT_EQ(Published(half), "a_a.html a_b.html index.html r_a.html r_b.html ");
    EXPECT_FALSE(IndexHas("t-link"));
  }
}

TEST_F(SiteTest, ChartPictures) {
  // Modes asked for, whether somebody has a start time, finishers, modes drawn.
  for (const auto& [modes, started, finishers, drawn] :
       Rows<const char*, bool, int, string>{{"0,1,2,3,4,5,6,7", true, 5, "01234567"},
                                            {"0,1,2,3,4,5,6,7", false, 4, "023456"},
                                            {"7,1,7, 01,x,,8,-1", true, 4, "1"},
                                            {"7", false, 5, "7"},
                                            {"", true, 5, ""}}) {
    root = NewRoot();
    const auto klass = AddClass("A");
    klass->ControlCount = 1;
    if (started) klass->LapData(1)->StartTime()->SetValue(Seconds(36000));
    for (int i = 1; i < finishers; ++i)
      AddRunner(*klass, "R", "0:06:0" + std::to_string(i), {50. * i, 90});
    AddRunner(*klass, "Out", "MP", {300});
    const string files = Published({.ChartFile = "x*y.htm", .ChartOption = modes}, true);
    string expected;
    for (const char mode : drawn) {
      expected += string("xa_") + mode + "y.png ";
      const string png = ReadBytes(site + "/xa_" + mode + "y.png");
      EXPECT_EQ(png.substr(1, 3) + png.substr(18, 2) + png.substr(22, 2), "PNG\x3\xE8\x2\xBC")
          << "1000 x 700";
      EXPECT_GT(png.size(), 1500U) << "something is drawn";
    }
    EXPECT_EQ(files, expected + "xay.htm ");
  }
}

TEST_F(SiteTest, PicturesAreThereUnderTheNamesOnThePages) {
  for (const string name : {"M21A", "m21a", "a#%3f b"})
    AddClass(std::to_string(root->ClassCount()))->SetFileName(name);
  // A pattern, a page, its picture, and the picture's address there.
  for (const auto& [pattern, page, picture, address] : Table<4>(R"(
           chart_*.html "chart_a#%3f b.html" "chart_a#%3f b_0.png" chart_a%23%253f%20b_0.png
           chart_*.html chart_m21a.html      chart_m21a_0.png      chart_m21a_0.png
           chart_*.html chart_m21a_2.html    chart_m21a_2_0.png    chart_m21a_2_0.png
           */?*   "a#%3f b__a#%3f b"  "a#%3f b_0__a#%3f b_0.png" a%23%253f%20b_0__a%23%253f%20b_0.png
           */?*   m21a_2__m21a_2      m21a_2_0__m21a_2_0.png     m21a_2_0__m21a_2_0.png
           c.html c.html c_0.png c_0.png | c.html c_3.html c_3_0.png c_3_0.png)")) {
    const string files = " " + Published({.ChartFile = pattern, .ChartOption = "0"}, true);
    EXPECT_TRUE(Has(files, " " + page + " ") && Has(files, " " + picture + " ")) << files;
    EXPECT_TRUE(Has(Page(page), "src=\"" + address + "\"")) << page;
    EXPECT_EQ(std::distance(fs::directory_iterator(site), {}), 6) << files;
  }
}

TEST_F(SiteTest, FileNames) {
  for (const auto& [name, file_name] :
       Table<2>("Ａ \"\" | A \"\" | <> \"\" | up ..\\..\\evil | up2 ../.. | ctl \"a\tb\nc\" |"
                "a% \"x y&é%#\" | Ａ２ A_2 | root /etc/pass")) {
    if (const auto klass = AddClass(name); !file_name.empty()) klass->SetFileName(file_name);
  }
  const string model_name = root->ClassData(2)->FileName();
  const string files =
      " " +
      Published({.IndexFile = "index.html", .ResultFile = "r_*.html", .Lap2File = "../../x.lxm"},
                true);
  // Equal names but for case are numbered in the order of the classes, an empty name is replaced.
  for (const char* name : {" r_A.", " r_a_2.", " r_a_2_2.", " r_class3.", " r_x y&é%#."})
    EXPECT_TRUE(Has(files, name + string("html "))) << name << " in " << files;
  EXPECT_TRUE(IndexHas("<a href=\"r_x%20y%26%C3%A9%25%23.html\"") &&
              IndexHas("<a href=\"r_a_2.html\"") && IndexHas("<a href=\"r_class3.html\""));
  EXPECT_EQ(root->ClassData(2)->FileName(), model_name) << "the model's name stays";
  // Nothing left the folder, nothing was lost, no name holds a control character.
  EXPECT_EQ(std::distance(fs::directory_iterator(site), {}), 11);
  EXPECT_EQ(std::distance(fs::recursive_directory_iterator(folder.Path()), {}), 12);
  EXPECT_TRUE(std::ranges::none_of(files, [](char c) { return c > 0 && c < 0x20; }));
}

TEST_F(SiteTest, OfficialSiteIsALinkOnlyForWebAddresses) {
  AddClass("A");
  for (const auto& [address, shown] : Table<2>(R"(
           http://x.example/ link | Https://x/ link | www.x.example text | http:/x text
           javascript:alert(1) text | " http://x.example/" text)")) {
    root->EventData()->OfficialSite = address;
    Published({.OfficialSite = true});
    const string link = "<a href=\"" + address + "\" target=\"_blank\">公式サイト</a>";
    EXPECT_TRUE(IndexHas("t-event-info\">&nbsp;" + (shown == "link" ? link : address) + "</td>"))
        << address;
  }
  Published({});
  EXPECT_FALSE(IndexHas("t-event-info") || IndexHas("t-link")) << "nothing to show";
}

TEST_F(SiteTest, AddMode) {
  AddClass("新人");
  const string start = "<!-- ### KELTRUN START ### -->", finish = "<!-- ### KELTRUN FINISH ### -->";
  const string sjis = "\x90\x58";  // 森
  // What stands in front of the block and behind it.
  for (const auto& [before, after] : Rows<string, string>{
           {"<html>\r\n" + sjis + "\r\n",
            start + "\r\nold\r\n" + start + "\r\nolder\r\n</body>\r\n"},
           {"<html>\nx\n", start + "\nold\n</body>\n"},         // comes out with CR LF
           {"<p>" + start + "\r\n", "</body>\r\n</html>\r\n"},  // within a line it is no marker
           {"a\r\n</body>\r\nb\r\n", "</body>\r\n" + sjis + "\r\n"},
           {"a\r\n" + sjis + "\r\n", ""},
           {"<meta content=\"text/html; charset=UTF-8\">\r\n森\r\n", start + "\r\n😀\r\n"},
           {"森 is UTF-8\r", start + "\rlines of three\nkinds\r\n"},
           {"\xEF\xBB\xBFmarked as UTF-8\r\n", start + "\r\n"},
           {"<script charset=shift_jis></script><meta charset=UTF-8>\r\n森\r\n", start + "\r\n"},
           {"<meta charset=us-ascii> not euc\r\n", start + "\r\n"},
           {"<?xml version='1.0' encoding='euc-jp'?>\r\n\xBF\xB9\r\n", start + "\r\n"},
           {"<meta charset=euc-jp>\r\n\xBF\xB9\r\n", start + "\r\n"}}) {
    WriteBytes(site + "/index.html", before + after);
    ASSERT_TRUE(Publish({.IndexFileAddMode = true}));
    const std::regex line_end("\r\n?");
    const string kept = CrLf(std::regex_replace(before, line_end, "\n") + "\n" +
                             std::regex_replace(after, line_end, "\n"));
    string page = ReadBytes(site + "/index.html");
    const bool utf8 = Has(before, "UTF-8"), unknown = Has(before, "euc");
    const char* name = utf8 ? "新人" : unknown ? "&#26032;&#20154;" : "\x90\x56\x90\x6c";
    EXPECT_TRUE(Has(page, name)) << page;
    const std::size_t block = page.find(start + "\r\n<table"), end = page.find(finish);
    ASSERT_TRUE(block != string::npos && end != string::npos) << page;
    page.erase(block, end + finish.size() + 4 - block);
    EXPECT_TRUE(page == kept || page == kept + "\r\n") << page << "\nfor\n" << kept;
  }
  fs::remove(site + "/index.html");  // the page is made
  ASSERT_TRUE(Publish({.IndexFileAddMode = true}));
  EXPECT_TRUE(Page().starts_with("<html>\r\n<head>") && IndexHas(finish + "\r\n\r\n</body>"));
}

TEST_F(SiteTest, MissingFolder) {
  AddClass("A");
  site = folder.Path("new") + "/deep/";
  windows->answer = false;
  EXPECT_FALSE(Publish());
  EXPECT_NE(root->ErrorComment(), "");
  EXPECT_FALSE(fs::exists(folder.Path("new")));
  windows->answer = true;
  for (int run = 0; run < 2; ++run) EXPECT_TRUE(Publish());
  const string question = "ファイル出力: 出力先のフォルダがありません。\r\n新しく作成しますか？\n";
  EXPECT_EQ(windows->asked, question + question) << "an existing folder is no question";
  EXPECT_EQ(root->ErrorComment() + Files(), "a_a.html index.html r_a.html ");
}

TEST_F(SiteTest, PagesThatCannotBeWritten) {
  AddClass("A");
  AddClass("B");
  for (const char* name : {"/a_a.html", "/data.lxm", "/c_a_0.png"})
    fs::create_directory(site + name);  // in the way
  EXPECT_TRUE(Publish({.ChartFile = "c_*.html", .ChartOption = "0,2", .Lap2File = "data.lxm"}));
  string failed;
  for (const string name : {"a_a.html", "a_b.html", "c_a_0.png", "c_a_2.png", "c_b", "data.lxm"})
    if (Has(root->ErrorComment(), name)) failed += name + " ";
  EXPECT_EQ(failed, "a_a.html c_a_0.png data.lxm ");
  EXPECT_EQ(Files(),
            "a_a.html a_b.html c_a.html c_a_0.png c_a_2.png c_b.html c_b_0.png c_b_2.png data.lxm "
            "index.html r_a.html r_b.html ");
  EXPECT_FALSE(IndexHas("\"data.lxm\"")) << "a copy that failed has no link";
  fs::remove(site + "/a_a.html");
  EXPECT_TRUE(Publish());
  EXPECT_EQ(root->ErrorComment(), "") << "emptied at the start";
}

// Folders that nothing can be written into, and an index that is not touched.
TEST_F(SiteTest, NothingCanBeWritten) {
  AddClass("A");
  const string file = folder.Path("file"), index = site + "/index.html";
  WriteBytes(file, "content");
  for (const string bytes : {"\xFF\xFE|", "\xFE\xFF|"}) {
    WriteBytes(index, bytes);
    EXPECT_TRUE(Publish({.IndexFileAddMode = true}));
    EXPECT_TRUE(Has(root->ErrorComment(), "index.html: it is in UTF-16"));
    EXPECT_EQ(Files() + ReadBytes(index), "a_a.html index.html r_a.html " + bytes);
  }
  EXPECT_THROW(Publish({.Charset = "klingon"}), AutomationError);
  for (const string& nowhere : {file, file + "/sub", string("/proc/self")}) {
    site = nowhere;
    EXPECT_TRUE(Publish(Everything(false)));
    for (const char* page :
         {"a_a.html", "r_a.html", "c_a.html", "c_a_0.png", "my data", "old.lap", "index.html"})
      EXPECT_TRUE(Has(root->ErrorComment(), site + "/" + page)) << root->ErrorComment();
  }
  EXPECT_EQ(ReadBytes(file), "content");
}

// A limit on the size of files fails as a full disk does: in the middle of a write.
TEST_F(SiteTest, FullDisk) {
  AddClass("A");
  const string old(20000, 'x');
  for (const char* name : {"/a_a.html", "/c_a_0.png"}) WriteBytes(site + name, old);
  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  const rlimit small = {2000, limit.rlim_max};
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  setrlimit(RLIMIT_FSIZE, &small);
  EXPECT_TRUE(Publish({.ChartFile = "c_*.html", .ChartOption = "0"}));
  setrlimit(RLIMIT_FSIZE, &limit);
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ(Files(), "a_a.html c_a.html c_a_0.png index.html r_a.html ") << "no temporary file";
  for (const char* name : {"/a_a.html", "/c_a_0.png"}) {
    EXPECT_TRUE(Has(root->ErrorComment(), name)) << name;
    EXPECT_EQ(ReadBytes(site + name), old) << name;
  }
  EXPECT_FALSE(IndexHas("\"a_a.html\"")) << "no link to a page that was not written";
}

TEST_F(SiteTest, ShortClassNamesAreWideInJapaneseMode) {
  root = NewRoot(Mode::kJapaneseMode);
  for (const char* name : {"M21-A", "ABCDEFGHIJ", "ABCDEFGHIJK"}) AddClass(name);
  Published({});
  for (const string name : {"Ｍ２１－Ａ", "ＡＢＣＤＥＦＧＨＩＪ", "ABCDEFGHIJK"})
    EXPECT_TRUE(IndexHas("<B>&nbsp;" + name + "&nbsp;</B>")) << name;
}

TEST_F(SiteTest, BytesAreWhatPagesDeclare) {
  // The charset asked for, that of leg analyses, and what they make of a name.
  for (const auto& [mode, charset, legs_charset, name, legs_name] :
       Rows<Mode, string, string, string, string>{
           {Mode::kJapaneseMode, "x-sjis", "x-sjis", "\xFB\xFC&#252;", "\xFB\xFC&#252;"},
           {Mode::kEnglishTexts, "x-sjis", "iso-8859-1", "\xFB\xFC&#252;", "&#39641;\xFC"},
           {Mode::kJapaneseMode, "utf-8", "utf-8", "髙ü", "髙ü"},
           {Mode::kEnglishTexts, "UTF-8", "UTF-8", "髙ü", "髙ü"}}) {
    root = NewRoot(mode);
    AddClass("髙ü")->SetFileName("k");
    SiteOptions options = Everything(false);
    options.Charset = charset;
    Published(options);
    const bool shift_jis = charset == "x-sjis";
    for (const string file : {"index", "r_k", "a_k", "l_k", "c_k"}) {
      const string bytes = ReadBytes(site + "/" + file + ".html");
      const string& declared = file == "l_k" ? legs_charset : charset;
      const string circle = shift_jis ? "\x81\x9D" : "◎";  // charts have it, and no class name
      EXPECT_TRUE(Has(bytes, "charset=" + declared + "\">")) << file << charset;
      EXPECT_TRUE(Has(bytes, file == "c_k" ? circle : file == "l_k" ? legs_name : name)) << file;
      EXPECT_EQ(Decode(bytes, *CharsetFromName(declared)).FirstInvalid, string::npos) << file;
    }
    if (mode == Mode::kEnglishTexts) continue;
    // The page of the viewer control declares nothing unless it must.
    const string page = ReadBytes(site + "/v.html");
    EXPECT_EQ(Has(page, "charset=utf-8\">"), !shift_jis);
    EXPECT_TRUE(Has(page, shift_jis ? "\x90\x5C" : "申"));
  }
}

TEST_F(SiteTest, ViewerPageAndProgress) {
  AddClass("A", 1);
  AddClass("B", 1);
  root->AddClass("Nobody");
  string percents;
  auto handle = root->FileControl()->OnProgress(
      [&](std::int32_t percent) { percents += std::to_string(percent) + " "; });
  EXPECT_EQ(Published({.ViewerFile = "../view \"1\".html"}),
            ".._view _1_.html a_a.html a_b.html index.html r_a.html r_b.html ");
  handle.Detach();
  EXPECT_EQ(percents, "0 33 67 100 100 ");
  EXPECT_TRUE(
      IndexHas("&nbsp;[<a href=\".._view%20_1_.html\" target=\"_blank\">ビューアで見る</a>]"));
  const string page = ReadBytes(site + "/.._view _1_.html");
  for (const string set :
       {"class\" data-name=\"A\" data-runners=\"1\"", "class\" data-name=\"B\" data-runners=\"1\"",
        "course\" data-name=\"A/B\" data-runners=\"2\""})
    EXPECT_TRUE(Has(page, "data-kind=\"" + set));
  EXPECT_FALSE(Has(page, "Nobody"));
}

TEST_F(SiteTest, PublishingLeavesTheEventAsItWas) {
  const auto klass = AddClass("A", 1);
  klass->ControlCount = 3;
  AddRunner(*klass, "Skipped", "MP", {100, -1, 120, -1});
  AddRunner(*klass, "Last", "DNF", {100, -1, -1});
  ASSERT_TRUE(root->FileControl()->SaveLapFile(folder.Path("before.lxm")));
  ASSERT_TRUE(Publish(Everything(true)));
  ASSERT_TRUE(root->FileControl()->SaveLapFile(folder.Path("after.lxm")));
  const string before = ReadBytes(folder.Path("before.lxm"));
  EXPECT_NE(before.find("index=\"4\" laptime=\"+\""), string::npos);
  EXPECT_EQ(ReadBytes(folder.Path("after.lxm")), before);
  EXPECT_EQ(ReadBytes(site + "/my data.lxm"), before);
}

}  // namespace
}  // namespace keltrun::test
