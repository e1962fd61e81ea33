// The program as users run it: arguments go in; files, streams and exit codes come out.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

namespace {

namespace fs = std::filesystem;
using std::string;

const string kHoshinomori = KELTRUN2_EXAMPLES "/hoshinomori/event.lxm";
const string kMidorigaoka = KELTRUN2_EXAMPLES "/midorigaoka/event.lxm";
const string kTwoClasses = R"(<keltrun><event name="Club"/><classes>
    <class name="男子Ａ" controls="1" course="7"><runner name="A" result="0:02:00">
    <leg index="1" laptime="00:01:00"/><leg index="2" laptime="00:01:00"/></runner></class>
    <class name="M21" controls="1"/></classes></keltrun>)";

string Contents(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

void Write(const fs::path& file, const string& text) {
  std::ofstream(file, std::ios::binary) << text;
}

int CountOf(const string& part, const string& text) {
  int count = 0;
  for (auto at = text.find(part); at != text.npos; at = text.find(part, at + 1)) ++count;
  return count;
}

bool Has(const string& text, const string& part) { return CountOf(part, text) > 0; }

struct Outcome {
  int code;
  string out, err;
};

class Cli : public testing::Test {
 protected:
  void SetUp() override {
    string name = (fs::temp_directory_path() / "keltrun2-cli-XXXXXX").string();
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    base_ = name;
    folder_ = base_ / "work";
    fs::create_directory(folder_);
    Write(folder_ / "two.lxm", kTwoClasses);
    Write(folder_ / "old.txt", "old");
  }
  void TearDown() override { fs::remove_all(base_); }

  // Runs a shell command line in the test's folder. In it, "keltrun2" stands for the program.
  Outcome Run(const string& line) const {
    Write(base_ / "script",
          "exec </dev/null >../out 2>../err\nunset KELTRUN2_FOLDER LC_ALL LC_MESSAGES\n"
          "keltrun2() { LANG=${LANGUAGE_OF_TEST-ja_JP.UTF-8} '" KELTRUN2_PROGRAM "' \"$@\"; }\n" +
              line);
    const int status = std::system(("cd '" + folder_.string() + "' && sh ../script").c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, Contents(base_ / "out"),
            Contents(base_ / "err")};
  }

  // The output of a run that succeeds.
  string Output(const string& arguments) const {
    const Outcome run = Run("keltrun2 " + arguments);
    EXPECT_EQ(run.code, 0) << arguments << "\n" << run.err;
    return run.out;
  }

  std::set<string> Names(const string& folder) const {
    std::set<string> names;
    for (const auto& entry : fs::directory_iterator(folder_ / folder)) {
      names.insert(entry.path().filename().string());
    }
    return names;
  }

  fs::path base_, folder_;
};

TEST_F(Cli, FailuresAndWrongUseHaveTheirCodesAndSayWhy) {
  Write(folder_ / "other.lxm", "<other/>");
  fs::create_hard_link(folder_ / "two.lxm", folder_ / "same.png");
  const struct {
    int code;
    string line, error;
  } cases[] = {
      {2, "", "command is missing"},
      {2, "publish two.lxm --add", "unknown command publish; the commands are report, site, "},
      {2, "info", "EVENT"},
      {2, "site two.lxm", "DIR"},
      {2, "site two.lxm ''", "empty"},
      {2, "info two.lxm more", "more"},
      {2, "info two.lxm --lang fr", "--lang"},
      {2, "analyze two.lxm --class M21", "--as"},
      {2, "results two.lxm --as json --course x", "--course"},
      {2, "analyze two.lxm --as json --class M21 --course 7", "excludes"},
      {2, "analyze two.lxm --as html", "--class"},
      {2, "print two.lxm --per-sheet 011x1 -o x.pdf", "each from 1 to 10"},
      {2, "chart two.lxm --zoom-y nan -o x.png", "from 1 to 100"},
      {2, "merge - - -o x.lxm <two.lxm", "\"-\" is given twice"},
      {1, "site missing.lxm x", "missing.lxm"},
      {1, "info other.lxm", "<other>"},
      {1, "info - </dev/null", "standard input"},
      {1, "analyze two.lxm --as json --class M20", "男子Ａ\n  M21\n"},
      {1, "results two.lxm --as html --course 1", "7: 男子Ａ"},
      {1, "info two.lxm -o no/folder", "no/folder"},
      {1, "info two.lxm -o .", "directory"},
      {1, "info two.lxm -o old.txt", "--force"},
      {1, "info two.lxm -o ./two.lxm --force", "two.lxm itself"},
      {1, "chart two.lxm --class M21 -o same.png --force", "two.lxm itself"},
      {1, "info two.lxm >/dev/full", "standard output"},
      {1, "site two.lxm x --classic --style missing.css", "missing.css"},
      {2, "site two.lxm x --charset utf-8", "--also-classic"},
      {2, "site two.lxm x --no-legs", "--also-classic"},
      {2, "site two.lxm x --classic --also-classic", "--also-classic"},
      {2, "site two.lxm x --chart-format svg", "--charts"},
      {2, "site two.lxm x --charts all --chart-format pdf", "png"},
      {1, "site two.lxm old.txt", "old.txt"}};
  for (const auto& test : cases) {
    const Outcome run = Run("keltrun2 " + test.line);
    EXPECT_EQ(run.code, test.code) << test.line;
    EXPECT_TRUE(Has(run.err, test.error)) << test.line << "\n" << run.err;
    EXPECT_TRUE(run.err.starts_with("keltrun2: ") && !Has(run.err, "\r")) << run.err;
    EXPECT_EQ(run.out, "") << test.line;
  }
  EXPECT_EQ(Names("."), (std::set<string>{"old.txt", "other.lxm", "same.png", "two.lxm"}));
  EXPECT_EQ(Contents(folder_ / "old.txt"), "old");
  EXPECT_EQ(Contents(folder_ / "same.png"), kTwoClasses);
}

TEST_F(Cli, ErrorsAreInOneLanguageAndNameNothingInternal) {
  Write(folder_ / "lines.txt", "a\r\nb\r\n");
  Write(folder_ / "bad.lxm", "<keltrun>\r\n<event>");
  Run("mkdir out.lxm site; mkdir site/event.lap");
  const string cases[][2] = {
      {"info bad.lxm", "bad.lxm: line 2, column 8: the document ends inside <event>\n"},
      {"info missing.txt --lang ja", "cannot open missing.txt: No such file or directory\n"},
      {"site two.lxm /proc", "cannot write into the folder /proc/: No such file or directory\n"},
      {"convert two.lxm out.lxm --force", "cannot write out.lxm: Is a directory\n"},
      {"site two.lxm site --classic", "cannot write site/event.lap: it is a folder\n"},
      {"info lines.txt --lang en",
       "lines.txt: The file format was not recognized. These can be read: IOF XML 3.0 and "},
      {"info lines.txt", "lines.txt: ファイルの形式を判別できませんでした。"}};
  for (const auto& [arguments, error] : cases) {
    const string shown = Run("keltrun2 " + arguments).err;
    EXPECT_EQ(shown.substr(0, error.size() + 10), "keltrun2: " + error) << arguments;
    EXPECT_EQ(shown.find('\n'), shown.size() - 1) << shown;
    EXPECT_EQ(shown.find("cls"), string::npos) << shown;
  }
}

TEST_F(Cli, ListsOfOtherCountriesAreReadOrCanBe) {
  Write(folder_ / "a.csv", "CLASS,NAME,TIME\r\nH21,J\xF6rg,1:00:00\r\nH21,Anna,1:00:01\r\n");
  const Outcome found = Run("keltrun2 results a.csv --as text");
  EXPECT_TRUE(Has(found.out, "Jörg")) << found.out;
  EXPECT_TRUE(Has(found.err, "a.csv: encoding: ") && Has(found.err, "--input-charset"));
  const Outcome told = Run("keltrun2 results a.csv --as text --input-charset iso-8859-1");
  EXPECT_TRUE(Has(told.out, "Jörg") && told.err.empty()) << told.err;
  EXPECT_EQ(Run("keltrun2 info a.csv --input-charset klingon").code, 2);
}

TEST_F(Cli, HelpAndVersion) {
  for (const string command : {"", "site ", "info ", "analyze ", "results "}) {
    const string help = Output(command + "--help");
    EXPECT_TRUE(Has(help, "Examples:\n  keltrun2 " + command) && Has(help, "--lang")) << help;
  }
  EXPECT_EQ(Output("--version"), "Keltrun 2.27 ( Build 242 )\n");
}

TEST_F(Cli, FilesAreReplacedWholeOrNotAtAll) {
  // With a limit of one block the program can write only the beginning of the new file.
  const Outcome cut = Run("trap '' XFSZ; ulimit -f 1; keltrun2 analyze " + kHoshinomori +
                          " --as json --force -o old.txt");
  EXPECT_EQ(cut.code, 1) << cut.err;
  EXPECT_EQ(Contents(folder_ / "old.txt"), "old");
  EXPECT_EQ(Names("."), (std::set<string>{"old.txt", "two.lxm"}));

  // A name that is too long for another ending, and a file that another program is writing.
  const string longest = string(250, 'n') + ".lxm";
  Write(folder_ / ".keltrun2-1.tmp", "another's");
  Output("analyze two.lxm --as json -o " + string(255, 'j'));
  Output("convert two.lxm " + longest);
  EXPECT_EQ(Names("."),
            (std::set<string>{"old.txt", "two.lxm", longest, string(255, 'j'), ".keltrun2-1.tmp"}));

  Run("chmod 640 old.txt; ln -s old.txt link");
  Output("analyze two.lxm --as json --force -o link");
  EXPECT_EQ(Contents(folder_ / "old.txt"), Output("analyze two.lxm --as json -o -"));
  EXPECT_TRUE(fs::is_symlink(folder_ / "link"));
  EXPECT_EQ(fs::status(folder_ / "old.txt").permissions(), fs::perms{0640});
  Output("analyze two.lxm --as json -o /dev/null");
}

TEST_F(Cli, SummaryLinesUpAndReadsStandardInput) {
  const string text = Run("cat two.lxm | keltrun2 info -").out;
  EXPECT_TRUE(Has(text, "Event    Club\nFile     standard input.lxm\n")) << text;
  // "男子Ａ" is six columns wide, so "M21" gets three blanks more.
  EXPECT_TRUE(Has(text, "  男子Ａ        1         1       -      -       7 ")) << text;
  EXPECT_TRUE(Has(text, "  M21           0         1       -      -       - ")) << text;
  EXPECT_TRUE(Has(Output("info two.lxm --json"), "\"keltrun2-info\""));
}

// A pipe may contain whatever a file may contain.
TEST_F(Cli, StandardInputTakesEveryFormat) {
  const string data = KELTRUN2_TEST_DATA "/hoshinomori/";
  Output("convert two.lxm two.lzh");
  Run("iconv -f UTF-8 -t UTF-16 two.lxm >wide.lxm; mkdir temp");
  const struct {
    string file, in, name;
  } cases[] = {{"two.lxm", "男子Ａ", "standard input.lxm"},
               {"wide.lxm", "男子Ａ", "standard input.lxm"},
               {"two.lzh", "男子Ａ", "standard input.lzh: two.lxm ("},
               {data + "sportident.txt", "62-63-F", "standard input.txt"}};
  for (const auto& test : cases) {
    const Outcome run = Run("TMPDIR=$PWD/temp keltrun2 info - -q <'" + test.file + "'");
    EXPECT_EQ(run.code, 0) << test.file << run.err;
    EXPECT_TRUE(Has(run.out, test.in) && Has(run.out, test.name)) << run.out;
  }
  EXPECT_EQ(Output("info - --json <" + data + "sportident.txt | grep -v '\"file'"),
            Output("info " + data + "sportident.txt --json | grep -v '\"file'"));
  const Outcome bad = Run("echo '<keltrun>' | TMPDIR=$PWD/temp keltrun2 info -");
  EXPECT_TRUE(Has(bad.err, " standard input: ") && !Has(bad.err, "temp")) << bad.err;
  EXPECT_EQ(Names("temp").size(), 1U) << "the component's working folder only";
}

TEST_F(Cli, QuietShowsErrorsOnly) {
  const string printout = KELTRUN2_TEST_DATA "/hoshinomori/sportident.txt";
  const Outcome run = Run("keltrun2 convert -q " + printout + " si.lxm");
  EXPECT_EQ(run.err + run.out, "");
  EXPECT_NE(Run("keltrun2 info -q missing.lxm").err, "");
}

// The index of the example shows "男子Ａ" and, in Japanese, "Ｍ２１".
TEST_F(Cli, ClassesAreFoundInAnyWidth) {
  for (const string name : {"男子A", "男子ａ", "Ｍ２１", "ｍ21"}) {
    EXPECT_TRUE(Has(Output("results two.lxm --as text --class " + name), "* ")) << name;
  }
}

TEST_F(Cli, ThereIsNoMapOfMoreThan5000) {
  string event = "<keltrun><classes><class name=\"A\" controls=\"1\">";
  for (int i = 0; i < 5001; ++i) {
    event +=
        "<runner name=\"R\" result=\"0:02:00\"><leg index=\"1\" laptime=\"00:01:00\"/>"
        "<leg index=\"2\" laptime=\"00:01:00\"/></runner>";
  }
  Write(folder_ / "large.lxm", event + "</class></classes></keltrun>");
  const Outcome run = Run("keltrun2 chart large.lxm --mode map -o map.png");
  EXPECT_EQ(run.code, 1);
  EXPECT_TRUE(Has(run.err, "no map of 5001 finishers: it takes at most 5000")) << run.err;
}

TEST_F(Cli, ArchivesLeaveNothingInTheWorkingFolder) {
  Run("mkdir run");
  const Outcome run =
      Run("export XDG_RUNTIME_DIR=$PWD/run; keltrun2 convert two.lxm a.lzh && keltrun2 info a.lzh");
  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_TRUE(Has(run.out, "File     a.lzh: a.lxm (")) << run.out;
  EXPECT_EQ(Names("run/Keltrun2"), std::set<string>{});
}

TEST_F(Cli, LanguageFollowsTheOptionNotTheEnvironment) {
  const string cases[][3] = {{"", "2025年10月18日", "Ｍ２１Ａ"},
                             {"--lang en", "2025-10-18", "&nbsp;M21A<"}};
  for (const auto& [option, date, title] : cases) {
    EXPECT_TRUE(Has(Output("info " + kHoshinomori + " " + option), date));
    const string page =
        Output(option + " results " + kHoshinomori + " --class m21a --as html --style-url a.css");
    EXPECT_TRUE(Has(page, title)) << page.substr(0, 999);
    EXPECT_TRUE(Has(page, "charset=utf-8") && Has(page, "href=\"a.css\""));
  }
  const string solo = "<keltrun><classes><class name=\"Solo\"/></classes></keltrun>";
  Write(folder_ / "one.lxm", solo);  // no name is needed if there is only one class
  EXPECT_TRUE(Has(Output("results one.lxm --as html --lang en"), "Solo"));
}

// The event has nine classes and four courses; at least two classes share each course.
TEST_F(Cli, JsonHoldsTheNamedSetOrAll) {
  const struct {
    string arguments, start;
    int sets, courses;
  } cases[] = {{"analyze --as json", "[", 13, 4},
               {"analyze --as json --all", "[", 13, 4},
               {"analyze --as json --class M20E", "{", 1, 0},
               {"analyze --as json --course 3", "{", 1, 1},
               {"results --as json", "{", 13, 4},
               {"results --as json --class M20E", "{", 1, 0},
               {"results --as json --course 3", "{", 1, 1}};
  EXPECT_EQ(CountOf("* ", Output("results --as text " + kHoshinomori)), 9);
  const string page = Output("results --as html " + kHoshinomori);  // all classes on one page
  EXPECT_EQ(CountOf("</table>", page), 9);
  for (const char* once : {"<body", "</body>", "</html>"}) EXPECT_EQ(CountOf(once, page), 1);
  for (const auto& test : cases) {
    const string json = Output(test.arguments + " " + kHoshinomori);
    EXPECT_TRUE(json.starts_with(test.start)) << test.arguments;
    EXPECT_EQ(CountOf("\"set\":", json), test.sets) << test.arguments;
    EXPECT_EQ(CountOf("\"kind\":\"course\"", json), test.courses) << test.arguments;
  }
}

// The crossings of the course are left out unless the user wants them in.
TEST_F(Cli, UntimedLegsAreLeftOut) {
  const string command = "analyze " + kHoshinomori + " --class M21A --as json";
  EXPECT_TRUE(Has(Output(command), "\"timed\":[true,true,true,true,true,true,true,false,"));
  EXPECT_FALSE(Has(Output(command + " --untimed none"),
                   "\"timed\":[true,true,true,true,true,true,"
                   "true,false,"));
  EXPECT_TRUE(Has(Output(command + " --untimed 1"), "\"timed\":[false,true,"));
  EXPECT_EQ(Run("keltrun2 " + command + " --untimed 0").code, 2);
  const string info = Output("info " + kHoshinomori);
  EXPECT_TRUE(Has(info, "Oddities: 2\n  leg 80-81 is untimed in 2 classes"));
  const string lines = Output("analyze " + kHoshinomori + " --class M21A --as legs");
  EXPECT_NE(lines, Output("analyze " + kHoshinomori + " --class M21A --as legs --untimed none"));
  EXPECT_NE(Output("chart " + kHoshinomori + " --class M21A -o -"),
            Output("chart " + kHoshinomori + " --class M21A -o - --untimed none"));
}

TEST_F(Cli, ClocksAreCorrectedOnDemand) {
  const string analyze = "analyze " + kHoshinomori + " --class M21A --as json";
  const auto run = Run("keltrun2 " + analyze + " --clock 73:+40s --clock 79:-5");
  EXPECT_EQ(run.code, 0);
  EXPECT_TRUE(Has(run.err, "the clock of control 73 was corrected for 114 runners"));
  EXPECT_TRUE(Has(run.out, "\"corrections\":[\"the clock of control 73 was corrected by +40 s"));
  EXPECT_FALSE(Has(Output(analyze), "corrections"));
  EXPECT_EQ(Run("keltrun2 " + analyze + " --clock 999:+40s").code, 1);
  for (const char* text : {"73", "73:", ":40", "a:40", "73:90000", "73:nan", "73:40m"}) {
    EXPECT_EQ(Run("keltrun2 " + analyze + " --clock " + text).code, 2) << text;
  }
}

TEST_F(Cli, EstimatesAreForPeopleAndPrograms) {
  const string command = "analyze " + kHoshinomori + " --as estimate-";
  const string text = Output(command + "text --class M21A --lang en");
  EXPECT_EQ(CountOf("\n* M21A", "\n" + text), 22);
  EXPECT_TRUE(Has(text, "surely a mistake"));
  EXPECT_TRUE(Has(Output(command + "text --class M21A"), "確実にミス"));
  EXPECT_GT(CountOf("\n", Output(command + "csv")), 2300);
  const auto wrong = Run("keltrun2 " + command + "text --course 1");
  EXPECT_EQ(wrong.code, 2);
  EXPECT_TRUE(Has(wrong.err, "--class"));
}

// The first kana, kanji or full-width character with what precedes it, or "". Scripts of the report
// have the texts of both languages, and "－" is the mark for no data in all of them.
string FirstJapanese(string text) {
  for (std::size_t begin; (begin = text.find("<script type=\"module\">")) != string::npos;) {
    text.erase(begin, text.find("</script>", begin) - begin);
  }
  for (std::size_t i = 0; i + 2 < text.size(); ++i) {
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    if ((byte(i) & 0xF0) != 0xE0) continue;
    const int code = (byte(i) & 0x0F) << 12 | (byte(i + 1) & 0x3F) << 6 | (byte(i + 2) & 0x3F);
    if ((code >= 0x3000 && code < 0xA000) || (code >= 0xFF00 && code != 0xFF0D)) {
      return text.substr(i < 60 ? 0 : i - 60, i < 60 ? i + 3 : 63);
    }
  }
  return "";
}

// A class in which every mark for a missing time appears, and courses that share a segment.
const string kLatin = R"(<keltrun><event name="City Race" date="2026/05/03" terrain="Park"/>
    <courses><course number="1" controls="3"><control index="1" unit-number="31"/>
    <control index="2" unit-number="32"/><control index="3" unit-number="33"/></course></courses>
    <classes><class name="W21" controls="3" course="1" length="4500" climb="100">
    <runner name="Ann Lee" club="OK North" result="0:08:00" start="10:00:00"><leg index="1" laptime="00:02:00"/>
    <leg index="2" laptime="00:02:00"/><leg index="3" laptime="00:02:00"/><leg index="4" laptime="00:02:00"/></runner>
    <runner name="Bea Roe" club="OK North" result="0:09:00" start="10:02:00"><leg index="1" laptime="00:02:10"/>
    <leg index="2" laptime="00:02:50"/><leg index="3" laptime="00:02:00"/><leg index="4" laptime="00:02:00"/></runner>
    <runner name="Cat Moe" result="0:09:30"><leg index="1" laptime="00:02:10"/>
    <leg index="3" laptime="↓"/><leg index="2" laptime="00:05:00"/><leg index="4" laptime="00:02:20"/></runner>
    <runner name="Dee Poe" result="MP"><leg index="1" laptime="00:02:10"/><leg index="4" laptime="×"/></runner>
    <runner name="Eve Coe" result="DNS"/></class></classes></keltrun>)";

