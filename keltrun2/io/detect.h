// Detects the type of a lap file.
#pragma once

#include <cstdint>
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

/// What the bytes of a file are that no reader can use.
enum class ContentKind : std::int32_t {
  kOther,  // none of the following
  kEmpty,  // no bytes, or only blanks
  kPng,
  kJpeg,
  kGif,
  kPdf,
  kWorkbook,  // of a spreadsheet program
  kDatabase,
};

/// Looks at the first bytes.
ContentKind KindOfContent(std::string_view bytes);

/// For bytes that no reader can use: what they are and what to do, in the user's language.
std::string NotResultsText(std::string_view bytes);

}  // namespace keltrun
