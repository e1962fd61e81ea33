#include "keltrun2/io/foreign/swiss_csv_reader.h"

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

// The three tables.
enum class Kind {
  kTitles,     // of the federation: one row for each runner, with the class and its course
  kFormat,     // of OWare: "//Format:" with titles, the event, then lines of classes and of runners
  kBasicData,  // of PicoEvents: "BasicData" with the event, titles in brackets, times of the day
};

constexpr std::array<std::string_view, 3> kFormats = {
    "Swiss result CSV", "Swiss result CSV (OWare)", "Swiss result CSV (PicoEvents)"};
constexpr std::string_view kFormatMark = "//Format";
constexpr std::string_view kBasicDataMark = "BasicData,";

enum Column : std::size_t {
  kClass,
  kLength,
  kClimb,
  kControls,
  kRank,
  kName,
  kGivenName,
  kSex,
  kNation,
  kClub,
  kBib,
  kCard,
  kId,
  kTime,
  kStatus,
  kStart,
  kFinish,
  kSplits,
  kDataType,
  kColumns,
};

// In small letters, as FoldCase makes them.
constexpr std::array<std::pair<std::string_view, Column>, 55> kTitles = {{
    {"kategorie", kClass},
    {"kat", kClass},
    {"[fullclass]", kClass},
    {"laenge", kLength},
    {"länge", kLength},
    {"steigung", kClimb},
    {"hm", kClimb},
    {"poanz", kControls},
    {"[nofsplits]", kControls},
    {"rang", kRank},
    {"rank", kRank},
    {"[ranknet]", kRank},
    {"name", kName},
    {"nachname", kName},
    {"[familyname]", kName},
    {"vorname", kGivenName},
    {"firstname", kGivenName},
    {"[firstname]", kGivenName},
    {"geschlecht", kSex},
    {"sexmf", kSex},
    {"[sex]", kSex},
    {"land", kNation},
    {"nation", kNation},
    {"nationiof", kNation},
    {"[nation]", kNation},
    {"club", kClub},
    {"verein", kClub},
    {"[club]", kClub},
    {"startnr", kBib},
    {"stnr", kBib},
    {"[startnum]", kBib},
    {"sinr", kCard},
    {"chipnr", kCard},
    {"ecardnr", kCard},
    {"[cardnum]", kCard},
    {"solvnr", kId},
    {"fednr", kId},
    {"[fednr]", kId},
    {"zeit", kTime},
    {"laufzeit", kTime},
    {"runtime", kTime},
    {"[runtimenet]", kTime},
    {"[iofresstattext]", kStatus},
    {"startzeit", kStart},
    {"start", kStart},
    {"starttime", kStart},
    {"[startfullprec]", kStart},
    {"zielzeit", kFinish},
    {"ziel", kFinish},
    {"finishtime", kFinish},
    {"[finishfullprec]", kFinish},
    {"zwischenzeiten", kSplits},
    {"ctrlcode", kSplits},
    {"[term]", kSplits},
    {"[datatype]", kDataType},
}};

// How the words begin that stand in the place of a time, in small letters: aufgegeben, Posten fehlt
// or falsch, nicht gestartet or angetreten, abgemeldet, disqualifiziert, Überzeit, außer
// Konkurrenz.
constexpr std::array<std::pair<std::string_view, RunnerStatus>, 17> kStatusWords = {{
    {"aufg", RunnerStatus::kDidNotFinish},
    {"dnf", RunnerStatus::kDidNotFinish},
    {"p.f", RunnerStatus::kMissingPunch},
    {"po.f", RunnerStatus::kMissingPunch},
    {"fehl", RunnerStatus::kMissingPunch},
    {"falsch", RunnerStatus::kMissingPunch},
    {"mp", RunnerStatus::kMissingPunch},
    {"n.g", RunnerStatus::kDidNotStart},
    {"n. g", RunnerStatus::kDidNotStart},
    {"n.a", RunnerStatus::kDidNotStart},
    {"nicht", RunnerStatus::kDidNotStart},
    {"abgem", RunnerStatus::kDidNotStart},
    {"dns", RunnerStatus::kDidNotStart},
    {"disq", RunnerStatus::kDisqualified},
    {"überz", RunnerStatus::kOverTime},
    {"ueberz", RunnerStatus::kOverTime},
    {"ak", RunnerStatus::kNotCompeting},
}};

// Where the columns of a table are. kNoColumn is beyond every line, so its cells are empty.
constexpr std::size_t kNoColumn = LineCells::kMost;
using Layout = std::array<std::size_t, kColumns>;

