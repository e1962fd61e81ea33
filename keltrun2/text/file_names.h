// Names that are safe as file names.
#pragma once

#include <string>
#include <string_view>

namespace keltrun {

/// Removes the characters : / | > < ' and the double quote.
std::string RemoveUnsafe(std::string_view text);

/// RemoveUnsafe on the file-name part of a path (behind the last "\", else the last "/", else the
/// last ":"); a folder part (up to the last "\", else the last ":") is kept and ends in a
/// separator.
std::string CleanFileName(std::string_view path);

/// RemoveUnsafe on everything before the file extension, which is kept as it is.
std::string RemoveUnsafeKeepingExtension(std::string_view text);

/// Every character beyond U+00FF as "u" and four lower-case hexadecimal digits per UTF-16 unit.
std::string EncodeWideCharacters(std::string_view text);

/// ClassInfo of classes and data sets: "5.2km", and behind it the climb with its symbol when it is
/// not 0; empty for a length of 0.
std::string LengthAndClimb(int length_metres, int climb_metres, std::string_view climb_symbol);

}  // namespace keltrun
