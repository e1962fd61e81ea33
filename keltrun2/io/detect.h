// Which kind of lap file a file or a text is.
#pragma once

#include <string>
#include <string_view>

#include "keltrun2/io/lap_file_types.h"

namespace keltrun {

/// The kind of a text given by the host, whose lines end at CR LF or LF. A text whose lines end in
/// CR alone is rewritten to CR LF. A text of fewer than three lines is KR_FILETYPE_UNKNOWN; a line
/// break at the very end is followed by one more line, an empty one.
KrLapFileTypeConst DetectTextType(std::string& text);

/// The kind of a file's text, read line by line: lines end at CR LF, CR or LF, and a line break at
/// the very end is followed by nothing.
KrLapFileTypeConst DetectFileTextType(std::string_view text);

}  // namespace keltrun
