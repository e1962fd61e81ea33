#include "keltrun2/io/foreign/winsplits_reader.h"

#include <algorithm>
#include <array>
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

constexpr std::string_view kFormat = "WinSplits Standard Text";
constexpr char kSeparator = '\t';
// Name, club and start time stand before the times.
constexpr std::size_t kStartColumn = 2;
constexpr std::size_t kFirstTime = 3;
constexpr std::size_t kLongestTimeText = 15;
// The shortest row of times that can show whether they are laps.
constexpr std::size_t kTellingTimes = 5;

bool IsNumber(std::string_view cell) {
  return !cell.empty() && cell.size() <= 6 &&
         cell.find_first_not_of("0123456789.,") == std::string_view::npos;
}

// A class has the lengths of its legs after its name, in meters, 0 where they are not known.
bool IsClassLine(const LineCells& cells) {
  const std::size_t used = cells.Used();
  if (used < 3 || cells[0].empty()) return false;
  for (std::size_t i = 1; i < used; ++i) {
    if (!IsNumber(cells[i])) return false;
  }
  return true;
}

std::int32_t CourseLength(const LineCells& cells) {
  double meters = 0;
  for (std::size_t i = 1; i < cells.Used(); ++i) meters += LeadingNumber(cells[i]);
  return RoundToLong(std::min(meters, 1e6));
}

// "h.mm.ss" or "mm.ss" with colons, for the readers of times. Empty when it is neither.
std::string_view WithColons(std::string_view cell, std::array<char, kLongestTimeText>& buffer) {
  if (cell.size() > kLongestTimeText || cell.empty() || !IsDigit(cell.front())) return {};
  std::transform(cell.begin(), cell.end(), buffer.begin(),
                 [](char c) { return c == '.' ? ':' : c; });
  const std::string_view text(buffer.data(), cell.size());
  return IsWrittenAsTime(text) ? text : std::string_view();
}

std::optional<Milliseconds> Time(std::string_view cell) {
  std::array<char, kLongestTimeText> buffer{};
  return ForeignTime(WithColons(cell, buffer));
}

std::optional<Milliseconds> Clock(std::string_view cell) {
  std::array<char, kLongestTimeText> buffer{};
  return ForeignClock(WithColons(cell, buffer));
}

using Times = std::vector<std::optional<Milliseconds>>;

// 0.00 is a control that the runner visited, but at which the unit recorded nothing.
void ReadTimes(const LineCells& cells, Times& times) {
  times.clear();
  const std::size_t end = cells.Used();
  for (std::size_t i = kFirstTime; i < end; ++i) {
    times.push_back(Time(cells[i]));
    if (times.back() == Milliseconds{0}) times.back().reset();
  }
}

// The lines with cells, walked one after the other.
class Lines {
 public:
  explicit Lines(std::string_view text) : lines_(text) { Read(); }

  bool AtEnd() const { return lines_.AtEnd(); }
  std::int32_t Number() const { return lines_.Number(); }
  const LineCells& Cells() const { return cells_; }
  bool IsClass() const { return is_class_; }
  void Next() {
    lines_.Next();
    Read();
  }

 private:
  void Read() {
    while (!lines_.AtEnd() && lines_.Line().find_first_not_of(" \t") == std::string_view::npos) {
      lines_.Next();
    }
    cells_.Split(lines_.Line(), kSeparator);
    is_class_ = IsClassLine(cells_);
  }

  LineCursor lines_;
  LineCells cells_;
  bool is_class_ = false;
};

// The format calls the times split times and lists them beside the lengths of the legs: they are
// laps. Programs have written the times since the start as well; these ascend in every row.
LegTimeKind KindOfTimes(std::string_view text) {
  std::size_t ascending = 0;
  Times times;
  for (Lines line(text); !line.AtEnd(); line.Next()) {
    if (line.IsClass()) continue;
    ReadTimes(line.Cells(), times);
    if (times.size() -
            static_cast<std::size_t>(std::count(times.begin(), times.end(), std::nullopt)) <
        kTellingTimes) {
      continue;
    }
    if (!AreAscending(times)) return LegTimeKind::kLaps;
    ++ascending;
  }
  return ascending > 0 ? LegTimeKind::kSplits : LegTimeKind::kLaps;
}

// Whether a runner's times have points or are marks for none.
bool HasTimesWithPoints(const LineCells& cells) {
  for (std::size_t i = kStartColumn; i < cells.Used(); ++i) {
    if (Contains(cells[i], ":") || (!Time(cells[i]) && !IsNoTimeMark(cells[i]))) return false;
  }
  return true;
}

class Reader {
 public:
  explicit Reader(std::string_view text)
      : lines_(text), kind_(KindOfTimes(text)), event_(remarks_) {}

