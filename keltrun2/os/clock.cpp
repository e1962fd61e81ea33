#include "keltrun2/os/clock.h"

#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <utility>

namespace keltrun {
namespace {

constexpr double kSecondsPerDay = 86400;

std::function<double()>& Replacement() {
  static std::function<double()> clock;
  return clock;
}

double SystemNow() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  if (localtime_r(&now, &local) == nullptr) return 0;
  return kDaysTo1970 + static_cast<double>(now + local.tm_gmtoff) / kSecondsPerDay;
}

}  // namespace

double Now() {
  if (Replacement()) return Replacement()();
  if (const char* epoch = std::getenv("SOURCE_DATE_EPOCH")) {
    std::int64_t seconds = 0;
    const auto parsed = std::from_chars(epoch, epoch + std::strlen(epoch), seconds);
    if (parsed.ec == std::errc())
      return kDaysTo1970 + static_cast<double>(seconds) / kSecondsPerDay;
  }
  return SystemNow();
}

int UtcOffset(double local_time) {
  const auto seconds = static_cast<std::time_t>((local_time - kDaysTo1970) * kSecondsPerDay);
  std::tm moment{};
  if (gmtime_r(&seconds, &moment) == nullptr) return 0;
  moment.tm_isdst = -1;
  if (std::mktime(&moment) == -1) return 0;
  return static_cast<int>(moment.tm_gmtoff / 60);
}

void SetClock(std::function<double()> clock) { Replacement() = std::move(clock); }

}  // namespace keltrun
