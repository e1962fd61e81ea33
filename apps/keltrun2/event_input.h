// Loading the event of a command.
#pragma once

#include <string>
#include <vector>

#include "apps/keltrun2/options.h"
#include "keltrun2/keltrun2.h"

namespace keltrun::cli {

/// Shows the remarks about a file on standard error, each after the name of the file and its place.
void ShowRemarks(const std::vector<LoadRemark>& remarks, const std::string& name);

/// Loads the event, from standard input for "-", and shows the remarks of the reader on standard
/// error. Throws CommandError when it does not load, or loads with an error text.
void LoadEvent(clsKeltrun2& root, const Options& options);

/// Merges the import file into the loaded event as the options say; remarks and errors as above.
void MergeImport(clsKeltrun2& root, const Options& options);

}  // namespace keltrun::cli
