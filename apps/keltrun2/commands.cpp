#include "apps/keltrun2/commands.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "apps/keltrun2/command_error.h"
#include "apps/keltrun2/data_sets.h"
#include "apps/keltrun2/event_input.h"
#include "apps/keltrun2/files.h"
#include "apps/keltrun2/info_text.h"
#include "apps/keltrun2/style_sheet.h"

namespace keltrun::cli {
namespace {

constexpr char kIndexFile[] = "index.html";
constexpr char kStyleFile[] = "style.css";
constexpr char kNoStyle[] = "none";
constexpr char kPageEncoding[] = "utf-8";  // the host has texts in UTF-8 and writes them so

// The folder with "/" only, as the library reads it, and at the end of it.
std::string SiteFolder(std::string folder) {
  if (folder.empty()) throw CommandError("the name of the folder is empty", kWrongUse);
  std::replace(folder.begin(), folder.end(), '\\', '/');
  if (folder.back() != '/') folder += '/';
  return folder;
}

// The copy of the lap file in the site is a plainer file than the event may be: it must not replace
// the event itself.
void CheckCopyIsAnother(const std::string& event, const std::string& copy) {
  std::error_code none;
  if (event == "-" || !std::filesystem::equivalent(event, copy, none)) return;
  throw CommandError("the site's copy of the lap file would replace " + event +
                     ": choose another folder, or a --prefix");
}

std::string SiteStyle(const Options& options) {
  if (options.style_file.empty()) return std::string(StyleSheet());
  return ReadInput(options.style_file);
}

void AddNewLine(std::string& text, std::string_view new_line) {
  if (!text.ends_with('\n')) text += new_line;
}

std::shared_ptr<clsAnalyzer> Analysis(const clsKeltrun2& root, const ChosenSet& choice) {
  auto analyzer = choice.segment ? choice.segment->Analyzer() : root.NewAnalyzer();
  Fill(*analyzer, choice);
  analyzer->Execute();
  return analyzer;
}

std::shared_ptr<clsResultsHolder> ResultList(const clsKeltrun2& root, const ChosenSet& choice) {
  auto results = choice.segment ? choice.segment->ResultsHolder() : root.NewResultsHolder();
  Fill(*results, choice);
  results->CalcRank();
  return results;
}

std::string AnalysisJson(const clsKeltrun2& root, const ChosenSet& choice) {
  std::string json = root.TextControl()->OutputJson(Analysis(root, choice), choice.kind);
  while (json.ends_with('\n') || json.ends_with('\r')) json.pop_back();
  return json;
}

// One object when the user named the set, else an array.
std::string AnalysesJson(const clsKeltrun2& root, const Options& options) {
  const auto choices = ChosenSets(root, options);
  if (NamesOneSet(options)) return AnalysisJson(root, choices.front());
  std::string json = "[";
  for (const ChosenSet& choice : choices) {
    json += json.size() > 1 ? ",\n" : "\n";
    json += AnalysisJson(root, choice);
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

// The ending of the name is the format.
void SaveEvent(clsKeltrun2& root, const Options& options) {
  const auto mode = options.full ? KR_SAVEMODE_FULL : KR_SAVEMODE_NORMAL;
  const bool saved = root.FileControl()->SaveLapFile(options.output, KR_FILETYPE_AUTODETECT, mode);
  if (!saved || !root.ErrorComment().empty()) throw CommandError(root.ErrorComment());
}

}  // namespace

void PublishSite(clsKeltrun2& root, const Options& options) {
  LoadEvent(root, options);
  const std::string folder = SiteFolder(options.folder);
  const bool styled = options.style_file != kNoStyle;
  const std::string style = styled ? SiteStyle(options) : "";
  const std::string copy = options.prefix + "event.lxm";
  CheckCopyIsAnother(options.event, folder + copy);
  MakeFolder(folder);
  if (styled) WriteOutput(folder + kStyleFile, style);
  const bool begun = root.FileControl()->OutputHtml(
      folder, kIndexFile, options.prefix + "lap_*.html", options.prefix + "result_*.html", copy, "",
      options.official_site, options.add, "", "", options.courses, options.courses, "", false, "",
      false, "", styled ? kStyleFile : "");
  // The export goes on past a page that it cannot write and lists such pages at the end.
  if (!begun || !root.ErrorComment().empty()) throw CommandError(root.ErrorComment());
  if (!options.quiet) std::cout << folder << kIndexFile << '\n';
}

void ConvertEvent(clsKeltrun2& root, const Options& options) {
  CheckOutput(options);
  LoadEvent(root, options);
  SaveEvent(root, options);
}

void MergeEvents(clsKeltrun2& root, const Options& options) {
  CheckOutput(options);
  LoadEvent(root, options);
  MergeImport(root, options);
  SaveEvent(root, options);
}

void ShowInfo(clsKeltrun2& root, const Options& options) {
  CheckOutput(options);
  LoadEvent(root, options);
  std::string text = options.json ? root.TextControl()->OutputInfoJson() : InfoText(root);
  AddNewLine(text, "\n");
  WriteOutput(options.output, text);
}

void WriteAnalysis(clsKeltrun2& root, const Options& options) {
  CheckOutput(options);
  LoadEvent(root, options);
  std::string text = options.json
                         ? AnalysesJson(root, options)
                         : root.HtmlControl()->OutputAnalysis(Analysis(root, OneSet(root, options)),
                                                              options.style_address, kPageEncoding);
  AddNewLine(text, options.json ? "\n" : "\r\n");
  WriteOutput(options.output, text);
}

void WriteResults(clsKeltrun2& root, const Options& options) {
  CheckOutput(options);
  LoadEvent(root, options);
  std::string text =
      options.json ? ResultListsJson(root, options)
                   : root.HtmlControl()->OutputResult(ResultList(root, OneSet(root, options)), "",
                                                      options.style_address, kPageEncoding);
  AddNewLine(text, options.json ? "\n" : "\r\n");
  WriteOutput(options.output, text);
}

}  // namespace keltrun::cli