  ReadResult Read() && {
    std::optional<ReadError> error;
    ReadHead();
    for (; !lines_.AtEnd() && !error; lines_.Next()) {
      error = lines_.IsClass() ? OpenClass() : ReadRunner();
    }
    AddRemarks();
    return FinishReading(std::move(event_), remarks_, std::string(kFormat), error);
  }

 private:
  // The name of the event and its date, in one line or two.
  void ReadHead() {
    for (std::size_t line = 0; line < 2 && !lines_.AtEnd() && !lines_.IsClass(); ++line) {
      const LineCells& cells = lines_.Cells();
      if (line == 0) event_.Header().event_name = std::string(cells[0]);
      const std::string_view date = cells[line == 0 ? 1 : 0];
      if (!date.empty()) ReadDate(date);
      lines_.Next();
    }
  }

  void ReadDate(std::string_view text) {
    if (const auto date = EventDate(text)) {
      event_.Header().event_date = date;
    } else {
      remarks_.Add(RemarkSeverity::kWarning, lines_.Number(), 0, "event date", text,
                   "not a date; left out");
    }
  }

  std::optional<ReadError> OpenClass() {
    const LineCells& cells = lines_.Cells();
    class_ = &event_.ClassNamed(cells[0]);
    legs_ = cells.Used() - 1;
    if (event_.Classes().size() > kMostClasses) {
      return ReadError{lines_.Number(), std::string(kTooManyClasses)};
    }
    if (!class_->runners.empty()) return std::nullopt;
    class_->control_count = static_cast<std::int32_t>(legs_) - 1;
    class_->length = CourseLength(cells);
    class_->has_codes = false;
    return std::nullopt;
  }

  std::optional<ReadError> ReadRunner() {
    const LineCells& cells = lines_.Cells();
    if (class_ == nullptr || cells[0].empty()) {
      skipped_.Add(lines_.Number());
      return std::nullopt;
    }
    if (++runners_ > kMostRunners) return ReadError{lines_.Number(), std::string(kTooManyRunners)};
    ForeignRunner runner;
    runner.line = lines_.Number();
    runner.name = cells[0];
    runner.club = cells[1];
    runner.start = Clock(cells[kStartColumn]);
    ReadTimes(cells, times_);
    if (times_.size() > legs_) too_many_.Add(runner.line);
    SetLegTimes(times_, legs_, kind_, runner);
    SetStatus(runner);
    if (runner.control_count == class_->control_count) runner.control_count = 0;
    class_->runners.push_back(std::move(runner));
    return std::nullopt;
  }

  // A hyphen disqualifies, 0.00 does not. Without either, the times tell.
  void SetStatus(ForeignRunner& runner) {
    const LineCells& cells = lines_.Cells();
    bool has_all = runner.time.has_value();
    for (std::size_t i = 0; i < times_.size(); ++i) {
      const std::string_view cell = cells[kFirstTime + i];
      if (times_[i] || Time(cell) == Milliseconds{0}) continue;
      has_all = false;
      if (!IsNoTimeMark(cell)) unreadable_.Add(runner.line);
    }
    if (has_all) runner.status = RunnerStatus::kOk;
  }

  void AddRemarks() {
    using enum RemarkSeverity;
    if (kind_ == LegTimeKind::kSplits) {
      remarks_.AddFirst(0, 0, "times", "",
                        "they ascend in every line and are taken as times since the start");
    }
    too_many_.Remark(kWarning, "times", "more than the legs of the class; all are read", remarks_);
    unreadable_.Remark(kWarning, "times", "not written [h.]mm.ss; the control is taken as missed",
                       remarks_);
    skipped_.Remark(kWarning, "line", "without a name, or before the first class; skipped",
                    remarks_);
  }

  Lines lines_;
  LegTimeKind kind_;
  RemarkList remarks_;
  ForeignEvent event_;
  ForeignClass* class_ = nullptr;
  std::size_t legs_ = 0;  // of the class
  std::size_t runners_ = 0;
  Times times_;  // of the runner
  LineCount too_many_, unreadable_, skipped_;
};

}  // namespace

bool LooksLikeWinSplits(std::string_view text) {
  Lines lines(text);
  for (std::size_t skipped = 0; !lines.AtEnd() && !lines.IsClass(); lines.Next()) {
    if (++skipped > 2) return false;
  }
  std::size_t legs = 0;
  for (; !lines.AtEnd(); lines.Next()) {
    const LineCells& cells = lines.Cells();
    if (lines.IsClass()) {
      legs = cells.Used() - 1;
    } else if (!HasTimesWithPoints(cells)) {
      return false;
    } else if (cells.Used() == kFirstTime + legs && cells.Used() > kFirstTime) {
      return true;
    }
  }
  return false;
}

ReadResult ReadWinSplits(std::string_view text, const ForeignOptions& /*options*/) {
  return Reader(text).Read();
}

}  // namespace keltrun
