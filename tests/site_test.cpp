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

#include "keltrun2/codec/encodings.h"
#include "keltrun2/os/clock.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

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
  /// Publishes what is requested, in addition to an index, results and analyses, or alone.
  bool Publish(SiteOptions options = {}, bool alone = false) const {
    options.OutputFolder = site;
    if (!alone) {
      options.IndexFile = "index.html";
      options.AnalysisFile = "a_*.html";
      options.ResultFile = "r_*.html";
    }
    return root->FileControl()->OutputSite(options);
  }
  /// The other outputs to publish, with or without courses.
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
  /// The file of the only picture on a page.
  std::string ShownPicture(const std::string& page) const {
    std::string address =
        std::regex_replace(Page(page), std::regex("[^]*src=\"([^\"]*)\"[^]*"), "$1");
    for (const auto& [character, code] :
         Rows<const char*, const char*>{{"%23", "#"}, {"%20", " "}, {"%25", "%"}}) {
      address = std::regex_replace(address, std::regex(character), code);
    }
    return address;
  }
  void EmptySite() const {
    std::filesystem::remove_all(site);
    std::filesystem::create_directory(site);
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
  ASSERT_TRUE(Publish(Everything(false)));
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
  EXPECT_EQ(Files(),
            "a_m21 a.html a_w.html c_m21 a.html c_m21 a_0.png c_w.html c_w_0.png index.html l_m21 "
            "a.html l_w.html "
            "my data.lxm old.lap r_m21 a.html r_w.html ");
  // Every page is the same as from the HTML service; result pages also have the bar of links.
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
  std::string legs;  // with references for what their charset does not have
  AppendEncoded(legs, html->OutputLegData(analyzer, "style.css") + "\r\n", Charset::kWindows1252,
                MissingCharacter::kCharacterReference);
  EXPECT_EQ(ReadBytes(site + "/l_m21 a.html"), legs);
  const std::string bar =
      "<a href=\"r_m21%20a.html\">M21 A</a> <a href=\"r_w.html\">&lt;W&gt;</a> <hr>\r\n";
  EXPECT_EQ(Page("r_w.html"), html->OutputResult(results, bar, "style.css") + "\r\n");
}

TEST_F(SiteTest, EveryCombinationOfPagesAndCourses) {
  AddClass("A", 1);
  AddClass("B", 1, "0:04:00");
  AddClass("C", 2);
  constexpr std::string SiteOptions::*kPatterns[] = {
      &SiteOptions::AnalysisFile, &SiteOptions::ChartFile, &SiteOptions::LegDataFile,
      &SiteOptions::ResultFile};
  constexpr bool SiteOptions::*kCourses[] = {
      &SiteOptions::AnalysisIncludeCourse, &SiteOptions::ChartIncludeCourse,
      &SiteOptions::LegDataIncludeCourse, &SiteOptions::ResultIncludeCourse};
  // Bits 0 to 3: which pages; bits 4 to 7: which of them for courses too.
  for (unsigned bits = 0; bits < 256; ++bits) {
    EmptySite();
    SiteOptions options;
    if (bits % 2 == 0) options.IndexFile = "i";
    std::string files = bits % 2 == 0 ? "i " : "";
    bool course_row = false;
    for (std::size_t kind = 0; kind < 4; ++kind) {
      const bool courses = options.*kCourses[kind] = bits >> (4 + kind) & 1;
      if ((bits >> kind & 1) == 0) continue;
      const std::string letter(1, "pqrs"[kind]);
      options.*kPatterns[kind] = letter + "_*";
      files += letter + "_a " + (courses ? letter + "_a_b " : "") + letter + "_b " + letter + "_c ";
      course_row = course_row || courses;
    }
    ASSERT_TRUE(Publish(options, true));
    ASSERT_EQ(Files(), files);
    if ((bits & 8) != 0) {
      const std::string bar = bits & 128 ? "&nbsp;&nbsp;<a href=\"s_a_b\">A/B</a> " : "";
      EXPECT_NE(Page("s_c").find("<a href=\"s_c\">C</a> " + bar + "<hr>"), bar.npos);
    }
    if (bits % 2 != 0) continue;
    // The course's winner is the best of its classes, with and without a result page.
    EXPECT_EQ(Page("i").find("<B>&nbsp;A/B&nbsp;</B>") != files.npos, course_row) << bits;
    EXPECT_EQ(Page("i").find("R&nbsp;&nbsp;&nbsp;&nbsp;&nbsp;&nbsp;0:04:00</td>") != files.npos,
              bits % 16 != 0);
  }
}

