// Texts: width, columns, letter case, numbers, fields, sorting, HTML, file names.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

#include "keltrun2/model/sort.h"
#include "keltrun2/text/file_names.h"
#include "keltrun2/text/html.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/numbers.h"
#include "keltrun2/text/split.h"
#include "keltrun2/text/utf16.h"
#include "keltrun2/text/width.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using std::string;
using Text = std::string_view;
using namespace std::string_view_literals;

// Every printable ASCII character with its full-width form.
constexpr Text kHalf =
    " !\"#$%&'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^_`"
    "abcdefghijklmnopqrstuvwxyz{|}~";
constexpr Text kFull =
    "　！＂＃＄％＆＇（）＊＋，－．／０１２３４５６７８９：；＜＝＞？＠"
    "ＡＢＣＤＥＦＧＨＩＪＫＬＭＮＯＰＱＲＳＴＵＶＷＸＹＺ［￥］＾＿｀"
    "ａｂｃｄｅｆｇｈｉｊｋｌｍｎｏｐｑｒｓｔｕｖｗｘｙｚ｛｜｝～";

TEST(Width, FoldsBothWays) {
  EXPECT_EQ(ToHalfWidth(kFull), kHalf);
  EXPECT_EQ(ToFullWidth(kHalf), kFull);
  // The full-width backslash, half-width katakana and the neighbours of the block are kept.
  EXPECT_EQ(ToHalfWidth("＼ｱﾟ｟￠￦山é😀\t\x7F"), "＼ｱﾟ｟￠￦山é😀\t\x7F");
  EXPECT_EQ(ToFullWidth("＼ｱ山é😀\t\x7F"), "＼ｱ山é😀\t\x7F");
  const Rows<HalfWidth, Text> folds = {
      // Flags: letters, digits, space, symbols, upper, lower. ASCII letters change case without the
      // first flag, full-width ones only with it.
      {{0, 0, 0, 0, 0, 0}, "ＡｚBy３　；￥"}, {{1, 0, 0, 0, 0, 0}, "AzBy３　；￥"},
      {{0, 1, 0, 0, 0, 0}, "ＡｚBy3　；￥"},  {{0, 0, 1, 0, 0, 0}, "ＡｚBy３ ；￥"},
      {{0, 0, 0, 1, 0, 0}, "ＡｚBy３　;\\"},  {{0, 0, 0, 0, 1, 0}, "ＡｚBY３　；￥"},
      {{0, 0, 0, 0, 0, 1}, "Ａｚby３　；￥"}, {{1, 0, 0, 0, 1, 0}, "AZBY３　；￥"},
      {{1, 0, 0, 0, 0, 1}, "azby３　；￥"}};
  for (const auto& [fold, expected] : folds)
    EXPECT_EQ(ToHalfWidth("ＡｚBy３　；￥", fold), expected);
  EXPECT_EQ(NormalizeName(" 山田　 太\0郎\t"sv), "山田太郎\t");
}

TEST(Width, Columns) {
  const Rows<Text, std::size_t> widths = {
      // "×" takes two bytes in Shift-JIS although it is below U+0100; "é" has none there.
      {"", 0}, {"abc", 3}, {"山田", 4}, {"ｱｲ", 2}, {"髙〜～", 6}, {"×", 2}, {"é", 1}};
  for (const auto& [text, width] : widths) EXPECT_EQ(DisplayWidth(text), width) << text;
  const Rows<Text, std::size_t, std::size_t, Text> cuts = {
      {"山田太郎", 1, 4, "山田"}, {"山田太郎", 1, 5, "山田 "}, {"山田太郎", 2, 4, " 田 "},
      {"a山b", 2, 1, " "},        {"a山b", 3, 1, " "},         {"a山b", 3, 2, " b"},
      {"a山b", 2, 3, "山b"},      {"a山b", 5, 3, ""},          {"a山b", 1, 0, ""},
      {"abc", 2, 9, "bc"},        {"ｱｲ山", 2, 3, "ｲ山"},       {"é×a", 2, 1, "×"}};
  for (const auto& [text, start, width, expected] : cuts) {
    EXPECT_EQ(CutByWidth(text, start, width), expected) << text << start << width;
  }
  const Rows<Text, std::size_t, bool, bool, Text> pads = {
      // Only the half-width blank is trimmed.
      {"山", 4, false, false, "山  "}, {"山", 4, true, false, "  山"},
      {" a ", 4, true, false, "  a "}, {" a ", 4, true, true, "   a"},
      {"　a", 4, false, true, "　a "}, {"山田太郎", 5, true, true, "山田 "},
      {"ｱｲｳ", 2, false, false, "ｱｲ"},  {"ｱ", 3, true, false, "  ｱ"},
      {"山×", 3, false, false, "山×"}, {"", 2, true, true, "  "}};
  for (const auto& [text, width, right, trim, expected] : pads) {
    EXPECT_EQ(PadByWidth(text, width, right, trim), expected) << text << width;
  }
}

