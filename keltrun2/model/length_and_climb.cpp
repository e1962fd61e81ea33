#include "keltrun2/model/length_and_climb.h"

#include "keltrun2/text/numbers.h"

namespace keltrun {

std::string LengthAndClimb(std::int32_t length, std::int32_t climb, std::string_view climb_symbol) {
  if (length == 0) return "";
  std::string out = FormatGeneral(length / 1000.0) + "km";
  if (climb != 0) out += " " + std::string(climb_symbol) + std::to_string(climb) + "m";
  return out;
}

}  // namespace keltrun
