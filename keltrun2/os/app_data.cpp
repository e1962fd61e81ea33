#include "keltrun2/os/app_data.h"

#include <cstdlib>

namespace keltrun {
namespace {

// The value of the variable if it is an absolute path, else "": a relative path would depend on the
// working directory.
std::string AbsolutePath(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr && *value == '/' ? value : "";
}

}  // namespace

std::string AppDataFolder() {
  std::string folder = AbsolutePath("XDG_CONFIG_HOME");
  if (!folder.empty()) return folder;
  const std::string home = AbsolutePath("HOME");
  return home.empty() ? "" : home + "/.config";
}

}  // namespace keltrun
