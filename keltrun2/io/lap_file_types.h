// The types of lap files.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/base/export.h"

namespace keltrun {

/// The formats of lap files.
enum KrLapFileTypeConst : std::int32_t {
  KR_FILETYPE_AUTODETECT = 0,         ///< To be detected from name and content.
  KR_FILETYPE_UNKNOWN = 1,            ///< Not recognized.
  KR_FILETYPE_KELTRUN2 = 2,           ///< The native XML lap file.
  KR_FILETYPE_KELTRUN1 = 3,           ///< The text lap file of the previous generation.
  KR_FILETYPE_SPORTIDENT = 4,         ///< SPORTident results as text.
  KR_FILETYPE_OEVENT = 5,             ///< OEvent split times as text.
  KR_FILETYPE_IMPORT_ONLY = 6,        ///< Club and sex of runners that are loaded already.
  KR_FILETYPE_IOF_XML_20_RESULT = 7,  ///< IOF XML 2.0 result list.
  KR_FILETYPE_IOF_XML_30_RESULT = 8,  ///< IOF XML 3.0 result list.
  KR_FILETYPE_OE_CSV = 9,   ///< Split times of OE2003, OE2010 and SPORTident tools as CSV.
  KR_FILETYPE_OS_CSV = 10,  ///< Relay splits of OS2003 and OS2010 as CSV.
  KR_FILETYPE_SPLITSBROWSER_CSV = 11,  ///< The CSV of SplitsBrowser.
  KR_FILETYPE_TRIPLE_CSV = 12,         ///< CSV with three columns for each control.
  KR_FILETYPE_RESULT_HTML = 13,        ///< Result pages of SPORTident, OE and other programs.
  KR_FILETYPE_WINSPLITS_TEXT = 14,     ///< WinSplits Standard Text.
  KR_FILETYPE_SWISS_CSV = 15,          ///< The CSV that Swiss result services exchange.
  /// IOF XML 2.0 result list in the form that other programs read; only for saving. The list of
  /// KR_FILETYPE_IOF_XML_20_RESULT is one that many of them refuse.
  KR_FILETYPE_IOF_XML_20_EXCHANGE = 16,
};

/// The name of a format of lap files, such as "IOF XML 3.0"; empty for KR_FILETYPE_AUTODETECT and
/// KR_FILETYPE_UNKNOWN.
KELTRUN2_API std::string_view LapFileTypeName(KrLapFileTypeConst Type);

/// The format with a short name, as the program takes them: "iof3", "oe", "lxm";
/// KR_FILETYPE_UNKNOWN for any other text.
KELTRUN2_API KrLapFileTypeConst LapFileTypeOfWord(std::string_view Word);

/// The short names of all formats that can be read.
KELTRUN2_API std::vector<std::string> LapFileTypeWords();

/// The format to save in with a short name, as the program takes them: "lxm", "lap", "iof3",
/// "iof2", "iof2-plain", "splitsbrowser", "winsplits", "oe2010"; KR_FILETYPE_UNKNOWN for any other
/// text.
KELTRUN2_API KrLapFileTypeConst SaveTypeOfWord(std::string_view Word);

/// The short names of all formats that can be written.
KELTRUN2_API std::vector<std::string> SaveTypeWords();

/// Which attributes a native lap file is saved with.
enum KrLapFileSaveModeCosnt : std::int32_t {
  KR_SAVEMODE_NORMAL = 0,  ///< The standard attributes of runners.
  KR_SAVEMODE_FULL = 1,    ///< The standard attributes, the fixed rank and the age.
};

}  // namespace keltrun
