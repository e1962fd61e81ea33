// The file service: detection of file types, dispatch, load modes, progress, error texts, saving.
#include "keltrun2/api/file_control.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <regex>
#include <set>
#include <stdexcept>

#include "keltrun2/config/settings.h"
#include "keltrun2/io/detect.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using std::string;

bool Contains(const string& text, std::string_view part) { return text.find(part) != string::npos; }

TEST(Detection, OfFilesByTheirFirstLines) {
  const Rows<KrLapFileTypeConst, std::vector<string>> cases = {
      {KR_FILETYPE_KELTRUN1,
       {"$LAPFILE Ver=2", "xml $LAPFILE Ver=2;\na\nb", "$IMPORT_ONLY \nNAME\nx", "<?XML?>\na\nb",
        "Split times of\na\nb", "a\nb\nOE2003\nc", "a\n<?xml?>\nb"}},
      {KR_FILETYPE_IMPORT_ONLY,
       {"$IMPORT_ONLY", "$import_Only\nNAME\nx", "$IMPORT_ONLY,,\nNAME\nx", "\"$IMPORT_ONLY\";\nx",
        "\"$IMPORT_ONLY\"\nx", "$IMPORT_ONLY\t\nx"}},
      {KR_FILETYPE_KELTRUN2, {"<?xml version=\"1.0\"?>", "<?xml?>\n\n"}},
      {KR_FILETYPE_OEVENT, {"a\nSplit times of M21A", "a\nSplit times of M21A\n"}},
      {KR_FILETYPE_SPORTIDENT,
       {"a\n\nSPORTident results\n", "a\nb\nSPORTident results", "a\nb\nc\nOE2003;"}},
      {KR_FILETYPE_UNKNOWN, {"a", "a\nb", "a\nb\n", "a\n\n", ""}}};
  for (const auto& [type, texts] : cases) {
    for (const string& text : texts) {
      for (const char* line_end : {"\r\n", "\r", "\n"}) {
        const string file = std::regex_replace(text, std::regex("\n"), line_end);
        EXPECT_EQ(DetectFileTextType(file), type) << file;
      }
    }
  }
}

TEST(Detection, OfTexts) {
  const Rows<KrLapFileTypeConst, std::vector<string>> cases = {
      {KR_FILETYPE_UNKNOWN, {"$LAPFILE Ver=2\n<?xml?>", "a\nSplit times of"}},
      {KR_FILETYPE_KELTRUN1,
       {"xml $LAPFILE Ver=2\na\nb", "$IMPORT_ONLY\nNAME\nx", "a\nb\nc\nOE2003"}},
      {KR_FILETYPE_KELTRUN2,
       {"<?xml?>\nSplit times of\nSPORTident results", "<?xml?>\n<keltrun/>\n"}},
      {KR_FILETYPE_OEVENT, {"a\nSplit times of\nSPORTident results"}}};
  for (const auto& [type, texts] : cases) {
    for (const string& text : texts) {
      string lf = text, cr_lf = CrLf(text);
      EXPECT_EQ(DetectTextType(lf), type) << text;
      EXPECT_EQ(DetectTextType(cr_lf), type) << text;
    }
  }
  string text = "a\rb\rSPORTident results\r";  // lines that end in CR alone are rewritten
  EXPECT_EQ(DetectTextType(text), KR_FILETYPE_SPORTIDENT);
  EXPECT_EQ(text, "a\r\nb\r\nSPORTident results\r\n");
}

string WithoutReturns(string text) {
  std::erase(text, '\r');
  return text;
}

// Three classes; the second has a runner of the number and club given.
string Event(const string& name, const string& club = "") {
  return "<?xml version=\"1.0\"?>\r\n<keltrun><event name=\"" + name +
         "\"/>\r\n<classes><class name=\"A\"/><class name=\"B\"><runner name=\"Anna\" id=\"7\" "
         "club=\"" +
         club + "\"/></class><class name=\"C\"/></classes></keltrun>\r\n";
}

// The first bytes of an archive with this method.
string Archived(const string& method) { return "\x1C\x01" + method + string(20, '\0'); }