TEST_F(SiteTest, OutputHtmlTakesTheSameOptions) {
  root = NewRoot(Mode::kJapaneseMode);
  root->EventData()->OfficialSite = "http://x.example/";
  AddClass("A", 1);
  AddClass("B", 1);
  SiteOptions options = Everything(true);
  options.AnalysisIncludeCourse = options.ChartIncludeCourse = false;
  ASSERT_TRUE(Publish(options));
  const std::string files = Files(), index = Page();
  EXPECT_EQ(files,
            "a_a.html a_b.html c_a.html c_a_0.png c_b.html c_b_0.png index.html l_a.html "
            "l_a_b.html l_b.html my data.lxm old.lap r_a.html r_a_b.html r_b.html v.html ");
  EXPECT_TRUE(
      IndexHas("&nbsp;[<a href=\"v.html\" target = "
               "\"_blank\">ビューアで見る（ActiveX版）</a>]&nbsp;[<a href=\"old"));
  EXPECT_EQ(Page("v.html"), root->HtmlControl()->OutputActiveXPage("x.lxm") + "\r\n");
  EmptySite();
  WriteBytes(site + "/index.html", "kept\r\n");
  ASSERT_TRUE(root->FileControl()->OutputHtml(
      site, "index.html", "a_*.html", "r_*.html", "my data.lxm", "old.lap", true, true, "v.html",
      "x.lxm", false, true, "l_*.html", true, "c_*.html", false, "0", "style.css"));
  EXPECT_EQ(Files(), files);
  EXPECT_NE(index.find(Page().substr(6)), index.npos) << "the same block after the old text";
  // The viewer control requires a page and an address; and Japanese mode.
  for (const SiteOptions& half : {SiteOptions{.ActiveXFile = "v"}, {.ActiveXAddress = "v"}}) {
    EmptySite();
    ASSERT_TRUE(Publish(half));
    EXPECT_EQ(Files() + (IndexHas("t-link") ? "v" : ""),
              "a_a.html a_b.html index.html r_a.html r_b.html ");
  }
}

TEST_F(SiteTest, ChartPictures) {
  // Modes requested, whether a runner has a start time, finishers, modes drawn.
  for (const auto& [modes, started, finishers, drawn] :
       Rows<const char*, bool, int, std::string>{{"0,1,2,3,4,5,6,7", true, 5, "01234567"},
                                                 {"0,1,2,3,4,5,6,7", false, 4, "023456"},
                                                 {"7,1,7, 01,x,,8,-1", true, 4, "1"},
                                                 {"7", false, 5, "7"},
                                                 {"7", false, kMostOnMap + 1, ""},
                                                 {"", true, 5, ""}}) {
    root = NewRoot();
    EmptySite();
    const auto klass = AddClass("A");
    klass->ControlCount = 1;
    if (started) klass->LapData(1)->StartTime()->SetValue(Seconds(36000));
    for (int i = 1; i < finishers; ++i)
      AddRunner(*klass, "R", "0:06:" + std::to_string(10 + i % 50), {50. * i, 90});
    AddRunner(*klass, "Out", "MP", {300});
    ASSERT_TRUE(Publish({.ChartFile = "x*y.htm", .ChartOption = modes}, true));
    std::string expected;
    for (const char mode : drawn) {
      expected += "xa_" + std::string(1, mode) + "y.png ";
      const std::string png = ReadBytes(site + "/xa_" + mode + "y.png");
      EXPECT_EQ(png.substr(1, 3) + png.substr(18, 2) + png.substr(22, 2), "PNG\x3\xE8\x2\xBC")
          << "1000 x 700";
      EXPECT_GT(png.size(), 1500U) << "something is drawn";
    }
    EXPECT_EQ(root->ErrorComment() + Files(), expected + "xay.htm ");
  }
}

