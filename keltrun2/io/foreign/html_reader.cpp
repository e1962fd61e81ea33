#include "keltrun2/io/foreign/html_reader.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "keltrun2/codec/html.h"
#include "keltrun2/io/foreign/html_page.h"
#include "keltrun2/io/foreign/page_columns.h"
#include "keltrun2/io/foreign/page_headings.h"
#include "keltrun2/io/foreign/page_splits.h"
#include "keltrun2/io/foreign/page_texts.h"
#include "keltrun2/io/foreign/refusal.h"
#include "keltrun2/io/limits.h"
#include "keltrun2/text/letters.h"

namespace keltrun {
namespace {

// A record keeps 50 legs; what is beyond them is joined. No course has this many.
constexpr std::int32_t kMostLabels = 150;

bool HasText(const PageCell& cell) { return !cell.text.empty(); }

// All cells as one text. Two blanks keep them apart.
std::string Joined(const PageRow& row) {
  std::string text;
  for (const PageCell& cell : row.cells) {
    if (cell.text.empty()) continue;
    if (!text.empty()) text += "  ";
    text += cell.text;
  }
  return text;
}

std::string OneLine(std::string_view text) {
  std::string line(text);
  std::replace(line.begin(), line.end(), '\n', ' ');
  return line;
}

// Whether a cell has a colon between digits, or is a time with a point. Rows of labels, titles and
// classes have none.
bool LooksLikeTime(const PageCell& cell) {
  const std::string_view text = cell.text;
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos) return HasPointTime(text) && !HasLetter(text);
  return colon > 0 && colon + 1 < text.size() && IsDigit(text[colon - 1]) &&
         IsDigit(text[colon + 1]);
}

bool HasAnyTime(std::string_view text) {
  const auto times = TimesIn(text, false);
  return std::any_of(times.begin(), times.end(), [](PageTime time) { return time.has_value(); });
}

// A bare number below a title row's other titles: the number of a control, or its code.
std::optional<ControlLabel> BareLabel(std::string_view text, std::int32_t next_number) {
  constexpr std::size_t kLongest = 4;
  if (text.empty() || text.size() > kLongest || !IsDigits(text)) return std::nullopt;
  ControlLabel label;
  label.number = next_number;
  if (text != std::to_string(next_number)) label.code = text;
  return label;
}

// The labels in a row, of which the first one has this number. None unless everything else in the
// row is a title or stands before the labels.
LabelRow LabelsIn(const PageRow& row, std::int32_t next_number) {
  LabelRow labels;
  const auto titles = TitledColumns(row);
  bool by_legs = false;
  for (const PageCell& cell : row.cells) {
    if (!HasText(cell)) continue;
    auto label = ReadControlLabel(cell.text);
    if (!label && titles && cell.column > titles->name) label = BareLabel(cell.text, next_number);
    if (!label) {
      if (!labels.labels.empty() && ColumnTitleOf(cell.text) == ColumnTitle::kNone) return {};
      continue;
    }
    by_legs |= label->is_leg;
    if (by_legs && !label->is_leg && !label->is_finish && label->number + 1 == next_number) {
      // "1-2" after "S-1" is the leg to control 2.
      ++label->number;
      label->code.clear();
    }
    if (!label->is_finish && label->number != next_number) return {};
    ++next_number;
    labels.labels.push_back(std::move(*label));
    labels.columns.push_back(cell.column);
    labels.ends.push_back(cell.end);
    labels.last_span = cell.span;
  }
  return labels;
}

// "(100)" or "100".
std::string_view BareCode(std::string_view text) {
  if (text.size() > 2 && (text.front() == '(' || text.front() == '[')) {
    text = text.substr(1, text.size() - 2);
  }
  return IsPlaceCell(text) ? text : std::string_view();
}

class PageReader {
 public:
  ReadResult Read(std::string_view text) {
    const PageFacts page = ReadPageRows(text, [this](PageRow& row) { OnRow(row); });
    EndRunner();
    const std::string format = FormatName(page);
    if (event_.RunnerCount() == 0) return Refuse(format);
    std::erase_if(event_.Classes(),
                  [](const ForeignClass& klass) { return klass.runners.empty(); });
    ReadHeader(page);
    ConcludeStatuses();
    RemarkAll(page);
    return FinishReading(std::move(event_), remarks_, format);
  }

