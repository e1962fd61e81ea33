// Files that grow at their end.
#pragma once

#include <string>
#include <string_view>

namespace keltrun {

/// Appends the bytes to a regular file, which must exist, in one write, so that those of several
/// processes do not mingle. Never throws; on failure the result is false and the file as it was.
[[nodiscard]] bool AppendToFile(const std::string& name, std::string_view bytes);

}  // namespace keltrun
