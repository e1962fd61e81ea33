// What is published of an event as a web site.
#pragma once

#include <string>

namespace keltrun {

/// The site that clsFileControl::OutputSite writes.
///
///     keltrun::SiteOptions options;
///     options.OutputFolder = "site";
///     options.IndexFile = "index.html";
///     options.AnalysisFile = "lap_*.html";
///     options.ChartFile = "chart_*.html";
///     options.ChartOption = "0,2,7";
///     root->FileControl()->OutputSite(options);
///
/// An empty name switches an output off. In a pattern "*" becomes the file name of each class or
/// course. All files lie in the folder itself: separators and characters that some systems do not
/// allow become "_" in names, and equal names are numbered.
struct SiteOptions {
  std::string OutputFolder = {};  // made when it is missing and the user agrees
  std::string IndexFile = {};     // the page that lists the classes

  std::string ResultFile = {};    // pattern of the result lists
  std::string AnalysisFile = {};  // pattern of the split analyses
  std::string LegDataFile = {};   // pattern of the leg analyses
  std::string ChartFile = {};     // pattern of the chart pages; "c_*.html" has pictures "c_*_0.png"
  std::string ChartOption = {};   // chart modes, as in "0,2,7"; the map has a picture only

  /// Each output also for the courses that several classes run.
  bool ResultIncludeCourse = false;
  bool AnalysisIncludeCourse = false;
  bool LegDataIncludeCourse = false;
  bool ChartIncludeCourse = false;

  std::string Lap2File = {};        // copy of the lap file in the native format
  std::string Lap1File = {};        // copy in the previous generation's format
  std::string ViewerFile = {};      // page with everything to browse in, in UTF-8
  std::string ActiveXFile = {};     // page of the viewer control; written in Japanese mode only and
  std::string ActiveXAddress = {};  // when the address of the lap file is given too

  std::string LinkStyleFile = {};  // address of a style sheet that every page links
  bool OfficialSite = false;       // the index links the event's own site
  bool IndexFileAddMode = false;   // put a new block into an index that is there already
  /// In that mode: blocks that link the same copy of the lap file (Lap2File, else Lap1File) were
  /// made of the same files; the new one takes their place. Otherwise it goes in front.
  bool IndexReplaceBlock = false;

  /// What pages declare and are written in. Without the Japanese mode leg analyses are in
  /// iso-8859-1 in place of "x-sjis".
  std::string Charset = "x-sjis";
};

}  // namespace keltrun
