// The progress of one operation: the window, if it is shown, and the events.
#pragma once

#include <atomic>
#include <cstdint>
#include <exception>
#include <memory>

#include "keltrun2/loading/progress.h"
#include "keltrun2/os/host_windows.h"

namespace keltrun {

/// A handler threw an exception, which ends the operation and is passed on to the host.
struct ProgressHandlerError {
  std::exception_ptr cause;
};

/// Reports 0 percent on construction and 100 percent once, when it is closed; the window is closed
/// before that.
class ProgressReport {
 public:
  ProgressReport(std::shared_ptr<ProgressHandlers> handlers, bool show_window);
  ~ProgressReport();
  ProgressReport(const ProgressReport&) = delete;
  ProgressReport& operator=(const ProgressReport&) = delete;

  /// Reports done / total in whole percent. 100 percent is shown in the window only.
  void Advance(std::int64_t done, std::int64_t total);

  /// Reports the end. Like Advance and the constructor, it throws ProgressHandlerError.
  void Close();

 private:
  void Raise(std::int32_t percent);
  void CloseQuietly();

  std::shared_ptr<ProgressHandlers> handlers_;
  std::unique_ptr<frmProgressBar> window_;
  bool open_ = true;
};

/// Exists while a load or export runs, so that a handler cannot start another. Threads with roots
/// of their own do not affect each other.
class [[nodiscard]] Busy {
 public:
  /// Marks the roots of this thread busy unless they are already.
  Busy();
  ~Busy();
  Busy(const Busy&) = delete;
  Busy& operator=(const Busy&) = delete;

  /// False when another operation was already running.
  bool Granted() const { return granted_; }

 private:
  std::shared_ptr<std::atomic<bool>> running_;
  bool granted_;
};

}  // namespace keltrun
