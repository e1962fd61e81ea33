// What a result text says when it is no time.
#pragma once

#include <cstdint>
#include <string_view>

#include "keltrun2/text/datetime.h"

namespace keltrun {

/// The code of a result text that is not a time, which orders the statuses: "P" and a number gives
/// that number of missing punches, MP 50, DNF 90, ?CL 91, DNQ 92, D... 93, empty and unknown 98,
/// DNS 99. A text with ":" or "'" looks like a time and gives 0.
std::int32_t ResultStatusCode(std::string_view text);

/// The key that orders runners by result: the time, else the status code as a day count, so that
/// every status comes after every time. A text that is no time and has no code above 0 counts
/// as 98.
DateTime ResultSortKey(std::string_view result);

}  // namespace keltrun
