// A competition class.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/base/export.h"
#include "keltrun2/model/lap_data.h"
#include "keltrun2/model/load_mode.h"

namespace keltrun {

/// A class: the runners who ran one course in one category. Classes are made by the root object
/// (AddClass). 0 in a number field is unknown.
class KELTRUN2_API clsClassData {
 public:
  std::int32_t ControlCount = 0;  ///< Number of controls of the course.
  std::int32_t CourseNum = 0;     ///< `clsCourseData::CourseIndex` of the course; 0 for none.
  std::int32_t Length = 0;        ///< Length of the course in meters.
  std::int32_t Climb = 0;         ///< Climb of the course in meters.
  std::int32_t CutOffRank = 0;    ///< Last rank above the border in result lists; 0 for no border.

  /// The name of the class, given when it was made.
  const std::string& ClassName() const { return class_name_; }

  /// "5.2km ↑150m"; empty when the length is unknown.
  std::string ClassInfo() const;

  /// Base name of the files that outputs write for the class: lower-case ASCII letters, half-width,
  /// every character above U+00FF as "u" and four hexadecimal digits.
  const std::string& FileName() const { return file_name_; }
  /// Names the files; "" or "0" derives the name from the class name.
  void SetFileName(std::string_view FileName);

  /// Adds a record, or merges it into a runner of the class as the mode says. True only when it was
  /// added. Raises object not set (91) for null.
  bool AddLapObject(const std::shared_ptr<clsLapData>& LapObject,
                    KrLapFileLoadModeCosnt LapFileLoadMode = KR_LOADMODE_NORMAL);

  /// Adds a new runner and returns his record.
  std::shared_ptr<clsLapData> AddLap();

  /// Removes the runner at a position from 1; others are ignored.
  void RemoveLap(std::int32_t Index);
  /// Removes every runner.
  void ClearLap() { laps_.clear(); }

  /// The runner at a position from 1, or null.
  std::shared_ptr<clsLapData> LapData(std::int32_t Index) const;
  /// Number of runners.
  std::int32_t LapCount() const { return static_cast<std::int32_t>(laps_.size()); }

  /// Orders the runners by result: times first, then statuses by their code. Among equal results
  /// the order is reversed.
  void SortLap();

 private:
  friend class ClassDataInternal;

  void Append(const std::shared_ptr<clsLapData>& lap);

  std::string class_name_;
  std::string file_name_;
  std::vector<std::shared_ptr<clsLapData>> laps_;
};

}  // namespace keltrun
