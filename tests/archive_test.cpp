// LZH archives: ours read by ourselves and by two independent programs, hostile ones, and the
// folder that files are extracted to.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <random>
#include <thread>

#include "keltrun2/codec/encodings.h"
#include "keltrun2/codec/lzh_reader.h"
#include "keltrun2/codec/lzh_writer.h"
#include "keltrun2/os/host_windows.h"
#include "keltrun2/os/working_folder.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

namespace fs = std::filesystem;
using std::string;
using namespace std::literals;

using Files = std::map<string, string>;  // bytes by name

Files FilesIn(const string& folder) {
  Files files;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (fs::is_regular_file(entry.symlink_status()))
      files[entry.path().filename().string()] = ReadBytes(entry.path());
  }
  return files;
}

// --- archives of ours ---

string LapFileText(std::size_t size) {
  std::mt19937 random(1);
  const auto number = [&](unsigned below) { return std::to_string(10 + random() % below); };
  string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<keltrun version=\"2.27\">";
  while (text.size() < size) {
    text +=
        "<runner name=\"山田　" + number(80) + "\" id=\"" + number(9000) + "\" club=\"桜台OLC\">";
    for (int leg = 1; leg <= 22; ++leg) {
      text += "<leg index=\"" + std::to_string(leg) + "\" laptime=\"00:0" +
              std::to_string(random() % 6) + ":" + number(50) + "\"/>";
    }
    text += "</runner>";
  }
  return text + "</keltrun>";
}

Files Contents() {
  std::mt19937 random(2);
  string noise(70000, '\0'), two_letters, far(20000, 'x');
  for (char& c : noise) c = static_cast<char>(random());
  for (int i = 0; i < 70000; ++i) two_letters += "ab"[random() % 2];
  // A repetition just inside and just outside the window.
  far.replace(0, 8, "12345678");
  far.replace(8191, 8, "12345678");
  far.replace(8191 + 8192, 8, "12345678");
  return {{"空.lxm", ""},
          {"表ソ能.lxm", "x"},  // the second byte of each is the code of "\"
          {"NOISE.LAP", noise},
          // The last block consists of one match, repeated: its codes have no bits.
          {"repetition.lap", string(1 + 256 * 24700, 'a')},
          {"ab ab.lxm", two_letters},
          {"ｶﾅ.lxm", far},
          {"合成大会.lxm", LapFileText(2000000)}};
}

// A folder with the archive "a.lzh" of one file and an empty folder "out".
struct Packed {
  Packed(const string& name, const string& bytes)
      : Archive(MakeLzhArchive("/some\\folder/" + name, bytes, 45000.25)) {
    WriteBytes(Folder.Path("a.lzh"), Archive);
    fs::create_directory(Out);
  }
  string Archive;
  TemporaryFolder Folder;
  string Out = Folder.Path("out");
};

TEST(LzhWriter, ComesBack) {
  for (const auto& [name, bytes] : Contents()) {
    const Packed packed(name, bytes);
    string error;
    const auto files = ExtractArchive(packed.Folder.Path("a.lzh"), packed.Out, error);
    ASSERT_TRUE(files && files->size() == 1) << name << error;
    EXPECT_EQ(files->front().Name, name);
    EXPECT_EQ(files->front().Path, packed.Out + "/" + name);
    EXPECT_TRUE(FilesIn(packed.Out) == (Files{{name, bytes}})) << name;
    const bool stored = packed.Archive.substr(2, 5) == "-lh0-";
    EXPECT_EQ(stored, bytes.size() < 2 || name == "NOISE.LAP") << name;
    const std::size_t percent = name == "合成大会.lxm" ? 14 : 100;
    EXPECT_LE(packed.Archive.size(), bytes.size() * percent / 100 + 80) << name;
  }
}

