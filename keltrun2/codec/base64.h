// Base64 (RFC 4648).
#pragma once

#include <string>
#include <string_view>

namespace keltrun {

/// Appends `bytes` in Base64, with padding and without line breaks.
void AppendBase64(std::string& out, std::string_view bytes);

}  // namespace keltrun
