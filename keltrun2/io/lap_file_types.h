// The types of lap files.
#pragma once

#include <cstdint>

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
  KR_FILETYPE_IOF_XML_20_RESULT = 7,  ///< IOF XML 2.0 result list; only written, never read.
};

/// Which attributes a native lap file is saved with.
enum KrLapFileSaveModeCosnt : std::int32_t {
  KR_SAVEMODE_NORMAL = 0,  ///< The standard attributes of runners.
  KR_SAVEMODE_FULL = 1,    ///< The standard attributes, the fixed rank and the age.
};

}  // namespace keltrun
