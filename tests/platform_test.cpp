// The outside: encodings, files, XML, the host's windows, the clock.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>

#include "keltrun2/platform/clock.h"
#include "keltrun2/platform/encodings.h"
#include "keltrun2/platform/files.h"
#include "keltrun2/platform/host_windows.h"
#include "keltrun2/platform/utf8.h"
#include "keltrun2/platform/xml.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

namespace fs = std::filesystem;
using std::string;
using Text = std::string_view;
using namespace std::literals;

string Encoded(Text text, Charset charset,
               MissingCharacter missing = MissingCharacter::kQuestionMark) {
  string out;
  AppendEncoded(out, text, charset, missing);
  return out;
}

TEST(Encodings, EveryShiftJisCodeComesBack) {
  int characters = 0;
  int private_use = 0;
  for (int code = 0x8100; code < 0xFD00; ++code) {
    const int lead = code >> 8, trail = code & 0xFF;
    if ((lead >= 0xA0 && lead <= 0xDF) || trail < 0x40 || trail == 0x7F || trail > 0xFC) continue;
    const string bytes = {static_cast<char>(lead), static_cast<char>(trail)};
    const string text = Decode(bytes, Charset::kShiftJis).Text;
    if (text.find("\uFFFD") != string::npos) continue;
    std::size_t pos = 0;
    const char32_t c = NextCodePoint(text, pos);
    ASSERT_EQ(pos, text.size()) << std::hex << code;
    ++(c >= 0xE000 && c <= 0xF8FF ? private_use : characters);
    // Some characters have two codes: the same character must come back, not the same bytes.
    const string again = Encoded(text, Charset::kShiftJis);
    ASSERT_EQ(again.size(), 2u) << std::hex << code;
    ASSERT_EQ(Decode(again, Charset::kShiftJis).Text, text) << std::hex << code;
    ASSERT_EQ(ShiftJisLength(c), 2) << std::hex << code;
  }
  // 6,879 of JIS X 0208, 83 of row 13, 374 and 388 of the two blocks of vendor characters.
  EXPECT_EQ(characters, 6879 + 83 + 374 + 388);
  EXPECT_TRUE(private_use == 0 || private_use == 10 * 188);
}

TEST(Encodings, Characters) {
  const Rows<Text, Text, Text> cases = {{"aZ\\~\r\n", "aZ\\~\r\n", "aZ\\~\r\n"},
                                        {"山田", "\x8E\x52\x93\x63", "??"},
                                        {"髙", "\xFB\xFC", "?"},
                                        {"①Ⅰ∵", "\x87\x40\x87\x54\x81\xE6", "???"},
                                        {"ｱﾟ", "\xB1\xDF", "??"},
                                        {"～〜", "\x81\x60\x81\x60", "??"},
                                        {"－↓×", "\x81\x7C\x81\xAB\x81\x7E", "??\xD7"},
                                        {"表ソ", "\x95\x5C\x83\x5C", "??"},
                                        {"é€", "??", "\xE9\x80"},
                                        {"a😀b", "a?b", "a?b"}};
  for (const auto& [text, shift_jis, windows] : cases) {
    SCOPED_TRACE(text);
    EXPECT_EQ(Encoded(text, Charset::kShiftJis), shift_jis);
    EXPECT_EQ(Encoded(text, Charset::kWindows1252), windows);
    EXPECT_EQ(Encoded(text, Charset::kUtf8), text);
  }
  EXPECT_EQ(Encoded("é山😀", Charset::kShiftJis, MissingCharacter::kCharacterReference),
            "&#233;\x8E\x52&#128512;");
  EXPECT_EQ(Encoded("é山", Charset::kWindows1252, MissingCharacter::kCharacterReference),
            "\xE9&#23665;");
  EXPECT_EQ(Encoded("a\xFF", Charset::kUtf8), "a\uFFFD");
  EXPECT_EQ(Decode("\xE9\x80\x96", Charset::kWindows1252).Text, "é€–");
  EXPECT_EQ(Decode("\x81\x60", Charset::kShiftJis).Text, "～");
  EXPECT_EQ(Decode("a\x81 b\x81", Charset::kShiftJis).Text, "a\uFFFD b\uFFFD");
  EXPECT_EQ(ThroughShiftJis("a〜é😀"), "a〜??");
  EXPECT_EQ(ShiftJisLength(U'é'), 1);
}

