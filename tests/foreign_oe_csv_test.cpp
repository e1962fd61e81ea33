// Lists of OE2003, OE2010 and programs with their interface: columns, rows, and what is refused.
#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "keltrun2/io/foreign/oe_csv_reader.h"
#include "keltrun2/io/foreign/os_csv_reader.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using std::string;
using Cells = std::map<std::size_t, string>;

// A line with a cell in each of the columns and texts in some of them.
string Line(std::size_t columns, const Cells& cells, char separator = ';') {
  string line;
  for (std::size_t i = 0; i < columns; ++i) {
    if (i > 0) line += separator;
    if (const auto cell = cells.find(i); cell != cells.end()) line += cell->second;
  }
  return line;
}

const string kHead46 =
    "Stno;SI card;Database Id;Surname;First name;YB;S;Block;nc;Start;Finish;Time;Classifier;Club "
    "no.;Cl.name;City;Nat;Cl. no.;Short;Long;Num1;Num2;Num3;Text1;Text2;Text3;Adr. "
    "name;Street;Line2;Zip;City;Phone;Fax;EMail;Id/Club;Rented;Start fee;Paid;Course "
    "no.;Course;km;m;Course controls;Pl;Start punch;Finish punch;Control1;Punch1";

// The columns of OE2003 for a runner of a course with the controls 31 and 32.
Cells Ann() {
  return {{0, "7"},    {1, "500123"},    {2, "J1"},       {3, "Berg"},   {4, "Ann"},
          {6, "F"},    {8, "0"},         {9, "10:00:00"}, {11, "10:00"}, {12, "0"},
          {14, "FC"},  {15, "Fox Club"}, {16, "SUI"},     {18, "D21"},   {19, "Women"},
          {40, "4,4"}, {41, "85"},       {42, "2"},       {43, "1"}};
}

Cells With(Cells cells, const Cells& changes) {
  for (const auto& [column, text] : changes) cells[column] = text;
  return cells;
}

string AnnsLine(const Cells& changes = {}, const string& controls = ";31;2:00;32;5:00") {
  return Line(46, With(Ann(), changes)) + controls + "\n";
}

// The laps in seconds; "-" for a control that was missed.
string Laps(clsLapData& runner) {
  std::ostringstream out;
  for (std::int32_t leg = 1; leg <= runner.LegCount(); ++leg) {
    const auto milliseconds = std::llround(runner.Lap(leg) * 86'400'000);
    out << (leg > 1 ? " " : "");
    if (runner.Lap(leg) == kTimeSkip) {
      out << '-';
    } else {
      out << static_cast<double>(milliseconds) / 1000;
    }
  }
  return out.str();
}

// Each class with its codes and runners, and then the error or the remarks with their lines.
string Told(const ReadResult& read) {
  std::ostringstream out;
  for (const ClassRecords& klass : read.records.classes) {
    out << klass.name << '[';
    for (const auto code : klass.codes) out << (code == klass.codes.front() ? "" : " ") << code;
    out << ']';
    for (const auto& runner : klass.runners) {
      out << ' ' << runner->RunnerName << '/' << runner->ClubName << '/' << runner->Bib << '/'
          << RunnerStatusName(runner->Status) << '/' << runner->Result() << '/' << Laps(*runner);
    }
    out << '\n';
  }
  for (const LoadRemark& remark : read.remarks) {
    out << remark.Line << ' ' << remark.Text.substr(0, remark.Text.find(':')) << '\n';
  }
  if (read.error) out << "error in line " << read.error->line << '\n';
  return out.str();
}

string Told(const string& text, std::int32_t race = 0) { return Told(ReadOeCsv(text, {race})); }

constexpr const char* kAnn = "D21[31 32] Ann Berg/Fox Club/7/OK/0:10:00/120 180 300\n";

// Without the column of the start block, no position is that of a known form: titles must do.
string WithoutBlock(const string& line) {
  constexpr int kBlock = 7;
  std::size_t at = 0;
  for (int i = 0; i < kBlock; ++i) at = line.find(';', at) + 1;
  return line.substr(0, at) + line.substr(line.find(';', at) + 1);
}

