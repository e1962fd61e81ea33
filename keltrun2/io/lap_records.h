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
  std::string Name;
  std::optional<std::int32_t> Length;        // metres
  std::optional<std::int32_t> Climb;         // metres
  std::optional<std::int32_t> ControlCount;  // set on the class
  std::optional<std::int32_t> CourseNum;     // set on the class
  /// The legs that the runners turned out to have, finish included: ControlCount grows to one less.
  std::int32_t LegsSeen = 0;
  /// Control codes 1 to ControlCount; the class gets the course that has them, or a new one. Empty
  /// when the file shows no codes.
  std::vector<std::int32_t> Codes;
  std::vector<std::shared_ptr<clsLapData>> Runners;
};

/// Club and sex for runners that are loaded already.
struct RunnerUpdate {
  std::string Name;
  std::string Club;
  std::string Sex;
};

/// Everything that a reader of a text format found, in the order of the file.
struct LapRecords {
  std::optional<std::string> EventName;
  std::optional<DateTime> EventDate;
  std::optional<std::string> Terrain, Memo, OfficialSite, EventFileName;
  std::optional<std::string> CreateApplication;
  std::optional<DateTime> CreateDate;
  std::vector<ClassRecords> Classes;
  std::vector<RunnerUpdate> Updates;
};

/// Why reading stopped. Lines from 1, 0 where none can be named.
struct ReadError {
  std::int32_t Line = 0;
  std::string Detail;
};

/// What was read, also before an error, with the remarks made on the way.
struct ReadResult {
  LapRecords Records;
  std::vector<LoadRemark> Remarks;
  std::optional<ReadError> Error;
};

}  // namespace keltrun
