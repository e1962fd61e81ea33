// A segment: a run of controls that several courses share.
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

/// One segment of the event. It makes data sets of all runners who ran it, reduced to its legs, so
/// that runners of different courses can be compared on what their courses share.
///
///     root->MakeSegmentSet();
///     auto analyzer = root->SegmentData(1)->Analyzer();
///     analyzer->Execute();
class KELTRUN2_API clsSegmentData {
 public:
  /// The segment with that data, which is shared and not null.
  explicit clsSegmentData(std::shared_ptr<SegmentSet> segment) : segment_(std::move(segment)) {}

  /// Where the run occurs: a course number, TAB, and the position of the first control of the run
  /// in that course (0 is the start).
  const std::vector<std::string>& TargetCourseTable() const { return segment_->TargetCourseTable; }
  /// Replaces the table, in the form that TargetCourseTable gives.
  void SetTargetCourseTable(std::vector<std::string> Table) {
    segment_->TargetCourseTable = std::move(Table);
  }

  /// Which classes the data sets include: a class name, ";", and the position of the first control
  /// of the run in the course of the class.
  const std::vector<std::string>& TargetClassList() const { return segment_->TargetClassList; }
  /// Replaces the list, in the form that TargetClassList gives.
  void SetTargetClassList(std::vector<std::string> List) {
    segment_->TargetClassList = std::move(List);
  }

  /// The number of controls between the ends of the run, which has ControlCount + 1 legs.
  std::int32_t ControlCount() const { return segment_->ControlCount; }
  /// The codes joined by "-", the start as "S" and the finish as "F".
  const std::string& SegmentName() const { return segment_->SegmentName; }
  /// The codes with four digits each, the start as "0000" and the finish as "9999".
  const std::string& SegmentBinaryName() const { return segment_->SegmentBinaryName; }

  /// A new analyzer with the runners of the current event, not executed. With a SexOption, only
  /// runners whose Sex is exactly that text are included.
  [[nodiscard]] std::shared_ptr<clsAnalyzer> Analyzer(std::string_view SexOption = "") const;
  /// A new result list with the runners of the current event, not ranked. With a SexOption, only
  /// runners whose Sex is exactly that text are included.
  [[nodiscard]] std::shared_ptr<clsResultsHolder> ResultsHolder(
      std::string_view SexOption = "") const;

 private:
  std::shared_ptr<SegmentSet> segment_;
};

}  // namespace keltrun
