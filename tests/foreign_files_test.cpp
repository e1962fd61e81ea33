// Files as the programs of the world write them, each compared with what is known to be in it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using nlohmann::json;

std::filesystem::path Folder() { return DataFile("foreign"); }

std::vector<std::string> FilesWithFacts() {
  constexpr std::string_view kEnding = ".facts.json";
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(Folder())) {
    const std::string name = entry.path().filename().string();
    if (name.ends_with(kEnding)) names.push_back(name.substr(0, name.size() - kEnding.size()));
  }
  std::sort(names.begin(), names.end());
  return names;
}

// A time of the model in seconds, whole when it is.
json SecondsOf(DateTime time) {
  const auto milliseconds = std::llround(time * 86'400'000);
  if (milliseconds % 1000 == 0) return milliseconds / 1000;
  return static_cast<double>(milliseconds) / 1000;
}

// Laps in the form of the facts, without what has no data at their end.
json LapFacts(clsLapData& runner) {
  json laps = json::array();
  for (std::int32_t leg = 1; leg <= runner.LegCount(); ++leg) {
    const DateTime lap = runner.Lap(leg);
    laps.push_back(lap > 0 ? SecondsOf(lap) : lap == kTimeSkip ? json("skip") : json());
  }
  while (!laps.empty() && laps.back().is_null()) laps.erase(laps.end() - 1);
  return laps;
}

// The total that the laps add up to; null when the runner has no lap at the finish.
json TotalOf(const json& laps, std::size_t legs) {
  if (laps.size() != legs) return {};
  double total = 0;
  for (const json& lap : laps) {
    if (lap.is_null()) return {};
    // A lap of a millisecond stands for one of 0 seconds.
    if (lap.is_number() && lap != 0.001) total += lap.get<double>();
  }
  return SecondsOf(total / 86400);
}

json CodesOf(const clsCourseData& course) {
  json codes = json::array();
  for (std::int32_t i = 1; i <= course.ControlCount(); ++i) {
    codes.push_back(course.ControlCodeText(i));
  }
  return codes;
}

json RowOf(const clsKeltrun2& root, const clsClassData& klass, clsLapData& runner) {
  const json laps = LapFacts(runner);
  const DateTime start = runner.StartTime()->Value();
  const std::int32_t course = runner.CourseNum != 0 ? runner.CourseNum : klass.CourseNum;
  return {{"name", runner.RunnerName},
          {"club", runner.ClubName},
          {"id", runner.Bib},
          {"ecard", runner.ControlCard},
          {"sex", runner.Sex},
          {"start", start == 0 ? json() : SecondsOf(start)},
          {"status", RunnerStatusName(runner.Status)},
          {"result", runner.Result()},
          {"total", TotalOf(laps, static_cast<std::size_t>(klass.ControlCount) + 1)},
          {"rank", runner.Rank},
          {"laps", laps},
          {"codes", course == 0 ? json() : CodesOf(*root.CourseData(std::to_string(course)))}};
}

// A row of the facts with the names of its columns. A last column has the codes of the runner's own
// course, or the team and leg of a relay.
json KnownRow(const json& row, const json& klass) {
  constexpr const char* kColumns[] = {"name",   "club",   "id",    "ecard", "sex", "start",
                                      "status", "result", "total", "rank",  "laps"};
  json known;
  for (std::size_t i = 0; i < std::size(kColumns); ++i) known[kColumns[i]] = row[i];
  known["codes"] = klass["codes"];
  if (row.size() > std::size(kColumns) && row.back().size() > 2) known["codes"] = row.back();
  json& laps = known["laps"];
  while (!laps.empty() && laps.back().is_null()) laps.erase(laps.end() - 1);
  // A total without a time at the finish, or with a leg without data, is in no lap.
  if (TotalOf(laps, klass["controls"].get<std::size_t>() + 1).is_null()) known["total"] = json();
  return known;
}

void CheckClass(const clsKeltrun2& root, const clsClassData& klass, const json& facts) {
  SCOPED_TRACE(facts["name"]);
  EXPECT_EQ(klass.ClassName(), facts["name"]);
  EXPECT_EQ(klass.Length, facts["length"]);
  EXPECT_EQ(klass.Climb, facts["climb"]);
  EXPECT_EQ(klass.ControlCount, facts["controls"]);
  std::vector<json> held, known;
  for (std::int32_t i = 1; i <= klass.LapCount(); ++i) {
    held.push_back(RowOf(root, klass, *klass.LapData(i)));
  }
  for (const json& row : facts["runners"]) known.push_back(KnownRow(row, facts));
  // Pages list their runners by place, and the model sorts them by result.
  std::sort(held.begin(), held.end());
  std::sort(known.begin(), known.end());
  ASSERT_EQ(held.size(), known.size());
  for (std::size_t i = 0; i < held.size(); ++i) EXPECT_EQ(held[i], known[i]);
}

class ForeignFile : public testing::TestWithParam<std::string> {};

