// Detecting the encoding of result lists and printouts, which come from programs of many countries.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "keltrun2/codec/encodings.h"

namespace keltrun {

/// A decoded list, and how its charset was chosen.
struct ListText {
  Decoded Content;
  Charset Used = Charset::kUtf8;
  bool Assumed = false;  // the charset is a guess that the bytes do not confirm
};

/// Decodes a list. A byte-order mark decides; without one the requested charset, if any, is used;
/// otherwise valid UTF-8 is taken as UTF-8. Other bytes are taken as Shift-JIS if all of them are
/// valid in it and they contain a Japanese word or a byte that Windows-1252 does not have, or if
/// they contain both; else as Windows-1252.
ListText DecodeList(std::string_view bytes, std::optional<Charset> asked_for);

/// Whether the bytes, read as Shift-JIS, contain a word that is unlikely to be Japanese by
/// accident. Accented letters in Windows-1252 look like the first bytes of kanji or like half-width
/// katakana: "Hélène" reads as two kanji in a row, "VÄÄNÄNEN" has two katakana. But other letters
/// of the same word adjoin them.
bool HasJapaneseWord(std::string_view bytes);

}  // namespace keltrun
