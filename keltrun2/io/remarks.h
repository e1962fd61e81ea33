// What a reader or writer noticed without giving up.
#pragma once

#include <cstdint>
#include <string>

namespace keltrun {

/// How much a remark matters.
enum class RemarkSeverity : std::int32_t {
  kNote,     ///< Something was assumed; nothing is lost.
  kWarning,  ///< A cell, leg or line was dropped.
  kNothing,  ///< Nothing of the file could be used, although it was read to its end.
};

/// One remark: what was assumed or left out, and where.
struct LoadRemark {
  /// The line, from 1; 0 when the remark is not about one line.
  std::int32_t Line = 0;
  /// The column of a fixed-width text or the number of the cell in a separated one, from 1; 0 when
  /// the remark is not about one place.
  std::int32_t Column = 0;
  RemarkSeverity Severity = RemarkSeverity::kNote;  ///< How much the remark matters.
  std::string Text;                                 ///< What was noticed, in English.
  /// The text without the cell and with "#" for its numbers: remarks of one kind have it in common.
  /// May be empty; then the remark is the only one of its kind.
  std::string Kind;
};

}  // namespace keltrun