 private:
  void OnRow(PageRow& row) {
    if (runner_count_ > kMostRunners) return;  // an error at the end
    if (std::none_of(row.cells.begin(), row.cells.end(), HasText)) return OnBlankRow(row);
    if (row.kind == RowKind::kText || row.kind == RowKind::kHeading) {
      return AddText(row, row.kind == RowKind::kHeading);
    }
    const bool has_times = HasTimes(row);
    if (!has_times && (OnLabels(row) || OnCodes(row) || OnTitles(row) || OnClass(row))) return;
    after_labels_ = false;
    if (!label_rows_.empty()) return OnRunnerRow(row);
    results_ += has_times && titles_ && HasAnyTime(TextAt(row, titles_->total)) ? 1 : 0;
    AddText(row, false);
  }

  // --- what stands above the runners ---

  void AddText(const PageRow& row, bool is_heading) {
    const auto first = std::find_if(row.cells.begin(), row.cells.end(), HasText);
    headings_.Add(OneLine(Joined(row)), first->text, is_heading);
  }

  bool OnLabels(const PageRow& row) {
    const bool goes_on = after_labels_ && !last_label_is_finish_;
    LabelRow labels = LabelsIn(row, goes_on ? label_count_ + 1 : 1);
    if (labels.labels.empty()) return false;
    if (!goes_on && labels.labels.size() == 1 && labels.labels.front().is_finish) return false;
    EndRunner();
    if (!goes_on) {
      label_rows_.clear();
      label_count_ = 0;
      columns_.reset();
      plain_lines_ = PlainLines();
      begins_class_ = true;
    }
    if (const auto titles = TitledColumns(row)) {
      SetTitles(row, *titles);
    } else {
      AddTextBefore(row, labels.columns.front());
    }
    if (row.kind == RowKind::kPlain) NumberPlainLabels(labels);
    is_preformatted_ |= row.kind != RowKind::kTable;
    after_labels_ = true;
    last_label_is_finish_ = labels.labels.back().is_finish;
    label_count_ += static_cast<std::int32_t>(labels.labels.size());
    most_labels_ = std::max(goes_on ? most_labels_ : 0, labels.labels.size());
    if (label_count_ <= kMostLabels) {
      label_rows_.push_back(std::move(labels));
    } else {
      ++long_courses_;
    }
    return true;
  }

  static void NumberPlainLabels(LabelRow& labels) {
    std::int32_t column = PlainLines::kFirstLabel;
    for (std::int32_t& of_label : labels.columns) of_label = column++;
  }

  // The class can stand in the row of the labels.
  void AddTextBefore(const PageRow& row, std::int32_t first_label) {
    PageRow before;
    for (const PageCell& cell : row.cells) {
      if (cell.column < first_label && IsPageName(cell.text)) before.cells.push_back(cell);
    }
    if (!before.cells.empty()) AddText(before, true);
  }

  // The codes below the numbers of the controls.
  bool OnCodes(const PageRow& row) {
    if (!after_labels_) return false;
    LabelRow& labels = label_rows_.back();
    std::vector<std::string_view> codes;
    for (std::size_t i = 0; i < labels.labels.size(); ++i) {
      const std::string_view text = TextAt(row, labels.columns[i]);
      codes.push_back(labels.labels[i].is_finish ? std::string_view() : BareCode(text));
      const bool is_missing = codes.back().empty() && !labels.labels[i].is_finish;
      if (is_missing || !labels.labels[i].code.empty()) return false;
    }
    for (std::size_t i = 0; i < codes.size(); ++i) labels.labels[i].code = codes[i];
    return true;
  }

