#include "keltrun2/site/site_export.h"

#include <algorithm>
#include <array>
#include <exception>
#include <functional>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/analysis/analyzer_internal.h"
#include "keltrun2/analysis/estimate_internal.h"
#include "keltrun2/analysis/loss_map.h"
#include "keltrun2/analysis/results_holder.h"
#include "keltrun2/base/automation_error.h"
#include "keltrun2/chart/chart_builder.h"
#include "keltrun2/chart/chart_object.h"
#include "keltrun2/codec/encodings.h"
#include "keltrun2/config/settings.h"
#include "keltrun2/drawing/cairo_picture.h"
#include "keltrun2/model/class_data_internal.h"
#include "keltrun2/model/process_state.h"
#include "keltrun2/os/clock.h"
#include "keltrun2/os/file_lock.h"
#include "keltrun2/os/files.h"
#include "keltrun2/report/analysis_page.h"
#include "keltrun2/report/chart_page.h"
#include "keltrun2/report/event_list.h"
#include "keltrun2/report/html_parts.h"
#include "keltrun2/report/index_page.h"
#include "keltrun2/report/leg_data_page.h"
#include "keltrun2/report/report_page.h"
#include "keltrun2/report/result_page.h"
#include "keltrun2/report/viewer_control_page.h"
#include "keltrun2/site/event_sets.h"
#include "keltrun2/site/folder_writer.h"
#include "keltrun2/site/output_names.h"
#include "keltrun2/site/skipped_legs_keeper.h"
#include "keltrun2/text/html.h"

namespace keltrun {
namespace {

constexpr std::string_view kOperation = "clsFileControl.OutputHtml";
constexpr std::string_view kNewWindow = " target=\"_blank\"";
constexpr std::int32_t kPictureWidth = 1000;
constexpr std::int32_t kPictureHeight = 700;

// The pages of a class or course, in the order of their links.
enum PageKind : std::size_t { kResultPage, kAnalysisPage, kLegDataPage, kChartPage, kPageKinds };

struct PageOptions {
  std::string SiteOptions::*pattern;
  bool SiteOptions::*include_course;
  std::string_view link_text_key;
};
constexpr std::array<PageOptions, kPageKinds> kPages = {{
    {&SiteOptions::ResultFile, &SiteOptions::ResultIncludeCourse, "RES_META_RESULT_LIST"},
    {&SiteOptions::AnalysisFile, &SiteOptions::AnalysisIncludeCourse, "RES_META_SPLITS_ANALYSIS"},
    {&SiteOptions::LegDataFile, &SiteOptions::LegDataIncludeCourse, "RES_META_LEG_ANALYSIS"},
    {&SiteOptions::ChartFile, &SiteOptions::ChartIncludeCourse, "RES_META_CHART"},
}};

// A class or course of the site.
struct Entry {
  ClassAndCourseChoice choice;
  std::vector<std::shared_ptr<clsClassData>> classes;
  std::array<std::string, kPageKinds> names;  // of the pages, "" for one that is not wanted
  PictureNames charts;
  bool has_results = false;  // a runner has a result, so there is a result list

  bool IsCourse() const { return choice.ClassIndex == 0; }
  bool Wants(PageKind kind) const { return !names[kind].empty(); }
  bool WantsAnalysis() const {
    return Wants(kAnalysisPage) || Wants(kLegDataPage) || Wants(kChartPage);
  }
};

bool HasResults(const std::vector<std::shared_ptr<clsClassData>>& classes) {
  return std::any_of(classes.begin(), classes.end(), [](const auto& klass) {
    const auto& runners = ClassDataInternal::Runners(*klass);
    return std::any_of(runners.begin(), runners.end(),
                       [](const auto& runner) { return !runner->Result().empty(); });
  });
}

Charset SiteCharset(const SiteOptions& options) {
  if (const auto charset = CharsetFromName(options.Charset)) return *charset;
  throw AutomationError(KR_ERROR_INVALID_CALL,
                        std::string(kOperation) + ": unknown charset " + options.Charset);
}

// The modes to draw, each once.
std::set<std::int32_t> PicturesOf(std::string_view chart_option) {
  const auto modes = ChartModes(chart_option);
  return {modes.begin(), modes.end()};
}

class SiteExport {
 public:
  explicit SiteExport(const SiteOptions& options)
      : options_(options),
        charset_(SiteCharset(options)),
        writer_(options.OutputFolder, kOperation),
        chart_modes_(PicturesOf(options.ChartOption)),
        model_(CurrentModel()) {
    analyzer_->SetUntimedLegs(options.UntimedLegs);
  }

