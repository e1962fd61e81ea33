// Times as texts: every display form, every notation that is read, and rounding to milliseconds.
#include "keltrun2/model/time_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "keltrun2/model/time_values_internal.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using std::string;
using Text = std::string_view;

constexpr double kNone = -7;  // default value for texts that are not a time

DateTime Time(const string& seconds) { return Seconds(std::stod(seconds)); }

// Whole seconds are rounded and tenths are truncated. For a day and more, the first form shows
// total hours whatever the pattern, the form with tenths follows the pattern, and the last form
// shows total hours for an hour pattern up to four days. 90187 is 25:03:07, 349200 is 97 hours.
TEST(TimeText, Patterns) {
  for (const auto& [seconds, pattern, whole, tenths, total] : Table<5>(R"(
      0        h:nn:ss    0:00:00    0:00:00.0   0:00:00  | 3723  nn\:ss 02:03 02:03.0 02:03
      .05      h:nn:ss    0:00:00    0:00:00.0   0:00:00  | 83.4  n\:ss  1:23  1:23.4  1:23
      59.6     hh:nn:ss   00:01:00   00:00:59.6  00:01:00 | 46800 hh:nn  13:00 13:00.0 13:00
      3723     hh:nn:ss   01:02:03   01:02:03.0  01:02:03 | 90187 nn:ss  25:03:07 03:07.0 03:07
      3723.45  h\:nn\:ss  1:02:03    1:02:03.4   1:02:03
      3723.999 hh\:nn\:ss 01:02:04   01:02:03.9  01:02:04
      3723 "h\\hn's 時"  "1h2'3 時" "1h2'3 時.0" "1h2'3 時"
      86399.6  hh:nn:ss   00:00:00   23:59:59.6  00:00:00
      86400    h:nn:ss    24:00:00   0:00:00.0   24:00:00
      90187.5  h\:nn\:ss  25:03:08   1:03:07.5   25:03:08
      90187    hh\:nn\:ss 25:03:07   01:03:07.0  25:03:07
      172799.6 hh:nn:ss   48:00:00   23:59:59.6  48:00:00
      345600   hh:nn:ss   96:00:00   00:00:00.0  96:00:00
      349200   hh:nn:ss   97:00:00   01:00:00.0  01:00:00
      443045   h:nn:ss    123:04:05  3:04:05.0   3:04:05)")) {
    EXPECT_EQ(FormatTime(Time(seconds), pattern, false), whole) << seconds << " " << pattern;
    EXPECT_EQ(FormatTime(Time(seconds), pattern, true), tenths) << seconds << " " << pattern;
    EXPECT_EQ(FormatTotalTime(Time(seconds), pattern), total) << seconds << " " << pattern;
  }
  EXPECT_EQ(TotalMinutes(Seconds(90187)), 1503);
}

TEST(TimeText, CompactForm) {
  // The form is that of the unrounded value: 59:59.6 shows minutes and seconds only.
  for (const auto& [seconds, expected] : Table<2>(R"(
      0 0:00 | 5 0:05 | 545 9:05 | 599 9:59 | 599.6 10:00 | 600 10:00 | 2520 42:00 | 3599 59:59
      3599.6 00:00 | 3600 1:00:00 | 3723 1:02:03 | 86399 23:59:59 | 129600 36:00:00
      90187 25:03:07 | -75 -1:15 | -.4 0:00 | -.6 -0:01 | -90187 -25:03:07)")) {
    EXPECT_EQ(CompactTime(Time(seconds)), expected);
  }
  EXPECT_EQ(CompactTime(Seconds(545), 7), "   9:05");
  EXPECT_EQ(CompactTime(Seconds(90187), 5), "25:03");
}

