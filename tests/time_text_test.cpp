// Times as texts: every display form, every notation that is read, and the millisecond grid.
#include "keltrun2/model/time_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "keltrun2/model/time_values_internal.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using std::string;
using Text = std::string_view;

constexpr double kNone = -7;  // default value for texts that are no time
constexpr int kLong = 90187;  // 25:03:07
constexpr int kPlain = 3723;  // 1:02:03

TEST(TimeText, Formats) {
  const Rows<double, Text, Text> whole = {
      {kPlain, "hh:nn:ss", "01:02:03"},   {kPlain, "hh\\:nn\\:ss", "01:02:03"},
      {kPlain, "h\\:nn\\:ss", "1:02:03"}, {kPlain, "nn\\:ss", "02:03"},
      {kPlain, "n\\:ss", "2:03"},         {kPlain, "h\\hn's 時", "1h2'3 時"},
      {46800, "hh:nn", "13:00"},          {59.6, "hh:nn:ss", "00:01:00"},
      {86399.6, "hh:nn:ss", "00:00:00"},  {86400, "hh:nn:ss", "24:00:00"},
      {kLong, "n\\:ss", "25:03:07"},      {443045, "hh:nn:ss", "123:04:05"},
      {172799.6, "hh:nn:ss", "48:00:00"}, {0, "h:nn:ss", "0:00:00"}};
  for (const auto& [seconds, pattern, expected] : whole) {
    EXPECT_EQ(FormatTime(Seconds(seconds), pattern, false), expected) << pattern;
  }
  const Rows<double, Text, Text> tenths = {
      // With tenths they are cut, and the pattern stands also for a day and more.
      {83.4, "n\\:ss", "1:23.4"},
      {3723.45, "h\\:nn\\:ss", "1:02:03.4"},
      {3723.999, "h\\:nn\\:ss", "1:02:03.9"},
      {.05, "h\\:nn\\:ss", "0:00:00.0"},
      {90187.5, "h\\:nn\\:ss", "1:03:07.5"},
      {kPlain, "hh:nn:ss", "01:02:03.0"}};
  for (const auto& [seconds, pattern, expected] : tenths) {
    EXPECT_EQ(FormatTime(Seconds(seconds), pattern, true), expected) << pattern;
  }
}

TEST(TimeText, CompactForm) {
  const Rows<double, Text> cases = {
      // The form is that of the unrounded value: 59:59.6 shows minutes and seconds only.
      {0, "0:00"},          {5, "0:05"},          {545, "9:05"},     {599, "9:59"},
      {599.6, "10:00"},     {600, "10:00"},       {2520, "42:00"},   {3599, "59:59"},
      {3599.6, "00:00"},    {3600, "1:00:00"},    {3723, "1:02:03"}, {86399, "23:59:59"},
      {129600, "36:00:00"}, {90187, "25:03:07"},  {-75, "-1:15"},    {-.4, "0:00"},
      {-.6, "-0:01"},       {-90187, "-25:03:07"}};
  for (const auto& [seconds, expected] : cases) EXPECT_EQ(CompactTime(Seconds(seconds)), expected);
  EXPECT_EQ(CompactTime(Seconds(545), 7), "   9:05");
  EXPECT_EQ(CompactTime(Seconds(kLong), 5), "25:03");
}

TEST(TimeText, TotalMinutesAndHours) {
  const Rows<double, int> minutes = {{59, 0}, {60, 1}, {3723, 62}, {90187, 1503}, {864000, 14400}};
  for (const auto& [seconds, total] : minutes) EXPECT_EQ(TotalMinutes(Seconds(seconds)), total);
  const Rows<double, Text, Text> cases = {
      {kPlain, "hh:nn:ss", "01:02:03"},    {kLong, "hh:nn:ss", "25:03:07"},
      {kLong, "hh\\:nn\\:ss", "25:03:07"}, {kLong, "h\\:nn\\:ss", "25:03:07"},
      {kLong, "h:nn:ss", "25:03:07"},      {kLong, "nn:ss", "03:07"},
      {86400, "h:nn:ss", "24:00:00"},      {345600, "hh:nn:ss", "96:00:00"},
      {349200, "hh:nn:ss", "01:00:00"},    {86399, "h:nn:ss", "23:59:59"}};
  for (const auto& [seconds, pattern, expected] : cases) {
    EXPECT_EQ(FormatTotalTime(Seconds(seconds), pattern), expected) << pattern;
  }
}

