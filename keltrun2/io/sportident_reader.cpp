#include "keltrun2/io/sportident_reader.h"

#include <algorithm>
#include <array>
#include <limits>

#include "keltrun2/codec/encodings.h"
#include "keltrun2/codec/utf8.h"
#include "keltrun2/io/limits.h"
#include "keltrun2/io/text_reading.h"
#include "keltrun2/model/lap_data_internal.h"
#include "keltrun2/model/time_text.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/numbers.h"
#include "keltrun2/text/utf16.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

// The titles of the header line. Their columns are those of the cells.
enum Title : std::size_t { kPl, kStno, kName, kCl, kTime, kTitleCount };

constexpr std::array<std::string_view, kTitleCount> kTitles = {"Pl", "Stno", "Name", "Cl.", "Time"};

// Columns from 1; 0 for a title that is missing in the header line.
using TitleColumns = std::array<std::int32_t, kTitleCount>;

// A cell: where it begins relative to the column of its title, and its width, both in columns.
struct CellRule {
  Title title;
  std::int32_t offset;
  std::int32_t width;
};

constexpr CellRule kRankCell = {kPl, -1, 3};
constexpr CellRule kIdCell = {kStno, -2, 6};
constexpr CellRule kNarrowNameCell = {kName, 0, 16};  // also the club, on the line below
constexpr CellRule kResultCell = {kTime, -4, 8};
constexpr CellRule kResultMark = {kTime, 3, 1};  // not blank for a runner
constexpr CellRule kIdMark = {kStno, 3, 1};      // blank for a row of controls

constexpr std::int32_t kTimeCellWidth = 8;       // of a leg, and of a control above it
constexpr std::int32_t kNarrowestWideName = 13;  // columns from "Name" to "Cl."
constexpr std::int32_t kClubToResult = 5;        // columns between the club and "Time"
constexpr std::size_t kMostControlRows = 4;
constexpr std::int32_t kMostLegs = clsLapData::kMostLegs;

constexpr std::string_view kListTitle = "SPORTident results";
constexpr std::string_view kListApplication = "OE2003";
constexpr std::string_view kPattern = "Pattern";
constexpr std::size_t kPatternUnits = 9;  // "Pattern", a blank and at least one character
constexpr std::string_view kFinish = "F";

// What the words for results become. Case matters.
struct StatusWord {
  std::string_view word;
  std::string_view result;
};
constexpr StatusWord kDnf = {"dnf", "DNF"};
constexpr StatusWord kDns = {"dns", "DNS"};
constexpr StatusWord kMispunch = {"mp", "MP"};
constexpr StatusWord kDisqualified = {"disq", "DISQ"};

// --- columns ---

// A position in a line, with its column in Shift-JIS bytes.
struct Place {
  std::size_t offset = 0;
  std::int32_t column = 1;

  // The position after the character at this one.
  Place Next(std::string_view line) const {
    if (static_cast<unsigned char>(line[offset]) < 0x80) return {offset + 1, column + 1};
    Place next = *this;
    next.column += ShiftJisLength(NextCodePoint(line, next.offset));
    return next;
  }
};

// The cells of a line. Reading them in the order of their columns takes one pass over the line.
class LineColumns {
 public:
  explicit LineColumns(std::string_view line) : line_(line), ascii_(IsAscii(line)) {}

  // The characters that lie entirely within the columns, trimmed. Columns left of column 1 have no
  // characters.
  std::string_view Cell(std::int32_t first, std::int32_t width) {
    const std::int32_t end = first + std::max(width, 0);
    first = std::max(first, 1);
    if (end <= first) return {};
    if (ascii_) {
      const std::size_t begin = std::min(static_cast<std::size_t>(first - 1), line_.size());
      return TrimSpaces(line_.substr(begin, static_cast<std::size_t>(end - first)));
    }
    Seek(first);
    Place begin = place_;
    if (begin.column < first && begin.offset < line_.size()) begin = begin.Next(line_);
    Place last = begin;
    while (last.offset < line_.size()) {
      const Place next = last.Next(line_);
      if (next.column > end) break;
      last = next;
    }
    return TrimSpaces(line_.substr(begin.offset, last.offset - begin.offset));
  }