  void SetTitles(const PageRow& row, const PageColumns& titles) {
    titles_ = titles;
    columns_.reset();
    for (const PageCell& cell : row.cells) {
      if (ColumnTitleOf(cell.text) == ColumnTitle::kUnused) unused_titles_.insert(cell.text);
    }
  }

  bool OnTitles(const PageRow& row) {
    const auto titles = TitledColumns(row);
    if (!titles) return false;
    EndRunner();
    SetTitles(row, *titles);
    return true;
  }

  // A row with the length, climb or number of runners of a class, or with one text across the
  // columns before the times.
  bool OnClass(const PageRow& row) {
    const auto first = std::find_if(row.cells.begin(), row.cells.end(), HasText);
    if (first->column > 0) return false;
    const bool is_wide = !label_rows_.empty() &&
                         std::none_of(std::next(first), row.cells.end(), HasText) &&
                         first->span >= label_rows_.front().columns.front() && first->span > 1;
    const ClassLine line = ReadClassLine(OneLine(Joined(row)));
    if (!line.has_numbers && !is_wide) return false;
    // "Club (2)" below a name in the first column.
    const bool can_be_club = !runner_rows_.empty() && columns_->name == 0 && first->span == 1;
    if (can_be_club && line.length == 0 && line.climb == 0) return false;
    EndRunner();
    AddText(row, true);
    return true;
  }

  // --- runners ---

  void OnRunnerRow(PageRow& row) {
    if (row.kind == RowKind::kPlain) plain_lines_.Arrange(row, most_labels_);
    if (begins_class_ || headings_.HasHeading()) {
      EndRunner();
      if (auto found = headings_.TakeClass()) class_line_ = std::move(*found);
      begins_class_ = false;
    }
    if (!columns_) columns_ = FindColumns(row);
    if (BeginsRunner(row)) {
      EndRunner();
      runner_rows_.push_back(std::move(row));
    } else if (!runner_rows_.empty() && TextAt(row, columns_->place).empty()) {
      AddRow(row);
    } else {
      ++stray_rows_;
    }
  }

  // Laps of which none exists are a blank row.
  void OnBlankRow(PageRow& row) {
    const bool can_have_times = columns_ && row.cells.back().column + 1 >= FirstLabel() + Shift();
    if (!runner_rows_.empty() && can_have_times) AddRow(row);
  }

  void AddRow(PageRow& row) {
    if (runner_rows_.size() < 2 * label_rows_.size() + 2) {
      runner_rows_.push_back(std::move(row));
    } else {
      ++stray_rows_;
    }
  }

  std::int32_t FirstLabel() const { return label_rows_.front().columns.front(); }

  PageColumns FindColumns(const PageRow& row) const {
    if (row.kind == RowKind::kPlain) return PlainLines::Columns();
    PageColumns found = ColumnsOfRunner(row, FirstLabel());
    if (!titles_ || !IsPageName(TextAt(row, titles_->name))) return found;
    PageColumns titled = *titles_;
    if (titled.total == kNoColumn) titled.total = found.total;
    return titled;
  }

  // How far the times are to the right of their labels: a page may have more columns before the
  // times than before the labels.
  std::int32_t Shift() const { return std::max(columns_->total + 1 - FirstLabel(), 0); }

  // Otherwise the row continues the one before, with laps, further times or the club.
  bool BeginsRunner(const PageRow& row) const {
    if (TextAt(row, columns_->name).empty()) return false;
    const std::string_view place = TextAt(row, columns_->place);
    if (!PlaceIn(place).empty() || StatusOfPageWord(place)) return true;
    if (!TextAt(row, columns_->bib).empty()) return true;
    if (runner_rows_.empty() || columns_->club != kNoColumn) return HasTotal(row) || HasTimes(row);
    return HasTotal(row) ||
           (HasTimes(row) && (runner_rows_.size() > 1 || (has_lone_rows_ && !has_clubs_below_)));
  }

