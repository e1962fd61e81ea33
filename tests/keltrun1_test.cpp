// Text lap files of the previous generation, result lists and their header lines.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "keltrun2/config/settings.h"
#include "keltrun2/io/csv_header.h"
#include "keltrun2/io/keltrun1_reader.h"
#include "keltrun2/io/keltrun1_writer.h"
#include "keltrun2/model/process_state.h"
#include "keltrun2/model/result_status.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using nlohmann::json;
using std::string;

TEST(CsvHeader, NormalizesItsTitles) {
  struct Case {
    Mode mode;
    string line, expected;
  };
  const Mode ja = Mode::kJapaneseTexts;
  const Mode en = Mode::kEnglishTexts;
  const Case cases[] = {
      {ja, "クラス名,名前,shozoku,Time,Start,Rank,Seed,性別",
       "クラス,氏名,所属,合計タイム,スタート時刻,順位,シード,性別"},
      {ja, "**,NAMAE,SYOZOKU,タイム,STARTTIME,ORDER",
       "クラス,氏名,所属,合計タイム,スタート時刻,順位"},
      {ja, "name,記録,結果,時間,T,TT,TOTAL",
       "クラス,氏名,合計タイム,合計タイム,合計タイム,合計タイム,合計タイム,合計タイム"},
      {ja, "ＮＡＭＥ,ＣＬＡＳＳ,Ｓ→１,１→２,２→Ｆ", "氏名,クラス,→1,→2,→F"},  // full width
      {ja, "Position,NAME,memo, age ", "クラス,順位,氏名,MEMO,AGE"},          // others are kept
      {ja, "NAME,S-1,1-2,2-3,3-G", "クラス,氏名,→1,→2,→3,→F"},
      {ja, "NAME,1,2,3,F", "クラス,氏名,→1,→2,→3,→F"},
      {ja, "NAME,-1,→2,5→F", "クラス,氏名,→1,→2,→F"},
      {ja, "NAME,F", "クラス,氏名,→F"},
      {ja, "NAME,A-1,1-B,2022-06-04,0,1.5,", "クラス,氏名,A-1,1-B,2022-06-04,0,1.5,"},
      {ja, "M21A,Name Less,club", "M21A,Name Less,club"},  // no whole cell: unchanged
      {ja, "my name,class", "my name,class"},
      {ja, "", ""},
      {en, "Class,Runner Name,Club,Race Time,Start Time,Place,1,F",
       "CLASS,NAME,CLUB,TOTAL TIME,START TIME,PLACE,\u21921,\u2192F"},
      {en, "ＣＬＡＳＳ,ＮＡＭＥ,ＣＬＵＢ,ＴＩＭＥ,１,Ｆ",
       "CLASS,NAME,CLUB,TOTAL TIME,\u21921,\u2192F"},
      {en, "氏名,クラス名,合計タイム,STNO", "NAME,CLASS,TOTAL TIME,STNO"},  // both languages
      {ja, "Runner name,Class,Race time,Place", "氏名,クラス,合計タイム,順位"},
      {en, "氏名,→１,→10,→Ｆ", "CLASS,NAME,\u21921,\u219210,\u2192F"},
      {Mode::kJapaneseMode, "NAME,9,10,F", "クラス,氏名,→９,→10,→F"},
  };
  for (const Case& c : cases) {
    RestartIn(c.mode);
    EXPECT_EQ(NormalizeCsvHeader(c.line), c.expected) << c.line;
  }
}

// --- lap files ---

const string kEventLines =
    "$LAPFILE Ver=2\r\n$LAPFILE Rev=4\r\n$大会名=E, 1\r\n$開催日=2025/10/18\r\n"
    "$開催地=\r\n$メモ=a b\r\n$公式サイト=\r\n$ファイル名=\r\n";

