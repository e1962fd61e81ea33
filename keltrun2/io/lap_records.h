// What text lap files hold, before it goes into the model.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "keltrun2/io/remarks.h"
#include "keltrun2/model/lap_data.h"
#include "keltrun2/text/datetime.h"

namespace keltrun {

/// A class as a text file shows it. What the file does not say is left out, and the model's class
/// keeps what it has.
struct ClassRecords {
  std::string name;
  std::optional<std::int32_t> length;         // metres
  std::optional<std::int32_t> climb;          // metres
  std::optional<std::int32_t> control_count;  // set on the class
  std::optional<std::int32_t> course_num;     // set on the class
  /// The legs that the runners turned out to have, finish included: ControlCount grows to one less.
  std::int32_t legs_seen = 0;
  /// Control codes 1 to ControlCount; the class gets the course that has them, or a new one. Empty
  /// when the file shows no codes.
  std::vector<std::int32_t> codes;
  std::vector<std::shared_ptr<clsLapData>> runners;
};

/// Club and sex for runners that are loaded already.
struct RunnerUpdate {
  std::string name;
  std::string club;
  std::string sex;
};

/// Everything that a reader of a text format found, in the order of the file.
struct LapRecords {
  std::optional<std::string> event_name;
  std::optional<DateTime> event_date;
  std::optional<std::string> terrain, memo, official_site, event_file_name;
  std::optional<std::string> create_application;
  std::optional<DateTime> create_date;
  std::vector<ClassRecords> classes;
  std::vector<RunnerUpdate> updates;
};

/// Why reading stopped. Lines from 1, 0 where none can be named.
struct ReadError {
  std::int32_t line = 0;
  std::string detail;
};

/// What was read, also before an error, with the remarks made on the way.
struct ReadResult {
  LapRecords records;
  std::vector<LoadRemark> remarks;
  std::optional<ReadError> error;
};

}  // namespace keltrun