struct Form {
  Kind kind = Kind::kTitles;
  char separator = ';';
  Layout layout{};
};

Layout ReadTitles(const LineCells& cells) {
  Layout layout;
  layout.fill(kNoColumn);
  for (std::size_t i = cells.Used(); i-- > 0;) {
    const std::string title = FoldCase(cells[i]);
    for (const auto& [text, column] : kTitles) {
      if (text == title) layout[column] = i;
    }
  }
  if (layout[kSplits] == kNoColumn) layout[kSplits] = cells.Used();
  return layout;
}

bool Has(const Layout& layout, std::initializer_list<Column> columns) {
  return std::all_of(columns.begin(), columns.end(),
                     [&](Column column) { return layout[column] != kNoColumn; });
}

std::optional<Form> FindTitles(std::string_view line) {
  LineCells cells;
  for (const char separator : {';', ',', '\t'}) {
    cells.Split(line, separator);
    const Layout layout = ReadTitles(cells);
    if (Has(layout, {kClass, kControls, kName, kTime})) {
      return Form{Kind::kTitles, separator, layout};
    }
  }
  return std::nullopt;
}

// "//Format: Rank;Name;Firstname;..."
std::optional<Form> FindFormatLine(std::string_view line) {
  const std::size_t colon = line.find(':');
  if (colon == std::string_view::npos) return std::nullopt;
  LineCells cells;
  cells.Split(line.substr(colon + 1), ';');
  const Layout layout = ReadTitles(cells);
  if (!Has(layout, {kName, kTime})) return std::nullopt;
  return Form{Kind::kFormat, ';', layout};
}

// "EXTCLASS=[DATATYPE],[SORTKEY],...". In a row, the first cell is "CLASS=TYPE".
std::optional<Form> FindBracketTitles(std::string_view line) {
  const std::size_t sign = line.find('=');
  if (sign == std::string_view::npos) return std::nullopt;
  LineCells cells;
  cells.Split(line.substr(sign + 1), ',');
  const Layout layout = ReadTitles(cells);
  if (!Has(layout, {kDataType, kClass, kName, kTime, kStart, kSplits})) return std::nullopt;
  return Form{Kind::kBasicData, ',', layout};
}

std::optional<Form> FindForm(std::string_view text) {
  LineCursor line(text);
  while (!line.AtEnd() && TrimSpaces(line.Line()).empty()) line.Next();
  if (line.Line().starts_with(kFormatMark)) return FindFormatLine(line.Line());
  if (!line.Line().starts_with(kBasicDataMark)) return FindTitles(line.Line());
  line.Next();
  return FindBracketTitles(line.Line());
}

bool IsNumber(std::string_view cell) {
  return !cell.empty() && cell.find_first_not_of("0123456789.,") == std::string_view::npos;
}

// Courses are given in kilometers or meters, without the unit.
std::int32_t CourseLength(std::string_view cell) {
  return Meters(cell, LeadingNumber(cell) < 100 ? "km" : "m");
}

class Reader {
 public:
  Reader(std::string_view text, const Form& form)
      : form_(form), lines_(text, {form.separator, true}, remarks_), event_(remarks_) {}

  ReadResult Read() && {
    std::optional<ReadError> error;
    ReadHead();
    for (; !lines_.AtEnd() && !error; lines_.Next()) {
      if (Split()) error = ReadLine();
    }
    AddRemarks();
    return FinishReading(std::move(event_), remarks_,
                         std::string(kFormats[static_cast<std::size_t>(form_.kind)]), error);
  }

 private:
  /// False for a line without text.
  bool Split() {
    cells_.Split(lines_.Line().text, lines_.Line().separator);
    return cells_.Used() > 0;
  }

  // To the next line with text.
  void NextLine() {
    do {
      lines_.Next();
    } while (!lines_.AtEnd() && !Split());
  }

  // Leaves the cursor at the first line after the titles and the event.
  void ReadHead() {
    while (!lines_.AtEnd() && !Split()) lines_.Next();
    if (form_.kind == Kind::kFormat) {
      NextLine();
      if (!cells_[0].starts_with("//")) return;
      ReadEvent(cells_[0].substr(2), 2, 3, 1);
    } else if (form_.kind == Kind::kBasicData) {
      ReadEvent(cells_[2], 3, 4, 7);
      NextLine();
    }
    lines_.Next();
  }

