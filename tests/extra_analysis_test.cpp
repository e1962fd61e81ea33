// Speeds on parts of the course, difficulty of legs, and the map of loss profiles.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <valarray>

#include "keltrun2/analysis/loss_map.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

constexpr MapSolver kSolvers[] = {MapSolver::kJacobi, MapSolver::kLanczos};

using Laps = std::vector<double>;  // seconds or markers

/// An executed analysis of runners. Their results are times unless `results` gives others.
struct Event {
  explicit Event(const std::vector<Laps>& runners, std::size_t legs = 0,
                 std::map<std::size_t, std::string> results = {}) {
    for (std::size_t i = 0; i < runners.size(); ++i) {
      const std::string result = results[i].empty() ? "0:07:00" : results[i];
      records.push_back(AddRunner(*klass, "", result, runners[i]));
    }
    analyzer->AddClass(1);
    analyzer->ControlCount = static_cast<std::int32_t>(legs ? legs : runners[0].size()) - 1;
    analyzer->Execute();
  }
  /// The runner at a position in the list.
  clsAnalyzedRunnerData& Runner(std::size_t place) const {
    std::int32_t i = 1;
    while (analyzer->FullSetItem(i)->OtherData() != records[place]) ++i;
    return *analyzer->FullSetItem(i);
  }
  std::shared_ptr<clsKeltrun2> root = NewRoot();
  std::shared_ptr<clsClassData> klass = root->AddClass("M21A");
  std::shared_ptr<clsAnalyzer> analyzer = root->NewAnalyzer();
  std::vector<std::shared_ptr<clsLapData>> records;
};

// Three runners determine the reference laps; the speeds of the fourth one are tested.
TEST(ExtraAnalyze, SpeedsOnPartsOfTheCourse) {
  for (const auto& [reference, laps, first, last] : Rows<Laps, Laps, double, double>{
           // Shares of 1/8: the parts are legs 1 to 4 and 4 to 8, two legs reach a fifth.
           {Laps(8, 100), {150, 110, 120, 108, 140, 160, 105, 170}, 218 / 200., 213 / 200.},
           // Shares of 1/5, and the limits are reached exactly: legs 1 to 2 and 2 to 5, one leg.
           {Laps(5, 100), {130, 150, 120, 140, 160}, 1.3, 1.2},
           // Leg 1 reaches both limits: the last part is the whole course.
           {{300, 100}, {450, 110}, 1.5, 1.1},
           // No lap in the first part; legs 2 and 3 have a common time, 110 and 110.
           {Laps(4, 100), {0, 0, 130, 120}, 0, 1.2},
           {Laps(4, 100), {130, -1, 220, 140}, 1.1, 1.1}}) {
    const Event event({reference, reference, reference, laps});
    event.analyzer->SelectNone();
    event.analyzer->ExtraAnalyze();
    ASSERT_EQ(event.analyzer->Count(), 4) << "everybody is selected";
    EXPECT_NEAR(event.Runner(3).FirstHalfCruiseSpeed()->Value(), first, 1e-6);
    EXPECT_NEAR(event.Runner(3).SecondHalfCruiseSpeed()->Value(), last, 1e-6);
    EXPECT_EQ(event.analyzer->GeneralData()->LegDifficulty(1)->Value(), 0) << "all lose nothing";
  }
}

void ExpectDifficulties(const Event& event, const Laps& expected) {
  event.analyzer->ExtraAnalyze();
  for (std::int32_t leg = 1; const double difficulty : expected) {
    EXPECT_NEAR(event.analyzer->GeneralData()->LegDifficulty(leg++)->Value(), difficulty, 1e-5);
  }
}

