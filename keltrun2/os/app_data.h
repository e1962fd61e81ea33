// Where programs keep the settings of a user.
#pragma once

#include <string>

namespace keltrun {

/// The user's folder for settings: $XDG_CONFIG_HOME when it is an absolute path, else ".config" in
/// the home folder. Empty for a user without a home; the folder need not exist.
std::string AppDataFolder();

}  // namespace keltrun
