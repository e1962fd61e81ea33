// The summary of an event for people.
#pragma once

#include <string>

#include "keltrun2/keltrun2.h"

namespace keltrun::cli {

/// The event, its file, classes and courses, and what can be analyzed.
std::string InfoText(const clsKeltrun2& root);

}  // namespace keltrun::cli
