#include "apps/keltrun2/commands.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "apps/keltrun2/command_error.h"
#include "apps/keltrun2/data_sets.h"
#include "apps/keltrun2/event_input.h"
#include "apps/keltrun2/files.h"
#include "apps/keltrun2/info_text.h"
#include "apps/keltrun2/words.h"

namespace keltrun::cli {
namespace {

constexpr char kPageEncoding[] = "utf-8";  // the host has texts in UTF-8 and writes them so

void AddNewLine(std::string& text, std::string_view new_line) {
  if (!text.ends_with('\n')) text += new_line;
}

std::string AnalysisJson(const clsKeltrun2& root, const ChosenSet& choice, const Options& options,
                         const std::shared_ptr<clsEstimate>& estimate) {
  const auto analyzer = Analysis(root, choice, options);
  analyzer->ExtraAnalyze();
  analyzer->Vesmer();
  std::string json = root.TextControl()->OutputJson(analyzer, choice.kind, estimate);
  while (json.ends_with('\n') || json.ends_with('\r')) json.pop_back();
  return json;
}

// One object when the user named the set, else an array.
std::string AnalysesJson(const clsKeltrun2& root, const Options& options) {
  const auto choices = ChosenSets(root, options);
  const auto estimate = root.NewEstimate(options.untimed);
  if (NamesOneSet(options)) return AnalysisJson(root, choices.front(), options, estimate);
  std::string json = "[";
  for (const ChosenSet& choice : choices) {
    json += json.size() > 1 ? ",\n" : "\n";
    json += AnalysisJson(root, choice, options, estimate);
  }
  return json + "\n]";
}

std::string ResultListsJson(const clsKeltrun2& root, const Options& options) {
  std::vector<clsTextControl::ResultSet> sets;
  for (const ChosenSet& choice : ChosenSets(root, options)) {
    sets.push_back({ResultList(root, choice), choice.kind});
  }
  return root.TextControl()->OutputResultJson(sets);
}

// HTML whose characters beyond ASCII are written as references, which are right in every charset.
std::string WithCharacterReferences(std::string_view html) {
  std::string out;
  for (std::size_t i = 0; i < html.size();) {
    const auto lead = static_cast<unsigned char>(html[i++]);
    if (lead < 0x80) {
      out += static_cast<char>(lead);
      continue;
    }
    std::uint32_t code = lead & (lead < 0xE0 ? 0x1F : lead < 0xF0 ? 0x0F : 0x07);
    while (i < html.size() && (html[i] & 0xC0) == 0x80) code = code << 6 | (html[i++] & 0x3F);
    out += "&#" + std::to_string(code) + ";";
  }
  return out;
}

// Outside the Japanese mode a page of legs declares another charset than the one given.
bool DeclaresCharset(std::string_view page, std::string_view charset) {
  constexpr std::string_view kDeclaration = "charset=";
  const std::size_t at = page.find(kDeclaration);
  return at != std::string_view::npos && page.substr(at + kDeclaration.size()).starts_with(charset);
}

bool IsEstimate(const Options& options) { return options.form.starts_with("estimate-"); }

// The classes that the user named, or all: what is estimated is the same in every set.
std::string EstimateText(const clsKeltrun2& root, const Options& options) {
  if (options.course || options.segment) {
    throw CommandError("an estimate is that of a class or of all classes: use --class or --all",
                       kWrongUse);
  }
  const auto& text = root.TextControl();
  const auto estimate = root.NewEstimate(options.untimed);
  const std::string name =
      NamesOneSet(options) ? root.ClassData(OneSet(root, options).number)->ClassName() : "";
  return options.form == "estimate-csv" ? text->OutputEstimateCsv(estimate, name)
                                        : text->OutputEstimateText(estimate, name);
}

bool IsTable(const Options& options) { return options.form == "csv" || options.form == "tidy-csv"; }

std::string Delimiter(const Options& options) {
  return options.delimiter == "tab" ? "\t" : options.delimiter;
}

// A row for each leg of every runner.
std::string LapTable(const clsKeltrun2& root, const Options& options) {
  const auto sets = AnalysesOfAll(root, NamedSetOrClasses(root, options), options);
  return root.TextControl()->OutputCsvLaps(sets, Delimiter(options));
}

// A row for each runner.
std::string ResultTable(const clsKeltrun2& root, const Options& options) {
  if (options.segment) {
    throw CommandError("a segment has no official results; name a class or course", kWrongUse);
  }
  const auto sets = ChosenSets(root, options);
  const auto klass = options.class_name ? root.ClassData(sets.front().number) : nullptr;
  return root.TextControl()->OutputCsvResults(klass ? klass->ClassName() : "",
                                              options.course.value_or(0), options.splits,
                                              Delimiter(options));
}

// The text as the bytes of the output. Spreadsheets recognize UTF-8 by its byte-order mark, so a
// result table has one unless the user says otherwise.
std::string Encoded(const clsKeltrun2& root, const Options& options, std::string text) {
  constexpr std::array kTextForms = {"csv",       "tidy-csv",      "text",          "mail",
                                     "macro-csv", "splitsbrowser", "estimate-text", "estimate-csv"};
  const bool has_choice =
      std::find(kTextForms.begin(), kTextForms.end(), options.form) != kTextForms.end();
  std::string charset = options.output_charset;
  if (!charset.empty() && !has_choice) {
    throw CommandError("the charset of " + options.form + " cannot be chosen", kWrongUse);
  }
  if (charset.empty()) charset = options.form == "csv" ? "utf-8-bom" : "utf-8";
  if (options.mark && LowerCase(charset).starts_with("utf")) {
    charset = *options.mark ? "utf-8-bom" : "utf-8";
  }
  if (charset != "utf-8") text = root.TextControl()->EncodeText(text, charset);
  return text;
}

std::string AnalysisText(const clsKeltrun2& root, const Options& options) {
  if (IsEstimate(options)) return EstimateText(root, options);
  const auto analyzer = Analysis(root, OneSet(root, options), options);
  const auto& html = root.HtmlControl();
  const auto& text = root.TextControl();
  if (options.form == "mail") return text->OutputTextMail(analyzer);
  if (options.form == "macro-csv") return text->OutputCsvQuillonMacro(analyzer);
  if (options.form == "splitsbrowser") return text->OutputCsvSplitsBrowser(analyzer);
  if (options.form == "legs") {
    analyzer->ExtraAnalyze();
    const std::string page = html->OutputLegData(analyzer, options.style_address, kPageEncoding);
    return DeclaresCharset(page, kPageEncoding) ? page : WithCharacterReferences(page);
  }
  return html->OutputAnalysis(analyzer, options.style_address, kPageEncoding);
}

// The contents of the body of a page.
std::string_view BodyOf(std::string_view page) {
  constexpr std::string_view kBegin = "<body>";
  const std::size_t begin = page.find(kBegin);
  if (begin == std::string_view::npos) return "";
  page.remove_prefix(begin + kBegin.size());
  return page.substr(0, page.rfind("</body>"));
}

// One page: that of the last list, with the other lists above it.
std::string ResultsPage(const clsKeltrun2& root, const Options& options,
                        const std::vector<ChosenSet>& sets) {
  const auto page = [&](const ChosenSet& choice, std::string_view above) {
    return root.HtmlControl()->OutputResult(ResultList(root, choice), above, options.style_address,
                                            kPageEncoding);
  };
  std::string above;
  for (auto choice = sets.begin(); choice != sets.end() - 1; ++choice) {
    above.append(BodyOf(page(*choice, ""))).append("<br>\r\n");
  }
  return page(sets.back(), above);
}

std::string ResultsText(const clsKeltrun2& root, const Options& options) {
  const auto sets = NamedSetOrClasses(root, options);
  if (sets.empty()) throw CommandError("the event has no classes");
  if (options.form != "text") return ResultsPage(root, options, sets);
  std::string text;
  for (const ChosenSet& choice : sets) {
    text += root.TextControl()->OutputTextResult(ResultList(root, choice));
  }
  return text;
}

// Without --to the ending of the name chooses the format. Remarks name what it has no place for.
void SaveEvent(clsKeltrun2& root, const Options& options) {
  const auto mode = options.full ? KR_SAVEMODE_FULL : KR_SAVEMODE_NORMAL;
  const auto& files = root.FileControl();
  const auto type = options.to.empty() ? KR_FILETYPE_AUTODETECT : SaveTypeOfWord(options.to);
  files->SetOutputCharset(options.output_charset);
  const bool saved = files->SaveLapFile(options.output, type, mode);
  if (!saved || !root.ErrorComment().empty()) throw CommandError(ReasonOf(root.ErrorComment()));
  if (!options.quiet) ShowRemarks(files->SaveRemarks(), options.output);
}

}  // namespace

void ConvertEvent(clsKeltrun2& root, const Options& options) {
  CheckOutput(options);
  LoadEvent(root, options);
  SaveEvent(root, options);
}

void MergeEvents(clsKeltrun2& root, const Options& options) {
  if (options.event == "-" && options.import_file == "-") {
    throw CommandError("\"-\" is given twice, but standard input can be read only once", kWrongUse);
  }
  CheckOutput(options);
  LoadEvent(root, options);
  MergeImport(root, options);
  SaveEvent(root, options);
}

void ShowInfo(clsKeltrun2& root, const Options& options) {
  CheckReport(options);
  LoadEvent(root, options, options.json ? RemarkDisplay::kShow : RemarkDisplay::kLeaveToCommand);
  std::string text = options.json ? root.TextControl()->OutputInfoJson() : InfoText(root);
  AddNewLine(text, "\n");
  WriteOutput(options.output, text);
}

void WriteAnalysis(clsKeltrun2& root, const Options& options) {
  CheckReport(options);
  LoadEvent(root, options);
  const bool json = options.form == "json";
  std::string text = json               ? AnalysesJson(root, options)
                     : IsTable(options) ? LapTable(root, options)
                                        : AnalysisText(root, options);
  AddNewLine(text, json ? "\n" : "\r\n");
  WriteOutput(options.output, Encoded(root, options, std::move(text)));
}

void WriteResults(clsKeltrun2& root, const Options& options) {
  CheckReport(options);
  LoadEvent(root, options);
  const bool json = options.form == "json";
  std::string text = json               ? ResultListsJson(root, options)
                     : IsTable(options) ? ResultTable(root, options)
                                        : ResultsText(root, options);
  AddNewLine(text, json ? "\n" : "\r\n");
  WriteOutput(options.output, Encoded(root, options, std::move(text)));
}

}  // namespace keltrun::cli
