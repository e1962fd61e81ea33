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

/// Creates the folder with its parents unless it exists, and refuses one that takes no files.
void MakeFolder(const std::string& folder);

/// Refuses to replace the file that the event comes from, under whatever name, with an output.
void CheckEventIsKept(const Options& options, const std::vector<std::string>& outputs,
                      const std::string& advice);

/// Refuses, before any work, an output file that exists already unless it may be replaced.
void CheckOutput(const Options& options);

/// The same for an output that is not a lap file: it must not replace the event, even with --force.
void CheckReport(const Options& options);

/// Writes the file, or standard output for "-". A file is replaced as a whole and only when the new
/// one is on the disk, so that the old one is still there when writing fails. The new file gets the
/// permissions of the old one.
void WriteOutput(const std::string& file, std::string_view bytes);

/// Warns on standard error, except with --quiet, when Japanese names cannot be drawn.
void WarnWithoutJapaneseFont(const Options& options);

}  // namespace keltrun::cli
