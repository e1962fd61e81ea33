// Loading, saving and publishing.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/base/export.h"
#include "keltrun2/io/lap_file_types.h"
#include "keltrun2/io/remarks.h"
#include "keltrun2/loading/progress.h"
#include "keltrun2/model/load_mode.h"
#include "keltrun2/site/site_options.h"

namespace keltrun {

/// The file service. It works on the event of the thread's youngest root object (`clsKeltrun2`).
///
/// Nothing here throws for a bad file: the result is false and the root's ErrorComment says why.
/// What a reader added before an error stays in the model.
class KELTRUN2_API clsFileControl {
 public:
  /// Hosts do not create the service; they use the one of the root object.
  clsFileControl() = default;
  clsFileControl(const clsFileControl&) = delete;
  clsFileControl& operator=(const clsFileControl&) = delete;

  /// Whether long work shows the progress window; false at first.
  bool ProgressVisible() const { return progress_visible_; }
  /// Turns the progress window on or off for the work that follows.
  void SetProgressVisible(bool Visible) { progress_visible_ = Visible; }

  /// Whether a load that adds to the event gives new official ranks to the classes whose official
  /// ranks were exactly those of their results; false at first. Other classes that change keep
  /// theirs, and a remark says that they may be stale.
  bool RenewRanks() const { return renew_ranks_; }
  /// Whether later loads that add to the event renew official ranks.
  void SetRenewRanks(bool Renew) { renew_ranks_ = Renew; }

  /// Publishes the event as a small web site in a folder. Returns false only when the user declines
  /// to create the missing folder or when there is no root object. ErrorComment lists what could
  /// not be written; everything else is on the disk when this returns. Raises invalid procedure
  /// call (5) for an unknown charset.
  bool OutputSite(const SiteOptions& Options);

  /// Does what OutputSite does, with the options as parameters; `SiteOptions` says what they mean.
  bool OutputHtml(std::string_view OutputFolder, std::string_view IndexFile = "",
                  std::string_view AnalysisFile = "", std::string_view ResultFile = "",
                  std::string_view Lap2File = "", std::string_view Lap1File = "",
                  bool OfficialSite = false, bool IndexFileAddMode = false,
                  std::string_view ActiveXFile = "", std::string_view ActiveXAddress = "",
                  bool AnalysisIncludeCourse = false, bool ResultIncludeCourse = false,
                  std::string_view LegDataFile = "", bool LegDataIncludeCourse = false,
                  std::string_view ChartFile = "", bool ChartIncludeCourse = false,
                  std::string_view ChartOption = "", std::string_view LinkStyleFile = "");

  /// The names, with the folder, of all files that OutputSite writes with these options, in no
  /// particular order. Some of them are not written when there is nothing to show. Raises invalid
  /// procedure call (5) for an unknown charset.
  std::vector<std::string> SiteFiles(const SiteOptions& Options) const;

  /// What OutputSite would destroy: a sentence without a full stop if the index page holds more
  /// than this event and is not added to, otherwise nothing. OutputSite itself does not ask.
  std::vector<std::string> SiteConflicts(const SiteOptions& Options) const;

  /// Publishes the report of the event with what belongs to it in a folder. Returns false when the
  /// user declines to create the missing folder, when there is no root object, and when files of
  /// somebody else would be lost (see ReportSiteConflicts); nothing is written then, and
  /// ErrorComment says why. Otherwise ErrorComment lists what could not be written; everything else
  /// is on the disk when this returns. Raises invalid procedure call (5) for UntimedLegs that are
  /// none.
  bool OutputReportSite(const ReportSiteOptions& Options);

  /// What would be lost if OutputReportSite replaced it: one sentence without a full stop for each
  /// file in the folder that has a name of this event and is not of an earlier publication of it.
  std::vector<std::string> ReportSiteConflicts(const ReportSiteOptions& Options) const;

  /// The names, with the folder, of all files that OutputReportSite writes with these options, in
  /// no particular order. Charts without content are not written.
  std::vector<std::string> ReportSiteFiles(const ReportSiteOptions& Options) const;

  /// Loads a lap file, or the text of a lap file (UTF-8) from FileData. With KR_LOADMODE_NORMAL the
  /// model is cleared first, even when the file then fails to load. The type is detected unless it
  /// is given. From a ".lzh" archive the lap file in it is loaded; if it contains several, the host
  /// windows let the user choose one (`ChooseName`). Runners are sorted by result afterwards.
  /// ErrorComment is emptied at the start; after a failure it says why. Only for the type IOF XML
  /// 2.0, unless ForeignFormats is on, the result is false without a text.
  [[nodiscard]] bool LoadLapFile(std::string_view FileName,
                                 KrLapFileTypeConst LapFileType = KR_FILETYPE_AUTODETECT,
                                 KrLapFileLoadModeCosnt LoadMode = KR_LOADMODE_NORMAL,
                                 std::string_view FileData = "");

