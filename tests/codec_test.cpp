// Encodings and XML. Archives are tested in archive_test.cpp.
#include <gtest/gtest.h>

#include "keltrun2/codec/encodings.h"
#include "keltrun2/codec/list_encoding.h"
#include "keltrun2/codec/markup_encoding.h"
#include "keltrun2/codec/utf8.h"
#include "keltrun2/codec/xml.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

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
  for (int code = 0x8140; code < 0xFD00; ++code) {
    const string bytes = {static_cast<char>(code >> 8), static_cast<char>(code)};
    const string text = Decode(bytes, Charset::kShiftJis).Text;
    std::size_t end = 0;
    const char32_t c = NextCodePoint(text, end);
    // Skip codes that are not a single character or that are a private one.
    if (end != text.size() || c == 0xFFFD || (c >= 0xE000 && c <= 0xF8FF)) continue;
    ++characters;
    // Some characters have two codes: the same character must come back, but maybe other bytes.
    const string again = Encoded(text, Charset::kShiftJis);
    ASSERT_EQ(Decode(again, Charset::kShiftJis).Text, text) << std::hex << code;
    ASSERT_TRUE(again.size() == 2 && ShiftJisLength(c) == 2) << std::hex << code;
  }
  // 6,879 in JIS X 0208, 83 in row 13, 374 and 388 in the two blocks of vendor characters.
  EXPECT_EQ(characters, 6879 + 83 + 374 + 388);
}

TEST(Encodings, Characters) {
  const Rows<Text, Text, Text> cases = {
      {"aZ\\~", "aZ\\~", "aZ\\~"},
      {"山髙①Ⅰ∵", "\x8E\x52\xFB\xFC\x87\x40\x87\x54\x81\xE6", "?????"},
      {"ｱﾟ～〜－↓×", "\xB1\xDF\x81\x60\x81\x60\x81\x7C\x81\xAB\x81\x7E", "??????\xD7"},
      {"表ソé€😀b", "\x95\x5C\x83\x5C???b", "??\xE9\x80?b"}};
  for (const auto& [text, shift_jis, windows] : cases) {
    EXPECT_EQ(Encoded(text, Charset::kShiftJis), shift_jis);
    EXPECT_EQ(Encoded(text, Charset::kWindows1252), windows);
    EXPECT_EQ(Encoded(text, Charset::kUtf8), text);
  }
  EXPECT_EQ(Encoded("é山😀", Charset::kShiftJis, MissingCharacter::kCharacterReference),
            "&#233;\x8E\x52&#128512;");
  // A page can show these characters; a plain text gets look-alikes.
  EXPECT_EQ(Encoded("¥‾", Charset::kShiftJis, MissingCharacter::kCharacterReference),
            "&#165;&#8254;");
  EXPECT_EQ(Encoded("¥‾", Charset::kShiftJis), "\\~");
  EXPECT_EQ(Decode("\xE9\x80\x96", Charset::kWindows1252).Text, "é€–");
  EXPECT_EQ(Decode("\x81\x60\x81 b\x81", Charset::kShiftJis).Text, "～\uFFFD b\uFFFD");
  EXPECT_EQ(ThroughShiftJis("a〜é😀"), "a〜??");
  for (const Text name : {"x-sjis", "Shift_JIS", "WINDOWS-31J", "cp932"}) {
    EXPECT_EQ(CharsetFromName(name), Charset::kShiftJis) << name;
  }
  EXPECT_EQ(CharsetFromName("ISO-8859-1"), Charset::kWindows1252);
  EXPECT_EQ(CharsetFromName("koi8-r"), std::nullopt);
}

