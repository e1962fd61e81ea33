#include "keltrun2/codec/xml.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <unordered_set>
#include <utility>

#include "keltrun2/codec/encodings.h"
#include "keltrun2/codec/utf8.h"

namespace keltrun {
namespace {

constexpr std::size_t kDeepestNesting = 256;
constexpr char kDeclaration[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n";

// Drops a UTF-8 byte-order mark; true if there was one.
bool DropMark(std::string_view& text) {
  if (text.substr(0, 3) != "\xEF\xBB\xBF") return false;
  text.remove_prefix(3);
  return true;
}

// Counts the offsets from `begin` to `end` that fulfill a condition. The count of a block fits in a
// byte, so that the compiler can compare many bytes at once.
template <typename Condition>
int CountOffsets(std::size_t begin, std::size_t end, Condition condition) {
  constexpr std::size_t kBlock = 240;
  int count = 0;
  while (begin < end) {
    const std::size_t block_end = std::min(end, begin + kBlock);
    std::uint8_t in_block = 0;
    for (; begin < block_end; ++begin) {
      in_block = static_cast<std::uint8_t>(in_block + (condition(begin) ? 1 : 0));
    }
    count += in_block;
  }
  return count;
}

// Moves a place, in lines and characters, over a part of a text. CR LF, CR and LF each count as one
// line break. Every class has a place, so this goes through each document once.
void MovePlace(XmlError& place, std::string_view text, std::size_t begin, std::size_t end) {
  const char* const bytes = text.data();
  const auto ends_line = [bytes](std::size_t i) {
    return (bytes[i] == '\n') | ((bytes[i] == '\r') & (bytes[i + 1] != '\n'));
  };
  // The last byte has no next one.
  const std::size_t compared = std::min(end, std::max(text.size(), std::size_t{1}) - 1);
  int breaks = CountOffsets(begin, compared, ends_line);
  std::size_t line = begin;
  if (breaks > 0) {
    for (line = compared; !ends_line(line - 1);) --line;
  }
  if (begin <= compared && compared < end && (bytes[compared] == '\n' || bytes[compared] == '\r')) {
    ++breaks;
    line = end;
  }
  if (breaks > 0) {
    place.Line += breaks;
    place.Column = 1;
  }
  place.Column += CountOffsets(line, end, [bytes](std::size_t i) {
    return (static_cast<unsigned char>(bytes[i]) & 0xC0) != 0x80;
  });
}

XmlError Locate(std::string_view text, std::size_t offset, std::string detail) {
  XmlError error{1, 1, std::move(detail)};
  MovePlace(error, text, 0, std::min(offset, text.size()));
  return error;
}

// Converts `bytes` to UTF-8 without a byte-order mark. If they are not UTF-8, `bytes` becomes a
// view of `converted`.
std::optional<XmlError> ToUtf8(std::string_view& bytes, Decoded& converted) {
  const bool little_endian = bytes.substr(0, 2) == "\xFF\xFE";
  const bool big_endian = bytes.substr(0, 2) == "\xFE\xFF";
  std::string_view encoding;
  if (little_endian || big_endian) {
    encoding = "UTF-16";
    converted = DecodeUtf16(bytes.substr(2), big_endian);
  } else if (DropMark(bytes)) {
    return std::nullopt;  // UTF-8, no matter what the declaration says
  } else {
    encoding = DeclaredEncoding(bytes);
    const bool plain = encoding.empty() || EqualsIgnoringCase(encoding, "us-ascii");
    const auto charset = plain ? Charset::kUtf8 : CharsetFromName(encoding);
    if (!charset) {
      return XmlError{1, 1,
                      "the encoding \"" + std::string(encoding) +
                          "\" is not known; expected UTF-8, UTF-16, Shift_JIS or Windows-1252"};
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

// The character that the digits of a reference stand for; 0, which is never allowed, if there are
// no digits or too many.
char32_t ReferencedCharacter(std::string_view digits) {
  const bool hexadecimal = digits.substr(0, 1) == "x";
  if (hexadecimal) digits.remove_prefix(1);
  std::uint32_t value = 0;
  const auto result =
      std::from_chars(digits.data(), digits.data() + digits.size(), value, hexadecimal ? 16 : 10);
  const bool whole = result.ec == std::errc() && result.ptr == digits.data() + digits.size();
  return whole ? value : 0;
}

constexpr std::string_view kReferenceDigits = "0123456789abcdefABCDEFx";

constexpr bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

constexpr bool BeginsName(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == ':' ||
         static_cast<unsigned char>(c) >= 0x80;
}

constexpr bool IsInName(char c) {
  return BeginsName(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
}

// Characters of attribute values that do not stand for themselves.
constexpr bool IsSpecial(char c) { return c == '&' || c == '\t' || c == '\r' || c == '\n'; }

// The answers of a predicate for all bytes: a document asks for each of its characters.
using ByteTable = std::array<bool, 256>;
constexpr ByteTable TableOf(bool (*predicate)(char)) {
  ByteTable table{};
  for (std::size_t byte = 0; byte < table.size(); ++byte) {
    table[byte] = predicate(static_cast<char>(byte));
  }
  return table;
}
constexpr ByteTable kBlank = TableOf(IsBlank);
constexpr ByteTable kInName = TableOf(IsInName);
constexpr ByteTable kEndsPlainText = TableOf([](char c) { return IsSpecial(c) || c == '<'; });
constexpr ByteTable kEndsPlainValue =
    TableOf([](char c) { return IsSpecial(c) || c == '"' || c == '\''; });

bool Has(const ByteTable& table, char c) { return table[static_cast<unsigned char>(c)]; }

struct Entity {
  std::string_view text;
  char character;
};
constexpr Entity kEntities[] = {
    {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}};

// Appends the character of the reference at the start of a text. Returns the length of the
// reference, 0 for an "&" that stands for itself.
std::size_t DecodeReference(std::string_view text, std::string& out) {
  for (const Entity& entity : kEntities) {
    if (!text.starts_with(entity.text)) continue;
    out += entity.character;
    return entity.text.size();
  }
  if (!text.starts_with("&#")) return 0;
  const std::size_t end = text.find_first_not_of(kReferenceDigits, 2);
  if (end == std::string_view::npos || text[end] != ';') return 0;
  AppendUtf8(out, ReferencedCharacter(text.substr(2, end - 2)));
  return end + 1;
}

// Appends a text as it is meant: each white space character is a blank, a CR LF only one.
void AppendBlanked(std::string& out, std::string_view raw) {
  for (std::size_t i = 0; i < raw.size(); ++i) {
    if (raw[i] == '\r' && raw.substr(i + 1, 1) == "\n") continue;
    out += IsBlank(raw[i]) ? ' ' : raw[i];
  }
}

// The same for a text with references.
void AppendDecoded(std::string& out, std::string_view raw) {
  while (!raw.empty()) {
    const std::size_t plain = std::min(raw.find('&'), raw.size());
    AppendBlanked(out, raw.substr(0, plain));
    raw.remove_prefix(plain);
    const std::size_t reference = DecodeReference(raw, out);
    if (reference == 0 && !raw.empty()) out += raw[0];
    raw.remove_prefix(std::min(std::max(reference, std::size_t{1}), raw.size()));
  }
}

std::string_view TrimBlanks(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

// The reference for a character that cannot stand in an attribute value itself, or "".
std::string_view ReferenceFor(char c) {
  switch (c) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '"':
      return "&quot;";
    case '\t':
      return "&#09;";
    case '\n':
      return "&#10;";
    case '\r':
      return "&#13;";
    default:
      return "";
  }
}

// Appends the value of an attribute. Plain parts of it are copied as a whole.
void AppendValue(std::string& out, std::string_view value) {
  std::size_t plain = 0;  // where the part that is not yet copied begins
  for (std::size_t i = 0; i < value.size(); ++i) {
    const std::string_view reference = ReferenceFor(value[i]);
    if (reference.empty()) continue;
    out.append(value.substr(plain, i - plain)).append(reference);
    plain = i + 1;
  }
  out.append(value.substr(plain));
}

// Whether XML allows every character because all are ASCII and none is a control character.
bool IsPlain(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](unsigned char c) { return c >= 0x20 && c < 0x80; });
}

}  // namespace

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

std::size_t FindBadReference(std::string_view text, std::size_t begin) {
  for (std::size_t at = text.find("&#", begin); at != std::string_view::npos;
       at = text.find("&#", at + 2)) {
    const std::size_t digits = at + 2;
    const std::size_t end = text.find_first_not_of(kReferenceDigits, digits);
    if (end == std::string_view::npos || text[end] != ';') continue;  // plain text
    if (!AllowedCharacter(ReferencedCharacter(text.substr(digits, end - digits)))) return at;
  }
  return std::string_view::npos;
}

std::string ToString(const XmlError& error) {
  if (error.Line == 0) return error.Detail;
  return "line " + std::to_string(error.Line) + ", column " + std::to_string(error.Column) + ": " +
         error.Detail;
}

std::optional<XmlError> XmlReader::OpenBytes(std::string_view bytes) {
  Decoded converted;
  if (std::optional<XmlError> error = ToUtf8(bytes, converted)) return error;
  if (converted.Text.empty()) {
    source_ = bytes;
  } else {
    converted_ = std::move(converted.Text);
    source_ = converted_;
  }
  return Open();
}

std::optional<XmlError> XmlReader::OpenText(std::string_view text) {
  source_ = text;
  DropMark(source_);
  return Open();
}

std::optional<XmlError> XmlReader::Open() {
  const std::size_t invalid = FindInvalidUtf8(source_);
  if (invalid != std::string::npos) {
    return Locate(source_, invalid, "a byte that is not valid UTF-8");
  }
  const std::size_t nul = source_.find('\0');
  if (nul != std::string::npos) return Locate(source_, nul, "a NUL character");
  const std::size_t reference = FindBadReference(source_);
  if (reference != std::string::npos) {
    return Locate(source_, reference, "a reference to a character that XML does not allow");
  }
  if (source_.find_first_not_of(" \t\r\n") == std::string::npos) {
    return XmlError{1, 1, "the file is empty"};
  }
  return std::nullopt;
}

XmlError XmlReader::ErrorAt(std::size_t offset, std::string detail) {
  // Nearly always, places are requested in the order of the document, so the search goes on from
  // the last one.
  if (offset < placed_) {
    place_ = {1, 1, ""};
    placed_ = 0;
  }
  MovePlace(place_, source_, placed_, offset);
  placed_ = offset;
  return {place_.Line, place_.Column, std::move(detail)};
}

bool XmlReader::Fail(std::size_t offset, std::string detail) {
  error_ = ErrorAt(std::min(offset, source_.size()), std::move(detail));
  open_.clear();
  return false;
}

bool XmlReader::NextChild() {
  if (error_) return false;
  if (empty_) {
    empty_ = false;
    open_.pop_back();
    return false;
  }
  while (true) {
    const std::size_t tag =
        Next() == '<' ? pos_ : std::min(source_.find('<', pos_), source_.size());
    if (open_.empty()) {
      const std::size_t text = source_.find_first_not_of(" \t\r\n", pos_);
      if (text < tag) return Fail(text, "text outside the root element");
    }
    pos_ = tag;
    if (tag == source_.size()) return ReadEnd();
    if (!AtMarkup()) return ReadTag();
    if (!SkipMarkup()) return false;
  }
}

void XmlReader::SkipTo(std::size_t depth) {
  while (open_.size() > depth) NextChild();
  if (depth == 0) NextChild();
}

std::string_view XmlReader::Text() {
  if (const auto plain = TakePlainText()) return *plain;
  return CollectText(false);
}

std::string_view XmlReader::WholeText() {
  if (const auto plain = TakePlainText()) return *plain;
  return CollectText(true);
}

// The text of the open element if it stands in the document as it is meant, which nearly every text
// does. Otherwise nothing is read.
std::optional<std::string_view> XmlReader::TakePlainText() {
  if (open_.empty()) return "";
  if (empty_) {
    NextChild();
    return "";
  }
  std::size_t end = pos_;
  while (end < source_.size() && !Has(kEndsPlainText, source_[end])) ++end;
  const std::string_view name = open_.back();
  const std::string_view end_tag = source_.substr(end, name.size() + 3);
  if (!end_tag.starts_with("</") || !end_tag.ends_with('>')) return std::nullopt;
  if (end_tag.substr(2, name.size()) != name) return std::nullopt;
  const std::string_view text = source_.substr(pos_, end - pos_);
  pos_ = end + end_tag.size();
  open_.pop_back();
  return TrimBlanks(text);
}

// Puts the text of the open element together from its parts.
std::string_view XmlReader::CollectText(bool with_children) {
  constexpr std::string_view kCdata = "<![CDATA[";
  text_.clear();
  const std::size_t depth = open_.size();
  while (open_.size() >= depth) {
    if (empty_) {
      NextChild();
      continue;
    }
    const std::size_t tag = std::min(source_.find('<', pos_), source_.size());
    AppendDecoded(text_, source_.substr(pos_, tag - pos_));
    pos_ = tag;
    if (tag == source_.size()) {
      ReadEnd();
    } else if (AtMarkup()) {
      if (SkipMarkup() && source_.substr(tag).starts_with(kCdata)) {
        const std::size_t begin = tag + kCdata.size();
        AppendBlanked(text_, source_.substr(begin, pos_ - begin - std::string_view("]]>").size()));
      }
    } else if (ReadTag()) {
      if (with_children) {
        text_ += ' ';
      } else {
        SkipTo(depth);
      }
    }
  }
  return error_ ? "" : TrimBlanks(text_);
}

// Checks that the end of the document is in the right place.
bool XmlReader::ReadEnd() {
  if (!open_.empty()) {
    return Fail(pos_, "the document ends inside <" + std::string(open_.back()) + ">");
  }
  if (!root_seen_) error_ = XmlError{0, 0, "there is no root element"};
  return false;
}

// Reads a start or end tag; false when no element was opened.
bool XmlReader::ReadTag() {
  return pos_ + 1 < source_.size() && source_[pos_ + 1] == '/' ? ReadEndTag() : ReadStartTag();
}

bool XmlReader::ReadStartTag() {
  element_ = pos_++;
  const std::string_view name = TakeName();
  if (name.empty()) return Fail(element_, "a \"<\" that does not begin a tag");
  if (open_.empty() && root_seen_) return Fail(element_, "a second root element");
  if (open_.size() == kDeepestNesting) {
    return Fail(element_, "elements nested deeper than " + std::to_string(kDeepestNesting));
  }
  root_seen_ = true;
  open_.push_back(name);
  return ReadAttributes(name) && CheckNames(name);
}

bool XmlReader::ReadEndTag() {
  const std::size_t begin = pos_;
  pos_ += 2;
  const std::string_view name = TakeName();
  if (open_.empty() || open_.back() != name) {
    const std::string wanted =
        open_.empty() ? "no element is open" : "</" + std::string(open_.back()) + "> was expected";
    return Fail(begin, "</" + std::string(name) + "> where " + wanted);
  }
  TakeBlanks();
  if (Next() != '>') return Fail(pos_, "a \">\" is missing");
  ++pos_;
  open_.pop_back();
  return false;
}

// Reads the attributes and the end of a start tag.
bool XmlReader::ReadAttributes(std::string_view element) {
  used_ = 0;
  while (true) {
    const bool blanks = TakeBlanks();
    const char c = Next();
    empty_ = c == '/' && pos_ + 1 < source_.size() && source_[pos_ + 1] == '>';
    if (empty_ || c == '>') {
      pos_ += empty_ ? 2 : 1;
      return true;
    }
    if (pos_ >= source_.size()) {
      return Fail(pos_, "the document ends inside the tag <" + std::string(element) + ">");
    }
    if (!blanks || !BeginsName(c)) {
      return Fail(pos_,
                  "expected an attribute or the end of the tag <" + std::string(element) + ">");
    }
    if (!ReadAttribute(element)) return false;
  }
}

bool XmlReader::ReadAttribute(std::string_view element) {
  const std::size_t begin = pos_;
  if (used_ == attributes_.size()) attributes_.emplace_back();
  XmlAttribute& attribute = attributes_[used_++];
  attribute.name_ = TakeName();
  TakeBlanks();
  bool good = Next() == '=';
  if (good) {
    ++pos_;
    TakeBlanks();
    good = Next() == '"' || Next() == '\'';
  }
  if (!good || !TakeValue(attribute)) {
    return Fail(begin, "the attribute \"" + std::string(attribute.name_) + "\" of <" +
                           std::string(element) + "> has no value in quotes");
  }
  return true;
}

// Reads a value, which begins with a quote. Nearly every value stands for itself, so the search for
// its end also looks for what does not.
bool XmlReader::TakeValue(XmlAttribute& attribute) {
  const char quote = Next();
  const std::string_view rest = source_.substr(pos_ + 1);
  std::size_t size = 0;
  while (size < rest.size() && !Has(kEndsPlainValue, rest[size])) ++size;
  attribute.plain_ = size < rest.size() && rest[size] == quote;
  if (!attribute.plain_) size = rest.find(quote, size);
  if (size >= rest.size()) return false;
  attribute.raw_ = rest.substr(0, size);
  if (!attribute.plain_) {
    attribute.decoded_.clear();
    AppendDecoded(attribute.decoded_, attribute.raw_);
  }
  pos_ += size + 2;
  return true;
}

// Checks that no attribute appears twice.
bool XmlReader::CheckNames(std::string_view element) {
  constexpr std::size_t kFewAttributes = 16;
  std::string_view twice;
  if (used_ > kFewAttributes) {
    std::unordered_set<std::string_view> names;
    for (const XmlAttribute& attribute : Attributes()) {
      if (!names.insert(attribute.name_).second) twice = attribute.name_;
    }
  } else {
    for (std::size_t i = 0; i < used_; ++i) {
      for (std::size_t j = 0; j < i; ++j) {
        if (attributes_[i].name_ == attributes_[j].name_) twice = attributes_[i].name_;
      }
    }
  }
  return twice.empty() || Fail(element_, "the attribute \"" + std::string(twice) +
                                             "\" appears twice in <" + std::string(element) + ">");
}

// Whether the "<" here begins markup that is not a tag.
bool XmlReader::AtMarkup() const {
  const std::string_view next = source_.substr(pos_ + 1, 1);
  return next == "!" || next == "?";
}

// Skips a comment, a processing instruction, a CDATA section or the document type declaration.
bool XmlReader::SkipMarkup() {
  const std::string_view markup = source_.substr(pos_, 9);
  if (markup.starts_with("<!--")) return SkipPast("-->", "a comment");
  if (markup.starts_with("<?") && BeginsName(markup.substr(0, 3).back())) {
    return SkipPast("?>", "a processing instruction");
  }
  if (markup == "<![CDATA[") {
    if (open_.empty()) return Fail(pos_, "text outside the root element");
    return SkipPast("]]>", "a CDATA section");
  }
  if (markup == "<!DOCTYPE" && open_.empty()) return SkipDocumentType();
  return Fail(pos_,
              "expected a tag, a comment, a processing instruction or, before the root element, a "
              "document type declaration");
}

bool XmlReader::SkipPast(std::string_view end, std::string_view what) {
  const std::size_t opening = end == "-->" ? 4 : 2;  // "<!-->" only begins a comment
  const std::size_t at = source_.find(end, pos_ + opening);
  if (at == std::string_view::npos) {
    return Fail(pos_, std::string(what) + " that does not end with \"" + std::string(end) + "\"");
  }
  pos_ = at + end.size();
  return true;
}

bool XmlReader::SkipDocumentType() {
  const std::size_t begin = pos_;
  while (pos_ < source_.size()) {
    const char c = source_[pos_];
    if (c == '[') {
      return Fail(begin, "a document type declaration with an internal subset is not accepted");
    }
    if (c == '<' && pos_ > begin) break;
    if (c == '"' || c == '\'') pos_ = std::min(source_.find(c, pos_ + 1), source_.size() - 1);
    ++pos_;
    if (c == '>') return true;
  }
  return Fail(begin, "a document type declaration that does not end with \">\"");
}

std::string_view XmlReader::TakeName() {
  const std::string_view rest = source_.substr(pos_);
  std::size_t size = 0;
  if (BeginsName(Next())) {
    while (size < rest.size() && Has(kInName, rest[size])) ++size;
  }
  pos_ += size;
  return rest.substr(0, size);
}

// Skips white space; true if there was any.
bool XmlReader::TakeBlanks() {
  if (!Has(kBlank, Next())) return false;
  do {
    ++pos_;
  } while (Has(kBlank, Next()));
  return true;
}

std::string_view XmlReader::LocalName() const {
  const std::string_view name = open_.back();
  const std::size_t colon = name.rfind(':');
  return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

XmlWriter::XmlWriter() : out_(kDeclaration) {}

void XmlWriter::Begin(std::string_view name) {
  if (in_start_tag_) out_ += '>';
  in_start_tag_ = true;
  out_.append("<").append(name);
}

void XmlWriter::End(std::string_view name) {
  if (in_start_tag_) {
    out_ += "/>";
  } else {
    out_.append("</").append(name).append(">");
  }
  in_start_tag_ = false;
}

void XmlWriter::Attribute(std::string_view name, std::string_view value) {
  out_.append(" ").append(name).append("=\"");
  if (IsPlain(value)) {
    AppendValue(out_, value);
  } else {
    AppendValue(out_, AllowedInXml(value));
  }
  out_ += '"';
}

void XmlWriter::Attribute(std::string_view name, std::int32_t number) {
  Attribute(name, std::to_string(number));
}

std::string XmlWriter::Take() && {
  out_ += "\r\n";
  return std::move(out_);
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