TEST(Keltrun1, WritesTheOutlinedLines) {
  const auto root = NewRoot();
  root->EventData()->EventName = "E, 1";
  root->EventData()->Memo = "a\tb";
  root->EventData()->EventDate()->SetValue(45948);  // 2025-10-18
  EXPECT_EQ(WriteKeltrun1LapFile(*CurrentModel()), kEventLines);
  const auto klass = root->AddClass("M,21");
  klass->ControlCount = 3;
  klass->Length = 4100;
  klass->CourseNum = 2;
  const auto runner = AddRunner(*klass, "A, B\r\nC", "1:02:03", {61, -1, -2, 90061});
  runner->ID = 7;
  runner->ClubName = "Club";
  runner->Seed = "S";
  runner->Sex = "F";
  runner->Rank = "3";
  runner->StartTime()->SetValue(Seconds(36061));
  AddRunner(*klass, "short", "×", {61});
  AddRunner(*klass, "no legs", "DNS", {});
  AddRunner(*root->AddClass("X"), "long", "", {61, 86399.9});
  const string expected =
      kEventLines +
      "$M，21:コース距離=4100\r\n$M，21:登距離=0\r\n"
      "$M，21:コントロール数=3\r\n$M，21:コース番号=2\r\n"
      "\r\nクラス,ゼッケン,氏名,所属,シード,性別,スタート時刻,記録,順位,→1,→2,→3,→F\r\n"
      "M，21,7,A， B  C,Club,S,F,10:01:01,1:02:03,3,00:01:01,→,n/a,25:01:01\r\n"
      "M，21,0,short,,,,00:00:00,n/a,,00:01:01,n/a,n/a,n/a\r\n"
      "\r\nクラス,ゼッケン,氏名,所属,シード,性別,スタート時刻,記録,順位,→F\r\n"
      "X,0,long,,,,00:00:00,,,00:01:01,24:00:00\r\n";
  EXPECT_EQ(WriteKeltrun1LapFile(*CurrentModel()), expected);

  const ReadResult read = ReadKeltrun1(expected);
  EXPECT_FALSE(read.error);
  EXPECT_TRUE(read.remarks.empty());
  ASSERT_EQ(read.records.classes.size(), 2u);
  EXPECT_EQ(read.records.classes[0].runners[1]->Result(), "×");
  EXPECT_EQ(read.records.classes[0].runners[0]->Lap(4), Seconds(90061));
  EXPECT_EQ(read.records.classes[1].legs_seen, 1);  // the number of controls stays unknown
  EXPECT_EQ(read.records.classes[1].runners[0]->Lap(2), Seconds(86400));
}

// The row of a runner as in the facts, with what the format can express.
json RowOf(clsLapData& r) {
  const DateTime start = r.StartTime()->Value();
  return {r.RunnerName,
          r.ID,
          r.Seed,
          r.ClubName,
          start == 0 ? json() : json(std::lround(start * 86400)),
          r.Result(),
          r.Rank,
          r.Sex,
          LapsOf(r)};
}

json KnownRow(const json& facts, std::size_t legs) {
  json laps = facts[10];
  for (json& lap : laps) lap = lap == -2 ? json(0) : lap;
  while (laps.size() < legs) laps.push_back(0);
  return {facts[0], facts[1], facts[3], facts[4], facts[5], facts[6], facts[7], facts[8], laps};
}

void CheckClass(const ClassRecords& klass, const json& facts) {
  SCOPED_TRACE(klass.name);
  EXPECT_EQ(klass.name, facts["name"]);
  EXPECT_EQ(klass.length, facts["length"].get<int>());
  EXPECT_EQ(klass.climb, facts["climb"].get<int>());
  EXPECT_EQ(klass.control_count, facts["controls"].get<int>());
  EXPECT_EQ(klass.course_num, facts["course"].get<int>());
  const std::size_t legs = facts["controls"].get<std::size_t>() + 1;
  json held = json::array();
  json known = json::array();
  for (const auto& runner : klass.runners) held.push_back(RowOf(*runner));
  for (const json& position : facts["sorted"]) {
    const json& runner = facts["runners"][position.get<std::size_t>()];
    if (!runner[10].empty()) known.push_back(KnownRow(runner, legs));
  }
  EXPECT_EQ(held, known);
}

