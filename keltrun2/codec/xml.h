// Reading and writing XML documents element by element.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace keltrun {

/// Why a document was refused, and where in its text. Line and column are counted from 1, the
/// column in characters; both are 0 if the error has no place.
struct XmlError {
  int Line = 0;
  int Column = 0;
  std::string Detail;
};

/// "line 3, column 14: ...", or only the detail if the error has no place.
std::string ToString(const XmlError& error);

/// An attribute of an element. In its value, references are resolved and white space is replaced by
/// blanks.
class XmlAttribute {
 public:
  std::string_view Name() const { return name_; }
  std::string_view Value() const { return plain_ ? raw_ : decoded_; }

 private:
  friend class XmlReader;
  std::string_view name_;
  std::string_view raw_;
  bool plain_ = true;  // the value needs no decoding
  std::string decoded_;
};

/// Walks through the elements of a document from start to end. Only the elements that are open are
/// kept, so a document may have any number of them.
///
///     XmlReader reader;
///     auto error = reader.OpenBytes(bytes);
///     if (!error && reader.NextChild()) {               // the root element
///       while (reader.NextChild()) {                    // each of its children
///         reader.LocalName(); reader.Attributes();
///         reader.SkipTo(1);                             // skip the content of the child
///       }
///     }
///     reader.SkipTo(0);                                 // to the end of the document
///     error = reader.Error();
///
/// The reader refuses bytes that are invalid in their encoding, an unknown encoding, NUL
/// characters, references to characters that XML does not allow, tags that do not match, an
/// attribute that appears twice in an element, an internal DTD subset (so that no entity can be
/// declared), nesting deeper than 256, and anything outside the one root element except white
/// space, comments, processing instructions and a document type declaration.
class XmlReader {
 public:
  XmlReader() = default;
  XmlReader(const XmlReader&) = delete;
  XmlReader& operator=(const XmlReader&) = delete;

  /// Starts reading the bytes of a file, which must stay valid while they are read. The byte-order
  /// mark decides on the encoding, else the XML declaration; otherwise it is UTF-8.
  [[nodiscard]] std::optional<XmlError> OpenBytes(std::string_view bytes);

  /// Starts reading a text that is already UTF-8. A byte-order mark is dropped and the encoding
  /// named in the declaration is ignored.
  [[nodiscard]] std::optional<XmlError> OpenText(std::string_view text);

  /// Opens the next child of the innermost open element; the first call opens the root element.
  /// False at the end of the open element, which is then closed, at the end of the document and on
  /// an error.
  bool NextChild();

  /// Reads on until at most `depth` elements are open; 0 reads to the end of the document.
  void SkipTo(std::size_t depth);

  /// Reads the innermost open element to its end and returns its text without that of the elements
  /// inside it. As in an attribute, references are resolved and white space is replaced by blanks;
  /// those at both ends are dropped. The element is then closed. Empty on an error. Valid until the
  /// next call of a function that reads on.
  std::string_view Text();
  /// Like Text, but with the text of the elements inside, each after a blank.
  std::string_view WholeText();

  /// How many elements are open; 0 after an error.
  std::size_t Depth() const { return open_.size(); }
  /// The error that stopped the reading, if there was one.
  const std::optional<XmlError>& Error() const { return error_; }

  /// The name of the element opened last, without a namespace prefix. Valid until the next call of
  /// NextChild or SkipTo.
  std::string_view LocalName() const;
  /// The namespace prefix of an element of which LocalName is `name`, valid as long as that. It may
  /// be empty.
  std::string_view PrefixOf(std::string_view name) const {
    const std::string_view whole = open_.back();
    return whole.substr(0, whole.size() - std::min(whole.size(), name.size() + 1));
  }
  /// Whether LocalName is `name`, which must not be empty.
  bool IsNamed(std::string_view name) const {
    const std::string_view whole = open_.back();
    return whole.ends_with(name) &&
           (whole.size() == name.size() || whole[whole.size() - name.size() - 1] == ':');
  }
  /// The attributes of the element opened last, valid as long as its name.
  std::span<const XmlAttribute> Attributes() const { return {attributes_.data(), used_}; }
  /// Where the element opened last begins; the detail is empty.
  XmlError ElementPlace() { return ErrorAt(element_, ""); }
  /// Ends the reading with an error of the caller, placed at the element opened last.
  void FailAtElement(std::string detail) { Fail(element_, std::move(detail)); }