// Independent programs, and the charset in which they write the names of files.
TEST(LzhWriter, OtherProgramsOpenIt) {
  const Rows<string, string, Charset> programs = {
      {"lha", "lha xq ../a.lzh", Charset::kShiftJis},  // does not convert names
      {"bsdtar", "LC_ALL=C.UTF-8 bsdtar -xf ../a.lzh", Charset::kUtf8}};
  string missing;
  for (const auto& [program, command, charset] : programs) {
    if (std::system(("command -v " + program + " >/dev/null").c_str()) != 0) {
      missing += " " + program;
      continue;
    }
    for (const auto& [name, bytes] : Contents()) {
      const Packed packed(name, bytes);
      const string line = "cd '" + packed.Out + "' && " + command + " >../log 2>&1";
      EXPECT_EQ(std::system(line.c_str()), 0) << name << ReadBytes(packed.Folder.Path("log"));
      string encoded;
      AppendEncoded(encoded, name, charset, MissingCharacter::kQuestionMark);
      EXPECT_TRUE(FilesIn(packed.Out) == (Files{{encoded, bytes}})) << program << name;
      struct stat info {};
      EXPECT_EQ(stat((packed.Out + "/" + encoded).c_str(), &info), 0);
      std::tm local{};
      localtime_r(&info.st_mtime, &local);  // 45000.25 is 2023-03-15 06:00
      EXPECT_EQ(local.tm_year * 10000 + local.tm_mon * 100 + local.tm_mday, 1230215);
      EXPECT_EQ(local.tm_hour * 100 + local.tm_min, 600);
    }
  }
  if (!missing.empty()) GTEST_SKIP() << "NOT TESTED, the programs are missing:" << missing;
}

TEST(LzhWriter, Names) {
  const Rows<string, string> cases = {
      {"a\\b/c.lxm", "c.lxm"},
      {"", "_"},
      {"é😀?.lxm", "___.lxm"},
      {"a:b|c\n", "a_b_c_"},
      {string(300, 'n'), string(255, 'n')},
      {"表" + string(252, 'n') + "大", "\x95\x5C" + string(252, 'n')}};
  for (const auto& [name, expected] : cases) {
    const string archive = MakeLzhArchive(name, "", 0);
    const string extension = "\x01" + expected + "\x07"s;  // its type; the next one's size
    EXPECT_NE(archive.find(extension), string::npos) << name;
  }
}

TEST(LzhWriter, Crc16) {
  EXPECT_EQ(LzhCrc16("123456789"), 0xBB3D);  // the published check value of CRC-16/ARC
  EXPECT_EQ(LzhCrc16("6789", LzhCrc16("12345")), 0xBB3D);
}

// --- archives of others ---

string LittleEndian(std::uint32_t value, int bytes) {
  string out;
  for (int i = 0; i < bytes; ++i) out += static_cast<char>(value >> 8 * i);
  return out;
}

struct Member {
  string name, bytes;
  string method = "-lh0-";
  std::optional<std::uint32_t> size = {};
  std::uint16_t unix_mode = 0;
  std::uint16_t crc = LzhCrc16(bytes);
};

