// The estimate of laps against a second implementation, and what it must not depend on.
#include "keltrun2/analysis/lap_estimate.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <limits>
#include <map>
#include <numeric>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/test_support.h"

namespace keltrun::test {
namespace {

// The generator of tests/data/estimate/make_reference.py (splitmix64).
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}

  std::uint64_t Bits() {
    state_ += 0x9E3779B97F4A7C15U;
    std::uint64_t z = state_;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
    return z ^ (z >> 31);
  }
  double Uniform() { return (static_cast<double>(Bits() >> 11) + 0.5) / 9007199254740992.0; }
  double Normal() {
    double total = 0;
    for (int i = 0; i < 12; ++i) total += Uniform();
    return total - 6;
  }
  double Exponential() { return -std::log(Uniform()); }
  std::size_t Below(std::size_t count) { return static_cast<std::size_t>(Bits() % count); }

 private:
  std::uint64_t state_;
};

using Event = std::vector<LapTable>;

std::ptrdiff_t CountLaps(const LapTable& table) {
  return std::count_if(table.seconds.begin(), table.seconds.end(),
                       [](double lap) { return lap > 0; });
}

std::pair<std::ptrdiff_t, double> SortKey(const LapTable& table) {
  return {CountLaps(table), std::accumulate(table.seconds.begin(), table.seconds.end(), 0.0)};
}

// The class with the most laps comes first: that is the order in which classes are pooled.
Event RandomEvent(std::uint64_t seed) {
  constexpr std::size_t kSizes[] = {1, 2, 3, 5, 10, 30, 80};
  Random random(seed);
  Event event(1 + random.Below(6));
  std::map<std::size_t, double> base;
  std::map<std::size_t, std::int32_t> numbers;
  for (std::size_t klass = 0; klass < event.size(); ++klass) {
    LapTable& table = event[klass];
    table.runners = kSizes[random.Below(7)];
    const std::size_t legs = 2 + random.Below(24);
    std::vector<double> times;
    for (std::size_t leg = 0; leg < legs; ++leg) {
      const bool shared = random.Uniform() < 0.4;
      const std::size_t key = shared ? random.Below(12) : 1000 * (klass + 1) + leg;
      if (!base.contains(key)) base[key] = std::exp(4.9 + 0.6 * random.Normal());
      table.pairs.push_back(
          numbers.try_emplace(key, static_cast<std::int32_t>(numbers.size())).first->second);
      times.push_back(base[key]);
    }
    table.seconds.resize(table.runners * legs);
    const double center = 0.2 * random.Normal();
    for (std::size_t runner = 0; runner < table.runners; ++runner) {
      const double speed = center + 0.15 * random.Normal();
      for (std::size_t leg = 0; leg < legs; ++leg) {
        double noise = 0.09 * random.Normal();
        if (random.Uniform() < 0.18) noise += 0.35 * random.Exponential();
        if (random.Uniform() < 0.03) continue;
        const double lap = times[leg] * std::exp(speed + noise);
        table.At(runner, leg) = std::max(std::floor(lap + 0.5), 1.0);
      }
    }
  }
  std::stable_sort(event.begin(), event.end(),
                   [](const LapTable& a, const LapTable& b) { return SortKey(a) > SortKey(b); });
  return event;
}

// Checks figures against the words that follow on a line. The reference has nine digits; figures
// that are differences are as exact as what they are the difference of.
void ExpectFigures(std::istream& line, std::initializer_list<double> figures, double scale,
                   const std::string& where) {
  constexpr double kRelative = 1e-6;
  for (const double figure : figures) {
    double expected = -1;
    line >> expected;
    EXPECT_NEAR(figure, expected, kRelative * std::fabs(expected) + 1e-9 * scale) << where;
  }
}

void ExpectLap(std::istream& line, const LapFigures& lap, const std::string& where) {
  const bool known = (line >> std::ws).peek() != 'u';
  ASSERT_EQ(lap.known, known) << where;
  if (!known) return;
  ExpectFigures(
      line,
      {lap.normal, lap.least_loss, lap.largest_loss, lap.mistake, lap.large_mistake, lap.time_lost},
      std::fabs(lap.normal), where);
}