 private:
  std::optional<XmlError> Open();
  bool Fail(std::size_t offset, std::string detail);
  XmlError ErrorAt(std::size_t offset, std::string detail);

  bool ReadEnd();
  bool ReadTag();
  bool ReadStartTag();
  bool ReadEndTag();
  bool ReadAttributes(std::string_view element);
  bool ReadAttribute(std::string_view element);
  bool TakeValue(XmlAttribute& attribute);
  bool CheckNames(std::string_view element);
  bool AtMarkup() const;
  bool SkipMarkup();
  bool SkipDocumentType();
  bool SkipPast(std::string_view end, std::string_view what);
  std::string_view TakeName();
  bool TakeBlanks();
  std::optional<std::string_view> TakePlainText();
  std::string_view CollectText(bool with_children);
  char Next() const { return pos_ < source_.size() ? source_[pos_] : '\0'; }

  std::string converted_;    // the document, if its encoding was not UTF-8
  std::string_view source_;  // the document in UTF-8
  std::size_t pos_ = 0;
  std::size_t element_ = 0;             // where the element opened last begins
  bool empty_ = false;                  // that element has an empty-element tag ("/>")
  bool root_seen_ = false;              // the root element has begun
  std::vector<std::string_view> open_;  // the names of the open elements
  std::vector<XmlAttribute> attributes_;
  std::size_t used_ = 0;  // how many are attributes of the element; the rest is kept for reuse
  std::string text_;      // the last text, if it had to be put together
  std::optional<XmlError> error_;
  XmlError place_{1, 1, ""};  // the place of the offset placed_, where the next search starts
  std::size_t placed_ = 0;
};

/// Visits the children of the innermost open element. What a visit does not read is skipped.
template <typename Visit>
void ForEachChild(XmlReader& xml, Visit visit) {
  const std::size_t depth = xml.Depth();
  while (xml.NextChild()) {
    visit();
    xml.SkipTo(depth);
  }
}

/// The encoding that the XML declaration at the start of a document names, or "".
std::string_view DeclaredEncoding(std::string_view bytes);

/// The offset of the first reference, such as "&#0;", to a character that XML does not allow, from
/// `begin` on, or npos.
std::size_t FindBadReference(std::string_view text, std::size_t begin = 0);

/// Writes a document of elements and attributes: the declaration, a line break, the root element
/// without white space between its parts, a line break. Only the text is kept.
///
///     XmlWriter xml;
///     {
///       const XmlWriter::Element root(xml, "root");  // its destructor writes the end tag
///       xml.Attribute("name", "value");              // before the children of the element
///       const XmlWriter::Element child(xml, "child");
///     }
///     std::string document = std::move(xml).Take();
class XmlWriter {
 public:
  /// An element, open as long as this object lives. The name must live as long.
  class Element {
   public:
    Element(XmlWriter& xml, std::string_view name) : xml_(xml), name_(name) { xml.Begin(name); }
    ~Element() { xml_.End(name_); }
    Element(const Element&) = delete;
    Element& operator=(const Element&) = delete;

   private:
    XmlWriter& xml_;
    std::string_view name_;
  };

  XmlWriter();

  /// Adds an attribute to the element that was begun last. Characters that XML 1.0 does not allow
  /// are dropped; line breaks and TAB are written as references, which keep them.
  void Attribute(std::string_view name, std::string_view value);
  void Attribute(std::string_view name, std::int32_t number);

  /// The document, when every element has ended.
  std::string Take() &&;

 private:
  void Begin(std::string_view name);
  void End(std::string_view name);

  std::string out_;
  bool in_start_tag_ = false;  // the tag of the element begun last has no ">" yet
};

/// `text` without the characters that XML 1.0 does not allow, as valid UTF-8.
std::string AllowedInXml(std::string_view text);

}  // namespace keltrun
