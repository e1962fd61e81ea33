#include "keltrun2/base/version.h"

namespace keltrun {

std::string VersionText(bool with_build) {
  constexpr const char* kSeparator = kVersionMinor < 10 ? ".0" : ".";  // two digits
  std::string out = std::to_string(kVersionMajor) + kSeparator + std::to_string(kVersionMinor);
  if (with_build) out += " ( Build " + std::to_string(kVersionRevision) + " )";
  return out;
}

}  // namespace keltrun
