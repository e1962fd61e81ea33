// LZH archives: ours in our hands and in those of another program, hostile ones, and the folder
// that their files come out in.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <numeric>
#include <random>
#include <set>

#include "keltrun2/platform/archiver.h"
#include "keltrun2/platform/encodings.h"
#include "keltrun2/platform/host_windows.h"
#include "keltrun2/platform/lzh_writer.h"
#include "keltrun2/platform/working_folder.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

namespace fs = std::filesystem;
using std::string;
using namespace std::literals;

using Files = std::map<string, string>;  // bytes by name

Files FilesIn(const string& folder) {
  Files files;
  for (const fs::path& file : fs::recursive_directory_iterator(folder))
    if (fs::is_regular_file(fs::symlink_status(file))) files[file.filename()] = ReadBytes(file);
  return files;
}

// --- archives of ours ---

string LapFile() { return ReadBytes(ExampleFile("hoshinomori/event.lxm")); }

Files Contents() {
  std::mt19937 random(2);
  string noise(70000, '\0'), two_letters, far(20000, 'x'), several_blocks;
  for (char& c : noise) c = static_cast<char>(random());
  for (int i = 0; i < 70000; ++i) two_letters += "ab"[random() % 2];
  for (int i = 0; i < 8; ++i) several_blocks += LapFile();
  // A repetition just inside and just outside the window.
  for (const std::size_t at : {0, 8191, 8191 + 8192}) far.replace(at, 8, "12345678");
  return {{"空.lxm", ""},
          {"表ソ能.lxm", "x"},  // the second byte of each is the code of "\"
          {"NOISE.LAP", noise},
          // The last block has one match only, again and again: its codes have no bits.
          {"repetition.lap", string(1 + 256 * 24700, 'a')},
          {"ab ab.lxm", two_letters},
          {"ｶﾅ.lxm", far},
          {"合成大会.lxm", several_blocks}};
}

// lha knows nothing of us, and leaves the bytes of names as they are.
void ExpectLhaOpens(const string& archive, const string& name, const string& bytes) {
  const string folder = fs::path(archive).parent_path() / "lha";
  fs::create_directory(folder);
  EXPECT_EQ(std::system(("cd '" + folder + "' && lha xq '" + archive + "'").c_str()), 0) << name;
  string encoded;
  AppendEncoded(encoded, name, Charset::kShiftJis, MissingCharacter::kQuestionMark);
  EXPECT_TRUE(FilesIn(folder) == (Files{{encoded, bytes}})) << name;
  struct stat info {};
  EXPECT_EQ(stat((folder + "/" + encoded).c_str(), &info), 0);
  char written[17];
  std::strftime(written, sizeof written, "%F %R", std::localtime(&info.st_mtime));
  EXPECT_STREQ(written, "2023-03-15 06:00") << "45000.25";
}

TEST(LzhWriter, ComesBackHereAndInLha) {
  const bool has_lha = std::system("command -v lha >/dev/null") == 0;
  for (const auto& [name, bytes] : Contents()) {
    const TemporaryFolder folder;
    const string archive = MakeLzhArchive("/some\\folder/" + name, bytes, 45000.25);
    WriteBytes(folder.Path("a.lzh"), archive);
    fs::create_directory(folder.Path("out"));
    string error;
    const auto files = ExtractArchive(folder.Path("a.lzh"), folder.Path("out"), error);
    ASSERT_TRUE(files && files->size() == 1) << name << error;
    EXPECT_EQ(files->front().Name, name);
    EXPECT_EQ(files->front().Path, folder.Path("out/" + name));
    EXPECT_TRUE(FilesIn(folder.Path("out")) == (Files{{name, bytes}})) << name;
    EXPECT_EQ(archive.substr(2, 5) == "-lh0-", bytes.size() < 2 || name == "NOISE.LAP") << name;
    const std::size_t percent = name == "合成大会.lxm" ? 15 : 100;
    EXPECT_LE(archive.size(), bytes.size() * percent / 100 + 80) << name;
    if (has_lha) ExpectLhaOpens(folder.Path("a.lzh"), name, bytes);
  }
  if (!has_lha) GTEST_SKIP() << "NOT TESTED with lha, which is missing";
}

