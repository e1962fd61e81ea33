// SplitsBrowser, tables with three columns for each control, Swiss tables and WinSplits texts: what
// is recognized, and the meaning of their lines. tests/data/foreign has whole files.
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "keltrun2/codec/list_encoding.h"
#include "keltrun2/io/foreign/splitsbrowser_reader.h"
#include "keltrun2/io/foreign/swiss_csv_reader.h"
#include "keltrun2/io/foreign/triple_csv_reader.h"
#include "keltrun2/io/foreign/winsplits_reader.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using nlohmann::json;
using std::string;

struct Format {
  string file;  // how the names of its files begin
  bool (*looks_like)(std::string_view);
  ReadResult (*read)(std::string_view, const ForeignOptions&);
};

const Format kSplitsBrowser{"splitsbrowser", LooksLikeSplitsBrowser, ReadSplitsBrowser};
const Format kTriple{"triple", LooksLikeTripleCsv, ReadTripleCsv};
const Format kSwiss{"swiss", LooksLikeSwissCsv, ReadSwissCsv};
const Format kWinSplits{"winsplits", LooksLikeWinSplits, ReadWinSplits};
const std::vector<Format> kAll = {kSplitsBrowser, kTriple, kSwiss, kWinSplits};

// Name, club, start, result, rank and laps; -1 is a missed control, 0 no data.
json RowOf(clsLapData& r) {
  const string start = r.StartTime()->Value() == 0 ? "" : r.StartTime()->ToString();
  return {r.RunnerName, r.ClubName, start, r.Result(), r.Rank, LapsOf(r)};
}

// For each class its name, length, climb, controls, codes and runners; then the lines and
// subjects of the remarks, and the line of the error.
string Read(const Format& format, const string& text) {
  const ReadResult read = format.read(text, {});
  string out;
  for (const ClassRecords& klass : read.records.classes) {
    out += klass.name + " " + std::to_string(klass.length.value_or(0)) + " " +
           std::to_string(klass.climb.value_or(0)) + " " +
           std::to_string(klass.control_count.value_or(0)) + " " + json(klass.codes).dump();
    for (const auto& runner : klass.runners) out += " " + RowOf(*runner).dump();
    out += ";";
  }
  for (const LoadRemark& remark : read.remarks) {
    if (remark.Text.starts_with("status: ") && remark.Line == 0) continue;  // told from the times
    out += " " + std::to_string(remark.Line) + remark.Text.substr(0, remark.Text.find(':'));
  }
  return out + (read.error ? " E" + std::to_string(read.error->line) : "");
}

void ExpectReadings(const Format& format, const Rows<string, string>& cases) {
  for (const auto& [text, expected] : cases) {
    SCOPED_TRACE(text);
    EXPECT_TRUE(format.looks_like(text));
    EXPECT_EQ(Read(format, text), expected);
  }
}

void ExpectNotRecognized(const Format& format, const std::vector<string>& texts) {
  for (const string& text : texts) EXPECT_FALSE(format.looks_like(text)) << text;
}

TEST(ForeignCsv, RecognizesNoFileOfAnotherFormat) {
  for (const string& folder : {DataFile(""), ExampleFile("")}) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
      if (!entry.is_regular_file()) continue;
      const string name = entry.path().filename().string();
      const string text = DecodeTextFile(ReadBytes(entry.path().string()));
      for (const Format& format : kAll) {
        const bool is_own = name.starts_with(format.file) && !name.ends_with(".json");
        EXPECT_EQ(format.looks_like(text), is_own) << format.file << " and " << entry.path();
      }
    }
  }
}