TEST(Letters, Case) {
  EXPECT_EQ(LowerAscii("AZ[ＡÉ"), "az[ＡÉ");
  EXPECT_EQ(UpperAscii("az{ａé"), "AZ{ａé");
  EXPECT_EQ(UpperAll("aｚéßя山1"), "AＺÉßЯ山1");
  EXPECT_EQ(FoldCase("ＡÉkΣ"), FoldCase("ａéKς"));
  EXPECT_NE(FoldCase("Ａ"), FoldCase("A"));
  EXPECT_NE(FoldCase("é"), FoldCase("e"));
  EXPECT_EQ(TrimSpaces("  \ta　 "), "\ta　");
  EXPECT_EQ(TrimSpaces("   "), "");
}

TEST(Numbers, Reading) {
  constexpr double kNone = INFINITY;
  const Rows<Text, double, double> numbers = {
      // no number as a whole; then the number it begins with
      {"12", 12, 12},       {"-1.5", -1.5, -1.5},   {"+.5", .5, .5},   {"1.", 1, 1},
      {"1e3", 1000, 1000},  {"1E-2", .01, .01},     {"  7 ", 7, 7},    {"", kNone, 0},
      {" ", kNone, 0},      {".", kNone, 0},        {"-", kNone, 0},   {"+-1", kNone, 0},
      {"12abc", kNone, 12}, {"3.5 pt", kNone, 3.5}, {"1e", kNone, 1},  {"1.2.3", kNone, 1.2},
      {"0x10", kNone, 0},   {"inf", kNone, 0},      {"nan", kNone, 0}, {"1,000", kNone, 1},
      {"１２", kNone, 0},   {"e5", kNone, 0},       {"\t7", kNone, 0}, {"1e999", kNone, 0}};
  for (const auto& [text, whole, leading] : numbers) {
    EXPECT_EQ(NumericValue(text).value_or(kNone), whole) << text;
    EXPECT_EQ(LeadingNumber(text), leading) << text;
  }
  EXPECT_EQ(NumericLong("2.5"), 2);
  EXPECT_EQ(NumericLong("9x"), 0);
  EXPECT_EQ(LeadingLong("3.5x"), 4);
  const Rows<double, std::int32_t> roundings = {{.5, 0},    {1.5, 2},   {2.5, 2},  {-.5, 0},
                                                {-1.5, -2}, {-2.5, -2}, {2.51, 3}, {NAN, 0}};
  for (const auto& [value, expected] : roundings) EXPECT_EQ(RoundToLong(value), expected) << value;
  EXPECT_EQ(RoundToLong(2147483647.4), 2147483647);
  EXPECT_EQ(RoundToLong(2147483647.5), 0);
  EXPECT_EQ(RoundToLong(-2147483648.5), -2147483647 - 1);
}

TEST(Numbers, PatternsRoundHalfAwayFromZero) {
  const Rows<double, Text, Text> patterns = {
      {12.34, "#0", "12"}, {.5, "#0", "1"},          {2.5, "#0", "3"},     {-2.5, "#0", "-3"},
      {0, "#0", "0"},      {.25, "#0.0", "0.3"},     {.04, "#0.0", "0.0"}, {5, "00", "05"},
      {123, "00", "123"},  {99.96, "#0.0", "100.0"}, {1.5, "0.0#", "1.5"}, {-.4, "#0", "0"},
      {7, "#0 %", "7 %"},  {NAN, "#0", "0"}};
  for (const auto& [value, pattern, expected] : patterns) {
    EXPECT_EQ(FormatNumber(value, pattern), expected) << value;
  }
  const Rows<double, Text> general = {{4.5, "4.5"}, {5, "5"},   {12.25, "12.25"},
                                      {.1, "0.1"},  {-3, "-3"}, {1e-7, "0.0000001"}};
  for (const auto& [value, expected] : general) EXPECT_EQ(FormatGeneral(value), expected);
}

