// One operation's progress: the window, if it is wanted, and the events.
#pragma once

#include <atomic>
#include <cstdint>
#include <exception>
#include <memory>

#include "keltrun2/loading/progress.h"
#include "keltrun2/os/host_windows.h"

namespace keltrun {

/// A handler threw: what it threw ends the operation and goes to the host.
struct ProgressHandlerError {
  std::exception_ptr cause;
};

/// Reports 0 percent when it is made and 100 when it is closed, once and with the window closed
/// before.
class ProgressReport {
 public:
  ProgressReport(std::shared_ptr<ProgressHandlers> handlers, bool show_window);
  ~ProgressReport();
  ProgressReport(const ProgressReport&) = delete;
  ProgressReport& operator=(const ProgressReport&) = delete;

  /// Reports done / total, rounded to whole percents; 100 percent only in the window.
  void Advance(std::int64_t done, std::int64_t total);

  /// Reports the end. This, Advance and the constructor throw ProgressHandlerError.
  void Close();

 private:
  void Raise(std::int32_t percent);
  void CloseQuietly();

  std::shared_ptr<ProgressHandlers> handlers_;
  std::unique_ptr<frmProgressBar> window_;
  bool open_ = true;
};

/// Held while a load or export runs: its handlers may not start another. Threads that have roots of
/// their own do not hinder each other.
class [[nodiscard]] Busy {
 public:
  /// Marks the roots of this thread busy unless they are already.
  Busy();
  ~Busy();
  Busy(const Busy&) = delete;
  Busy& operator=(const Busy&) = delete;

  /// False when another operation was running when this was made.
  bool Granted() const { return granted_; }

 private:
  std::shared_ptr<std::atomic<bool>> running_;
  bool granted_;
};

}  // namespace keltrun
