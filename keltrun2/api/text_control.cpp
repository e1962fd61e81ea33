#include "keltrun2/api/text_control.h"

#include "keltrun2/base/automation_error.h"
#include "keltrun2/codec/encodings.h"
#include "keltrun2/model/process_state.h"
#include "keltrun2/report/csv_export.h"
#include "keltrun2/report/estimate_text.h"
#include "keltrun2/report/json.h"
#include "keltrun2/report/lap_csv.h"
#include "keltrun2/report/mail_text.h"
#include "keltrun2/report/result_csv.h"
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

char CheckedDelimiter(std::string_view delimiter, std::string_view operation) {
  constexpr std::string_view kDelimiters = ",;|\t";
  if (delimiter.size() == 1 && kDelimiters.find(delimiter) != std::string_view::npos) {
    return delimiter.front();
  }
  throw AutomationError(KR_ERROR_INVALID_CALL, std::string(operation) + ": the delimiter \"" +
                                                   std::string(delimiter) +
                                                   "\" is none of \",\", \";\", \"|\" and TAB");
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

std::string clsTextControl::OutputCsvResults(std::string_view ClassName, std::int32_t CourseNum,
                                             bool Splits, std::string_view Delimiter) const {
  constexpr char kOperation[] = "clsTextControl.OutputCsvResults";
  std::string text;
  AppendResultCsv(text, *CurrentModel(kOperation),
                  {ClassName, CourseNum, Splits, CheckedDelimiter(Delimiter, kOperation)});
  return text;
}

std::string clsTextControl::OutputCsvLaps(const std::vector<AnalysisSet>& Sets,
                                          std::string_view Delimiter) const {
  constexpr char kOperation[] = "clsTextControl.OutputCsvLaps";
  for (const AnalysisSet& set : Sets) CheckObject(set.Analyzer, kOperation);
  const char delimiter = CheckedDelimiter(Delimiter, kOperation);
  const auto model = CurrentModel(kOperation);
  std::string text;
  AppendLapCsvTitles(text, delimiter);
  for (const AnalysisSet& set : Sets) {
    AppendLapCsv(text, *model, *set.Analyzer, set.Kind, delimiter);
  }
  return text;
}

std::string clsTextControl::EncodeText(std::string_view Text, std::string_view Charset) const {
  const auto encoding = TextEncodingFromName(Charset);
  if (!encoding) {
    throw AutomationError(KR_ERROR_INVALID_CALL, "clsTextControl.EncodeText: the charset \"" +
                                                     std::string(Charset) + "\" is not known");
  }
  return keltrun::EncodeText(std::string(Text), *encoding, MissingCharacter::kQuestionMark);
}

std::string clsTextControl::OutputInfoJson() const {
  return InfoJson(*CurrentModel("clsTextControl.OutputInfoJson"));
}

}  // namespace keltrun
