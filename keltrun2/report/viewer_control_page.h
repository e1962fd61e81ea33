// The HTML page that opens a lap file in the maker's viewer control.
#pragma once

#include <string>
#include <string_view>

namespace keltrun {

/// Appends the whole page. The control loads the lap file from `lap_file_address`, which is already
/// HTML. The page declares a charset only if one is given.
void AppendViewerControlPage(std::string& out, std::string_view lap_file_address,
                             std::string_view charset = "");

}  // namespace keltrun
