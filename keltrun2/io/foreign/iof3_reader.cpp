#include "keltrun2/io/foreign/iof3_reader.h"

#include <array>
#include <utility>

#include "keltrun2/codec/encodings.h"
#include "keltrun2/io/foreign/iof_xml.h"

namespace keltrun {
namespace {

std::int32_t RaceNumber(const XmlReader& xml) {
  return ReadCount(AttributeText(xml, "raceNumber"));
}

// --- the event ---

// The date of an element with the children Date and Time, or of a dateTime.
std::optional<DateTime> DateOf(IofReading& reading) {
  return ReadMoment(reading.xml.WholeText()).date;
}

void ReadUrl(IofReading& reading) {
  const std::string type(AttributeText(reading.xml, "type"));
  reading.header.SetSite(reading.xml.Text(), type.empty() || EqualsIgnoringCase(type, "Website"));
}

// A race of the event.
struct Race {
  std::int32_t number = 0;
  std::optional<DateTime> start;
};

constexpr std::array<IofRule<Race>, 5> kRaceRules = {{
    {"RaceNumber", [](IofReading& r, Race& race) { race.number = ReadCount(r.xml.Text()); }},
    {"StartTime", [](IofReading& r, Race& race) { race.start = DateOf(r); }},
    {"EndTime",
     [](IofReading& r, Race& race) {
       const auto date = DateOf(r);
       if (!race.start) race.start = date;
     }},
    {"Discipline", [](IofReading& r, Race&) { r.notes.score_event |= SaysScore(r.xml.Text()); }},
    {"URL", [](IofReading& r, Race&) { ReadUrl(r); }},
}};

void ReadRace(IofReading& reading, IofEvent& event) {
  Race race;
  ReadChildren(reading, race, kRaceRules);
  if (race.number == 0) race.number = static_cast<std::int32_t>(event.races.size()) + 1;
  if (race.start) event.races.emplace(race.number, *race.start);
}

constexpr std::array<IofRule<IofEvent>, 6> kEventRules = {{
    {"Name",
     [](IofReading& r, IofEvent&) {
       const std::string_view name = r.xml.Text();
       if (!name.empty()) r.event.Header().event_name = name;
     }},
    {"StartTime", [](IofReading& r, IofEvent& event) { event.start = DateOf(r); }},
    {"EndTime", [](IofReading& r, IofEvent& event) { event.end = DateOf(r); }},
    {"Form", [](IofReading& r, IofEvent&) { r.notes.score_event |= SaysScore(r.xml.Text()); }},
    {"Race", ReadRace},
    {"URL", [](IofReading& r, IofEvent&) { ReadUrl(r); }},
}};

// --- courses ---

constexpr std::array<IofRule<IofCourse>, 3> kCourseRules = {{
    {"Length", [](IofReading& r, IofCourse& c) { c.length = Meters(r.xml.Text(), "m"); }},
    {"Climb", [](IofReading& r, IofCourse& c) { c.climb = Meters(r.xml.Text(), "m"); }},
    {"NumberOfControls", [](IofReading& r, IofCourse& c) { c.controls = ReadCount(r.xml.Text()); }},
}};

IofCourse ReadCourse(IofReading& reading) {
  IofCourse course;
  course.race = RaceNumber(reading.xml);
  ReadChildren(reading, course, kCourseRules);
  return course;
}

// --- persons and clubs ---

constexpr std::array<IofRule<IofPerson>, 2> kNameRules = {{
    {"Family", [](IofReading& r, IofPerson& p) { SetOnce(p.family, r.xml.Text()); }},
    {"Given", [](IofReading& r, IofPerson& p) { SetOnce(p.given, r.xml.Text()); }},
}};

void ReadNationality(IofReading& reading, IofPerson& person) {
  person.nationality = AttributeText(reading.xml, "code");
  SetOnce(person.nationality, reading.xml.Text());
}

constexpr std::array<IofRule<IofPerson>, 3> kPersonRules = {{
    {"Name", [](IofReading& r, IofPerson& p) { ReadChildren(r, p, kNameRules); }},
    {"Id", [](IofReading& r, IofPerson& p) { SetOnce(p.id, r.xml.Text()); }},
    {"Nationality", ReadNationality},
}};

void ReadPerson(IofReading& reading, IofPerson& person) {
  person.sex = AttributeText(reading.xml, "sex");
  ReadChildren(reading, person, kPersonRules);
}

struct Organisation {
  std::string name, short_name, media_name, country;
};

constexpr std::array<IofRule<Organisation>, 4> kOrganisationRules = {{
    {"Name", [](IofReading& r, Organisation& o) { SetOnce(o.name, r.xml.Text()); }},
    {"ShortName", [](IofReading& r, Organisation& o) { SetOnce(o.short_name, r.xml.Text()); }},
    {"MediaName", [](IofReading& r, Organisation& o) { SetOnce(o.media_name, r.xml.Text()); }},
    {"Country", [](IofReading& r, Organisation& o) { SetOnce(o.country, r.xml.Text()); }},
}};

void ReadOrganisation(IofReading& reading, std::string& club) {
  Organisation organisation;
  ReadChildren(reading, organisation, kOrganisationRules);
  SetOnce(club, organisation.name);
  SetOnce(club, organisation.short_name);
  SetOnce(club, organisation.media_name);
  SetOnce(club, organisation.country);
}

// --- results ---

constexpr std::array<IofRule<Punch>, 2> kSplitRules = {{
    {"Time", [](IofReading& r, Punch& punch) { punch.time = r.TimeText(r.xml.Text()); }},
    {"ControlCode", [](IofReading& r, Punch& punch) { punch.code = r.event.Code(r.xml.Text()); }},
}};

// A result while it is read. Positions can be given for the leg of a relay and for the course.
struct ResultElement {
  IofResult result;
  std::string rank_on_course;
  bool is_score = false;
};

// A split that is marked as additional does not belong to the course. What is marked as missing has
// no time, even if one is given.
void ReadSplit(IofReading& reading, ResultElement& element) {
  const std::string_view status = AttributeText(reading.xml, "status");
  if (EqualsIgnoringCase(status, "Additional")) {
    ++reading.values.additional;
    return;
  }
  const bool is_missing = EqualsIgnoringCase(status, "Missing");
  Punch punch;
  ReadChildren(reading, punch, kSplitRules);
  if (is_missing) punch.time.reset();
  element.result.punches.push_back(punch);
}

void ReadPosition(IofReading& reading, ResultElement& element) {
  const bool is_of_course = EqualsIgnoringCase(AttributeText(reading.xml, "type"), "Course");
  SetOnce(is_of_course ? element.rank_on_course : element.result.rank, reading.xml.Text());
}

// World ranking points and the like are scores as well; those of controls in any order are called
// just so.
void ReadScore(IofReading& reading, ResultElement& element) {
  element.is_score |= SaysScore(AttributeText(reading.xml, "type"));
}

constexpr std::array<IofRule<ResultElement>, 11> kResultRules = {{
    {"SplitTime", ReadSplit},
    {"BibNumber", [](IofReading& r, ResultElement& e) { SetOnce(e.result.bib, r.xml.Text()); }},
    {"ControlCard", [](IofReading& r, ResultElement& e) { SetOnce(e.result.card, r.xml.Text()); }},
    {"StartTime", [](IofReading& r, ResultElement& e) { r.StartText(r.xml.Text(), e.result); }},
    {"FinishTime", [](IofReading& r, ResultElement& e) { r.FinishText(r.xml.Text(), e.result); }},
    {"Time", [](IofReading& r, ResultElement& e) { e.result.time = r.TimeText(r.xml.Text()); }},
    {"Status",
     [](IofReading& r, ResultElement& e) { e.result.status = r.StatusText(r.xml.Text()); }},
    {"Position", ReadPosition},
    {"Leg", [](IofReading& r, ResultElement& e) { e.result.leg = ReadCount(r.xml.Text()); }},
    {"Course", [](IofReading& r, ResultElement& e) { e.result.course = ReadCourse(r); }},
    {"Score", ReadScore},
}};

// Results that have no race number are those of the races in their order.
void ReadResult3(IofReading& reading, IofEntry& entry, bool& is_score) {
  std::int32_t race = RaceNumber(reading.xml);
  if (race == 0) {
    race = entry.results + 1;
    reading.notes.unnumbered += race == 2 ? 1 : 0;
  }
  ResultElement element;
  element.result.punches.reserve(reading.punches);
  ReadChildren(reading, element, kResultRules);
  SetOnce(element.result.rank, element.rank_on_course);
  is_score |= element.is_score;
  StoreResult(reading, entry, TakeResult(reading, std::move(element.result)), race);
}

// --- runners and teams ---

struct RunnerElement {
  IofEntry entry;
  bool is_score = false;
};

constexpr std::array<IofRule<RunnerElement>, 3> kRunnerRules = {{
    {"Person", [](IofReading& r, RunnerElement& e) { ReadPerson(r, e.entry.person); }},
    {"Organisation",
     [](IofReading& r, RunnerElement& e) { ReadOrganisation(r, e.entry.person.club); }},
    {"Result", [](IofReading& r, RunnerElement& e) { ReadResult3(r, e.entry, e.is_score); }},
}};

// Adds the runner of the open element to the entries, unless the document ends inside it. A member
// of a team has the given leg if the file does not say it.
void ReadRunner(IofReading& reading, IofEntries& entries, bool& is_score, std::int32_t leg = 0) {
  RunnerElement element;
  element.entry.line = reading.xml.ElementPlace().Line;
  ReadChildren(reading, element, kRunnerRules);
  if (reading.xml.Error()) return;
  is_score |= element.is_score;
  if (element.entry.result.leg == 0) element.entry.result.leg = leg;
  AddEntry(reading, entries, std::move(element.entry));
}

struct Team {
  std::string name, club, bib;
  IofEntries members;
  std::int32_t legs = 0;  // as many as there are elements
  bool is_score = false;
};

constexpr std::array<IofRule<Team>, 4> kTeamRules = {{
    {"Name", [](IofReading& r, Team& team) { SetOnce(team.name, r.xml.Text()); }},
    {"Organisation", [](IofReading& r, Team& team) { ReadOrganisation(r, team.club); }},
    {"BibNumber", [](IofReading& r, Team& team) { SetOnce(team.bib, r.xml.Text()); }},
    {"TeamMemberResult",
     [](IofReading& r, Team& team) { ReadRunner(r, team.members, team.is_score, ++team.legs); }},
}};

void ReadTeam(IofReading& reading, IofClass& klass) {
  reading.notes.has_teams = true;
  Team team;
  ReadChildren(reading, team, kTeamRules);
  klass.is_score |= team.is_score;
  AddTeam(klass, team.name.empty() ? team.club : team.name, team.bib, std::move(team.members));
}

// --- classes ---

// The course of a class in its element, which some programs also give for each leg.
constexpr std::array<IofRule<IofCourse>, 1> kLegRules = {{
    {"Course", [](IofReading& r, IofCourse& course) { course = ReadCourse(r); }},
}};

void ReadLeg(IofReading& reading, IofClass& klass) {
  ReadChildren(reading, klass.leg_courses.emplace_back(), kLegRules);
}

// The course of a class in one race.
void ReadRaceClass(IofReading& reading, IofClass& klass) {
  const std::int32_t race = RaceNumber(reading.xml);
  IofCourse course;
  ReadChildren(reading, course, kLegRules);
  course.race = race;
  if (!course.IsEmpty()) klass.courses.push_back(course);
}

constexpr std::array<IofRule<IofClass>, 5> kClassRules = {{
    {"Name", [](IofReading& r, IofClass& c) { SetOnce(c.name, r.xml.Text()); }},
    {"ShortName", [](IofReading& r, IofClass& c) { SetOnce(c.short_name, r.xml.Text()); }},
    {"Id", [](IofReading& r, IofClass& c) { SetOnce(c.id, r.xml.Text()); }},
    {"Leg", ReadLeg},
    {"RaceClass", ReadRaceClass},
}};

void ReadClassCourse(IofReading& reading, IofClass& klass) {
  klass.is_score |= SaysScore(AttributeText(reading.xml, "type"));
  klass.courses.push_back(ReadCourse(reading));
}

constexpr std::array<IofRule<IofClass>, 4> kClassResultRules = {{
    {"PersonResult", [](IofReading& r, IofClass& c) { ReadRunner(r, c.entries, c.is_score); }},
    {"TeamResult", ReadTeam},
    {"Class", [](IofReading& r, IofClass& c) { ReadChildren(r, c, kClassRules); }},
    {"Course", ReadClassCourse},
}};

void ReadClassResult(IofReading& reading, LapRecords&) {
  IofClass klass;
  klass.line = reading.xml.ElementPlace().Line;
  ReadChildren(reading, klass, kClassResultRules);
  AddClass(reading, std::move(klass));
}

// --- the list ---

constexpr std::array<IofRule<LapRecords>, 2> kRootRules = {{
    {"ClassResult", ReadClassResult},
    {"Event", [](IofReading& r, LapRecords&) { ReadChildren(r, r.header, kEventRules); }},
}};

void ReadRoot(IofReading& reading) {
  LapRecords& header = reading.event.Header();
  const std::string_view creator = AttributeText(reading.xml, "creator");
  if (!creator.empty()) header.create_application = creator;
  const IofMoment created = ReadMoment(AttributeText(reading.xml, "createTime"));
  header.create_date = created.AsDateTime();
  reading.notes.changes_only = EqualsIgnoringCase(AttributeText(reading.xml, "status"), "Delta");
  ReadChildren(reading, header, kRootRules);
}

}  // namespace

bool LooksLikeIof3(std::string_view text) {
  const auto list = FindIofList(text);
  return list && list->IsVersion3();
}

ReadResult ReadIof3(std::string_view text, const ForeignOptions& options) {
  return ReadIofResultList(text, options, ReadRoot);
}

}  // namespace keltrun
