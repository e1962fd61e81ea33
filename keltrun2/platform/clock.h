// The wall clock.
#pragma once

#include <functional>

namespace keltrun {

/// Now in local time, in days since 1899-12-30 00:00 (the day numbers of DateTime). When the
/// environment variable SOURCE_DATE_EPOCH is set (seconds since 1970, UTC), that moment instead, so
/// that output can be reproduced.
double Now();

/// Replaces the clock; an empty function puts the system's clock back. For tests.
void SetClock(std::function<double()> clock);

}  // namespace keltrun
