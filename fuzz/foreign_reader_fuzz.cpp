// A format of another program (KELTRUN2_FORMAT, a value of KrLapFileTypeConst): for any text and
// race, the records stay within the limits of a runner's record, and no lap is negative.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "keltrun2/io/foreign/formats.h"

namespace {

using namespace keltrun;

void CheckLaps(clsLapData& runner) {
  if (runner.LegCount() > clsLapData::kMostLegs) std::abort();
  for (std::int32_t leg = 1; leg <= runner.LegCount(); ++leg) {
    const DateTime lap = runner.Lap(leg);
    if (lap < 0 && lap != kTimeSkip) std::abort();
  }
}

void Check(const ReadResult& read) {
  if (read.format.empty()) std::abort();
  if (read.records.classes.empty() && !read.error) std::abort();
  for (const ClassRecords& klass : read.records.classes) {
    if (klass.codes.size() > 49) std::abort();
    const std::size_t lists = klass.list_of_runner.size();
    if (lists != 0 && lists != klass.runners.size()) std::abort();
    for (const auto& runner : klass.runners) CheckLaps(*runner);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const ForeignFormat& format = *ForeignFormatOf(KELTRUN2_FORMAT);
  static_cast<void>(format.looks_like(text));
  for (const std::int32_t race : {0, 2}) Check(format.read(text, {race}));
  return 0;
}
