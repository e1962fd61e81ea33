// A web site of the whole event in one folder.
#pragma once

#include <string>

#include "keltrun2/api/lap_file_io.h"

namespace keltrun {

/// The parameters of clsFileControl::OutputHtml as far as they have an effect.
struct SiteOptions {
  std::string OutputFolder;
  std::string IndexFile;     // "" for none, here and below
  std::string AnalysisFile;  // pattern: "*" becomes the file name of the class or course
  std::string ResultFile;    // pattern
  std::string Lap2File;
  std::string Lap1File;
  bool OfficialSite = false;
  bool IndexFileAddMode = false;
  bool AnalysisIncludeCourse = false;
  bool ResultIncludeCourse = false;
  bool WalkCourses = false;  // any output includes courses
  std::string LinkStyleFile;
};

/// False only when the user declines the creation of the folder. The error text is emptied first
/// and lists what could not be written.
bool ExportSite(const SiteOptions& options, const StartProgress& start_progress);

}  // namespace keltrun
