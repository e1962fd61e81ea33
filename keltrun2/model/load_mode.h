// How loaded runners are combined with the runners already in the model.
#pragma once

#include <cstdint>

namespace keltrun {

/// How loaded runners are combined with the runners already in the model. The low 12 bits choose
/// how the runners of a class are matched; flags in the higher bits are added to them.
enum KrLapFileLoadModeCosnt : std::int32_t {
  KR_LOADMODE_NORMAL = 0,     ///< The model is cleared first; every runner is added.
  KR_LOADMODE_APPEND = 1,     ///< Every runner is added; the model is not cleared.
  KR_LOADMODE_MERGE_ID = 16,  ///< Runners match by ID.
  /// Runners match by name, ignoring blanks and the case of the letters A to Z.
  KR_LOADMODE_MERGE_NAME = 17,
  KR_LOADMODE_NOTADD_NEWDATA = 4096,     ///< A runner without a match is dropped.
  KR_LOADMODE_PRIORITY_ORIGINAL = 8192,  ///< Existing values are kept; the default.
  KR_LOADMODE_PRIORITY_NEWDATA = 16384,  ///< New values that are not empty replace existing ones.
};

/// Combines modes: KR_LOADMODE_MERGE_NAME | KR_LOADMODE_PRIORITY_NEWDATA.
constexpr KrLapFileLoadModeCosnt operator|(KrLapFileLoadModeCosnt a, KrLapFileLoadModeCosnt b) {
  return static_cast<KrLapFileLoadModeCosnt>(static_cast<std::int32_t>(a) |
                                             static_cast<std::int32_t>(b));
}

}  // namespace keltrun
