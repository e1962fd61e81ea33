#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>

#include "apps/keltrun2/chart_modes.h"
#include "apps/keltrun2/command_error.h"
#include "apps/keltrun2/commands.h"
#include "apps/keltrun2/display_text.h"
#include "apps/keltrun2/event_input.h"
#include "apps/keltrun2/files.h"
#include "apps/keltrun2/style_sheet.h"

namespace keltrun::cli {
namespace {

constexpr char kIndexFile[] = "index.html";
constexpr char kStyleFile[] = "style.css";
constexpr char kNoStyle[] = "none";
// Around the block of each event in an index.
constexpr std::string_view kIndexStart = "<!-- ### KELTRUN START ### -->";
constexpr std::string_view kIndexFinish = "<!-- ### KELTRUN FINISH ### -->";

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
  site.UntimedLegs = options.untimed;
  site.BridgeGaps = true;
  site.Charset = options.charset;
  return site;
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

}  // namespace keltrun::cli
