#include "keltrun2/loading/lap_file_io.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <limits>
#include <optional>
#include <utility>

#include "keltrun2/analysis/segment_sets.h"
#include "keltrun2/codec/archive_kind.h"
#include "keltrun2/codec/encodings.h"
#include "keltrun2/codec/lzh_reader.h"
#include "keltrun2/codec/lzh_writer.h"
#include "keltrun2/config/settings.h"
#include "keltrun2/io/detect.h"
#include "keltrun2/io/foreign/formats.h"
#include "keltrun2/io/foreign/iof_writers.h"
#include "keltrun2/io/foreign/table_writers.h"
#include "keltrun2/io/form_losses.h"
#include "keltrun2/io/import_only_reader.h"
#include "keltrun2/io/iof_result_writer.h"
#include "keltrun2/io/keltrun1_reader.h"
#include "keltrun2/io/keltrun1_writer.h"
#include "keltrun2/io/limits.h"
#include "keltrun2/io/native_reader.h"
#include "keltrun2/io/native_writer.h"
#include "keltrun2/io/oevent_reader.h"
#include "keltrun2/io/sportident_reader.h"
#include "keltrun2/io/text_reading.h"
#include "keltrun2/loading/feed_model.h"
#include "keltrun2/loading/input_text.h"
#include "keltrun2/loading/rank_renewal.h"
#include "keltrun2/model/process_state.h"
#include "keltrun2/os/clock.h"
#include "keltrun2/os/files.h"
#include "keltrun2/os/working_folder.h"
#include "keltrun2/text/letters.h"

namespace keltrun {
namespace {

constexpr std::string_view kOpenError = "RES_MESSAGE_FILE_OPEN_ERROR";
constexpr std::string_view kSaveError = "RES_MESSAGE_ERROR_HAPPEN";

constexpr std::string_view kDetectOperation = "clsFileControl.DetectFileType";
constexpr std::string_view kExtractArchive = "clsFileControl.ExtractArchive";
constexpr std::string_view kMakeArchive = "clsFileControl.MakeArchive";

// A type of text file: the operation for error texts, its reader, and what to do with the records.
struct TextFormat {
  KrLapFileTypeConst type;
  std::string_view operation;
  ReadResult (*read)(std::string_view text);
  EventNameRule event_name;
  bool makes_segments;  // every load makes the segment sets anew
};

constexpr TextFormat kTextFormats[] = {
    {KR_FILETYPE_KELTRUN1, "clsFileControl.LoadKeltrun1", ReadKeltrun1, EventNameRule::kNormalLoad,
     false},
    {KR_FILETYPE_SPORTIDENT, "clsFileControl.LoadSportIdent", ReadSportIdent,
     EventNameRule::kAlways, true},
    {KR_FILETYPE_OEVENT, "clsFileControl.LoadOEvent", ReadOEvent, EventNameRule::kIfEmpty, false},
};

constexpr std::size_t kBeginning = 4096;                  // enough to recognize a native lap file
constexpr std::size_t kLookedAt = std::size_t{64} << 10;  // by the detectors of other formats

constexpr std::string_view kLoadForeign = "clsFileControl.LoadForeign";
constexpr std::string_view kLoadKeltrun2 = "clsFileControl.LoadKeltrun2";
constexpr std::string_view kLoadImportOnly = "clsFileControl.LoadImportOnly";

bool Fail(std::string_view message_key, std::string_view operation, std::string_view description) {
  SetErrorText(FailureText(message_key, operation, description));
  return false;
}

// The maximum number of bytes of a file.
std::size_t LargestFile(KrLapFileTypeConst type) {
  return type == KR_FILETYPE_KELTRUN2 ? kLargestNativeFile : kLargestListFile;
}

// Whether a text begins as a native lap file.
bool IsNative(std::string_view text) { return Contains(text.substr(0, kBeginning), "<keltrun"); }

// One load into one model.
class Load {
 public:
  Load(LoadRequest request, LoadedFile& loaded)
      : request_(std::move(request)),
        loaded_(loaded),
        remarks_(loaded.remarks),
        model_(CurrentModel()) {}

