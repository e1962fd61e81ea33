// The report of an event with what belongs to it, in one folder.
#pragma once

#include <string>
#include <vector>

#include "keltrun2/loading/lap_file_io.h"
#include "keltrun2/site/site_options.h"

namespace keltrun {

/// False when the user declines the creation of the folder, and when files of somebody else would
/// be lost. The error text is emptied first and lists what could not be written. Raises invalid
/// procedure call (5) for untimed legs that are none.
bool ExportReportSite(const ReportSiteOptions& options, const StartProgress& start_progress);

/// What the export would replace although it is not of an earlier publication of the event: one
/// sentence without a full stop for each file.
std::vector<std::string> ReportSiteConflicts(const ReportSiteOptions& options);

/// The names, with the folder, of all files that the export writes, and of some charts that it
/// leaves out where there is nothing to show.
std::vector<std::string> ReportSiteFiles(const ReportSiteOptions& options);

}  // namespace keltrun
