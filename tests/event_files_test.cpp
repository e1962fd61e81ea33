// The native lap file: two events against what is known about them, and what every part of the
// format means.
#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <regex>

#include "keltrun2/config/settings_internal.h"
#include "keltrun2/io/native_reader.h"
#include "keltrun2/io/native_writer.h"
#include "keltrun2/platform/clock.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using nlohmann::json;

constexpr DateTime kSaved = 45950.25;  // 2025-10-20 06:00, the clock of the tests that save

json Facts(const std::string& event) {
  return json::parse(ReadBytes(DataFile(event + "/facts.json")));
}

// --- the two events ---

// The row of a runner in the form of the facts: texts, numbers, the start in seconds or null.
json RowOf(clsLapData& runner, std::size_t legs) {
  const DateTime start = runner.StartTime()->Value();
  json laps = json::array();
  const auto held = static_cast<std::size_t>(runner.LegCount());
  for (std::size_t leg = 1; leg <= std::max(legs, held); ++leg) {
    const DateTime lap = runner.Lap(static_cast<std::int32_t>(leg));
    const double seconds = lap < 0 ? lap : std::round(lap * 86400);
    EXPECT_TRUE(lap < 0 || lap == Seconds(seconds)) << "not on the grid of times";
    if (leg <= legs || lap != 0) laps.push_back(std::lround(seconds));
  }
  return {runner.RunnerName,
          runner.ID,
          runner.Ecard,
          runner.Seed,
          runner.ClubName,
          start == 0 ? json() : json(std::lround(start * 86400)),
          runner.Result(),
          runner.Rank,
          runner.Sex,
          runner.CompetitorId,
          laps};
}

json TextsOf(const clsMetaData& meta, bool created) {
  const auto date = [](DateTime value) {
    return value == 0 ? "" : FormatDateTime(value, "yyyy/mm/dd hh:nn:ss");
  };
  if (created) return {meta.CreateApplication, date(meta.CreateDate), meta.CreateUserName};
  return {meta.LastUpdateApplication, date(meta.LastUpdateDate), meta.LastUpdateUserName};
}

void CheckHeader(const clsKeltrun2& root, const json& facts) {
  const auto event = root.EventData();
  EXPECT_EQ(event->EventName, facts["name"]);
  EXPECT_EQ(event->EventDate()->ToString(), facts["date"]);
  EXPECT_EQ(event->Terrain, facts["terrain"]);
  EXPECT_EQ(event->Memo, facts["memo"]);
  EXPECT_EQ(event->OfficialSite, facts["homepage"]);
  EXPECT_EQ(event->FileName, facts["filename"]);
  EXPECT_EQ(TextsOf(*root.MetaData(), true), facts["create"]);
  EXPECT_EQ(TextsOf(*root.MetaData(), false), facts["last_update"]);
  EXPECT_EQ(FormatDateTime(root.FileDate(), "yyyy/mm/dd hh:nn:ss"), facts["filedate"]);
}

void CheckClass(const clsClassData& klass, const json& facts) {
  SCOPED_TRACE(facts["name"]);
  EXPECT_EQ(klass.ClassName(), facts["name"]);
  EXPECT_EQ(klass.FileName(), facts["file_base"]);
  EXPECT_EQ(
      json({klass.Length, klass.Climb, klass.ControlCount, klass.CourseNum, klass.CutOffRank}),
      json({facts["length"], facts["climb"], facts["controls"], facts["course"],
            facts["cutoffrank"]}));
  ASSERT_EQ(klass.LapCount(), facts["runner_count"]);
  std::int32_t position = 0;
  for (const json& index : facts["sorted"]) {
    const json& row = facts["runners"][index.get<std::size_t>()];
    EXPECT_EQ(RowOf(*klass.LapData(++position), row.back().size()), row);
  }
}

void CheckCourse(const clsCourseData& course, const json& facts) {
  EXPECT_EQ(course.CourseIndex(), facts["number"]);
  json codes = json::array();
  for (std::int32_t i = 1; i <= course.ControlCount(); ++i) codes.push_back(course.ControlNum(i));
  EXPECT_EQ(codes, facts["controls"]);
}

