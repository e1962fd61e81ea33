// OEvent split lists: two events compared with known facts, and the meaning of the rows.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "keltrun2/codec/encodings.h"
#include "keltrun2/io/oevent_reader.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using nlohmann::json;
using std::string;

json RowOf(clsLapData& r) { return {r.RunnerName, r.Rank, r.Result(), LapsOf(r)}; }

json RowsOf(const ClassRecords& klass) {
  json rows = json::array();
  for (const auto& runner : klass.runners) rows.push_back(RowOf(*runner));
  return rows;
}

TEST(OEvent, ReadsTheEvents) {
  for (const string event : {"midorigaoka", "hoshinomori"}) {
    SCOPED_TRACE(event);
    const json facts = json::parse(ReadBytes(DataFile(event + "/facts.json")))["oevent"];
    const string text = DecodeTextFile(ReadBytes(DataFile(event + "/oevent.txt")));
    const ReadResult read = ReadOEvent(text);
    ASSERT_FALSE(read.error) << read.error->detail;
    EXPECT_EQ(read.records.event_name, facts["event_name"].get<string>());
    EXPECT_EQ(read.records.create_application, "OEvent");
    EXPECT_EQ(FormatDateTime(read.records.create_date.value(), "yyyy/mm/dd hh:nn:ss"),
              facts["create_date"]);
    ASSERT_EQ(read.remarks.size(), 1U);
    EXPECT_EQ(read.remarks[0].Text.substr(0, 16), "clubs: those of ");
    ASSERT_EQ(read.records.classes.size(), facts["classes"].size());
    for (std::size_t i = 0; i < facts["classes"].size(); ++i) {
      const ClassRecords& klass = read.records.classes[i];
      EXPECT_EQ(klass.name, facts["classes"][i]["name"]);
      EXPECT_EQ(klass.legs_seen - 1, facts["classes"][i]["controls"]);
      EXPECT_EQ(RowsOf(klass), facts["classes"][i]["runners"]);
    }
  }
}

// For each class the name, the legs seen and the runners; then the places of the remarks and the
// line of the error, 0 if there is none.
string Read(const string& lines) {
  const ReadResult read = ReadOEvent("Cup\nSplit times of Cup\n" + lines);
  string out;
  for (const ClassRecords& klass : read.records.classes) {
    out += klass.name + " " + std::to_string(klass.legs_seen) + " " + RowsOf(klass).dump() + ";";
  }
  for (const LoadRemark& remark : read.remarks) {
    out += " " + std::to_string(remark.Line) + ":" + std::to_string(remark.Column);
  }
  return out + " E" + std::to_string(read.error ? read.error->line : 0);
}

