#include "keltrun2/io/keltrun1_reader.h"

#include <algorithm>
#include <array>
#include <functional>
#include <unordered_map>
#include <utility>

#include "keltrun2/config/page_texts.h"
#include "keltrun2/config/settings.h"
#include "keltrun2/io/csv_header.h"
#include "keltrun2/io/csv_lines.h"
#include "keltrun2/io/limits.h"
#include "keltrun2/io/split_columns.h"
#include "keltrun2/io/text_reading.h"
#include "keltrun2/model/lap_data_internal.h"
#include "keltrun2/model/result_status.h"
#include "keltrun2/text/file_names.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/numbers.h"
#include "keltrun2/text/utf16.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

constexpr std::string_view kNotAvailable = "n/a";
constexpr std::string_view kDisqualified =
    "DISQ";  // what the record stores for a result of no time at all
constexpr std::string_view kLapFileMark = "$LAPFILE";

// --- the lines before the runners: "$label=value" and "$class:label=value" ---

// The words for a label in both languages, besides its resource text.
using LabelWords = std::array<std::string_view, 2>;

struct EventRule {
  std::string_view label_key;
  LabelWords words;
  bool (*store)(LapRecords& records, std::string_view value);  // false: the value has no meaning
};

constexpr std::array<EventRule, 6> kEventRules = {{
    {"RES_META_EVENT_NAME",
     {"大会名", "Event"},
     [](LapRecords& r, std::string_view v) { return (r.event_name = v, true); }},
    {"RES_META_EVENT_DATE",
     {"開催日", "Date"},
     [](LapRecords& r, std::string_view v) {
       return (r.event_date = ParseDateTime(v)).has_value();
     }},
    {"RES_META_EVENT_VENUE",
     {"開催地", "Venue"},
     [](LapRecords& r, std::string_view v) { return (r.terrain = v, true); }},
    {"RES_META_EVENT_MEMO",
     {"メモ", "Memo"},
     [](LapRecords& r, std::string_view v) { return (r.memo = v, true); }},
    {"RES_META_WEBSITE",
     {"公式サイト", "Official site"},
     [](LapRecords& r, std::string_view v) { return (r.official_site = v, true); }},
    {"RES_META_EVENT_FILENAME",
     {"ファイル名", "File"},
     [](LapRecords& r, std::string_view v) {
       r.event_file_name = CleanFileName(LowerAscii(ToHalfWidth(v, {.Symbols = false})));
       return true;
     }},
}};

struct ClassRule {
  std::string_view label_key;
  LabelWords words;
  void (*store)(ClassRecords& klass, std::int32_t value);
};

constexpr std::array<ClassRule, 4> kClassRules = {{
    {"RES_META_COURCE_LENGTH",
     {"コース距離", "Course length"},
     [](ClassRecords& c, std::int32_t v) { c.length = v; }},
    {"RES_META_CLIMB_HEIGHT",
     {"登距離", "Climb"},
     [](ClassRecords& c, std::int32_t v) { c.climb = v; }},
    {"RES_META_CONTROL_COUNT",
     {"コントロール数", "Controls"},
     [](ClassRecords& c, std::int32_t v) {
       c.control_count = std::clamp(v, 0, kMostClassControls);
     }},
    {"RES_META_COURSE_NUMBER",
     {"コース番号", "Course number"},
     [](ClassRecords& c, std::int32_t v) { c.course_num = v; }},
}};

struct Label {
  std::string text;
  std::size_t rule;  // its position in the table
};

template <typename Rules>
std::vector<Label> LabelsOf(const Rules& rules) {
  std::vector<Label> labels;
  for (std::size_t i = 0; i < rules.size(); ++i) {
    labels.push_back({ResourceText(rules[i].label_key), i});
    for (const std::string_view word : rules[i].words) labels.push_back({std::string(word), i});
  }
  return labels;
}

