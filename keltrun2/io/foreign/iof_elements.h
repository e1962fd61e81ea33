// Elements of IOF XML, appended to a string.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "keltrun2/model/lap_data.h"

namespace keltrun {

/// What stands for a name that is empty: programs skip a runner without one.
inline constexpr std::string_view kNoName = "?";

/// Appends a text for an element or attribute: escaped, without characters that XML does not allow.
void AppendXmlText(std::string& out, std::string_view text);

/// An element with children. The destructor writes its end tag.
class IofElement {
 public:
  IofElement(std::string& out, std::string_view name) : out_(out), name_(name) {
    out_.append("<").append(name_).append(">");
  }
  ~IofElement() { out_.append("</").append(name_).append(">"); }
  IofElement(const IofElement&) = delete;
  IofElement& operator=(const IofElement&) = delete;

 private:
  std::string& out_;
  std::string_view name_;
};

/// An element with a text; an empty text gives an empty element.
void AppendElement(std::string& out, std::string_view name, std::string_view text);
void AppendElement(std::string& out, std::string_view name, std::int64_t number);

/// The element unless the text is empty.
void AppendElementIfSet(std::string& out, std::string_view name, std::string_view text);

/// "M" or "F" if the sex is one of the words for it, otherwise empty.
std::string_view SexLetter(const clsLapData& runner);

/// "<Person>", with the sex if it is known.
void AppendPersonTag(std::string& out, const clsLapData& runner);

/// The number on the bib and the punch card as texts; empty when there is none.
std::string BibText(const clsLapData& runner);
std::string CardText(const clsLapData& runner);

/// The XML declaration and a line break.
void AppendXmlDeclaration(std::string& out, std::string_view encoding);

}  // namespace keltrun
