#include "keltrun2/api/site_export.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/analysis/data_set_internal.h"
#include "keltrun2/analysis/results_holder.h"
#include "keltrun2/api/output_names.h"
#include "keltrun2/api/skipped_legs_keeper.h"
#include "keltrun2/config/settings.h"
#include "keltrun2/model/class_data_internal.h"
#include "keltrun2/model/process_state.h"
#include "keltrun2/platform/clock.h"
#include "keltrun2/platform/encodings.h"
#include "keltrun2/platform/files.h"
#include "keltrun2/report/analysis_page.h"
#include "keltrun2/report/html_parts.h"
#include "keltrun2/report/index_page.h"
#include "keltrun2/report/result_page.h"

namespace keltrun {
namespace {

constexpr std::string_view kOperation = "clsFileControl.OutputHtml";
constexpr std::string_view kCharsetName = "x-sjis";
constexpr Charset kCharset = Charset::kShiftJis;
constexpr std::string_view kNewWindow = " target=\"_blank\"";

// A class or course of the site with the names of its pages.
struct Entry {
  ClassAndCourseChoice choice;
  std::vector<std::shared_ptr<clsClassData>> classes;
  std::string result_name;  // "" when the page is not asked for
  std::string analysis_name;
  bool has_results = false;  // somebody has a result, so that there is a result list

  bool IsCourse() const { return choice.ClassIndex == 0; }
};

bool HasResults(const std::vector<std::shared_ptr<clsClassData>>& classes) {
  return std::any_of(classes.begin(), classes.end(), [](const auto& klass) {
    const auto& runners = ClassDataInternal::Runners(*klass);
    return std::any_of(runners.begin(), runners.end(),
                       [](const auto& runner) { return !runner->Result().empty(); });
  });
}

class SiteExport {
 public:
  explicit SiteExport(const SiteOptions& options)
      : options_(options),
        folder_(WithTrailingSeparator(options.OutputFolder)),
        model_(CurrentModel()) {}

  bool PrepareFolder();
  void Run(ProgressReport& progress);

 private:
  void MakeEntries();
  std::vector<std::shared_ptr<clsClassData>> ClassesOf(const ClassAndCourseChoice& choice) const;
  void MakeLapFileCopies();
  std::string MakeLapFileCopy(const std::string& name, KrLapFileTypeConst type,
                              std::string_view text_key);
  void MakeNavigation();
  void ExportEntry(const Entry& entry);
  template <typename Export>
  std::string Attempt(const std::string& name, Export export_page);
  std::string ExportResultPage(const Entry& entry);
  std::string ExportAnalysisPage(const Entry& entry);
  void AddIndexRow(const Entry& entry, const std::string& links);
  void WriteIndex();

  bool WritePage(const std::string& name);
  bool WriteBytes(const std::string& name, std::string_view bytes);
  void ReportFailures() const;

