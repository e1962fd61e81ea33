// The pages of a printed analysis.
#pragma once

#include <array>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/model/event_data.h"
#include "keltrun2/print/print_analysis.h"
#include "keltrun2/print/print_book.h"

namespace keltrun {

struct AnalysisPagesOptions {
  KrPrintAnalysisModeConst Mode = KR_PRINT_ANALYSIS_LAP;
  /// The colors behind laps of rank 1, 2 and 3.
  std::array<Color, 3> RankColors = {0xCCCCCC, 0xDDDDDD, 0xEEEEEE};
  /// Whether the reference laps have a full name, long names become smaller before they are cut,
  /// and the legs are spread evenly over the lines of a group.
  bool Heads = false;
};

/// Lays out the selected runners of an executed analysis on pages of their own. Each page has the
/// title, the event and the labels of the legs; the first one also has the reference laps. A group
/// of lines for each runner follows, which is never split between pages. The book keeps its virtual
/// size; afterwards its PrintedAreaHeight is 0 and the next drawing starts a new page. Without
/// runners the book is not changed.
void PrintAnalysisPages(const clsAnalyzer& analyzer, const clsEventData& event, clsPrintBook& book,
                        const AnalysisPagesOptions& options);

}  // namespace keltrun
