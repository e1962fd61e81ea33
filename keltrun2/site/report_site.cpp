#include "keltrun2/site/report_site.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/analysis/estimate_internal.h"
#include "keltrun2/analysis/loss_map.h"
#include "keltrun2/analysis/untimed_legs.h"
#include "keltrun2/chart/chart_builder.h"
#include "keltrun2/chart/chart_object.h"
#include "keltrun2/config/settings.h"
#include "keltrun2/drawing/cairo_picture.h"
#include "keltrun2/model/process_state.h"
#include "keltrun2/os/clock.h"
#include "keltrun2/os/file_lock.h"
#include "keltrun2/os/files.h"
#include "keltrun2/report/chart_page.h"
#include "keltrun2/report/event_list.h"
#include "keltrun2/report/index_page.h"
#include "keltrun2/report/picture_page.h"
#include "keltrun2/report/report_page.h"
#include "keltrun2/report/result_csv.h"
#include "keltrun2/site/event_sets.h"
#include "keltrun2/site/folder_writer.h"
#include "keltrun2/site/ordered_jobs.h"
#include "keltrun2/site/output_names.h"
#include "keltrun2/site/skipped_legs_keeper.h"
#include "keltrun2/text/cells.h"
#include "keltrun2/text/html.h"
#include "keltrun2/text/letters.h"

namespace keltrun {
namespace {

constexpr std::string_view kOperation = "clsFileControl.OutputReportSite";
constexpr std::string_view kJobsOption = "ReportSiteOptions.Jobs";
constexpr std::string_view kFormatOption = "ReportSiteOptions.ChartFormat";
constexpr std::string_view kIndexFile = "index.html";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::size_t kLargestIndex = std::size_t{512} << 20;  // a report of any event
constexpr std::int32_t kPictureWidth = 1200;
constexpr std::int32_t kPictureHeight = 800;

// A class or course with charts.
struct ChartEntry {
  ClassAndCourseChoice choice;
  PictureNames pictures;
};

// What is at the place of the index page.
struct Index {
  std::optional<std::string> page;    // nothing for a missing one
  std::string error;                  // why one that is there cannot be read
  std::optional<ListedEvent> report;  // the event that it is the report of
  std::vector<ListedEvent> events;    // those that it lists
  bool is_list = false;
};

Index ReadIndex(const std::string& file) {
  Index index;
  if (!FileExists(file)) return index;
  index.page = ReadFile(file, index.error, kLargestIndex);
  if (!index.page) return index;
  index.report = EventOfReport(*index.page);
  index.is_list = !index.report && HasEventList(*index.page);
  if (index.is_list) index.events = EventsOfIndex(*index.page);
  return index;
}

// An event in a sentence.
std::string Called(const ListedEvent& event) {
  std::string text = event.Name.empty() ? "an event without a name" : "\"" + event.Name + "\"";
  return event.Date.empty() ? text : text + " (" + event.Date + ")";
}

// The picture and the chart that a thread draws on, made for the first chart and kept.
struct ChartCanvas {
  std::shared_ptr<CairoPicture> picture;
  std::shared_ptr<clsChartObject> chart;

