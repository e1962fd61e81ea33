#include "keltrun2/io/foreign/triple_csv_reader.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <utility>

#include "keltrun2/io/csv_lines.h"
#include "keltrun2/io/foreign/line_cells.h"
#include "keltrun2/io/foreign/refusal.h"
#include "keltrun2/io/limits.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/numbers.h"

namespace keltrun {
namespace {

constexpr std::string_view kFormat = "SPORTident AutoDownload CSV";
constexpr std::size_t kColumnsOfControl = 3;
constexpr std::size_t kLongestCode = 10;

enum Column : std::size_t {
  kBib,
  kCard,
  kMembership,
  kName,
  kAgeClass,
  kClub,
  kCountry,
  kCourseClass,
  kStart,
  kFinish,
  kTime,
  kNonCompetitive,
  kPosition,
  kStatus,
  kFirstCode,
  kColumns,
};

enum class Kind {
  kTitles,     // a line of titles, then one for each runner
  kRows,       // without titles
  kStartList,  // the same program's list without results
  kNoSplits,   // results without controls
};

// The title of each column, in small letters, and its position where there is no line of titles.
struct Title {
  std::string_view text;
  std::size_t position;
};
constexpr std::array<Title, kColumns> kTitles = {{{"racenumber", 0},
                                                  {"cardnumbers", 1},
                                                  {"membershipnumbers", 2},
                                                  {"name", 3},
                                                  {"ageclass", 4},
                                                  {"club", 5},
                                                  {"country", 6},
                                                  {"courseclass", 7},
                                                  {"starttime", 8},
                                                  {"finishtime", 9},
                                                  {"racetime", 10},
                                                  {"noncompetitive", 11},
                                                  {"position", 12},
                                                  {"status", 13},
                                                  {"controlcode", 38}}};

constexpr std::array<std::pair<std::string_view, RunnerStatus>, 14> kStatusWords = {
    {{"m", RunnerStatus::kMissingPunch},
     {"mp", RunnerStatus::kMissingPunch},
     {"r", RunnerStatus::kDidNotFinish},
     {"rtd", RunnerStatus::kDidNotFinish},
     {"dnf", RunnerStatus::kDidNotFinish},
     {"n", RunnerStatus::kDidNotStart},
     {"dns", RunnerStatus::kDidNotStart},
     {"d", RunnerStatus::kDisqualified},
     {"dsq", RunnerStatus::kDisqualified},
     {"dq", RunnerStatus::kDisqualified},
     {"disq", RunnerStatus::kDisqualified},
     {"ok", RunnerStatus::kOk},
     {"nc", RunnerStatus::kNotCompeting},
     {"n/c", RunnerStatus::kNotCompeting}}};

std::optional<RunnerStatus> StatusOf(std::string_view word) {
  const std::string small = LowerAscii(word);
  const auto* const found = std::find_if(kStatusWords.begin(), kStatusWords.end(),
                                         [&](const auto& entry) { return entry.first == small; });
  if (found == kStatusWords.end()) return std::nullopt;
  return found->second;
}

bool IsYes(std::string_view cell) {
  const std::string small = LowerAscii(cell);
  return !small.empty() && small != "n" && small != "no" && small != "0" && small != "false";
}

// Where the columns of a table are. kNoColumn is beyond every line, so its cells are empty.
constexpr std::size_t kNoColumn = LineCells::kMost;
using Layout = std::array<std::size_t, kColumns>;

// A title in small letters. The controls may be numbered, and SiTiming calls the age class
// category.
std::string FoldTitle(std::string_view cell) {
  std::string title = LowerAscii(cell);
  if (title.ends_with('1')) title.pop_back();
  return title == "category" ? "ageclass" : title;
}

// Equal titles mean the first column.
Layout ReadTitles(const LineCells& cells) {
  Layout layout;
  layout.fill(kNoColumn);
  for (std::size_t i = cells.Count(); i-- > 0;) {
    const std::string title = FoldTitle(cells[i]);
    for (std::size_t column = 0; column < kColumns; ++column) {
      if (kTitles[column].text == title) layout[column] = i;
    }
  }
  return layout;
}

bool HasScores(const LineCells& cells) {
  for (std::size_t i = 0; i < cells.Count(); ++i) {
    if (FoldTitle(cells[i]) == "score") return true;
  }
  return false;
}

// What a line of titles announces; nullopt when it is that of another list.
std::optional<Kind> KindOf(const LineCells& cells, const Layout& layout) {
  const auto has = [&](Column column) { return layout[column] != kNoColumn; };
  if (!has(kName)) return std::nullopt;
  if (has(kFirstCode)) {
    const std::size_t first = layout[kFirstCode];
    const bool is_triple =
        FoldTitle(cells[first + 1]) == "split" && FoldTitle(cells[first + 2]) == "points";
    return is_triple ? std::optional(Kind::kTitles) : std::nullopt;
  }
  if (!has(kBib) || !has(kCard) || !has(kMembership) || !has(kCourseClass)) return std::nullopt;
  if (HasScores(cells)) return std::nullopt;  // that list is another program's
  return has(kTime) ? Kind::kNoSplits : Kind::kStartList;
}

Layout LayoutWithoutTitles() {
  Layout layout;
  for (std::size_t column = 0; column < kColumns; ++column) {
    layout[column] = kTitles[column].position;
  }
  return layout;
}

bool IsCode(std::string_view cell) {
  return !cell.empty() && cell.size() <= kLongestCode &&
         std::all_of(cell.begin(), cell.end(), [](char c) {
           return IsDigit(c) || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
         });
}

bool IsTime(std::string_view cell) { return IsNoTimeMark(cell) || IsWrittenAsTime(cell); }

// A row of a table without titles: at least two controls, and only controls after the first.
bool LooksLikeRow(const LineCells& cells) {
  const Layout layout = LayoutWithoutTitles();
  const std::size_t first = layout[kFirstCode];
  const std::size_t used = cells.Used();
  if (used < first + kColumnsOfControl + 2 || cells[layout[kName]].empty()) return false;
  for (const Column column : {kStart, kFinish, kTime}) {
    if (!IsTime(cells[layout[column]])) return false;
  }
  for (std::size_t i = first; i < used; i += kColumnsOfControl) {
    if (!IsCode(cells[i]) || !IsTime(cells[i + 1]) || !IsDigits(cells[i + 2])) return false;
  }
  return true;
}

struct Form {
  char separator = ',';
  Kind kind = Kind::kRows;
  Layout layout;
};

std::optional<Form> FindForm(std::string_view text) {
  LineCursor line(text);
  while (!line.AtEnd() && TrimSpaces(line.Line()).empty()) line.Next();
  std::string plain(line.Line());
  plain.erase(std::remove(plain.begin(), plain.end(), '"'), plain.end());
  LineCells cells;
  for (const char separator : {',', ';', '\t'}) {
    cells.Split(plain, separator);
    const Layout layout = ReadTitles(cells);
    if (const auto kind = KindOf(cells, layout)) return Form{separator, *kind, layout};
    if (LooksLikeRow(cells)) return Form{separator, Kind::kRows, LayoutWithoutTitles()};
  }
  return std::nullopt;
}

class Reader {
 public:
  Reader(std::string_view text, const Form& form)
      : form_(form), lines_(text, {form.separator, true}, remarks_), event_(remarks_) {}

