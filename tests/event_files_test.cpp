// The native lap file: two events compared with known facts, and the meaning of every part of the
// format.
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>
#include <sstream>

#include "keltrun2/codec/encodings.h"
#include "keltrun2/codec/utf8.h"
#include "keltrun2/config/settings_internal.h"
#include "keltrun2/os/clock.h"
#include "keltrun2/text/letters.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using nlohmann::json;
using std::string;

DateTime SaveTime() { return 45950.25; }  // 2025-10-20 06:00

// --- the two events, in the form of the facts about them ---

// Times in seconds; markers are unchanged.
json RowOf(clsLapData& r) {
  const DateTime start = r.StartTime()->Value();
  const json start_seconds = start == 0 ? json() : json(std::lround(start * 86400));
  return {r.RunnerName, r.ID,   r.Ecard, r.Seed,         r.ClubName, start_seconds,
          r.Result(),   r.Rank, r.Sex,   r.CompetitorId, LapsOf(r)};
}

string Stamp(DateTime time) { return time == 0 ? "" : FormatDateTime(time, "yyyy/mm/dd hh:nn:ss"); }

void CheckHeader(const clsKeltrun2& root, const json& facts) {
  const auto event = root.EventData();
  const auto meta = root.MetaData();
  const json held = {
      {"name", event->EventName},
      {"date", event->EventDate()->ToString()},
      {"terrain", event->Terrain},
      {"memo", event->Memo},
      {"homepage", event->OfficialSite},
      {"filename", event->FileName},
      {"create", {meta->CreateApplication, Stamp(meta->CreateDate), meta->CreateUserName}},
      {"last_update",
       {meta->LastUpdateApplication, Stamp(meta->LastUpdateDate), meta->LastUpdateUserName}},
      {"filedate", Stamp(root.FileDate())}};
  for (const auto& [key, value] : held.items()) EXPECT_EQ(value, facts[key]) << key;
}

void CheckClass(const clsClassData& klass, const json& facts) {
  SCOPED_TRACE(facts["name"]);
  const json held = {{"name", klass.ClassName()},      {"file_base", klass.FileName()},
                     {"length", klass.Length},         {"climb", klass.Climb},
                     {"controls", klass.ControlCount}, {"course", klass.CourseNum},
                     {"cutoffrank", klass.CutOffRank}};
  for (const auto& [key, value] : held.items()) EXPECT_EQ(value, facts[key]) << key;
  ASSERT_EQ(klass.LapCount(), facts["sorted"].size());
  std::int32_t position = 0;
  for (const json& index : facts["sorted"]) {
    EXPECT_EQ(RowOf(*klass.LapData(++position)), facts["runners"][index.get<std::size_t>()]);
  }
}

void CheckEvent(const clsKeltrun2& root, const json& facts) {
  CheckHeader(root, facts["event"]);
  const json& lxm = facts["lxm"];
  ASSERT_EQ(root.ClassCount(), lxm["classes"].size());
  ASSERT_EQ(root.CourseCount(), lxm["courses"].size());
  std::int32_t position = 0;
  for (const json& klass : lxm["classes"]) CheckClass(*root.ClassData(++position), klass);
  position = 0;
  for (const json& known : lxm["courses"]) {
    const auto course = root.CourseData(++position);
    json codes = json::array();
    for (int i = 1; i <= course->ControlCount(); ++i) codes.push_back(course->ControlNum(i));
    EXPECT_EQ(course->CourseIndex(), known["number"]);
    EXPECT_EQ(codes, known["controls"]);
  }
  EXPECT_EQ(json(root.ClassAndCourseList()), lxm["class_and_course_list"]);
}

// The events and their files.
const Rows<string, string> kFiles = {{"hoshinomori", ExampleFile("hoshinomori/event.lxm")},
                                     {"hoshinomori", DataFile("hoshinomori/event_indented.lxm")},
                                     {"midorigaoka", ExampleFile("midorigaoka/event.lxm")}};

TEST(EventFiles, HoldWhatIsKnown) {
  for (const auto& [event, file] : kFiles) {
    const json facts = json::parse(ReadBytes(DataFile(event + "/facts.json")));
    const auto root = NewRoot();
    for (const string& data : {string(), ReadBytes(file)}) {  // as a file and as a text
      ASSERT_TRUE(
          root->FileControl()->LoadLapFile(file, KR_FILETYPE_AUTODETECT, KR_LOADMODE_NORMAL, data));
      EXPECT_EQ(root->FileName(), file);
      CheckEvent(*root, facts);
    }
  }
}

