// IOF XML of both versions: what the elements mean, in the variants that programs write.
#include <gtest/gtest.h>

#include <cmath>

#include "keltrun2/io/foreign/iof2_reader.h"
#include "keltrun2/io/foreign/iof3_reader.h"
#include "keltrun2/io/foreign/refusal.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using std::string;

string Seconds(DateTime time) {
  const auto milliseconds = std::llround(time * 86'400'000);
  const string whole = std::to_string(milliseconds / 1000);
  const string rest = std::to_string(milliseconds % 1000 / 100);
  return rest == "0" ? whole : whole + "." + rest;
}

// "Name" and what else is known of a runner, in brackets the laps: "+" skipped, "-" no data.
string Text(clsLapData& r) {
  string text = r.RunnerName;
  for (const string& part : {r.ClubName, r.Bib, r.ControlCard, r.Sex, r.Nationality, r.CompetitorId,
                             r.Rank, string(r.Result())}) {
    if (!part.empty()) text += "," + part;
  }
  if (r.StartTime()->Value() != 0) text += ",@" + Seconds(r.StartTime()->Value());
  text += " [";
  for (std::int32_t leg = 1; leg <= r.LegCount(); ++leg) {
    const DateTime lap = r.Lap(leg);
    text += (leg > 1 ? " " : "") + (lap > 0 ? Seconds(lap) : lap == kTimeSkip ? "+" : "-");
  }
  return text + "]";
}

// Each class with length, climb, controls and codes, and its runners; then the line of the error.
string Text(const ReadResult& read) {
  string text;
  for (const ClassRecords& klass : read.records.classes) {
    text += klass.name + " " + std::to_string(klass.length.value_or(0)) + "/" +
            std::to_string(klass.climb.value_or(0)) + "/" +
            std::to_string(klass.control_count.value_or(0)) + ":";
    for (const std::int32_t code : klass.codes) text += " " + std::to_string(code);
    for (const auto& runner : klass.runners) text += "; " + Text(*runner);
    text += "\n";
  }
  return text + (read.error ? "E" + std::to_string(read.error->line) : "");
}

// The subjects of the remarks, those of many files left out.
string Subjects(const ReadResult& read) {
  string subjects;
  for (const LoadRemark& remark : read.remarks) {
    const string subject = remark.Text.substr(0, remark.Text.find_first_of(":\""));
    if (subject != "status" && subject != "split times") subjects += subject + ";";
  }
  return subjects;
}

using Reader = ReadResult (*)(std::string_view, const ForeignOptions&);

string List3(const string& content) {
  return "<?xml version=\"1.0\"?>\n<ResultList iofVersion=\"3.0\">\n" + content + "\n</ResultList>";
}
string List2(const string& content) {
  return "<ResultList><IOFVersion version=\"2.0.3\"/>" + content + "</ResultList>";
}
string Person3(const string& name, const string& results) {
  return "<PersonResult><Person><Name><Given>" + name + "</Given></Name></Person>" + results +
         "</PersonResult>";
}
string Person2(const string& name, const string& results) {
  return "<PersonResult><Person><PersonName><Given>" + name + "</Given></PersonName></Person>" +
         results + "</PersonResult>";
}
string Class3(const string& content) {
  return "<ClassResult><Class><Name>A</Name></Class>" + content + "</ClassResult>";
}
string Class2(const string& content) {
  return "<ClassResult><ClassShortName>A</ClassShortName>" + content + "</ClassResult>";
}
string Split(const string& code, const string& time) {
  return "<SplitTime><ControlCode>" + code + "</ControlCode><Time>" + time + "</Time></SplitTime>";
}

// The text of a list with one class and one runner with this content of the result.
string OneResult3(const string& content) {
  return Text(ReadIof3(List3(Class3(Person3("X", "<Result>" + content + "</Result>"))), {}));
}
string OneResult2(const string& content) {
  return Text(ReadIof2(List2(Class2(Person2("X", "<Result>" + content + "</Result>"))), {}));
}

