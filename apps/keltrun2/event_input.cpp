#include "apps/keltrun2/event_input.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "apps/keltrun2/command_error.h"
#include "apps/keltrun2/display_text.h"
#include "apps/keltrun2/files.h"
#include "apps/keltrun2/words.h"

namespace keltrun::cli {
namespace {

constexpr char kStandardInput[] = "standard input";
constexpr std::size_t kShownOfKind = 5;  // remarks

// The name that data from a pipe would have as a file: its ending distinguishes archives and XML
// from texts, which are recognized by their content.
std::string NameForContent(std::string_view bytes) {
  constexpr std::string_view kMarksAndBlanks = "\xEF\xBB\xBF\xFF\xFE \t\r\n\0";
  const std::size_t begin = bytes.find_first_not_of(std::string_view(kMarksAndBlanks.data(), 10));
  const bool xml = begin != std::string_view::npos && bytes[begin] == '<';
  const bool archive = bytes.substr(2, 3) == "-lh" && bytes.substr(6, 1) == "-";
  return std::string(kStandardInput) + (archive ? ".lzh" : xml ? ".lxm" : ".txt");
}

// Standard input as a file, because only files may be in any charset or be archives.
class StandardInputFile {
 public:
  StandardInputFile() {
    const std::string bytes = ReadStandardInput();
    if (bytes.empty()) throw CommandError("standard input is empty");
    std::error_code none;
    folder_ = (std::filesystem::temp_directory_path(none) / "keltrun2-XXXXXX").string();
    if (mkdtemp(folder_.data()) == nullptr) {
      throw CommandError("cannot make a folder for standard input, " + folder_ + ": " +
                         std::strerror(errno) + "; set TMPDIR to another folder");
    }
    name_ = NameForContent(bytes);
    WriteOutput(Path(), bytes);
  }
  ~StandardInputFile() {
    std::error_code none;
    std::filesystem::remove_all(folder_, none);
  }
  StandardInputFile(const StandardInputFile&) = delete;
  StandardInputFile& operator=(const StandardInputFile&) = delete;

  const std::string& Name() const { return name_; }
  std::string Path() const { return folder_ + "/" + name_; }

  // A text with "standard input" in place of the file, whose name means nothing to the user.
  std::string WithoutPath(std::string text) const {
    for (std::size_t at; (at = text.find(Path())) != std::string::npos;) {
      text.replace(at, Path().size(), kStandardInput);
    }
    return text;
  }

 private:
  std::string folder_, name_;
};

// Shows the component's windows as before, but answers which lap file of an archive is wanted.
class MemberWindows : public HostWindows {
 public:
  explicit MemberWindows(std::string member)
      : member_(std::move(member)), others_(CurrentHostWindows()) {}

  std::unique_ptr<frmProgressBar> OpenProgress(std::string_view caption) override {
    return others_->OpenProgress(caption);
  }
  std::optional<std::size_t> ChooseName(std::string_view caption,
                                        const std::vector<std::string>& names) override {
    if (member_.empty()) return Ask(caption, names);
    for (std::size_t i = 0; i < names.size(); ++i) {
      if (names[i] == member_) return i;
    }
    ListNames("there is no \"" + member_ + "\" in it; the lap files are", names);
  }
  bool AskYesNo(std::string_view text, std::string_view title) override {
    return others_->AskYesNo(text, title);
  }

 private:
  std::optional<std::size_t> Ask(std::string_view caption, const std::vector<std::string>& names) {
    const auto chosen = others_->ChooseName(caption, names);
    if (chosen) return chosen;
    ListNames("it contains several lap files: choose one with --member", names);
  }

  [[noreturn]] static void ListNames(std::string text, const std::vector<std::string>& names) {
    for (const std::string& name : names) text += "\n  " + name;
    throw CommandError(text);
  }

