#include "keltrun2/api/html_control.h"

#include "keltrun2/model/event_model.h"
#include "keltrun2/model/process_state.h"
#include "keltrun2/platform/automation_error.h"
#include "keltrun2/report/analysis_page.h"
#include "keltrun2/report/result_page.h"

namespace keltrun {

std::string clsHtmlControl::OutputAnalysis(const std::shared_ptr<clsAnalyzer>& Analyzer,
                                           std::string_view LinkStyleFile,
                                           std::string_view Encoding) const {
  CheckObject(Analyzer, "clsHtmlControl.OutputAnalysis");
  std::string page;
  AppendAnalysisPage(page, *CurrentModel(), *Analyzer, LinkStyleFile, Encoding);
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

}  // namespace keltrun
