// Words and numbers of the command line.
#pragma once

#include <cstdint>
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

/// A correction of the clock of a control.
struct ClockCorrection {
  std::int32_t code;
  double seconds;
};

/// The correction that a text such as "45:+40s" names; the "s" may be missing. Nothing for any
/// other text, and for a day or more.
std::optional<ClockCorrection> ClockCorrectionOf(const std::string& text);

}  // namespace keltrun::cli
