// The comma-separated list of clubs and sexes for runners that are loaded already.
#pragma once

#include <string_view>

#include "keltrun2/io/lap_records.h"

namespace keltrun {

/// Reads an import-only text (UTF-8) into `updates`: one for each line after a header line that has
/// a runner's name. Lines before the first header are skipped, and every further header line names
/// the columns anew. The only error is more than 500,000 lines with runners.
ReadResult ReadImportOnly(std::string_view text);

}  // namespace keltrun
