// The forms for other programs: small events to the letter, and both examples written and read back
// by the readers of these forms.
#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "keltrun2/io/foreign/iof_writers.h"
#include "keltrun2/io/foreign/table_writers.h"
#include "keltrun2/model/person_name.h"
#include "keltrun2/model/process_state.h"
#include "keltrun2/model/result_facts.h"
#include "keltrun2/text/width.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using std::string;

string WithoutLineBreaks(string text) {
  std::erase(text, '\n');
  std::erase(text, '\r');
  return text;
}

// The whole text in the form.
string Iof3() {
  string out;
  AppendIofXml3(out, *CurrentModel(), {.now = 45950.25, .utc_offset = 540});
  return out;
}
string Iof2() {
  string out;
  AppendIofXml2(out, *CurrentModel(), {.now = 45950.25});
  return out;
}
template <void (*append)(string&, const EventModel&)>
string Table() {
  string out;
  append(out, *CurrentModel());
  return out;
}

bool Has(const string& text, const string& part) { return text.find(part) != string::npos; }

/// M21 with codes 31 and F7: a finisher with number and card, one who missed a control, somebody
/// disqualified with all times, and somebody who did not start.
struct SmallEvent {
  SmallEvent() {
    root->EventData()->EventName = "Spring <1>";
    root->EventData()->EventDate()->SetValue(45948);  // 2025-10-18
    const auto course = root->AddCourse(3);
    course->SetControlCount(2);
    course->SetControlNum(1, 31);
    course->SetControlNum(2, 10001);
    course->SetControlCodeText(2, "F7");
    klass->CourseNum = 3;
    klass->ControlCount = 2;
    klass->Length = 4500;
    AddRunner(*klass, "Nobody", "DNS", {});
    AddRunner(*klass, "Jo Mispunch", "MP", {60, -1, 30})->ClubName = "A, B";
    AddRunner(*klass, "Out", "DISQ", {50, 20, 10});
    const auto winner = AddRunner(*klass, "山田　太郎", "0:12:40.5", {420, 0.001, 340.5});
    winner->ID = 7;
    winner->Ecard = 123456;
    winner->Sex = "男";
    winner->StartTime()->SetValue(1 - Seconds(60));  // the finish is on the next day
  }
  std::shared_ptr<clsKeltrun2> root = NewRoot();
  std::shared_ptr<clsClassData> klass = root->AddClass("M:21");
};

