// Lists of OE and its relatives: for any text, records stay within the limits of a runner's record,
// no lap is negative, and a list that was refused has no records.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "keltrun2/io/foreign/oe_csv_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace keltrun;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  LooksLikeOeCsv(text);
  const ReadResult read = ReadOeCsv(text, {static_cast<std::int32_t>(size % 3)});
  if (read.records.classes.empty() && !read.error) std::abort();
  for (const ClassRecords& klass : read.records.classes) {
    if (klass.name.empty() || klass.codes.size() > 49) std::abort();
    for (const auto& runner : klass.runners) {
      if (runner->RunnerName.empty() || runner->LegCount() > 50) std::abort();
      for (std::int32_t leg = 1; leg <= runner->LegCount(); ++leg) {
        const DateTime lap = runner->Lap(leg);
        if (lap < 0 && lap != kTimeDisq && lap != kTimeSkip) std::abort();
      }
    }
  }
  return 0;
}