void CheckEvent(const clsKeltrun2& root, const json& facts) {
  CheckHeader(root, facts["event"]);
  const json& lxm = facts["lxm"];
  ASSERT_EQ(root.ClassCount(), lxm["classes"].size());
  ASSERT_EQ(root.CourseCount(), lxm["courses"].size());
  std::int32_t position = 0;
  for (const json& klass : lxm["classes"]) CheckClass(*root.ClassData(++position), klass);
  position = 0;
  for (const json& course : lxm["courses"]) CheckCourse(*root.CourseData(++position), course);
  EXPECT_EQ(json(root.ClassAndCourseList()), lxm["class_and_course_list"]);
}

struct EventFile {
  const char* event;
  std::string file;
};

void PrintTo(const EventFile& file, std::ostream* out) { *out << file.file; }

class EventFiles : public ::testing::TestWithParam<EventFile> {};

INSTANTIATE_TEST_SUITE_P(
    All, EventFiles,
    ::testing::Values(EventFile{"hoshinomori", ExampleFile("hoshinomori/event.lxm")},
                      EventFile{"hoshinomori", DataFile("hoshinomori/event_indented.lxm")},
                      EventFile{"midorigaoka", ExampleFile("midorigaoka/event.lxm")}));

TEST_P(EventFiles, HoldsWhatIsKnown) {
  const json facts = Facts(GetParam().event);
  const auto root = NewRoot();
  ASSERT_TRUE(root->FileControl()->LoadLapFile(GetParam().file)) << root->ErrorComment();
  CheckEvent(*root, facts);
  EXPECT_EQ(root->FileName(), GetParam().file);
  const std::string text = ReadBytes(GetParam().file);
  ASSERT_TRUE(root->FileControl()->LoadLapFile("given as a text", KR_FILETYPE_AUTODETECT,
                                               KR_LOADMODE_NORMAL, text));
  CheckEvent(*root, facts);
}

// What writing changes: file names are kept in lower case.
std::string WithFoldedFileNames(std::string text) {
  const std::regex name(" filename=\"([^\"]*)\"");
  std::string out;
  for (std::smatch match; std::regex_search(text, match, name); text = match.suffix()) {
    std::string value = match[1];
    for (char& c : value) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
    out += match.prefix().str() + " filename=\"" + value + "\"";
  }
  return out + text;
}

TEST_P(EventFiles, AreWrittenAsTheyWereRead) {
  const NativeReadResult read =
      ReadNativeLapFile(ReadBytes(GetParam().file), NativeSource::kFileBytes);
  ASSERT_FALSE(read.Error);
  EventModel model;
  *model.Event = read.File.Event;
  *model.Meta = read.File.Meta;
  for (const auto& course : read.File.Courses) ASSERT_TRUE(model.AddCourseObject(course));
  for (const NativeClass& klass : read.File.Classes) {
    ASSERT_TRUE(model.AddClassObject(klass.Class));
    for (const auto& runner : klass.Runners) klass.Class->AddLapObject(runner);
  }
  const std::string original = ReadBytes(ExampleFile(std::string(GetParam().event) + "/event.lxm"));
  const std::string written =
      WriteNativeLapFile(model, KR_SAVEMODE_NORMAL, read.File.FileDate.value_or(0));
  EXPECT_TRUE(written == WithFoldedFileNames(original));
  // Neither the fixed rank nor the age occurs here.
  EXPECT_TRUE(WriteNativeLapFile(model, KR_SAVEMODE_FULL, *read.File.FileDate) == written);
}

TEST_P(EventFiles, StayTheSameOverLoadingAndSaving) {
  SetClock([] { return kSaved; });
  const TemporaryFolder folder;
  std::string name = GetParam().file;
  std::string saved[4];
  for (std::string& bytes : saved) {
    const auto root = NewRoot();
    ASSERT_TRUE(root->FileControl()->LoadLapFile(name));
    name = folder.Path("again.lxm");
    ASSERT_TRUE(root->FileControl()->SaveLapFile(name));
    bytes = ReadBytes(name);
  }
  SetClock({});
  // Each load turns runners of equal results around, so every second file has to be the same.
  EXPECT_TRUE(saved[0] == saved[2]);
  EXPECT_TRUE(saved[1] == saved[3]);
  EXPECT_EQ(saved[0].size(), saved[1].size());
}

// --- the parts of the format ---