TEST(Encodings, Names) {
  for (const Text name : {"x-sjis", "Shift_JIS", "WINDOWS-31J", "cp932"}) {
    EXPECT_EQ(CharsetFromName(name), Charset::kShiftJis) << name;
  }
  for (const Text name : {"ISO-8859-1", "windows-1252"}) {
    EXPECT_EQ(CharsetFromName(name), Charset::kWindows1252) << name;
  }
  EXPECT_EQ(CharsetFromName("UTF-8"), Charset::kUtf8);
  EXPECT_EQ(CharsetFromName("koi8-r"), std::nullopt);
}

TEST(Encodings, TextFilesTellTheirEncoding) {
  const Rows<Text, Text> cases = {
      // The last one is no valid UTF-8, so it is Shift-JIS: E5B1, B1 and half a pair.
      {"", ""},
      {"abc\\", "abc\\"},
      {"\xEF\xBB\xBF山", "山"},
      {"\xEF\xBB\xBF\xFF", "\uFFFD"},
      {"\xFF\xFE\x71\x5C\x3D\xD8\x00\xDE"sv, "山😀"},
      {"\xFE\xFF\x5C\x71\xD8\x3D\xDE\x00"sv, "山😀"},
      {"\xFE\xFF\xD8\x3D\x00\x61\x5C"sv, "\uFFFDa\uFFFD"},
      {"a山", "a山"},
      {"a\x8E\x52", "a山"},
      {"\xB1\xB2", "ｱｲ"},
      {"山\x81", "螻ｱ\uFFFD"}};
  for (const auto& [bytes, text] : cases) EXPECT_EQ(DecodeTextFile(bytes), text) << text;
}

TEST(Encodings, InvalidUtf8IsOneReplacementPerByte) {
  const Rows<Text, std::size_t, Text> cases = {
      // Overlong, surrogate, above U+10FFFF, cut, lone; with the offset of the first invalid byte.
      {"a\xC0\xAF", 1, "a\uFFFD\uFFFD"},
      {"\xED\xA0\x80", 0, "\uFFFD\uFFFD\uFFFD"},
      {"\xF4\x90\x80\x80", 0, "\uFFFD\uFFFD\uFFFD\uFFFD"},
      {"山\xE5\xB1", 3, "山\uFFFD\uFFFD"},
      {"\x80z", 0, "\uFFFDz"},
      {"a山😀", string::npos, "a山😀"}};
  for (const auto& [bytes, invalid, text] : cases) {
    EXPECT_EQ(FindInvalidUtf8(bytes), invalid) << text;
    EXPECT_EQ(Decode(bytes, Charset::kUtf8).Text, text);
  }
}

TEST(Files, WritesAndReadsWholeFiles) {
  const TemporaryFolder folder;
  string error;
  const string name = folder.Path("山.bin");
  for (const Text bytes : {"a\0\r\n\xFF"sv, ""sv, "longer than before"sv}) {
    ASSERT_TRUE(WriteFile(name, bytes, error)) << error;
    EXPECT_EQ(ReadFile(name, error), bytes);
  }
  const string long_name = folder.Path(string(255, 'n'));  // the longest a file system takes
  EXPECT_TRUE(WriteFile(long_name, "x", error)) << error;

  const mode_t mask = umask(022);
  EXPECT_TRUE(WriteFile(folder.Path("page"), "x", error));
  umask(mask);
  EXPECT_EQ(fs::status(folder.Path("page")).permissions(), fs::perms(0644));  // a web server's too
}

TEST(Files, FailuresNameTheFile) {
  const TemporaryFolder folder;
  for (const string& name : {folder.Path(), folder.Path("missing/x")}) {
    string error;
    EXPECT_FALSE(WriteFile(name, "x", error));
    EXPECT_NE(error.find(name), string::npos) << error;
    error.clear();
    EXPECT_EQ(ReadFile(name, error), std::nullopt);
    EXPECT_NE(error.find(name), string::npos) << error;
  }
  string error;
  EXPECT_FALSE(WriteFile("/dev/full", "x", error));
  EXPECT_NE(error.find("/dev/full"), string::npos) << error;
}

