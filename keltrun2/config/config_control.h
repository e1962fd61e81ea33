// The host's own settings.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "keltrun2/base/export.h"

namespace keltrun {

/// The parts of the settings; every other value counts as KR_CONFIG_FOLDER_SYSTEM.
enum KrConfigFolderConst : std::int32_t {
  /// Settings of the host.
  KR_CONFIG_FOLDER_SYSTEM = 0,
  /// Settings of the data, and those that the component reads, such as PRINT_COLOR_RANK1.
  KR_CONFIG_FOLDER_DATA = 1,
};

/// The service through which a host keeps settings of its own between runs: named texts, in
/// `Keltrun2/Config/Keltrun2.dat` inside the user's settings folder ($XDG_CONFIG_HOME, else
/// ~/.config). Several processes may use it at once.
///
///     root->ConfigControl()->SetValue(KR_CONFIG_FOLDER_SYSTEM, "LAST_FOLDER", folder);
///     folder = root->ConfigControl()->Value(KR_CONFIG_FOLDER_SYSTEM, "LAST_FOLDER", "/");
///
/// An item is named in any letter case, which counts. It holds no "=" and no line break and does
/// not end in a space; others are never stored. Values lose spaces at both ends, and their line
/// breaks come back as CR LF.
///
/// No error reaches the host. A store that another process holds, or that cannot be used, is tried
/// three times with 1 to 2 seconds between; what cannot be written then is lost.
class KELTRUN2_API clsConfigControl {
 public:
  /// Prepares the store: creates it when missing, else drops the lines that later ones replace.
  /// Never waits; in a folder that cannot be written it does nothing.
  clsConfigControl();

  /// The setting, or DefaultValue when it was never stored.
  std::string Value(KrConfigFolderConst ConfigFolder, std::string_view Item,
                    std::string_view DefaultValue = "") const;

  /// Stores NewValue, or DefaultValue when NewValue is empty.
  void SetValue(KrConfigFolderConst ConfigFolder, std::string_view Item, std::string_view NewValue,
                std::string_view DefaultValue = "") const;

 private:
  std::string file_;  // empty for a user without a home
};

}  // namespace keltrun