  bool IsBlank(std::int32_t column) { return Cell(column, 1).empty(); }

 private:
  // Moves to the character that covers the column, or to the end of the line.
  void Seek(std::int32_t column) {
    if (column < place_.column) place_ = {};
    while (place_.offset < line_.size()) {
      const Place next = place_.Next(line_);
      if (next.column > column) break;
      place_ = next;
    }
  }

  std::string_view line_;
  bool ascii_;
  Place place_;
};

std::string_view CellOf(LineColumns& line, const TitleColumns& titles, const CellRule& rule) {
  return line.Cell(titles[rule.title] + rule.offset, rule.width);
}

// --- the class block ---

// A control above its column of times.
struct ControlCell {
  std::int32_t leg = 0;
  std::int32_t code = 0;
};

// "12(133)": the leg that ends at the control, and its code; nullopt for anything else.
std::optional<ControlCell> ParseControl(std::string_view cell) {
  const std::size_t open = cell.find('(');
  if (open == std::string_view::npos) return std::nullopt;
  const std::int32_t leg = LeadingLong(cell.substr(0, open));
  if (leg < 1) return std::nullopt;
  std::string_view code = cell.substr(open + 1);
  return ControlCell{leg, LeadingLong(code.substr(0, code.find(')')))};
}

// The column of a leg without a control in the row. A real cell can begin left of column 1.
constexpr std::int32_t kNoCell = std::numeric_limits<std::int32_t>::min();

// The column of the times of a leg in the rows of its group.
struct LegCell {
  std::int32_t leg;
  std::int32_t column;
};

// The legs whose controls are in the same row, and whose times are in the same row of each runner.
struct LegGroup {
  LegGroup() { columns.fill(kNoCell); }

  std::int32_t first = 0;
  std::int32_t last = 0;                            // less than first: no legs
  std::array<std::int32_t, kMostLegs + 1> columns;  // by leg
  std::vector<LegCell> cells;  // of the legs from first to last, in the order of the columns
};

// What the rows of controls say.
struct ClassLayout {
  std::vector<LegGroup> groups;
  std::array<std::int32_t, kMostLegs + 1> codes{};  // by leg
  std::int32_t legs = 0;                            // finish included
  bool has_finish = false;
};

void OrderCells(LegGroup& group) {
  if (group.first == 0) return;
  for (std::int32_t leg = group.first; leg <= group.last; ++leg) {
    group.cells.push_back({leg, group.columns[static_cast<std::size_t>(leg)]});
  }
  std::stable_sort(group.cells.begin(), group.cells.end(),
                   [](const LegCell& a, const LegCell& b) { return a.column < b.column; });
}

// The class line with every run of spaces replaced by one.
std::string FoldSpaces(std::string_view line) {
  std::string out;
  for (const char c : line) {
    if (c != ' ' || !out.ends_with(' ')) out += c;
  }
  return out;
}

// The class name in a folded class line: the first word, or all words up to the one after
// "Pattern".
std::string_view ClassName(std::string_view line) {
  const std::size_t pattern = line.find(kPattern);
  std::size_t from = 0;
  if (pattern != std::string_view::npos) {
    from = pattern + Utf16Prefix(line.substr(pattern), kPatternUnits).size();
  }
  return TrimSpaces(line.substr(0, line.find(' ', from)));
}

constexpr std::size_t kShortestFigure = 4;  // characters of a figure and its unit in one word

// The number between a prefix and a suffix, or nullopt.
std::optional<double> NumberBetween(std::string_view token, std::string_view prefix,
                                    std::string_view suffix) {
  if (token.size() < kShortestFigure || !token.starts_with(prefix) || !token.ends_with(suffix)) {
    return std::nullopt;
  }
  token.remove_prefix(prefix.size());
  token.remove_suffix(suffix.size());
  return NumericValue(token);
}

constexpr double kMetersPerKm = 1000;

