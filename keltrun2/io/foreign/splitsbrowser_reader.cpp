#include "keltrun2/io/foreign/splitsbrowser_reader.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "keltrun2/io/foreign/leg_times.h"
#include "keltrun2/io/foreign/line_cells.h"
#include "keltrun2/io/limits.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/numbers.h"

namespace keltrun {
namespace {

constexpr std::string_view kFormat = "SplitsBrowser CSV";
// Given name, surname and club stand before the start time.
constexpr std::size_t kStartColumn = 3;
// Longer times are damaged cells.
constexpr Milliseconds kLongestTime = 10 * kMillisecondsOfDay;

// "M21A,17". The line after the last class, "NOCLAS,-1", has a negative number.
struct ClassLine {
  std::string_view name;
  std::int32_t controls = 0;
};

std::optional<std::int32_t> ControlCount(std::string_view text) {
  const bool is_negative = text.starts_with('-');
  const std::string_view digits = text.substr(is_negative ? 1 : 0);
  if (digits.empty() || digits.size() > 3 || !IsDigits(digits)) return std::nullopt;
  return is_negative ? -1 : NumericLong(digits);
}

bool HasTime(std::string_view text, char separator) {
  while (true) {
    const std::size_t end = text.find(separator);
    const std::string_view cell = TrimSpaces(text.substr(0, end));
    if (IsWrittenAsTime(cell) || (!cell.empty() && IsNoTimeMark(cell))) return true;
    if (end == std::string_view::npos) return false;
    text.remove_prefix(end + 1);
  }
}

// The number is the last cell that is not empty, so the name may contain the separator. A line with
// a time belongs to a runner.
std::optional<ClassLine> ReadClassLine(std::string_view line, char separator) {
  while (!line.empty() && (line.back() == separator || line.back() == ' ')) line.remove_suffix(1);
  const std::size_t last = line.rfind(separator);
  if (last == std::string_view::npos) return std::nullopt;
  const auto controls = ControlCount(TrimSpaces(line.substr(last + 1)));
  const std::string_view name = TrimSpaces(line.substr(0, last));
  if (!controls || name.empty() || HasTime(name, separator)) return std::nullopt;
  return ClassLine{name, *controls};
}

bool IsBlank(std::string_view line) {
  return line.find_first_not_of(" ,;\t") == std::string_view::npos;
}

// The separator of a text, whose first line must be that of a class.
std::optional<char> FindSeparator(std::string_view text) {
  LineCursor line(text);
  while (!line.AtEnd() && IsBlank(line.Line())) line.Next();
  for (const char separator : {',', ';', '\t'}) {
    if (ReadClassLine(line.Line(), separator)) return separator;
  }
  return std::nullopt;
}

// The column of the start time, which is the first time of a line, or a mark for none before it. A
// club whose name contains the separator moves it to the right; without surname or club it is more
// to the left.
std::size_t StartColumn(const LineCells& cells) {
  std::size_t start = 1;
  while (start < cells.Count() && !IsWrittenAsTime(cells[start])) ++start;
  if (start == cells.Count()) return kStartColumn;
  while (start > kStartColumn && IsNoTimeMark(cells[start - 1])) --start;
  return start;
}

// A hyphen stands for a text that is not known. The format has no quotes, but a spreadsheet puts
// texts with the separator into them.
std::string Text(std::string_view cell) {
  if (cell == "-") return "";
  if (cell.size() < 2 || cell.front() != '"' || cell.back() != '"') return std::string(cell);
  cell = cell.substr(1, cell.size() - 2);
  std::string text;
  for (std::size_t i = 0; i < cell.size(); ++i) {
    text += cell[i];
    if (cell.substr(i, 2) == "\"\"") ++i;
  }
  return text;
}

std::optional<Milliseconds> PositiveTime(std::string_view cell) {
  const auto time = ForeignTime(cell);
  if (!time || *time <= 0 || *time > kLongestTime) return std::nullopt;
  return time;
}

// Besides the usual marks, 0:00 is no time.
bool IsNoTime(std::string_view cell) {
  return IsNoTimeMark(cell) || ForeignTime(cell) == Milliseconds{0};
}

// The lines of a text, each of a class or of a runner.
class Lines {
 public:
  Lines(std::string_view text, char separator) : lines_(text), separator_(separator) { Read(); }

