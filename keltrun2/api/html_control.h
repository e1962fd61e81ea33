// HTML pages.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/analysis/data_set_kind.h"
#include "keltrun2/analysis/estimate.h"
#include "keltrun2/analysis/results_holder.h"
#include "keltrun2/base/export.h"

namespace keltrun {

/// Turns data sets into complete HTML pages, returned as UTF-8 text whose lines end in CR LF. The
/// charset in Encoding is only declared: the caller encodes the text when writing the file. Texts
/// from data are escaped; TopValue, LinkStyleFile, ChartName and LapFileURL are the host's own HTML
/// and are not.
class KELTRUN2_API clsHtmlControl {
 public:
  /// The page of an executed analysis. LinkStyleFile is the address of a style sheet. Raises object
  /// not set (91) for null.
  [[nodiscard]] std::string OutputAnalysis(const std::shared_ptr<clsAnalyzer>& Analyzer,
                                           std::string_view LinkStyleFile = "",
                                           std::string_view Encoding = "x-sjis") const;

  /// The page of a result list; TopValue goes above the table. Raises object not set (91) for null.
  [[nodiscard]] std::string OutputResult(const std::shared_ptr<clsResultsHolder>& ResultsHolder,
                                         std::string_view TopValue = "",
                                         std::string_view LinkStyleFile = "",
                                         std::string_view Encoding = "x-sjis") const;

  /// The page of the legs of an executed analysis: share of the course, reference lap, difficulty
  /// (of ExtraAnalyze) and the six fastest runners. Outside the Japanese mode it is in English and
  /// declares iso-8859-1 whatever Encoding says. Raises object not set (91) for null.
  [[nodiscard]] std::string OutputLegData(const std::shared_ptr<clsAnalyzer>& Analyzer,
                                          std::string_view LinkStyleFile = "",
                                          std::string_view Encoding = "x-sjis") const;

  /// The page of chart pictures that the host saved. ChartName is their address, in which "?"
  /// stands for the chart mode; ChartOption lists the modes, as in "0,2,5". The map (7) is not
  /// shown; when there are too many finishers for one, the page says so. The real-time chart (1) is
  /// not shown when no runner has a start time. Raises object not set (91) for null.
  [[nodiscard]] std::string OutputChart(const std::shared_ptr<clsAnalyzer>& Analyzer,
                                        std::string_view ChartName,
                                        std::string_view ChartOption) const;

  /// The page that opens the lap file at an address in the maker's viewer control.
  [[nodiscard]] std::string OutputActiveXPage(std::string_view LapFileURL) const;

  /// A data set of the report.
  struct ViewerSet {
    std::shared_ptr<clsAnalyzer> Analyzer;   ///< The analysis, executed; not null.
    DataSetKind Kind = DataSetKind::kClass;  ///< The heading under which a reader chooses the set.
  };

  /// The report of the event: one page with the results, splits, race and legs of the data sets,
  /// which it offers in the order given, a card for every runner, comparisons and a search. It
  /// contains everything that it needs and loads nothing; its first view and result lists are plain
  /// HTML. Each analysis must be executed; the cruise speeds of the halves are those of
  /// ExtraAnalyze. Losses and mistakes are those of the Estimate where it has them; null shows the
  /// losses of the analyses. The page declares UTF-8, so its text is written to a file as it is.
  /// Raises object not set (91) for a null analysis.
  [[nodiscard]] std::string OutputViewer(
      const std::vector<ViewerSet>& Sets,
      const std::shared_ptr<clsEstimate>& Estimate = nullptr) const;
};

}  // namespace keltrun