void ExpectRunner(std::istream& line, const RunnerFigures& runner, const std::string& where) {
  ExpectFigures(line,
                {runner.speed, runner.speed_error, runner.spread,
                 static_cast<double>(runner.mistakes), runner.time_lost},
                1, where);
  // The range is the time lost and its error, which are about as large.
  ExpectFigures(line, {runner.least_time_lost, runner.largest_time_lost},
                1000 * runner.largest_time_lost, where);
}

void ExpectLeg(std::istream& line, const LegFigures& leg, const std::string& where) {
  ExpectFigures(line, {leg.normal, leg.spread, leg.mistake_rate}, 1, where);
}

TEST(LapEstimate, EqualsTheReferenceOnRandomEvents) {
  std::ifstream file(DataFile("estimate/random.txt"));
  std::uint64_t seed = 0;
  Event event;
  std::vector<ClassEstimate> estimates;
  std::size_t lines = 0;
  for (std::string text; std::getline(file, text); ++lines) {
    std::istringstream line(text);
    std::string subject;
    std::size_t klass = 0, runner = 0, leg = 0;
    line >> subject;
    const std::string where = "seed " + std::to_string(seed) + ": " + text;
    if (subject == "event") {
      std::ptrdiff_t laps = 0, known = 0;
      line >> laps >> known;
      event = RandomEvent(++seed);
      estimates = EstimateLaps(event);
      for (std::size_t i = 0; i < event.size(); ++i) {
        laps -= CountLaps(event[i]);
        known -= std::count_if(estimates[i].laps.begin(), estimates[i].laps.end(),
                               [](const LapFigures& lap) { return lap.known; });
      }
      EXPECT_EQ(laps, 0) << seed;
      EXPECT_EQ(known, 0) << seed;
    } else if (subject == "lap") {
      line >> klass >> runner >> leg;
      const std::size_t legs = event.at(klass).pairs.size();
      ExpectLap(line, estimates.at(klass).laps.at(runner * legs + leg), where);
    } else if (subject == "runner") {
      line >> klass >> runner;
      ExpectRunner(line, estimates.at(klass).runners.at(runner), where);
    } else {
      line >> klass >> leg;
      ExpectLeg(line, estimates.at(klass).legs.at(leg), where);
    }
  }
  EXPECT_EQ(seed, 200U);
  EXPECT_GT(lines, 6000U);
}

// Runners and legs of an event of one class, as a table of laps.
LapTable Table(std::vector<std::vector<double>> rows) {
  LapTable table;
  table.runners = rows.size();
  for (std::size_t leg = 0; leg < rows.front().size(); ++leg) {
    table.pairs.push_back(static_cast<std::int32_t>(leg));
  }
  for (const auto& row : rows) {
    table.seconds.insert(table.seconds.end(), row.begin(), row.end());
  }
  return table;
}

LapTable Reversed(const LapTable& table) {
  LapTable reversed = table;
  for (std::size_t runner = 0; runner < table.runners; ++runner) {
    for (std::size_t leg = 0; leg < table.pairs.size(); ++leg) {
      reversed.At(runner, leg) = table.At(table.runners - 1 - runner, leg);
    }
  }
  return reversed;
}

void ExpectSameLap(const LapFigures& a, const LapFigures& b, double factor, double tolerance) {
  ASSERT_EQ(a.known, b.known);
  const double scale = tolerance * std::max(std::fabs(a.normal * factor), 1e-12);
  EXPECT_NEAR(a.normal * factor, b.normal, scale);
  EXPECT_NEAR(a.loss * factor, b.loss, scale);
  EXPECT_NEAR(a.least_loss * factor, b.least_loss, scale);
  EXPECT_NEAR(a.largest_loss * factor, b.largest_loss, scale);
  EXPECT_NEAR(a.mistake, b.mistake, tolerance);
  EXPECT_NEAR(a.time_lost * factor, b.time_lost, scale);
}

TEST(LapEstimate, LossesGrowWithTheTimes) {
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    Event event = RandomEvent(seed);
    // Times so long that the rounding to seconds does not matter.
    for (LapTable& table : event) {
      for (double& lap : table.seconds) lap *= 10000;
    }
    const auto before = EstimateLaps(event);
    for (LapTable& table : event) {
      for (double& lap : table.seconds) lap *= 2;
    }
    const auto after = EstimateLaps(event);
    for (std::size_t klass = 0; klass < event.size(); ++klass) {
      for (std::size_t i = 0; i < before[klass].laps.size(); ++i) {
        ExpectSameLap(before[klass].laps[i], after[klass].laps[i], 2, 1e-5);
      }
    }
  }
}

