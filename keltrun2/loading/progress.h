// How a host follows long operations.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>

#include "keltrun2/base/export.h"

namespace keltrun {

/// Called with 0 to 100. An exception that it throws ends the operation and is passed on to the
/// caller of the operation.
using ProgressHandler = std::function<void(std::int32_t Percent)>;

/// The handlers attached to a service, in the order of attaching.
using ProgressHandlers = std::map<std::int32_t, std::shared_ptr<ProgressHandler>>;

/// Detaches a handler. Destroying the handle leaves the handler attached.
class KELTRUN2_API ProgressHandle {
 public:
  /// A handle without a handler.
  ProgressHandle() = default;
  /// A handle of the handler with that number among the handlers of a service.
  ProgressHandle(const std::shared_ptr<ProgressHandlers>& handlers, std::int32_t number)
      : handlers_(handlers), number_(number) {}

  /// Detaches the handler. Does nothing when called again or when the service no longer exists.
  void Detach() {
    if (const auto handlers = handlers_.lock()) handlers->erase(number_);
  }

 private:
  std::weak_ptr<ProgressHandlers> handlers_;
  std::int32_t number_ = 0;
};

}  // namespace keltrun