TEST(Encodings, DetectsTheEncodingOfTextFiles) {
  const Rows<Text, Text> cases = {
      // The last one is not valid UTF-8, so it is Shift-JIS: E5B1, B1 and half a pair.
      {"\xEF\xBB\xBF山\xFF", "山\uFFFD"},
      {"\xFF\xFE\x71\x5C\x3D\xD8\x00\xDE"sv, "山😀"},
      {"\xFE\xFF\x5C\x71\xD8\x3D\xDE\x00"sv, "山😀"},
      {"\xFE\xFF\xD8\x3D\x00\x61\x5C"sv, "\uFFFDa\uFFFD"},
      {"a山\\", "a山\\"},
      {"a\x8E\x52\xB1\\", "a山ｱ\\"},
      {"山\x81", "螻ｱ\uFFFD"}};
  for (const auto& [bytes, text] : cases) EXPECT_EQ(DecodeTextFile(bytes), text) << text;
}

// Texts encoded in a charset, and the charset that is detected for a list of them.
TEST(Encodings, DistinguishesListsOfEuropeAndJapan) {
  const Text european[] = {
      "Jörg Müller", "Größe;Überschrift", "JÖRG MÜLLER", "ÄÖÜß", "ÅÄÖ", "Ödön", "Åsa Öberg",
      // As Shift-JIS these have two and three kanji in a row, and katakana.
      "Hélène,Zoé", "étés", "Mäkäräinen Hämäläinen", "VÄÄNÄNEN;JÄÄSKELÄINEN", "äää", "pitää äkää",
      "François-Éloïse", "CRÉÉE À L’ÎLE", "“Hélène” – l’été", "rock ’n’ roll", "S–A–F",
      "Þóra Ævarsdóttir", "Žižka Matouš", "ŽIŽKA", "Šiška Tomáš", "Núñez, Íñigo", "«ÉÀ»",
      "———————————", "–––––– ––––", "····· ·····", "100 €", "è"};
  const Text japanese[] = {"Anna Berger,山田", "1,高橋,OLC", "桜台OLC",  "OLC桜台",
                           "みどり",           "マリ",       "Ｍ２１Ａ", "佐々木",
                           "ﾔﾏﾓﾄ ﾕｷ",          "ｻｲﾄｳ",       "ﾔﾏﾈｺOC",   "平野　誠",
                           "男子10",           "髙﨑",       "五十嵐 結"};
  const auto expect = [](Text text, Charset charset, Charset used) {
    const ListText list = DecodeList(Encoded(text, charset), std::nullopt);
    EXPECT_EQ(list.Used, used) << text;
    EXPECT_EQ(list.Content.Text, text);
    EXPECT_EQ(list.Assumed, used == Charset::kWindows1252);
    EXPECT_EQ(list.Content.FirstInvalid, string::npos) << text;
  };
  for (const Text text : european) expect(text, Charset::kWindows1252, Charset::kWindows1252);
  for (const Text text : japanese) {
    expect(text, Charset::kShiftJis, Charset::kShiftJis);
    expect(text, Charset::kUtf8, Charset::kUtf8);
  }
  expect("Anna", Charset::kShiftJis, Charset::kUtf8);  // ASCII is valid in all of them
}

TEST(Encodings, ListsWithInvalidBytesOrARequestedCharset) {
  const auto list = [](Text bytes, std::optional<Charset> asked_for = std::nullopt) {
    const ListText read = DecodeList(bytes, asked_for);
    return read.Content.Text + (read.Assumed ? "?" : "");
  };
  // A name cut inside a character; Windows-1252 does not have 0x8D.
  EXPECT_EQ(list("\x8D\x82\x8B\xB4,\x8E\x52\x93 "), "高橋,山\uFFFD ?");
  EXPECT_EQ(list("\x8E\x52\x93\x63\x93 "), "ŽR“c“ ?") << "every byte must be valid";
  EXPECT_EQ(list("J\xF6rg \x81"), "Jörg \uFFFD?");
  EXPECT_EQ(list("a\x81\x40"
                 "b"),
            "a　b")
      << "Shift-JIS without a word, but not Windows-1252";
  EXPECT_EQ(list("J\xF6rg", Charset::kShiftJis), Decode("J\xF6rg", Charset::kShiftJis).Text);
  EXPECT_EQ(list("山", Charset::kWindows1252), "å±±");
  EXPECT_EQ(list("\xEF\xBB\xBF山", Charset::kWindows1252), "山") << "a mark decides";
}

