// Making names that are safe as file names.
#pragma once

#include <string>
#include <string_view>

namespace keltrun {

/// Removes the characters : / | > < ' and ".
std::string RemoveUnsafe(std::string_view text);

/// Applies RemoveUnsafe to the file-name part of a path: the text after the last "\", else the last
/// "/", else the last ":". The folder part (up to the last "\", else the last ":") is kept and gets
/// a separator at its end if it has none.
std::string CleanFileName(std::string_view path);

/// Applies RemoveUnsafe to everything before the file extension, which is left unchanged.
std::string RemoveUnsafeKeepingExtension(std::string_view text);

/// Replaces every character beyond U+00FF by "u" and four lower-case hexadecimal digits for each of
/// its UTF-16 units.
std::string EncodeWideCharacters(std::string_view text);

}  // namespace keltrun
