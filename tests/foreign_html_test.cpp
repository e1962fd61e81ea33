// Result pages in the layouts of several programs, each as a small page of its own.
#include <gtest/gtest.h>

#include <string>

#include "keltrun2/codec/html.h"
#include "keltrun2/io/foreign/html_reader.h"
#include "keltrun2/io/foreign/page_texts.h"
#include "keltrun2/model/runner_status.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using std::string;

string LapText(DateTime lap) {
  if (lap == kTimeSkip) return "skip";
  return lap > 0 ? std::to_string(WholeSeconds(lap)) : "-";
}

// "M21 4400 85: 31 32\n1 7 Ann/Club Ok 0:03:00: 60 90 30\n", a line for each class and runner.
string Summary(const ReadResult& read) {
  string out;
  for (const ClassRecords& klass : read.records.classes) {
    out += klass.name + " " + std::to_string(klass.length.value_or(0)) + " " +
           std::to_string(klass.climb.value_or(0)) + ":";
    for (const std::int32_t code : klass.codes) out += " " + std::to_string(code);
    out += "\n";
    for (const auto& runner : klass.runners) {
      out += runner->Rank + " " + runner->Bib + " " + runner->RunnerName + "/" + runner->ClubName +
             " " + string(RunnerStatusName(runner->Status)) + " " + runner->Result() + ":";
      for (std::int32_t leg = 1; leg <= runner->LegCount(); ++leg) {
        out += " " + LapText(runner->Lap(leg));
      }
      out += "\n";
    }
  }
  return out;
}

string SummaryOf(std::string_view page) {
  const ReadResult read = ReadHtml(page, {});
  return read.error ? "error: " + read.error->detail : Summary(read);
}

// A row with the cells of a text that commas separate.
string Row(std::string_view cells, std::string_view tag = "td") {
  string row = "<tr>";
  for (std::size_t pos = 0; pos <= cells.size();) {
    const std::size_t end = std::min(cells.find(',', pos), cells.size());
    row.append("<").append(tag).append(">").append(cells.substr(pos, end - pos));
    row.append("</").append(tag).append(">");
    pos = end + 1;
  }
  return row + "</tr>\n";
}

string Bold(std::string_view cells) {
  string out;
  for (std::size_t pos = 0; pos <= cells.size();) {
    const std::size_t end = std::min(cells.find(',', pos), cells.size());
    out.append("<font size=2><b>  ").append(cells.substr(pos, end - pos)).append("</b></font>");
    pos = end + 1;
  }
  return out;
}

TEST(ForeignPage, PreformattedLinesNeedNotBeAligned) {
  const string page = "<body><pre>\n" + Bold("Blue (3)") + Bold("4.1 km  35 m") + "\n" +
                      Bold(",,,") + "   1(31)    2(32)   3(33)  F\n" +  //
                      Bold("1,7,Ann,12:14") + " 01:48  06:14  08:43 <b>12:14</b>  <i>04:47</i>\n" +
                      Bold(",,ABC,") +
                      " 01:48 04:26 02:29 <b>03:31</b>   <i>*199</i> <i>*198</i>\n" +
                      Bold(",9,Ben 2nd,mp") + " 01:00  -----  08:43 <b>10:00</b>\n" +
                      Bold(",,Club (2),") + " 01:00  -----  ----- <b>01:17</b>\n" +
                      Bold(",8,Cy,dns") + "\n" + Bold(",,DEF,") + "\n</pre></body>";
  EXPECT_EQ(SummaryOf(page),
            "Blue 4100 35: 31 32 33\n"
            "1 7 Ann/ABC OK 0:12:14: 108 266 149 211\n"
            " 9 Ben 2nd/Club (2) MissingPunch MP: 60 skip 463 77\n"
            " 8 Cy/DEF DidNotStart DNS:\n");
  const ReadResult read = ReadHtml(page, {});
  ASSERT_FALSE(read.remarks.empty());
  EXPECT_EQ(read.remarks.front().Text, "punches: 2 additional punches are not used");
}

