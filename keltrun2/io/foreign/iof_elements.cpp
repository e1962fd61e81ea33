#include "keltrun2/io/foreign/iof_elements.h"

#include <algorithm>

#include "keltrun2/codec/xml.h"
#include "keltrun2/text/html.h"
#include "keltrun2/text/numbers.h"

namespace keltrun {
namespace {

struct SexWord {
  std::string_view word, value;
};
constexpr SexWord kSexWords[] = {{"M", "M"}, {"m", "M"}, {"男", "M"}, {"男性", "M"},
                                 {"F", "F"}, {"f", "F"}, {"女", "F"}, {"女性", "F"}};

// ASCII without control characters and without what has to be escaped.
bool IsPlain(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) {
    return c >= ' ' && c < 0x7F && c != '&' && c != '<' && c != '>' && c != '"';
  });
}

}  // namespace

void AppendXmlText(std::string& out, std::string_view text) {
  if (IsPlain(text)) {
    out.append(text);
  } else {
    AppendEscaped(out, AllowedInXml(text));
  }
}

void AppendElement(std::string& out, std::string_view name, std::string_view text) {
  if (text.empty()) {
    out.append("<").append(name).append("/>");
    return;
  }
  out.append("<").append(name).append(">");
  AppendXmlText(out, text);
  out.append("</").append(name).append(">");
}

void AppendElement(std::string& out, std::string_view name, std::int64_t number) {
  out.append("<").append(name).append(">");
  AppendInteger(out, number);
  out.append("</").append(name).append(">");
}

void AppendElementIfSet(std::string& out, std::string_view name, std::string_view text) {
  if (!text.empty()) AppendElement(out, name, text);
}

std::string_view SexLetter(const clsLapData& runner) {
  const auto known = std::find_if(std::begin(kSexWords), std::end(kSexWords),
                                  [&](const SexWord& sex) { return runner.Sex == sex.word; });
  return known == std::end(kSexWords) ? std::string_view() : known->value;
}

void AppendPersonTag(std::string& out, const clsLapData& runner) {
  const std::string_view sex = SexLetter(runner);
  out += "<Person";
  if (!sex.empty()) out.append(" sex=\"").append(sex).append("\"");
  out += ">";
}

std::string BibText(const clsLapData& runner) {
  if (!runner.Bib.empty()) return runner.Bib;
  return runner.ID != 0 ? std::to_string(runner.ID) : "";
}

std::string CardText(const clsLapData& runner) {
  if (!runner.ControlCard.empty()) return runner.ControlCard;
  return runner.Ecard != 0 ? std::to_string(runner.Ecard) : "";
}

void AppendXmlDeclaration(std::string& out, std::string_view encoding) {
  out.append("<?xml version=\"1.0\" encoding=\"").append(encoding).append("\"?>\r\n");
}

}  // namespace keltrun