TEST(Iof3, ElementsInAnyOrderWithAnyPrefix) {
  const string list =
      "<p:ResultList xmlns:p='http://www.orienteering.org/datastandard/3.0' creator='Prog 1'"
      " createTime='2024-05-05T18:30:00+02:00'><p:ClassResult><p:PersonResult><p:Result>"
      "<p:ControlCard punchingSystem='SI'>501</p:ControlCard><p:ControlCard>9</p:ControlCard>"
      "<p:SplitTime><p:Time>60</p:Time><p:ControlCode>31</p:ControlCode></p:SplitTime>"
      "<p:Status>OK</p:Status><p:Position>3</p:Position><p:OverallResult><p:Time>9</p:Time>"
      "<p:Status>DidNotFinish</p:Status></p:OverallResult><p:TimeBehind>5</p:TimeBehind>"
      "<p:Time>100.0</p:Time><p:BibNumber> H-7 </p:BibNumber></p:Result><p:Organisation>"
      "<p:ShortName>C</p:ShortName><p:Country code='SWE'/><p:Name>Club &amp; Co</p:Name>"
      "</p:Organisation><p:Person sex='F'><p:Nationality code='NOR'>Norway</p:Nationality><p:Name>"
      "<p:Given>Ann</p:Given><p:Family><![CDATA[Lee]]></p:Family></p:Name><p:Id/><p:Id>77</p:Id>"
      "<p:Extensions><p:Name>no</p:Name></p:Extensions></p:Person></p:PersonResult><p:Course>"
      "<p:Climb>85</p:Climb><p:Length>4400.4</p:Length></p:Course><p:Class><p:ShortName>W"
      "</p:ShortName><p:Name>Women</p:Name><p:Id>4</p:Id></p:Class></p:ClassResult><p:Event>"
      "<p:Name>Cup</p:Name><p:URL type='ResultList'>r</p:URL><p:URL type='Website'>w</p:URL>"
      "<p:EndTime><p:Date>2024-05-06</p:Date></p:EndTime></p:Event></p:ResultList>";
  const ReadResult read = ReadIof3(list, {});
  EXPECT_EQ(Text(read),
            "Women 4400/85/1: 31; Ann Lee,Club & Co,H-7,501,F,NOR,77,3,0:01:40 [60 40]\n");
  EXPECT_EQ(Subjects(read), "");
  EXPECT_EQ(read.format, "IOF XML 3.0");
  EXPECT_EQ(read.records.event_name, "Cup");
  EXPECT_EQ(read.records.official_site, "w");
  EXPECT_EQ(read.records.create_application, "Prog 1");
  EXPECT_EQ(FormatDateTime(*read.records.event_date, "yyyy-mm-dd"), "2024-05-06");
  EXPECT_EQ(FormatDateTime(*read.records.create_date, "mm-dd hh:nn"), "05-05 18:30");
}

TEST(Iof3, SplitsAndTimes) {
  const string missing = "<SplitTime status=\"Missing\"><ControlCode>32</ControlCode>";
  const string rest = Split("33", "150") + "<Time>200</Time><Status>OK</Status>";
  const string one = "A 0/0/1: 31; X,";
  const string three = "A 0/0/3: 31 32 33; X,0:03:20 [60 + 90 50]\n";
  const Rows<string, string> cases = {
      {Split("31", "60") + missing + "</SplitTime>" + rest, three},
      {Split("31", "60") + missing + "<Time>0</Time></SplitTime>" + rest, three},
      {Split("31", "60") + Split("32", "") + rest, three},
      {Split("31", "60") + Split("32", "--:--") + rest, three},
      {Split("31", "60") + "<SplitTime><ControlCode>32</ControlCode></SplitTime>" + rest, three},
      {Split("S1", "0") + Split("31", "60") + Split("32", "") + rest + Split("F1", "200"), three},
      {Split("31", "60") + Split("999", "200") + "<Time>200</Time>", one + "0:03:20 [60 140]\n"},
      {Split("31", "60") + Split("Finish", "200"), one + "0:03:20 [60 140]\n"},
      {Split("31", "60,55") + "<Time>200,5</Time>", one + "0:03:20.5 [60.5 139.9]\n"},
      {Split("31", "1:00") + "<Time>0:03:20</Time>", one + "0:03:20 [60 140]\n"},
      {Split("31", "6.0E1") + "<Time>2.0E2</Time>", one + "0:03:20 [60 140]\n"},
      // The total of a runner who gave up may be the time of the last control.
      {Split("31", "60") + "<Time>60</Time><Status>DidNotFinish</Status>", one + "DNF [60]\n"},
      {Split("31", "60") + "<Time>70</Time><Status>DidNotFinish</Status>", one + "DNF [60 10]\n"},
      // The clocks give the total, also over midnight; seconds have fractions.
      {"<StartTime>2024-05-05T23:59:00.5+02:00</StartTime>"
       "<FinishTime>2024-05-06T00:02:20.5+02:00</FinishTime>" +
           Split("31", "60"),
       one + "0:03:20,@86340.5 [60 140]\n"},
      {"<StartTime>10:00:00</StartTime><Time>200</Time>" + Split("31", "60"),
       one + "0:03:20,@36000 [60 140]\n"}};
  for (const auto& [content, expected] : cases) EXPECT_EQ(OneResult3(content), expected) << content;
}