  void Draw(const std::shared_ptr<clsAnalyzer>& analyzer, KrChartModeConst mode,
            PictureFormatConst format);
};

// The whole chart, as large as the picture. All charts of a site have the same format.
void ChartCanvas::Draw(const std::shared_ptr<clsAnalyzer>& analyzer, KrChartModeConst mode,
                       PictureFormatConst format) {
  if (!picture) {
    picture = std::make_shared<CairoPicture>(kPictureWidth, kPictureHeight, format);
    chart = std::make_shared<clsChartObject>();
    chart->BridgeGaps = chart->Titles = chart->AutoColors = true;
    chart->ClearNames = chart->FitMost = true;
    chart->SetPictureObject(picture);
  }
  BuildChart(analyzer, *chart, mode, ChartRatioToFit(*analyzer, *chart, mode), 1, 0, 0);
  chart->DrawChart();
}

class ReportSite {
 public:
  explicit ReportSite(const ReportSiteOptions& options)
      : options_(options),
        untimed_(CheckedUntimedLegs(options.UntimedLegs, "ReportSiteOptions.UntimedLegs")),
        picture_extension_(PictureExtension(options.ChartFormat, kFormatOption)),
        writer_(options.OutputFolder, kOperation),
        model_(CurrentModel()),
        event_(MakeListedEvent(*model_, SafePrefix(options.Prefix), Now())) {
    const auto modes = ChartModes(options.ChartOption);
    chart_modes_ = {modes.begin(), modes.end()};
    ThreadCount(options.Jobs, 0, kJobsOption);
    NameFiles();
  }

  FolderWriter& Writer() { return writer_; }
  std::vector<std::string> FileNames() const;
  std::vector<std::string> Conflicts() const;
  void Run(ProgressReport& progress);

 private:
  static std::string SafePrefix(const std::string& prefix) {
    std::string name = OutputNames::Safe(prefix + "x");
    name.pop_back();
    return name;
  }
  std::string Named(std::string_view name) const { return event_.Prefix + std::string(name); }
  std::string IndexPath() const { return writer_.Folder() + std::string(kIndexFile); }
  void NameFiles();

  std::optional<ListedEvent> Published(const Index& index) const;
  std::string IndexConflict(const Index& index) const;
  std::string IndexConflictOfAdding(const Index& index) const;

  void CopyEvent();
  void CopyEventAs(const std::string& name, KrLapFileTypeConst type, ReportLinkKind kind);
  void Link(ReportLinkKind kind, const std::string& name) {
    surroundings_.Links.push_back({kind, PercentEncode(name)});
  }
  void MakeCharts();
  void MakeCharts(std::size_t begin, std::size_t end);
  void DrawCharts(const ChartEntry& entry, ChartCanvas& canvas, FolderWriter& writer,
                  PictureGroup& group);
  std::shared_ptr<clsAnalyzer> Analyze(const ChartEntry& entry);
  std::string MakeReport();
  void AddToIndex();
  bool KeepFormerReport(Index& index);
  void Advance() { progress_->Advance(++done_, steps_); }

