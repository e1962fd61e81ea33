// SPORTident results: for any text, records stay within the limits of a runner's record.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "keltrun2/io/sportident_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const keltrun::ReadResult read =
      keltrun::ReadSportIdent({reinterpret_cast<const char*>(data), size});
  for (const keltrun::ClassRecords& klass : read.records.classes) {
    const auto controls = static_cast<std::size_t>(klass.control_count.value());
    if (klass.name.empty() || controls > 49 || klass.codes.size() != controls) std::abort();
    for (const auto& runner : klass.runners) {
      if (runner->Result().empty() || runner->LegCount() > 50) std::abort();
    }
  }
  return 0;
}
