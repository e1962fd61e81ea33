// The encoding of result lists and printouts, which come from programs of many countries.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "keltrun2/codec/encodings.h"

namespace keltrun {

/// A list as text, and how it was taken.
struct ListText {
  Decoded Content;
  Charset Used = Charset::kUtf8;
  bool Assumed = false;  // the bytes did not settle it
};

/// The text of a list. A byte-order mark decides; then the charset that is asked for, if any; then
/// valid UTF-8 is UTF-8. What is left is Shift-JIS when every byte decodes and a word of Japanese
/// characters appears, or when it has such a word and bytes that Windows-1252 does not have; else
/// it is Windows-1252.
ListText DecodeList(std::string_view bytes, std::optional<Charset> asked_for);

/// Whether bytes hold, read as Shift-JIS, a word that is Japanese beyond chance. Accented letters
/// of Windows-1252 are the first bytes of kanji, or half-width katakana: "Hélène" has two kanji in
/// a row, "VÄÄNÄNEN" two katakana. Such letters have others of their word beside them.
bool HasJapaneseWord(std::string_view bytes);

}  // namespace keltrun