TEST(Encodings, InvalidUtf8IsOneReplacementPerByte) {
  const Rows<Text, std::size_t, Text> cases = {
      {"a\xC0\xAF", 1, "a\uFFFD\uFFFD"},                    // overlong
      {"\xED\xA0\x80", 0, "\uFFFD\uFFFD\uFFFD"},            // a surrogate
      {"\xF4\x90\x80\x80", 0, "\uFFFD\uFFFD\uFFFD\uFFFD"},  // above U+10FFFF
      {"山\xE5\xB1", 3, "山\uFFFD\uFFFD"},                  // truncated
      {"\x80z山😀", 0, "\uFFFDz山😀"}};
  for (const auto& [bytes, invalid, text] : cases) {
    EXPECT_EQ(FindInvalidUtf8(bytes), invalid) << text;
    EXPECT_EQ(Decode(bytes, Charset::kUtf8).Text, text);
  }
}

string Repeated(Text part, int count) {
  string text;
  for (int i = 0; i < count; ++i) text += part;
  return text;
}

string Nested(int depth) { return Repeated("<e>", depth) + Repeated("</e>", depth); }

string ManyAttributes(const string& last) {
  string text = "<a";
  for (int i = 0; i < 100000; ++i) text += " n" + std::to_string(i) + "=''";
  return text + last + "/>";
}

string Declared(const string& encoding, const string& value) {
  return "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?>\r\n<a x=\"" + value + "\"/>";
}

// The result of reading a whole document: the attribute "x" of its root element, and the error.
struct XmlRead {
  string X;
  std::optional<XmlError> Error;
};

XmlRead ReadXml(const string& bytes) {
  XmlReader xml;
  XmlRead read{"", xml.OpenBytes(bytes)};
  if (read.Error) return read;
  if (xml.NextChild()) {
    for (const XmlAttribute& attribute : xml.Attributes()) {
      if (attribute.Name() == "x") read.X = attribute.Value();
    }
  }
  xml.SkipTo(0);
  read.Error = xml.Error();
  return read;
}

TEST(Xml, RefusalsHaveAPlace) {
  constexpr int kAny = -1;
  const Rows<string, int, int> cases = {
      // The place is that of the fault; for an element it is the "<" or the name after it.
      {"<?xml version='1.0'?><!-- no root, no place -->", 0, 0},
      {"<a>\r\n 山\xFF</a>", 2, 3},
      {Declared("Shift_JIS", "\x81"), 2, 7},
      {"\xFF\xFE<\0a\0>\0\n\0\0\xD8<\0/\0a\0>\0"s, 2, 1},
      {"<a>\r\r\n山田"s + '\0' + "</a>", 3, 3},
      {"<a>\n<b x='1&#0;2'/></a>", 2, kAny},
      {"x<a/>", 1, 1},
      {"<a/>\n\n x", 3, 2},
      {"<a/>\n<![CDATA[x]]>", 2, kAny},
      {"<a/>\r\n  <b/>", 2, 3},
      {"<?xml version='1.0'?>\n<!DOCTYPE a [<!ENTITY e 'x'>]>\n<a/>", 2, kAny},
      {Nested(257), 1, 256 * 3 + 1},
      {"<a>\r<b\n>山<c x='1' y='' x='2'/></b></a>", 3, 3},
      {"<a>\n<b></a>", 2, 4},
      {"<a/>\n</a>", 2, 1},
      {"<a>\n<b x=1/></a>", 2, 4},
      {"<a>\n<b x='1'y='2'/></a>", 2, 9},
      {"<a>\n<b x='1/></a>", 2, 4},
      {"<a>\n<b x='1'", 2, 9},
      {"<a>\n< b/></a>", 2, 1},
      {"<a>\n<!-- </a>", 2, 1},
      {"<a>\n<!DOCTYPE a></a>", 2, 1},
      {"<a>\n", 2, 1},
      {"<a>\r", 2, 1},
      {ManyAttributes(" n7=''"), 1, 1}};
  for (const auto& [bytes, line, column] : cases) {
    SCOPED_TRACE(bytes.substr(0, 50));
    const XmlError error = ReadXml(bytes).Error.value_or(XmlError{-1, -1, "accepted"});
    EXPECT_EQ(error.Line, line) << error.Detail;
    EXPECT_TRUE(column == kAny || error.Column == column || error.Column == column + 1)
        << ToString(error);
  }
  EXPECT_EQ(ToString(XmlError{3, 14, "bad"}) + ToString(XmlError{0, 0, "bad"}),
            "line 3, column 14: badbad");
}

