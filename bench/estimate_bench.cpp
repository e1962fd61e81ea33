// The estimate of a whole event.
#include "bench_support.h"

namespace keltrun::bench {
namespace {

void Estimate(benchmark::State& state) {
  const auto root = LoadedRoot(state, ManyClassesFile(state.range(0)), state.range(0));
  if (!root) return;
  std::shared_ptr<clsEstimate> estimate;
  for (auto _ : state) {
    state.PauseTiming();
    estimate.reset();
    state.ResumeTiming();
    estimate = root->NewEstimate();
  }
  std::int32_t runners = 0;
  for (std::int32_t i = 1; i <= estimate->ClassCount(); ++i) {
    runners += estimate->ClassData(i)->Count();
  }
  if (runners != state.range(0)) state.SkipWithError("runners are missing");
}

const Registration kEstimate("Estimate", Estimate, {2000, 6000, 20000});

}  // namespace
}  // namespace keltrun::bench
