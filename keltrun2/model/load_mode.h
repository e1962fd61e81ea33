// How a loaded runner meets the runners that are there already.
#pragma once

#include <cstdint>

namespace keltrun {

/// The low 12 bits choose how a runner is matched with one of his class; the flags above are added
/// to them. PRIORITY_ORIGINAL is the default and only names it.
enum KrLapFileLoadModeCosnt : std::int32_t {
  KR_LOADMODE_NORMAL = 0,                // the model is cleared first, every runner added
  KR_LOADMODE_APPEND = 1,                // every runner added to the model as it is
  KR_LOADMODE_MERGE_ID = 16,             // match by ID
  KR_LOADMODE_MERGE_NAME = 17,           // match by name; blanks and the case of A to Z don't count
  KR_LOADMODE_NOTADD_NEWDATA = 4096,     // a runner without a match is dropped
  KR_LOADMODE_PRIORITY_ORIGINAL = 8192,  // existing values win
  KR_LOADMODE_PRIORITY_NEWDATA = 16384,  // new values that are not empty overwrite existing ones
};

/// Modes combine: KR_LOADMODE_MERGE_NAME | KR_LOADMODE_PRIORITY_NEWDATA.
constexpr KrLapFileLoadModeCosnt operator|(KrLapFileLoadModeCosnt a, KrLapFileLoadModeCosnt b) {
  return static_cast<KrLapFileLoadModeCosnt>(static_cast<std::int32_t>(a) |
                                             static_cast<std::int32_t>(b));
}

}  // namespace keltrun