TEST(LzhWriter, Names) {
  const string n252(252, 'n');
  const Rows<string, string> cases = {
      {"a\\b/c.lxm", "c.lxm"},       {"", "_"},
      {"é😀?.lxm", "___.lxm"},        {"a:b|c\n", "a_b_c_"},
      {n252 + "nnnn", n252 + "nnn"}, {"表" + n252 + "大", "\x95\x5C" + n252}};
  for (const auto& [name, expected] : cases) {  // its type in front; the next one's size behind
    EXPECT_NE(MakeLzhArchive(name, "", 0).find("\x01" + expected + "\x07"s), string::npos) << name;
  }
}

// --- archives of others ---

string LittleEndian(std::size_t value, int bytes) {
  string out;
  for (int i = 0; i < bytes; ++i) out += static_cast<char>(value >> 8 * i);
  return out;
}

struct Member {
  string name, bytes, method = "-lh0-";
  std::size_t size = bytes.size();
  std::uint16_t unix_mode = 0, crc = LzhCrc16(bytes);
};

// A member with a header of level 0, as old programs write it.
string OldMember(const Member& m) {
  string header = m.method + LittleEndian(m.bytes.size(), 4) + LittleEndian(m.size, 4) +
                  LittleEndian(0x5676'6000, 4) + "\x20\0"s + static_cast<char>(m.name.size()) +
                  m.name + LittleEndian(m.crc, 2);
  if (m.unix_mode != 0)
    header += "U\0"s + string(4, '\0') + LittleEndian(m.unix_mode, 2) + string(4, '\0');
  const int sum = std::accumulate(header.begin(), header.end(), 0);
  return LittleEndian(header.size(), 1) + static_cast<char>(sum) + header + m.bytes;
}

// A stored member with a header of level 2 and more extended headers (type and data).
string NewMember(const std::vector<string>& extensions) {
  string header = "-lh0-\0\0\0\0\0\0\0\0\0\0\0\0\x20\2\0\0U\5\0\0\0\0"s;
  for (const string& data : extensions) header += LittleEndian(data.size() + 2, 2) + data;
  header += "\0\0"s;
  header = LittleEndian(header.size() + 2, 2) + header;
  return header.replace(27, 2, LittleEndian(LzhCrc16(header), 2));
}

// Unpacks archives into the folder "in/out", with something beside it that must stay.
class Hostile : public testing::Test {
 protected:
  Hostile() {
    fs::create_directories(out_);
    WriteBytes(folder_.Path("in/beside"), "untouched");
  }

  std::optional<Files> Extract(const string& archive, const ExtractionLimits& limits = {}) {
    WriteBytes(folder_.Path("a.lzh"), archive);
    error_.clear();
    const auto files = ExtractArchive(folder_.Path("a.lzh"), out_, error_, limits);
    Files found = FilesIn(folder_.Path("in"));
    EXPECT_EQ(found["beside"], "untouched");
    found.erase("beside");
    if (!files) {
      EXPECT_TRUE(found.empty());
      EXPECT_NE(error_.find(folder_.Path("a.lzh")), string::npos) << error_;
      return std::nullopt;
    }
    EXPECT_EQ(files->size(), found.size());
    for (const ExtractedFile& file : *files) EXPECT_TRUE(fs::remove(file.Path)) << file.Path;
    return found;
  }

  TemporaryFolder folder_;
  string out_ = folder_.Path("in/out"), error_;
};

TEST_F(Hostile, NamesStayInTheFolder) {
  const string half_width(200, '\xB1');
  string shortened;
  for (int i = 0; i < 78; ++i) shortened += "ｱ";  // as many as 240 bytes hold with the extension
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
  EXPECT_EQ(Extract(archive + '\0'), expected) << error_;
}

TEST_F(Hostile, NamesOfExtendedHeaders) {
  const string archive = NewMember({"\x01\x8A\xD4\x88\xE1", "\x02sub\xFF"}) +
                         NewMember({"\x01../\x95\x5C.lxm", "\x46\xA4\3\0\0"s}) +
                         NewMember({"\x01/é.lxm", "\x46\xE9\xFD\0\0"s}) +
                         NewMember({"\x01?.lxm", "\x44..\\\0\x42\x26.\0"s}) + '\0';
  const Files expected = {{"間違", ""}, {"表.lxm", ""}, {"é.lxm", ""}, {"♂.", ""}};
  EXPECT_EQ(Extract(archive), expected) << error_;
}

TEST_F(Hostile, OnlyPlainFilesAndNothingReplaced) {
  fs::create_symlink(folder_.Path("in/beside"), out_ + "/dev");
  const string archive = OldMember({"sub\\", "", "-lhd-"}) +
                         OldMember({"link|/etc/passwd", "", "-lhd-", 0, 0120777}) +
                         OldMember({"dev", "of dev", "-lh0-", 6, 020666}) + '\0';
  EXPECT_EQ(Extract(archive), (Files{{"dev-2", "of dev"}})) << error_;
  EXPECT_TRUE(fs::remove(out_ + "/dev") && fs::is_empty(out_));
}

TEST_F(Hostile, Limits) {
  const string zeros(100000, '\0'), packed = MakeLzhArchive("z", zeros, 0);
  const std::size_t header = static_cast<std::uint8_t>(packed[0]);
  const auto member = [&](std::size_t size, const string& method = "-lh5-") {
    const string data = packed.substr(header, packed.size() - header - 1);
    return OldMember({"z", data, method, size, 0, LzhCrc16(zeros)});
  };
  string many;
  for (int i = 0; i <= 1000; ++i) many += OldMember({"m", "of m"});
  const string three = OldMember({"a", "1234"}) + OldMember({"b", "5678"}) + OldMember({"c", ""});
  const string level3 = "\4\0-lh0-\0\0\0\0\0\0\0\0\0\0\0\0\x20\3\0\0U\0\0\0\xF0\0\0\0\xE0\1"s;
  const Rows<string, ExtractionLimits, string> cases = {
      {level3, {}, "header is larger than the archive"},
      {member(100000), {}, ""},
      {member(10), {}, "too long"},
      {member(100001), {}, "too short"},
      {member((64u << 20) + 1), {}, "larger than 64 MiB"},
      {member(0xFFFFFFFF), {}, "larger than 64 MiB"},
      {member(100000, "-lh1-"), {}, "Unsupported"},
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
  const string text = LapFile().substr(0, 1000);
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
      // The end's mark and the bits that fill the last byte are nobody's.
      const auto files = Extract(flipped);
      EXPECT_TRUE(!files || *files == *whole) << bit;
      EXPECT_TRUE(!files || bit / 8 + 2 >= archive.size()) << bit;
    }
  }
}