TEST(OeCsv, TitlesOfManyLanguages) {
  const Rows<string, string> heads = {
      {"German",
       "Stnr;Chip;Datenbank Id;Nachname;Vorname;Jg;G;Block;AK;Start;Ziel;Zeit;Wertung;Club-Nr.;Abk;"
       "Ort;Nat;Katnr;Kurz;Lang;;;;;;;Adr. Name;Straße;;;Ort;;;;;;;;Bahnnummer;Bahn;km;Hm;"
       "Bahn Posten;Pl;Startstempel;Zielstempel;Posten1;Stempel1;(und weitere)..."},
      {"French",
       "N° dép.;Puce;Ident. base de données;Nom;Prénom;Né;S;Plage;nc;Départ;Arrivée;Temps;"
       "Evaluation;N° club;Nom;Ville;Nat;N° cat.;Court;Long;;;;;;;Adr. nom;Rue;;;Ville;;;;;;;;"
       "Circuit N°;Circuit;km;m;Postes du circuit;Pl;Poinçon de départ;Arrivée "
       "(P);Poste1;Poinçon1"},
      {"Swedish",
       "Startnr;Bricka;Databas nr.;Efternamn;Förnamn;År;K;Block;ut;Start;Mål;Tid;Status;Klubb nr.;"
       "Namn;Ort;Land;Klass nr.;Kort;Lång;;;;;;;Adr. namn;Gata;;;Ort;;;;;;;;Bana nr.;Bana;km;Hm;"
       "Bana kontroller;Pl;Startstämpling;Målstämpling;Kontroll1;Stämplar1;(kan fortsätta).."},
      {"Danish",
       "Stnr;Brik;Database ID;Efternavn;Fornavn;År;K;Blok;UFK;Start;Mål;Tid;Status;Klub nr.;Navn;"
       "Klub;Land;Klasse nr.;kort;Lang;;;;;;;Adr. navn;Gade;;;Klub;;;;;;;;Bane nr.;Bane;km;Hm;"
       "Poster på bane;Pl;Start-stempling;Mål-stempling;Post1;Klip1;(måske mere)..."},
      {"Czech",
       "StČí;Číslo čipu;Id databáze;Příjmení;Jméno (křest.);RN;S;Blok;ms;Start;Cíl;Čas;Klasifikace;"
       "Č. oddílu;Název oddílu;Město;Stát;Kat. "
       "č.;Krátký;Dlouhý;;;;;;;Příjmení;Ulice;;;Město;;;;;;;;"
       "Číslo tratě;Trať;km;m;Kontroly tratě;Pl;Startovní ražení;Cílové ražení;Kontrola1;Ražení1"},
      {"Norwegian",
       "Startnr;Brikkenr;Database nr.;Etternavn;Fornavn;År;K;Blokk;uk;Start;Mål;Tid;Status;Klubbnr;"
       "Navn;Sted;Land;Klassenr;Kort;Lang;;;;;;;Adr. navn;Gate;;;Sted;;;;;;;;Løype nr;Løype;km;Hm;"
       "Løypens poster;Pl;Startstempling;Målstempling;Post1;Stempling1"},
      {"Finnish",
       "Nro;Kortti;Tietokanta Id;Sukunimi;Etunimi;Svu;S;Lohko;ek;Lähtö;Maali;Aika;Tila;Seuranro;"
       "Nimi;Seura;Maa;Sarjanro;Lyhyt;Pitkä;;;;;;;Os. nimi;Katu;;;Paikkakunta;;;;;;;;Ratanro;Rata;"
       "km;m;Rastit;Sija;Lähtöleimaus;Maalileimaus;Rasti1;Leimaus1"},
  };
  const string row = WithoutBlock(AnnsLine({{44, "10:00:00"}, {45, "10:10:00"}}));
  for (const auto& [language, head] : heads) {
    SCOPED_TRACE(language);
    const ReadResult read = ReadOeCsv(WithoutBlock(head) + "\n" + row, {});
    EXPECT_EQ(Told(read), kAnn);
    ASSERT_EQ(read.records.classes.size(), 1U);
    EXPECT_EQ(read.records.classes[0].length, 4400);
    EXPECT_EQ(read.records.classes[0].climb, 85);
    const clsLapData& ann = *read.records.classes[0].runners[0];
    EXPECT_EQ(ann.ControlCard + ann.CompetitorId + ann.Sex + ann.Nationality + ann.Rank,
              "500123J1FSUI1");
  }
}

