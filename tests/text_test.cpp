// Texts: width, columns, letter case, numbers, fields, sorting, HTML.
#include <gtest/gtest.h>

#include <map>
#include <random>

#include "keltrun2/codec/utf8.h"
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

TEST(Width, FoldsBothWays) {
  string half = " \\", full = "　￥";
  for (char32_t c = 0x21; c <= 0x7E; ++c) {
    if (c == '\\') continue;
    AppendUtf8(half, c);
    AppendUtf8(full, c + 0xFEE0);
  }
  EXPECT_EQ(ToHalfWidth(full), half);
  EXPECT_EQ(ToFullWidth(half), full);
  // The full-width backslash, half-width katakana and the characters next to the block are kept.
  EXPECT_EQ(ToHalfWidth("＼ｱﾟ｟￠￦山é😀\t\x7F"), "＼ｱﾟ｟￠￦山é😀\t\x7F");
  EXPECT_EQ(ToFullWidth("＼ｱ山é😀\t\x7F"), "＼ｱ山é😀\t\x7F");
  const Rows<HalfWidth, Text> folds = {
      // Flags: letters, digits, space, symbols, upper, lower. ASCII letters change case without the
      // first flag, full-width ones only with it.
      {{0, 0, 0, 0, 0, 0}, "ＡｚBy３　；￥"}, {{1, 0, 0, 0, 0, 0}, "AzBy３　；￥"},
      {{0, 1, 0, 0, 0, 0}, "ＡｚBy3　；￥"},  {{0, 0, 1, 0, 0, 0}, "ＡｚBy３ ；￥"},
      {{0, 0, 0, 1, 0, 0}, "ＡｚBy３　;\\"},  {{0, 0, 0, 0, 1, 0}, "ＡｚBY３　；￥"},
      {{0, 0, 0, 0, 0, 1}, "Ａｚby３　；￥"}, {{1, 0, 0, 0, 1, 0}, "AZBY３　；￥"}};
  for (const auto& [fold, folded] : folds) EXPECT_EQ(ToHalfWidth("ＡｚBy３　；￥", fold), folded);
  EXPECT_EQ(NormalizeName(" 山田　 太\0郎\t"sv), "山田太郎\t");
}

TEST(Width, Columns) {
  // "×" takes two bytes in Shift-JIS although it is below U+0100; Shift-JIS does not have "é".
  for (const auto& [text, width] :
       Table<2>("\"\" 0 | abc 3 | 山田 4 | ｱｲ 2 | 髙〜～ 6 | × 2 | é 1")) {
    EXPECT_EQ(DisplayWidth(text), std::stoul(width)) << text;
  }
  for (const auto& [text, start, width, expected] : Table<4>(R"(
      山田太郎 1 4 山田 | 山田太郎 1 5 "山田 " | 山田太郎 2 4 " 田 " | a山b 2 1 " " | a山b 3 1 " "
      a山b 3 2 " b" | a山b 2 3 山b | a山b 5 3 "" | a山b 1 0 "" | abc 2 9 bc | é×a 2 1 ×)")) {
    EXPECT_EQ(CutByWidth(text, std::stoul(start), std::stoul(width)), expected) << text << start;
  }
  // Left or right alignment; "t" trims first, but only half-width blanks.
  for (const auto& [text, width, align, expected] : Table<4>(R"(
      山 4 l "山  " | 山 4 r "  山" | " a " 4 r "  a " | " a " 4 rt "   a" | "　a" 4 lt "　a "
      山田太郎 5 rt "山田 " | ｱｲｳ 2 l ｱｲ | 山× 3 l 山× | "" 2 rt "  ")")) {
    EXPECT_EQ(PadByWidth(text, std::stoul(width), align[0] == 'r', align.ends_with("t")), expected);
  }
}