// No start numbers, and the best time of a leg in bold.
TEST(ForeignPage, PreformattedLinesNeedNoStartNumbers) {
  EXPECT_EQ(SummaryOf("<pre>\n" + Bold("Test course 1 (2)") + Bold("4.1 km") + "\n" + Bold(",,") +
                      "   1(31)    2(32)   F\n" + Bold("1,Ann,12:14") +
                      "<b> 01:48</b> 06:14 <b>12:14</b>\n" + Bold(",ABC,") +
                      "<b> 01:48</b> 04:26 <b>06:00</b>\n</pre>"),
            "Test course 1 4100 0: 31 32\n1  Ann/ABC OK 0:12:14: 108 266 360\n");
}

TEST(ForeignPage, BlankSplitsOfPreformattedLinesAreToldByTheirPlace) {
  const string head = "<pre>\n" + Bold("Blue") + Bold("4.1 km") + "\n" + Bold(",,") +
                      "   1(31)   2(32)   3(33)       F\n";
  EXPECT_EQ(SummaryOf(head + Bold("1,Ann,4:00") + "    1:00    2:00    3:00    4:00\n" +
                      Bold(",,") + "    1:00    1:00    1:00    1:00\n" +  //
                      Bold(",Ben,mp") + "    1:00            3:00    4:30\n" + Bold(",,") +
                      "    1:00                    1:30\n</pre>"),
            "Blue 4100 0: 31 32 33\n"
            "1  Ann/ OK 0:04:00: 60 60 60 60\n"
            "  Ben/ MissingPunch MP: 60 skip 120 90\n");
}

// The cells of lines without markup are told apart by blanks and by where they stand.
TEST(ForeignPage, PlainLines) {
  EXPECT_EQ(SummaryOf("<h2>Cup</h2><pre>\n"
                      "M21 (3)   4.4 km  85 m\n"
                      "                              1(31)   2(32)       F\n"
                      "  1   7 Ann Lee        3:00    1:00    2:00    3:00\n"
                      "        1860 Club              1:00    1:00    1:00\n"
                      "  2     Ben            4:00    1:30    2:30    4:00\n"
                      "        Club B                 1:30    1:00    1:30\n"
                      "      8 Cy             mp      1:00            5:00\n"
                      "        Club                   1:00\n"
                      "</pre>"),
            "M21 4400 85: 31 32\n"
            "1 7 Ann Lee/1860 Club OK 0:03:00: 60 60 60\n"
            "2  Ben/Club B OK 0:04:00: 90 60 90\n"
            " 8 Cy/Club MissingPunch MP: 60 skip 240\n");
}

TEST(ForeignPage, TablesMayBeSloppy) {
  EXPECT_EQ(SummaryOf("<TABLE><TR><TD colspan=4>Cup<TR><TD colspan=9>D21&nbsp&nbsp (1.5 km)"
                      "<TR><TD>&nbsp<TD><TD><TD>1-31<TD>2-ST2<TD>F"
                      "<TR><TD>1.<TD>A&amp;B &eacute;&nbsp;C<TD>3:00<TD>1:00<TD>2:00<TD>3:00"
                      "<TR><TD><TD>Rock &quot;n&quot; Run<TD><TD>1:00<TD>1:00<TD>1:00</TABLE>"),
            "D21 1500 0: 31 10001\n1  A&B é C/Rock \"n\" Run OK 0:03:00: 60 60 60\n");
}

// Programs that leave elements open do so in every line.
TEST(ForeignPage, ElementsMayStayOpen) {
  string page =
      "<FONT><PRE>\n<FONT SIZE=2><B>Blue</B><B> 4.1 km</B>\n<B> </B><B> </B><B> </B>  1(31)  F\n";
  string expected = "Blue 4100 0: 31\n";
  for (int i = 1; i <= 300; ++i) {
    const string place = std::to_string(i);
    page += "<FONT SIZE=2><B>" + place + "</B><FONT><B>Ann " + place +
            "</B><B> 3:00</B>  1:00 <FONT>3:00\n";
    expected += place + "  Ann " + place + "/ OK 0:03:00: 60 120\n";
  }
  EXPECT_EQ(SummaryOf(page), expected);
}

