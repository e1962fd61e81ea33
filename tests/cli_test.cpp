// The program as a user meets it: arguments in, files, streams and exit codes out.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>

namespace {

namespace fs = std::filesystem;
using std::string;

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

  // Runs the program in the test's folder by a shell line in which "keltrun2" is the program and
  // $EVENT, $OTHER_EVENT and $DATA name an event's lap file, another's, and imports for the first.
  Outcome Run(const string& line) const {
    Write(base_ / "script",
          "exec </dev/null >../out 2>../err\nunset KELTRUN2_FOLDER LC_ALL\n"
          "EVENT='" KELTRUN2_EXAMPLES "/hoshinomori/event.lxm' DATA='" KELTRUN2_TEST_DATA
          "/hoshinomori' OTHER_EVENT='" KELTRUN2_EXAMPLES
          "/midorigaoka/event.lxm'\n"
          "keltrun2() { LANG=C '" KELTRUN2_PROGRAM "' \"$@\"; }\n" +
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

  // Rows "CODE ARGUMENTS => TEXT" between "|": the code of a run, and a part of its output or, for
  // a code other than 0, of its complaint, which comes without any output.
  void Check(const string& rows) const {
    std::istringstream stream(rows);
    for (string text; std::getline(stream, text, '|');) {
      std::smatch row;
      ASSERT_TRUE(std::regex_match(text, row, std::regex("\\s*(\\d) (.*) => (.*?)\\s*"))) << text;
      const Outcome run = Run("keltrun2 " + row.str(2));
      EXPECT_EQ(run.code, std::stoi(row[1])) << text << "\n" << run.err;
      EXPECT_TRUE(Has(run.code == 0 ? run.out : run.err, row[3])) << text << "\n" << run.err;
      if (run.code == 0) continue;
      EXPECT_TRUE(run.err.starts_with("keltrun2: ") && !Has(run.err, "\r")) << run.err;
      EXPECT_EQ(run.out, "") << text;
    }
  }

  string File(const string& name) const { return Contents(folder_ / name); }

  std::set<string> Names(const string& folder = ".") const {
    std::set<string> names;
    for (const fs::path& file : fs::directory_iterator(folder_ / folder))
      names.insert(file.filename());
    return names;
  }

  fs::path base_, folder_;
};

TEST_F(Cli, FailuresAndWrongUseHaveTheirCodesAndSayWhy) {
  Write(folder_ / "other.lxm", "<other/>");
  Check(R"(2  => command is missing | 2 publish two.lxm => publish | 2 info => EVENT |
      2 site two.lxm => DIR | 2 site two.lxm '' => empty | 2 info two.lxm more => more |
      2 info two.lxm --lang fr => --lang | 2 analyze two.lxm --class M21 => --as |
      2 results two.lxm --as json --course x => --course | 2 analyze two.lxm --as html => --class |
      2 analyze two.lxm --as json --class M21 --course 7 => excludes |
      1 site missing.lxm x => missing.lxm | 1 info other.lxm => <other> |
      1 info - </dev/null => standard input | 1 analyze two.lxm --as json --class M20 => 男子Ａ |
      1 analyze two.lxm --as json --class M20 =>   M21 |
      1 results two.lxm --as html --course 1 => 7: 男子Ａ | 1 info two.lxm -o no/folder => no/folder |
      1 info two.lxm -o . => directory | 1 info two.lxm -o old.txt => --force |
      1 info two.lxm >/dev/full => standard output | 1 site two.lxm old.txt => old.txt |
      1 site two.lxm x --style missing.css => missing.css)");
  EXPECT_EQ(Names(), (std::set<string>{"old.txt", "other.lxm", "two.lxm"}));
  EXPECT_EQ(File("old.txt"), "old");
}

TEST_F(Cli, HelpAndVersion) {
  for (const string command : {"", "site ", "info ", "analyze ", "results "}) {
    const string help = Output(command + "--help");
    EXPECT_TRUE(Has(help, "Examples:\n  keltrun2 " + command) && Has(help, "--lang")) << help;
  }
  EXPECT_EQ(Output("--version"), "Keltrun 2.27 ( Build 242 )\n");
}

TEST_F(Cli, FilesAreReplacedWholeOrNotAtAll) {
  // The limit of one block lets the program write the beginning of the new file only.
  const Outcome cut =
      Run("trap '' XFSZ; ulimit -f 1; keltrun2 analyze $EVENT --as json --force -o old.txt");
  EXPECT_EQ(cut.code, 1) << cut.err;
  EXPECT_EQ(File("old.txt"), "old");
  EXPECT_EQ(Names(), (std::set<string>{"old.txt", "two.lxm"}));

  Run("chmod 640 old.txt; ln -s old.txt link");
  Output("analyze two.lxm --as json --force -o link");
  EXPECT_EQ(File("old.txt"), Output("analyze two.lxm --as json -o -"));
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

TEST_F(Cli, LanguageFollowsTheOptionNotTheEnvironment) {
  const string page = "results $EVENT --class m21a --as html --style-url a.css => ";
  Check("0 info $EVENT => 2025年10月18日 | 0 info $EVENT --lang en => 2025-10-18 | 0 " + page +
        "Ｍ２１Ａ | 0 --lang en " + page + "&nbsp;M21A< | 0 " + page + "charset=utf-8 | 0 " + page +
        "href=\"a.css\"");
  Write(folder_ / "one.lxm", "<keltrun><classes><class name=\"Solo\"/></classes></keltrun>");
  Check("0 results one.lxm --as html --lang en => Solo");  // no name needed for a single class
}

// The event has nine classes and four courses, each run by at least two of them.
TEST_F(Cli, OutputHoldsTheNamedSetOrAll) {
  const struct {
    string arguments, start;
    int sets, courses;
  } cases[] = {{"analyze", "[", 13, 4},
               {"analyze --all", "[", 13, 4},
               {"analyze --class M20E", "{", 1, 0},
               {"analyze --course 3", "{", 1, 1},
               {"results", "{", 13, 4},
               {"results --class M20E", "{", 1, 0},
               {"results --course 3", "{", 1, 1}};
  for (const auto& test : cases) {
    const string json = Output(test.arguments + " --as json $EVENT");
    EXPECT_TRUE(json.starts_with(test.start)) << test.arguments;
    EXPECT_EQ(CountOf("\"set\":", json), test.sets) << test.arguments;
    EXPECT_EQ(CountOf("\"kind\":\"course\"", json), test.courses) << test.arguments;
  }
  EXPECT_EQ(CountOf("* ", Output("results --as text $EVENT")), 9);
  const string page = Output("results --as html $EVENT");  // all classes on one page
  EXPECT_EQ(CountOf("</table>", page), 9);
  EXPECT_EQ(CountOf("<body", page) + CountOf("</html>", page), 2);
}

TEST_F(Cli, SiteHoldsWhatIsAskedFor) {
  EXPECT_EQ(Output("site $EVENT a/new/site"), "a/new/site/index.html\n");
  const auto names = Names("a/new/site");
  EXPECT_EQ(names.size(), 4u + 3 * 9);
  for (const char* name : {"event.lxm", "event.lap", "lap_u7537u5b50b.html", "legs_m21a.html"})
    EXPECT_TRUE(names.contains(name)) << name;
  EXPECT_TRUE(Has(File("a/new/site/style.css"), "table.lap"));
  for (const string page : {"index.html", "lap_m15.html", "result_m15.html"})
    EXPECT_TRUE(Has(File("a/new/site/" + page), "href=\"style.css\"")) << page;
  EXPECT_EQ(Output("site -q --courses $EVENT a/new/site"), "");
  EXPECT_EQ(Names("a/new/site").size(), 4u + 3 * (9 + 4));

  Output("site --no-legs --charts normal,map --viewer --charset utf-8 $EVENT rich");
  const auto rich = Names("rich");
  for (const char* name :
       {"chart_m21a.html", "chart_m21a_0.png", "chart_m21a_7.png", "viewer.html"})
    EXPECT_TRUE(rich.contains(name)) << name;
  EXPECT_FALSE(rich.contains("chart_m21a_2.png") || rich.contains("legs_m21a.html"));
  EXPECT_TRUE(Has(File("rich/index.html"), "charset=utf-8"));
}

TEST_F(Cli, ExportsChartsAndPages) {
  const string cases[][2] = {
      {"analyze $EVENT --class M21A --as legs", "<html>"},
      {"analyze $EVENT --class M21A --as mail", ""},
      {"analyze $EVENT --class M21A --as macro-csv", ""},
      {"analyze $EVENT --class M21A --as splitsbrowser", ""},
      {"results $EVENT --class M21A --as text", ""},
      {"chart $EVENT --class M21A --mode map --highlight 1,2 -o -", "\x89PNG"},
      {"chart $EVENT --class M21A --mode halfratio -o c.svg && cat c.svg", "<?xml"},
      {"print $EVENT -o -", "%PDF"},
      {"print $EVENT --what analysis --class M21A --landscape --per-sheet 2x1 -o -", "%PDF"}};
  for (const auto& [arguments, begin] : cases) {
    const string output = Output(arguments);
    EXPECT_GT(output.size(), 500u) << arguments;
    EXPECT_TRUE(output.starts_with(begin)) << arguments;
  }
}

TEST_F(Cli, SiteStyleAddAndFailures) {
  Write(folder_ / "my.css", "p{}");
  Output("site two.lxm mine --style my.css");
  EXPECT_EQ(File("mine/style.css"), "p{}");
  const auto index = [&] { return File("bare/index.html"); };
  Output("site $OTHER_EVENT bare --style none");
  EXPECT_FALSE(Names("bare").contains("style.css"));
  EXPECT_FALSE(Has(File("bare/lap_m21a.html"), "stylesheet"));
  EXPECT_TRUE(Has(index(), "www.example.org"));
  Output("site two.lxm bare --add");
  EXPECT_EQ(CountOf("KELTRUN START", index()), 2);
  EXPECT_TRUE(index().find("Club") < index().find("lap_m21a.html"));
  Output("site two.lxm bare --add --prefix club_");
  EXPECT_TRUE(Has(index(), "club_lap_u7537u5b50A.html"));
  EXPECT_NE(File("bare/club_lap_u7537u5b50A.html"), "");
  Output("site $OTHER_EVENT bare --no-official-site");
  EXPECT_TRUE(CountOf("KELTRUN START", index()) == 1 && !Has(index(), "www.example.org"));

  // The event itself is never replaced by the site's plainer copy.
  Write(folder_ / "event.lxm", kTwoClasses);
  Check("1 site event.lxm . => event.lxm | 2 site two.lxm bare --prefix a: => --prefix");
  EXPECT_EQ(File("event.lxm"), kTwoClasses);
  EXPECT_FALSE(Names().contains("index.html"));

  fs::create_directories(folder_ / "blocked/lap_m21a.html");
  Check("1 site $OTHER_EVENT blocked => lap_m21a.html");
  EXPECT_TRUE(Names("blocked").contains("result_m21a.html"));
}

TEST_F(Cli, ConvertMergeAndSegments) {
  const Outcome converted = Run("keltrun2 convert $DATA/sportident.txt si.lxm");
  EXPECT_EQ(converted.code, 0);
  EXPECT_TRUE(Has(converted.err, "sportident.txt:150:61: ")) << converted.err;  // a remark
  // The last import is of clubs and sexes: they have no numbers to match.
  Check(R"(0 analyze si.lxm --segment 62-63-F --as json => "kind":"segment" |
      0 info si.lxm => 62-63-F | 1 results si.lxm --segment 1-2 --as json => 62-63-F |
      1 convert si.lxm si.lxm => --force | 2 convert si.lxm si.txt => must end in |
      1 merge two.lxm $DATA/import.txt -o x.lxm --match id => )");
  for (const string name : {"a.lap", "a.xml", "a.lzh"}) Output("convert si.lxm " + name);
  EXPECT_GT(CountOf("laptime", File("si.lxm")), 2000);
  EXPECT_EQ(CountOf("<PersonResult>", File("a.xml")), 143);

  for (const auto& [arguments, runners] :
       std::map<string, int>{{"convert a.lzh", 143},
                             {"merge $EVENT $DATA/import.txt --prefer new -o", 143},
                             {"merge two.lxm si.lxm --match none -o", 144},
                             {"merge two.lxm si.lxm --known-only -o", 1}}) {
    Output(arguments + " out.lxm --force");
    EXPECT_EQ(CountOf("<runner ", File("out.lxm")), runners) << arguments;
  }

  // Two archives without the mark at the end of the first are one archive of two lap files.
  Output("convert two.lxm b.lzh");
  const string first = File("a.lzh");
  Write(folder_ / "both.lzh", first.substr(0, first.size() - 1) + File("b.lzh"));
  Check(R"(0 info both.lzh --member b.lxm => Club |
      1 info both.lzh => a.lxm | 1 info both.lzh => b.lxm |
      1 info both.lzh --member c.lxm => a.lxm | 1 info both.lzh --member c.lxm => b.lxm)");
}

}  // namespace
