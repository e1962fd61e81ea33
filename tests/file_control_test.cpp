// The file service: which kind a file is, dispatch, load modes, progress, error texts, saving.
#include "keltrun2/api/file_control.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <stdexcept>

#include "keltrun2/config/settings.h"
#include "keltrun2/io/detect.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using Names = std::vector<std::string>;

bool Contains(const std::string& text, std::string_view part) {
  return text.find(part) != std::string::npos;
}

// --- detection ---

struct Detection {
  KrLapFileTypeConst type;
  Names texts;
};

TEST(Detection, OfAFile) {
  const Detection kCases[] = {
      {KR_FILETYPE_KELTRUN1,
       {"$LAPFILE Ver=2", "xml $LAPFILE Ver=2;\r\na\r\nb", "$IMPORT_ONLY \r\nNAME\r\nx",
        "<?XML?>\r\na\r\nb", "Split times of\r\na\r\nb", "a\r\nb\r\nOE2003\r\nc", "a\r\nb\r\nc"}},
      {KR_FILETYPE_IMPORT_ONLY, {"$IMPORT_ONLY", "$import_Only\r\nNAME\r\nx"}},
      {KR_FILETYPE_KELTRUN2, {"<?xml version=\"1.0\"?>", "a\n<?xml?>\nb"}},
      {KR_FILETYPE_OEVENT, {"a\r\nSplit times of M21A", "a\rSplit times of M21A\r"}},
      {KR_FILETYPE_SPORTIDENT,
       {"a\r\n\r\nthe SPORTident results\r\n", "a\rb\rSPORTident results\r",
        "a\r\nb\r\nc\r\nOE2003;"}},
      {KR_FILETYPE_UNKNOWN, {"a\r\nb", "a\r\nb\r\n", "a", ""}}};
  for (const Detection& c : kCases) {
    for (const std::string& text : c.texts) {
      std::string converted;
      EXPECT_EQ(DetectFileTextType(text, converted), c.type) << text;
      EXPECT_EQ(c.type == KR_FILETYPE_UNKNOWN ? "" : converted, "") << text;
    }
  }
}

TEST(Detection, OfAFileWhoseLinesEndInLineFeedsAlone) {
  // The whole file reads as one line and is examined again as a text, which knows fewer marks.
  const struct {
    KrLapFileTypeConst type;
    const char *text, *converted;
  } kCases[] = {
      {KR_FILETYPE_SPORTIDENT, "a\nb\nSPORTident results", "a\r\nb\r\nSPORTident results"},
      {KR_FILETYPE_OEVENT, "a\nSplit times of\nb\n", "a\r\nSplit times of\r\nb\r\n"},
      {KR_FILETYPE_KELTRUN1, "$IMPORT_ONLY\nNAME\nx", "$IMPORT_ONLY\r\nNAME\r\nx"},
      {KR_FILETYPE_KELTRUN1, "a\nb\nc\nOE2003", "a\r\nb\r\nc\r\nOE2003"}};
  for (const auto& c : kCases) {
    std::string converted;
    EXPECT_EQ(DetectFileTextType(c.text, converted), c.type) << c.text;
    EXPECT_EQ(converted, c.converted);
  }
}

TEST(Detection, OfAText) {
  const Detection kCases[] = {
      {KR_FILETYPE_UNKNOWN, {"a\r\nb", "$LAPFILE Ver=2\r\n<?xml?>", "a\nSplit times of\nb", "a"}},
      {KR_FILETYPE_KELTRUN1,
       {"xml $LAPFILE Ver=2\r\na\r\nb", "$IMPORT_ONLY\r\nNAME\r\nx", "a\r\nb\r\nc\r\nOE2003"}},
      {KR_FILETYPE_KELTRUN2, {"<?xml?>\r\nSplit times of\r\nSPORTident results"}},
      {KR_FILETYPE_OEVENT, {"a\r\nSplit times of\r\nSPORTident results"}},
      {KR_FILETYPE_SPORTIDENT, {"a\r\nb\r\nSPORTident results"}}};
  for (const Detection& c : kCases) {
    for (std::string text : c.texts) {
      const std::string before = text;
      EXPECT_EQ(DetectTextType(text), c.type) << text;
      EXPECT_EQ(text, before);
    }
  }
  std::string text = "a\rb\rSPORTident results\r";  // lines that end in CR alone are rewritten
  EXPECT_EQ(DetectTextType(text), KR_FILETYPE_SPORTIDENT);
  EXPECT_EQ(text, "a\r\nb\r\nSPORTident results\r\n");
}