TEST(Iof3, StatusesAndPositions) {
  const Rows<string, string> cases = {
      {"<Status>MissingPunch</Status>", "MP"},      {"<Status>Disqualified</Status>", "DISQ"},
      {"<Status>DidNotFinish</Status>", "DNF"},     {"<Status>didnotstart</Status>", "DNS"},
      {"<Status>OverTime</Status>", "OCL"},         {"<Status>SportingWithdrawal</Status>", "DNF"},
      {"<Status>Cancelled</Status>", "DNS"},        {"<Status>MisPunch</Status>", "MP"},
      {"<Status>NotCompeting</Status>", "0:01:00"}, {"<Status>DNF</Status>", "DNF"}};
  for (const auto& [status, result] : cases) {
    const string laps = result == "DNS" ? " []" : " [60]";
    EXPECT_EQ(OneResult3("<Time>60</Time>" + status), "A 0/0/0:; X," + result + laps + "\n");
  }
  // A total of 0 is none.
  EXPECT_EQ(OneResult3("<Time>0</Time><Status>Inactive</Status>"), "A 0/0/0:; X []\n");
  // Guests get the position 0 from some programs.
  EXPECT_EQ(OneResult3("<Time>60</Time><Position>0</Position>"), "A 0/0/0:; X,0:01:00 [60]\n");
  const string leg = "<Position type=\"Course\">8</Position><Position type=\"Leg\">2</Position>";
  EXPECT_EQ(OneResult3("<Time>60</Time>" + leg), "A 0/0/0:; X,2,0:01:00 [60]\n");
}

string Race(const string& number, const string& time) {
  return "<Result raceNumber=\"" + number + "\">" +
         (time.empty() ? "<Status>DidNotStart</Status>"
                       : "<Time>" + time + "</Time><Status>OK</Status>") +
         "</Result>";
}

TEST(Iof3, OneOfTheRacesIsRead) {
  const string courses =
      "<Course raceNumber=\"2\"><Length>2000</Length></Course>"
      "<Course raceNumber=\"1\"><Length>1000</Length></Course>";
  const string numbered = courses + Person3("X", Race("2", "20") + Race("1", "10")) +
                          Person3("Y", Race("2", "21")) + Person3("Z", "");
  const string later = Person3("X", Race("1", "") + Race("2", "20"));
  const string unnumbered =
      "<Course><Length>1</Length></Course><Course><Length>2</Length></Course>" +
      Person3("X",
              "<Result><Time>10</Time></Result>"
              "<Result><Time>20</Time></Result>");
  const Rows<string, int, string, string> cases = {
      {numbered, 0, "A 1000/0/0:; X,0:00:10 [10]; Z,DNS []\n", "races;"},
      {numbered, 2, "A 2000/0/0:; X,0:00:20 [20]; Y,0:00:21 [21]; Z,DNS []\n", "races;"},
      {numbered, 3, "E0", ""},
      {later, 0, "A 0/0/0:; X,0:00:20 [20]\n", "races;"},
      {later, 1, "A 0/0/0:; X,DNS []\n", "races;"},
      {unnumbered, 0, "A 1/0/0:; X,0:00:10 [10]\n", "races;races;"},
      {unnumbered, 2, "A 2/0/0:; X,0:00:20 [20]\n", "races;races;"},
      {Person3("X", Race("1", "10") + Race("1", "11")), 0, "A 0/0/0:; X,0:00:10 [10]\n",
       "results;"},
      // What is wrong in another race is not told.
      {Person3("X", Race("1", "10") + Race("2", "abc")), 0, "A 0/0/0:; X,0:00:10 [10]\n",
       "races;"}};
  for (const auto& [content, race, expected, subjects] : cases) {
    const ReadResult read = ReadIof3(List3(Class3(content)), {race});
    EXPECT_EQ(Text(read), expected) << race << content;
    EXPECT_EQ(Subjects(read), subjects) << content;
  }
}