// A sign is shown from minus one second on; 0, -1 and -2 days are the markers. A loss of zero is a
// time; for a loss of a day or more a pattern shows the part beyond whole days. "=" means the same
// as the column before.
TEST(TimeValues, TimesAndLostTimes) {
  const auto texts = [](const auto& value) {
    return value.ToString() + " " + value.ToString("plane", true) + " " + value.ToString("plane");
  };
  clsMissTimeValue lost;
  EXPECT_EQ(texts(lost), "－ － －");
  EXPECT_EQ(lost.Value() + clsTimeValue().Value(), 0);
  for (const auto& [seconds, time_texts, lost_texts] : Table<3>(R"(
      3723    "01:02:03 1:02:03 6203"       = | -75 "-00:01:15 -1:15 -115" =
      45      "00:00:45 0:45 45"            = | -1  "-00:00:01 -0:01 -1"   =
      65      "00:01:05 1:05 105"           = | -.4 "00:00:00 0:00 0"      =
      3600    "01:00:00 1:00:00 6000"       = | -.6 "00:00:01 -0:01 1"     =
      90187   "25:03:07 25:03:07 150307"    "01:03:07 25:03:07 150307"
      -86401  "-24:00:01 -24:00:01 -144001" "-00:00:01 -24:00:01 -144001"
      0       "－ － －"                    "00:00:00 0:00 0"
      -172800 "× × ×"                       "－ － －"               | -86400 "↓ ↓ ↓" =)")) {
    AnalysisValue::Set(lost, Time(seconds));
    EXPECT_EQ(lost.Value(), Time(seconds));
    EXPECT_EQ(texts(clsTimeValue(Time(seconds))), time_texts);
    EXPECT_EQ(texts(lost), lost_texts == "=" ? time_texts : lost_texts);
  }
  AnalysisValue::Reset(lost);
  EXPECT_EQ(lost.ToString("hh:nn:ss", false, "none", "skip"), "none");
  EXPECT_EQ(TimeToString(0, "", false, "n", "s", "d") + TimeToString(-1, "", true, "n", "s", "d") +
                TimeToString(-2, "plane", false, "n", "s", "d"),
            "nsd");
}

TEST(TimeValues, DatesPercentagesAndRanks) {
  EXPECT_EQ(clsDateValue(45351.75).ToString("yyyy年mm月dd日\\d hh:nn"), "2024年02月29日d 18:00");
  clsPercentValue percent;
  // Halves are rounded away from zero, and the 32-bit product of 1.005 and 100 is exactly 100.5.
  for (const auto& [ratio, whole, tenths] : Table<3>(R"(
      0 － － | -1 ↓ ↓ | -2 － － | .1234 12 12.3 | 1 100 100.0 | .125 13 12.5 | 1.005 101 100.5
      -.5 -50 -50.0)")) {
    AnalysisValue::Set(percent, std::stod(ratio));
    EXPECT_EQ(percent.Value(), std::max(std::stof(ratio), 0.f));
    EXPECT_EQ(percent.ToString(), whole) << ratio;
    EXPECT_EQ(percent.ToString("#0.0"), tenths) << ratio;
  }
  clsLegRankValue rank;
  for (const auto& [value, plain, in_parentheses, without_hyphen] :
       Table<4>(R"(12 12 12) 12) | 3 3 3) 3) | 0 - -) "")")) {
    AnalysisValue::Set(rank, std::stoi(value));
    EXPECT_EQ(rank.ToString(), plain);
    EXPECT_EQ(rank.ToString(true, true), in_parentheses);
    EXPECT_EQ(rank.ToString(false, true), without_hyphen);
  }
}

TEST(TimeText, PlatformDatesAndTimes) {
  for (const auto& [text, days] : Table<2>(R"(
      0:00 0 | 6:00 .25 | 01:03:27 .0440625 | " 18:00:00 " .75 | 12.00.00 .5 | 2024/2/29 45351
      1899/12/31 1 | 2000/1/1 36526 | "2024/02/29 6:00" 45351.25)")) {
    EXPECT_EQ(ParseDateTime(text).value_or(kNone), std::stod(days)) << text;
    EXPECT_TRUE(IsTimeText(text)) << text;
  }
  for (const auto& [text] : Table<1>(R"(
      24:00 12:60 12:00:60 24.00.00 1:02:03.4 -1:00 12 12.34 2023/2/29 1900/2/29 2024/13/1 2024/4/31
      2024/0/1 99/1/1 "2024/1/1 24:00" 99999999999/1/1 12:34:56:07 "" DNF 25:60:00 25:00:60 x:00:00
      -1:00:00 25:00:00:00 25::)")) {
    EXPECT_FALSE(ParseDateTime(text)) << text;
    EXPECT_FALSE(IsTimeText(text)) << text;
  }
  // IsTimeText accepts hours of 24 and more, ParseDateTime does not.
  EXPECT_FALSE(ParseDateTime("24:00:00") || ParseDateTime("100:59:59"));
  EXPECT_TRUE(IsTimeText("24:00:00") && IsTimeText("100:59:59"));
}