TEST(SplitsBrowserCsv, Lines) {
  const string ok = R"("0:03:30","",[60,120,30]])";
  ExpectReadings(
      kSplitsBrowser,
      {
          {"A,2\r\nAnn,Bee,C,9:05,1:00,2:00,0:30\r\n\r\nNOCLAS,-1\r\n",
           R"(A 0 0 2 [] ["Ann Bee","C","09:05:00",)" + ok + ";"},
          {"A; 2\nAnn;Bee;;09:05:10;001:00;0:02:00;00:30;;\n",
           R"(A 0 0 2 [] ["Ann Bee","","09:05:10",)" + ok + ";"},
          // The number is the last cell of a class line, and the club may have commas too.
          {"Long, hard,2,,,,\nAnn,Bee,Sun, Moon,0:00,1:00,2:00,0:30\n",
           R"(Long, hard 0 0 2 [] ["Ann Bee","Sun, Moon","",)" + ok + ";"},
          {"A,2\n\"Ann\",Bee,\"Sun, \"\"Moon\"\"\",,1:00,2:00,0:30\n",
           R"(A 0 0 2 [] ["Ann Bee","Sun, \"Moon\"","",)" + ok + ";"},
          // Three ways to miss a control; the next leg begins at the last one with a time.
          {"A,2\nAnn,Bee,-,0:00,0:00,1:00,0:30\nBob,,,0:00,1:00,-----,0:30\nCy,-,,0:00,1:00,,0:"
           "30\n",
           R"(A 0 0 2 [] ["Ann Bee","","","MP","",[-1,60,30]] ["Bob","","","MP","",[60,-1,30]])"
           R"( ["Cy","","","MP","",[60,-1,30]];)"},
          {"A,1\nAnn,Bee,C,9:00,1:00,-----\nBob,Cee,C,9:01,-----,-----\nB,0\nCy,Dee,C,0:00,75:10\n",
           R"(A 0 0 1 [] ["Ann Bee","C","09:00:00","DNF","",[60]] ["Bob Cee","C","09:01:00","DNS","",[]];)"
           R"(B 0 0 0 [] ["Cy Dee","C","","1:15:10","",[4510]];)"},
          // Another number of times than the class line says.
          {"A,2\nAnn,Bee,C,9:05,1:00\nBob,Cee,C,9:05,1:00,2:00,0:30\n",
           R"(A 0 0 2 [] ["Ann Bee","C","09:05:00","DNF","",[60]] ["Bob Cee","C","09:05:00",)" +
               ok + "; 2times"},
          {"A,1\nAnn,Bee,C,0:00,1:00,2:00\nBob,Cee,C,0:00,1:00\nCy,Dee,C,0:00,1:00,2:00,0:30\n",
           R"(A 0 0 1 [] ["Ann Bee","C","","0:03:00","",[60,120]] ["Bob Cee","C","","DNF","",[60]])"
           R"( ["Cy Dee","C","","0:03:30","",[60,120,30]]; 3times 4times)"},
          {"A,1\nAnn,Bee,C,0:00,1:00,2:00\nBob,Cee,C,0:00,1:0x,2:00\n,,,0:00,1:00,2:00\n",
           R"(A 0 0 1 [] ["Ann Bee","C","","0:03:00","",[60,120]])"
           R"( ["Bob Cee","C","","MP","",[-1,120]]; 3legs 4line)"},
          {"A,1\nAnn,Bee,C,0:00,1:00,2:00\nNOCLAS,-1\nBob,Cee,C,0:00,1:00\n",
           R"(A 0 0 1 [] ["Ann Bee","C","","0:03:00","",[60,120]]; 4line)"},
          // Name and club only, and times that ascend in every line: times since the start.
          {"A,2\nAnn Bee,C,9:05:00,1:00,3:00,3:30\n",
           R"(A 0 0 2 [] ["Ann Bee","C","09:05:00",)" + ok + "; 0times"},
          {"A,2\nAnn Bee,C,9:05:00,1:00,2:00,0:30\nBob,C,9:05:00,1:00,2:00,3:00\n",
           R"(A 0 0 2 [] ["Ann Bee","C","09:05:00",)" + ok +
               R"( ["Bob","C","09:05:00","0:06:00","",[60,120,180]];)"},
      });
  EXPECT_EQ(Read(kSplitsBrowser, "A,2\nB,3\n"), " E0");
  ExpectNotRecognized(kSplitsBrowser,
                      {"", "A,2\n", "A,2\nB,3\n", "A,2\nAnn,Bee,C,9:05,1:00,2:00\n",
                       "A,2\nAnn,Bee,C,9:05,1:00,2:00,x\n", "A,1:00\nAnn,1:00\n",
                       "class,name,result\nA,Ann,1:00\n", "A,5.2,100\nAnn,1,1:00\n"});
}