// Whether a time says that the control was missed: it is empty or consists of hyphens.
bool IsMissing(std::string_view cell) {
  return cell.find_first_not_of('-') == std::string_view::npos;
}

// --- the reader ---

class SportIdentReader {
 public:
  explicit SportIdentReader(std::string_view text) : line_(text) {}

  ReadResult Read() {
    if (ReadHeader()) {
      while (!line_.AtEnd() && ReadLine()) {
      }
    }
    RemarkCutResults(cut_results_, remarks_);
    result_.remarks = remarks_.Take();
    return std::move(result_);
  }

 private:
  bool Fail(std::string_view detail) {
    result_.error = ReadError{line_.Number(), std::string(detail)};
    return false;
  }

  void Remark(RemarkSeverity severity, std::int32_t line, std::int32_t column,
              std::string_view subject, std::string_view cell, std::string_view consequence) {
    remarks_.Add(severity, line, std::max(column, 0), subject, cell, consequence);
  }
  void Warn(std::int32_t column, std::string_view subject, std::string_view cell,
            std::string_view consequence) {
    Remark(RemarkSeverity::kWarning, line_.Number(), column, subject, cell, consequence);
  }
  void Note(std::int32_t column, std::string_view subject, std::string_view cell,
            std::string_view consequence) {
    Remark(RemarkSeverity::kNote, line_.Number(), column, subject, cell, consequence);
  }

  // Reads the six lines above the classes and moves to the line after them.
  bool ReadHeader() {
    std::array<std::string_view, 6> lines;
    std::size_t count = 0;
    for (LineCursor line = line_; count < lines.size() && !line.AtEnd(); line.Next()) {
      lines[count++] = line.Line();
    }
    const bool is_list = Contains(lines[2], kListTitle) || Contains(lines[3], kListApplication);
    if (count < 4 || !is_list) {
      return Fail(
          "not a SPORTident printout: neither \"SPORTident results\" in line 3 nor \"OE2003\" in "
          "line 4");
    }
    line_.Next();
    ReadTitle(lines[1]);
    ReadApplication(lines[3]);
    ReadTitleColumns(lines[5]);
    line_.Skip(5);
    return true;
  }

  // The event title, two or more spaces, the date and the time.
  void ReadTitle(std::string_view line) {
    line = TrimSpaces(line);
    const std::size_t gap = line.rfind("  ");
    if (gap == std::string_view::npos) {
      Warn(0, "title", line, "no date after two spaces; the event name and the date are not read");
      return;
    }
    result_.records.event_name = std::string(TrimSpaces(line.substr(0, gap)));
    const std::string_view rest = TrimSpaces(line.substr(gap));
    const std::size_t end = rest.find_first_of(" ,");
    std::string date(rest.substr(0, end));
    if (end != std::string_view::npos) {
      const std::string_view time = rest.substr(end + 1);
      date.append(" ").append(time.substr(0, time.find_first_of(" ,")));
    }
    const auto created = HeaderDate(date);
    if (!created) Warn(0, "creation date", rest, "is not a date and time and stays empty");
    result_.records.create_date = created.value_or(0);
  }

  void ReadApplication(std::string_view line) {
    std::string text(line);
    std::erase(text, '-');
    const std::string_view words = TrimSpaces(text);
    result_.records.create_application = std::string(words.substr(0, words.find(' ')));
  }

  void ReadTitleColumns(std::string_view line) {
    header_line_ = line;
    for (std::size_t i = 0; i < kTitleCount; ++i) {
      const std::size_t pos = line.find(kTitles[i]);
      titles_[i] = pos == std::string_view::npos
                       ? 0
                       : static_cast<std::int32_t>(DisplayWidth(line.substr(0, pos))) + 1;
    }
    const std::int32_t club = titles_[kCl];
    two_lines_ =
        club - titles_[kName] < kNarrowestWideName || titles_[kTime] - club <= kClubToResult;
  }

