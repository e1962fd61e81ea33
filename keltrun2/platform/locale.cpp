#include "keltrun2/platform/locale.h"

#include <cstdlib>
#include <string_view>

namespace keltrun {
namespace {

std::optional<std::int32_t>& Override() {
  static std::optional<std::int32_t> locale;
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
  if (Override()) return *Override();
  const std::string_view name = EnvironmentLocale();
  const bool japanese = name == "ja" || name.substr(0, 3) == "ja_" || name.substr(0, 3) == "ja.";
  return japanese ? kLocaleJapanese : kLocaleEnglish;
}

void SetUserLocale(std::optional<std::int32_t> locale) { Override() = locale; }

}  // namespace keltrun
