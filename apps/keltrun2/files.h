// Files and standard streams.
#pragma once

#include <string>
#include <string_view>

#include "apps/keltrun2/options.h"

namespace keltrun::cli {

// Each of these throws CommandError with the file's name and the reason when it fails.

std::string ReadStandardInput();
std::string ReadInput(const std::string& file);

/// Makes the folder with its parents unless it is there.
void MakeFolder(const std::string& folder);

/// Refuses, before any work, an output file that is there already unless it may be replaced.
void CheckOutput(const Options& options);

/// Writes the file, or standard output for "-". A file is replaced as a whole, so that an old one
/// is still there when writing fails.
void WriteOutput(const std::string& file, std::string_view bytes);

/// Says so on standard error when Japanese names cannot be drawn.
void WarnWithoutJapaneseFont();

}  // namespace keltrun::cli
