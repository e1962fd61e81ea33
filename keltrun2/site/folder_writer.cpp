#include "keltrun2/site/folder_writer.h"

#include "keltrun2/config/settings.h"
#include "keltrun2/model/process_state.h"
#include "keltrun2/os/host_windows.h"
#include "keltrun2/text/cells.h"

namespace keltrun {

bool FolderWriter::Prepare() {
  if (FolderExists(folder_)) return true;
  const bool yes =
      CurrentHostWindows()->AskYesNo(ResourceText("RES_MESSAGE_CREATE_FOLDER_CONFIRM", true),
                                     ResourceText("RES_WINDOW_FILE_EXPORT"));
  if (!yes) {
    SetErrorText(FailureText("RES_MESSAGE_ERROR_HAPPEN", operation_,
                             "the folder " + folder_ + " does not exist and was not created"));
    return false;
  }
  std::string error;
  folder_failed_ = !CreateFolder(folder_, error);
  if (folder_failed_) failures_.push_back(error);
  return true;
}

bool FolderWriter::Write(const std::string& name, std::string_view bytes, Sync sync) {
  std::string error;
  if (WriteFile(folder_ + name, bytes, error, sync)) return true;
  Note(error);
  return false;
}

void FolderWriter::SyncAll() {
  std::string error;
  if (!SyncFileSystem(folder_, error)) Note(error);
}

void FolderWriter::Note(const std::string& failure) {
  if (is_helper_) return failures_.push_back(failure);
  if (folder_failed_) return;
  std::string error;
  folder_failed_ = !CanMakeFiles(folder_, error);
  failures_.push_back(folder_failed_ ? error : failure);
}

FolderWriter FolderWriter::Helper() const {
  FolderWriter helper(folder_, operation_);
  helper.is_helper_ = true;
  return helper;
}

void FolderWriter::Take(const FolderWriter& helper) {
  for (const std::string& failure : helper.failures_) Note(failure);
}

void FolderWriter::Run(const StartProgress& start_progress,
                       const std::function<void(ProgressReport&)>& steps) {
  try {
    const auto progress = start_progress();
    steps(*progress);
    progress->Close();
  } catch (const ProgressHandlerError& error) {
    Report("a Progress handler ended the export");
    std::rethrow_exception(error.cause);
  }
}

void FolderWriter::Report(std::string_view abort) const {
  std::string list(abort);
  for (const std::string& failure : failures_) {
    if (!list.empty()) list += kCrLf;
    list += failure;
  }
  SetErrorText(list.empty() ? "" : FailureText("RES_MESSAGE_ERROR_HAPPEN", operation_, list));
}

}  // namespace keltrun