class FileControl : public ::testing::Test {
 protected:
  ~FileControl() override { SetHostWindows(nullptr); }
  bool Load(const string& text, KrLapFileLoadModeCosnt mode = KR_LOADMODE_NORMAL) {
    return files_->LoadLapFile("text", KR_FILETYPE_AUTODETECT, mode, text);
  }
  string File(std::string_view name, std::string_view bytes) {
    WriteBytes(folder_.Path(name), bytes);
    return folder_.Path(name);
  }
  std::ptrdiff_t FilesInFolder() const {
    return std::distance(std::filesystem::directory_iterator(folder_.Path()), {});
  }
  // A handler that records the progress.
  ProgressHandle Listen(const string& prefix = "") {
    return files_->OnProgress(
        [this, prefix](std::int32_t percent) { log_ += prefix + std::to_string(percent) + " "; });
  }
  // The progress recorded since the last call.
  string Log() { return std::exchange(log_, ""); }

  TemporaryFolder folder_;
  std::shared_ptr<clsKeltrun2> root_ = NewRoot(Mode::kEnglishTexts);
  std::shared_ptr<clsFileControl> files_ = root_->FileControl();
  string log_;
};

TEST_F(FileControl, LoadsByExtensionAndContentOrSaysWhyNot) {
  const string xml = Event("Cup"), si = "a\r\nb\r\nSPORTident results", old = "$LAPFILE Ver=2\r\n";
  const string open = "OPEN_ERROR", append_only = "APPEND_ONLY";
  const struct {
    string name, bytes;
    string message = "", operation = "", told = "";  // the error text, "" for a file that loads
    KrLapFileLoadModeCosnt mode = KR_LOADMODE_NORMAL;
  } kCases[] = {
      {"a.LXM", xml},
      {"a.txt", xml},
      {"a.xml", "<?xml?><ResultList/>", open, "LoadKeltrun2", "a.xml"},
      {"a.lxm", old, open, "LoadKeltrun2", "a.lxm"},
      {"a.lap", old, open, "LoadKeltrun1", "a.lap"},
      {"a.txt", si, open, "LoadSportIdent", "a.txt"},
      {"a.txt", "a\nSplit times of\n1.,A\n", open, "LoadOEvent", "line 3"},
      {"a.txt", "$IMPORT_ONLY", append_only},
      {"a.txt", "$IMPORT_ONLY", append_only, "", "", KR_LOADMODE_MERGE_ID},  // bit 0 is clear
      {"a.lzh", "-lh5-", open, "ExtractArchive", "a.lzh"},
      {"a.txt", "a\r\nb\r\n", "DETECT_ERROR", "DetectFileType"},
      // Archives under other names.
      {"a.lxm", Archived("-lh5-"), open, "LoadKeltrun2", "a.lxm is an LZH archive"},
      {"a.txt", Archived("-lh5-"), open, "DetectFileType", "has to end in .lzh"},
      {"a.csv", "PK\3\4" + string(20, 'x'), open, "DetectFileType", "is a ZIP archive"},
      {"a.lzh", "PK\3\4" + string(20, 'x'), open, "ExtractArchive", "is a ZIP archive"}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name + c.operation + c.told);
    root_->Clear();
    const string name = File(c.name, c.bytes);
    EXPECT_EQ(files_->LoadLapFile(name, KR_FILETYPE_AUTODETECT, c.mode), c.message.empty());
    EXPECT_EQ(root_->ClassCount(), c.message.empty() ? 3 : 0);
    string expected = c.message.empty() ? "" : ResourceText("RES_MESSAGE_FILE_" + c.message);
    if (!c.operation.empty()) expected += "\r\nclsFileControl." + c.operation;
    EXPECT_EQ(root_->ErrorComment().substr(0, expected.size()), expected);
    EXPECT_EQ(root_->ErrorComment().size() == expected.size(), c.told.empty());
    EXPECT_TRUE(Contains(root_->ErrorComment(), c.told)) << root_->ErrorComment();
  }
  EXPECT_TRUE(files_->LoadLapFile(File("noextension", xml), KR_FILETYPE_KELTRUN2));
  EXPECT_FALSE(files_->LoadLapFile(folder_.Path("missing.txt")));
  EXPECT_TRUE(Contains(root_->ErrorComment(), "missing.txt")) << root_->ErrorComment();
  EXPECT_TRUE(files_->LoadLapFile(File("import", "$IMPORT_ONLY\r\nNAME"), KR_FILETYPE_AUTODETECT,
                                  KR_LOADMODE_APPEND));
  // A file type that can only be written.
  EXPECT_FALSE(files_->LoadLapFile(File("a.lxm", xml), KR_FILETYPE_IOF_XML_20_RESULT));
  EXPECT_EQ(root_->ErrorComment(), "");
}