TEST_F(Hostile, NoArchive) {
  for (const string& bytes : {""s, "\0"s, "PK\3\4"s, LapFile(), string(5000, 'M')})
    EXPECT_FALSE(Extract(bytes));
  EXPECT_FALSE(ExtractArchive(folder_.Path("none.lzh"), out_, error_));
  EXPECT_NE(error_.find("none.lzh"), string::npos);
  // No folder to write to.
  WriteBytes(folder_.Path("a.lzh"), OldMember({"a", "b"}) + '\0');
  EXPECT_FALSE(ExtractArchive(folder_.Path("a.lzh"), folder_.Path("nowhere"), error_));
  EXPECT_NE(error_.find("cannot write"), string::npos) << error_;
}

// --- several lap files in one archive ---

// A host that takes the name at a position, or none.
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
      {0, "A"}, {1, "B"}, {2, ""}, {3, ""}, {std::nullopt, ""}};  // the third is no lap file
  for (const auto& [taken, title] : cases) {
    host->Taken = taken;
    EXPECT_EQ(root->FileControl()->LoadLapFile(name), !title.empty());
    EXPECT_EQ(host->Asked + root->EventData()->EventName, name + ": a.lxm 表.LXM c.lap" + title);
    EXPECT_EQ(root->ErrorComment().empty(), !title.empty());
  }
  SetHostWindows(nullptr);
}

