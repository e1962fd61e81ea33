// The commands of the program.
#pragma once

#include "apps/keltrun2/options.h"
#include "keltrun2/keltrun2.h"

namespace keltrun::cli {

/// Does the whole work of a command. Throws CommandError when it could not be done.
using Command = void (*)(clsKeltrun2& root, const Options& options);

/// The event as a web site in a folder.
void PublishSite(clsKeltrun2& root, const Options& options);
/// The event in another format.
void ConvertEvent(clsKeltrun2& root, const Options& options);
/// The event with what another file knows of it.
void MergeEvents(clsKeltrun2& root, const Options& options);
/// What the event holds, to read or as JSON.
void ShowInfo(clsKeltrun2& root, const Options& options);
/// Analyses as a page or as JSON.
void WriteAnalysis(clsKeltrun2& root, const Options& options);
/// Result lists as a page or as JSON.
void WriteResults(clsKeltrun2& root, const Options& options);
/// A chart as a picture file.
void DrawChart(clsKeltrun2& root, const Options& options);
/// Result lists or analyses as a PDF document or on a printer.
void PrintPages(clsKeltrun2& root, const Options& options);

}  // namespace keltrun::cli
