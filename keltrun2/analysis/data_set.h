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

class EventModel;

/// The facts about a data set and the functions that fill it from the current event.
class KELTRUN2_API DataSet {
 public:
  /// Base name of the files that outputs write for the data set; safe as a file name.
  std::string DataSetFileName;
  /// Whether the data set has several classes or was named by the host.
  bool DataSetIsMix = false;
  /// Number of controls of the course; the set has ControlCount + 1 legs.
  std::int32_t ControlCount = 0;
  std::int32_t Length = 0;      ///< Length of the course in meters; 0 when unknown.
  std::int32_t Climb = 0;       ///< Climb of the course in meters; 0 when unknown.
  std::int32_t CutOffRank = 0;  ///< Last rank above the border in result lists; 0 for no border.

  virtual ~DataSet() = default;

  /// Adds the runners of the class with that name in the current event; letter case is ignored, and
  /// an unknown class is ignored. An analysis takes those who had the course of the class, and
  /// LeftOutCount counts the others. The first class names the data set. Each further one is added
  /// to the name after "/" and makes the data set a mix. Course facts that are not 0 are taken
  /// over. Raises what AddLap raises for any of the runners, and changes nothing then.
  void AddClass(std::string_view ClassName);
  /// Adds the class at a position in the current event, from 1, in the same way.
  void AddClass(std::int32_t ClassNumber);

  /// Adds every runner who had the course, in class order; `clsLapData::CourseNum` goes before that
  /// of the class. Numbers below 1 are ignored. Raises
  /// what AddLap raises for any of the runners, and object not set (91) when there is no root
  /// object, and changes nothing then.
  void AddCourse(std::int32_t CourseNum);

  /// How many runners of the added classes are not in the set because they had another course; 0
  /// in result lists, which have everybody.
  std::int32_t LeftOutCount() const { return left_out_; }

  /// Adds one runner. The record is shared, not copied.
  virtual void AddLap(const std::shared_ptr<clsLapData>& LapObject) = 0;

  /// The name of the set: its classes joined by "/", or what the host called it.
  const std::string& DataSetName() const { return name_; }
  /// Names the data set, makes it a mix and derives DataSetFileName from the name.
  void SetDataSetName(std::string_view Name);

 protected:
  /// An empty set without a name.
  DataSet() = default;
  /// The copy shares the runners.
  DataSet(const DataSet&) = default;
  /// The copy shares the runners.
  DataSet& operator=(const DataSet&) = default;

  /// Restores the state of a new data set, except for CutOffRank.
  void ClearHead();

 private:
  friend class DataSetInternal;

  /// Raises an error when AddLap would not take the record.
  virtual void CheckLap(const clsLapData& lap) const;

  /// The file-name-safe form of a name that the host gave.
  virtual std::string SafeFileName(std::string_view name) const = 0;

  /// Whether the runners are compared leg by leg, so that all must have had one course.
  virtual bool ComparesLegs() const = 0;

  using Runners = std::vector<std::shared_ptr<clsLapData>>;
  struct Part;

  void AddClasses(const std::vector<std::shared_ptr<clsClassData>>& classes);
  void AddCourseOf(const std::vector<std::shared_ptr<clsClassData>>& classes,
                   std::int32_t course_number, const EventModel& model);
  void AddParts(const std::vector<Part>& parts);
  void JoinName(const clsClassData& klass);
  void JoinCourse(std::int32_t course_num);

  // Where the legs of the set are: the course, and the position of the control from which leg 1
  // goes (0 is the start).
  struct Place {
    static constexpr std::int32_t kSeveral = -1;
    std::int32_t number = 0;  // 0 while there is none
    std::int32_t start = 0;
  };

  Place course_;
  std::string name_;
  std::int32_t left_out_ = 0;
};

}  // namespace keltrun
