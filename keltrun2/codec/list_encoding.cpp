#include "keltrun2/codec/list_encoding.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "keltrun2/codec/utf8.h"

namespace keltrun {
namespace {

using Byte = unsigned char;

constexpr bool IsWithin(Byte byte, Byte first, Byte last) { return byte >= first && byte <= last; }

constexpr bool IsLetter(Byte byte) { return IsWithin(byte, 'A', 'Z') || IsWithin(byte, 'a', 'z'); }

// Whether a first byte of Shift-JIS is an accented letter in Windows-1252: "Š", "Œ", "Ž", "š", "œ",
// "ž", "Ÿ" or "à" to "ü".
constexpr bool IsAccentedLetter(Byte byte) {
  switch (byte) {
    case 0x8A:
    case 0x8C:
    case 0x8E:
    case 0x9A:
    case 0x9C:
    case 0x9E:
    case 0x9F:
      return true;
    default:
      return byte >= 0xE0;
  }
}

constexpr bool IsMissingInWindows1252(Byte byte) {
  return byte == 0x81 || byte == 0x8D || byte == 0x8F || byte == 0x90 || byte == 0x9D;
}

enum class Kind : std::int32_t {
  kBetween,   // separates words: a blank, a digit, a punctuation mark
  kLetter,    // part of a word that is not, or may not be, Japanese
  kKatakana,  // half-width katakana, or a capital letter with an accent
  kDoubtful,  // kanji, or an accented letter followed by another letter
  kLikely,    // kana or kanji whose first byte is not a letter in Windows-1252
  kSure,      // kana or kanji whose second byte is not an ASCII letter
};

struct Character {
  Kind kind;
  std::size_t length;
};

// The kind of a two-byte character.
Kind WideKind(Byte lead, Byte trail) {
  if (lead == 0x81) return IsWithin(trail, 0x52, 0x5B) ? Kind::kSure : Kind::kBetween;  // 々ー
  const bool is_greek = lead == 0x83 && trail >= 0x9F;
  const bool is_cyrillic_or_sign = IsWithin(lead, 0x84, 0x87);
  const bool is_users_own = IsWithin(lead, 0xF0, 0xF9);
  if (is_greek || is_cyrillic_or_sign || is_users_own) return Kind::kLetter;
  if (lead == trail) return Kind::kDoubtful;  // may be part of a line of dashes
  if (!IsLetter(trail)) return Kind::kSure;
  return IsAccentedLetter(lead) ? Kind::kDoubtful : Kind::kLikely;
}

Character CharacterAt(std::string_view bytes, std::size_t pos) {
  const auto byte = static_cast<Byte>(bytes[pos]);
  if (byte < 0x80) return {IsLetter(byte) ? Kind::kLetter : Kind::kBetween, 1};
  if (IsWithin(byte, 0xA6, 0xDF)) return {Kind::kKatakana, 1};
  const auto trail = static_cast<Byte>(pos + 1 < bytes.size() ? bytes[pos + 1] : 0);
  const bool is_pair = IsShiftJisLead(byte) && trail != 0x7F && IsWithin(trail, 0x40, 0xFC);
  if (!is_pair) return {IsShiftJisLead(byte) ? Kind::kLetter : Kind::kBetween, 1};
  return {WideKind(byte, trail), 2};
}

// In a Japanese word, voicing marks follow only the characters that can have them, and small
// characters, among them the byte of "«", are never the first.
bool IsSpelledWell(std::string_view katakana) {
  if (static_cast<Byte>(katakana[0]) <= 0xB0) return false;
  constexpr Byte kVoiced = 0xDE;
  constexpr Byte kHalfVoiced = 0xDF;
  Byte before = 0;
  for (const char c : katakana) {
    const auto byte = static_cast<Byte>(c);
    const bool is_h = IsWithin(before, 0xCA, 0xCE);
    if (byte == kHalfVoiced && !is_h) return false;
    if (byte == kVoiced && !is_h && before != 0xB3 && !IsWithin(before, 0xB6, 0xC4)) return false;
    before = byte;
  }
  return true;
}

// The bytes of the katakana "ｦ" to "ｿ" are signs in Windows-1252 and those of the others are
// capital letters with accents, of which words have no more than two in a row.
bool IsKatakanaWord(std::string_view word, bool stands_alone) {
  if (word.size() < 3 || !IsSpelledWell(word)) return false;
  const auto is_sign = [](char c) { return static_cast<Byte>(c) < 0xC0; };
  const bool is_row =
      std::count(word.begin(), word.end(), word[0]) == static_cast<std::ptrdiff_t>(word.size());
  if (is_row) return false;
  return std::any_of(word.begin(), word.end(), is_sign) || (word.size() > 3 && stands_alone);
}

// A run of two-byte characters.
struct WideWord {
  int characters = 0;
  int likely = 0;         // those that are not doubtful
  int sure_in_a_row = 0;  // at the end of the run
  bool has_sure_pair = false;