TEST(ForeignPage, NamesMayBeInTheFirstColumn) {
  EXPECT_EQ(SummaryOf("<table>" + Row("A  5 km") + Row(",,1(31),F") + Row("Ann,3:00,1:00,3:00") +
                      Row("OK (2),,1:00,2:00") + Row("B  4 km") + Row(",,1(32),F") +
                      Row("Ben,4:00,1:00,4:00") + Row("Club,,1:00,3:00") + "</table>"),
            "A 5000 0: 31\n  Ann/OK (2) OK 0:03:00: 60 120\n"
            "B 4000 0: 32\n  Ben/Club OK 0:04:00: 60 180\n");
}

// The rows of runners have a column for their class, the row of labels has none.
TEST(ForeignPage, PagesOfCoursesNameTheClassOfEachRunner) {
  const string labels = Row(",,,,1-31,,2-32,,F,");
  const string runners = Row("1.,6,Zoe,M21,2:00,0:30,(1),1:00,(1),2:00,(1)") +
                         Row(",,,,,0:30,(1),0:30,(1),1:00,(1)") +
                         Row("1.,7,Ann,M21,3:00,1:00,(1),2:00,(1),3:00,(1)") +
                         Row(",,ABC,,,1:00,(1),1:00,(1),1:00,(1)") +
                         Row("2.,8,Ben,M40,4:00,2:00,(2),3:00,(2),4:00,(2),,3:10") +
                         Row(",,DEF,,,2:00,(2),1:00,(1),1:00,(1),,*199");
  const string expected =
      "M21 4100 35: 31 32\n 6 Zoe/ OK 0:02:00: 30 30 60\n 7 Ann/ABC OK 0:03:00: 60 60 60\n"
      "M40 4100 35: 31 32\n 8 Ben/DEF OK 0:04:00: 120 60 60\n";
  const string course = "<table><tr><td colspan=20>Course 1 (4100m, 35m)</td></tr>";
  EXPECT_EQ(SummaryOf(course + labels + runners + "</table>"), expected);
  EXPECT_EQ(SummaryOf("<table>" + Row("Course 1 (2),4.1 Km,35 m") + "</table><table>" +
                      Row("Pl,Stno,Name,Cl.,Time", "th") + "</table><table>" +
                      Row(",,,,,1-31,,2-32,,F,") + runners + "</table>"),
            expected);
}

TEST(ForeignPage, PlacesMayHaveColumnsWithoutLabels) {
  EXPECT_EQ(SummaryOf("<table>" + Row("H21  4.4 km") + Row("Pl,Name,Time,1(31),2(32),F") +
                      Row("1,Ann,3:00,1:00,(1),2:00,(1),3:00,(1)") +
                      Row(",,,1:00,(1),1:00,(1),1:00,(1)") + "</table>"),
            "H21 4400 0: 31 32\n1  Ann/ OK 0:03:00: 60 60 60\n");
}

TEST(ForeignPage, OneRowForEachRunner) {
  EXPECT_EQ(SummaryOf("<h3>Klasse: H 21 (4), Länge: 4,4 km</h3><table>" +
                      Row("Platz,Stnr,Name,Verein,Zeit,Rückst.,1 [31],2 [32],Ziel", "th") +
                      Row("1.,7,Ann,TV 1860,3:00,,1:00,2:00 (1),3:00") +
                      Row("2.,8,Ben,,4:00,+1:00,1:00,2:00 (1),4:00") +
                      Row(",9,Cy,OL,Fehlst.,,1:00,-----,4:10") +
                      Row(",10,Dan,OL,aK 5:00,,1:00,3:00,5:00") + Row(",11,Eve,OL,N Ang,,,,") +
                      "</table>"),
            "H 21 4400 0: 31 32\n"
            "1 7 Ann/TV 1860 OK 0:03:00: 60 60 60\n"
            "2 8 Ben/ OK 0:04:00: 60 60 120\n"
            " 9 Cy/OL MissingPunch MP: 60 skip 190\n"
            " 10 Dan/OL NotCompeting 0:05:00: 60 120 120\n"
            " 11 Eve/OL DidNotStart DNS:\n");
}