TEST_F(Cli, NothingIsJapaneseInEnglish) {
  Write(folder_ / "latin.lxm", kLatin);
  Write(folder_ / "times.txt", "NAME,CLUB\r\nAnn,North\r\n");
  const string analyze = "keltrun2 analyze latin.lxm --class W21 --as ";
  for (const string& line :
       {analyze + "html",
        analyze + "legs",
        analyze + "mail",
        analyze + "splitsbrowser",
        analyze + "json",
        analyze + "estimate-text",
        analyze + "estimate-csv",
        analyze + "tidy-csv",
        string("keltrun2 results latin.lxm --as html"),
        string("keltrun2 results latin.lxm --as text"),
        string("keltrun2 results latin.lxm --as json"),
        string("keltrun2 results latin.lxm --as csv --splits"),
        string("keltrun2 info latin.lxm; keltrun2 info latin.lxm --json"),
        string("keltrun2 info times.txt; keltrun2 info missing.lxm; keltrun2 info old.txt; true"),
        string("for to in iof2 iof2-plain iof3 splitsbrowser winsplits oe2010; do keltrun2 convert "
               "latin.lxm x --force --to $to --charset utf-8 && cat x; done"),
        string("keltrun2 convert latin.lxm x.lap --force && cat x.lap"),
        string("for mode in normal realtime relative relative110 relative130 missrate halfratio "
               "map; do keltrun2 chart latin.lxm --class W21 --mode $mode --names -o x.svg --force "
               "&& cat x.svg; done"),
        string("for what in results analysis; do keltrun2 print latin.lxm --what $what -o x.pdf "
               "--force --ids --ages && pdftotext x.pdf -; done"),
        string("for command in '' report site info convert merge analyze results chart print; do "
               "keltrun2 $command --help; done"),
        string("keltrun2 site latin.lxm site --classic --charset utf-8 --charts all --courses "
               "--viewer && cat site/*.html site/event.l*"),
        string("keltrun2 report latin.lxm"),
        string("keltrun2 site latin.lxm new --add --charts all --also-classic --charset utf-8 && "
               "cat new/*.html new/*.csv new/*.xml")}) {
    const Outcome run = Run("LANGUAGE_OF_TEST=en_GB.UTF-8\n" + line);
    EXPECT_EQ(run.code, 0) << line << run.err;
    EXPECT_EQ(FirstJapanese(run.out), "") << line;
    EXPECT_EQ(FirstJapanese(run.err), "") << line;
    EXPECT_GT(run.out.size() + run.err.size(), 50u) << line;
  }
}

