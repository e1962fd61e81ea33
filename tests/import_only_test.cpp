// Import-only texts: the rows of two events, and which lines are headers or rows.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "keltrun2/codec/encodings.h"
#include "keltrun2/io/import_only_reader.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using nlohmann::json;
using std::string;

string Shown(const ReadResult& read) {
  string shown;
  for (const RunnerUpdate& u : read.records.updates) {
    shown += u.name + "/" + u.club + "/" + u.sex + " ";
  }
  return shown;
}

TEST(ImportOnly, HoldsTheRowsOfTheEvents) {
  RestartIn(Mode::kJapaneseTexts);
  for (const string event : {"midorigaoka", "hoshinomori"}) {
    SCOPED_TRACE(event);
    const string text = DecodeTextFile(ReadBytes(DataFile(event + "/import.txt")));
    const ReadResult read = ReadImportOnly(text);
    const json facts = json::parse(ReadBytes(DataFile(event + "/facts.json")));
    json rows = json::array();
    for (const json& row : facts["import"]["rows"]) rows.push_back({row[1], row[2], row[3]});
    json held = json::array();
    for (const RunnerUpdate& u : read.records.updates) held.push_back({u.name, u.club, u.sex});
    EXPECT_EQ(held, rows);
    EXPECT_FALSE(read.error);
    ASSERT_EQ(read.remarks.size(), 1u);  // the line below the mark
    EXPECT_EQ(read.remarks[0].Text, "lines before the first header: 1 skipped");
  }
}

TEST(ImportOnly, FollowsItsHeaders) {
  RestartIn(Mode::kJapaneseTexts);
  const Rows<string, string, std::size_t> cases = {
      {"氏名,所属,性別\r\nA,C,男\r\n", "A/C/男 ", 0},
      {"A,B,C\r\n", "", 1},             // no header
      {"NAME,TEAM\nA,C\n", "A// ", 2},  // TEAM is not a title: no club
      {"NAME;CLUB;SEX\nA;\"C; D\";F\nB;\"\"\"C\"\"\";M\n", "A/C; D/F B/\"C\"/M ", 0},
      {"NAME,,CLUB,\nA,,C,\n", "A/C/ ", 0},        // empty columns of a spreadsheet
      {"名前,syozoku\rA,C\rB\r", "A/C/ B// ", 0},  // missing cells are empty
      {"氏名,所属\nA,C\n所属,氏名\nC,A", "A/C/ A/C/ ", 0},
      {"氏名,所属\n,,\n \u3000,\n,C\nA,C,\nA,C,x\n", "A/C/ A/C/ ", 2},   // no name; a cell too many
      {"氏名,所属\nNAMES,C\nthe NAME,C\n", "NAMES/C/ the NAME/C/ ", 0},  // no whole cell
      {"氏名,所属,所属\nA,B,C\n", "A/C/ ", 0},                           // the last column is used
  };
  for (const auto& [text, updates, remarks] : cases) {
    const ReadResult read = ReadImportOnly("$IMPORT_ONLY\r\n" + text);
    EXPECT_EQ(Shown(read), updates) << text;
    EXPECT_EQ(read.remarks.size(), remarks) << text;
  }
}

TEST(ImportOnly, KeepsAThousandRemarks) {
  RestartIn(Mode::kJapaneseTexts);
  string text = "氏名,所属\n";
  for (int i = 0; i < 1005; ++i) text += ",C\n";
  const ReadResult read = ReadImportOnly(text);
  ASSERT_EQ(read.remarks.size(), 1001u);
  EXPECT_EQ(read.remarks[0].Line, 2);
  EXPECT_EQ(read.remarks[1000].Text, "5 more remarks");
}

}  // namespace
}  // namespace keltrun::test