// A member with a level 0 header, as old programs write it.
string OldMember(const Member& m) {
  string header = m.method + LittleEndian(static_cast<std::uint32_t>(m.bytes.size()), 4) +
                  LittleEndian(m.size.value_or(static_cast<std::uint32_t>(m.bytes.size())), 4) +
                  LittleEndian(0x5676'6000, 4) + "\x20\0"s + static_cast<char>(m.name.size()) +
                  m.name + LittleEndian(m.crc, 2);
  if (m.unix_mode != 0)
    header += "U\0"s + string(4, '\0') + LittleEndian(m.unix_mode, 2) + string(4, '\0');
  std::uint8_t sum = 0;
  for (const char c : header) sum = static_cast<std::uint8_t>(sum + static_cast<std::uint8_t>(c));
  return static_cast<char>(header.size()) + string(1, static_cast<char>(sum)) + header + m.bytes;
}

// A stored member with a level 2 header and additional extended headers (type and data).
string NewMember(const std::vector<string>& extensions) {
  string header = "-lh0-\0\0\0\0\0\0\0\0\0\0\0\0\x20\2\0\0U\5\0\0\0\0"s;
  for (const string& extension : extensions)
    header += LittleEndian(static_cast<std::uint32_t>(extension.size() + 2), 2) + extension;
  header += "\0\0"s;
  header = LittleEndian(static_cast<std::uint32_t>(header.size() + 2), 2) + header;
  return header.replace(27, 2, LittleEndian(LzhCrc16(header), 2));
}

// Unpacks archives into the folder "in/out". A file outside it must not change.
class Hostile : public testing::Test {
 protected:
  Hostile() {
    fs::create_directories(folder_.Path("in/out"));
    WriteBytes(folder_.Path("in/beside"), "untouched");
  }

  std::optional<Files> Extract(const string& archive, const ExtractionLimits& limits = {}) {
    WriteBytes(folder_.Path("a.lzh"), archive);
    error_.clear();
    const auto files =
        ExtractArchive(folder_.Path("a.lzh"), folder_.Path("in/out"), error_, limits);
    Files found = FilesIn(folder_.Path("in"));
    EXPECT_EQ(found["beside"], "untouched");
    found.erase("beside");
    if (!files) {
      EXPECT_TRUE(found.empty());
      EXPECT_NE(error_.find(folder_.Path("a.lzh")), string::npos) << error_;
      return std::nullopt;
    }
    EXPECT_EQ(files->size(), found.size());
    for (const ExtractedFile& file : *files) EXPECT_EQ(fs::remove(file.Path), true) << file.Path;
    return found;
  }

  TemporaryFolder folder_;
  string error_;
};

TEST_F(Hostile, NamesStayInTheFolder) {
  string half_width, shortened;
  for (int i = 0; i < 200; ++i) half_width += '\xB1';
  for (int i = 0; i < 78; ++i) shortened += "ｱ";  // what fits into 240 bytes with the extension
  const auto cases = Table<2>(
      "../../up.lxm up.lxm | /etc/passwd passwd | ..\\..\\b.lxm b.lxm | C:c.lxm c.lxm | e/.. _ |"
      " . _-2 | f/ _-3 | c.lxm c-2.lxm | .d .d | z/.d .d-2 | x\xFFy\xFF.lxm .lxm |"
      " \x95\x5C.lxm 表.lxm | \x95\x5C\xFF\x83\x5C.lxm ソ.lxm | q\x80\x81 q\uFFFD\uFFFD |"
      " a\1b\x1B[2J a_b_[2J | " +
      half_width + ".lxm " + shortened + ".lxm");
  string archive;
  Files expected;
  for (const auto& [name, file] : cases) {
    archive += OldMember({name, "of " + file});
    expected[file] = "of " + file;
  }
  const auto files = Extract(archive + '\0');
  ASSERT_TRUE(files) << error_;
  EXPECT_EQ(*files, expected);
}

TEST_F(Hostile, NamesOfExtendedHeaders) {
  const string archive = NewMember({"\x01\x8A\xD4\x88\xE1", "\x02sub\xFF"}) +
                         NewMember({"\x01../\x95\x5C.lxm", "\x46\xA4\3\0\0"s}) +
                         NewMember({"\x01/é.lxm", "\x46\xE9\xFD\0\0"s}) +
                         NewMember({"\x01?.lxm", "\x44..\\\0\x42\x26.\0"s}) + '\0';
  const auto files = Extract(archive);
  ASSERT_TRUE(files) << error_;
  EXPECT_EQ(*files, (Files{{"間違", ""}, {"表.lxm", ""}, {"é.lxm", ""}, {"♂.", ""}}));
}

TEST_F(Hostile, OnlyPlainFilesAndNothingReplaced) {
  const string link = folder_.Path("in/out/dev");
  fs::create_symlink(folder_.Path("in/beside"), link);
  const auto files = Extract(OldMember({"sub\\", "", "-lhd-"}) +
                             OldMember({"link|/etc/passwd", "", "-lhd-", {}, 0120777}) +
                             OldMember({"dev", "of dev", "-lh0-", {}, 020666}) + '\0');
  ASSERT_TRUE(files) << error_;
  EXPECT_EQ(*files, (Files{{"dev-2", "of dev"}}));
  fs::remove(link);
  EXPECT_TRUE(fs::is_empty(folder_.Path("in/out")));
}

TEST_F(Hostile, Limits) {
  const string zeros(100000, '\0');
  const string packed = MakeLzhArchive("z", zeros, 0);
  const std::size_t header = static_cast<std::uint8_t>(packed[0]);
  const string data = packed.substr(header, packed.size() - header - 1);
  string many;
  for (int i = 0; i <= 1000; ++i) many += OldMember({"m", "of m"});
  const string three = OldMember({"a", "1234"}) + OldMember({"b", "5678"}) + OldMember({"c", ""});
  const string level3 = "\4\0-lh0-\0\0\0\0\0\0\0\0\0\0\0\0\x20\3\0\0U\0\0\0\xF0\0\0\0\xE0\1"s;
  const Rows<string, ExtractionLimits, string> cases = {
      {level3, {}, "header is larger than the archive"},
      {OldMember({"z", data, "-lh5-", 100000, 0, LzhCrc16(zeros)}), {}, ""},
      {OldMember({"z", data, "-lh5-", 10}), {}, "too long"},
      {OldMember({"z", data, "-lh5-", 100001, 0, LzhCrc16(zeros)}), {}, "too short"},
      {OldMember({"z", data, "-lh5-", (64u << 20) + 1}), {}, "larger than 64 MiB"},
      {OldMember({"z", data, "-lh5-", 0xFFFFFFFF}), {}, "larger than 64 MiB"},
      {OldMember({"z", data, "-lh1-", 100000}), {}, "Unsupported"},
      {many, {}, "more than 1000 files"},
      {three, {.MemberBytes = 4, .TotalBytes = 8, .Members = 3}, ""},
      {three, {.MemberBytes = 3, .TotalBytes = 8, .Members = 3}, "member a: it is larger"},
      {three, {.MemberBytes = 4, .TotalBytes = 7, .Members = 3}, "together"},
      {three, {.MemberBytes = 4, .TotalBytes = 8, .Members = 2}, "more than 2 files"}};
  for (const auto& [archive, limits, reason] : cases) {
    EXPECT_EQ(Extract(archive + '\0', limits).has_value(), reason.empty()) << error_;
    EXPECT_NE(error_.find(reason), string::npos) << error_;
  }
}

TEST_F(Hostile, CutOrFlippedIsNeverTakenForWhole) {
  const string text = LapFileText(1000);
  for (const string& archive : {MakeLzhArchive("大会.lxm", text, 45000),
                                MakeLzhArchive("大会.lxm", text.substr(0, 9), 45000),
                                OldMember({"\x91\xE5\x89\xEF.lxm", "stored"}) + '\0'}) {
    const auto whole = Extract(archive);
    ASSERT_TRUE(whole) << error_;
    for (std::size_t end = 0; end + 1 < archive.size(); end += end < 100 ? 1 : 7)
      EXPECT_FALSE(Extract(archive.substr(0, end))) << end;
    for (std::size_t bit = 0; bit < 8 * archive.size(); bit += 7) {
      string flipped = archive;
      flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ 1 << bit % 8);
      // The end mark and the bits that fill the last byte are not checked by any reader.
      const auto files = Extract(flipped);
      EXPECT_TRUE(!files || *files == *whole) << bit;
      EXPECT_TRUE(!files || bit / 8 + 2 >= archive.size()) << bit;
    }
  }
}