// --- loading ---

// Three classes; the second has a runner of the name and number given.
std::string Event(const std::string& header, const std::string& club) {
  return "<?xml version=\"1.0\"?>\r\n<keltrun><event name=\"" + header +
         "\"/>\r\n<classes><class name=\"A\"/><class name=\"B\"><runner name=\"Anna\" id=\"7\" "
         "club=\"" +
         club + "\"/></class><class name=\"C\"/></classes></keltrun>\r\n";
}

class FileControl : public ::testing::Test {
 protected:
  bool Load(KrLapFileLoadModeCosnt mode, const std::string& text) {
    return files_->LoadLapFile("text", KR_FILETYPE_AUTODETECT, mode, text);
  }
  std::string File(std::string_view name, std::string_view bytes) {
    WriteBytes(folder_.Path(name), bytes);
    return folder_.Path(name);
  }
  std::size_t FilesInFolder() const {
    const std::filesystem::directory_iterator files(folder_.Path());
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
  }
  void Record(std::string_view entry) { log_.emplace_back(entry); }

  TemporaryFolder folder_;
  std::shared_ptr<clsKeltrun2> root_ = NewRoot(Mode::kEnglishTexts);
  std::shared_ptr<clsFileControl> files_ = root_->FileControl();
  Names log_;
};

TEST_F(FileControl, DispatchesByTypeExtensionAndContent) {
  const std::string xml = Event("Cup", "x");
  const char* const kNotRead = "cannot read";
  const struct {
    const char *name, *bytes;
    KrLapFileTypeConst type;
    KrLapFileLoadModeCosnt mode;
    const char* operation;   // in the error text; "" for a file that loads
    const char* named = "";  // the format that the error text names
  } kCases[] = {{"a.LXM", xml.c_str(), KR_FILETYPE_AUTODETECT, KR_LOADMODE_NORMAL, ""},
                {"a.txt", xml.c_str(), KR_FILETYPE_AUTODETECT, KR_LOADMODE_APPEND, ""},
                {"noextension", xml.c_str(), KR_FILETYPE_KELTRUN2, KR_LOADMODE_NORMAL, ""},
                {"a.xml", "<?xml version=\"1.0\"?><ResultList/>", KR_FILETYPE_AUTODETECT,
                 KR_LOADMODE_NORMAL, "clsFileControl.LoadKeltrun2"},
                {"a.lxm", "$LAPFILE Ver=2\r\n", KR_FILETYPE_AUTODETECT, KR_LOADMODE_NORMAL,
                 "clsFileControl.LoadKeltrun2"},
                {"a.lap", "$LAPFILE Ver=2\r\n", KR_FILETYPE_AUTODETECT, KR_LOADMODE_NORMAL,
                 "clsFileControl.LoadKeltrun1", "previous generation"},
                {"a.txt", "a\r\nb\r\nSPORTident results", KR_FILETYPE_AUTODETECT,
                 KR_LOADMODE_NORMAL, "clsFileControl.LoadSportIdent", "SPORTident"},
                {"a.txt", "a\nSplit times of\nb", KR_FILETYPE_AUTODETECT, KR_LOADMODE_NORMAL,
                 "clsFileControl.LoadOEvent", "OEvent"},
                {"a.txt", "$IMPORT_ONLY", KR_FILETYPE_AUTODETECT, KR_LOADMODE_APPEND,
                 "clsFileControl.LoadImportOnly", "import-only"},
                {"a.lzh", "-lh5-", KR_FILETYPE_AUTODETECT, KR_LOADMODE_NORMAL, "", "LZH"}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(std::string(c.name) + c.operation);
    const bool good = *c.operation == '\0' && *c.named == '\0';
    EXPECT_EQ(files_->LoadLapFile(File(c.name, c.bytes), c.type, c.mode), good);
    const std::string error = root_->ErrorComment();
    EXPECT_EQ(error.empty(), good) << error;
    EXPECT_TRUE(Contains(error, c.operation)) << error;
    EXPECT_TRUE(Contains(error, c.named)) << error;
    EXPECT_EQ(Contains(error, kNotRead), *c.named != '\0' && *c.operation != '\0') << error;
    EXPECT_EQ(root_->ClassCount(), good ? 3 : 0);
  }
}