TEST(TimeValues, TimeTexts) {
  const Rows<double, Text, Text, Text> cases = {
      // No sign above one second below zero; 0, -1 and -2 days are the markers.
      {3723, "01:02:03", "1:02:03", "6203"},
      {45, "00:00:45", "0:45", "45"},
      {5, "00:00:05", "0:05", "5"},
      {65, "00:01:05", "1:05", "105"},
      {3600, "01:00:00", "1:00:00", "6000"},
      {90187, "25:03:07", "25:03:07", "150307"},
      {-75, "-00:01:15", "-1:15", "-115"},
      {-1, "-00:00:01", "-0:01", "-1"},
      {-.4, "00:00:00", "0:00", "0"},
      {-.6, "00:00:01", "-0:01", "1"},
      {-86401, "-24:00:01", "-24:00:01", "-144001"},
      {0, "－", "－", "－"},
      {-86400, "↓", "↓", "↓"},
      {-172800, "×", "×", "×"}};
  for (const auto& [seconds, pattern, compact, plane] : cases) {
    const clsTimeValue value(Seconds(seconds));
    EXPECT_EQ(value.ToString(), pattern);
    EXPECT_EQ(value.ToString("plane", true), compact);
    EXPECT_EQ(value.ToString("plane"), plane);
    EXPECT_EQ(TimeToString(Seconds(seconds), "hh\\:nn\\:ss", false, "－", "↓", "×"), pattern);
  }
  EXPECT_EQ(clsTimeValue().Value(), 0);
  EXPECT_EQ(TimeToString(0, "", false, "n", "s", "d"), "n");
  EXPECT_EQ(TimeToString(-1, "", true, "n", "s", "d"), "s");
  EXPECT_EQ(TimeToString(-2, "plane", false, "n", "s", "d"), "d");
}

TEST(TimeValues, MissTimeTexts) {
  clsMissTimeValue value;
  EXPECT_EQ(value.Value(), 0);
  EXPECT_EQ(value.ToString("plane", true), "－");
  const Rows<double, Text, Text, Text> cases = {
      // A real zero is a time; of a day and more the pattern shows the time of day.
      {0, "00:00:00", "0:00", "0"},
      {3723, "01:02:03", "1:02:03", "6203"},
      {-75, "-00:01:15", "-1:15", "-115"},
      {-.4, "00:00:00", "0:00", "0"},
      {90187, "01:03:07", "25:03:07", "150307"},
      {-86400, "↓", "↓", "↓"},
      {-172800, "－", "－", "－"}};
  for (const auto& [seconds, pattern, compact, plane] : cases) {
    AnalysisValue::Set(value, Seconds(seconds));
    EXPECT_EQ(value.Value(), Seconds(seconds));
    EXPECT_EQ(value.ToString(), pattern);
    EXPECT_EQ(value.ToString("plane", true), compact);
    EXPECT_EQ(value.ToString("plane"), plane);
  }
  AnalysisValue::Reset(value);
  EXPECT_EQ(value.ToString("hh:nn:ss", false, "none", "skip"), "none");
}

