#include "keltrun2/base/automation_error.h"

namespace keltrun {

void RaiseIndexError(std::int32_t index, std::int32_t first, std::int32_t last,
                     const char* object) {
  throw AutomationError(KR_ERROR_SUBSCRIPT_OUT_OF_RANGE,
                        std::string(object) + ": index " + std::to_string(index) + " is outside " +
                            std::to_string(first) + " to " + std::to_string(last));
}

}  // namespace keltrun
