// How good the estimate of laps is, compared with the prescribed losses, where the truth is known:
// in simulated events. Prints one table for each kind of event, and whether the goals are met.
//
//     estimate_quality [EVENTS]
//
// The simulator is calibrated on seven real events: the residuals of their laps have the same
// quantiles. It does not use the model of the estimate: mistakes are two exponentials in log time
// or log-normal in seconds, noise has heavy tails or is skewed, and classes, terrain and fatigue
// change the legs.
//
// Then classes with forks: as a table for each fork ("apart") and as one table ("together").
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

#include "keltrun2/analysis/lap_estimate.h"
#include "keltrun2/keltrun2.h"

namespace keltrun::bench {
namespace {

constexpr std::array<std::size_t, 7> kClassSizes = {5, 5, 10, 10, 20, 20, 60};
constexpr int kUsualEvents = 300;

// A relay leg with forks: at two places of its course the runners have one of two controls.
constexpr std::array<std::size_t, 4> kForkedSizes = {12, 20, 40, 80};
constexpr std::size_t kForkedLegs = 16;
constexpr std::array<std::size_t, 2> kForks = {4, 10};  // the leg to the control, from 0

// Random numbers that are the same with every standard library.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}

  double Uniform() {
    state_ += 0x9E3779B97F4A7C15U;
    std::uint64_t z = state_;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
    return (static_cast<double>((z ^ (z >> 31)) >> 11) + 0.5) / 9007199254740992.0;
  }
  double Normal(double mean = 0, double deviation = 1) {
    const double radius = std::sqrt(-2 * std::log(Uniform()));
    return mean + deviation * radius * std::cos(2 * std::numbers::pi * Uniform());
  }
  double Exponential(double mean) { return -mean * std::log(Uniform()); }
  bool Happens(double chance) { return Uniform() < chance; }
  std::size_t Below(std::size_t count) {
    return static_cast<std::size_t>(Uniform() * static_cast<double>(count));
  }

 private:
  std::uint64_t state_;
};

struct Scenario {
  const char* name;
  bool mistakes_in_seconds;  // else in log time
  bool skewed_noise;         // else heavy tails
};
constexpr Scenario kScenarios[] = {{"mistakes in seconds, heavy tails", true, false},
                                   {"mistakes in log time, heavy tails", false, false},
                                   {"mistakes in seconds, skewed noise", true, true},
                                   {"mistakes in log time, skewed noise", false, true}};

struct Lap {
  double seconds = 0;  // 0 for a lap that is not of its leg alone
  double normal = 0;
  double mistake = 0;  // seconds
};

struct SimulatedClass {
  std::size_t runners = 0;
  std::vector<std::int32_t> pairs;
  std::vector<Lap> laps;  // runner by runner

  const Lap& At(std::size_t runner, std::size_t leg) const {
    return laps[runner * pairs.size() + leg];
  }
};

// A class whose table has the legs of all forks, and the fork of each runner.
struct ForkedClass {
  SimulatedClass all;
  std::vector<std::size_t> fork_of;
};

// The columns of a fork: bit i of its number says which control it has at the place i. The other
// legs of the places come after those of the course.
std::vector<std::size_t> ColumnsOf(std::size_t fork) {
  std::vector<std::size_t> columns(kForkedLegs);
  for (std::size_t leg = 0; leg < kForkedLegs; ++leg) columns[leg] = leg;
  for (std::size_t i = 0; i < kForks.size(); ++i) {
    if ((fork >> i & 1) == 0) continue;
    columns[kForks[i]] = kForkedLegs + 2 * i;
    columns[kForks[i] + 1] = kForkedLegs + 2 * i + 1;
  }
  return columns;
}

// The runners of each fork with the legs of their course only.
std::vector<SimulatedClass> Apart(const ForkedClass& forked) {
  std::vector<SimulatedClass> forks;
  for (std::size_t fork = 0; fork < std::size_t{1} << kForks.size(); ++fork) {
    SimulatedClass made;
    const auto columns = ColumnsOf(fork);
    for (const std::size_t column : columns) made.pairs.push_back(forked.all.pairs[column]);
    for (std::size_t i = 0; i < forked.all.runners; ++i) {
      if (forked.fork_of[i] != fork) continue;
      ++made.runners;
      for (const std::size_t column : columns) made.laps.push_back(forked.all.At(i, column));
    }
    forks.push_back(std::move(made));
  }
  return forks;
}

class Simulator {
 public:
  Simulator(const Scenario& scenario, std::uint64_t seed) : scenario_(scenario), random_(seed) {
    noise_ = std::exp(random_.Normal(std::log(0.082), 0.3));
    mistakes_ = std::min(0.6, std::exp(random_.Normal(std::log(0.15), 0.45)));
  }

