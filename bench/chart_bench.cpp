// A line chart of a whole class: building its records, and drawing it into the bytes of a PNG.
#include <sys/resource.h>

#include "bench_support.h"
#include "keltrun2/chart/chart_builder.h"
#include "keltrun2/chart/chart_object_internal.h"

namespace keltrun::bench {
namespace {

struct Chart {
  std::shared_ptr<clsAnalyzer> analyzer;
  std::shared_ptr<CairoPicture> picture = std::make_shared<CairoPicture>(1200, 800);
  clsChartObject chart;

  void Build() {
    const float ratio = ChartRatioToFit(*analyzer, chart, KR_CHART_NORMAL);
    BuildChart(analyzer, chart, KR_CHART_NORMAL, ratio, 1, 0, 0);
  }
  std::string Png() {
    chart.DrawChart();
    return picture->Encode();
  }
};

// The first 200 runners of a class; null, and the benchmark marked as failed, without them.
std::unique_ptr<Chart> LoadedChart(benchmark::State& state) {
  const auto root = LoadedRoot(state, OneClassFile(250), 250);
  if (!root) return nullptr;
  auto chart = std::make_unique<Chart>();
  chart->analyzer = root->NewAnalyzer();
  const auto klass = root->ClassData(1);
  chart->analyzer->ControlCount = klass->ControlCount;
  for (std::int32_t i = 1; i <= klass->LapCount(); ++i) {
    if (chart->analyzer->FullSetCount() < state.range(0))
      chart->analyzer->AddLap(klass->LapData(i));
  }
  chart->analyzer->Execute();
  chart->chart.SetPictureObject(chart->picture);
  if (chart->analyzer->Count() == state.range(0)) return chart;
  state.SkipWithError("runners are missing");
  return nullptr;
}

void BuildRecords(benchmark::State& state) {
  const auto chart = LoadedChart(state);
  if (!chart) return;
  for (auto _ : state) chart->Build();
  const std::size_t lines = ChartObjectInternal::Get(chart->chart).runner_lines.size();
  state.counters["lines"] = static_cast<double>(lines);
}

void DrawPng(benchmark::State& state) {
  const auto chart = LoadedChart(state);
  if (!chart) return;
  chart->Build();
  std::size_t bytes = 0;
  for (auto _ : state) bytes = chart->Png().size();
  state.counters["bytes"] = static_cast<double>(bytes);
}

// As the program draws it, with titles, colors and names.
void DrawTitledPng(benchmark::State& state) {
  const auto chart = LoadedChart(state);
  if (!chart) return;
  chart->chart.BridgeGaps = chart->chart.Titles = chart->chart.AutoColors = true;
  chart->chart.ClearNames = chart->chart.FitMost = true;
  chart->Build();
  for (auto _ : state) benchmark::DoNotOptimize(chart->Png());
}

double PeakMegabytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) * 1024 / 1e6;
}

// What a thousand charts, one after the other, take beyond the memory of the first hundred.
void ManyCharts(benchmark::State& state) {
  const auto chart = LoadedChart(state);
  if (!chart) return;
  const auto draw = [&](int count) {
    for (int i = 0; i < count; ++i) {
      chart->Build();
      chart->Png();
    }
    return PeakMegabytes();
  };
  for (auto _ : state) {
    const double before = draw(100);
    state.counters["grown_megabytes"] = draw(900) - before;
  }
}

const Registration kBuild("ChartRecords", BuildRecords, {200});
const Registration kDraw("ChartPng", DrawPng, {200});
const Registration kDrawTitled("ChartTitledPng", DrawTitledPng, {200});
const Registration kMany("ManyCharts", ManyCharts, {20});

}  // namespace
}  // namespace keltrun::bench