TEST(Keltrun1, KeepsTheEvents) {
  for (const Mode mode : {Mode::kJapaneseTexts, Mode::kEnglishTexts, Mode::kJapaneseMode}) {
    for (const string event : {"midorigaoka", "hoshinomori"}) {
      SCOPED_TRACE(event);
      const auto root = NewRoot(mode);
      ASSERT_TRUE(root->FileControl()->LoadLapFile(ExampleFile(event + "/event.lxm")));
      const ReadResult read = ReadKeltrun1(WriteKeltrun1LapFile(*CurrentModel()));
      EXPECT_FALSE(read.error);
      EXPECT_TRUE(read.remarks.empty());
      const json facts = json::parse(ReadBytes(DataFile(event + "/facts.json")));
      EXPECT_EQ(read.records.event_name, facts["event"]["name"].get<string>());
      EXPECT_EQ(FormatDateTime(read.records.event_date.value_or(0), "yyyy/mm/dd"),
                facts["event"]["date"]);
      EXPECT_EQ(read.records.terrain.value_or(""), facts["event"]["terrain"]);
      EXPECT_EQ(read.records.memo.value_or(""), facts["event"]["memo"]);
      EXPECT_EQ(read.records.official_site.value_or(""), facts["event"]["homepage"]);
      const json& classes = facts["lxm"]["classes"];
      ASSERT_EQ(read.records.classes.size(), classes.size());
      for (std::size_t i = 0; i < classes.size(); ++i)
        CheckClass(read.records.classes[i], classes[i]);
    }
  }
}

// "class[LegsSeen]/codes name;club;result;rank;laps in seconds", one runner per line; then the
// remarks.
string Shown(const ReadResult& read) {
  string shown;
  for (const ClassRecords& klass : read.records.classes) {
    shown += klass.name + "[" + std::to_string(klass.legs_seen) + "]";
    for (const std::int32_t code : klass.codes) shown += "/" + std::to_string(code);
    for (const auto& r : klass.runners) {
      const json row = RowOf(*r);
      shown += " " + r->RunnerName + ";" + r->ClubName + ";" + r->Result() + ";" + r->Rank + ";" +
               row[8].dump();
    }
    shown += "\n";
  }
  for (const LoadRemark& remark : read.remarks) {
    shown += std::to_string(remark.Line) + ":" + std::to_string(remark.Column) + " ";
  }
  return shown + (read.error ? "E" : "");
}

