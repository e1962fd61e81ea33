// What a load found.
#pragma once

#include <string>
#include <vector>

#include "keltrun2/io/lap_file_types.h"
#include "keltrun2/io/remarks.h"

namespace keltrun {

/// The file of a load and what was noticed.
struct LoadedFile {
  KrLapFileTypeConst type = KR_FILETYPE_UNKNOWN;  ///< What the file is.
  std::string format;                             ///< The name of its format.
  std::vector<LoadRemark> remarks;                ///< What was noticed.
};

}  // namespace keltrun
