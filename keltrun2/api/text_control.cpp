#include "keltrun2/api/text_control.h"

#include "keltrun2/base/automation_error.h"
#include "keltrun2/model/process_state.h"
#include "keltrun2/report/csv_export.h"
#include "keltrun2/report/estimate_text.h"
#include "keltrun2/report/json.h"
#include "keltrun2/report/mail_text.h"
#include "keltrun2/report/result_text.h"

namespace keltrun {
namespace {

// Calls `append` for the class with a name, or for all classes if the name is empty.
template <typename Append>
void ForClasses(const clsEstimate& estimate, std::string_view name, Append append) {
  if (!name.empty()) {
    if (const auto klass = estimate.ClassData(name)) append(*klass);
    return;
  }
  for (std::int32_t i = 1; i <= estimate.ClassCount(); ++i) append(*estimate.ClassData(i));
}

}  // namespace

std::string clsTextControl::OutputCsvQuillonMacro(
    const std::shared_ptr<clsAnalyzer>& wAnalyzer) const {
  CheckObject(wAnalyzer, "clsTextControl.OutputCsvQuillonMacro");
  std::string text;
  AppendQuillonMacroCsv(text, *wAnalyzer);
  return text;
}

std::string clsTextControl::OutputCsvSplitsBrowser(
    const std::shared_ptr<clsAnalyzer>& wAnalyzer) const {
  CheckObject(wAnalyzer, "clsTextControl.OutputCsvSplitsBrowser");
  std::string text;
  AppendSplitsBrowserCsv(text, *wAnalyzer);
  return text;
}

std::string clsTextControl::OutputTextMail(const std::shared_ptr<clsAnalyzer>& wAnalyzer) const {
  CheckObject(wAnalyzer, "clsTextControl.OutputTextMail");
  std::string text;
  AppendMailText(text, *CurrentModel("clsTextControl.OutputTextMail"), *wAnalyzer);
  return text;
}

std::string clsTextControl::OutputTextResult(
    const std::shared_ptr<clsResultsHolder>& wResults) const {
  CheckObject(wResults, "clsTextControl.OutputTextResult");
  std::string text;
  AppendResultText(text, *wResults);
  return text;
}

std::string clsTextControl::OutputEstimateText(const std::shared_ptr<clsEstimate>& Estimate,
                                               std::string_view ClassName) const {
  CheckObject(Estimate, "clsTextControl.OutputEstimateText");
  std::string text;
  ForClasses(*Estimate, ClassName, [&](const auto& klass) { AppendEstimateText(text, klass); });
  return text;
}

std::string clsTextControl::OutputEstimateCsv(const std::shared_ptr<clsEstimate>& Estimate,
                                              std::string_view ClassName) const {
  CheckObject(Estimate, "clsTextControl.OutputEstimateCsv");
  std::string text;
  AppendEstimateCsvHead(text);
  ForClasses(*Estimate, ClassName, [&](const auto& klass) { AppendEstimateCsv(text, klass); });
  return text;
}

std::string clsTextControl::OutputJson(const std::shared_ptr<clsAnalyzer>& Analyzer,
                                       DataSetKind Kind,
                                       const std::shared_ptr<clsEstimate>& Estimate) const {
  CheckObject(Analyzer, "clsTextControl.OutputJson");
  return AnalysisJson(*CurrentModel("clsTextControl.OutputJson"), *Analyzer, Kind, Estimate.get());
}

std::string clsTextControl::OutputResultJson(const std::vector<ResultSet>& Sets) const {
  for (const ResultSet& set : Sets) {
    CheckObject(set.ResultsHolder, "clsTextControl.OutputResultJson");
  }
  std::vector<ResultJsonSet> lists;
  lists.reserve(Sets.size());
  for (const ResultSet& set : Sets) lists.push_back({set.ResultsHolder.get(), set.Kind});
  return ResultJson(*CurrentModel("clsTextControl.OutputResultJson"), lists);
}

std::string clsTextControl::OutputInfoJson() const {
  return InfoJson(*CurrentModel("clsTextControl.OutputInfoJson"));
}

}  // namespace keltrun