// The tags of a document in sorted order, with file names in lower case.
std::multiset<string> Tags(const string& document) {
  std::istringstream stream(LowerAscii(document));
  std::multiset<string> tags;
  for (string tag; std::getline(stream, tag, '<');) tags.insert(tag);
  return tags;
}

TEST(EventFiles, StayTheSameOverLoadingAndSaving) {
  const TemporaryFolder folder;
  for (auto [event, name] : kFiles) {
    string saved[4];
    for (string& bytes : saved) {
      const auto root = NewRoot();
      ASSERT_TRUE(root->FileControl()->LoadLapFile(name));
      SetClock([date = root->FileDate()] { return date; });
      name = folder.Path("again.lxm");
      ASSERT_TRUE(root->FileControl()->SaveLapFile(name));
      bytes = ReadBytes(name);
    }
    EXPECT_TRUE(Tags(saved[0]) == Tags(ReadBytes(ExampleFile(event + "/event.lxm")))) << event;
    EXPECT_EQ(saved[0].size(), saved[1].size());
    // Each load reverses runners with equal results, so every second file must be the same.
    EXPECT_TRUE(saved[0] == saved[2] && saved[1] == saved[3]) << event;
  }
  SetClock({});
}

// --- the events in every format ---

class EveryFormat : public ::testing::Test {
 protected:
  EveryFormat() {
    SetClock(SaveTime);
    for (const string event : {"hoshinomori", "midorigaoka"}) {
      const string example = ExampleFile(event + "/event.lxm");
      files_.push_back(example);
      for (const char* name : {"sportident", "sportident_2line", "oevent", "import"}) {
        files_.push_back(DataFile(event + "/" + name + ".txt"));
      }
      EXPECT_TRUE(root_->FileControl()->LoadLapFile(example));
      for (const char* extension : {".lap", ".lzh"}) {
        files_.push_back(folder_.Path(event + extension));
        EXPECT_TRUE(root_->FileControl()->SaveLapFile(files_.back()));
      }
      // The classes of a text lap file, without the lines before them, are a result list.
      const string lap_file = ReadBytes(folder_.Path(event + ".lap"));
      files_.push_back(folder_.Path(event + ".csv"));
      WriteBytes(files_.back(), lap_file.substr(lap_file.find("\r\n\r\n") + 4));
    }
    files_.push_back(DataFile("hoshinomori/event_indented.lxm"));
  }
  ~EveryFormat() override { SetClock({}); }

  // Loads the bytes of a file; an import is loaded into an event.
  bool Load(const string& file, const string& bytes) {
    const bool is_import = file.ends_with("import.txt");
    EXPECT_TRUE(!is_import || root_->FileControl()->LoadLapFile(files_[0]));
    const string copy = folder_.Path("copy" + file.substr(file.rfind('.')));
    WriteBytes(copy, bytes);
    return root_->FileControl()->LoadLapFile(copy, KR_FILETYPE_AUTODETECT,
                                             is_import ? KR_LOADMODE_APPEND : KR_LOADMODE_NORMAL);
  }
  string Saved() {
    EXPECT_TRUE(root_->FileControl()->SaveLapFile(folder_.Path("saved.lxm")));
    return ReadBytes(folder_.Path("saved.lxm"));
  }
  std::array<int, 3> Counts() const {
    int runners = 0;
    for (int i = 1; i <= root_->ClassCount(); ++i) runners += root_->ClassData(i)->LapCount();
    return {root_->ClassCount(), root_->CourseCount(), runners};
  }