TEST(LapEstimate, TheOrderOfRunnersAndClassesDoesNotMatter) {
  for (std::uint64_t seed = 1; seed <= 40; ++seed) {
    const Event event = RandomEvent(seed);
    Event other(event.rbegin(), event.rend());
    for (LapTable& table : other) table = Reversed(table);
    const auto before = EstimateLaps(event);
    const auto after = EstimateLaps(other);
    for (std::size_t klass = 0; klass < event.size(); ++klass) {
      const LapTable& table = event[klass];
      for (std::size_t i = 0; i < table.seconds.size(); ++i) {
        const std::size_t runner = i / table.pairs.size();
        const std::size_t leg = i % table.pairs.size();
        ExpectSameLap(before[klass].laps[i],
                      after[event.size() - 1 - klass]
                          .laps[(table.runners - 1 - runner) * table.pairs.size() + leg],
                      1, 1e-9);
      }
    }
  }
}

double MeanError(const ClassEstimate& estimate) {
  double sum = 0;
  double count = 0;
  for (const LapFigures& lap : estimate.laps) {
    sum += lap.error;
    count += lap.known ? 1 : 0;
  }
  return count > 0 ? sum / count : 0;
}

// A copy of a class agrees with it about everything, so it only makes the legs more certain.
TEST(LapEstimate, ACopyOfAClassOnlyAddsPrecision) {
  for (std::uint64_t seed = 1; seed <= 40; ++seed) {
    const LapTable table = RandomEvent(seed).front();
    if (table.runners < 5) continue;
    const auto alone = EstimateLaps({table});
    const auto both = EstimateLaps({table, table});
    EXPECT_LE(MeanError(both[0]), MeanError(alone[0])) << seed;
    double shift = 0;
    for (std::size_t i = 0; i < both[0].laps.size(); ++i) {
      ExpectSameLap(both[0].laps[i], both[1].laps[i], 1, 5e-3);
      if (!alone[0].laps[i].known) continue;
      shift += std::fabs(both[0].laps[i].normal / alone[0].laps[i].normal - 1);
    }
    EXPECT_LT(shift / static_cast<double>(both[0].laps.size()), 0.02) << seed;
  }
}

TEST(LapEstimate, IsTheSameToTheBitEveryTime) {
  for (std::uint64_t seed = 1; seed <= 10; ++seed) {
    const Event event = RandomEvent(seed);
    const auto first = EstimateLaps(event);
    const auto second = EstimateLaps(event);
    for (std::size_t klass = 0; klass < event.size(); ++klass) {
      for (std::size_t i = 0; i < first[klass].laps.size(); ++i) {
        EXPECT_EQ(first[klass].laps[i].time_lost, second[klass].laps[i].time_lost);
        EXPECT_EQ(first[klass].laps[i].large_mistake, second[klass].laps[i].large_mistake);
      }
    }
  }
}

bool IsFinite(const ClassEstimate& estimate) {
  std::vector<double> figures = {estimate.mistake_rate, estimate.mistake_size};
  for (const LapFigures& lap : estimate.laps) {
    figures.insert(figures.end(),
                   {lap.normal, lap.error, lap.loss, lap.least_loss, lap.largest_loss, lap.mistake,
                    lap.large_mistake, lap.time_lost, lap.time_lost_variance});
  }
  for (const RunnerFigures& runner : estimate.runners) {
    figures.insert(figures.end(),
                   {runner.speed, runner.speed_error, runner.spread, runner.time_lost,
                    runner.least_time_lost, runner.largest_time_lost, runner.mistake_size});
  }
  for (const LegFigures& leg : estimate.legs) {
    figures.insert(figures.end(), {leg.normal, leg.spread, leg.mistake_rate});
  }
  return std::all_of(figures.begin(), figures.end(), [](double f) { return std::isfinite(f); });
}

