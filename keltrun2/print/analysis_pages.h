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
  /// Behind laps of rank 1, 2 and 3.
  std::array<Color, 3> RankColors = {0xCCCCCC, 0xDDDDDD, 0xEEEEEE};
};

/// Lays the selected runners of an executed analysis out on pages of their own: on each page title,
/// event and leg labels, on the first the reference laps, then a group of lines for each runner,
/// never broken by a page's end. The book's virtual size stays; its PrintedAreaHeight is 0
/// afterwards and the next drawing starts a new page. Without runners the book stays as it is.
void PrintAnalysisPages(const clsAnalyzer& analyzer, const clsEventData& event, clsPrintBook& book,
                        const AnalysisPagesOptions& options);

}  // namespace keltrun
