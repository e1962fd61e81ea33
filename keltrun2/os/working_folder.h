// The private folder for temporary files of the component.
#pragma once

#include <optional>
#include <string>

namespace keltrun {

/// The working folder, created if it is missing: "Keltrun2" inside $XDG_RUNTIME_DIR, else
/// "Keltrun2-<user id>" inside $TMPDIR, else the same inside /tmp. A variable is used only if it
/// holds the absolute path of an existing folder. Only its owner may enter the working folder (mode
/// 0700). If it is a link, is not a folder or belongs to another user, the result is empty and
/// `error` says so.
[[nodiscard]] std::optional<std::string> WorkingFolder(std::string& error);

/// Creates an empty folder inside the working folder for the files of one archive. It is removed
/// with its contents, without following links, when this thread creates the next one or ends.
/// Folders of processes that were killed are removed by the next call in any process.
[[nodiscard]] std::optional<std::string> NewExtractionFolder(std::string& error);

/// The path in the working folder for a lap file that is about to be packed. The file is removed
/// when the next archive is packed or unpacked or when this thread ends.
[[nodiscard]] std::optional<std::string> NewWorkingFile(const std::string& name,
                                                        std::string& error);

}  // namespace keltrun
