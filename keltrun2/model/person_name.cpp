#include "keltrun2/model/person_name.h"

#include <cstddef>

#include "keltrun2/text/letters.h"

namespace keltrun {
namespace {

constexpr std::string_view kWideBlank = "\u3000";
constexpr std::string_view kNoBreakSpace = "\u00A0";

// The number of bytes of the blank at a place of the text; 0 when there is none.
std::size_t BlankAt(std::string_view text, std::size_t pos) {
  const char c = text[pos];
  if (c == ' ' || c == '\t' || c == '\r' || c == '\n') return 1;
  if (text.substr(pos, kWideBlank.size()) == kWideBlank) return kWideBlank.size();
  if (text.substr(pos, kNoBreakSpace.size()) == kNoBreakSpace) return kNoBreakSpace.size();
  return 0;
}

std::string_view Trimmed(std::string_view text) {
  while (!text.empty()) {
    const std::size_t blank = BlankAt(text, 0);
    if (blank == 0) break;
    text.remove_prefix(blank);
  }
  for (;;) {
    if (!text.empty() && BlankAt(text, text.size() - 1) == 1) {
      text.remove_suffix(1);
    } else if (text.ends_with(kWideBlank)) {
      text.remove_suffix(kWideBlank.size());
    } else if (text.ends_with(kNoBreakSpace)) {
      text.remove_suffix(kNoBreakSpace.size());
    } else {
      return text;
    }
  }
}

struct Parts {
  std::string_view first, rest;
};

Parts PartAtBlank(std::string_view name) {
  for (std::size_t pos = 0; pos < name.size(); ++pos) {
    if (BlankAt(name, pos) > 0) return {name.substr(0, pos), Trimmed(name.substr(pos))};
  }
  return {name, {}};
}

// "Berger, Anna"; nothing for a name with no comma, with several, or with nothing beside it.
Parts PartAtComma(std::string_view name) {
  const std::size_t comma = name.find(',');
  if (comma == std::string_view::npos || name.find(',', comma + 1) != std::string_view::npos) {
    return {};
  }
  const Parts parts = {Trimmed(name.substr(0, comma)), Trimmed(name.substr(comma + 1))};
  return parts.first.empty() || parts.rest.empty() ? Parts{} : parts;
}

}  // namespace

bool HasEastAsianScript(std::string_view text) {
  // In UTF-8 the letters from U+3000 to U+DFFF begin with the bytes E3 to ED, half-width katakana
  // (U+FF66 to U+FF9F) with EF BD or EF BE, and the rarer ideographs with F0 A0 and above.
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (byte < 0xE3) continue;
    if (byte <= 0xED) {
      if (text.substr(i, kWideBlank.size()) != kWideBlank) return true;
      i += kWideBlank.size() - 1;
    } else if (byte == 0xF0) {
      return i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) >= 0xA0;
    } else if (byte == 0xEF) {
      const std::string_view letter = text.substr(i, 3);
      if (letter >= "\uFF66" && letter <= "\uFF9F") return true;
    }
  }
  return false;
}

PersonName NameParts(const clsLapData& runner) {
  const std::string_view given = Trimmed(runner.GivenName);
  const std::string_view family = Trimmed(runner.FamilyName);
  const std::string_view name = Trimmed(runner.RunnerName);
  // A host may have changed the name that is shown, and then the parts are out of date.
  const bool are_shown = name.empty() || (Contains(name, given) && Contains(name, family));
  if (are_shown && !family.empty()) return {given, family};
  if (are_shown && !given.empty()) return {{}, given};
  if (const Parts parts = PartAtComma(name); !parts.first.empty()) return {parts.rest, parts.first};
  const Parts parts = PartAtBlank(name);
  if (parts.rest.empty() || HasEastAsianScript(name)) return {parts.rest, parts.first};
  return {parts.first, parts.rest};
}

}  // namespace keltrun
