// Short names that still tell runners apart.
#pragma once

#include <string>
#include <vector>

#include "keltrun2/model/lap_data.h"

namespace keltrun {

/// The two parts of a person's name.
struct NameParts {
  std::string Family, Given;
};

/// The parts of a runner's name: those of the record if the source had them apart. Otherwise a name
/// in Latin letters ends with the family name, unless a comma follows it ("Novak, Paul") or it
/// alone is written in capitals ("NOVAK Paul"); any other name begins with it.
NameParts PartsOfName(const clsLapData& runner);

/// For each runner the family name, followed by the initial of the given name if another runner has
/// the same family name, and by the whole given name if that is not enough.
std::vector<std::string> ShortNames(const std::vector<const clsLapData*>& runners);

}  // namespace keltrun