TEST(LapEstimate, FiguresAreFiniteWhateverTheTimesAre) {
  constexpr double kExtremes[] = {0,
                                  -1,
                                  0.0005,
                                  0.001,
                                  1,
                                  20,
                                  20.000001,
                                  1e-9,
                                  1e300,
                                  1e12,
                                  8e10,
                                  -0.0,
                                  3600.5,
                                  100,
                                  std::numeric_limits<double>::infinity(),
                                  std::numeric_limits<double>::quiet_NaN(),
                                  std::numeric_limits<double>::denorm_min(),
                                  std::numeric_limits<double>::max()};
  Random random(1);
  for (int round = 0; round < 300; ++round) {
    Event event(1 + random.Below(4));
    for (LapTable& table : event) {
      table.runners = random.Below(7);
      for (std::size_t leg = random.Below(6); leg > 0; --leg) {
        table.pairs.push_back(static_cast<std::int32_t>(random.Below(4)));
      }
      const bool mostly_usual = random.Below(2) == 0;
      for (std::size_t i = 0; i < table.runners * table.pairs.size(); ++i) {
        const bool usual = mostly_usual && random.Below(5) != 0;
        table.seconds.push_back(usual ? 100 : kExtremes[random.Below(std::size(kExtremes))]);
      }
    }
    for (const ClassEstimate& estimate : EstimateLaps(event)) {
      EXPECT_TRUE(IsFinite(estimate)) << round;
    }
  }
  EXPECT_TRUE(EstimateLaps({}).empty());
}

TEST(LapEstimate, NobodyToCompareWithGivesNoFigures) {
  const LapTable one_runner = Table({{100, 200, 300}});
  const LapTable one_leg = Table({{100}, {120}, {130}});
  for (const LapTable& table : {one_runner, one_leg}) {
    const auto estimates = EstimateLaps({table});
    for (const LapFigures& lap : estimates[0].laps) EXPECT_FALSE(lap.known);
  }
  // The same runner, when another class runs the same legs.
  const auto pooled = EstimateLaps({one_runner, Table({{110, 210, 320}, {95, 200, 290}})});
  for (const LapFigures& lap : pooled[0].laps) EXPECT_TRUE(lap.known);
}

TEST(LapEstimate, EqualLapsAreWithoutLosses) {
  const auto estimate = EstimateLaps({Table({{100, 60, 90}, {100, 60, 90}, {100, 60, 90}})})[0];
  for (const LapFigures& lap : estimate.laps) EXPECT_NEAR(lap.loss, 0, 1e-9);
  for (const RunnerFigures& runner : estimate.runners) EXPECT_EQ(runner.mistakes, 0);
}

// Of two runners, the one who is far slower on one leg only has made the mistake: mistakes only
// cost time.
TEST(LapEstimate, AMistakeIsToldFromTheLuckOfTheOther) {
  const auto laps = EstimateLaps({Table(
      {{100, 150, 200, 120, 90, 180, 140, 160}, {104, 154, 300, 125, 93, 186, 146, 165}})})[0]
                        .laps;
  const LapFigures& mistake = laps[8 + 2];
  EXPECT_GT(mistake.large_mistake, kMistakeLimit);
  EXPECT_NEAR(mistake.normal, 208, 15);
  EXPECT_NEAR(mistake.time_lost, 90, 15);
}

// One impossible lap, from a station with a wrong clock, leaves the runner's other figures alone.
TEST(LapEstimate, AWrongClockMovesNothingElse) {
  const Event event = RandomEvent(1);
  std::size_t checked = 0;
  for (std::size_t klass = 0; klass < event.size(); ++klass) {
    if (event[klass].runners < 10 || event[klass].pairs.size() < 12) continue;
    Event damaged = event;
    damaged[klass].At(0, 1) = std::max(damaged[klass].At(0, 1) / 30, 1.0);
    const auto before = EstimateLaps(event)[klass];
    const auto after = EstimateLaps(damaged)[klass];
    for (std::size_t leg = 0; leg < event[klass].pairs.size(); ++leg) {
      if (leg == 1 || !before.laps[leg].known) continue;
      EXPECT_NEAR(after.laps[leg].normal, before.laps[leg].normal, 0.04 * before.laps[leg].normal);
      ++checked;
    }
  }
  EXPECT_GT(checked, 0U);
}

}  // namespace
}  // namespace keltrun::test