TEST_F(FileControl, LinesMayEndInLfAlone) {
  const string print = ReadBytes(DataFile("midorigaoka/sportident.txt"));  // "OE2003" in line 4
  ASSERT_TRUE(files_->LoadLapFile(File("lf.txt", WithoutReturns(print)))) << root_->ErrorComment();
  EXPECT_EQ(root_->ClassCount(), 11);
  ASSERT_TRUE(Load(Event("Cup"))) << "with CR LF";
  ASSERT_TRUE(Load(WithoutReturns(Event("Cup")) + "\n")) << root_->ErrorComment();
  EXPECT_EQ(root_->ClassCount(), 3);
  ASSERT_TRUE(files_->LoadLapFile(File("lf.txt", "$IMPORT_ONLY\nNAME,CLUB\nAnna,Green\n"),
                                  KR_FILETYPE_AUTODETECT, KR_LOADMODE_APPEND));
  EXPECT_EQ(root_->ClassCount(), 3) << "an import updates runners and adds no class";
  EXPECT_EQ(root_->ClassData("B")->LapData(1)->ClubName, "Green");
}

TEST_F(FileControl, ImportsCountTheRunnersThatTheEventDoesNotHave) {
  ASSERT_TRUE(Load(Event("Cup")));
  const string names = "$IMPORT_ONLY,\nNAME,CLUB\nAnna,Green\nNobody,Red\nNo One,Red\n";
  ASSERT_TRUE(
      files_->LoadLapFile(File("i.txt", names), KR_FILETYPE_AUTODETECT, KR_LOADMODE_APPEND));
  ASSERT_EQ(files_->LoadRemarks().size(), 1U);
  EXPECT_EQ(files_->LoadRemarks()[0].Text,
            "name \"Nobody\": the first of 2 lines with a name that no runner of the event has");
}

TEST_F(FileControl, ClassesOfAFileThatBecomeOneAreARemark) {
  const string list = File("a.csv", "CLASS,NAME,TIME\r\nH21,Ann,1:00:00\r\nh21,Bob,1:00:01\r\n");
  for (const auto mode : {KR_LOADMODE_NORMAL, KR_LOADMODE_MERGE_NAME}) {
    ASSERT_TRUE(files_->LoadLapFile(list, KR_FILETYPE_AUTODETECT, mode));
    EXPECT_EQ(root_->ClassData(1)->LapCount(), 2);
    // A merge joins classes of the same name on purpose.
    ASSERT_EQ(files_->LoadRemarks().size(), 1U);
    EXPECT_TRUE(files_->LoadRemarks()[0].Text.starts_with(
        R"(class "h21": is merged with the class "H21")"));
  }
}

TEST_F(FileControl, ListsTellTheirCharsetOrAreToldIt) {
  const string list =
      File("a.csv", "CLASS,NAME,TIME\r\nH21,J\xF6rg M\xFCller,1:00:00\r\nH21,Anna,1:00:01\r\n");
  const auto read = [&](const string& charset) {
    files_->SetInputCharset(charset);
    EXPECT_TRUE(files_->LoadLapFile(list)) << root_->ErrorComment();
    string text = root_->ClassData(1)->LapData(1)->RunnerName;
    for (const LoadRemark& remark : files_->LoadRemarks()) text += "|" + remark.Text.substr(0, 50);
    return text;
  };
  EXPECT_EQ(read(""), "Jörg Müller|encoding: neither UTF-8 nor Shift-JIS, read as Win");
  EXPECT_EQ(read("ISO-8859-1"), "Jörg Müller");
  EXPECT_EQ(read("utf-8"),
            "J\uFFFDrg M\uFFFDller|encoding: from here on, bytes that are not UTF-8 a");
  EXPECT_EQ(files_->LoadRemarks()[0].Line, 2);
  EXPECT_THROW(files_->SetInputCharset("klingon"), AutomationError);
  EXPECT_EQ(files_->InputCharset(), "utf-8");
}

