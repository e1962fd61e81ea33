// Import-only texts: every update has a name, and the number of remarks is limited.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "keltrun2/io/import_only_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto read = keltrun::ReadImportOnly({reinterpret_cast<const char*>(data), size});
  for (const auto& update : read.records.updates) {
    if (update.name.empty()) std::abort();
  }
  if (read.remarks.size() > 1001) std::abort();
  return 0;
}