  void Run(ProgressReport& progress);
  std::vector<std::string> FileNames();
  FolderWriter& Writer() { return writer_; }

 private:
  void NameFiles(OutputNames& names);
  void MakeEntries();
  void NamePages(Entry& entry, std::string file_name, OutputNames& names) const;

  void MakeLinksRow();
  std::string MakeViewerControlPage();
  std::string MakeLapFileCopy(const std::string& name, KrLapFileTypeConst type,
                              std::string_view text_key);
  std::string MakeReport();
  void MakeNavigation();

  void ExportEntry(const Entry& entry);
  void GatherResults(const Entry& entry);
  void Analyze(const Entry& entry);
  std::string ExportPage(const Entry& entry, PageKind kind);
  std::string_view DeclaredCharset(PageKind kind) const;
  void AppendPage(const Entry& entry, PageKind kind, std::string_view charset);
  void ExportPictures(const Entry& entry);
  bool IsDrawn(std::int32_t mode) const;
  void DrawSiteChart(KrChartModeConst mode);
  void AddIndexRow(const Entry& entry, const std::string& links);
  void WriteIndex();
  std::string ReplacedPiece() const;

  bool WritePage(const std::string& name, Charset charset, Sync sync = Sync::kLater);

  const SiteOptions& options_;
  const Charset charset_;
  FolderWriter writer_;
  const std::set<std::int32_t> chart_modes_;
  const std::shared_ptr<EventModel> model_;
  EventSets sets_;
  std::vector<Entry> entries_;
  // Names of the single files, "" for one that is not wanted.
  std::string index_name_, lap2_name_, lap1_name_, viewer_name_, viewer_control_name_;
  std::string index_;       // the block of the index page
  std::string navigation_;  // above every result list
  const std::shared_ptr<clsAnalyzer> analyzer_ = std::make_shared<clsAnalyzer>();
  clsResultsHolder results_;
  std::shared_ptr<CairoPicture> picture_;  // made for the first chart and kept, as is the chart
  std::shared_ptr<clsChartObject> chart_;
  std::string page_;   // the page being made; its memory is reused for each page
  std::string bytes_;  // the page in its charset; the memory is reused, too
};

void SiteExport::Run(ProgressReport& progress) {
  const SkippedLegsKeeper keeper(*model_);
  MakeEntries();
  AppendIndexHead(index_, *model_->Event, options_.OfficialSite);
  MakeLinksRow();
  MakeNavigation();
  std::int64_t done = 0;
  for (const Entry& entry : entries_) {
    ExportEntry(entry);
    progress.Advance(++done, static_cast<std::int64_t>(entries_.size()));
  }
  AppendIndexFoot(index_, Now());
  // The index may contain blocks of other events, and it must not link pages that were lost when
  // the power failed.
  writer_.SyncAll();
  WriteIndex();
  writer_.Report();
}

std::vector<std::string> SiteExport::FileNames() {
  MakeEntries();
  std::vector<std::string> names = {index_name_, lap2_name_, lap1_name_, viewer_name_,
                                    viewer_control_name_};
  for (const Entry& entry : entries_) {
    names.insert(names.end(), entry.names.begin(), entry.names.end());
    if (!entry.Wants(kChartPage)) continue;
    for (const std::int32_t mode : chart_modes_) names.push_back(entry.charts.Picture(mode));
  }
  std::erase(names, "");
  for (std::string& name : names) name.insert(0, writer_.Folder());
  return names;
}

// Equal names are numbered; that includes the names of classes and courses.
void SiteExport::NameFiles(OutputNames& names) {
  const auto assign = [&](const std::string& name) {
    return name.empty() ? "" : names.Assign(OutputNames::Safe(name), "");
  };
  index_name_ = assign(options_.IndexFile);
  if (!options_.LinkStyleFile.empty()) names.Reserve(OutputNames::Safe(options_.LinkStyleFile));
  lap2_name_ = assign(options_.Lap2File);
  lap1_name_ = assign(options_.Lap1File);
  viewer_name_ = assign(options_.ViewerFile);
  viewer_control_name_ = assign(options_.ActiveXFile);
}

void SiteExport::MakeEntries() {
  sets_ = EventSets(*model_);
  OutputNames names;
  NameFiles(names);
  const bool with_courses = std::any_of(kPages.begin(), kPages.end(), [this](const auto& page) {
    return options_.*page.include_course;
  });
  for (ClassAndCourseChoice& choice : model_->Choices()) {
    if (choice.ClassIndex == 0 && !with_courses) break;
    Entry entry;
    entry.classes = sets_.ClassesOf(choice);
    entry.has_results = HasResults(entry.classes);
    entry.choice = std::move(choice);
    NamePages(entry, entry.choice.FileName, names);
    entries_.push_back(std::move(entry));
  }
}

void SiteExport::NamePages(Entry& entry, std::string file_name, OutputNames& names) const {
  if (file_name.empty()) file_name = "class" + std::to_string(entries_.size() + 1);
  for (std::size_t kind = 0; kind < kPageKinds; ++kind) {
    if (entry.IsCourse() && !(options_.*kPages[kind].include_course)) continue;
    const std::string& pattern = options_.*kPages[kind].pattern;
    if (kind == kChartPage) {
      entry.charts = names.AssignWithPictures(pattern, file_name);
      entry.names[kind] = entry.charts.Page;
    } else {
      entry.names[kind] = names.Assign(pattern, file_name);
    }
  }
}

// The copies are made before anything is analyzed.
void SiteExport::MakeLinksRow() {
  std::string links;
  writer_.Attempt("write", options_.ActiveXFile, [&] { links += MakeViewerControlPage(); });
  writer_.Attempt("write", lap1_name_, [&] {
    links += MakeLapFileCopy(lap1_name_, KR_FILETYPE_KELTRUN1, "RES_META_KELTRUN_DATA");
  });
  writer_.Attempt("write", lap2_name_, [&] {
    links += MakeLapFileCopy(lap2_name_, KR_FILETYPE_KELTRUN2, "RES_META_KELTRUN2_DATA");
  });
  writer_.Attempt("write", options_.ViewerFile, [&] { links += MakeReport(); });
  if (!links.empty()) AppendIndexLinksRow(index_, links);
}

std::string LinkInBrackets(const std::string& name, std::string_view attributes,
                           std::string_view text_key) {
  return "&nbsp;[" + IndexLink(name, attributes, ResourceText(text_key)) + "]";
}

std::string SiteExport::MakeViewerControlPage() {
  const std::string& address = options_.ActiveXAddress;
  if (!IsJapaneseMode() || options_.ActiveXFile.empty() || address.empty()) return "";
  const std::string& name = viewer_control_name_;
  page_.clear();
  // When one of these pages declares no charset, browsers guess Shift-JIS but not UTF-8.
  AppendViewerControlPage(page_, address, charset_ == Charset::kShiftJis ? "" : options_.Charset);
  if (!WritePage(name, charset_)) return "";
  return LinkInBrackets(name, " target = \"_blank\"", "RES_META_ACTIVE_X_PAGE_LINK");
}

std::string SiteExport::MakeLapFileCopy(const std::string& name, KrLapFileTypeConst type,
                                        std::string_view text_key) {
  if (name.empty()) return "";
  SetErrorText("");
  const bool saved =
      SaveLapFile(*model_, writer_.Folder() + name, type, KR_SAVEMODE_NORMAL, Sync::kLater);
  if (!saved || !ErrorText().empty()) {  // a failed archive returns true with a text
    writer_.Note(ErrorText());
    return "";
  }
  return LinkInBrackets(name, "", text_key);
}

std::string SiteExport::MakeReport() {
  if (options_.ViewerFile.empty()) return "";
  const std::string& name = viewer_name_;
  page_.clear();
  const auto estimate = EstimateInternal::Make(
      *model_, CheckedUntimedLegs(options_.UntimedLegs, "SiteOptions.UntimedLegs"));
  const auto make_set = [this](const std::string& set, const std::function<void()>& step) {
    writer_.Attempt("show", set, step);
  };
  AppendReportPage(page_, *model_, ReportSets(*model_, options_.UntimedLegs, make_set),
                   estimate.get());
  if (!WritePage(name, Charset::kUtf8)) return "";
  return LinkInBrackets(name, kNewWindow, "RES_META_VIEWER_LINK");
}

void SiteExport::MakeNavigation() {
  if (options_.ResultFile.empty()) return;
  bool course_seen = false;
  for (const Entry& entry : entries_) {
    if (entry.IsCourse() && !options_.ResultIncludeCourse) break;
    if (entry.IsCourse() && !std::exchange(course_seen, true)) navigation_ += "&nbsp;&nbsp;";
    if (!entry.has_results) continue;
    navigation_ += IndexLink(entry.names[kResultPage], "", entry.choice.ValueName) + " ";
  }
  navigation_ += "<hr>\r\n";
}

void SiteExport::ExportEntry(const Entry& entry) {
  results_.Clear();
  analyzer_->Clear();
  const std::string& name = entry.choice.ValueName;
  std::string links;
  // When something cannot be made, such as the analysis of a class with too many controls, its page
  // is left out and the export goes on.
  if (writer_.Attempt("list", name, [&] { GatherResults(entry); }))
    links += ExportPage(entry, kResultPage);
  if (writer_.Attempt("analyze", name, [&] { Analyze(entry); })) {
    for (const PageKind kind : {kAnalysisPage, kLegDataPage, kChartPage}) {
      links += ExportPage(entry, kind);
    }
    if (entry.Wants(kChartPage)) ExportPictures(entry);
  }
  if (!links.empty()) AddIndexRow(entry, links);
}

void SiteExport::GatherResults(const Entry& entry) {
  if (!entry.Wants(kResultPage)) return;
  sets_.AddRunners(results_, entry.choice, entry.classes);
  results_.CalcRank();
}

void SiteExport::Analyze(const Entry& entry) {
  const bool any_file = !options_.AnalysisFile.empty() || !options_.LegDataFile.empty() ||
                        !options_.ChartFile.empty();
  if (!any_file) return;
  sets_.AddRunners(*analyzer_, entry.choice,
                   entry.classes);  // the index shows its length and climb
  if (!entry.WantsAnalysis()) return;
  analyzer_->Execute();
  if (entry.Wants(kLegDataPage) || entry.Wants(kChartPage)) analyzer_->ExtraAnalyze();
  if (entry.Wants(kChartPage) && IsDrawn(KR_CHART_VESMER)) analyzer_->Vesmer();
}

// Writes the page, if it is wanted and has runners to show, and returns the link to it.
std::string SiteExport::ExportPage(const Entry& entry, PageKind kind) {
  const std::string& name = entry.names[kind];
  const std::int32_t count = kind == kResultPage ? results_.Count() : analyzer_->Count();
  if (name.empty() || count == 0) return "";
  const std::string_view charset = DeclaredCharset(kind);
  bool written = false;
  writer_.Attempt("write", name, [&] {
    page_.clear();
    AppendPage(entry, kind, charset);
    written = WritePage(name, CharsetFromName(charset).value_or(charset_));
  });
  if (!written) return "";
  return "&nbsp;" + IndexLink(name, kNewWindow, ResourceText(kPages[kind].link_text_key));
}

std::string_view SiteExport::DeclaredCharset(PageKind kind) const {
  const bool by_language = kind == kLegDataPage && charset_ == Charset::kShiftJis;
  return by_language ? LegDataCharset(options_.Charset) : options_.Charset;
}

void SiteExport::AppendPage(const Entry& entry, PageKind kind, std::string_view charset) {
  const std::string& style = options_.LinkStyleFile;
  if (kind == kResultPage) {
    AppendResultPage(page_, results_, navigation_, style, charset);
  } else if (kind == kAnalysisPage) {
    AppendAnalysisPage(page_, *model_, *analyzer_, style, charset);
  } else if (kind == kLegDataPage) {
    AppendLegDataPage(page_, *model_, *analyzer_, style, charset);
  } else {
    AppendChartPage(page_, *model_, *analyzer_, entry.charts.Address(), options_.ChartOption,
                    charset);
  }
}

void SiteExport::ExportPictures(const Entry& entry) {
  if (analyzer_->Count() == 0) return;
  for (const std::int32_t mode : chart_modes_) {
    if (!IsDrawn(mode)) continue;
    const std::string name = entry.charts.Picture(mode);
    writer_.Attempt("draw", writer_.Folder() + name, [&] {
      DrawSiteChart(static_cast<KrChartModeConst>(mode));
      writer_.Write(name, picture_->Encode());
    });
  }
}

// Whether a chart mode is wanted and has something to show for the analyzed set.
bool SiteExport::IsDrawn(std::int32_t mode) const {
  if (!chart_modes_.contains(mode)) return false;
  if (mode == KR_CHART_REALTIME) return HasStartTimes(*analyzer_);
  return mode != KR_CHART_VESMER || HasMap(*analyzer_);
}

// The whole chart, as large as the picture.
void SiteExport::DrawSiteChart(KrChartModeConst mode) {
  if (!picture_) {
    picture_ = std::make_shared<CairoPicture>(kPictureWidth, kPictureHeight);
    chart_ = std::make_shared<clsChartObject>();
    chart_->BridgeGaps = options_.BridgeGaps;
    chart_->SetPictureObject(picture_);
  }
  BuildChart(analyzer_, *chart_, mode, ChartRatioToFit(*analyzer_, *chart_, mode), 1, 0, 0);
  chart_->DrawChart();
}

// The winner is the first runner of the result list or, if there is no list, of the analysis.
void SiteExport::AddIndexRow(const Entry& entry, const std::string& links) {
  const std::string class_info = analyzer_->ClassInfo();
  std::string name;
  std::string result;
  if (const auto winner = results_.Item(1)) {
    name = winner->RunnerName;
    result = winner->Result();
  } else if (const auto first = analyzer_->Item(1)) {
    name = first->RunnerName();
    result = first->Result();
  }
  AppendIndexRow(index_, {entry.choice.ValueName, links, class_info, name, result});
}

// Writes the page that is being made.
bool SiteExport::WritePage(const std::string& name, Charset charset, Sync sync) {
  page_ += kCrLf;
  bytes_.clear();
  bytes_.reserve(page_.size());
  AppendEncoded(bytes_, page_, charset, MissingCharacter::kCharacterReference);
  return writer_.Write(name, bytes_, sync);
}

// The HTML by which the block of the same files is found in an index.
std::string SiteExport::ReplacedPiece() const {
  const std::string& copy = lap2_name_.empty() ? lap1_name_ : lap2_name_;
  if (!options_.IndexReplaceBlock || copy.empty()) return "";
  return "<a href=\"" + PercentEncode(copy) + "\"";
}

// Another program may add its event to the same index at this moment; both blocks have to stay. A
// lock that somebody keeps for longer than the writing of an index takes is not waited for.
void SiteExport::WriteIndex() {
  if (index_name_.empty() || writer_.HasFailed()) return;
  const FileLock lock(writer_.Folder(), {.Tries = 500, .Pause = 0.01});
  if (!options_.IndexFileAddMode || !FileExists(writer_.Folder() + index_name_)) {
    page_ = IndexPage(index_, options_.LinkStyleFile, options_.Charset);
    WritePage(index_name_, charset_, Sync::kNow);
    return;
  }
  std::string error;
  const std::optional<std::string> existing = ReadFile(writer_.Folder() + index_name_, error);
  if (!existing) {
    writer_.Note(error);
  } else if (const auto page = IndexWithBlock(*existing, index_, charset_, ReplacedPiece())) {
    writer_.Write(index_name_, *page, Sync::kNow);
  } else {
    writer_.Note("cannot add to " + writer_.Folder() + index_name_ + ": it is in UTF-16");
  }
}

}  // namespace

std::vector<std::string> SiteConflicts(const SiteOptions& options) {
  const std::string file =
      WithTrailingSeparator(options.OutputFolder) + OutputNames::Safe(options.IndexFile);
  if (options.IndexFile.empty() || !FileExists(file)) return {};
  std::string error;
  const auto page = ReadFile(file, error);
  if (!page) return {error};
  const std::string& lap_file = options.Lap2File.empty() ? options.Lap1File : options.Lap2File;
  if (const auto report = EventOfReport(*page)) {
    if (!options.IndexFileAddMode && lap_file == LapFileOf(*report)) return {};
    return {file + " is the report of \"" + report->Name + "\""};
  }
  if (options.IndexFileAddMode || IsIndexOfOnly(*page, lap_file)) return {};
  return {file + " holds more than this event"};
}

std::vector<std::string> SiteFiles(const SiteOptions& options) {
  return SiteExport(options).FileNames();
}

bool ExportSite(const SiteOptions& options, const StartProgress& start_progress) {
  SiteExport site(options);
  SetErrorText("");
  if (!site.Writer().Prepare()) return false;
  try {
    const auto progress = start_progress();
    site.Run(*progress);
    progress->Close();
  } catch (const ProgressHandlerError& error) {
    site.Writer().Report("a Progress handler ended the export");
    std::rethrow_exception(error.cause);
  }
  return true;
}

}  // namespace keltrun