  void ReadEvent(std::string_view name, std::size_t date, std::size_t zero_time, std::size_t map) {
    LapRecords& header = event_.Header();
    header.event_name = std::string(name);
    header.event_date = EventDate(cells_[date]);
    if (!header.event_date && !cells_[date].empty()) {
      remarks_.Add(RemarkSeverity::kWarning, lines_.Line().number, 0, "event date", cells_[date],
                   "not a date; left out");
    }
    header.terrain = std::string(cells_[map]);
    zero_time_ = ForeignClock(cells_[zero_time]);
  }

  std::string_view Cell(Column column) const { return cells_[form_.layout[column]]; }

  std::optional<ReadError> ReadLine() {
    if (form_.kind == Kind::kFormat && IsClassLine()) {
      return OpenClass(cells_[0], cells_[1], cells_[2], cells_[3]);
    }
    if (form_.kind == Kind::kBasicData && !IsSplitRow()) {
      other_rows_.Add(lines_.Line().number);
      return std::nullopt;
    }
    if (form_.kind != Kind::kFormat) {
      auto error = OpenClass(Cell(kClass), Cell(kLength), Cell(kClimb), Cell(kControls));
      if (error) return error;
    }
    return ReadRunner();
  }

  bool IsClassLine() const {
    return cells_.Count() <= 6 && !cells_[0].empty() && IsNumber(cells_[1]) &&
           IsNumber(cells_[2]) && IsNumber(cells_[3]);
  }

  bool IsSplitRow() const {
    const std::string_view first = cells_[0];
    return first.substr(std::min(first.rfind('='), first.size())) == "=S";
  }

  std::optional<ReadError> OpenClass(std::string_view name, std::string_view length,
                                     std::string_view climb, std::string_view controls) {
    if (class_ != nullptr && class_->name == name) return std::nullopt;
    class_ = &event_.ClassNamed(name);
    if (event_.Classes().size() > kMostClasses) return Error(kTooManyClasses);
    if (!class_->runners.empty()) return std::nullopt;
    class_->length = CourseLength(length);
    class_->climb = Meters(climb, "m");
    class_->control_count = ControlCount(controls);
    return std::nullopt;
  }

  // The number of controls; PicoEvents counts the finish as well.
  std::int32_t ControlCount(std::string_view cell) const {
    if (form_.kind == Kind::kBasicData) return 0;
    return std::clamp(NumericLong(cell), 0, 999);
  }

  std::optional<ReadError> ReadRunner() {
    const std::int32_t line = lines_.Line().number;
    if (class_ == nullptr || (Cell(kName).empty() && Cell(kGivenName).empty())) {
      skipped_.Add(line);
      return std::nullopt;
    }
    if (++runners_ > kMostRunners) return Error(kTooManyRunners);
    if (cells_.IsCut()) cut_.Add(line);
    ForeignRunner runner = Texts();
    AddClocks(runner);
    AddResult(runner);
    if (form_.kind == Kind::kBasicData) {
      AddTimesOfDay(runner);
    } else {
      AddSplits(runner);
    }
    has_splits_ = has_splits_ || !runner.punches.empty();
    class_->runners.push_back(std::move(runner));
    return std::nullopt;
  }

  ReadError Error(std::string_view detail) const {
    return {lines_.Line().number, std::string(detail)};
  }

  ForeignRunner Texts() const {
    ForeignRunner runner;
    if (form_.layout[kGivenName] == kNoColumn) {
      runner.name = Cell(kName);
    } else {
      runner.family_name = Cell(kName);
      runner.given_name = Cell(kGivenName);
    }
    runner.club = Cell(kClub);
    runner.nationality = Cell(kNation);
    runner.sex = NormalSex(Cell(kSex));
    runner.bib = Cell(kBib);
    runner.card = Cell(kCard);
    runner.competitor_id = Cell(kId);
    runner.rank = Cell(kRank);
    runner.line = lines_.Line().number;
    return runner;
  }

  void AddClocks(ForeignRunner& runner) {
    runner.start = Clock(Cell(kStart));
    runner.finish = Clock(Cell(kFinish));
    if (form_.kind == Kind::kTitles) latest_start_ = std::max(latest_start_, runner.start);
  }

  // OWare counts from the zero time of the event.
  std::optional<Milliseconds> Clock(std::string_view cell) const {
    if (form_.kind == Kind::kTitles) return ForeignClock(cell);
    auto time = ForeignTime(cell);
    if (time && form_.kind == Kind::kFormat) *time += zero_time_.value_or(0);
    if (time && (*time < 0 || *time >= kMillisecondsOfDay)) time.reset();
    return time;
  }