  bool HasTotal(const PageRow& row) const {
    const std::string_view total = TextAt(row, columns_->total);
    return HasAnyTime(total) || StatusOfTotal(total);
  }

  static bool HasTimes(const PageRow& row) {
    return std::any_of(row.cells.begin(), row.cells.end(), LooksLikeTime);
  }

  void EndRunner() {
    if (runner_rows_.empty()) return;
    while (
        std::none_of(runner_rows_.back().cells.begin(), runner_rows_.back().cells.end(), HasText)) {
      runner_rows_.pop_back();
    }
    const PageRow& top = runner_rows_.front();
    const std::string club_below = ClubBelow();
    if (!club_below.empty() && !has_clubs_below_) {
      has_clubs_below_ = true;
      MoveEarlyRunners();
    }
    has_lone_rows_ |= runner_rows_.size() == 1;
    ForeignRunner runner;
    runner.line = top.line;
    TakeTexts(top, runner);
    if (runner.club.empty()) runner.club = club_below;
    const std::string_view place = TextAt(top, columns_->place);
    runner.rank = PlaceIn(place);
    runner.status = StatusOfPageWord(place);
    const bool point_times = HavePointTimes(runner_rows_);
    TakeTotal(TextAt(top, columns_->total), point_times, runner);
    TakeSplits(point_times, runner);
    CountExtraPunches();
    ForeignClass& klass = ClassOf(top);
    klass.control_count = std::max(klass.control_count, CountControls());
    klass.has_codes = HaveCodes();
    klass.runners.push_back(std::move(runner));
    ++runner_count_;
    runner_rows_.clear();
  }

  // The name, and below it in the same cell perhaps the club.
  void TakeTexts(const PageRow& top, ForeignRunner& runner) {
    const std::string_view name = TextAt(top, columns_->name);
    const std::size_t line_end = std::min(name.find('\n'), name.size());
    runner.name = name.substr(0, line_end);
    runner.club = OneLine(TextAt(top, columns_->club));
    if (runner.club.empty() && line_end < name.size()) {
      runner.club = OneLine(name.substr(line_end + 1));
    }
    if (runner.club.empty() && !has_clubs_below_) {
      runner.club = OneLine(TextAt(top, columns_->other));
      any_other_text_ |= !runner.club.empty();
    }
    runner.bib = TextAt(top, columns_->bib);
    runner.card = TextAt(top, columns_->card);
    runner.nationality = TextAt(top, columns_->nationality);
    runner.sex = TextAt(top, columns_->sex);
    runner.age = TextAt(top, columns_->age);
    runner.start = ForeignClock(TextAt(top, columns_->start));
  }

  std::string ClubBelow() const {
    for (std::size_t i = 1; i < runner_rows_.size(); ++i) {
      const std::string_view text = TextAt(runner_rows_[i], columns_->name);
      if (!text.empty()) return OneLine(text);
    }
    return {};
  }

  void TakeSplits(bool point_times, ForeignRunner& runner) {
    const std::vector<PageTime> splits =
        RunnerSplits(runner_rows_, label_rows_, Shift(), runner.time, point_times, habits_);
    const auto has_time = [](const PageTime& time) { return time.has_value(); };
    if (std::none_of(splits.begin(), splits.end(), has_time)) return;
    auto split = splits.begin();
    for (const LabelRow& row : label_rows_) {
      for (const ControlLabel& label : row.labels) {
        const std::int32_t code =
            label.is_finish ? ForeignEvent::kFinishCode : event_.Code(label.code);
        runner.punches.push_back({code, *split++});
      }
    }
  }

  std::int32_t CountControls() const {
    std::int32_t count = 0;
    for (const LabelRow& row : label_rows_) {
      for (const ControlLabel& label : row.labels) count += label.is_finish ? 0 : 1;
    }
    return count;
  }

