// Tables of Swiss result services: for any text, the records are within the limits of a runner's
// record.
#include <cstddef>
#include <cstdint>

#include "fuzz/foreign_records.h"
#include "keltrun2/io/foreign/swiss_csv_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace keltrun;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  LooksLikeSwissCsv(text);
  CheckForeignRecords(ReadSwissCsv(text, {}));
  return 0;
}
