// The errors that the component raises to its host, and the checks that raise the commonest ones.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include "keltrun2/base/export.h"

namespace keltrun {

/// Error numbers, the same as those of the platform's automation errors.
enum AutomationErrorConst : std::int32_t {
  KR_ERROR_INVALID_CALL = 5,            ///< The call is not allowed with this argument or now.
  KR_ERROR_SUBSCRIPT_OUT_OF_RANGE = 9,  ///< An index outside the range of its array or list.
  KR_ERROR_OBJECT_NOT_SET = 91,         ///< A required object is null.
  KR_ERROR_DUPLICATE_KEY = 457,         ///< A name that another entry already has.
};

/// An error raised to the host. The call that raises it has changed nothing.
class KELTRUN2_API AutomationError : public std::runtime_error {
 public:
  /// Creates an error with a number and the text that what() returns.
  AutomationError(std::int32_t number, const std::string& text)
      : std::runtime_error(text), number_(number) {}
  /// The number of the error, one of AutomationErrorConst.
  std::int32_t Number() const { return number_; }

 private:
  std::int32_t number_;
};

/// Raises error 9 for an index of `object` that is outside `first` to `last`. CheckIndex calls it;
/// on its own, the check is small enough to become part of its callers.
[[noreturn]] KELTRUN2_API void RaiseIndexError(std::int32_t index, std::int32_t first,
                                               std::int32_t last, const char* object);

/// Raises error 9 unless first <= index <= last. `object` names what is indexed, for example
/// "clsLapData.Lap".
inline void CheckIndex(std::int32_t index, std::int32_t first, std::int32_t last,
                       const char* object) {
  if (index < first || index > last) RaiseIndexError(index, first, last, object);
}

/// Raises error 91 if `pointer` is null. `argument` names the call, for example
/// "clsAnalyzer.AddLap".
template <typename Pointer>
void CheckObject(const Pointer& pointer, const char* argument) {
  if (pointer) return;
  throw AutomationError(KR_ERROR_OBJECT_NOT_SET, std::string(argument) + ": the object is not set");
}

}  // namespace keltrun
