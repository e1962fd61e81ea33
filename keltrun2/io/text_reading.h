// What the readers of line-based texts share: lines, remarks, cells that hold times.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/io/remarks.h"
#include "keltrun2/text/datetime.h"

namespace keltrun {

/// A line of a text whose lines end at CR LF, CR or LF; a line break at the very end starts no
/// further line. A copy looks ahead while the original stays. Walking a text costs one pass
/// over it and no memory.
class LineCursor {
 public:
  /// At the first line.
  explicit LineCursor(std::string_view text);

  bool AtEnd() const { return at_end_; }
  /// The line without its break; "" at the end.
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

/// The remarks of one load. Of more than kMost only the number is kept.
class RemarkList {
 public:
  static constexpr std::size_t kMost = 1000;

  /// Adds: subject "cell": consequence. A long cell is cut; an empty one is left out.
  void Add(RemarkSeverity severity, std::int32_t line, std::int32_t column,
           std::string_view subject, std::string_view cell, std::string_view consequence);

  /// Adds a note on the text as a whole in front of all others.
  void AddFirst(std::int32_t line, std::int32_t column, std::string_view subject,
                std::string_view cell, std::string_view consequence);

  /// The remarks, a last one saying how many more there were.
  std::vector<LoadRemark> Take();

 private:
  std::vector<LoadRemark> remarks_;
  std::size_t more_ = 0;
};

/// Replaces the control characters of a text by blanks, TAB and line breaks aside, and returns
/// their number: a form feed, the end mark of old systems or a damaged byte is part of no name, and
/// the XML of a lap file could not hold it.
std::size_t BlankControlCharacters(std::string& text);

/// What the numbers of a text mean where they could mean either.
enum class NumberMeaning : std::int32_t {
  kMinutesSeconds,  // "9.05" is 9 min 5 s, "1234" is 12 min 34 s
  kSeconds,         // "9.05" is 9.05 s, "1234" is 1,234 s
};

/// What a cell says about the numbers of its text.
enum class NumberHint : std::int32_t {
  kNone,
  kDigits,   // three digits or more: as the other numbers
  kEither,   // digits, a point and two digits below 60
  kSeconds,  // other decimals: seconds
};

/// An elapsed time as a cell holds it.
struct CellValue {
  std::optional<DateTime> time;  // never negative; nullopt for everything that is no time
  bool has_fraction = false;     // written with decimals of a second
  NumberHint hint = NumberHint::kNone;
};

/// Reads an elapsed time: any notation of NormalizeTimeText, hours of any number, decimals of a
/// second of which three count, h.mm.ss, m.ss, or a number of seconds.
CellValue ReadCellTime(std::string_view cell,
                       NumberMeaning numbers = NumberMeaning::kMinutesSeconds);

/// The time of ReadCellTime.
std::optional<DateTime> CellTime(std::string_view cell);

/// The text that clsLapData::SetResult stores for the time.
std::string ResultText(DateTime time, bool has_fraction);

/// A time of day: h:mm, h:mm:ss, with decimals of a second too, h.mm, h.mm.ss, or one to six digits
/// that count from the hours.
std::optional<DateTime> CellClock(std::string_view cell);

/// Whether a cell begins with a minus sign of either width: what follows is no elapsed time then.
bool IsNegative(std::string_view cell);

/// A date and time of a file header, full-width characters allowed.
std::optional<DateTime> HeaderDate(std::string_view text);

}  // namespace keltrun
