// Which lines of a chart's grid are drawn and which are labelled.
#pragma once

#include <string>

namespace keltrun {

/// One of so many time lines is labelled.
inline constexpr int kLinesPerLabel = 10;

/// Distance of the time lines in seconds: the least of a row of handy times at which the lines do
/// not run together and every tenth of them, a whole number of minutes, has room for its label.
/// Requires units_per_second > 0; label_room is in units.
double TimeStep(double units_per_second, double label_room);

/// "h:nn", with a sign when negative; a clock time starts again at midnight.
std::string TimeLabel(double seconds, bool is_clock);

/// The least of `least` times 1, 2, 5, 10, 20 ... that takes up at least `room` units. Requires
/// units_per_one > 0.
double GridStep(double units_per_one, double room, double least);

}  // namespace keltrun
