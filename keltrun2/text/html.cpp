#include "keltrun2/text/html.h"

#include "keltrun2/text/letters.h"

namespace keltrun {
namespace {

std::string_view Entity(char c) {
  switch (c) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    default:
      return {};
  }
}

bool IsUnreserved(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || IsDigit(c) ||
         std::string_view("-._~/").find(c) != std::string_view::npos;
}

}  // namespace

void AppendEscaped(std::string& out, std::string_view text) {
  for (std::size_t special; (special = text.find_first_of("&<>\"")) != std::string_view::npos;) {
    out.append(text.substr(0, special)).append(Entity(text[special]));
    text.remove_prefix(special + 1);
  }
  out.append(text);
}

void AppendEscapedNoBreak(std::string& out, std::string_view text) {
  for (const char c : text) {
    if (c == ' ') {
      out += "&nbsp;";
    } else if (const std::string_view entity = Entity(c); !entity.empty()) {
      out += entity;
    } else {
      out += c;
    }
  }
}

std::string EscapeHtml(std::string_view text) {
  std::string out;
  AppendEscaped(out, text);
  return out;
}

std::string PercentEncode(std::string_view name) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string out;
  for (const char c : name) {
    if (IsUnreserved(c)) {
      out += c;
      continue;
    }
    const auto byte = static_cast<unsigned char>(c);
    out += '%';
    out += kHex[byte >> 4];
    out += kHex[byte & 15];
  }
  return out;
}

}  // namespace keltrun
