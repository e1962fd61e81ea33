#include <algorithm>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "apps/keltrun2/chart_modes.h"
#include "apps/keltrun2/command_error.h"
#include "apps/keltrun2/commands.h"
#include "apps/keltrun2/display_text.h"
#include "apps/keltrun2/event_input.h"
#include "apps/keltrun2/files.h"
#include "apps/keltrun2/style_sheet.h"
#include "apps/keltrun2/words.h"

namespace keltrun::cli {
namespace {

constexpr char kIndexFile[] = "index.html";
constexpr char kClassicFile[] = "classic.html";  // the index of classic pages beside the report
constexpr char kStyleFile[] = "style.css";
constexpr char kNoStyle[] = "none";
constexpr std::size_t kShownConflicts = 5;
constexpr char kAdvice[] = "choose another folder, or a --prefix";

// The folder with "/" only, as the library reads it, and with one at the end.
std::string SiteFolder(std::string folder) {
  if (folder.empty()) throw CommandError("the name of the folder is empty", kWrongUse);
  std::replace(folder.begin(), folder.end(), '\\', '/');
  if (folder.back() != '/') folder += '/';
  return folder;
}

std::string_view FirstLine(std::string_view text) {
  return text.substr(0, text.find_first_of("\r\n"));
}

// Refuses to destroy what is not of this event.
void CheckConflicts(std::vector<std::string> conflicts, const std::string& advice,
                    const Options& options) {
  if (options.force || conflicts.empty()) return;
  if (conflicts.size() > kShownConflicts) {
    const std::size_t left_out = conflicts.size() - kShownConflicts;
    conflicts.resize(kShownConflicts);
    conflicts.push_back("the same holds for " + std::to_string(left_out) + " more");
  }
  throw CommandError(Joined(conflicts, "\n") + ", and that would be lost: " + advice);
}

// Whether the style sheet is to be written. --add keeps one that is there, as it keeps the index.
bool ReplacesStyle(const std::string& file, const std::string& style, const Options& options) {
  std::error_code none;
  if (options.force || !std::filesystem::exists(file, none)) return true;
  const std::string old = ReadInput(file);
  if (old == style || FirstLine(old) == FirstLine(StyleSheet())) return true;
  if (!options.add) {
    throw CommandError(file +
                       " was not made by this program and would be lost: choose another folder, "
                       "keep it with --add, or replace it with --force");
  }
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

PictureFormatConst ChartFormat(const Options& options) {
  return options.chart_format == "svg" ? KR_PICTURE_SVG : KR_PICTURE_PNG;
}

// The pages of each class, with an index of their own.
struct ClassicPages {
  SiteOptions site;
  std::string style_file;  // "" for one that is not to be written
  std::string style;
};

SiteOptions ClassicSite(const Options& options, const std::string& folder, bool styled) {
  const bool alone = options.pages == SitePages::kClassic;
  SiteOptions site;
  site.OutputFolder = folder;
  site.IndexFile = alone ? kIndexFile : options.prefix + kClassicFile;
  site.ResultFile = options.prefix + "result_*.html";
  site.AnalysisFile = options.prefix + "lap_*.html";
  if (options.legs) site.LegDataFile = options.prefix + "legs_*.html";
  if (!options.charts.empty()) site.ChartFile = options.prefix + "chart_*.html";
  site.ChartOption = ChartModeNumbers(options.charts);
  site.ChartFormat = ChartFormat(options);
  site.ResultIncludeCourse = site.AnalysisIncludeCourse = options.courses;
  site.LegDataIncludeCourse = site.ChartIncludeCourse = options.courses;
  site.Lap2File = options.prefix + "event.lxm";
  site.Lap1File = options.prefix + "event.lap";
  if (options.viewer) site.ViewerFile = options.prefix + "viewer.html";
  if (styled) site.LinkStyleFile = kStyleFile;
  site.OfficialSite = options.official_site;
  site.IndexFileAddMode = alone && options.add;
  site.IndexReplaceBlock = true;  // the same prefix again is the same event again
  site.UntimedLegs = options.untimed;
  site.BridgeGaps = true;
  site.Jobs = options.jobs;
  site.Charset = options.charset;
  return site;
}

// What to do when the index of classic pages is in the way of something else.
std::string ClassicAdvice(const Options& options) {
  if (options.pages == SitePages::kBoth) {
    return "choose another folder or --prefix, or replace the page with --force";
  }
  return options.add ? "choose another folder, or add the event without --classic"
                     : "choose another folder, put the event in front with --add, or replace the "
                       "page with --force";
}

// Finds out what is to be written, and refuses to destroy anything else.
ClassicPages PrepareClassic(const clsKeltrun2& root, const Options& options,
                            const std::string& folder, const std::string& style) {
  const bool styled = options.style_file != kNoStyle;
  ClassicPages pages = {ClassicSite(options, folder, styled), "", style};
  CheckConflicts(root.FileControl()->SiteConflicts(pages.site), ClassicAdvice(options), options);
  const std::string style_file = folder + kStyleFile;
  if (styled && ReplacesStyle(style_file, style, options)) pages.style_file = style_file;
  auto outputs = root.FileControl()->SiteFiles(pages.site);
  if (!pages.style_file.empty()) outputs.push_back(pages.style_file);
  CheckEventIsKept(options, outputs, kAdvice);
  return pages;
}

// What could not be written. The export goes on after a file that it cannot write.
std::string PublishClassic(clsKeltrun2& root, const ClassicPages& pages) {
  std::string failures = pages.style_file.empty() ? "" : WriteStyle(pages.style_file, pages.style);
  const bool begun = root.FileControl()->OutputSite(pages.site);
  failures += ReasonOf(root.ErrorComment());
  return begun || !failures.empty() ? failures : "nothing was published";
}

ReportSiteOptions ReportSite(const Options& options, const std::string& folder) {
  ReportSiteOptions site;
  site.OutputFolder = folder;
  site.Prefix = options.prefix;
  site.AddToIndex = options.add;
  site.ReplaceOthers = options.force;
  site.OfficialSite = options.official_site;
  site.ChartOption = ChartModeNumbers(options.charts);
  site.ChartFormat = ChartFormat(options);
  site.ChartIncludeCourse = options.courses;
  site.UntimedLegs = options.untimed;
  site.Jobs = options.jobs;
  if (options.pages == SitePages::kBoth) site.ClassicIndex = options.prefix + kClassicFile;
  return site;
}

void CheckReportSite(const clsKeltrun2& root, const Options& options,
                     const ReportSiteOptions& site) {
  CheckConflicts(
      root.FileControl()->ReportSiteConflicts(site),
      options.add ? "give this event a --prefix of its own, or replace what is there with --force"
                  : "choose another folder, add the event with --add and a --prefix, or replace "
                    "what is there with --force",
      options);
  CheckEventIsKept(options, root.FileControl()->ReportSiteFiles(site), kAdvice);
}

std::string PublishReport(clsKeltrun2& root, const ReportSiteOptions& site) {
  const bool begun = root.FileControl()->OutputReportSite(site);
  const std::string failures = ReasonOf(root.ErrorComment());
  return begun || !failures.empty() ? failures : "nothing was published";
}

}  // namespace

// Everything is checked before anything is written.
void PublishSite(clsKeltrun2& root, const Options& options) {
  LoadEvent(root, options);
  const std::string folder = SiteFolder(options.folder);
  const bool has_report = options.pages != SitePages::kClassic;
  const bool has_classic = options.pages != SitePages::kReport;
  const bool styled = has_classic && options.style_file != kNoStyle;
  const std::string style = styled ? SiteStyle(options) : "";
  if (!options.charts.empty()) WarnWithoutJapaneseFont(options);
  MakeFolder(folder);
  const ReportSiteOptions report = ReportSite(options, folder);
  if (has_report) CheckReportSite(root, options, report);
  std::optional<ClassicPages> classic;
  if (has_classic) classic = PrepareClassic(root, options, folder, style);
  std::string failures = has_report ? PublishReport(root, report) : "";
  if (classic) {
    const std::string more = PublishClassic(root, *classic);
    if (!failures.empty() && !more.empty()) failures += '\n';
    failures += more;
  }
  if (!failures.empty()) throw CommandError(failures);
  if (!options.quiet) std::cout << folder << kIndexFile << '\n';
}

}  // namespace keltrun::cli
