// XML documents, read element by element, and written with pugixml.
#pragma once

#include <cstddef>
#include <optional>
#include <pugixml.hpp>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

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

/// An attribute of an element, its references resolved and its white space made blanks.
class XmlAttribute {
 public:
  std::string_view Name() const { return name_; }
  std::string_view Value() const { return plain_ ? raw_ : decoded_; }

 private:
  friend class XmlReader;
  std::string_view name_;
  std::string_view raw_;
  bool plain_ = true;  // as it stands in the document
  std::string decoded_;
};

/// Walks through the elements of a document from its start to its end. It keeps no more of them
/// than those that are open, so that a document may be of any size.
///
///     XmlReader reader;
///     auto error = reader.OpenBytes(bytes);
///     if (!error && reader.NextChild()) {               // the root element
///       while (reader.NextChild()) {                    // each of its children
///         reader.Name(); reader.Attributes();
///         reader.SkipTo(1);                             // over what is in it
///       }
///     }
///     reader.SkipTo(0);                                 // to the end of the document
///     error = reader.Error();
///
/// Refused: bytes invalid in their encoding, an unknown encoding, NUL characters, references to
/// characters that XML does not allow, tags that do not match, an attribute given twice, anything
/// but white space, comments and instructions beside the one root element, an internal DTD subset
/// (so no entity can be declared), nesting deeper than 256.
class XmlReader {
 public:
  XmlReader() = default;
  XmlReader(const XmlReader&) = delete;
  XmlReader& operator=(const XmlReader&) = delete;

  /// Starts with a file's bytes, which must live as long as they are read. The encoding is that of
  /// the byte-order mark, else of the declaration, else UTF-8.
  [[nodiscard]] std::optional<XmlError> OpenBytes(std::string_view bytes);

  /// Starts with a text that is UTF-8 already: a byte-order mark is dropped and the encoding named
  /// in the declaration ignored.
  [[nodiscard]] std::optional<XmlError> OpenText(std::string_view text);

  /// Opens the next child of the element that is open, or the root element at first. False at the
  /// end of the open element, which is closed then, at the end of the document and at an error.
  bool NextChild();

  /// Reads on until no more than `depth` elements are open; 0 reads to the end of the document.
  void SkipTo(std::size_t depth);

  /// How many elements are open; 0 after an error.
  std::size_t Depth() const { return open_.size(); }
  /// Why reading stopped.
  const std::optional<XmlError>& Error() const { return error_; }

  /// The element opened last: its name without a namespace prefix, and its attributes. They are
  /// valid until the next element is asked for.
  std::string_view LocalName() const;
  std::span<const XmlAttribute> Attributes() const { return {attributes_.data(), used_}; }
  /// Where it begins; the detail is empty.
  XmlError ElementPlace() { return ErrorAt(element_, ""); }
  /// Ends the reading with an error of whoever reads the document, placed at the element.
  void FailAtElement(std::string detail) { Fail(element_, std::move(detail)); }

 private:
  std::optional<XmlError> Open();
  bool Fail(std::size_t offset, std::string detail);
  XmlError ErrorAt(std::size_t offset, std::string detail);

  bool ReadEnd();
  bool ReadStartTag();
  bool ReadEndTag();
  bool ReadAttributes(std::string_view element);
  bool ReadAttribute(std::string_view element);
  bool CheckNames(std::string_view element);
  bool SkipMarkup();
  bool SkipDocumentType();
  bool SkipPast(std::string_view end, std::string_view what);
  std::string_view TakeName();
  bool TakeBlanks();
  char Next() const { return pos_ < source_.size() ? source_[pos_] : '\0'; }

  std::string converted_;    // the document, if its encoding is not UTF-8
  std::string_view source_;  // the document in UTF-8
  std::size_t pos_ = 0;
  std::size_t element_ = 0;             // where the element opened last begins
  bool empty_ = false;                  // it ends with its tag
  bool root_seen_ = false;              // one root element has begun
  std::vector<std::string_view> open_;  // names of the open elements
  std::vector<XmlAttribute> attributes_;
  std::size_t used_ = 0;  // attributes of the element; those behind are kept for later ones
  std::optional<XmlError> error_;
  XmlError place_{1, 1, ""};  // of the offset asked for last
  std::size_t placed_ = 0;
};

/// The element as a document: declaration, line break, element without white space between its
/// parts, line break. Characters that XML 1.0 does not allow must have been dropped before.
std::string WriteXml(const pugi::xml_document& document);

/// `text` without the characters that XML 1.0 does not allow, as valid UTF-8.
std::string AllowedInXml(std::string_view text);

}  // namespace keltrun
