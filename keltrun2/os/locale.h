// The user's default locale.
#pragma once

#include <cstdint>
#include <optional>

namespace keltrun {

inline constexpr std::int32_t kLocaleJapanese = 1041;
inline constexpr std::int32_t kLocaleEnglish = 1033;  // used for every locale except Japanese

/// Identifier of the user's default locale: the one given to SetUserLocale, if any; otherwise
/// kLocaleJapanese if the first of LC_ALL, LC_MESSAGES and LANG that is not empty names Japanese,
/// else kLocaleEnglish.
std::int32_t UserLocale();

/// Overrides the locale of the environment; nullopt returns to it.
void SetUserLocale(std::optional<std::int32_t> locale);

}  // namespace keltrun