// If the text begins with a label and "=", returns the rule of the label and removes both.
std::optional<std::size_t> TakeLabel(std::string_view& text, const std::vector<Label>& labels) {
  for (const Label& label : labels) {
    const std::size_t size = label.text.size();
    if (size == 0 || !text.starts_with(label.text) || text.substr(size, 1) != "=") continue;
    text.remove_prefix(size + 1);
    return label.rule;
  }
  return std::nullopt;
}

bool HasOneCell(const CsvLine& line) {
  std::size_t filled = 0;
  CellWalker cells(line.text, line.separator);
  while (cells.Next() && filled < 2) filled += cells.Cell().empty() ? 0 : 1;
  return filled == 1;
}

// The only cell of a line that is not empty.
std::string_view OnlyCell(const CsvLine& line) {
  CellWalker cells(line.text, line.separator);
  while (cells.Next() && cells.Cell().empty()) {
  }
  return cells.Cell();
}

// --- the reader ---

// Lets a map with text keys be searched by a view.
struct TextHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const {
    return std::hash<std::string_view>{}(text);
  }
};

// The cells of a line by column, except legs.
using Cells = std::array<std::string_view, kCsvColumnCount>;

class Keltrun1Reader {
 public:
  explicit Keltrun1Reader(NumberMeaning meaning) : meaning_(meaning) {}

  ReadResult Read(std::string_view text);

  /// After Read: whether a number that can only be seconds showed that the ambiguous ones are too.
  bool NumbersAreSeconds() const {
    return only_seconds_.line != 0 && (either_.line != 0 || has_digits_);
  }

 private:
  bool ReadLine(const CsvLine& line);

  bool ReadFrontLine(const CsvLine& line);
  bool ReadMark(const CsvLine& line);
  bool ReadEventLine(const CsvLine& line);
  bool ReadClassLine(const CsvLine& line);
  bool ReadHeader(const CsvLine& line);
  void StartBlock(const CsvLine& line);
  void EndBlock();
  void CountLegs(const CsvLine& line);
  void GiveCodes(ClassRecords& klass, const clsLapData& runner) const;
  void ReadTitles(const CsvLine& line);
  bool ReadListLine(const CsvLine& line);
  void KeepTitle(const CsvLine& line);
  bool FlushTitle();
  bool ReadRow(const CsvLine& line);
  void ReadCells(const CsvLine& line, clsLapData& runner);
  void ReadFields(const CsvLine& line, clsLapData& runner);
  void ReadLap(const CsvLine& line, std::size_t position, std::int32_t leg, std::string_view cell,
               clsLapData& runner);
  std::optional<DateTime> MarkerOf(std::string_view cell) const;
  void Observe(NumberHint hint, const CsvLine& line, std::size_t column, std::string_view cell);
  void ReadTotalTime(const CsvLine& line, std::string_view cell, clsLapData& runner);
  void ReadStartTime(const CsvLine& line, std::string_view cell, clsLapData& runner);
  std::string_view ClassOf(const CsvLine& line);
  ClassRecords* FindClass(std::string_view name, std::int32_t line);
  bool Stop(std::int32_t line, std::string_view detail);
  void CheckHeaderFound();
  void CheckTimes();
  void NoteMeaning();
  void Note(std::int32_t line, std::size_t column, std::string_view subject, std::string_view cell,
            std::string_view consequence) {
    remarks_.Add(RemarkSeverity::kNote, line, static_cast<std::int32_t>(column), subject, cell,
                 consequence);
  }
  void Warn(std::int32_t line, std::size_t column, std::string_view subject, std::string_view cell,
            std::string_view consequence) {
    remarks_.Add(RemarkSeverity::kWarning, line, static_cast<std::int32_t>(column), subject, cell,
                 consequence);
  }

  std::string_view& Cell(CsvColumn column) { return cells_[static_cast<std::size_t>(column)]; }

  const std::vector<Label> event_labels_ = LabelsOf(kEventRules);
  const std::vector<Label> class_labels_ = LabelsOf(kClassRules);
  const std::string arrow_ = ResourceText("RES_META_RIGHT_ARROW");
  const std::string cross_ = ResourceText("RES_META_CROSS_SYMBOL");
  CsvHeaderReader headers_;

