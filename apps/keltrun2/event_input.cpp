#include "apps/keltrun2/event_input.h"

#include <string>

#include "apps/keltrun2/command_error.h"
#include "apps/keltrun2/files.h"

namespace keltrun::cli {
namespace {

// The extension makes it a native lap file; what a pipe brings has no name to go by.
constexpr char kStandardInputName[] = "standard input.lxm";

std::string ReadEventText() {
  std::string text = ReadStandardInput();
  if (text.empty()) throw CommandError("standard input is empty");
  return text;
}

}  // namespace

void LoadEvent(clsKeltrun2& root, const Options& options) {
  const auto& files = root.FileControl();
  files->SetProgressVisible(!options.quiet);  // shows nothing where there is no terminal
  const bool loaded = options.event == "-"
                          ? files->LoadLapFile(kStandardInputName, KR_FILETYPE_AUTODETECT,
                                               KR_LOADMODE_NORMAL, ReadEventText())
                          : files->LoadLapFile(options.event);
  if (!loaded || !root.ErrorComment().empty()) {
    throw CommandError(options.event + ": " + root.ErrorComment());
  }
}

}  // namespace keltrun::cli