  // Reads a class line with its rows of controls, or one other line, and moves to the line after
  // it. False when reading has to stop.
  bool ReadLine() {
    const std::string_view line = line_.Line();
    if (line.empty() || line == header_line_) {
      line_.Next();
      return true;
    }
    if (line.front() != ' ') return ReadClassLine(line);
    LineColumns columns(line);
    if (IsRunner(columns) && !ReadRunner(columns)) return false;
    line_.Next();
    return true;
  }

  bool IsRunner(LineColumns& line) const { return !CellOf(line, titles_, kResultMark).empty(); }

  // --- classes ---

  bool ReadClassLine(std::string_view line) {
    if (!Contains(line, " ")) {
      Note(1, "line", line, "begins like a class but has only one word, skipped");
      line_.Next();
      return true;
    }
    const std::string folded = FoldSpaces(line);
    ClassRecords klass;
    const bool has_figures = ReadFigures(folded, klass);
    const LineCursor class_line = line_;
    line_.Next();
    ClassLayout layout = ReadControlRows();
    if (layout.legs == 0) {
      PassOver(class_line, has_figures);
      return true;
    }
    if (result_.records.classes.size() >= kMostClasses) return Fail(kTooManyClasses);
    if (!layout.has_finish) {
      Remark(RemarkSeverity::kNote, class_line.Number(), 1, "class", class_line.Line(),
             "has no finish among its controls; the last control is taken as the finish");
    }
    klass.name = ClassName(folded);
    klass.control_count = layout.legs - 1;
    klass.codes.assign(layout.codes.begin() + 1, layout.codes.begin() + layout.legs);
    result_.records.classes.push_back(std::move(klass));
    layout_ = std::move(layout);
    return true;
  }

  // A line without controls is the head of a page, and the current class continues after it. But
  // one with a length or climb is a class; without controls, its runners cannot be read.
  void PassOver(const LineCursor& line, bool has_figures) {
    if (has_figures) {
      layout_ = {};
      Remark(RemarkSeverity::kWarning, line.Number(), 1, "class", line.Line(),
             "no row of controls, the class is dropped");
    } else {
      Remark(RemarkSeverity::kNote, line.Number(), 1, "line", line.Line(),
             "begins like a class but no controls follow, skipped");
    }
  }

  // Reads the length and climb in any of their notations. False when there is neither.
  bool ReadFigures(std::string_view line, ClassRecords& klass) {
    bool found = false;
    std::string_view before;
    for (bool is_first = true; !line.empty(); is_first = false) {
      const std::size_t end = std::min(line.find_first_of(" ,"), line.size());
      const std::string_view token = line.substr(0, end);
      if (!is_first && ReadFigure(before, token, klass)) found = true;
      before = token;
      line.remove_prefix(std::min(end + 1, line.size()));
    }
    return found;
  }

  bool ReadFigure(std::string_view before, std::string_view token, ClassRecords& klass) {
    if (token == "Km" || token == "km") {
      klass.length = RoundToLong(FigureBefore("length", before) * kMetersPerKm);
    } else if (token == "Cm" || token == "m") {
      klass.climb = RoundToLong(FigureBefore("climb", before));
    } else if (const auto length = NumberBetween(token, "", "km")) {
      klass.length = RoundToLong(*length * kMetersPerKm);
    } else if (const auto climb = NumberBetween(token, "up", "m")) {
      klass.climb = RoundToLong(*climb);
    } else {
      return false;
    }
    return true;
  }

  double FigureBefore(std::string_view subject, std::string_view token) {
    const double value = LeadingNumber(token);
    if (!NumericValue(token))
      Note(0, subject, token, "is not a number; its leading digits are used");
    return value;
  }

  // Reads the rows of controls from the current line on and moves to the line after them.
  ClassLayout ReadControlRows() {
    ClassLayout layout;
    while (IsControlRow() && layout.groups.size() < kMostControlRows) {
      LegGroup& group = layout.groups.emplace_back();
      ReadControlRow(layout, group);
      if (group.last > 0) layout.legs = group.last;
      OrderCells(group);
      line_.Next();
    }
    while (layout.legs > 0 && IsControlRow()) {
      Warn(0, "controls", TrimSpaces(line_.Line()), "in a fifth row or below, the row is dropped");
      line_.Next();
    }
    return layout;
  }