  bool lap_file_ = false;     // false: a result list
  bool after_break_ = false;  // the previous line was blank
  std::array<bool, kEventRules.size()> event_line_seen_{};
  std::int32_t skipped_lines_ = 0;  // before the first header
  std::optional<CsvHeader> header_;
  std::vector<std::int32_t> codes_;  // of the controls in the header
  bool has_legs_ = false;
  bool has_times_ = false;  // a header of the text had results or legs
  std::int32_t first_header_line_ = 0;
  std::string_view first_header_;

  CsvLine title_;  // in a list: a line with one cell, which may name the class
  std::string title_text_;
  std::string class_title_;  // the class of the lines below a header without a class column
  std::string last_class_;
  Cells cells_;
  std::unordered_map<std::string, std::size_t, TextHash, std::equal_to<>> class_positions_;
  std::size_t runners_ = 0;
  std::size_t runners_before_header_ = 0;
  std::size_t cut_results_ = 0;
  std::vector<ListBlock> blocks_;  // of a list

  struct NumberPlace {
    std::int32_t line = 0;  // 0: no such number
    std::int32_t column = 0;
    std::string cell;
  };
  const NumberMeaning meaning_;
  NumberPlace either_, only_seconds_;
  bool has_digits_ = false;  // three digits or more
  RemarkList remarks_;
  ReadResult result_;
};

bool Keltrun1Reader::Stop(std::int32_t line, std::string_view detail) {
  result_.error = ReadError{line, std::string(detail)};
  return false;
}

// The class with that name, added if necessary; null when there are too many classes.
ClassRecords* Keltrun1Reader::FindClass(std::string_view name, std::int32_t line) {
  auto& classes = result_.records.classes;
  const auto found = class_positions_.find(name);
  if (found != class_positions_.end()) return &classes[found->second];
  if (classes.size() == kMostClasses) {
    Stop(line, kTooManyClasses);
    return nullptr;
  }
  class_positions_.emplace(name, classes.size());
  classes.emplace_back().name = name;
  return &classes.back();
}

bool Keltrun1Reader::ReadMark(const CsvLine& line) {
  if (!line.shown.starts_with(kLapFileMark)) return false;
  lap_file_ = true;
  return true;
}

// Each label is read once, so that a class can have a name that begins like a label.
bool Keltrun1Reader::ReadEventLine(const CsvLine& line) {
  std::string_view value = line.shown.substr(1);
  const auto label = TakeLabel(value, event_labels_);
  if (!label || event_line_seen_[*label]) return false;
  event_line_seen_[*label] = true;
  value = TrimSpaces(value);
  if (!value.empty() && !kEventRules[*label].store(result_.records, value)) {
    Warn(line.number, 0, "event date", value, "not a date, ignored");
  }
  return true;
}

// A class name can contain ":", a value cannot.
bool Keltrun1Reader::ReadClassLine(const CsvLine& line) {
  const std::size_t colon = line.shown.rfind(':');
  if (colon == std::string_view::npos) return false;
  std::string_view value = line.shown.substr(colon + 1);
  const auto label = TakeLabel(value, class_labels_);
  if (!label) return false;
  ClassRecords* klass = FindClass(TrimSpaces(line.shown.substr(1, colon - 1)), line.number);
  if (klass == nullptr) return true;
  value = TrimSpaces(value);
  if (!value.empty() && !NumericValue(value)) {
    Warn(line.number, 0, "value of a class", value, "not a number, its leading digits are used");
  }
  kClassRules[*label].store(*klass, LeadingLong(value));
  return true;
}

