// Reading and writing files and folders. Names are UTF-8; failures are results, not exceptions.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace keltrun {

/// The largest file that ReadFile accepts unless the caller gives another limit. Nearly all input
/// files are far smaller; the limit keeps hostile input from exhausting memory.
inline constexpr std::size_t kLargestFileUnasked = std::size_t{64} << 20;

/// Reads a whole file of at most `largest` bytes. On failure the result is empty and `error` names
/// the file and says why.
[[nodiscard]] std::optional<std::string> ReadFile(const std::string& name, std::string& error,
                                                  std::size_t largest = kLargestFileUnasked);

/// When a written file must survive a loss of power: as soon as the write returns (kNow), or only
/// after the caller has waited for the disk with `SyncFileSystem`, if at all (kLater).
enum class Sync { kLater, kNow };

/// Writes a whole file through a temporary file in the same folder and a rename, so that a failed
/// write leaves an existing file unchanged. The temporary file has a random name that was not in
/// use and the permissions of the file that it replaces; files that this process did not create are
/// left alone. A link is followed; a device or pipe is written directly. With Sync::kNow the bytes
/// are on the disk before the rename, and the rename is on the disk before this returns. On failure
/// the result is false and `error` names the file and says why.
[[nodiscard]] bool WriteFile(const std::string& name, std::string_view bytes, std::string& error,
                             Sync sync = Sync::kLater);

/// Waits until everything written to the file system of a folder is on the disk. For many files
/// this is far quicker than Sync::kNow for each of them. On failure the result is false and `error`
/// says why.
[[nodiscard]] bool SyncFileSystem(const std::string& folder, std::string& error);

/// Waits for the disk: for the file or folder of a handle, or for its whole file system. Returns
/// false and sets errno on failure.
using DiskSync = std::function<bool(int handle, bool whole_file_system)>;
/// Replaces the wait for the disk, for tests that observe it and benchmarks that leave it out; an
/// empty function restores the system's.
void SetDiskSync(DiskSync sync);

bool FileExists(const std::string& name);
bool FolderExists(const std::string& name);

/// Creates a folder and its parents. True if the folder exists afterwards; otherwise `error` names
/// it and says why.
[[nodiscard]] bool CreateFolder(const std::string& name, std::string& error);

/// Whether new files can be created in a folder; if not, `error` names the folder and says why.
[[nodiscard]] bool CanMakeFiles(const std::string& folder, std::string& error);

/// `folder` with every "\" replaced by "/" and with a "/" at its end. The empty name is the working
/// directory, "./".
std::string WithTrailingSeparator(std::string_view folder);

/// The extension of the file-name part: the text after its last dot, with ASCII letters in lower
/// case. Empty if there is no dot.
std::string FileExtension(std::string_view name);

/// The file-name part: the text after the last "/" or "\".
std::string_view FileNamePart(std::string_view name);

}  // namespace keltrun
