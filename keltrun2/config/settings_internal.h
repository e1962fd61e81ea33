// For tests that need the settings of a new process.
#pragma once

#include "keltrun2/config/startup.h"

namespace keltrun {

/// Discards the loaded settings and sets new start values; the next use loads again. No other
/// thread may use the library meanwhile.
void RestartSettings(const Startup& values);

}  // namespace keltrun