// Our own export has no surname, and the times since the start.
TEST(SplitsBrowserCsv, ReadsTheExportOfAnAnalysis) {
  const auto root = NewRoot();
  ASSERT_TRUE(root->FileControl()->LoadLapFile(ExampleFile("midorigaoka/event.lxm")));
  const auto analyzer = root->NewAnalyzer();
  analyzer->AddClass(1);
  analyzer->Execute();
  const string text = root->TextControl()->OutputCsvSplitsBrowser(analyzer);
  ASSERT_TRUE(LooksLikeSplitsBrowser(text));
  const ReadResult read = ReadSplitsBrowser(text, {});
  ASSERT_EQ(read.records.classes.size(), 1U);
  const auto& runners = read.records.classes[0].runners;
  std::size_t compared = 0;
  for (std::int32_t i = 1; i <= analyzer->Count(); ++i) {
    const auto record = analyzer->Item(i)->OtherData();
    for (const auto& runner : runners) {
      if (runner->RunnerName != record->RunnerName) continue;
      EXPECT_EQ(LapsOf(*runner), LapsOf(*record)) << runner->RunnerName;
      ++compared;
    }
  }
  EXPECT_EQ(compared, runners.size());
  EXPECT_GT(compared, 10U);
}

TEST(TripleCsv, Lines) {
  const string head =
      "RaceNumber,Name,AgeClass,Club,CourseClass,StartTime,RaceTime,NonCompetitive,Position,"
      "Status,ControlCode1,Split1,Points1,ControlCode2,Split2,Points2\n";
  const string splits = ",31,1:00,,32,3:00,,F1,3:30,\n";
  const string legs = R"([60,120,30]])";
  ExpectReadings(
      kTriple,
      {
          {head + "7,Ann Bee,,C,A,09:05:00,0:03:30,,1," + splits,
           R"(A 0 0 2 [31,32] ["Ann Bee","C","09:05:00","0:03:30","1",)" + legs + ";"},
          {head + "7,\"Bee, Ann\",W,C,,,0:03:30,Y,," + splits,
           R"(W 0 0 2 [31,32] ["Bee, Ann","C","","0:03:30","",)" + legs + ";"},
          // The names of a pair are separate cells.
          {head + "7,Ann Bee, Bob Cee,,C,A,,0:03:30,,1," + splits,
           R"(A 0 0 2 [31,32] ["Ann Bee, Bob Cee","C","","0:03:30","1",)" + legs + ";"},
          {head +
               "7,Ann,,C,A,,,,,m,31,1:00,,32,,,F1,3:30,\n8,Bob,,C,A,,,,,r,31,1:00,,32,,,F1,,\n"
               "9,Cy,,C,A,,,,,n,31,,,32,,,F1,,\n10,Di,,C,A,,,,,D" +
               splits,
           R"(A 0 0 2 [31,32] ["Ann","C","","MP","",[60,-1,150]] ["Bob","C","","DNF","",[60]])"
           R"( ["Cy","C","","DNS","",[]] ["Di","C","","DISQ","",[60,120,30]];)"},
          {head + "7,Ann,,C,A,,,,,q" + splits + "8,,,C,A,,,,," + splits +
               "9,Bob,,C,A,,,,,,31,1:00,,32,x,,F1,3:30,,,9:00,\n",
           R"(A 0 0 2 [31,32] ["Ann","C","","0:03:30","",)" + legs +
               R"( ["Bob","C","","MP","",[60,-1,150]]; 3line 2status 4split 4split)"},
          // SiTiming does not number the titles and has its own word for the age class.
          {"RaceNumber;CardNumbers;MembershipNumbers;Name;Category;Club;CourseClass;StartTime;"
           "RaceTime;NumSplits;ControlCode;Split;Points;ControlCode;Split;Points\n"
           "7;;;Ann Bee;W;C;;09:05:00;0:03:30;2;31;1:00;;32;3:00;;F1;3:30;\n",
           R"(W 0 0 2 [31,32] ["Ann Bee","C","09:05:00","0:03:30","",)" + legs + ";"},
          // No titles.
          {"7;;;Ann Bee;;C;;A;09:05:00;;0:03:30;;1;" + string(25, ';') +
               "31;1:00;;32;3:00;;F1;3:30\n",
           R"(A 0 0 2 [31,32] ["Ann Bee","C","09:05:00","0:03:30","1",)" + legs + ";"},
          // A runner without a letter is classified where others have one.
          {head +
               "7,Ann,,C,A,,0:03:30,,1,,31,1:00,,32,,,F1,3:30,\n8,Bob,,C,A,,,,,n,31,,,32,,,F1,,\n",
           R"(A 0 0 2 [31,32] ["Ann","C","","0:03:30","1",[60,-1,150]] ["Bob","C","","DNS","",[]];)"},
      });
  // Points for the controls are a score event.
  EXPECT_TRUE(
      Read(kTriple, head + "7,Ann,,C,A,,,,,,31,1:00,10,32,3:00,20,F1,3:30,\n").ends_with("E0"));
  EXPECT_TRUE(Read(kTriple, head).ends_with("E0"));
  // Lists of the same program without controls.
  const string other = "RaceNumber;CardNumbers;MembershipNumbers;Name;Category;Club;CourseClass;";
  for (const string& text : {other + "StartTime\n7;;;Ann;;C;A;9:05:00\n",
                             other + "StartTime;RaceTime\n7;;;Ann;;C;A;9:05:00;0:03:30\n"}) {
    EXPECT_TRUE(kTriple.looks_like(text)) << text;
    EXPECT_TRUE(Read(kTriple, text).ends_with("E0")) << text;
  }
  ExpectNotRecognized(kTriple, {"", "RaceNumber,Name,CourseClass,RaceTime,Score\n1,Ann,A,1:00,9\n",
                                "Name,ControlCode1,Split1,ControlCode2,Split2\n"});
}

