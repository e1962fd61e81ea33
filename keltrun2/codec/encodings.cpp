#include "keltrun2/codec/encodings.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <memory>

#include "keltrun2/codec/cp932.h"
#include "keltrun2/codec/utf8.h"

namespace keltrun {
namespace {

// The Shift-JIS codes of the characters up to U+FFFF, in pages of 256 characters that are made when
// they are first needed. All threads share the pages: once made, a page never changes and is never
// freed.
class ShiftJisTable {
 public:
  // The code (one byte below 256, two bytes above), or kNoCode.
  std::uint16_t Code(char32_t c) {
    if (c < 0x80) return static_cast<std::uint16_t>(c);
    if (c > 0xFFFF) return kNoCode;
    std::atomic<const Page*>& place = pages_[c >> 8];
    const Page* page = place.load(std::memory_order_acquire);
    if (page == nullptr) page = MakePage(place, c & 0xFF00);
    return (*page)[c & 0xFF];
  }

 private:
  using Page = Cp932Page;

  // If two threads make the same page at once, the first one stored is used.
  static const Page* MakePage(std::atomic<const Page*>& place, char32_t first) {
    auto page = std::make_unique<Page>();
    FillCp932Page(first, *page);
    const Page* there = nullptr;
    return place.compare_exchange_strong(there, page.get()) ? page.release() : there;
  }

  std::array<std::atomic<const Page*>, 256> pages_{};
};

ShiftJisTable& Table() {
  static constinit ShiftJisTable table;
  return table;
}

// The characters of Windows-1252 from 0x80 to 0x9F; 0 for unassigned codes.
constexpr std::array<char16_t, 32> kWindows1252 = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

std::uint16_t Windows1252Code(char32_t c) {
  if (c < 0x80 || (c >= 0xA0 && c <= 0xFF)) return static_cast<std::uint16_t>(c);
  const auto* found = std::find(kWindows1252.begin(), kWindows1252.end(), c);
  if (found == kWindows1252.end()) return kNoCode;
  return static_cast<std::uint16_t>(0x80 + (found - kWindows1252.begin()));
}

void AppendMissing(std::string& out, char32_t c, MissingCharacter missing) {
  if (missing == MissingCharacter::kQuestionMark) {
    out += '?';
  } else {
    out += "&#" + std::to_string(static_cast<std::uint32_t>(c)) + ";";
  }
}

void AppendCode(std::string& out, char32_t c, std::uint16_t code, MissingCharacter missing) {
  // The converter maps the yen sign and the overline to the bytes of "\" and "~". HTML can keep
  // the characters themselves.
  const bool is_look_alike = code < 0x80 && missing == MissingCharacter::kCharacterReference;
  if (code == kNoCode || is_look_alike) {
    AppendMissing(out, c, missing);
    return;
  }
  if (code > 0xFF) out.push_back(static_cast<char>(code >> 8));
  out.push_back(static_cast<char>(code & 0xFF));
}

void AppendInvalid(Decoded& decoded) {
  if (decoded.FirstInvalid == std::string::npos) decoded.FirstInvalid = decoded.Text.size();
  AppendUtf8(decoded.Text, kReplacementCharacter);
}

// The number of ASCII characters at the start of the bytes.
std::size_t AsciiRun(std::string_view bytes) {
  const auto is_wide = [](char c) { return static_cast<unsigned char>(c) >= 0x80; };
  return static_cast<std::size_t>(std::find_if(bytes.begin(), bytes.end(), is_wide) -
                                  bytes.begin());
}

// The length in bytes of the characters beyond ASCII at the start of the bytes.
std::size_t WideRun(std::string_view bytes) {
  std::size_t length = 0;
  while (length < bytes.size()) {
    const auto byte = static_cast<unsigned char>(bytes[length]);
    if (byte < 0x80) break;
    length += IsShiftJisLead(byte) ? 2 : 1;
  }
  return std::min(length, bytes.size());
}

// Most of every file is ASCII, which is copied without the converter. After an invalid byte this
// stops, because only the converter then knows where the next character begins.
Decoded DecodeShiftJis(std::string_view bytes) {
  Decoded decoded;
  decoded.Text.reserve(bytes.size() + bytes.size() / 2);
  std::array<char, 4096> buffer;
  while (!bytes.empty()) {
    std::size_t run_length = bytes.size();
    if (decoded.FirstInvalid == std::string::npos) {
      const std::size_t ascii_end = AsciiRun(bytes);
      decoded.Text.append(bytes.substr(0, ascii_end));
      bytes.remove_prefix(ascii_end);
      if (bytes.empty()) break;
      run_length = WideRun(bytes);
    }
    const char* in = bytes.data();
    std::size_t in_left = run_length;
    char* target = buffer.data();
    std::size_t target_left = buffer.size();
    const bool whole = DecodeCp932(in, in_left, target, target_left);
    decoded.Text.append(buffer.data(), buffer.size() - target_left);
    if (!whole && target_left >= 8) {  // the buffer is not full, so the byte is invalid
      AppendInvalid(decoded);
      --in_left;
    }
    bytes.remove_prefix(run_length - in_left);
  }
  return decoded;
}

Decoded DecodeWindows1252(std::string_view bytes) {
  Decoded decoded;
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    const bool special = value >= 0x80 && value < 0xA0;
    const char32_t c = special ? kWindows1252[value - 0x80] : value;
    if (special && c == 0) {
      AppendInvalid(decoded);
    } else {
      AppendUtf8(decoded.Text, c);
    }
  }
  return decoded;
}

Decoded DecodeUtf8(std::string_view bytes) {
  Decoded decoded;
  decoded.FirstInvalid = FindInvalidUtf8(bytes);
  decoded.Text = ValidUtf8(bytes);
  return decoded;
}

}  // namespace

