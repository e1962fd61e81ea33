#include "keltrun2/api/file_control.h"

#include <utility>

#include "keltrun2/base/automation_error.h"
#include "keltrun2/codec/encodings.h"
#include "keltrun2/config/settings.h"
#include "keltrun2/loading/lap_file_io.h"
#include "keltrun2/loading/progress_report.h"
#include "keltrun2/model/event_model.h"
#include "keltrun2/model/process_state.h"
#include "keltrun2/site/report_site.h"
#include "keltrun2/site/site_export.h"

namespace keltrun {
namespace {

// The event to work on; null, with an error text, when there is no root object that owns one.
std::shared_ptr<EventModel> EventOrFail(std::string_view message_key, std::string_view operation) {
  auto model = FindCurrentModel();
  if (!model) {
    SetErrorText(FailureText(message_key, operation,
                             "there is no event to work on: this thread has no root object "
                             "(clsKeltrun2) that still lives; nothing was read or written"));
  }
  return model;
}

}  // namespace

bool clsFileControl::OutputHtml(std::string_view OutputFolder, std::string_view IndexFile,
                                std::string_view AnalysisFile, std::string_view ResultFile,
                                std::string_view Lap2File, std::string_view Lap1File,
                                bool OfficialSite, bool IndexFileAddMode,
                                std::string_view ActiveXFile, std::string_view ActiveXAddress,
                                bool AnalysisIncludeCourse, bool ResultIncludeCourse,
                                std::string_view LegDataFile, bool LegDataIncludeCourse,
                                std::string_view ChartFile, bool ChartIncludeCourse,
                                std::string_view ChartOption, std::string_view LinkStyleFile) {
  SiteOptions options;
  options.OutputFolder = OutputFolder;
  options.IndexFile = IndexFile;
  options.ResultFile = ResultFile;
  options.AnalysisFile = AnalysisFile;
  options.LegDataFile = LegDataFile;
  options.ChartFile = ChartFile;
  options.ChartOption = ChartOption;
  options.ResultIncludeCourse = ResultIncludeCourse;
  options.AnalysisIncludeCourse = AnalysisIncludeCourse;
  options.LegDataIncludeCourse = LegDataIncludeCourse;
  options.ChartIncludeCourse = ChartIncludeCourse;
  options.Lap2File = Lap2File;
  options.Lap1File = Lap1File;
  options.ActiveXFile = ActiveXFile;
  options.ActiveXAddress = ActiveXAddress;
  options.LinkStyleFile = LinkStyleFile;
  options.OfficialSite = OfficialSite;
  options.IndexFileAddMode = IndexFileAddMode;
  return OutputSite(options);
}

bool clsFileControl::OutputSite(const SiteOptions& Options) {
  const Busy busy;
  if (!busy.Granted()) return false;
  const auto model = EventOrFail("RES_MESSAGE_ERROR_HAPPEN", "clsFileControl.OutputHtml");
  if (!model) return false;
  return ExportSite(
      Options, [this] { return std::make_unique<ProgressReport>(handlers_, progress_visible_); });
}

std::vector<std::string> clsFileControl::SiteFiles(const SiteOptions& Options) const {
  return keltrun::SiteFiles(Options);
}

std::vector<std::string> clsFileControl::SiteConflicts(const SiteOptions& Options) const {
  return keltrun::SiteConflicts(Options);
}

bool clsFileControl::OutputReportSite(const ReportSiteOptions& Options) {
  const Busy busy;
  if (!busy.Granted()) return false;
  const auto model = EventOrFail("RES_MESSAGE_ERROR_HAPPEN", "clsFileControl.OutputReportSite");
  if (!model) return false;
  return ExportReportSite(
      Options, [this] { return std::make_unique<ProgressReport>(handlers_, progress_visible_); });
}

std::vector<std::string> clsFileControl::ReportSiteConflicts(
    const ReportSiteOptions& Options) const {
  return keltrun::ReportSiteConflicts(Options);
}

std::vector<std::string> clsFileControl::ReportSiteFiles(const ReportSiteOptions& Options) const {
  return keltrun::ReportSiteFiles(Options);
}

bool clsFileControl::LoadLapFile(std::string_view FileName, KrLapFileTypeConst LapFileType,
                                 KrLapFileLoadModeCosnt LoadMode, std::string_view FileData) {
  const Busy busy;
  if (!busy.Granted()) return false;
  const auto model = EventOrFail("RES_MESSAGE_FILE_OPEN_ERROR", "clsFileControl.LoadLapFile");
  if (!model) return false;
  loaded_type_ = KR_FILETYPE_UNKNOWN;
  loaded_format_.clear();
  remarks_.clear();
  LoadedFile loaded;
  const LoadRequest request = {std::string(FileName), LapFileType,  LoadMode,
                               std::string(FileData), renew_ranks_, CharsetFromName(input_charset_),
                               foreign_formats_,      race_};
  const bool is_loaded = keltrun::LoadLapFile(request, loaded, [this] {
    return std::make_unique<ProgressReport>(handlers_, progress_visible_);
  });
  loaded_type_ = loaded.type;
  loaded_format_ = std::move(loaded.format);
  remarks_ = std::move(loaded.remarks);
  return is_loaded;
}

void clsFileControl::SetRace(std::int32_t Race) {
  if (Race < 0) {
    throw AutomationError(KR_ERROR_INVALID_CALL,
                          "clsFileControl.Race: races are counted from 1; 0 is the first one");
  }
  race_ = Race;
}

void clsFileControl::SetInputCharset(std::string_view InputCharset) {
  if (!InputCharset.empty() && !CharsetFromName(InputCharset)) {
    throw AutomationError(KR_ERROR_INVALID_CALL, "clsFileControl.InputCharset: the charset \"" +
                                                     std::string(InputCharset) + "\" is not known");
  }
  input_charset_ = InputCharset;
}

void clsFileControl::SetOutputCharset(std::string_view OutputCharset) {
  if (!OutputCharset.empty() && !TextEncodingFromName(OutputCharset)) {
    throw AutomationError(KR_ERROR_INVALID_CALL, "clsFileControl.OutputCharset: the charset \"" +
                                                     std::string(OutputCharset) +
                                                     "\" is not known");
  }
  output_charset_ = OutputCharset;
}

bool clsFileControl::SaveLapFile(std::string_view FileName, KrLapFileTypeConst LapFileType,
                                 KrLapFileSaveModeCosnt SaveMode) {
  const auto model = EventOrFail("RES_MESSAGE_ERROR_HAPPEN", "clsFileControl.SaveLapFile");
  return model &&
         keltrun::SaveLapFile(*model, std::string(FileName), LapFileType, SaveMode, Sync::kNow,
                              &save_remarks_, TextEncodingFromName(output_charset_));
}

KrLapFileTypeConst clsFileControl::FileSaveMode(double FilterIndex) const {
  if (FilterIndex == 1 || FilterIndex == 4 || FilterIndex == 5) return KR_FILETYPE_KELTRUN2;
  if (FilterIndex == 2) return KR_FILETYPE_KELTRUN1;
  if (FilterIndex == 3) return KR_FILETYPE_IOF_XML_20_RESULT;
  return KR_FILETYPE_AUTODETECT;
}

std::string clsFileControl::FileSaveFilter() const { return ResourceText("RES_META_SAVE_FILTER"); }

std::string clsFileControl::FileLoadFilter() const { return ResourceText("RES_META_LOAD_FILTER"); }

ProgressHandle clsFileControl::OnProgress(ProgressHandler Handler) {
  if (!Handler) return {};
  handlers_->emplace(++attached_, std::make_shared<ProgressHandler>(std::move(Handler)));
  return ProgressHandle(handlers_, attached_);
}

}  // namespace keltrun