  bool Run(const StartProgress& start_progress) {
    if (request_.mode == KR_LOADMODE_NORMAL) model_->Clear();
    if (FileExtension(request_.file_name) == "lzh" && !ExtractLapFile()) return false;
    if (request_.type == KR_FILETYPE_AUTODETECT && !Detect()) return false;
    loaded_.type = request_.type;
    loaded_.format = LapFileTypeName(request_.type);
    if (request_.file_data.size() > LargestFile(request_.type)) {
      return Fail(kOpenError, kDetectOperation, "the text is larger than a lap file can be");
    }
    if (request_.type == KR_FILETYPE_IMPORT_ONLY && (request_.mode & KR_LOADMODE_APPEND) == 0) {
      SetErrorText(ResourceText("RES_MESSAGE_FILE_APPEND_ONLY"));
      return false;
    }
    if (!LoadAndRank(start_progress)) return false;
    model_->FileName = request_.file_name;
    if (request_.mode == KR_LOADMODE_NORMAL) model_->FileFormat = loaded_.format;
    return true;
  }

 private:
  // Unpacks an archive and continues with its lap file. The user chooses if there are several.
  bool ExtractLapFile() {
    std::string error;
    const auto folder = NewExtractionFolder(error);
    if (!folder) return Fail(kOpenError, kExtractArchive, error);
    const auto files = request_.file_bytes ? ExtractArchiveBytes(*request_.file_bytes,
                                                                 request_.file_name, *folder, error)
                                           : ExtractArchive(request_.file_name, *folder, error);
    if (!files) return Fail(kOpenError, kExtractArchive, error);
    std::vector<std::string> names;
    std::vector<std::string> paths;
    for (const ExtractedFile& file : *files) {
      const std::string extension = FileExtension(file.Name);
      if (extension != "lxm" && extension != "lap") continue;
      names.push_back(file.Name);
      paths.push_back(file.Path);
    }
    if (names.empty()) {
      return Fail(kOpenError, kExtractArchive,
                  request_.file_name + " contains no .lxm or .lap file");
    }
    std::optional<std::size_t> chosen = 0;
    if (names.size() > 1) chosen = Choose(names);
    if (!chosen || *chosen >= paths.size()) {
      return Fail(kOpenError, kExtractArchive,
                  request_.file_name + " contains several lap files and none was chosen" +
                      (request_.member ? NamesOf(names) : ""));
    }
    request_.file_name = paths[*chosen];
    request_.file_bytes.reset();
    return true;
  }

  // The position of the lap file that is wanted of those in an archive.
  std::optional<std::size_t> Choose(const std::vector<std::string>& names) const {
    if (!request_.member) return CurrentHostWindows()->ChooseName(request_.file_name, names);
    const auto found = std::find(names.begin(), names.end(), *request_.member);
    if (found == names.end()) return std::nullopt;
    return static_cast<std::size_t>(found - names.begin());
  }

  static std::string NamesOf(const std::vector<std::string>& names) {
    std::string list;
    for (const std::string& name : names) list += (list.empty() ? ": " : ", ") + name;
    return list;
  }

  std::optional<std::string> FileBytes(std::string& error, std::size_t largest) const {
    if (!request_.file_bytes) return ReadFile(request_.file_name, error, largest);
    if (request_.file_bytes->size() <= largest) return std::string(*request_.file_bytes);
    error = request_.file_name + " is larger than " + std::to_string(largest >> 20) + " MiB";
    return std::nullopt;
  }

  // The bytes of the file; nullopt when it cannot be read or is an archive.
  std::optional<std::string> ReadBytes(std::string_view operation, std::size_t largest) const {
    std::string error;
    std::optional<std::string> bytes = FileBytes(error, largest);
    if (bytes && request_.foreign_formats && KindOfContent(*bytes) != ContentKind::kOther) {
      Fail(kOpenError, operation, request_.file_name + ": " + NotResultsText(*bytes));
      return std::nullopt;
    }
    const std::string_view archive = bytes ? KindOfArchive(*bytes) : "";
    if (archive == "LZH") {
      error = request_.file_name + " is an LZH archive: its name has to end in .lzh";
    } else if (!archive.empty()) {
      error = request_.file_name + " is a " + std::string(archive) + " archive: unpack it first";
    }
    if (error.empty()) return bytes;
    Fail(kOpenError, operation, error);
    return std::nullopt;
  }