TEST(OeCsv, ColumnsByPosition) {
  string strange = "a";
  for (int i = 1; i < 46; ++i) strange += ";a" + string(static_cast<std::size_t>(i % 7), 'x');
  const Cells ann60 = {{1, "7"},         {5, "Berg"}, {6, "Ann"},  {13, "10:00"}, {14, "0"},
                       {20, "Fox Club"}, {25, "D21"}, {54, "4,4"}, {56, "2"}};
  const Cells ann44 = {{0, "7"},         {3, "Ann Berg"}, {9, "10:00"}, {10, "0"},
                       {13, "Fox Club"}, {16, "D21"},     {40, "2"}};
  const Rows<string, string> cases = {
      {"titles that nobody knows", strange + "\n" + AnnsLine()},
      {"no head", AnnsLine()},
      {"few titles", "Stno;;;Surname\n" + AnnsLine()},
      {"unknown titles after a tag",
       "OE0014" + strange + string(14, ';') + "\n" + Line(60, ann60) + ";31;2:00;32;5:00\n"},
      {"no head of the later program", Line(60, ann60) + ";31;2:00;32;5:00\n"},
      {"44 columns", "Stno;SI card;Database Id;Name\n" + Line(44, ann44) + ";31;2:00;32;5:00\n"},
      {"two more columns than the head has", kHead46 + "\n" +
                                                 Line(48, {{0, "7"},
                                                           {3, "Berg"},
                                                           {4, "Ann"},
                                                           {11, "10:00"},
                                                           {12, "0"},
                                                           {15, "Fox Club"},
                                                           {18, "D21"},
                                                           {44, "2"},
                                                           {46, "10:00:00"},
                                                           {47, "10:10:00"}}) +
                                                 ";31;2:00;32;5:00\n"},
      {"no titles of controls", kHead46.substr(0, kHead46.find(";Control1")) + "\n" + AnnsLine()},
  };
  for (const auto& [name, text] : cases) {
    SCOPED_TRACE(name);
    EXPECT_TRUE(LooksLikeOeCsv(text));
    EXPECT_EQ(Told(text), kAnn);
  }
}

TEST(OeCsv, LinesAboveTheHead) {
  const std::vector<string> all = {"\n\n", ";;;;\n\n", "sep=;\n", "Cup; 2026\n\nsep=;\n"};
  for (const string& above : all) {
    const string text = above + kHead46 + "\n" + AnnsLine();
    EXPECT_TRUE(LooksLikeOeCsv(text)) << above;
    const bool has_text = above.find_first_not_of(";\n") != string::npos;
    EXPECT_EQ(Told(text), kAnn + string(has_text ? "1 lines before the header\n" : "")) << above;
  }
}

TEST(OeCsv, Separators) {
  for (const char separator : {';', ',', '\t', '\\'}) {
    string text = kHead46 + "\n" + AnnsLine({{40, "4.4"}});
    for (char& c : text) c = c == ';' ? separator : c;
    EXPECT_EQ(Told(text), kAnn) << separator;
  }
}