// "Cl." is the club in lists that have none below the names. A tie can have no place of its own.
// What stands below the runners is no runner.
TEST(ForeignPage, TiesAndFooters) {
  EXPECT_EQ(SummaryOf("<h3>A</h3><table>" + Row("Pl,Name,Cl.,Time,1(31),F") +
                      Row("1,Ann,ABC,3:00,1:00,3:00") + Row(",Ben,DEF,3:00,2:00,3:00") +
                      Row(",Cy,DEF,4:00,2:00,4:00") + Row("Course planner,Dan,,,,") + "</table>"),
            "A 0 0: 31\n1  Ann/ABC OK 0:03:00: 60 120\n1  Ben/DEF OK 0:03:00: 120 60\n"
            "  Cy/DEF NotCompeting 0:04:00: 120 120\n");
}

TEST(ForeignPage, OnlyLapsAddUpToTheTotal) {
  EXPECT_EQ(SummaryOf("<h3>Blue</h3><table>" + Row("Pos,Name,Club,Time,1(31),2(32),3(33),F") +
                      Row("1st,Ann,ABC,7:00,3:00,1:00,1:00,2:00") +
                      Row("2nd,Ben,,8:00,1:00,2:00,2:30,2:30") +
                      Row("3rd,Cy,DEF,9:00,1:00,-,2:30,2:30") + "</table>"),
            "Blue 0 0: 31 32 33\n"
            "1  Ann/ABC OK 0:07:00: 180 60 60 120\n"
            "2  Ben/ OK 0:08:00: 60 120 150 150\n"
            "3  Cy/DEF OK 0:09:00: 60 180 150 150\n");
}

// Laps above splits, cells that reach over two rows, times with points, legs as labels.
TEST(ForeignPage, LapsMayComeFirst) {
  EXPECT_EQ(
      SummaryOf(
          "<h2>H21 (5.2 km)</h2><table><tr><th rowspan=2>Pos<th rowspan=2>Name<th rowspan=2>Finish "
          "time<th rowspan=2>Diff<th colspan=6>legs<tr><td colspan=2>S-1 (31)<td colspan=2>1-2 "
          "(32)<td colspan=2>2-F"
          "<tr><td rowspan=2>1<td>Ann<td rowspan=2>1:02.25<td rowspan=2>"
          "<td>2.25<td>(1)<td>1:00.00<td>(1)<td>0.00<td>(2)"
          "<tr><td>ABC<td>2.25<td>(1)<td>1:02.25<td>(1)<td>1:02.25<td>(1)"
          "<tr><td rowspan=2>2<td>Ben<td rowspan=2>1:04.32<td rowspan=2>+2.07"
          "<td>4.32<td>(2)<td>59.00<td>(1)<td>1.00<td>(2)"
          "<tr><td>DEF<td>4.32<td>(2)<td>1:03.32<td>(1)<td>1:04.32<td>(2)</table>"),
      "H21 5200 0: 31 32\n"
      "1  Ann/ABC OK 1:02:25: 145 3600 0\n"
      "2  Ben/DEF OK 1:04:32: 272 3540 60\n");
}

TEST(ForeignPage, CellsMayHaveBothTimes) {
  EXPECT_EQ(SummaryOf("<h3>Long, 5.0km</h3><p>Please select</p><table>" +
                      Row("Pos,Name<br>Club,Time,1<br>(31),2<br>(32),F") +
                      Row("1,Ann<br>ABC,3:00,1:00 (1)<br>1:00 (1),2:30<br>1:30,3:00<br>0:30") +
                      "</table>"),
            "Long 5000 0: 31 32\n1  Ann/ABC OK 0:03:00: 60 90 30\n");
}