  /// Whether loads also detect and read what other programs write (IOF XML, CSV and HTML of timing
  /// programs); false at first, and then such files are taken for lap files and lists. The types of
  /// these formats from KR_FILETYPE_IOF_XML_30_RESULT on can always be given to LoadLapFile.
  bool ForeignFormats() const { return foreign_formats_; }
  /// Turns the detection of other programs' formats on or off for later loads.
  void SetForeignFormats(bool Detect) { foreign_formats_ = Detect; }

  /// The race or day that later loads read from a file that has several, from 1; 0, the initial
  /// value, is the first one with results. Only the formats of other programs have several.
  std::int32_t Race() const { return race_; }
  /// Chooses the race or day. Raises invalid procedure call (5) for a number below 0.
  void SetRace(std::int32_t Race);

  /// The type of the file of the last load; KR_FILETYPE_UNKNOWN when it was not recognized.
  KrLapFileTypeConst LoadedType() const { return loaded_type_; }
  /// The name of its format, such as "IOF XML 3.0"; empty when it was not recognized.
  const std::string& LoadedFormat() const { return loaded_format_; }

  /// What the last load noticed without giving up: cells and lines that were read differently or
  /// dropped, and classes that became one. At most about 2,000.
  const std::vector<LoadRemark>& LoadRemarks() const { return remarks_; }

  /// The charset of lists and printouts that have no byte-order mark: "utf-8", "x-sjis",
  /// "windows-1252", "iso-8859-1" or another of their names. Empty, which is the initial value,
  /// means that the charset is detected: UTF-8, or Shift-JIS if Japanese words appear, else
  /// Windows-1252, with a remark.
  const std::string& InputCharset() const { return input_charset_; }
  /// Sets that charset for later loads; empty means that it is detected again. Raises invalid
  /// procedure call (5) for an unknown charset.
  void SetInputCharset(std::string_view InputCharset);

  /// Saves the event. Without a type the extension decides: "lap" is the previous generation, "xml"
  /// is KR_FILETYPE_IOF_XML_20_RESULT, and everything else is the native format. The types for
  /// other programs have to be given: KR_FILETYPE_IOF_XML_30_RESULT,
  /// KR_FILETYPE_IOF_XML_20_EXCHANGE, KR_FILETYPE_SPLITSBROWSER_CSV, KR_FILETYPE_WINSPLITS_TEXT and
  /// KR_FILETYPE_OE_CSV (as OE2010 writes it). Times in IOF XML 3.0 have the zone of the system. An
  /// existing file is replaced only by a complete new one that is on the disk, and never by one too
  /// large to be read again (native 512 MiB, others and in archives 64 MiB). A failure leaves its
  /// reason in `clsKeltrun2::ErrorComment`; a success leaves there what was there before. When a
  /// ".lzh" archive could not be written, only the text says so: the result is that of the lap file
  /// in the working folder.
  [[nodiscard]] bool SaveLapFile(std::string_view FileName,
                                 KrLapFileTypeConst LapFileType = KR_FILETYPE_AUTODETECT,
                                 KrLapFileSaveModeCosnt SaveMode = KR_SAVEMODE_NORMAL);

  /// The charset of text files that SaveLapFile writes: "utf-8", "utf-8-bom" (with a byte-order
  /// mark), "cp932", "windows-1252" or another of their names. Empty, the initial value, means the
  /// usual one of each format. The native file and KR_FILETYPE_IOF_XML_20_RESULT have no other, and
  /// are not written when one is set.
  const std::string& OutputCharset() const { return output_charset_; }
  /// Sets that charset for later saves; empty means the usual ones again. Raises invalid procedure
  /// call (5) for an unknown charset.
  void SetOutputCharset(std::string_view OutputCharset);

  /// What the file type of the last save has no place for: runners that were left out, values that
  /// were dropped, characters that its charset does not have. Empty after a failure.
  const std::vector<LoadRemark>& SaveRemarks() const { return save_remarks_; }

  /// The type to save in for a filter of FileSaveFilter, counted from 1;
  /// KR_FILETYPE_AUTODETECT for anything but 1 to 5.
  KrLapFileTypeConst FileSaveMode(double FilterIndex) const;

  /// Filters for a save dialog: "description|pattern" pairs, separated by "|".
  std::string FileSaveFilter() const;
  /// Filters for an open dialog: "description|pattern" pairs, separated by "|".
  std::string FileLoadFilter() const;

  /// Attaches a handler of the Progress event: 0 at the start of a load or export, percentages as
  /// it goes on, 100 at its end, even when it fails. While a handler runs, another load or export
  /// returns false.
  ProgressHandle OnProgress(ProgressHandler Handler);

 private:
  bool progress_visible_ = false;
  bool renew_ranks_ = false;
  bool foreign_formats_ = false;
  std::int32_t race_ = 0;
  KrLapFileTypeConst loaded_type_ = KR_FILETYPE_UNKNOWN;
  std::string loaded_format_;
  std::vector<LoadRemark> remarks_;
  std::vector<LoadRemark> save_remarks_;
  std::string input_charset_;
  std::string output_charset_;
  std::int32_t attached_ = 0;
  std::shared_ptr<ProgressHandlers> handlers_ = std::make_shared<ProgressHandlers>();
};

}  // namespace keltrun
