#include "keltrun2/io/keltrun1_reader.h"

#include <algorithm>
#include <array>
#include <unordered_map>
#include <utility>

#include "keltrun2/config/settings.h"
#include "keltrun2/io/csv_header.h"
#include "keltrun2/io/limits.h"
#include "keltrun2/io/text_reading.h"
#include "keltrun2/model/time_text.h"
#include "keltrun2/text/file_names.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/numbers.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

constexpr std::string_view kNotAvailable = "n/a";
constexpr std::string_view kLapFileMark = "$LAPFILE";

// --- the lines in front of the runners: "$label=value" and "$class:label=value" ---

struct EventRule {
  std::string_view label_key;
  bool (*store)(LapRecords& records, std::string_view value);  // false: the value has no meaning
};

constexpr std::array<EventRule, 6> kEventRules = {{
    {"RES_META_EVENT_NAME",
     [](LapRecords& r, std::string_view v) { return (r.EventName = v, true); }},
    {"RES_META_EVENT_DATE",
     [](LapRecords& r, std::string_view v) {
       return (r.EventDate = ParseDateTime(v)).has_value();
     }},
    {"RES_META_EVENT_VENUE",
     [](LapRecords& r, std::string_view v) { return (r.Terrain = v, true); }},
    {"RES_META_EVENT_MEMO", [](LapRecords& r, std::string_view v) { return (r.Memo = v, true); }},
    {"RES_META_WEBSITE",
     [](LapRecords& r, std::string_view v) { return (r.OfficialSite = v, true); }},
    {"RES_META_EVENT_FILENAME",
     [](LapRecords& r, std::string_view v) {
       r.EventFileName = CleanFileName(LowerAscii(ToHalfWidth(v, {.Symbols = false})));
       return true;
     }},
}};

struct ClassRule {
  std::string_view label_key;
  void (*store)(ClassRecords& klass, std::int32_t value);
};

constexpr std::array<ClassRule, 4> kClassRules = {{
    {"RES_META_COURCE_LENGTH", [](ClassRecords& c, std::int32_t v) { c.Length = v; }},
    {"RES_META_CLIMB_HEIGHT", [](ClassRecords& c, std::int32_t v) { c.Climb = v; }},
    {"RES_META_CONTROL_COUNT",
     [](ClassRecords& c, std::int32_t v) {
       c.ControlCount = std::clamp(v, 0, kMostClassControls);
     }},
    {"RES_META_COURSE_NUMBER", [](ClassRecords& c, std::int32_t v) { c.CourseNum = v; }},
}};

// The labels of a table of rules in the language of the resources.
template <typename Rules>
std::vector<std::string> LabelsOf(const Rules& rules) {
  std::vector<std::string> labels;
  labels.reserve(rules.size());
  for (const auto& rule : rules) labels.push_back(ResourceText(rule.label_key));
  return labels;
}

// The position of the label that the text begins with, with "=" behind it; cuts both off.
std::optional<std::size_t> TakeLabel(std::string_view& text,
                                     const std::vector<std::string>& labels) {
  for (std::size_t i = 0; i < labels.size(); ++i) {
    const std::string& label = labels[i];
    if (label.empty() || !text.starts_with(label)) continue;
    if (text.substr(label.size(), 1) != "=") continue;
    text.remove_prefix(label.size() + 1);
    return i;
  }
  return std::nullopt;
}

// --- the reader ---

// Cells of a line by column, legs aside.
using Cells = std::array<std::string_view, kCsvColumnCount>;

class Keltrun1Reader {
 public:
  ReadResult Read(std::string_view text);

 private:
  struct Line {
    std::string_view text;
    std::int32_t number = 0;
  };

  bool ReadLine(const Line& line);

  bool ReadFrontLine(const Line& line);
  bool ReadMark(const Line& line);
  bool ReadEventLine(const Line& line);
  bool ReadClassLine(const Line& line);
  bool ReadHeader(const Line& line);
  void ReadTitles(const Line& line);
  bool ReadListLine(const Line& line);
  bool FlushTitle();
  bool ReadRow(const Line& line);
  void ReadCells(const Line& line, clsLapData& runner);
  void ReadFields(const Line& line, clsLapData& runner);
  void ReadLap(const Line& line, std::size_t position, std::int32_t leg, std::string_view cell,
               clsLapData& runner);
  std::optional<DateTime> MarkerOf(std::string_view cell) const;
  std::optional<DateTime> LapOf(std::string_view cell) const;
  std::string_view ClassOf(const Line& line);
  ClassRecords* FindClass(std::string_view name, std::int32_t line);
  bool Stop(std::int32_t line, std::string_view detail);
  void CheckHeaderFound();
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

