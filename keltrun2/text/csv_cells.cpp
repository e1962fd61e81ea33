#include "keltrun2/text/csv_cells.h"

#include <algorithm>
#include <array>

namespace keltrun {
namespace {

bool BeginsFormula(std::string_view text) {
  constexpr std::array<std::string_view, 11> kBeginnings = {
      "=", "+", "-", "@", "\t", "\r", "\n", "\uFF1D", "\uFF0B", "\uFF0D", "\uFF20"};
  return std::any_of(kBeginnings.begin(), kBeginnings.end(),
                     [&](std::string_view beginning) { return text.starts_with(beginning); });
}

}  // namespace

void AppendCsvText(std::string& out, std::string_view text, char delimiter) {
  const bool quoted = std::any_of(text.begin(), text.end(), [&](char c) {
    return c == delimiter || c == '"' || c == '\r' || c == '\n';
  });
  if (quoted) out += '"';
  if (BeginsFormula(text)) out += '\'';
  if (!quoted) {
    out += text;
    return;
  }
  for (const char c : text) {
    if (c == '"') out += '"';
    out += c;
  }
  out += '"';
}

}  // namespace keltrun