TEST(ExtraAnalyze, DifficultyOfLegs) {
  // References 300, 100, 100, 100: everybody's cruise speed is 1 and losses are laps over them. Of
  // ten runners ranks 1 to 7 count. On legs 2 and 3 runner 6 has rank 7 and alone loses something,
  // 40 s and 20 s. On leg 4 the first who loses has rank 8. Runner 4, who has no time at the
  // finish, counts only in the number of runners: on leg 2 six losses are left, on leg 3, where
  // runner 4 is the last, seven.
  const Laps even{300, 100, 100, 100};
  std::vector<Laps> runners(10, even);
  runners[4] = {300, 100, 200, 0};
  runners[6] = {300, 140, 120, 100};
  runners[7] = {300, 150, 100, 100};
  runners[8] = {300, 160, 140, 160};
  runners[9] = {300, 170, 150, 170};
  const double leg2 = 40 * std::sqrt(5) / 6, leg3 = 20 * std::sqrt(6) / 7, mean = (leg2 + leg3) / 4;
  ExpectDifficulties(Event(runners), {0, leg2 / mean, leg3 / mean, 0});
  // Only one runner has laps on legs 2 and 3, which therefore count as 1.
  const Laps skipped{100, -1, 200};
  ExpectDifficulties(Event({{100, 100, 100}, skipped, skipped, skipped}), {0, 1.5, 1.5});
  // Two runners of whom one counts on each leg, no runners, and an analysis that was not executed.
  ExpectDifficulties(Event({{100, 130}, {110, 120}}), {1, 1});
  const Event event({}, 3);
  ExpectDifficulties(event, {1, 1, 1});
  event.analyzer->Clear();
  event.analyzer->AddLap(AddRunner(*event.klass, "", "0:07:00", {100, 130}));
  ExpectDifficulties(event, {1});
  EXPECT_EQ(event.analyzer->Item(1)->FirstHalfCruiseSpeed()->Value(), 0);
}

TEST(LossMap, RunnersOfAClass) {
  // Losses in seconds: 0 to 2 none; 3 and 4 60 on leg 4, and so has 5, whose 200 s for legs 2 and 3
  // are 100 and 100; 6 has no time on leg 2 and gets a quarter of the 60 s there. These distances
  // are those of points on a line: 60 apart, then 15.
  const Laps even(4, 100), slow{100, 100, 100, 160};
  const std::vector<Laps> laps{
      even, even, even, slow, slow, {100, -1, 200, 160}, {100, 0, 100, 160}, even};
  const Event event(laps, 4, {{4, "25:07:40"}, {7, "DNF"}});
  event.Runner(7).SetVesmerY(9);
  event.analyzer->Vesmer();
  const double sign = event.Runner(3).VesmerX() < 0 ? -1 : 1;
  const double x[] = {0, 0, 0, 80, 80, 80, 100, 0};
  for (std::size_t i = 0; i < 8; ++i) {
    EXPECT_NEAR(sign * event.Runner(i).VesmerX(), x[i], 1e-4) << i;
    EXPECT_NEAR(event.Runner(i).VesmerY(), 0, 1e-4) << i;
  }
  const Event four(laps, 4, {{0, "MP"}, {1, "MP"}, {2, "MP"}, {7, "DNF"}});
  for (const std::size_t i : {2, 3}) four.Runner(i).SetVesmerX(9);
  four.analyzer->Vesmer();
  EXPECT_EQ(four.Runner(2).VesmerX(), 0);
  EXPECT_EQ(four.Runner(3).VesmerX(), 9) << "four finishers stay where they are";
}

TEST(LossMap, FieldsTooLargeOrWithoutLosses) {
  for (const std::size_t runners : {5, 5001}) {
    std::vector<Laps> laps(runners, {100, 100});
    if (runners > 5) laps[0][1] = 150;
    const Event event(laps);
    event.Runner(0).SetVesmerX(9);
    event.analyzer->Vesmer();
    EXPECT_EQ(event.Runner(0).VesmerX(), 0);
    EXPECT_EQ(event.analyzer->FinisherCount(), static_cast<std::int32_t>(runners));
  }
  EXPECT_TRUE(SolverFor(300) == MapSolver::kJacobi && SolverFor(301) == MapSolver::kLanczos);
}

using Values = std::valarray<double>;
using Axes = std::vector<Values>;

