// The store of the host's settings, with damaged files and with other processes that write to it.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "keltrun2/os/pause.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

namespace fs = std::filesystem;
using namespace std::literals;
using std::string;
constexpr auto kSystem = KR_CONFIG_FOLDER_SYSTEM, kData = KR_CONFIG_FOLDER_DATA;
const string kMark = "\xFF\xFE";
/// ASCII text in UTF-16, LF as CR LF.
string Utf16(const string& text) {
  string bytes;
  for (const char c : CrLf(text)) bytes += string{c, '\0'};
  return bytes;
}

/// A separate settings folder for each test, and pauses that are only recorded.
struct Config : testing::Test {
  Config() {
    Use(folder.Path("settings"), home);
    SetPause([this](double seconds) { pauses.push_back(seconds); });
    SetRandom([] { return 0.25; });
  }
  ~Config() override { Use(before, home), SetPause({}), SetRandom({}); }
  static void Use(const string& settings_folder, const string& home_folder) {
    setenv("XDG_CONFIG_HOME", settings_folder.c_str(), 1);
    setenv("HOME", home_folder.c_str(), 1);
  }

  const TemporaryFolder folder;
  const string store = folder.Path("settings/Keltrun2/Config/Keltrun2.dat");
  const string before = std::getenv("XDG_CONFIG_HOME"), home = std::getenv("HOME");
  std::vector<double> pauses;
};

TEST_F(Config, KeepsTheLastValueOfEachName) {
  const auto config = NewRoot()->ConfigControl();
  EXPECT_EQ(ReadBytes(store), kMark);
  EXPECT_EQ(config->Value(kSystem, "A") + config->Value(kSystem, "A", "none"), "none");
  config->SetValue(kSystem, "A", "a");
  config->SetValue(kData, "A", " of data ");
  config->SetValue(static_cast<KrConfigFolderConst>(7), "A", "b");
  config->SetValue(kSystem, "a", "", "default");
  const string kept = "DATA_A= of data \nCONFIG_A=b\nCONFIG_a=default\n";
  EXPECT_EQ(ReadBytes(store), kMark + Utf16("CONFIG_A=a\n" + kept));
  NewRoot();
  EXPECT_EQ(ReadBytes(store), kMark + Utf16(kept));
  EXPECT_EQ(config->Value(kSystem, "A") + config->Value(kData, "A"), "bof data");
}

TEST_F(Config, TextsOfEveryKind) {
  const clsConfigControl config;
  for (const string& text : {"a=b=c"s, "森 \U00020B9F"s, "\0x"s, ""s, string(300'000, 'x')}) {
    config.SetValue(kData, "T", text);
    EXPECT_EQ(config.Value(kData, "T", "default"), text);
  }
  config.SetValue(kData, "T", "1\r2\n3\xFF");
  for (const string name : {"T=x", "T\r\nDATA_T=x", "T "}) {  // would read as lines of T
    config.SetValue(kData, name, "other");
    EXPECT_EQ(config.Value(kData, name, "default"), "default");
  }
  EXPECT_EQ(config.Value(kData, "T"), "1\r\n2\r\n3\uFFFD");
}

TEST_F(Config, DamagedStores) {
  const clsConfigControl makes_the_folder;
  const string line = Utf16("CONFIG_A=1\n"), damage = "\xFD\xFF" + Utf16("\n");
  for (const auto& [bytes, value, compacted] : Rows<string, string, string>{
           {"", "-", ""},
           {line, "1", line},  // without the mark
           {"CONFIG_A=1", "1", line},
           {kMark + line + Utf16("CONFIG_A=2"), "2", Utf16("CONFIG_A=2\n")},
           {kMark + line + "C", "1", line + damage},
           {kMark + Utf16("\n\nnoise\n =x\n") + line, "1", Utf16("noise\n =x\n") + line},
           {"\0\0\0"s, "-", "\0\0"s + damage},
           {string(9 << 20, 'x'), "-", ""}}) {
    WriteBytes(store, bytes);
    const clsConfigControl config;
    EXPECT_EQ(config.Value(kSystem, "A", "-"), value);
    EXPECT_EQ(ReadBytes(store), kMark + compacted);
    WriteBytes(store, bytes.substr(0, 100));  // damaged while it is in use
    config.SetValue(kSystem, "B", "2");
    EXPECT_EQ(config.Value(kSystem, "B"), "2");
  }
  EXPECT_EQ(fs::file_size(store + ".damaged") + pauses.size(), 9U << 20) << "put aside, no pause";
}

TEST_F(Config, PlacesThatCannotHoldAStore) {
  fs::create_directories(store);  // a folder instead of the store
  NewRoot()->ConfigControl()->SetValue(kSystem, "A", "1");
  EXPECT_EQ(pauses, (std::vector<double>{1.25, 1.25})) << "three attempts";
  fs::remove_all(store);
  ASSERT_EQ(mkfifo(store.c_str(), 0600), 0);  // would wait for a reader
  EXPECT_EQ(NewRoot()->ConfigControl()->Value(kSystem, "A", "x"), "x");
  // The two environment variables, where a relative path is not used, and the value that is read.
  for (const auto& [settings, user, value] : Rows<string, string, string>{
           {"/dev/null", home, "x"}, {"-", folder.Path("home"), "1"}, {"-", "-", "x"}}) {
    Use(settings, user);
    const clsConfigControl config;
    config.SetValue(kSystem, "A", "1");
    EXPECT_EQ(config.Value(kSystem, "A", "x"), value);
  }
  EXPECT_TRUE(fs::exists(folder.Path("home/.config/Keltrun2/Config/Keltrun2.dat")));
}

TEST_F(Config, WaitsForTheLock) {
  const clsConfigControl config;
  const int handle = open((store + ".lock").c_str(), O_RDWR);
  ASSERT_EQ(flock(handle, LOCK_EX), 0);
  NewRoot();
  EXPECT_TRUE(pauses.empty()) << "a new root object never waits";
  config.SetValue(kSystem, "A", "lost");
  SetPause([&](double) { flock(handle, LOCK_UN); });
  EXPECT_EQ(config.Value(kSystem, "A", "x"), "x");
  config.SetValue(kSystem, "A", "kept");
  EXPECT_EQ(config.Value(kSystem, "A"), "kept");
  close(handle);
}

TEST_F(Config, ProcessesLoseNothingOfEachOther) {
  SetPause({});
  const clsConfigControl config;
  std::vector<pid_t> children = {getpid()};
  for (const string writer : {"a", "b", ""}) {  // the third only compacts
    children.push_back(fork());
    if (children.back() != 0) continue;
    for (int i = 0; i < 200 && !writer.empty(); ++i) {
      config.SetValue(kData, writer + std::to_string(i), "v");
      config.SetValue(kData, "LAST", writer);  // so that there are lines to compact
    }
    while (writer.empty() && getppid() == children[0]) clsConfigControl();
    _exit(0);
  }
  for (const std::size_t i : {1U, 2U}) waitpid(children[i], nullptr, 0);
  kill(children[3], SIGKILL), waitpid(children[3], nullptr, 0);
  for (int i = 0; i < 400; ++i) {
    EXPECT_EQ(config.Value(kData, (i < 200 ? "a" : "b") + std::to_string(i % 200)), "v") << i;
  }
}

}  // namespace
}  // namespace keltrun::test
