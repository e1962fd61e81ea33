// What the readers of line-based texts share: lines, remarks and cells with times.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/io/remarks.h"
#include "keltrun2/model/lap_data.h"
#include "keltrun2/text/datetime.h"

namespace keltrun {

/// A position among the lines of a text. Lines end in CR LF, CR or LF; a line break at the very end
/// starts no further line. A copy can look ahead while the original stays. Walking through a text
/// takes one pass over it and no memory.
class LineCursor {
 public:
  /// At the first line.
  explicit LineCursor(std::string_view text);

  bool AtEnd() const { return at_end_; }
  /// The line without its line break; empty at the end.
  std::string_view Line() const { return line_; }
  /// From 1.
  std::int32_t Number() const { return number_; }
  void Next();
  void Skip(std::int32_t lines);

 private:
  std::string_view text_;
  std::string_view line_;
  std::size_t next_ = 0;  // where the next line begins
  std::size_t feed_ = 0;  // the first LF from next_ on, or the text's size
  std::int32_t number_ = 0;
  bool at_end_ = false;
};

/// The remarks of one load. Beyond kMost remarks, only their number is kept.
class RemarkList {
 public:
  static constexpr std::size_t kMost = 1000;

  /// Adds the remark `subject "cell": consequence`. A long cell is shortened, an empty one left
  /// out.
  void Add(RemarkSeverity severity, std::int32_t line, std::int32_t column,
           std::string_view subject, std::string_view cell, std::string_view consequence);

  /// Adds a note on the whole text before all other remarks.
  void AddFirst(std::int32_t line, std::int32_t column, std::string_view subject,
                std::string_view cell, std::string_view consequence);

  /// The remarks. If there were more than kMost, the last one says how many.
  std::vector<LoadRemark> Take();

 private:
  std::vector<LoadRemark> remarks_;
  std::size_t more_ = 0;
};

/// Replaces the control characters of a text, except TAB and line breaks, by blanks and returns
/// their number. A form feed, the end mark of old systems or a damaged byte does not belong in a
/// name, and the XML of a lap file cannot contain it.
std::size_t BlankControlCharacters(std::string& text);

/// What ambiguous numbers of a text mean.
enum class NumberMeaning : std::int32_t {
  kMinutesSeconds,  // "9.05" is 9 min 5 s, "1234" is 12 min 34 s
  kSeconds,         // "9.05" is 9.05 s, "1234" is 1,234 s
};

/// What a cell shows about the numbers of its text.
enum class NumberHint : std::int32_t {
  kNone,
  kDigits,   // three digits or more: like the other numbers
  kEither,   // digits, a point and two digits below 60
  kSeconds,  // other decimals: seconds
};

/// The elapsed time in a cell.
struct CellValue {
  std::optional<DateTime> time;  // never negative; nullopt when the cell is not a time
  bool has_fraction = false;     // written with decimals of a second
  NumberHint hint = NumberHint::kNone;
};

/// Reads an elapsed time: any notation of NormalizeTimeText with any number of hours, decimals of a
/// second (the first three are used), h.mm.ss, m.ss, or a number of seconds.
CellValue ReadCellTime(std::string_view cell,
                       NumberMeaning numbers = NumberMeaning::kMinutesSeconds);

/// The time of ReadCellTime.
std::optional<DateTime> CellTime(std::string_view cell);

/// The time in the form in which clsLapData::SetResult stores it.
std::string ResultText(DateTime time, bool has_fraction);

/// Whether ResultText leaves out a part of a second, as it does with hundredths.
bool CutsResult(DateTime time);

/// Adds a remark on the number of results that were cut, if there are any.
void RemarkCutResults(std::size_t cut, RemarkList& remarks);

/// Sets the result of a runner from a text that ReadCellTime does not read: a status word, or a
/// number such as that of a card, which is kept as it is. SetResult alone would put colons into it.
void SetResultWord(clsLapData& runner, std::string_view text);

/// Reads a time of day: h:mm, h:mm:ss with or without decimals of a second, h.mm, h.mm.ss, or one
/// to six digits that begin with the hours.
std::optional<DateTime> CellClock(std::string_view cell);

/// Whether a cell begins with a minus sign of either width, and so is not an elapsed time.
bool IsNegative(std::string_view cell);

/// Reads the date and time of a file header, which may have full-width characters.
std::optional<DateTime> HeaderDate(std::string_view text);

}  // namespace keltrun