constexpr std::string_view kEverything =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"
    "<keltrun version=\"2.27\" filedate=\"2025/10/20 06:00:00\" type=\"application/x-keltrun2\">"
    "<meta><file type=\"create\" application=\"Tool\" date=\"2025/10/18 14:02:09\""
    " username=\"A &amp; B\"/><file type=\"last-update\" application=\"Host\""
    " date=\"2025/10/19 00:00:00\"/></meta>"
    "<event name=\"Cup\" date=\"2025/10/18\" terrain=\"North\" memo=\"m\" homepage=\"http://x/\""
    " filename=\"c:\\data\\cup.lxm\"/><classes>"
    "<class name=\"M 21\" length=\"5200\" climb=\"150\" controls=\"3\" course=\"4\""
    " cutoffrank=\"2\" filename=\"results\">"
    "<runner name=\"Anna\" id=\"12\" ecard=\"500\" seed=\"S\" club=\"&lt;&quot;Club&quot;\""
    " start=\"10:02:03\" result=\"0:02:06.5\" rank=\"1.\" sex=\"F\" competitor-id=\"X-1\""
    " rankfix=\"2\" age=\"21\"><leg index=\"1\" laptime=\"00:01:23\"/><leg index=\"2\""
    " laptime=\"-\"/><leg index=\"3\" laptime=\"+\"/><leg index=\"4\" laptime=\"X\"/>"
    "<leg index=\"5\" laptime=\"25:03:07\"/></runner><runner name=\"\"/></class>"
    "<class name=\"Empty\"/></classes><courses><course number=\"4\" controls=\"2\">"
    "<control index=\"1\" unit-number=\"31\"/><control index=\"2\" unit-number=\"100\"/></course>"
    "<course number=\"-1\" controls=\"0\"/></courses></keltrun>\r\n";

class NativeFormat : public ::testing::Test {
 protected:
  ~NativeFormat() override { SetClock({}); }

  bool Load(std::string_view text, KrLapFileLoadModeCosnt mode = KR_LOADMODE_NORMAL) {
    return root_->FileControl()->LoadLapFile("x.lxm", KR_FILETYPE_AUTODETECT, mode, text);
  }
  // The runner of a document that holds nothing else.
  std::shared_ptr<clsLapData> Runner(const std::string& content,
                                     const std::string& attributes = "") {
    EXPECT_TRUE(Load("<keltrun><classes><class name=\"A\"><runner " + attributes + ">" + content +
                     "</runner></class></classes></keltrun>"))
        << root_->ErrorComment();
    return root_->ClassData(1)->LapData(1);
  }
  std::string Saved(KrLapFileSaveModeCosnt mode) {
    SetClock([] { return kSaved; });
    EXPECT_TRUE(
        root_->FileControl()->SaveLapFile(folder_.Path("a.lxm"), KR_FILETYPE_AUTODETECT, mode));
    return ReadBytes(folder_.Path("a.lxm"));
  }

  TemporaryFolder folder_;
  std::shared_ptr<clsKeltrun2> root_ = NewRoot();
};

TEST_F(NativeFormat, EveryAttributeIsReadAndWritten) {
  ASSERT_TRUE(Load(kEverything)) << root_->ErrorComment();
  const auto runner = root_->ClassData(1)->LapData(1);
  EXPECT_EQ(runner->RankFix + "," + runner->Age, "2,21");
  EXPECT_EQ(runner->Lap(5), 1 + Seconds(3787));
  EXPECT_EQ(root_->MetaData()->CreateUserName, "A & B");
  EXPECT_EQ(Saved(KR_SAVEMODE_FULL), kEverything);
  const std::regex full_only(" (rankfix|age)=\"[^\"]*\"");
  EXPECT_EQ(Saved(KR_SAVEMODE_NORMAL), std::regex_replace(std::string(kEverything), full_only, ""));
}

TEST_F(NativeFormat, LapMarkersAndTimesInEverySpelling) {
  const struct {
    DateTime lap;
    std::vector<std::string> texts;
  } kCases[] = {{Seconds(3723), {"01:02:03", "1:02:03"}},
                {Seconds(1.5), {"00:00:01.5"}},
                {1, {"24:00:00"}},
                {-1, {"+", "↓", "→"}},
                {-2, {"X", "×"}},
                {0, {"-", "", "n/a", "x", " +", "0:00:00", "99:59:60", "83"}}};
  for (const auto& c : kCases) {
    for (const std::string& text : c.texts) {
      const auto runner = Runner("<leg index=\"2\" laptime=\"" + text + "\"/>");
      EXPECT_EQ(runner->LegCount(), 2) << text;
      EXPECT_EQ(runner->Lap(2), c.lap) << text;
    }
  }
  EXPECT_EQ(Runner("<leg index=\"1\"/>")->LegCount(), 1);
  EXPECT_EQ(Runner("<lap index=\"1\" laptime=\"00:01:00\"/>")->LegCount(), 0);
}