  // Loads a file cut at every 97th byte, and with a bit flipped there. A large file is damaged at
  // about `places` places, so that a build with sanitizers takes seconds: a few are enough to reach
  // every kind of line. With KELTRUN2_EVERY_CUT in the environment, every place is used.
  void LoadDamaged(const string& file, std::size_t places) {
    constexpr std::size_t kStep = 97;
    if (std::getenv("KELTRUN2_EVERY_CUT") != nullptr) places = 1'000'000;
    const string bytes = ReadBytes(file);
    const std::size_t step = kStep * (bytes.size() / (kStep * places) + 1);
    for (std::size_t at = 0; at < bytes.size(); at += step) {
      SCOPED_TRACE(file + " at " + std::to_string(at));
      string flipped = bytes;
      flipped[at] = static_cast<char>(flipped[at] ^ 1 << at / step % 8);
      for (const string& damaged : {bytes.substr(0, at), flipped}) {
        const bool loaded = Load(file, damaged);
        ASSERT_EQ(loaded, root_->ErrorComment().empty());
        // An event that was loaded can be saved and loaded again.
        const auto counts = Counts();
        ASSERT_TRUE(root_->FileControl()->LoadLapFile("", KR_FILETYPE_KELTRUN2, KR_LOADMODE_NORMAL,
                                                      Saved()));
        ASSERT_EQ(Counts(), counts);
      }
    }
  }

  TemporaryFolder folder_;
  std::shared_ptr<clsKeltrun2> root_ = NewRoot();
  std::vector<string> files_;
};

TEST_F(EveryFormat, DamagedFilesLoadOrFailCleanly) {
  for (const string& file : files_) LoadDamaged(file, 12);
}

TEST_F(EveryFormat, DamagedFilesOfOtherProgramsLoadOrFailCleanly) {
  root_->FileControl()->SetForeignFormats(true);
  for (const char* folder : {"foreign", "foreign/refused"}) {
    for (const auto& entry : std::filesystem::directory_iterator(DataFile(folder))) {
      const string file = entry.path().string();
      if (entry.is_regular_file() && !file.ends_with(".json")) LoadDamaged(file, 5);
    }
  }
}

TEST_F(EveryFormat, TextsInUtf8LoadEqually) {
  int texts = 0;
  for (const string& file : files_) {
    if (file.ends_with(".lxm") || file.ends_with(".lzh")) continue;
    SCOPED_TRACE(file);
    string saved;
    for (const string& bytes : {ReadBytes(file), DecodeTextFile(ReadBytes(file))}) {
      EXPECT_NE(FindInvalidUtf8(bytes) == string::npos, saved.empty());
      ASSERT_TRUE(Load(file, bytes)) << root_->ErrorComment();
      EXPECT_GE(Counts()[2], 100);
      EXPECT_TRUE(saved.empty() || saved == Saved());
      saved = Saved();
    }
    ++texts;
  }
  EXPECT_EQ(texts, 12);
}

// Control characters of old systems and damaged bytes are not part of names; an event with them
// could not be saved.
TEST_F(EveryFormat, ControlCharactersAreBlanks) {
  const string lap_file = DecodeTextFile(ReadBytes(folder_.Path("hoshinomori.lap")));
  ASSERT_TRUE(Load("x.lap", lap_file));
  const auto counts = Counts();
  const string saved = Saved();
  ASSERT_TRUE(
      Load("x.lap", std::regex_replace(lap_file, std::regex("\nM21A"), "\n\x1A\fM21A") + '\x1A'));
  EXPECT_EQ(Counts(), counts);
  EXPECT_EQ(Saved(), saved);
  EXPECT_EQ(root_->FileControl()->LoadRemarks().size(), 1U);
}

// --- the parts of the format ---

constexpr std::string_view kEverything =
    R"(<?xml version="1.0" encoding="UTF-8"?>
<keltrun version="2.27" filedate="2025/10/20 06:00:00" type="application/x-keltrun2"><meta>)"
    R"(<file type="create" application="Tool" date="2025/10/18 14:02:09" username="A &amp; B"/>)"
    R"(<file type="last-update" application="Host" date="2025/10/19 00:00:00"/></meta>)"
    R"(<event name="Cup" date="2025/10/18" terrain="North" memo="m" homepage="http://x/")"
    R"( filename="c:\data\cup.lxm"/><classes><class name="M 21" length="5200" climb="150")"
    R"( controls="3" course="4" cutoffrank="2" filename="results"><runner name="Anna" id="12")"
    R"( ecard="500" seed="S" club="&lt;&quot;Club&quot;" start="10:02:03" result="0:02:06.5")"
    R"( rank="1." sex="F" competitor-id="X-1" rankfix="2" age="21">)"
    R"(<leg index="1" laptime="00:01:23"/><leg index="2" laptime="-"/>)"
    R"(<leg index="3" laptime="+"/><leg index="4" laptime="X"/><leg index="5" laptime="25:03:07"/>)"
    R"(</runner><runner name="" result="167996"/></class><class name="Empty"/></classes><courses>)"
    R"(<course number="4" controls="2"><control index="1" unit-number="31"/>)"
    R"(<control index="2" unit-number="100"/></course><course number="-1" controls="0"/>)"
    "</courses></keltrun>\n";

