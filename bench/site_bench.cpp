// Publishing an event as a site, the memory that a process needs for it, and the shares of its
// steps.
#include <sys/resource.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <iterator>

#include "bench_support.h"
#include "keltrun2/chart/chart_builder.h"
#include "keltrun2/os/files.h"

namespace keltrun::bench {
namespace {

constexpr char kChartModes[] = "0,1,2,3,4,5,6";
constexpr std::int32_t kChartCount = 7;

double PeakMegabytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) * 1024 / 1e6;
}

std::int64_t FileCount(const std::string& folder) {
  return std::distance(std::filesystem::directory_iterator(folder), {});
}

SiteOptions Options(bool charts) {
  SiteOptions options;
  options.OutputFolder = DataFile("site");
  options.IndexFile = "index.html";
  options.ResultFile = "*_result.html";
  options.AnalysisFile = "*_lap.html";
  options.LegDataFile = "*_legs.html";
  options.Lap2File = "event.lxm";
  if (charts) {
    options.ChartFile = "*_chart.html";
    options.ChartOption = kChartModes;
  }
  return options;
}

void Publish(benchmark::State& state, bool charts, std::int32_t jobs = 1) {
  const auto root = LoadedRoot(state, ManyClassesFile(state.range(0)), state.range(0));
  if (!root) return;
  SiteOptions options = Options(charts);
  options.Jobs = jobs;
  double first_quarter = 0;  // peak memory when a quarter of the classes was there
  const auto handle = root->FileControl()->OnProgress([&](std::int32_t percent) {
    if (percent <= 25) first_quarter = PeakMegabytes();
  });
  bool written = true;
  for (auto _ : state) {
    state.PauseTiming();
    std::filesystem::remove_all(options.OutputFolder);
    std::filesystem::create_directories(options.OutputFolder);
    state.ResumeTiming();
    written = root->FileControl()->OutputSite(options) && written;
  }
  // Pages and pictures of each class, the index and the copy of the lap file.
  const std::int64_t per_class = charts ? 4 + kChartCount : 3;
  if (!written || !root->ErrorComment().empty() ||
      FileCount(options.OutputFolder) != per_class * root->ClassCount() + 2) {
    state.SkipWithError("the site was not written");
  }
  state.counters["peak_megabytes"] = PeakMegabytes();
  state.counters["growth_megabytes"] = PeakMegabytes() - first_quarter;
}

void Site(benchmark::State& state) { Publish(state, false); }
// With the wait for the disk, which depends on what else is being written to it.
void SiteOnDisk(benchmark::State& state) {
  SetDiskSync({});
  Publish(state, false);
  SetDiskSync([](int, bool) { return true; });
}
void SiteWithCharts(benchmark::State& state) { Publish(state, true); }
void SiteOnTwoThreads(benchmark::State& state) { Publish(state, true, 2); }

// Percent of the time of all steps but the writing of files.
void SiteSteps(benchmark::State& state) {
  using Clock = std::chrono::steady_clock;
  const auto root = LoadedRoot(state, ManyClassesFile(state.range(0)), state.range(0));
  if (!root) return;
  const auto picture = std::make_shared<CairoPicture>(1000, 700);
  const auto chart = std::make_shared<clsChartObject>();
  chart->SetPictureObject(picture);
  enum Step : std::size_t { kAnalysis, kPages, kDrawing, kEncoding, kSteps };
  std::array<Clock::duration, kSteps> times{};
  const auto timed = [&](Step step, auto work) {
    const Clock::time_point start = Clock::now();
    work();
    times[step] += Clock::now() - start;
  };
  for (auto _ : state) {
    for (std::int32_t i = 1; i <= root->ClassCount(); ++i) {
      const auto analyzer = root->NewAnalyzer();
      const auto results = root->NewResultsHolder();
      timed(kAnalysis, [&] {
        results->AddClass(i);
        results->CalcRank();
        analyzer->AddClass(i);
        analyzer->Execute();
        analyzer->ExtraAnalyze();
      });
      timed(kPages, [&] {
        const auto html = root->HtmlControl();
        benchmark::DoNotOptimize(html->OutputResult(results));
        benchmark::DoNotOptimize(html->OutputAnalysis(analyzer));
        benchmark::DoNotOptimize(html->OutputLegData(analyzer));
      });
      for (std::int32_t mode = 0; mode < kChartCount; ++mode) {
        const auto chart_mode = static_cast<KrChartModeConst>(mode);
        timed(kDrawing, [&] {
          const float ratio = ChartRatioToFit(*analyzer, *chart, chart_mode);
          BuildChart(analyzer, *chart, chart_mode, ratio, 1, 0, 0);
          chart->DrawChart();
        });
        timed(kEncoding, [&] { benchmark::DoNotOptimize(picture->Encode()); });
      }
    }
  }
  Clock::duration all{};
  for (const Clock::duration time : times) all += time;
  constexpr std::array kNames = {"analysis", "pages", "drawing", "encoding"};
  for (std::size_t step = 0; step < kSteps; ++step) {
    state.counters[kNames[step]] =
        100. * static_cast<double>(times[step].count()) / static_cast<double>(all.count());
  }
}

const Registration kSite("Site", Site, {2000});
const Registration kSiteOnDisk("SiteOnDisk", SiteOnDisk, {2000});
const Registration kSiteWithCharts("SiteWithCharts", SiteWithCharts, {2000});
const Registration kSiteOnTwoThreads("SiteOnTwoThreads", SiteOnTwoThreads, {2000});
const Registration kSiteSteps("SiteSteps", SiteSteps, {2000});

}  // namespace
}  // namespace keltrun::bench