// --lang decides alone; without it the first of three variables that is set does.
TEST_F(Cli, LanguageIsThatOfTheLocale) {
  const struct {
    const char* variables;
    const char* option;
    bool japanese;
  } cases[] = {{"LANGUAGE_OF_TEST=ja_JP.UTF-8", "", true},
               {"LANGUAGE_OF_TEST=C", "", false},
               {"LANGUAGE_OF_TEST=de_DE.UTF-8", "", false},
               {"LANGUAGE_OF_TEST=; LC_MESSAGES=ja_JP; export LC_MESSAGES", "", true},
               {"LC_ALL=en_US.UTF-8; export LC_ALL", "", false},
               {"LANGUAGE_OF_TEST=C", "--lang ja", true},
               {"LANGUAGE_OF_TEST=ja_JP.UTF-8", "--lang en", false}};
  for (const auto& [variables, option, japanese] : cases) {
    const string line = string(variables) + "\nkeltrun2 analyze two.lxm --class 男子Ａ --as ";
    EXPECT_EQ(Has(Run(line + "mail " + option).out, "ラップタイム"), japanese)
        << variables << option;
    EXPECT_EQ(Has(Run(line + "legs " + option).out, "charset=utf-8"), japanese)
        << variables << option;
  }
}

TEST_F(Cli, ClassicSiteMakesTheFolderWithPagesAndStyle) {
  EXPECT_EQ(Output("site --classic " + kHoshinomori + " a/new/site"), "a/new/site/index.html\n");
  const auto names = Names("a/new/site");
  EXPECT_EQ(names.size(), 4u + 3 * 9);
  for (const char* name : {"event.lxm", "event.lap", "style.css", "result_m21a.html",
                           "lap_u7537u5b50b.html", "legs_m21a.html"}) {
    EXPECT_TRUE(names.contains(name)) << name;
  }
  EXPECT_TRUE(Has(Contents(folder_ / "a/new/site/style.css"), "table.lap"));
  for (const char* page : {"index.html", "lap_m15.html", "result_m15.html"}) {
    EXPECT_TRUE(Has(Contents(folder_ / "a/new/site" / page), "href=\"style.css\"")) << page;
  }
  EXPECT_EQ(Output("site -q --classic --courses " + kHoshinomori + " a/new/site"), "");
  EXPECT_EQ(Names("a/new/site").size(), 4u + 3 * (9 + 4));
}

