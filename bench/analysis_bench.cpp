// The analysis of one class, and its page.
#include "bench_support.h"
#include "keltrun2/model/process_state.h"
#include "keltrun2/report/analysis_page.h"

namespace keltrun::bench {
namespace {

std::shared_ptr<clsAnalyzer> Analyzed(const clsKeltrun2& root) {
  auto analyzer = root.NewAnalyzer();
  analyzer->AddClass(1);
  analyzer->Execute();
  return analyzer;
}

void Analyze(benchmark::State& state) {
  const auto root = LoadedRoot(state, OneClassFile(state.range(0)), state.range(0));
  if (!root) return;
  std::shared_ptr<clsAnalyzer> analyzer;
  for (auto _ : state) {
    // A user keeps the analyzer while looking at it, so releasing it is not part of the figure.
    state.PauseTiming();
    analyzer.reset();
    state.ResumeTiming();
    analyzer = Analyzed(*root);
  }
  // Those who did not start have no legs and are left out: 1 in 100.
  if (analyzer->Count() < state.range(0) * 9 / 10) state.SkipWithError("runners are missing");
}

void AnalysisPageByCall(benchmark::State& state) {
  const auto root = LoadedRoot(state, OneClassFile(state.range(0)), state.range(0));
  if (!root) return;
  const auto analyzer = Analyzed(*root);
  std::string page;
  for (auto _ : state) page = root->HtmlControl()->OutputAnalysis(analyzer);
  state.counters["bytes"] = static_cast<double>(page.size());
}

void AnalysisPageAppended(benchmark::State& state) {
  const auto root = LoadedRoot(state, OneClassFile(state.range(0)), state.range(0));
  if (!root) return;
  const auto analyzer = Analyzed(*root);
  std::string page;
  AppendAnalysisPage(page, *CurrentModel(), *analyzer, "", "x-sjis");
  for (auto _ : state) {
    page.clear();
    AppendAnalysisPage(page, *CurrentModel(), *analyzer, "", "x-sjis");
  }
  state.counters["bytes"] = static_cast<double>(page.size());
}

const Registration kAnalyze("Analyze", Analyze, {125, 250, 500, 1000, 2000, 4000, 8000});
const Registration kByCall("AnalysisPageByCall", AnalysisPageByCall, {1000});
const Registration kAppended("AnalysisPageAppended", AnalysisPageAppended, {1000});

}  // namespace
}  // namespace keltrun::bench
