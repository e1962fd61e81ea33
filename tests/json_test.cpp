// The JSON documents: what stands where, and how values that are no plain numbers are written.
#include "keltrun2/report/json.h"

#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>

#include "keltrun2/model/event_model.h"
#include "tests/test_support.h"

namespace keltrun {
namespace {

using test::AddRunner;
using test::NewRoot;
using Json = nlohmann::ordered_json;

// Compares the members that `expected` (JSON) names.
void ExpectMembers(const Json& object, const std::string& expected) {
  const Json members = Json::parse(expected);
  for (const auto& [key, value] : members.items()) {
    EXPECT_EQ(object.at(key), value) << key;
  }
}

// The keys of an object, each followed by a blank.
std::string KeysOf(const Json& object) {
  std::string keys;
  for (const auto& member : object.items()) keys += member.key() + " ";
  return keys;
}

// Three runners, two controls. Reference laps: leg 1 (380 + 420 + 400) / 3 = 400, leg 2
// (170 + 230) / 2 = 200, leg 3 (90 + 110) / 2 = 100, in total 700. Lena missed control 2: her 390 s
// for legs 2 and 3 are shared 200 : 100, that is 260 s and 130 s.
std::shared_ptr<clsKeltrun2> ThreeRunners() {
  auto root = NewRoot();
  const auto klass = root->AddClass("W21A");
  klass->ControlCount = 2;
  klass->Length = 5700;
  klass->Climb = 70;
  AddRunner(*klass, "Berta", "0:12:40", {420, 230, 110});
  AddRunner(*klass, "Lena", "0:13:10", {400, -1, 390});
  AddRunner(*klass, "Anna", "0:10:40", {380, 170, 90})->StartTime()->SetValue(40269 / 86400.0);
  return root;
}

Json Analyze(const clsKeltrun2& root, std::string_view name,
             DataSetKind kind = DataSetKind::kClass) {
  const auto analyzer = root.NewAnalyzer();
  analyzer->AddClass(name);
  analyzer->Execute();
  return Json::parse(root.TextControl()->OutputJson(analyzer, kind));
}

std::string ResultText(const clsKeltrun2& root, std::string_view name) {
  const auto results = root.NewResultsHolder();
  results->AddClass(name);
  results->CalcRank();
  return root.TextControl()->OutputResultJson({{results, DataSetKind::kClass}});
}

// The result list of one runner.
std::string ResultTextOf(std::string_view name, DateTime start) {
  const auto root = NewRoot();
  AddRunner(*root->AddClass("A"), name, "DNF", {})->StartTime()->SetValue(start);
  return ResultText(*root, "A");
}

TEST(Json, AnalysisOfASmallClass) {
  const Json json = Analyze(*ThreeRunners(), "W21A");
  ExpectMembers(json,
                R"({"format": "keltrun2-analysis", "version": 1, "generator": "Keltrun 2.27"})");
  ExpectMembers(json["set"], R"({"name": "W21A", "fileName": "w21a", "kind": "class", "mix": false,
      "controls": 2, "classInfo": "5.7km ↑70m", "legLabels": ["S→1", "1→2", "2→F"]})");
  ExpectMembers(json["general"], R"({"upperLapTotal": 700, "upperLapAverage": [400, 200, 100],
      "legLength": [0.571429, 0.285714, 0.142857], "upper": [[3, 2, 1], [3, 1], [3, 1]]})");
  ASSERT_EQ(json["runners"].size(), 3u);
  // Anna's best legs covering half the course are all three: 640 / 700. On leg 1 she lost
  // 380 - 400 * 640 / 700 s, on the others she gained.
  ExpectMembers(json["runners"][0],
                R"({"serial": 3, "start": 40269, "lapRelative": [0.95, 0.85, 0.9],
      "cruiseSpeed": 0.914286, "missTime": [14.286, -12.857, -1.429], "missTimeTotal": 14.286,
      "missRate": 0.022321, "totalTimeWithoutMiss": 625.714, "totalTimeRelative": 0.914286})");
  // Berta's best leg covers half alone: 420 / 400.
  ExpectMembers(json["runners"][1],
                R"({"name": "Berta", "cruiseSpeed": 1.05, "missTime": [0, 20, 5]})");
  ExpectMembers(json["runners"][2], R"({"name": "Lena", "start": null, "result": "0:13:10",
      "officialRank": "", "rank": "3", "lap": [400, "skip", 390], "split": [400, "skip", 790],
      "modifiedLap": [400, 260, 130], "modifiedSplit": [400, 660, 790], "lapRank": [2, 0, 0],
      "splitRank": [2, 0, 3], "modifiedLapRank": [2, 3, 3], "modifiedSplitRank": [2, 3, 3],
      "validLap": [true, false, false], "validSplit": [true, true, true], "rangeFrom": [0, 2, 2],
      "rangeTo": [0, 3, 3], "lapRelative": [1, "skip", 1.3], "missTime": [0, "skip", 90],
      "missTimeTotal": 90, "missRate": 0.113924, "totalTimeWithoutMiss": 700, "map": [0, 0]})");
}