TEST_F(Cli, Report) {
  Output("report " + kHoshinomori + " -o report.html --lang en");
  const string page = Contents(folder_ / "report.html");
  EXPECT_TRUE(Has(page, "<html lang=\"en\">") && Has(page, "href=\"#class=M21A\""));
  EXPECT_EQ(Output("report " + kHoshinomori + " --lang en"), page) << "the same on standard output";
  EXPECT_NE(Output("report " + kHoshinomori + " --lang en --untimed none"), page);
  EXPECT_TRUE(Has(Run("keltrun2 report " + kHoshinomori + " -o report.html").err, "--force"));
}

TEST_F(Cli, ClassicSiteWithChartsAndViewer) {
  Output("site --classic --no-legs --charts normal,map --viewer --charset utf-8 " + kHoshinomori +
         " rich");
  const auto names = Names("rich");
  for (const char* name :
       {"chart_m21a.html", "chart_m21a_0.png", "chart_m21a_7.png", "viewer.html"}) {
    EXPECT_TRUE(names.contains(name)) << name;
  }
  EXPECT_FALSE(names.contains("chart_m21a_2.png") || names.contains("legs_m21a.html"));
  EXPECT_TRUE(Has(Contents(folder_ / "rich/index.html"), "charset=utf-8"));
}

