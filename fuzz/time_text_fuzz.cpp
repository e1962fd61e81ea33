// Time notations: a result set from any text is stored in a form that does not change when it is
// set again, and times stay within their range.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "keltrun2/model/lap_data.h"
#include "keltrun2/model/result_status.h"
#include "keltrun2/model/time_text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace keltrun;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  NormalizeTimeText(text, Digits::kClock);
  if (!(std::fabs(ParseTime(text, kNoTime)) < kLongestTime)) std::abort();
  ParseSignedTime(text, true, false, 0);
  if (!std::isfinite(ResultSortKey(text))) std::abort();
  clsLapData lap;
  lap.SetResult(text);
  const std::string once = lap.Result();
  lap.SetResult(once);
  const bool is_time = ReadableTime(once).value_or(0) > 0;
  if (is_time && lap.Result() != once) std::abort();
  return 0;
}
