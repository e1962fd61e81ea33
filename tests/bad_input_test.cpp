// Damaged and hostile input is refused with a clear error or read leniently; it never crashes the
// reader and never puts a live tag into a page.
#include <gtest/gtest.h>

#include <algorithm>

#include "keltrun2/text/letters.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using std::string;
using namespace std::string_literals;

bool Contains(const string& text, std::string_view part) { return text.find(part) != string::npos; }

string Repeated(std::string_view text, int times) {
  string out;
  for (int i = 0; i < times; ++i) out += text;
  return out;
}

string Nested(int depth) {
  string open, close;
  for (int i = 0; i < depth; ++i) open += "<a>", close += "</a>";
  return "<keltrun>" + open + close;
}

class BadInput : public ::testing::Test {
 protected:
  bool Load(const string& bytes, KrLapFileLoadModeCosnt mode = KR_LOADMODE_NORMAL) {
    WriteBytes(name_, bytes);
    return root_->FileControl()->LoadLapFile(name_, KR_FILETYPE_AUTODETECT, mode);
  }

  TemporaryFolder folder_;
  string name_ = folder_.Path("x.lxm");
  std::shared_ptr<clsKeltrun2> root_ = NewRoot(Mode::kEnglishTexts);
};

TEST_F(BadInput, DamagedDocumentsAreRefusedWithTheirPlace) {
  // What the error text says, and the bytes.
  const Rows<string, string> cases = {
      {"empty", ""},
      {"empty", " \r\n\t"},
      {"line 1, column ", "class,name\r\n"},
      {"root element", "<?xml version='1.0'?>"},
      {"line 3, column ", "<keltrun>\r\n<classes>\r\n<class name='A'"},
      {"line 3, column ", "<keltrun>\r\r\n<class></klass></keltrun>"},
      {"line 3, column ", "<?xml version='1.0'?>\n<!-- x -->\n  <ResultList/>"},
      {"ResultList", "<ResultList/>"},
      {"line 2, column ", "<keltrun/>\n<keltrun/>"},
      {"line 2, column ", "<keltrun/>\nx"},
      {"line 2, column ", "<keltrun>\n<class name='a' name='b'/></keltrun>"},
      {"line 2, column 15", "<keltrun>\n<event name='あ\xff'/></keltrun>"},  // "あ" is one column
      {"line 1, column 13", "<keltrun a='\xed\xa0\x80'/>"},
      {"line 1, column 13", "<keltrun a='\0'/>"s},
      {"klingon", "<?xml version='1.0' encoding='klingon'?><keltrun/>"},
      {"document type", "<!DOCTYPE k [<!ENTITY a 'aa'><!ENTITY b '&a;&a;'>]>\n<keltrun a='&b;'/>"},
      {"line 1, column 14", "<keltrun a='A&#4294967296;B'/>"},
      {"line 1, column 13", "<keltrun a='&#xD800;'/>"},
      {"line 1, column 13", "<keltrun a='&#1;'/>"},
      {"more than 200000 runners",
       "<keltrun><classes><c>" + Repeated("<r/>", 200001) + "</c></classes></keltrun>"},
      {"more than 10000 classes",
       "<keltrun><classes>" + Repeated("<c/>", 10001) + "</classes></keltrun>"},
      {"more than 10000 courses",
       "<keltrun><courses>" + Repeated("<c/>", 10001) + "</courses></keltrun>"},
      {"nested", Nested(10000) + "</keltrun>"},
      {"line 1, column ", Nested(300000)}};
  for (const auto& [told, bytes] : cases) {
    SCOPED_TRACE(bytes.substr(0, 80));
    EXPECT_FALSE(Load(bytes));
    const string error = root_->ErrorComment();
    EXPECT_TRUE(error.starts_with("The file could not be read.\r\nclsFileControl.LoadKeltrun2\r\n" +
                                  name_ + ": "))
        << error;
    EXPECT_TRUE(Contains(error, told)) << error;
    if (bytes.empty() || told == "klingon") continue;  // a text in memory is always UTF-8
    EXPECT_FALSE(
        root_->FileControl()->LoadLapFile("", KR_FILETYPE_KELTRUN2, KR_LOADMODE_NORMAL, bytes));
  }
}