TEST_F(FileControl, WhatIsNoLapFileTypeAnswersFalseWithoutAText) {
  for (const auto type : {KR_FILETYPE_IOF_XML_20_RESULT, static_cast<KrLapFileTypeConst>(99)}) {
    files_->LoadLapFile("missing.lxm");
    ASSERT_NE(root_->ErrorComment(), "");
    EXPECT_FALSE(files_->LoadLapFile(File("a.lxm", Event("Cup", "x")), type));
    EXPECT_EQ(root_->ErrorComment(), "");
  }
}

TEST_F(FileControl, ErrorTexts) {
  const std::string open = ResourceText("RES_MESSAGE_FILE_OPEN_ERROR") + "\r\n";
  ASSERT_FALSE(files_->LoadLapFile(File("a.txt", "a\r\nb\r\n")));
  EXPECT_EQ(root_->ErrorComment(),
            ResourceText("RES_MESSAGE_FILE_DETECT_ERROR") + "\r\nclsFileControl.DetectFileType");
  ASSERT_FALSE(Load(KR_LOADMODE_NORMAL, "only one line"));
  EXPECT_EQ(root_->ErrorComment(),
            ResourceText("RES_MESSAGE_FILE_DETECT_ERROR") + "\r\nclsFileControl.DetectFileType");
  ASSERT_FALSE(files_->LoadLapFile(folder_.Path("missing.lxm")));
  EXPECT_EQ(root_->ErrorComment().find(open + "clsFileControl.LoadKeltrun2\r\n"), 0u);
  EXPECT_TRUE(Contains(root_->ErrorComment(), "missing.lxm"));
  ASSERT_FALSE(files_->LoadLapFile(folder_.Path("missing.txt")));
  EXPECT_TRUE(Contains(root_->ErrorComment(), "missing.txt"));
  for (const auto mode : {KR_LOADMODE_NORMAL, KR_LOADMODE_MERGE_ID}) {  // bit 0 is clear
    ASSERT_FALSE(
        files_->LoadLapFile(File("a.txt", "$IMPORT_ONLY\r\n"), KR_FILETYPE_AUTODETECT, mode));
    EXPECT_EQ(root_->ErrorComment(), ResourceText("RES_MESSAGE_FILE_APPEND_ONLY"));
  }
  EXPECT_TRUE(Load(KR_LOADMODE_NORMAL, Event("Cup", "x")));
  EXPECT_EQ(root_->ErrorComment(), "");
}

TEST_F(FileControl, LoadModesMergeOrReplace) {
  const struct {
    KrLapFileLoadModeCosnt mode;
    const char *header, *club;
    std::int32_t runners;
  } kCases[] = {
      {KR_LOADMODE_NORMAL, "New", "new", 1},
      {KR_LOADMODE_APPEND, "Old", "new", 2},  // equal results: the one added last comes first
      {KR_LOADMODE_MERGE_ID, "Old", "old", 1},
      {KR_LOADMODE_MERGE_NAME | KR_LOADMODE_PRIORITY_NEWDATA, "Old", "new", 1},
      {KR_LOADMODE_NOTADD_NEWDATA, "Old", "old", 1}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.mode);
    ASSERT_TRUE(Load(KR_LOADMODE_NORMAL, Event("Old", "old")));
    ASSERT_TRUE(Load(c.mode, Event("New", "new")));
    EXPECT_EQ(root_->EventData()->EventName, c.header);
    EXPECT_EQ(root_->ClassCount(), 3);
    ASSERT_EQ(root_->ClassData("B")->LapCount(), c.runners);
    EXPECT_EQ(root_->ClassData("B")->LapData(1)->ClubName, c.club);
  }
}

