// Words and numbers of the command line.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace keltrun::cli {

/// The word with ASCII letters in lower case.
std::string LowerCase(std::string word);

/// The words with the separator between them.
std::string Joined(const std::vector<std::string>& words, const std::string& separator);

/// The number if the whole text is one, or nothing. "inf" and "nan" are numbers here.
std::optional<float> NumberOf(const std::string& text);

}  // namespace keltrun::cli