  bool AtEnd() const { return lines_.AtEnd(); }
  void Next() {
    lines_.Next();
    Read();
  }
  std::int32_t Number() const { return lines_.Number(); }
  const std::optional<ClassLine>& Class() const { return class_; }
  /// Of a line that is not a class's.
  const LineCells& Cells() const { return cells_; }

 private:
  void Read() {
    while (!lines_.AtEnd() && IsBlank(lines_.Line())) lines_.Next();
    class_ = ReadClassLine(lines_.Line(), separator_);
    if (!class_) cells_.Split(lines_.Line(), separator_);
  }

  LineCursor lines_;
  char separator_;
  std::optional<ClassLine> class_;
  LineCells cells_;
};

using Times = std::vector<std::optional<Milliseconds>>;

// The times from a column on. Marks for no time after the last leg do not count.
void ReadTimes(const LineCells& cells, std::size_t first, std::size_t legs, Times& times) {
  times.clear();
  std::size_t end = cells.Used();
  while (end > first + legs && IsNoTimeMark(cells[end - 1])) --end;
  for (std::size_t i = first; i < end; ++i) times.push_back(PositiveTime(cells[i]));
}

// Whether the times of a runner are those since the start: name, club and start come first, and
// every time is later than the one before. Laps do not ascend for long.
bool LooksLikeSplits(const LineCells& cells, std::int32_t controls, Times& times) {
  const std::size_t start = StartColumn(cells);
  const std::size_t legs = static_cast<std::size_t>(controls) + 1;
  if (start != kStartColumn - 1 || cells.Count() != start + 1 + legs) return false;
  ReadTimes(cells, start + 1, legs, times);
  return AreAscending(times);
}

// Our own export of an analysis has the times since the start. Every runner has to look like that.
bool HasSplits(std::string_view text, char separator) {
  std::int32_t controls = -1;
  std::size_t runners = 0;
  Times times;
  for (Lines line(text, separator); !line.AtEnd(); line.Next()) {
    if (line.Class()) {
      controls = line.Class()->controls;
    } else if (controls >= 0) {
      if (!LooksLikeSplits(line.Cells(), controls, times)) return false;
      ++runners;
    }
  }
  return runners > 0;
}

bool HasOnlyTimes(const LineCells& cells, std::size_t start) {
  for (std::size_t i = start; i < cells.Count(); ++i) {
    if (!IsNoTimeMark(cells[i]) && !IsWrittenAsTime(cells[i])) return false;
  }
  return true;
}

class Reader {
 public:
  Reader(std::string_view text, char separator)
      : lines_(text, separator), has_splits_(HasSplits(text, separator)), event_(remarks_) {}

  ReadResult Read() && {
    std::optional<ReadError> error;
    for (; !lines_.AtEnd() && !error; lines_.Next()) {
      if (lines_.Class()) {
        class_line_ = *lines_.Class();
        class_ = nullptr;
      } else {
        error = ReadRunner();
      }
    }
    AddRemarks();
    return FinishReading(std::move(event_), remarks_, std::string(kFormat), error);
  }

 private:
  std::optional<ReadError> ReadRunner() {
    const LineCells& cells = lines_.Cells();
    const std::size_t start = StartColumn(cells);
    if (class_line_.controls < 0 ||
        cells.Joined(0, start).find_first_not_of(", -") == std::string::npos) {
      skipped_.Add(lines_.Number());
      return std::nullopt;
    }
    if (++runners_ > kMostRunners) return ReadError{lines_.Number(), std::string(kTooManyRunners)};
    if (class_ == nullptr) OpenClass();
    if (event_.Classes().size() > kMostClasses) {
      return ReadError{lines_.Number(), std::string(kTooManyClasses)};
    }
    ForeignRunner runner = Texts(start);
    AddTimes(start + 1, runner);
    if (runner.control_count == class_->control_count) runner.control_count = 0;
    class_->runners.push_back(std::move(runner));
    return std::nullopt;
  }