TEST(Split, FieldsAreReadChangedAndJoined) {
  using Parts = std::pair<Text, Text>;
  EXPECT_EQ(SplitAt(" a => b=>c ", "=>"), Parts("a", "b=>c"));
  EXPECT_EQ(SplitAt(" a ", "="), Parts(" a ", ""));
  EXPECT_EQ(SplitAt(" a ", "=", true), Parts("a", ""));
  EXPECT_EQ(SplitLines("a\r\nb\rc\n\nd\n"), (std::vector<Text>{"a", "b", "c", "", "d"}));

  CclsSplit fields(",", "a, b ,,c");
  EXPECT_EQ(fields.Bound(), 3);
  EXPECT_EQ(fields.Value(1), "b");
  for (const std::int32_t empty : {-1, 2, 4, 7}) EXPECT_EQ(fields.Value(empty), "");
  for (const std::int32_t outside : {-1, 4}) EXPECT_EQ(fields.AfterValue(outside, ","), "");
  EXPECT_EQ(fields.AfterValue(1, ","), " b ,,c");
  fields.SetValue(9, "");
  fields.SetValue(-1, "z");
  EXPECT_EQ(fields.Expression("; "), "a;  b ; ; c");
  fields.SetValue(5, " x ");
  EXPECT_EQ(fields.Bound(), 5);
  EXPECT_EQ(fields.Expression(","), "a, b ,,c,,x");
  fields.SetValue(0, "");
  fields.SetValue(1, " y ");
  EXPECT_EQ(fields.Expression(","), ",y,,c,,x");

  fields.SetExpression("/***/", "p/***//***/q");
  EXPECT_EQ(fields.Bound(), 2);
  EXPECT_EQ(fields.Value(1), "");
  fields.SetExpression(",", "");
  EXPECT_EQ(fields.Bound(), -1);
  fields.SetValue(1, "k");
  EXPECT_EQ(fields.Expression(","), ",k");
}

// The list as the rule describes it: every line goes before the first key that is not smaller, and
// equal keys share the rank of the first of them. Reading in between changes nothing.
template <typename Key>
void CheckAgainstInsertion(unsigned seed, int count, auto make_key) {
  std::mt19937 random(seed);
  CclsSort<int, Key> sort;
  std::vector<std::pair<Key, int>> model;
  const auto before = [](const auto& line, const Key& key) { return line.first < key; };
  for (int item = 0; item < count; ++item) {
    const Key key = make_key(random);
    sort.Add(key, item);
    model.insert(std::lower_bound(model.begin(), model.end(), key, before), {key, item});
    if (random() % 8 != 0 && item + 1 != count) continue;
    sort.CalcRankOrder();
    ASSERT_EQ(sort.Count(), item + 1);
    for (std::int32_t i = 0; i <= item; ++i) {
      const auto& [expected_key, expected_item] = model[static_cast<std::size_t>(i)];
      ASSERT_EQ(sort.Item(i + 1), expected_item);
      ASSERT_EQ(sort.SortKey(i + 1), expected_key);
      const auto first = std::lower_bound(model.begin(), model.end(), expected_key, before);
      ASSERT_EQ(sort.LineObject(i + 1).RankOrder, first - model.begin() + 1);
    }
  }
}

TEST(Sort, OrdersLikeInsertionAtTheLowerBound) {
  for (const unsigned range : {1u, 3u, 40u, 100000u}) {
    CheckAgainstInsertion<double>(range, 150, [&](auto& r) { return double(r() % range) / 8; });
  }
  CheckAgainstInsertion<string>(7, 120, [](auto& r) {
    return string(std::array{"", "a", "B", "aa", "é", "山"}[r() % 6]);
  });
  int next = 1000;
  CheckAgainstInsertion<double>(9, 300, [&](auto&) { return double(next--); });
}