TEST(Json, ADisqualifiedLegLeavesNoFigures) {
  const auto root = NewRoot();
  const auto klass = root->AddClass("A");
  klass->ControlCount = 3;
  AddRunner(*klass, "Mia", "DISQ", {60, -2, 70});
  ExpectMembers(Analyze(*root, "A")["runners"][0], R"({"lap": [60, "disq", 70, null],
      "split": [60, "disq", 130, null], "lapRelative": [1, null, null, null],
      "missTime": [0, null, null, null], "missTimeTotal": null, "totalTimeWithoutMiss": null,
      "totalTimeRelative": null, "rankInDataSet": ""})");
}

TEST(Json, KeysKeepTheirOrder) {
  const auto root = ThreeRunners();
  const Json analysis = Analyze(*root, "W21A");
  const Json results = Json::parse(ResultText(*root, "W21A"));
  const Json info = Json::parse(root->TextControl()->OutputInfoJson());
  const std::string head = "format version generator event ";
  EXPECT_EQ(KeysOf(analysis), head + "set general runners ");
  EXPECT_EQ(KeysOf(results), head + "sets ");
  EXPECT_EQ(KeysOf(info), head + "file classes courses segments choices ");
  EXPECT_EQ(KeysOf(info["event"]), "name date terrain memo site ");
  const std::string set = "name fileName kind mix controls length climb cutOffRank classInfo ";
  EXPECT_EQ(KeysOf(analysis["set"]), set + "codes legLabels ");
  EXPECT_EQ(KeysOf(results["sets"][0]), "set rankIsAvailable runners ");
  EXPECT_EQ(KeysOf(results["sets"][0]["set"]), set);
  EXPECT_EQ(KeysOf(analysis["general"]),
            "upperLapTotal upperLapAverage legLength difficulty upper ");
  const std::string record = "serial name club class id ecard competitorId sex age seed start ";
  EXPECT_EQ(KeysOf(results["sets"][0]["runners"][0]),
            record + "result rank rankFix rankInDataSet laps ");
  EXPECT_EQ(KeysOf(analysis["runners"][0]),
            record +
                "result officialRank rank rankInDataSet lap split modifiedLap modifiedSplit "
                "lapRank splitRank modifiedLapRank modifiedSplitRank validLap validSplit rangeFrom "
                "rangeTo lapRelative missTime cruiseSpeed missRate missTimeTotal "
                "totalTimeWithoutMiss totalTimeRelative firstHalfCruiseSpeed secondHalfCruiseSpeed "
                "map ");
}