  // A row of controls is blank where runners have their numbers, and its first word is a control.
  // The word has to decide in a printout without numbers and for runners without one.
  bool IsControlRow() const {
    const std::string_view line = line_.Line();
    const std::size_t begin = line.find_first_not_of(' ');
    if (begin == std::string_view::npos) return false;
    LineColumns columns(line);
    if (titles_[kStno] > 0 && !CellOf(columns, titles_, kIdMark).empty()) return false;
    const std::string_view word = line.substr(begin, line.find(' ', begin) - begin);
    return word == kFinish || ParseControl(word);
  }

  void ReadControlRow(ClassLayout& layout, LegGroup& group) {
    const std::string_view line = line_.Line();
    LineColumns columns(line);
    Place place;
    for (std::size_t pos = 0; (pos = line.find_first_not_of(' ', pos)) != std::string_view::npos;) {
      const std::size_t end = std::min(line.find(' ', pos), line.size());
      while (place.offset < end) place = place.Next(line);
      const std::int32_t first_column = place.column - kTimeCellWidth;
      const std::string_view cell = columns.Cell(first_column, kTimeCellWidth);
      if (cell == kFinish || line.substr(pos, end - pos) == kFinish) {
        AddFinish(layout, group, first_column);
        return;
      }
      AddControl(layout, group, first_column, cell);
      pos = end;
    }
  }

  void AddControl(ClassLayout& layout, LegGroup& group, std::int32_t column,
                  std::string_view cell) {
    const auto control = ParseControl(cell);
    if (!control) {
      Warn(column, "control", cell, "is not a leg and a code, skipped");
      return;
    }
    if (!AddLeg(group, control->leg, column, cell)) return;
    layout.codes[static_cast<std::size_t>(control->leg)] = control->code;
  }

  // The leg to the finish follows that to the last control, even if the finish has its own row.
  void AddFinish(ClassLayout& layout, LegGroup& group, std::int32_t column) {
    AddLeg(group, (group.first > 0 ? group.last : layout.legs) + 1, column, kFinish);
    layout.has_finish = true;
  }

  bool AddLeg(LegGroup& group, std::int32_t leg, std::int32_t column, std::string_view cell) {
    if (leg > kMostLegs) {
      Warn(column, "control", cell, "is beyond the maximum of 50 legs and is dropped");
      return false;
    }
    if (group.first == 0) group.first = leg;
    group.last = leg;
    group.columns[static_cast<std::size_t>(leg)] = column;
    return true;
  }

  // --- runners ---

  bool ReadRunner(LineColumns& line) {
    if (layout_.legs == 0) {
      Warn(0, "runner", TrimSpaces(line_.Line()), "belongs to no class that could be read");
      return true;
    }
    if (runners_ >= kMostRunners) return Fail(kTooManyRunners);
    ++runners_;
    const auto runner = std::make_shared<clsLapData>();
    runner->Rank = CellOf(line, titles_, kRankCell);
    if (titles_[kStno] > 0) runner->ID = ReadId(CellOf(line, titles_, kIdCell));
    ReadNameAndClub(line, *runner);
    ReadLaps(*runner);
    runner->SetResult(ReadResultCell(CellOf(line, titles_, kResultCell), *runner));
    result_.records.classes.back().runners.push_back(runner);
    return true;
  }

  std::int32_t ReadId(std::string_view cell) {
    if (!cell.empty() && !NumericValue(cell)) {
      Note(titles_[kStno], "start number", cell, "is not a number; its leading digits are used");
    }
    return LeadingLong(cell);
  }