TEST(Sort, KeyedLines) {
  CclsSort<string> sort;
  sort.AddObjectByStringKey("x", "first", 20);
  sort.AddObjectByStringKey("x", "second", 10);
  EXPECT_EQ(sort.Count(), 1);
  sort.AddObjectByStringKey("y", "y", 20);
  sort.AddObjectByStringKey("X", "other case", 10);
  sort.Add(30, "without key");
  sort.CalcRankOrder();
  EXPECT_EQ(sort.RankOrder("X"), 1);
  EXPECT_EQ(sort.RankOrder("x"), 2);
  EXPECT_EQ(sort.RankOrder("y"), 2);
  EXPECT_EQ(sort.LineObject(4).RankOrder, 4);
  EXPECT_EQ(sort.Item(2), "y");  // the item added last comes first
  for (const std::int32_t outside : {0, 5}) EXPECT_THROW(sort.Item(outside), AutomationError);
  sort.Clear();
  EXPECT_EQ(sort.Count(), 0);
  sort.AddObjectByStringKey("x", "again", 1);
  EXPECT_EQ(sort.Item(1), "again");
}

TEST(Html, EscapesAndEncodes) {
  EXPECT_EQ(EscapeHtml("\"><b>&amp;'　 é"), "&quot;&gt;&lt;b&gt;&amp;amp;'　 é");
  string text = "<";
  AppendEscapedNoBreak(text, " a  &　");
  EXPECT_EQ(text, "<&nbsp;a&nbsp;&nbsp;&amp;　");
  EXPECT_EQ(PercentEncode("azAZ09-._~/"), "azAZ09-._~/");
  EXPECT_EQ(PercentEncode(" %?#&+\"\\é男"), "%20%25%3F%23%26%2B%22%5C%C3%A9%E7%94%B7");
}

TEST(Utf16, CutsBetweenCharacters) {
  EXPECT_EQ(Utf16Length("a男😀"), 4u);
  EXPECT_EQ(Utf16Length("\xFF\xE7\x94"), 3u);  // an invalid byte is one character
  std::size_t units = 0;
  for (const Text expected : {"", "a", "a男", "a男", "a男😀", "a男😀b", "a男😀b"}) {
    EXPECT_EQ(Utf16Prefix("a男😀b", units++), expected);
  }
  EXPECT_EQ(ToUtf16("a男😀"), u"a男😀");
  EXPECT_EQ(ToUtf8(std::u16string{0xD83D, 0xDE00, 0xD83D, u'b', 0xDE00}), "😀\uFFFDb\uFFFD");
}

TEST(FileNames, UnsafeCharacters) {
  EXPECT_EQ(RemoveUnsafe("a:b/c|d>e<f'g\"h\\i*?.x"), "abcdefgh\\i*?.x");
  const Rows<Text, Text> paths = {{"M/W", "W"},          {"c:\\x\\a:b'.txt", "c:\\x\\ab.txt"},
                                  {"a:b/c", "a:\\c"},    {"", ""},
                                  {"a/b:c", "a/b:\\bc"}, {"x:y", "x:\\y"},
                                  {"plain", "plain"},    {"a\\b\\", "a\\b\\"}};
  for (const auto& [path, clean] : paths) EXPECT_EQ(CleanFileName(path), clean) << path;
  EXPECT_EQ(RemoveUnsafeKeepingExtension("a:b/c.x"), "abc.x");
  EXPECT_EQ(EncodeWideCharacters("aé男ｱ😀"), "aéu7537uff71ud83dude00");
  EXPECT_EQ(LengthAndClimb(5200, 0, "↑"), "5.2km");
  EXPECT_EQ(LengthAndClimb(12000, 150, "↑"), "12km ↑150m");
  EXPECT_EQ(LengthAndClimb(0, 150, "↑"), "");
}

TEST(FileNames, ClassFileBaseName) {
  const auto root = NewRoot();
  const Rows<Text, Text> names = {
      {"M21A", "m21a"}, {"女子Ａ", "u5973u5b50A"}, {"M/W", "w"},        {"Ｗ２１　e", "W21 e"},
      {"É", "É"},       {"ｱ＼", "uff71uff3c"},     {"A\"B'C|D", "abcd"}};
  for (const auto& [name, base] : names) {
    const auto klass = root->AddClass(name);
    EXPECT_EQ(klass->FileName(), base) << name;
    for (const Text derived : {"", "0"}) {
      klass->SetFileName("Foo:Ｘ男");
      EXPECT_EQ(klass->FileName(), "foo:\\Xu7537");
      klass->SetFileName(derived);
      EXPECT_EQ(klass->FileName(), base) << name;
    }
  }
}

}  // namespace
}  // namespace keltrun::test