void Keltrun1Reader::ReadTitles(const CsvLine& line) {
  has_legs_ = lap_file_ || header_->controls > 0;
  has_times_ = has_times_ || has_legs_ || header_->Has(CsvColumn::kTotalTime);
  if (first_header_line_ == 0) {
    first_header_line_ = line.number;
    first_header_ = line.shown;
  }
  if (!has_legs_ && header_->legs > 0) {
    Note(line.number, 0, "column", "F", "not a leg, because no column has a leg number; not used");
  }
  for (std::size_t i = 0; i < header_->titles.size(); ++i) {
    const CsvTitle& title = header_->titles[i];
    if (title.column == CsvColumn::kOther && !title.text.empty()) {
      Note(line.number, i + 1, "column", title.text, "not used");
    } else if (title.leg > clsLapData::kMostLegs) {
      Warn(line.number, i + 1, "leg", title.text, "legs above 50 are dropped");
    }
  }
  if (lap_file_ || header_->Has(CsvColumn::kClass)) return;
  if (title_.number != 0) {
    class_title_ = OnlyCell(title_);
    Note(title_.number, 0, "title", class_title_, "taken as the class of the lines below");
  } else {
    Note(line.number, 0, "header without classes", class_title_,
         class_title_.empty() ? "the class has no name" : "taken as the class of the lines below");
  }
}

// Numbers of legs that do not begin at 1 are codes of controls or of parts of a course, so the legs
// are counted. Codes of controls are above 30.
void Keltrun1Reader::CountLegs(const CsvLine& line) {
  constexpr std::int32_t kLowestCode = 31;
  codes_.clear();
  for (const CsvTitle& title : header_->titles) {
    const bool is_number = title.column == CsvColumn::kLeg && title.leg <= header_->controls;
    if (is_number) codes_.push_back(title.leg);
  }
  const auto lowest = std::min_element(codes_.begin(), codes_.end());
  if (lowest == codes_.end() || *lowest == 1) return codes_.clear();
  const std::int32_t highest =
      std::exchange(header_->controls, static_cast<std::int32_t>(codes_.size()));
  header_->legs = 0;
  std::int32_t numbers = 0;
  for (CsvTitle& title : header_->titles) {
    if (title.column != CsvColumn::kLeg) continue;
    title.leg = title.leg <= highest ? ++numbers : header_->controls + 1;
    header_->legs = std::max(header_->legs, title.leg);
  }
  const bool are_codes = *lowest >= kLowestCode && header_->controls <= kMostClassControls;
  Note(line.number, 0, "numbers of the legs", "",
       std::string("do not begin at 1; the legs are counted in the order of the columns") +
           (are_codes ? ", and the numbers are taken for control codes" : ""));
  if (!are_codes) codes_.clear();
}

// The columns are the course of a class when one of its runners has a time in each of them.
void Keltrun1Reader::GiveCodes(ClassRecords& klass, const clsLapData& runner) const {
  if (codes_.empty() || !klass.codes.empty()) return;
  for (std::size_t leg = 1; leg <= codes_.size(); ++leg) {
    if (!(LapDataInternal::Lap(runner, static_cast<std::int32_t>(leg)) > 0)) return;
  }
  klass.codes = codes_;
  klass.control_count = static_cast<std::int32_t>(codes_.size());
}

// A lap file has a header for each class, even one without runners.
void Keltrun1Reader::EndBlock() {
  if (lap_file_ || !header_ || runners_ > runners_before_header_) return;
  Warn(blocks_.back().line, 0, "header", "", "no runner follows it");
}

// A block without rows is replaced, so that there are never more blocks than runners.
void Keltrun1Reader::StartBlock(const CsvLine& line) {
  runners_before_header_ = runners_;
  if (blocks_.empty() || !blocks_.back().rows.empty()) blocks_.emplace_back();
  blocks_.back().line = line.number;
  blocks_.back().finish_leg = header_->legs;
}

// In a lap file a header follows a blank line; elsewhere, a name like a title is that of a runner.
bool Keltrun1Reader::ReadHeader(const CsvLine& line) {
  if (lap_file_ && header_ && !after_break_) return false;
  auto header = headers_.Read(line.text, line.separator);
  if (!header) return false;
  EndBlock();
  header_ = std::move(*header);
  if (!lap_file_) {
    CountLegs(line);
    StartBlock(line);
  }
  ReadTitles(line);
  title_ = {};
  last_class_.clear();
  return true;
}