  void OpenClass() {
    class_ = &event_.ClassNamed(Text(class_line_.name));
    if (!class_->runners.empty()) return;
    class_->control_count = class_line_.controls;
    class_->has_codes = false;
  }

  ForeignRunner Texts(std::size_t start) const {
    const LineCells& cells = lines_.Cells();
    ForeignRunner runner;
    runner.line = lines_.Number();
    if (start < kStartColumn) {
      runner.name = Text(cells[0]);
      runner.club = start > 1 ? Text(cells[1]) : "";
    } else {
      runner.given_name = Text(cells[0]);
      runner.family_name = Text(cells[1]);
      runner.club = Text(cells.Joined(2, start));
    }
    runner.start = ForeignClock(cells[start]);
    if (runner.start == Milliseconds{0}) runner.start.reset();  // stands for no start time
    return runner;
  }

  void AddTimes(std::size_t first, ForeignRunner& runner) {
    const LineCells& cells = lines_.Cells();
    const auto class_legs = static_cast<std::size_t>(class_line_.controls) + 1;
    ReadTimes(cells, first, class_legs, times_);
    if (cells.Count() < first + class_legs) too_few_.Add(runner.line);
    if (times_.size() > class_legs) too_many_.Add(runner.line);
    for (std::size_t i = 0; i < times_.size(); ++i) {
      if (!times_[i] && !IsNoTime(cells[first + i])) unreadable_.Add(runner.line);
    }
    SetLegTimes(times_, class_legs, has_splits_ ? LegTimeKind::kSplits : LegTimeKind::kLaps,
                runner);
  }

  void AddRemarks() {
    using enum RemarkSeverity;
    if (has_splits_) {
      remarks_.AddFirst(0, 0, "times", "",
                        "they ascend in every line and are taken as times since the start");
    }
    too_few_.Remark(kWarning, "times",
                    "fewer than a start and the legs of the class; the first one is taken as the "
                    "start, and the last legs have no data",
                    remarks_);
    too_many_.Remark(kWarning, "times", "more than the legs of the class; all are read", remarks_);
    unreadable_.Remark(kWarning, "legs",
                       "a text that is not a time; the control is taken as missed", remarks_);
    skipped_.Remark(kWarning, "line", "without a name, or after the last class; skipped", remarks_);
  }

  Lines lines_;
  bool has_splits_;
  RemarkList remarks_;
  ForeignEvent event_;
  ClassLine class_line_;
  ForeignClass* class_ = nullptr;  // null until the class has a runner
  std::size_t runners_ = 0;
  Times times_;  // of the runner
  LineCount too_few_, too_many_, unreadable_, skipped_;
};

}  // namespace

bool LooksLikeSplitsBrowser(std::string_view text) {
  const auto separator = FindSeparator(text);
  if (!separator) return false;
  std::size_t legs = 0;
  for (Lines lines(text, *separator); !lines.AtEnd(); lines.Next()) {
    if (lines.Class()) {
      legs = static_cast<std::size_t>(lines.Class()->controls + 1);
      continue;
    }
    const LineCells& cells = lines.Cells();
    const std::size_t start = StartColumn(cells);
    if (!HasOnlyTimes(cells, start)) return false;
    if (cells.Count() > start + legs && cells.Used() > start) return legs > 0;
  }
  return false;
}

ReadResult ReadSplitsBrowser(std::string_view text, const ForeignOptions& /*options*/) {
  return Reader(text, FindSeparator(text).value_or(',')).Read();
}

}  // namespace keltrun