TEST(TimeText, ReadsSignedTimes) {
  for (const auto& [text, seconds] : Table<2>(R"(
      1:02:03 3723 | 12:34 45240 | -0:01:15 -75 | +0:01:15 75 | 25:03:07 90187 | 100:00:00 360000
      １：０２：０３ 3723 | －０：０１：１５ -75)")) {
    for (const bool numbers : {false, true}) {
      EXPECT_EQ(ParseSignedTime(text, numbers, false, kNone), Time(seconds)) << text;
    }
  }
  EXPECT_EQ(ParseSignedTime("１：０２：０３", false, true, kNone), kNone);
  // Bare numbers are days if they are allowed; hours of 24 and more must not follow a sign.
  for (const auto& [text, days] : Table<2>(R"(
      1.5 1.5 | -1.5 -1.5 | +2 2 | -25:03:07 -7 | - -7 | -x -7 | DNF -7 | "" -7)")) {
    EXPECT_EQ(ParseSignedTime(text, true, false, kNone), std::stod(days)) << text;
    EXPECT_EQ(ParseSignedTime(text, false, false, kNone), kNone) << text;
  }
}

TEST(TimeText, ReadsResultsAndLaps) {
  for (const auto& [text, milliseconds] : Table<2>(R"(
      1:02:03 3723000 | 01:02:03 3723000 | １：０２：０３ 3723000 | 1:02:03.4 3723400
      1:02:03.45 3723450 | 1:02:03.456 3723456 | 1:02:03.4567 3723456 | 12:34 754000
      12:34.5 754500 | 5 5000 | 45 45000 | 123 83000 | 1234 754000 | 6234 3754000 | 12345 5025000
      123456 45296000 | 12.34 12340 | 62:34 3754000 | 123:45 7425000 | 25:03:07 90187000
      "12:34 (2) x" 754000 | " 1:02:03 " 3723000 | 0:00 0)")) {
    EXPECT_EQ(ParseTime(text, kNone), std::stoi(milliseconds) / 86400000.0) << text;  // to the bit
  }
  for (const Text text : {"62.05", "1:02:03.x", "25:03:07.5", "1:60:00", "-0:05", "DNF", ""}) {
    EXPECT_EQ(ParseTime(text, kNone), kNone) << text;
    EXPECT_EQ(ParseTimeOfDay(text), std::nullopt) << text;
  }
  // Results that are finish times: dates and times, also with a fraction of a second.
  EXPECT_EQ(ParseTimeOfDay("1:02:03"), Seconds(3723));
  EXPECT_EQ(ParseTimeOfDay("1:02:03.456"), 3723456 / 86400000.0);
  EXPECT_EQ(ParseTimeOfDay("25:00:00"), std::nullopt);
}

// What is read without the rules for all notations is read as by these rules; all else is left to
// them.
TEST(TimeText, PlainTimes) {
  for (const Text text : {"0:00", "9:05", "12:34", "59:59", "0:00:00", "01:02:03", "23:59:59"}) {
    EXPECT_EQ(ParsePlainTime(text), ParseTime(text, kNone)) << text;
  }
  for (const Text text : {"",       ":",         "5",       "1:2",     "1:234",    "60:00",
                          "1:60",   "12:3a",     "a2:34",   "1.23",    "12.34",    "1:23.4",
                          "1:02:3", "1:62:03",   "1:02:60", "1:02.03", "1.02:03",  "24:00:00",
                          "100:00", "100:00:00", " 1:02",   "-1:02",   "+1:02:03", "1:02:03 "}) {
    EXPECT_EQ(ParsePlainTime(text), std::nullopt) << text;
  }
}

