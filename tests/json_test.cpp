// The JSON documents: their structure, and how values that are not plain numbers are written.
#include "keltrun2/report/json.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "keltrun2/model/event_model.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using Json = nlohmann::ordered_json;

// Compares the whole object, including the order of its keys.
void ExpectObject(const Json& object, const std::string& expected) {
  EXPECT_EQ(object.dump(), Json::parse(expected).dump());
}

// Compares the members that `expected` names.
void ExpectMembers(const Json& object, const std::string& expected) {
  const Json members = Json::parse(expected);
  for (const auto& [key, value] : members.items()) EXPECT_EQ(object.at(key), value) << key;
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
  AddRunner(*klass, "Anna", "0:10:40", {380, 170, 90})->StartTime()->SetValue(Seconds(40269));
  return root;
}

Json Analyze(const clsKeltrun2& root, DataSetKind kind = DataSetKind::kClass) {
  const auto analyzer = root.NewAnalyzer();
  analyzer->AddClass(1);
  analyzer->Execute();
  return Json::parse(root.TextControl()->OutputJson(analyzer, kind));
}

std::string ResultText(const clsKeltrun2& root) {
  const auto results = root.NewResultsHolder();
  results->AddClass(1);
  results->CalcRank();
  return root.TextControl()->OutputResultJson({{results, DataSetKind::kClass}});
}

// The result list of one runner.
std::string ResultTextOf(std::string_view name, DateTime start) {
  const auto root = NewRoot();
  AddRunner(*root->AddClass("A"), name, "DNF", {})->StartTime()->SetValue(start);
  return ResultText(*root);
}

TEST(Json, AnalysisOfASmallClass) {
  Json json = Analyze(*ThreeRunners());
  ExpectObject(json["set"], R"({"name": "W21A", "fileName": "w21a", "kind": "class", "mix": false,
      "controls": 2, "length": 5700, "climb": 70, "cutOffRank": 0, "classInfo": "5.7km ↑70m", "leftOut": 0,
      "codes": null, "legLabels": ["S→1", "1→2", "2→F"],
      "points": ["S", "", "", "F"], "starters": 3, "finishers": 3})");
  ExpectObject(json["general"], R"({"upperLapTotal": 700, "upperLapAverage": [400, 200, 100],
      "legLength": [0.571429, 0.285714, 0.142857], "difficulty": [0, 0, 0],
      "timed": [true, true, true], "upper": [[3, 2, 1], [3, 1], [3, 1]],
      "legs": [{"laps": 3, "mistakes": 0, "cost": 4.762, "decisive": 30},
               {"laps": 2, "mistakes": 0, "cost": 10, "decisive": 60},
               {"laps": 2, "mistakes": 0, "cost": 2.5, "decisive": 20}]})");
  ASSERT_EQ(json["runners"].size(), 3u);
  // Anna needs all three legs to cover half of the course: 640 / 700. On leg 1 she lost
  // 380 - 400 * 640 / 700 s, on the others she gained.
  ExpectMembers(json["runners"][0],
                R"({"serial": 3, "start": 40269, "lapRelative": [0.95, 0.85, 0.9],
      "cruiseSpeed": 0.914286, "missTime": [14.286, -12.857, -1.429], "missTimeTotal": 14.286,
      "missRate": 0.022321, "totalTimeWithoutMiss": 625.714, "totalTimeRelative": 0.914286})");
  // Berta's best leg alone covers half of the course: 420 / 400.
  ExpectMembers(json["runners"][1],
                R"({"name": "Berta", "cruiseSpeed": 1.05, "missTime": [0, 20, 5]})");
  ExpectObject(json["runners"][2], R"({"serial": 2, "name": "Lena", "club": "", "class": "W21A",
      "id": 0, "ecard": 0, "competitorId": "", "sex": "", "age": "", "seed": "",
      "bib": "", "card": "", "givenName": "", "familyName": "", "nationality": "", "status": "", "outcome": "ok",
      "course": 0, "start": null,
      "result": "0:13:10", "officialRank": "", "rank": "3", "rankInDataSet": "3",
      "time": 790, "behind": 150,
      "lap": [400, "skip", 390], "split": [400, "skip", 790],
      "modifiedLap": [400, 260, 130], "modifiedSplit": [400, 660, 790], "lapRank": [2, 0, 0],
      "splitRank": [2, 0, 3], "modifiedLapRank": [2, 3, 3], "modifiedSplitRank": [2, 3, 3],
      "validLap": [true, false, false], "validSplit": [true, true, true], "rangeFrom": [0, 2, 2],
      "rangeTo": [0, 3, 3], "lapRelative": [1, "skip", 1.3], "missTime": [0, "skip", 90],
      "cruiseSpeed": 1, "missRate": 0.113924, "missTimeTotal": 90, "totalTimeWithoutMiss": 700,
      "totalTimeRelative": 1.128571, "firstHalfCruiseSpeed": 0, "secondHalfCruiseSpeed": 0,
      "map": [0, 0]})");
  json["event"] = json["set"] = json["general"] = json["runners"] = 0;
  ExpectObject(json, R"({"format": "keltrun2-analysis", "version": 1, "generator": "Keltrun 2.27",
      "event": 0, "set": 0, "general": 0, "runners": 0})");
}