  // Detects the type. False when the file cannot be read or has no known type.
  bool Detect() {
    if (request_.foreign_formats && !DetectForeign()) return false;
    if (request_.type != KR_FILETYPE_AUTODETECT) return true;
    const std::string extension = FileExtension(request_.file_name);
    if (extension == "xml" || extension == "lxm") {
      request_.type = KR_FILETYPE_KELTRUN2;
      return true;
    }
    if (!request_.file_data.empty()) {
      request_.type = DetectTextType(request_.file_data);
    } else if (!DetectFile()) {
      return false;
    }
    if (request_.type != KR_FILETYPE_UNKNOWN) return true;
    SetErrorText(ResourceText("RES_MESSAGE_FILE_DETECT_ERROR") + ReadableFormats() + "\r\n" +
                 std::string(kDetectOperation));
    return false;
  }

  // A sentence, after a blank, for texts that are no results in any form; empty without the formats
  // of other programs.
  std::string ReadableFormats() const {
    return request_.foreign_formats ? " " + ResourceText("RES_REFUSED_FORMATS") : "";
  }

  // What a reader added before an error stays, so the ranks are renewed after an error as well.
  bool LoadAndRank(const StartProgress& start_progress) {
    if (!request_.renew_ranks || request_.mode == KR_LOADMODE_NORMAL) {
      return LoadByType(start_progress);
    }
    const RankRenewal ranks(*model_);
    const bool loaded = LoadByType(start_progress);
    ranks.Renew(remarks_);
    return loaded;
  }

  // Looks for the formats of other programs; the type stays KR_FILETYPE_AUTODETECT when it is none
  // of them. False when the file cannot be read or is no text.
  bool DetectForeign() {
    std::optional<std::string> bytes;
    if (request_.file_data.empty()) {
      bytes = ReadBytes(kDetectOperation, kLargestNativeFile);
      if (!bytes) return false;
    }
    const std::string_view content = bytes ? std::string_view(*bytes) : request_.file_data;
    if (IsNative(content)) {
      request_.type = KR_FILETYPE_KELTRUN2;
      bytes_ = std::move(bytes);
      return true;
    }
    if (content.size() > kLargestListFile) return true;
    InputText input =
        bytes ? DecodeForeignText(*bytes, request_.input_charset) : HostText(request_.file_data);
    for (const ForeignFormat& format : ForeignFormats()) {
      if (!format.looks_like(std::string_view(input.text).substr(0, kLookedAt))) continue;
      request_.type = format.type;
      input_ = std::move(input);
      return true;
    }
    bytes_ = std::move(bytes);
    return true;
  }

  bool DetectFile() {
    std::optional<std::string> bytes = std::exchange(bytes_, std::nullopt);
    if (!bytes) bytes = ReadBytes(kDetectOperation, kLargestNativeFile);
    if (!bytes) return false;
    const bool is_large = bytes->size() > kLargestListFile;
    input_ = DecodeText(is_large ? std::string_view(*bytes).substr(0, kBeginning) : *bytes,
                        request_.input_charset);
    request_.type = DetectFileTextType(input_->text);
    if (request_.type == KR_FILETYPE_KELTRUN2) {
      bytes_ = std::move(bytes);
      input_.reset();
    } else if (is_large) {
      return Fail(kOpenError, kDetectOperation,
                  request_.file_name + " is larger than a list can be: " +
                      std::to_string(kLargestListFile >> 20) + " MiB");
    }
    return true;
  }

  bool LoadByType(const StartProgress& start_progress) {
    if (request_.type == KR_FILETYPE_KELTRUN2) {
      return Guarded(kLoadKeltrun2, start_progress,
                     [this](ProgressReport& progress) { return LoadNative(progress); });
    }
    if (request_.type == KR_FILETYPE_IMPORT_ONLY) {
      return Guarded(kLoadImportOnly, start_progress,
                     [this](ProgressReport&) { return LoadUpdates(); });
    }
    const ForeignFormat* const foreign = ForeignFormatOf(request_.type);
    if (foreign != nullptr) {
      // Without the formats of other programs, this one is only written.
      const bool is_read =
          request_.type != KR_FILETYPE_IOF_XML_20_RESULT || request_.foreign_formats;
      return is_read && Guarded(kLoadForeign, start_progress, [&](ProgressReport& progress) {
               return LoadForeign(*foreign, progress);
             });
    }
    for (const TextFormat& format : kTextFormats) {
      if (format.type != request_.type) continue;
      return Guarded(format.operation, start_progress,
                     [&](ProgressReport& progress) { return LoadText(format, progress); });
    }
    return false;
  }

