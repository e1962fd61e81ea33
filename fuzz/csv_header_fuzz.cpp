// Header lines: a header is still one in its normalized form, and every other line is unchanged.
// The lines of a text follow each other, and a line break in a quoted cell does not end a line.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "keltrun2/config/settings.h"
#include "keltrun2/io/csv_header.h"
#include "keltrun2/io/csv_lines.h"

namespace {

void WalkLines(std::string_view text) {
  using namespace keltrun;
  RemarkList remarks;
  std::int32_t last = 0;
  for (CsvLineCursor lines(text, FindCsvForm(text, {}), remarks); !lines.AtEnd(); lines.Next()) {
    const CsvLine& line = lines.Line();
    if (line.number <= last || line.text.find_first_of("\r\n") != line.text.npos) std::abort();
    last = line.number;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace keltrun;
  const std::string_view line(reinterpret_cast<const char*>(data), size);
  const std::string normal = NormalizeCsvHeader(line);
  const bool is_header = CsvHeaderReader().Read(line).has_value();
  if (!is_header && normal != line) std::abort();
  if (is_header && ResourceText("RES_META_CSV_NAME") != "" && !CsvHeaderReader().Read(normal)) {
    std::abort();
  }
  WalkLines(line);
  return 0;
}