TEST_F(Hostile, NoArchive) {
  for (const string& bytes : {""s, "\0"s, "PK\3\4"s, LapFileText(100), string(5000, 'M')})
    EXPECT_FALSE(Extract(bytes));
  string error;
  EXPECT_FALSE(ExtractArchive(folder_.Path("none.lzh"), folder_.Path("in/out"), error));
  EXPECT_NE(error.find("none.lzh"), string::npos);
  // No folder to write to.
  WriteBytes(folder_.Path("a.lzh"), OldMember({"a", "b"}) + '\0');
  EXPECT_FALSE(ExtractArchive(folder_.Path("a.lzh"), folder_.Path("nowhere"), error));
  EXPECT_NE(error.find("cannot write"), string::npos) << error;
}

// --- several lap files in one archive ---

// A host that chooses the name at a position, or none.
class Choice : public HostWindows {
 public:
  std::unique_ptr<frmProgressBar> OpenProgress(std::string_view) override { return nullptr; }
  std::optional<std::size_t> ChooseName(std::string_view caption,
                                        const std::vector<string>& names) override {
    Asked = string(caption) + ":";
    for (const string& name : names) Asked += " " + name;
    return Taken;
  }
  bool AskYesNo(std::string_view, std::string_view) override { return false; }

  std::optional<std::size_t> Taken;
  string Asked;
};