// A line with one cell is kept until the next line: if that is a header, the cell is a title.
bool Keltrun1Reader::ReadListLine(const CsvLine& line) {
  if (!FlushTitle()) return false;
  if (!HasOneCell(line)) return ReadRow(line);
  KeepTitle(line);
  return true;
}

void Keltrun1Reader::KeepTitle(const CsvLine& line) {
  title_text_ = line.text;
  title_ = line;
  title_.text = title_text_;
}

bool Keltrun1Reader::FlushTitle() {
  if (title_.number == 0) return true;
  const CsvLine line = std::exchange(title_, {});
  const bool is_row =
      header_->titles.size() == 1 || line.text.find(line.separator) != std::string_view::npos;
  if (is_row) return ReadRow(line);
  Warn(line.number, 0, "line", line.shown, "a single cell is not a runner, skipped");
  return true;
}

// The marker that a word or an empty cell means. No such word begins with a digit.
std::optional<DateTime> Keltrun1Reader::MarkerOf(std::string_view cell) const {
  struct Word {
    std::string_view text;
    DateTime lap;
  };
  static constexpr Word kWords[] = {
      {"", kTimeNoData},      {kNotAvailable, kTimeNoData},
      {"-", kTimeNoData},     {kNoDataText, kTimeNoData},
      {kSkipText, kTimeSkip}, {"+", kTimeSkip},
      {kDisqText, kTimeDisq}, {"X", kTimeDisq},
  };
  if (!cell.empty() && cell.front() >= '0' && cell.front() <= '9') return std::nullopt;
  for (const Word& word : kWords) {
    if (cell == word.text) return word.lap;
  }
  if (cell == arrow_) return kTimeSkip;
  return std::nullopt;
}

// Keeps the first number that can be read in two ways, and the first that can only be seconds.
void Keltrun1Reader::Observe(NumberHint hint, const CsvLine& line, std::size_t column,
                             std::string_view cell) {
  if (hint == NumberHint::kDigits) has_digits_ = true;
  if (hint != NumberHint::kSeconds && hint != NumberHint::kEither) return;
  NumberPlace& place = hint == NumberHint::kSeconds ? only_seconds_ : either_;
  if (place.line == 0) place = {line.number, static_cast<std::int32_t>(column), std::string(cell)};
}

void Keltrun1Reader::ReadLap(const CsvLine& line, std::size_t position, std::int32_t leg,
                             std::string_view cell, clsLapData& runner) {
  // In a list, the last cell that is not empty is the last leg.
  if (leg > clsLapData::kMostLegs || (cell.empty() && !lap_file_)) return;
  if (const auto marker = MarkerOf(cell)) {
    runner.SetLap(leg, *marker);
    return;
  }
  const CellValue value = ReadCellTime(cell, meaning_);
  Observe(value.hint, line, position + 1, cell);
  if (!value.time) Warn(line.number, position + 1, "leg", cell, "no time, the leg has no data");
  runner.SetLap(leg, value.time.value_or(kTimeNoData));
}

// When two columns have the same meaning, the first one that is not empty is used. In a lap file,
// legs continue after the last title, because the header of a class without a known number of
// controls has only one leg.
void Keltrun1Reader::ReadCells(const CsvLine& line, clsLapData& runner) {
  cells_.fill({});
  std::int32_t leg = 0;
  bool has_extra = false;
  CellWalker cells(line.text, line.separator);
  while (cells.Next()) {
    const std::size_t position = cells.Position();
    const bool titled = position < header_->titles.size();
    const CsvColumn column = titled ? header_->titles[position].column : CsvColumn::kOther;
    if (column == CsvColumn::kLeg && has_legs_) {
      leg = header_->titles[position].leg;
      ReadLap(line, position, leg, cells.Cell(), runner);
    } else if (!titled && lap_file_ && leg > 0 && leg < clsLapData::kMostLegs) {
      ReadLap(line, position, ++leg, cells.Cell(), runner);
    } else if (!titled && !has_extra && !cells.Cell().empty()) {
      has_extra = true;
      Warn(line.number, position + 1, "cell", cells.Cell(),
           "beyond the header, dropped with all cells after it");
    } else if (Cell(column).empty()) {
      Cell(column) = cells.Cell();
    }
  }
}

