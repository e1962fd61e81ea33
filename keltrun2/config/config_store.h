// The file of a settings store: UTF-16 little-endian with a byte-order mark, a line "NAME=value"
// for each write. The last line of a name counts.
//
// Every change holds the lock file beside it ("...dat.lock"): an append is one write, a compaction
// writes a new file and renames it, so that readers need no lock.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/os/file_lock.h"

namespace keltrun {

/// The lines of a store's bytes, of each name only the last, in the order of the file. Blank lines
/// are dropped. Takes any bytes: what is no UTF-16 reads as U+FFFD, a file without byte-order mark
/// is read as the UTF-16 it was, or as the text that somebody made of it.
std::vector<std::string> ParseConfigStore(std::string_view bytes);

/// The bytes of a store with these lines.
std::string FormatConfigStore(const std::vector<std::string>& lines);

/// The bytes of the store, empty when there is none (a folder of that name is none); nullopt when
/// it cannot be read. A line that is just being appended is waited for.
[[nodiscard]] std::optional<std::string> ReadConfigStore(const std::string& file);

/// Makes the store hold what ParseConfigStore finds in it, or nothing when there is none, creating
/// its folder. A store beyond all measure is put aside as "...dat.damaged". False when another
/// process kept the lock for as long as `patience` lasts, or the store cannot be written.
bool CompactConfigStore(const std::string& file, const FileLock::Patience& patience);

/// Appends a line, creating the store and its folder, and repairing its end, when needed. On
/// failure the result is false and the store as it was.
[[nodiscard]] bool AppendToConfigStore(const std::string& file, std::string_view line);

}  // namespace keltrun
