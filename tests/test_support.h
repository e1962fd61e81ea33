// Helpers for many tests: settings in a known state, temporary folders, times in seconds.
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

/// The three modes for texts: Japanese texts on a system with another locale, English texts, and
/// Japanese mode (full-width names and leg numbers).
enum class Mode { kJapaneseTexts, kEnglishTexts, kJapaneseMode };

/// Loads the settings and resources of the project again in the given mode, as a new process would.
void RestartIn(Mode mode);

/// A new root object in the given mode.
std::shared_ptr<clsKeltrun2> NewRoot(Mode mode = Mode::kJapaneseTexts);

/// A time of a number of seconds.
inline DateTime Seconds(double seconds) { return seconds / 86400.0; }

/// Adds a runner to a class, with laps in seconds; 0 is no data, -1 skipped, -2 disqualified.
std::shared_ptr<clsLapData> AddRunner(clsClassData& klass, std::string_view name,
                                      std::string_view result, const std::vector<double>& laps);

/// A new folder in the system's folder for temporary files, removed at the end.
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

/// Records what the component waits for on the disk while this object exists: "file", "folder" or
/// "all" (a whole file system), each with the result of Look at that moment.
class DiskSyncLog {
 public:
  DiskSyncLog();
  ~DiskSyncLog();
  DiskSyncLog(const DiskSyncLog&) = delete;
  DiskSyncLog& operator=(const DiskSyncLog&) = delete;

  /// The waits recorded since the last call.
  std::string Take() { return std::exchange(entries_, ""); }
  std::function<std::string()> Look;

 private:
  std::string entries_;
};

/// A table of cases, used as `for (const auto& [text, expected] : Rows<A, B>{{...}, ...})`.
template <typename... Columns>
using Rows = std::vector<std::tuple<Columns...>>;

/// Reads cases of N texts each from a text in which they are separated by blanks and line ends. A
/// text that contains blanks or is empty must be quoted. A "|" may separate two cases.
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

/// The text with every LF replaced by CR LF.
std::string CrLf(std::string_view text);

std::string ReadBytes(const std::string& name);
void WriteBytes(const std::string& name, std::string_view bytes);

/// Compares an output with the golden file of this name, which KELTRUN2_APPROVE=1 rewrites.
void ExpectGolden(const std::string& name, const std::string& output);

/// A runner's laps in whole seconds; markers are unchanged.
std::vector<long> LapsOf(clsLapData& runner);

/// The path of a file in the examples, the test data or the resources of the project.
std::string ExampleFile(std::string_view name);
std::string DataFile(std::string_view name);
std::string ResourceFile(std::string_view name);

}  // namespace keltrun::test