TEST_F(Cli, SiteWithChartsAsSvg) {
  Output("site --also-classic --charts normal --chart-format svg " + kHoshinomori + " sharp");
  for (const string kind : {"chart", "charts"}) {
    const string page = kind == "charts" ? "charts.html" : "chart_m21a.html";
    EXPECT_TRUE(Has(Contents(folder_ / "sharp" / page), "src=\"" + kind + "_m21a_0.svg\""));
    EXPECT_TRUE(Has(Contents(folder_ / "sharp" / (kind + "_m21a_0.svg")), "<svg "));
  }
  for (const string& name : Names("sharp")) EXPECT_FALSE(name.ends_with(".png")) << name;
}

TEST_F(Cli, ExportsChartsAndPages) {
  const struct {
    const char* arguments;
    const char* begin;
  } kCases[] = {
      {"analyze EVENT --class M21A --as legs", "<html>"},
      {"analyze EVENT --class M21A --as mail", ""},
      {"analyze EVENT --class M21A --as macro-csv", ""},
      {"analyze EVENT --class M21A --as splitsbrowser", ""},
      {"results EVENT --class M21A --as text", ""},
      {"chart EVENT --class M21A --mode map --highlight 1,2 -o -", "\x89PNG"},
      {"chart EVENT --class M21A --mode halfratio -o c.svg && cat c.svg", "<?xml"},
      {"print EVENT -o -", "%PDF"},
      {"print EVENT --what analysis --class M21A --landscape --per-sheet 2x1 -o -", "%PDF"},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.arguments);
    string arguments = test.arguments;
    arguments.replace(arguments.find("EVENT"), 5, kHoshinomori);
    const string output = Output(arguments);
    EXPECT_GT(output.size(), 500u);
    EXPECT_TRUE(output.starts_with(test.begin));
  }
}