  // Reads the file, adds the records to the model and sorts it. An exception is reported like an
  // error of the reader.
  template <typename LoadRecords>
  bool Guarded(std::string_view operation, const StartProgress& start_progress,
               LoadRecords load_records) {
    try {
      const auto progress = start_progress();
      const bool loaded = load_records(*progress);
      progress->Close();
      if (loaded) model_->SortLap();
      return loaded;
    } catch (const ProgressHandlerError& error) {
      Fail(kOpenError, operation, "a handler of Progress ended the load");
      std::rethrow_exception(error.cause);
    } catch (const std::exception& error) {
      return Fail(kOpenError, operation, error.what());
    }
  }

  // What error texts call the source.
  std::string SourceName() const {
    return request_.file_name.empty() ? "FileData" : request_.file_name;
  }

  bool LoadNative(ProgressReport& progress) {
    NativeReadResult read;
    if (!request_.file_data.empty()) {
      read = ReadNativeLapFile(request_.file_data, NativeSource::kText);
    } else {
      if (!bytes_) bytes_ = ReadBytes(kLoadKeltrun2, kLargestNativeFile);
      if (!bytes_) return false;
      read = ReadNativeLapFile(*bytes_, NativeSource::kFileBytes);
    }
    if (read.error) {
      const bool is_native = IsNative(bytes_ ? std::string_view(*bytes_) : request_.file_data);
      return Fail(kOpenError, kLoadKeltrun2,
                  SourceName() + ": " + ToString(*read.error) +
                      (is_native || !request_.foreign_formats ? "" : "." + ReadableFormats()));
    }
    bytes_.reset();
    remarks_ = std::move(read.remarks);
    RemarkList more;
    FeedModel(*model_, read.file, request_.mode, progress, more);
    AddRemarks(more.Take());
    if (request_.mode == KR_LOADMODE_NORMAL) MakeSegments();
    return true;
  }

  void MakeSegments() {
    MakeSegmentSets(*model_);
    if (model_->SegmentRemark.empty()) return;
    remarks_.push_back({0, 0, RemarkSeverity::kWarning, model_->SegmentRemark, ""});
  }

  void AddRemarks(std::vector<LoadRemark> more) {
    std::move(more.begin(), more.end(), std::back_inserter(remarks_));
  }

  // The text of the request or of the file; nullopt when the file cannot be read.
  std::optional<InputText> TakeText(std::string_view operation) {
    if (input_) return std::exchange(input_, std::nullopt);
    if (!request_.file_data.empty()) return HostText(std::move(request_.file_data));
    const std::optional<std::string> bytes = ReadBytes(operation, kLargestListFile);
    if (!bytes) return std::nullopt;
    const auto decode = ForeignFormatOf(request_.type) != nullptr ? DecodeForeignText : DecodeText;
    return decode(*bytes, request_.input_charset);
  }

  // The records of a text file; nullopt when it cannot be opened. They include what was read before
  // an error in the text.
  template <typename ReadText>
  std::optional<ReadResult> Read(std::string_view operation, ReadText read) {
    std::optional<InputText> input = TakeText(operation);
    if (!input) return std::nullopt;
    ReadResult result = read(input->text);
    remarks_ = std::move(result.remarks);
    AddRemarks(std::move(input->remarks));
    return result;
  }

  bool Finish(std::string_view operation, const std::optional<ReadError>& error) const {
    if (!error) return true;
    std::string place;
    if (error->line > 0) place = "line " + std::to_string(error->line);
    if (error->column > 0) place += ", column " + std::to_string(error->column);
    if (!place.empty()) place += ": ";
    return Fail(kOpenError, operation, SourceName() + ": " + place + error->detail);
  }

  bool LoadText(const TextFormat& format, ProgressReport& progress) {
    auto read = Read(format.operation, format.read);
    if (!read) return false;
    const bool has_no_header = read->error && read->error->line == 0;
    if (has_no_header && read->records.classes.empty()) read->error->detail += ReadableFormats();
    RemarkList more;
    FeedModel(*model_, read->records, format.event_name, request_.mode, progress, more);
    AddRemarks(more.Take());
    if (format.makes_segments) MakeSegments();
    return Finish(format.operation, read->error);
  }

