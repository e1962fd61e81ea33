#include "keltrun2/io/detect.h"

#include <vector>

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

}  // namespace keltrun
