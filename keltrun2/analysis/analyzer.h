// The analysis of the runners of a data set.
#pragma once

#include <bitset>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/analysis/analyzed_general_data.h"
#include "keltrun2/analysis/analyzed_runner_data.h"
#include "keltrun2/analysis/data_set.h"
#include "keltrun2/base/export.h"
#include "keltrun2/model/course_data.h"

namespace keltrun {

/// The minimum number of finishers on a loss map.
inline constexpr std::int32_t kFewestOnMap = 5;
/// The maximum number of finishers on a loss map. The distances between more of them would take
/// over 100 MB.
inline constexpr std::int32_t kMostOnMap = 5000;

/// Collects the runners to be compared, analyzes them and keeps the results.
///
///     auto analyzer = root->NewAnalyzer();
///     analyzer->AddClass("M21A");
///     analyzer->Execute();
///     for (int i = 1; i <= analyzer->Count(); ++i) show(*analyzer->Item(i));
///
/// The full set has every runner that was added, in result order after Execute. The selected set
/// has the runners that are shown: all of them after Execute, then what the Select functions make
/// of it.
class KELTRUN2_API clsAnalyzer : public DataSet {
 public:
  /// An empty set without a name, not executed.
  clsAnalyzer();

  /// The course whose control codes are shown, or null. The analysis does not use it.
  const std::shared_ptr<clsCourseData>& CourseData() const { return course_data_; }
  /// Shows the control codes of this course from now on, or none for null.
  void SetCourseData(std::shared_ptr<clsCourseData> Course) { course_data_ = std::move(Course); }

  /// Which legs the next Execute leaves out because they were not timed: "none", the default;
  /// "auto", those on which at least half of the runners who have a lap after them show 0 (from
  /// three such runners on), or whose two controls are untimed in the event as a whole; or a list
  /// of legs, "8,15".
  std::string UntimedLegs() const { return untimed_choice_; }
  /// Stores such a text. Raises invalid call (5), changing nothing, for any other.
  void SetUntimedLegs(std::string_view Legs);

  /// True from Execute until a runner is added or the set is cleared.
  bool IsExecuted() const { return is_executed_; }

  /// "5.2km ↑150m"; empty when the length is unknown.
  std::string ClassInfo() const;

  /// Adds a runner to the full set; a record without legs is ignored. Skipped legs that no later
  /// time covers become KR_TIME_NODATA in the record itself. Raises object not set (91) for null
  /// and subscript out of range (9) for more than 51 legs.
  void AddLap(const std::shared_ptr<clsLapData>& LapObject) override;

  /// Removes everything, except that CutOffRank, CourseData and UntimedLegs stay.
  void Clear();

  /// Number of runners in the selected set.
  std::int32_t Count() const { return static_cast<std::int32_t>(selected_.size()); }
  /// The runner at a position of the selected set; null outside 1 to Count.
  std::shared_ptr<clsAnalyzedRunnerData> Item(std::int32_t Index) const;

  /// Number of runners in the full set.
  std::int32_t FullSetCount() const { return static_cast<std::int32_t>(full_.size()); }
  /// The runner at a position of the full set; null outside 1 to FullSetCount.
  std::shared_ptr<clsAnalyzedRunnerData> FullSetItem(std::int32_t Index) const;

  /// Never null; replaced by a new object at each Execute and Clear.
  const std::shared_ptr<clsAnalyzedGeneralData>& GeneralData() const { return general_; }

  /// Analyzes the full set on legs 1 to ControlCount + 1 (at least 1) and selects all runners. With
  /// untimed legs, or after an Execute with some, the splits of all runners are computed anew.
  /// Raises subscript out of range (9), changing nothing, when ControlCount is above 50.
  void Execute();

  /// After Execute: computes FirstHalfCruiseSpeed and SecondHalfCruiseSpeed of the runners and
  /// LegDifficulty of the legs. Selects all runners.
  void ExtraAnalyze();

  /// The number of runners of the full set with a time in Result, which are those that a loss map
  /// shows. Vesmer makes a map of kFewestOnMap to kMostOnMap of them.
  std::int32_t FinisherCount() const;

  /// After Execute: places the runners of the full set on the loss map, VesmerX and VesmerY, from
  /// -100 to 100 on its wider axis. Runners who lost time on the same legs lie close together. A
  /// runner without losses would lie at (0, 0), and runners without a time in Result are put there.
  /// With fewer finishers than a map takes, they keep their places; with more, no map is made and
  /// all are put at (0, 0). The places stay until the next call.
  void Vesmer();

  /// Appends the first runner with that serial number to the selected set, even if they are already
  /// in it. Unknown numbers are ignored.
  void SelectItem(std::int32_t SerialNum);
  /// Orders the selected set by result.
  void SelectSort();
  /// Selects every runner of the full set once, in its order.
  void SelectAll();
  /// Empties the selected set.
  void SelectNone();

 private:
  friend class AnalyzerInternal;

  void CheckLap(const clsLapData& lap) const override;
  std::string SafeFileName(std::string_view name) const override;
  bool ComparesLegs() const override { return true; }

  using LegSet = std::bitset<clsAnalyzedRunnerData::kMostAnalyzedLegs + 1>;

  LegSet FindUntimedLegs() const;
  void ReadWithout(const LegSet& untimed);

  std::shared_ptr<clsCourseData> course_data_;
  std::string untimed_choice_ = "none";
  LegSet read_without_;  // the untimed legs when the legs of the runners were read
  std::vector<std::shared_ptr<clsAnalyzedRunnerData>> full_;
  std::vector<std::shared_ptr<clsAnalyzedRunnerData>> selected_;
  std::shared_ptr<clsAnalyzedGeneralData> general_;
  bool is_executed_ = false;
};

}  // namespace keltrun
