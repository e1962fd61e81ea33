// Where the component itself is installed.
#pragma once

#include <string>
#include <vector>

namespace keltrun {

/// The component's own folder: the environment variable KELTRUN2_FOLDER if it is set, otherwise the
/// folder of the shared library or program that contains this code. Has no trailing separator.
std::string ComponentFolder();

/// The folders in which an installation may have put the settings and resource files, the most
/// likely first.
std::vector<std::string> InstalledDataFolders();

/// The parent of a folder, or "" for the root folder.
std::string ParentFolder(const std::string& folder);

}  // namespace keltrun
