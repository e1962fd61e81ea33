// Storing the settings of a host.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "keltrun2/base/export.h"

namespace keltrun {

/// The parts of the settings. Any other value means KR_CONFIG_FOLDER_SYSTEM.
enum KrConfigFolderConst : std::int32_t {
  /// Settings of the host.
  KR_CONFIG_FOLDER_SYSTEM = 0,
  /// Settings for the data, and those that the component itself reads, such as PRINT_COLOR_RANK1.
  KR_CONFIG_FOLDER_DATA = 1,
};

/// The service with which a host keeps its own settings between runs. Settings are named texts in
/// the file `Keltrun2/Config/Keltrun2.dat` inside the user's settings folder ($XDG_CONFIG_HOME,
/// else ~/.config). Several processes may use it at once.
///
///     root->ConfigControl()->SetValue(KR_CONFIG_FOLDER_SYSTEM, "LAST_FOLDER", folder);
///     folder = root->ConfigControl()->Value(KR_CONFIG_FOLDER_SYSTEM, "LAST_FOLDER", "/");
///
/// The names of items are case-sensitive. An item whose name contains "=" or a line break or ends
/// in a space is never stored. Spaces at both ends of a value are removed, and its line breaks are
/// returned as CR LF.
///
/// No errors are raised. If another process holds the store or it cannot be used, three attempts
/// are made, 1 to 2 seconds apart; a value that cannot be written then is lost.
class KELTRUN2_API clsConfigControl {
 public:
  /// Prepares the store: creates it if it is missing, otherwise drops the lines that later ones
  /// replace. Never waits. Does nothing if the folder cannot be written.
  clsConfigControl();

  /// The setting, or DefaultValue if it was never stored.
  std::string Value(KrConfigFolderConst ConfigFolder, std::string_view Item,
                    std::string_view DefaultValue = "") const;

  /// Stores NewValue, or DefaultValue if NewValue is empty.
  void SetValue(KrConfigFolderConst ConfigFolder, std::string_view Item, std::string_view NewValue,
                std::string_view DefaultValue = "") const;

 private:
  std::string file_;  // empty for a user without a home folder
};

}  // namespace keltrun