TEST(Archives, TheHostChoosesOneOfSeveralLapFiles) {
  const auto root = NewRoot();
  const auto host = std::make_shared<Choice>();
  SetHostWindows(host);
  const TemporaryFolder folder;
  const string name = folder.Path("a.lzh");
  const auto event = [](const string& title) {
    return "<keltrun><event name=\"" + title + "\"/></keltrun>";
  };
  WriteBytes(name, OldMember({"read.me", ""}) + OldMember({"d\\a.lxm", event("A")}) +
                       OldMember({"\x95\x5C.LXM", event("B")}) + OldMember({"c.lap", ""}) + '\0');
  const Rows<std::optional<std::size_t>, string> cases = {
      {0, "A"}, {1, "B"}, {2, ""}, {3, ""}, {std::nullopt, ""}};  // the third is not a lap file
  for (const auto& [taken, title] : cases) {
    host->Taken = taken;
    EXPECT_EQ(root->FileControl()->LoadLapFile(name), !title.empty());
    EXPECT_EQ(host->Asked, name + ": a.lxm 表.LXM c.lap");
    EXPECT_EQ(root->EventData()->EventName, title);
    EXPECT_EQ(root->ErrorComment().empty(), !title.empty());
  }
  // For a single lap file the user is not asked.
  host->Asked = "";
  WriteBytes(name, OldMember({"read.me", ""}) + OldMember({"a.lxm", event("A")}) + '\0');
  EXPECT_TRUE(root->FileControl()->LoadLapFile(name)) << root->ErrorComment();
  EXPECT_EQ(host->Asked + root->EventData()->EventName, "A");
  SetHostWindows(nullptr);
}

// --- the working folder ---

// Sets an environment variable and restores it at the end.
class Variable {
 public:
  Variable(const char* name, const string& value) : name_(name) {
    if (const char* before = std::getenv(name)) before_ = before;
    setenv(name, value.c_str(), 1);
  }
  ~Variable() { before_ ? setenv(name_, before_->c_str(), 1) : unsetenv(name_); }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;

 private:
  const char* name_;
  std::optional<string> before_;
};

class WorkingFolders : public testing::Test {
 protected:
  // The reason why the folder is refused, or its permissions.
  static string State() {
    string error;
    const auto name = WorkingFolder(error);
    EXPECT_EQ(name.has_value(), error.empty());
    if (!name) return error.substr(error.rfind(": ") + 2);
    struct stat info {};
    EXPECT_EQ(stat(name->c_str(), &info), 0);
    return (info.st_mode & 07777) == 0700 ? "private" : "open";
  }

  TemporaryFolder folder_;
  Variable runtime_{"XDG_RUNTIME_DIR", folder_.Path()};
  Variable temporary_{"TMPDIR", folder_.Path("tmp")};
};

TEST_F(WorkingFolders, Place) {
  string error;
  const string user = "Keltrun2-" + std::to_string(geteuid());
  EXPECT_EQ(WorkingFolder(error), folder_.Path("Keltrun2"));
  fs::create_directory(folder_.Path("tmp"));
  for (const char* no_folder : {"", "relative", "/nowhere/at/all"}) {
    const Variable runtime("XDG_RUNTIME_DIR", no_folder);
    EXPECT_EQ(WorkingFolder(error), folder_.Path("tmp/" + user)) << no_folder;
  }
  EXPECT_TRUE(error.empty()) << error;
}