TEST(Keltrun1, ReadsResultLists) {
  const Mode ja = Mode::kJapaneseTexts;
  const Mode en = Mode::kEnglishTexts;
  const Rows<Mode, string, string> cases = {
      {ja,
       "クラス,順位,氏名,所属,記録,1,2,F\nM,1,A,K,21:05,5:00,6:05,10:00\nM,,B,L,dnf,5:00,→\nW,1,C,,"
       "30.10,1830",
       "M[3] A;K;0:21:05;1;[300,365,600] B;L;DNF;;[300,-1]\nW[1] C;;0:30:10;1;[1110]\n4:0 "},
      {en, "Name,Club,Time,Class\nA,K,1:02:03,M\n\nB,,DNS,M\n",
       "M[0] A;K;1:02:03;;[] B;;DNS;;[]\n"},
      // class titles come before headers without a class column
      {ja, "成績表\nM21,,\n順位,氏名,タイム\n1,A,9:00\n W21\n順位,氏名,タイム\n1,B,9:01\nEOF\n",
       "M21[0] A;;0:09:00;1;[]\nW21[0] B;;0:09:01;1;[]\n2:0 5:0 8:0 0:0 "},
      {ja, "氏名,タイム\nA,9:00\n", "[0] A;;0:09:00;;[]\n1:0 "},
      {ja, "クラス,氏名,記録\nM,A\n,B\nM,\n",
       "M[0] A;;;;[] B;;;;[]\n3:0 4:0 "},  // class repeated; no name
      {ja, "クラス,氏名,Card,F,記録\nM,A,5,9:00,,9\n", "M[0] A;;;;[]\n1:0 1:3 2:6 "},
      {ja, "クラス,氏名,1,51,F\nM,A,x,1:00,1:00\n", "M[1] A;;;;[0]\n1:4 1:5 2:3 "},
      {ja, "クラス,氏名,ゼッケン,スタート,記録\nM,A,x7,late,\n", "M[0] A;;;;[]\n2:0 2:0 "},
      {ja, "クラス,氏名,記録,結果\nM,A,,9:00\nM,B,9:01,DSQ\n",  // the first that is not empty
       "M[0] A;;0:09:00;;[] B;;0:09:01;;[]\n"},
      {ja, "クラス,選手\nM,A\nM,B\n", "E"},
      // quotes: a separator, a quote and line breaks in cells; a quote is no reason to lose rows
      {ja,
       "氏名,所属,記録,1,F\n\"A\", \"K, CZ\" ,3:00,1:00,2:00\n\"B "
       "\"\"b\"\"\",\"K\r\nL\",,1:00,2:00\n"
       "C,D,,1'30\",2:00\n\"Bo\" B,,4:00,\"1:00\",3:00\nE,\"F,5:00,1:00,4:00\nG,H,,1:00,2:00\n",
       "[2] A;K, CZ;0:03:00;;[60,120] B \"b\";K L;;;[60,120] C;D;;;[0,120] \"Bo\" "
       "B;;0:04:00;;[60,180] "
       "E;\"F;0:05:00;;[60,240] G;H;;;[60,120]\n1:0 3:2 5:4 6:1 7:2 "},
      {en, "\"Class\";\"Name\";\"Time\"\n\"M; 1\";\"A, B\";3:00\n;C;4:00\n",
       "M; 1[0] A, B;;0:03:00;;[] C;;0:04:00;;[]\n3:0 "},
      {en, "M21\t\t\nName\tClub\tTime\nA\t\t3:00\n", "M21[0] A;;0:03:00;;[]\n1:0 0:0 "},
      {en, "Name\tA,NAME,B\tTime\nA, B\tx\t3:00\n", "[0] A, B;;0:03:00;;[]\n1:2 1:0 "},
      // splits instead of laps; the second row has no time at the finish, the third none at 2
      {en,
       "Name,Class,Time,1,2,F\nA,M,0:06:00,1:00,3:00,6:00\nB,M,0:06:00,3:00,5:00,-\n"
       "C,M,0:07:00,2:00,-,7:00\nD,M,dnf,2:00,1:00\n",
       "M[3] A;;0:06:00;;[60,120,180] B;;0:06:00;;[180,120,0] C;;0:07:00;;[120,0,300] "
       "D;;DNF;;[120,0]\n1:0 5:0 "},
      // laps that ascend, of results that are not their sum, are no splits
      {en,
       "Class,Name,Result,1,F\nM21,A,5:50,3:00,4:00\nM21,B,6:55,3:30,4:30\n"
       "M21,C,6:20,3:20,4:10\n",
       "M21[2] A;;0:05:50;;[180,240] B;;0:06:55;;[210,270] C;;0:06:20;;[200,250]\n"},
      // each header decides for the rows below it; rows that contradict it keep their times
      {en,
       "Name,Class,Time,1,F\nA,M,3:00,1:00,3:00\nB,M,4:00,1:00,4:00\nC,M,5:00,2:00,3:00\n"
       "D,M,9:00,1:00,4:00\nE,M,9:00,1:00,9:00\nF,M,mp,1:00,4:00\nName,Class,Time,1,F\n"
       "G,W,3:00,1:00,2:00\nH,W,dnf,1:00\n",
       "M[2] A;;0:03:00;;[60,120] B;;0:04:00;;[60,180] C;;0:05:00;;[120,180] "
       "D;;0:09:00;;[60,240] E;;0:09:00;;[60,480] F;;MP;;[60,180]\n"
       "W[2] G;;0:03:00;;[60,120] H;;DNF;;[60]\n1:0 4:0 5:0 "},
      {en, "Name,Class,Time,1,F\nA,M,3:00,1:00,2:00\nB,M,3:00,1:00,3:00\nC,M,2:00,2:00\n",
       "M[2] A;;0:03:00;;[60,120] B;;0:03:00;;[60,180] C;;0:02:00;;[120]\n"},
      // hundredths, which a result does not have
      {en, "Name,Class,Time\nA,M,12:34.56\nB,M,1:23.40\nC,M,25:00:00.5\n",
       "M[0] A;;0:12:34.5;;[] B;;0:01:23.4;;[] C;;25:00:01;;[]\n0:0 "},
      // headers without runners
      {en, "Name,Class,Time\nName,Class,Time\nA,M,1:00\nName,Class,Time\n,M,1:00\n",
       "M[0] A;;0:01:00;;[]\n1:0 5:0 4:0 "},
      // numbers that do not begin at 1: codes, if a runner has them all, or only an order
      {en, "Name,Class,31,45,31,F\nA,M,1:00,2:00,3:00,4:00\nB,M,1:01,,,\nC,W,1:02,-,3:02,4:02\n",
       "M[4]/31/45/31 A;;;;[60,120,180,240] B;;;;[61]\nW[4] C;;;;[62,0,182,242]\n1:0 "},
      {en, "Name,Class,2,3\nA,M,1:00,2:00\n", "M[2] A;;;;[60,120]\n1:0 "},
      {ja, "$LAPFILE Ver=2\n$大会名=E\n", "E"},
      {ja, "", "E"},
  };
  for (const auto& [mode, text, expected] : cases) {
    RestartIn(mode);
    EXPECT_EQ(Shown(ReadKeltrun1(text)), expected) << text;
  }
  EXPECT_EQ(ReadKeltrun1("a,b\n").error->detail, ResourceText("RES_MESSAGE_CSV_HEADER_ERROR"));
}

