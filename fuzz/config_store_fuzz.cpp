// The store of settings: the lines read from any bytes are read again from a store written with
// them.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "keltrun2/config/config_store.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace keltrun;
  const auto lines = ParseConfigStore({reinterpret_cast<const char*>(data), size});
  if (ParseConfigStore(FormatConfigStore(lines)) != lines) std::abort();
  return 0;
}
