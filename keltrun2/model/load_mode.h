// How a loaded runner meets the runners that are there already.
#pragma once

#include <cstdint>

namespace keltrun {

/// How a loaded runner meets the runners that are there. The low 12 bits choose how runners of a
/// class are matched; the flags above are added to them.
enum KrLapFileLoadModeCosnt : std::int32_t {
  KR_LOADMODE_NORMAL = 0,                ///< The model is cleared first; every runner is added.
  KR_LOADMODE_APPEND = 1,                ///< Every runner is added to the model as it is.
  KR_LOADMODE_MERGE_ID = 16,             ///< Runners match by ID.
  /// Runners match by name; blanks and the case of the letters A to Z do not count.
  KR_LOADMODE_MERGE_NAME = 17,
  KR_LOADMODE_NOTADD_NEWDATA = 4096,     ///< A runner without a match is dropped.
  KR_LOADMODE_PRIORITY_ORIGINAL = 8192,  ///< Existing values win, as they do without a flag.
  KR_LOADMODE_PRIORITY_NEWDATA = 16384,  ///< New values that are not empty replace existing ones.
};

/// Modes combine: KR_LOADMODE_MERGE_NAME | KR_LOADMODE_PRIORITY_NEWDATA.
constexpr KrLapFileLoadModeCosnt operator|(KrLapFileLoadModeCosnt a, KrLapFileLoadModeCosnt b) {
  return static_cast<KrLapFileLoadModeCosnt>(static_cast<std::int32_t>(a) |
                                             static_cast<std::int32_t>(b));
}

}  // namespace keltrun
