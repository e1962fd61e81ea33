#include "keltrun2/io/oevent_reader.h"

#include <algorithm>
#include <array>

#include "keltrun2/io/limits.h"
#include "keltrun2/io/text_reading.h"
#include "keltrun2/model/time_text.h"
#include "keltrun2/model/time_values.h"
#include "keltrun2/text/letters.h"

namespace keltrun {
namespace {

constexpr std::string_view kListTitle = "Split times of";
constexpr std::string_view kFooter = "Created with OEvent";
constexpr std::string_view kApplication = "OEvent";
constexpr std::string_view kSeparator = "-------";
constexpr std::string_view kMissingPunch = "--:--";

// The fields of a row, from 0.
constexpr std::size_t kRankField = 0;  // or the class name
constexpr std::size_t kNameField = 1;
constexpr std::size_t kClubField = 2;
constexpr std::size_t kResultField = 4;
constexpr std::size_t kFirstSplit = 5;  // then every second one
constexpr std::size_t kLastSplit = 23;

std::string Without(std::string_view text, char unwanted) {
  std::string out(text);
  std::erase(out, unwanted);
  return out;
}

bool IsNegativeTime(std::string_view cell) {
  return IsNegative(cell) && cell.find_first_of("0123456789") != std::string_view::npos;
}

// The fields of a line up to the last one that is read, trimmed. Missing fields are empty.
class Row {
 public:
  explicit Row(std::string_view line) {
    while (count_ < fields_.size()) {
      const std::size_t comma = line.find(',');
      fields_[count_++] = TrimSpaces(line.substr(0, comma));
      if (comma == std::string_view::npos) break;
      line.remove_prefix(comma + 1);
    }
  }

  std::size_t Count() const { return count_; }
  std::string_view Field(std::size_t index) const { return fields_[index]; }

  // Whether the row starts neither a class nor a runner.
  bool HasNoHead() const { return Field(kRankField).empty() && Field(kNameField).empty(); }
  bool HasSplits() const {
    for (std::size_t i = kFirstSplit; i <= kLastSplit; i += 2) {
      if (!fields_[i].empty()) return true;
    }
    return false;
  }

 private:
  std::array<std::string_view, kLastSplit + 1> fields_;
  std::size_t count_ = 0;
};

class OEventReader {
 public:
  explicit OEventReader(std::string_view text) : line_(text) {}

  ReadResult Read() {
    if (ReadTitle()) ReadLines();
    if (clubs_ > 0) {
      remarks_.Add(RemarkSeverity::kWarning, first_club_line_, kClubField + 1, "clubs", "",
                   "those of " + std::to_string(clubs_) + (clubs_ == 1 ? " runner" : " runners") +
                       " are not read, nor are numbers");
    }
    RemarkCutResults(cut_results_, remarks_);
    result_.remarks = remarks_.Take();
    return std::move(result_);
  }

 private:
  // The splits of one runner so far.
  struct Splits {
    DateTime sum = 0;            // the last split that was not smaller than the one before
    std::int32_t legs = 0;       // legs so far
    std::int32_t last_time = 0;  // the last leg with a time
    bool too_many = false;
  };

  bool Fail(std::string_view detail) {
    result_.error = ReadError{line_.Number(), std::string(detail)};
    return false;
  }

  void Warn(std::size_t field, std::string_view subject, std::string_view cell,
            std::string_view consequence) {
    remarks_.Add(RemarkSeverity::kWarning, line_.Number(), static_cast<std::int32_t>(field) + 1,
                 subject, cell, consequence);
  }

  // Reads the two title lines and moves to the line after them.
  bool ReadTitle() {
    const std::string_view event_name = line_.Line();
    line_.Next();
    if (!Contains(line_.Line(), kListTitle)) {
      return Fail("not an OEvent split list: \"Split times of\" is missing");
    }
    line_.Next();
    if (line_.AtEnd()) return Fail("the split list ends after its titles");
    result_.records.event_name = std::string(event_name);
    return true;
  }

  void ReadLines() {
    while (!line_.AtEnd()) {
      const Row row(line_.Line());
      if (Contains(line_.Line(), kSeparator) || row.HasNoHead()) {
        line_.Next();
      } else if (!row.Field(kNameField).empty()) {
        if (!ReadRunner(row)) return;
      } else if (Contains(row.Field(kRankField), kFooter)) {
        ReadCreation();
        return;
      } else if (!StartClass(row.Field(kRankField))) {
        return;
      }
    }
  }

  bool StartClass(std::string_view name) {
    if (result_.records.classes.size() >= kMostClasses) return Fail(kTooManyClasses);
    result_.records.classes.emplace_back().name = name;
    line_.Next();
    return true;
  }

