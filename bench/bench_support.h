// What the benchmarks share: the choice of allocator, the synthetic events, registration.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>

#include "keltrun2/keltrun2.h"

namespace keltrun::bench {

/// Path of a file in the folder of synthetic events, the environment's KELTRUN2_BENCH_DATA.
std::string DataFile(const std::string& name);

/// An event of one class (`class<runners>.lxm`) or of classes of 50 (`classes<runners>.lxm`).
std::string OneClassFile(std::int64_t runners);
std::string ManyClassesFile(std::int64_t runners);

/// Runners in all classes of the event.
std::int64_t RunnerCount(const clsKeltrun2& root);

/// A root with the event loaded; null, and the benchmark marked as failed, unless that many runners
/// were loaded.
std::shared_ptr<clsKeltrun2> LoadedRoot(benchmark::State& state, const std::string& file,
                                        std::int64_t runners);

using Function = void (*)(benchmark::State& state);

/// Registers a benchmark for main to run; `sizes` are numbers of runners. In a process that
/// measures first use ("default" memory) it runs once only: what costs there is the first touch of
/// memory.
struct Registration {
  Registration(const char* name, Function function, std::initializer_list<std::int64_t> sizes);
};

}  // namespace keltrun::bench