TEST_P(ForeignFile, HoldsWhatIsKnownToBeInIt) {
  const std::string path = (Folder() / GetParam()).string();
  const json facts = json::parse(ReadBytes(path + ".facts.json"));
  const auto root = NewRoot();
  root->FileControl()->SetForeignFormats(true);
  ASSERT_TRUE(root->FileControl()->LoadLapFile(path)) << root->ErrorComment();
  EXPECT_EQ(root->EventData()->EventName, facts["event"]["name"]);
  EXPECT_EQ(root->EventData()->EventDate()->ToString("yyyy-mm-dd"), facts["event"]["date"]);
  ASSERT_EQ(root->ClassCount(), facts["classes"].size());
  std::int32_t position = 0;
  for (const json& klass : facts["classes"]) {
    CheckClass(*root, *root->ClassData(++position), klass);
  }
}

std::string TestName(const testing::TestParamInfo<std::string>& file) {
  std::string name = file.param;
  std::replace_if(
      name.begin(), name.end(), [](char c) { return !std::isalnum(c); }, '_');
  return name;
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ForeignFile);
INSTANTIATE_TEST_SUITE_P(AllFiles, ForeignFile, testing::ValuesIn(FilesWithFacts()), TestName);

// Each text says what the file is and what to do; nothing is loaded, but what stands before the end
// of a damaged file.
TEST(RefusedFiles, AreNamed) {
  for (const auto& [file, english, japanese, classes] :
       Rows<std::string, std::string, std::string, int>{
           {"coursedata3.xml", "courses (IOF XML 3.0)", "コースのデータ", 0},
           {"cut3.xml", "line 12, column 1385: ", "壊れている", 1},
           {"empty.csv", "is empty", "空です", 0},
           {"empty.xml", "is empty", "空です", 0},
           {"namespace_only.xml", "no results in this file (IOF XML 3.0)", "成績がありません", 0},
           {"page.html", "a web page", "ウェブページ", 0},
           {"picture.png", "of the type PNG", "PNG 形式", 0},
           {"resultlist1.xml", "an old form", "古い形式", 0},
           {"score.csv", "score results", "スコア競技", 0},
           {"startlist2.xml", "a start list (IOF XML 2.0.3)", "スタートリスト", 0},
           {"startlist3.xml", "a start list (IOF XML 3.0)", "スタートリスト", 0},
           {"startlist_oe.csv", "a start list (OE2010", "スタートリスト", 0}}) {
    const std::string path = DataFile("foreign/refused/" + file);
    for (const Mode mode : {Mode::kEnglishTexts, Mode::kJapaneseTexts}) {
      const auto root = NewRoot(mode);
      root->FileControl()->SetForeignFormats(true);
      EXPECT_FALSE(root->FileControl()->LoadLapFile(path)) << file;
      const std::string& expected = mode == Mode::kEnglishTexts ? english : japanese;
      EXPECT_NE(root->ErrorComment().find(expected), std::string::npos) << root->ErrorComment();
      EXPECT_NE(root->ErrorComment().find(file), std::string::npos) << root->ErrorComment();
      EXPECT_EQ(root->ClassCount(), classes) << file;
    }
  }
}

// Texts in no form at all tell which forms there are, but only hosts that ask for all of them.
TEST(RefusedFiles, OfNoFormTellWhatCanBeRead) {
  for (const std::string text : {"Dear club,\nthe race was fine.\nSee you.\n", "hello\n",
                                 "<?xml version=\"1.0\"?>\n<gpx><trk/></gpx>\n"}) {
    const auto root = NewRoot(Mode::kEnglishTexts);
    for (const bool foreign : {false, true}) {
      root->FileControl()->SetForeignFormats(foreign);
      EXPECT_FALSE(root->FileControl()->LoadLapFile("a.txt", KR_FILETYPE_AUTODETECT,
                                                    KR_LOADMODE_NORMAL, text));
      EXPECT_EQ(root->ErrorComment().find("can be read: IOF XML") != std::string::npos, foreign)
          << root->ErrorComment();
    }
  }
}

// Files of other programs are only looked for when the host asks.
TEST(RefusedFiles, AreForeignOnlyWhenAskedFor) {
  const auto root = NewRoot(Mode::kEnglishTexts);
  const std::string path = DataFile("foreign/iof2_dtd.xml");
  EXPECT_FALSE(root->FileControl()->LoadLapFile(path));
  EXPECT_NE(root->ErrorComment().find("expected <keltrun>"), std::string::npos);
  EXPECT_FALSE(root->FileControl()->LoadLapFile(path, KR_FILETYPE_IOF_XML_20_RESULT));
  EXPECT_EQ(root->ErrorComment(), "");
  root->FileControl()->SetForeignFormats(true);
  EXPECT_TRUE(root->FileControl()->LoadLapFile(path, KR_FILETYPE_IOF_XML_20_RESULT));
  EXPECT_EQ(root->FileControl()->LoadedType(), KR_FILETYPE_IOF_XML_20_RESULT);
  EXPECT_NE(root->FileControl()->LoadedFormat().find("2.0.3"), std::string::npos);
}

}  // namespace
}  // namespace keltrun::test
