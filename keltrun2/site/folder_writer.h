// Writes the files of an export into a folder. What fails is noted, and the export goes on.
#pragma once

#include <exception>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/loading/lap_file_io.h"
#include "keltrun2/os/files.h"

namespace keltrun {

class FolderWriter {
 public:
  /// `operation` is the name under which failures are reported.
  FolderWriter(std::string_view folder, std::string_view operation)
      : folder_(WithTrailingSeparator(folder)), operation_(operation) {}

  /// The folder with a separator at its end.
  const std::string& Folder() const { return folder_; }

  /// Creates a missing folder with the user's consent. False, with an error text, without it.
  bool Prepare();

  /// Whether the folder takes no files at all.
  bool HasFailed() const { return folder_failed_; }
  /// Whether anything failed so far.
  bool HasFailures() const { return !failures_.empty(); }

  /// Takes a step; when it throws, notes what could not be done to what, and returns false.
  template <typename Step>
  bool Attempt(std::string_view action, std::string_view name, Step step) {
    try {
      step();
      return true;
    } catch (const std::exception& error) {
      std::string failure = "cannot ";
      failure.append(action).append(" ").append(name).append(": ").append(error.what());
      Note(failure);
      return false;
    }
  }

  /// Writes a file of the folder.
  bool Write(const std::string& name, std::string_view bytes, Sync sync = Sync::kLater);

  /// Waits until everything that was written is on the disk.
  void SyncAll();

  /// Notes a failure. When the folder takes no files at all, one failure says so instead of one for
  /// each file.
  void Note(const std::string& failure);

  /// A writer into the same folder for another thread. It only collects what failed there.
  FolderWriter Helper() const;
  /// Notes what a helper collected.
  void Take(const FolderWriter& helper);

  /// Takes the steps of an export with a report of its progress. When a Progress handler of the
  /// host ends it, reports that, and throws what the handler threw.
  void Run(const StartProgress& start_progress, const std::function<void(ProgressReport&)>& steps);

  /// Puts what failed into the error text, after the reason for which the whole export ended, if
  /// any.
  void Report(std::string_view abort = "") const;

 private:
  std::string folder_;
  std::string operation_;
  std::vector<std::string> failures_;
  bool folder_failed_ = false;
  bool is_helper_ = false;
};

}  // namespace keltrun