class NativeFormat : public ::testing::Test {
 protected:
  ~NativeFormat() override {
    SetClock({});
    RestartIn(Mode::kJapaneseTexts);
  }

  void Load(const string& text, KrLapFileLoadModeCosnt mode = KR_LOADMODE_NORMAL) {
    ASSERT_TRUE(root_->FileControl()->LoadLapFile("x.lxm", KR_FILETYPE_AUTODETECT, mode, text))
        << root_->ErrorComment();
  }
  // The only runner of a document.
  std::shared_ptr<clsLapData> Runner(const string& content, const string& attributes = "") {
    Load("<keltrun><classes><class name='A'><runner " + attributes + ">" + content +
         "</runner></class></classes></keltrun>");
    return root_->ClassData(1)->LapData(1);
  }
  string Saved(KrLapFileSaveModeCosnt mode = KR_SAVEMODE_NORMAL) {
    SetClock(SaveTime);
    const string name = folder_.Path("a.lxm");
    EXPECT_TRUE(root_->FileControl()->SaveLapFile(name, KR_FILETYPE_AUTODETECT, mode));
    return ReadBytes(name);
  }

  // The remarks of the last load, each ended by "|".
  string Remarks() const {
    string texts;
    for (const LoadRemark& remark : root_->FileControl()->LoadRemarks()) texts += remark.Text + "|";
    return texts;
  }

  TemporaryFolder folder_;
  std::shared_ptr<clsKeltrun2> root_ = NewRoot();
};

TEST_F(NativeFormat, EveryAttributeIsReadAndWritten) {
  const string everything = CrLf(kEverything);
  Load(everything);
  const auto runner = root_->ClassData(1)->LapData(1);
  EXPECT_EQ(runner->RankFix + "," + runner->Age, "2,21");
  EXPECT_EQ(runner->Lap(5), 1 + Seconds(3787));
  EXPECT_EQ(root_->MetaData()->CreateUserName, "A & B");
  EXPECT_EQ(Saved(KR_SAVEMODE_FULL), everything);
  const std::regex full_only(" (rankfix|age)=\"[^\"]*\"");
  EXPECT_EQ(Saved(), std::regex_replace(everything, full_only, ""));
}

TEST_F(NativeFormat, LapMarkersAndTimesInEverySpelling) {
  const Rows<DateTime, std::vector<string>> cases = {
      {Seconds(3723), {"01:02:03", "1:02:03"}},
      {Seconds(1.5), {"00:00:01.5"}},
      {1, {"24:00:00"}},
      {-1, {"+", "↓", "→"}},
      {-2, {"X", "×"}},
      {0, {"-", "", "n/a", "x", " +", "0:00:00", "99:59:60", "83", "12:34.56", "25:30.5"}},
      {0, {"-0:01:00", "－0:01:00", "-1:00", "-0:01:00.5", "-25:00:00", " -0:01:00"}},
      {0, {"2024/05/06", "1899/12/30 00:01:00", "1899/12/29", "2024/05/06 07:08:09.5"}}};
  for (const auto& [lap, texts] : cases) {
    for (const string& text : texts) {
      const auto runner = Runner("<leg index='2' laptime='" + text + "'/>");
      EXPECT_EQ(runner->LegCount(), 2) << text;
      EXPECT_EQ(runner->Lap(2), lap) << text;
    }
  }
  EXPECT_EQ(Runner("<leg index='1'/>")->LegCount(), 1);
  EXPECT_EQ(Runner("<lap index='1' laptime='00:01:00'/>")->LegCount(), 0);
  // An empty lap is not a skipped control, even if the text for the arrow is missing.
  WriteBytes(folder_.Path("Keltrun2.ini"), "LANGUAGE=xx\r\n");
  WriteBytes(folder_.Path("Keltrun2Res-xx.txt"), "RES_META_RIGHT_ARROW\t\r\n");
  RestartSettings({.Language = {}, .Locale = {}, .Folder = folder_.Path()});
  EXPECT_EQ(Runner("<leg index='1' laptime=''/>")->Lap(1), 0);
}