TEST(SwissCsv, Lines) {
  const string head =
      "Kategorie;Laenge;HM;PoAnz;Rang;Name;Jg;Land;Club;Ort;Zeit;Startzeit;Zielzeit;";
  const string titles = head + "Zwischenzeiten\n";
  const string course = "HE;4.2;90;2;";
  const string oware =
      "//Format: Rank;Name;Firstname;YearOfBirth;SexMF;FedNr;Zip;Town;Club;NationIOF;StartNr;"
      "eCardNr;RunTime;StartTime;FinishTime;CtrlCode;SplitTime; ...\n";
  const string ann = R"(["Ann Bee","C","09:05:00","0:03:30","1",[60,120,30]])";
  ExpectReadings(
      kSwiss,
      {
          {titles + course + "1;Ann Bee;1990;SUI;C;Bern;3:30;9:05:00;9:08:30;31;1:00;32;3:00\n",
           "HE 4200 90 2 [31,32] " + ann + ";"},
          // The finish as a pair, titles without one for the pairs, other words.
          {"Kategorie;Länge;Steigung;PoAnz;Rang;Name;Club;Zeit;Startzeit\n"
           "HE;4200;90;2;1;Ann Bee;C;3:30;9:05:00;31;1:00;32;3:00;Zi;3:30\n",
           "HE 4200 90 2 [31,32] " + ann + ";"},
          // 0.00 is a unit that did not work; a hyphen a control that was missed.
          {titles + course + "1;Ann Bee;;;C;;3:30;9:05:00;;31;0.00;32;3:00\n" + course +
               ";Bob;;;C;;Po.fehl.;;;31;-----;32;3:00\n" + course +
               ";Cy;;;C;;aufgeg.;;;31;1:00;32;-\n" + course +
               ";Di;;;C;;ak-3:30;;;31;1:00;32;3:00\n" + course + ";Ed;;;C;;n.gest.;;;31;-;32;-\n",
           R"(HE 4200 90 2 [31,32] ["Ann Bee","C","09:05:00","0:03:30","1",[-1,180,30]])"
           R"( ["Bob","C","","MP","",[-1,180]] ["Cy","C","","DNF","",[60]])"
           R"( ["Di","C","","0:03:30","",[60,120,30]] ["Ed","C","","DNS","",[]];)"},
          // The times of day tell the total that a word replaces.
          {titles + course + ";Bob;;;C;;Po.fehl.;9:05:00;9:08:30;31;-;32;3:00\n",
           R"(HE 4200 90 2 [31,32] ["Bob","C","09:05:00","MP","",[-1,180,30]];)"},
          {titles + course + "1;Ann;;;C;;3:30;9:05:00;9:08:30\n",
           R"(HE 4200 90 2 [] ["Ann","C","09:05:00","0:03:30","1",[-1,-1,210]]; 0split times)"},
          // Start times that count from the zero time.
          {titles + course + "1;Ann;;;C;;3:30;0:38:00;;31;1:00;32;3:00\n",
           R"(HE 4200 90 2 [31,32] ["Ann","C","00:38:00","0:03:30","1",[60,120,30]]; 0start times)"},
          {oware + "//Night;Wood 1:10'000;2018-11-16;9:00;\nHE;4200;90;2\n"
                   "1;Bee;Ann;1990;F;;;Bern;C;SUI;;270087;3:30;5:00;;31;1:00;32;3:00\n"
                   ";Cee;Bob;;M;;;;C;SUI;;;P.fehl.;65:00;;31;-;32;3:00\n",
           "HE 4200 90 2 [31,32] " + ann + R"( ["Bob Cee","C","10:05:00","MP","",[-1,180]];)"},
          {"BasicData,X25,\"Cup\",2025-09-21,08:00:00,Einzel,Ort,\"Wood\",\"C\"\n"
           "EXTCLASS=[DATATYPE],[FULLCLASS],[FAMILYNAME],[FIRSTNAME],[CLUB],[STARTFULLPREC],"
           "[RUNTIMENET],[RANKNET],[IOFRESSTATTEXT],[NOFSPLITS],[TERM]\n"
           "HE=S,HE,Bee,Ann,\"C\",32700.000,210.000,1,OK,3,<,0,32700,31,32760,32,32880,9999,32910,"
           "x\n"
           "HE=E,HE,Cee,Bob,C\n",
           "HE 0 0 2 [31,32] " + ann + "; 4line"},
      });
  const ReadResult read =
      ReadSwissCsv(oware + "//Night;Wood;2018-11-16;9:00;\nHE;1;1;1\n1;B;A\n", {});
  EXPECT_EQ(read.records.event_name, "Night");
  EXPECT_EQ(FormatDateTime(read.records.event_date.value(), "yyyy/mm/dd"), "2018/11/16");
  EXPECT_TRUE(Read(kSwiss, titles).ends_with("E0"));
  ExpectNotRecognized(kSwiss, {"", "Kategorie;Rang;Name;Zeit\nHE;1;Ann;3:30\n", "//Format\n",
                               "BasicData,X\nHE,1\n"});
}

