// SPORTident results: the printouts of two events compared with known facts, and the meaning of the
// columns and words of the format.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "keltrun2/codec/encodings.h"
#include "keltrun2/io/sportident_reader.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using nlohmann::json;
using std::string;

string Title(const LapRecords& records) {
  return records.event_name.value_or("none") + "|" + records.create_application.value_or("none") +
         "|" + FormatDateTime(records.create_date.value_or(0), "yyyy/mm/dd hh:nn:ss");
}

// --- two events ---

struct EventFile {
  string event, facts, application;
};

void CheckClass(const ClassRecords& klass, const json& facts) {
  SCOPED_TRACE(facts["name"]);
  EXPECT_EQ(klass.name, facts["name"]);
  EXPECT_EQ(klass.length, facts["length"].get<std::int32_t>());
  EXPECT_EQ(klass.climb, facts["climb"].get<std::int32_t>());
  EXPECT_EQ(klass.control_count, facts["controls"].get<std::int32_t>());
  EXPECT_EQ(json(klass.codes), facts["codes"]);
  json rows = json::array();
  for (const auto& r : klass.runners) {
    rows.push_back({r->RunnerName, r->ID, r->ClubName, r->Rank, r->Result(), LapsOf(*r)});
  }
  EXPECT_EQ(rows, facts["runners"]);
}

TEST(SportIdent, ReadsTheEvents) {
  for (const auto& [event, name, application] : {EventFile{"midorigaoka", "sportident", "OE2003"},
                                                 {"midorigaoka", "sportident_2line", "OE2003"},
                                                 {"hoshinomori", "sportident", "ResultPrinter"},
                                                 {"hoshinomori", "sportident_2line", "OE2003"}}) {
    SCOPED_TRACE(event + "/" + name);
    const json facts = json::parse(ReadBytes(DataFile(event + "/facts.json")))[name];
    const string text = DecodeTextFile(ReadBytes(DataFile(event + "/" + name + ".txt")));
    const ReadResult read = ReadSportIdent(text);
    ASSERT_FALSE(read.error) << read.error->detail;
    EXPECT_EQ(Title(read.records), facts["event_name"].get<string>() + "|" + application + "|" +
                                       facts["create_date"].get<string>());
    EXPECT_EQ(read.remarks.size(), 0U);
    ASSERT_EQ(read.records.classes.size(), facts["classes"].size());
    for (std::size_t i = 0; i < facts["classes"].size(); ++i) {
      CheckClass(read.records.classes[i], facts["classes"][i]);
    }
  }
}

// --- the parts of a printout ---

const string kHead =
    "\nCup  Final  2024/05/06 07:08\nSPORTident results\n- OE-2003 V11\n\n"
    "  Pl    Stno Name            Cl.            Time\n\n";

// A runner on two controls, with the given laps in cells of eight columns.
string Runner(const string& result, const std::array<string, 3>& laps) {
  const auto right = [](const string& text) { return string(8 - text.size(), ' ') + text; };
  string out = "   1       7 Ann             Club       " + right(result) + "\n" + string(50, ' ');
  for (const string& lap : laps) out += right(lap);
  return out + "\n";
}

string ControlRow(const std::vector<string>& cells) {
  string out(50, ' ');
  for (const string& cell : cells) out += string(8 - cell.size(), ' ') + cell;
  return out + "\n";
}

const string kRow = ControlRow({"1(31)", "2(32)", "F"});

// Every class of a printout on one line: name, length, climb, codes, and the results with the laps.
string Classes(const ReadResult& read) {
  std::ostringstream out;
  for (const ClassRecords& klass : read.records.classes) {
    out << klass.name << " " << klass.length.value_or(-1) << "/" << klass.climb.value_or(-1) << "/"
        << klass.control_count.value_or(-1) << " " << json(klass.codes).dump();
    for (const auto& r : klass.runners) {
      out << " " << r->RunnerName << "," << r->ClubName << "," << r->ID << "," << r->Result()
          << json(LapsOf(*r)).dump();
    }
    out << ";";
  }
  return out.str();
}

// Line and column of every remark.
string Places(const ReadResult& read) {
  string out;
  for (const LoadRemark& remark : read.remarks) {
    out += std::to_string(remark.Line) + ":" + std::to_string(remark.Column) + " ";
  }
  return out;
}

