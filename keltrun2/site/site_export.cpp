#include "keltrun2/site/site_export.h"

#include <algorithm>
#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "keltrun2/analysis/estimate_internal.h"
#include "keltrun2/analysis/untimed_legs.h"
#include "keltrun2/base/automation_error.h"
#include "keltrun2/codec/encodings.h"
#include "keltrun2/config/settings.h"
#include "keltrun2/model/class_data_internal.h"
#include "keltrun2/model/process_state.h"
#include "keltrun2/os/clock.h"
#include "keltrun2/os/file_lock.h"
#include "keltrun2/os/files.h"
#include "keltrun2/report/event_list.h"
#include "keltrun2/report/html_parts.h"
#include "keltrun2/report/index_page.h"
#include "keltrun2/report/report_page.h"
#include "keltrun2/report/viewer_control_page.h"
#include "keltrun2/site/event_sets.h"
#include "keltrun2/site/folder_writer.h"
#include "keltrun2/site/ordered_jobs.h"
#include "keltrun2/site/output_names.h"
#include "keltrun2/site/site_entry.h"
#include "keltrun2/site/skipped_legs_keeper.h"
#include "keltrun2/text/html.h"

namespace keltrun {
namespace {

constexpr std::string_view kOperation = "clsFileControl.OutputHtml";

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

class SiteExport {
 public:
  explicit SiteExport(const SiteOptions& options)
      : options_(options),
        charset_(SiteCharset(options)),
        picture_extension_(PictureExtension(options.ChartFormat, "SiteOptions.ChartFormat")),
        writer_(options.OutputFolder, kOperation),
        model_(CurrentModel()),
        parts_(options, charset_, *model_) {
    CheckedUntimedLegs(options.UntimedLegs, "clsAnalyzer.UntimedLegs");
    ThreadCount(options.Jobs, 0, "SiteOptions.Jobs");
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

  void ExportEntries(std::size_t begin, std::size_t end, ProgressReport& progress);
  void WriteIndex();
  std::string ReplacedPiece() const;

  const SiteOptions& options_;
  const Charset charset_;
  const std::string_view picture_extension_;
  FolderWriter writer_;
  const std::shared_ptr<EventModel> model_;
  SiteParts parts_;  // for the threads that make the entries
  std::vector<Entry> entries_;
  // Names of the single files, "" for one that is not wanted.
  std::string index_name_, lap2_name_, lap1_name_, viewer_name_, viewer_control_name_;
  std::string index_;  // the block of the index page
  PageBuffer page_;
};

void SiteExport::Run(ProgressReport& progress) {
  const SkippedLegsKeeper keeper(*model_);
  MakeEntries();
  AppendIndexHead(index_, *model_->Event, options_.OfficialSite);
  MakeLinksRow();
  MakeNavigation();
  // Courses share their runners with the classes, and analyzing writes to the runners' records.
  const auto first_course =
      std::find_if(entries_.begin(), entries_.end(), [](const auto& e) { return e.IsCourse(); });
  const auto classes = static_cast<std::size_t>(first_course - entries_.begin());
  ExportEntries(0, classes, progress);
  ExportEntries(classes, entries_.size(), progress);
  AppendIndexFoot(index_, Now());
  // The index may contain blocks of other events, and it must not link pages that were lost when
  // the power failed.
  writer_.SyncAll();
  WriteIndex();
  writer_.Report();
}

// Makes the entries from `begin` to the one before `end` on several threads. Rows of the index,
// failures and progress come in the order of the entries.
void SiteExport::ExportEntries(std::size_t begin, std::size_t end, ProgressReport& progress) {
  struct Outcome {
    FolderWriter writer;
    std::string index_row;
  };
  const std::size_t count = end - begin;
  const std::size_t threads = ThreadCount(options_.Jobs, count, "SiteOptions.Jobs");
  std::vector<Outcome> outcomes(count, Outcome{writer_.Helper(), ""});
  std::vector<std::unique_ptr<EntryExport>> workers;
  for (std::size_t i = 0; i < threads; ++i)
    workers.push_back(std::make_unique<EntryExport>(parts_));
  RunInOrder(
      count, threads,
      [&](std::size_t job, std::size_t worker) {
        Outcome& outcome = outcomes[job];
        outcome.index_row = workers[worker]->Export(entries_[begin + job], outcome.writer);
      },
      [&](std::size_t job) {
        writer_.Take(outcomes[job].writer);
        index_ += outcomes[job].index_row;
        progress.Advance(static_cast<std::int64_t>(begin + job + 1),
                         static_cast<std::int64_t>(entries_.size()));
      });
}

std::vector<std::string> SiteExport::FileNames() {
  MakeEntries();
  std::vector<std::string> names = {index_name_, lap2_name_, lap1_name_, viewer_name_,
                                    viewer_control_name_};
  for (const Entry& entry : entries_) {
    names.insert(names.end(), entry.names.begin(), entry.names.end());
    if (!entry.Wants(kChartPage)) continue;
    for (const std::int32_t mode : parts_.ChartModes) names.push_back(entry.charts.Picture(mode));
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
  parts_.Sets = EventSets(*model_);
  OutputNames names;
  NameFiles(names);
  const bool with_courses = std::any_of(kPages.begin(), kPages.end(), [this](const auto& page) {
    return options_.*page.include_course;
  });
  for (ClassAndCourseChoice& choice : model_->Choices()) {
    if (choice.ClassIndex == 0 && !with_courses) break;
    Entry entry;
    entry.classes = parts_.Sets.ClassesOf(choice);
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
      entry.charts = names.AssignWithPictures(pattern, file_name, picture_extension_);
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
  page_.Text.clear();
  // When one of these pages declares no charset, browsers guess Shift-JIS but not UTF-8.
  AppendViewerControlPage(page_.Text, address,
                          charset_ == Charset::kShiftJis ? "" : options_.Charset);
  if (!page_.Write(writer_, name, charset_)) return "";
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
  page_.Text.clear();
  const auto estimate = EstimateInternal::Make(
      *model_, CheckedUntimedLegs(options_.UntimedLegs, "SiteOptions.UntimedLegs"));
  const auto make_set = [this](const std::string& set, const std::function<void()>& step) {
    writer_.Attempt("show", set, step);
  };
  AppendReportPage(page_.Text, *model_, ReportSets(*model_, options_.UntimedLegs, make_set),
                   estimate.get());
  if (!page_.Write(writer_, name, Charset::kUtf8)) return "";
  return LinkInBrackets(name, kNewWindow, "RES_META_VIEWER_LINK");
}

void SiteExport::MakeNavigation() {
  if (options_.ResultFile.empty()) return;
  bool course_seen = false;
  for (const Entry& entry : entries_) {
    if (entry.IsCourse() && !options_.ResultIncludeCourse) break;
    if (entry.IsCourse() && !std::exchange(course_seen, true)) parts_.Navigation += "&nbsp;&nbsp;";
    if (!entry.has_results) continue;
    parts_.Navigation += IndexLink(entry.names[kResultPage], "", entry.choice.ValueName) + " ";
  }
  parts_.Navigation += "<hr>\r\n";
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
    page_.Text = IndexPage(index_, options_.LinkStyleFile, options_.Charset);
    page_.Write(writer_, index_name_, charset_, Sync::kNow);
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
  site.Writer().Run(start_progress, [&site](ProgressReport& progress) { site.Run(progress); });
  return true;
}

}  // namespace keltrun