TEST(Letters, Case) {
  EXPECT_EQ(LowerAscii("AZ[ＡÉ") + UpperAscii("az{ａé"), "az[ＡÉAZ{ａé");
  EXPECT_EQ(UpperAll("aｚéßя山1"), "AＺÉßЯ山1");
  EXPECT_EQ(FoldCase("ＡÉkΣ"), FoldCase("ａéKς"));
  EXPECT_NE(FoldCase("Ａ"), FoldCase("A"));
  EXPECT_NE(FoldCase("é"), FoldCase("e"));
  EXPECT_EQ(TrimSpaces("  \ta　 "), "\ta　");
}

TEST(Numbers, Reading) {
  // The value of the whole text, if it is a number, and the number at its start.
  for (const auto& [text, whole, leading] : Table<3>(R"(
      12 12 12 | -1.5 -1.5 -1.5 | +.5 .5 .5 | 1. 1 1 | 1e3 1000 1000 | 1E-2 .01 .01 | "  7 " 7 7
      "" none 0 | " " none 0 | . none 0 | - none 0 | +-1 none 0 | 12abc none 12 | "3.5 pt" none 3.5
      1e none 1 | 1.2.3 none 1.2 | 0x10 none 0 | inf none 0 | nan none 0 | 1,000 none 1 | １２ none 0
      e5 none 0 | 1e999 none 0)")) {
    EXPECT_EQ(NumericValue(text).has_value(), whole != "none") << text;
    EXPECT_EQ(NumericValue(text).value_or(0), whole == "none" ? 0 : std::stod(whole)) << text;
    EXPECT_EQ(LeadingNumber(text), std::stod(leading)) << text;
  }
  EXPECT_EQ(NumericLong("2.5") + NumericLong("9x"), 2);
  EXPECT_EQ(LeadingLong("3.5x"), 4);
  for (const auto& [value, expected] : Table<2>(R"(
      .5 0 | 1.5 2 | 2.5 2 | -.5 0 | -1.5 -2 | -2.5 -2 | 2.51 3 | nan 0 | 2147483647.4 2147483647
      2147483647.5 0 | -2147483648.5 -2147483648)")) {
    EXPECT_EQ(RoundToLong(std::stod(value)), std::stol(expected)) << value;
  }
}

TEST(Numbers, PatternsRoundHalfAwayFromZero) {
  for (const auto& [value, pattern, expected] : Table<3>(R"(
      12.34 #0 12 | .5 #0 1 | 2.5 #0 3 | -2.5 #0 -3 | 0 #0 0 | .25 #0.0 0.3 | .04 #0.0 0.0
      5 00 05 | 123 00 123 | 99.96 #0.0 100.0 | 1.5 0.0# 1.5 | -.4 #0 0 | 7 "#0 %" "7 %" | nan #0 0
      )")) {
    EXPECT_EQ(FormatNumber(std::stod(value), pattern), expected) << value;
  }
  for (const auto& [value] : Table<1>("4.5 5 12.25 0.1 -3 0.0000001")) {
    EXPECT_EQ(FormatGeneral(std::stod(value)), value);
  }
}

TEST(Split, FieldsAreReadChangedAndJoined) {
  using Parts = std::pair<Text, Text>;
  EXPECT_EQ(SplitAt(" a => b=>c ", "=>"), Parts("a", "b=>c"));
  EXPECT_EQ(SplitAt(" a ", "="), Parts(" a ", ""));
  EXPECT_EQ(SplitAt(" a ", "=", true), Parts("a", ""));
  EXPECT_EQ(SplitLines("a\r\nb\rc\n\nd\n"), (std::vector<Text>{"a", "b", "c", "", "d"}));

  CclsSplit fields(",", "a, b ,,c");
  EXPECT_EQ(fields.Value(1) + fields.Value(2) + fields.Value(3), "bc");
  for (const std::int32_t outside : {-1, 4}) {
    EXPECT_EQ(fields.Value(outside) + fields.AfterValue(outside, ","), "");
  }
  EXPECT_EQ(fields.AfterValue(1, ","), " b ,,c");
  fields.SetValue(9, "");
  fields.SetValue(-1, "z");
  EXPECT_EQ(fields.Expression("; "), "a;  b ; ; c");
  fields.SetValue(5, " x ");
  fields.SetValue(0, "");
  fields.SetValue(1, " y ");
  EXPECT_EQ(fields.Expression(","), ",y,,c,,x");
  fields.SetExpression("/***/", "p/***//***/q");
  EXPECT_EQ(fields.Bound(), 2);
  fields.SetExpression(",", "");
  EXPECT_EQ(fields.Bound(), -1);
}

