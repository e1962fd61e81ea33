// The command-line host: publishes, analyzes and shows lap files.
#include <malloc.h>

#include <algorithm>
#include <exception>
#include <iostream>
#include <sstream>
#include <string>
#include <variant>

#include "apps/keltrun2/command_error.h"
#include "apps/keltrun2/command_line.h"
#include "apps/keltrun2/display_text.h"
#include "keltrun2/keltrun2.h"

namespace keltrun::cli {
namespace {

constexpr std::int32_t kLocaleJapan = 1041;
constexpr std::int32_t kLocaleUsa = 1033;

// Keeps freed memory in the process so that it is used again: the first touch of a fresh page of
// memory costs more than the work done in it, and each page of a site needs a large buffer. A
// library must leave this to its host, but a program owns its process.
void KeepMemory() {
  mallopt(M_MMAP_THRESHOLD, 32 << 20);  // the maximum that the C library accepts
  mallopt(M_TRIM_THRESHOLD, 1 << 30);
}

// A language that the user names decides alone; without one the locale of the environment does.
void ChooseLanguage(const std::string& language) {
  Startup startup;
  startup.Language = language;
  if (!language.empty()) startup.Locale = language == "ja" ? kLocaleJapan : kLocaleUsa;
  SetStartup(startup);
}

// Lines of component texts end in CR LF, but a terminal needs LF. Names from a file may contain
// control characters of the terminal.
void PrintError(std::string text) {
  std::erase(text, '\r');
  std::cerr << "keltrun2: ";
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) std::cerr << Printable(line) << '\n';
}

int Run(const CommandLine& line) {
  ChooseLanguage(line.options.language);
  clsKeltrun2 root;
  line.command(root, line.options);
  return kDone;
}

int Main(int argc, char** argv) {
  KeepMemory();
  try {
    const auto line = ReadCommandLine(argc, argv);
    const int* exit_code = std::get_if<int>(&line);
    const int code = exit_code != nullptr ? *exit_code : Run(std::get<CommandLine>(line));
    if (!std::cout.flush()) throw CommandError("cannot write standard output");
    return code;
  } catch (const CommandError& error) {
    PrintError(error.what());
    return error.ExitCode();
  } catch (const std::exception& error) {
    PrintError(error.what());
    return kFailed;
  }
}

}  // namespace
}  // namespace keltrun::cli

int main(int argc, char** argv) { return keltrun::cli::Main(argc, argv); }