TEST(Json, SpeedsDifficultiesAndMap) {
  const auto root = ThreeRunners();
  const auto analyzer = root->NewAnalyzer();
  analyzer->AddClass(1);
  analyzer->Execute();
  analyzer->ExtraAnalyze();
  analyzer->Item(1)->SetVesmerX(-99.5);
  analyzer->Item(1)->SetVesmerY(0.25);
  const Json json = Json::parse(root->TextControl()->OutputJson(analyzer, DataSetKind::kClass));
  // Leg 1 is more than half the course, so the first part is leg 1 and the last part all legs.
  ExpectMembers(json["runners"][0], R"({"firstHalfCruiseSpeed": 0.95, "secondHalfCruiseSpeed": 0.85,
      "map": [-99.5, 0.25]})");
  // The best two of each leg count, with their losses as shares of their times: 14.286 / 640 and 0,
  // -12.857 / 640 and 20 / 760, -1.429 / 640 and 5 / 760. The deviation is half the difference:
  // 0.0111607, 0.0232026, 0.0044055, with a mean of 0.0129229.
  const double difficulties[] = {0.863636, 1.795455, 0.340909};
  for (const int leg : {0, 1, 2}) {
    EXPECT_NEAR(json["general"]["difficulty"][leg], difficulties[leg], 1e-4);
  }
}

// Only with an estimate, and only where its legs are those of the set.
TEST(Json, EstimatesOfRunnersAndLegs) {
  const auto root = NewRoot();
  const auto klass = root->AddClass("A");
  klass->ControlCount = 3;
  for (const double factor : {1.0, 1.1, 1.2}) {
    AddRunner(*klass, "R", "0:10:00", {100 * factor, 0, 200 * factor, 300 * factor});
  }
  const auto late = AddRunner(*klass, "Late", "0:20:00", {130, 0, 500, 390});
  AddRunner(*klass, "Absent", "DNS", {0, 0, 0, 0});
  const auto analyzer = root->NewAnalyzer();
  analyzer->SetUntimedLegs("auto");
  analyzer->AddClass(1);
  analyzer->Execute();
  const auto estimate = root->NewEstimate();
  const auto write = [&](DataSetKind kind) {
    return Json::parse(root->TextControl()->OutputJson(analyzer, kind, estimate));
  };
  const Json json = write(DataSetKind::kClass);
  EXPECT_EQ(json["general"]["timed"], Json::parse("[true, false, true, true]"));
  EXPECT_EQ(json["general"]["estimate"]["normalTime"][1], nullptr);
  EXPECT_NEAR(json["general"]["estimate"]["normalTime"][0].get<double>(), 110, 5);
  Json figures;
  for (const Json& runner : json["runners"]) {
    if (runner["name"] == "Late") figures = runner["estimate"];
    const bool has_laps = runner["name"] != "Absent";
    EXPECT_EQ(runner["estimate"].is_null(), !has_laps);
  }
  EXPECT_EQ(figures["mistakes"], 1);
  EXPECT_EQ(figures["mistake"], Json::parse(R"(["", null, "sure", ""])"));
  const auto late_figures = estimate->RunnerData(late->SerialNum());
  EXPECT_NEAR(figures["loss"][2].get<double>(), late_figures->Loss(3) * kSecondsPerDay, 1e-3);
  EXPECT_NEAR(figures["mistakeSize"].get<double>(), late_figures->MistakeSize() * kSecondsPerDay,
              1e-3);
  EXPECT_LT(figures["leastLoss"][2].get<double>(), figures["largestLoss"][2].get<double>());
  EXPECT_LT(figures["leastTimeLost"].get<double>(), figures["timeLost"].get<double>());
  EXPECT_GT(figures["largestTimeLost"].get<double>(), figures["timeLost"].get<double>());

  const Json segment = write(DataSetKind::kSegment);
  EXPECT_FALSE(segment["general"].contains("estimate"));
  EXPECT_FALSE(segment["runners"][0].contains("estimate"));
  const Json info = Json::parse(root->TextControl()->OutputInfoJson());
  EXPECT_EQ(info["remarks"], Json::parse(R"(["leg 2 of class A is untimed"])"));
}