TEST(Iof3, DatesOfTheEvent) {
  const string race =
      "<Race><RaceNumber>2</RaceNumber><StartTime><Date>2024-05-06</Date></StartTime></Race>";
  const string start = "<StartTime><Date>2024-05-05</Date><Time>10:00:00Z</Time></StartTime>";
  const string runner =
      "<Result><Time>9</Time><StartTime>2024-05-07T10:00:00</StartTime></Result>"
      "<Result><Time>9</Time><StartTime>2024-05-08T10:00:00</StartTime></Result>";
  const Rows<string, string, int, string> cases = {
      {start + race, "", 1, "2024-05-05"},
      {start + race, runner, 2, "2024-05-06"},
      {start, runner, 2, "2024-05-08"},
      {start, runner, 1, "2024-05-05"},
      {race, runner, 1, "2024-05-07"},
      {"<EndTime><Date>2024-05-09+02:00</Date></EndTime>", "", 1, "2024-05-09"},
  };
  for (const auto& [event, results, number, expected] : cases) {
    const string content = results.empty() ? "<Result><Time>9</Time></Result>" : results;
    const ReadResult read =
        ReadIof3(List3("<Event>" + event + "</Event>" + Class3(Person3("X", content))), {number});
    ASSERT_TRUE(read.records.event_date) << event;
    EXPECT_EQ(FormatDateTime(*read.records.event_date, "yyyy-mm-dd"), expected) << event << number;
  }
}

TEST(Iof3, ClocksWithDatesAndZones) {
  const auto clocks = [](const string& start, const string& finish) {
    return "<StartTime>2024-05-0" + start + "</StartTime><FinishTime>2024-05-0" + finish +
           "</FinishTime>";
  };
  const Rows<string, string> cases = {
      {clocks("4T23:50:00", "5T00:20:00"), "0:30:00,@85800 [1800]"},
      {clocks("4T10:00:00", "5T12:00:00"), "26:00:00,@36000 [93600]"},
      {clocks("4T10:00:00", "5T12:00:00") + "<Time>60</Time>", "0:01:00,@36000 [60]"},
      {clocks("4T10:00:00", "4T10:00:00") + "<Time>0</Time>", "DNS,@36000 []"},
      {clocks("5T10:00:00", "4T10:20:00"), "0:20:00,@36000 [1200]"}};
  for (const auto& [content, expected] : cases) {
    EXPECT_EQ(OneResult3(content), "A 0/0/0:; X," + expected + "\n");
  }
  const auto started = [](const string& name, const string& clock) {
    return Person3(
        name, "<Result><StartTime>2024-05-04T" + clock + "</StartTime><Time>60</Time></Result>");
  };
  const ReadResult read =
      ReadIof3(List3(Class3(started("X", "12:00:00+02:00") + started("Y", "12:01:00+02") +
                            started("Z", "23:02:00Z") + started("V", "12:03:00"))),
               {});
  EXPECT_EQ(Text(read),
            "A 0/0/0:; X,0:01:00,@43200 [60]; Y,0:01:00,@43260 [60]; "
            "Z,0:01:00,@3720 [60]; V,0:01:00,@43380 [60]\n");
  EXPECT_EQ(Subjects(read), "start and finish times;");
}

TEST(Iof3, ElementsOfOtherNamespacesAreSkipped) {
  const string list =
      "<ResultList xmlns='http://www.orienteering.org/datastandard/3.0' xmlns:x='urn:x' "
      "xmlns:i='https://www.orienteering.org/datastandard/3.0'><ClassResult><Class><Name>A</Name>"
      "</Class><PersonResult><Person><Name><i:Given>X</i:Given></Name></Person><Result><Time>60"
      "</Time><x:Time>9</x:Time><y:Status xmlns:y='urn:y'>no</y:Status><Status>OK</Status>"
      "</Result></PersonResult></ClassResult></ResultList>";
  const ReadResult read = ReadIof3(list, {});
  EXPECT_EQ(Text(read), "A 0/0/0:; X,0:01:00 [60]\n");
  EXPECT_EQ(Subjects(read), "");
}