TEST(Files, FailedWriteKeepsTheOldFile) {
  const TemporaryFolder folder;
  const string name = folder.Path("event.lxm");
  string error;
  ASSERT_TRUE(WriteFile(name, "old", error));
  // A size limit of the process stands for a full disk.
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  const rlimit tight{1000, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &tight), 0);
  const bool written = WriteFile(name, string(100000, 'n'), error);
  setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, handler);
  EXPECT_FALSE(written);
  EXPECT_NE(error.find(name), string::npos) << error;
  EXPECT_EQ(ReadFile(name, error), "old");
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path()), {}), 1);  // nothing left over
}

TEST(Files, WritesThroughLinks) {
  const TemporaryFolder folder;
  string error;
  ASSERT_TRUE(CreateFolder(folder.Path("a/b"), error));
  ASSERT_TRUE(WriteFile(folder.Path("a/b/target"), "old", error));
  fs::create_symlink("b/target", folder.Path("a/link"));
  fs::create_symlink("b/later", folder.Path("a/dangling"));
  for (const auto& [link, target] :
       {std::pair("a/link", "a/b/target"), {"a/dangling", "a/b/later"}}) {
    ASSERT_TRUE(WriteFile(folder.Path(link), "new", error)) << error;
    EXPECT_TRUE(fs::is_symlink(folder.Path(link))) << link;
    EXPECT_EQ(ReadFile(folder.Path(target), error), "new") << link;
  }
}

TEST(Files, FoldersAndNames) {
  const TemporaryFolder folder;
  string error;
  EXPECT_TRUE(CreateFolder(folder.Path("a/b/c"), error));
  EXPECT_TRUE(CreateFolder(folder.Path("a/b/c"), error));
  ASSERT_TRUE(WriteFile(folder.Path("file"), "", error));
  EXPECT_FALSE(CreateFolder(folder.Path("file"), error));
  EXPECT_FALSE(CreateFolder(folder.Path("file/x"), error));
  EXPECT_TRUE(FolderExists(folder.Path("a/b")) && !FolderExists(folder.Path("file")));
  EXPECT_TRUE(FileExists(folder.Path("file")) && !FileExists(folder.Path("a")));

  const Rows<Text, Text> folders = {
      {"", "./"}, {"/", "/"}, {"a\\b", "a/b/"}, {"a/b/", "a/b/"}, {"a\\", "a/"}};
  for (const auto& [name, expected] : folders) EXPECT_EQ(WithTrailingSeparator(name), expected);
  const Rows<Text, Text, Text> names = {{"a/b.LXM", "b.LXM", "lxm"},
                                        {"a\\b.tar.Txt", "b.tar.Txt", "txt"},
                                        {"a.b/c", "c", ""},
                                        {"x.", "x.", ""},
                                        {"x", "x", ""},
                                        {"a.b/", "", ""},
                                        {"ｘ.Ｌ", "ｘ.Ｌ", "Ｌ"}};
  for (const auto& [name, part, extension] : names) {
    EXPECT_EQ(FileNamePart(name), part);
    EXPECT_EQ(FileExtension(name), extension) << name;
  }
}

string Utf16(std::u16string_view text, bool big_endian) {
  string bytes;
  for (const char16_t unit : text) {
    const char high = static_cast<char>(unit >> 8), low = static_cast<char>(unit & 0xFF);
    bytes += big_endian ? string{high, low} : string{low, high};
  }
  return bytes;
}

string Nested(int depth) {
  string text;
  for (int i = 0; i < depth; ++i) text += "<e>";
  for (int i = 0; i < depth; ++i) text += "</e>";
  return text;
}

string ManyAttributes(int count, Text last = "") {
  string text = "<a";
  for (int i = 0; i < count; ++i) text += " n" + std::to_string(i) + "=''";
  return text + string(last) + "/>";
}