Axes MapAxes(const LossProfiles& profiles, MapSolver solver) {
  Axes axes(2, Values(profiles.Points()));
  const std::vector<MapPoint> map = MapProfiles(profiles, solver);
  for (std::size_t i = 0; i < map.size(); ++i) axes[0][i] = map[i].X, axes[1][i] = map[i].Y;
  return axes;
}

/// Compares in map units, whichever direction the axes have.
void ExpectSameMap(const Axes& a, const Axes& b) {
  for (const std::size_t k : {0, 1}) {
    EXPECT_LT(std::min(std::abs(a[k] - b[k]).max(), std::abs(a[k] + b[k]).max()), 0.05)
        << a[k].size() << " points, axis " << k;
  }
}

TEST(LossMap, BothSolversMakeTheSameMap) {
  std::mt19937 random(7);
  for (const std::size_t points : {6, 60, 200}) {
    LossProfiles profiles(points, 24);  // random losses; the last point has none
    std::generate(profiles.Row(0), profiles.Row(points - 1),
                  [&] { return std::ldexp(random() % 1000, -20); });
    const Axes large = MapAxes(profiles, MapSolver::kLanczos);
    ExpectSameMap(MapAxes(profiles, MapSolver::kJacobi), large);
    for (const Values& axis : large) {
      EXPECT_GE((axis * axis * axis).sum(), 0);
      EXPECT_EQ(axis[points - 1], 0);
    }
  }
}

// The matrix (a 1 0; 1 b 0; 0 0 -5), whose smallest eigenvalue is farthest from 0. Rotations turn
// the axes by 22.5 degrees forward or backward; only this solver determines signs.
TEST(LossMap, KnownEigenpairs) {
  for (const auto& [a, b, axes] :
       Rows<double, double, Laps>{{3, 1, {0.92388, 0.38268, 0, -0.38268, 0.92388, 0}},
                                  {1, 3, {0.38268, 0.92388, 0, 0.92388, -0.38268, 0}}}) {
    SymmetricMatrix first(3), second(3);
    for (SymmetricMatrix* matrix : {&first, &second}) {
      std::ranges::copy(Laps{a, 1, 0, 0, b, 0, 0, 0, -5}, matrix->Column(0));
    }
    const TopEigenpairs large = TopByLanczos(second), small = TopByJacobi(std::move(first));
    for (const std::size_t k : {0, 1}) {
      EXPECT_NEAR(large[k].value, 2 + (k == 0 ? 1 : -1) * std::sqrt(2), 1e-9);
      for (const std::size_t i : {0, 1, 2}) {
        EXPECT_NEAR(small[k].vector[i], axes[3 * k + i], 1e-5);
        EXPECT_NEAR(std::fabs(large[k].vector[i]), std::fabs(axes[3 * k + i]), 1e-5);
      }
    }
  }
}

// If all losses lie on a line, even if they are all the same, the map has only one axis.
TEST(LossMap, PointsOnALine) {
  for (const std::size_t points : {6, 40, 400}) {
    for (const std::size_t different : {1, 3, 400}) {
      LossProfiles profiles(points, 3);
      Axes axes(2, Values(points));
      for (std::size_t i = 0; i + 1 < points; ++i) {
        axes[0][i] = static_cast<double>(i % different + 1);
        profiles.Row(i)[0] = axes[0][i] / 1e4, profiles.Row(i)[2] = -axes[0][i] / 1e3;
      }
      axes[0] *= 100 / axes[0].max();
      for (const MapSolver solver : kSolvers) ExpectSameMap(MapAxes(profiles, solver), axes);
    }
  }
}

TEST(LossMap, HostileLosses) {
  for (const double value : {std::nan(""), HUGE_VAL, 1e308, 1e160, 1e100, 1e-100, 1e-160, 0.0}) {
    LossProfiles profiles(20, 5);
    profiles.Row(3)[2] = value;
    for (const MapSolver solver : kSolvers) {
      for (const MapPoint& p : MapProfiles(profiles, solver)) {  // fails for NaN too
        EXPECT_TRUE(std::fabs(p.X) <= 100 && std::fabs(p.Y) <= 100) << value;
      }
    }
  }
}

}  // namespace
}  // namespace keltrun::test