TEST(Iof3, NamesAndCourses) {
  const string result = "<Result><Time>60</Time>";
  const string own = result + "<Course><Length>900</Length></Course></Result>";
  const string other = result + "<Course><Length>800</Length></Course></Result>";
  const string none =
      "<PersonResult>" + result + "<BibNumber>12</BibNumber></Result></PersonResult>";
  const Rows<string, string, string> cases = {
      {"<Class><ShortName>S</ShortName></Class>" + Person3("X", result + "</Result>"),
       "S 0/0/0:; X,0:01:00 [60]\n", ""},
      {"<Class><Id>7</Id></Class>" + Person3("X", result + "</Result>"),
       "7 0/0/0:; X,0:01:00 [60]\n", ""},
      {Person3("X", result + "</Result>"), "Class 1 0/0/0:; X,0:01:00 [60]\n", "class ;"},
      {"<Class><Name>A</Name></Class>" + none, "A 0/0/0:; 12,12,0:01:00 [60]\n", "names;"},
      {"<Class><Name>A</Name></Class><PersonResult>" + result + "</Result></PersonResult>" + none,
       "A 0/0/0:; 12,12,0:01:00 [60]\n", "names;results;"},
      // The course of the class, else the one that most runners have.
      {"<Class><Name>A</Name></Class>" + Person3("X", other) + Person3("Y", own) +
           Person3("Z", own),
       "A 900/0/0:; X,0:01:00 [60]; Y,0:01:00 [60]; Z,0:01:00 [60]\n", "courses;"},
      {"<Class><Name>A</Name><RaceClass><Course><Climb>9</Climb></Course></RaceClass></Class>" +
           Person3("X", own),
       "A 900/9/0:; X,0:01:00 [60]\n", ""}};
  for (const auto& [content, expected, subjects] : cases) {
    const ReadResult read = ReadIof3(List3("<ClassResult>" + content + "</ClassResult>"), {});
    EXPECT_EQ(Text(read), expected) << content;
    EXPECT_EQ(Subjects(read), subjects) << content;
  }
}

string Member3(const string& name, const string& result) {
  const string person =
      name.empty() ? "" : "<Person><Name><Given>" + name + "</Given></Name></Person>";
  return "<TeamMemberResult>" + person + "<Result>" + result + "</Result></TeamMemberResult>";
}

TEST(Iof3, EachLegOfARelayIsAClass) {
  const string start = "<StartTime>2024-05-05T10:00:00Z</StartTime>";
  const string leg2 = "<Leg>2</Leg><LegOrder>1</LegOrder><Time>20</Time>" + start +
                      "<Course><Length>850</Length></Course>";
  const string parallel = "<Leg>2</Leg><LegOrder>2</LegOrder><Time>21</Time>";
  const string list =
      "<ClassResult><TeamResult>" + Member3("B", leg2) + Member3("C", parallel) +
      Member3("E", "<Leg>3</Leg><Time>30</Time>") +
      Member3("A", "<Leg>1</Leg><Time>10</Time><BibNumber>1-1</BibNumber>") +
      "<BibNumber>1</BibNumber><Name>Red</Name><Organisation><Name>O</Name></Organisation>"
      "</TeamResult><TeamResult><Organisation><Name>Blue</Name></Organisation>" +
      Member3("D", "<Time>11</Time>") + Member3("", "<Status>DidNotStart</Status>") +
      "</TeamResult><Class><Name>R</Name><Leg><Course><Length>900</Length></Course></Leg><Leg/>"
      "</Class><Course><Length>800</Length></Course></ClassResult>";
  const ReadResult read = ReadIof3(List3(list), {});
  EXPECT_EQ(Text(read),
            "R-1 900/0/0:; A,Red,1-1,0:00:10 [10]; D,Blue,0:00:11 [11]\n"
            "R-2 850/0/0:; B,Red,1,0:00:20,@36000 [20]; C,Red,1,0:00:21 [21]\n"
            "R-3 800/0/0:; E,Red,1,0:00:30 [30]\n");
  EXPECT_EQ(Subjects(read), "teams;start and finish times;");
}