  ForkedClass RunForked(std::size_t runners) {
    ForkedClass forked;
    forked.all.runners = runners;
    for (std::size_t leg = 0; leg < kForkedLegs + 2 * kForks.size(); ++leg) {
      forked.all.pairs.push_back(next_pair_++);
    }
    std::vector<Leg> legs = Legs(forked.all.pairs);
    for (std::size_t i = 0; i < kForks.size(); ++i) {
      for (const std::size_t leg : {0, 1}) {  // both ways are about as long
        legs[kForkedLegs + 2 * i + leg].ground.log_seconds =
            legs[kForks[i] + leg].ground.log_seconds + random_.Normal(0, 0.12);
      }
    }
    const double range = 0.06 + 0.19 * random_.Uniform();
    const double noise = noise_ * std::exp(random_.Normal(0, 0.25));
    forked.all.laps.resize(runners * legs.size());
    for (std::size_t i = 0; i < runners; ++i) {
      const Runner runner = MakeRunner(0, range, noise);
      forked.fork_of.push_back(random_.Below(std::size_t{1} << kForks.size()));
      double position = -0.5;
      for (const std::size_t column : ColumnsOf(forked.fork_of.back())) {
        forked.all.laps[i * legs.size() + column] = RunLap(runner, legs[column], position);
        position += 1.0 / (kForkedLegs - 1);
      }
    }
    return forked;
  }

  std::vector<SimulatedClass> Run() {
    std::vector<SimulatedClass> event;
    event.reserve(kClassSizes.size());
    for (const std::size_t runners : kClassSizes) event.push_back(MakeClass(runners));
    return event;
  }

 private:
  struct Ground {
    double log_seconds;
    double terrain;
  };
  struct Leg {
    Ground ground;
    double spread;
    double mistakes;  // log odds
  };
  struct Runner {
    double speed;
    double spread;
    double terrain;
    double fatigue;
    double mistakes;  // log odds
  };

  const Ground& GroundOf(std::int32_t pair) {
    const auto found = grounds_.find(pair);
    if (found != grounds_.end()) return found->second;
    const double log_seconds = random_.Normal(std::log(130), 0.65);
    return grounds_[pair] = {log_seconds, random_.Normal()};
  }

  // Two legs in five are run by several classes.
  std::vector<std::int32_t> Pairs(std::size_t legs) {
    constexpr std::size_t kCommonPairs = 30;
    std::vector<std::int32_t> pairs;
    for (std::size_t leg = 0; leg < legs; ++leg) {
      auto pair = static_cast<std::int32_t>(random_.Below(kCommonPairs));
      const bool is_common = random_.Happens(0.4);
      if (!is_common || std::count(pairs.begin(), pairs.end(), pair) > 0) pair = next_pair_++;
      pairs.push_back(pair);
    }
    return pairs;
  }

  std::vector<Leg> Legs(const std::vector<std::int32_t>& pairs) {
    std::vector<Leg> legs;
    double squares = 0;
    for (const std::int32_t pair : pairs) {
      Ground ground = GroundOf(pair);
      ground.log_seconds += random_.Normal(0, 0.04);
      const double spread = std::exp(random_.Normal(0, 0.28));
      squares += spread * spread;
      legs.push_back({ground, spread, random_.Normal(0, 0.9)});
    }
    for (Leg& leg : legs) leg.spread /= std::sqrt(squares / static_cast<double>(legs.size()));
    return legs;
  }

