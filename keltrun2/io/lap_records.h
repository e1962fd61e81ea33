// What the readers of text formats found, before it goes into the model.
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

/// Codes from this number up stand for texts that are no numbers.
inline constexpr std::int32_t kFirstTextCode = 10001;

/// A class as a text file has it. Where the file says nothing, the value is empty, and the class of
/// the model keeps its own.
struct ClassRecords {
  std::string name;
  std::optional<std::int32_t> length;         // meters
  std::optional<std::int32_t> climb;          // meters
  std::optional<std::int32_t> control_count;  // of the class
  std::optional<std::int32_t> course_num;     // of the class
  /// The number of legs that the runners have, finish included. The ControlCount of the class is
  /// raised to one less.
  std::int32_t legs_seen = 0;
  /// The codes of controls 1 to `control_count`; the class gets the course with these codes, or a
  /// new one. Empty when the file has no codes.
  std::vector<std::int32_t> codes;
  std::vector<std::shared_ptr<clsLapData>> runners;
  /// The other lists of codes that runners of the class have, such as those of forks, and for each
  /// runner the list they have, from 1; 0 for `codes`. Empty when all runners have `codes`.
  std::vector<std::vector<std::int32_t>> other_codes;
  std::vector<std::size_t> list_of_runner;
};

/// The club and sex for runners with that name who are loaded already.
struct RunnerUpdate {
  std::string name;
  std::string club;
  std::string sex;
};

/// Everything that the reader of a text format found, in the order of the file.
struct LapRecords {
  std::optional<std::string> event_name;
  std::optional<DateTime> event_date;
  std::optional<std::string> terrain, memo, official_site, event_file_name;
  std::optional<std::string> create_application;
  std::optional<DateTime> create_date;
  std::vector<ClassRecords> classes;
  /// What the codes kFirstTextCode, kFirstTextCode + 1, ... stand for, which are no numbers.
  std::vector<std::string> code_texts;
  std::vector<RunnerUpdate> updates;
};

/// Why reading stopped, and where: lines and columns count from 1, and 0 means that the error has
/// no place.
struct ReadError {
  std::int32_t line = 0;
  std::string detail;
  std::int32_t column = 0;
};

/// What was read, up to the error if there is one, and the remarks made while reading.
struct ReadResult {
  LapRecords records;
  std::string format;  // the precise name of the format, when there are several of the type
  std::vector<LoadRemark> remarks;
  std::optional<ReadError> error;
};

}  // namespace keltrun