  bool LoadForeign(const ForeignFormat& format, ProgressReport& progress) {
    const auto read = Read(
        kLoadForeign, [&](std::string_view text) { return format.read(text, {request_.race}); });
    if (!read) return false;
    if (!read->format.empty()) loaded_.format = read->format;
    RemarkList more;
    FeedModel(*model_, read->records, EventNameRule::kNormalLoad, request_.mode, progress, more);
    AddRemarks(more.Take());
    MakeSegments();
    return Finish(kLoadForeign, read->error);
  }

  bool LoadUpdates() {
    const auto read = Read(kLoadImportOnly, ReadImportOnly);
    if (!read) return false;
    RemarkList more;
    ApplyUpdates(*model_, read->records.updates, request_.mode, more);
    AddRemarks(more.Take());
    return Finish(kLoadImportOnly, read->error);
  }

  LoadRequest request_;
  std::optional<std::string> bytes_;  // of the file, read to detect its type
  std::optional<InputText> input_;    // of a text file whose type was detected
  LoadedFile& loaded_;
  std::vector<LoadRemark>& remarks_;
  const std::shared_ptr<EventModel> model_;
};

// The bytes of a saved event, and what is needed to write them.
struct SavedFile {
  std::string_view operation;
  std::string_view extension;
  std::size_t largest;  // the maximum number of bytes that can be read again
  std::string bytes;
};

constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();

// A form for other programs.
struct ExchangeForm {
  KrLapFileTypeConst type;
  std::string_view operation;
  std::string_view extension;
  bool is_xml;
  void (*append)(std::string& out, const EventModel& model, const IofOptions& options);
};

template <void (*append)(std::string&, const EventModel&)>
void AppendTable(std::string& out, const EventModel& model, const IofOptions& /*options*/) {
  append(out, model);
}

constexpr ExchangeForm kExchangeForms[] = {
    {KR_FILETYPE_IOF_XML_30_RESULT, "clsFileControl.SaveIofXml3", ".xml", true, AppendIofXml3},
    {KR_FILETYPE_IOF_XML_20_EXCHANGE, "clsFileControl.SaveIofXml2", ".xml", true, AppendIofXml2},
    {KR_FILETYPE_SPLITSBROWSER_CSV, "clsFileControl.SaveSplitsBrowser", ".csv", false,
     AppendTable<AppendSplitsBrowserEvent>},
    {KR_FILETYPE_WINSPLITS_TEXT, "clsFileControl.SaveWinSplits", ".txt", false,
     AppendTable<AppendWinSplits>},
    {KR_FILETYPE_OE_CSV, "clsFileControl.SaveOe2010", ".csv", false, AppendTable<AppendOe2010>},
};

// Minutes that the computer's zone is ahead of UTC at noon of the event, or now without a date.
std::int32_t UtcOffsetOfEvent(const EventModel& model) {
  const DateTime date = model.Event->EventDate()->Value();
  return UtcOffset(date != 0 ? date + 0.5 : Now());
}

SavedFile WriteExchangeForm(const ExchangeForm& form, const EventModel& model,
                            TextEncoding encoding) {
  const IofOptions options = {Now(), UtcOffsetOfEvent(model), XmlEncodingName(encoding.charset)};
  std::string text;
  form.append(text, model, options);
  const auto missing =
      form.is_xml ? MissingCharacter::kCharacterReference : MissingCharacter::kQuestionMark;
  return {form.operation, form.extension, kNoLimit, EncodeText(std::move(text), encoding, missing)};
}

const ExchangeForm* FindExchangeForm(KrLapFileTypeConst type) {
  const auto found = std::find_if(std::begin(kExchangeForms), std::end(kExchangeForms),
                                  [&](const ExchangeForm& form) { return form.type == type; });
  return found == std::end(kExchangeForms) ? nullptr : found;
}

bool HasFixedCharset(KrLapFileTypeConst type) {
  return type != KR_FILETYPE_KELTRUN1 && FindExchangeForm(type) == nullptr;
}

SavedFile Write(const EventModel& model, KrLapFileTypeConst type, KrLapFileSaveModeCosnt mode,
                const std::optional<TextEncoding>& encoding) {
  if (type == KR_FILETYPE_KELTRUN1) {
    return {
        "clsFileControl.SaveKeltrun1", ".lap", LargestFile(type),
        EncodeText(WriteKeltrun1LapFile(model), encoding.value_or(TextEncoding{Charset::kShiftJis}),
                   MissingCharacter::kQuestionMark)};
  }
  if (type == KR_FILETYPE_IOF_XML_20_RESULT) {
    return {"clsFileControl.SaveIofXmlResult", ".xml", kNoLimit, WriteIofXmlResult(model, Now())};
  }
  if (const ExchangeForm* const form = FindExchangeForm(type)) {
    return WriteExchangeForm(*form, model, encoding.value_or(TextEncoding{}));
  }
  return {"clsFileControl.SaveKeltrun2", ".lxm", LargestFile(KR_FILETYPE_KELTRUN2),
          WriteNativeLapFile(model, mode, Now())};
}

// A file that is too large to be read again must not replace another.
bool WriteOrFail(std::string_view operation, const std::string& name, std::string_view bytes,
                 std::size_t largest, Sync sync) {
  std::string error;
  if (bytes.size() > largest) {
    error = "cannot write " + name + ": it would be larger than " + std::to_string(largest >> 20) +
            " MiB, the maximum that can be read again";
    return Fail(kSaveError, operation, error);
  }
  return WriteFile(name, bytes, error, sync) || Fail(kSaveError, operation, error);
}

// Writes the lap file into the working folder and, from memory, into the archive. Returns whether
// the lap file was written. If the archive cannot be written, an older one stays and the error text
// is set.
bool SaveArchive(const std::string& archive_name, const SavedFile& file, Sync sync) {
  std::string error;
  const std::string_view archive = FileNamePart(archive_name);
  const std::string name =
      std::string(archive.substr(0, archive.rfind('.'))) + std::string(file.extension);
  const auto lap_file = NewWorkingFile(name, error);
  if (!lap_file) return Fail(kSaveError, kMakeArchive, error);
  const std::size_t largest = std::min(file.largest, ExtractionLimits().MemberBytes);
  if (!WriteOrFail(file.operation, *lap_file, file.bytes, largest, Sync::kLater)) return false;
  WriteOrFail(kMakeArchive, archive_name, MakeLzhArchive(name, file.bytes, Now()), kLargestListFile,
              sync);
  return true;
}

KrLapFileTypeConst TypeOfExtension(const std::string& extension) {
  if (extension == "lap") return KR_FILETYPE_KELTRUN1;
  if (extension == "xml") return KR_FILETYPE_IOF_XML_20_RESULT;
  return KR_FILETYPE_KELTRUN2;
}

}  // namespace

bool LoadLapFile(LoadRequest request, LoadedFile& loaded, const StartProgress& start_progress) {
  SetErrorText("");
  loaded = {};
  return Load(std::move(request), loaded).Run(start_progress);
}

std::optional<std::string> LapFileBytes(const EventModel& model, KrLapFileTypeConst type,
                                        KrLapFileSaveModeCosnt mode,
                                        const std::optional<TextEncoding>& encoding,
                                        std::vector<LoadRemark>& remarks) {
  constexpr std::string_view kOperation = "clsFileControl.SaveLapFile";
  remarks.clear();
  if (encoding && HasFixedCharset(type)) {
    Fail(kSaveError, kOperation, "the charset of this format cannot be chosen");
    return std::nullopt;
  }
  SavedFile file = Write(model, type, mode, encoding);
  if (file.bytes.size() > file.largest) {
    Fail(kSaveError, kOperation,
         "the file would be larger than " + std::to_string(file.largest >> 20) +
             " MiB, the maximum that can be read again");
    return std::nullopt;
  }
  remarks = FormLosses(model, type, encoding);
  return std::move(file.bytes);
}

bool SaveLapFile(const EventModel& model, const std::string& file_name, KrLapFileTypeConst type,
                 KrLapFileSaveModeCosnt mode, Sync sync, std::vector<LoadRemark>* remarks,
                 const std::optional<TextEncoding>& encoding) {
  if (remarks != nullptr) remarks->clear();
  const std::string extension = FileExtension(file_name);
  if (type == KR_FILETYPE_AUTODETECT) type = TypeOfExtension(extension);
  if (encoding && HasFixedCharset(type)) {
    return Fail(kSaveError, "clsFileControl.SaveLapFile",
                "cannot write " + file_name + ": the charset of this format cannot be chosen");
  }
  const SavedFile file = Write(model, type, mode, encoding);
  const bool saved = extension == "lzh"
                         ? SaveArchive(file_name, file, sync)
                         : WriteOrFail(file.operation, file_name, file.bytes, file.largest, sync);
  if (saved && remarks != nullptr) *remarks = FormLosses(model, type, encoding);
  return saved;
}

}  // namespace keltrun