TEST(Json, ADisqualifiedLegLeavesNoFigures) {
  const auto root = NewRoot();
  root->AddClass("A")->ControlCount = 3;
  AddRunner(*root->ClassData(1), "Mia", "DISQ", {60, -2, 70});
  ExpectMembers(Analyze(*root)["runners"][0], R"({"lap": [60, "disq", 70, null],
      "split": [60, "disq", 130, null], "lapRelative": [1, null, null, null],
      "missTime": [0, null, null, null], "missTimeTotal": null, "totalTimeWithoutMiss": null,
      "totalTimeRelative": null, "rankInDataSet": ""})");
}

TEST(Json, ResultListsRankAndKeepMarkers) {
  const auto root = NewRoot();
  const auto klass = root->AddClass("A");
  AddRunner(*klass, "c", "0:12:00", {300, 0, -1, -2})->Rank = "3";
  AddRunner(*klass, "d", "DNF", {});
  AddRunner(*klass, "a", "0:10:00", {})->Rank = "1";
  AddRunner(*klass, "b", "0:12:00", {})->RankFix = "2";
  const std::string text = ResultText(*root);
  Json json = Json::parse(text), &list = json["sets"][0], runners = list["runners"];
  // Equal results share a rank; the runner added last comes first.
  ExpectMembers(runners[0], R"({"name": "a", "rankInDataSet": "1"})");
  ExpectMembers(runners[1],
                R"({"name": "b", "rankInDataSet": "2", "rank": "", "rankFix": "2", "laps": []})");
  ExpectObject(runners[2], R"({"serial": 1, "name": "c", "club": "", "class": "A", "id": 0,
      "ecard": 0, "competitorId": "", "sex": "", "age": "", "seed": "",
      "bib": "", "card": "", "givenName": "", "familyName": "", "nationality": "", "status": "", "outcome": "ok",
      "course": 0, "start": null,
      "result": "0:12:00", "rank": "3", "rankFix": "", "rankInDataSet": "2",
      "time": 720, "behind": 120,
      "laps": [300, null, "skip", "disq"]})");
  ExpectMembers(runners[3], R"({"name": "d", "rankInDataSet": "", "result": "DNF", "outcome": "dnf",
      "time": null, "behind": null})");
  list["runners"] = runners.size();
  json["event"] = 0;
  ExpectObject(json, R"({"format": "keltrun2-results", "version": 1, "generator": "Keltrun 2.27",
      "event": 0, "sets": [{"set": {"name": "A", "fileName": "a", "kind": "class", "mix": false,
      "controls": 0, "length": 0, "climb": 0, "cutOffRank": 0, "classInfo": "",
      "leftOut": 0},
      "rankIsAvailable": true, "runners": 4}]})");
  // Every runner and every data set is on a line of its own.
  for (const char* start : {"\n{\"serial\":1,", "\n{\"serial\":4,", "\n{\"set\":"}) {
    EXPECT_NE(text.find(start), std::string::npos) << start;
  }
  EXPECT_TRUE(text.ends_with("}\n"));
}

// 0.0365 s in days is slightly below the half millisecond.
TEST(Json, TimesAreSecondsToTheMillisecond) {
  std::istringstream cases(
      "2063.333 2063.333, 116 116, 0.5 0.5, 1.0005 1.001, 0.0365 0.037, 2.00249 2.002, 59.9996 60,"
      "-0.0365 -0.037, 0.0004 0, -0.0004 0, 86400e15 86400000000000000000, 0 null, inf null,"
      "nan null,");
  for (std::string seconds, text; cases >> seconds && std::getline(cases >> std::ws, text, ',');) {
    const std::string json = ResultTextOf("a", Seconds(std::stod(seconds)));
    EXPECT_NE(json.find("\"start\":" + text + ","), std::string::npos) << text << json;
  }
}

