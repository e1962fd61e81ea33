// The meaning of result texts that are not times.
#pragma once

#include <cstdint>
#include <string_view>

#include "keltrun2/text/datetime.h"

namespace keltrun {

/// The code of a result text that is not a time. Statuses are sorted by this code: "P" and a number
/// gives that number of missing punches, MP 50, DNF 90, ?CL 91, DNQ 92, D... 93, empty or unknown
/// 98, DNS 99. A text that contains ":" or "'" looks like a time and gives 0.
std::int32_t ResultStatusCode(std::string_view text);

/// The key that sorts runners by result: the time in days, else the status code as a number of
/// days, so that statuses come after times. A text that is not a time and has no code above 0 gets
/// the code 98.
DateTime ResultSortKey(std::string_view result);

}  // namespace keltrun