TEST(Xml, Refusals) {
  // The place is that of the fault: for an element its "<" or the name behind it.
  constexpr int kAny = -1;
  const Rows<Text, string, int, int> cases = {
      {"empty", "", 1, 1},
      {"blank", " \r\n ", 1, 1},
      {"no root (no place)", "<?xml version='1.0'?><!-- a -->", 0, kAny},
      {"no XML", "$LAPFILE Ver=2", 1, 1},
      {"truncated", "<a>\n<b>", 2, kAny},
      {"mismatch", "<a>\n<b></a>", 2, kAny},
      {"bad UTF-8", "<a>\r\n 山\xFF</a>", 2, 3},
      {"bad Shift-JIS", "<?xml version='1.0' encoding='Shift_JIS'?>\n<a x='\x81'/>", 2, 7},
      {"bad UTF-16", "\xFF\xFE" + Utf16(u"<a>\n\xD800</a>", false), 2, 1},
      {"unknown encoding", "<?xml version='1.0' encoding='koi8-r'?><a/>", 1, kAny},
      {"NUL", "<a>\r\r\n山田"s + '\0' + "</a>", 3, 3},
      {"NUL reference", "<a>\n<b x='1&#0;2'/></a>", 2, kAny},
      {"text in front", "x<a/>", 1, 1},
      {"text behind", "<a/>\n\n x", 3, 2},
      {"CDATA behind", "<a/>\n<![CDATA[x]]>", 2, kAny},
      {"two roots", "<a/>\r\n  <b/>", 2, 3},
      {"subset", "<?xml version='1.0'?>\n<!DOCTYPE a [<!ENTITY e 'x'>]>\n<a/>", 2, kAny},
      {"entity bomb", "<!DOCTYPE a [<!ENTITY l 'l'><!ENTITY m '&l;&l;'>]><a>&m;</a>", 1, kAny},
      {"depth 257", Nested(257), 1, 256 * 3 + 1},
      {"depth 10,000", Nested(10000), 1, 256 * 3 + 1},
      {"attribute twice", "<a>\r<b\n>山<c x='1' y='' x='2'/></b></a>", 3, 3},
      {"attribute twice among many", ManyAttributes(100000, " n7=''"), 1, 1}};
  for (const auto& [what, bytes, line, column] : cases) {
    SCOPED_TRACE(what);
    XmlDocument document;
    const auto error = document.LoadBytes(bytes);
    EXPECT_FALSE(document.Root());
    if (!error) {
      ADD_FAILURE() << "accepted";
      continue;
    }
    EXPECT_NE(error->Detail, "");
    EXPECT_EQ(error->Line, line) << ToString(*error);
    EXPECT_TRUE(column == kAny ? error->Line == 0 || error->Column >= 1
                               : error->Column == column || error->Column == column + 1)
        << ToString(*error);
  }
  EXPECT_EQ(ToString(XmlError{3, 14, "bad"}), "line 3, column 14: bad");
  EXPECT_EQ(ToString(XmlError{0, 0, "bad"}), "bad");
}

TEST(Xml, Accepts) {
  const string value = "山é髙";
  const auto declared = [](Text encoding, Text bytes) {
    return "<?xml version=\"1.0\" encoding=\"" + string(encoding) + "\"?>\r\n<a x=\"" +
           string(bytes) + "\"/>";
  };
  const std::u16string wide = u"<?xml version='1.0' encoding='UTF-16'?><a x='山é髙'/>";
  const Rows<Text, string, string> cases = {
      {"UTF-8", declared("UTF-8", value), value},
      {"no declaration", "<a x='山é髙'/>", value},
      {"mark over declaration", "\xEF\xBB\xBF" + declared("Shift_JIS", value), value},
      {"UTF-16 LE", "\xFF\xFE" + Utf16(wide, false), value},
      {"UTF-16 BE", "\xFE\xFF" + Utf16(wide, true), value},
      {"Shift_JIS", declared("shift_jis", "\x8E\x52\x95\x5C\xFB\xFC\xB1"), "山表髙ｱ"},
      {"x-sjis", declared("x-sjis", "\x81\x60"), "～"},
      {"Windows-31J", declared("Windows-31J", "\x87\x40"), "①"},
      {"ISO-8859-1", declared("ISO-8859-1", "\xE9\x80"), "é€"},
      {"beside the root", "\r\n<!-- [x] --><?p?><a x='1'/>\n<!-- <!DOCTYPE b [ --> \n", "1"},
      {"document type", "<!DOCTYPE a SYSTEM 'a.dtd'><a x='1'/>", "1"},
      {"references", "<a x='&lt;&amp;&#23665;&#x5C71;&quot;'/>", "<&山山\""},
      {"case", "<a x='1' X='2' p:x='3'/>", "1"},
      {"depth 256", Nested(256), ""},
      {"many attributes", ManyAttributes(100000, " x='1'"), "1"}};
  for (const auto& [what, bytes, expected] : cases) {
    SCOPED_TRACE(what);
    XmlDocument document;
    const auto error = document.LoadBytes(bytes);
    EXPECT_FALSE(error) << ToString(error.value_or(XmlError{}));
    EXPECT_EQ(document.Root().attribute("x").value(), expected);
  }
  XmlDocument document;  // a text is UTF-8 already; the document can be loaded again
  EXPECT_TRUE(document.LoadText("<a>"));
  EXPECT_FALSE(document.LoadText("\xEF\xBB\xBF" + declared("Shift_JIS", value)));
  EXPECT_EQ(document.Root().attribute("x").value(), value);
  ASSERT_FALSE(document.LoadText("<k:a xmlns:k='u'/>"));
  EXPECT_EQ(LocalName(document.Root()), "a");
}