TEST_F(FileControl, AFailedLoadClearsTheModelOnlyInNormalMode) {
  ASSERT_TRUE(files_->LoadLapFile(File("good.lxm", Event("Old", "old"))));
  const std::string bad = File("bad.lxm", "<keltrun>");
  EXPECT_FALSE(files_->LoadLapFile(bad, KR_FILETYPE_AUTODETECT, KR_LOADMODE_APPEND));
  EXPECT_EQ(root_->ClassCount(), 3);
  EXPECT_EQ(root_->FileName(), folder_.Path("good.lxm"));
  EXPECT_FALSE(files_->LoadLapFile(bad));
  EXPECT_EQ(root_->ClassCount(), 0);
  EXPECT_EQ(root_->FileName() + root_->EventData()->EventName, "");
}

// --- progress ---

TEST_F(FileControl, ProgressRunsFrom0To100AlsoOnErrors) {
  files_->OnProgress([&](std::int32_t percent) { Record(std::to_string(percent)); });
  EXPECT_TRUE(Load(KR_LOADMODE_NORMAL, Event("Cup", "x")));
  EXPECT_EQ(log_, (Names{"0", "33", "67", "100", "100"}));
  for (const std::string& file : {File("bad.lxm", "<keltrun>"), folder_.Path("missing.lxm")}) {
    log_.clear();
    EXPECT_FALSE(files_->LoadLapFile(file));
    EXPECT_EQ(log_, (Names{"0", "100"}));
  }
}

TEST_F(FileControl, SeveralHandlersAndDetaching) {
  ProgressHandle second;
  files_->OnProgress([&](std::int32_t percent) {
    Record("a" + std::to_string(percent));
    if (percent == 33) second.Detach();  // the second still hears of this event
  });
  second = files_->OnProgress([&](std::int32_t percent) { Record("b" + std::to_string(percent)); });
  EXPECT_TRUE(Load(KR_LOADMODE_NORMAL, Event("Cup", "x")));
  EXPECT_EQ(log_, (Names{"a0", "b0", "a33", "b33", "a67", "a100", "a100"}));
  second.Detach();
}

TEST_F(FileControl, AHandlerKeepsWhatItRemembers) {
  files_->OnProgress([this, calls = 0](std::int32_t) mutable { Record(std::to_string(++calls)); });
  EXPECT_TRUE(Load(KR_LOADMODE_NORMAL, Event("Cup", "x")));
  EXPECT_EQ(log_, (Names{"1", "2", "3", "4", "5"}));
}

TEST_F(FileControl, AnExceptionOfAHandlerComesBackAfterTheEnd) {
  const struct {
    std::int32_t at;
    Names log;
    std::int32_t classes;
  } kCases[] = {{0, {"0", "100"}, 0}, {67, {"0", "33", "67", "100"}, 1}};
  for (const auto& c : kCases) {
    log_.clear();
    auto thrower = files_->OnProgress([&](std::int32_t percent) {
      Record(std::to_string(percent));
      if (percent == c.at) throw std::out_of_range("stop");
    });
    EXPECT_THROW(Load(KR_LOADMODE_NORMAL, Event("Cup", "x")), std::out_of_range);
    thrower.Detach();
    EXPECT_EQ(log_, c.log);
    EXPECT_EQ(root_->ErrorComment().find(ResourceText("RES_MESSAGE_FILE_OPEN_ERROR") +
                                         "\r\nclsFileControl.LoadKeltrun2"),
              0u)
        << root_->ErrorComment();
    EXPECT_EQ(root_->ClassCount(), c.classes);  // what was added before stays
    EXPECT_TRUE(Load(KR_LOADMODE_NORMAL, Event("Cup", "x")));
  }
  auto at_end = files_->OnProgress([](std::int32_t percent) {
    if (percent == 100) throw std::out_of_range("stop");
  });
  EXPECT_THROW(files_->LoadLapFile(folder_.Path("missing.lxm")), std::out_of_range);
  at_end.Detach();
  EXPECT_TRUE(Load(KR_LOADMODE_NORMAL, Event("Cup", "x")));
}