  ReadResult Read() && {
    std::optional<ReadError> error = RefusedKind();
    bool is_titles = form_.kind != Kind::kRows;
    for (; !lines_.AtEnd() && !error; lines_.Next()) {
      if (lines_.Line().text.empty()) continue;
      if (!is_titles) error = ReadLine();
      is_titles = false;
    }
    if (!error) error = Refused();
    CompleteStatuses();
    AddRemarks();
    return FinishReading(std::move(event_), remarks_, std::string(kFormat), error);
  }

 private:
  std::optional<ReadError> RefusedKind() const {
    if (form_.kind != Kind::kStartList && form_.kind != Kind::kNoSplits) return std::nullopt;
    const auto refusal = form_.kind == Kind::kStartList ? Refusal::kStartList : Refusal::kNoSplits;
    return ReadError{0, RefusalText(refusal, kFormat)};
  }

  std::optional<ReadError> Refused() const {
    if (with_points_ * 2 > runners_) {
      return ReadError{0, RefusalText(Refusal::kScoreResults, kFormat)};
    }
    return std::nullopt;
  }

  std::optional<ReadError> ReadLine() {
    cells_.Split(lines_.Line().text, lines_.Line().separator);
    if (cells_.Used() == 0) return std::nullopt;
    CountNames();
    if (Cell(kName).empty()) {
      nameless_.Add(lines_.Line().number);
      return std::nullopt;
    }
    if (++runners_ > kMostRunners) return Error(kTooManyRunners);
    const std::string_view course = Cell(kCourseClass);
    ForeignClass& klass = event_.ClassNamed(course.empty() ? Cell(kAgeClass) : course);
    if (event_.Classes().size() > kMostClasses) return Error(kTooManyClasses);
    if (cells_.IsCut()) cut_.Add(lines_.Line().number);
    ForeignRunner runner = Texts();
    AddTimes(runner);
    AddPunches(runner);
    AddStatus(runner);
    klass.runners.push_back(std::move(runner));
    return std::nullopt;
  }

  ReadError Error(std::string_view detail) const {
    return {lines_.Line().number, std::string(detail)};
  }

