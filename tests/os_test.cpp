// Files, the terminal windows and the clock.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <thread>
#include <utility>

#include "keltrun2/os/clock.h"
#include "keltrun2/os/files.h"
#include "keltrun2/os/host_windows.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

namespace fs = std::filesystem;
using std::string;
using Text = std::string_view;
using namespace std::literals;

struct Files : testing::Test {
  bool Write(const string& name, Text bytes) { return WriteFile(name, bytes, error_); }

  TemporaryFolder folder_;
  string error_;
};

TEST_F(Files, WritesAndReadsWholeFiles) {
  const mode_t mask = umask(022);
  for (const string& name : {folder_.Path("山.bin"), folder_.Path(string(255, 'n'))}) {
    for (const Text bytes : {"a\0\r\n\xFF"sv, ""sv, "longer than before"sv}) {
      ASSERT_TRUE(Write(name, bytes)) << error_;
      EXPECT_EQ(ReadFile(name, error_), bytes);
      EXPECT_EQ(fs::status(name).permissions(), fs::perms(0644));  // a web server can read it
    }
  }
  umask(mask);
}

TEST_F(Files, FailuresNameTheFile) {
  for (const string& name : {folder_.Path(), folder_.Path("missing/x"), "/dev/full"s}) {
    EXPECT_FALSE(Write(name, "x"));
    EXPECT_NE(std::exchange(error_, "").find(name), string::npos);
    if (name == "/dev/full") continue;
    EXPECT_EQ(ReadFile(name, error_), std::nullopt);
    EXPECT_NE(std::exchange(error_, "").find(name), string::npos);
  }
}

// Threads have the same process ID, like processes in two containers.
TEST_F(Files, WritersOfOneFileDoNotInterfere) {
  const string name = folder_.Path("shared");
  const auto write = [&name](char letter) {
    string error;
    for (int i = 0; i < 50; ++i)
      EXPECT_TRUE(WriteFile(name, string(300000, letter), error)) << error;
  };
  std::thread other(write, 'b');
  write('a');
  other.join();
  const string bytes = ReadBytes(name);
  EXPECT_EQ(bytes, string(300000, bytes.at(0)));
  EXPECT_EQ(std::distance(fs::directory_iterator(folder_.Path()), {}), 1);
}

TEST_F(Files, FilesOfOthersAreNotRemoved) {
  const string foreign = folder_.Path(".keltrun2-" + std::to_string(getpid()) + ".tmp");
  WriteBytes(foreign, "another's");
  fs::create_directory(folder_.Path("in the way"));
  EXPECT_TRUE(Write(folder_.Path("new"), "x"));
  EXPECT_FALSE(Write(folder_.Path("in the way"), "x"));
  EXPECT_EQ(ReadBytes(foreign), "another's");
  EXPECT_TRUE(CanMakeFiles(folder_.Path(), error_)) << error_;
  EXPECT_EQ(std::distance(fs::directory_iterator(folder_.Path()), {}), 3);
  EXPECT_FALSE(CanMakeFiles(folder_.Path("missing"), error_));
  EXPECT_NE(error_.find("missing: "), string::npos) << error_;
}

TEST_F(Files, SyncsBeforeAndAfterTheRename) {
  const string name = folder_.Path("file");
  WriteBytes(name, "old");
  fs::permissions(name, fs::perms(0606));
  DiskSyncLog log;
  log.Look = [&name] { return ReadBytes(name); };
  ASSERT_TRUE(WriteFile(name, "new", error_, Sync::kNow)) << error_;
  EXPECT_EQ(log.Take(), "file old folder new ");
  EXPECT_EQ(fs::status(name).permissions(), fs::perms(0606));
  ASSERT_TRUE(Write(name, "newer") && SyncFileSystem(folder_.Path(), error_)) << error_;
  EXPECT_EQ(log.Take(), "all newer ");
  SetDiskSync([](int, bool) { return errno = EIO, false; });
  EXPECT_FALSE(WriteFile(name, "lost", error_, Sync::kNow));
  EXPECT_NE(error_.find(name), string::npos);
  EXPECT_EQ(ReadBytes(name), "newer");
  EXPECT_FALSE(SyncFileSystem(folder_.Path(), error_));
}

TEST_F(Files, FoldersAndLinks) {
  for (int i = 0; i < 2; ++i) EXPECT_TRUE(CreateFolder(folder_.Path("a/b"), error_));
  ASSERT_TRUE(Write(folder_.Path("a/b/old"), "old"));
  EXPECT_FALSE(CreateFolder(folder_.Path("a/b/old/x"), error_));
  EXPECT_TRUE(FolderExists(folder_.Path("a/b")) && !FolderExists(folder_.Path("a/b/old")));
  EXPECT_TRUE(FileExists(folder_.Path("a/b/old")) && !FileExists(folder_.Path("a")));
  for (const string name : {"old", "new"}) {  // a link to a file, and a dangling one
    const string link = folder_.Path("a/link to " + name);
    fs::create_symlink("b/" + name, link);
    ASSERT_TRUE(Write(link, "written")) << error_;
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(ReadFile(folder_.Path("a/b/" + name), error_), "written");
  }
}

TEST_F(Files, Names) {
  for (const auto& [name, folder, part, extension] : Table<4>(R"(
      "" ./ "" "" | / / "" "" | a\b a/b/ b "" | a.b/ a.b/ "" "" | a/b.LXM a/b.LXM/ b.LXM lxm
      a\b.c.Txt a/b.c.Txt/ b.c.Txt txt | a.b/c a.b/c/ c "" | x. x./ x. "" | ｘ.Ｌ ｘ.Ｌ/ ｘ.Ｌ Ｌ)")) {
    EXPECT_EQ(WithTrailingSeparator(name), folder);
    EXPECT_EQ(FileNamePart(name), part);
    EXPECT_EQ(FileExtension(name), extension);
  }
}
TEST(HostWindows, WithoutHostAndTerminalNothingIsChosen) {
  const int input = dup(STDIN_FILENO), nothing = open("/dev/null", O_RDONLY);
  ASSERT_GE(dup2(nothing, STDIN_FILENO), 0);
  SetHostWindows(nullptr);
  EXPECT_EQ(CurrentHostWindows()->ChooseName("caption", {"a", "b"}), std::nullopt);
  EXPECT_FALSE(CurrentHostWindows()->AskYesNo("text", "title"));
  dup2(input, STDIN_FILENO);
  close(input);
  close(nothing);
  EXPECT_EQ(frmProgressBar::BarTwips(50), 2197);  // of 4395
}

TEST(Clock, CanBeReplacedAndFollowsTheEnvironment) {
  SetClock([] { return 40000.25; });
  EXPECT_EQ(Now(), 40000.25);
  SetClock({});
  setenv("SOURCE_DATE_EPOCH", "1709208000", 1);
  EXPECT_EQ(Now(), 45351.5);  // 2024-02-29 12:00
  unsetenv("SOURCE_DATE_EPOCH");
  EXPECT_GT(Now(), 45351.5);
}

}  // namespace
}  // namespace keltrun::test