TEST_F(NativeFormat, AnEmptyArrowTextMatchesNoLap) {
  TemporaryFolder folder;
  WriteBytes(folder.Path("Keltrun2.ini"), "LANGUAGE=xx\r\n");
  WriteBytes(folder.Path("Keltrun2Res-xx.txt"), "RES_META_RIGHT_ARROW\t\r\n");
  root_.reset();
  RestartSettings({.Language = {}, .Locale = {}, .Folder = folder.Path()});
  root_ = std::make_shared<clsKeltrun2>();
  EXPECT_EQ(Runner("<leg index=\"1\" laptime=\"\"/>")->Lap(1), 0);
  RestartIn(Mode::kJapaneseTexts);
}

TEST_F(NativeFormat, IndexesOutsideTheTableDropOneValueOnly) {
  const struct {
    const char* index;
    std::int32_t legs;  // the leg count that the leg leads to
  } kCases[] = {{"index=\"50\"", 50},
                {"index=\"51\"", 1},
                {"index=\"-1\"", 1},
                {"", 1},
                {"index=\"99999999999\"", 1},
                {"index=\" 7 \"", 7},
                {"index=\"7th\"", 7},
                {"index=\"6.7\"", 7},
                {"index=\"0\"", 1}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.index);
    const std::string index = c.index;
    const auto runner = Runner("<leg " + index + " laptime=\"00:00:02\"/><leg index=\"1\" " +
                               "laptime=\"00:00:01\"/>");
    EXPECT_EQ(runner->LegCount(), c.legs);
    EXPECT_EQ(runner->Lap(1), Seconds(1));
    EXPECT_TRUE(Load("<keltrun><courses><course number=\"1\" controls=\"50\"><control " + index +
                     " unit-number=\"9\"/></course></courses></keltrun>"));
    for (std::int32_t i = 1; i <= 50; ++i) {
      EXPECT_EQ(root_->CourseData(1)->ControlNum(i), i > 1 && i == c.legs ? 9 : 0);
    }
  }
}

TEST_F(NativeFormat, ControlCountsAndNumbersAreReadLeniently) {
  const struct {
    const char* text;
    std::int32_t number, in_class, in_course;
  } kCases[] = {{"12", 12, 12, 12},      {"49", 49, 49, 49},
                {"50", 50, 49, 50},      {"60", 60, 49, 50},
                {"-1", -1, 0, 0},        {"", 0, 0, 0},
                {"x5", 0, 0, 0},         {" 5 km", 5, 5, 5},
                {"4.6", 5, 5, 5},        {"2147483647", 2147483647, 49, 50},
                {"2147483648", 0, 0, 0}, {"1e400", 0, 0, 0}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.text);
    const std::string value = "=\"" + std::string(c.text) + "\"";
    ASSERT_TRUE(Load("<keltrun><courses><course number=\"1\" controls" + value +
                     "/></courses><classes><class name=\"A\" controls" + value + " length" + value +
                     "><runner id" + value + "/></class></classes></keltrun>"));
    EXPECT_EQ(root_->ClassData(1)->Length, c.number);
    EXPECT_EQ(root_->ClassData(1)->LapData(1)->ID, c.number);
    EXPECT_EQ(root_->ClassData(1)->ControlCount, c.in_class);
    EXPECT_EQ(root_->CourseData(1)->ControlCount(), c.in_course);
  }
}

