// How a host overrides settings file and environment before it starts the component.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "keltrun2/base/export.h"

namespace keltrun {

/// What is not set follows the settings file and the environment.
struct Startup {
  /// Language code of the resource file, "ja" or "en", in place of the LANGUAGE setting.
  std::optional<std::string> Language = std::nullopt;
  /// Identifier of the user's locale; 1041 together with language "ja" is the Japanese mode.
  std::optional<std::int32_t> Locale = std::nullopt;
  /// The folder that holds Keltrun2.ini and the resource files, in place of the search. What it
  /// does not hold is taken from the library itself, as where the search finds nothing.
  std::optional<std::string> Folder = std::nullopt;
};

/// Takes effect when the settings are loaded, that is with the first root object or the first font
/// request of the process. Later it raises invalid procedure call (5): settings load once. So does
/// a folder that holds neither the settings file nor a resource file; nothing is changed then.
KELTRUN2_API void SetStartup(const Startup& Values);

}  // namespace keltrun