TEST_F(SiteTest, PicturesAreThereUnderTheNamesOnThePages) {
  for (const std::string name : {"M21A", "m21a", "a#%3f b"})
    AddClass(std::to_string(root->ClassCount()))->SetFileName(name);
  for (const auto& [pattern, files] : Rows<const char*, const char*>{
           {"chart_*.html",
            "chart_a#%3f b.html chart_a#%3f b_0.png chart_m21a.html chart_m21a_0.png "
            "chart_m21a_2.html chart_m21a_2_0.png "},
           {"*/?*",
            "a#%3f b_0__a#%3f b_0.png a#%3f b__a#%3f b m21a_0__m21a_0.png m21a_2_0__m21a_2_0.png "
            "m21a_2__m21a_2 m21a__m21a "},
           {"c.html", "c.html c_0.png c_2.html c_2_0.png c_3.html c_3_0.png "}}) {
    for (const auto& [format, extension] : Rows<PictureFormatConst, std::string>{
             {KR_PICTURE_PNG, ".png"}, {KR_PICTURE_SVG, ".svg"}}) {
      EmptySite();
      ASSERT_TRUE(Publish({.ChartFile = pattern, .ChartOption = "0", .ChartFormat = format}, true));
      EXPECT_EQ(Files(), std::regex_replace(files, std::regex("\\.png"), extension));
      for (const auto& file : std::filesystem::directory_iterator(site)) {
        if (file.path().extension() == extension) continue;
        const std::string address = ShownPicture(file.path().filename());
        EXPECT_TRUE(std::filesystem::exists(site + "/" + address)) << address;
      }
    }
  }
}

TEST_F(SiteTest, ChartsMayBeSvg) {
  AddClass("A");
  SiteOptions options = {.OutputFolder = site, .ChartFile = "c_*.html", .ChartOption = "0,2"};
  options.ChartFormat = KR_PICTURE_SVG;
  ASSERT_TRUE(Publish(options, true)) << root->ErrorComment();
  std::set<std::string> files;
  for (const std::string& file : root->FileControl()->SiteFiles(options)) {
    files.insert(std::filesystem::path(file).filename().string() + " ");
  }
  EXPECT_EQ(std::accumulate(files.begin(), files.end(), std::string()), Files());
  const std::string svg = ReadBytes(site + "/c_a_0.svg");
  EXPECT_TRUE(svg.starts_with("<?xml ") && svg.find("viewBox=\"0 0 1000 700\"") != svg.npos);
  EXPECT_NE(svg, ReadBytes(site + "/c_a_2.svg"));
  options.ChartFormat = KR_PICTURE_PDF;
  EXPECT_THROW(Publish(options, true), AutomationError) << "no page shows a PDF as a picture";
}

TEST_F(SiteTest, FileNames) {
  std::istringstream names(
      "Ａ,;A,;<>,;up,..\\..\\evil;up2,../..;ctl,a\tb\nc;a%,x y&é%#;Ａ２,A_2;root,/etc/pass;");
  for (std::string name, file_name; std::getline(names, name, ',');) {
    const auto klass = AddClass(name);
    if (std::getline(names, file_name, ';') && !file_name.empty()) klass->SetFileName(file_name);
  }
  const std::string model_name = root->ClassData(2)->FileName();
  ASSERT_TRUE(Publish(
      {.IndexFile = "index.html", .ResultFile = "r_*.html", .Lap2File = "../../x.lxm"}, true));
  const std::string files = " " + Files();
  // Names that differ only in case are numbered in class order; an empty one is replaced.
  for (const char* name :
       {" r_A.html ", " r_a_2.html ", " r_a_2_2.html ", " r_class3.html ", " r_x y&é%#.html "}) {
    EXPECT_NE(files.find(name), std::string::npos) << name << " in " << files;
  }
  EXPECT_TRUE(IndexHas("<a href=\"r_x%20y%26%C3%A9%25%23.html\"") &&
              IndexHas("<a href=\"r_a_2.html\"") && IndexHas("<a href=\"r_class3.html\""));
  EXPECT_EQ(root->ClassData(2)->FileName(), model_name) << "the name in the model is unchanged";
  // No file is outside the folder, none was lost, and no name contains a control character.
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(site), {}), 11);
  EXPECT_EQ(std::distance(std::filesystem::recursive_directory_iterator(folder.Path()), {}), 12);
  EXPECT_TRUE(std::ranges::none_of(files, [](char c) { return c > 0 && c < 0x20; }));
}