  bool HaveCodes() const {
    for (const LabelRow& row : label_rows_) {
      for (const ControlLabel& label : row.labels) {
        if (!label.is_finish && !label.code.empty()) return true;
      }
    }
    return false;
  }

  // Punches of controls that are not on the course are marked with an asterisk.
  void CountExtraPunches() {
    for (const PageRow& row : runner_rows_) {
      for (const PageCell& cell : row.cells) {
        const std::string_view text = cell.text;
        extra_punches_ += text.size() > 1 && text.front() == '*' && IsDigit(text[1]) ? 1 : 0;
      }
    }
  }

  // A page of courses names the class of each runner.
  ForeignClass& ClassOf(const PageRow& top) {
    const bool other_is_class = columns_->klass == kNoColumn && has_clubs_below_;
    return ClassNamed(OneLine(TextAt(top, other_is_class ? columns_->other : columns_->klass)));
  }

  ForeignClass& ClassNamed(std::string name) {
    if (!name.empty() && name != class_line_.name) classes_of_courses_.insert(name);
    if (name.empty()) name = class_line_.name.empty() ? kNameless : class_line_.name;
    ForeignClass& klass = event_.ClassNamed(name);
    if (klass.length == 0) klass.length = class_line_.length;
    if (klass.climb == 0) klass.climb = class_line_.climb;
    return klass;
  }

  // The text after the name was taken for the club. Now the first club is found below a name, so it
  // was the class.
  void MoveEarlyRunners() {
    if (!any_other_text_) return;
    const ClassLine current = class_line_;
    const std::size_t courses = event_.Classes().size();
    for (std::size_t i = 0; i < courses; ++i) {
      ForeignClass& course = event_.Classes()[i];
      class_line_ = {course.name, course.length, course.climb, false};
      const bool has_codes = course.has_codes;
      const std::int32_t controls = course.control_count;
      for (ForeignRunner& runner : std::exchange(course.runners, {})) {
        ForeignClass& klass = ClassNamed(std::exchange(runner.club, {}));
        klass.has_codes = has_codes;
        klass.control_count = controls;
        klass.runners.push_back(std::move(runner));
      }
    }
    class_line_ = current;
  }

  // --- the end ---

  void ReadHeader(const PageFacts& page) {
    LapRecords& header = event_.Header();
    const std::string name = headings_.EventName(page.title);
    if (!name.empty()) header.event_name = name;
    header.event_date = headings_.EventDate(page.title);
    if (!page.generator.empty()) header.create_application = page.generator;
  }

  // What the times and places of a class say about runners without a status of their own.
  void ConcludeStatuses() {
    for (ForeignClass& klass : event_.Classes()) {
      const bool has_places = std::any_of(klass.runners.begin(), klass.runners.end(),
                                          [](const auto& runner) { return !runner.rank.empty(); });
      const bool of_course = classes_of_courses_.count(klass.name) > 0;
      TakePlacesOfTies(klass);
      for (ForeignRunner& runner : klass.runners) {
        if (!runner.status && runner.time) ConcludeStatus(runner, has_places);
        if (of_course) runner.rank.clear();
      }
    }
  }

  // A runner with the time of the one above may have no place of their own.
  static void TakePlacesOfTies(ForeignClass& klass) {
    for (std::size_t i = 1; i < klass.runners.size(); ++i) {
      const ForeignRunner& above = klass.runners[i - 1];
      ForeignRunner& runner = klass.runners[i];
      const bool is_tie =
          runner.rank.empty() && !runner.status && runner.time && runner.time == above.time;
      if (is_tie) runner.rank = above.rank;
    }
  }

  void ConcludeStatus(ForeignRunner& runner, bool has_places) {
    const bool has_all = std::all_of(runner.punches.begin(), runner.punches.end(),
                                     [](const Punch& punch) { return punch.time.has_value(); });
    if (!runner.rank.empty() || (has_all && !has_places)) {
      runner.status = RunnerStatus::kOk;
    } else if (has_all) {
      runner.status = RunnerStatus::kNotCompeting;
      ++without_place_;
    }
  }

