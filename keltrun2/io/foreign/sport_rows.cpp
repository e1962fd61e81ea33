#include "keltrun2/io/foreign/sport_rows.h"

#include <algorithm>

#include "keltrun2/text/letters.h"
#include "keltrun2/text/numbers.h"

namespace keltrun {
namespace {

using enum SportField;

constexpr std::size_t kHeadCells = 3;  // the first cells tell a head that stands in the list again

bool HasDigit(std::string_view text) {
  return text.find_first_of("0123456789") != std::string_view::npos;
}

// A split of 0 after other ones is written for a control without a punch.
bool IsNoPunch(std::optional<Milliseconds> split, const ForeignRunner& runner) {
  return split == Milliseconds{0} &&
         std::any_of(runner.punches.begin(), runner.punches.end(),
                     [](const Punch& punch) { return punch.time.value_or(0) > 0; });
}

bool HasPunchTime(const ForeignRunner& runner) {
  return std::any_of(runner.punches.begin(), runner.punches.end(),
                     [](const Punch& punch) { return punch.time.has_value(); });
}

// A length without decimals that is too large for kilometers is one in meters.
std::int32_t CourseLength(std::string_view cell) {
  constexpr std::size_t kMostKilometerDigits = 2;
  if (cell.size() > kMostKilometerDigits && IsDigits(cell)) return Meters(cell, "m");
  return Meters(cell, "km");
}

std::string_view Rank(std::string_view cell) {
  if (cell.ends_with('.')) cell.remove_suffix(1);
  return IsDigits(cell) ? cell : std::string_view();
}

// A time of day, perhaps after a date, or the time since the first start.
std::optional<Milliseconds> StartClock(std::string_view cell) {
  cell.remove_prefix(cell.rfind(' ') + 1);
  if (cell.empty()) return std::nullopt;
  std::string buffer;
  cell = WithColons(cell, buffer);
  if (const auto clock = ForeignClock(cell)) return clock;
  const auto time = ForeignTime(cell);
  return time && *time >= 0 && *time < kMillisecondsOfDay ? time : std::nullopt;
}

}  // namespace

SportRows::SportRows(std::string_view text, const SportColumns& columns, ForeignEvent& event,
                     RemarkList& remarks)
    : columns_(columns), event_(event), remarks_(remarks), rows_(text, columns.separator, remarks) {
  for (const SportField field : {kSurname, kFirstName, kName, kClassShort}) {
    fewest_cells_ =
        std::max(fewest_cells_, static_cast<std::size_t>(std::max(columns.At(field) + 1, 0)));
  }
  for (std::size_t row = 0; row < columns.rows_above; ++row) rows_.Next();
  if (columns.rows_above > 0) {
    remarks.Add(RemarkSeverity::kNote, 1, 0, "lines before the header", "",
                std::to_string(columns.rows_above) + " skipped");
  }
  if (!columns.has_head || !rows_.Next()) return;
  const auto& cells = rows_.Cells();
  head_.assign(cells.begin(),
               cells.begin() + static_cast<std::ptrdiff_t>(std::min(cells.size(), kHeadCells)));
}

bool SportRows::Next() {
  while (rows_.Next()) {
    if (!IsHead() && IsWhole()) return true;
  }
  return false;
}

// Lists that were joined have their heads inside.
bool SportRows::IsHead() const {
  const auto& cells = rows_.Cells();
  return !head_.empty() && cells.size() >= head_.size() &&
         std::equal(head_.begin(), head_.end(), cells.begin());
}

bool SportRows::IsWhole() const {
  const auto& cells = rows_.Cells();
  if (cells.size() < fewest_cells_) {
    const std::string size =
        std::to_string(cells.size()) + (cells.size() == 1 ? " cell" : " cells");
    remarks_.Add(RemarkSeverity::kWarning, Line(), 0, "line", "",
                 size + " where at least " + std::to_string(fewest_cells_) +
                     " are expected; the line is not read");
    return false;
  }
  if (!columns_.controls) return true;
  const std::size_t code = columns_.controls->begin + (columns_.controls->width == 4 ? 1 : 0);
  if (code + 1 >= cells.size()) return true;
  const bool is_time = !HasDigit(cells[code + 1]) || HasTimeSign(cells[code + 1]);
  if (!HasTimeSign(cells[code]) && is_time) return true;
  remarks_.Add(RemarkSeverity::kWarning, Line(), static_cast<std::int32_t>(code + 1), "cell",
               cells[code],
               "expected the code of the first control, and its time in the next cell; the line is "
               "not read. Perhaps a text before it contains the separator");
  return false;
}

std::string_view SportRows::ClassName() const {
  for (const SportField field : {kClassShort, kClassLong, kCourse}) {
    if (const std::string_view name = Cell(field); !name.empty()) return name;
  }
  return "-";
}

bool SportRows::AddRunner(std::string_view class_name, std::string_view club) {
  ForeignRunner runner = ReadRunner(club);
  const bool nameless =
      runner.name.empty() && runner.family_name.empty() && runner.given_name.empty();
  const bool has_result =
      runner.time || (runner.status && *runner.status != RunnerStatus::kOk) || HasPunchTime(runner);
  if (nameless && !has_result) {
    CountOne(vacant_);
    return false;
  }
  if (nameless) {
    CountOne(nameless_);
    runner.name = !runner.bib.empty() ? runner.bib : !runner.card.empty() ? runner.card : "-";
  }
  has_results_ |= has_result;
  has_start_times_ |= runner.start.has_value();
  ForeignClass& klass = Class(class_name);
  ReadClass(klass, runner);
  last_.second = klass.runners.size();
  const std::string_view start = Cell(kStart).empty() ? Cell(kStartPunch) : Cell(kStart);
  if (runner.start && std::count(start.begin(), start.end(), ':') == 1) {
    if (ForeignClock(start)) {
      short_starts_.push_back(last_);
    } else {
      starts_without_hours_ = true;
    }
  }
  klass.runners.push_back(std::move(runner));
  ++runners_;
  return true;
}

// Rows of a class usually follow each other.
ForeignClass& SportRows::Class(std::string_view name) {
  if (runners_ > 0 && name == class_name_) return event_.Classes()[last_.first];
  ForeignClass& klass = event_.ClassNamed(name);
  class_name_ = name;
  last_.first = static_cast<std::size_t>(&klass - event_.Classes().data());
  return klass;
}

void SportRows::ReadClass(ForeignClass& klass, ForeignRunner& runner) const {
  if (klass.length == 0) klass.length = CourseLength(Cell(kLength));
  if (klass.climb == 0) klass.climb = Meters(Cell(kClimb), "m");
  const auto count = static_cast<std::int32_t>(control_count_);
  if (klass.control_count == 0) klass.control_count = count;
  if (count != klass.control_count) runner.control_count = count;
}

ForeignRunner SportRows::ReadRunner(std::string_view club) {
  ForeignRunner runner;
  runner.line = Line();
  runner.club = club;
  runner.bib = Cell(kBib).empty() ? Cell(kStartNumber) : Cell(kBib);
  runner.card = Cell(kCard) == "0" ? std::string_view() : Cell(kCard);
  runner.sex = Cell(kSex);
  runner.nationality = Cell(kNation);
  runner.competitor_id = Cell(kCompetitorId);
  runner.rank = Rank(Cell(kPlace));
  ReadNames(runner);
  ReadTimes(runner);
  ReadPunches(runner);
  ReadStatus(runner);
  return runner;
}

void SportRows::ReadNames(ForeignRunner& runner) const {
  if (columns_.Has(kFirstName)) {
    runner.family_name = Cell(kSurname);
    runner.given_name = Cell(kFirstName);
  } else {
    runner.name = columns_.Has(kName) ? Cell(kName) : Cell(kSurname);
  }
}

void SportRows::ReadTimes(ForeignRunner& runner) {
  const auto either = [this](SportField first, SportField second) {
    return Cell(first).empty() ? StartClock(Cell(second)) : StartClock(Cell(first));
  };
  runner.start = either(kStart, kStartPunch);
  runner.finish = either(kFinish, kFinishPunch);
  runner.time = SportTime(Cell(kTime));
  if (runner.time == Milliseconds{0}) runner.time = std::nullopt;  // written for no time
  if (!SportTime(Cell(kTime)) && HasDigit(Cell(kTime))) CountOne(bad_times_);
  const auto changes = [this](SportField field) { return SportTime(Cell(field)).value_or(0) != 0; };
  if (changes(kCredit) || changes(kPenalty)) CountOne(adjusted_);
}

void SportRows::ReadPunches(ForeignRunner& runner) {
  control_count_ = 0;
  if (!columns_.controls) return;
  const auto [begin, width] = *columns_.controls;
  const bool only_radio = width == 4 && !columns_.is_relay;  // the others are not in the list
  const std::string_view count = Cell(kControlCount);
  if (!only_radio && count.size() <= 3 && IsDigits(count)) {
    control_count_ = static_cast<std::size_t>(NumericLong(count));
  }
  const auto& cells = rows_.Cells();
  const std::size_t code = begin + (width == 4 ? 1 : 0);
  if (cells.size() <= code) return;
  const std::size_t listed = (cells.size() - code + width - 1) / width;
  runner.punches.reserve(control_count_ > 0 ? std::min(listed, control_count_) : listed);
  for (std::size_t at = code; at < cells.size(); at += width) {
    ReadPunch(cells[at], at + 1 < cells.size() ? cells[at + 1] : std::string_view(), runner);
  }
}

// After the controls of the course come the punches that are not on it. The start and a control
// that was punched twice are none of those that the course counts.
void SportRows::ReadPunch(std::string_view code, std::string_view time, ForeignRunner& runner) {
  if (code.empty() && time.empty()) return;
  const auto split = SportTime(time);
  if (!split && HasDigit(time)) CountOne(bad_times_);
  if (code.empty()) {
    if (split) CountOne(codeless_);
    return;
  }
  const std::int32_t number = event_.Code(code);
  if (number == ForeignEvent::kStartCode) return;
  const Punch* const last = runner.punches.empty() ? nullptr : &runner.punches.back();
  if (last != nullptr && last->code == number && last->time && split) {
    CountOne(additional_);
    return;
  }
  if (control_count_ > 0 && runner.punches.size() >= control_count_) {
    if (split && number != ForeignEvent::kFinishCode) CountOne(additional_);
    return;
  }
  has_punches_ |= split.has_value();
  runner.punches.push_back({number, IsNoPunch(split, runner) ? std::nullopt : split});
}

// Runners who have not finished yet have the classifier of those whose result counts. A list
// without classifiers can have the word for the status in place of the time. MeOS and Geco have no
// classifier for runners outside the competition and write that they did not start.
void SportRows::ReadStatus(ForeignRunner& runner) {
  const std::string_view classifier = Cell(kClassifier);
  runner.status = SportStatus(classifier.empty() && !runner.time ? Cell(kTime) : classifier);
  if (!runner.status && !classifier.empty()) CountOne(classifiers_);
  if (runner.status == RunnerStatus::kDidNotStart && runner.time && HasPunchTime(runner)) {
    runner.status = RunnerStatus::kNotCompeting;
    CountOne(unplaced_);
  }
  const bool counts = runner.status == RunnerStatus::kOk;
  if (counts && !runner.time && !runner.finish) runner.status = std::nullopt;
  if (!IsMarked(Cell(kNotCompeting))) return;
  const bool missed = std::any_of(runner.punches.begin(), runner.punches.end(),
                                  [](const Punch& punch) { return !punch.time; });
  if (counts || (!runner.status && runner.time && !missed)) {
    runner.status = RunnerStatus::kNotCompeting;
  }
}

void SportRows::CountOne(Count& count) const {
  if (count.number++ == 0) count.line = Line();
}

void SportRows::Finish() {
  if (starts_without_hours_) ReadStartsAsMinutes();
  const auto remark = [this](const Count& count, std::string_view subject,
                             std::string_view consequence) {
    if (count.number == 0) return;
    remarks_.Add(RemarkSeverity::kNote, count.line, 0, subject, "",
                 std::to_string(count.number) + " " + std::string(consequence));
  };
  remark(vacant_, "start places", "that nobody has taken; left out");
  remark(nameless_, "names", "missing; the number of the runner or card is shown");
  remark(additional_, "additional punches", "not used");
  remark(codeless_, "punches without a control code", "not used");
  remark(bad_times_, "times that cannot be read", "left out");
  remark(classifiers_, "unknown classifiers", "the status is told from the times");
  remark(unplaced_, "runners who did not start",
         "with a total and splits; read as outside the competition");
  remark(adjusted_, "credits or penalties", "totals are read as they stand in the list");
}

// Where one start is "31:00", all are minutes and seconds since the first one: "12:34" is no time
// of day there.
void SportRows::ReadStartsAsMinutes() {
  constexpr Milliseconds kMinutesOfHour = 60;
  for (const auto& [klass, runner] : short_starts_) {
    auto& start = event_.Classes()[klass].runners[runner].start;
    if (start) *start /= kMinutesOfHour;
  }
}

ReadResult RefusedList(Refusal refusal, std::string format, RemarkList& remarks) {
  const ReadError error{0, RefusalText(refusal, format)};
  return FinishReading(ForeignEvent(remarks), remarks, std::move(format), error);
}

}  // namespace keltrun