// File systems allow 255 bytes, and a cut must not split what a reader sees as one character.
TEST_F(SiteTest, LongNamesAreCutBetweenCharacters) {
  const auto times = [](const std::string& part, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) text += part;
    return text;
  };
  // What is repeated in the class name, what in the file name, and how often it fits after "a".
  for (const auto& [part, code, fits] : Rows<std::string, std::string, std::size_t>{
           {"x", "x", 199},
           {"é", "é", 99},
           {"大", "u5927", 39},
           {"か\u3099", "u304bu3099", 19},
           {"ｶﾞ", "uff76uff9e", 19},
           {"🇯🇵", "ud83cuddefud83cuddf5", 9},
           {"👩‍👧", "ud83dudc69u200dud83dudc67", 7}}) {
    root = NewRoot();
    EmptySite();
    for (int i = 0; i < 2; ++i) AddClass(std::to_string(i))->SetFileName("a" + times(part, 201));
    ASSERT_TRUE(Publish({.ResultFile = "r_*.html"}, true));
    const std::string name = "r_a" + times(code, fits);
    EXPECT_EQ(root->ErrorComment() + Files(), name + ".html " + name + "_2.html ");
  }
  // A long pattern leaves less room; the names of the pictures must fit too.
  EmptySite();
  const std::string prefix(150, 'p');
  ASSERT_TRUE(Publish({.ChartFile = prefix + "*.htm", .ChartOption = "0"}, true));
  EXPECT_EQ(root->ErrorComment(), "");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(site), {}), 4);
}

TEST_F(SiteTest, EqualNamesOfSingleFilesAreNumbered) {
  AddClass("A");
  const SiteOptions options = {
      .Lap2File = "DATA.lxm", .Lap1File = "data.lxm", .ViewerFile = "index.html"};
  ASSERT_TRUE(Publish(options));
  EXPECT_EQ(Files(), "DATA.lxm a_a.html data_2.lxm index.html index_2.html r_a.html ");
  EXPECT_TRUE(IndexHas("\"data_2.lxm\">ケルトラン用") && IndexHas("\"DATA.lxm\">ケルトラン２用"));
  EXPECT_NE(ReadBytes(site + "/data_2.lxm").find("$LAPFILE Ver=2"), std::string::npos);
}

// Hosts compare these names with their input, so that they do not publish over it.
TEST_F(SiteTest, FilesAreKnownBeforehand) {
  root = NewRoot(Mode::kJapaneseMode);
  AddClass("A", 1);
  AddClass("A ", 1);
  SiteOptions options = Everything(true);
  options.ViewerFile = "everything.html";
  options.OutputFolder = site;
  options.IndexFile = "index.html", options.AnalysisFile = "a_*", options.ResultFile = "r_*";
  const std::vector<std::string> named = root->FileControl()->SiteFiles(options);
  EXPECT_TRUE(std::filesystem::is_empty(site));
  ASSERT_TRUE(root->FileControl()->OutputSite(options));
  std::set<std::string> files;
  for (const auto& file : std::filesystem::directory_iterator(site)) files.insert(file.path());
  EXPECT_EQ(files, (std::set<std::string>(named.begin(), named.end())));
}