TEST(SportIdent, ResultsFollowTheLaps) {
  const Rows<string, std::array<string, 3>, string, string> cases = {
      {"3:00", {"1:00", "1:30", "0:30"}, "0:03:00[60,90,30]", ""},
      {"mp", {"-----", "xx", "0:30"}, "P2[-2,-2,30]", "11:59 "},
      {"mp", {"1:00", "-----", "-----"}, "DNF[60,-2,-2]", ""},
      {"mp", {"1:00", "1:30", "0:30"}, "MP[60,90,30]", ""},
      {"dnf", {"1:00", "", ""}, "DNF[60,-2,-2]", ""},
      {"disq", {"1:00", "1:30", "0:30"}, "DISQ[60,90,30]", ""},
      {"dns", {"", "", ""}, "DNS[-2,-2,-2]", ""},
      {"DNF", {"1:00", "1:30", "0:30"}, "DISQ[60,90,30]", "10:41 "},
      {"1:02:03", {"59:59", "1:02:03", "0:00"}, "1:02:03[3599,3723,0]", ""},
      {"-0:03:00", {"-0:01:00", "-1:30", "0:30"}, "DISQ[-2,-2,30]", "11:51 11:59 10:41 "},
      {"12:34.56", {"9.05", "59.0", "-1:00"}, "0:12:34.5[545,59,-2]", "11:67 0:0 "}};
  for (const auto& [result, laps, expected, places] : cases) {
    const ReadResult read = ReadSportIdent(kHead + "M21 5.0 km\n" + kRow + Runner(result, laps));
    EXPECT_EQ(Classes(read), "M21 5000/-1/2 [31,32] Ann,Club,7," + expected + ";") << result;
    EXPECT_EQ(Places(read), places) << result;
  }
}

TEST(SportIdent, ClassLines) {
  const Rows<string, string> cases = {
      {"M21   (3)  4.4 Km  85 Cm  17 C", "M21 4400/85/2"},
      {"M21 5.7 km 70 m", "M21 5700/70/2"},
      {"M21 4.25km up60m", "M21 4250/60/2"},
      {"M21 4,4 Km", "M21 4000/-1/2"},
      {"M21 4km upm", "M21 -1/-1/2"},
      {"Pattern 5.0km", "Pattern 5.0km 5000/-1/2"},
      {"\xEF\xBC\xAD\xEF\xBC\xA5  Pattern   A (16)", "\xEF\xBC\xAD\xEF\xBC\xA5 Pattern A -1/-1/2"},
      {"W Pattern \xE7\x94\xB7 5.0km", "W Pattern \xE7\x94\xB7 5000/-1/2"}};
  for (const auto& [line, expected] : cases) {
    EXPECT_EQ(Classes(ReadSportIdent(kHead + line + "\n" + kRow)), expected + " [31,32];");
  }
}

TEST(SportIdent, ControlRows) {
  std::vector<string> rows;
  for (int row = 0; row < 5; ++row) {
    std::vector<string> cells;
    for (int leg = row * 13 + 1; leg <= row * 13 + 13; ++leg) {
      cells.push_back(std::to_string(leg) + "(9)");
    }
    rows.push_back(ControlRow(cells));
  }
  const Rows<string, std::int32_t, std::size_t> cases = {
      // rows, controls, remarks
      {ControlRow({"F"}), 0, 0},
      {ControlRow({"1(31)"}) + ControlRow({"F"}), 1, 0},
      {ControlRow({"1(31)", "junk", "2(32)", "F"}), 2, 1},
      {ControlRow({"1(31)", "2(32)"}), 1, 1},
      {ControlRow({"1(31)", "60(32)", "F"}), 1, 1},
      {rows[0] + rows[1] + rows[2] + ControlRow({"40(9)", "F"}), 40, 0},
      {rows[0] + rows[1] + rows[2] + rows[3], 49, 3},  // legs 51 and 52, no finish
      {rows[0] + rows[1] + rows[2] + ControlRow({"40(9)", "F"}) + rows[4], 40, 1}};
  for (const auto& [text, controls, remarks] : cases) {
    SCOPED_TRACE(text);
    const ReadResult read = ReadSportIdent(kHead + "M21 5.0 km\n" + text);
    ASSERT_EQ(read.records.classes.size(), 1);
    EXPECT_EQ(read.records.classes[0].control_count, controls);
    EXPECT_EQ(read.records.classes[0].codes.size(), controls);
    EXPECT_EQ(read.remarks.size(), remarks);
  }
}

// A class gets the first course that has its codes, even if its only code is the finish.
TEST(SportIdent, ClassesShareCourses) {
  const auto root = NewRoot();
  root->AddCourse(7)->SetControlCount(1);
  const string none = ControlRow({"F"});
  const string text = kHead + "A 1 Km\n" + none + "B 1 Km\n" + kRow + "C 1 Km\n" + none +
                      "D 1 Km\n" + kRow + "E 1 Km\n" + ControlRow({"1(0)", "F"});
  ASSERT_TRUE(
      root->FileControl()->LoadLapFile("", KR_FILETYPE_SPORTIDENT, KR_LOADMODE_APPEND, CrLf(text)));
  string courses;
  for (int i = 1; i <= 5; ++i) courses += " " + std::to_string(root->ClassData(i)->CourseNum);
  EXPECT_EQ(courses, " 8 9 8 9 7");
  EXPECT_EQ(root->CourseCount(), 3);
  EXPECT_EQ(root->CourseData("8")->ControlCount(), 0);
}