TEST(Json, ResultListsRankAndKeepMarkers) {
  const auto root = NewRoot();
  const auto klass = root->AddClass("A");
  AddRunner(*klass, "c", "0:12:00", {300, 0, -1, -2})->Rank = "3";
  AddRunner(*klass, "d", "DNF", {});
  AddRunner(*klass, "a", "0:10:00", {})->Rank = "1";
  AddRunner(*klass, "b", "0:12:00", {})->RankFix = "2";
  const Json list = Json::parse(ResultText(*root, "A"))["sets"][0];
  EXPECT_EQ(list["rankIsAvailable"], true);
  // Equal results share a rank, and the one added last stands first.
  const char* const expected[] = {
      R"({"name": "a", "rankInDataSet": "1"})",
      R"({"name": "b", "rankInDataSet": "2", "rank": "", "rankFix": "2", "laps": []})",
      R"({"name": "c", "rankInDataSet": "2", "rank": "3", "laps": [300, null, "skip", "disq"]})",
      R"({"name": "d", "rankInDataSet": "", "result": "DNF"})"};
  ASSERT_EQ(list["runners"].size(), std::size(expected));
  for (std::size_t i = 0; i < std::size(expected); ++i) {
    ExpectMembers(list["runners"][i], expected[i]);
  }
}

TEST(Json, TimesAreSecondsToTheMillisecond) {
  using Limits = std::numeric_limits<double>;
  const struct {
    double seconds;
    std::string text;
  } cases[] = {{2063.333, "2063.333"},
               {116, "116"},
               {0.5, "0.5"},
               {1.0005, "1.001"},
               {0.0365, "0.037"},  // in days a hair below the half
               {2.00249, "2.002"},
               {59.9996, "60"},
               {-0.0365, "-0.037"},
               {0.0004, "0"},
               {-0.0004, "0"},
               {86400e15, "86400000000000000000"},
               {0, "null"},
               {Limits::infinity(), "null"},
               {Limits::quiet_NaN(), "null"}};
  for (const auto& [seconds, text] : cases) {
    const std::string json = ResultTextOf("a", test::Seconds(seconds));
    EXPECT_NE(json.find("\"start\":" + text + ","), std::string::npos) << text << json;
  }
}

