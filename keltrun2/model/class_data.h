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

/// A class: the runners who are ranked together on one course. Classes are created with AddClass of
/// the root object. In a number field, 0 means unknown.
class KELTRUN2_API clsClassData {
 public:
  std::int32_t ControlCount = 0;  ///< Number of controls of the course.
  std::int32_t CourseNum = 0;     ///< `clsCourseData::CourseIndex` of the course; 0 for none.
  std::int32_t Length = 0;        ///< Length of the course in meters.
  std::int32_t Climb = 0;         ///< Climb of the course in meters.
  std::int32_t CutOffRank = 0;    ///< Last rank above the border in result lists; 0 if none.

  /// The name of the class, given when it was created.
  const std::string& ClassName() const { return *class_name_; }

  /// Length and climb as text, "5.2km ↑150m"; empty if the length is unknown.
  std::string ClassInfo() const;

  /// Base name of the files that are written for the class. ASCII letters are lower-case,
  /// full-width characters become half-width, and every other character above U+00FF becomes "u"
  /// and four hexadecimal digits.
  const std::string& FileName() const { return file_name_; }
  /// Sets the base name of the files; "" or "0" derives it from the class name.
  void SetFileName(std::string_view FileName);

  /// Adds a record, or merges it into a runner of the class, depending on the mode. True only if it
  /// was added. Raises object not set (91) for null.
  bool AddLapObject(const std::shared_ptr<clsLapData>& LapObject,
                    KrLapFileLoadModeCosnt LapFileLoadMode = KR_LOADMODE_NORMAL);

  /// Adds a new runner and returns the record.
  std::shared_ptr<clsLapData> AddLap();

  /// Removes the runner at a position, from 1 to LapCount; other positions are ignored.
  void RemoveLap(std::int32_t Index);
  /// Removes every runner.
  void ClearLap() { laps_.clear(); }

  /// The runner at a position, from 1 to LapCount; null for other positions.
  std::shared_ptr<clsLapData> LapData(std::int32_t Index) const;
  /// Number of runners.
  std::int32_t LapCount() const { return static_cast<std::int32_t>(laps_.size()); }

  /// Sorts the runners by result: times first, then statuses by their code. Runners with equal
  /// results are put in reverse order.
  void SortLap();

 private:
  friend class ClassDataInternal;

  void Append(const std::shared_ptr<clsLapData>& lap);

  std::shared_ptr<const std::string> class_name_ = std::make_shared<const std::string>();
  std::string file_name_;
  std::vector<std::shared_ptr<clsLapData>> laps_;
};

}  // namespace keltrun