  const ReportSiteOptions& options_;
  const UntimedLegsChoice untimed_;
  const std::string_view picture_extension_;
  FolderWriter writer_;
  const std::shared_ptr<EventModel> model_;
  const ListedEvent event_;
  std::set<std::int32_t> chart_modes_;
  std::string report_name_, lap_name_, iof_name_, table_name_, charts_name_;
  std::vector<ChartEntry> chart_entries_;
  EventSets sets_;
  ReportSurroundings surroundings_;
  std::vector<PictureGroup> chart_groups_;
  // Held while records are read into a data set, which may ask records of the whole event and
  // change those of the set.
  std::mutex records_;
  ProgressReport* progress_ = nullptr;
  std::int64_t done_ = 0;
  std::int64_t steps_ = 0;
};

void ReportSite::NameFiles() {
  OutputNames names;
  const auto assign = [&](std::string_view name) {
    return names.Assign(OutputNames::Safe(Named(name)), "");
  };
  names.Reserve(std::string(kIndexFile));
  report_name_ = options_.AddToIndex ? names.Assign(OutputNames::Safe(ReportFileOf(event_)), "")
                                     : std::string(kIndexFile);
  lap_name_ = names.Assign(OutputNames::Safe(LapFileOf(event_)), "");
  iof_name_ = assign("results.xml");
  table_name_ = assign("results.csv");
  if (chart_modes_.empty()) return;
  charts_name_ = assign("charts.html");
  std::size_t number = 0;
  for (ClassAndCourseChoice& choice : model_->Choices()) {
    if (choice.ClassIndex == 0 && !options_.ChartIncludeCourse) break;
    std::string file_name = choice.FileName;
    if (file_name.empty()) file_name = "class" + std::to_string(number + 1);
    ++number;
    chart_entries_.push_back(
        {std::move(choice),
         names.AssignWithPictures(Named("charts_*.html"), file_name, picture_extension_)});
  }
}

std::vector<std::string> ReportSite::FileNames() const {
  std::vector<std::string> names = {report_name_, lap_name_, iof_name_, table_name_};
  if (options_.AddToIndex) names.emplace_back(kIndexFile);
  if (!charts_name_.empty()) names.push_back(charts_name_);
  for (const ChartEntry& entry : chart_entries_) {
    for (const std::int32_t mode : chart_modes_) names.push_back(entry.pictures.Picture(mode));
  }
  for (std::string& name : names) name.insert(0, writer_.Folder());
  return names;
}

// The event that was published in the folder under this prefix before, as far as the index tells.
std::optional<ListedEvent> ReportSite::Published(const Index& index) const {
  if (index.report && index.report->Prefix == event_.Prefix) return index.report;
  const auto found = std::find_if(index.events.begin(), index.events.end(),
                                  [this](const auto& old) { return old.Prefix == event_.Prefix; });
  return found == index.events.end() ? std::nullopt : std::optional(*found);
}

std::string ReportSite::IndexConflict(const Index& index) const {
  if (!index.page) return index.error;
  if (options_.AddToIndex) return IndexConflictOfAdding(index);
  if (index.report) {
    if (index.report->Prefix == event_.Prefix) return "";
    return IndexPath() + " is the report of another event, " + Called(*index.report);
  }
  if (index.is_list) return IndexPath() + " is a list of events";
  return IsIndexOfOnly(*index.page, lap_name_) ? "" : IndexPath() + " holds more than this event";
}

std::string ReportSite::IndexConflictOfAdding(const Index& index) const {
  const auto old = Published(index);
  if (old && !IsSameEvent(*old, event_)) {
    return writer_.Folder() + lap_name_ + " is of another event, " + Called(*old);
  }
  if (!index.report || old) return "";
  const std::string place = writer_.Folder() + ReportFileOf(*index.report);
  return FileExists(place) ? place + " is in the place where the report of " +
                                 Called(*index.report) + " has to go"
                           : "";
}

std::vector<std::string> ReportSite::Conflicts() const {
  std::vector<std::string> conflicts;
  const Index index = ReadIndex(IndexPath());
  if (std::string conflict = IndexConflict(index); !conflict.empty()) {
    conflicts.push_back(std::move(conflict));
  }
  if (Published(index)) return conflicts;
  // Pages that OutputSite made have a copy of the event under the same name.
  const bool has_copy =
      index.page && Contains(*index.page, "<a href=\"" + PercentEncode(lap_name_) + "\"");
  for (const std::string& name : FileNames()) {
    const bool is_known = name == IndexPath() || (has_copy && name == writer_.Folder() + lap_name_);
    if (is_known || !FileExists(name)) continue;
    conflicts.push_back(name + " exists already and was not published with this event");
  }
  return conflicts;
}

void ReportSite::Run(ProgressReport& progress) {
  progress_ = &progress;
  const SkippedLegsKeeper keeper(*model_);
  sets_ = EventSets(*model_);
  steps_ = static_cast<std::int64_t>(chart_entries_.size() + model_->Choices().size() +
                                     model_->Segments.size() + 1);
  CopyEvent();
  MakeCharts();
  if (!options_.ClassicIndex.empty()) Link(ReportLinkKind::kClassicPages, options_.ClassicIndex);
  if (options_.AddToIndex) Link(ReportLinkKind::kEvents, std::string(kIndexFile));
  const std::string report = MakeReport();
  if (options_.AddToIndex) writer_.Write(report_name_, report);
  // The index must not lead to files that were lost when the power failed.
  writer_.SyncAll();
  if (writer_.HasFailed()) return writer_.Report();
  const FileLock lock(writer_.Folder(), {.Tries = 500, .Pause = 0.01});
  if (options_.AddToIndex) {
    AddToIndex();
  } else {
    writer_.Write(report_name_, report, Sync::kNow);
  }
  writer_.Report();
}

void ReportSite::CopyEvent() {
  CopyEventAs(lap_name_, KR_FILETYPE_KELTRUN2, ReportLinkKind::kLapFile);
  CopyEventAs(iof_name_, KR_FILETYPE_IOF_XML_30_RESULT, ReportLinkKind::kIofXml);
  writer_.Attempt("write", table_name_, [&] {
    std::string table(kUtf8Mark);  // by which spreadsheets recognize UTF-8
    AppendResultCsv(table, *model_, {});
    if (writer_.Write(table_name_, table)) Link(ReportLinkKind::kTable, table_name_);
  });
}

void ReportSite::CopyEventAs(const std::string& name, KrLapFileTypeConst type,
                             ReportLinkKind kind) {
  writer_.Attempt("write", name, [&] {
    SetErrorText("");
    const std::string file = writer_.Folder() + name;
    const bool saved = SaveLapFile(*model_, file, type, KR_SAVEMODE_NORMAL, Sync::kLater);
    if (saved && ErrorText().empty()) return Link(kind, name);
    writer_.Note(ErrorText());
  });
}

void ReportSite::MakeCharts() {
  // Courses share their runners with the classes, and analyzing writes to the runners' records.
  const auto first_course =
      std::find_if(chart_entries_.begin(), chart_entries_.end(),
                   [](const ChartEntry& entry) { return entry.choice.ClassIndex == 0; });
  const auto classes = static_cast<std::size_t>(first_course - chart_entries_.begin());
  MakeCharts(0, classes);
  MakeCharts(classes, chart_entries_.size());
  if (chart_groups_.empty()) return;
  std::string page;
  AppendPicturePage(page, model_->Event->EventName, PercentEncode(report_name_), chart_groups_,
                    kPictureWidth, kPictureHeight);
  if (writer_.Write(charts_name_, page)) Link(ReportLinkKind::kCharts, charts_name_);
}

// Makes the charts of the entries from `begin` to the one before `end` on several threads. Groups,
// failures and progress come in the order of the entries.
void ReportSite::MakeCharts(std::size_t begin, std::size_t end) {
  struct Outcome {
    FolderWriter writer;
    PictureGroup group;
  };
  const std::size_t count = end - begin;
  const std::size_t threads = ThreadCount(options_.Jobs, count, kJobsOption);
  std::vector<Outcome> outcomes(count, Outcome{writer_.Helper(), {}});
  std::vector<ChartCanvas> canvases(threads);
  RunInOrder(
      count, threads,
      [&](std::size_t job, std::size_t worker) {
        Outcome& outcome = outcomes[job];
        const ChartEntry& entry = chart_entries_[begin + job];
        outcome.writer.Attempt("analyze", entry.choice.ValueName, [&] {
          DrawCharts(entry, canvases[worker], outcome.writer, outcome.group);
        });
      },
      [&](std::size_t job) {
        writer_.Take(outcomes[job].writer);
        PictureGroup& group = outcomes[job].group;
        if (!group.Pictures.empty()) chart_groups_.push_back(std::move(group));
        Advance();
      });
}

void ReportSite::DrawCharts(const ChartEntry& entry, ChartCanvas& canvas, FolderWriter& writer,
                            PictureGroup& group) {
  const auto analyzer = Analyze(entry);
  if (analyzer->Count() == 0) return;
  group.Name = entry.choice.ValueName;
  for (const std::int32_t mode : chart_modes_) {
    if (mode == KR_CHART_REALTIME && !HasStartTimes(*analyzer)) continue;
    if (mode == KR_CHART_VESMER && !HasMap(*analyzer)) continue;
    const std::string name = entry.pictures.Picture(mode);
    writer.Attempt("draw", writer.Folder() + name, [&] {
      canvas.Draw(analyzer, static_cast<KrChartModeConst>(mode), options_.ChartFormat);
      if (!writer.Write(name, canvas.picture->Encode())) return;
      group.Pictures.push_back({name, ResourceText("RES_CHART_MODE_" + std::to_string(mode))});
    });
  }
}

std::shared_ptr<clsAnalyzer> ReportSite::Analyze(const ChartEntry& entry) {
  auto analyzer = std::make_shared<clsAnalyzer>();
  const auto classes = sets_.ClassesOf(entry.choice);
  {
    const std::lock_guard lock(records_);
    sets_.AddRunners(*analyzer, entry.choice, classes);
    analyzer->SetUntimedLegs(options_.UntimedLegs);
    analyzer->Execute();
  }
  if (analyzer->Count() == 0) return analyzer;
  const std::int32_t course_number =
      entry.choice.ClassIndex == 0 ? entry.choice.CourseNum : classes.front()->CourseNum;
  const auto course = model_->CourseByNumber(course_number);
  if (course && course->ControlCount() >= analyzer->ControlCount) analyzer->SetCourseData(course);
  analyzer->ExtraAnalyze();
  if (chart_modes_.contains(KR_CHART_VESMER) && HasMap(*analyzer)) analyzer->Vesmer();
  return analyzer;
}

std::string ReportSite::MakeReport() {
  surroundings_.OfficialSite = options_.OfficialSite;
  surroundings_.Publication = TextOfEvent(event_);
  const auto make_set = [this](const std::string& name, const std::function<void()>& step) {
    writer_.Attempt("show", name, step);
    Advance();
  };
  const auto estimate = EstimateInternal::Make(*model_, untimed_);
  std::string page;
  AppendReportPage(page, *model_, ReportSets(*model_, options_.UntimedLegs, make_set),
                   estimate.get(), surroundings_);
  return page;
}

// Another program may add its event to the same index at this moment, so the index is read again
// under the lock.
void ReportSite::AddToIndex() {
  Index index = ReadIndex(IndexPath());
  if (!index.error.empty()) return writer_.Note(index.error);
  if (!KeepFormerReport(index)) return;
  AddEvent(index.events, event_);
  std::optional<std::string> page = EventListPage(index.events);
  if (index.page && !index.report) page = PageWithEvents(*index.page, index.events, lap_name_);
  if (page) {
    writer_.Write(std::string(kIndexFile), *page, Sync::kNow);
  } else {
    writer_.Note("cannot add to " + IndexPath() + ": it is in UTF-16");
  }
}

// A report of another event in the place of the index becomes a file of its own and is listed.
bool ReportSite::KeepFormerReport(Index& index) {
  if (!index.report || index.report->Prefix == event_.Prefix) return true;
  index.events = {*index.report};
  return writer_.Write(ReportFileOf(*index.report), *index.page, Sync::kNow);
}

}  // namespace

bool ExportReportSite(const ReportSiteOptions& options, const StartProgress& start_progress) {
  ReportSite site(options);
  SetErrorText("");
  if (!site.Writer().Prepare()) return false;
  if (const auto conflicts = site.Conflicts(); !options.ReplaceOthers && !conflicts.empty()) {
    for (const std::string& conflict : conflicts) site.Writer().Note(conflict);
    site.Writer().Report();
    return false;
  }
  site.Writer().Run(start_progress, [&site](ProgressReport& progress) { site.Run(progress); });
  return true;
}

std::vector<std::string> ReportSiteConflicts(const ReportSiteOptions& options) {
  return ReportSite(options).Conflicts();
}

std::vector<std::string> ReportSiteFiles(const ReportSiteOptions& options) {
  return ReportSite(options).FileNames();
}

}  // namespace keltrun
