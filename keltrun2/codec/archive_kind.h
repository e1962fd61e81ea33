// Telling archives from other files.
#pragma once

#include <string_view>

namespace keltrun {

/// The kind of archive or packed file that the first bytes identify: "LZH", "ZIP", "7z", "RAR" or
/// "gzip"; "" if it is none of these.
std::string_view KindOfArchive(std::string_view bytes);

}  // namespace keltrun
