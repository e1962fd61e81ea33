// Text for other programs and for people.
#pragma once

#include <cstdint>
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

/// Turns data sets into text for other programs and for people, returned as UTF-8. The forms are
/// described in docs/formats.md. A null object raises object not set (91).
///
/// The texts whose lines end in CR LF are commonly written in Shift-JIS: their columns line up in a
/// font in which a Japanese character is as wide as two Latin ones.
class KELTRUN2_API clsTextControl {
 public:
  /// An executed analysis as comma-separated lines for a spreadsheet macro: class, name, club,
  /// rank, result, start time and splits of every runner with a finish time.
  [[nodiscard]] std::string OutputCsvQuillonMacro(
      const std::shared_ptr<clsAnalyzer>& wAnalyzer) const;

  /// An executed analysis as comma-separated lines for the split-time viewer SplitsBrowser: name,
  /// club, start time and splits of every runner with a finish time.
  [[nodiscard]] std::string OutputCsvSplitsBrowser(
      const std::shared_ptr<clsAnalyzer>& wAnalyzer) const;

  /// An executed analysis to be pasted into an e-mail: blocks of twelve runners with a row for each
  /// leg, times as minutes and seconds without a separator ("6203" for 1:02:03).
  [[nodiscard]] std::string OutputTextMail(const std::shared_ptr<clsAnalyzer>& wAnalyzer) const;

  /// A result list with a line for each runner. Ranks are those of the last `CalcRank`.
  [[nodiscard]] std::string OutputTextResult(
      const std::shared_ptr<clsResultsHolder>& wResults) const;

  /// What an estimate says about the runners of a class, or of all classes for "", in sentences in
  /// the language of the pages: how fast each runner is, and where their time went. Letter case
  /// does not matter; an unknown class gives an empty text.
  [[nodiscard]] std::string OutputEstimateText(const std::shared_ptr<clsEstimate>& Estimate,
                                               std::string_view ClassName = "") const;

  /// The laps of a class, or of all classes for "", with the figures of an estimate as
  /// comma-separated lines (RFC 4180): the names of the columns, then one line for each lap. Times
  /// are in seconds. An unknown class gives only the first line.
  [[nodiscard]] std::string OutputEstimateCsv(const std::shared_ptr<clsEstimate>& Estimate,
                                              std::string_view ClassName = "") const;

  /// An executed analysis as one JSON object in the form of docs/json.md. With an estimate, that of
  /// a class or course has its figures, too.
  [[nodiscard]] std::string OutputJson(
      const std::shared_ptr<clsAnalyzer>& Analyzer, DataSetKind Kind = DataSetKind::kClass,
      const std::shared_ptr<clsEstimate>& Estimate = nullptr) const;

  /// One result list of the document that OutputResultJson makes.
  struct ResultSet {
    /// The list, with the ranks of its last CalcRank; not null.
    std::shared_ptr<clsResultsHolder> ResultsHolder;
    DataSetKind Kind = DataSetKind::kClass;  ///< What the document calls the list.
  };

  /// Result lists as one JSON object.
  [[nodiscard]] std::string OutputResultJson(const std::vector<ResultSet>& Sets) const;

  /// The runners of the current event as a table: a header line, then a row for each runner,
  /// whatever the status. With a class or a course only the runners of the class, or those who had
  /// the course; with Splits also the times at the controls. The Delimiter is one of "," ";" "|"
  /// and TAB; anything else raises invalid procedure call (5). docs/formats.md describes the
  /// columns.
  [[nodiscard]] std::string OutputCsvResults(std::string_view ClassName = "",
                                             std::int32_t CourseNum = 0, bool Splits = false,
                                             std::string_view Delimiter = ",") const;

  /// One analysis of the table that OutputCsvLaps makes.
  struct AnalysisSet {
    /// The analysis, executed; not null.
    std::shared_ptr<clsAnalyzer> Analyzer;
    DataSetKind Kind = DataSetKind::kClass;  ///< What the runners have in common.
  };

  /// Analyses as one table with a row for each runner and leg, for programs that evaluate data. The
  /// figures are those of OutputJson. Raises errors for the Delimiter like OutputCsvResults.
  [[nodiscard]] std::string OutputCsvLaps(const std::vector<AnalysisSet>& Sets,
                                          std::string_view Delimiter = ",") const;

  /// A text as the bytes of a file in a charset: "utf-8", "utf-8-bom" (with a byte-order mark),
  /// "cp932", "windows-1252" or another of their names. "?" stands for characters that the charset
  /// does not have. Raises invalid procedure call (5) for an unknown charset.
  [[nodiscard]] std::string EncodeText(std::string_view Text, std::string_view Charset) const;

  /// The current event, its classes, courses, segment sets and choices as one JSON object.
  [[nodiscard]] std::string OutputInfoJson() const;
};

}  // namespace keltrun
