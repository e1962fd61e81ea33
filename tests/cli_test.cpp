// The program as a user meets it: arguments in, files, streams and exit codes out.
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
using string;

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

  // Runs the program in the test's folder by a shell line in which "keltrun2" is the program.
  Outcome Run(const string& line) const {
    Write(base_ / "script",
          "exec </dev/null >../out 2>../err\nunset KELTRUN2_FOLDER LC_ALL\n"
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
  const struct {
    string line;
    int code;
    string error;
  } cases[] = {
      {"keltrun2", 2, "command is missing"},
      {"keltrun2 publish two.lxm", 2, "publish"},
      {"keltrun2 info", 2, "EVENT"},
      {"keltrun2 site two.lxm", 2, "DIR"},
      {"keltrun2 info two.lxm more", 2, "more"},
      {"keltrun2 info two.lxm --lang fr", 2, "--lang"},
      {"keltrun2 analyze two.lxm --class M21", 2, "--as"},
      {"keltrun2 results two.lxm --as pdf", 2, "pdf"},
      {"keltrun2 results two.lxm --as json --course x", 2, "--course"},
      {"keltrun2 analyze two.lxm --as json --class M21 --course 7", 2, "excludes"},
      {"keltrun2 analyze two.lxm --as json --class M21 --all", 2, "excludes"},
      {"keltrun2 analyze two.lxm --as html", 2, "--class"},
      {"keltrun2 results two.lxm --as html -o x", 2, "--class"},
      {"keltrun2 info missing.lxm", 1, "missing.lxm"},
      {"keltrun2 site missing.lxm x", 1, "missing.lxm"},
      {"keltrun2 info other.lxm", 1, "<other>"},
      {"keltrun2 info - </dev/null", 1, "standard input"},
      {"printf '<keltrun>\\202\\240</keltrun>' | keltrun2 info -", 1, "UTF-8"},
      {"keltrun2 analyze two.lxm --as json --class M20", 1, "男子Ａ\n  M21\n"},
      {"keltrun2 results two.lxm --as html --course 1", 1, "7: 男子Ａ"},
      {"keltrun2 info two.lxm -o no/folder", 1, "no/folder"},
      {"keltrun2 info two.lxm -o .", 1, "directory"},
      {"keltrun2 info two.lxm -o old.txt", 1, "--force"},
      {"keltrun2 info two.lxm >/dev/full", 1, "standard output"},
      {"keltrun2 site two.lxm x --style missing.css", 1, "missing.css"},
      {"keltrun2 site two.lxm old.txt", 1, "old.txt"},
  };
  for (const auto& test : cases) {
    const Outcome run = Run(test.line);
    EXPECT_EQ(run.code, test.code) << test.line;
    EXPECT_TRUE(Has(run.err, test.error)) << test.line << "\n" << run.err;
    EXPECT_TRUE(run.err.starts_with("keltrun2: ") && !Has(run.err, "\r")) << run.err;
    EXPECT_EQ(run.out, "") << test.line;
  }
  EXPECT_EQ(Names("."), (std::set<string>{"old.txt", "other.lxm", "two.lxm"}));
  EXPECT_EQ(Contents(folder_ / "old.txt"), "old");
}

TEST_F(Cli, HelpAndVersion) {
  for (const string command : {"", "site ", "info ", "analyze ", "results "}) {
    const Outcome run = Run("keltrun2 " + command + "--help");
    EXPECT_EQ(run.code, 0);
    EXPECT_TRUE(Has(run.out, "Examples:\n  keltrun2 " + command)) << run.out;
    EXPECT_TRUE(Has(run.out, "--lang") && Has(run.out, "--quiet")) << run.out;
  }
  EXPECT_EQ(Run("keltrun2 --version").out, "Keltrun 2.27 ( Build 242 )\n");
}

TEST_F(Cli, FilesAreReplacedWholeOrNotAtAll) {
  const string analysis = Run("keltrun2 analyze two.lxm --as json").out;
  // The limit of one block lets the program write the beginning of the new file only.
  const Outcome cut = Run("trap '' XFSZ; ulimit -f 1; keltrun2 analyze " + kHoshinomori +
                          " --as json --force -o old.txt");
  EXPECT_EQ(cut.code, 1) << cut.err;
  EXPECT_EQ(Contents(folder_ / "old.txt"), "old");
  EXPECT_EQ(Names("."), (std::set<string>{"old.txt", "two.lxm"}));

  EXPECT_EQ(Run("chmod 640 old.txt; ln -s old.txt link; "
                "keltrun2 analyze two.lxm --as json --force -o link")
                .code,
            0);
  EXPECT_EQ(Contents(folder_ / "old.txt"), analysis);
  EXPECT_TRUE(fs::is_symlink(folder_ / "link"));
  EXPECT_EQ(fs::status(folder_ / "old.txt").permissions(), fs::perms{0640});
  EXPECT_EQ(Run("keltrun2 analyze two.lxm --as json -o /dev/null").code, 0);
}

TEST_F(Cli, SummaryLinesUpAndReadsStandardInput) {
  const Outcome piped = Run("cat two.lxm | keltrun2 info - -o -");
  EXPECT_EQ(piped.code, 0) << piped.err;
  EXPECT_TRUE(Has(piped.out, "Event    Club\nFile     standard input.lxm\n")) << piped.out;
  // "男子Ａ" is six columns wide, so "M21" gets three blanks more.
  EXPECT_TRUE(Has(piped.out, "  男子Ａ        1         1       -      -       7 ")) << piped.out;
  EXPECT_TRUE(Has(piped.out, "  M21           0         1       -      -       - ")) << piped.out;
  EXPECT_TRUE(Has(Run("keltrun2 info two.lxm --json").out, "\"keltrun2-info\""));
}

TEST_F(Cli, LanguageFollowsTheOptionNotTheEnvironment) {
  const struct {
    string option, date, title;
  } cases[] = {{"", "2025年10月18日", "Ｍ２１Ａ"},
               {"--lang ja", "2025年10月18日", "Ｍ２１Ａ"},
               {"--lang en", "2025-10-18", "&nbsp;M21A<"}};
  for (const auto& test : cases) {
    EXPECT_TRUE(Has(Run("keltrun2 info " + kHoshinomori + " " + test.option).out, test.date));
    const Outcome page = Run("keltrun2 " + test.option + " results " + kHoshinomori +
                             " --class m21a --as html --style a.css");
    EXPECT_TRUE(Has(page.out, test.title)) << page.out.substr(0, 999);
    EXPECT_TRUE(Has(page.out, "charset=utf-8") && Has(page.out, "href=\"a.css\""));
  }
}

// The event has nine classes and four courses, each run by at least two of them.
TEST_F(Cli, JsonHoldsTheNamedSetOrAll) {
  const string analysis = "\"format\":\"keltrun2-analysis\"", course = "\"kind\":\"course\"";
  const struct {
    string arguments, start, counted;
    int count, courses;
  } cases[] = {
      {"analyze --as json", "[", analysis, 13, 4},
      {"analyze --as json --all", "[", analysis, 13, 4},
      {"analyze --as json --class M20E", "{", analysis, 1, 0},
      {"analyze --as json --course 3", "{", analysis, 1, 1},
      {"results --as json", "{", "\"set\":", 13, 4},
      {"results --as json --class M20E", "{", "\"set\":", 1, 0},
      {"results --as json --course 3", "{", "\"set\":", 1, 1},
  };
  for (const auto& test : cases) {
    const Outcome run = Run("keltrun2 " + test.arguments + " " + kHoshinomori);
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_TRUE(run.out.starts_with(test.start)) << test.arguments;
    EXPECT_EQ(CountOf(test.counted, run.out), test.count) << test.arguments;
    EXPECT_EQ(CountOf(course, run.out), test.courses) << test.arguments;
  }
}

TEST_F(Cli, APageNeedsNoNameWhenThereIsOneClass) {
  Write(folder_ / "one.lxm",
        "<keltrun><classes><class name=\"Solo\"><runner name=\"A\" result=\"0:02:00\">"
        "<leg index=\"1\" laptime=\"00:02:00\"/></runner></class></classes></keltrun>");
  for (const string command : {"analyze", "results"}) {
    const Outcome run = Run("keltrun2 " + command + " one.lxm --as html --lang en");
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_TRUE(Has(run.out, "Solo"));
  }
}

TEST_F(Cli, SiteMakesTheFolderWithPagesAndStyle) {
  const Outcome run = Run("keltrun2 site " + kHoshinomori + " a/new/site");
  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(run.out, "a/new/site/index.html\n");
  const auto names = Names("a/new/site");
  EXPECT_EQ(names.size(), 3u + 2 * 9);
  for (const char* name : {"index.html", "event.lxm", "style.css", "result_m21a.html",
                           "lap_m21a.html", "lap_u7537u5b50b.html"}) {
    EXPECT_TRUE(names.contains(name)) << name;
  }
  EXPECT_TRUE(Has(Contents(folder_ / "a/new/site/style.css"), "table.lap"));
  for (const char* page : {"index.html", "lap_m15.html", "result_m15.html"}) {
    EXPECT_TRUE(Has(Contents(folder_ / "a/new/site" / page), "href=\"style.css\"")) << page;
  }
  EXPECT_EQ(Run("keltrun2 site -q --courses " + kHoshinomori + " a/new/site").out, "");
  EXPECT_EQ(Names("a/new/site").size(), 3u + 2 * (9 + 4));
}

TEST_F(Cli, SiteStyleAddAndFailures) {
  Write(folder_ / "my.css", "p{}");
  EXPECT_EQ(Run("keltrun2 site two.lxm mine --style my.css").code, 0);
  EXPECT_EQ(Contents(folder_ / "mine/style.css"), "p{}");

  EXPECT_EQ(Run("keltrun2 site " + kMidorigaoka + " bare --style none").code, 0);
  EXPECT_FALSE(Names("bare").contains("style.css"));
  EXPECT_FALSE(Has(Contents(folder_ / "bare/lap_m21a.html"), "stylesheet"));
  EXPECT_TRUE(Has(Contents(folder_ / "bare/index.html"), "www.example.org"));

  EXPECT_EQ(Run("keltrun2 site two.lxm bare --add").code, 0);
  const string index = Contents(folder_ / "bare/index.html");
  EXPECT_EQ(CountOf("KELTRUN START", index), 2);
  EXPECT_TRUE(index.find("Club") < index.find("lap_m21a.html"));
  EXPECT_EQ(Run("keltrun2 site " + kMidorigaoka + " bare --no-official-site").code, 0);
  const string anew = Contents(folder_ / "bare/index.html");
  EXPECT_TRUE(CountOf("KELTRUN START", anew) == 1 && !Has(anew, "www.example.org"));

  fs::create_directories(folder_ / "blocked/lap_m21a.html");
  const Outcome blocked = Run("keltrun2 site " + kMidorigaoka + " blocked");
  EXPECT_EQ(blocked.code, 1);
  EXPECT_TRUE(Has(blocked.err, "lap_m21a.html") && blocked.out.empty()) << blocked.err;
  EXPECT_TRUE(Names("blocked").contains("result_m21a.html"));
}

}  // namespace
