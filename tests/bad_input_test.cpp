// Damaged and hostile input: a clear refusal or a lenient reading, never a crash, and never a live
// tag in a page.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

#include "tests/test_support.h"

namespace keltrun::test {
namespace {

bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string::npos;
}

std::string Repeat(std::string_view text, int times) {
  std::string out;
  for (int i = 0; i < times; ++i) out += text;
  return out;
}

class BadInput : public ::testing::Test {
 protected:
  bool Load(std::string_view bytes, KrLapFileLoadModeCosnt mode = KR_LOADMODE_NORMAL) {
    WriteBytes(folder_.Path("x.lxm"), bytes);
    return root_->FileControl()->LoadLapFile(folder_.Path("x.lxm"), KR_FILETYPE_AUTODETECT, mode);
  }
  void ExpectRefused(const std::string& name) {
    EXPECT_FALSE(root_->FileControl()->LoadLapFile(name));
    EXPECT_TRUE(Contains(root_->ErrorComment(), name)) << root_->ErrorComment();
  }

  TemporaryFolder folder_;
  std::shared_ptr<clsKeltrun2> root_ = NewRoot(Mode::kEnglishTexts);
};

TEST_F(BadInput, DamagedDocumentsAreRefusedWithTheirPlace) {
  using namespace std::string_literals;
  const struct {
    const char* name;
    std::string bytes;
    const char* told;  // what the error text says beside the file name
  } kCases[] = {
      {"empty", "", "empty"},
      {"blank", " \r\n\t", "empty"},
      {"no XML", "class,name\r\n", "line 1, column "},
      {"a picture", "\x89PNG\r\n\x1a\n"s, "line 1, column 1"},
      {"declaration only", "<?xml version=\"1.0\"?>", "root element"},
      {"cut in a tag", "<keltrun>\r\n<classes>\r\n<class name=\"A\"", "line 3, column "},
      {"not closed", "<keltrun>\n<classes>\n</classes>\n", "line "},
      {"closed by another", "<keltrun>\r\r\n<class></klass></keltrun>", "line 3, column "},
      {"wrong root", "<?xml version=\"1.0\"?>\n<!-- x -->\n  <ResultList/>", "line 3, column "},
      {"wrong root named", "<ResultList/>", "ResultList"},
      {"two roots", "<keltrun/>\n<keltrun/>", "line 2, column "},
      {"text behind the root", "<keltrun/>\nx", "line 2, column "},
      {"attribute twice", "<keltrun>\n<class name=\"a\" name=\"b\"/></keltrun>", "line 2, column "},
      // 13 characters and the byte before: "あ" is one character of three bytes
      {"bad UTF-8", "<keltrun>\n<event name=\"あ\xff\"/></keltrun>", "line 2, column 15"},
      {"overlong UTF-8", "<keltrun a=\"\xc0\xaf\"/>", "line 1, column 13"},
      {"surrogate", "<keltrun a=\"\xed\xa0\x80\"/>", "line 1, column 13"},
      {"NUL", "<keltrun a=\"\0\"/>"s, "line 1, column 13"},
      {"unknown encoding", "<?xml version=\"1.0\" encoding=\"klingon\"?><keltrun/>", "klingon"},
      {"entities of its own",
       "<!DOCTYPE k [<!ENTITY a \"aaaa\"><!ENTITY b \"&a;&a;\">]>\n"
       "<keltrun><event name=\"&b;\"/></keltrun>",
       "document type"},
      {"deep nesting", "<keltrun>" + Repeat("<a>", 10000) + Repeat("</a>", 10000) + "</keltrun>",
       "nested"},
      {"deep and open", Repeat("<a>", 1000000), "line 1, column "},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    EXPECT_FALSE(Load(c.bytes));
    EXPECT_EQ(root_->ErrorComment().find("The file could not be read.\r\n"
                                         "clsFileControl.LoadKeltrun2\r\n" +
                                         folder_.Path("x.lxm") + ": "),
              0u)
        << root_->ErrorComment();
    EXPECT_TRUE(Contains(root_->ErrorComment(), c.told)) << root_->ErrorComment();
    EXPECT_EQ(root_->ClassCount(), 0);
    if (c.bytes.empty() || c.told == std::string_view("klingon")) continue;  // fine in a text
    EXPECT_FALSE(
        root_->FileControl()->LoadLapFile("", KR_FILETYPE_KELTRUN2, KR_LOADMODE_NORMAL, c.bytes));
  }
}

TEST_F(BadInput, UnreadableFilesAreRefused) {
  ExpectRefused(folder_.Path("missing.lxm"));
  ExpectRefused(folder_.Path("missing/x.lxm"));
  std::filesystem::create_directory(folder_.Path("folder.lxm"));
  ExpectRefused(folder_.Path("folder.lxm"));
  ExpectRefused(folder_.Path(std::string(300, 'x') + ".lxm"));
  std::filesystem::create_symlink("loop.lxm", folder_.Path("loop.lxm"));
  ExpectRefused(folder_.Path("loop.lxm"));
  std::filesystem::create_symlink("/dev/zero", folder_.Path("endless.lxm"));
  ExpectRefused(folder_.Path("endless.lxm"));
  WriteBytes(folder_.Path("huge.lxm"), "<keltrun/>");
  std::filesystem::resize_file(folder_.Path("huge.lxm"), std::uintmax_t{1} << 40);
  ExpectRefused(folder_.Path("huge.lxm"));
}

TEST_F(BadInput, AFileCutAnywhereIsRefused) {
  const std::string whole = ReadBytes(ExampleFile("midorigaoka/event.lxm"));
  const std::size_t complete = whole.rfind('>') + 1;
  for (std::size_t size = 0; size < complete; size += complete / 150) {
    SCOPED_TRACE(size);
    ASSERT_FALSE(Load(whole.substr(0, size)));
    ASSERT_TRUE(Contains(root_->ErrorComment(), "x.lxm: "));
  }
  for (std::size_t size = complete - 10; size < complete; ++size) {
    ASSERT_FALSE(Load(whole.substr(0, size))) << size;
  }
  EXPECT_TRUE(Load(whole.substr(0, complete)));
}

TEST_F(BadInput, WhatWasLoadedStaysWhenMoreFailsToLoad) {
  const std::string good = ExampleFile("hoshinomori/event.lxm");
  ASSERT_TRUE(root_->FileControl()->LoadLapFile(good));
  const std::string name = root_->EventData()->EventName;
  const auto choices = root_->ClassAndCourseList();
  const std::string whole = ReadBytes(ExampleFile("midorigaoka/event.lxm"));
  EXPECT_FALSE(Load(whole.substr(0, whole.size() / 2), KR_LOADMODE_APPEND));
  EXPECT_EQ(root_->EventData()->EventName, name);
  EXPECT_EQ(root_->ClassAndCourseList(), choices);
  EXPECT_EQ(root_->FileName(), good);
}

TEST_F(BadInput, OddDocumentsAreReadLeniently) {
  const std::string event = "<keltrun><event name=\"森\"/></keltrun>";
  std::string utf16 = "\xff\xfe";
  for (const char c : std::string("<keltrun><event name=\"")) utf16 += {c, '\0'};
  utf16 += "\xee\x68";  // 森 is U+68EE
  for (const char c : std::string("\"/></keltrun>")) utf16 += {c, '\0'};
  const struct {
    const char* name;
    std::string bytes;
    std::string event_name;
  } kCases[] = {
      {"byte-order mark", "\xEF\xBB\xBF" + event, "森"},
      {"no line breaks of its kind", "\n\n" + event + "\n<!-- x --><?y?>", "森"},
      {"Shift-JIS",
       "<?xml version=\"1.0\" encoding=\"Shift_JIS\"?><keltrun><event "
       "name=\"\x90\x58\"/></keltrun>",
       "森"},
      {"UTF-16", utf16, "森"},
      {"Latin 1",
       "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><keltrun><event name=\"\xe9\"/>"
       "</keltrun>",
       "é"},
      {"a document type elsewhere", "<!DOCTYPE keltrun SYSTEM \"/etc/passwd\">" + event, "森"},
      {"character references", "<keltrun><event name=\"&#26862;\"/></keltrun>", "森"},
      {"nesting of 200",
       "<keltrun>" + Repeat("<a>", 200) + Repeat("</a>", 200) + "<event name=\"x\"/></keltrun>",
       "x"},
      {"a huge value", "<keltrun><event name=\"" + std::string(5000000, 'a') + "\"/></keltrun>",
       std::string(5000000, 'a')},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    EXPECT_TRUE(Load(c.bytes)) << root_->ErrorComment();
    EXPECT_TRUE(root_->EventData()->EventName == c.event_name);
  }
}

TEST_F(BadInput, GiantNumbersAreNoNumbers) {
  const std::string giant(400, '9');
  ASSERT_TRUE(Load("<keltrun filedate=\"" + giant +
                   "/1/1\"><event date=\"9999999/1/1\"/><courses>"
                   "<course number=\"" +
                   giant + "\" controls=\"-" + giant +
                   "\"/></courses>"
                   "<classes><class name=\"A\" length=\"" +
                   giant + "\" controls=\"" + giant + "\"><runner start=\"" + giant +
                   ":00:00\" result=\"" + giant + ":00:00\" id=\"-" + giant +
                   "\"><leg index=\"1\" laptime=\"" + giant +
                   ":59:59\"/></runner></class>"
                   "</classes></keltrun>"));
  const auto klass = root_->ClassData(1);
  EXPECT_EQ(root_->FileDate() + root_->EventData()->EventDate()->Value(), 0);
  EXPECT_EQ(klass->Length + klass->ControlCount + klass->LapData(1)->ID, 0);
  EXPECT_EQ(klass->LapData(1)->StartTime()->Value() + klass->LapData(1)->Lap(1), 0);
  EXPECT_EQ(root_->CourseData(1)->CourseIndex() + root_->CourseData(1)->ControlCount(), 0);
  const auto analyzer = root_->NewAnalyzer();
  analyzer->AddClass(1);
  analyzer->Execute();
  EXPECT_EQ(analyzer->Count(), 1);
}

// --- live tags ---

// Ends an attribute and a tag, and opens a script and an event handler.
constexpr char kPoison[] = "\"><script>alert(1)</script>\" onclick=\"alert(2)";

void Poison(const std::vector<std::string*>& texts) {
  for (std::string* text : texts) *text = kPoison;
}

void AddPoisonedClass(clsKeltrun2& root, const std::string& name) {
  const auto klass = root.AddClass(name);
  klass->SetFileName(name);
  klass->ControlCount = 1;
  klass->CourseNum = 1;
  klass->Length = 4000;
  klass->CutOffRank = 1;
  for (const char* result : {"0:03:00", "0:03:00", "0:04:00", kPoison}) {
    const auto runner = AddRunner(*klass, "", result, {60, 120});
    Poison({&runner->RunnerName, &runner->ClubName, &runner->Rank, &runner->RankFix, &runner->Seed,
            &runner->Age, &runner->Sex, &runner->CompetitorId});
  }
}

void MakePoisonedEvent(clsKeltrun2& root) {
  const auto event = root.EventData();
  const auto meta = root.MetaData();
  Poison({&event->EventName, &event->Terrain, &event->Memo, &event->FileName, &event->OfficialSite,
          &meta->CreateApplication, &meta->CreateUserName, &meta->LastUpdateApplication,
          &meta->LastUpdateUserName});
  root.AddCourse(1)->SetControlCount(1);
  AddPoisonedClass(root, kPoison);
  AddPoisonedClass(root, std::string("../") + kPoison);
}

// The poison has to stand in the page, but as text.
void ExpectNoLiveTag(std::string page) {
  std::transform(page.begin(), page.end(), page.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  for (const char* live : {"<script", "</script", "\" onclick", "\"&nbsp;onclick", "\"><s"}) {
    EXPECT_FALSE(Contains(page, live)) << live << " at " << page.substr(page.find(live), 200);
  }
  EXPECT_TRUE(Contains(page, "script")) << "the poison is not shown at all";
}

class LiveTags : public ::testing::TestWithParam<Mode> {};

INSTANTIATE_TEST_SUITE_P(Modes, LiveTags,
                         ::testing::Values(Mode::kJapaneseTexts, Mode::kEnglishTexts,
                                           Mode::kJapaneseMode));

TEST_P(LiveTags, NeverComeFromDataIntoPages) {
  const auto root = NewRoot(GetParam());
  MakePoisonedEvent(*root);
  const TemporaryFolder folder;
  const std::string copy = folder.Path("event.lxm");
  ASSERT_TRUE(root->FileControl()->SaveLapFile(copy));
  ExpectNoLiveTag(ReadBytes(copy));
  for (int pass = 0; pass < 2; ++pass) {  // as the host made it, and as it comes back from a file
    const auto analyzer = root->NewAnalyzer();
    const auto results = root->NewResultsHolder();
    for (const bool course : {false, true}) {
      analyzer->Clear();
      results->Clear();
      if (course) {
        analyzer->AddCourse(1);
        results->AddCourse(1);
      } else {
        analyzer->AddClass(1);
        results->AddClass(1);
      }
      analyzer->SetCourseData(root->CourseData(1));
      analyzer->Execute();
      results->CalcRank();
      ASSERT_EQ(results->Count(), course ? 8 : 4);
      ExpectNoLiveTag(root->HtmlControl()->OutputAnalysis(analyzer));
      ExpectNoLiveTag(root->HtmlControl()->OutputResult(results));
    }
    ASSERT_TRUE(root->FileControl()->LoadLapFile(copy)) << root->ErrorComment();
  }
}

TEST_P(LiveTags, NeverComeFromDataIntoASite) {
  const auto root = NewRoot(GetParam());
  MakePoisonedEvent(*root);
  const TemporaryFolder folder;
  const std::string site = folder.Path("site");
  std::filesystem::create_directory(site);
  const auto files = root->FileControl();
  ASSERT_TRUE(files->OutputHtml(site, "index.html", "lap_*.html", "result_*.html", "event.lxm", "",
                                true, false, "", "", true, true))
      << root->ErrorComment();
  EXPECT_EQ(root->ErrorComment(), "");
  int pages = 0;
  for (const auto& file : std::filesystem::recursive_directory_iterator(site)) {
    const std::string name = file.path().filename().string();
    EXPECT_EQ(name.find_first_of("<>\"/\\\r\n"), std::string::npos) << name;
    SCOPED_TRACE(name);
    ExpectNoLiveTag(ReadBytes(file.path().string()));
    ++pages;
  }
  // Index, copy, and two pages for each of two classes and one course.
  EXPECT_EQ(pages, 8);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), 1);
  const std::string index = ReadBytes(site + "/index.html");
  EXPECT_FALSE(Contains(index, "onclick=\"")) << "a site without http:// became a link";
}

}  // namespace
}  // namespace keltrun::test