TEST(TimeValues, DatePercentAndRankTexts) {
  EXPECT_EQ(clsDateValue().ToString(), "");
  EXPECT_EQ(clsDateValue(45351.75).ToString(), "2024/02/29");
  EXPECT_EQ(clsDateValue(45351.75).ToString("yyyy年mm月dd日\\d hh:nn"), "2024年02月29日d 18:00");

  const Rows<double, float, Text, Text> percents = {
      // Halves go away from zero, and the 32-bit product of 1.005 and 100 is exactly 100.5.
      {0, 0.f, "－", "－"},
      {-1, 0.f, "↓", "↓"},
      {-2, 0.f, "－", "－"},
      {.1234, .1234f, "12", "12.3"},
      {1, 1.f, "100", "100.0"},
      {.125, .125f, "13", "12.5"},
      {1.005, 1.005f, "101", "100.5"},
      {-.5, 0.f, "-50", "-50.0"}};
  for (const auto& [ratio, value, whole, tenths] : percents) {
    clsPercentValue percent;
    EXPECT_EQ(percent.ToString(), "－");
    AnalysisValue::Set(percent, ratio);
    EXPECT_EQ(percent.Value(), value);
    EXPECT_EQ(percent.ToString(), whole) << ratio;
    EXPECT_EQ(percent.ToString("#0.0"), tenths) << ratio;
  }
  const Rows<int, bool, bool, Text> ranks = {{12, true, false, "12"}, {12, true, true, "12)"},
                                             {3, false, true, "3)"},  {0, true, false, "-"},
                                             {0, true, true, "-)"},   {0, false, false, ""},
                                             {0, false, true, ""}};
  for (const auto& [rank, hyphen, parentheses, expected] : ranks) {
    clsLegRankValue value;
    EXPECT_EQ(value.ToString(), "-");
    AnalysisValue::Set(value, rank);
    EXPECT_EQ(value.ToString(hyphen, parentheses), expected);
    EXPECT_EQ(RankToString(rank, hyphen, parentheses), expected);
  }
}

TEST(TimeText, PlatformDatesAndTimes) {
  const Rows<Text, DateTime> valid = {{"0:00", 0},
                                      {"6:00", .25},
                                      {"01:02:03", Seconds(kPlain)},
                                      {" 23:59:59 ", Seconds(86399)},
                                      {"12.00.00", .5},
                                      {"2024/2/29", 45351},
                                      {"2024/02/29 6:00", 45351.25},
                                      {"1899/12/31", 1}};
  for (const auto& [text, expected] : valid) {
    EXPECT_EQ(ParseDateTime(text).value_or(kNone), expected) << text;
    EXPECT_TRUE(IsTimeText(text)) << text;
  }
  for (const Text text : {"24:00", "12:60", "12:00:60", "24.00.00", "1:02:03.4", "-1:00", "12",
                          "12.34", "2023/2/29", "1900/2/29", "2024/13/1", "2024/4/31", "2024/0/1",
                          "2024/1/1 24:00", "99999999999/1/1", "12:34:56:07", "", "DNF"}) {
    EXPECT_FALSE(ParseDateTime(text)) << text;
    EXPECT_FALSE(IsTimeText(text)) << text;
  }
  // Hours of 24 and more are times of the component, not of the platform.
  for (const Text text : {"24:00:00", "25:03:07", "100:59:59"}) {
    EXPECT_FALSE(ParseDateTime(text)) << text;
    EXPECT_TRUE(IsTimeText(text)) << text;
  }
  for (const Text text : {"25:60:00", "25:00:60", "x:00:00", "-1:00:00", "25:00:00:00", "25::"}) {
    EXPECT_FALSE(IsTimeText(text)) << text;
  }
  EXPECT_EQ(DateNumber(2000, 1, 1), 36526.0);
  EXPECT_EQ(DateNumber(2000, 2, 30), std::nullopt);
  EXPECT_EQ(DateNumber(99, 1, 1), std::nullopt);
}

TEST(TimeText, ReadsSignedTimes) {
  const Rows<Text, double> seconds = {{"1:02:03", 3723},        {"12:34", 45240},
                                      {"-0:01:15", -75},        {"+0:01:15", 75},
                                      {"25:03:07", 90187},      {"100:00:00", 360000},
                                      {"１：０２：０３", 3723}, {"－０：０１：１５", -75}};
  for (const auto& [text, expected] : seconds) {
    for (const bool numbers : {false, true}) {
      EXPECT_EQ(ParseSignedTime(text, numbers, false, kNone), Seconds(expected)) << text;
    }
  }
  EXPECT_EQ(ParseSignedTime("１：０２：０３", false, true, kNone), kNone);
  const Rows<Text, double> days = {
      // Bare numbers are days when they are allowed; behind a sign no hours of 24 and more.
      {"1.5", 1.5}, {"-1.5", -1.5}, {"+2", 2},      {"-25:03:07", kNone},
      {"-", kNone}, {"-x", kNone},  {"DNF", kNone}, {"", kNone}};
  for (const auto& [text, expected] : days) {
    EXPECT_EQ(ParseSignedTime(text, true, false, kNone), expected) << text;
    EXPECT_EQ(ParseSignedTime(text, false, false, kNone), kNone) << text;
  }
}

