#include "keltrun2/loading/progress_report.h"

#include <cmath>
#include <utility>

#include "keltrun2/config/settings.h"
#include "keltrun2/model/process_state.h"

namespace keltrun {

ProgressReport::ProgressReport(std::shared_ptr<ProgressHandlers> handlers, bool show_window)
    : handlers_(std::move(handlers)) {
  if (show_window) {
    window_ = CurrentHostWindows()->OpenProgress(ResourceText("RES_MESSAGE_PLEASE_WAIT"));
  }
  try {
    Raise(0);
  } catch (...) {  // the destructor does not run when a constructor throws
    CloseQuietly();
    throw;
  }
}

ProgressReport::~ProgressReport() { CloseQuietly(); }

void ProgressReport::CloseQuietly() {
  try {
    Close();
  } catch (const ProgressHandlerError&) {  // another error is already on its way to the host
  }
}

void ProgressReport::Advance(std::int64_t done, std::int64_t total) {
  if (total <= 0) return;
  const double percent =
      std::floor(static_cast<double>(done) / static_cast<double>(total) * 100 + 0.5);
  if (percent < 100) Raise(static_cast<std::int32_t>(percent));  // Close reports 100
  if (window_) window_->SetPercent(static_cast<std::int32_t>(percent));
}

void ProgressReport::Close() {
  if (!std::exchange(open_, false)) return;
  window_.reset();
  Raise(100);
}

void ProgressReport::Raise(std::int32_t percent) {
  const ProgressHandlers handlers = *handlers_;  // a handler may attach or detach others
  for (const auto& [number, handler] : handlers) {
    try {
      (*handler)(percent);
    } catch (...) {
      throw ProgressHandlerError{std::current_exception()};
    }
  }
}

Busy::Busy() : running_(OperationFlag()), granted_(!running_->exchange(true)) {}

Busy::~Busy() {
  if (granted_) *running_ = false;
}

}  // namespace keltrun
