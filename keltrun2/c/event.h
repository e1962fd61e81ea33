// One event of the C interface.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/api/keltrun2.h"
#include "keltrun2/c/options.h"
#include "keltrun2/io/remarks.h"
#include "keltrun2/model/process_state.h"

namespace keltrun::c {

/// The file or the event does not allow what was asked for.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// An event with its options. All that works on it needs `Use`.
class Event {
 public:
  c::Options Options;
  std::function<void(std::int32_t percent)> Progress;
  std::vector<LoadRemark> Remarks;  // of the last load, or of the last file that was exported

  Event();

  /// While it exists, this thread works on the event. The roots of an event belong to no thread, so
  /// the services find this event whatever others there are.
  [[nodiscard]] UseOwnRoots Use() const { return UseOwnRoots(roots_); }

  /// Replaces the event. If the file cannot be read the event stays, and `Failure` says why.
  void Open(const std::string& name, std::string_view bytes);
  /// Adds a file. What was read before an error stays.
  void Merge(const std::string& name, std::string_view bytes);

  clsKeltrun2& Root() const { return *root_; }
  /// The name of the format of the file that was opened.
  const std::string& Format() const { return format_; }

 private:
  std::string Load(const std::string& name, std::string_view bytes, KrLapFileLoadModeCosnt mode);

  OwnRoots roots_;
  std::unique_ptr<clsKeltrun2> root_;
  std::string format_;
};

}  // namespace keltrun::c
