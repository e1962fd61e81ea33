// The component's few windows: progress, a choice and a yes/no question. A host may install its
// own; otherwise the terminal is used, and without a terminal nothing is shown or chosen.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/base/export.h"

namespace keltrun {

/// The progress window. It is open from its creation to its destruction.
class KELTRUN2_API frmProgressBar {
 public:
  virtual ~frmProgressBar() = default;
  /// Shows how much of the work is done, in percent from 0 to 100.
  virtual void SetPercent(std::int32_t Percent) = 0;

  /// Width of the full bar in twips (1/1440 inch).
  static constexpr std::int32_t kFullBarTwips = 4395;
  /// Width of the bar at a percentage, in twips (1/1440 inch).
  static constexpr std::int32_t BarTwips(std::int32_t Percent) {
    return Percent * kFullBarTwips / 100;
  }
};

/// A host implements this class to show the component's windows itself. The members are called on
/// the thread whose call shows the window; if a host uses several threads, several windows may be
/// open at once.
class KELTRUN2_API HostWindows {
 public:
  virtual ~HostWindows() = default;
  /// Opens the progress window at 0 percent. The result may be null; then no progress is shown.
  [[nodiscard]] virtual std::unique_ptr<frmProgressBar> OpenProgress(std::string_view Caption) = 0;
  /// Lets the user choose one of the names. Returns its position, from 0, or nullopt if none was
  /// chosen.
  [[nodiscard]] virtual std::optional<std::size_t> ChooseName(
      std::string_view Caption, const std::vector<std::string>& Names) = 0;
  /// Asks the user a yes/no question. True only if the answer is a clear yes.
  [[nodiscard]] virtual bool AskYesNo(std::string_view Text, std::string_view Title) = 0;
};

/// Installs the host's windows for the whole process; null restores the terminal windows.
KELTRUN2_API void SetHostWindows(std::shared_ptr<HostWindows> Windows);

/// The windows in use, never null.
KELTRUN2_API std::shared_ptr<HostWindows> CurrentHostWindows();

}  // namespace keltrun