TEST(Json, TextsAreEscapedAndValidUtf8) {
  const struct {
    std::string text, written;
  } cases[] = {{R"(The "Owl" \ Club)", R"(The \"Owl\" \\ Club)"},
               {std::string("a\0b", 3), R"(a\u0000b)"},
               {"\t\r\n\x01\x1f", R"(\u0009\u000d\u000a\u0001\u001f)"},
               {"山田　太郎 𠮷", "山田　太郎 𠮷"},
               {"a\xFF\"b", "a\uFFFD\\\"b"},
               {"\xE5\xB1", "\uFFFD\uFFFD"},            // cut short
               {"\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},  // a surrogate
               {"\xC0\xAF東", "\uFFFD\uFFFD東"}};       // an overlong form
  for (const auto& [text, written] : cases) {
    const std::string json = ResultTextOf(text, 0);
    EXPECT_NE(json.find("\"name\":\"" + written + "\",\"club\""), std::string::npos) << json;
    EXPECT_TRUE(Json::accept(json)) << json;
  }
}

TEST(Json, CodesComeFromTheCourseOfTheSet) {
  const auto root = ThreeRunners();
  const auto codes = [&](DataSetKind kind) { return Analyze(*root, "W21A", kind)["set"]["codes"]; };
  EXPECT_EQ(codes(DataSetKind::kClass), nullptr);
  root->ClassData("W21A")->CourseNum = 5;
  EXPECT_EQ(codes(DataSetKind::kClass), nullptr) << "there is no course 5";
  const auto course = root->AddCourse(5);
  course->SetControlCount(3);
  for (std::int32_t i = 1; i <= 3; ++i) course->SetControlNum(i, 30 + i);
  EXPECT_EQ(codes(DataSetKind::kClass), Json::parse("[31, 32]"));
  EXPECT_EQ(codes(DataSetKind::kCourse), Json::parse("[31, 32]"));
  EXPECT_EQ(codes(DataSetKind::kSegment), nullptr);
  course->SetControlCount(1);
  EXPECT_EQ(codes(DataSetKind::kClass), Json::parse("[31]"));
}

TEST(Json, InfoDescribesTheEvent) {
  NewRoot();
  EventModel model;
  model.Event->EventName = "秋の大会";
  model.Event->SetEventDate(std::make_shared<clsDateValue>(*DateNumber(2025, 10, 18)));
  model.FileDate = *DateNumber(2025, 10, 19) + test::Seconds(27000);
  model.Meta->CreateApplication = "Timer";
  for (const char* name : {"M20E", "M21;A"}) {
    const auto klass = model.AddClass(name);
    klass->CourseNum = 7;
    klass->AddLap();
  }
  model.AddCourse(7)->SetControlCount(60);  // more than a course can hold
  model.CourseAt(1)->SetControlNum(50, 131);
  model.Segments.push_back({{"7\t21", "8\t0"}, {"M20E;21", "M21;A;21"}, 1, "62-63-F", "00620063"});
  const Json info = Json::parse(InfoJson(model));
  ExpectMembers(info["event"], R"({"name": "秋の大会", "date": "2025-10-18"})");
  ExpectMembers(info["file"], R"({"name": "", "date": "2025-10-19 07:30:00",
      "created": {"application": "Timer", "date": null, "user": ""}})");
  EXPECT_EQ(info["classes"][1], Json::parse(R"({"name": "M21;A", "fileName": "m21;a", "runners": 1,
      "controls": 0, "length": 0, "climb": 0, "course": 7, "cutOffRank": 0, "classInfo": ""})"));
  ExpectMembers(info["courses"][0], R"({"number": 7, "controls": 60})");
  EXPECT_EQ(info["courses"][0]["codes"].size(), 50u);
  EXPECT_EQ(info["courses"][0]["codes"][49], 131);
  EXPECT_EQ(info["segments"], Json::parse(R"([{"name": "62-63-F", "binaryName": "00620063",
      "controls": 1, "targets": [[7, 21], [8, 0]], "classes": [["M20E", 21], ["M21;A", 21]]}])"));
  EXPECT_EQ(info["choices"][2], Json::parse(R"({"classIndex": 0, "courseNum": 7,
      "name": "M20E/M21;A", "fileName": "m20e_m21;a", "runners": 2})"));
}

TEST(Json, AnEmptyEvent) {
  const auto root = NewRoot();
  const Json analysis = Analyze(*root, "nobody");
  ExpectMembers(analysis["general"], R"({"upperLapAverage": [0], "upper": [[]]})");
  ExpectMembers(analysis, R"({"runners": []})");
  ExpectMembers(Json::parse(root->TextControl()->OutputResultJson({})), R"({"sets": []})");
  ExpectMembers(Json::parse(ResultText(*root, "nobody"))["sets"][0], R"({"runners": []})");
  ExpectMembers(Json::parse(root->TextControl()->OutputInfoJson()),
                R"({"event": {"name": "", "date": null, "terrain": "", "memo": "", "site": ""},
      "classes": [], "courses": [], "segments": [], "choices": []})");
}

TEST(Json, WritingLeavesRecordsAlone) {
  const auto root = NewRoot();
  const auto klass = root->AddClass("A");
  klass->ControlCount = 50;  // 51 legs, one more than a record can hold
  const auto runner = AddRunner(*klass, "a", "0:10:00", {300});
  EXPECT_EQ(Analyze(*root, "A")["runners"][0]["lap"].size(), 51u);
  EXPECT_EQ(Json::parse(ResultText(*root, "A"))["sets"][0]["runners"][0]["laps"].size(), 1u);
  EXPECT_EQ(runner->LegCount(), 1);
}

TEST(Json, EveryRunnerAndSetHasALineOfItsOwn) {
  const std::string json = ResultText(*ThreeRunners(), "W21A");
  EXPECT_TRUE(json.ends_with("}\n"));
  for (const char* start : {"\n{\"serial\":1,", "\n{\"serial\":2,", "\n{\"set\":"}) {
    EXPECT_NE(json.find(start), std::string::npos) << start;
  }
}

}  // namespace
}  // namespace keltrun
