// The commands of the program.
#pragma once

#include "apps/keltrun2/options.h"
#include "keltrun2/keltrun2.h"

namespace keltrun::cli {

/// Does all the work of a command. Throws CommandError when it cannot be done.
using Command = void (*)(clsKeltrun2& root, const Options& options);

/// Publishes the event as a web site in a folder.
void PublishSite(clsKeltrun2& root, const Options& options);
/// Writes the report of the event, one page that contains everything.
void WriteReport(clsKeltrun2& root, const Options& options);
/// Writes the event in another format.
void ConvertEvent(clsKeltrun2& root, const Options& options);
/// Writes the event with what another file adds to it.
void MergeEvents(clsKeltrun2& root, const Options& options);
/// Shows what is in the event, as a summary or as JSON.
void ShowInfo(clsKeltrun2& root, const Options& options);
/// Writes analyses as a page, as text or as JSON.
void WriteAnalysis(clsKeltrun2& root, const Options& options);
/// Writes result lists as a page, as text or as JSON.
void WriteResults(clsKeltrun2& root, const Options& options);
/// Draws a chart into a picture file.
void DrawChart(clsKeltrun2& root, const Options& options);
/// Prints result lists or analyses to a PDF document or on a printer.
void PrintPages(clsKeltrun2& root, const Options& options);

}  // namespace keltrun::cli
