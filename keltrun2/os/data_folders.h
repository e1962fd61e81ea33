// Where the component itself lives.
#pragma once

#include <string>
#include <vector>

namespace keltrun {

/// The component's own folder: the environment variable KELTRUN2_FOLDER if set, otherwise the
/// folder of the shared library or program that holds this code. No separator at the end.
std::string ComponentFolder();

/// Folders in which an installation puts the settings and resource files, the likeliest first.
std::vector<std::string> InstalledDataFolders();

/// The folder above, or "" for the root folder.
std::string ParentFolder(const std::string& folder);

}  // namespace keltrun