  Runner MakeRunner(double class_speed, double range, double class_noise) {
    const double speed = random_.Normal(class_speed, range);
    const double spread = class_noise * std::exp(random_.Normal(0, 0.28));
    const double odds = std::log(mistakes_ / (1 - mistakes_)) + random_.Normal(0, 0.6) +
                        0.8 * std::log(spread / 0.09);
    return {speed, spread, random_.Normal(0, 0.03), random_.Normal(0.03, 0.05), odds};
  }

  double Noise() {
    if (!scenario_.skewed_noise) {
      const double size = random_.Happens(0.1) ? 1.5 : 0.93;
      return size * random_.Normal();
    }
    double sum = 0;  // a gamma distribution of shape 6
    for (int i = 0; i < 6; ++i) sum += random_.Exponential(1);
    return (sum - 6) / std::sqrt(6.0);
  }

  double Mistake(double normal) {
    if (scenario_.mistakes_in_seconds) {
      return std::exp(random_.Normal(std::log(42), 1.08)) * std::pow(normal / 150, 0.6);
    }
    return normal * (std::exp(random_.Exponential(random_.Happens(0.7) ? 0.28 : 0.55)) - 1);
  }

  Lap RunLap(const Runner& runner, const Leg& leg, double position) {
    Lap lap;
    lap.normal = std::exp(runner.speed + leg.ground.log_seconds +
                          runner.terrain * leg.ground.terrain + runner.fatigue * position);
    const double clean = lap.normal * std::exp(runner.spread * leg.spread * Noise());
    const double odds = runner.mistakes + leg.mistakes;
    if (random_.Happens(1 / (1 + std::exp(-odds)))) lap.mistake = Mistake(lap.normal);
    const double seconds = clean + lap.mistake + random_.Normal(0, 0.7);
    lap.seconds = std::max(std::round(seconds), 1.0);
    return lap;
  }

  SimulatedClass MakeClass(std::size_t runners) {
    SimulatedClass made;
    made.runners = runners;
    made.pairs = Pairs(11 + random_.Below(14));
    const std::vector<Leg> legs = Legs(made.pairs);
    const double speed = random_.Normal(0, 0.25);
    const double range = 0.06 + 0.19 * random_.Uniform();
    const double noise = noise_ * std::exp(0.5 * speed + random_.Normal(0, 0.25));
    for (std::size_t i = 0; i < runners; ++i) {
      const Runner runner = MakeRunner(speed, range, noise);
      bool missed = false;  // the control before the leg
      for (std::size_t leg = 0; leg < legs.size(); ++leg) {
        const double position =
            static_cast<double>(leg) / static_cast<double>(legs.size() - 1) - 0.5;
        Lap lap = RunLap(runner, legs[leg], position);
        const bool misses = leg + 1 < legs.size() && random_.Happens(0.012);
        if (misses || missed) lap.seconds = 0;
        missed = misses;
        made.laps.push_back(lap);
      }
    }
    return made;
  }

  const Scenario& scenario_;
  Random random_;
  double noise_ = 0;
  double mistakes_ = 0;
  std::int32_t next_pair_ = 1000;
  std::map<std::int32_t, Ground> grounds_;
};

// What a method says about a lap.
struct Answer {
  bool known = false;
  double normal = 0;
  double lost = 0;
  bool is_mistake = false;
  double least = 0;
  double largest = 0;
};

// How far the answers are from the truth.
class Score {
 public:
  void Add(const Lap& lap, const Answer& answer) {
    if (!answer.known || !(answer.normal > 0)) return;
    normal_.Add(100 * std::log(answer.normal / lap.normal));
    lost_.Add(answer.lost - lap.mistake);
    const bool is_mistake = lap.mistake > kMistakeSeconds;
    (is_mistake ? found_ : false_alarms_).Add(answer.is_mistake ? 1 : 0);
    covered_.Add(answer.least <= lap.mistake && lap.mistake <= answer.largest ? 1 : 0);
  }

  // `lost` is what mistakes really cost on the laps that are known.
  void AddRunner(double lost, const RunnerFigures& runner) {
    total_.Add(runner.time_lost - lost);
    total_covered_.Add(runner.least_time_lost <= lost && lost <= runner.largest_time_lost ? 1 : 0);
    total_width_.Add(runner.largest_time_lost - runner.least_time_lost);
  }