TEST(Xml, Accepts) {
  const Rows<string, string> cases = {
      {Declared("UTF-8", "山é髙"), "山é髙"},
      {"\xEF\xBB\xBF" + Declared("Shift_JIS", "山é髙"), "山é髙"},  // the mark decides
      {"\xFF\xFE<\0a\0 \0x\0=\0'\0\x71\x5C'\0/\0>\0"s, "山"},
      {"\xFE\xFF\0<\0a\0 \0x\0=\0'\x5C\x71\0'\0/\0>"s, "山"},
      {Declared("x-sjis", "\x8E\x52\x95\x5C\xFB\xFC\xB1\x81\x60\x87\x40"), "山表髙ｱ～①"},
      {Declared("ISO-8859-1", "\xE9\x80"), "é€"},
      {"\r\n<!-- [x] --><?p?><a x='1' X='2' p:x='3'/>\n<!-- <!DOCTYPE b [ --> \n", "1"},
      {"<!DOCTYPE a SYSTEM 'a.dtd'><a x='&lt;&amp;&#23665;&#x5C71;&quot;'/>", "<&山山\""},
      {Nested(256), ""},
      {ManyAttributes(" x='1'"), "1"}};
  for (const auto& [bytes, expected] : cases) {
    const XmlRead read = ReadXml(bytes);
    EXPECT_FALSE(read.Error) << ToString(*read.Error) << bytes.substr(0, 50);
    EXPECT_EQ(read.X, expected) << bytes.substr(0, 50);
  }
  // A text is already UTF-8, whatever its declaration says.
  XmlReader text;
  const string declared = "\xEF\xBB\xBF" + Declared("Shift_JIS", "山é髙");
  ASSERT_FALSE(text.OpenText(declared));
  ASSERT_TRUE(text.NextChild());
  EXPECT_EQ(text.Attributes()[0].Value(), "山é髙");
}

TEST(Xml, WalksThroughTheElements) {
  XmlReader xml;
  const string document =
      "<r a='1&amp;2&unknown;&#38;\r\n3\t' b=\"<'\" >x<!--<c/>--><k:c /><![CDATA[<c>]]>"
      "<d\n><e f='g'/></d ><?p <c>?><h></h></r>";
  ASSERT_FALSE(xml.OpenText(document));
  ASSERT_TRUE(xml.NextChild());
  EXPECT_EQ(xml.Attributes()[0].Value(), "1&2&unknown;& 3 ");
  EXPECT_EQ(xml.Attributes()[1].Value(), "<'");
  string names;
  while (xml.NextChild()) {
    names += string(xml.LocalName()) + std::to_string(xml.Attributes().size()) + " ";
    xml.SkipTo(1);  // skips "e"
  }
  EXPECT_EQ(names, "c0 d0 h0 ");
  xml.SkipTo(0);
  EXPECT_FALSE(xml.Error()) << ToString(*xml.Error());
}

// The value of the root's attribute "x", the charset used, and the letters C for a declaration that
// is contradicted, A for an assumption, I for bytes that are invalid, B for each blanked character.
string DecodedXml(const string& bytes, std::optional<Charset> asked_for = std::nullopt) {
  const MarkupText xml = DecodeMarkup(bytes, asked_for);
  const string& text = xml.Content.Text;
  const std::size_t begin = text.find(" x=\"") + 4;
  return text.substr(begin, text.rfind('"') - begin) + " " + xml.Used + " " +
         (xml.Contradicted ? "C" : "") + (xml.Assumed ? "A" : "") +
         (xml.Content.FirstInvalid == string::npos ? "" : "I") + string(xml.Blanked, 'B');
}

