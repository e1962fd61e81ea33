// Club and sex of runners that are loaded already, as comma-separated text.
#pragma once

#include <string_view>

#include "keltrun2/io/lap_records.h"

namespace keltrun {

/// Reads an import-only text (UTF-8) into Updates, one for each line below a header line that names
/// its runner. Lines before the first header are skipped; every header names the columns anew.
/// Never an error, except for more than 500,000 lines with runners.
ReadResult ReadImportOnly(std::string_view text);

}  // namespace keltrun