TEST_F(SiteTest, OnTheDiskBeforeTheIndexLinksThem) {
  AddClass("A");
  DiskSyncLog log;
  log.Look = [this] { return Files(); };
  ASSERT_TRUE(Publish({.Lap2File = "x.lzh"}));
  std::string seen = log.Take();
  const std::string pages = "a_a.html r_a.html x.lzh ";
  EXPECT_TRUE(seen.starts_with("all " + pages + " file .keltrun2-")) << seen;
  EXPECT_TRUE(seen.ends_with("folder a_a.html index.html r_a.html x.lzh  ")) << seen;
  log.Look = {};
  ASSERT_TRUE(root->FileControl()->SaveLapFile(folder.Path("a.lxm")));
  ASSERT_TRUE(root->FileControl()->SaveLapFile(folder.Path("a.lzh")));
  EXPECT_EQ(log.Take(), "file folder file folder ");
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
  // The text before the block and after it.
  for (const auto& [before, after] : Rows<std::string, std::string>{
           {"<html>\r\n" + sjis + "\r\n",
            start + "\r\nold\r\n" + start + "\r\nolder\r\n</body>\r\n"},
           {"<html>\nx\n", start + "\nold\n</body>\n"},         // is written with CR LF
           {"<p>" + start + "\r\n", "</body>\r\n</html>\r\n"},  // not a marker within a line
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
    const std::string kept = CrLf(std::regex_replace(before, line_end, "\n") + "\n" +
                                  std::regex_replace(after, line_end, "\n"));
    std::string page = ReadBytes(site + "/index.html");
    const bool utf8 = before.find("UTF-8") != std::string::npos;
    const bool unknown = before.find("euc") != std::string::npos;
    const char* name = utf8 ? "新人" : unknown ? "&#26032;&#20154;" : "\x90\x56\x90\x6c";
    EXPECT_NE(page.find(name), std::string::npos) << page;
    const std::size_t block = page.find(start + "\r\n<table"), end = page.find(finish);
    ASSERT_TRUE(block != std::string::npos && end != std::string::npos) << page;
    page.erase(block, end + finish.size() + 4 - block);
    EXPECT_TRUE(page == kept || page == kept + "\r\n") << page << "\nfor\n" << kept;
  }
  // The newest comes first; a page is created if there is none.
  std::filesystem::remove(site + "/index.html");
  for (const char* name : {"One", "Two", "Three"}) {
    root->EventData()->EventName = name;
    ASSERT_TRUE(Publish({.IndexFileAddMode = true}));
  }
  const std::string page = Page();
  EXPECT_TRUE(page.starts_with("<html>\r\n<head>") && page.find("<head>") == page.rfind("<head>"));
  EXPECT_LT(page.find("Three&nbsp;"), page.find("Two&nbsp;"));
  EXPECT_LT(page.find("Two&nbsp;"), page.find("One&nbsp;"));
  ASSERT_TRUE(Publish());
  EXPECT_FALSE(IndexHas("Two&nbsp;")) << "without add mode the page is new";
}

TEST_F(SiteTest, BodyEndInTheMiddleOfALine) {
  AddClass("A");
  for (const std::string tag : {"</Body>", "</BODY >", "</body\t > </bodyguard>"}) {
    WriteBytes(site + "/index.html", "<p></body></p>\n<p>old</p>" + tag + "</html>\n");
    ASSERT_TRUE(Publish({.IndexFileAddMode = true}));
    const std::string page = Page();
    EXPECT_TRUE(
        page.starts_with("<p></body></p>\r\n<p>old</p>\r\n\r\n<!-- ### KELTRUN START ### -->\r\n"));
    EXPECT_TRUE(page.ends_with("<!-- ### KELTRUN FINISH ### -->\r\n\r\n" + tag + "</html>\r\n"))
        << page;
  }
}

TEST_F(SiteTest, BlockOfTheSameFilesIsReplaced) {
  AddClass("A");
  const std::string start = "<!-- ### KELTRUN START ### -->\r\n",
                    finish = "<!-- ### KELTRUN FINISH ### -->\r\n";
  const std::string sunday = start + "<a href=\"sun%20event.lxm\">\r\n" + finish,
                    cut = start + "no finish, other event\r\n";
  const auto saturday = [&](const std::string& text) {
    return start + text + "<a href=\"event.lxm\">\r\n" + finish;
  };
  const std::string before = "<html>\r\n" + sunday + cut, between = "<p>\r\n" + sunday,
                    after = "</html>\r\n";
  WriteBytes(site + "/index.html", before + saturday("old") + between + saturday("older") + after);
  SiteOptions options = {
      .Lap2File = "event.lxm", .IndexFileAddMode = true, .IndexReplaceBlock = true};
  std::string page;
  for (int run = 0; run < 2; ++run) {  // the second run finds the block of the first
    ASSERT_TRUE(Publish(options));
    page = Page();
    EXPECT_TRUE(page.starts_with(before + start + "<table")) << page;
    EXPECT_TRUE(page.ends_with("\r\n" + finish + between + after)) << page;
  }
  EXPECT_EQ(page.find("old"), page.npos);
  options.Lap2File = "sun event.lxm";
  ASSERT_TRUE(Publish(options));
  EXPECT_TRUE(Page().starts_with("<html>\r\n" + start + "<table"));
  // A file without such a block gets one at the front. Without a copy of the lap file, old blocks
  // cannot be recognized.
  for (const char* name : {"monday.lxm", ""}) {
    options.Lap2File = name;
    page = Page();
    ASSERT_TRUE(Publish(options));
    EXPECT_TRUE(Page().ends_with(page.substr(page.find(start)))) << name;
  }
}

/// Windows that give answers without a user.
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
  EXPECT_EQ(windows->asked, question + question) << "no question for an existing folder";
  EXPECT_EQ(root->ErrorComment() + Files(), "a_a.html index.html r_a.html ");
  SetHostWindows(nullptr);
}

