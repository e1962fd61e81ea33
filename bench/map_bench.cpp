// The map of loss profiles, and the shares of its steps.
#include <chrono>

#include "bench_support.h"
#include "keltrun2/analysis/analyzer_internal.h"
#include "keltrun2/analysis/loss_map.h"
#include "keltrun2/model/result_status.h"

namespace keltrun::bench {
namespace {

// An executed analysis of that many finishers, the first ones of a class with more runners.
std::shared_ptr<clsAnalyzer> Finishers(benchmark::State& state) {
  const std::int64_t class_size = state.range(0) < 500 ? 500 : 4000;
  const auto root = LoadedRoot(state, OneClassFile(class_size), class_size);
  if (!root) return nullptr;
  const auto klass = root->ClassData(1);
  auto analyzer = root->NewAnalyzer();
  analyzer->ControlCount = klass->ControlCount;
  for (std::int32_t i = 1; i <= klass->LapCount(); ++i) {
    if (analyzer->FullSetCount() == state.range(0)) break;
    if (IsFinished(klass->LapData(i)->Result())) analyzer->AddLap(klass->LapData(i));
  }
  analyzer->Execute();
  if (analyzer->Count() == state.range(0)) return analyzer;
  state.SkipWithError("finishers are missing");
  return nullptr;
}

void Map(benchmark::State& state) {
  const auto analyzer = Finishers(state);
  if (!analyzer) return;
  for (auto _ : state) analyzer->Vesmer();
}

// Percent of the time of all steps.
void MapSteps(benchmark::State& state) {
  using Clock = std::chrono::steady_clock;
  const auto analyzer = Finishers(state);
  if (!analyzer) return;
  Clock::duration distances{}, solver{}, all{};
  for (auto _ : state) {
    const Clock::time_point start = Clock::now();
    const LossProfiles profiles =
        LossesOf(AnalyzerInternal::Selected(*analyzer), AnalyzerInternal::LegCount(*analyzer),
                 *analyzer->GeneralData());
    const Clock::time_point before_distances = Clock::now();
    SymmetricMatrix matrix = SquaredDistances(profiles);
    const Clock::time_point after_distances = Clock::now();
    if (!MakeCenteredProducts(matrix)) return state.SkipWithError("there are no losses");
    const Clock::time_point before_solver = Clock::now();
    benchmark::DoNotOptimize(TopAxes(std::move(matrix), SolverFor(profiles.Points())));
    const Clock::time_point end = Clock::now();
    distances += after_distances - before_distances;
    solver += end - before_solver;
    all += end - start;
  }
  const auto percent = [&](Clock::duration part) {
    return 100. * static_cast<double>(part.count()) / static_cast<double>(all.count());
  };
  state.counters["distances"] = percent(distances);
  state.counters["solver"] = percent(solver);
}

const Registration kMap("Map", Map, {299, 2000});
const Registration kMapSteps("MapSteps", MapSteps, {299, 2000});

}  // namespace
}  // namespace keltrun::bench
