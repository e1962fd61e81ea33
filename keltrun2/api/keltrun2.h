// The root object.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/analysis/estimate.h"
#include "keltrun2/analysis/results_holder.h"
#include "keltrun2/analysis/segment_data.h"
#include "keltrun2/api/file_control.h"
#include "keltrun2/api/graphic_control.h"
#include "keltrun2/api/html_control.h"
#include "keltrun2/api/text_control.h"
#include "keltrun2/base/export.h"
#include "keltrun2/config/config_control.h"
#include "keltrun2/model/class_data.h"
#include "keltrun2/model/course_data.h"
#include "keltrun2/model/event_data.h"
#include "keltrun2/model/meta_data.h"

namespace keltrun {

class EventModel;

/// The fields of a class-and-course choice, read back from its text.
struct ClassAndCourseValue {
  std::string ValueName;         ///< Names of the classes, joined by "/".
  std::int32_t ClassIndex = 0;   ///< Position of the class, from 1; 0 for a course.
  std::int32_t CourseNum = 0;    ///< Number of the course; 0 for a class.
  std::string FileName;          ///< Base names of the classes' files, joined by "_".
  std::int32_t RunnerCount = 0;  ///< Number of runners of all its classes.
};

/// The one object that a host creates: the event and the services that load, analyze and publish
/// it.
///
///     auto root = std::make_shared<keltrun::clsKeltrun2>();
///     if (!root->FileControl()->LoadLapFile("event.lxm")) return fail(root->ErrorComment());
///     auto analyzer = root->NewAnalyzer();
///     analyzer->AddClass(1);
///     analyzer->Execute();
///     save(root->HtmlControl()->OutputAnalysis(analyzer));
///
/// A thread uses one root object at a time: the services, ClassAndCourseList and SortClass work on
/// the event of its youngest root that still lives, or of the process's youngest when the thread
/// never created one. When there is no root, the file service returns false, and everything else
/// that needs an event raises object not set (91). Threads with roots of their own work side by
/// side.
class KELTRUN2_API clsKeltrun2 {
 public:
  /// Loads settings and resource texts, if this is the first root of the process, and starts with
  /// an empty event.
  clsKeltrun2();
  ~clsKeltrun2();
  clsKeltrun2(const clsKeltrun2&) = delete;
  clsKeltrun2& operator=(const clsKeltrun2&) = delete;

  /// Name of the lap file that was loaded last.
  const std::string& FileName() const;
  /// Changes the name that FileName gives; no file is renamed.
  void SetFileName(std::string_view FileName);
  /// Date of the lap file that was loaded last; 0 when unknown.
  DateTime FileDate() const;
  /// Changes the date that FileDate gives; no file is touched.
  void SetFileDate(DateTime FileDate);

  /// Why the last load, save or export failed; its lines end in CR LF. Shared by all roots of the
  /// thread.
  std::string ErrorComment() const;

  /// A new analyzer, empty and owned by the host.
  [[nodiscard]] std::shared_ptr<clsAnalyzer> NewAnalyzer() const;
  /// A new result list, empty and owned by the host.
  [[nodiscard]] std::shared_ptr<clsResultsHolder> NewResultsHolder() const;

  /// New analyzers of the runners of a class who had another course than that of the class, as with
  /// forks: one for each such course, at most 100, with the name "W21A (2)" for course 2. They are
  /// not executed. Empty for a class that does not exist.
  [[nodiscard]] std::vector<std::shared_ptr<clsAnalyzer>> NewAnalyzersOfOtherCourses(
      std::int32_t ClassNum) const;

  /// What every lap of the event would have been without mistakes. UntimedLegs says which legs are
  /// left out: "auto" those that are found to be untimed, "none", or a list of the numbers of legs
  /// in every class, "8,15". Raises invalid call (5) for any other text.
  [[nodiscard]] std::shared_ptr<clsEstimate> NewEstimate(
      std::string_view UntimedLegs = "auto") const;

  /// What is odd about the times of the event, one sentence in English for each: clocks that
  /// ShiftClock corrected, legs that were not timed and the runners who have a time on them all the
  /// same, and clocks of controls that drift or jump by 30 s or more during the day, with the
  /// evidence (60 runners or more are needed). They are found anew at each call.
  [[nodiscard]] std::vector<std::string> EventRemarks() const;

  /// Corrects the clock of a control: adds a number of seconds, which may be negative, to every
  /// punch there, so that the laps to it become longer and the laps from it shorter. Runners for
  /// whom a lap would not be above 0 stay as they are. EventRemarks and the JSON of the event say
  /// so until the event is emptied. Returns the number of runners who changed. Raises invalid call
  /// (5) unless the time is below a day.
  std::int32_t ShiftClock(std::int32_t ControlCode, double Seconds);