TEST_F(SiteTest, PagesThatCannotBeWritten) {
  AddClass("A");
  AddClass("B");
  for (const char* name : {"/a_a.html", "/data.lxm", "/c_a_0.png"}) {
    std::filesystem::create_directory(site + name);  // in the way
  }
  EXPECT_TRUE(Publish({.ChartFile = "c_*.html", .ChartOption = "0,2", .Lap2File = "data.lxm"}));
  for (const auto& [name, failed] : Rows<const char*, bool>{{"a_a.html", true},
                                                            {"data.lxm", true},
                                                            {"c_a_0.png", true},
                                                            {"a_b.html", false},
                                                            {"c_a_2.png", false},
                                                            {"c_b", false}}) {
    EXPECT_EQ(root->ErrorComment().find(name) != std::string::npos, failed) << name;
  }
  EXPECT_EQ(Files(),
            "a_a.html a_b.html c_a.html c_a_0.png c_a_2.png c_b.html c_b_0.png c_b_2.png data.lxm "
            "index.html r_a.html r_b.html ");
  EXPECT_FALSE(IndexHas("\"data.lxm\"")) << "no link to a copy that failed";
  std::filesystem::remove(site + "/a_a.html");
  EXPECT_TRUE(Publish());
  EXPECT_EQ(root->ErrorComment(), "") << "emptied at the start";
}

// Folders that cannot be written, and an index that is not changed.
TEST_F(SiteTest, NothingCanBeWritten) {
  AddClass("A");
  WriteBytes(folder.Path("file"), "content");
  const auto windows = std::make_shared<AnsweringWindows>();
  windows->answer = true;
  SetHostWindows(windows);
  for (const std::string& name :
       {folder.Path("file"), folder.Path("file") + "/sub", std::string("/proc/self")}) {
    site = name;
    EXPECT_TRUE(Publish(Everything(false)));
    const std::string error = root->ErrorComment();
    EXPECT_NE(error.find(site), site.npos) << error;
    EXPECT_EQ(std::count(error.begin(), error.end(), '\n'), 2) << "one failure for all\n" << error;
  }
  SetHostWindows(nullptr);
  EXPECT_EQ(ReadBytes(folder.Path("file")), "content");
  site = folder.Path("site");
  for (const std::string index : {"\xFF\xFE"
                                  "a",
                                  "\xFE\xFF"
                                  "a"}) {
    WriteBytes(site + "/index.html", index);
    EXPECT_TRUE(Publish({.IndexFileAddMode = true}));
    EXPECT_NE(root->ErrorComment().find("index.html: it is in UTF-16"), site.npos);
    EXPECT_EQ(Files() + ReadBytes(site + "/index.html"), "a_a.html index.html r_a.html " + index);
  }
  EXPECT_THROW(Publish({.Charset = "klingon"}), AutomationError);
}

// With a limit on the size of files, writing fails in the middle, as on a full disk.
TEST_F(SiteTest, FullDisk) {
  AddClass("A");
  const std::string old(20000, 'x');
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
    EXPECT_NE(root->ErrorComment().find(name), old.npos) << name;
    EXPECT_EQ(ReadBytes(site + name), old) << name;
  }
  EXPECT_FALSE(IndexHas("\"a_a.html\"")) << "no link to a page that was not written";
}

TEST_F(SiteTest, ShortClassNamesAreWideInJapaneseMode) {
  root = NewRoot(Mode::kJapaneseMode);
  for (const char* name : {"M21-A", "ABCDEFGHIJ", "ABCDEFGHIJK"}) AddClass(name);
  ASSERT_TRUE(Publish());
  for (const char* name : {"Ｍ２１－Ａ", "ＡＢＣＤＥＦＧＨＩＪ", "ABCDEFGHIJK"}) {
    EXPECT_TRUE(IndexHas("<B>&nbsp;" + std::string(name) + "&nbsp;</B>")) << name;
  }
}