TEST(ForeignPage, NumbersAndCodesOfControlsMayHaveTheirOwnRows) {
  const string runners = Row("1,Ann,ABC,3:00,1:00,2:00,3:00");
  const string head = "<h3>A</h3><table>";
  EXPECT_EQ(SummaryOf(head + Row("Pl,Name,Club,Time,1,2,F") + Row(",,,,(31),(32),") + runners +
                      "</table>"),
            "A 0 0: 31 32\n1  Ann/ABC OK 0:03:00: 60 60 60\n");
  EXPECT_EQ(SummaryOf(head + Row("Pl,Name,Club,Time,131,132,F") + runners + "</table>"),
            "A 0 0: 131 132\n1  Ann/ABC OK 0:03:00: 60 60 60\n");
  EXPECT_EQ(SummaryOf(head + Row("Pl,Name,Club,Time,1,2,F") + runners + "</table>"),
            "A 0 0:\n1  Ann/ABC OK 0:03:00: 60 60 60\n");
}

// Rows whose laps do not exist are blank; the rows after them keep their meaning.
TEST(ForeignPage, ControlsTakeSeveralRows) {
  EXPECT_EQ(SummaryOf("<table>" + Row("A (1),4.4 km") + Row(",,,1(31),2(32)") + Row(",,,3(33),F") +
                      Row("1,Ann,4:00,1:00,2:00") + Row(",ABC,,1:00,1:00") + Row(",,,3:00,4:00") +
                      Row(",,,1:00,1:00") +  //
                      Row(",Ben,mp,-----,-----") + Row(",DEF,,,") + Row(",,,3:00,4:00") +
                      Row(",,,,1:00") + Row("&nbsp;") +  //
                      Row("B (1),2.2 km") + Row(",,,1(31),F") + Row("1,Cy,1:30,1:00,1:30") +
                      Row(",ABC,,1:00,0:30") + "</table>"),
            "A 4400 0: 31 32 33\n"
            "1  Ann/ABC OK 0:04:00: 60 60 60 60\n"
            "  Ben/DEF MissingPunch MP: skip skip 180 60\n"
            "B 2200 0: 31\n1  Cy/ABC OK 0:01:30: 60 30\n");
}

TEST(ForeignPage, SiTimingKeepsItsRowsInAScript) {
  EXPECT_EQ(
      SummaryOf(
          "<html><head><title>Results for Cup - 11 September 2021</title><script>var x;function "
          "getData(tableNumber) {if (tableNumber == 0) return [[\"1st\",\"1\",\"Ann "
          "\\u0026amp; "
          "\\\"B\\\"\",\"ABC\",\"M21\",\"3:00\",\"\\u0026nbsp;\",\"1:00\",\"3:00\"]];if "
          "(tableNumber == 1) return "
          "[[\"\",\"\",\"Ben\",\"\",\"W21\",\"m1\",\"\",\"-----\",\"4:00\"]];}</script></"
          "head><body>"
          "<h2>Results for Cup</h2><select><option>Long</option></select><h3>Long</h3>"
          "<p>Results will be added here soon.</p><p>5.0km</p><table "
          "id='results-table0'><thead><tr><th "
          "colspan=2>Pos<button title=\"Sort\"></button></th><th>Name</th><th>Club</th><th>Age "
          "Class</th><th>Time</th><th>Behind</th><th>1 (31)</th><th>F</th></tr></thead></table>"
          "<h3>Short</h3><p>1.8km</p><table id='results-table1'><thead><tr><th "
          "colspan=2>Pos</th><th>Name</th><th>Club</th><th>Age "
          "Class</th><th>Time</th><th>Behind</th>"
          "<th>1 (31)</th><th>F</th></tr></thead></table></body></html>"),
      "Long 5000 0: 31\n1  Ann & \"B\"/ABC OK 0:03:00: 60 120\n"
      "Short 1800 0: 31\n  Ben/ MissingPunch MP: skip 240\n");
}