string Utf16(const string& ascii, bool big_endian) {
  string bytes;
  for (const char c : ascii) bytes += big_endian ? string{'\0', c} : string{c, '\0'};
  return bytes;
}

TEST(Xml, DecodesWhatOtherProgramsDeclare) {
  const string plain = "<a x=\"";
  const Rows<string, string> cases = {
      {Declared("UTF-8", "山é"), "山é UTF-8 "},
      {plain + "山é\"/>", "山é UTF-8 "},
      {Declared("utf-8", "ab"), "ab UTF-8 "},
      // Bytes win over the declaration.
      {Declared("UTF-8", "Andr\xE9 B\xFC"), "André Bü Windows-1252 CA"},
      {Declared("UTF-8", "\x8E\x52\x93\x63"), "山田 Shift-JIS C"},
      {Declared("UTF-8", "山田\xFF"), "山田\uFFFD UTF-8 I"},
      {Declared("windows-1252", "André"), "André UTF-8 C"},
      {Declared("iso-8859-2", "山"), "山 UTF-8 C"},
      {Declared("US-ASCII", "é"), "é UTF-8 C"},
      {Declared("US-ASCII", "a"), "a UTF-8 "},
      {Declared("utf-16", "é"), "é UTF-8 C"},
      {Declared("utf-16", "\xE9t\xE9"), "été Windows-1252 CA"},
      {Declared("utf-16", "a"), "a UTF-8 C"},
      {Declared("klingon", "a\xE9"), "aé Windows-1252 CA"},
      {Declared("utf-8//TRANSLIT", "a"), "a UTF-8 C"},
      {Declared("IBM037", "a"), "a UTF-8 C"},
      // 8-bit charsets, also those of the C library.
      {Declared("ISO-8859-1", "\xE9\x80"), "é€ Windows-1252 "},
      {Declared("ISO8859-1", "\xE9\x80"), "é€ Windows-1252 "},
      {Declared("windows-1252", "\xE9\x81"), "é\uFFFD Windows-1252 I"},
      {Declared("Shift_JIS", "\x8E\x52"), "山 Shift-JIS "},
      {Declared("iso-8859-2", "\xB9\xE8"), "šč iso-8859-2 "},
      {Declared("ISO-8859-15", "\xA4"), "€ ISO-8859-15 "},
      {Declared("windows-1250", "\x8A\xF8"), "Šř windows-1250 "},
      {Declared("windows-1251", "\xC6"), "Ж windows-1251 "},
      {Declared("windows-1253", "\xE1\xFF\xE1"), "α\uFFFDα windows-1253 I"},
      {Declared("windows-1258", "E"), "E windows-1258 "},  // held back until the next character
      {Declared("EUC-JP", "\xBB\xB3"), "山 EUC-JP "},
      {Declared("iso-2022-jp", "\x1B$B;3\x1B(B"), "山 iso-2022-jp "},
      // Marks, and UTF-16 without one.
      {"\xEF\xBB\xBF" + Declared("utf-8", "é"), "é UTF-8 "},
      {"\xEF\xBB\xBF" + Declared("windows-1252", "é\xFF"), "é\uFFFD UTF-8 CI"},
      {"\xFF\xFE" + Utf16(Declared("utf-16", "a"), false), "a UTF-16LE "},
      {"\xFE\xFF" + Utf16(plain + "a\"/>", true), "a UTF-16BE "},
      {Utf16(Declared("utf-16", "a"), false), "a UTF-16LE "},
      {Utf16(Declared("utf-8", "a"), true), "a UTF-16BE C"},
      {plain + "\xE9\"/>", "é Windows-1252 A"},
      // Control characters, and references to them.
      {plain + "a\tb\x01" + "c\0d"s + "&#x1F;e&#0;&#65;\"/>",
       "a\tb c d      e    &#65; UTF-8 BBBB"},
  };
  for (const auto& [bytes, expected] : cases) EXPECT_EQ(DecodedXml(bytes), expected);
  // Someone who names the charset knows better than the declaration, but not than a mark.
  EXPECT_EQ(DecodedXml(Declared("UTF-8", "\x8E\x52"), Charset::kShiftJis), "山 Shift-JIS ");
  EXPECT_EQ(DecodedXml("\xEF\xBB\xBF" + Declared("utf-8", "é"), Charset::kShiftJis), "é UTF-8 ");
  EXPECT_EQ(DecodeMarkup("", std::nullopt).Content.Text, "");
}

