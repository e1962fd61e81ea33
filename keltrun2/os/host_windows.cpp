#include "keltrun2/os/host_windows.h"

#include <unistd.h>

#include <charconv>
#include <cstdio>
#include <mutex>
#include <utility>

namespace keltrun {
namespace {

constexpr int kBarColumns = 40;

// A progress bar on one line of the terminal, cleared when the work is done.
class TerminalProgress final : public frmProgressBar {
 public:
  explicit TerminalProgress(std::string_view caption) : caption_(caption) { SetPercent(0); }
  ~TerminalProgress() override { std::fputs("\r\033[K", stderr); }

  void SetPercent(std::int32_t percent) override {
    if (percent == shown_) return;
    shown_ = percent;
    const int filled = frmProgressBar::BarTwips(percent) * kBarColumns / kFullBarTwips;
    std::string bar(static_cast<std::size_t>(filled), '#');
    bar.resize(kBarColumns, ' ');
    std::fprintf(stderr, "\r%s [%s] %3d%%", caption_.c_str(), bar.c_str(), percent);
    std::fflush(stderr);
  }

 private:
  std::string caption_;
  std::int32_t shown_ = -1;
};

bool CanAsk() { return isatty(STDIN_FILENO) && isatty(STDERR_FILENO); }

std::string AskLine(std::string_view prompt) {
  std::fprintf(stderr, "%s", std::string(prompt).c_str());
  std::string answer;
  for (int c = std::getchar(); c != EOF && c != '\n'; c = std::getchar()) {
    answer.push_back(static_cast<char>(c));
  }
  return answer;
}

class TerminalWindows : public HostWindows {
 public:
  std::unique_ptr<frmProgressBar> OpenProgress(std::string_view caption) override {
    if (!isatty(STDERR_FILENO)) return nullptr;
    return std::make_unique<TerminalProgress>(caption);
  }

  std::optional<std::size_t> ChooseName(std::string_view caption,
                                        const std::vector<std::string>& names) override {
    if (!CanAsk() || names.empty()) return std::nullopt;
    std::string prompt(caption);
    for (std::size_t i = 0; i < names.size(); ++i) {
      prompt += "\n" + std::to_string(i + 1) + ": " + names[i];
    }
    const std::string answer = AskLine(prompt + "\n1-" + std::to_string(names.size()) + "? ");
    std::size_t number = 0;
    std::from_chars(answer.data(), answer.data() + answer.size(), number);
    if (number < 1 || number > names.size()) return std::nullopt;
    return number - 1;
  }

  bool AskYesNo(std::string_view text, std::string_view title) override {
    if (!CanAsk()) return false;
    const std::string answer = AskLine(std::string(title) + "\n" + std::string(text) + " [y/N] ");
    return answer == "y" || answer == "Y" || answer == "yes";
  }
};

struct Installation {
  std::mutex mutex;
  std::shared_ptr<HostWindows> windows = std::make_shared<TerminalWindows>();
};

Installation& Installed() {
  static Installation installed;
  return installed;
}

}  // namespace

void SetHostWindows(std::shared_ptr<HostWindows> Windows) {
  if (!Windows) Windows = std::make_shared<TerminalWindows>();
  const std::lock_guard lock(Installed().mutex);
  // The previous windows are destroyed after the lock is released.
  Installed().windows.swap(Windows);
}

std::shared_ptr<HostWindows> CurrentHostWindows() {
  const std::lock_guard lock(Installed().mutex);
  return Installed().windows;
}

}  // namespace keltrun