TEST(WinSplitsText, Lines) {
  const string head = "Cup\t2004-05-08\nA\t500\t700\t90\n";
  const string ann = R"(A 1290 0 2 [] ["Ann Bee","C","09:05:00","0:03:30","",[60,120,30]])";
  ExpectReadings(
      kWinSplits,
      {
          {head + "Ann Bee\tC\t09.05.00\t1.00\t2.00\t0.30\n", ann + ";"},
          {"Cup\n2004-05-08\n\nA\t500\t700\t90\nAnn Bee\tC\t9.05.00\t01.00\t0.02.00\t0.30\n\n"
           "B\t0\t0\nBob\t\t\t1.15.10\t0.30\n",
           ann + R"(;B 0 0 1 [] ["Bob","","","1:15:40","",[4510,30]];)"},
          // A hyphen is a missed control; 0.00 one that the runner visited.
          {head + "Ann\tC\t\t-\t2.00\t0.30\nBob\tC\t\t0.00\t2.00\t0.30\nCy\tC\t\t-\t-\t-\n",
           R"(A 1290 0 2 [] ["Ann","C","","MP","",[-1,120,30]])"
           R"( ["Bob","C","","0:02:30","",[-1,120,30]] ["Cy","C","","DNS","",[]];)"},
          // Times that ascend in every row are times since the start.
          {"Cup\nA\t0\t0\t0\t0\t0\nAnn\tC\t\t1.00\t3.00\t3.30\t4.00\t5.00\n",
           R"(A 0 0 4 [] ["Ann","C","","0:05:00","",[60,120,30,30,60]]; 0times)"},
          {head + "Ann\tC\t\t1.00\t2.00\t0.30\nBob\tC\t\t1.00\txx\t0.30\n\tC\t\t1.00\t2.00\t3.00\n",
           R"(A 1290 0 2 [] ["Ann","C","","0:03:30","",[60,120,30]] ["Bob","C","","MP","",[60,-1,30]]; 4times 5line)"},
      });
  const ReadResult read = ReadWinSplits(head + "Ann\tC\t\t1.00\t2.00\t0.30\n", {});
  EXPECT_EQ(read.records.event_name, "Cup");
  EXPECT_EQ(FormatDateTime(read.records.event_date.value(), "yyyy/mm/dd"), "2004/05/08");
  EXPECT_EQ(Read(kWinSplits, "Cup\nA\t1\t2\n"), " E0");
  ExpectNotRecognized(kWinSplits, {"", head, head + "Ann\tC\t9:05\t1:00\t2:00\t0:30\n",
                                   "Cup\n1\n2\nA\t1\t2\nAnn\tC\t\t1.00\t2.00\n"});
}

}  // namespace
}  // namespace keltrun::test
