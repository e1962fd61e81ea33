#include "keltrun2/c/event.h"

#include <algorithm>
#include <utility>

#include "keltrun2/loading/lap_file_io.h"
#include "keltrun2/loading/progress_report.h"

namespace keltrun::c {
namespace {

KrLapFileLoadModeCosnt MergeMode(const Options& options) {
  auto mode = options.match == "id"     ? KR_LOADMODE_MERGE_ID
              : options.match == "name" ? KR_LOADMODE_MERGE_NAME
                                        : KR_LOADMODE_APPEND;
  if (options.prefer_new) mode = mode | KR_LOADMODE_PRIORITY_NEWDATA;
  if (options.known_only) mode = mode | KR_LOADMODE_NOTADD_NEWDATA;
  return mode;
}

// The text of the remark that nothing of the file could be used, or "". The loader loads such a
// text; who names a file expects something from it.
std::string NothingRead(const std::vector<LoadRemark>& remarks) {
  const auto found = std::find_if(remarks.begin(), remarks.end(), [](const LoadRemark& remark) {
    return remark.Severity == RemarkSeverity::kNothing;
  });
  return found == remarks.end() ? "" : found->Text;
}

}  // namespace

Event::Event() {
  const UseOwnRoots use = Use();
  root_ = std::make_unique<clsKeltrun2>();
}

void Event::Open(const std::string& name, std::string_view bytes) {
  // A load empties the event first, so it is done into a new one.
  const OwnRoots roots_before = std::exchange(roots_, OwnRoots());
  const UseOwnRoots use = Use();
  auto before = std::move(root_);
  auto remarks_before = std::exchange(Remarks, {});
  try {
    root_ = std::make_unique<clsKeltrun2>();
    format_ = Load(name, bytes, KR_LOADMODE_NORMAL);
  } catch (...) {
    root_ = std::move(before);
    roots_ = roots_before;
    Remarks = std::move(remarks_before);
    throw;
  }
}

void Event::Merge(const std::string& name, std::string_view bytes) {
  // The load renames the event after the file.
  const std::string own_name = root_->FileName();
  const DateTime own_date = root_->FileDate();
  try {
    Load(name, bytes, MergeMode(Options));
  } catch (...) {
    root_->SetFileName(own_name);
    root_->SetFileDate(own_date);
    throw;
  }
  root_->SetFileName(own_name);
  root_->SetFileDate(own_date);
}

std::string Event::Load(const std::string& name, std::string_view bytes,
                        KrLapFileLoadModeCosnt mode) {
  const Busy busy;
  if (!busy.Granted()) throw Failure(name + ": another file is being loaded into the event");
  LoadRequest request;
  request.file_name = name.empty() ? "file" : name;
  request.type = Options.input_format;
  request.mode = mode;
  request.renew_ranks = Options.renew_ranks;
  request.input_charset = Options.input_charset;
  request.foreign_formats = true;
  request.race = Options.race;
  request.file_bytes = bytes;
  request.member = Options.member;
  const auto handlers = std::make_shared<ProgressHandlers>();
  if (Progress) handlers->emplace(1, std::make_shared<ProgressHandler>(Progress));
  LoadedFile loaded;
  const bool is_loaded = LoadLapFile(
      request, loaded, [&] { return std::make_unique<ProgressReport>(handlers, false); });
  Remarks = std::move(loaded.remarks);
  if (const std::string nothing = NothingRead(Remarks); !nothing.empty()) {
    throw Failure(name + ": " + nothing);
  }
  if (is_loaded && ErrorText().empty()) return loaded.format;
  const std::string reason = FailureReason(ErrorText());
  throw Failure(reason.find(name) == std::string::npos ? name + ": " + reason : reason);
}

}  // namespace keltrun::c