  const SiteOptions& options_;
  const std::string folder_;
  const std::shared_ptr<EventModel> model_;
  std::unordered_map<std::int32_t, std::vector<std::shared_ptr<clsClassData>>> classes_of_course_;
  std::vector<Entry> entries_;
  std::string index_;       // the block of the index page
  std::string navigation_;  // above every result list
  clsAnalyzer analyzer_;
  clsResultsHolder results_;
  std::string page_;   // the page in the making, its memory kept from page to page
  std::string bytes_;  // the page in the bytes of its charset, likewise
  std::vector<std::string> failures_;
};

// A missing folder is created only with the user's consent.
bool SiteExport::PrepareFolder() {
  if (FolderExists(folder_)) return true;
  const bool yes =
      CurrentHostWindows()->AskYesNo(ResourceText("RES_MESSAGE_CREATE_FOLDER_CONFIRM", true),
                                     ResourceText("RES_WINDOW_FILE_EXPORT"));
  if (!yes) {
    SetErrorText(FailureText("RES_MESSAGE_ERROR_HAPPEN", kOperation,
                             "the folder " + folder_ + " does not exist and was not created"));
    return false;
  }
  std::string error;
  if (!CreateFolder(folder_, error)) failures_.push_back(error);
  return true;
}

void SiteExport::Run(ProgressReport& progress) {
  const SkippedLegsKeeper keeper(*model_);
  MakeEntries();
  AppendIndexHead(index_, *model_->Event, options_.OfficialSite);
  MakeLapFileCopies();
  MakeNavigation();
  std::int64_t done = 0;
  for (const Entry& entry : entries_) {
    ExportEntry(entry);
    progress.Advance(++done, static_cast<std::int64_t>(entries_.size()));
  }
  AppendIndexFoot(index_, Now());
  WriteIndex();
  ReportFailures();
}

void SiteExport::MakeEntries() {
  for (const auto& klass : model_->Classes()) {
    classes_of_course_[klass->CourseNum].push_back(klass);
  }
  OutputNames names;
  for (const std::string& fixed :
       {options_.IndexFile, options_.Lap1File, options_.Lap2File, options_.LinkStyleFile}) {
    if (!fixed.empty()) names.Reserve(OutputNames::Safe(fixed));
  }
  for (ClassAndCourseChoice& choice : model_->Choices()) {
    if (choice.ClassIndex == 0 && !options_.WalkCourses) break;
    std::string file_name = choice.FileName;
    if (file_name.empty()) file_name = "class" + std::to_string(entries_.size() + 1);
    Entry entry;
    entry.classes = ClassesOf(choice);
    entry.has_results = HasResults(entry.classes);
    entry.result_name = names.Assign(options_.ResultFile, file_name);
    entry.analysis_name = names.Assign(options_.AnalysisFile, file_name);
    entry.choice = std::move(choice);
    entries_.push_back(std::move(entry));
  }
}

// The class of an entry, or all classes of its course.
std::vector<std::shared_ptr<clsClassData>> SiteExport::ClassesOf(
    const ClassAndCourseChoice& choice) const {
  if (choice.ClassIndex != 0) return {model_->ClassAt(choice.ClassIndex)};
  if (choice.CourseNum <= 0) return {};  // no course that a data set can be made of
  return classes_of_course_.at(choice.CourseNum);
}

std::string SiteExport::MakeLapFileCopy(const std::string& name, KrLapFileTypeConst type,
                                        std::string_view text_key) {
  if (name.empty()) return "";
  const std::string safe = OutputNames::Safe(name);
  if (!SaveLapFile(*model_, folder_ + safe, type, KR_SAVEMODE_NORMAL)) {
    failures_.push_back(ErrorText());
    return "";
  }
  return "&nbsp;[" + IndexLink(safe, "", ResourceText(text_key)) + "]";
}

void SiteExport::MakeLapFileCopies() {
  const std::string links =
      MakeLapFileCopy(options_.Lap1File, KR_FILETYPE_KELTRUN1, "RES_META_KELTRUN_DATA") +
      MakeLapFileCopy(options_.Lap2File, KR_FILETYPE_KELTRUN2, "RES_META_KELTRUN2_DATA");
  if (!links.empty()) AppendIndexLinksRow(index_, links);
}

void SiteExport::MakeNavigation() {
  if (options_.ResultFile.empty()) return;
  bool course_seen = false;
  for (const Entry& entry : entries_) {
    if (entry.IsCourse() && !options_.ResultIncludeCourse) break;
    if (entry.IsCourse() && !std::exchange(course_seen, true)) navigation_ += "&nbsp;&nbsp;";
    if (!entry.has_results) continue;
    navigation_ += IndexLink(entry.result_name, "", entry.choice.ValueName) + " ";
  }
  navigation_ += "<hr>\r\n";
}

void SiteExport::ExportEntry(const Entry& entry) {
  results_.Clear();
  analyzer_.Clear();
  const std::string links = Attempt(entry.result_name, [&] { return ExportResultPage(entry); }) +
                            Attempt(entry.analysis_name, [&] { return ExportAnalysisPage(entry); });
  if (!links.empty()) AddIndexRow(entry, links);
}

// A page that cannot be made (of a class with more controls than the analysis holds, say) is a page
// less, and the export goes on.
template <typename Export>
std::string SiteExport::Attempt(const std::string& name, Export export_page) {
  try {
    return export_page();
  } catch (const std::exception& error) {
    failures_.push_back("cannot make " + folder_ + name + ": " + error.what());
    return "";
  }
}

std::string SiteExport::ExportResultPage(const Entry& entry) {
  if (entry.result_name.empty() || (entry.IsCourse() && !options_.ResultIncludeCourse)) return "";
  DataSetInternal::AddClasses(results_, entry.classes);
  results_.CalcRank();
  if (results_.Count() == 0) return "";
  page_.clear();
  AppendResultPage(page_, results_, navigation_, options_.LinkStyleFile, kCharsetName);
  if (!WritePage(entry.result_name)) return "";
  return "&nbsp;" + IndexLink(entry.result_name, kNewWindow, ResourceText("RES_META_RESULT_LIST"));
}

std::string SiteExport::ExportAnalysisPage(const Entry& entry) {
  if (entry.analysis_name.empty()) return "";
  DataSetInternal::AddClasses(analyzer_, entry.classes);
  analyzer_.Execute();
  if (analyzer_.Count() == 0 || (entry.IsCourse() && !options_.AnalysisIncludeCourse)) return "";
  page_.clear();
  AppendAnalysisPage(page_, *model_, analyzer_, options_.LinkStyleFile, kCharsetName);
  if (!WritePage(entry.analysis_name)) return "";
  return "&nbsp;" +
         IndexLink(entry.analysis_name, kNewWindow, ResourceText("RES_META_SPLITS_ANALYSIS"));
}

// The winner is the first of the result list, or without one of the analysis.
void SiteExport::AddIndexRow(const Entry& entry, const std::string& links) {
  const std::string class_info = analyzer_.ClassInfo();
  std::string name;
  std::string result;
  if (const auto winner = results_.Item(1)) {
    name = winner->RunnerName;
    result = winner->Result();
  } else if (const auto first = analyzer_.Item(1)) {
    name = first->RunnerName();
    result = first->Result();
  }
  AppendIndexRow(index_, {entry.choice.ValueName, links, class_info, name, result});
}

bool SiteExport::WriteBytes(const std::string& name, std::string_view bytes) {
  std::string error;
  if (WriteFile(folder_ + name, bytes, error)) return true;
  failures_.push_back(error);
  return false;
}

bool SiteExport::WritePage(const std::string& name) {
  bytes_.clear();
  page_ += kCrLf;
  bytes_.reserve(page_.size());
  AppendEncoded(bytes_, page_, kCharset, MissingCharacter::kCharacterReference);
  return WriteBytes(name, bytes_);
}

void SiteExport::WriteIndex() {
  if (options_.IndexFile.empty()) return;
  const std::string name = OutputNames::Safe(options_.IndexFile);
  if (!options_.IndexFileAddMode || !FileExists(folder_ + name)) {
    page_ = IndexPage(index_, options_.LinkStyleFile, kCharsetName);
    WritePage(name);
    return;
  }
  std::string error;
  const std::optional<std::string> existing = ReadFile(folder_ + name, error);
  if (!existing) {
    failures_.push_back(error);
    return;
  }
  // The block has to be in the bytes of the page that takes it in.
  const Charset charset = CharsetFromName(DeclaredCharset(*existing)).value_or(kCharset);
  bytes_.clear();
  AppendEncoded(bytes_, index_, charset, MissingCharacter::kCharacterReference);
  WriteBytes(name, InsertIndexBlock(*existing, bytes_));
}

void SiteExport::ReportFailures() const {
  std::string list;
  for (const std::string& failure : failures_) {
    if (!list.empty()) list += kCrLf;
    list += failure;
  }
  SetErrorText(list.empty() ? "" : FailureText("RES_MESSAGE_ERROR_HAPPEN", kOperation, list));
}

}  // namespace

bool ExportSite(const SiteOptions& options, const StartProgress& start_progress) {
  SetErrorText("");
  SiteExport site(options);
  if (!site.PrepareFolder()) return false;
  try {
    const auto progress = start_progress();
    site.Run(*progress);
    progress->Close();
  } catch (const ProgressHandlerError& error) {
    SetErrorText(FailureText("RES_MESSAGE_ERROR_HAPPEN", kOperation,
                             "a handler of Progress ended the export"));
    std::rethrow_exception(error.Cause);
  }
  return true;
}

}  // namespace keltrun