TEST_F(NativeFormat, IndexesOutsideTheTableDropOneValueOnly) {
  const Rows<string, int> cases = {
      // the leg count that the leg leads to
      {"50", 50}, {"51", 1}, {"-1", 1}, {"99999999999", 1}, {" 7 ", 7}, {"7th", 7}, {"6.7", 7}};
  for (const auto& [index, legs] : cases) {
    const auto runner = Runner("<leg index='" + index + "' laptime='0:00:02'/><leg laptime='X'/>" +
                               "<leg index='1' laptime='0:00:01'/>");
    EXPECT_EQ(runner->LegCount(), legs) << index;
    EXPECT_EQ(runner->Lap(1), Seconds(1));
    Load("<keltrun><courses><course number='1' controls='50'><control index='" + index +
         "' unit-number='9'/></course></courses></keltrun>");
    for (int i = 1; i <= 50; ++i) {
      EXPECT_EQ(root_->CourseData(1)->ControlNum(i), i > 1 && i == legs ? 9 : 0) << index;
    }
  }
}

TEST_F(NativeFormat, NumbersAreReadLenientlyAndControlCountsLimited) {
  const Rows<string, int, int, int> cases = {
      // as a number, of a class, of a course
      {"49", 49, 49, 49}, {"60", 60, 49, 50},      {"-1", -1, 0, 0},
      {"", 0, 0, 0},      {"x5", 0, 0, 0},         {" 5 km", 5, 5, 5},
      {"4.6", 5, 5, 5},   {"2147483648", 0, 0, 0}, {"1e400", 0, 0, 0}};
  for (const auto& [text, number, in_class, in_course] : cases) {
    const string value = "='" + text + "'";
    Load("<keltrun><courses><course number='1' controls" + value + "/></courses><classes>" +
         "<class name='A' controls" + value + " length" + value + "/></classes></keltrun>");
    EXPECT_EQ(root_->ClassData(1)->Length, number) << text;
    EXPECT_EQ(root_->ClassData(1)->ControlCount, in_class) << text;
    EXPECT_EQ(root_->CourseData(1)->ControlCount(), in_course) << text;
  }
}

TEST_F(NativeFormat, ValuesAreTrimmedAndFoldedAndBadDatesIgnored) {
  Load(R"(<k:keltrun xmlns:k="urn:k" filedate="never"><future/><courses/>
<k:event name="  Cup " date="2025/13/45" filename="Ｄ:\My&lt;x&gt;\Cup*:2.LXM"/>
<meta><file type="create" application="T" date="２０２５／１０／１８"/><file type="other"
application="O"/><file type="last-update" application="H" date="soon"/></meta>
<classes><class name=" é男&#13;&#10;Ж	B " filename=" ＲＥＳ x"><runner name=" é "
start="2025/10/18" result=" dnf "/></class></classes></k:keltrun>)");
  const auto event = root_->EventData();
  const auto meta = root_->MetaData();
  EXPECT_EQ(event->EventName + "|" + event->FileName, "Cup|d:\\my<x>\\cup*2.lxm");
  EXPECT_EQ(meta->CreateApplication + meta->LastUpdateApplication, "TH");
  EXPECT_EQ(meta->CreateDate, 45948);
  EXPECT_EQ(event->EventDate()->Value() + root_->FileDate() + meta->LastUpdateDate, 0);
  // Names keep characters that Shift-JIS does not have. Line breaks are removed, including those
  // written as references; a tab in an attribute becomes a blank.
  EXPECT_EQ(root_->ClassData(1)->ClassName() + "|" + root_->ClassData(1)->FileName(),
            "é男Ж B|res x");
  const auto runner = root_->ClassData(1)->LapData(1);
  EXPECT_EQ(runner->RunnerName + runner->Result(), "éDNF");
  EXPECT_EQ(runner->StartTime()->Value(), 0);
}

