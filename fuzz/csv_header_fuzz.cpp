// Header lines: what is a header stays one in its normal form, and every other line is unchanged.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "keltrun2/config/settings.h"
#include "keltrun2/io/csv_header.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace keltrun;
  const std::string_view line(reinterpret_cast<const char*>(data), size);
  const std::string normal = NormalizeCsvHeader(line);
  const bool is_header = CsvHeaderReader().Read(line).has_value();
  if (!is_header && normal != line) std::abort();
  if (is_header && ResourceText("RES_META_CSV_NAME") != "" && !CsvHeaderReader().Read(normal)) {
    std::abort();
  }
  return 0;
}