TEST(Iof3, RemarksOnTheWholeFile) {
  const auto subjects = [](const string& attribute, const string& result) {
    return Subjects(ReadIof3("<ResultList iofVersion='3.0' " + attribute + ">" +
                                 Class3(Person3("X", "<Result>" + result + "</Result>")) +
                                 "</ResultList>",
                             {}));
  };
  const string time = "<Time>60</Time>";
  EXPECT_EQ(subjects("status='Snapshot'", time), "");
  EXPECT_EQ(subjects("status='Delta'", time), "file;");
  EXPECT_EQ(subjects("", time + "<Status>Lost</Status>" + Split("31", "a1")), "time ;status ;");
  EXPECT_EQ(subjects("", time + "<SplitTime status='Additional'><ControlCode>9</ControlCode>"
                                "<Time>5</Time></SplitTime>"),
            "punches;");
}

TEST(Iof3, ADocumentThatStopsKeepsWhatWasRead) {
  const string list = List3(Class3(Person3("X", "<Result><Time>60</Time></Result>") + "\n" +
                                   Person3("Y", "<Result><Time>61</Time></Result>")));
  const string x = "A 0/0/0:; X,0:01:00 [60]\n";
  const std::size_t second = list.find("Y");
  EXPECT_EQ(Text(ReadIof3(list.substr(0, second), {})), x + "E4");
  EXPECT_EQ(Text(ReadIof3(list.substr(0, list.find("61")), {})), x + "E4");
  EXPECT_EQ(Text(ReadIof3(list.substr(0, list.find("X")), {})), "E3");
  string damaged = list;
  damaged.replace(damaged.find("</Result>", second), 9, "</Resulx>");
  EXPECT_EQ(Text(ReadIof3(damaged, {})), x + "E4");
}

TEST(Iof2, ElementsAndTheirVariants) {
  const string list =
      "<!DOCTYPE ResultList SYSTEM 'IOFdata.dtd'><ResultList status='complete'>"
      "<IOFVersion version='2.0.3'/><Event><Name>Cup</Name><StartDate><Date "
      "dateFormat='DD.MM.YYYY'>"
      "5.5.2024</Date></StartDate><WebURL>w</WebURL></Event><ClassResult><EventClass><Class "
      "sex='M'>"
      "<ClassId>1</ClassId><Name>Men</Name><ClassShortName>M</ClassShortName></Class></EventClass>"
      "<PersonResult><Result><SplitTime "
      "sequence='2'><Control><ControlCode>32</ControlCode></Control>"
      "<Time timeFormat='MMM:SS'>119:03</Time></SplitTime><SplitTime sequence='1'><ControlCode>31"
      "</ControlCode><Time>\n <Clock clockFormat='HH:MM:SS'>0:01:00</Clock>\n</Time></SplitTime>"
      "<CourseVariation><CourseVariationId>1</CourseVariationId><CourseLength unit='km'>4,4"
      "</CourseLength><CourseClimb unit='ft'>100</CourseClimb></CourseVariation>"
      "<CompetitorStatus value='OK'/><ResultPosition>1</ResultPosition><Time>2:00:00</Time>"
      "<StartTime><Clock>09:00:00</Clock><Date>2024-05-05</Date></StartTime><CCard><CCardId>5"
      "</CCardId><PunchingUnitType value='SI'/></CCard><BibNumber>B1</BibNumber><StartNumber>1"
      "</StartNumber></Result><Club><ClubId>9</ClubId><Name>Club</Name><ShortName>C</ShortName>"
      "<CountryId value='SWE'/></Club><Person sex='M'><PersonName><Family>Lee</Family><Given "
      "sequence='1'>Al</Given><Given sequence='2'>Bo</Given></PersonName><PersonId>77</PersonId>"
      "<Nationality><Country><CountryId value='NOR'/></Country></Nationality></Person>"
      "</PersonResult></ClassResult></ResultList>";
  const ReadResult read = ReadIof2(list, {});
  EXPECT_EQ(Text(read),
            "M 4400/30/2: 31 32; Al Bo Lee,Club,B1,5,M,NOR,77,1,2:00:00,@32400 [60 7083 57]\n");
  EXPECT_EQ(Subjects(read), "");
  EXPECT_EQ(read.format, "IOF XML 2.0.3");
  EXPECT_EQ(read.records.event_name, "Cup");
  EXPECT_EQ(read.records.official_site, "w");
  EXPECT_EQ(FormatDateTime(*read.records.event_date, "yyyy-mm-dd"), "2024-05-05");
}

