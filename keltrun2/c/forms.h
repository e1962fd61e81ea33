// The forms of export, by name.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/c/event.h"

namespace keltrun::c {

struct OutputFile {
  std::string name;
  std::string bytes;
};

/// The name of the form at a position from 0; null beyond the last.
const char* FormName(std::size_t index);

/// Exports the event in a form. Raises invalid procedure call (5) when there is no such form or it
/// does not have the charset that the options name, and Failure when the event does not allow it.
std::vector<OutputFile> Export(Event& event, std::string_view form);

}  // namespace keltrun::c
