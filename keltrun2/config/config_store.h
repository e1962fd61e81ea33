// The file of a settings store: UTF-16 little-endian with a byte-order mark and one line
// "NAME=value" for each write. If a name has several lines, the last one is used.
//
// Every change is made while the lock file next to the store ("...dat.lock") is locked. An append
// is a single write, and a compaction writes a new file and renames it, so readers need no lock.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/os/file_lock.h"

namespace keltrun {

/// The lines in the bytes of a store, in the order of the file; only the last line of each name is
/// kept, and blank lines are dropped. Any bytes are accepted: invalid UTF-16 is read as U+FFFD, and
/// a file without a byte-order mark is read as UTF-16 that has lost its mark or, if it has no NUL
/// bytes, as the text file that an editor made of it.
std::vector<std::string> ParseConfigStore(std::string_view bytes);

/// The bytes of a store with these lines.
std::string FormatConfigStore(const std::vector<std::string>& lines);

/// The bytes of the store, empty if there is none or if the name is that of a folder; nullopt if it
/// cannot be read. Waits for a line that is just being appended.
[[nodiscard]] std::optional<std::string> ReadConfigStore(const std::string& file);

/// Rewrites the store with the lines that ParseConfigStore finds in it. A missing store is created
/// empty, with its folder; one that is too large to be real is renamed to "...dat.damaged" first.
/// False if another process held the lock longer than `patience` allows, or if the store cannot be
/// written.
bool CompactConfigStore(const std::string& file, const FileLock::Patience& patience);

/// Appends a line. Creates the store and its folder, or repairs the end of the store, if necessary.
/// On failure the result is false and no line was added.
[[nodiscard]] bool AppendToConfigStore(const std::string& file, std::string_view line);

}  // namespace keltrun