TEST(Iof2, SplitsAndTimes) {
  const auto numbered = [](const string& sequence, const string& content) {
    return "<SplitTime sequence=\"" + sequence + "\">" + content + "</SplitTime>";
  };
  const string time = "<Time>3:20</Time>";
  const Rows<string, string> cases = {
      {time + Split("31", "1:00") + Split("32", "--:--:--") + Split("33", "2:30"),
       "A 0/0/3: 31 32 33; X,MP [60 + 90 50]\n"},
      {Split("31", "1:00") + Split("999", "3:20"), "A 0/0/1: 31; X,0:03:20 [60 140]\n"},
      // A finish without a code, as our own writer has it.
      {time + Split("31", "1:00") + numbered("2", "<Time>3:20</Time>"),
       "A 0/0/1: 31; X,0:03:20 [60 140]\n"},
      {Split("31", "1:00") + numbered("2", "<Time>3:20</Time>"),
       "A 0/0/1: 31; X,0:03:20 [60 140]\n"},
      {time + Split("31", "1:00") + numbered("2", "") + Split("33", "2:30"),
       "A 0/0/2: 31 33; X,0:03:20 [60 90 50]\n"},
      // Without codes, the numbers show a control that was missed. The total is the finish.
      {time + numbered("1", "<Time>1:00</Time>") + numbered("3", "<Time>2:30</Time>") +
           numbered("999", "<Time>3:20</Time>"),
       "A 0/0/3:; X,MP [60 + 90 50]\n"},
      {"<Time timeFormat=\"MM.SS\">3.20</Time>", "A 0/0/0:; X,0:03:20 [200]\n"},
      {"<Time timeFormat=\"HH:MM\">1:05</Time>", "A 0/0/0:; X,1:05:00 [3900]\n"},
      {"<Time>--:--:--</Time><CompetitorStatus value=\"MisPunch\"/>", "A 0/0/0:; X,MP []\n"},
      {"<CompetitorStatus value=\"SportWithdr\"/>", "A 0/0/0:; X,DNF []\n"},
      {time + "<CourseLength unit=\"m\">4400</CourseLength>", "A 4400/0/0:; X,0:03:20 [200]\n"},
      {time + "<CCardId>9</CCardId><StartNumber>4</StartNumber>",
       "A 0/0/0:; X,4,9,0:03:20 [200]\n"}};
  for (const auto& [content, expected] : cases) EXPECT_EQ(OneResult2(content), expected) << content;
}

TEST(Iof2, RacesAndTeams) {
  const auto race = [](const string& id, const string& time) {
    return "<RaceResult><Result><Time>" + time + "</Time></Result><EventRaceId>" + id +
           "</EventRaceId></RaceResult>";
  };
  const string total = "<Result><BibNumber>5</BibNumber><Time>9:00</Time></Result>";
  const string races =
      "<Event><EventRace><EventRaceId>410</EventRaceId></EventRace><EventRace>"
      "<EventRaceId>411</EventRaceId></EventRace></Event>";
  const string days =
      List2(races + Class2(Person2("X", total + race("411", "2:00") + race("410", "1:00")) +
                           Person2("Y", race("411", "3:00"))));
  EXPECT_EQ(Text(ReadIof2(days, {})), "A 0/0/0:; X,5,0:01:00 [60]\n");
  EXPECT_EQ(Text(ReadIof2(days, {2})), "A 0/0/0:; X,5,0:02:00 [120]; Y,0:03:00 [180]\n");
  EXPECT_EQ(ReadIof2(days, {3}).error.value().detail,
            RefusalText(Refusal::kNoSuchRace, "IOF XML 2.0.3"));
  const string team =
      "<TeamResult><TeamName>T</TeamName><StartNumber>3</StartNumber><TeamStatus value=\"OK\"/>" +
      Person2("B", "<Result><TeamSequence>2</TeamSequence><Time>2:00</Time></Result>") +
      Person2("A", "<Result><TeamSequence>1</TeamSequence><Time>1:00</Time></Result>") +
      "</TeamResult>";
  EXPECT_EQ(Text(ReadIof2(List2(Class2(team)), {})),
            "A-1 0/0/0:; A,T,3,0:01:00 [60]\nA-2 0/0/0:; B,T,3,0:02:00 [120]\n");
  const string country =
      "<ClassResult><ClassId>7</ClassId><PersonResult><CountryId value=\"SWE\"/>"
      "<Person><PersonName><Family>X</Family></PersonName></Person><Result>"
      "<Time>1:00</Time></Result></PersonResult></ClassResult>";
  EXPECT_EQ(Text(ReadIof2(List2(country), {})), "7 0/0/0:; X,SWE,SWE,0:01:00 [60]\n");
}

