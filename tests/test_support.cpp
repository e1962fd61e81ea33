#include "tests/test_support.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "keltrun2/config/settings_internal.h"
#include "keltrun2/os/files.h"
#include "keltrun2/os/locale.h"

namespace keltrun::test {
namespace {

// Root objects keep settings in the user's folder, so the tests use a folder of their own. No test
// waits for the disk, except those about this.
struct OwnSurroundings {
  OwnSurroundings() {
    SetDiskSync([](int, bool) { return true; });
    setenv("XDG_CONFIG_HOME", folder.Path().c_str(), 1);
    setenv("HOME", folder.Path().c_str(), 0);  // some build machines have none
  }
  TemporaryFolder folder;
} const own_surroundings;

}  // namespace

void RestartIn(Mode mode) {
  const bool japanese_mode = mode == Mode::kJapaneseMode;
  RestartSettings({.Language = mode == Mode::kEnglishTexts ? "en" : "ja",
                   .Locale = japanese_mode ? kLocaleJapanese : kLocaleEnglish,
                   .Folder = KELTRUN2_TEST_RESOURCES});
}

std::shared_ptr<clsKeltrun2> NewRoot(Mode mode) {
  RestartIn(mode);
  return std::make_shared<clsKeltrun2>();
}

std::shared_ptr<clsLapData> AddRunner(clsClassData& klass, std::string_view name,
                                      std::string_view result, const std::vector<double>& laps) {
  const auto runner = klass.AddLap();
  runner->RunnerName = name;
  runner->SetResult(result);
  std::int32_t leg = 0;
  for (const double lap : laps) runner->SetLap(++leg, lap > 0 ? Seconds(lap) : lap);
  return runner;
}

TemporaryFolder::TemporaryFolder() {
  static int counter = 0;
  path_ = std::filesystem::temp_directory_path() /
          ("keltrun2-test-" + std::to_string(getpid()) + "-" + std::to_string(++counter));
  std::filesystem::create_directories(path_);
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

DiskSyncLog::DiskSyncLog() {
  SetDiskSync([this](int handle, bool whole_file_system) {
    std::error_code none;
    const auto path =
        std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(handle), none);
    entries_ += whole_file_system                     ? "all "
                : std::filesystem::is_directory(path) ? "folder "
                                                      : "file ";
    if (Look) entries_ += Look() + " ";
    return true;
  });
}

DiskSyncLog::~DiskSyncLog() {
  SetDiskSync([](int, bool) { return true; });
}

std::string CrLf(std::string_view text) {
  std::string out;
  for (const char c : text) out += c == '\n' ? "\r\n" : std::string(1, c);
  return out;
}

std::string ReadBytes(const std::string& name) {
  std::ifstream stream(name, std::ios::binary);
  EXPECT_TRUE(stream) << "cannot read " << name;
  return std::string(std::istreambuf_iterator<char>(stream), {});
}

void WriteBytes(const std::string& name, std::string_view bytes) {
  std::ofstream stream(name, std::ios::binary);
  stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  ASSERT_TRUE(stream.flush()) << "cannot write " << name;
}

std::string ExampleFile(std::string_view name) {
  return std::string(KELTRUN2_EXAMPLES "/") + std::string(name);
}

std::string DataFile(std::string_view name) {
  return std::string(KELTRUN2_TEST_DATA "/") + std::string(name);
}

std::string ResourceFile(std::string_view name) {
  return std::string(KELTRUN2_TEST_RESOURCES "/") + std::string(name);
}

void ExpectGolden(const std::string& name, const std::string& output) {
  const std::string file = DataFile("../golden/" + name);
  const char* approve = std::getenv("KELTRUN2_APPROVE");
  if (approve != nullptr && std::string_view(approve) == "1") WriteBytes(file, output);
  EXPECT_EQ(ReadBytes(file), output) << name;
}

std::vector<long> LapsOf(clsLapData& runner) {
  std::vector<long> laps;
  for (std::int32_t leg = 1, legs = runner.LegCount(); leg <= legs; ++leg) {
    const DateTime lap = runner.Lap(leg);
    const double seconds = lap < 0 ? lap : std::round(lap * 86400);
    EXPECT_TRUE(lap < 0 || lap == Seconds(seconds)) << "not on the grid of times";
    laps.push_back(std::lround(seconds));
  }
  return laps;
}

}  // namespace keltrun::test
