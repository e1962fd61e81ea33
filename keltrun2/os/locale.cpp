#include "keltrun2/os/locale.h"

#include <atomic>
#include <cstdlib>
#include <string_view>

namespace keltrun {
namespace {

std::atomic<std::optional<std::int32_t>>& Override() {
  static std::atomic<std::optional<std::int32_t>> locale;
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
  if (const auto locale = Override().load()) return *locale;
  const std::string_view name = EnvironmentLocale();
  const bool japanese = name == "ja" || name.substr(0, 3) == "ja_" || name.substr(0, 3) == "ja.";
  return japanese ? kLocaleJapanese : kLocaleEnglish;
}

void SetUserLocale(std::optional<std::int32_t> locale) { Override() = locale; }

}  // namespace keltrun