TEST(TimeText, NormalizesEveryNotation) {
  // The text as an elapsed time and as a clock time. As a clock time "123.45" is a number of days,
  // of which the pattern shows the 0.45 days.
  for (const auto& [text, elapsed, clock] : Table<3>(R"(
      12.34  00:12:34 12:34:00 | 62.34  01:02:34 62:34:00 | 123.45 02:03:45 10:48:00
      5      00:00:05 05:00:00 | 12     00:00:12 12:00:00 | 123    00:01:23 01:23:00
      1234   00:12:34 12:34:00 | 6234   01:02:34 62:34:00 | 12345  01:23:45 01:23:45
      123456 12:34:56 12:34:56 | 253456 25:34:56 25:34:56 | 1:23   00:01:23 01:23:00
      12:34  00:12:34 12:34:00 | 24:00  00:24:00 24:00    | 62:34  01:02:34 62:34
      1:75   00:01:75 1:75     | 12:75  00:12:75 12:75    | 123:45 02:03:45 123:45
      1:23:45  01:23:45 01:23:45 | １：２３：４５ 01:23:45 01:23:45 | 25:03:07 25:03:07 25:03:07
      12.34.56 12:34:56 12:34:56 | 25.34.56 25.34.56 25.34.56 | 1:02'03" 01:02:03 1:02'03"
      12:02'03" 12:02:03 12:02'03" | １：０２＇０３＂ 01:02:03 1:02'03"
      1:02.03.4 01:02:03 1:02.03.4 | 1:02:03.45 1:02:03.45 1:02:03.45
      "2024/2/29 1:02:03" 01:02:03 01:02:03 | "  12:34  " 00:12:34 12:34:00
      12:34(3) 00:12:34 12:34:00 | "1234 (3) x" 00:12:34 12:34:00 | (12:34) "" ""
      12:34.56 00:12:34.56 12:34.56 | 2:34.567 00:02:34.567 2:34.567 | 123:45.6 02:03:45.6 123:45.6
      12:34.5 00:12:34.5 12:34.5 | 12:75.50 12:75.50 12:75.50 | note:abc note:abc note:abc
      1234.567 1234.567 1234.567 | 12345678 12345678 12345678 | 3723450 3723450 3723450
      -3723450 -3723450 -3723450 | 2958465.5 12:00:00 12:00:00
      DNF DNF DNF | ＤＮＦ DNF DNF | DISQUALI DISQUALI DISQUALI | "" "" "")")) {
    EXPECT_EQ(NormalizeTimeText(text, Digits::kElapsed), elapsed) << text;
    EXPECT_EQ(NormalizeTimeText(text, Digits::kClock), clock) << text;
  }
  for (const auto& [text, pattern, expected] : Table<3>(R"(
      12345 h\:nn\:ss 1:23:45 | 12345 h:nn:ss 1:23:45 | 123456 h:nn:ss 12:34:56
      12345 nn:ss 23:45 | 62:34 h:nn:ss 1:02:34 | 12.34.56 nn'ss 34'56 | DNF nn:ss DNF)")) {
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

// Half seconds are rounded up. A stored result does not change when it is stored again, including
// its tenths, and digits without separators give the same text.
TEST(TimeText, EverySecondOfADay) {
  clsLapData runner;
  const auto stored = [&](const string& text) {
    runner.SetResult(text);
    return runner.Result();
  };
  EXPECT_EQ(stored("0:00:00"), "DISQ");
  EXPECT_EQ(stored("12:34.56"), "0:12:34.5");
  EXPECT_EQ(stored("3723450"), "3723450");
  for (int s = 1; s < 86400; ++s) {
    const string text = Clock(s);
    ASSERT_EQ(FormatTime((s * 1000 - 500) / 86400000.0, "h\\:nn\\:ss", false), text);
    ASSERT_EQ(FormatTime((s * 1000 + 499) / 86400000.0, "h\\:nn\\:ss", false), text);
    ASSERT_EQ(stored(text), text);
    ASSERT_EQ(ParseTime(text, kNone), s / 86400.0);
    ASSERT_EQ(ParsePlainTime(text), s / 86400.0);
    const string tenths = text + "." + std::to_string(s % 10);
    ASSERT_EQ(stored(tenths), tenths);
    string digits = text;
    std::erase(digits, ':');
    ASSERT_EQ(stored(digits), text);
  }
}

}  // namespace
}  // namespace keltrun::test
