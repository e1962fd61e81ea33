// A web site of the whole event in one folder.
#pragma once

#include <string>
#include <vector>

#include "keltrun2/loading/lap_file_io.h"
#include "keltrun2/site/site_options.h"

namespace keltrun {

/// False only when the user declines the creation of the folder. The error text is emptied first
/// and lists what could not be written. Raises invalid procedure call (5) for an unknown charset.
bool ExportSite(const SiteOptions& options, const StartProgress& start_progress);

/// What the export would replace although it is not of the same event, in one sentence without a
/// full stop; empty if nothing is lost. Only the index page is looked at.
std::vector<std::string> SiteConflicts(const SiteOptions& options);

/// The names, with the folder, of all files that the export writes, and of some that it leaves out
/// where there is nothing to show. Raises the same error.
std::vector<std::string> SiteFiles(const SiteOptions& options);

}  // namespace keltrun
