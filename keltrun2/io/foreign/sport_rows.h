// The runners in the rows of lists with SportColumns.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "keltrun2/io/foreign/csv_rows.h"
#include "keltrun2/io/foreign/foreign_event.h"
#include "keltrun2/io/foreign/refusal.h"
#include "keltrun2/io/foreign/sport_columns.h"
#include "keltrun2/io/text_reading.h"

namespace keltrun {

/// Walks the runners of a list and adds them to an event.
class SportRows {
 public:
  /// Before the first runner. All arguments must outlive the object.
  SportRows(std::string_view text, const SportColumns& columns, ForeignEvent& event,
            RemarkList& remarks);

  /// Moves to the next runner. Rows of another shape are left out with a remark.
  bool Next();
  std::int32_t Line() const { return rows_.Line(); }
  std::string_view Cell(SportField field) const {
    return SportCell(rows_.Cells(), columns_, field);
  }
  /// The name of the class: the short one where there is one.
  std::string_view ClassName() const;
  /// Adds the runner to a class of the event; false for a start place that nobody has taken.
  bool AddRunner(std::string_view class_name, std::string_view club);
  /// The class and the runner that were added last, as positions in the event.
  std::pair<std::size_t, std::size_t> Last() const { return last_; }

  std::size_t RunnerCount() const { return runners_; }
  bool HasResults() const { return has_results_; }
  bool HasStartTimes() const { return has_start_times_; }
  bool HasPunches() const { return has_punches_; }
  /// What can be told only after the last row: start times without hours, and the remarks.
  void Finish();

 private:
  struct Count {
    std::size_t number = 0;
    std::int32_t line = 0;  // of the first one
  };

  void CountOne(Count& count) const;
  bool IsHead() const;
  bool IsWhole() const;
  ForeignClass& Class(std::string_view name);
  void ReadClass(ForeignClass& klass, ForeignRunner& runner) const;
  ForeignRunner ReadRunner(std::string_view club);
  void ReadNames(ForeignRunner& runner) const;
  void ReadTimes(ForeignRunner& runner);
  void ReadPunches(ForeignRunner& runner);
  void ReadPunch(std::string_view code, std::string_view time, ForeignRunner& runner);
  void ReadStatus(ForeignRunner& runner);
  void ReadStartsAsMinutes();

  const SportColumns& columns_;
  ForeignEvent& event_;
  RemarkList& remarks_;
  CsvRows rows_;
  std::size_t fewest_cells_ = 0;
  std::vector<std::string> head_;
  std::size_t runners_ = 0;
  std::string class_name_;  // of the last row
  std::pair<std::size_t, std::size_t> last_;
  std::size_t control_count_ = 0;  // of the row; 0 when it is unknown
  bool has_results_ = false;
  bool has_start_times_ = false;
  bool has_punches_ = false;
  bool starts_without_hours_ = false;
  std::vector<std::pair<std::size_t, std::size_t>> short_starts_;  // runners with "12:34"
  Count vacant_, nameless_, additional_, codeless_, bad_times_, classifiers_, unplaced_, adjusted_;
};

/// The result for a list that is refused.
ReadResult RefusedList(Refusal refusal, std::string format, RemarkList& remarks);

}  // namespace keltrun
