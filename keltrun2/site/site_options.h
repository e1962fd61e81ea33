// What is published of an event as a web site.
#pragma once

#include <cstdint>
#include <string>

#include "keltrun2/drawing/cairo_picture.h"

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
  std::string OutputFolder = {};  ///< The folder; created when it is missing and the user agrees.
  std::string IndexFile = {};     ///< Name of the page that lists the classes.

  std::string ResultFile = {};    ///< Pattern of the result lists' names.
  std::string AnalysisFile = {};  ///< Pattern of the split analyses' names.
  std::string LegDataFile = {};   ///< Pattern of the leg analyses' names.
  /// Pattern of the chart pages' names; the pictures of "c_*.html" are "c_*_0.png" and so on.
  std::string ChartFile = {};
  /// The modes of the charts (KrChartModeConst), as in "0,2,7". The map has a picture and no page.
  std::string ChartOption = {};
  /// What the charts' files are: KR_PICTURE_PNG, or KR_PICTURE_SVG, whose names end in ".svg";
  /// these are sharp at any size, and smaller for classes of any usual size. Other formats raise
  /// invalid procedure call (5).
  PictureFormatConst ChartFormat = KR_PICTURE_PNG;

  /// Whether courses that several classes run get result lists too.
  bool ResultIncludeCourse = false;
  /// Whether courses that several classes run get split analyses too.
  bool AnalysisIncludeCourse = false;
  /// Whether courses that several classes run get leg analyses too.
  bool LegDataIncludeCourse = false;
  /// Whether courses that several classes run get charts too.
  bool ChartIncludeCourse = false;

  std::string Lap2File = {};  ///< Name of a copy of the lap file in the native format.
  std::string Lap1File = {};  ///< Name of a copy in the previous generation's format.
  /// Name of the report (see clsHtmlControl::OutputViewer) of everything, with at most 40 segments;
  /// always UTF-8.
  std::string ViewerFile = {};
  /// Name of the viewer control's page. It is written only in the Japanese mode, and only when
  /// ActiveXAddress is given too.
  std::string ActiveXFile = {};
  /// Address of the lap file that the viewer control's page opens.
  std::string ActiveXAddress = {};

  std::string LinkStyleFile = {};  ///< Address of a style sheet that every page links.
  bool OfficialSite = false;       ///< Whether the index links the event's own site.
  bool IndexFileAddMode = false;   ///< Whether an existing index is kept and gets a new block.
  /// Whether, in that mode, the new block replaces the blocks that link the same copy of the lap
  /// file (Lap2File, else Lap1File), which were made from the same files. Otherwise it goes in
  /// front of the others.
  bool IndexReplaceBlock = false;

  /// Which legs the analyses leave out because they were not timed: "none", "auto" or a list, as
  /// clsAnalyzer::UntimedLegs.
  std::string UntimedLegs = "none";
  /// Whether lines of charts go on, dashed, at controls without a time, as
  /// clsChartObject::BridgeGaps.
  bool BridgeGaps = false;

  /// On how many threads classes and courses are made; 0 is one for each core of the computer. The
  /// files, failures and progress are the same. Negative numbers raise invalid procedure call (5).
  std::int32_t Jobs = 1;

  /// The charset that pages declare and are written in. Outside the Japanese mode, leg analyses are
  /// in iso-8859-1 instead of "x-sjis".
  std::string Charset = "x-sjis";
};

/// The site that clsFileControl::OutputReportSite writes: the report of the event, and beside it
/// what readers may take away (the event, IOF XML 3.0, a table of the results) and charts.
///
///     root->FileControl()->OutputReportSite({.OutputFolder = "site", .ChartOption = "0,7"});
struct ReportSiteOptions {
  std::string OutputFolder = {};  ///< The folder; created when it is missing and the user agrees.
  /// Before the names of all files but "index.html", for a folder with several events.
  std::string Prefix = {};
  /// Whether "index.html" lists the events of the folder, the newest first. The report is then
  /// Prefix + "report.html"; otherwise it is "index.html" itself. A report that is there already
  /// becomes a file of its own and is listed as well; any other page gets the list in addition to
  /// what it has. An event that was published with the same Prefix is replaced.
  bool AddToIndex = false;
  /// Whether files may be replaced that are not of an earlier publication of this event.
  bool ReplaceOthers = false;
  bool OfficialSite = true;  ///< Whether the report links the event's own web site.

  /// The modes of the charts (KrChartModeConst) on Prefix + "charts.html", as in "0,2,7"; none for
  /// an empty text.
  std::string ChartOption = {};
  /// What the charts' files are; as SiteOptions::ChartFormat.
  PictureFormatConst ChartFormat = KR_PICTURE_PNG;
  /// Whether courses that several classes run get charts too. The report always has them.
  bool ChartIncludeCourse = false;

  /// Which legs count for nobody because they were not timed: "none", "auto" or a list, as
  /// clsAnalyzer::UntimedLegs.
  std::string UntimedLegs = "none";
  /// On how many threads charts are made; as SiteOptions::Jobs.
  std::int32_t Jobs = 1;
  /// The file name of an index of pages that OutputSite writes into the folder, for a link to it.
  std::string ClassicIndex = {};
};

}  // namespace keltrun
