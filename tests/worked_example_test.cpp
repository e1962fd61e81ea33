// The event in docs/analysis.md has the figures that are computed there by hand.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using Json = nlohmann::json;

// The figures of the runners Anna, Bea, Cara and Dora, then of the class Map.
constexpr const char* kFigures = R"([{"class": "Short",
  "upperLapAverage": [110, 200, 165, 55], "upperLapTotal": 530,
  "legLength": [0.2075, 0.3774, 0.3113, 0.1038], "difficulty": [0.4438, 1.4346, 1.5912, 0.5304],
  "rankInDataSet": ["1", "2", "3", ""], "rank": ["1", "", "2", ""],
  "lapRank": [[1, 2, 1, 1], [2, 1, 3, 3], [3, 3, 2, 2], [4, 4, 0, 0]],
  "splitRank": [[1, 1, 1, 1], [2, 1, 2, 2], [3, 3, 3, 3], [4, 4, 0, 4]],
  "modifiedLap": [[100, 200, 150, 50], [110, 190, 180, 60], [120, 210, 165, 55], [130, 230, 225, 75]],
  "lapRelative": [[0.909, 1, 0.909, 0.909], [1, 0.95, 1.091, 1.091], [1.091, 1.05, 1, 1],
                  [1.182, 1.15, "skip", 1.364]],
  "missTime": [[0, 18.182, 0, 0], [3.548, -3.548, 20.323, 6.774], [7.381, 5.238, -3.929, -1.310],
               [2.258, -2.258, "skip", 44.516]],
  "totalTimeRelative": [0.943, 1.019, 1.038, 1.245], "cruiseSpeed": [0.9091, 0.9677, 1.0238, 1.1613],
  "missTimeTotal": [18.182, 30.645, 12.619, null], "missRate": [0.0364, 0.0568, 0.0229, 0],
  "totalTimeWithoutMiss": [481.818, 509.355, 537.381, null],
  "firstHalfCruiseSpeed": [0.9091, 0.95, 1.05, 1.15], "secondHalfCruiseSpeed": [0.9091, 0.95, 1, 1.15]},
  {"class": "Map", "map": [[0, 0], [33.333, 0], [-50, 0], [66.667, 0], [-100, 0]]}])";

bool Agree(const Json& found, const Json& expected) {
  if (!expected.is_number() || !found.is_number()) return found == expected;
  return std::abs(found.get<double>() - expected.get<double>()) < 0.00051;
}

TEST(WorkedExample, FiguresOfTheDocument) {
  const auto root = NewRoot();
  ASSERT_TRUE(root->FileControl()->LoadLapFile(ExampleFile("worked/event.lxm")));
  for (Json figures : Json::parse(kFigures)) {
    const auto analyzer = root->NewAnalyzer();
    analyzer->AddClass(figures["class"].get<std::string>());
    figures.erase("class");
    analyzer->Execute();
    analyzer->ExtraAnalyze();
    analyzer->Vesmer();
    const Json analysis = Json::parse(root->TextControl()->OutputJson(analyzer));
    Json found = analysis["general"];
    for (const auto& runner : analysis["runners"])
      for (const auto& [key, value] : runner.items()) found[key].push_back(value);
    const Json expected = figures.flatten(), values = found.flatten();
    for (const auto& [place, value] : expected.items())
      EXPECT_PRED2(Agree, values.at(place), value) << place;
  }
}

struct WorkedLap {
  const char* runner;
  int leg;
  double normal, loss, least, largest, chance, lost;  // times in seconds
};

// The laps of the section about the estimate. Quinn's is worked out there.
TEST(WorkedExample, EstimatesOfTheDocument) {
  const auto root = NewRoot();
  ASSERT_TRUE(root->FileControl()->LoadLapFile(ExampleFile("worked/event.lxm")));
  const auto klass = root->NewEstimate()->ClassData("Map");
  const WorkedLap kLaps[] = {{"Quinn", 3, 99.84, 20.16, 5.9, 32.6, 0.22, 10.05},
                             {"Rosa", 3, 103.4, 36.6, 21.6, 49.7, 0.92, 32.9},
                             {"Pia", 1, 98.6, 31.4, 17.9, 43.4, 0.84, 28.0},
                             {"Sara", 1, 98.6, 61.4, 47.9, 73.35, 1.00, 58.7}};
  const std::map<std::string, std::array<double, 3>> totals = {{"Quinn", {10.755, 0, 43.451}},
                                                               {"Sara", {59.727, 31.767, 87.688}}};
  constexpr double kTenth = 0.051;
  for (const WorkedLap& lap : kLaps) {
    for (int i = 1; i <= klass->Count(); ++i) {
      const auto runner = klass->Item(i);
      if (runner->RunnerName() != lap.runner) continue;
      EXPECT_NEAR(runner->NormalTime(lap.leg) * kSecondsPerDay, lap.normal, kTenth) << lap.runner;
      EXPECT_NEAR(runner->Loss(lap.leg) * kSecondsPerDay, lap.loss, kTenth);
      EXPECT_NEAR(runner->LeastLoss(lap.leg) * kSecondsPerDay, lap.least, kTenth);
      EXPECT_NEAR(runner->LargestLoss(lap.leg) * kSecondsPerDay, lap.largest, kTenth);
      EXPECT_NEAR(runner->MistakeChance(lap.leg), lap.chance, 0.0051);
      EXPECT_NEAR(runner->MistakeTime(lap.leg) * kSecondsPerDay, lap.lost, kTenth);
      const auto total = totals.find(lap.runner);
      if (total == totals.end()) continue;
      EXPECT_NEAR(runner->TimeLost() * kSecondsPerDay, total->second[0], kTenth);
      EXPECT_NEAR(runner->LeastTimeLost() * kSecondsPerDay, total->second[1], kTenth);
      EXPECT_NEAR(runner->LargestTimeLost() * kSecondsPerDay, total->second[2], kTenth);
    }
  }
}

}  // namespace
}  // namespace keltrun::test