// The laps of a row in milliseconds, then the column of each remark.
string LapsRead(const string& cells) {
  const ReadResult read = ReadKeltrun1("CLASS,NAME,1,2,3,F\nM,A," + cells + "\n");
  string shown;
  clsLapData& runner = *read.records.classes.at(0).runners.at(0);
  for (int leg = 1; leg <= 4; ++leg) {
    shown += std::to_string(std::lround(runner.Lap(leg) * kMillisecondsPerDay)) + " ";
  }
  for (const LoadRemark& remark : read.remarks) shown += "@" + std::to_string(remark.Column);
  return shown;
}

TEST(Keltrun1, ReadsTheTimesOfLists) {
  RestartIn(Mode::kEnglishTexts);
  for (const auto& [cells, expected] : Table<2>(R"(
      9.05,0.45,75.50,1234      "545000 45000 4550000 754000 @3"  | 5,45,90,123 "5000 45000 90000 83000 "
      59.5,9.05,123,12:34.56    "59500 9050 123000 754560 @3"     | 9.75,9.05,, "9750 9050 0 0 @3"
      9.5,10.123,.5,1:00        "9500 10123 500 60000 "           | 9.05,1:00.98765,0:00.04, "545000 60987 40 0 @3"
      1.02.03,25.34.56,1:02:03.4,25:00:00.5 "3723000 92096000 3723400 90000500 "
      １２．３４,0:05,1:00,62:05.5 "754000 5000 60000 3725500 @3"
      -3:00,1e3,1234567,12:75   "0 0 0 0 @3@4@5@6"                | +5,5.,1.75.00,-0:01:00 "0 0 0 0 @3@4@5@6")")) {
    EXPECT_EQ(LapsRead(cells), expected) << cells;
  }
  // As a result and as a start time. A number that is not a time gives none, even if it is a date.
  for (const auto& [cell, result, start] : Table<3>(R"(
      9.05 0:09:05 9:05:00 | 10.30 0:10:30 10:30:00 | 59.5 0:00:59.5 "" | 75.50 1:15:50 ""
      1.02.03 1:02:03 1:02:03 | 12:34.56 0:12:34.5 "" | 10:30:15.25 10:30:15.2 10:30:15
      25:03:07.5 25:03:08 "" | 930 0:09:30 9:30:00 | 3723450 3723450 "" | 1234567 "" ""
      -5 "" "" | 0.4375 0:00:00.4 "" | 12:75 12:75 "" | 12:61 12:61 "" | 167996 167996 "" | 236000 236000 "" | １２：６１ １２：６１ "" | P3 P3 "" | dns DNS "")")) {
    const ReadResult read = ReadKeltrun1("NAME,TIME,START\nA," + cell + "," + cell + "\n");
    const clsLapData& runner = *read.records.classes.at(0).runners.at(0);
    EXPECT_EQ(runner.Result(), result) << cell;
    EXPECT_EQ(runner.StartTime()->ToString("h:nn:ss", false, ""), start) << cell;
  }
}

