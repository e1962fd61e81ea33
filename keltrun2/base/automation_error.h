// The errors that the component raises to its host.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include "keltrun2/base/export.h"

namespace keltrun {

/// Error numbers, those of the platform's automation errors.
enum AutomationErrorConst : std::int32_t {
  KR_ERROR_INVALID_CALL = 5,            ///< An argument or a moment that the call does not allow.
  KR_ERROR_SUBSCRIPT_OUT_OF_RANGE = 9,  ///< An index outside the range of its array or list.
  KR_ERROR_OBJECT_NOT_SET = 91,         ///< A required object that is null.
  KR_ERROR_DUPLICATE_KEY = 457,         ///< A name that another entry has already.
};

/// An error raised to the host. What raises it has changed nothing.
class KELTRUN2_API AutomationError : public std::runtime_error {
 public:
  /// An error of that number with the text that what() gives.
  AutomationError(std::int32_t number, const std::string& text)
      : std::runtime_error(text), number_(number) {}
  /// The number of the error, one of AutomationErrorConst.
  std::int32_t Number() const { return number_; }

 private:
  std::int32_t number_;
};

/// Raises error 9 unless first <= index <= last; `object` names what is indexed, as in
/// "clsLapData.Lap".
inline void CheckIndex(std::int32_t index, std::int32_t first, std::int32_t last,
                       const char* object) {
  if (index >= first && index <= last) return;
  throw AutomationError(KR_ERROR_SUBSCRIPT_OUT_OF_RANGE,
                        std::string(object) + ": index " + std::to_string(index) + " is outside " +
                            std::to_string(first) + " to " + std::to_string(last));
}

/// Raises error 91 when `pointer` is null; `argument` names it, as in "clsAnalyzer.AddLap".
template <typename Pointer>
void CheckObject(const Pointer& pointer, const char* argument) {
  if (pointer) return;
  throw AutomationError(KR_ERROR_OBJECT_NOT_SET, std::string(argument) + ": the object is not set");
}

}  // namespace keltrun
