// How a command ends early.
#pragma once

#include <stdexcept>
#include <string>

namespace keltrun::cli {

/// Exit codes of the program.
inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;
inline constexpr int kWrongUse = 2;

/// Ends the command: the text goes to standard error, the code is the program's exit code.
class CommandError : public std::runtime_error {
 public:
  explicit CommandError(const std::string& text, int exit_code = kFailed)
      : std::runtime_error(text), exit_code_(exit_code) {}
  int ExitCode() const { return exit_code_; }

 private:
  int exit_code_;
};

/// An error text of the component as the program shows it, in one language: what happened, in
/// English, or, if the text does not say that, the general message in the language of the texts.
/// The lines that name the component's operations are left out.
std::string ReasonOf(const std::string& error_comment);

}  // namespace keltrun::cli
