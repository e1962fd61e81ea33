// XML documents: pugixml behind a gate that refuses what it would let pass in silence.
#pragma once

#include <cstddef>
#include <optional>
#include <pugixml.hpp>
#include <string>
#include <string_view>

namespace keltrun {

/// Why a document was refused, and where in the text it was found (both from 1; the column counts
/// characters; 0 where no place can be named).
struct XmlError {
  int Line = 0;
  int Column = 0;
  std::string Detail;
};

/// "line 3, column 14: ..." or the bare detail.
std::string ToString(const XmlError& error);

/// A parsed document. Names, values and nodes stay valid as long as it lives and is not moved.
class XmlDocument {
 public:
  /// Parses a file's bytes. The encoding is that of the byte-order mark, else of the declaration,
  /// else UTF-8. Refused: bytes invalid in their encoding, an unknown encoding, NUL characters,
  /// anything but white space, comments and instructions beside the one root element, an internal
  /// DTD subset (so no entity can be declared), nesting deeper than 256, an attribute given twice.
  std::optional<XmlError> LoadBytes(std::string_view bytes);

  /// Parses a text that is UTF-8 already: a byte-order mark is dropped and the encoding named in
  /// the declaration ignored. The same refusals.
  std::optional<XmlError> LoadText(std::string_view text);

  /// The root element; null before a successful load.
  pugi::xml_node Root() const { return document_.document_element(); }

  /// An error of whoever reads the document, placed at its root element.
  XmlError ErrorAtRoot(std::string detail) const;

 private:
  std::optional<XmlError> Parse();
  std::optional<XmlError> CheckTopLevel() const;
  std::optional<XmlError> CheckElements() const;
  XmlError ErrorAt(std::size_t offset, std::string detail) const;
  XmlError ErrorAt(pugi::xml_node node, std::string detail) const;
  XmlError ErrorAtText(pugi::xml_node node, std::string detail) const;

  std::string_view source_;  // the text during a load: offsets in it become lines and columns
  XmlError root_place_;      // where the root element begins, without a detail
  std::string buffer_;       // the copy that the parser cuts into names and values
  pugi::xml_document document_;
};

/// An element's name without its namespace prefix.
std::string_view LocalName(const pugi::xml_node& node);

/// The element as a document: declaration, line break, element without white space between its
/// parts, line break. Characters that XML 1.0 does not allow must have been dropped before.
std::string WriteXml(const pugi::xml_document& document);

/// `text` without the characters that XML 1.0 does not allow, as valid UTF-8.
std::string AllowedInXml(std::string_view text);

}  // namespace keltrun
