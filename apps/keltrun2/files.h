// Files and standard streams.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "apps/keltrun2/options.h"

namespace keltrun::cli {

// Each of these throws CommandError with the file's name and the reason when it fails.

std::string ReadStandardInput();
std::string ReadInput(const std::string& file);

/// Makes the folder with its parents unless it is there, and refuses one that takes no files.
void MakeFolder(const std::string& folder);

/// Refuses to replace the file that the event comes from, by whatever name, by one of the outputs.
void CheckEventIsKept(const Options& options, const std::vector<std::string>& outputs,
                      const std::string& advice);

/// Refuses, before any work, an output file that is there already unless it may be replaced.
void CheckOutput(const Options& options);

/// The same for an output that is no lap file: it must not replace the event, not even by --force.
void CheckReport(const Options& options);

/// Writes the file, or standard output for "-". A file is replaced as a whole, with its permissions
/// and once the new one is on the disk, so that an old one is still there when writing fails.
void WriteOutput(const std::string& file, std::string_view bytes);

/// Says so on standard error, unless asked to be quiet, when Japanese names cannot be drawn.
void WarnWithoutJapaneseFont(const Options& options);

}  // namespace keltrun::cli
