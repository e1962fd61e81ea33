// Loading the event of a command.
#pragma once

#include <string>
#include <vector>

#include "apps/keltrun2/options.h"
#include "keltrun2/keltrun2.h"

namespace keltrun::cli {

/// Shows the remarks about a file on standard error, each after the name of the file and its place;
/// of many of one kind the first ones.
void ShowRemarks(const std::vector<LoadRemark>& remarks, const std::string& name);

/// Whether a command leaves the remarks of a load on standard error or shows them itself.
enum class RemarkDisplay { kShow, kLeaveToCommand };

/// Loads the event, from standard input for "-", and shows the remarks of the reader. Throws
/// CommandError when it does not load, or loads with an error text.
void LoadEvent(clsKeltrun2& root, const Options& options,
               RemarkDisplay show = RemarkDisplay::kShow);

/// Merges the import file into the loaded event as the options say; remarks and errors as above.
void MergeImport(clsKeltrun2& root, const Options& options);

}  // namespace keltrun::cli