// The document with control codes is longer.
TEST_F(Cli, PrintedAnalysesShowControlCodes) {
  const string course =
      "<courses><course number=\"7\" controls=\"1\">"
      "<control index=\"1\" unit-number=\"231\"/></course></courses>";
  string event = kTwoClasses;
  Write(folder_ / "codes.lxm", event.insert(event.find("<classes>"), course));
  const auto size = [&](const string& arguments) {
    return Output("print --what analysis -o - " + arguments).size();
  };
  for (const string set : {" --class 男子Ａ", " --course 7"}) {
    EXPECT_GT(size("codes.lxm" + set), size("two.lxm" + set));
  }
}

TEST_F(Cli, ClassicSiteStyleAddAndFailures) {
  Write(folder_ / "my.css", "p{}");
  Output("site two.lxm mine --classic --style my.css");
  EXPECT_EQ(Contents(folder_ / "mine/style.css"), "p{}");
  const auto index = [&] { return Contents(folder_ / "bare/index.html"); };
  Output("site " + kMidorigaoka + " bare --classic --style none");
  EXPECT_FALSE(Names("bare").contains("style.css"));
  EXPECT_FALSE(Has(Contents(folder_ / "bare/lap_m21a.html"), "stylesheet"));
  EXPECT_TRUE(Has(index(), "www.example.org"));
  EXPECT_EQ(Run("keltrun2 site two.lxm bare --classic --prefix a:").code, 2);
  for (int run = 0; run < 2; ++run) {  // the same prefix means the same event
    Output("site two.lxm bare --classic --add --prefix club_");
    EXPECT_EQ(CountOf("KELTRUN START", index()), 2);
    EXPECT_TRUE(index().find("Club") < index().find("lap_m21a.html"));
  }
  EXPECT_TRUE(Names("bare").contains("club_lap_u7537u5b50A.html") &&
              Has(index(), "club_lap_u7537u5b50A.html"));
  EXPECT_EQ(Run("keltrun2 site " + kMidorigaoka + " bare --classic").code, 1)
      << "another event is there";
  Output("site " + kMidorigaoka + " bare --classic --no-official-site --force");
  EXPECT_TRUE(CountOf("KELTRUN START", index()) == 1 && !Has(index(), "www.example.org"));

  fs::create_directories(folder_ / "blocked/lap_m21a.html");
  const Outcome blocked = Run("keltrun2 site " + kMidorigaoka + " blocked --classic");
  EXPECT_EQ(blocked.code, 1);
  EXPECT_TRUE(Has(blocked.err, "lap_m21a.html") && blocked.out.empty()) << blocked.err;
  EXPECT_TRUE(Names("blocked").contains("result_m21a.html"));
}

// Which files a site has, and which of them may be replaced.
TEST_F(Cli, SiteIsTheReportWithFilesToTakeAway) {
  EXPECT_EQ(Output("site two.lxm a/site"), "a/site/index.html\n");
  const std::set<string> files = {"index.html", "event.lxm", "results.xml", "results.csv"};
  EXPECT_EQ(Names("a/site"), files);
  const auto index = [&] { return Contents(folder_ / "a/site/index.html"); };
  for (const char* link : {"event.lxm", "results.xml", "results.csv"}) {
    EXPECT_TRUE(Has(index(), string("href=\"") + link + "\" download")) << link;
  }
  EXPECT_TRUE(Contents(folder_ / "a/site/results.csv").starts_with("\xEF\xBB\xBF"));
  EXPECT_EQ(Output("site two.lxm a/site -q"), "") << "publishing again";
  const string after_change = Contents(folder_ / "a/site/event.lxm");
  Output("site " + kMidorigaoka + " a/site -q --charts normal --viewer --courses");
  EXPECT_NE(Contents(folder_ / "a/site/event.lxm"), after_change) << "the folder shows one event";
  EXPECT_TRUE(Has(index(), "href=\"charts.html\"") && Has(index(), "<html lang=\"ja\">"));
  EXPECT_TRUE(Has(Contents(folder_ / "a/site/charts.html"), "src=\"charts_m21a_0.png\""));
  EXPECT_FALSE(Names("a/site").contains("viewer.html")) << "index.html is the report";

  Output("site two.lxm both --also-classic --style none --prefix c_");
  EXPECT_TRUE(Has(Contents(folder_ / "both/index.html"), "href=\"c_classic.html\""));
  EXPECT_TRUE(Has(Contents(folder_ / "both/c_classic.html"), "KELTRUN START"));
  Output("site two.lxm both --also-classic --style none --prefix c_");
}

TEST_F(Cli, SiteOfSeveralEvents) {
  const auto index = [&] { return Contents(folder_ / "site/index.html"); };
  Output("site two.lxm site");
  Output("site " + kMidorigaoka + " site --add --prefix m_ --lang en");
  EXPECT_TRUE(Has(Contents(folder_ / "site/report.html"), "<title>Club</title>"))
      << "what was the index is a file of its own now";
  Output("site " + kHoshinomori + " site --add --prefix h_");
  Output("site " + kMidorigaoka + " site --add --prefix m_");
  EXPECT_EQ(CountOf("<li ", index()), 3);
  EXPECT_TRUE(index().find("h_report.html") < index().find("m_report.html") &&
              index().find("m_report.html") < index().find("\"report.html"))
      << "the newest first, the undated last";
  Output("site two.lxm one");
  const Outcome added = Run("keltrun2 site two.lxm one --classic --add --prefix x_");
  EXPECT_TRUE(added.code == 1 && Has(added.err, "is the report of \"Club\"")) << added.err;
  const string before = index();
  const struct {
    string line, error;
  } refused[] = {
      {"site " + kMidorigaoka + " site --add --prefix h_", "h_event.lxm is of another event"},
      {"site two.lxm site", "index.html is a list of events"},
      {"site two.lxm site --classic", "index.html holds more"}};
  for (const auto& [line, error] : refused) {
    const Outcome run = Run("keltrun2 " + line);
    EXPECT_EQ(run.code, 1) << line;
    EXPECT_TRUE(Has(run.err, error) && Has(run.err, "--force")) << run.err;
  }
  EXPECT_EQ(index(), before);
  Output("site " + kMidorigaoka + " site --add --prefix h_ --force");
  EXPECT_EQ(CountOf("<li ", index()), 3);
  Output("site " + kHoshinomori + " site --add --classic --prefix k_ --charset utf-8");
  EXPECT_TRUE(CountOf("<li ", index()) == 3 && Has(index(), "k_lap_m21a.html"));
}