  // The names of a pair or group stand in as many cells: "Ann, Bob". They move what follows.
  void CountNames() {
    const std::size_t name = form_.layout[kName];
    more_names_ = 0;
    while (IsFurtherName(cells_.Raw(name + 1 + more_names_))) ++more_names_;
  }

  static bool IsFurtherName(std::string_view raw) {
    return raw.starts_with(' ') && !TrimSpaces(raw).empty();
  }

  std::size_t Position(Column column) const {
    const std::size_t position = form_.layout[column];
    return position > form_.layout[kName] ? position + more_names_ : position;
  }

  std::string_view Cell(Column column) const { return cells_[Position(column)]; }

  ForeignRunner Texts() const {
    ForeignRunner runner;
    const std::size_t name = form_.layout[kName];
    runner.name = cells_.Joined(name, name + 1 + more_names_);
    runner.club = Cell(kClub);
    runner.bib = Cell(kBib);
    runner.card = Cell(kCard);
    runner.competitor_id = Cell(kMembership);
    runner.nationality = Cell(kCountry);
    runner.rank = Cell(kPosition);
    runner.line = lines_.Line().number;
    return runner;
  }

  void AddTimes(ForeignRunner& runner) const {
    runner.start = ForeignClock(Cell(kStart));
    runner.finish = ForeignClock(Cell(kFinish));
    runner.time = ForeignTime(Cell(kTime));
  }

  // Code, time and points of each control; the last one is the finish.
  void AddPunches(ForeignRunner& runner) {
    const std::size_t first = Position(kFirstCode);
    const std::size_t used = std::max(cells_.Used(), first);
    runner.punches.reserve((used - first) / kColumnsOfControl + 1);
    bool has_points = false;
    for (std::size_t i = first; i < used; i += kColumnsOfControl) {
      if (cells_[i].empty()) {
        if (!cells_[i + 1].empty()) codeless_.Add(runner.line);
        continue;
      }
      const std::string_view time = cells_[i + 1];
      runner.punches.push_back({event_.Code(cells_[i]), ForeignTime(time)});
      if (!runner.punches.back().time && !IsNoTimeMark(time)) unreadable_.Add(runner.line);
      has_points = has_points || NumericLong(cells_[i + 2]) != 0;
    }
    if (has_points) ++with_points_;
  }

  void AddStatus(ForeignRunner& runner) {
    const std::string_view word = Cell(kStatus);
    runner.status = StatusOf(word);
    has_status_ = has_status_ || runner.status;
    if (!runner.status && !word.empty()) {
      unknown_status_.Add(runner.line);
      if (HasTime(runner)) runner.status = RunnerStatus::kFinished;
    }
    const bool counts = !runner.status || runner.status == RunnerStatus::kOk;
    if (counts && IsYes(Cell(kNonCompetitive))) runner.status = RunnerStatus::kNotCompeting;
  }

  static bool HasTime(const ForeignRunner& runner) {
    if (runner.time || (runner.start && runner.finish)) return true;
    return !runner.punches.empty() && runner.punches.back().time &&
           runner.punches.back().code == ForeignEvent::kFinishCode;
  }

  // In a table with status letters, a runner without one is classified, also without a punch. In
  // one without letters, a missing punch has to tell.
  void CompleteStatuses() {
    if (!has_status_) return;
    for (ForeignClass& klass : event_.Classes()) {
      for (ForeignRunner& runner : klass.runners) {
        if (!runner.status && HasTime(runner)) runner.status = RunnerStatus::kOk;
      }
    }
  }

  void AddRemarks() {
    using enum RemarkSeverity;
    nameless_.Remark(kWarning, "line", "without a name; skipped", remarks_);
    unknown_status_.Remark(kWarning, "status", "another than m, r, n and d; not classified",
                           remarks_);
    unreadable_.Remark(kWarning, "split", "not a time; the control is taken as missed", remarks_);
    codeless_.Remark(kWarning, "split", "without a control code; dropped", remarks_);
    cut_.Remark(kWarning, "line", "more than 4,096 cells; the others are dropped", remarks_);
  }

  Form form_;
  RemarkList remarks_;
  CsvLineCursor lines_;
  ForeignEvent event_;
  LineCells cells_;
  std::size_t more_names_ = 0;  // of the line, after the first
  std::size_t runners_ = 0;
  std::size_t with_points_ = 0;
  bool has_status_ = false;
  LineCount nameless_, unknown_status_, unreadable_, codeless_, cut_;
};

}  // namespace

bool LooksLikeTripleCsv(std::string_view text) { return FindForm(text).has_value(); }

ReadResult ReadTripleCsv(std::string_view text, const ForeignOptions& /*options*/) {
  return Reader(text, FindForm(text).value_or(Form{',', Kind::kRows, LayoutWithoutTitles()}))
      .Read();
}

}  // namespace keltrun
