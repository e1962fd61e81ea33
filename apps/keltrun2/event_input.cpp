#include "apps/keltrun2/event_input.h"

#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "apps/keltrun2/command_error.h"
#include "apps/keltrun2/display_text.h"
#include "apps/keltrun2/files.h"

namespace keltrun::cli {
namespace {

// The extension makes it a native lap file; what a pipe brings has no name to go by.
constexpr char kStandardInputName[] = "standard input.lxm";

std::string ReadEventText() {
  std::string text = ReadStandardInput();
  if (text.empty()) throw CommandError("standard input is empty");
  return text;
}

// Shows the component's windows as before, but knows which lap file of an archive is wanted.
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
    ListNames("it holds several lap files: choose one with --member", names);
  }

  [[noreturn]] static void ListNames(std::string text, const std::vector<std::string>& names) {
    for (const std::string& name : names) text += "\n  " + name;
    throw CommandError(text);
  }

  std::string member_;
  std::shared_ptr<HostWindows> others_;
};

void ShowRemarks(const clsFileControl& files, const std::string& name) {
  for (const LoadRemark& remark : files.LoadRemarks()) {
    std::cerr << Printable(name);
    if (remark.Line > 0) std::cerr << ':' << remark.Line;
    if (remark.Column > 0) std::cerr << ':' << remark.Column;
    std::cerr << ": " << Printable(remark.Text) << '\n';
  }
}

void Load(clsKeltrun2& root, const std::string& name, KrLapFileLoadModeCosnt mode,
          const Options& options) {
  const auto& files = root.FileControl();
  files->SetProgressVisible(!options.quiet);  // shows nothing where there is no terminal
  SetHostWindows(std::make_shared<MemberWindows>(options.member));
  const bool loaded = name == "-" ? files->LoadLapFile(kStandardInputName, KR_FILETYPE_AUTODETECT,
                                                       mode, ReadEventText())
                                  : files->LoadLapFile(name, KR_FILETYPE_AUTODETECT, mode);
  ShowRemarks(*files, name);
  if (!loaded || !root.ErrorComment().empty()) {
    throw CommandError(name + ": " + root.ErrorComment());
  }
}

// The load mode in the words of the options. An import of clubs and sexes needs the mode that
// matches by name, or the one that matches nobody.
KrLapFileLoadModeCosnt MergeMode(const Options& options) {
  auto mode = options.match == "id"     ? KR_LOADMODE_MERGE_ID
              : options.match == "name" ? KR_LOADMODE_MERGE_NAME
                                        : KR_LOADMODE_APPEND;
  if (options.prefer_new) mode = mode | KR_LOADMODE_PRIORITY_NEWDATA;
  if (options.known_only) mode = mode | KR_LOADMODE_NOTADD_NEWDATA;
  return mode;
}

}  // namespace

void LoadEvent(clsKeltrun2& root, const Options& options) {
  Load(root, options.event, KR_LOADMODE_NORMAL, options);
}

void MergeImport(clsKeltrun2& root, const Options& options) {
  root.FileControl()->SetRenewRanks(options.renew_ranks);
  Load(root, options.import_file, MergeMode(options), options);
}

}  // namespace keltrun::cli