TEST_F(FileControl, LoadModesMergeOrReplaceAndFailuresClearOnlyInNormalMode) {
  const Rows<KrLapFileLoadModeCosnt, string, string> cases = {
      {KR_LOADMODE_NORMAL, "New", "new"},
      {KR_LOADMODE_APPEND, "Old", "new old"},  // equal results: the one added last comes first
      {KR_LOADMODE_MERGE_ID, "Old", "old"},
      {KR_LOADMODE_MERGE_NAME | KR_LOADMODE_PRIORITY_NEWDATA, "Old", "new"},
      {KR_LOADMODE_NOTADD_NEWDATA, "Old", "old"}};
  const auto loaded = [&] {
    string text = root_->FileName() + root_->EventData()->EventName;
    text += std::to_string(root_->ClassCount());
    const auto b = root_->ClassData("B");
    for (int i = 1; b && i <= b->LapCount(); ++i) text += " " + b->LapData(i)->ClubName;
    return text;
  };
  const string bad = File("bad.lxm", "<keltrun>");
  for (const auto& [mode, name, clubs] : cases) {
    ASSERT_TRUE(Load(Event("Old", "old")));
    ASSERT_TRUE(Load(Event("New", "new"), mode));
    const string expected = "text" + name + "3 " + clubs;
    EXPECT_EQ(loaded(), expected);
    EXPECT_FALSE(files_->LoadLapFile(bad, KR_FILETYPE_AUTODETECT, mode));
    EXPECT_EQ(loaded(), mode == KR_LOADMODE_NORMAL ? "0" : expected);
  }
}

// Runners of class M, each with name, result and rank.
string ClassFile(const string& runners) {
  string file = "<keltrun><classes><class name=\"M\">";
  for (const auto& [name, result, rank] : Table<3>(runners)) {
    file.append("<runner name=\"").append(name).append("\" result=\"").append(result);
    file.append("\" rank=\"").append(rank).append("\"/>");
  }
  return file + "</class></classes></keltrun>";
}

TEST_F(FileControl, MergesRenewRanksThatWereThoseOfTheResults) {
  constexpr auto kName = KR_LOADMODE_MERGE_NAME;
  const string late = "L 0:09:00 \"\"";
  const Rows<string, string, KrLapFileLoadModeCosnt, string> cases = {
      {"A 0:10:00 1 | B 0:11:00 2 | C 0:11:00 2 | D MP \"\"", late, kName, "A2 B3 C3 D L1"},
      {"A 0:10:00 1 | B 0:11:00 2", "L 0:10:30 1", KR_LOADMODE_APPEND, "A1 B3 L2"},
      {"A 0:10:00 1 | B 0:11:00 2", "B 0:09:00 7", kName | KR_LOADMODE_PRIORITY_NEWDATA, "A2 B1"},
      {"A \"\" \"\" | B 0:11:00 1", "A 0:09:00 \"\"", kName, "A1 B2"},
      // A guest without a rank, a tie that was decided, a word: these are kept and may be outdated.
      {"A 0:10:00 \"\" | B 0:11:00 1", late, kName, "A B1 L stale"},
      {"A 0:10:00 1 | B 0:10:00 2", late, kName, "A1 B2 L stale"},
      {"A 0:10:00 1 | B MP -", late, kName, "A1 B- L stale"},
      {"A 0:10:00 \"\" | B 0:11:00 1", "A \"\" 5", kName, "A5 B1 stale"},
      {"A 0:10:00 \"\"", "L 0:09:00 1", kName, "A L1 stale"},
      // Nothing to report: no runner has a rank, nothing changes, or the class is new.
      {"A 0:10:00 \"\" | B 0:11:00 \"\"", late, kName, "A B L"},
      {"A 0:10:00 3 | B 0:11:00 1", "A 0:09:00 4 | B 0:12:00 4", kName, "A3 B1"},
      {"", "A 0:10:00 5", kName, "A5"}};
  const auto merged = [&](const string& event, const string& import, KrLapFileLoadModeCosnt mode) {
    const string file = event.empty() ? "<keltrun/>" : ClassFile(event);
    EXPECT_TRUE(files_->LoadLapFile("", KR_FILETYPE_KELTRUN2, KR_LOADMODE_NORMAL, file));
    EXPECT_TRUE(files_->LoadLapFile("", KR_FILETYPE_KELTRUN2, mode, ClassFile(import)));
    std::set<string> ranks;
    const auto klass = root_->ClassData("M");
    for (std::int32_t i = 1; i <= klass->LapCount(); ++i) {
      ranks.insert(klass->LapData(i)->RunnerName + klass->LapData(i)->Rank);
    }
    for (const LoadRemark& remark : files_->LoadRemarks()) {
      EXPECT_TRUE(remark.Text.starts_with("class \"M\": the official ranks may be stale"));
      ranks.insert("stale");
    }
    string text;
    for (const string& rank : ranks) text += (text.empty() ? "" : " ") + rank;
    return text;
  };
  EXPECT_EQ(merged("A 0:10:00 1", late, kName) + merged("A 0:10:00 8", late, kName), "A1 LA8 L");
  files_->SetRenewRanks(true);
  for (const auto& [event, import, mode, expected] : cases) {
    EXPECT_EQ(merged(event, import, mode), expected) << event << " + " << import;
  }
}

