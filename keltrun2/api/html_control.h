// HTML pages.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/analysis/results_holder.h"

namespace keltrun {

/// Turns data sets into complete HTML pages, returned as UTF-8 text whose lines end in CR LF. The
/// charset in Encoding is only declared: whoever writes the file encodes it so. Texts from data are
/// escaped; TopValue and LinkStyleFile are the host's own HTML.
class clsHtmlControl {
 public:
  /// The page of an executed analysis. LinkStyleFile is the address of a style sheet. Raises object
  /// not set (91) for null.
  std::string OutputAnalysis(const std::shared_ptr<clsAnalyzer>& Analyzer,
                             std::string_view LinkStyleFile = "",
                             std::string_view Encoding = "x-sjis") const;

  /// The page of a result list; TopValue stands above the table. Raises object not set (91) for
  /// null.
  std::string OutputResult(const std::shared_ptr<clsResultsHolder>& ResultsHolder,
                           std::string_view TopValue = "", std::string_view LinkStyleFile = "",
                           std::string_view Encoding = "x-sjis") const;
};

}  // namespace keltrun
