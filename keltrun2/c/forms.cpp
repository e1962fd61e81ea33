#include "keltrun2/c/forms.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <utility>

#include "keltrun2/base/automation_error.h"
#include "keltrun2/c/sets.h"
#include "keltrun2/codec/encodings.h"
#include "keltrun2/loading/lap_file_io.h"
#include "keltrun2/report/json_writer.h"
#include "keltrun2/report/report_data.h"
#include "keltrun2/report/report_page.h"

namespace keltrun::c {
namespace {

constexpr std::string_view kUtf8 = "utf-8";
constexpr std::string_view kWithMark = "utf-8-bom";  // by which spreadsheets recognize UTF-8

using Text = std::string (*)(Event& event);

// --- JSON ---

std::string InfoDocument(Event& event) { return event.Root().TextControl()->OutputInfoJson(); }

std::string_view SeverityWord(RemarkSeverity severity) {
  return severity == RemarkSeverity::kNote ? "note" : "warning";
}

// One entry for each kind of remark: the first of them, and how many there are. A remark without a
// kind is the only one of its own.
struct RemarkGroup {
  const LoadRemark* first;
  std::int32_t count;
};

std::vector<RemarkGroup> GroupsOf(const std::vector<LoadRemark>& remarks) {
  std::vector<RemarkGroup> groups;
  std::map<std::string_view, std::size_t> group_of_kind;
  for (const LoadRemark& remark : remarks) {
    const auto found = group_of_kind.find(remark.Kind);
    if (!remark.Kind.empty() && found != group_of_kind.end()) {
      ++groups[found->second].count;
      continue;
    }
    group_of_kind.emplace(remark.Kind, groups.size());
    groups.push_back({&remark, 1});
  }
  return groups;
}

std::string RemarksDocument(Event& event) {
  std::string text;
  JsonWriter json(text);
  json.BeginObject();
  json.Integer("version", 1);
  json.Text("format", event.Format());
  json.BeginArray("remarks");
  for (const auto& [remark, count] : GroupsOf(event.Remarks)) {
    json.BeginObject();
    json.Text("severity", SeverityWord(remark->Severity));
    json.Integer("count", count);
    json.Integer("line", remark->Line);
    json.Integer("column", remark->Column);
    json.Text("text", remark->Text);
    json.EndObject();
  }
  json.EndArray();
  json.BeginArray("oddities");
  for (const std::string& oddity : event.Root().EventRemarks()) json.Text(oddity);
  json.EndArray();
  json.EndObject();
  return text;
}

std::string AnalysisDocument(const Event& event, const ChosenSet& set,
                             const std::shared_ptr<clsEstimate>& estimate) {
  const auto analyzer = Analysis(event, set);
  analyzer->ExtraAnalyze();
  analyzer->Vesmer();
  std::string json = event.Root().TextControl()->OutputJson(analyzer, set.kind, estimate);
  while (json.ends_with('\n') || json.ends_with('\r')) json.pop_back();
  return json;
}

// One object when the options name the set, else an array.
std::string AnalysisDocuments(Event& event) {
  const auto sets = ChosenSets(event);
  const auto estimate = event.Root().NewEstimate(event.Options.untimed);
  if (NamesOneSet(event.Options)) return AnalysisDocument(event, sets.front(), estimate) + "\n";
  std::string json = "[";
  for (const ChosenSet& set : sets) {
    json += json.size() > 1 ? ",\n" : "\n";
    json += AnalysisDocument(event, set, estimate);
  }
  return json + "\n]\n";
}

std::string ResultDocument(Event& event) {
  std::vector<clsTextControl::ResultSet> lists;
  for (const ChosenSet& set : ChosenSets(event)) {
    lists.push_back({ResultList(event, set), set.kind});
  }
  return event.Root().TextControl()->OutputResultJson(lists);
}

// --- tables and texts ---

std::string ResultTable(Event& event) {
  const Options& options = event.Options;
  if (options.segment) throw Failure("a segment has no official results: name a class or course");
  std::string class_name;
  if (options.class_name) {
    class_name = event.Root().ClassData(OneSet(event).number)->ClassName();
  } else if (options.course) {
    OneSet(event);
  }
  return event.Root().TextControl()->OutputCsvResults(class_name, options.course.value_or(0),
                                                      options.splits, options.delimiter);
}

std::string LapTable(Event& event) {
  const auto analyses = Analyses(event, NamedSetOrClasses(event));
  return event.Root().TextControl()->OutputCsvLaps(analyses, event.Options.delimiter);
}

std::vector<ChosenSet> ListedSets(const Event& event) {
  auto sets = NamedSetOrClasses(event);
  if (sets.empty()) throw Failure("the event has no classes");
  return sets;
}

std::string ResultText(Event& event) {
  std::string text;
  for (const ChosenSet& set : ListedSets(event)) {
    text += event.Root().TextControl()->OutputTextResult(ResultList(event, set));
  }
  return text;
}

std::string ResultPage(Event& event) {
  return event.Root().HtmlControl()->OutputResult(ResultList(event, OneSet(event)), "", "", kUtf8);
}

std::string AnalysisPage(Event& event) {
  return event.Root().HtmlControl()->OutputAnalysis(Analysis(event, OneSet(event)), "", kUtf8);
}

template <auto Output>
std::string AnalysisText(Event& event) {
  return (*event.Root().TextControl().*Output)(Analysis(event, OneSet(event)));
}

// What is estimated is the same in every set, so the set is a class or all of them.
template <auto Output>
std::string EstimateText(Event& event) {
  const Options& options = event.Options;
  if (options.course || options.segment) {
    throw Failure("an estimate is that of a class or of all classes");
  }
  const std::string name =
      options.class_name ? event.Root().ClassData(OneSet(event).number)->ClassName() : "";
  return (*event.Root().TextControl().*Output)(event.Root().NewEstimate(options.untimed), name);
}

// --- the report ---

std::string Report(Event& event) {
  const auto estimate = event.Root().NewEstimate(event.Options.untimed);
  return event.Root().HtmlControl()->OutputViewer(ReportedSets(event), estimate);
}

std::vector<ReportPageSet> PageSets(const Event& event) {
  std::vector<ReportPageSet> sets;
  for (const auto& set : ReportedSets(event)) sets.push_back({set.Analyzer, set.Kind});
  return sets;
}

std::string ReportBlock(Event& event) {
  const auto estimate = event.Root().NewEstimate(event.Options.untimed);
  return ReportData(*CurrentModel("keltrun2_export"), PageSets(event), estimate.get());
}

// --- lap files ---

std::string LapFile(Event& event, KrLapFileTypeConst type) {
  const Options& options = event.Options;
  const auto mode = options.full ? KR_SAVEMODE_FULL : KR_SAVEMODE_NORMAL;
  std::vector<LoadRemark> remarks;
  SetErrorText("");
  auto bytes = LapFileBytes(*CurrentModel("keltrun2_export"), type, mode,
                            TextEncodingFromName(options.charset), remarks);
  if (!bytes) throw Failure(FailureReason(ErrorText()));
  event.Remarks = std::move(remarks);
  return std::move(*bytes);
}

struct LapFileForm {
  const char* word;
  const char* file;
};
constexpr LapFileForm kLapFileForms[] = {
    {"lxm", "event.lxm"},        {"lap", "event.lap"},          {"iof3", "results.xml"},
    {"iof2", "results.xml"},     {"iof2-plain", "results.xml"}, {"splitsbrowser", "splits.csv"},
    {"winsplits", "splits.txt"}, {"oe2010", "splits.csv"},
};

// --- all of them ---

// A text that the library makes. Those without a charset of their own are always UTF-8.
struct TextForm {
  const char* word;
  const char* file;
  Text make;
  std::string_view charset;  // unless the options name another
};

constexpr TextForm kTextForms[] = {
    {"info-json", "info.json", InfoDocument, ""},
    {"remarks-json", "remarks.json", RemarksDocument, ""},
    {"results-json", "results.json", ResultDocument, ""},
    {"results-csv", "results.csv", ResultTable, kWithMark},
    {"results-text", "results.txt", ResultText, kUtf8},
    {"results-html", "results.html", ResultPage, ""},
    {"analyze-json", "analysis.json", AnalysisDocuments, ""},
    {"analyze-tidy-csv", "laps.csv", LapTable, kUtf8},
    {"analyze-html", "analysis.html", AnalysisPage, ""},
    {"analyze-mail", "analysis.txt", AnalysisText<&clsTextControl::OutputTextMail>, kUtf8},
    {"analyze-macro-csv", "analysis.csv", AnalysisText<&clsTextControl::OutputCsvQuillonMacro>,
     kUtf8},
    {"analyze-splitsbrowser", "splits.csv", AnalysisText<&clsTextControl::OutputCsvSplitsBrowser>,
     kUtf8},
    {"analyze-estimate-text", "estimate.txt", EstimateText<&clsTextControl::OutputEstimateText>,
     kUtf8},
    {"analyze-estimate-csv", "estimate.csv", EstimateText<&clsTextControl::OutputEstimateCsv>,
     kUtf8},
    {"report", "report.html", Report, ""},
    {"report-data", "report.json", ReportBlock, ""},
};

constexpr const char* kSite = "site";

std::string Encoded(const Event& event, const TextForm& form, std::string text) {
  const std::string& wanted = event.Options.charset;
  if (form.charset.empty()) {
    if (wanted.empty()) return text;
    throw AutomationError(KR_ERROR_INVALID_CALL, "the charset of the form " +
                                                     std::string(form.word) + " cannot be chosen");
  }
  const std::string_view charset = wanted.empty() ? form.charset : std::string_view(wanted);
  if (charset == kUtf8) return text;
  return event.Root().TextControl()->EncodeText(text, charset);
}

// The event for a web space: the report as its first page, which links the results for other
// programs.
std::vector<OutputFile> Site(Event& event) {
  constexpr const char* kLapFile = "event.lxm";
  constexpr const char* kIofFile = "results.xml";
  constexpr const char* kTable = "results.csv";
  ReportSurroundings surroundings;
  surroundings.Links = {{ReportLinkKind::kLapFile, kLapFile},
                        {ReportLinkKind::kIofXml, kIofFile},
                        {ReportLinkKind::kTable, kTable}};
  const auto estimate = event.Root().NewEstimate(event.Options.untimed);
  std::string report;
  AppendReportPage(report, *CurrentModel("keltrun2_export"), PageSets(event), estimate.get(),
                   surroundings);
  std::vector<OutputFile> files;
  files.push_back({"index.html", std::move(report)});
  files.push_back({kLapFile, LapFile(event, KR_FILETYPE_KELTRUN2)});
  files.push_back({kIofFile, LapFile(event, KR_FILETYPE_IOF_XML_30_RESULT)});
  files.push_back({kTable, event.Root().TextControl()->EncodeText(ResultTable(event), kWithMark)});
  return files;
}

[[noreturn]] void RefuseForm(std::string_view form) {
  std::string names;
  for (std::size_t i = 0; const char* name = FormName(i); ++i) names.append(" ").append(name);
  throw AutomationError(KR_ERROR_INVALID_CALL,
                        "there is no form \"" + std::string(form) + "\"; the forms are" + names);
}

}  // namespace

const char* FormName(std::size_t index) {
  if (index < std::size(kLapFileForms)) return kLapFileForms[index].word;
  index -= std::size(kLapFileForms);
  if (index < std::size(kTextForms)) return kTextForms[index].word;
  return index == std::size(kTextForms) ? kSite : nullptr;
}

std::vector<OutputFile> Export(Event& event, std::string_view form) {
  if (form == kSite) return Site(event);
  for (const TextForm& text : kTextForms) {
    if (form == text.word) return {{text.file, Encoded(event, text, text.make(event))}};
  }
  for (const LapFileForm& file : kLapFileForms) {
    if (form == file.word) return {{file.file, LapFile(event, SaveTypeOfWord(form))}};
  }
  RefuseForm(form);
}

}  // namespace keltrun::c