TEST_F(FileControl, ProgressRunsFrom0To100ForEveryHandler) {
  ProgressHandle second;
  files_->OnProgress([&, calls = 0](std::int32_t) mutable {  // a handler keeps its state
    if (++calls == 2) second.Detach();  // the second is still called for this event
  });
  Listen("a");
  second = Listen("b");
  EXPECT_TRUE(Load(Event("Cup")));
  EXPECT_EQ(Log(), "a0 b0 a33 b33 a67 a100 ");
  for (const string& file : {File("bad.lxm", "<keltrun>"), folder_.Path("missing.lxm")}) {
    EXPECT_FALSE(files_->LoadLapFile(file));
    EXPECT_EQ(Log(), "a0 a100 ") << "also on errors";
  }
}

TEST_F(FileControl, AnExceptionOfAHandlerComesBackAfterTheEnd) {
  Listen();
  const Rows<int, string, int> cases = {{0, "0 100 ", 0}, {67, "0 33 67 100 ", 1}};
  for (const auto& [at, log, classes] : cases) {
    auto thrower = files_->OnProgress([stop = at](std::int32_t percent) {
      if (percent == stop) throw std::out_of_range("stop");
    });
    EXPECT_THROW(Load(Event("Cup")), std::out_of_range);
    thrower.Detach();
    EXPECT_EQ(Log(), log);
    EXPECT_TRUE(Contains(root_->ErrorComment(), "clsFileControl.LoadKeltrun2\r\n"));
    EXPECT_EQ(root_->ClassCount(), classes) << "what was added before stays";
    EXPECT_TRUE(Load(Event("Cup")));
    Log();
  }
  auto at_end = files_->OnProgress([](std::int32_t percent) {
    if (percent == 100) throw std::out_of_range("stop");
  });
  EXPECT_THROW(static_cast<void>(files_->LoadLapFile(folder_.Path("missing.lxm"))),
               std::out_of_range);
  at_end.Detach();
  EXPECT_TRUE(Load(Event("Cup")));
}

TEST_F(FileControl, AHandlerCannotStartAnotherOperation) {
  files_->OnProgress([&](std::int32_t percent) {
    if (percent != 67) return;
    EXPECT_FALSE(Load(Event("Inner")));
    EXPECT_FALSE(files_->OutputHtml(folder_.Path("site"), "index.html"));
  });
  EXPECT_TRUE(Load(Event("Outer")));
  EXPECT_EQ(root_->EventData()->EventName + std::to_string(root_->ClassCount()), "Outer3");
  EXPECT_EQ(FilesInFolder(), 0);
}

// A host whose progress window records what happens to it.
struct LoggedWindows : HostWindows {
  struct Window : frmProgressBar {
    explicit Window(string& log) : log_(log) {}
    ~Window() override { log_ += "close "; }
    void SetPercent(std::int32_t Percent) override { log_ += "w" + std::to_string(Percent) + " "; }
    string& log_;
  };
  explicit LoggedWindows(string& log) : log_(log) {}
  std::unique_ptr<frmProgressBar> OpenProgress(std::string_view Caption) override {
    log_ += "open " + string(Caption) + " ";
    return std::make_unique<Window>(log_);
  }
  std::optional<std::size_t> ChooseName(std::string_view, const std::vector<string>&) override {
    return {};
  }
  bool AskYesNo(std::string_view, std::string_view) override { return false; }
  string& log_;
};