TEST_F(FileControl, AHandlerCannotStartAnotherOperation) {
  files_->OnProgress([&](std::int32_t percent) {
    if (percent != 67) return;
    EXPECT_FALSE(Load(KR_LOADMODE_NORMAL, Event("Inner", "y")));
    EXPECT_FALSE(files_->OutputHtml(folder_.Path("site"), "index.html"));
  });
  EXPECT_TRUE(Load(KR_LOADMODE_NORMAL, Event("Outer", "x")));
  EXPECT_EQ(root_->EventData()->EventName, "Outer");
  EXPECT_EQ(root_->ClassCount(), 3);
  EXPECT_EQ(FilesInFolder(), 0u);
}

// A host that shows nothing.
class NoWindows : public HostWindows {
 public:
  std::unique_ptr<frmProgressBar> OpenProgress(std::string_view) override { return nullptr; }
  std::optional<std::size_t> ChooseName(std::string_view, const Names&) override { return {}; }
  bool AskYesNo(std::string_view, std::string_view) override { return false; }
};

class LoggedWindows : public NoWindows {
 public:
  LoggedWindows(Names& log, Names& bars) : log_(log), bars_(bars) {}
  std::unique_ptr<frmProgressBar> OpenProgress(std::string_view Caption) override {
    log_.push_back("open " + std::string(Caption));
    return std::make_unique<Window>(*this);
  }

 private:
  struct Window : frmProgressBar {
    explicit Window(LoggedWindows& owner) : owner_(owner) {}
    ~Window() override { owner_.log_.push_back("close"); }
    void SetPercent(std::int32_t Percent) override {
      owner_.bars_.push_back(std::to_string(Percent));
    }
    LoggedWindows& owner_;
  };
  Names &log_, &bars_;
};

TEST_F(FileControl, TheProgressWindowFollowsWhenItIsWanted) {
  Names bars;
  files_->OnProgress([&](std::int32_t percent) { Record(std::to_string(percent)); });
  SetHostWindows(std::make_shared<LoggedWindows>(log_, bars));
  EXPECT_FALSE(files_->ProgressVisible());
  Load(KR_LOADMODE_NORMAL, Event("Cup", "x"));
  EXPECT_EQ(log_, (Names{"0", "33", "67", "100", "100"}));
  files_->SetProgressVisible(true);
  log_.clear();
  Load(KR_LOADMODE_NORMAL, Event("Cup", "x"));
  EXPECT_EQ(log_, (Names{"open Please wait...", "0", "33", "67", "100", "close", "100"}));
  EXPECT_EQ(bars, (Names{"33", "67", "100"}));
  log_.clear();
  files_->LoadLapFile(folder_.Path("missing.lxm"));
  EXPECT_EQ(log_, (Names{"open Please wait...", "0", "close", "100"}));
  log_.clear();
  SetHostWindows(std::make_shared<NoWindows>());
  Load(KR_LOADMODE_NORMAL, Event("Cup", "x"));
  EXPECT_EQ(log_, (Names{"0", "33", "67", "100", "100"}));
  SetHostWindows(nullptr);
}

// --- filters and saving ---