// The list by definition: every line goes before the first key that is not smaller, and equal keys
// share the rank of the first of them. Reading in between changes nothing.
TEST(Sort, OrdersLikeInsertionAtTheLowerBound) {
  std::mt19937 random(1);
  for (const unsigned range : {1u, 3u, 40u, 100000u}) {
    CclsSort<int> sort;
    std::multimap<double, int> model;
    for (int item = 1; item <= 150; ++item) {
      const auto next_key = static_cast<double>(random() % range);
      sort.Add(next_key, item);
      model.emplace_hint(model.lower_bound(next_key), next_key, item);
      if (item % 6 != 0) continue;
      sort.CalcRankOrder();
      double last_key = -1;
      for (std::int32_t position = 0, rank = 0; const auto& [key, expected] : model) {
        ++position;
        if (key != last_key) rank = position;
        last_key = key;
        ASSERT_EQ(sort.Item(position), expected);
        ASSERT_EQ(sort.LineObject(position).RankOrder, rank);
      }
    }
  }
}

TEST(Sort, KeyedLines) {
  CclsSort<string> sort;
  sort.AddObjectByStringKey("x", "first", 20);
  sort.AddObjectByStringKey("x", "second", 10);  // adds nothing
  sort.AddObjectByStringKey("y", "y", 20);
  sort.AddObjectByStringKey("X", "other case", 10);
  sort.Add(30, "without key");
  sort.CalcRankOrder();
  EXPECT_EQ(sort.Count(), 4);
  EXPECT_EQ(sort.RankOrder("X") * 100 + sort.RankOrder("x") * 10 + sort.RankOrder("y"), 122);
  EXPECT_EQ(sort.Item(2), "y");  // the item added last comes first
  for (const std::int32_t outside : {0, 5}) EXPECT_THROW(sort.Item(outside), AutomationError);
  sort.Clear();
  sort.AddObjectByStringKey("x", "again", 1);
  EXPECT_EQ(sort.Item(1), "again");
}

TEST(Html, EscapesEncodesAndRemoves) {
  EXPECT_EQ(EscapeHtml("\"><b>&amp;'　 é"), "&quot;&gt;&lt;b&gt;&amp;amp;'　 é");
  string text = "<";
  AppendEscapedNoBreak(text, " a  &　");
  EXPECT_EQ(text, "<&nbsp;a&nbsp;&nbsp;&amp;　");
  EXPECT_EQ(PercentEncode("azAZ09-._~/"), "azAZ09-._~/");
  EXPECT_EQ(PercentEncode(" %?#&+\"\\é男"), "%20%25%3F%23%26%2B%22%5C%C3%A9%E7%94%B7");
  EXPECT_EQ(RemoveUnsafeKeepingExtension("a:b/c|d>e<f'g\"h\\i*?.x"), "abcdefgh\\i*?.x");
}

TEST(Utf16, CutsBetweenCharacters) {
  std::size_t units = 0;
  for (const Text expected : {"", "a", "a男", "a男", "a男😀", "a男😀b", "a男😀b"}) {
    EXPECT_EQ(Utf16Prefix("a男😀b", units++), expected);
  }
  EXPECT_EQ(ToUtf8(std::u16string{0xD83D, 0xDE00, 0xD83D, u'b', 0xDE00}), "😀\uFFFDb\uFFFD");
}

}  // namespace
}  // namespace keltrun::test