TEST(ForeignPage, TellsTheEvent) {
  const string results = "<h4>A, 4 km</h4><table>" + Row("Pl,Name,Time,1(31),F") +
                         Row("1,Ann,3:00,1:00,3:00") + "</table>";
  // Name, date, the beginning of a page.
  const Rows<string, string, string> cases = {
      {"Cup", "2013-02-01", "<title>Cup - Splits</title><h1>Cup</h1><p>Sun 01/02/2013 12:34</p>"},
      {"Cup", "2021-09-11", "<title>Cup</title><table><tr><td>Results, 11 September 2021</table>"},
      {"Løp", "2020-10-24", "<h1>Løp</h1><div>24. oktober 2020 - Skog</div>"},
      {"みどり", "2022-06-04", "<h1>みどり</h1>2022年6月4日"},
      {"Cup", "", "<meta name=Generator content='O-time 1.0'><title>Cup</title>"}};
  for (const auto& [name, date, beginning] : cases) {
    SCOPED_TRACE(beginning);
    const LapRecords records = ReadHtml(beginning + results, {}).records;
    ASSERT_EQ(records.classes.size(), 1u);
    EXPECT_EQ(records.classes[0].name, "A");
    EXPECT_EQ(records.event_name.value_or(""), name);
    EXPECT_EQ(records.event_date ? FormatDateTime(*records.event_date, "yyyy-mm-dd") : "", date);
    EXPECT_EQ(records.create_application.value_or(""), date.empty() ? "O-time 1.0" : "");
  }
}

TEST(ForeignPage, ClassesAreNamedInManyWays) {
  // Name, length, climb, the text.
  const Rows<string, int, int, string> cases = {
      {"ＭＥ", 4400, 85, "ＭＥ (16)      4.4 km    85 m"},
      {"Class 1", 4100, 35, "Class 1    (4100m, 35m)"},
      {"H21", 4400, 85, "H21  (16)  4,4 Km  85 Hm  17 P"},
      {"Lang", 5700, 0, "Lang (5.7 km)"},
      {"Blue", 5200, 150, "Course: Blue, Length: 5.2 km, 150 m, 12 controls"},
      {"M 21 C", 5200, 0, "M 21 C  5.2km"},
      {"W65-70", 0, 0, "W65-70 (3 / 4)"},
      {"Open", 0, 0, "Open"},
      {"", 5000, 0, "5.0km"}};
  for (const auto& [name, length, climb, text] : cases) {
    SCOPED_TRACE(text);
    const ClassLine line = ReadClassLine(text);
    EXPECT_EQ(line.name, name);
    EXPECT_EQ(line.length, length);
    EXPECT_EQ(line.climb, climb);
  }
}

TEST(ForeignPage, WordsForStatusesAreOfManyLanguages) {
  const Rows<RunnerStatus, string> cases = {
      {RunnerStatus::kMissingPunch, "mp"},          {RunnerStatus::kMissingPunch, "Fehlst"},
      {RunnerStatus::kMissingPunch, "felst."},      {RunnerStatus::kMissingPunch, "pm"},
      {RunnerStatus::kMissingPunch, "Feilst"},      {RunnerStatus::kDidNotFinish, "Aufg."},
      {RunnerStatus::kDidNotFinish, "utg."},        {RunnerStatus::kDidNotFinish, "Kesk."},
      {RunnerStatus::kDidNotStart, "N Ang"},        {RunnerStatus::kDidNotStart, "ej start"},
      {RunnerStatus::kDidNotStart, "Ikke startet"}, {RunnerStatus::kDisqualified, "DISQ"},
      {RunnerStatus::kDisqualified, "hylätty"},     {RunnerStatus::kNotCompeting, "n/c"},
      {RunnerStatus::kNotCompeting, "a.K."},        {RunnerStatus::kOverTime, "max tid"}};
  for (const auto& [status, word] : cases) {
    EXPECT_EQ(StatusOfPageWord(word), status) << word;
  }
  for (const string word : {"", "Ann", "M21", "3:00", "-----"}) {
    EXPECT_EQ(StatusOfPageWord(word), std::nullopt) << word;
  }
}

TEST(ForeignPage, PagesWithoutSplitsAreRefused) {
  const auto root = NewRoot(Mode::kEnglishTexts);
  const string results = Row("Pl,Name,Club,Time") + Row("1,Ann,ABC,3:00") + Row("2,Ben,ABC,4:00");
  EXPECT_TRUE(
      SummaryOf("<html><p>No results here.</html>").starts_with("error: This is a web page"));
  EXPECT_TRUE(
      SummaryOf("<table>" + results).starts_with("error: This result list has no split times"));
  EXPECT_TRUE(SummaryOf("<table>" + Row(",,,1(31),2(32),F"))
                  .starts_with("error: There are no results in this file"));
}

