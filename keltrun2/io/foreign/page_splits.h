// The splits of a runner from the rows of a page.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "keltrun2/io/foreign/html_page.h"
#include "keltrun2/io/foreign/page_texts.h"

namespace keltrun {

/// A row of labels: some controls of a course, one after the other.
struct LabelRow {
  std::vector<ControlLabel> labels;
  std::vector<std::int32_t> columns;  // of the labels
  std::vector<std::int32_t> ends;     // of the labels in a preformatted line
  std::int32_t last_span = 1;         // the columns of the last label
};

/// What was seen on the page so far, for runners whose own times do not tell.
struct PageHabits {
  std::int32_t splits_first = 0, laps_first = 0;  // runners with two rows of times each
  std::int32_t only_splits = 0, only_laps = 0;    // runners with one
  std::int32_t lost_laps = 0;                     // after a control that was missed, of only laps
  std::int32_t aligned = 0, not_aligned = 0;      // preformatted rows below their labels
};

/// Whether rows have times like "4.32" of 4 min 32 s, so that "1:02.25" is 1 h 2 min 25 s.
bool HavePointTimes(std::span<const PageRow> rows);

/// The splits of a runner, one for each label: nullopt where there is none.
///
/// `rows` are the runner's rows, of which cells can get other columns; the times are `shift`
/// columns to the right of their labels. When the page has two rows of times for each row of
/// labels, or two times in each cell, one is the splits and one the laps, in either order. A
/// runner's only times are splits, or laps if they add up to the total.
std::vector<PageTime> RunnerSplits(std::span<PageRow> rows, std::span<const LabelRow> labels,
                                   std::int32_t shift, PageTime total, bool point_times,
                                   PageHabits& habits);

}  // namespace keltrun
