// The length and climb of a course as one text.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace keltrun {

/// The ClassInfo of classes and data sets: "5.2km", followed by the climb after its symbol unless
/// the climb is 0 ("5.2km ↑150m"). Empty for a length of 0. Both are in meters.
std::string LengthAndClimb(std::int32_t length, std::int32_t climb, std::string_view climb_symbol);

}  // namespace keltrun