  void Print(std::size_t runners, const char* method, bool has_range) const {
    std::printf("%4zu  %-11s %+6.1f %6.1f   %+6.1f %6.1f   %5.2f   %6.3f", runners, method,
                normal_.Mean(), normal_.Root(), lost_.Mean(), lost_.Root(), found_.Mean(),
                false_alarms_.Mean());
    if (has_range) {
      std::printf("   %6.3f   %+5.0f  %5.0f   %6.3f   %5.0f", Coverage(), total_.Mean(),
                  total_.Root(), TotalCoverage(), total_width_.Mean());
    }
    std::printf("\n");
  }

  double NormalError() const { return normal_.Root(); }
  double LossError() const { return lost_.Root(); }
  double FalseAlarms() const { return false_alarms_.Mean(); }
  double Coverage() const { return covered_.Mean(); }
  double TotalCoverage() const { return total_covered_.Mean(); }

 private:
  struct Sum {
    void Add(double value) {
      sum += value;
      squares += value * value;
      ++count;
    }
    double Mean() const { return sum / count; }
    double Root() const { return std::sqrt(squares / count); }
    double sum = 0, squares = 0, count = 0;
  };
  Sum normal_, lost_, found_, false_alarms_, covered_;
  Sum total_, total_covered_, total_width_;
};

struct Scores {
  std::map<std::size_t, Score> prescribed, estimate;  // by number of runners
};

// The losses of the split analysis: what is above the cruise speed.
void ScorePrescribed(clsKeltrun2& root, const SimulatedClass& truth, Score& score) {
  const auto klass = root.AddClass("Class");
  klass->ClearLap();
  klass->ControlCount = static_cast<std::int32_t>(truth.pairs.size()) - 1;
  for (std::size_t i = 0; i < truth.runners; ++i) {
    const auto runner = klass->AddLap();
    for (std::size_t leg = 0; leg < truth.pairs.size(); ++leg) {
      const double seconds = truth.At(i, leg).seconds;
      runner->SetLap(static_cast<std::int32_t>(leg) + 1,
                     seconds > 0 ? seconds / kSecondsPerDay : kTimeNoData);
    }
  }
  const auto analyzer = root.NewAnalyzer();
  analyzer->AddClass("Class");
  analyzer->Execute();
  const std::int32_t first = klass->LapData(1)->SerialNum();
  for (std::int32_t position = 1; position <= analyzer->Count(); ++position) {
    const auto runner = analyzer->Item(position);
    const auto i = static_cast<std::size_t>(runner->SerialNum() - first);
    for (std::size_t leg = 0; leg < truth.pairs.size(); ++leg) {
      const Lap& lap = truth.At(i, leg);
      if (!(lap.seconds > 0)) continue;
      const double loss =
          runner->MissTime(static_cast<std::int32_t>(leg) + 1)->Value() * kSecondsPerDay;
      score.Add(lap, {true, lap.seconds - loss, std::max(loss, 0.0), loss > kMistakeSeconds});
    }
  }
}

// `score_of` has the score for a class.
template <typename ScoreOf>
void ScoreEstimate(const std::vector<SimulatedClass>& event, ScoreOf score_of) {
  std::vector<LapTable> tables;
  for (const SimulatedClass& klass : event) {
    LapTable table;
    table.runners = klass.runners;
    table.pairs = klass.pairs;
    for (const Lap& lap : klass.laps) table.seconds.push_back(lap.seconds);
    tables.push_back(std::move(table));
  }
  const auto estimates = EstimateLaps(tables);
  for (std::size_t klass = 0; klass < event.size(); ++klass) {
    Score& score = score_of(event[klass]);
    for (std::size_t i = 0; i < event[klass].laps.size(); ++i) {
      const LapFigures& lap = estimates[klass].laps[i];
      score.Add(event[klass].laps[i],
                {lap.known, lap.normal, lap.time_lost, lap.large_mistake > kMistakeLimit,
                 lap.least_loss, lap.largest_loss});
    }
    const std::size_t legs = event[klass].pairs.size();
    for (std::size_t runner = 0; runner < event[klass].runners; ++runner) {
      if (!estimates[klass].runners[runner].known) continue;
      double lost = 0;
      for (std::size_t leg = 0; leg < legs; ++leg) {
        if (!estimates[klass].laps[runner * legs + leg].known) continue;
        lost += event[klass].At(runner, leg).mistake;
      }
      score.AddRunner(lost, estimates[klass].runners[runner]);
    }
  }
}

Scores Simulate(const Scenario& scenario, int events) {
  const auto root = std::make_shared<clsKeltrun2>();
  Scores scores;
  for (int seed = 1; seed <= events; ++seed) {
    const auto event = Simulator(scenario, static_cast<std::uint64_t>(seed)).Run();
    for (const SimulatedClass& klass : event) {
      ScorePrescribed(*root, klass, scores.prescribed[klass.runners]);
    }
    ScoreEstimate(event, [&scores](const SimulatedClass& klass) -> Score& {
      return scores.estimate[klass.runners];
    });
  }
  return scores;
}

// Prints how good the estimate is for classes with forks; the error of the normal times of one
// table over that of several, the largest of all sizes.
double JudgeForks(const Scenario& scenario, int events) {
  double worst = 0;
  for (const std::size_t runners : kForkedSizes) {
    Score apart, together;
    for (int seed = 1; seed <= events; ++seed) {
      const auto forked = Simulator(scenario, static_cast<std::uint64_t>(seed)).RunForked(runners);
      ScoreEstimate(Apart(forked), [&apart](const auto&) -> Score& { return apart; });
      ScoreEstimate({forked.all}, [&together](const auto&) -> Score& { return together; });
    }
    apart.Print(runners, "apart", true);
    together.Print(runners, "together", true);
    worst = std::max(worst, together.NormalError() / apart.NormalError());
  }
  return worst;
}

void Print(const Scenario& scenario, const Scores& scores) {
  std::printf("\n%s\n", scenario.name);
  std::printf(
      "runners         normal time %%   time lost, s    mistakes over 20 s   range    total, s     "
      "    range\n");
  std::printf(
      "                bias   error    bias  error    found    false      covers    bias  error    "
      "covers   width\n");
  for (const auto& [runners, score] : scores.prescribed) {
    score.Print(runners, "prescribed", false);
    scores.estimate.at(runners).Print(runners, "estimate", true);
  }
}

bool Judge(const char* goal, double value, double least, double most) {
  const bool met = value >= least && value <= most;
  std::printf("%-58s %6.3f  %s\n", goal, value, met ? "met" : "MISSED");
  return met;
}

}  // namespace