TEST_F(FileControl, TheProgressWindowFollowsWhenItIsWanted) {
  Listen();
  SetHostWindows(std::make_shared<LoggedWindows>(log_));
  Load(Event("Cup"));
  EXPECT_EQ(Log(), "0 33 67 100 ");
  files_->SetProgressVisible(true);
  Load(Event("Cup"));
  EXPECT_EQ(Log(), "open Please wait... 0 33 w33 67 w67 w100 close 100 ");
  EXPECT_FALSE(files_->LoadLapFile(folder_.Path("missing.lxm")));
  EXPECT_EQ(Log(), "open Please wait... 0 close 100 ");
}

TEST_F(FileControl, FiltersAgreeWithTheSaveModes) {
  for (const Mode mode : {Mode::kEnglishTexts, Mode::kJapaneseTexts}) {
    RestartIn(mode);
    const std::regex description("[^|]+\\|([^|]+)\\|?");
    EXPECT_EQ(std::regex_replace(files_->FileSaveFilter(), description, "$1 "),
              "*.lxm *.lap *.xml *.lzh *.* ");
    EXPECT_TRUE(Contains(files_->FileLoadFilter(), "|*.lxm;*.xml|"));
  }
  const Rows<double, KrLapFileTypeConst> modes = {
      {1, KR_FILETYPE_KELTRUN2},  {2, KR_FILETYPE_KELTRUN1}, {3, KR_FILETYPE_IOF_XML_20_RESULT},
      {4, KR_FILETYPE_KELTRUN2},  {5, KR_FILETYPE_KELTRUN2}, {2.5, KR_FILETYPE_AUTODETECT},
      {6, KR_FILETYPE_AUTODETECT}};
  for (const auto& [index, type] : modes) EXPECT_EQ(files_->FileSaveMode(index), type) << index;
}

TEST_F(FileControl, SavesByTypeAndExtensionOrSaysWhyNot) {
  ASSERT_TRUE(Load(Event("Cup")));
  std::filesystem::create_directory(folder_.Path("folder.lxm"));
  const Rows<string, KrLapFileTypeConst, string, string> cases = {
      // the error text contains, the file contains
      {"a.lxm", KR_FILETYPE_AUTODETECT, "", "<keltrun "},
      {"noextension", KR_FILETYPE_AUTODETECT, "", "<keltrun "},
      {"a.xml", KR_FILETYPE_KELTRUN2, "", "<keltrun "},
      {"a.lap", KR_FILETYPE_OEVENT, "", "<keltrun "},
      {"b.LAP", KR_FILETYPE_AUTODETECT, "", "$LAPFILE Ver=2\r\n$LAPFILE Rev=4\r\n"},
      {"b.XML", KR_FILETYPE_AUTODETECT, "", "<ResultList status=\"complete\">"},
      {"b.lxm", KR_FILETYPE_KELTRUN1, "", "$LAPFILE Ver=2\r\n"},
      {"b.lzh", KR_FILETYPE_AUTODETECT, "", "-lh5-"},
      {"none/a.lxm", KR_FILETYPE_AUTODETECT, "none/a.lxm", ""},
      {"folder.lxm", KR_FILETYPE_AUTODETECT, "clsFileControl.SaveKeltrun2\r\n", ""},
      {"/dev/full", KR_FILETYPE_AUTODETECT, "/dev/full", ""}};
  for (const auto& [name, type, told, held] : cases) {
    EXPECT_EQ(files_->SaveLapFile(folder_.Path(name), type), told.empty()) << name;
    EXPECT_TRUE(Contains(root_->ErrorComment(), told)) << root_->ErrorComment();
    EXPECT_TRUE(held.empty() || Contains(ReadBytes(folder_.Path(name)), held)) << name;
  }
  // The archive is read again; the lap file in it has its own name.
  EXPECT_TRUE(files_->LoadLapFile(folder_.Path("b.lzh"))) << root_->ErrorComment();
  EXPECT_TRUE(root_->FileName().ends_with("/b.lxm")) << root_->FileName();
  EXPECT_EQ(root_->EventData()->EventName, "Cup");
  root_->SetFileName("text");
  EXPECT_FALSE(files_->SaveLapFile(""));
  EXPECT_EQ(root_->FileName(), "text");
  EXPECT_EQ(FilesInFolder(), 9) << "eight files, the folder and no temporary file";
}