// The texts of the children of the root element, in brackets.
string Texts(const string& document, std::string_view (XmlReader::*text)()) {
  XmlReader xml;
  if (xml.OpenText(document)) return "not opened";
  string texts;
  xml.NextChild();
  while (xml.NextChild()) {
    texts += "[" + string((xml.*text)()) + "]";
    if (xml.Depth() > 1) return "not closed";
  }
  xml.SkipTo(0);
  return texts + (xml.Error() ? " " + ToString(*xml.Error()) : "");
}

TEST(Xml, ReadsTexts) {
  const Rows<string, string, string> cases = {
      // The text of an element alone, and with that of the elements inside.
      {"<r><a>山 1</a><a/><a></a><b>\r\n\tx\r\ny \n</b></r>", "[山 1][][][x y]", ""},
      {"<r><a>&lt;&#x5C71;&amp;amp;&x;&</a ><p:a>1</p:a></r>", "[<山&amp;&x;&][1]", ""},
      {"<r><a>1<!-- 9 --><?p 9?><![CDATA[ <&amp;\n]]>2</a></r>", "[1 <&amp; 2]", ""},
      {"<r><a><![CDATA[]]></a><a><![CDATA[]]]]></a></r>", "[][]]]", ""},
      {"<r><a>1<b>2</b>3</a><a><b/>4<b><c>5</c></b></a></r>", "[13][4]", "[1 23][4  5]"},
      {"<r>\n<a>1</b></r>", "[] line 2, column 5: </b> where </a> was expected", ""},
      {"<r>\n<a>1", "[] line 2, column 5: the document ends inside <a>", ""},
      {"<r><a>1</a", "[] line 1, column 11: a \">\" is missing", ""},
      {"<r><a>1<b>2</a></r>", "[] line 1, column 12: </a> where </b> was expected", ""},
  };
  for (const auto& [document, own, whole] : cases) {
    EXPECT_EQ(Texts(document, &XmlReader::Text), own) << document;
    EXPECT_EQ(Texts(document, &XmlReader::WholeText), whole.empty() ? own : whole) << document;
  }
  XmlReader none;
  ASSERT_FALSE(none.OpenText("<r/>"));
  EXPECT_EQ(none.Text(), "");
  EXPECT_TRUE(none.NextChild());  // Text did not open the root element
}

TEST(Xml, WrittenDocumentsReadBack) {
  EXPECT_EQ(AllowedInXml("a\t\n\r\x01\x0B\x1F山\uFFFE\uFFFF😀\xFF\0b"sv), "a\t\n\r山😀\uFFFDb");
  const string value = "\"'<&>\t\r\n山😀 ";
  XmlWriter xml;
  {
    const XmlWriter::Element root(xml, "r");
    xml.Attribute("x", value + "\x01\uFFFE");
    const XmlWriter::Element child(xml, "c");
    xml.Attribute("n", -3);
  }
  const string document = std::move(xml).Take();
  EXPECT_EQ(document,
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"
            "<r x=\"&quot;'&lt;&amp;>&#09;&#13;&#10;山😀 \"><c n=\"-3\"/></r>\r\n");
  EXPECT_EQ(ReadXml(document).X, value);
}

}  // namespace
}  // namespace keltrun::test