TEST(OeCsv, Rows) {
  const string ann = AnnsLine();
  const Rows<string, string, string> cases = {
      {"quotes", AnnsLine({{3, "\"Berg; the \"\"B\"\"\""}, {15, "\"Team \"Fox\"\""}}),
       "D21[31 32] Ann Berg; the \"B\"/Team \"Fox\"/7/OK/0:10:00/120 180 300\n"},
      {"a line break in quotes", AnnsLine({{23, "\"two\nlines\""}}) + AnnsLine({{4, "Bo"}}),
       "D21[31 32] Ann Berg/Fox Club/7/OK/0:10:00/120 180 300 Bo Berg/Fox Club/7/OK/0:10:00/120 "
       "180 300\n2 cell \"two lines\"\n"},
      {"blanks of other kinds", AnnsLine({{3, "\u00A0Berg\t"}, {4, "\"Ann \u00A0\""}}), kAnn},
      {"a name of blanks", AnnsLine({{3, "\t\u00A0"}, {4, ""}}),
       "D21[31 32] 7/Fox Club/7/OK/0:10:00/120 180 300\n2 names\n"},
      {"the short name of a club", AnnsLine({{15, ""}}),
       "D21[31 32] Ann Berg/FC/7/OK/0:10:00/120 180 300\n"},
      {"the long name of a class", AnnsLine({{18, ""}}),
       "Women[31 32] Ann Berg/Fox Club/7/OK/0:10:00/120 180 300\n"},
      {"a missed control and a punch after the last one",
       AnnsLine({{12, "3"}}, ";31;-----;32;5:00;99;9:00;;"),
       "D21[31 32] Ann Berg/Fox Club/7/MissingPunch/MP/- 300 300\n2 additional punches\n"},
      {"another mark of a missed control", AnnsLine({{12, ""}}, ";31;##;32;5:00"),
       "D21[31 32] Ann Berg/Fox Club/7/MissingPunch/MP/- 300 300\n0 status\n"},
      {"a time that cannot be read", AnnsLine({}, ";31;2:99;32;5:00"),
       "D21[31 32] Ann Berg/Fox Club/7/OK/0:10:00/- 300 300\n2 times that cannot be read\n"},
      {"minutes over 59, hours, decimals", AnnsLine({{11, "1:45:00,5"}}, ";31;61:01.3;32;1:40:00"),
       "D21[31 32] Ann Berg/Fox Club/7/OK/1:45:00.5/3661.3 2338.7 300.5\n"},
      {"points for colons", AnnsLine({{9, "10.00.00"}, {11, "1.10.00"}}, ";31;2.00;32;65.00"),
       "D21[31 32] Ann Berg/Fox Club/7/OK/1:10:00/120 3780 300\n"},
      {"the start and the finish among the controls",
       AnnsLine({}, ";S1;0:00;31;2:00;32;5:00;F1;10:00"), kAnn},
      {"a control that was punched twice", AnnsLine({}, ";31;2:00;31;2:10;32;5:00"),
       string(kAnn) + "2 additional punches\n"},
      {"no total time", AnnsLine({{11, ""}, {45, "10:10:00"}}), kAnn},
      {"outside the competition", AnnsLine({{8, "X"}}),
       "D21[31 32] Ann Berg/Fox Club/7/NotCompeting/0:10:00/120 180 300\n"},
      {"outside the competition and disqualified", AnnsLine({{8, "1"}, {12, "4"}}),
       "D21[31 32] Ann Berg/Fox Club/7/Disqualified/DISQ/120 180 300\n"},
      {"statuses",
       AnnsLine({{11, ""}, {12, "2"}}, ";31;2:00") + AnnsLine({{12, "5"}}) +
           AnnsLine({{12, "1"}, {11, "-----"}}, ""),
       "D21[31 32] Ann Berg/Fox Club/7/DidNotFinish/DNF/120 Ann Berg/Fox "
       "Club/7/OverTime/OCL/120 180 300 Ann Berg/Fox Club/7/DidNotStart/DNS/\n"},
      {"not at the finish yet", ann + AnnsLine({{4, "Bo"}, {11, ""}, {12, "0"}}, ";31;2:00"),
       "D21[31 32] Ann Berg/Fox Club/7/OK/0:10:00/120 180 300 Bo Berg/Fox "
       "Club/7/DidNotFinish/DNF/120\n0 status\n"},
      {"a time in spite of not having started", AnnsLine({{12, "1"}}),
       "D21[31 32] Ann Berg/Fox Club/7/NotCompeting/0:10:00/120 180 300\n2 runners who did not "
       "start\n"},
      {"an unknown classifier", AnnsLine({{12, "8"}}),
       string(kAnn) + "2 unknown classifiers\n0 status\n"},
      {"words for the status",
       AnnsLine({{11, "dnf"}, {12, ""}}, ";31;2:00") + AnnsLine({{12, "DISQ"}}),
       "D21[31 32] Ann Berg/Fox Club/7/DidNotFinish/DNF/120 Ann Berg/Fox "
       "Club/7/Disqualified/DISQ/120 180 300\n"},
      {"a split of 0, and one at the first control",
       AnnsLine({{12, "3"}}, ";31;2:00;32;0:00") + AnnsLine({{4, "Bo"}}, ";31;0:00;32;5:00"),
       "D21[31 32] Ann Berg/Fox Club/7/MissingPunch/MP/120 - 480 Bo Berg/Fox "
       "Club/7/OK/0:10:00/0.001 300 300\n0 class \"D21\"\n"},
      {"no name", AnnsLine({{3, ""}, {4, ""}}),
       "D21[31 32] 7/Fox Club/7/OK/0:10:00/120 180 300\n2 names\n"},
      {"a place that nobody has taken", ann + Line(46, {{0, "8"}, {12, "0"}, {18, "D21"}}) + "\n",
       string(kAnn) + "3 start places\n"},
      {"a separator in a name", AnnsLine({{3, "Berg;B"}}) + ann, string(kAnn) + "2 cell\n"},
      {"a line that is cut", "7;;;Berg\n" + ann, string(kAnn) + "2 line\n"},
      {"the head again", ann + kHead46 + "\n\n;;;\n" + AnnsLine({{18, "H21"}}),
       string(kAnn) + "H21[31 32] Ann Berg/Fox Club/7/OK/0:10:00/120 180 300\n"},
  };
  for (const auto& [name, rows, told] : cases) {
    SCOPED_TRACE(name);
    EXPECT_EQ(Told(kHead46 + "\n" + rows), told);
  }
}

