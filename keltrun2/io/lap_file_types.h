// The kinds of lap files.
#pragma once

#include <cstdint>

namespace keltrun {

enum KrLapFileTypeConst : std::int32_t {
  KR_FILETYPE_AUTODETECT = 0,         // detect from name and content
  KR_FILETYPE_UNKNOWN = 1,            // not recognised
  KR_FILETYPE_KELTRUN2 = 2,           // native XML lap file
  KR_FILETYPE_KELTRUN1 = 3,           // text lap file of the previous generation
  KR_FILETYPE_SPORTIDENT = 4,         // SPORTident results text
  KR_FILETYPE_OEVENT = 5,             // OEvent split-time text
  KR_FILETYPE_IMPORT_ONLY = 6,        // club and sex of runners that are loaded already
  KR_FILETYPE_IOF_XML_20_RESULT = 7,  // IOF XML 2.0 result list, written only
};

enum KrLapFileSaveModeCosnt : std::int32_t {
  KR_SAVEMODE_NORMAL = 0,  // the standard attributes of runners
  KR_SAVEMODE_FULL = 1,    // also the fixed rank and the age
};

}  // namespace keltrun