TEST(Xml, WrittenDocumentsReadBack) {
  EXPECT_EQ(AllowedInXml("a\t\n\r\x01\x0B\x1F山\uFFFE\uFFFF😀"), "a\t\n\r山😀");
  EXPECT_EQ(AllowedInXml("\xFFz"), "\uFFFDz");
  EXPECT_EQ(AllowedInXml("a\0b"sv), "ab");

  const string value = "\"'<&>\t\r\n山😀 ";
  pugi::xml_document document;
  pugi::xml_node root = document.append_child("r");
  root.append_child("c").append_attribute("x") = value.c_str();
  root.append_child("d");
  const string text = WriteXml(document);
  EXPECT_TRUE(text.starts_with("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<r><c x=\"")) << text;
  EXPECT_TRUE(text.ends_with("/><d/></r>\r\n")) << text;
  XmlDocument read;
  ASSERT_FALSE(read.LoadBytes(text));
  EXPECT_EQ(read.Root().child("c").attribute("x").value(), value);
}

TEST(HostWindows, HostReplacesThem) {
  struct Windows : HostWindows {
    std::unique_ptr<frmProgressBar> OpenProgress(Text) override { return nullptr; }
    std::optional<std::size_t> ChooseName(Text, const std::vector<string>& names) override {
      return names.size() - 1;
    }
    bool AskYesNo(Text, Text) override { return true; }
  };
  const auto windows = std::make_shared<Windows>();
  SetHostWindows(windows);
  EXPECT_EQ(CurrentHostWindows(), windows);
  SetHostWindows(nullptr);
  ASSERT_NE(CurrentHostWindows(), nullptr);
  EXPECT_NE(CurrentHostWindows(), windows);
  EXPECT_EQ(frmProgressBar::BarTwips(0), 0);
  EXPECT_EQ(frmProgressBar::BarTwips(50), 2197);
  EXPECT_EQ(frmProgressBar::BarTwips(100), 4395);
}

TEST(HostWindows, WithoutTerminalNothingIsChosen) {
  const int input = dup(STDIN_FILENO);
  const int nothing = open("/dev/null", O_RDONLY);
  ASSERT_GE(dup2(nothing, STDIN_FILENO), 0);
  EXPECT_EQ(CurrentHostWindows()->ChooseName("caption", {"a", "b"}), std::nullopt);
  EXPECT_FALSE(CurrentHostWindows()->AskYesNo("text", "title"));
  dup2(input, STDIN_FILENO);
  close(input);
  close(nothing);
}

TEST(Clock, CanBeReplaced) {
  SetClock([] { return 40000.25; });
  EXPECT_EQ(Now(), 40000.25);
  SetClock({});
  const char* saved = std::getenv("SOURCE_DATE_EPOCH");
  const string before = saved == nullptr ? "" : saved;
  setenv("SOURCE_DATE_EPOCH", "0", 1);
  EXPECT_EQ(Now(), 25569);  // 1970-01-01
  setenv("SOURCE_DATE_EPOCH", "1709208000", 1);
  EXPECT_EQ(Now(), 45351.5);  // 2024-02-29 12:00
  unsetenv("SOURCE_DATE_EPOCH");
  EXPECT_GT(Now(), 45351.5);
  if (saved != nullptr) setenv("SOURCE_DATE_EPOCH", before.c_str(), 1);
}

}  // namespace
}  // namespace keltrun::test
