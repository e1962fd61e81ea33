// The wall clock.
#pragma once

#include <functional>

namespace keltrun {

/// Days from 1899-12-30, which is day number 0, to 1970-01-01, where system time begins.
inline constexpr int kDaysTo1970 = 25569;

/// The current local time, in days since 1899-12-30 00:00 (the day numbers of DateTime). If the
/// environment variable SOURCE_DATE_EPOCH is set (seconds since 1970, UTC), the result is that
/// moment instead, so that output can be reproduced.
double Now();

/// The minutes that the system's time zone is ahead of UTC at a local time.
int UtcOffset(double local_time);

/// Replaces the clock, for tests; an empty function restores the system's clock.
void SetClock(std::function<double()> clock);

}  // namespace keltrun
