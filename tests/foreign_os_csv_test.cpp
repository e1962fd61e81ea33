// Relay lists of OS2003 and OS2010: legs as classes, and where their punch times count from.
#include <gtest/gtest.h>

#include "keltrun2/io/foreign/oe_csv_reader.h"
#include "keltrun2/io/foreign/os_csv_reader.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using std::string;

const string kHead =
    "OS0016;Stno;Entry Id;Xtra;Leg;Xtrano;Surname;First name;YB;S;Start;Finish;Time;Classifier;"
    "Chipno;Rented;Database Id;Club no.;Team;Cl. no.;Short;Credit -;Penalty +;Comment;Course no.;"
    "Course;km;m;Course controls;Combination;Overall time;Place;No1;Control1;Punch1;Pl1\n";

// A runner of team 1; `times` are start, finish, time and classifier.
string Leg(const string& leg, const string& times, const string& overall, const string& punches) {
  return ";1;;0;" + leg + ";1;Berg;Ann;;F;" + times + ";500;0;;;Fox 1;1;Mix;;;;1;C;4,4;85;2;AA;" +
         overall + ";1;" + punches + "\n";
}

string Told(const ReadResult& read) {
  std::ostringstream out;
  for (const ClassRecords& klass : read.records.classes) {
    out << klass.name;
    for (const auto& runner : klass.runners) {
      out << ' ' << runner->RunnerName << '/' << runner->ClubName << '/' << runner->Bib << '/'
          << runner->Result();
      for (const long lap : LapsOf(*runner)) out << ' ' << lap;
    }
    out << '\n';
  }
  for (const LoadRemark& remark : read.remarks) {
    out << remark.Text.substr(0, remark.Text.find(':')) << '\n';
  }
  if (read.error) out << "error\n";
  return out.str();
}

TEST(OsCsv, Legs) {
  const string first = Leg("1", "10:00:00;10:10:00;10:00;0", "10:00", "1;31;2:00;1;2;32;5:00;1");
  const string told_first = "Mix-1 Ann Berg/Fox 1/1/0:10:00 120 180 300\n";
  const string told_second = "Mix-2 Ann Berg/Fox 1/1/0:08:00 60 120 300\n";
  const Rows<string, string, string> cases = {
      {"from the start of the team",
       Leg("2", "10:10:00;10:18:00;8:00;0", "18:00", "1;31;11:00;1;2;32;13:00;1"),
       told_first + told_second + "teams\n"},
      {"from the start of the leg",
       Leg("2", "10:10:00;10:18:00;8:00;0", "18:00", "1;31;1:00;1;2;32;3:00;1"),
       told_first + told_second + "teams\n"},
      {"without a start time", Leg("2", ";;8:00;0", "18:00", "1;31;11:00;1;2;32;13:00;1"),
       told_first + told_second + "teams\n"},
      {"a control without a punch", Leg("2", "10:10:00;10:18:00;8:00;3", "", "1;31;;;2;32;13:00;1"),
       told_first + "Mix-2 Ann Berg/Fox 1/1/MP -1 180 300\nteams\n"},
      {"did not start", Leg("2", ";;;1", "", "1;31;;;2;32;;"),
       told_first + "Mix-2 Ann Berg/Fox 1/1/DNS\nteams\n"},
      {"neither start nor overall time",
       Leg("2", "10:10:00;10:18:00;8:00;0", "18:00", "1;31;11:00;1;2;32;13:00;1") +
           Leg("3", ";;8:00;0", "", "1;31;19:00;1;2;32;21:00;1"),
       told_first + told_second +
           "Mix-3 Ann Berg/Fox 1/1/0:08:00 -1 -1 480\nlegs without a start time\nteams\n"},
  };
  for (const auto& [name, leg, told] : cases) {
    SCOPED_TRACE(name);
    const string text = kHead + first + leg;
    EXPECT_TRUE(LooksLikeOsCsv(text));
    EXPECT_FALSE(LooksLikeOeCsv(text));
    EXPECT_EQ(Told(ReadOsCsv(text, {})), told);
  }
}

TEST(OsCsv, WithoutHead) {
  const string text = Leg("1", "10:00:00;10:10:00;10:00;0", "10:00", "1;31;2:00;1;2;32;5:00;1");
  EXPECT_TRUE(LooksLikeOsCsv(text));
  EXPECT_EQ(Told(ReadOsCsv(text, {})), "Mix-1 Ann Berg/Fox 1/1/0:10:00 120 180 300\nteams\n");
}

TEST(OsCsv, FormOf2003) {
  const string text =
      "Stno;Leg;Database Id;Surname;First name;YB;S;Club no.;Club;Cl. no.;Short;Course no.;Course;"
      "Combination;km;m;Course controls;Start;Finish;Time;Classifier;Pl;Chip;Start punch;Finish "
      "punch;Control1;Punch1;(may be more) ...\n"
      "1;1;;Berg;Ann;;F;3;Fox 1;1;Mix;1;C;AA;4,4;85;2;10:00:00;10:10:00;10:00;0;1;500;;;31;2:00;32;"
      "5:00\n";
  EXPECT_TRUE(LooksLikeOsCsv(text));
  const ReadResult read = ReadOsCsv(text, {});
  EXPECT_EQ(read.format, "OS2003 CSV");
  EXPECT_EQ(Told(read), "Mix-1 Ann Berg/Fox 1/1/0:10:00 120 180 300\nteams\n");
  EXPECT_EQ(read.records.classes[0].length, 4400);
}

TEST(OsCsv, Refused) {
  const std::vector<string> texts = {
      kHead + Leg("1", "10:00:00;;;0", "", ""),
      kHead,
      "OS0012;Stno;Team;Cl. no.;Short;Start;Time;Classifier\n;1;Fox 1;1;Mix;10:00:00;18:00;0\n",
  };
  for (const string& text : texts) {
    EXPECT_TRUE(LooksLikeOsCsv(text));
    EXPECT_EQ(Told(ReadOsCsv(text, {})), "error\n") << text;
  }
}

}  // namespace
}  // namespace keltrun::test