// The lap file is never replaced by an output made from it, whatever its name is.
TEST_F(Cli, SiteKeepsItsInput) {
  for (const string name : {"event.lxm", "event.lap", "index.html", "style.css", "result_m21.html",
                            "chart_m21_5.png", "viewer.html", "results.xml", "charts.html"}) {
    fs::create_hard_link(folder_ / "two.lxm", folder_ / name);
    const Outcome run =
        Run(string("keltrun2 site two.lxm new/.. --force --charts all --viewer ") +
            (name == "results.xml" || name == "charts.html" ? "--also-classic" : "--classic"));
    EXPECT_EQ(run.code, 1) << name;
    EXPECT_TRUE(Has(run.err, "/" + name + " is the event two.lxm itself")) << run.err;
    EXPECT_EQ(Names("."), (std::set<string>{"new", "old.txt", "two.lxm", name}));
    fs::remove(folder_ / name);
  }
  Write(folder_ / "event.lxm", kTwoClasses);
  EXPECT_EQ(Run("keltrun2 site event.lxm new/.. --force").code, 1);
  EXPECT_EQ(Contents(folder_ / "event.lxm"), kTwoClasses);
  Output("site event.lxm . --prefix club_");
  EXPECT_EQ(Contents(folder_ / "event.lxm"), kTwoClasses);
}

// An event in an index.
string Block(const string& lap_file) {
  return "<!-- ### KELTRUN START ### -->\n<a href=\"" + lap_file +
         ".lxm\">data</a>\n<!-- ### KELTRUN FINISH ### -->\n";
}

TEST_F(Cli, ClassicSiteKeepsForeignPages) {
  const struct {
    string index, style, options;
    int code;
    string shown;  // on standard error
  } cases[] = {
      {"<p>club</p>\n", "", "", 1, "index.html"},
      {"<p>club</p>\n", "", "--add", 0, ""},
      {"<p>club</p>\n", "", "--force", 0, ""},
      {"<p>club</p>\n" + Block("event"), "", "", 1, "index.html"},
      {"<p>club</p>\n" + Block("event"), "", "--add", 0, ""},
      {"<html><body>\n" + Block("event") + Block("a_event") + "</body>", "", "", 1, "index.html"},
      {"<html><body>\n" + Block("event") + "\n</body></html>", "", "", 0, ""},
      {"", "p{}\n", "", 1, "style.css"},
      {"", "p{}\n", "--style none", 0, ""},
      {"", "p{}\n", "--style my.css", 0, ""},
      {"", "p{}\n", "--add", 0, "style.css"},
      {"", "p{}\n", "--add -q", 0, ""},
      {"", "p{}\n", "--force", 0, ""},
      {"", "/* Style sheet of a published site: index, result, analysis and leg-data pages.\n", "",
       0, ""}};
  Write(folder_ / "my.css", "p{}\n");
  for (const auto& test : cases) {
    SCOPED_TRACE(test.index + test.style + test.options);
    fs::remove_all(folder_ / "site");
    fs::create_directory(folder_ / "site");
    if (!test.index.empty()) Write(folder_ / "site/index.html", test.index);
    if (!test.style.empty()) Write(folder_ / "site/style.css", test.style);
    const Outcome run = Run("keltrun2 site two.lxm site --classic " + test.options);
    EXPECT_EQ(run.code, test.code) << run.err;
    EXPECT_EQ(run.err.empty(), test.shown.empty()) << run.err;
    EXPECT_TRUE(Has(run.err, test.shown)) << run.err;
    const bool forced = test.options == "--force";
    const bool keeps_index = Has(Contents(folder_ / "site/index.html"), "<p>club</p>");
    EXPECT_EQ(keeps_index, Has(test.index, "club") && !forced);
    const bool keeps_style = Contents(folder_ / "site/style.css") == "p{}\n";
    EXPECT_EQ(keeps_style, Has(test.style, "p{}") && !forced);
    EXPECT_EQ(Names("site").contains("event.lxm"), test.code == 0);
  }
}

