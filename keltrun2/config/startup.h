// How a host overrides the settings file and the environment before it uses the component.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "keltrun2/base/export.h"

namespace keltrun {

/// Start values of a host. Members that are not set follow the settings file and the environment.
struct Startup {
  /// Language code of the resource file, "ja" or "en", instead of the LANGUAGE setting. Empty is
  /// the language of the user's locale: Japanese, or English for every other one.
  std::optional<std::string> Language = std::nullopt;
  /// Identifier of the user's locale; 1041 together with language "ja" is Japanese mode.
  std::optional<std::int32_t> Locale = std::nullopt;
  /// The folder with Keltrun2.ini and the resource files, instead of the one that a search would
  /// find. For files that are missing there, the texts built into the library are used.
  std::optional<std::string> Folder = std::nullopt;
};

/// Sets the start values of the process. They take effect when the settings are loaded, that is
/// with the first root object or the first font. Settings load only once, so later calls raise
/// invalid procedure call (5). A folder that contains neither the settings file nor a resource file
/// raises the same error. Nothing is changed then.
KELTRUN2_API void SetStartup(const Startup& Values);

}  // namespace keltrun