TEST(OEvent, Rows) {
  const string ann = "A\n1.,Ann,,7,3:00\n";
  const Rows<string, string> cases = {
      {ann + ",,,,,1:00,31,2:30,32,3:00,F\n", R"(A 3 [["Ann","1","0:03:00",[60,90,30]]]; E0)"},
      // A smaller split is a leg without a time, "--:--" a leg that was missed; the sum continues.
      {ann + ",,,,,1:00,31,0:30,32,--:--,33,3:00,F\n",
       R"(A 4 [["Ann","1","0:03:00",[60,0,-2,120]]]; 5:8 E0)"},
      {ann + ",,,,,1:00,31,,32,xx,33,3:00,F\n", R"(A 2 [["Ann","1","0:03:00",[60,120]]]; 5:10 E0)"},
      {ann + ",,,,,1:00,31,1:00,32\n", R"(A 2 [["Ann","1","0:03:00",[60,0]]]; E0)"},
      // Missed legs at the end do not increase the number of controls of the class.
      {ann + ",,,,,1:00,31,--:--,F\n", R"(A 1 [["Ann","1","0:03:00",[60,-2]]]; E0)"},
      // A row has at most ten splits.
      {ann + ",,,,,1,,2,,3,,4,,5,,6,,7,,8,,9,,10,,11,\n",
       R"(A 10 [["Ann","1","0:03:00",[1,1,1,1,1,1,1,1,1,1]]]; E0)"},
      // The row in between is not read; the next one is read only if it has splits and no name.
      {ann + ",,,,,1:00,31\n,,,,,9:00\n,,,,,3:00,F\n",
       R"(A 2 [["Ann","1","0:03:00",[60,120]]]; E0)"},
      {ann + ",,,,,1:00,31\n,,,,,31,,\nB\n,Bob,,8,MP\n,,,,,2:00,31\n",
       R"(A 1 [["Ann","1","0:03:00",[60]]];B 1 [["Bob","","MP",[120]]]; E0)"},
      {ann + ",,,,,1:00,31\n,,,,,31,,\n,Bob,,8,MP\n,,,,,2:00,31\n",
       R"(A 1 [["Ann","1","0:03:00",[60]],["Bob","","MP",[120]]]; E0)"},
      // A runner or class directly after a runner without splits.
      {ann + "(2),Bob,,8,dns\n\n---------\nB\n",
       R"x(A 0 [["Ann","1","0:03:00",[]],["Bob","(2)","DNS",[]]];B 0 []; E0)x"},
      {ann + "B\n,Bob,,8,x\n,,,,,\n",
       R"(A 0 [["Ann","1","0:03:00",[]]];B 0 [["Bob","","X",[]]]; E0)"},
      {"A\n ,, \n --------,x\n1.,Ann,,7,3:00", R"(A 0 [["Ann","1","0:03:00",[]]]; E0)"},
      {"A\n1.,Ann,,7,3:00\n2.,Bob,Club,8,4:00\n,Cid,Club,9,5:00\n",
       R"(A 0 [["Ann","1","0:03:00",[]],["Bob","2","0:04:00",[]],["Cid","","0:05:00",[]]]; 5:3 E0)"},
      // A split below zero is a leg without a time; the legs after it keep their places.
      {ann + ",,,,,1:00,31,-1:00,32,2:00,F\n", R"(A 3 [["Ann","1","0:03:00",[60,0,60]]]; 5:8 E0)"},
      {"1.,Ann,,7,3:00\nA\n", " E3"}};
  for (const auto& [lines, expected] : cases) {
    EXPECT_EQ(Read(lines), expected) << lines;
    EXPECT_EQ(Read(CrLf(lines)), expected) << lines;
  }
}

TEST(OEvent, MoreThanFiftyLegs) {
  string lines = "A\n1.,Ann,,7,9:00\n";
  for (int row = 0; row < 6; ++row) {
    lines += ",,,,";
    for (int i = 1; i <= 10; ++i) lines += "," + std::to_string(row * 1000 + i * 100) + ",";
    lines += "\n,,,,,\n";
  }
  EXPECT_TRUE(Read(lines).starts_with("A 50 ")) << Read(lines);
  EXPECT_TRUE(Read(lines).ends_with("; 15:6 E0")) << Read(lines);
}

TEST(OEvent, Footer) {
  const Rows<string, string, std::size_t> cases = {
      {"Created with OEvent 2\n 2022.06.04 15:32:00 \nB\n", "OEvent 44716.647222", 0},
      {"x Created with OEvent,,\nsoon\n", "OEvent 0.000000", 1},
      {"Created with OEvent", "OEvent 0.000000", 1},
      {"B\n", "none 0.000000", 0}};
  for (const auto& [lines, expected, remarks] : cases) {
    const ReadResult read = ReadOEvent("Cup\nSplit times of Cup\nA\n" + lines);
    EXPECT_EQ(read.records.create_application.value_or("none") + " " +
                  std::to_string(read.records.create_date.value_or(0)),
              expected);
    EXPECT_EQ(read.remarks.size(), remarks);
    EXPECT_EQ(read.records.classes.size(), lines[0] == 'B' ? 2 : 1);
  }
}

TEST(OEvent, RefusesOtherTexts) {
  for (const string text : {"", "Split times of\nCup\nA\n", "Cup\nSplit times of Cup\n"}) {
    EXPECT_TRUE(ReadOEvent(text).error) << text;
  }
}

}  // namespace
}  // namespace keltrun::test
