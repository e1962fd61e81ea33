// The summary of an event for people.
#pragma once

#include <string>

#include "keltrun2/keltrun2.h"

namespace keltrun::cli {

/// Event, file, classes, courses and what can be analysed.
std::string InfoText(const clsKeltrun2& root);

}  // namespace keltrun::cli