  void ReadNameAndClub(LineColumns& line, clsLapData& runner) {
    const std::int32_t name = titles_[kName];
    const std::int32_t club = titles_[kCl];
    if (!two_lines_) {
      runner.RunnerName = line.Cell(name, club - name);
      runner.ClubName = line.Cell(club, titles_[kTime] - club - kClubToResult);
      return;
    }
    runner.RunnerName = CellOf(line, titles_, kNarrowNameCell);
    LineCursor below = line_;
    below.Next();
    LineColumns columns(below.Line());
    if (!BelongsToRunner(below, columns)) return;
    std::string text(CellOf(columns, titles_, kNarrowNameCell));
    std::erase(text, '_');
    runner.ClubName = TrimSpaces(text);
  }

  // False for the next runner or class: rows of a runner can be missing.
  bool BelongsToRunner(const LineCursor& below, LineColumns& columns) const {
    const std::string_view line = below.Line();
    return !below.AtEnd() && (line.empty() || line.front() == ' ') && !IsRunner(columns);
  }

  // Below the line of a runner there is a row of laps for each group, with rows of splits between.
  void ReadLaps(clsLapData& runner) {
    LineCursor row = line_;
    bool missing = false;
    for (std::size_t g = 0; g < layout_.groups.size(); ++g) {
      for (int step = g == 0 ? 1 : 2; step > 0 && !missing; --step) {
        row.Next();
        LineColumns columns(row.Line());
        missing = !BelongsToRunner(row, columns);
      }
      ReadLapRow(layout_.groups[g], missing ? "" : row.Line(), row.Number(), runner);
    }
    if (missing) Note(0, "runner", runner.RunnerName, "rows of laps are missing");
  }

  void ReadLapRow(const LegGroup& group, std::string_view line, std::int32_t number,
                  clsLapData& runner) {
    LineColumns columns(line);
    for (const LegCell& cell : group.cells) {
      const std::string_view text =
          cell.column != kNoCell ? columns.Cell(cell.column, kTimeCellWidth) : std::string_view();
      runner.SetLap(cell.leg, ReadLap(text, number, cell));
    }
  }

  DateTime ReadLap(std::string_view text, std::int32_t line, const LegCell& cell) {
    if (IsMissing(text)) return kTimeDisq;
    const auto time = CellTime(text);
    if (!time) {
      Remark(RemarkSeverity::kWarning, line, cell.column, "lap", text,
             "is not a time and is read as a missing punch");
      return kTimeDisq;
    }
    return *time;
  }

  std::string ReadResultCell(std::string_view cell, const clsLapData& runner) {
    const CellValue value = ReadCellTime(cell);
    if (value.time) {
      cut_results_ += CutsResult(*value.time) ? 1 : 0;
      return ResultText(*value.time, value.has_fraction);
    }
    const std::string text = NormalizeTimeText(cell, Digits::kElapsed);
    if (text == kDnf.word) return std::string(kDnf.result);
    if (text == kDns.word) return std::string(kDns.result);
    if (text == kMispunch.word) return MispunchResult(runner);
    if (text != kDisqualified.word) {
      Note(titles_[kTime] + kResultCell.offset, "result", cell, "is read as DISQ");
    }
    return std::string(kDisqualified.result);
  }

  // A runner without a time at the finish did not finish. "P0" would be sorted before every time.
  std::string MispunchResult(const clsLapData& runner) const {
    const auto missed = [&](std::int32_t leg) {
      return LapDataInternal::Lap(runner, leg) == kTimeDisq;
    };
    if (missed(layout_.legs)) return std::string(kDnf.result);
    int count = 0;
    for (std::int32_t leg = 1; leg < layout_.legs; ++leg) count += missed(leg) ? 1 : 0;
    return count == 0 ? std::string(kMispunch.result) : "P" + std::to_string(count);
  }

  LineCursor line_;
  ReadResult result_;
  RemarkList remarks_;
  std::size_t cut_results_ = 0;
  std::string_view header_line_;
  TitleColumns titles_{};
  bool two_lines_ = false;
  ClassLayout layout_;  // of the last class; without legs when its runners are dropped
  std::size_t runners_ = 0;
};

}  // namespace

ReadResult ReadSportIdent(std::string_view text) { return SportIdentReader(text).Read(); }

}  // namespace keltrun