  const std::vector<std::string> event_labels_ = LabelsOf(kEventRules);
  const std::vector<std::string> class_labels_ = LabelsOf(kClassRules);
  const std::string arrow_ = ResourceText("RES_META_RIGHT_ARROW");
  const std::string cross_ = ResourceText("RES_META_CROSS_SYMBOL");
  CsvHeaderReader headers_;

  bool lap_file_ = false;     // else a result list
  bool after_break_ = false;  // the line before was blank
  std::array<bool, kEventRules.size()> event_line_seen_{};
  std::int32_t skipped_lines_ = 0;  // in front of the first header
  std::optional<CsvHeader> header_;
  bool has_legs_ = false;

  Line title_;  // in a list: a line with one cell that may name the class below it
  std::string_view class_title_;  // class of the lines below a header without a class column
  std::string_view last_class_;
  Cells cells_;
  std::unordered_map<std::string_view, std::size_t>
      class_positions_;  // names are views of the text
  std::size_t runners_ = 0;
  RemarkList remarks_;
  ReadResult result_;
};

bool Keltrun1Reader::Stop(std::int32_t line, std::string_view detail) {
  result_.Error = ReadError{line, std::string(detail)};
  return false;
}

// The class of a name, made when there is none; null when there are too many.
ClassRecords* Keltrun1Reader::FindClass(std::string_view name, std::int32_t line) {
  auto& classes = result_.Records.Classes;
  const auto [found, is_new] = class_positions_.try_emplace(name, classes.size());
  if (!is_new) return &classes[found->second];
  if (classes.size() == kMostClasses) {
    Stop(line, kTooManyClasses);
    return nullptr;
  }
  classes.emplace_back().Name = name;
  return &classes.back();
}

bool Keltrun1Reader::ReadMark(const Line& line) {
  if (!line.text.starts_with(kLapFileMark)) return false;
  lap_file_ = true;
  return true;
}

// Each label counts once, so that a class whose name begins like a label is none.
bool Keltrun1Reader::ReadEventLine(const Line& line) {
  std::string_view value = line.text.substr(1);
  const auto label = TakeLabel(value, event_labels_);
  if (!label || event_line_seen_[*label]) return false;
  event_line_seen_[*label] = true;
  value = TrimSpaces(value);
  if (!value.empty() && !kEventRules[*label].store(result_.Records, value)) {
    Warn(line.number, 0, "event date", value, "no date, left out");
  }
  return true;
}

// Class names may hold ":", values do not.
bool Keltrun1Reader::ReadClassLine(const Line& line) {
  const std::size_t colon = line.text.rfind(':');
  if (colon == std::string_view::npos) return false;
  std::string_view value = line.text.substr(colon + 1);
  const auto label = TakeLabel(value, class_labels_);
  if (!label) return false;
  ClassRecords* klass = FindClass(TrimSpaces(line.text.substr(1, colon - 1)), line.number);
  if (klass == nullptr) return true;
  value = TrimSpaces(value);
  if (!value.empty() && !NumericValue(value)) {
    Warn(line.number, 0, "value of a class", value, "no number, the digits at its start count");
  }
  kClassRules[*label].store(*klass, LeadingLong(value));
  return true;
}

void Keltrun1Reader::ReadTitles(const Line& line) {
  has_legs_ = lap_file_ || header_->Controls > 0;
  if (!has_legs_ && header_->Legs > 0) {
    Note(line.number, 0, "column", "F", "no leg without numbered ones, not used");
  }
  for (std::size_t i = 0; i < header_->Titles.size(); ++i) {
    const CsvTitle& title = header_->Titles[i];
    if (title.Column == CsvColumn::kOther && !title.Text.empty()) {
      Note(line.number, i + 1, "column", title.Text, "not used");
    } else if (title.Leg > clsLapData::kMostLegs) {
      Warn(line.number, i + 1, "leg", title.Text, "legs above 50 are dropped");
    }
  }
  if (lap_file_ || header_->Has(CsvColumn::kClass)) return;
  if (title_.number != 0) {
    class_title_ = title_.text;
    Note(title_.number, 0, "title", class_title_, "taken as the class of the lines below");
  } else {
    Note(line.number, 0, "header without classes", class_title_,
         class_title_.empty() ? "the class has no name" : "taken as the class of the lines below");
  }
}