TEST(Exchange, IofXml3ToTheLetter) {
  const SmallEvent event;
  const string text = WithoutLineBreaks(Iof3());
  EXPECT_TRUE(Has(text, WithoutLineBreaks(R"(
<ResultList xmlns="http://www.orienteering.org/datastandard/3.0"
 xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" iofVersion="3.0"
 createTime="2025-10-20T06:00:00+09:00" creator="Keltrun 2.27" status="Complete">
<Event><Name>Spring &lt;1&gt;</Name><StartTime><Date>2025-10-18</Date></StartTime></Event>
<ClassResult><Class><Name>M:21</Name></Class>
<Course><Id>3</Id><Length>4500</Length><NumberOfControls>2</NumberOfControls></Course>
<PersonResult><Person sex="M"><Name><Family>山田</Family><Given>太郎</Given></Name></Person>
<Organisation><Name/><ShortName/></Organisation>
<Result><BibNumber>7</BibNumber><StartTime>2025-10-18T23:59:00+09:00</StartTime>
<FinishTime>2025-10-19T00:11:40.5+09:00</FinishTime><Time>760.5</Time><TimeBehind>0</TimeBehind>
<Position>1</Position><Status>OK</Status>
<SplitTime><ControlCode>31</ControlCode><Time>420</Time></SplitTime>
<SplitTime><ControlCode>F7</ControlCode><Time>420</Time></SplitTime>
<ControlCard>123456</ControlCard></Result></PersonResult>)")))
      << text;
  EXPECT_TRUE(Has(text,
                  "<Time>90</Time><Status>MissingPunch</Status><SplitTime><ControlCode>31"
                  "</ControlCode><Time>60</Time></SplitTime><SplitTime status=\"Missing\">"
                  "<ControlCode>F7</ControlCode></SplitTime></Result>"))
      << text;
  EXPECT_TRUE(Has(text,
                  "<Result><Status>DidNotStart</Status><SplitTime status=\"Missing\">"
                  "<ControlCode>31</ControlCode></SplitTime><SplitTime status=\"Missing\">"
                  "<ControlCode>F7</ControlCode></SplitTime></Result>"))
      << text;
}

TEST(Exchange, IofXml2ToTheLetter) {
  const SmallEvent event;
  const string text = WithoutLineBreaks(Iof2());
  EXPECT_TRUE(Has(text, WithoutLineBreaks(R"(
<!DOCTYPE ResultList SYSTEM "IOFdata.dtd"><ResultList status="complete">
<IOFVersion version="2.0.3"/><Event><EventId/><Name>Spring &lt;1&gt;</Name>
<EventClassificationId/><StartDate><Date dateFormat="YYYY-MM-DD">2025-10-18</Date></StartDate>
</Event><ClassResult><ClassShortName>M:21</ClassShortName>
<PersonResult><Person sex="M"><PersonName><Family>山田</Family><Given>太郎</Given></PersonName>
<PersonId/></Person><Club><ClubId/><ShortName/><CountryId value="other"/></Club>
<Result><StartNumber>7</StartNumber><CCardId>123456</CCardId>
<StartTime><Clock clockFormat="HH:MM:SS">23:59:00</Clock></StartTime>
<FinishTime><Clock clockFormat="HH:MM:SS">00:11:41</Clock></FinishTime>
<Time timeFormat="MM:SS">12:41</Time><ResultPosition>1</ResultPosition>
<CompetitorStatus value="OK"/><CourseLength unit="m">4500</CourseLength>
<SplitTime sequence="1"><ControlCode>31</ControlCode><Time timeFormat="MM:SS">7:00</Time>
</SplitTime><SplitTime sequence="2"><ControlCode>F7</ControlCode>
<Time timeFormat="MM:SS">7:00</Time></SplitTime></Result></PersonResult>)")))
      << text;
  EXPECT_TRUE(Has(text,
                  "<CompetitorStatus value=\"DidNotStart\"/><CourseLength unit=\"m\">4500"
                  "</CourseLength><SplitTime sequence=\"1\"><ControlCode>31</ControlCode>"
                  "</SplitTime><SplitTime sequence=\"2\"><ControlCode>F7</ControlCode>"
                  "</SplitTime></Result>"))
      << text;
}

// A leg of 0 s takes a second from the next one; the disqualified runner has no time at the finish.
TEST(Exchange, TablesToTheLetter) {
  const SmallEvent event;
  event.root->AddClass("Nobody ran")->ControlCount = 1;
  EXPECT_EQ(
      Table<AppendSplitsBrowserEvent>(),
      "M 21,2\r\n太郎,山田,-,23:59,7:00,0:01,5:40\r\nJo,Mispunch,A  B,00:00,1:00,0:00,0:30\r\n"
      "Out,-,-,00:00,0:50,0:20,0:00\r\nNobody,-,-,00:00,0:00,0:00,0:00");
  EXPECT_EQ(
      Table<AppendWinSplits>(),
      "Spring <1>\t2025-10-18\r\nM:21\t0\t0\t0\r\n"
      "山田　太郎\t\t23.59.00\t7.00\t0.00\t5.41\r\nJo Mispunch\tA, B\t00.00.00\t1.00\t-\t0.30\r\n"
      "Out\t\t00.00.00\t0.50\t0.20\t-\r\nNobody\t\t00.00.00\t-\t-\t-\r\nNobody ran\t0\t0\r\n");
  const string oe = Table<AppendOe2010>();
  EXPECT_TRUE(Has(oe,
                  "\r\n;7;;123456;;\"山田\";\"太郎\";;\"M\";;0;23:59:00;0:11:41;0:12:41;0;;;;;;;;"
                  ";;1;\"M:21\";\"M:21\";;;;;;;;;;;;;;;;;;;;;;;;;;3;\"Course 3\";4.5;;2;1;"
                  "23:59:00;0:11:41;31;0:07:00;F7;0:07:00;\r\n"))
      << oe;
  EXPECT_TRUE(Has(oe, ";\"Out\";;;;;0;;;0:01:20;4;;")) << oe;
  EXPECT_TRUE(Has(oe, ";\"Mispunch\";\"Jo\";;;;0;;;0:01:30;3;;;;;;\"A, B\";")) << oe;
}

TEST(Exchange, NamesLoseNothing) {
  for (const auto& [name, given, family] :
       Rows<string, string, string>{{"Anna Berger", "Anna", "Berger"},
                                    {" Tom  de Vries ", "Tom", "de Vries"},
                                    {"Berger, Anna Maria", "Anna Maria", "Berger"},
                                    {"山田　太郎", "太郎", "山田"},
                                    {"Ａｎｎａ　Ｂｅｒｇｅｒ", "Ａｎｎａ", "Ｂｅｒｇｅｒ"},
                                    {"ﾔﾏﾀﾞ ﾀﾛｳ 二世", "ﾀﾛｳ 二世", "ﾔﾏﾀﾞ"},
                                    {"石田大輔", "", "石田大輔"},
                                    {"A, B, C", "A,", "B, C"},
                                    {"", "", ""}}) {
    clsLapData runner;
    runner.RunnerName = name;
    EXPECT_EQ(NameParts(runner).given, given) << name;
    EXPECT_EQ(NameParts(runner).family, family) << name;
  }
  clsLapData runner;
  runner.RunnerName = "Anna Maria Berger";
  runner.GivenName = "Anna Maria";
  runner.FamilyName = "Berger";
  EXPECT_EQ(NameParts(runner).given, "Anna Maria");
  runner.RunnerName = "Anna Lind";  // renamed by a host
  EXPECT_EQ(NameParts(runner).family, "Lind");
}

TEST(Exchange, Statuses) {
  using enum RunnerStatus;
  for (const auto& [result, rank, said, laps, status] :
       Rows<string, string, RunnerStatus, std::vector<double>, RunnerStatus>{
           {"0:10:00", "1", kUnknown, {}, kOk},
           {"0:10:00", "(3)", kUnknown, {}, kNotCompeting},
           {"0:10:00", "", kNotCompeting, {}, kNotCompeting},
           {"0:10:00", "", kMissingPunch, {}, kOk},
           {"25:00:00", "", kUnknown, {}, kOk},
           {"DNF", "", kOk, {}, kDidNotFinish},
           {"DNF", "", kSportingWithdrawal, {}, kSportingWithdrawal},
           {"P2", "", kUnknown, {}, kMissingPunch},
           {"PM", "", kUnknown, {}, kMissingPunch},
           {"OCL", "", kUnknown, {}, kOverTime},
           {"DNQ", "", kUnknown, {}, kDisqualified},
           {"失格", "", kUnknown, {}, kDisqualified},
           {"dns", "", kUnknown, {}, kDidNotStart},
           {"", "", kUnknown, {}, kDidNotStart},
           {"", "", kUnknown, {60, 30}, kOk},
           {"", "", kUnknown, {60, -1, 30}, kMissingPunch},
           {"", "", kUnknown, {60, 0}, kDidNotFinish}}) {
    const auto root = NewRoot();
    const auto runner = AddRunner(*root->AddClass("A"), "N", result, laps);
    runner->Rank = rank;
    runner->Status = said;
    EXPECT_EQ(RunnerStatusName(StatusOf(*runner)), RunnerStatusName(status)) << result << rank;
  }
}

string SplitsOf(const string& result, const std::vector<double>& laps, int controls) {
  const auto root = NewRoot();
  const auto klass = root->AddClass("A");
  klass->ControlCount = controls;
  AddRunner(*klass, "N", result, laps);
  ResultFacts facts(*CurrentModel());
  SplitTimes splits;
  splits.Find(facts.RunnersOf(*klass)[0]);
  string text;
  for (int i = 0; i < splits.ControlCount(); ++i) text += std::to_string(splits[i] / 1000) + " ";
  return text + std::to_string(facts.RunnersOf(*klass)[0].time / 1000);
}

// Times that are not known are -1 ms, shown as 0.
TEST(Exchange, SplitsFromLaps) {
  EXPECT_EQ(SplitsOf("0:01:40", {60, 10, 30}, 2), "60 70 100");
  EXPECT_EQ(SplitsOf("0:01:40", {60, -1, 40}, 2), "60 0 100");
  EXPECT_EQ(SplitsOf("0:01:40", {60, -1, 10, 30}, 3), "60 0 70 100");
  // 100 s in all, and 80 s in the laps: the leg without data took 20 s.
  EXPECT_EQ(SplitsOf("0:01:40", {40, 0, 10, 30}, 3), "40 0 70 100");
  EXPECT_EQ(SplitsOf("0:01:40", {40, -2, 10, 30}, 3), "40 0 70 100");
  // The next lap covers the leg, as the sum shows, up to the rounding of the laps.
  EXPECT_EQ(SplitsOf("0:01:41", {40, 0, 30, 30}, 3), "40 0 70 101");
  EXPECT_EQ(SplitsOf("MP", {40, 0, 10, 30}, 3), "40 0 50 80");
  EXPECT_EQ(SplitsOf("DNF", {40, 10}, 3), "40 50 0 0");
  EXPECT_EQ(SplitsOf("DNS", {60, 40}, 1), "0 0");
}

std::shared_ptr<clsLapData> AddMember(clsKeltrun2& root, const string& klass, const string& name,
                                      const string& club, int bib, double start, double time) {
  const auto runner = AddRunner(*root.AddClass(klass), name, "", {time});
  runner->SetResult("0:0" + std::to_string(static_cast<int>(time) / 60) + ":00");
  runner->ClubName = club;
  runner->ID = bib;
  runner->StartTime()->SetValue(Seconds(start));
  return runner;
}

TEST(Exchange, RelaysAreTeams) {
  for (const bool has_numbers : {true, false}) {
    const auto root = NewRoot();
    root->EventData()->EventDate()->SetValue(45948);
    AddMember(*root, "Mix-1", "A1", "Alpha", has_numbers ? 1 : 0, 36000, 120);
    AddMember(*root, "Mix-1", "B1", "Beta", has_numbers ? 2 : 0, 36000, 60);
    AddMember(*root, "Mix-2", "A2", "Alpha", has_numbers ? 1 : 0, 36120, 60);
    AddMember(*root, "Mix-2", "B2", "Beta", has_numbers ? 2 : 0, 36060, 240);
    const string text = WithoutLineBreaks(Iof3());
    EXPECT_TRUE(Has(text,
                    "<Class><Name>Mix</Name><Leg/><Leg/></Class><TeamResult>"
                    "<Name>Alpha</Name>"))
        << text;
    EXPECT_TRUE(Has(text, "<Leg>2</Leg><LegOrder>1</LegOrder>")) << text;
    EXPECT_TRUE(Has(text, "<OverallResult><Time>180</Time><Status>OK</Status>")) << text;
    EXPECT_TRUE(Has(text, "<TimeBehind type=\"Leg\">180</TimeBehind><Position type=\"Leg\">2"))
        << text;
    EXPECT_FALSE(Has(text, "PersonResult")) << text;
  }
}

// A start time needs a date, which stands for none. It has no zone.
TEST(Exchange, EventsWithoutDateKeepStartTimes) {
  const auto root = NewRoot();
  AddMember(*root, "A", "N", "C", 1, 36000, 60);
  EXPECT_TRUE(Has(Iof3(), "<Event><Name/></Event>")) << Iof3();
  EXPECT_TRUE(Has(Iof3(), "<StartTime>1970-01-01T10:00:00</StartTime>")) << Iof3();
}

TEST(Exchange, HeatsAndDaysAreNoRelay) {
  const auto root = NewRoot();
  AddMember(*root, "H-1", "A", "Alpha", 1, 36000, 60);  // the same people on two days
  AddMember(*root, "H-2", "A", "Alpha", 1, 36000, 60);
  AddMember(*root, "M-1", "C", "Alpha", 3, 36000, 60);  // two heats
  AddMember(*root, "M-2", "D", "Alpha", 4, 36000, 60);
  AddMember(*root, "W-1", "E", "Alpha", 0, 36000, 60);  // no numbers, nobody hands over
  AddMember(*root, "W-2", "F", "Alpha", 0, 36000, 60);
  EXPECT_FALSE(Has(Iof3(), "TeamResult"));
}

// Runners with courses of their own come last, with their own controls.
TEST(Exchange, ForksComeAfterTheClass) {
  const auto root = NewRoot();
  const auto klass = root->AddClass("A");
  for (const int number : {1, 2}) {
    const auto course = root->AddCourse(number);
    course->SetControlCount(number);
    for (int i = 1; i <= number; ++i) course->SetControlNum(i, 30 + 10 * number + i);
  }
  klass->CourseNum = 1;
  klass->ControlCount = 1;
  AddRunner(*klass, "Fork", "0:01:00", {20, 20, 20})->CourseNum = 2;
  AddRunner(*klass, "Class", "0:02:00", {60, 60});
  const string text = Iof3();
  EXPECT_LT(text.find("Class</Family>"), text.find("Fork</Family>"));
  EXPECT_TRUE(Has(text,
                  "<Position>1</Position><Status>OK</Status><Course><Id>2</Id>"
                  "<NumberOfControls>2</NumberOfControls></Course><SplitTime><ControlCode>51"))
      << text;
  EXPECT_EQ(Table<AppendSplitsBrowserEvent>(),
            "A,1\r\nClass,-,-,00:00,1:00,1:00\r\n\r\nA (2),2\r\nFork,-,-,00:00,0:20,0:20,0:20");
}

// --- written and read back ---

// What a form keeps of a runner, besides name, club and times.
struct Kept {
  const char* word;
  bool codes, numbers, statuses, start_seconds;
};

// Sums of the laps at the controls, in seconds; 0 where there is none.
std::vector<long> Cumulative(clsLapData& runner) {
  std::vector<long> sums;
  double sum = 0;
  for (std::int32_t leg = 1; leg <= runner.LegCount(); ++leg) {
    const DateTime lap = runner.Lap(leg);
    if (lap > 0) sum += lap;
    sums.push_back(lap > 0 ? std::lround(sum * 86400) : 0);
  }
  while (!sums.empty() && sums.back() == 0) sums.pop_back();
  return sums;
}

string Key(const clsLapData& runner) {
  const PersonName name = NameParts(runner);
  return string(name.family) + "|" + string(name.given);
}

void ExpectSameRunner(clsLapData& written, clsLapData& read, const Kept& kept) {
  SCOPED_TRACE(string(kept.word) + " " + written.ClassName() + " " + written.RunnerName);
  EXPECT_EQ(NormalizeName(read.RunnerName), NormalizeName(written.RunnerName));
  EXPECT_EQ(read.ClubName == "-" ? "" : read.ClubName, written.ClubName);
  if (kept.statuses) {
    EXPECT_EQ(StatusOf(read), StatusOf(written));
  }
  if (kept.numbers) {
    EXPECT_EQ(read.ID, written.ID);
    EXPECT_EQ(read.Ecard, written.Ecard);
  }
  const double unit = kept.start_seconds ? 86400 : 1440;
  EXPECT_EQ(std::floor(read.StartTime()->Value() * unit + 1e-6),
            std::floor(written.StartTime()->Value() * unit + 1e-6));
  const bool is_classified = StatusOf(written) == RunnerStatus::kOk;
  if (is_classified && kept.statuses) {
    EXPECT_EQ(read.Result(), written.Result());
  }
  if (is_classified || kept.codes) {
    EXPECT_EQ(Cumulative(read), Cumulative(written));
  }
}

void ExpectReadBack(const string& example, const Kept& kept) {
  const TemporaryFolder folder;
  const string file = folder.Path("written");
  const auto root = NewRoot();
  ASSERT_TRUE(root->FileControl()->LoadLapFile(ExampleFile(example)));
  ASSERT_TRUE(root->FileControl()->SaveLapFile(file, SaveTypeOfWord(kept.word)));
  const auto read = std::make_shared<clsKeltrun2>();
  read->FileControl()->SetForeignFormats(true);
  ASSERT_TRUE(read->FileControl()->LoadLapFile(file)) << kept.word << read->ErrorComment();
  ASSERT_EQ(read->ClassCount(), root->ClassCount()) << kept.word;
  for (std::int32_t i = 1; i <= root->ClassCount(); ++i) {
    const auto written = root->ClassData(i);
    const auto klass = read->ClassData(i);
    EXPECT_EQ(klass->ClassName(), written->ClassName());
    EXPECT_EQ(klass->ControlCount, written->ControlCount);
    if (kept.codes) {
      EXPECT_EQ(klass->Length, written->Length);
    }
    ASSERT_EQ(klass->LapCount(), written->LapCount()) << kept.word << klass->ClassName();
    std::multimap<string, std::shared_ptr<clsLapData>> runners;
    for (std::int32_t j = 1; j <= klass->LapCount(); ++j) {
      runners.emplace(Key(*klass->LapData(j)), klass->LapData(j));
    }
    for (std::int32_t j = 1; j <= written->LapCount(); ++j) {
      const auto runner = written->LapData(j);
      const auto found = runners.find(Key(*runner));
      ASSERT_NE(found, runners.end()) << kept.word << runner->RunnerName;
      ExpectSameRunner(*runner, *found->second, kept);
      runners.erase(found);
    }
  }
}

TEST(Exchange, ExamplesAreReadBack) {
  for (const string example : {"hoshinomori/event.lxm", "midorigaoka/event.lxm"}) {
    for (const Kept& kept :
         {Kept{"iof3", true, true, true, true}, Kept{"iof2", true, true, true, true},
          Kept{"oe2010", true, true, true, true}, Kept{"splitsbrowser", false, false, false, false},
          Kept{"winsplits", false, false, false, true}}) {
      ExpectReadBack(example, kept);
    }
  }
}

// --- charsets and tables ---

TEST(Exchange, Charsets) {
  const TemporaryFolder folder;
  const SmallEvent event;
  clsFileControl& files = *event.root->FileControl();
  const auto saved = [&](const string& word, const string& charset) {
    files.SetOutputCharset(charset);
    EXPECT_TRUE(files.SaveLapFile(folder.Path("f"), SaveTypeOfWord(word))) << word << charset;
    return ReadBytes(folder.Path("f"));
  };
  EXPECT_TRUE(saved("splitsbrowser", "utf-8-bom").starts_with("\xEF\xBB\xBFM 21"));
  EXPECT_TRUE(Has(saved("splitsbrowser", "cp932"), "\x91\xBE\x98\x59,\x8E\x52\x93\x63,"));
  EXPECT_TRUE(Has(saved("winsplits", "windows-1252"), "?????\t"));
  EXPECT_TRUE(Has(saved("iof3", "windows-1252"), "encoding=\"windows-1252\""));
  EXPECT_TRUE(Has(saved("iof2", "windows-1252"), "<Family>&#23665;&#30000;</Family>"));
  EXPECT_TRUE(Has(saved("lap", "utf-8"), "山田"));
  EXPECT_FALSE(files.SaveLapFile(folder.Path("f"), KR_FILETYPE_KELTRUN2));
  EXPECT_TRUE(Has(event.root->ErrorComment(), "charset"));
  EXPECT_THROW(files.SetOutputCharset("klingon"), AutomationError);
}

TEST(Exchange, LossesAreRemarks) {
  const TemporaryFolder folder;
  const SmallEvent event;
  const auto remarks = [&](const char* word) {
    EXPECT_TRUE(event.root->FileControl()->SaveLapFile(folder.Path("f"), SaveTypeOfWord(word)));
    string all;
    for (const LoadRemark& remark : event.root->FileControl()->SaveRemarks()) {
      all += remark.Text + "\n";
    }
    return all;
  };
  EXPECT_TRUE(Has(remarks("winsplits"), "runners without a start time: 3, shown at 0:00"));
  EXPECT_TRUE(Has(remarks("splitsbrowser"), "runners with legs of 0 seconds: 1"));
  EXPECT_TRUE(Has(remarks("iof3"), "without a known start time: 2"));
  EXPECT_FALSE(Has(remarks("iof3"), "card numbers"));
}

TEST(Exchange, ResultTable) {
  const SmallEvent event;
  event.klass->LapData(1)->RunnerName = "=1+1";
  event.klass->LapData(3)->ClubName = "Say \"hi\"";
  EXPECT_EQ(
      event.root->TextControl()->OutputCsvResults("m:21", 3, true),
      "class,place,bib,name,club,card,start,result,behind,status,course,split1,split2,finish\r\n"
      "M:21,1,7,山田　太郎,,123456,23:59:00,0:12:40.5,0:00:00,OK,3,0:07:00,0:07:00,"
      "0:12:40.5\r\n"
      "M:21,,,Jo Mispunch,\"A, B\",,,MP,,MissingPunch,3,0:01:00,,0:01:30\r\n"
      "M:21,,,Out,\"Say \"\"hi\"\"\",,,DISQ,,Disqualified,3,0:00:50,0:01:10,0:01:20\r\n"
      "M:21,,,'=1+1,,,,DNS,,DidNotStart,3,,,\r\n");
  EXPECT_EQ(event.root->TextControl()->OutputCsvResults("W", 0, false, ";"),
            "class;place;bib;name;club;card;start;result;behind;status;course\r\n");
  EXPECT_THROW(event.root->TextControl()->OutputCsvResults("", 0, false, "x"), AutomationError);
}

// The reference laps are 420 s, 20 s and 340.5 s.
TEST(Exchange, LapTable) {
  const SmallEvent event;
  const auto analyzer = event.root->NewAnalyzer();
  analyzer->AddClass("M:21");
  analyzer->Execute();
  const string table = event.root->TextControl()->OutputCsvLaps({{analyzer, DataSetKind::kClass}});
  EXPECT_TRUE(table.starts_with(
      "event,date,set,class,runner,bib,name,club,status,result_s,place,leg,legs,from,to,lap_s,"
      "split_s,lap_rank,split_rank,reference_s,relative,loss_s,marker\r\n"
      "Spring <1>,2025-10-18,M:21,M:21,4,7,山田　太郎,,OK,760.5,1,1,3,S,31,420,420,"))
      << table;
  EXPECT_TRUE(Has(table, ",2,,Jo Mispunch,\"A, B\",MissingPunch,,,2,3,31,F7,,,,,")) << table;
  EXPECT_TRUE(Has(table, ",skip\r\n")) << table;
}

}  // namespace
}  // namespace keltrun::test
