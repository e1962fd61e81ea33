// Loading and saving lap files, behind the file service.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/codec/encodings.h"
#include "keltrun2/io/lap_file_types.h"
#include "keltrun2/io/remarks.h"
#include "keltrun2/loading/progress_report.h"
#include "keltrun2/model/event_model.h"
#include "keltrun2/model/load_mode.h"
#include "keltrun2/os/files.h"

namespace keltrun {

/// Starts the report of an operation: shows the window and raises 0 percent.
using StartProgress = std::function<std::unique_ptr<ProgressReport>()>;

/// What is to be loaded into the current model.
struct LoadRequest {
  std::string file_name;
  KrLapFileTypeConst type = KR_FILETYPE_AUTODETECT;
  KrLapFileLoadModeCosnt mode = KR_LOADMODE_NORMAL;
  std::string file_data;     // in place of the file when not empty; UTF-8
  bool renew_ranks = false;  // of an event that the load adds to
  std::optional<Charset> input_charset = std::nullopt;  // of a text file without a byte-order mark
};

/// True when the file was loaded; else the error text says why, or is empty for a type that is only
/// written (IOF XML). `remarks` takes what the reader noticed.
[[nodiscard]] bool LoadLapFile(LoadRequest request, std::vector<LoadRemark>& remarks,
                               const StartProgress& start_progress);

/// True when the file was written; else the error text says why. With Sync::kNow it is on the disk
/// then. `remarks` takes what the type has no place for, unless it is null.
[[nodiscard]] bool SaveLapFile(const EventModel& model, const std::string& file_name,
                               KrLapFileTypeConst type, KrLapFileSaveModeCosnt mode, Sync sync,
                               std::vector<LoadRemark>* remarks = nullptr);

}  // namespace keltrun