// In a lap file headers stand below a blank line: a runner may be called like a title.
bool Keltrun1Reader::ReadHeader(const Line& line) {
  if (lap_file_ && header_ && !after_break_) return false;
  auto header = headers_.Read(line.text);
  if (!header) return false;
  header_ = std::move(*header);
  ReadTitles(line);
  title_ = {};
  last_class_ = {};
  return true;
}

bool HasOneCell(std::string_view line) {
  std::size_t filled = 0;
  CellWalker cells(line);
  while (cells.Next() && filled < 2) filled += cells.Cell().empty() ? 0 : 1;
  return filled == 1;
}

// The cell of a line that has but one.
std::string_view OnlyCell(std::string_view line) {
  CellWalker cells(line);
  while (cells.Next() && cells.Cell().empty()) {
  }
  return cells.Cell();
}

// A line with one cell waits for the next one: above a header it is a title.
bool Keltrun1Reader::ReadListLine(const Line& line) {
  if (!FlushTitle()) return false;
  if (!HasOneCell(line.text)) return ReadRow(line);
  title_ = line;
  return true;
}

bool Keltrun1Reader::FlushTitle() {
  if (title_.number == 0) return true;
  const Line line = std::exchange(title_, {});
  const bool is_row = header_->Titles.size() == 1 || line.text.find(',') != std::string_view::npos;
  if (is_row) return ReadRow(line);
  Warn(line.number, 0, "line", line.text, "a single cell is no runner, skipped");
  return true;
}

// The marker that a word or an empty cell stands for; no word begins with a digit.
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

// A time, a marker, or nullopt for a text that is neither.
std::optional<DateTime> Keltrun1Reader::LapOf(std::string_view cell) const {
  constexpr DateTime kNoTime = -10;
  if (const auto marker = MarkerOf(cell)) return marker;
  if (const auto time = CellTime(cell)) return time;
  const DateTime time =
      cell.front() == '-' ? ParseSignedTime(cell, false, false, kNoTime) : ParseTime(cell, kNoTime);
  if (time == kNoTime) return std::nullopt;
  return time;
}

void Keltrun1Reader::ReadLap(const Line& line, std::size_t position, std::int32_t leg,
                             std::string_view cell, clsLapData& runner) {
  // In a list the legs end with the last one that is filled.
  if (leg > clsLapData::kMostLegs || (cell.empty() && !lap_file_)) return;
  const std::optional<DateTime> lap = LapOf(cell);
  if (!lap) Warn(line.number, position + 1, "leg", cell, "no time, the leg has no data");
  runner.SetLap(leg, lap.value_or(kTimeNoData));
}

// Of two columns with one meaning the first that is filled counts. In a lap file the legs go on
// behind the last title, as a class whose number of controls is not known has only one.
void Keltrun1Reader::ReadCells(const Line& line, clsLapData& runner) {
  cells_.fill({});
  std::int32_t leg = 0;
  bool has_extra = false;
  CellWalker cells(line.text);
  while (cells.Next()) {
    const std::size_t position = cells.Position();
    const bool titled = position < header_->Titles.size();
    const CsvColumn column = titled ? header_->Titles[position].Column : CsvColumn::kOther;
    if (column == CsvColumn::kLeg && has_legs_) {
      leg = header_->Titles[position].Leg;
      ReadLap(line, position, leg, cells.Cell(), runner);
    } else if (!titled && lap_file_ && leg > 0 && leg < clsLapData::kMostLegs) {
      ReadLap(line, position, ++leg, cells.Cell(), runner);
    } else if (!titled && !has_extra && !cells.Cell().empty()) {
      has_extra = true;
      Warn(line.number, position + 1, "cell", cells.Cell(),
           "beyond the header, dropped with all that follow");
    } else if (Cell(column).empty()) {
      Cell(column) = cells.Cell();
    }
  }
}

std::optional<DateTime> StartTimeOf(std::string_view cell) {
  auto time = ParseDateTime(cell);
  if (!time) time = ParseDateTime(NormalizeTimeText(cell, Digits::kClock));
  if (time && *time >= 0 && *time < 1) return time;
  return std::nullopt;
}

