// Appending to files that several processes write.
#pragma once

#include <string>
#include <string_view>

namespace keltrun {

/// Appends the bytes to an existing regular file. One write is used, so that the output of several
/// processes is not interleaved. Never throws; on failure the result is false and the file is
/// unchanged.
[[nodiscard]] bool AppendToFile(const std::string& name, std::string_view bytes);

}  // namespace keltrun
