#include "keltrun2/api/lap_file_io.h"

#include <exception>
#include <optional>
#include <utility>

#include "keltrun2/config/settings.h"
#include "keltrun2/io/detect.h"
#include "keltrun2/io/native_reader.h"
#include "keltrun2/io/native_writer.h"
#include "keltrun2/model/class_data_internal.h"
#include "keltrun2/model/process_state.h"
#include "keltrun2/platform/clock.h"
#include "keltrun2/platform/encodings.h"
#include "keltrun2/platform/files.h"

namespace keltrun {
namespace {

constexpr std::string_view kOpenError = "RES_MESSAGE_FILE_OPEN_ERROR";
constexpr std::string_view kSaveError = "RES_MESSAGE_ERROR_HAPPEN";

constexpr std::string_view kDetectOperation = "clsFileControl.DetectFileType";
constexpr std::string_view kExtractArchive = "clsFileControl.ExtractArchive";
constexpr std::string_view kMakeArchive = "clsFileControl.MakeArchive";

// The operation that reads or writes a type, as error texts name it, and what it is called where it
// cannot be read or written yet ("" where it can).
struct Format {
  KrLapFileTypeConst type;
  std::string_view operation;
  std::string_view missing;
};

constexpr Format kReaders[] = {
    {KR_FILETYPE_KELTRUN2, "clsFileControl.LoadKeltrun2", ""},
    {KR_FILETYPE_KELTRUN1, "clsFileControl.LoadKeltrun1",
     "text lap files of the previous generation"},
    {KR_FILETYPE_SPORTIDENT, "clsFileControl.LoadSportIdent", "SPORTident results"},
    {KR_FILETYPE_OEVENT, "clsFileControl.LoadOEvent", "OEvent split times"},
    {KR_FILETYPE_IMPORT_ONLY, "clsFileControl.LoadImportOnly", "import-only files"},
};

constexpr Format kWriters[] = {
    {KR_FILETYPE_KELTRUN2, "clsFileControl.SaveKeltrun2", ""},
    {KR_FILETYPE_KELTRUN1, "clsFileControl.SaveKeltrun1",
     "text lap files of the previous generation"},
    {KR_FILETYPE_IOF_XML_20_RESULT, "clsFileControl.SaveIofXmlResult", "IOF XML result lists"},
};

template <std::size_t N>
const Format* FindFormat(const Format (&formats)[N], KrLapFileTypeConst type) {
  for (const Format& format : formats) {
    if (format.type == type) return &format;
  }
  return nullptr;
}

bool Fail(std::string_view message_key, std::string_view operation, std::string_view description) {
  SetErrorText(FailureText(message_key, operation, description));
  return false;
}

bool FailArchive(std::string_view message_key, std::string_view operation) {
  return Fail(message_key, operation, "this version has no support for LZH archives yet");
}

// The name of the source in error texts.
std::string SourceName(const LoadRequest& request) {
  return request.FileName.empty() ? "FileData" : request.FileName;
}

// The type of the request's text or file; nullopt when the file cannot be read.
std::optional<KrLapFileTypeConst> DetectFileType(LoadRequest& request) {
  const std::string extension = FileExtension(request.FileName);
  if (extension == "xml" || extension == "lxm") return KR_FILETYPE_KELTRUN2;
  KrLapFileTypeConst type;
  if (!request.FileData.empty()) {
    type = DetectTextType(request.FileData);
  } else {
    std::string error;
    const std::optional<std::string> bytes = ReadFile(request.FileName, error);
    if (!bytes) {
      Fail(kOpenError, kDetectOperation, error);
      return std::nullopt;
    }
    type = DetectFileTextType(DecodeTextFile(*bytes), request.FileData);
  }
  if (type == KR_FILETYPE_UNKNOWN) {
    SetErrorText(ResourceText("RES_MESSAGE_FILE_DETECT_ERROR") + "\r\n" +
                 std::string(kDetectOperation));
  }
  return type;
}

// The event and metadata objects stay the same: a host may hold them.
void ApplyHeader(EventModel& model, NativeLapFile& file) {
  *model.Event = std::move(file.Event);
  *model.Meta = std::move(file.Meta);
}

// Hands what was read to the model, class by class.
void FeedModel(EventModel& model, NativeLapFile& file, KrLapFileLoadModeCosnt mode,
               ProgressReport& progress) {
  if (file.FileDate) model.FileDate = *file.FileDate;
  if (mode == KR_LOADMODE_NORMAL) ApplyHeader(model, file);
  for (const auto& course : file.Courses) model.AddCourseObject(course);
  std::int64_t done = 0;
  for (const NativeClass& read : file.Classes) {
    progress.Advance(++done, static_cast<std::int64_t>(file.Classes.size()));
    const auto existing = model.ClassByName(read.Class->ClassName());
    const auto& klass = existing ? existing : read.Class;
    if (!existing) model.AddClassObject(klass);
    LapMerger merger(*klass, mode);
    for (const auto& runner : read.Runners) merger.Add(runner);
  }
}

bool LoadKeltrun2(EventModel& model, const LoadRequest& request, std::string_view operation,
                  ProgressReport& progress) {
  NativeReadResult read;
  if (!request.FileData.empty()) {
    read = ReadNativeLapFile(request.FileData, NativeSource::kText);
  } else {
    std::string error;
    const std::optional<std::string> bytes = ReadFile(request.FileName, error);
    if (!bytes) return Fail(kOpenError, operation, error);
    read = ReadNativeLapFile(*bytes, NativeSource::kFileBytes);
  }
  if (read.Error) {
    return Fail(kOpenError, operation, SourceName(request) + ": " + ToString(*read.Error));
  }
  FeedModel(model, read.File, request.Mode, progress);
  return true;
}

// Reads the file, feeds the model and sorts it. What goes wrong after the reader ends as an error
// of the reader, too.
bool LoadWith(const Format& reader, EventModel& model, const LoadRequest& request,
              const StartProgress& start_progress) {
  if (!reader.missing.empty()) {
    return Fail(kOpenError, reader.operation,
                "this version cannot read " + std::string(reader.missing) + " yet");
  }
  try {
    const auto progress = start_progress();
    const bool loaded = LoadKeltrun2(model, request, reader.operation, *progress);
    progress->Close();
    if (loaded) model.SortLap();
    return loaded;
  } catch (const ProgressHandlerError& error) {
    Fail(kOpenError, reader.operation, "a handler of Progress ended the load");
    std::rethrow_exception(error.Cause);
  } catch (const std::exception& error) {
    return Fail(kOpenError, reader.operation, error.what());
  }
}

bool SaveWith(const Format& writer, const EventModel& model, const std::string& file_name,
              KrLapFileSaveModeCosnt mode) {
  if (!writer.missing.empty()) {
    return Fail(kSaveError, writer.operation,
                "this version cannot write " + std::string(writer.missing) + " yet");
  }
  const std::string bytes = WriteNativeLapFile(model, mode, Now());
  std::string error;
  if (WriteFile(file_name, bytes, error)) return true;
  return Fail(kSaveError, writer.operation, error);
}

KrLapFileTypeConst TypeOfExtension(const std::string& extension) {
  if (extension == "lap") return KR_FILETYPE_KELTRUN1;
  if (extension == "xml") return KR_FILETYPE_IOF_XML_20_RESULT;
  return KR_FILETYPE_KELTRUN2;
}

}  // namespace

std::string FailureText(std::string_view message_key, std::string_view operation,
                        std::string_view description) {
  return ResourceText(message_key) + "\r\n" + std::string(operation) + "\r\n" +
         std::string(description);
}

bool LoadLapFile(LoadRequest request, const StartProgress& start_progress) {
  SetErrorText("");
  const auto model = CurrentModel();
  if (request.Mode == KR_LOADMODE_NORMAL) model->Clear();
  if (request.FileData.size() > kLargestInputFile) {
    return Fail(kOpenError, kDetectOperation, "the text is larger than a lap file can be");
  }
  if (FileExtension(request.FileName) == "lzh") return FailArchive(kOpenError, kExtractArchive);
  if (request.Type == KR_FILETYPE_AUTODETECT) {
    const auto type = DetectFileType(request);
    if (!type || *type == KR_FILETYPE_UNKNOWN) return false;
    request.Type = *type;
  }
  const bool append = (request.Mode & KR_LOADMODE_APPEND) != 0;
  if (request.Type == KR_FILETYPE_IMPORT_ONLY && !append) {
    SetErrorText(ResourceText("RES_MESSAGE_FILE_APPEND_ONLY"));
    return false;
  }
  const Format* reader = FindFormat(kReaders, request.Type);
  if (reader == nullptr || !LoadWith(*reader, *model, request, start_progress)) return false;
  model->FileName = request.FileName;
  return true;
}

bool SaveLapFile(const EventModel& model, const std::string& file_name, KrLapFileTypeConst type,
                 KrLapFileSaveModeCosnt mode) {
  const std::string extension = FileExtension(file_name);
  if (type == KR_FILETYPE_AUTODETECT) type = TypeOfExtension(extension);
  if (extension == "lzh") return FailArchive(kSaveError, kMakeArchive);
  const Format* writer = FindFormat(kWriters, type);
  return SaveWith(writer != nullptr ? *writer : kWriters[0], model, file_name, mode);
}

}  // namespace keltrun