  void Add(Kind kind) {
    ++characters;
    likely += kind == Kind::kDoubtful ? 0 : 1;
    sure_in_a_row = kind == Kind::kSure ? sure_in_a_row + 1 : 0;
    has_sure_pair |= sure_in_a_row > 1;
  }
  bool IsJapanese(bool stands_alone) const {
    return has_sure_pair || (characters > 1 && likely > 0 && stands_alone);
  }
};

bool IsWide(Kind kind) { return kind >= Kind::kDoubtful; }

// Whether the run of possibly Japanese characters at `pos` is a Japanese word. Moves `pos` past it.
bool TakeWord(std::string_view bytes, std::size_t& pos, bool after_letter) {
  const std::size_t begin = pos;
  const bool is_wide = IsWide(CharacterAt(bytes, pos).kind);
  WideWord wide;
  Character next{Kind::kBetween, 0};
  while (pos < bytes.size()) {
    next = CharacterAt(bytes, pos);
    if (is_wide ? !IsWide(next.kind) : next.kind != Kind::kKatakana) break;
    if (is_wide) wide.Add(next.kind);
    pos += next.length;
  }
  const bool stands_alone = !after_letter && (pos == bytes.size() || next.kind == Kind::kBetween);
  return is_wide ? wide.IsJapanese(stands_alone)
                 : IsKatakanaWord(bytes.substr(begin, pos - begin), stands_alone);
}

bool HasByteOrderMark(std::string_view bytes) {
  return bytes.starts_with("\xEF\xBB\xBF") || bytes.starts_with("\xFF\xFE") ||
         bytes.starts_with("\xFE\xFF");
}

}  // namespace

bool HasJapaneseWord(std::string_view bytes) {
  bool after_letter = false;
  for (std::size_t pos = 0; pos < bytes.size();) {
    const Character c = CharacterAt(bytes, pos);
    const bool is_japanese = c.kind >= Kind::kKatakana;
    if (is_japanese && TakeWord(bytes, pos, after_letter)) return true;
    if (!is_japanese) pos += c.length;
    after_letter = c.kind != Kind::kBetween;
  }
  return false;
}

ListText DecodeList(std::string_view bytes, std::optional<Charset> asked_for) {
  if (HasByteOrderMark(bytes)) return {{DecodeTextFile(bytes)}, Charset::kUtf8, false};
  if (asked_for) return {Decode(bytes, *asked_for), *asked_for, false};
  if (FindInvalidUtf8(bytes) == std::string_view::npos) {
    return {{std::string(bytes)}, Charset::kUtf8, false};
  }
  const bool is_no_windows_1252 = std::any_of(bytes.begin(), bytes.end(), [](char c) {
    return IsMissingInWindows1252(static_cast<Byte>(c));
  });
  const bool has_word = HasJapaneseWord(bytes);
  if (has_word || is_no_windows_1252) {
    Decoded shift_jis = Decode(bytes, Charset::kShiftJis);
    const bool is_whole = shift_jis.FirstInvalid == std::string::npos;
    if (is_whole || (has_word && is_no_windows_1252)) {
      return {std::move(shift_jis), Charset::kShiftJis, !is_whole};
    }
  }
  return {Decode(bytes, Charset::kWindows1252), Charset::kWindows1252, true};
}

}  // namespace keltrun
