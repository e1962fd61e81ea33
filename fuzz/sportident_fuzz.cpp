// SPORTident results: for any text, records stay within the limits of a runner's record.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "keltrun2/io/sportident_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const keltrun::ReadResult read =
      keltrun::ReadSportIdent({reinterpret_cast<const char*>(data), size});
  for (const keltrun::ClassRecords& klass : read.Records.Classes) {
    const auto controls = static_cast<std::size_t>(klass.ControlCount.value());
    if (klass.Name.empty() || controls > 49 || klass.Codes.size() != controls) std::abort();
    for (const auto& runner : klass.Runners) {
      if (runner->Result().empty() || runner->LegCount() > 50) std::abort();
    }
  }
  return 0;
}