TEST_F(NativeFormat, AppendingKeepsTheHeaderAndJoinsClassesAndCourses) {
  Load(string(kEverything));
  Load(R"(<keltrun filedate="2025/10/21"><event name="New" memo="n"/>
<meta><file type="create" application="New"/></meta>
<courses><course number="4" controls="1"/><course number="5" controls="1"/>
<course number="5" controls="2"/></courses>
<classes><class name="m 21" length="1" filename="n"><runner name="Bob"/></class>
<class name="W" length="1"/><class name="w" length="2"><runner name="C"/></class>
</classes></keltrun>)",
       KR_LOADMODE_APPEND);
  EXPECT_EQ(root_->EventData()->EventName + root_->EventData()->Memo, "Cupm");
  EXPECT_EQ(root_->MetaData()->CreateApplication, "Tool");
  EXPECT_EQ(Stamp(root_->FileDate()), "2025/10/21 00:00:00");
  EXPECT_EQ(json(root_->ClassAndCourseList()),
            json({"1,,M 21,results,3", "2,,Empty,empty,0", "3,,W,w,1"}));
  EXPECT_EQ(root_->ClassData(1)->Length * 10 + root_->ClassData("W")->Length, 52001);
  EXPECT_EQ(root_->ClassData("W")->LapData(1)->ClassName(), "W");
  EXPECT_EQ(root_->CourseCount(), 3);
  EXPECT_EQ(root_->CourseData("4")->ControlCount(), 2);
  EXPECT_EQ(root_->CourseData("5")->ControlCount(), 1);
  // The class with another spelling, the two of the file, and the courses that are not used.
  EXPECT_EQ(
      Remarks(),
      "course \"4\": a course with this number but other controls was there before and is kept|"
      "course \"5\": a course with this number but other controls was there before and is kept|"
      "class \"m 21\": is merged with the class \"M 21\" that was there before: the "
      "runners of both are in it|class \"w\": is merged with the class \"W\" that was there "
      "before: the runners of both are in it|");
  string places;
  for (const LoadRemark& remark : root_->FileControl()->LoadRemarks()) {
    places += std::to_string(remark.Line) + ":" + std::to_string(remark.Column) + " ";
  }
  EXPECT_EQ(places, "3:10 4:1 5:10 6:29 ");
}

TEST_F(NativeFormat, WhatIsNotAsItShouldBeIsARemarkWithItsPlace) {
  const Rows<string, string> cases = {
      {"<event date='soon'/>", R"(date "soon": is not a date and is ignored)"},
      {"<meta><file type='create' application='T' date='x'/></meta>",
       R"(date "x": is not a date and is ignored)"},
      {"<courses><course number='1a' controls='51'><control index='x' unit-number='1'/></course>"
       "</courses>",
       R"(number "1a": is not a valid number; its leading digits are used, or 0|)"
       R"(controls "51": is not a number of controls from 0 to 50; the nearest one is used|)"
       R"(control "x": has no index from 1 to 50 and is dropped)"},
      {"<courses><course number='4' controls='1'><control index='2' unit-number='x'/></course>"
       "</courses>",
       R"(unit-number "x": is not a valid number; its leading digits are used, or 0|)"
       R"(course "4": has more controls than its attribute "controls" says; the others are not used)"},
      {"<classes><class name='A'><runner start='12:34.5'><leg index='1' laptime='2:34.5'/></runner>"
       "</class></classes>",
       R"(start "12:34.5": is not a time and is ignored|)"
       R"(laptime "2:34.5": is not a time; the leg has no data)"},
      {"<classes><class name='A' controls='60' length='4,5km'/></classes>",
       R"(controls "60": is not a number of controls from 0 to 49; the nearest one is used|)"
       R"(length "4,5km": is not a valid number; its leading digits are used, or 0)"},
      {"<classes><class name='A'><runner id='2147483648' start='2025/10/18'/></class></classes>",
       R"(id "2147483648": is not a valid number; its leading digits are used, or 0|)"
       R"(start "2025/10/18": is not a time and is ignored)"}};
  for (const auto& [content, expected] : cases) {
    Load("<keltrun>" + content + "</keltrun>");
    EXPECT_EQ(Remarks(), expected + "|");
  }
  // Negative laps and dates are not laps.
  const auto runner = Runner(
      "\n<leg index='1' laptime='-00:03:00'/>\n<leg index='2' laptime='2025/10/18'/>"
      "<leg index='3' laptime='-'/><leg index='4'/><leg index='51' laptime='0:01:00'/>");
  EXPECT_EQ(LapsOf(*runner), (std::vector<long>{0, 0, 0, 0}));
  EXPECT_EQ(Remarks(), R"(laptime "-00:03:00": is not a time; the leg has no data|)"
                       R"(laptime "2025/10/18": is not a time; the leg has no data|)"
                       R"(leg "51": has no index from 1 to 50 and is dropped|)");
  const auto& remarks = root_->FileControl()->LoadRemarks();
  EXPECT_EQ(remarks[0].Line * 100 + remarks[0].Column, 201);
  EXPECT_EQ(remarks[2].Line, 3);
  for (const auto& [event, file] : kFiles) {
    EXPECT_TRUE(root_->FileControl()->LoadLapFile(file));
    EXPECT_EQ(Remarks(), "") << file;
  }
}