TEST(Keltrun1, RefusesListsWithoutResultsAndLegs) {
  RestartIn(Mode::kEnglishTexts);
  const ReadResult read = ReadKeltrun1("note\nname,class,\"leg, code\"\nA,M,31\nA,M,32\n");
  EXPECT_TRUE(read.records.classes.empty());
  ASSERT_TRUE(read.error);
  EXPECT_EQ(read.error->line, 2);
  EXPECT_NE(read.error->detail.find("\"name,class,\"leg, code\"\""), string::npos);
  const auto root = NewRoot();
  root->AddClass("W");
  EXPECT_FALSE(root->FileControl()->LoadLapFile("x.csv", KR_FILETYPE_AUTODETECT, KR_LOADMODE_APPEND,
                                                "name,class\r\nA,M\r\nB,M\r\n"));
  EXPECT_EQ(root->ClassCount(), 1);
}

TEST(Keltrun1, TurnsTheSplitsOfTheMacroCsvIntoLaps) {
  const auto root = NewRoot(Mode::kJapaneseTexts);
  ASSERT_TRUE(root->FileControl()->LoadLapFile(ExampleFile("midorigaoka/event.lxm")));
  std::size_t runners = 0;
  for (std::int32_t i = 1; i <= root->ClassCount(); ++i) {
    const auto analyzer = root->NewAnalyzer();
    analyzer->AddClass(i);
    analyzer->Execute();
    const ReadResult read = ReadKeltrun1(root->TextControl()->OutputCsvQuillonMacro(analyzer));
    std::int32_t item = 0;
    for (const auto& runner : read.records.classes.at(0).runners) {
      do ++item;
      while (!FinishTime(analyzer->Item(item)->Result()));
      EXPECT_EQ(LapsOf(*runner), LapsOf(*analyzer->Item(item)->OtherData())) << runner->RunnerName;
      ++runners;
    }
  }
  EXPECT_EQ(runners, 103u);
}

TEST(Keltrun1, ReadsDamagedLapFiles) {
  RestartIn(Mode::kJapaneseTexts);
  const string header = "\nクラス,ゼッケン,氏名,所属,シード,性別,スタート時刻,記録,順位,→1,→F\n";
  const Rows<string, string> cases = {
      // names that look like titles and labels
      {header + "氏名,1,氏名,,,,10:00:00,9:00,1,00:09:00,00:01:00\n",
       "氏名[2] 氏名;;0:09:00;1;[540,60]\n"},
      {"$大会名=x:登距離=y\n$大会名:登距離=5\n" + header + "$a,1,A,,,,,9:00,1\n",
       "大会名[0]\n$a[2] A;;0:09:00;1;[]\n"},
      {"$開催日=someday\n$M:登距離=high\n$?\n" + header, "M[0]\n2:0 3:0 4:0 "},
      {header + "M,1,A,,,,25:00:00,9:00,1,abc,\n", "M[2] A;;0:09:00;1;[0,0]\n4:10 4:0 "},
      // laps that look like splits, and quotes, are taken literally
      {header + "M,1,\"A,\"K\",,,,3:00,1,00:01:00,00:03:00\n",
       "M[2] \"A;\"K\";0:03:00;1;[60,180]\n"},
      {"$Event=E\n$M:Climb=5\n" + header, "M[0]\n"},  // labels of the other language
  };
  for (const auto& [text, expected] : cases) {
    EXPECT_EQ(Shown(ReadKeltrun1("$LAPFILE Ver=2\n" + text)), expected) << text;
  }
}

}  // namespace
}  // namespace keltrun::test
