// A segment set: a run of controls that several courses share.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/analysis/results_holder.h"
#include "keltrun2/base/export.h"
#include "keltrun2/model/segment_set.h"

namespace keltrun {

/// One segment set of the event. It hands out data sets of all runners who ran the run, cut down to
/// its legs, so that runners of different courses can be compared on what they had in common.
///
///     root->MakeSegmentSet();
///     auto analyzer = root->SegmentData(1)->Analyzer();
///     analyzer->Execute();
class KELTRUN2_API clsSegmentData {
 public:
  /// The set of that data, which is shared and not null.
  explicit clsSegmentData(std::shared_ptr<SegmentSet> segment) : segment_(std::move(segment)) {}

  /// Where the run occurs: a course number, TAB, and the position in that course of the run's first
  /// control (0 = the start).
  const std::vector<std::string>& TargetCourseTable() const { return segment_->TargetCourseTable; }
  /// Replaces the table, in the form that TargetCourseTable gives.
  void SetTargetCourseTable(std::vector<std::string> Table) {
    segment_->TargetCourseTable = std::move(Table);
  }

  /// Whom the data sets take: a class name, ";", and the position of the run's first control in the
  /// class's course.
  const std::vector<std::string>& TargetClassList() const { return segment_->TargetClassList; }
  /// Replaces the list, in the form that TargetClassList gives.
  void SetTargetClassList(std::vector<std::string> List) {
    segment_->TargetClassList = std::move(List);
  }

  /// Controls strictly inside the run; the run has ControlCount + 1 legs.
  std::int32_t ControlCount() const { return segment_->ControlCount; }
  /// The codes joined by "-", the start as "S" and the finish as "F".
  const std::string& SegmentName() const { return segment_->SegmentName; }
  /// Four digits a code, the start as "0000" and the finish as "9999".
  const std::string& SegmentBinaryName() const { return segment_->SegmentBinaryName; }

  /// A new analyzer of the current event's runners, not executed. A SexOption takes only runners
  /// whose Sex is exactly that text.
  [[nodiscard]] std::shared_ptr<clsAnalyzer> Analyzer(std::string_view SexOption = "") const;
  /// A new result list of the current event's runners, not ranked. A SexOption takes only runners
  /// whose Sex is exactly that text.
  [[nodiscard]] std::shared_ptr<clsResultsHolder> ResultsHolder(
      std::string_view SexOption = "") const;

 private:
  std::shared_ptr<SegmentSet> segment_;
};

}  // namespace keltrun
