#include "keltrun2/io/foreign/iof2_reader.h"

#include <algorithm>
#include <array>
#include <utility>

#include "keltrun2/codec/encodings.h"
#include "keltrun2/io/foreign/iof_xml.h"
#include "keltrun2/text/letters.h"

namespace keltrun {
namespace {

// --- the event ---

// The date of an element with the children Date and Clock.
std::optional<DateTime> DateOf(IofReading& reading) {
  return ReadMoment(reading.xml.WholeText()).date;
}

struct Race {
  std::string id;
  std::optional<DateTime> date;
};

constexpr std::array<IofRule<Race>, 2> kRaceRules = {{
    {"EventRaceId", [](IofReading& r, Race& race) { race.id = r.xml.Text(); }},
    {"RaceDate", [](IofReading& r, Race& race) { race.date = DateOf(r); }},
}};

void ReadRace(IofReading& reading, IofEvent& event) {
  Race race;
  ReadChildren(reading, race, kRaceRules);
  const std::int32_t number = reading.races.NumberOf(race.id);
  if (race.date) event.races.emplace(number, *race.date);
}

constexpr std::array<IofRule<IofEvent>, 5> kEventRules = {{
    {"Name",
     [](IofReading& r, IofEvent&) {
       const std::string_view name = r.xml.Text();
       if (!name.empty()) r.event.Header().event_name = name;
     }},
    {"StartDate", [](IofReading& r, IofEvent& event) { event.start = DateOf(r); }},
    {"FinishDate", [](IofReading& r, IofEvent& event) { event.end = DateOf(r); }},
    {"EventRace", ReadRace},
    {"WebURL", [](IofReading& r, IofEvent& event) { event.SetSite(r.xml.Text(), true); }},
}};

void ReadEvent(IofReading& reading, LapRecords&) {
  reading.notes.score_event |= SaysScore(AttributeText(reading.xml, "eventForm"));
  ReadChildren(reading, reading.header, kEventRules);
}

// --- persons and clubs ---

constexpr std::array<IofRule<IofPerson>, 2> kNameRules = {{
    {"Family", [](IofReading& r, IofPerson& p) { SetOnce(p.family, r.xml.Text()); }},
    {"Given",
     [](IofReading& r, IofPerson& p) {
       const std::string_view given = r.xml.Text();
       if (!p.given.empty() && !given.empty()) p.given += ' ';
       p.given += given;
     }},
}};

// The code of a country, which stands in an attribute; "other" is none.
void ReadCountryId(IofReading& reading, std::string& country) {
  const std::string_view code = AttributeText(reading.xml, "value");
  if (!EqualsIgnoringCase(code, "other")) SetOnce(country, code);
}

constexpr std::array<IofRule<std::string>, 3> kCountryRules = {{
    {"CountryId", ReadCountryId},
    {"Country", [](IofReading& r, std::string& s) { ReadChildren(r, s, kCountryRules); }},
    {"Name", [](IofReading& r, std::string& s) { SetOnce(s, r.xml.Text()); }},
}};

constexpr std::array<IofRule<IofPerson>, 3> kPersonRules = {{
    {"PersonName", [](IofReading& r, IofPerson& p) { ReadChildren(r, p, kNameRules); }},
    {"PersonId", [](IofReading& r, IofPerson& p) { SetOnce(p.id, r.xml.Text()); }},
    {"Nationality",
     [](IofReading& r, IofPerson& p) { ReadChildren(r, p.nationality, kCountryRules); }},
}};

void ReadPerson(IofReading& reading, IofPerson& person) {
  person.sex = AttributeText(reading.xml, "sex");
  ReadChildren(reading, person, kPersonRules);
}

struct Club {
  std::string name, short_name, id;
};

constexpr std::array<IofRule<Club>, 4> kClubRules = {{
    {"Name", [](IofReading& r, Club& c) { SetOnce(c.name, r.xml.Text()); }},
    {"ShortName", [](IofReading& r, Club& c) { SetOnce(c.short_name, r.xml.Text()); }},
    {"ClubId", [](IofReading& r, Club& c) { SetOnce(c.id, r.xml.Text()); }},
    {"OrganisationId", [](IofReading& r, Club& c) { SetOnce(c.id, r.xml.Text()); }},
}};

void ReadClub(IofReading& reading, IofPerson& person) {
  Club club;
  ReadChildren(reading, club, kClubRules);
  for (const std::string* name : {&club.name, &club.short_name, &club.id}) {
    SetOnce(person.club, *name);
  }
}

// --- courses ---

void ReadLength(IofReading& reading, IofCourse& course) {
  const std::string unit(AttributeText(reading.xml, "unit"));
  course.length = Meters(reading.xml.Text(), unit);
}

void ReadClimb(IofReading& reading, IofCourse& course) {
  const std::string unit(AttributeText(reading.xml, "unit"));
  course.climb = Meters(reading.xml.Text(), unit);
}

constexpr std::array<IofRule<IofCourse>, 3> kCourseRules = {{
    {"CourseLength", ReadLength},
    {"CourseClimb", ReadClimb},
    {"CourseControl", [](IofReading&, IofCourse& course) { ++course.controls; }},
}};

// --- times ---

// The elapsed time of the open element. Some programs put an element Clock around it.
std::optional<Milliseconds> ReadTime(IofReading& reading) {
  const std::string format = UpperAscii(AttributeText(reading.xml, "timeFormat"));
  const std::string_view text = reading.xml.WholeText();
  if (Contains(format, "MM.SS")) {
    std::string colons(text);
    std::replace(colons.begin(), colons.end(), '.', ':');
    return reading.TimeText(colons);
  }
  const auto time = reading.TimeText(text);
  if (!time || format != "HH:MM") return time;
  return *time * 60;
}

// --- results ---

struct ResultElement {
  IofResult result;
  std::string start_number;
  std::vector<std::int32_t> sequence;  // of the punches
};

constexpr std::array<IofRule<Punch>, 3> kSplitRules = {{
    {"Time", [](IofReading& r, Punch& punch) { punch.time = ReadTime(r); }},
    {"ControlCode", [](IofReading& r, Punch& punch) { punch.code = r.event.Code(r.xml.Text()); }},
    {"Control", [](IofReading& r, Punch& punch) { ReadChildren(r, punch, kSplitRules); }},
}};

void ReadSplit(IofReading& reading, ResultElement& element) {
  element.sequence.push_back(ReadCount(AttributeText(reading.xml, "sequence")));
  Punch punch;
  ReadChildren(reading, punch, kSplitRules);
  element.result.punches.push_back(punch);
}

void ReadStatus(IofReading& reading, ResultElement& element) {
  const std::string value(AttributeText(reading.xml, "value"));
  element.result.status = reading.StatusText(value.empty() ? reading.xml.Text() : value);
}

constexpr std::array<IofRule<IofResult>, 1> kCardRules = {{
    {"CCardId", [](IofReading& r, IofResult& result) { SetOnce(result.card, r.xml.Text()); }},
}};

constexpr std::array<IofRule<ResultElement>, 13> kResultRules = {{
    {"SplitTime", ReadSplit},
    {"StartNumber", [](IofReading& r, ResultElement& e) { SetOnce(e.start_number, r.xml.Text()); }},
    {"BibNumber", [](IofReading& r, ResultElement& e) { SetOnce(e.result.bib, r.xml.Text()); }},
    {"CCardId", [](IofReading& r, ResultElement& e) { SetOnce(e.result.card, r.xml.Text()); }},
    {"CCard", [](IofReading& r, ResultElement& e) { ReadChildren(r, e.result, kCardRules); }},
    {"StartTime",
     [](IofReading& r, ResultElement& e) { r.StartText(r.xml.WholeText(), e.result); }},
    {"FinishTime",
     [](IofReading& r, ResultElement& e) { r.FinishText(r.xml.WholeText(), e.result); }},
    {"Time", [](IofReading& r, ResultElement& e) { e.result.time = ReadTime(r); }},
    {"ResultPosition",
     [](IofReading& r, ResultElement& e) { SetOnce(e.result.rank, r.xml.Text()); }},
    {"CompetitorStatus", ReadStatus},
    {"TeamSequence",
     [](IofReading& r, ResultElement& e) { e.result.leg = ReadCount(r.xml.Text()); }},
    {"CourseLength", [](IofReading& r, ResultElement& e) { ReadLength(r, e.result.course); }},
    {"CourseVariation",
     [](IofReading& r, ResultElement& e) { ReadChildren(r, e.result.course, kCourseRules); }},
}};

// Puts the punches in the order of their sequence numbers.
void SortPunches(ResultElement& element) {
  auto& sequence = element.sequence;
  if (std::is_sorted(sequence.begin(), sequence.end())) return;
  std::vector<std::pair<std::int32_t, Punch>> numbered;
  for (std::size_t i = 0; i < sequence.size(); ++i) {
    numbered.emplace_back(sequence[i], element.result.punches[i]);
  }
  std::stable_sort(numbered.begin(), numbered.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  for (std::size_t i = 0; i < sequence.size(); ++i) {
    std::tie(sequence[i], element.result.punches[i]) = numbered[i];
  }
}

// Without codes, the sequence numbers say which controls were missed.
void PlaceWithoutCodes(ResultElement& element) {
  constexpr std::int32_t kHighestSequence = 200;
  std::vector<Punch>& punches = element.result.punches;
  const auto has_code = [](const Punch& punch) { return punch.code != 0; };
  if (std::any_of(punches.begin(), punches.end(), has_code)) return;
  std::vector<Punch> placed;
  for (std::size_t i = 0; i < punches.size(); ++i) {
    const std::int32_t place = element.sequence[i] - 1;
    if (place > static_cast<std::int32_t>(placed.size()) && place < kHighestSequence) {
      placed.resize(static_cast<std::size_t>(place));
    }
    placed.push_back(punches[i]);
  }
  punches = std::move(placed);
}

IofResult ReadResultElement(IofReading& reading) {
  ResultElement element;
  element.result.punches.reserve(reading.punches);
  ReadChildren(reading, element, kResultRules);
  SetOnce(element.result.bib, element.start_number);
  SortPunches(element);
  PlaceWithoutCodes(element);
  return TakeResult(reading, std::move(element.result));
}

// --- runners and teams ---

struct RaceResult {
  std::string race_id;
  IofResult result;
};

constexpr std::array<IofRule<RaceResult>, 3> kRaceResultRules = {{
    {"EventRaceId", [](IofReading& r, RaceResult& race) { race.race_id = r.xml.Text(); }},
    {"EventRace", [](IofReading& r, RaceResult& race) { ReadChildren(r, race, kRaceResultRules); }},
    {"Result", [](IofReading& r, RaceResult& race) { race.result = ReadResultElement(r); }},
}};

// A person with a result, which is the sum of the race results when there are any.
struct RunnerElement {
  IofEntry entry;
  std::string country;  // that the person represents
  std::optional<IofResult> result;
  std::vector<RaceResult> race_results;
};

void ReadRaceResult(IofReading& reading, RunnerElement& element) {
  ReadChildren(reading, element.race_results.emplace_back(), kRaceResultRules);
}

constexpr std::array<IofRule<RunnerElement>, 9> kRunnerRules = {{
    {"Person", [](IofReading& r, RunnerElement& e) { ReadPerson(r, e.entry.person); }},
    {"PersonId", [](IofReading& r, RunnerElement& e) { SetOnce(e.entry.person.id, r.xml.Text()); }},
    {"Club", [](IofReading& r, RunnerElement& e) { ReadClub(r, e.entry.person); }},
    {"Organisation", [](IofReading& r, RunnerElement& e) { ReadClub(r, e.entry.person); }},
    {"ClubId", [](IofReading& r, RunnerElement& e) { SetOnce(e.entry.person.club, r.xml.Text()); }},
    {"CountryId", [](IofReading& r, RunnerElement& e) { ReadCountryId(r, e.country); }},
    {"Country", [](IofReading& r, RunnerElement& e) { ReadChildren(r, e.country, kCountryRules); }},
    {"Result", [](IofReading& r, RunnerElement& e) { e.result = ReadResultElement(r); }},
    {"RaceResult", ReadRaceResult},
}};

void StoreResults(IofReading& reading, RunnerElement& element) {
  if (element.race_results.empty()) {
    if (element.result) StoreResult(reading, element.entry, std::move(*element.result), 1);
    return;
  }
  for (RaceResult& race : element.race_results) {
    if (element.result) SetOnce(race.result.bib, element.result->bib);
    if (element.result) SetOnce(race.result.card, element.result->card);
    StoreResult(reading, element.entry, std::move(race.result),
                reading.races.NumberOf(race.race_id));
  }
}

// Adds the runner of the open element to the entries, unless the document ends inside it. A member
// of a team has the given leg if the file does not say it.
void ReadRunner(IofReading& reading, IofEntries& entries, std::int32_t leg = 0) {
  RunnerElement element;
  element.entry.line = reading.xml.ElementPlace().Line;
  ReadChildren(reading, element, kRunnerRules);
  if (reading.xml.Error()) return;
  SetOnce(element.entry.person.nationality, element.country);
  SetOnce(element.entry.person.club, element.country);
  StoreResults(reading, element);
  if (element.entry.result.leg == 0) element.entry.result.leg = leg;
  AddEntry(reading, entries, std::move(element.entry));
}

struct Team {
  std::string name, bib, start_number;
  IofEntries members;
  std::int32_t legs = 0;  // as many as there are elements
};

constexpr std::array<IofRule<Team>, 4> kTeamRules = {{
    {"TeamName", [](IofReading& r, Team& team) { SetOnce(team.name, r.xml.Text()); }},
    {"BibNumber", [](IofReading& r, Team& team) { SetOnce(team.bib, r.xml.Text()); }},
    {"StartNumber", [](IofReading& r, Team& team) { SetOnce(team.start_number, r.xml.Text()); }},
    {"PersonResult", [](IofReading& r, Team& team) { ReadRunner(r, team.members, ++team.legs); }},
}};

void ReadTeam(IofReading& reading, IofClass& klass) {
  reading.notes.has_teams = true;
  Team team;
  ReadChildren(reading, team, kTeamRules);
  SetOnce(team.bib, team.start_number);
  AddTeam(klass, team.name, team.bib, std::move(team.members));
}

// --- classes ---

constexpr std::array<IofRule<IofClass>, 6> kClassRules = {{
    {"ClassShortName", [](IofReading& r, IofClass& c) { SetOnce(c.short_name, r.xml.Text()); }},
    {"ShortName", [](IofReading& r, IofClass& c) { SetOnce(c.short_name, r.xml.Text()); }},
    {"Name", [](IofReading& r, IofClass& c) { SetOnce(c.name, r.xml.Text()); }},
    {"ClassId", [](IofReading& r, IofClass& c) { SetOnce(c.id, r.xml.Text()); }},
    {"Class", [](IofReading& r, IofClass& c) { ReadChildren(r, c, kClassRules); }},
    {"EventClass", [](IofReading& r, IofClass& c) { ReadChildren(r, c, kClassRules); }},
}};

void ReadClassName(IofReading& reading, IofClass& klass) {
  ReadChildren(reading, klass, kClassRules);
}

constexpr std::array<IofRule<IofClass>, 7> kClassResultRules = {{
    {"PersonResult", [](IofReading& r, IofClass& c) { ReadRunner(r, c.entries); }},
    {"TeamResult", ReadTeam},
    {"ClassShortName", [](IofReading& r, IofClass& c) { SetOnce(c.short_name, r.xml.Text()); }},
    {"Name", [](IofReading& r, IofClass& c) { SetOnce(c.name, r.xml.Text()); }},
    {"ClassId", [](IofReading& r, IofClass& c) { SetOnce(c.id, r.xml.Text()); }},
    {"Class", ReadClassName},
    {"EventClass", ReadClassName},
}};

// The short name is the one that this version requires and programs show.
void ReadClassResult(IofReading& reading, LapRecords&) {
  IofClass klass;
  klass.line = reading.xml.ElementPlace().Line;
  ReadChildren(reading, klass, kClassResultRules);
  if (!klass.short_name.empty()) klass.name = klass.short_name;
  AddClass(reading, std::move(klass));
}

// --- the list ---

constexpr std::array<IofRule<LapRecords>, 3> kRootRules = {{
    {"ClassResult", ReadClassResult},
    {"Event", ReadEvent},
    {"ModifyDate",
     [](IofReading& r, LapRecords& header) {
       header.create_date = ReadMoment(r.xml.WholeText()).AsDateTime();
     }},
}};

void ReadRoot(IofReading& reading) {
  reading.notes.changes_only = EqualsIgnoringCase(AttributeText(reading.xml, "status"), "delta");
  ReadChildren(reading, reading.event.Header(), kRootRules);
}

}  // namespace

bool LooksLikeIof2(std::string_view text) {
  const auto list = FindIofList(text);
  return list && !list->IsVersion3();
}

ReadResult ReadIof2(std::string_view text, const ForeignOptions& options) {
  return ReadIofResultList(text, options, ReadRoot);
}

}  // namespace keltrun