TEST_F(SiteTest, BytesAreWhatPagesDeclare) {
  // The requested charset, that of leg analyses, and the bytes of a name in both.
  for (const auto& [mode, charset, legs_charset, name, legs_name] :
       Rows<Mode, std::string, std::string, const char*, const char*>{
           {Mode::kJapaneseMode, "x-sjis", "x-sjis", "\xFB\xFC&#252;", "\xFB\xFC&#252;"},
           {Mode::kEnglishTexts, "x-sjis", "iso-8859-1", "\xFB\xFC&#252;", "&#39641;\xFC"},
           {Mode::kJapaneseMode, "utf-8", "utf-8", "髙ü", "髙ü"},
           {Mode::kEnglishTexts, "UTF-8", "UTF-8", "髙ü", "髙ü"}}) {
    root = NewRoot(mode);
    EmptySite();
    AddClass("髙ü")->SetFileName("k");
    SiteOptions options = Everything(false);
    options.Charset = charset;
    ASSERT_TRUE(Publish(options));
    const char* circle = charset == "x-sjis" ? "\x81\x9D" : "◎";
    for (const auto& [file, declared, shown] :
         Rows<const char*, std::string, const char*>{{"/index.html", charset, name},
                                                     {"/r_k.html", charset, name},
                                                     {"/a_k.html", charset, name},
                                                     {"/l_k.html", legs_charset, legs_name},
                                                     {"/c_k.html", charset, circle}}) {
      const std::string bytes = ReadBytes(site + file);
      EXPECT_NE(bytes.find("charset=" + declared + "\">"), bytes.npos) << file << charset;
      EXPECT_NE(bytes.find(shown), bytes.npos) << file << charset;
      EXPECT_EQ(Decode(bytes, *CharsetFromName(declared)).FirstInvalid, bytes.npos) << file;
    }
    if (mode == Mode::kEnglishTexts) continue;
    // The page of the viewer control declares no charset unless it must.
    const std::string page = ReadBytes(site + "/v.html");
    EXPECT_EQ(page.find("charset=utf-8\">") != page.npos, charset == "utf-8");
    EXPECT_NE(page.find(charset == "utf-8" ? "申" : "\x90\x5C"), page.npos);
  }
}

TEST_F(SiteTest, Report) {
  AddClass("A", 1);
  AddClass("B", 1);
  root->AddClass("Nobody");
  ASSERT_TRUE(Publish({.ViewerFile = "../view \"1\".html"}));
  EXPECT_EQ(root->ErrorComment() + Files(),
            ".._view _1_.html a_a.html a_b.html index.html r_a.html r_b.html ");
  EXPECT_TRUE(
      IndexHas("&nbsp;[<a href=\".._view%20_1_.html\" target=\"_blank\">ビューアで見る</a>]"));
  const std::string page = ReadBytes(site + "/.._view _1_.html");
  for (const std::string set : {"A", "B"}) {
    EXPECT_NE(page.find("href=\"#class=" + set + "\""), page.npos);
  }
  EXPECT_EQ(page.find("class=Nobody"), page.npos);
}

TEST_F(SiteTest, PublishingLeavesTheEventAsItWas) {
  const auto klass = AddClass("A", 1);
  klass->ControlCount = 3;
  AddRunner(*klass, "Skipped", "MP", {100, -1, 120, -1});
  AddRunner(*klass, "Last", "DNF", {100, -1, -1});
  ASSERT_TRUE(root->FileControl()->SaveLapFile(folder.Path("before.lxm")));
  ASSERT_TRUE(Publish(Everything(true)));
  ASSERT_TRUE(root->FileControl()->SaveLapFile(folder.Path("after.lxm")));
  const std::string before = ReadBytes(folder.Path("before.lxm"));
  EXPECT_NE(before.find("index=\"4\" laptime=\"+\""), std::string::npos);
  EXPECT_EQ(ReadBytes(folder.Path("after.lxm")), before);
  EXPECT_EQ(ReadBytes(site + "/my data.lxm"), before);
}

TEST_F(SiteTest, Progress) {
  AddClass("A");
  root->AddClass("Nobody");
  AddClass("B");
  std::string percents;
  auto handle = root->FileControl()->OnProgress(
      [&](std::int32_t percent) { percents += std::to_string(percent) + " "; });
  ASSERT_TRUE(Publish());
  EXPECT_EQ(percents, "0 33 67 100 ");
  handle.Detach();
}

}  // namespace
}  // namespace keltrun::test