  // A time, a word for why there is none, or both: "ak-62:04".
  void AddResult(ForeignRunner& runner) {
    std::string_view text = Cell(kTime);
    runner.time = ForeignTime(text);
    runner.status = RunnerStatusOfName(Cell(kStatus));
    if (runner.status || IsNoTimeMark(text)) return;
    if (runner.time) {
      runner.status = RunnerStatus::kOk;
      return;
    }
    const std::string word = FoldCase(text);
    for (const auto& [begin, status] : kStatusWords) {
      if (word.starts_with(begin)) runner.status = status;
    }
    if (!runner.status) {
      unknown_status_.Add(runner.line);
    } else if (runner.status == RunnerStatus::kNotCompeting) {
      text.remove_prefix(std::min(text.find_first_of("0123456789"), text.size()));
      runner.time = ForeignTime(text);
      if (!runner.time) runner.status.reset();  // the times tell
    }
  }

  // Pairs of code and time since the start.
  void AddSplits(ForeignRunner& runner) {
    const std::size_t first = form_.layout[kSplits];
    const std::size_t used = std::max(cells_.Used(), first);
    runner.punches.reserve((used - first + 1) / 2);
    for (std::size_t i = first; i < used; i += 2) {
      const std::string_view code = cells_[i];
      const std::string_view time = cells_[i + 1];
      if (code.empty()) {
        if (!time.empty()) codeless_.Add(runner.line);
        continue;
      }
      Punch punch{code == "Zi" ? ForeignEvent::kFinishCode : event_.Code(code), std::nullopt};
      if (IsWrittenAsTime(time)) punch.time = ForeignTime(time);
      // 0.00 is a control whose unit did not work.
      if (!punch.time && !IsNoTimeMark(time) && time != "0.00") unreadable_.Add(runner.line);
      runner.punches.push_back(punch);
    }
  }

  // Pairs of code and second of the day, after the mark "<" and up to an "x". Code 0 is the start,
  // 9999 the finish.
  void AddTimesOfDay(ForeignRunner& runner) {
    const std::size_t first = form_.layout[kSplits] + 1;
    const std::size_t used = std::max(cells_.Used(), first);
    runner.punches.reserve((used - first + 1) / 2);
    for (std::size_t i = first; i < used && cells_[i] != "x"; i += 2) {
      const std::string_view code = cells_[i];
      if (code.empty() || code == "0") continue;
      Punch punch{code == "9999" ? ForeignEvent::kFinishCode : event_.Code(code), std::nullopt};
      const auto time = ForeignTime(cells_[i + 1]);
      if (time && runner.start) punch.time = *time - *runner.start;
      runner.punches.push_back(punch);
    }
  }

  void AddRemarks() {
    using enum RemarkSeverity;
    if (runners_ > 0 && !has_splits_) {
      remarks_.Add(kWarning, 0, 0, "split times", "",
                   "the list has none. Export it with split times");
    }
    if (latest_start_ && *latest_start_ < kEarliestRace) {
      remarks_.Add(kNote, 0, 0, "start times", "",
                   "they count from the zero time of the event, which the file does not have");
    }
    skipped_.Remark(kWarning, "line", "without a name, or before the first class; skipped",
                    remarks_);
    other_rows_.Remark(kNote, "line", "of another type than S (splits); not read", remarks_);
    unknown_status_.Remark(kWarning, "result", "not a time or a known word; told from the times",
                           remarks_);
    unreadable_.Remark(kWarning, "split", "not a time; the control is taken as missed", remarks_);
    codeless_.Remark(kWarning, "split", "without a control code; dropped", remarks_);
    cut_.Remark(kWarning, "line", "more than 4,096 cells; the others are dropped", remarks_);
  }

  // When all start times are earlier, they are no times of the day.
  static constexpr Milliseconds kEarliestRace = kMillisecondsOfDay / 4;

  Form form_;
  RemarkList remarks_;
  CsvLineCursor lines_;
  ForeignEvent event_;
  LineCells cells_;
  ForeignClass* class_ = nullptr;
  std::optional<Milliseconds> zero_time_;
  std::optional<Milliseconds> latest_start_;
  std::size_t runners_ = 0;
  bool has_splits_ = false;
  LineCount skipped_, other_rows_, unknown_status_, unreadable_, codeless_, cut_;
};

}  // namespace

bool LooksLikeSwissCsv(std::string_view text) { return FindForm(text).has_value(); }

ReadResult ReadSwissCsv(std::string_view text, const ForeignOptions& /*options*/) {
  if (const auto form = FindForm(text)) return Reader(text, *form).Read();
  ReadResult result;
  result.format = kFormats[0];
  result.error = ReadError{1, RefusalText(Refusal::kNoResults, kFormats[0])};
  return result;
}

}  // namespace keltrun