TEST_F(Cli, ConvertMergeAndSegments) {
  const string printout = KELTRUN2_TEST_DATA "/hoshinomori/sportident.txt";
  const Outcome converted = Run("keltrun2 convert " + printout + " si.lxm");
  EXPECT_EQ(converted.code, 0);
  EXPECT_EQ(converted.err, "") << "nothing is lost";
  EXPECT_TRUE(Has(Output("info si.lxm"), "62-63-F")) << "segments of a printout";
  EXPECT_EQ(Run("keltrun2 convert si.lxm si.lxm").code, 1) << "without --force";
  EXPECT_EQ(Run("keltrun2 convert si.lxm si.txt").code, 2);
  for (const string name : {"a.lap", "a.xml", "a.lzh"}) Output("convert si.lxm " + name);
  EXPECT_TRUE(Has(Run("keltrun2 convert --force si.lxm a.lap").err,
                  "a.lap: courses with their controls: 4, "));
  EXPECT_GT(CountOf("laptime", Contents(folder_ / "si.lxm")), 2000);
  EXPECT_EQ(CountOf("<PersonResult>", Contents(folder_ / "a.xml")), 143);
  Output("convert a.lzh back.lxm");
  const auto body = [](const string& xml) { return xml.substr(xml.find("<classes>"), 2000); };
  EXPECT_EQ(CountOf("<runner ", Contents(folder_ / "back.lxm")), 143);
  EXPECT_TRUE(Has(body(Contents(folder_ / "back.lxm")), "Erik Lindqvist"));

  const string import = KELTRUN2_TEST_DATA "/hoshinomori/import.txt";
  Output("merge " + kHoshinomori + " " + import + " -o out.lxm --prefer new");
  EXPECT_EQ(CountOf("<runner ", Contents(folder_ / "out.lxm")), 143);
  EXPECT_GT(CountOf(" sex=", Contents(folder_ / "out.lxm")),
            CountOf(" sex=", Contents(kHoshinomori)));
  const Outcome by_id = Run("keltrun2 merge two.lxm " + import + " -o x.lxm --match id");
  EXPECT_EQ(by_id.code, 1) << "clubs and sexes have no numbers to match";
  Write(folder_ / "untitled.txt", "$IMPORT_ONLY,\nAnna,Club\n");
  const Outcome untitled = Run("keltrun2 merge two.lxm untitled.txt -o x.lxm --match name");
  EXPECT_EQ(untitled.code, 1);
  EXPECT_EQ(untitled.err,
            "keltrun2: untitled.txt: file: no header line with a column for names, nothing was "
            "read\n");
  Output("merge two.lxm si.lxm -o all.lxm --match none");
  EXPECT_EQ(CountOf("<runner ", Contents(folder_ / "all.lxm")), 144);
  Output("merge two.lxm si.lxm -o known.lxm --known-only");
  EXPECT_EQ(CountOf("<runner ", Contents(folder_ / "known.lxm")), 1);

  // A late winner changes the ranks, unless they are to be kept.
  const auto runner = [](const string& name, const string& result, const string& rank) {
    return "<runner name=\"" + name + "\" result=\"" + result + "\" rank=\"" + rank + "\"/>";
  };
  const string head = "<keltrun><classes><class name=\"M\">", tail = "</class></classes></keltrun>";
  Write(folder_ / "ranked.lxm", head + runner("A", "0:10:00", "1") + tail);
  Write(folder_ / "guest.lxm", head + runner("A", "0:10:00", "9") + tail);
  Write(folder_ / "late.lxm", head + runner("L", "0:09:00", "") + tail);
  const struct {
    string event, option, rank;
    bool stale;
  } merges[] = {{"ranked.lxm", "", "2", false},
                {"ranked.lxm", " --ranks keep", "1", false},
                {"guest.lxm", "", "9", true},
                {"guest.lxm", " --ranks keep", "9", false}};
  for (const auto& [event, option, rank, stale] : merges) {
    const Outcome run = Run("keltrun2 merge --force -o m.lxm " + event + " late.lxm" + option);
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_TRUE(Has(Contents(folder_ / "m.lxm"), "rank=\"" + rank + "\"")) << event << option;
    EXPECT_EQ(run.err.starts_with("late.lxm: class \"M\": "), stale) << run.err;
  }

  // Two archives without the mark at the end of the first are one archive of two lap files.
  Output("convert two.lxm b.lzh");
  const string first = Contents(folder_ / "a.lzh");
  Write(folder_ / "both.lzh", first.substr(0, first.size() - 1) + Contents(folder_ / "b.lzh"));
  EXPECT_TRUE(Has(Output("info both.lzh --member b.lxm"), "Club"));
  for (const string member : {"", " --member c.lxm"}) {
    const Outcome run = Run("keltrun2 info both.lzh" + member);
    EXPECT_EQ(run.code, 1) << member;
    EXPECT_TRUE(Has(run.err, "a.lxm\n") && Has(run.err, "b.lxm\n")) << run.err;
  }

  EXPECT_TRUE(Has(Output("analyze si.lxm --segment 62-63-F --as json"), "\"kind\":\"segment\""));
  EXPECT_TRUE(Has(Run("keltrun2 results si.lxm --segment 1-2 --as json").err, "62-63-F"));
}

// The formats for other programs need no ending, and each output says its charset.
TEST_F(Cli, FormsForOtherPrograms) {
  Output("convert -q two.lxm a.data --to iof3");
  EXPECT_TRUE(Has(Contents(folder_ / "a.data"), "iofVersion=\"3.0\""));
  EXPECT_TRUE(Has(Output("info a.data"), "男子Ａ"));
  Output("convert -q two.lxm a.data --to splitsbrowser --charset cp932 --force");
  EXPECT_TRUE(
      Has(Contents(folder_ / "a.data"), "\x92\x6A\x8E\x71\x82\x60,1\r\nA,-,-,00:00,1:00,1:00"));
  EXPECT_EQ(Run("keltrun2 convert two.lxm a.data").code, 2);
  EXPECT_EQ(Run("keltrun2 convert two.lxm b.lxm --charset cp932").code, 1);
  EXPECT_TRUE(Has(Run("keltrun2 convert two.lxm c.csv --to winsplits").err,
                  "runners without a start time: 1, shown at 0:00"));
  EXPECT_TRUE(Output("results two.lxm --as csv -q")
                  .starts_with("\xEF\xBB\xBF"
                               "class,place,"));
  EXPECT_TRUE(Output("results two.lxm --as csv -q --no-bom --delimiter ';'").starts_with("class;"));
  EXPECT_TRUE(
      Has(Output("analyze two.lxm --as tidy-csv -q"), ",A,,OK,120,1,2,2,1,F,60,120,1,1,60,1,0,"));
  EXPECT_EQ(Run("keltrun2 analyze two.lxm --class M21 --as json --charset cp932").code, 2);
}

}  // namespace
