// Files and folders. Names are UTF-8; nothing here throws.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace keltrun {

/// No lap file comes near this size (20,000 runners take 30 MB); a larger one is refused, so that
/// no input can exhaust memory.
inline constexpr std::size_t kLargestInputFile = std::size_t{64} << 20;

/// Reads a whole file. On failure nothing is returned and `error` says what and which file.
std::optional<std::string> ReadFile(const std::string& name, std::string& error);

/// Writes a whole file through a temporary file beside it and a rename, so that a failed write
/// leaves an existing file as it was. A link is followed; a device or pipe is written directly.
/// On failure the result is false and `error` says what and which file.
bool WriteFile(const std::string& name, std::string_view bytes, std::string& error);

bool FileExists(const std::string& name);
bool FolderExists(const std::string& name);

/// Creates a folder with its parents; true when it exists afterwards.
bool CreateFolder(const std::string& name, std::string& error);

/// `folder` with "\" read as a separator and one "/" at its end; the empty name is the working
/// directory, "./".
std::string WithTrailingSeparator(std::string_view folder);

/// The part after the last dot of the file-name part, ASCII letters in lower case, without the
/// dot; empty for a name without a dot.
std::string FileExtension(std::string_view name);

/// The file-name part: the text after the last "/" or "\".
std::string_view FileNamePart(std::string_view name);

}  // namespace keltrun