bool EqualsIgnoringCase(std::string_view a, std::string_view b) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](char x, char y) { return lower(x) == lower(y); });
}

std::string_view CharsetTitle(Charset charset) {
  switch (charset) {
    case Charset::kShiftJis:
      return "Shift-JIS";
    case Charset::kWindows1252:
      return "Windows-1252";
    case Charset::kUtf8:
      break;
  }
  return "UTF-8";
}

std::optional<Charset> CharsetFromName(std::string_view name) {
  struct Name {
    std::string_view text;
    Charset charset;
  };
  static constexpr Name kNames[] = {
      {"utf-8", Charset::kUtf8},
      {"utf8", Charset::kUtf8},
      {"x-sjis", Charset::kShiftJis},
      {"shift_jis", Charset::kShiftJis},
      {"shift-jis", Charset::kShiftJis},
      {"sjis", Charset::kShiftJis},
      {"windows-31j", Charset::kShiftJis},
      {"cp932", Charset::kShiftJis},
      {"ms932", Charset::kShiftJis},
      {"iso-8859-1", Charset::kWindows1252},
      {"windows-1252", Charset::kWindows1252},
  };
  for (const Name& known : kNames) {
    if (EqualsIgnoringCase(known.text, name)) return known.charset;
  }
  return std::nullopt;
}

void AppendEncoded(std::string& out, std::string_view text, Charset charset,
                   MissingCharacter missing) {
  if (charset == Charset::kUtf8) {
    if (FindInvalidUtf8(text) == std::string_view::npos) {
      out += text;
    } else {
      out += ValidUtf8(text);
    }
    return;
  }
  ShiftJisTable& table = Table();
  for (std::size_t pos = 0; pos < text.size();) {
    const std::size_t ascii = AsciiRun(text.substr(pos));
    out.append(text, pos, ascii);
    pos += ascii;
    if (pos == text.size()) break;
    const char32_t c = NextCodePoint(text, pos);
    const std::uint16_t code = charset == Charset::kShiftJis ? table.Code(c) : Windows1252Code(c);
    AppendCode(out, c, code, missing);
  }
}