TEST(OeCsv, LengthsAndStarts) {
  const Rows<Cells, std::int32_t, double> cases = {
      {{}, 4400, 36000},
      {{{40, "4.350"}}, 4350, 36000},
      {{{40, "5470"}}, 5470, 36000},               // meters
      {{{9, ""}, {44, "10:00:05"}}, 4400, 36005},  // the start punch
      {{{9, "10:00"}}, 4400, 36000},               // a time of day
      {{{9, "31:00"}}, 4400, 31 * 60},             // since the first start
      {{{9, "04.06.2022 10:00:00"}}, 4400, 36000},
  };
  for (const auto& [changes, length, start] : cases) {
    const ReadResult read = ReadOeCsv(kHead46 + "\n" + AnnsLine(changes), {});
    ASSERT_EQ(read.records.classes.size(), 1U);
    EXPECT_EQ(read.records.classes[0].length, length);
    const auto& runner = read.records.classes[0].runners[0];
    EXPECT_NEAR(runner->StartTime()->Value() * 86400, start, 1e-6);
  }
  // One start of 31 minutes says that all are minutes.
  const ReadResult read =
      ReadOeCsv(kHead46 + "\n" + AnnsLine({{9, "2:00"}}) + AnnsLine({{9, "31:00"}}), {});
  EXPECT_NEAR(read.records.classes[0].runners[0]->StartTime()->Value() * 86400, 120, 1e-6);
}

// The titles of results without controls are looked up as well, and unknown ones are told from
// those around them.
TEST(OeCsv, ResultsWithoutSplitTimes) {
  EXPECT_EQ(
      Told("OE0012;Startnr;XStartnr;Xyzzy;Xyzzy;Efternamn;Förnamn;År;K;Block;ut;Start;Mål;Tid;"
           "Xyzzy;;;;;;Xyzzy;;;;;Kort;Lång\n" +
           Line(27, {{1, "7"},
                     {3, "500"},
                     {5, "Berg"},
                     {6, "Ann"},
                     {13, "10:00"},
                     {14, "4"},
                     {20, "Fox"},
                     {25, "D21"}}) +
           "\n"),
      "D21[] Ann Berg/Fox/7/Disqualified/DISQ/600\n0 split times\n");
}

const string kTwoRaces =
    "OE0002;Stno;XStno;Chipno1;Chipno2;Database Id;Surname;First "
    "name;YB;S;nc1;Start1;Finish1;Time1;Classifier1;nc2;Start2;Finish2;Time2;Classifier2;Club "
    "no.;Cl.name;City;Nat;Short;Long\n"
    ";7;;500;501;;Berg;Ann;;F;0;10:00:00;;;1;0;11:00:00;;12:34;0;;;Fox;;D21;\n";

