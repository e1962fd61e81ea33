#include "keltrun2/text/cells.h"

namespace keltrun {
namespace {

bool BreaksLine(char c) { return c == '\r' || c == '\n' || c == '\t'; }

}  // namespace

void AppendInLine(std::string& out, std::string_view text) {
  for (const char c : text) out += BreaksLine(c) ? ' ' : c;
}

void AppendCell(std::string& out, std::string_view text) {
  for (const char c : text) {
    if (c == ',') {
      out += "\uFF0C";
    } else {
      out += BreaksLine(c) ? ' ' : c;
    }
  }
}

std::string InLine(std::string_view text) {
  std::string out;
  AppendInLine(out, text);
  return out;
}

}  // namespace keltrun