TEST_F(BadInput, UnreadableFilesAreRefused) {
  std::filesystem::create_directory(folder_.Path("folder.lxm"));
  std::filesystem::create_symlink("loop.lxm", folder_.Path("loop.lxm"));
  std::filesystem::create_symlink("/dev/zero", folder_.Path("endless.lxm"));
  WriteBytes(folder_.Path("huge.lxm"), "<keltrun/>");
  std::filesystem::resize_file(folder_.Path("huge.lxm"), std::uintmax_t{1} << 40);
  for (const string& name : {"missing.lxm"s, "missing/x.lxm"s, "folder.lxm"s, "loop.lxm"s,
                             "endless.lxm"s, "huge.lxm"s, string(300, 'x') + ".lxm"}) {
    EXPECT_FALSE(root_->FileControl()->LoadLapFile(folder_.Path(name))) << name;
    EXPECT_TRUE(Contains(root_->ErrorComment(), folder_.Path(name))) << root_->ErrorComment();
  }
}

TEST_F(BadInput, AFileCutAnywhereIsRefusedAndLeavesWhatWasLoaded) {
  const string good = ExampleFile("hoshinomori/event.lxm");
  ASSERT_TRUE(root_->FileControl()->LoadLapFile(good));
  const auto choices = root_->ClassAndCourseList();
  const string whole = ReadBytes(ExampleFile("midorigaoka/event.lxm"));
  const std::size_t complete = whole.rfind('>') + 1;
  const std::size_t near_end = complete - 10, step = complete / 150;
  for (std::size_t size = 0; size < complete;
       size = size < near_end ? std::min(size + step, near_end) : size + 1) {
    ASSERT_FALSE(Load(whole.substr(0, size), KR_LOADMODE_APPEND)) << size;
    ASSERT_TRUE(Contains(root_->ErrorComment(), "x.lxm: ")) << size;
  }
  EXPECT_EQ(root_->ClassAndCourseList(), choices);
  EXPECT_EQ(root_->FileName(), good);
  EXPECT_TRUE(Load(whole.substr(0, complete)));
}

TEST_F(BadInput, OddDocumentsAreReadLeniently) {
  const auto event = [](const string& name) {
    return "<keltrun><event name='" + name + "'/></keltrun>";
  };
  const auto declared = [&](const string& encoding, const string& name) {
    return "<?xml version='1.0' encoding='" + encoding + "'?>" + event(name);
  };
  string utf16 = "\xff\xfe";
  for (const char c : event("\xff"))
    utf16 += c == '\xff' ? "\xee\x68"s : string{c, '\0'};  // U+68EE
  const string huge(5000000, 'a');
  const Rows<string, string> cases = {
      {"森", "\xEF\xBB\xBF" + event("森")},
      {"森", "\n\n" + event("森") + "\n<!-- x --><?y?>"},
      {"森", declared("Shift_JIS", "\x90\x58")},
      {"é", declared("ISO-8859-1", "\xe9")},
      {"森", utf16},
      {"森", "<!DOCTYPE keltrun SYSTEM '/etc/passwd'>" + event("森")},
      {"森", event("&#26862;")},
      {"x", Nested(200) + "<event name='x'/></keltrun>"},
      {huge, event(huge)}};
  for (const auto& [name, bytes] : cases) {
    EXPECT_TRUE(Load(bytes)) << root_->ErrorComment();
    EXPECT_TRUE(root_->EventData()->EventName == name) << bytes.substr(0, 80);
  }
}