TEST_F(FileControl, FiltersAgreeWithTheSaveModes) {
  const struct {
    double filter;
    KrLapFileTypeConst type;
    const char* pattern;
  } kCases[] = {{1, KR_FILETYPE_KELTRUN2, "*.lxm"},
                {2, KR_FILETYPE_KELTRUN1, "*.lap"},
                {3, KR_FILETYPE_IOF_XML_20_RESULT, "*.xml"},
                {4, KR_FILETYPE_KELTRUN2, "*.lzh"},
                {5, KR_FILETYPE_KELTRUN2, "*.*"},
                {0, KR_FILETYPE_AUTODETECT, ""},
                {6, KR_FILETYPE_AUTODETECT, ""},
                {2.5, KR_FILETYPE_AUTODETECT, ""}};
  for (const Mode mode : {Mode::kEnglishTexts, Mode::kJapaneseTexts}) {
    RestartIn(mode);
    std::string filter = files_->FileSaveFilter() + "|";
    for (const auto& c : kCases) {
      EXPECT_EQ(files_->FileSaveMode(c.filter), c.type);
      if (*c.pattern == '\0') continue;
      const std::size_t pattern = filter.find('|') + 1, end = filter.find('|', pattern);
      EXPECT_EQ(filter.substr(pattern, end - pattern), c.pattern);
      filter.erase(0, end + 1);
    }
    EXPECT_TRUE(Contains(files_->FileLoadFilter(), "|*.lxm;*.xml|"));
  }
}

TEST_F(FileControl, SavesByTypeAndExtension) {
  ASSERT_TRUE(Load(KR_LOADMODE_NORMAL, Event("Cup", "x")));
  root_->SetFileName("before");
  const struct {
    const char* name;
    KrLapFileTypeConst type;
    const char* missing;  // the format that the error text names, "" when the file is written
  } kCases[] = {{"a.lxm", KR_FILETYPE_AUTODETECT, ""},
                {"noextension", KR_FILETYPE_AUTODETECT, ""},
                {"a.xml", KR_FILETYPE_KELTRUN2, ""},
                {"a.lap", KR_FILETYPE_OEVENT, ""},
                {"b.LAP", KR_FILETYPE_AUTODETECT, "previous generation"},
                {"b.XML", KR_FILETYPE_AUTODETECT, "IOF XML"},
                {"b.lxm", KR_FILETYPE_KELTRUN1, "previous generation"},
                {"b.lzh", KR_FILETYPE_AUTODETECT, "LZH"}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    const std::string name = folder_.Path(c.name), error_before = root_->ErrorComment();
    EXPECT_EQ(files_->SaveLapFile(name, c.type), *c.missing == '\0');
    EXPECT_EQ(std::filesystem::exists(name), *c.missing == '\0');
    if (*c.missing == '\0') {
      EXPECT_EQ(ReadBytes(name).find("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<keltrun "),
                0u);
      EXPECT_EQ(root_->ErrorComment(), error_before);
    } else {
      EXPECT_TRUE(Contains(root_->ErrorComment(), c.missing)) << root_->ErrorComment();
    }
  }
  EXPECT_EQ(root_->FileName(), "before");
  EXPECT_EQ(FilesInFolder(), 4u);  // and no temporary file is left
}

TEST_F(FileControl, ASaveThatFailsLeavesWhatWasThere) {
  ASSERT_TRUE(files_->LoadLapFile(ExampleFile("midorigaoka/event.lxm")));
  const std::string existing = File("a.lxm", "precious");
  std::filesystem::create_directory(folder_.Path("folder.lxm"));
  for (const std::string& name : {folder_.Path("none/a.lxm"), folder_.Path("folder.lxm"),
                                  std::string("/dev/full"), std::string()}) {
    SCOPED_TRACE(name);
    root_->Clear();
    files_->LoadLapFile(ExampleFile("midorigaoka/event.lxm"));
    EXPECT_FALSE(files_->SaveLapFile(name));
    EXPECT_TRUE(Contains(root_->ErrorComment(), "clsFileControl.SaveKeltrun2"));
    EXPECT_TRUE(Contains(root_->ErrorComment(), name)) << root_->ErrorComment();
  }
  // A disk that fills up half-way, played by a limit on the size of files.
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  const rlimit small{4096, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  EXPECT_FALSE(files_->SaveLapFile(existing));
  setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ(ReadBytes(existing), "precious");
  EXPECT_EQ(FilesInFolder(), 2u);
  EXPECT_TRUE(files_->SaveLapFile(existing));
}

}  // namespace
}  // namespace keltrun::test