TEST(IofXml, DocumentsAreRecognizedAndRefusedByName) {
  RestartIn(Mode::kEnglishTexts);
  const string space = "xmlns='http://www.orienteering.org/datastandard/3.0'";
  const string version = "<IOFVersion version='2.0.3'/>";
  using R = Refusal;
  const Rows<string, R, string> cases = {
      {"<StartList " + space + "/>", R::kStartList, "IOF XML 3.0"},
      {"<x:EntryList xmlns:x='http://www.orienteering.org/datastandard/3.0'/>", R::kEntryList,
       "IOF XML 3.0"},
      {"<CourseData iofVersion='3.0'/>", R::kCourseData, "IOF XML 3.0"},
      {"<CompetitorList " + space + "/>", R::kCompetitorList, "IOF XML 3.0"},
      {"<OrganisationList " + space + "/>", R::kClubList, "IOF XML 3.0"},
      {"<EventList " + space + "/>", R::kEventList, "IOF XML 3.0"},
      {"<ControlCardList " + space + "/>", R::kControlCards, "IOF XML 3.0"},
      {"<ServiceRequestList " + space + "/>", R::kServiceRequests, "IOF XML 3.0"},
      {"<ResultList " + space + "/>", R::kNoResults, "IOF XML 3.0"},
      {List3(Class3("")), R::kNoResults, "IOF XML 3.0"},
      {List3("<Event><Form>Score</Form></Event>" + Class3(Person3("X", ""))), R::kScoreResults,
       "IOF XML 3.0"},
      {List3(Class3(Person3("X", "<Result><Score type='Score'>9</Score></Result>"))),
       R::kScoreResults, "IOF XML 3.0"},
      {"<StartList>" + version + "</StartList>", R::kStartList, "IOF XML 2.0.3"},
      {"<!DOCTYPE CourseData SYSTEM 'IOFdata.dtd'><CourseData/>", R::kCourseData, "IOF XML 2.0.3"},
      {"<ClubList>" + version + "</ClubList>", R::kClubList, "IOF XML 2.0.3"},
      {"<ResultList><IOFVersion version='1.0'/></ResultList>", R::kOldIofVersion, "IOF XML 1.0"},
      {"<ResultList/>", R::kNoResults, "IOF XML 2.0.3"}};
  for (const auto& [text, refusal, format] : cases) {
    const bool is_3 = LooksLikeIof3(text);
    EXPECT_NE(LooksLikeIof2(text), is_3) << text;
    const ReadResult read = (is_3 ? ReadIof3 : ReadIof2)(text, {});
    EXPECT_EQ(read.error.value_or(ReadError{}).detail, RefusalText(refusal, format)) << text;
    EXPECT_EQ(read.format, format);
  }
  // A list that does not say its version shows it by its classes; only the beginning is looked at.
  EXPECT_TRUE(LooksLikeIof3("<ResultList>" + Class3("<PersonResult><Per")));
  EXPECT_TRUE(LooksLikeIof2("<ResultList>" + Class2("<PersonResult/>山").substr(0, 70)));
  for (const char* other : {"", "<keltrun/>", "<html><body>", "<EventList/>", "<ResultListList/>",
                            "ResultList", "<ResultList", "<!-- <ResultList/> -->"}) {
    EXPECT_FALSE(LooksLikeIof3(other) || LooksLikeIof2(other)) << other;
  }
}

}  // namespace
}  // namespace keltrun::test