std::optional<TextEncoding> TextEncodingFromName(std::string_view name) {
  if (EqualsIgnoringCase(name, "utf-8-bom") || EqualsIgnoringCase(name, "utf-8-sig")) {
    return TextEncoding{Charset::kUtf8, true};
  }
  const auto charset = CharsetFromName(name);
  if (!charset) return std::nullopt;
  return TextEncoding{*charset, false};
}

std::string EncodeText(std::string text, TextEncoding encoding, MissingCharacter missing) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  const bool is_utf8 = encoding.charset == Charset::kUtf8;
  if (is_utf8 && !encoding.mark && FindInvalidUtf8(text) == std::string::npos) return text;
  std::string bytes;
  bytes.reserve(text.size() + kMark.size());
  if (is_utf8 && encoding.mark) bytes += kMark;
  AppendEncoded(bytes, text, encoding.charset, missing);
  return bytes;
}

std::string_view XmlEncodingName(Charset charset) {
  switch (charset) {
    case Charset::kShiftJis:
      return "Windows-31J";
    case Charset::kWindows1252:
      return "windows-1252";
    case Charset::kUtf8:
      break;
  }
  return "UTF-8";
}

Decoded Decode(std::string_view bytes, Charset charset) {
  switch (charset) {
    case Charset::kShiftJis:
      return DecodeShiftJis(bytes);
    case Charset::kWindows1252:
      return DecodeWindows1252(bytes);
    case Charset::kUtf8:
      break;
  }
  return DecodeUtf8(bytes);
}

std::string DecodeTextFile(std::string_view bytes) {
  if (bytes.substr(0, 3) == "\xEF\xBB\xBF") return ValidUtf8(bytes.substr(3));
  if (bytes.substr(0, 2) == "\xFF\xFE") return DecodeUtf16(bytes.substr(2), false).Text;
  if (bytes.substr(0, 2) == "\xFE\xFF") return DecodeUtf16(bytes.substr(2), true).Text;
  const bool utf8 = !IsAscii(bytes) && FindInvalidUtf8(bytes) == std::string_view::npos;
  return Decode(bytes, utf8 ? Charset::kUtf8 : Charset::kShiftJis).Text;
}

Decoded DecodeUtf16(std::string_view bytes, bool big_endian) {
  const auto unit = [&](std::size_t i) {
    const auto first = static_cast<unsigned char>(bytes[i]);
    const auto second = static_cast<unsigned char>(bytes[i + 1]);
    return static_cast<char32_t>(big_endian ? first << 8 | second : second << 8 | first);
  };
  const auto is_surrogate = [](char32_t c) { return c >= 0xD800 && c <= 0xDFFF; };
  Decoded decoded;
  std::size_t i = 0;
  for (; i + 1 < bytes.size(); i += 2) {
    char32_t c = unit(i);
    const bool high = c >= 0xD800 && c <= 0xDBFF;
    if (high && i + 3 < bytes.size() && unit(i + 2) >= 0xDC00 && unit(i + 2) <= 0xDFFF) {
      c = 0x10000 + ((c - 0xD800) << 10) + (unit(i + 2) - 0xDC00);
      i += 2;
    }
    if (is_surrogate(c)) {
      AppendInvalid(decoded);
    } else {
      AppendUtf8(decoded.Text, c);
    }
  }
  if (i < bytes.size()) AppendInvalid(decoded);
  return decoded;
}

int ShiftJisLength(char32_t c) {
  if (c < 0x80) return 1;
  const std::uint16_t code = Table().Code(c);
  return code != kNoCode && code > 0xFF ? 2 : 1;
}

std::string ThroughShiftJis(std::string_view text) {
  if (IsAscii(text)) return std::string(text);
  std::string out;
  for (std::size_t pos = 0; pos < text.size();) {
    const char32_t c = NextCodePoint(text, pos);
    AppendUtf8(out, Table().Code(c) == kNoCode ? U'?' : c);
  }
  return out;
}

}  // namespace keltrun
