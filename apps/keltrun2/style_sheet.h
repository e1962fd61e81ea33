// The style sheet of published sites, kept inside the program.
#pragma once

#include <string_view>

namespace keltrun::cli {

/// The text of style.css (ASCII).
std::string_view StyleSheet();

}  // namespace keltrun::cli
