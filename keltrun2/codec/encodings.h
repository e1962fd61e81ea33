// Converting bytes to text and back. Inside the library every text is UTF-8.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace keltrun {

enum class Charset : std::int32_t { kUtf8, kShiftJis, kWindows1252 };

/// What is written for a character that the charset does not have.
enum class MissingCharacter : std::int32_t {
  kQuestionMark,       // in text and CSV files
  kCharacterReference  // in HTML: a decimal character reference
};

/// How a text is written to a file.
struct TextEncoding {
  Charset charset = Charset::kUtf8;
  bool mark = false;  // UTF-8 begins with a byte-order mark
};

/// The encoding with a name: a name of CharsetFromName, or "utf-8-bom" or "utf-8-sig" for UTF-8
/// with a byte-order mark. nullopt for any other name.
std::optional<TextEncoding> TextEncodingFromName(std::string_view name);

/// The text as the bytes of a file. UTF-8 is not copied.
std::string EncodeText(std::string text, TextEncoding encoding, MissingCharacter missing);

/// What an XML declaration calls the charset.
std::string_view XmlEncodingName(Charset charset);

/// Compares two texts, ignoring the case of ASCII letters.
bool EqualsIgnoringCase(std::string_view a, std::string_view b);

/// The charset with a declared name (case ignored), such as "utf-8", "x-sjis", "shift_jis",
/// "windows-31j", "cp932", "windows-1252" or "iso-8859-1", which is read and written as
/// Windows-1252. nullopt for any other name.
std::optional<Charset> CharsetFromName(std::string_view name);

/// The name of a charset for people: "UTF-8", "Shift-JIS" or "Windows-1252".
std::string_view CharsetTitle(Charset charset);

/// Appends `text` encoded in the charset.
void AppendEncoded(std::string& out, std::string_view text, Charset charset,
                   MissingCharacter missing);

/// The text of encoded bytes.
struct Decoded {
  std::string Text;                              // with U+FFFD for what cannot be decoded
  std::size_t FirstInvalid = std::string::npos;  // offset in Text of the first such place
};

/// Decodes bytes in a charset.
Decoded Decode(std::string_view bytes, Charset charset);

/// Decodes bytes in any charset that the C library knows by the name; nullopt when it knows none.
std::optional<Decoded> DecodeByName(std::string_view bytes, std::string_view name);

/// Decodes a file whose encoding is unknown. A byte-order mark (UTF-8 or UTF-16) decides; otherwise
/// valid UTF-8 with at least one character beyond ASCII is taken as UTF-8, and everything else as
/// Shift-JIS.
std::string DecodeTextFile(std::string_view bytes);

/// Decodes UTF-16 without a byte-order mark. Unpaired surrogates and an odd last byte are invalid.
Decoded DecodeUtf16(std::string_view bytes, bool big_endian);

/// Whether the byte begins a two-byte character in Shift-JIS.
constexpr bool IsShiftJisLead(unsigned char byte) {
  return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
}

/// The number of bytes that the character takes in Shift-JIS (code page 932): 1 or 2. It is 1 for a
/// character that Shift-JIS does not have, since "?" is written for it.
int ShiftJisLength(char32_t c);

/// `text` with "?" for every character that Shift-JIS does not have.
std::string ThroughShiftJis(std::string_view text);

}  // namespace keltrun