TEST(TimeText, ReadsResultsAndLaps) {
  const Rows<Text, int> milliseconds = {{"1:02:03", 3723000},
                                        {"01:02:03", 3723000},
                                        {"１：０２：０３", 3723000},
                                        {"1:02:03.4", 3723400},
                                        {"1:02:03.45", 3723450},
                                        {"1:02:03.456", 3723456},
                                        {"1:02:03.4567", 3723456},
                                        {"12:34", 754000},
                                        {"12:34.5", 754500},
                                        {"5", 5000},
                                        {"45", 45000},
                                        {"123", 83000},
                                        {"1234", 754000},
                                        {"6234", 3754000},
                                        {"12345", 5025000},
                                        {"123456", 45296000},
                                        {"12.34", 12340},
                                        {"62:34", 3754000},
                                        {"123:45", 7425000},
                                        {"25:03:07", 90187000},
                                        {"12:34 (2)", 754000},
                                        {" 1:02:03 ", 3723000},
                                        {"0:00", 0}};
  for (const auto& [text, expected] : milliseconds) {
    EXPECT_EQ(ParseTime(text, kNone), expected / 86400000.0) << text;  // to the bit
  }
  for (const Text text : {"62.05", "1:02:03.x", "25:03:07.5", "1:60:00", "-0:05", "DNF", ""}) {
    EXPECT_EQ(ParseTime(text, kNone), kNone) << text;
  }
  const Rows<Text, double> finishes = {
      // Results that count as finish times: those of the platform, and fractions of a second.
      {"1:02:03", Seconds(kPlain)},
      {"6:00", .25},
      {"1:02:03.4", 3723400 / 86400000.0},
      {"1:02:03.456", 3723456 / 86400000.0},
      {"25:00:00", kNone},
      {"25:00:00.5", kNone},
      {"1:02:03.x", kNone},
      {"DNF", kNone},
      {"", kNone}};
  for (const auto& [text, expected] : finishes) {
    EXPECT_EQ(ParseFinishTime(text).value_or(kNone), expected) << text;
  }
}

