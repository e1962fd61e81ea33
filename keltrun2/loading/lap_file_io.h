// Loads and saves lap files, for the file service.
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

/// Starts the progress report of an operation: shows the window and reports 0 percent.
using StartProgress = std::function<std::unique_ptr<ProgressReport>()>;

/// What is to be loaded into the current model.
struct LoadRequest {
  std::string file_name;
  KrLapFileTypeConst type = KR_FILETYPE_AUTODETECT;
  KrLapFileLoadModeCosnt mode = KR_LOADMODE_NORMAL;
  std::string file_data;     // if not empty, used instead of the file; UTF-8
  bool renew_ranks = false;  // when the load adds to an event
  std::optional<Charset> input_charset = std::nullopt;  // of a text file without a byte-order mark
  bool foreign_formats = false;                         // also detect the formats of other programs
  std::int32_t race = 0;  // of several in a file; 0 for the first one with results
  // The bytes of the file, which then only lends its name; they must outlive the call.
  std::optional<std::string_view> file_bytes = std::nullopt;
  // Which lap file of an archive with several is wanted; without one the host's windows ask.
  std::optional<std::string> member = std::nullopt;
};

/// What was loaded.
struct LoadedFile {
  KrLapFileTypeConst type = KR_FILETYPE_UNKNOWN;
  std::string format;  // the name of the format
  std::vector<LoadRemark> remarks;
};

/// Returns whether the file was loaded. If not, the error text says why; it is empty for an unknown
/// type, and for IOF XML 2.0 when the formats of other programs are not asked for. `loaded` gets
/// what the file is and what the reader noticed.
[[nodiscard]] bool LoadLapFile(LoadRequest request, LoadedFile& loaded,
                               const StartProgress& start_progress);

/// Returns whether the file was written. If not, the error text says why. With Sync::kNow the file
/// is on the disk on return. `remarks`, which may be null, gets what the type cannot hold. Without
/// an encoding the file has the usual one of its type; the native file and the plain IOF XML 2.0
/// list have no other.
[[nodiscard]] bool SaveLapFile(const EventModel& model, const std::string& file_name,
                               KrLapFileTypeConst type, KrLapFileSaveModeCosnt mode, Sync sync,
                               std::vector<LoadRemark>* remarks = nullptr,
                               const std::optional<TextEncoding>& encoding = std::nullopt);

/// The bytes of the file that SaveLapFile would write under a name with the ending of the type, and
/// in `remarks` what the type cannot hold. Empty, with an error text, when the file would be too
/// large to be read again or its charset cannot be chosen.
[[nodiscard]] std::optional<std::string> LapFileBytes(const EventModel& model,
                                                      KrLapFileTypeConst type,
                                                      KrLapFileSaveModeCosnt mode,
                                                      const std::optional<TextEncoding>& encoding,
                                                      std::vector<LoadRemark>& remarks);

}  // namespace keltrun