TEST_F(FileControl, NothingIsReplacedByAFileTooLargeToBeReadAgain) {
  ASSERT_TRUE(Load(Event("Cup")));
  root_->EventData()->Memo = string((64U << 20) + 1, 'm');
  for (const char* name : {"a.lap", "a.lzh"}) {
    const string existing = File(name, "precious");
    EXPECT_FALSE(files_->SaveLapFile(existing)) << name;
    EXPECT_TRUE(Contains(root_->ErrorComment(), "64 MiB")) << root_->ErrorComment().substr(0, 200);
    EXPECT_EQ(ReadBytes(existing), "precious");
  }
  // Large, but not too large for a native file, even without the extension of one.
  ASSERT_TRUE(files_->SaveLapFile(folder_.Path("a"))) << root_->ErrorComment().substr(0, 200);
  ASSERT_TRUE(files_->LoadLapFile(folder_.Path("a"))) << root_->ErrorComment().substr(0, 200);
  EXPECT_EQ(root_->EventData()->Memo.size(), (64U << 20) + 1);
  // A large file that is not a native one.
  EXPECT_FALSE(files_->LoadLapFile(File("large.txt", string((64U << 20) + 1, 'm'))));
  EXPECT_TRUE(Contains(root_->ErrorComment(), "large.txt is larger than a list can be"));
}

TEST_F(FileControl, SavingTellsWhatTheFormDoesNotHold) {
  const auto a = root_->AddClass("Ä10");
  a->CourseNum = a->ControlCount = 1;
  a->Length = 4000;
  const auto anna = AddRunner(*a, "Anna van Dyk", "DNF", {60.5, -2, 0.3});
  anna->Ecard = 7;
  anna->Rank = "(1)";
  anna->ClubName = "OK, Brno";
  AddRunner(*a, "Bob", "", {});
  root_->AddClass("Ö10");
  root_->AddCourse(1)->SetControlCount(1);
  root_->AddCourse(2);
  root_->EventData()->Memo = "memo";
  const auto told = [&](const string& name) {
    EXPECT_TRUE(files_->SaveLapFile(folder_.Path(name))) << root_->ErrorComment();
    string texts;
    for (const LoadRemark& remark : files_->SaveRemarks()) texts += remark.Text + "\n";
    return texts;
  };
  EXPECT_EQ(told("a.lap"), R"(class "Ä10": runners without legs: 1, not written
class "Ö10": has neither controls nor runners with legs, not written
courses with their controls: 2, not written, the format has no place for them
card numbers: 1, not written, the format has no place for them
runners with disqualified legs: 1, written as legs without data
runners with laps under half a second: 1, written as legs without data
runners with laps in fractions of a second: 1, rounded to whole seconds
text "Ä10": has characters that Shift-JIS does not have, written as "?" (and 1 more)
text "OK, Brno": has commas or line breaks, written as other characters
class "Ö10": is written as "?10" like the class "Ä10", they will be read as one
)");
  EXPECT_EQ(told("a.xml"), R"(class "Ä10": runners without a result: 1, not written
course "2": no class with results runs it, not written
results other than times and DNS: 1, all written as Disqualified
runners with legs that were skipped, have no data or are disqualified: 1, the format does not say which
ranks that are not numbers: 1, all written as NotCompeting
names of more than two parts: 1, only the first two parts are written
runners with laps in fractions of a second: 1, rounded to whole seconds
terrain, memo and file name of the event: not written, the format has no place for them
)");
  EXPECT_EQ(told("a.lxm"),
            "runners with laps in fractions of a second: 1, rounded to whole seconds\n");
  EXPECT_FALSE(files_->SaveLapFile(folder_.Path("none/a.lap")));
  EXPECT_TRUE(files_->SaveRemarks().empty());
}

TEST_F(FileControl, ADiskThatFillsUpLeavesTheFileAsItWas) {
  ASSERT_TRUE(files_->LoadLapFile(ExampleFile("midorigaoka/event.lxm")));
  const string existing = File("a.lxm", "precious");
  // A limit on the size of files takes the place of a full disk.
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  const rlimit small{4096, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  EXPECT_FALSE(files_->SaveLapFile(existing));
  setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ(ReadBytes(existing), "precious");
  EXPECT_EQ(FilesInFolder(), 1);
  EXPECT_TRUE(files_->SaveLapFile(existing));
}

}  // namespace
}  // namespace keltrun::test
