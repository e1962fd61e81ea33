// What many tests need: settings in a known state, folders that vanish, times in seconds.
#pragma once

#include <array>
#include <filesystem>
#include <functional>
#include <iomanip>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "keltrun2/keltrun2.h"

namespace keltrun::test {

/// The three ways in which texts come out: Japanese texts on a foreign system, English texts, and
/// the Japanese mode (full-width names and leg numbers).
enum class Mode { kJapaneseTexts, kEnglishTexts, kJapaneseMode };

/// Loads the project's settings and resources anew in the given mode, as a new process would.
void RestartIn(Mode mode);

/// A root object in the given mode, the current one of the process.
std::shared_ptr<clsKeltrun2> NewRoot(Mode mode = Mode::kJapaneseTexts);

/// A time of that many seconds.
inline DateTime Seconds(double seconds) { return seconds / 86400.0; }

/// A runner of a class with laps in seconds; 0 is no data, -1 skipped, -2 disqualified.
std::shared_ptr<clsLapData> AddRunner(clsClassData& klass, std::string_view name,
                                      std::string_view result, const std::vector<double>& laps);

/// A new folder under the system's temporary folder, removed at the end.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::string Path(std::string_view name = "") const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

/// While it lives: what the component waited for on the disk, "file", "folder" or "all" (a whole
/// file system), each with what Look saw at that moment.
class DiskSyncLog {
 public:
  DiskSyncLog();
  ~DiskSyncLog();
  DiskSyncLog(const DiskSyncLog&) = delete;
  DiskSyncLog& operator=(const DiskSyncLog&) = delete;

  /// What was written down since the last call.
  std::string Take() { return std::exchange(entries_, ""); }
  std::function<std::string()> Look;

 private:
  std::string entries_;
};

/// A table of cases, to be walked as `for (const auto& [text, expected] : Rows<A, B>{{...}, ...})`.
template <typename... Columns>
using Rows = std::vector<std::tuple<Columns...>>;

/// Cases of N texts each, from a text that holds them between blanks and line ends; a text with
/// blanks, or an empty one, stands in quotes. A "|" may stand between two cases.
template <std::size_t N>
std::vector<std::array<std::string, N>> Table(const std::string& text) {
  std::vector<std::array<std::string, N>> cases;
  std::istringstream words(text);
  std::size_t count = 0;
  for (std::string word; words >> std::quoted(word);) {
    if (word == "|") continue;
    if (count++ % N == 0) cases.emplace_back();
    cases.back()[(count - 1) % N] = word;
  }
  if (count % N != 0) throw std::invalid_argument("the last case of a table is cut: " + text);
  return cases;
}

/// The text with CR LF in place of LF.
std::string CrLf(std::string_view text);

std::string ReadBytes(const std::string& name);
void WriteBytes(const std::string& name, std::string_view bytes);

/// Compares an output with the golden file of that name, which KELTRUN2_APPROVE=1 rewrites.
void ExpectGolden(const std::string& name, const std::string& output);

/// A runner's laps in whole seconds, markers as they are.
std::vector<long> LapsOf(clsLapData& runner);

/// A file of the project's examples, test data or resources.
std::string ExampleFile(std::string_view name);
std::string DataFile(std::string_view name);
std::string ResourceFile(std::string_view name);

}  // namespace keltrun::test
