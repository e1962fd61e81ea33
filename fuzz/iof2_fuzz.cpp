// IOF XML 2.0.3: for any text, records stay within the limits of a runner's record and no lap is
// negative, no matter which race is asked for.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "keltrun2/io/foreign/iof2_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace keltrun;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  (void)LooksLikeIof2(text);
  for (const std::int32_t race : {0, 2}) {
    const ReadResult read = ReadIof2(text, {race});
    if (!read.error && read.records.classes.empty()) std::abort();
    for (const ClassRecords& klass : read.records.classes) {
      if (klass.name.empty() || klass.codes.size() > 49) std::abort();
      for (const auto& runner : klass.runners) {
        if (runner->RunnerName.empty() || runner->LegCount() > 50) std::abort();
        for (std::int32_t leg = 1; leg <= runner->LegCount(); ++leg) {
          const DateTime lap = runner->Lap(leg);
          if (lap < 0 && lap != kTimeSkip) std::abort();
        }
      }
    }
  }
  return 0;
}
