#include "keltrun2/os/locale.h"

#include <atomic>
#include <cstdlib>
#include <string_view>

namespace keltrun {
namespace {

// The locale that was set; no locale has the number kNotSet.
constexpr std::int32_t kNotSet = -1;

std::atomic<std::int32_t>& Override() {
  static std::atomic<std::int32_t> locale = kNotSet;
  return locale;
}

std::string_view EnvironmentLocale() {
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* value = std::getenv(name);
    if (value != nullptr && *value != '\0') return value;
  }
  return "";
}

}  // namespace

std::int32_t UserLocale() {
  if (const std::int32_t locale = Override(); locale != kNotSet) return locale;
  const std::string_view name = EnvironmentLocale();
  const bool japanese = name == "ja" || name.substr(0, 3) == "ja_" || name.substr(0, 3) == "ja.";
  return japanese ? kLocaleJapanese : kLocaleEnglish;
}

void SetUserLocale(std::optional<std::int32_t> locale) { Override() = locale.value_or(kNotSet); }

}  // namespace keltrun