TEST(TimeText, NormalizesEveryNotation) {
  const Rows<Text, Text, Text> cases = {
      // As a clock time "123.45" is a day count, of which the pattern shows 0.45 days.
      {"12.34", "00:12:34", "12:34:00"},
      {"62.34", "01:02:34", "62:34:00"},
      {"123.45", "02:03:45", "10:48:00"},
      {"5", "00:00:05", "05:00:00"},
      {"12", "00:00:12", "12:00:00"},
      {"123", "00:01:23", "01:23:00"},
      {"1234", "00:12:34", "12:34:00"},
      {"6234", "01:02:34", "62:34:00"},
      {"12345", "01:23:45", "01:23:45"},
      {"123456", "12:34:56", "12:34:56"},
      {"253456", "25:34:56", "25:34:56"},
      {"1:23", "00:01:23", "01:23:00"},
      {"12:34", "00:12:34", "12:34:00"},
      {"24:00", "00:24:00", "24:00"},
      {"62:34", "01:02:34", "62:34"},
      {"1:75", "00:01:75", "1:75"},
      {"12:75", "00:12:75", "12:75"},
      {"123:45", "02:03:45", "123:45"},
      {"1:23:45", "01:23:45", "01:23:45"},
      {"１：２３：４５", "01:23:45", "01:23:45"},
      {"25:03:07", "25:03:07", "25:03:07"},
      {"12.34.56", "12:34:56", "12:34:56"},
      {"25.34.56", "25.34.56", "25.34.56"},
      {"1:02'03\"", "01:02:03", "1:02'03\""},
      {"12:02'03\"", "12:02:03", "12:02'03\""},
      {"１：０２＇０３＂", "01:02:03", "1:02'03\""},
      {"1:02.03.4", "01:02:03", "1:02.03.4"},
      {"1:02:03.45", "1:02:03.45", "1:02:03.45"},
      {"2024/2/29 1:02:03", "01:02:03", "01:02:03"},
      {"  12:34  ", "00:12:34", "12:34:00"},
      {"12:34(3)", "00:12:34", "12:34:00"},
      {"1234 (3) x", "00:12:34", "12:34:00"},
      {"(12:34)", "", ""},
      {"DNF", "DNF", "DNF"},
      {"ＤＮＦ", "DNF", "DNF"},
      {"DISQUALI", "DISQUALI", "DISQUALI"},
      {"", "", ""}};
  for (const auto& [text, elapsed, clock] : cases) {
    EXPECT_EQ(NormalizeTimeText(text, Digits::kElapsed), elapsed) << text;
    EXPECT_EQ(NormalizeTimeText(text, Digits::kClock), clock) << text;
  }
  const Rows<Text, Text, Text> patterns = {
      {"12345", "h\\:nn\\:ss", "1:23:45"}, {"12345", "h:nn:ss", "1:23:45"},
      {"123456", "h:nn:ss", "12:34:56"},   {"12345", "hh:nn:ss", "01:23:45"},
      {"12345", "nn:ss", "23:45"},         {"62:34", "h:nn:ss", "1:02:34"},
      {"12.34.56", "nn'ss", "34'56"},      {"DNF", "nn:ss", "DNF"}};
  for (const auto& [text, pattern, expected] : patterns) {
    EXPECT_EQ(NormalizeTimeText(text, Digits::kElapsed, pattern), expected) << text;
  }
}

TEST(TimeText, MillisecondGrid) {
  std::mt19937_64 random(1);
  for (int i = 0; i < 20000; ++i) {
    const double grid = static_cast<double>(random() % 400000000) / 86400000.0;
    for (const double noise : {0., 1e-15, -1e-15, 4e-4 / 86400, -4e-4 / 86400}) {
      ASSERT_EQ(Canonical(grid + noise), grid);
      ASSERT_EQ(Canonical(-grid - noise), -grid);
    }
  }
  DateTime sum = 0;
  for (int i = 0; i < 36000; ++i) sum = Canonical(sum + Seconds(.1));
  EXPECT_EQ(sum, Seconds(3600));
  for (const double kept : {0., -1., -2., 1e6 + 1e-9, -1e300, double{INFINITY}}) {
    EXPECT_EQ(Canonical(kept), kept);
  }
  EXPECT_TRUE(std::isnan(Canonical(NAN)));
}

string Clock(int seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%d:%02d:%02d", seconds / 3600, seconds / 60 % 60, seconds % 60);
  return text;
}

TEST(TimeText, HalfSecondsRoundUp) {
  for (int s = 0; s < 86399; ++s) {
    ASSERT_EQ(FormatTime((s * 1000 + 499) / 86400000.0, "h\\:nn\\:ss", false), Clock(s));
    ASSERT_EQ(FormatTime((s * 1000 + 500) / 86400000.0, "h\\:nn\\:ss", false), Clock(s + 1));
  }
}

// A stored result is stored again as it is, tenths included, and bare digits give the same text.
TEST(TimeText, EveryResultOfADaySurvives) {
  clsLapData runner;
  const auto stored = [&](const string& text) {
    runner.SetResult(text);
    return runner.Result();
  };
  EXPECT_EQ(stored("0:00:00"), "DISQ");
  for (int s = 1; s < 86400; ++s) {
    const string text = Clock(s);
    ASSERT_EQ(stored(text), text);
    ASSERT_EQ(ParseTime(text, kNone), s / 86400.0);
    const string tenths = text + "." + std::to_string(s % 10);
    ASSERT_EQ(stored(tenths), tenths);
    string digits = text;
    std::erase(digits, ':');
    ASSERT_EQ(stored(digits), text);
  }
}

}  // namespace
}  // namespace keltrun::test
