// What analyzers and result lists have in common: a named set of runners from one or more classes.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/model/class_data.h"
#include "keltrun2/platform/export.h"

namespace keltrun {

/// The head of a data set and the ways to fill it from the current event.
class KELTRUN2_API DataSet {
 public:
  std::string DataSetFileName;    // file-name-safe name of the set
  bool DataSetIsMix = false;      // several classes, or a name given by the host
  std::int32_t ControlCount = 0;  // the set has ControlCount + 1 legs
  std::int32_t Length = 0;        // metres, 0 = unknown
  std::int32_t Climb = 0;         // metres, 0 = unknown
  std::int32_t CutOffRank = 0;    // 0 = none

  virtual ~DataSet() = default;

  /// Adds the runners of a class of the current event, by name (letter case ignored) or by position
  /// from 1; an unknown class is ignored. The first class names the set, each further one is joined
  /// to the name with "/" and makes the set a mix. Course facts are taken over when not 0.
  void AddClass(std::string_view ClassName);
  void AddClass(std::int32_t ClassNumber);

  /// Adds every class that runs the course, in class order. Ignored for 0 and below.
  /// Both raise what AddLap raises for any of the runners, and object not set (91) when there is no
  /// root object; they have then changed nothing.
  void AddCourse(std::int32_t CourseNum);

  /// Adds one runner. The record is shared, not copied.
  virtual void AddLap(const std::shared_ptr<clsLapData>& LapObject) = 0;

  /// The name of the set: its classes joined by "/", or what the host called it.
  const std::string& DataSetName() const { return name_; }
  /// Names the set, marks it as a mix and derives DataSetFileName from the name.
  void SetDataSetName(std::string_view Name);

 protected:
  /// Copies share the runners.
  DataSet() = default;
  DataSet(const DataSet&) = default;
  DataSet& operator=(const DataSet&) = default;

  /// Back to the state of a new set, CutOffRank excepted.
  void ClearHead();

 private:
  friend class DataSetInternal;

  /// Raises an error when AddLap would not take the record.
  virtual void CheckLap(const clsLapData& lap) const;

  /// The file-name-safe form of a name that the host gave.
  virtual std::string SafeFileName(std::string_view name) const = 0;

  void AddClasses(const std::vector<std::shared_ptr<clsClassData>>& classes);
  void JoinName(const clsClassData& klass);

  std::string name_;
};

}  // namespace keltrun
