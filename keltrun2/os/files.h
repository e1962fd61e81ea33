// Files and folders. Names are UTF-8; nothing here throws.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace keltrun {

/// Most readers of files expect far less; a larger file is refused, so that no input can exhaust
/// memory.
inline constexpr std::size_t kLargestFileUnasked = std::size_t{64} << 20;

/// Reads a whole file of at most `largest` bytes. On failure nothing is returned and `error` says
/// what and which file.
[[nodiscard]] std::optional<std::string> ReadFile(const std::string& name, std::string& error,
                                                  std::size_t largest = kLargestFileUnasked);

/// Whether a written file must outlive a loss of power from the moment on that writing returns, or
/// whether the caller waits for the disk later (`SyncFileSystem`), or not at all.
enum class Sync { kLater, kNow };

/// Writes a whole file through a temporary file beside it and a rename, so that a failed write
/// leaves an existing file as it was. The temporary file has a random name that nobody had before
/// and the permissions of the file that it replaces; whatever this process did not make is left
/// alone. A link is followed; a device or pipe is written directly. With Sync::kNow the bytes are
/// on the disk before the rename, and the rename is when this returns. On failure the result is
/// false and `error` says what and which file.
[[nodiscard]] bool WriteFile(const std::string& name, std::string_view bytes, std::string& error,
                             Sync sync = Sync::kLater);

/// Waits until all that was written to the file system of a folder is on the disk: for many files,
/// this is far quicker than Sync::kNow for each. On failure the result is false and `error` says
/// why.
[[nodiscard]] bool SyncFileSystem(const std::string& folder, std::string& error);

/// Waits for the disk: for the file or folder of a handle, or for its whole file system. False,
/// with errno set, when that failed.
using DiskSync = std::function<bool(int handle, bool whole_file_system)>;
/// Replaces the waiting; an empty function puts the system's back. For tests that watch it and
/// benchmarks that leave out the disk.
void SetDiskSync(DiskSync sync);

bool FileExists(const std::string& name);
bool FolderExists(const std::string& name);

/// Creates a folder with its parents; true when it exists afterwards.
[[nodiscard]] bool CreateFolder(const std::string& name, std::string& error);

/// Whether new files can be made in a folder; when not, `error` names the folder and says why.
[[nodiscard]] bool CanMakeFiles(const std::string& folder, std::string& error);

/// `folder` with "\" read as a separator and one "/" at its end; the empty name is the working
/// directory, "./".
std::string WithTrailingSeparator(std::string_view folder);

/// The part after the last dot of the file-name part, ASCII letters in lower case, without the
/// dot; empty for a name without a dot.
std::string FileExtension(std::string_view name);

/// The file-name part: the text after the last "/" or "\".
std::string_view FileNamePart(std::string_view name);

}  // namespace keltrun