bool BeginsLikeNumber(std::string_view text) {
  if (!text.empty() && std::string_view("+-.").find(text.front()) != std::string_view::npos) {
    text.remove_prefix(1);
  }
  return !text.empty() && IsDigit(text.front());
}

// A text that is not a time, such as a status, is kept. Some numbers are not kept, because the
// record would read them as a count of days.
void Keltrun1Reader::ReadTotalTime(const CsvLine& line, std::string_view cell, clsLapData& runner) {
  const CellValue value = ReadCellTime(cell, meaning_);
  if (value.time) {
    Observe(value.hint, line, 0, cell);
    cut_results_ += CutsResult(*value.time) ? 1 : 0;
    runner.SetResult(ResultText(*value.time, value.has_fraction));
    return;
  }
  SetResultWord(runner, cell == kNotAvailable ? std::string_view(cross_) : cell);
  if (!BeginsLikeNumber(ToHalfWidth(cell))) return;
  const bool is_text = runner.Result() != kDisqualified && !ReadableTime(runner.Result());
  Warn(line.number, 0, "result", cell,
       is_text ? "not a time, kept as text" : "not a time, the runner has no result");
  if (!is_text) runner.SetResult("");
}

void Keltrun1Reader::ReadStartTime(const CsvLine& line, std::string_view cell, clsLapData& runner) {
  if (cell.empty()) return;
  if (const auto time = CellClock(cell)) {
    runner.StartTime()->SetValue(*time);
  } else if (MarkerOf(cell) != kTimeNoData) {
    Warn(line.number, 0, "start time", cell, "not a time of day, ignored");
  }
}

void Keltrun1Reader::ReadFields(const CsvLine& line, clsLapData& runner) {
  runner.RunnerName = Cell(CsvColumn::kName);
  runner.ClubName = Cell(CsvColumn::kClub);
  runner.Rank = Cell(CsvColumn::kRank);
  runner.Seed = Cell(CsvColumn::kSeed);
  runner.Sex = Cell(CsvColumn::kSex);
  runner.Age = Cell(CsvColumn::kAge);
  ReadTotalTime(line, Cell(CsvColumn::kTotalTime), runner);
  const std::string_view number = Cell(CsvColumn::kStartNumber);
  if (!number.empty() && !NumericValue(number)) {
    Warn(line.number, 0, "start number", number, "not a number, its leading digits are used");
  }
  runner.ID = LeadingLong(number);
  ReadStartTime(line, Cell(CsvColumn::kStartTime), runner);
}

// The class of the current line. In a list, an empty cell means the class of the line above.
std::string_view Keltrun1Reader::ClassOf(const CsvLine& line) {
  const std::string_view name = Cell(CsvColumn::kClass);
  if (lap_file_ || !name.empty()) return last_class_ = name;
  if (!header_->Has(CsvColumn::kClass)) return class_title_;
  Note(line.number, 0, "class", last_class_, "taken from the line above");
  return last_class_;
}

// False when reading has to stop because the event is too large.
bool Keltrun1Reader::ReadRow(const CsvLine& line) {
  auto runner = std::make_shared<clsLapData>();
  ReadCells(line, *runner);
  if (!lap_file_ && Cell(CsvColumn::kName).empty()) {
    Warn(line.number, 0, "line", line.shown, "names no runner, skipped");
    return true;
  }
  if (++runners_ > kMostRunners) return Stop(line.number, kTooManyRunners);
  ReadFields(line, *runner);
  ClassRecords* klass = FindClass(ClassOf(line), line.number);
  if (klass == nullptr) return false;
  const std::int32_t legs = lap_file_ ? header_->legs : runner->LegCount();
  klass->legs_seen = std::max(klass->legs_seen, std::min(legs, clsLapData::kMostLegs));
  if (!lap_file_) GiveCodes(*klass, *runner);
  if (!lap_file_ && has_legs_) blocks_.back().rows.push_back({line.number, runner.get()});
  klass->runners.push_back(std::move(runner));
  return true;
}

