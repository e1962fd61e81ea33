// How a host follows long work.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>

#include "keltrun2/base/export.h"

namespace keltrun {

/// Called with 0 to 100. An exception that it throws ends the operation and reaches the host's
/// call.
using ProgressHandler = std::function<void(std::int32_t Percent)>;

/// The handlers attached to a service, by the order of attaching.
using ProgressHandlers = std::map<std::int32_t, std::shared_ptr<ProgressHandler>>;

/// Detaches a handler. Letting the handle go keeps the handler attached.
class KELTRUN2_API ProgressHandle {
 public:
  /// A handle of nothing.
  ProgressHandle() = default;
  /// A handle of the handler with that number among those of a service.
  ProgressHandle(const std::shared_ptr<ProgressHandlers>& handlers, std::int32_t number)
      : handlers_(handlers), number_(number) {}

  /// Detaches the handler. Does nothing the second time, or when the service is gone.
  void Detach() {
    if (const auto handlers = handlers_.lock()) handlers->erase(number_);
  }

 private:
  std::weak_ptr<ProgressHandlers> handlers_;
  std::int32_t number_ = 0;
};

}  // namespace keltrun
