// Which lines of a chart's grid are drawn and which are labeled.
#pragma once

#include <string>

namespace keltrun {

/// One time line out of this many has a label.
inline constexpr int kLinesPerLabel = 10;

/// The distance between time lines in seconds: the smallest round time at which the lines do not
/// run together and every tenth of them, at a whole number of minutes, has room for its label.
/// Requires units_per_second > 0; label_room is in units.
double TimeStep(double units_per_second, double label_room);

/// "h:nn", with a sign when negative; a clock time starts again at midnight.
std::string TimeLabel(double seconds, bool is_clock);

/// The smallest of `least` times 1, 2, 5, 10, 20 ... that takes up at least `room` units. Requires
/// units_per_one > 0.
double GridStep(double units_per_one, double room, double least);

}  // namespace keltrun
