#include "apps/keltrun2/commands.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "apps/keltrun2/chart_modes.h"
#include "apps/keltrun2/command_error.h"
#include "apps/keltrun2/data_sets.h"
#include "apps/keltrun2/display_text.h"
#include "apps/keltrun2/event_input.h"
#include "apps/keltrun2/files.h"
#include "apps/keltrun2/info_text.h"
#include "apps/keltrun2/style_sheet.h"

namespace keltrun::cli {
namespace {

constexpr char kIndexFile[] = "index.html";
constexpr char kStyleFile[] = "style.css";
constexpr char kNoStyle[] = "none";
// Around the block of each event in an index.
constexpr std::string_view kIndexStart = "<!-- ### KELTRUN START ### -->";
constexpr std::string_view kIndexFinish = "<!-- ### KELTRUN FINISH ### -->";
constexpr char kPageEncoding[] = "utf-8";  // the host has texts in UTF-8 and writes them so

// The folder with "/" only, as the library reads it, and with one at the end.
std::string SiteFolder(std::string folder) {
  if (folder.empty()) throw CommandError("the name of the folder is empty", kWrongUse);
  std::replace(folder.begin(), folder.end(), '\\', '/');
  if (folder.back() != '/') folder += '/';
  return folder;
}

// An address as the index writes it.
std::string Address(std::string_view name) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string address;
  for (const char c : name) {
    const auto byte = static_cast<unsigned char>(c);
    if (std::isalnum(byte) != 0 || std::string_view("-._~").find(c) != std::string_view::npos) {
      address += c;
    } else {
      address.append({'%', kDigits[byte >> 4], kDigits[byte & 15]});
    }
  }
  return address;
}

// The page without its blocks of events; nullopt when a block is cut, or leads to another copy of a
// lap file than the one of this name.
std::optional<std::string> WithoutBlocks(std::string page, const std::string& lap_file) {
  const std::string link = "href=\"" + Address(lap_file) + "\"";
  for (std::size_t begin = 0; (begin = page.find(kIndexStart)) != std::string::npos;) {
    const std::size_t finish = page.find(kIndexFinish, begin);
    if (finish == std::string::npos) return std::nullopt;
    const std::size_t link_at = page.find(link, begin);
    if (link_at == std::string::npos || link_at > finish) return std::nullopt;
    page.erase(begin, finish + kIndexFinish.size() - begin);
  }
  return page;
}

bool HasEmptyBody(std::string_view page) {
  const std::size_t body = page.find("<body");
  const std::size_t begin = page.find('>', body);
  const std::size_t end = page.find("</body>", begin);
  if (body == std::string_view::npos || end == std::string_view::npos) return false;
  return page.substr(begin + 1, end - begin - 1).find_first_not_of(" \t\r\n") ==
         std::string_view::npos;
}

std::string_view FirstLine(std::string_view text) {
  return text.substr(0, text.find_first_of("\r\n"));
}

[[noreturn]] void RefuseForeign(const std::string& file, const std::string& advice) {
  throw CommandError(
      file + " was not made by this program and would be lost: choose another folder, " + advice);
}

// An index that holds this event and nothing else may be replaced.
void CheckIndex(const std::string& file, const Options& options, const std::string& lap_file) {
  std::error_code none;
  if (options.add || options.force || !std::filesystem::exists(file, none)) return;
  const std::string page = ReadInput(file);
  const auto frame = WithoutBlocks(page, lap_file);
  if (frame && frame->size() < page.size() && HasEmptyBody(*frame)) return;
  throw CommandError(file +
                     " holds more than this event, and that would be lost: choose another folder, "
                     "put the event in front with --add, or replace the page with --force");
}

// Whether the style sheet is to be written. --add keeps one that is there, as it keeps the index.
bool ReplacesStyle(const std::string& file, const std::string& style, const Options& options) {
  std::error_code none;
  if (options.force || !std::filesystem::exists(file, none)) return true;
  const std::string old = ReadInput(file);
  if (old == style || FirstLine(old) == FirstLine(StyleSheet())) return true;
  if (!options.add) RefuseForeign(file, "keep it with --add, or replace it with --force");
  if (!options.quiet) {
    std::cerr << "keltrun2: " << Printable(file)
              << " was not made by this program and stays; --force replaces it\n";
  }
  return false;
}

std::string SiteStyle(const Options& options) {
  if (options.style_file.empty()) return std::string(StyleSheet());
  return ReadInput(options.style_file);
}

// Why the file could not be written, or "".
std::string WriteStyle(const std::string& file, const std::string& style) {
  try {
    WriteOutput(file, style);
    return "";
  } catch (const CommandError& error) {
    return error.what() + std::string("\n");
  }
}

SiteOptions Site(const Options& options, const std::string& folder, bool styled) {
  SiteOptions site;
  site.OutputFolder = folder;
  site.IndexFile = kIndexFile;
  site.ResultFile = options.prefix + "result_*.html";
  site.AnalysisFile = options.prefix + "lap_*.html";
  if (options.legs) site.LegDataFile = options.prefix + "legs_*.html";
  if (!options.charts.empty()) site.ChartFile = options.prefix + "chart_*.html";
  site.ChartOption = ChartModeNumbers(options.charts);
  site.ResultIncludeCourse = site.AnalysisIncludeCourse = options.courses;
  site.LegDataIncludeCourse = site.ChartIncludeCourse = options.courses;
  site.Lap2File = options.prefix + "event.lxm";
  site.Lap1File = options.prefix + "event.lap";
  if (options.viewer) site.ViewerFile = options.prefix + "viewer.html";
  if (styled) site.LinkStyleFile = kStyleFile;
  site.OfficialSite = options.official_site;
  site.IndexFileAddMode = options.add;
  site.IndexReplaceBlock = true;  // the same prefix again is the same event again
  site.Charset = options.charset;
  return site;
}

void AddNewLine(std::string& text, std::string_view new_line) {
  if (!text.ends_with('\n')) text += new_line;
}

std::string AnalysisJson(const clsKeltrun2& root, const ChosenSet& choice) {
  const auto analyzer = Analysis(root, choice);
  analyzer->ExtraAnalyze();
  analyzer->Vesmer();
  std::string json = root.TextControl()->OutputJson(analyzer, choice.kind);
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

std::string AnalysisText(const clsKeltrun2& root, const Options& options,
                         const std::shared_ptr<clsAnalyzer>& analyzer) {
  const auto& html = root.HtmlControl();
  const auto& text = root.TextControl();
  if (options.form == "mail") return text->OutputTextMail(analyzer);
  if (options.form == "macro-csv") return text->OutputCsvQuillonMacro(analyzer);
  if (options.form == "splitsbrowser") return text->OutputCsvSplitsBrowser(analyzer);
  if (options.form == "legs") {
    analyzer->ExtraAnalyze();
    const std::string page = html->OutputLegData(analyzer, options.style_address, kPageEncoding);
    // Outside the Japanese mode the page declares another charset than the one given.
    return options.language == "ja" ? page : WithCharacterReferences(page);
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

// The ending of the name chooses the format. Remarks name what the format has no place for.
void SaveEvent(clsKeltrun2& root, const Options& options) {
  const auto mode = options.full ? KR_SAVEMODE_FULL : KR_SAVEMODE_NORMAL;
  const auto& files = root.FileControl();
  const bool saved = files->SaveLapFile(options.output, KR_FILETYPE_AUTODETECT, mode);
  if (!saved || !root.ErrorComment().empty()) throw CommandError(ReasonOf(root.ErrorComment()));
  if (!options.quiet) ShowRemarks(files->SaveRemarks(), options.output);
}

}  // namespace

void PublishSite(clsKeltrun2& root, const Options& options) {
  LoadEvent(root, options);
  const std::string folder = SiteFolder(options.folder);
  const bool styled = options.style_file != kNoStyle;
  const std::string style = styled ? SiteStyle(options) : "";
  const SiteOptions site = Site(options, folder, styled);
  if (!options.charts.empty()) WarnWithoutJapaneseFont(options);
  MakeFolder(folder);
  CheckIndex(folder + kIndexFile, options, site.Lap2File);
  const std::string style_file = folder + kStyleFile;
  const bool writes_style = styled && ReplacesStyle(style_file, style, options);
  auto outputs = root.FileControl()->SiteFiles(site);
  if (writes_style) outputs.push_back(style_file);
  CheckEventIsKept(options, outputs, "choose another folder, or a --prefix");
  std::string failures = writes_style ? WriteStyle(style_file, style) : "";
  const bool begun = root.FileControl()->OutputSite(site);
  // The export goes on after a file that it cannot write; the error at the end lists all such
  // files.
  failures += ReasonOf(root.ErrorComment());
  if (!begun || !failures.empty()) throw CommandError(failures);
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
  CheckReport(options);
  LoadEvent(root, options);
  std::string text = options.json ? root.TextControl()->OutputInfoJson() : InfoText(root);
  AddNewLine(text, "\n");
  WriteOutput(options.output, text);
}

void WriteAnalysis(clsKeltrun2& root, const Options& options) {
  CheckReport(options);
  LoadEvent(root, options);
  const bool json = options.form == "json";
  std::string text = json ? AnalysesJson(root, options)
                          : AnalysisText(root, options, Analysis(root, OneSet(root, options)));
  AddNewLine(text, json ? "\n" : "\r\n");
  WriteOutput(options.output, text);
}

void WriteResults(clsKeltrun2& root, const Options& options) {
  CheckReport(options);
  LoadEvent(root, options);
  const bool json = options.form == "json";
  std::string text = json ? ResultListsJson(root, options) : ResultsText(root, options);
  AddNewLine(text, json ? "\n" : "\r\n");
  WriteOutput(options.output, text);
}

}  // namespace keltrun::cli