TEST_F(NativeFormat, ClassesKeepNamesThatShiftJisDoesNotHave) {
  Load("<keltrun><classes><class name='Ä10'/><class name='Ö10'/></classes></keltrun>");
  Load(Saved());
  ASSERT_EQ(root_->ClassCount(), 2);
  EXPECT_EQ(root_->ClassData(1)->ClassName() + root_->ClassData(2)->ClassName(), "Ä10Ö10");
  EXPECT_EQ(Remarks(), "");
}

// Times that whole seconds or a time of day cannot express keep their fraction and their hours.
TEST_F(NativeFormat, ShortLapsAndOddStartTimesAreKept) {
  const Rows<double, string, double> laps = {
      {0.3, "00:00:00.300", 0.3},  {0.0001, "00:00:00.001", 0.001}, {0.499, "00:00:00.499", 0.499},
      {0.5, "00:00:01", 1},        {83.4, "00:01:23", 83},          {-2, "X", -2},
      {86399.9, "24:00:00", 86400}};
  for (const auto& [seconds, text, read_back] : laps) {
    root_->Clear();
    AddRunner(*root_->AddClass("A"), "Anna", "", {seconds});
    const string saved = Saved();
    EXPECT_NE(saved.find("laptime=\"" + text + "\""), string::npos) << text;
    Load(saved);
    const double expected = read_back < 0 ? read_back : Seconds(read_back);
    EXPECT_EQ(root_->ClassData(1)->LapData(1)->Lap(1), Canonical(expected)) << text;
  }
  const Rows<double, string> starts = {{36000, "10:00:00"},
                                       {35999.25, "09:59:59.250"},
                                       {86400, "24:00:00"},
                                       {91800.5, "25:30:00.500"},
                                       {360000, "100:00:00"}};
  for (const auto& [seconds, text] : starts) {
    root_->Clear();
    root_->AddClass("A")->AddLap()->StartTime()->SetValue(Seconds(seconds));
    const string saved = Saved();
    EXPECT_NE(saved.find("start=\"" + text + "\""), string::npos) << text;
    Load(saved);
    EXPECT_EQ(root_->ClassData(1)->LapData(1)->StartTime()->Value(), Canonical(Seconds(seconds)));
    EXPECT_EQ(Remarks(), "");
  }
}

TEST_F(NativeFormat, NamesAreWrittenWhereTheyAreNeededAndAllowed) {
  const Rows<string, string, string> cases = {{"M21A", "M21A", ""},
                                              {"M21A", "m21", " filename=\"m21\""},
                                              {"Ｍ/Ｗ", "", " filename=\"W\""},
                                              {"２１", "21", ""},
                                              {"男", "", " filename=\"u7537\""}};
  for (const auto& [name, file_name, attribute] : cases) {
    root_->Clear();
    root_->AddClass(name)->SetFileName(file_name);
    EXPECT_NE(Saved().find("<class name=\"" + name + "\"" + attribute + "/>"), string::npos);
  }
  // Characters that XML forbids are dropped.
  root_->EventData()->EventName = string("a\0b\x01\x1f\xEF\xBF\xBE", 8) + "c\td\n\xff";
  Load(Saved());
  EXPECT_TRUE(root_->EventData()->EventName.starts_with("abc\td"));
}

}  // namespace
}  // namespace keltrun::test
