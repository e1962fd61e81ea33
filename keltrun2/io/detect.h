// Detects the type of a lap file.
#pragma once

#include <string>
#include <string_view>

#include "keltrun2/io/lap_file_types.h"

namespace keltrun {

/// The type of a text that the host gave. Its lines end in CR LF or LF; when they end in CR alone,
/// `text` is changed to CR LF. A text of fewer than three lines is KR_FILETYPE_UNKNOWN. A line
/// break at the very end starts one more line, which is empty.
KrLapFileTypeConst DetectTextType(std::string& text);

/// The type of the text of a file. Lines end in CR LF, CR or LF; a line break at the very end
/// starts no further line.
KrLapFileTypeConst DetectFileTextType(std::string_view text);

}  // namespace keltrun