  std::string member_;
  std::shared_ptr<HostWindows> others_;
};

// Removes the remark that nothing of the file could be used and returns its text, or "". The
// library loads such a text; a user who names a file to merge expects something from it.
std::string TakeNothingRead(std::vector<LoadRemark>& remarks) {
  const auto found = std::find_if(remarks.begin(), remarks.end(), [](const LoadRemark& remark) {
    return remark.Severity == RemarkSeverity::kNothing;
  });
  if (found == remarks.end()) return "";
  std::string text = std::move(found->Text);
  remarks.erase(found);
  return text;
}

// The type that the options name for the event, or for what is merged into it.
KrLapFileTypeConst TypeOf(KrLapFileLoadModeCosnt mode, const Options& options) {
  const bool is_named =
      !options.input_format.empty() && (options.import_file.empty() || mode != KR_LOADMODE_NORMAL);
  return is_named ? LapFileTypeOfWord(options.input_format) : KR_FILETYPE_AUTODETECT;
}

// `name` is what the user calls the file.
void LoadFile(clsKeltrun2& root, const std::string& file, const std::string& name,
              KrLapFileLoadModeCosnt mode, const Options& options, RemarkDisplay show) {
  const auto& files = root.FileControl();
  files->SetInputCharset(options.input_charset);
  files->SetForeignFormats(true);
  files->SetRace(options.race);
  files->SetProgressVisible(!options.quiet);  // shows nothing where there is no terminal
  SetHostWindows(std::make_shared<MemberWindows>(options.member));
  const bool loaded = files->LoadLapFile(file, TypeOf(mode, options), mode);
  std::vector<LoadRemark> remarks = files->LoadRemarks();
  const std::string nothing_read = TakeNothingRead(remarks);
  if (!options.quiet && show == RemarkDisplay::kShow) ShowRemarks(remarks, name);
  if (!nothing_read.empty()) throw CommandError(name + ": " + nothing_read);
  if (loaded && root.ErrorComment().empty()) return;
  const std::string reason = ReasonOf(root.ErrorComment());
  throw CommandError(reason.find(name) == std::string::npos ? name + ": " + reason : reason);
}

// Names the event for outputs. `file` was loaded and `name` is what the user calls it. An archive
// is unpacked into a temporary folder first, so that its event has the path of a file there.
void NameEvent(clsKeltrun2& root, const std::string& file, const std::string& name) {
  const std::string loaded = root.FileName();
  const bool unpacked = loaded != file;
  root.SetFileName(unpacked ? name + ": " + std::filesystem::path(loaded).filename().string()
                            : name);
}

void Load(clsKeltrun2& root, const std::string& name, KrLapFileLoadModeCosnt mode,
          const Options& options, RemarkDisplay show = RemarkDisplay::kShow) {
  const bool is_event = mode == KR_LOADMODE_NORMAL;
  if (name != "-") {
    LoadFile(root, name, name, mode, options, show);
    if (is_event) NameEvent(root, name, name);
    return;
  }
  const StandardInputFile input;
  try {
    LoadFile(root, input.Path(), kStandardInput, mode, options, show);
  } catch (const CommandError& error) {
    throw CommandError(input.WithoutPath(error.what()));
  }
  if (is_event) NameEvent(root, input.Path(), input.Name());
}

// The load mode that the options name. An import of clubs and sexes needs the mode that matches by
// name, or the one that matches no runner.
KrLapFileLoadModeCosnt MergeMode(const Options& options) {
  auto mode = options.match == "id"     ? KR_LOADMODE_MERGE_ID
              : options.match == "name" ? KR_LOADMODE_MERGE_NAME
                                        : KR_LOADMODE_APPEND;
  if (options.prefer_new) mode = mode | KR_LOADMODE_PRIORITY_NEWDATA;
  if (options.known_only) mode = mode | KR_LOADMODE_NOTADD_NEWDATA;
  return mode;
}

// Says what was corrected. A control where nothing was is most likely a wrong code.
void CorrectClocks(clsKeltrun2& root, const Options& options) {
  for (const std::string& text : options.clocks) {
    const auto correction = ClockCorrectionOf(text);
    if (!correction) continue;  // the command line was checked
    const std::int32_t changed = root.ShiftClock(correction->code, correction->seconds);
    if (changed == 0) {
      throw CommandError("--clock " + text + " changes nobody: no course has control " +
                         std::to_string(correction->code) +
                         ", or the laps are shorter than the correction");
    }
    if (options.quiet) continue;
    std::cerr << "keltrun2: the clock of control " << correction->code << " was corrected for "
              << changed << (changed == 1 ? " runner\n" : " runners\n");
  }
}

}  // namespace

void ShowRemarks(const std::vector<LoadRemark>& remarks, const std::string& name) {
  std::map<std::string, std::size_t> shown;  // by kind
  std::size_t left_out = 0;
  for (const LoadRemark& remark : remarks) {
    if (!remark.Kind.empty() && ++shown[remark.Kind] > kShownOfKind) {
      ++left_out;
      continue;
    }
    std::cerr << Printable(name);
    if (remark.Line > 0) std::cerr << ':' << remark.Line;
    if (remark.Column > 0) std::cerr << ':' << remark.Column;
    std::cerr << ": " << Printable(remark.Text) << '\n';
  }
  if (left_out == 0) return;
  std::cerr << Printable(name) << ": " << left_out
            << " more remarks of the same kinds; the command info counts them\n";
}

void LoadEvent(clsKeltrun2& root, const Options& options, RemarkDisplay show) {
  Load(root, options.event, KR_LOADMODE_NORMAL, options, show);
  CorrectClocks(root, options);
}

void MergeImport(clsKeltrun2& root, const Options& options) {
  root.FileControl()->SetRenewRanks(options.renew_ranks);
  Load(root, options.import_file, MergeMode(options), options);
}

}  // namespace keltrun::cli
