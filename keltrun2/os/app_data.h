// Where programs keep a user's settings.
#pragma once

#include <string>

namespace keltrun {

/// The user's folder for settings: $XDG_CONFIG_HOME if it is an absolute path, else ".config" in
/// the home folder. Empty for a user without a home folder. The folder may not exist yet.
std::string AppDataFolder();

}  // namespace keltrun
