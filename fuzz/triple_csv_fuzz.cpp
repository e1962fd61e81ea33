// Tables with three columns for each control: for any text, the records are within the limits of a
// runner's record.
#include <cstddef>
#include <cstdint>

#include "fuzz/foreign_records.h"
#include "keltrun2/io/foreign/triple_csv_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace keltrun;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  LooksLikeTripleCsv(text);
  CheckForeignRecords(ReadTripleCsv(text, {}));
  return 0;
}