int Main(int argc, char** argv) {
  const int events = argc > 1 ? std::max(1, std::atoi(argv[1])) : kUsualEvents;
  constexpr std::size_t kJudgedClass = 20;
  double ratio = 0, covered = 0, total_covered = 0, false_alarms = 0, forks = 0;
  for (const Scenario& scenario : kScenarios) {
    const Scores scores = Simulate(scenario, events);
    Print(scenario, scores);
    std::printf("with forks\n");
    forks = std::max(forks, JudgeForks(scenario, events));
    ratio += scores.estimate.at(kJudgedClass).LossError() /
             scores.prescribed.at(kJudgedClass).LossError() / std::size(kScenarios);
    const auto share = 1.0 / static_cast<double>(std::size(kScenarios) * scores.estimate.size());
    for (const auto& [runners, score] : scores.estimate) {
      covered += share * score.Coverage();
      total_covered += share * score.TotalCoverage();
      false_alarms += share * score.FalseAlarms();
    }
  }
  std::printf("\nGoals, for the mean of all\n");
  bool met = Judge("error of the time lost over the prescribed, 20 runners", ratio, 0, 0.75);
  met = Judge("share of laps whose mistake is in the range of nine of ten", covered, 0.87, 0.93) &&
        met;
  met = Judge("share of runners whose total is in its range", total_covered, 0.87, 0.93) && met;
  met = Judge("share of false alarms", false_alarms, 0, 0.02) && met;
  met = Judge("error of normal times with forks together over apart", forks, 0, 1) && met;
  return met ? 0 : 1;
}

}  // namespace keltrun::bench

int main(int argc, char** argv) { return keltrun::bench::Main(argc, argv); }