  void Note(std::string_view subject, std::string_view text) {
    remarks_.Add(RemarkSeverity::kNote, 0, 0, subject, "", text);
  }

  void Warn(std::string_view subject, std::string_view text) {
    remarks_.Add(RemarkSeverity::kWarning, 0, 0, subject, "", text);
  }

  void RemarkAll(const PageFacts& page) {
    if (!page.is_complete) {
      Warn("page",
           "elements are nested too deeply, or one has too many attributes: the page is "
           "read up to there");
    }
    if (extra_punches_ > 0) {
      Note("punches", std::to_string(extra_punches_) + " additional punches are not used");
    }
    if (without_place_ > 0) {
      Note("status", std::to_string(without_place_) +
                         " with a time but no place: read as outside the competition");
    }
    if (!classes_of_courses_.empty()) {
      Note("classes",
           "the page lists courses: runners are in the classes that it names beside "
           "them, and their places on the course are not read");
    }
    if (habits_.lost_laps > 0) {
      Warn("laps", std::to_string(habits_.lost_laps) +
                       " after a missed control are not read: the page has no splits, so it is "
                       "not known when they began");
    }
    if (long_courses_ > 0) {
      Warn("controls", "more than " + std::to_string(kMostLabels) +
                           " of a class: the rows of labels after them are not read");
    }
    if (stray_rows_ > 0) {
      Warn("rows", std::to_string(stray_rows_) + " belong to no runner and are not read");
    }
    for (const std::string& title : unused_titles_) {
      remarks_.Add(RemarkSeverity::kNote, 0, 0, "column", title, "not read");
    }
    for (const ForeignClass& klass : event_.Classes()) {
      if (klass.name == kNameless) Note("class", "a class without a name is called \"-\"");
    }
  }

  static std::string FormatName(const PageFacts& page, bool is_preformatted) {
    if (page.has_script) return "SiTiming page";
    return is_preformatted ? "result page, preformatted" : "result page, tables";
  }

  std::string FormatName(const PageFacts& page) const { return FormatName(page, is_preformatted_); }

  ReadResult Refuse(const std::string& format) {
    constexpr std::size_t kFewResults = 2;
    Refusal refusal = Refusal::kWebPage;
    if (results_ >= kFewResults) refusal = Refusal::kNoSplits;
    if (!label_rows_.empty()) refusal = Refusal::kNoResults;
    return FinishReading(std::move(event_), remarks_, format,
                         ReadError{0, RefusalText(refusal, format)});
  }

  static constexpr const char* kNameless = "-";

  RemarkList remarks_;
  ForeignEvent event_{remarks_};
  PageHeadings headings_;
  PageHabits habits_;
  PlainLines plain_lines_;

  std::optional<PageColumns> titles_;  // by the last row of titles
  std::vector<LabelRow> label_rows_;   // of the class
  std::int32_t label_count_ = 0;
  std::size_t most_labels_ = 0;  // in a row
  bool after_labels_ = false, last_label_is_finish_ = false;
  bool begins_class_ = false;  // there are new labels, and no runner yet
  bool is_preformatted_ = false;

  ClassLine class_line_;
  std::optional<PageColumns> columns_;  // of the class
  std::vector<PageRow> runner_rows_;    // of the runner that is read
  bool has_clubs_below_ = false, has_lone_rows_ = false;
  bool any_other_text_ = false;  // was taken for a club

  std::set<std::string> classes_of_courses_, unused_titles_;
  std::size_t runner_count_ = 0, results_ = 0;
  std::size_t extra_punches_ = 0, stray_rows_ = 0, without_place_ = 0, long_courses_ = 0;
};

}  // namespace

bool LooksLikeHtml(std::string_view text) { return BeginsAsHtml(text); }

ReadResult ReadHtml(std::string_view text, const ForeignOptions&) {
  return PageReader().Read(text);
}

}  // namespace keltrun