// A line before the header that begins with "$".
bool Keltrun1Reader::ReadFrontLine(const CsvLine& line) {
  if (ReadMark(line) || ReadEventLine(line)) return true;
  if (ReadClassLine(line)) return !result_.error;
  Warn(line.number, 0, "line", line.shown, "not understood, skipped");
  return true;
}

bool Keltrun1Reader::ReadLine(const CsvLine& line) {
  if (!header_ && line.shown.starts_with('$')) return ReadFrontLine(line);
  if (ReadHeader(line)) return true;
  if (header_) return lap_file_ ? ReadRow(line) : ReadListLine(line);
  title_ = {};
  if (HasOneCell(line)) KeepTitle(line);
  ++skipped_lines_;
  return true;
}

// The lap file of an event without classes has no header line.
void Keltrun1Reader::CheckHeaderFound() {
  const bool empty_event =
      lap_file_ && skipped_lines_ == 0 && result_.records.classes.empty() &&
      std::all_of(event_line_seen_.begin(), event_line_seen_.end(), [](bool seen) { return seen; });
  if (!header_ && !empty_event) Stop(0, ResourceText("RES_MESSAGE_CSV_HEADER_ERROR"));
  if (header_ && skipped_lines_ > 0) {
    Note(0, 0, "lines before the header", "", std::to_string(skipped_lines_) + " skipped");
  }
}

// A list without results and legs is not a result list, but one of start times or of punches.
void Keltrun1Reader::CheckTimes() {
  constexpr std::size_t kShownUnits = 200;
  if (result_.error || !header_ || lap_file_ || has_times_) return;
  Stop(first_header_line_,
       "the list has no column for results and none for legs; its header line is \"" +
           std::string(Utf16Prefix(first_header_, kShownUnits)) +
           "\"; it needs a column such as TIME" + (HasJapaneseTexts() ? " or 記録" : "") +
           ", or one for each leg: 1, 2, ... F");
  result_.records = {};
}

void Keltrun1Reader::NoteMeaning() {
  if (meaning_ == NumberMeaning::kSeconds) {
    remarks_.AddFirst(only_seconds_.line, only_seconds_.column, "number", only_seconds_.cell,
                      "can only be seconds, so all numbers of the list are read as seconds");
  } else if (either_.line != 0) {
    remarks_.AddFirst(
        either_.line, either_.column, "number", either_.cell,
        "read as minutes and seconds, since no number of the list can only be seconds");
  }
}

ReadResult Keltrun1Reader::Read(std::string_view text) {
  bool goes_on = true;
  const CsvForm form = FindCsvForm(text, headers_);
  for (CsvLineCursor lines(text, form, remarks_); goes_on && !lines.AtEnd(); lines.Next()) {
    const CsvLine& line = lines.Line();
    const bool blank = IsBlankLine(line.text, line.separator);
    if (!blank) goes_on = ReadLine(line);
    after_break_ = blank;
  }
  if (goes_on && header_ && !lap_file_) goes_on = FlushTitle();
  if (goes_on) EndBlock();
  if (goes_on) CheckHeaderFound();
  CheckTimes();
  TurnSplitsIntoLaps(blocks_, remarks_);
  RemarkCutResults(cut_results_, remarks_);
  NoteMeaning();
  result_.remarks = remarks_.Take();
  return std::move(result_);
}

}  // namespace

// Numbers that can be read in two ways are read in the same way throughout a text. The few texts
// that turn out to have seconds are read a second time.
ReadResult ReadKeltrun1(std::string_view text) {
  {
    Keltrun1Reader reader(NumberMeaning::kMinutesSeconds);
    ReadResult result = reader.Read(text);
    if (!reader.NumbersAreSeconds()) return result;
  }
  return Keltrun1Reader(NumberMeaning::kSeconds).Read(text);
}

}  // namespace keltrun
