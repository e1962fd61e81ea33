// Given name and family name, for files that keep them apart.
#pragma once

#include <string_view>

#include "keltrun2/model/lap_data.h"

namespace keltrun {

/// Parts of a name. They are views into the record, without blanks at their ends.
struct PersonName {
  std::string_view given;   // may be empty
  std::string_view family;  // empty only when there is no name at all
};

/// The given name and the family name of the record, if it has either. Otherwise the name that is
/// shown is parted at its first blank: the family name stands first in Japanese, Chinese and Korean
/// script and before a single comma, the given name otherwise. Nothing of a name is lost; a name of
/// one part is a family name.
PersonName NameParts(const clsLapData& runner);

/// Whether a text has a letter of Japanese, Chinese or Korean script.
bool HasEastAsianScript(std::string_view text);

}  // namespace keltrun
