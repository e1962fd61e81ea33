// Packing a lap file as an LZH archive, and unpacking it.
#include <filesystem>
#include <fstream>
#include <iterator>

#include "bench_support.h"
#include "keltrun2/codec/lzh_reader.h"
#include "keltrun2/codec/lzh_writer.h"

namespace keltrun::bench {
namespace {

// The lap file of 2,000 runners: 2 MB.
std::string LapFile(std::int64_t runners) {
  std::ifstream stream(ManyClassesFile(runners), std::ios::binary);
  return std::string{std::istreambuf_iterator<char>(stream), {}};
}

void PackLzh(benchmark::State& state) {
  const std::string lap_file = LapFile(state.range(0));
  std::string archive;
  for (auto _ : state) archive = MakeLzhArchive("event.lxm", lap_file, 45000);
  if (lap_file.empty()) state.SkipWithError("there is no lap file");
  state.counters["percent"] =
      100 * static_cast<double>(archive.size()) / static_cast<double>(lap_file.size());
}

// From a file to a file, as a load does it.
void UnpackLzh(benchmark::State& state) {
  const std::string lap_file = LapFile(state.range(0));
  const std::string name = DataFile("event.lzh");
  const std::string folder = DataFile("unpacked");
  std::ofstream(name, std::ios::binary) << MakeLzhArchive("event.lxm", lap_file, 45000);
  std::string error;
  bool unpacked = true;
  for (auto _ : state) {
    state.PauseTiming();
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    state.ResumeTiming();
    unpacked = ExtractArchive(name, folder, error).has_value() && unpacked;
  }
  if (!unpacked || std::filesystem::file_size(folder + "/event.lxm") != lap_file.size()) {
    state.SkipWithError(("the archive was not unpacked: " + error).c_str());
  }
  state.counters["bytes"] = static_cast<double>(lap_file.size());
}

const Registration kPackLzh("PackLzh", PackLzh, {2000});
const Registration kUnpackLzh("UnpackLzh", UnpackLzh, {2000});

}  // namespace
}  // namespace keltrun::bench