// --- the working folder ---

// Sets an environment variable for a while.
struct Variable {
  Variable(const char* name, const string& value) : Name(name) {
    if (const char* before = std::getenv(name)) Before = before;
    setenv(name, value.c_str(), 1);
  }
  ~Variable() { Before ? setenv(Name, Before->c_str(), 1) : unsetenv(Name); }
  const char* Name;
  std::optional<string> Before;
};

class WorkingFolders : public testing::Test {
 protected:
  // The reason why it is refused, or who may enter.
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
  const string name_ = folder_.Path("Keltrun2");
  Variable runtime_{"XDG_RUNTIME_DIR", folder_.Path()};
  Variable temporary_{"TMPDIR", folder_.Path("tmp")};
};

TEST_F(WorkingFolders, Place) {
  string error;
  const string user = "Keltrun2-" + std::to_string(geteuid());
  EXPECT_EQ(WorkingFolder(error), name_);
  fs::create_directory(folder_.Path("tmp"));
  for (const char* no_folder : {"", "relative", "/nowhere/at/all"}) {
    const Variable runtime("XDG_RUNTIME_DIR", no_folder);
    EXPECT_EQ(WorkingFolder(error), folder_.Path("tmp/" + user)) << no_folder;
  }
  EXPECT_TRUE(error.empty()) << error;
}

TEST_F(WorkingFolders, OnlyItsOwnerEnters) {
  EXPECT_EQ(State(), "private");
  EXPECT_EQ(chmod(name_.c_str(), 0777), 0);
  EXPECT_EQ(State(), "private");
  if (geteuid() == 0) {
    EXPECT_EQ(chown(name_.c_str(), 12345, 12345), 0);
    EXPECT_EQ(State(), "it belongs to another user");
  }
  fs::remove(name_);
  fs::create_directory(folder_.Path("elsewhere"));
  fs::create_directory_symlink(folder_.Path("elsewhere"), name_);
  EXPECT_EQ(State(), "it is a link");
  string error;
  EXPECT_FALSE(NewExtractionFolder(error));
  EXPECT_TRUE(fs::is_empty(folder_.Path("elsewhere")));
  fs::remove(name_);
  WriteBytes(name_, "");
  EXPECT_EQ(State(), "it is not a folder");
}

TEST_F(WorkingFolders, TheNextExtractionRemovesTheLast) {
  string error;
  const auto first = NewExtractionFolder(error);
  ASSERT_TRUE(first) << error;
  EXPECT_TRUE(fs::is_empty(*first));
  const string outside = folder_.Path("outside"), working = name_ + "/";
  fs::create_directory(outside);
  WriteBytes(outside + "/kept", "kept");
  WriteBytes(*first + "/old.lxm", "");
  fs::create_directory_symlink(outside, *first + "/link");
  fs::create_directory_symlink(outside, working + "extract-link");
  for (const char* name : {"extract-left", "extract-used", "other"})
    fs::create_directory(working + name);
  const int used = open((working + "extract-used").c_str(), O_RDONLY);  // as another process has it
  EXPECT_EQ(flock(used, LOCK_EX), 0);

  const auto second = NewExtractionFolder(error);
  ASSERT_TRUE(second) << error;
  EXPECT_NE(*second, *first);
  std::set<string> left;
  for (const auto& entry : fs::directory_iterator(working)) left.insert(entry.path());
  EXPECT_EQ(left, (std::set{*second, working + "extract-used", working + "other"}));
  EXPECT_EQ(ReadBytes(outside + "/kept"), "kept");
  close(used);
}

}  // namespace
}  // namespace keltrun::test
