#include "keltrun2/api/html_control.h"

#include "keltrun2/base/automation_error.h"
#include "keltrun2/model/event_model.h"
#include "keltrun2/model/process_state.h"
#include "keltrun2/report/analysis_page.h"
#include "keltrun2/report/chart_page.h"
#include "keltrun2/report/html_parts.h"
#include "keltrun2/report/leg_data_page.h"
#include "keltrun2/report/report_page.h"
#include "keltrun2/report/result_page.h"
#include "keltrun2/report/viewer_control_page.h"

namespace keltrun {

std::string clsHtmlControl::OutputAnalysis(const std::shared_ptr<clsAnalyzer>& Analyzer,
                                           std::string_view LinkStyleFile,
                                           std::string_view Encoding) const {
  CheckObject(Analyzer, "clsHtmlControl.OutputAnalysis");
  std::string page;
  AppendAnalysisPage(page, *CurrentModel("clsHtmlControl.OutputAnalysis"), *Analyzer, LinkStyleFile,
                     Encoding);
  return page;
}

std::string clsHtmlControl::OutputResult(const std::shared_ptr<clsResultsHolder>& ResultsHolder,
                                         std::string_view TopValue, std::string_view LinkStyleFile,
                                         std::string_view Encoding) const {
  CheckObject(ResultsHolder, "clsHtmlControl.OutputResult");
  std::string page;
  AppendResultPage(page, *ResultsHolder, TopValue, LinkStyleFile, Encoding);
  return page;
}

std::string clsHtmlControl::OutputLegData(const std::shared_ptr<clsAnalyzer>& Analyzer,
                                          std::string_view LinkStyleFile,
                                          std::string_view Encoding) const {
  CheckObject(Analyzer, "clsHtmlControl.OutputLegData");
  std::string page;
  AppendLegDataPage(page, *CurrentModel("clsHtmlControl.OutputLegData"), *Analyzer, LinkStyleFile,
                    LegDataCharset(Encoding));
  return page;
}

std::string clsHtmlControl::OutputChart(const std::shared_ptr<clsAnalyzer>& Analyzer,
                                        std::string_view ChartName,
                                        std::string_view ChartOption) const {
  CheckObject(Analyzer, "clsHtmlControl.OutputChart");
  std::string page;
  AppendChartPage(page, *CurrentModel("clsHtmlControl.OutputChart"), *Analyzer, ChartName,
                  ChartOption, kPageCharset);
  return page;
}

std::string clsHtmlControl::OutputActiveXPage(std::string_view LapFileURL) const {
  std::string page;
  AppendViewerControlPage(page, LapFileURL);
  return page;
}

std::string clsHtmlControl::OutputViewer(const std::vector<ViewerSet>& Sets,
                                         const std::shared_ptr<clsEstimate>& Estimate) const {
  std::vector<ReportPageSet> page_sets;
  page_sets.reserve(Sets.size());
  for (const ViewerSet& set : Sets) {
    CheckObject(set.Analyzer, "clsHtmlControl.OutputViewer");
    page_sets.push_back({set.Analyzer, set.Kind});
  }
  std::string page;
  AppendReportPage(page, *CurrentModel("clsHtmlControl.OutputViewer"), page_sets, Estimate.get());
  return page;
}

}  // namespace keltrun