// The last ones are a truncated sequence, a surrogate and an overlong form.
TEST(Json, TextsAreEscapedAndValidUtf8) {
  for (const auto& [text, written] :
       Rows<std::string, std::string>{{R"(The "Owl" \ Club)", R"(The \"Owl\" \\ Club)"},
                                      {std::string("a\0b", 3), R"(a\u0000b)"},
                                      {"\t\r\n\x01\x1f", R"(\u0009\u000d\u000a\u0001\u001f)"},
                                      {"山田　太郎 𠮷", "山田　太郎 𠮷"},
                                      {"a\xFF\"b", "a\uFFFD\\\"b"},
                                      {"\xE5\xB1", "\uFFFD\uFFFD"},
                                      {"\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},
                                      {"\xC0\xAF東", "\uFFFD\uFFFD東"}}) {
    const std::string json = ResultTextOf(text, 0);
    EXPECT_NE(json.find("\"name\":\"" + written + "\",\"club\""), std::string::npos) << json;
    EXPECT_TRUE(Json::accept(json)) << json;
  }
}

TEST(Json, CodesComeFromTheCourseOfTheSet) {
  const auto root = ThreeRunners();
  const auto codes = [&](DataSetKind kind) { return Analyze(*root, kind)["set"]["codes"].dump(); };
  root->ClassData("W21A")->CourseNum = 5;
  EXPECT_EQ(codes(DataSetKind::kClass), "null") << "there is no course 5";
  const auto course = root->AddCourse(5);
  course->SetControlCount(3);
  for (std::int32_t i = 1; i <= 3; ++i) course->SetControlNum(i, 30 + i);
  EXPECT_EQ(codes(DataSetKind::kClass), "[31,32]");
  EXPECT_EQ(codes(DataSetKind::kCourse), "[31,32]");
  EXPECT_EQ(codes(DataSetKind::kSegment), "null");
  course->SetControlCount(1);
  EXPECT_EQ(codes(DataSetKind::kClass), "[31]");
}

TEST(Json, InfoDescribesTheEvent) {
  NewRoot();
  EventModel model;
  model.Event->EventName = "秋の大会";
  model.Event->SetEventDate(std::make_shared<clsDateValue>(*DateNumber(2025, 10, 18)));
  model.FileDate = *DateNumber(2025, 10, 19) + Seconds(27000);
  model.Meta->CreateApplication = "Timer";
  for (const char* name : {"M20E", "M21;A"}) {
    model.AddClass(name)->CourseNum = 7;
    model.ClassByName(name)->AddLap();
  }
  model.AddCourse(7)->SetControlCount(60);  // more than a course can hold
  model.CourseAt(1)->SetControlNum(50, 131);
  model.Segments.push_back(std::make_shared<SegmentSet>(
      SegmentSet{{"7\t21", "8\t0"}, {"M20E;21", "M21;A;21"}, 1, "62-63-F", "00620063"}));
  Json info = Json::parse(InfoJson(model));
  EXPECT_EQ(info["courses"][0]["codes"].size(), 50u);
  EXPECT_EQ(info["courses"][0]["codes"][49], 131);
  info["courses"][0]["codes"] = 0;
  info["classes"].erase(0);
  info["choices"].erase(0), info["choices"].erase(0);
  ExpectObject(info, R"({"format": "keltrun2-info", "version": 1, "generator": "Keltrun 2.27",
      "event": {"name": "秋の大会", "date": "2025-10-18", "terrain": "", "memo": "", "site": ""},
      "file": {"name": "", "date": "2025-10-19 07:30:00", "format": "",
      "created": {"application": "Timer", "date": null, "user": ""},
      "lastUpdate": {"application": "", "date": null, "user": ""}},
      "remarks": [], "classes": [{"name": "M21;A", "fileName": "m21;a", "runners": 1, "controls": 0, "length": 0,
      "climb": 0, "course": 7, "cutOffRank": 0, "classInfo": ""}],
      "courses": [{"number": 7, "controls": 60, "codes": 0}],
      "segments": [{"name": "62-63-F", "binaryName": "00620063", "controls": 1,
      "targets": [[7, 21], [8, 0]], "classes": [["M20E", 21], ["M21;A", 21]]}],
      "choices": [{"classIndex": 0, "courseNum": 7, "name": "M20E/M21;A",
      "fileName": "m20e_m21;a", "runners": 2}]})");
}

TEST(Json, AnEmptyEvent) {
  const auto root = NewRoot();
  ExpectMembers(Analyze(*root)["general"], R"({"upperLapAverage": [0], "upper": [[]]})");
  ExpectMembers(Analyze(*root), R"({"runners": []})");
  ExpectMembers(Json::parse(root->TextControl()->OutputResultJson({})), R"({"sets": []})");
  ExpectMembers(Json::parse(ResultText(*root))["sets"][0], R"({"runners": []})");
  ExpectMembers(Json::parse(root->TextControl()->OutputInfoJson()),
                R"({"classes": [], "courses": [], "segments": [], "choices": []})");
}

TEST(Json, WritingLeavesRecordsAlone) {
  const auto root = NewRoot();
  root->AddClass("A")->ControlCount = 50;  // 51 legs, one more than a record can hold
  const auto runner = AddRunner(*root->ClassData(1), "a", "0:10:00", {300});
  EXPECT_EQ(Analyze(*root)["runners"][0]["lap"].size(), 51u);
  EXPECT_EQ(runner->LegCount(), 1);
}

}  // namespace
}  // namespace keltrun::test
