// What a reader noticed without giving up.
#pragma once

#include <cstdint>
#include <string>

namespace keltrun {

/// How much a remark matters.
enum class RemarkSeverity : std::int32_t {
  kNote,     // something was assumed; nothing is lost
  kWarning,  // a cell, leg or line was dropped
};

/// One remark of the last load: where it was (from 1; 0 where no place can be named; the column is
/// a column of a fixed-width text or the number of a cell in a separated one) and what was assumed
/// or skipped.
struct LoadRemark {
  std::int32_t Line = 0;                            // from 1, 0 = nowhere in particular
  std::int32_t Column = 0;                          // likewise
  RemarkSeverity Severity = RemarkSeverity::kNote;  // how much it matters
  std::string Text;                                 // what was noticed, in English
};

}  // namespace keltrun
