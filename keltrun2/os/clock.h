// The wall clock.
#pragma once

#include <functional>

namespace keltrun {

/// From 1899-12-30, day number 0, to 1970-01-01, the moment 0 of the system.
inline constexpr int kDaysTo1970 = 25569;

/// Now in local time, in days since 1899-12-30 00:00 (the day numbers of DateTime). When the
/// environment variable SOURCE_DATE_EPOCH is set (seconds since 1970, UTC), that moment instead, so
/// that output can be reproduced.
double Now();

/// Replaces the clock; an empty function puts the system's clock back. For tests.
void SetClock(std::function<double()> clock);

}  // namespace keltrun
