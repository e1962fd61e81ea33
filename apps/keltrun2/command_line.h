// Reading the command line.
#pragma once

#include <variant>

#include "apps/keltrun2/commands.h"
#include "apps/keltrun2/options.h"

namespace keltrun::cli {

/// A command with its arguments.
struct CommandLine {
  Command command = nullptr;
  Options options;
};

/// The command line, or the exit code when there is nothing more to do: after --help and --version,
/// whose text is then on standard output, and after wrong use, which is explained on standard
/// error.
std::variant<CommandLine, int> ReadCommandLine(int argc, char** argv);

}  // namespace keltrun::cli
