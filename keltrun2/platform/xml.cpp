#include "keltrun2/platform/xml.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <unordered_set>
#include <utility>

#include "keltrun2/platform/encodings.h"
#include "keltrun2/platform/utf8.h"

namespace keltrun {
namespace {

constexpr int kDeepestNesting = 256;
constexpr std::ptrdiff_t kMostTags = 5'000'000;  // each costs memory; 20,000 runners need a million
constexpr char kDeclaration[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n";

// The encoding named in the XML declaration at the start of `bytes`, or "".
std::string_view DeclaredEncoding(std::string_view bytes) {
  if (bytes.substr(0, 5) != "<?xml") return "";
  const std::string_view declaration = bytes.substr(0, bytes.find("?>"));
  const std::size_t name = declaration.find("encoding");
  if (name == std::string_view::npos) return "";
  const std::size_t open = declaration.find_first_of("\"'", name);
  if (open == std::string_view::npos) return "";
  const std::size_t close = declaration.find(declaration[open], open + 1);
  if (close == std::string_view::npos) return "";
  return declaration.substr(open + 1, close - open - 1);
}

// Drops a UTF-8 byte-order mark; true when there was one.
bool DropMark(std::string_view& text) {
  if (text.substr(0, 3) != "\xEF\xBB\xBF") return false;
  text.remove_prefix(3);
  return true;
}

// Line and column (in characters) of an offset in a text.
XmlError Locate(std::string_view text, std::size_t offset, std::string detail) {
  XmlError error{1, 1, std::move(detail)};
  for (std::size_t pos = 0; pos < std::min(offset, text.size());) {
    const char32_t c = NextCodePoint(text, pos);
    const bool line_break = c == '\n' || (c == '\r' && text.substr(pos, 1) != "\n");
    error.Line += line_break ? 1 : 0;
    error.Column = line_break ? 1 : error.Column + 1;
  }
  return error;
}

// Makes `bytes` UTF-8, without the byte-order mark: as they are, or as a view of `converted`.
std::optional<XmlError> ToUtf8(std::string_view& bytes, Decoded& converted) {
  const bool little_endian = bytes.substr(0, 2) == "\xFF\xFE";
  const bool big_endian = bytes.substr(0, 2) == "\xFE\xFF";
  std::string_view encoding;
  if (little_endian || big_endian) {
    encoding = "UTF-16";
    converted = DecodeUtf16(bytes.substr(2), big_endian);
  } else if (DropMark(bytes)) {
    return std::nullopt;  // UTF-8, whatever the declaration says
  } else {
    encoding = DeclaredEncoding(bytes);
    const bool plain = encoding.empty() || EqualsIgnoringCase(encoding, "us-ascii");
    const auto charset = plain ? Charset::kUtf8 : CharsetFromName(encoding);
    if (!charset) {
      return XmlError{1, 1, "the encoding \"" + std::string(encoding) + "\" is not known"};
    }
    if (*charset == Charset::kUtf8) return std::nullopt;
    converted = Decode(bytes, *charset);
  }
  if (converted.FirstInvalid != std::string::npos) {
    return Locate(converted.Text, converted.FirstInvalid,
                  "a byte that is not valid " + std::string(encoding));
  }
  bytes = converted.Text;
  return std::nullopt;
}

bool AllowedCharacter(char32_t c) {
  if (c < 0x20) return c == '\t' || c == '\n' || c == '\r';
  return c <= 0x10FFFF && c != 0xFFFE && c != 0xFFFF && !(c >= 0xD800 && c <= 0xDFFF);
}

// The character of a reference's digits; 0, which is never allowed, where they are none or too
// many.
char32_t ReferencedCharacter(std::string_view digits) {
  const bool hexadecimal = digits.substr(0, 1) == "x";
  if (hexadecimal) digits.remove_prefix(1);
  std::uint32_t value = 0;
  const auto result =
      std::from_chars(digits.data(), digits.data() + digits.size(), value, hexadecimal ? 16 : 10);
  const bool whole = result.ec == std::errc() && result.ptr == digits.data() + digits.size();
  return whole ? value : 0;
}

// Offset of a reference like "&#0;" to a character that is none, or npos. The parser would end the
// value there in silence, or make invalid UTF-8 of it.
std::size_t FindBadReference(std::string_view text) {
  for (std::size_t at = text.find("&#"); at != std::string_view::npos;
       at = text.find("&#", at + 2)) {
    const std::size_t begin = at + 2;
    const std::size_t end = text.find_first_not_of("0123456789abcdefABCDEFx", begin);
    if (end == std::string_view::npos || text[end] != ';') continue;  // plain text to the parser
    if (!AllowedCharacter(ReferencedCharacter(text.substr(begin, end - begin)))) return at;
  }
  return std::string_view::npos;
}

// The second of two attributes of one name among many, or null; linear.
pugi::xml_attribute DuplicateAmongMany(const pugi::xml_node& element) {
  std::unordered_set<std::string_view> names;
  for (pugi::xml_attribute a = element.first_attribute(); a; a = a.next_attribute()) {
    if (!names.insert(a.name()).second) return a;
  }
  return {};
}

pugi::xml_attribute Duplicate(const pugi::xml_node& element) {
  constexpr std::size_t kFewAttributes = 16;
  std::array<const char*, kFewAttributes> names;
  std::size_t seen = 0;
  for (pugi::xml_attribute a = element.first_attribute(); a; a = a.next_attribute()) {
    if (seen == kFewAttributes) return DuplicateAmongMany(element);
    const char* name = a.name();
    for (std::size_t i = 0; i < seen; ++i) {
      if (*names[i] == *name && std::strcmp(names[i], name) == 0) return a;
    }
    names[seen++] = name;
  }
  return {};
}

struct StringWriter : pugi::xml_writer {
  explicit StringWriter(std::string& target) : out(target) {}
  void write(const void* data, std::size_t size) override {
    out.append(static_cast<const char*>(data), size);
  }
  std::string& out;
};

}  // namespace

std::string ToString(const XmlError& error) {
  if (error.Line == 0) return error.Detail;
  return "line " + std::to_string(error.Line) + ", column " + std::to_string(error.Column) + ": " +
         error.Detail;
}

std::optional<XmlError> XmlDocument::LoadBytes(std::string_view bytes) {
  Decoded converted;
  if (std::optional<XmlError> error = ToUtf8(bytes, converted)) return error;
  source_ = bytes;
  return Parse();
}

std::optional<XmlError> XmlDocument::LoadText(std::string_view text) {
  source_ = text;
  DropMark(source_);
  return Parse();
}

std::optional<XmlError> XmlDocument::Parse() {
  document_.reset();
  const std::size_t invalid = FindInvalidUtf8(source_);
  if (invalid != std::string::npos) return ErrorAt(invalid, "a byte that is not valid UTF-8");
  const std::size_t nul = source_.find('\0');
  if (nul != std::string::npos) return ErrorAt(nul, "a NUL character");
  const std::size_t reference = FindBadReference(source_);
  if (reference != std::string::npos) {
    return ErrorAt(reference, "a reference to a character that XML does not allow");
  }
  if (std::count(source_.begin(), source_.end(), '<') > kMostTags) {
    return XmlError{0, 0, "the document has more than " + std::to_string(kMostTags) + " tags"};
  }
  if (source_.find_first_not_of(" \t\r\n") == std::string::npos) {
    return XmlError{1, 1, "the file is empty"};
  }
  buffer_ = source_;
  buffer_ += '\n';  // the parser works in place and needs the last byte for itself
  // Read as a fragment, so that text beside the root is kept and can be refused.
  const unsigned flags = pugi::parse_default | pugi::parse_doctype | pugi::parse_fragment;
  const pugi::xml_parse_result result =
      document_.load_buffer_inplace(buffer_.data(), buffer_.size(), flags, pugi::encoding_utf8);
  std::optional<XmlError> error;
  if (!result) {
    error = ErrorAt(static_cast<std::size_t>(result.offset), result.description());
  } else {
    error = CheckTopLevel();
    if (!error) error = CheckElements();
  }
  if (error) {
    document_.reset();
  } else {
    root_place_ = ErrorAt(Root(), "");
  }
  return error;
}

std::optional<XmlError> XmlDocument::CheckTopLevel() const {
  bool root_seen = false;
  for (const pugi::xml_node& node : document_.children()) {
    switch (node.type()) {
      case pugi::node_element:
        if (root_seen) return ErrorAt(node, "a second root element");
        root_seen = true;
        break;
      case pugi::node_doctype:
        if (std::strchr(node.value(), '[') != nullptr) {
          return ErrorAt(node, "a document type with declarations of its own is not accepted");
        }
        break;
      case pugi::node_pcdata:
      case pugi::node_cdata:
        return ErrorAtText(node, "text outside the root element");
      default:
        break;
    }
  }
  if (!root_seen) return XmlError{0, 0, "there is no root element"};
  return std::nullopt;
}

// Walks without recursion: the nesting is not known to be shallow yet.
std::optional<XmlError> XmlDocument::CheckElements() const {
  const pugi::xml_node root = document_.document_element();
  pugi::xml_node node = root;
  int depth = 1;
  while (true) {
    if (node.type() == pugi::node_element) {
      if (depth > kDeepestNesting) {
        return ErrorAt(node, "elements nested deeper than " + std::to_string(kDeepestNesting));
      }
      if (const pugi::xml_attribute duplicate = Duplicate(node)) {
        return ErrorAt(node, "the attribute \"" + std::string(duplicate.name()) + "\" twice in <" +
                                 std::string(node.name()) + ">");
      }
    }
    if (const pugi::xml_node child = node.first_child()) {
      node = child;
      ++depth;
      continue;
    }
    pugi::xml_node next;
    while (node != root && !(next = node.next_sibling())) {
      node = node.parent();
      --depth;
    }
    if (node == root) return std::nullopt;
    node = next;
  }
}

XmlError XmlDocument::ErrorAt(std::size_t offset, std::string detail) const {
  return Locate(source_, offset, std::move(detail));
}

XmlError XmlDocument::ErrorAtRoot(std::string detail) const {
  XmlError error = root_place_;
  error.Detail = std::move(detail);
  return error;
}

// Behind the white space that a text begins with.
XmlError XmlDocument::ErrorAtText(pugi::xml_node node, std::string detail) const {
  const auto begin = static_cast<std::size_t>(std::max<std::ptrdiff_t>(node.offset_debug(), 0));
  const std::size_t text = source_.find_first_not_of(" \t\r\n", begin);
  return ErrorAt(std::min(text, source_.size()), std::move(detail));
}

XmlError XmlDocument::ErrorAt(pugi::xml_node node, std::string detail) const {
  const std::ptrdiff_t offset = node.offset_debug();
  if (offset < 0) return XmlError{0, 0, std::move(detail)};
  return ErrorAt(static_cast<std::size_t>(offset), std::move(detail));
}

std::string_view LocalName(const pugi::xml_node& node) {
  const std::string_view name = node.name();
  const std::size_t colon = name.rfind(':');
  return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

std::string WriteXml(const pugi::xml_document& document) {
  std::string out = kDeclaration;
  StringWriter writer(out);
  document.document_element().print(writer, "", pugi::format_raw, pugi::encoding_utf8);
  return out += "\r\n";
}

std::string AllowedInXml(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t pos = 0; pos < text.size();) {
    const char32_t c = NextCodePoint(text, pos);
    if (AllowedCharacter(c)) AppendUtf8(out, c);
  }
  return out;
}

}  // namespace keltrun