  /// The header of the event. Emptying the event makes a new one.
  std::shared_ptr<clsEventData> EventData() const;

  /// The service that loads, saves and publishes lap files; made with the root, never null.
  const std::shared_ptr<clsFileControl>& FileControl() const { return file_control_; }
  /// The service that draws charts, prints and fills grids; made with the root, never null.
  const std::shared_ptr<clsGraphicControl>& GraphicControl() const { return graphic_control_; }
  /// The service that makes HTML pages; made with the root, never null.
  const std::shared_ptr<clsHtmlControl>& HtmlControl() const { return html_control_; }
  /// The service that makes text, CSV and JSON; made with the root, never null.
  const std::shared_ptr<clsTextControl>& TextControl() const { return text_control_; }
  /// The service that keeps the host's settings; made with the root, never null.
  const std::shared_ptr<clsConfigControl>& ConfigControl() const { return config_control_; }

  /// Who made the lap file that was loaded.
  std::shared_ptr<clsMetaData> MetaData() const;

  /// The class of that name; it is created when there is none. Names are compared without regard to
  /// letter case, here and below, unless said otherwise.
  std::shared_ptr<clsClassData> AddClass(std::string_view ClassName);
  /// Removes the class of that name with its runners. Unknown names are ignored.
  void RemoveClass(std::string_view ClassName);
  /// Renames the first class whose name is exactly OldName; its file base name is derived anew.
  /// Ignored when there is none. Raises duplicate key (457) when another class has the new name.
  void RenameClass(std::string_view OldName, std::string_view NewName);
  /// The class with this name; null when there is none.
  std::shared_ptr<clsClassData> ClassData(std::string_view ClassID) const;
  /// The class at this position, from 1; null when there is none.
  std::shared_ptr<clsClassData> ClassData(std::int32_t ClassID) const;
  /// Number of classes.
  std::int32_t ClassCount() const;
  /// Whether there is a class of that name.
  bool IsClassExists(std::string_view ClassName) const;

  /// The course of that number; it is created when there is none.
  std::shared_ptr<clsCourseData> AddCourse(std::int32_t CourseIndex);
  /// Removes the course of that number. Unknown numbers are ignored.
  void RemoveCourse(std::int32_t CourseIndex);
  /// The course with this number, given as text; null when there is none.
  std::shared_ptr<clsCourseData> CourseData(std::string_view CourseID) const;
  /// The course at this position, from 1; null when there is none.
  std::shared_ptr<clsCourseData> CourseData(std::int32_t CourseID) const;
  /// Number of courses.
  std::int32_t CourseCount() const;
  /// Removes all courses and segment sets.
  void ClearCourse();
  /// Whether there is a course of that number.
  bool IsCourseExists(std::int32_t CourseIndex) const;

  /// What can be analyzed: each class, then each course run by at least two classes, as texts of
  /// five fields: class index, course number, name, file name, number of runners
  /// ("1,,M21A,m21a,35").
  std::vector<std::string> ClassAndCourseList() const;
  /// Reads such a text back; missing fields are empty and 0.
  ClassAndCourseValue SeparateClassAndCourseValue(std::string_view Expression) const;

  /// Sorts the runners of every class by result.
  void SortLap();
  /// Puts the classes at the listed positions ("3,1") first; a position that is listed again is
  /// ignored. Raises subscript out of range (9), changing nothing, for a position beyond the last
  /// class.
  void SortClass(std::string_view OrderExpression);

  /// The segment set at a position from 1. Raises subscript out of range (9) for others.
  std::shared_ptr<clsSegmentData> SegmentData(std::int32_t Index) const;
  /// Number of segment sets.
  std::int32_t SegmentCount() const;
  /// Rebuilds the segment sets from courses and classes. Loading a native file in normal mode does
  /// this as well; later changes to courses and classes need another call.
  void MakeSegmentSet();
  /// What MakeSegmentSet left out because the courses share more runs than can be listed, in
  /// English; empty when nothing was left out. After a load it is also among the LoadRemarks.
  const std::string& SegmentRemark() const;

  /// Empties the event and starts the runner numbers again at 1.
  void Clear();

  /// The version with its build, as in "2.27 ( Build 242 )", or only "2.27" without WithTestBuild.
  std::string Version(bool WithTestBuild = true) const;

 private:
  std::shared_ptr<EventModel> model_;
  std::shared_ptr<clsFileControl> file_control_;
  std::shared_ptr<clsGraphicControl> graphic_control_;
  std::shared_ptr<clsHtmlControl> html_control_;
  std::shared_ptr<clsTextControl> text_control_;
  std::shared_ptr<clsConfigControl> config_control_;
};

}  // namespace keltrun