  // A text that is not a time, such as a status, is kept.
  void ReadTotalTime(std::string_view cell, clsLapData& runner) {
    const CellValue value = ReadCellTime(cell);
    if (value.time) {
      runner.SetResult(ResultText(*value.time, value.has_fraction));
      cut_results_ += CutsResult(*value.time) ? 1 : 0;
    } else if (IsNegativeTime(cell)) {
      Warn(kResultField, "result", cell, "is below zero, the runner has no result");
    } else {
      runner.SetResult(NormalizeTimeText(cell, Digits::kElapsed));
    }
  }

  bool ReadRunner(const Row& row) {
    if (result_.records.classes.empty())
      return Fail("there is a runner before the first class line");
    if (runners_ >= kMostRunners) return Fail(kTooManyRunners);
    ++runners_;
    const auto runner = std::make_shared<clsLapData>();
    runner->Rank = Without(row.Field(kRankField), '.');
    runner->RunnerName = row.Field(kNameField);
    ReadTotalTime(row.Field(kResultField), *runner);
    if (!row.Field(kClubField).empty() && clubs_++ == 0) first_club_line_ = line_.Number();
    line_.Next();
    const Splits splits = ReadSplitRows(*runner);
    ClassRecords& klass = result_.records.classes.back();
    klass.legs_seen = std::max(klass.legs_seen, splits.last_time);
    klass.runners.push_back(runner);
    return true;
  }

  // Reads the rows of a runner, which are splits and rows that are not read, in turn, and moves to
  // the line after them. The runner has no rows when the line after theirs is a runner, class or
  // footer.
  Splits ReadSplitRows(clsLapData& runner) {
    Splits splits;
    Row row(line_.Line());
    for (bool reading = row.HasNoHead(); reading && !line_.AtEnd();) {
      ReadSplitRow(row, runner, splits);
      line_.Next();
      const Row between(line_.Line());
      if (between.Count() < 2 || !between.Field(kNameField).empty()) break;
      line_.Next();
      row = Row(line_.Line());
      reading = row.Field(kNameField).empty() && row.HasSplits();
    }
    return splits;
  }

  void ReadSplitRow(const Row& row, clsLapData& runner, Splits& splits) {
    for (std::size_t i = kFirstSplit; i <= kLastSplit; i += 2) {
      const std::string_view cell = row.Field(i);
      if (cell.empty()) continue;
      if (cell == kMissingPunch) {
        if (CountLeg(i, runner, splits)) runner.SetLap(splits.legs, kTimeDisq);
      } else if (const auto time = CellTime(cell)) {
        if (CountLeg(i, runner, splits)) StoreSplit(i, *time, cell, runner, splits);
      } else if (IsNegativeTime(cell)) {
        if (CountLeg(i, runner, splits)) runner.SetLap(splits.legs, kTimeNoData);
        Warn(i, "split", cell, "is below zero, the leg has no time");
      } else {
        Warn(i, "split", cell, "is not a time and is not counted as a leg");
      }
    }
  }

  // False when a record has no room for another leg.
  bool CountLeg(std::size_t field, const clsLapData& runner, Splits& splits) {
    if (splits.legs < clsLapData::kMostLegs) {
      ++splits.legs;
      return true;
    }
    if (!splits.too_many) {
      Warn(field, "runner", runner.RunnerName, "has more than 50 legs, the rest is dropped");
    }
    splits.too_many = true;
    return false;
  }

  void StoreSplit(std::size_t field, DateTime time, std::string_view cell, clsLapData& runner,
                  Splits& splits) {
    if (time < splits.sum) {
      Warn(field, "split", cell, "is smaller than the one before, the leg has no time");
      return;
    }
    runner.SetLap(splits.legs, Canonical(time - splits.sum));
    splits.last_time = splits.legs;
    splits.sum = time;
  }

  // Reads the footer. The line after it is the date.
  void ReadCreation() {
    line_.Next();
    std::string text(TrimSpaces(line_.Line()));
    std::replace(text.begin(), text.end(), '.', '/');
    const auto date = HeaderDate(text);
    if (!date) Warn(0, "creation date", text, "is not a date and time and stays empty");
    result_.records.create_application = std::string(kApplication);
    result_.records.create_date = date.value_or(0);
  }

  LineCursor line_;
  ReadResult result_;
  RemarkList remarks_;
  std::size_t runners_ = 0;
  std::size_t cut_results_ = 0;
  std::size_t clubs_ = 0;  // runners with a club
  std::int32_t first_club_line_ = 0;
};

}  // namespace

ReadResult ReadOEvent(std::string_view text) { return OEventReader(text).Read(); }

}  // namespace keltrun