TEST_F(WorkingFolders, OnlyItsOwnerEnters) {
  const string name = folder_.Path("Keltrun2");
  EXPECT_EQ(State(), "private");
  EXPECT_EQ(chmod(name.c_str(), 0777), 0);
  EXPECT_EQ(State(), "private");
  if (geteuid() == 0) {
    EXPECT_EQ(chown(name.c_str(), 12345, 12345), 0);
    EXPECT_EQ(State(), "it belongs to another user");
  }
  fs::remove(name);
  fs::create_directory(folder_.Path("elsewhere"));
  fs::create_directory_symlink(folder_.Path("elsewhere"), name);
  EXPECT_EQ(State(), "it is a link");
  string error;
  EXPECT_FALSE(NewExtractionFolder(error));
  EXPECT_TRUE(fs::is_empty(folder_.Path("elsewhere")));
  fs::remove(name);
  WriteBytes(name, "");
  EXPECT_EQ(State(), "it is not a folder");
}

TEST_F(WorkingFolders, TheNextExtractionRemovesTheLast) {
  string error;
  const auto first = NewExtractionFolder(error);
  ASSERT_TRUE(first) << error;
  EXPECT_TRUE(fs::is_empty(*first));
  const string outside = folder_.Path("outside"), working = folder_.Path("Keltrun2/");
  fs::create_directory(outside);
  WriteBytes(outside + "/kept", "kept");
  WriteBytes(*first + "/old.lxm", "");
  fs::create_directory_symlink(outside, *first + "/link");
  fs::create_directory_symlink(outside, working + "extract-link");
  for (const char* name : {"extract-left", "extract-used", "other"})
    fs::create_directory(working + name);
  const int used = open((working + "extract-used").c_str(), O_RDONLY);  // as if by another process
  EXPECT_EQ(flock(used, LOCK_EX), 0);

  const auto second = NewExtractionFolder(error);
  ASSERT_TRUE(second) << error;
  EXPECT_NE(*second, *first);
  std::vector<string> left;
  for (const auto& entry : fs::directory_iterator(working)) left.push_back(entry.path());
  std::sort(left.begin(), left.end());
  std::vector<string> expected = {*second, working + "extract-used", working + "other"};
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(left, expected);
  EXPECT_EQ(ReadBytes(outside + "/kept"), "kept");
  close(used);
}

TEST_F(WorkingFolders, PackedLapFilesDoNotPileUp) {
  const auto root = NewRoot();
  const auto names = [this] {
    string text;
    for (const auto& [name, bytes] : FilesIn(folder_.Path("Keltrun2"))) text += name + " ";
    return text;
  };
  const auto save = [&](const string& name) {
    EXPECT_TRUE(root->FileControl()->SaveLapFile(folder_.Path(name))) << root->ErrorComment();
  };
  string error;
  ASSERT_TRUE(WorkingFolder(error)) << error;
  for (const char* left : {"killed.lap", "killed.xml", "other"})
    WriteBytes(folder_.Path("Keltrun2/") + left, "");
  for (const string name : {"a", "b"}) {
    save(name + ".lzh");
    EXPECT_EQ(names(), name == "a" ? "a.lxm other " : "b.lxm other ");
  }
  std::thread([&] {
    const auto extracted = NewExtractionFolder(error);
    ASSERT_TRUE(extracted) << error;
    EXPECT_TRUE(fs::is_directory(*extracted));
    save("c.lzh");
    EXPECT_TRUE(fs::is_directory(*extracted)) << "the loaded file stays when another is packed";
  }).join();
  EXPECT_EQ(names(), "other ") << "the end of a thread takes its files along";
}

TEST_F(WorkingFolders, AChildLeavesTheFolderOfItsParent) {
  string error;
  const auto ours = NewExtractionFolder(error);
  ASSERT_TRUE(ours) << error;
  const pid_t child = fork();
  if (child == 0) _exit(NewExtractionFolder(error) ? 0 : 1);
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_TRUE(fs::exists(*ours));
  const int handle = open(ours->c_str(), O_RDONLY);
  EXPECT_NE(flock(handle, LOCK_EX | LOCK_NB), 0) << "still locked";
  close(handle);
}

}  // namespace
}  // namespace keltrun::test
