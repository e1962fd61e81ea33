// OEvent split lists: for any text, records stay within the limits of a runner's record and no lap
// is negative.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "keltrun2/io/oevent_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace keltrun;
  const ReadResult read = ReadOEvent({reinterpret_cast<const char*>(data), size});
  for (const ClassRecords& klass : read.records.classes) {
    if (klass.legs_seen < 0 || klass.legs_seen > 50) std::abort();
    for (const auto& runner : klass.runners) {
      if (runner->RunnerName.empty() || runner->LegCount() > 50) std::abort();
      for (std::int32_t leg = 1; leg <= runner->LegCount(); ++leg) {
        const DateTime lap = runner->Lap(leg);
        if (lap < 0 && lap != kTimeDisq) std::abort();
      }
    }
  }
  return 0;
}