TEST_F(NativeFormat, ValuesAreTrimmedAndFoldedAndBadDatesIgnored) {
  ASSERT_TRUE(Load(
      "<k:keltrun xmlns:k=\"urn:k\" filedate=\"never\"><future/><courses/>"
      "<k:event name=\"  Cup \" date=\"2025/13/45\" filename=\"Ｄ:\\My&lt;x&gt;\\Cup*:2.LXM\"/>"
      "<meta><file type=\"create\" application=\"T\" date=\"２０２５／１０／１８\"/>"
      "<file type=\"other\" application=\"O\"/>"
      "<file type=\"last-update\" application=\"H\" date=\"soon\"/></meta>"
      "<classes><class name=\" é男&#13;&#10;Ж\tB \" filename=\" ＲＥＳ "
      "x\"/></classes></k:keltrun>"));
  const auto event = root_->EventData();
  EXPECT_EQ(event->EventName, "Cup");
  EXPECT_EQ(event->EventDate()->Value(), 0);
  EXPECT_EQ(event->FileName, "d:\\my<x>\\cup*2.lxm");
  EXPECT_EQ(root_->FileDate(), 0);
  EXPECT_EQ(root_->MetaData()->CreateApplication, "T");
  EXPECT_EQ(root_->MetaData()->CreateDate, 45948);
  EXPECT_EQ(root_->MetaData()->LastUpdateApplication, "H");
  EXPECT_EQ(root_->MetaData()->LastUpdateDate, 0);
  // Shift-JIS has no "é"; line breaks go, references included; a tab in an attribute is a blank.
  EXPECT_EQ(root_->ClassData(1)->ClassName(), "?男Ж B");
  EXPECT_EQ(root_->ClassData(1)->FileName(), "res x");
  const auto runner = Runner("", "name=\" é \" start=\"25:00:00\" result=\" dnf \"");
  EXPECT_EQ(runner->RunnerName + runner->Result(), "éDNF");
  EXPECT_EQ(runner->StartTime()->Value(), 0);
}

TEST_F(NativeFormat, AppendingKeepsTheHeaderAndJoinsClassesAndCourses) {
  ASSERT_TRUE(Load(kEverything));
  ASSERT_TRUE(
      Load("<keltrun filedate=\"2025/10/21 00:00:00\"><event name=\"New\" memo=\"n\"/><meta>"
           "<file type=\"create\" application=\"New\"/></meta><courses>"
           "<course number=\"4\" controls=\"1\"/><course number=\"5\" controls=\"1\"/>"
           "<course number=\"5\" controls=\"2\"/></courses><classes>"
           "<class name=\"m 21\" length=\"1\" filename=\"n\"><runner name=\"Bob\"/></class>"
           "<class name=\"W\" length=\"1\"/><class name=\"w\" length=\"2\"><runner name=\"C\"/>"
           "</class></classes></keltrun>",
           KR_LOADMODE_APPEND));
  EXPECT_EQ(root_->EventData()->EventName + root_->EventData()->Memo, "Cupm");
  EXPECT_EQ(root_->MetaData()->CreateApplication, "Tool");
  EXPECT_EQ(FormatDateTime(root_->FileDate(), "yyyy/mm/dd"), "2025/10/21");
  ASSERT_EQ(root_->ClassCount(), 3);
  EXPECT_EQ(root_->ClassData(1)->Length, 5200);
  EXPECT_EQ(root_->ClassData(1)->FileName(), "results");
  EXPECT_EQ(root_->ClassData(1)->LapCount(), 3);
  EXPECT_EQ(root_->ClassData("W")->Length, 1);
  EXPECT_EQ(root_->ClassData("W")->LapCount(), 1);
  EXPECT_EQ(root_->ClassData("W")->LapData(1)->ClassName(), "W");
  ASSERT_EQ(root_->CourseCount(), 3);
  EXPECT_EQ(root_->CourseData("4")->ControlCount(), 2);
  EXPECT_EQ(root_->CourseData("5")->ControlCount(), 1);
}

TEST_F(NativeFormat, FileNamesAreWrittenWhenTheyDifferFromTheName) {
  const struct {
    const char *name, *file_name, *attribute;
  } kCases[] = {{"M21A", "M21A", ""},
                {"M21A", "m21", " filename=\"m21\""},
                {"Ｍ/Ｗ", "", " filename=\"W\""},
                {"２１", "21", ""},
                {"男", "", " filename=\"u7537\""}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    root_->Clear();
    root_->AddClass(c.name)->SetFileName(c.file_name);
    const std::string element = "<class name=\"" + std::string(c.name) + "\"" + c.attribute + "/>";
    EXPECT_NE(Saved(KR_SAVEMODE_NORMAL).find(element), std::string::npos);
  }
}

TEST_F(NativeFormat, CharactersThatXmlForbidsAreDropped) {
  const auto runner = root_->AddClass("A")->AddLap();
  runner->RunnerName = std::string("a\0b\x01\x1f\xEF\xBF\xBE", 8) + "c\td\n\xff";
  ASSERT_TRUE(Load(Saved(KR_SAVEMODE_NORMAL))) << root_->ErrorComment();
  const std::string name = root_->ClassData(1)->LapData(1)->RunnerName;
  EXPECT_EQ(name.find("abc\td\n"), 0u) << name;
}

}  // namespace
}  // namespace keltrun::test
