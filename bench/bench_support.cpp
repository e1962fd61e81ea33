#include "bench_support.h"

#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "keltrun2/os/files.h"

namespace keltrun::bench {
namespace {

struct Entry {
  const char* name;
  Function function;
  std::vector<std::int64_t> sizes;
};

std::vector<Entry>& Entries() {
  static std::vector<Entry> entries;
  return entries;
}

// Freed memory stays with the process, so that after the first iteration nothing is touched for the
// first time.
bool KeepMemory() {
  constexpr int kLarge = 1 << 30;
  return mallopt(M_MMAP_THRESHOLD, kLarge) == 1 && mallopt(M_TRIM_THRESHOLD, kLarge) == 1 &&
         mallopt(M_TOP_PAD, 64 << 20) == 1;
}

// The setting of "--memory=...", taken out of the arguments; "" when it is missing.
std::string TakeMemoryArgument(int& argc, char** argv) {
  constexpr char kName[] = "--memory=";
  if (argc < 2 || std::strncmp(argv[1], kName, sizeof kName - 1) != 0) return "";
  std::string value = argv[1] + sizeof kName - 1;
  for (int i = 1; i < argc; ++i) argv[i] = argv[i + 1];  // the closing null pointer too
  --argc;
  return value;
}

void RegisterAll(bool once) {
  for (const Entry& entry : Entries()) {
    auto* registered = benchmark::RegisterBenchmark(entry.name, entry.function);
    for (const std::int64_t size : entry.sizes) registered->Arg(size);
    registered->UseRealTime()->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
    if (once) {
      registered->Iterations(1);
    } else {
      // The run that warms up touches all memory. Its time counts only next to a measuring time.
      registered->MinTime(0.2)->MinWarmUpTime(0.05);
    }
  }
}

int Run(int argc, char** argv) {
  const std::string memory = TakeMemoryArgument(argc, argv);
  if (memory != "kept" && memory != "default") {
    std::fprintf(stderr, "usage: %s --memory=kept|default [Google Benchmark options]\n", argv[0]);
    return 2;
  }
  if (memory == "kept" && !KeepMemory()) {
    std::fprintf(stderr, "%s: the allocator does not keep memory\n", argv[0]);
    return 1;
  }
  SetStartup({.Language = "ja", .Locale = 1041, .Folder = {}});
  SetDiskSync([](int, bool) { return true; });  // the disk is measured apart
  RegisterAll(memory == "default");
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  return benchmark::RunSpecifiedBenchmarks() == 0 ? 1 : 0;
}

}  // namespace

std::string DataFile(const std::string& name) {
  const char* folder = std::getenv("KELTRUN2_BENCH_DATA");
  return std::string(folder != nullptr ? folder : ".") + "/" + name;
}

std::string OneClassFile(std::int64_t runners) {
  return DataFile("class" + std::to_string(runners) + ".lxm");
}

std::string ManyClassesFile(std::int64_t runners) {
  return DataFile("classes" + std::to_string(runners) + ".lxm");
}

std::int64_t RunnerCount(const clsKeltrun2& root) {
  std::int64_t count = 0;
  for (std::int32_t i = 1; i <= root.ClassCount(); ++i) count += root.ClassData(i)->LapCount();
  return count;
}

std::shared_ptr<clsKeltrun2> LoadedRoot(benchmark::State& state, const std::string& file,
                                        std::int64_t runners) {
  auto root = std::make_shared<clsKeltrun2>();
  if (root->FileControl()->LoadLapFile(file) && RunnerCount(*root) == runners) return root;
  state.SkipWithError(("the event was not loaded: " + root->ErrorComment()).c_str());
  return nullptr;
}

Registration::Registration(const char* name, Function function,
                           std::initializer_list<std::int64_t> sizes) {
  Entries().push_back({name, function, sizes});
}

}  // namespace keltrun::bench

int main(int argc, char** argv) { return keltrun::bench::Run(argc, argv); }
