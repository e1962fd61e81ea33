// Which kind of lap file a file or a text is.
#pragma once

#include <string>
#include <string_view>

#include "keltrun2/io/lap_file_types.h"

namespace keltrun {

/// The kind of a text given by the host. A text whose lines end in CR alone is rewritten to CR LF.
/// A text of fewer than three lines is KR_FILETYPE_UNKNOWN.
KrLapFileTypeConst DetectTextType(std::string& text);

/// The kind of a file's text, read line by line (lines end at CR LF or CR). A file with LF-only
/// line ends reads as one line: its text with CR LF then goes to `converted`, from which the reader
/// has to read in place of the file.
KrLapFileTypeConst DetectFileTextType(std::string_view text, std::string& converted);

}  // namespace keltrun
