#include "keltrun2/os/data_folders.h"

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>

#ifndef KELTRUN2_DATA_FOLDER
#define KELTRUN2_DATA_FOLDER "/usr/share/keltrun2"
#endif

namespace keltrun {

namespace fs = std::filesystem;

std::string ComponentFolder() {
  const char* chosen = std::getenv("KELTRUN2_FOLDER");
  if (chosen != nullptr && *chosen != '\0') return chosen;
  std::error_code code;
  Dl_info info{};
  fs::path module;
  if (dladdr(reinterpret_cast<const void*>(&ComponentFolder), &info) != 0 &&
      info.dli_fname != nullptr) {
    module = fs::canonical(info.dli_fname, code);
  }
  if (module.empty() || code) module = fs::read_symlink("/proc/self/exe", code);
  return module.parent_path().string();
}

std::vector<std::string> InstalledDataFolders() {
  std::vector<std::string> folders;
  // If an installation was moved as a whole, the data is still in <prefix>/share/keltrun2, next to
  // <prefix>/lib/... or <prefix>/bin, which holds this code.
  std::string prefix = ComponentFolder();
  for (int up = 0; up < 3 && !prefix.empty(); ++up) {
    prefix = ParentFolder(prefix);
    folders.push_back(prefix + "/share/keltrun2");
  }
  folders.push_back(KELTRUN2_DATA_FOLDER);
  return folders;
}

std::string ParentFolder(const std::string& folder) {
  const fs::path path(folder);
  const fs::path parent = path.parent_path();
  return parent == path ? "" : parent.string();
}

}  // namespace keltrun
