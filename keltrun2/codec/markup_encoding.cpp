#include "keltrun2/codec/markup_encoding.h"

#include <algorithm>
#include <array>
#include <utility>

#include "keltrun2/codec/list_encoding.h"
#include "keltrun2/codec/utf8.h"
#include "keltrun2/codec/xml.h"

namespace keltrun {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf8Name = "UTF-8";
constexpr std::size_t kSurelyAscii = 5;  // "<?xml", "<html", "<!DOC"

bool IsOneOf(std::string_view name, std::initializer_list<std::string_view> names) {
  return std::any_of(names.begin(), names.end(),
                     [&](std::string_view other) { return EqualsIgnoringCase(name, other); });
}

bool IsUtf8Name(std::string_view name) { return IsOneOf(name, {"utf-8", "utf8"}); }

bool IsUtf16Name(std::string_view name) {
  return IsOneOf(name, {"utf-16", "utf-16le", "utf-16be", "utf16", "ucs-2", "iso-10646-ucs-2"});
}

bool IsAsciiName(std::string_view name) { return IsOneOf(name, {"us-ascii", "ascii"}); }

bool IsLatin1Name(std::string_view name) {
  return IsOneOf(name, {"latin1", "latin-1", "iso8859-1", "iso_8859-1", "cp1252"});
}

// Bytes that are UTF-8 although some of them are damaged: of the bytes beyond ASCII, most belong to
// whole characters. Other charsets hardly ever have such characters.
bool IsMostlyUtf8(std::string_view bytes) {
  std::size_t whole = 0;
  std::size_t damaged = 0;
  for (std::size_t pos = 0; pos < bytes.size();) {
    const std::size_t begin = pos;
    if (NextCodePoint(bytes, pos) < 0x80) continue;
    if (pos - begin > 1) {
      whole += pos - begin;
    } else {
      ++damaged;
    }
  }
  return whole > damaged;
}

MarkupText TextIn(std::string_view charset, Decoded content) {
  MarkupText text;
  text.Content = std::move(content);
  text.Used = charset;
  return text;
}

MarkupText TextIn(Charset charset, std::string_view bytes) {
  return TextIn(CharsetTitle(charset), Decode(bytes, charset));
}

MarkupText Utf8Text(std::string_view bytes) { return TextIn(Charset::kUtf8, bytes); }

MarkupText Utf16Text(std::string_view bytes, bool big_endian) {
  return TextIn(big_endian ? "UTF-16BE" : "UTF-16LE", DecodeUtf16(bytes, big_endian));
}

// The text by its byte-order mark, or by the first character of UTF-16, which is "<".
std::optional<MarkupText> MarkedText(std::string_view bytes) {
  constexpr std::string_view kLittleEndianTag("<\0", 2);
  constexpr std::string_view kBigEndianTag("\0<", 2);
  if (bytes.starts_with(kUtf8Mark)) return Utf8Text(bytes.substr(kUtf8Mark.size()));
  if (bytes.starts_with("\xFF\xFE")) return Utf16Text(bytes.substr(2), false);
  if (bytes.starts_with("\xFE\xFF")) return Utf16Text(bytes.substr(2), true);
  if (bytes.starts_with(kLittleEndianTag)) return Utf16Text(bytes, false);
  if (bytes.starts_with(kBigEndianTag)) return Utf16Text(bytes, true);
  return std::nullopt;
}

bool FitsMark(std::string_view declared, const MarkupText& marked) {
  if (declared.empty()) return true;
  if (marked.Used != kUtf8Name) return IsUtf16Name(declared);
  return IsUtf8Name(declared) || (IsAsciiName(declared) && IsAscii(marked.Content.Text));
}

// The text in the charset that the document declares; nullopt when the bytes contradict it.
std::optional<MarkupText> DeclaredText(std::string_view bytes, std::string_view declared) {
  const bool is_utf8 = FindInvalidUtf8(bytes) == std::string_view::npos;
  if (IsUtf8Name(declared)) {
    if (is_utf8 || IsMostlyUtf8(bytes)) return Utf8Text(bytes);
    return std::nullopt;
  }
  const bool is_ascii = IsAscii(bytes);
  if (IsAsciiName(declared)) {
    if (is_ascii) return Utf8Text(bytes);
    return std::nullopt;
  }
  if (is_utf8 && !is_ascii) return std::nullopt;
  const auto charset = IsLatin1Name(declared) ? Charset::kWindows1252 : CharsetFromName(declared);
  if (charset) return TextIn(*charset, bytes);
  auto decoded = DecodeByName(bytes, declared);
  // In UTF-16 and the like, the declaration could not have been read.
  const std::string_view beginning = bytes.substr(0, kSurelyAscii);
  if (!decoded || !decoded->Text.starts_with(beginning)) return std::nullopt;
  return TextIn(declared, std::move(*decoded));
}

// Removes everything up to the end of a text, ignoring the case of ASCII letters. False when it is
// not there.
bool SkipPast(std::string_view& bytes, std::string_view wanted) {
  for (std::size_t at = 0; at + wanted.size() <= bytes.size(); ++at) {
    if (!EqualsIgnoringCase(bytes.substr(at, wanted.size()), wanted)) continue;
    bytes.remove_prefix(at + wanted.size());
    return true;
  }
  return false;
}

// The charset in a META element of a page; empty when there is none.
std::string_view MetaCharset(std::string_view bytes) {
  constexpr std::size_t kLookedAt = 4096;
  constexpr std::string_view kNameCharacters =
      "abcdefghijklmnopqrstuvwxyz0123456789._:-ABCDEFGHIJKLMNOPQRSTUVWXYZ";
  std::string_view name = bytes.substr(0, kLookedAt);
  if (!SkipPast(name, "<meta") || !SkipPast(name, "charset=")) return "";
  if (name.starts_with('"') || name.starts_with('\'')) name.remove_prefix(1);
  return name.substr(0, std::min(name.find_first_not_of(kNameCharacters), name.size()));
}

std::string_view CharsetOf(std::string_view document) {
  const std::string_view declared = DeclaredEncoding(document);
  return declared.empty() ? MetaCharset(document) : declared;
}

MarkupText GuessedText(std::string_view bytes) {
  if (FindInvalidUtf8(bytes) == std::string_view::npos || IsMostlyUtf8(bytes)) {
    return Utf8Text(bytes);
  }
  ListText list = DecodeList(bytes, std::nullopt);
  MarkupText text = TextIn(CharsetTitle(list.Used), std::move(list.Content));
  text.Assumed = list.Assumed;
  return text;
}

MarkupText TextOf(std::string_view bytes, std::optional<Charset> asked_for) {
  if (auto marked = MarkedText(bytes)) {
    marked->Declared = CharsetOf(marked->Content.Text);
    marked->Contradicted = !FitsMark(marked->Declared, *marked);
    return std::move(*marked);
  }
  const std::string_view declared = CharsetOf(bytes);
  std::optional<MarkupText> text;
  if (asked_for) {
    text = TextIn(*asked_for, bytes);
  } else if (!declared.empty()) {
    text = DeclaredText(bytes, declared);
  }
  const bool is_contradicted = !text && !declared.empty();
  if (!text) text = GuessedText(bytes);
  text->Declared = declared;
  text->Contradicted = is_contradicted;
  return std::move(*text);
}

bool IsBadControl(char c) {
  return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r';
}

// Puts blanks in the place of control characters, and of references to them, and counts both.
std::size_t BlankControls(std::string& text) {
  int any = 0;  // there is hardly ever one; the compiler makes this loop a fast one
  for (const char c : text) any |= IsBadControl(c) ? 1 : 0;
  std::size_t count = 0;
  if (any != 0) {
    count = static_cast<std::size_t>(std::count_if(text.begin(), text.end(), IsBadControl));
    std::replace_if(text.begin(), text.end(), IsBadControl, ' ');
  }
  for (std::size_t at = FindBadReference(text); at != std::string::npos;
       at = FindBadReference(text, at)) {
    const std::size_t length = text.find(';', at) + 1 - at;
    text.replace(at, length, length, ' ');
    ++count;
  }
  return count;
}

}  // namespace

MarkupText DecodeMarkup(std::string_view bytes, std::optional<Charset> asked_for) {
  MarkupText text = TextOf(bytes, asked_for);
  text.Blanked = BlankControls(text.Content.Text);
  return text;
}

}  // namespace keltrun
