// The private folder for files that the component needs for a while.
#pragma once

#include <optional>
#include <string>

namespace keltrun {

/// The working folder, created when missing: "Keltrun2" inside $XDG_RUNTIME_DIR, else
/// "Keltrun2-<user id>" inside $TMPDIR or /tmp. A variable counts when it holds the absolute path
/// of a folder. Only its owner may enter the working folder (mode 0700); where it is a link, no
/// folder or another user's, nothing is returned and `error` says so.
[[nodiscard]] std::optional<std::string> WorkingFolder(std::string& error);

/// A new, empty folder inside the working folder for the files of one archive. It stays until this
/// thread asks for the next one, or ends; then it is removed with all that it holds, without
/// following links. Folders of processes that were killed are removed by whoever asks next.
[[nodiscard]] std::optional<std::string> NewExtractionFolder(std::string& error);

/// The path in the working folder of a lap file that is about to be packed. The file stays until
/// the next archive is packed or unpacked, or this thread ends.
[[nodiscard]] std::optional<std::string> NewWorkingFile(const std::string& name,
                                                        std::string& error);

}  // namespace keltrun
