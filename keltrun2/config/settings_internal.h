// For tests: what a new process would bring.
#pragma once

#include "keltrun2/config/startup.h"

namespace keltrun {

/// Forgets the loaded settings and takes new start values; the next use loads again. Only for one
/// thread that runs alone.
void RestartSettings(const Startup& values);

}  // namespace keltrun
