// Writing an event as JSON: the analyses of all classes, and what is known about the whole event.
#include <memory>
#include <string>
#include <vector>

#include "bench_support.h"
#include "keltrun2/model/process_state.h"
#include "keltrun2/report/json.h"

namespace keltrun::bench {
namespace {

// The analyses of all classes with the estimate of the event. Only the writing is measured.
void WriteAnalysisJson(benchmark::State& state) {
  const auto root = LoadedRoot(state, ManyClassesFile(state.range(0)), state.range(0));
  if (!root) return;
  const auto model = CurrentModel();
  const auto estimate = root->NewEstimate();
  std::vector<std::shared_ptr<clsAnalyzer>> analyzers;
  for (std::int32_t i = 1; i <= root->ClassCount(); ++i) {
    analyzers.push_back(root->NewAnalyzer());
    analyzers.back()->AddClass(i);
    analyzers.back()->Execute();
  }
  std::size_t size = 0;
  for (auto _ : state) {
    size = 0;
    for (const auto& analyzer : analyzers) {
      size += AnalysisJson(*model, *analyzer, DataSetKind::kClass, estimate.get()).size();
    }
  }
  state.counters["bytes"] = static_cast<double>(size);
}

// What the program shows first: mostly the search for wrong clocks and untimed legs.
void Info(benchmark::State& state) {
  const auto root = LoadedRoot(state, ManyClassesFile(state.range(0)), state.range(0));
  if (!root) return;
  const auto model = CurrentModel();
  for (auto _ : state) benchmark::DoNotOptimize(InfoJson(*model));
}

const Registration kWriteAnalysisJson("WriteAnalysisJson", WriteAnalysisJson, {2000});
const Registration kInfo("Info", Info, {2000, 6000, 20000});

}  // namespace
}  // namespace keltrun::bench