TEST_F(BadInput, GiantNumbersAreNoNumbers) {
  const string giant(400, '9'), time = giant + ":59:59'", number = giant + "'";
  ASSERT_TRUE(Load("<keltrun filedate='" + giant + "/1/1'><event date='9999999/1/1'/><courses>" +
                   "<course number='" + number + " controls='-" + number + "/></courses><classes>" +
                   "<class name='A' length='" + number + " controls='" + number +
                   "><runner start='" + time + " result='" + time + " id='-" + number +
                   "><leg index='1' laptime='" + time + "/></runner></class></classes></keltrun>"));
  const auto klass = root_->ClassData(1);
  const auto runner = klass->LapData(1);
  EXPECT_EQ(root_->FileDate() + root_->EventData()->EventDate()->Value(), 0);
  EXPECT_EQ(klass->Length + klass->ControlCount + runner->ID, 0);
  EXPECT_EQ(runner->StartTime()->Value() + runner->Lap(1), 0);
  EXPECT_EQ(root_->CourseData(1)->CourseIndex() + root_->CourseData(1)->ControlCount(), 0);
  const auto analyzer = root_->NewAnalyzer();
  analyzer->AddClass(1);
  analyzer->Execute();
  EXPECT_EQ(analyzer->Count(), 1);
}

// --- live tags ---

// Ends an attribute and a tag, and opens a script and an event handler.
constexpr char kPoison[] = "\"><script>alert(1)</script>\" onclick=\"alert(2)";

void AddPoisonedClass(clsKeltrun2& root, const string& name) {
  const auto klass = root.AddClass(name);
  klass->SetFileName(name);
  klass->ControlCount = klass->CourseNum = klass->CutOffRank = 1;
  klass->Length = 4000;
  for (const char* result : {"0:03:00", "0:03:00", "0:04:00", kPoison}) {
    const auto r = AddRunner(*klass, kPoison, result, {60, 120});
    r->ClubName = r->Rank = r->RankFix = r->Seed = r->Age = r->Sex = r->CompetitorId = kPoison;
  }
}

std::shared_ptr<clsKeltrun2> PoisonedRoot(Mode mode) {
  const auto root = NewRoot(mode);
  const auto e = root->EventData();
  const auto m = root->MetaData();
  e->EventName = e->Terrain = e->Memo = e->FileName = e->OfficialSite = kPoison;
  m->CreateApplication = m->CreateUserName = kPoison;
  m->LastUpdateApplication = m->LastUpdateUserName = kPoison;
  root->AddCourse(1)->SetControlCount(1);
  AddPoisonedClass(*root, kPoison);
  AddPoisonedClass(*root, "../"s + kPoison);
  return root;
}

// The poison must appear in the page, but only as text.
void ExpectNoLiveTag(const string& text) {
  const string page = LowerAscii(text);
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
  const auto root = PoisonedRoot(GetParam());
  const TemporaryFolder folder;
  const string copy = folder.Path("event.lxm");
  ASSERT_TRUE(root->FileControl()->SaveLapFile(copy));
  ExpectNoLiveTag(ReadBytes(copy));
  for (int pass = 0; pass < 2; ++pass) {  // first as the host made it, then as loaded from a file
    for (const bool course : {false, true}) {
      const auto analyzer = root->NewAnalyzer();
      const auto results = root->NewResultsHolder();
      course ? analyzer->AddCourse(1) : analyzer->AddClass(1);
      course ? results->AddCourse(1) : results->AddClass(1);
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
  const auto root = PoisonedRoot(GetParam());
  const TemporaryFolder folder;
  const string site = folder.Path("site");
  std::filesystem::create_directory(site);
  ASSERT_TRUE(root->FileControl()->OutputHtml(site, "index.html", "lap_*.html", "result_*.html",
                                              "event.lxm", "", true, false, "", "", true, true));
  EXPECT_EQ(root->ErrorComment(), "");
  int pages = 0;
  for (const auto& file : std::filesystem::recursive_directory_iterator(site)) {
    const string name = file.path().filename().string();
    SCOPED_TRACE(name);
    EXPECT_EQ(name.find_first_of("<>\"/\\\r\n"), string::npos);
    ExpectNoLiveTag(ReadBytes(file.path().string()));
    ++pages;
  }
  // Index, copy, and two pages for each of two classes and one course.
  EXPECT_EQ(pages, 8);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), 1);
  // An address without http:// is not made a link.
  EXPECT_FALSE(Contains(ReadBytes(site + "/index.html"), "onclick=\""));
}

}  // namespace
}  // namespace keltrun::test