void Keltrun1Reader::ReadFields(const Line& line, clsLapData& runner) {
  runner.RunnerName = Cell(CsvColumn::kName);
  runner.ClubName = Cell(CsvColumn::kClub);
  runner.Rank = Cell(CsvColumn::kRank);
  runner.Seed = Cell(CsvColumn::kSeed);
  runner.Sex = Cell(CsvColumn::kSex);
  runner.Age = Cell(CsvColumn::kAge);
  const std::string_view result = Cell(CsvColumn::kTotalTime);
  runner.SetResult(result == kNotAvailable ? std::string_view(cross_) : result);
  const std::string_view number = Cell(CsvColumn::kStartNumber);
  if (!number.empty() && !NumericValue(number)) {
    Warn(line.number, 0, "start number", number, "no number, the digits at its start count");
  }
  runner.ID = LeadingLong(number);
  const std::string_view start = Cell(CsvColumn::kStartTime);
  if (start.empty()) return;
  if (const auto time = StartTimeOf(start)) {
    runner.StartTime()->SetValue(*time);
  } else if (LapOf(start) != kTimeNoData) {
    Warn(line.number, 0, "start time", start, "no time of day, left out");
  }
}

// The class of the line whose cells were read last. In a list an empty cell repeats the one above.
std::string_view Keltrun1Reader::ClassOf(const Line& line) {
  const std::string_view name = Cell(CsvColumn::kClass);
  if (lap_file_ || !name.empty()) return last_class_ = name;
  if (!header_->Has(CsvColumn::kClass)) return class_title_;
  Note(line.number, 0, "class", last_class_, "taken from the line above");
  return last_class_;
}

// False when reading ends: the event is larger than events are.
bool Keltrun1Reader::ReadRow(const Line& line) {
  auto runner = std::make_shared<clsLapData>();
  ReadCells(line, *runner);
  if (!lap_file_ && Cell(CsvColumn::kName).empty()) {
    Warn(line.number, 0, "line", line.text, "names no runner, skipped");
    return true;
  }
  if (++runners_ > kMostRunners) return Stop(line.number, kTooManyRunners);
  ReadFields(line, *runner);
  ClassRecords* klass = FindClass(ClassOf(line), line.number);
  if (klass == nullptr) return false;
  const std::int32_t legs = lap_file_ ? header_->Legs : runner->LegCount();
  klass->LegsSeen = std::max(klass->LegsSeen, std::min(legs, clsLapData::kMostLegs));
  klass->Runners.push_back(std::move(runner));
  return true;
}

// A line in front of the header that begins with "$".
bool Keltrun1Reader::ReadFrontLine(const Line& line) {
  if (ReadMark(line) || ReadEventLine(line)) return true;
  if (ReadClassLine(line)) return !result_.Error;
  Warn(line.number, 0, "line", line.text, "not understood, skipped");
  return true;
}

bool Keltrun1Reader::ReadLine(const Line& line) {
  if (!header_ && line.text.starts_with('$')) return ReadFrontLine(line);
  if (ReadHeader(line)) return true;
  if (header_) return lap_file_ ? ReadRow(line) : ReadListLine(line);
  title_ = HasOneCell(line.text) ? Line{OnlyCell(line.text), line.number} : Line{};
  ++skipped_lines_;
  return true;
}

// A lap file without classes, as the writer writes it, has no header line.
void Keltrun1Reader::CheckHeaderFound() {
  const bool empty_event =
      lap_file_ && skipped_lines_ == 0 && result_.Records.Classes.empty() &&
      std::all_of(event_line_seen_.begin(), event_line_seen_.end(), [](bool seen) { return seen; });
  if (!header_ && !empty_event) Stop(0, ResourceText("RES_MESSAGE_CSV_HEADER_ERROR"));
  if (header_ && skipped_lines_ > 0) {
    Note(0, 0, "lines before the header", "", std::to_string(skipped_lines_) + " skipped");
  }
}

ReadResult Keltrun1Reader::Read(std::string_view text) {
  bool goes_on = true;
  for (LineCursor lines(text); goes_on && !lines.AtEnd(); lines.Next()) {
    const std::string_view line = TrimSpaces(lines.Line());
    const bool blank = IsBlankLine(line);
    if (!blank) goes_on = ReadLine({line, lines.Number()});
    after_break_ = blank;
  }
  if (goes_on && header_ && !lap_file_) goes_on = FlushTitle();
  if (goes_on) CheckHeaderFound();
  result_.Remarks = remarks_.Take();
  return std::move(result_);
}

}  // namespace

ReadResult ReadKeltrun1(std::string_view text) { return Keltrun1Reader().Read(text); }

}  // namespace keltrun
