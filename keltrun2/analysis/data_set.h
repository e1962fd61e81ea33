// What analyzers and result lists have in common: a named set of runners from one or more classes.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/base/export.h"
#include "keltrun2/model/class_data.h"

namespace keltrun {

/// The head of a data set and the ways to fill it from the current event.
class KELTRUN2_API DataSet {
 public:
  /// Base name of the files that outputs write for the set; safe in file names.
  std::string DataSetFileName;
  /// Whether the set holds several classes or was named by the host.
  bool DataSetIsMix = false;
  /// Number of controls of the course; the set has ControlCount + 1 legs.
  std::int32_t ControlCount = 0;
  std::int32_t Length = 0;      ///< Length of the course in meters; 0 when unknown.
  std::int32_t Climb = 0;       ///< Climb of the course in meters; 0 when unknown.
  std::int32_t CutOffRank = 0;  ///< Last rank above the border in result lists; 0 for no border.

  virtual ~DataSet() = default;

  /// Adds the runners of the class of that name (letter case ignored) in the current event; an
  /// unknown class is ignored. The first class names the set, each further one is joined to the
  /// name with "/" and makes the set a mix. Course facts are taken over when not 0. Raises what
  /// AddLap raises for any of the runners, and has then changed nothing.
  void AddClass(std::string_view ClassName);
  /// Adds the class at a position of the current event, from 1, in the same way.
  void AddClass(std::int32_t ClassNumber);

  /// Adds every class that runs the course, in class order. Ignored for 0 and below. Raises what
  /// AddLap raises for any of the runners, and object not set (91) when there is no root object; it
  /// has then changed nothing.
  void AddCourse(std::int32_t CourseNum);

  /// Adds one runner. The record is shared, not copied.
  virtual void AddLap(const std::shared_ptr<clsLapData>& LapObject) = 0;

  /// The name of the set: its classes joined by "/", or what the host called it.
  const std::string& DataSetName() const { return name_; }
  /// Names the set, marks it as a mix and derives DataSetFileName from the name.
  void SetDataSetName(std::string_view Name);

 protected:
  /// An empty set without a name.
  DataSet() = default;
  /// The copy shares the runners.
  DataSet(const DataSet&) = default;
  /// The copy shares the runners.
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
