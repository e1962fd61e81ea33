// Bytes to text and back. Inside the library every text is UTF-8.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace keltrun {

enum class Charset : std::int32_t { kUtf8, kShiftJis, kWindows1252 };

/// What is written for a character that the charset lacks.
enum class MissingCharacter : std::int32_t {
  kQuestionMark,       // text and CSV files, byte widths
  kCharacterReference  // HTML: a decimal character reference
};

/// Compares without regard to the case of ASCII letters.
bool EqualsIgnoringCase(std::string_view a, std::string_view b);

/// The charset of a declaration (case ignored): "x-sjis", "shift_jis", "windows-31j", "cp932",
/// "iso-8859-1" (read and written as Windows-1252), "windows-1252", "utf-8".
std::optional<Charset> CharsetFromName(std::string_view name);

/// Appends `text` in the charset's bytes.
void AppendEncoded(std::string& out, std::string_view text, Charset charset,
                   MissingCharacter missing);

/// Text of bytes in a charset.
struct Decoded {
  std::string Text;                              // U+FFFD in place of what cannot be decoded
  std::size_t FirstInvalid = std::string::npos;  // offset of the first such place in Text
};
Decoded Decode(std::string_view bytes, Charset charset);

/// Text of a file of unknown encoding: a byte-order mark decides (UTF-8, UTF-16); otherwise valid
/// UTF-8 with at least one character beyond ASCII is UTF-8; everything else is Shift-JIS.
std::string DecodeTextFile(std::string_view bytes);

/// Text of UTF-16 bytes without a byte-order mark; unpaired surrogates and an odd last byte are
/// invalid.
Decoded DecodeUtf16(std::string_view bytes, bool big_endian);

/// Whether the byte begins a character of two bytes in Shift-JIS.
constexpr bool IsShiftJisLead(unsigned char byte) {
  return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
}

/// Bytes that the character takes in Shift-JIS (code page 932): 1 or 2, and 1 where it has none.
int ShiftJisLength(char32_t c);

/// `text` with every character that Shift-JIS lacks replaced by "?".
std::string ThroughShiftJis(std::string_view text);

}  // namespace keltrun