TEST(SportIdent, HeadsOfPagesLeaveNoClass) {
  const string runner = Runner("3:00", {"1:00", "1:30", "0:30"});
  const string row = " Ann,Club,7,0:03:00[60,90,30]";
  // The class continues after a page heading, but runners need a class with control rows.
  EXPECT_EQ(Classes(ReadSportIdent(kHead + "M21 5.0 km\n" + kRow + runner + kHead + runner)),
            "M21 5000/-1/2 [31,32]" + row + row + ";");
  const ReadResult read =
      ReadSportIdent(kHead + runner + "M21 5.0 km\n" + kRow + runner + "W21 4.0 km\n" + runner);
  EXPECT_EQ(Classes(read), "M21 5000/-1/2 [31,32]" + row + ";");
  EXPECT_EQ(Places(read), "8:0 14:1 15:0 ");
}

TEST(SportIdent, TheLastLineCountsAndLineBreaksDoNotMatter) {
  string text = kHead + "M21 5.0 km\n" + kRow + Runner("3:00", {"1:00", "1:30", "0:30"});
  const string expected = "M21 5000/-1/2 [31,32] Ann,Club,7,0:03:00[60,90,30];";
  EXPECT_EQ(Classes(ReadSportIdent(CrLf(text))), expected);
  string returns = text;
  std::replace(returns.begin(), returns.end(), '\n', '\r');
  EXPECT_EQ(Classes(ReadSportIdent(returns)), expected);
  text.pop_back();
  EXPECT_EQ(Classes(ReadSportIdent(text)), expected);
  EXPECT_EQ(Title(ReadSportIdent(text).records), "Cup  Final|OE2003|2024/05/06 07:08:00");
  // The laps of a truncated block are not read, and nothing is taken from the next runner.
  text.resize(text.rfind('\n') + 1);
  const string cut = Classes(ReadSportIdent(text + Runner("4:00", {"1:00", "2:00", "1:00"})));
  EXPECT_EQ(cut,
            "M21 5000/-1/2 [31,32] Ann,Club,7,0:03:00[-2,-2,-2] Ann,Club,7,0:04:00[60,120,60];");
}

TEST(SportIdent, TheClubBelowTheName) {
  string text = "\nCup  2024/05/06 07:08\n\nOE2003\n\n  Pl    Stno Name/Cl.         Time\n\n";
  text += "M21 5.0 km\n" + kRow;
  text += "   1       7 \xE5\xB1\xB1\xE7\x94\xB0 Ann         3:00\n             A_B \xE9\xAB\x99_ ";
  text += string(33, ' ') + "1:00    1:30    0:30\n";
  EXPECT_EQ(
      Classes(ReadSportIdent(text)),
      "M21 5000/-1/2 [31,32] \xE5\xB1\xB1\xE7\x94\xB0 Ann,AB \xE9\xAB\x99,7,0:03:00[60,90,30];");
}

TEST(SportIdent, RefusesOtherTexts) {
  for (const string text : {"", "\n\n\n", "a\nb\nSPORTident results", "a\nOE2003\nb\nc\nd\n"}) {
    EXPECT_TRUE(ReadSportIdent(text).error) << text;
  }
  EXPECT_FALSE(ReadSportIdent("a\nb\nSPORTident results\n\n\n").error);
}

TEST(SportIdent, HostileTextsEnd) {
  string text = kHead + "M21 5.0 km\n" + kRow;
  const std::size_t head = text.size();
  for (int i = 0; i < 1200; ++i) text += Runner("x", {"a", "b", "c"});
  const ReadResult bad = ReadSportIdent(text);
  ASSERT_EQ(bad.remarks.size(), 1001);
  EXPECT_EQ(bad.remarks.back().Text, "3800 more remarks");
  text.resize(head);
  for (int i = 0; i <= 200000; ++i) text += "   1       7 Ann             Club              x\n";
  const ReadResult crowd = ReadSportIdent(text);
  ASSERT_TRUE(crowd.error);
  EXPECT_EQ(crowd.error->line, 200010);
  EXPECT_EQ(crowd.records.classes[0].runners.size(), 200000);
}

}  // namespace
}  // namespace keltrun::test
