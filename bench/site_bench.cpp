// Publishing an event as a site, and the memory that a process needs for it.
#include <sys/resource.h>

#include <filesystem>
#include <iterator>

#include "bench_support.h"

namespace keltrun::bench {
namespace {

double PeakMegabytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) * 1024 / 1e6;
}

std::int64_t FileCount(const std::string& folder) {
  return std::distance(std::filesystem::directory_iterator(folder), {});
}

void Site(benchmark::State& state) {
  const auto root = LoadedRoot(state, ManyClassesFile(state.range(0)), state.range(0));
  if (!root) return;
  const std::string folder = DataFile("site");
  bool written = true;
  for (auto _ : state) {
    state.PauseTiming();
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    state.ResumeTiming();
    written = root->FileControl()->OutputHtml(folder, "index.html", "*_lap.html", "*_result.html",
                                              "event.lxm") &&
              written;
  }
  // Two pages for each class, the index and the copy of the lap file.
  if (!written || !root->ErrorComment().empty() ||
      FileCount(folder) != 2 * root->ClassCount() + 2) {
    state.SkipWithError("the site was not written");
  }
  state.counters["peak_megabytes"] = PeakMegabytes();
}

const Registration kSite("Site", Site, {2000});

}  // namespace
}  // namespace keltrun::bench
