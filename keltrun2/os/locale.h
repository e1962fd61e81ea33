// The user's default locale.
#pragma once

#include <cstdint>
#include <optional>

namespace keltrun {

inline constexpr std::int32_t kLocaleJapanese = 1041;
inline constexpr std::int32_t kLocaleEnglish = 1033;  // stands for every locale but the Japanese

/// Identifier of the user's default locale: kLocaleJapanese when the first of LC_ALL, LC_MESSAGES
/// and LANG that is set names Japanese, else kLocaleEnglish; or what SetUserLocale set.
std::int32_t UserLocale();

/// Overrides the environment; nullopt follows it again.
void SetUserLocale(std::optional<std::int32_t> locale);

}  // namespace keltrun