TEST(OeCsv, SeveralRaces) {
  EXPECT_EQ(Told(kTwoRaces), "D21[] Ann Berg/Fox/7/OK/0:12:34/754\n0 races\n0 split times\n");
  EXPECT_EQ(Told(kTwoRaces, 1), "D21[] Ann Berg/Fox/7/DidNotStart/DNS/\n0 races\n0 split times\n");
  const ReadResult read = ReadOeCsv(kTwoRaces, {2});
  ASSERT_EQ(read.records.classes.size(), 1U);
  EXPECT_EQ(read.records.classes[0].runners[0]->ControlCard, "501");
  EXPECT_TRUE(ReadOeCsv(kTwoRaces, {3}).error);
  EXPECT_TRUE(ReadOeCsv(kHead46 + "\n" + AnnsLine(), {2}).error);
}

TEST(OeCsv, Refused) {
  RestartIn(Mode::kEnglishTexts);
  const string entries =
      "OE0001;Stno;XStno;Chipno;Database Id;Surname;First name;YB;S;Block;nc;Start;Finish;Time;"
      "Classifier\n;1;;500;;Berg;Ann;;F;;0;";
  const Rows<string, string> cases = {
      {entries + "10:00:00;;;0\n", "start list (OE2010 CSV (OE0001))"},
      {entries + ";;;0\n", "list of entries"},
      {"OE0001;Stno;Chipno;Surname;First name;nc;Start\n;1;500;Berg;Ann;0;10:00\n", "start list"},
      {"OE0004;Database Id;Chipno;Surname;First name;YB;S\n;1;500;Berg;Ann;;F\n", "competitors"},
      {"OE0007;Club no.;Cl.name;City;Nat\n;1;FC;Fox;SUI\n", "list of clubs"},
      {"OE0009;Course no.;Course;km;m;Course controls\n;1;A;4,4;85;2\n", "courses"},
      {"OESco0016;Stno;Surname;First name;Time\n;1;Berg;Ann;59:00\n", "score results"},
      {"OE0001_V12;Stno;Surname;First name;Start\n;1;Berg;Ann;10:00\n", "OE12 CSV (OE0001_V12)"},
      {"RaceNumber,CardNumbers,MembershipNumbers,Name,Club,Score\n1,2,,Ann,,30\n", "score results"},
      {kHead46 + "\n", "no results"},
  };
  for (const auto& [text, told] : cases) {
    SCOPED_TRACE(text);
    EXPECT_TRUE(LooksLikeOeCsv(text));
    const ReadResult read = ReadOeCsv(text, {});
    ASSERT_TRUE(read.error);
    EXPECT_NE(read.error->detail.find(told), string::npos) << read.error->detail;
    EXPECT_TRUE(read.records.classes.empty());
  }
}

TEST(OeCsv, OtherLists) {
  const std::vector<string> texts = {
      "",
      "クラス,氏名,所属,記録,順位,ゼッケン,性別,スタート,1,2,F\nA,Ann,Fox,10:00,1,7,F,10:00,2:00,5:"
      "00,10:00\n",
      "Class,Name,Club,Start,Time,Rank,StNo,Sex,Age,1,2,F\nA,Ann,Fox,10:00,10:00,1,7,F,,2:00,3:"
      "00\n",
      "Place;StNo;Card;Name;Club;Class;Start;Time;Status;31;45;F\n1;7;500;Ann;Fox;A;10:00:00;10:00;"
      "OK;2:00;5:00;10:00\n",
      "A,2\nAnn,Berg,Fox,10:00,2:00,3:00,5:00\n",
      "RaceNumber,CardNumbers,MembershipNumbers,Name,AgeClass,Club,Country,CourseClass,StartTime,"
      "FinishTime,RaceTime,NonCompetitive,Position,Status,NumSplits,ControlCode1,Split1,Points1\n"
      "1,2,,Ann,,Fox,,A,,,0:10:00,,1,,1,31,2:00,\n",
      "Kategorie;Laenge;HM;PoAnz;Rang;Name;Jahrgang;Ort;Verein;Zeit;PostenNr1;Zeit1\n",
  };
  for (const string& text : texts) {
    EXPECT_FALSE(LooksLikeOeCsv(text)) << text;
    EXPECT_FALSE(LooksLikeOsCsv(text)) << text;
  }
}

}  // namespace
}  // namespace keltrun::test
