#include "keltrun2/io/detect.h"

#include <array>
#include <vector>

#include "keltrun2/config/settings.h"
#include "keltrun2/text/letters.h"

namespace keltrun {
namespace {

constexpr std::size_t kLinesLookedAt = 4;

// The first lines of a text, at most kLinesLookedAt. A line break at the very end starts one more
// line, which is empty.
std::vector<std::string_view> FirstLines(std::string_view text, std::string_view line_ends) {
  std::vector<std::string_view> lines;
  while (lines.size() < kLinesLookedAt) {
    const std::size_t end = text.find_first_of(line_ends);
    lines.push_back(text.substr(0, end));
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + (text.substr(end, 2) == "\r\n" ? 2 : 1));
  }
  return lines;
}

std::string ReturnsToCrLf(std::string_view text) {
  std::string out;
  for (const char c : text) {
    out += c;
    if (c == '\r') out += '\n';
  }
  return out;
}

// Spreadsheets add separators, and quotes, to the line that marks an import-only text.
bool IsImportMark(std::string_view line) {
  line = line.substr(0, line.find_last_not_of(",;\t\"") + 1);
  if (line.starts_with('"')) line.remove_prefix(1);
  return UpperAscii(line) == "$IMPORT_ONLY";
}

struct ContentSign {
  std::string_view beginning;
  ContentKind kind;
};

constexpr ContentSign kContentSigns[] = {
    {"\x89PNG", ContentKind::kPng},
    {"\xFF\xD8\xFF", ContentKind::kJpeg},
    {"GIF8", ContentKind::kGif},
    {"%PDF", ContentKind::kPdf},
    {"\xD0\xCF\x11\xE0", ContentKind::kWorkbook},  // the older form
    {"SQLite format 3", ContentKind::kDatabase},
};

// Workbooks of today are archives.
bool IsZippedWorkbook(std::string_view bytes) {
  constexpr std::size_t kBeginning = 4096;
  const std::string_view beginning = bytes.substr(0, kBeginning);
  return bytes.starts_with("PK") &&
         (Contains(beginning, "[Content_Types].xml") ||
          Contains(beginning, "application/vnd.oasis.opendocument.spreadsheet"));
}

}  // namespace

KrLapFileTypeConst DetectTextType(std::string& text) {
  if (text.find('\n') == std::string::npos) text = ReturnsToCrLf(text);
  const std::vector<std::string_view> lines = FirstLines(text, "\n");
  if (lines.size() < 3) return KR_FILETYPE_UNKNOWN;
  if (Contains(lines[0], "$LAPFILE Ver=2")) return KR_FILETYPE_KELTRUN1;
  if (Contains(lines[0], "xml")) return KR_FILETYPE_KELTRUN2;
  if (Contains(lines[1], "Split times of")) return KR_FILETYPE_OEVENT;
  if (Contains(lines[2], "SPORTident results")) return KR_FILETYPE_SPORTIDENT;
  return KR_FILETYPE_KELTRUN1;
}

KrLapFileTypeConst DetectFileTextType(std::string_view text) {
  std::vector<std::string_view> lines = FirstLines(text, "\r\n");
  if (lines.back().empty()) lines.pop_back();
  if (lines.empty()) return KR_FILETYPE_UNKNOWN;
  if (Contains(lines[0], "$LAPFILE Ver=2")) return KR_FILETYPE_KELTRUN1;
  if (IsImportMark(lines[0])) return KR_FILETYPE_IMPORT_ONLY;
  if (Contains(lines[0], "xml")) return KR_FILETYPE_KELTRUN2;
  if (lines.size() == 1) return KR_FILETYPE_UNKNOWN;
  if (Contains(lines[1], "Split times of")) return KR_FILETYPE_OEVENT;
  if (lines.size() == 2) return KR_FILETYPE_UNKNOWN;
  if (Contains(lines[2], "SPORTident results")) return KR_FILETYPE_SPORTIDENT;
  if (lines.size() > 3 && Contains(lines[3], "OE2003")) return KR_FILETYPE_SPORTIDENT;
  return KR_FILETYPE_KELTRUN1;
}

ContentKind KindOfContent(std::string_view bytes) {
  constexpr std::string_view kBlanks = "\xEF\xBB\xBF \t\r\n";
  if (bytes.find_first_not_of(kBlanks) == std::string_view::npos) return ContentKind::kEmpty;
  for (const ContentSign& sign : kContentSigns) {
    if (bytes.starts_with(sign.beginning)) return sign.kind;
  }
  return IsZippedWorkbook(bytes) ? ContentKind::kWorkbook : ContentKind::kOther;
}

std::string NotResultsText(std::string_view bytes) {
  const ContentKind kind = KindOfContent(bytes);
  if (kind == ContentKind::kEmpty) return ResourceText("RES_REFUSED_EMPTY");
  if (kind == ContentKind::kWorkbook) return ResourceText("RES_REFUSED_WORKBOOK");
  constexpr std::array<std::string_view, 8> kNames = {"",    "",    "PNG", "JPEG",
                                                      "GIF", "PDF", "",    "SQLite"};
  std::string text = ResourceText("RES_REFUSED_CONTENT");
  const std::size_t place = text.find("%1");
  if (place != std::string::npos) text.replace(place, 2, kNames[static_cast<std::size_t>(kind)]);
  return text;
}

}  // namespace keltrun