TEST(ForeignPage, IsRecognizedByItsBeginning) {
  for (const string page :
       {"<html>", "\r\n<!DOCTYPE html>\n<x>", "<!doctype HTML PUBLIC 'x'>", "<HTML xmlns='x'>",
        "<?xml version='1.0'?>\n<!-- x -->\n<!DOCTYPE html PUBLIC 'x'>\n<html>", "<pre>\n1(31)",
        "<table width=1>", "<head>"}) {
    EXPECT_TRUE(LooksLikeHtml(page)) << page;
  }
  for (const string other :
       {"", "html", "<", "<!--", "<?xml version='1.0'?><ResultList>", "<keltrun>", "<ResultList>",
        "<!DOCTYPE ResultList SYSTEM 'IOFdata.dtd'>", "<tables>", "Stno;Chip", "<xml>"}) {
    EXPECT_FALSE(LooksLikeHtml(other)) << other;
  }
}

// Writes down what a walk tells.
class Transcript : public HtmlListener {
 public:
  void Open(std::string_view name, std::span<const HtmlAttribute> attributes,
            std::int32_t line) override {
    text += "<" + string(name) + "@" + std::to_string(line);
    for (const HtmlAttribute& attribute : attributes) {
      text += " " + string(attribute.name) + "=" + string(attribute.value);
    }
    text += ">";
  }
  void Text(std::string_view part, std::int32_t /*line*/) override { text += part; }
  void Close(std::string_view name) override { text += "</" + string(name) + ">"; }

  string text;
};

string Walked(std::string_view page) {
  Transcript transcript;
  return WalkHtml(page, transcript) ? transcript.text : "stopped";
}

string Repeated(std::string_view text, int times) {
  string out;
  for (int i = 0; i < times; ++i) out += text;
  return out;
}

TEST(HtmlWalk, TellsElementsAndTexts) {
  EXPECT_EQ(Walked("<P ID=a b>x&amp;y<br>\n<i>\xE6\xA9\x8B&nbsp&eacute;"),
            "<p@1 id=a b=>x&y<br@1></br>\n<i@2>\xE6\xA9\x8B\u00A0é</i></p>");
  // The text is UTF-8, whatever it declares.
  EXPECT_EQ(Walked("<meta charset=iso-8859-1><p>橋</p>"),
            "<meta@1 charset=iso-8859-1></meta><p@1>橋</p>");
  // Nothing is cut at bytes that are not allowed, and entities of the page are not expanded.
  EXPECT_EQ(Walked(string("<p>a\0b\x01\xFF"
                          "c</p>",
                          13)),
            "<p@1>a b \uFFFDc</p>");
  EXPECT_EQ(Walked("<!DOCTYPE html [<!ENTITY e SYSTEM 'file:///etc/hostname'>]><p>&e;</p>"),
            Walked("<!DOCTYPE html [<!ENTITY e SYSTEM 'file:///etc/none'>]><p>&e;</p>"));
}

TEST(HtmlWalk, LimitsWhatWouldTakeQuadraticTime) {
  string attributes;
  for (int i = 0; i < 100000; ++i) attributes += " a" + std::to_string(i) + "=\">\"";
  for (const string& page :
       {Repeated("<div>", 100000) + Repeated("</b>", 100000), "<p>x<b " + attributes + ">",
        "<!-- <a b='--><b" + attributes + ">", Repeated("<a", 1000) + attributes}) {
    EXPECT_EQ(Walked(page), "stopped") << page.substr(0, 40);
  }
  // A hundred thousand tags that may begin here, none of them long.
  for (const string part : {"<a", "<a=\"", "<a b='<a b=\"", "<a ", "<table><tr><td>"}) {
    Walked(Repeated(part, 100000));
  }
}

}  // namespace
}  // namespace keltrun::test
