#include "keltrun2/io/foreign/iof_xml.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <tuple>
#include <utility>

#include "keltrun2/codec/encodings.h"
#include "keltrun2/io/limits.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/numbers.h"

namespace keltrun {
namespace {

// The lists of both versions. The names of some are too common to show that a document is IOF XML.
struct KnownList {
  std::string_view root;
  std::optional<Refusal> refusal;
  bool is_own_name = false;
};
constexpr std::array kLists = {
    KnownList{"ResultList", std::nullopt, true},
    KnownList{"StartList", Refusal::kStartList, true},
    KnownList{"EntryList", Refusal::kEntryList, true},
    KnownList{"CourseData", Refusal::kCourseData, true},
    KnownList{"CompetitorList", Refusal::kCompetitorList},
    KnownList{"PersonList", Refusal::kCompetitorList},
    KnownList{"RankList", Refusal::kCompetitorList},
    KnownList{"OrganisationList", Refusal::kClubList},
    KnownList{"ClubList", Refusal::kClubList},
    KnownList{"EventList", Refusal::kEventList},
    KnownList{"ClassList", Refusal::kEventList},
    KnownList{"ClassData", Refusal::kEventList},
    KnownList{"ControlCardList", Refusal::kControlCards},
    KnownList{"ServiceRequestList", Refusal::kServiceRequests},
    KnownList{"BadgeList", Refusal::kNoResults},
    KnownList{"CountryList", Refusal::kNoResults},
    KnownList{"PressList", Refusal::kNoResults},
    KnownList{"TransactionList", Refusal::kNoResults},
};

constexpr std::string_view kNamespace = "orienteering.org/datastandard/";
constexpr std::string_view kVersion2 = "2.0.3";
constexpr std::string_view kVersion3 = "3.0";

// The version that the attributes of the root element say, or "".
std::string_view VersionOfRoot(const XmlReader& xml) {
  std::string_view version;
  for (const XmlAttribute& attribute : xml.Attributes()) {
    const std::size_t found = attribute.Value().find(kNamespace);
    if (attribute.Name().starts_with("xmlns") && found != std::string_view::npos) {
      return attribute.Value().substr(found + kNamespace.size());
    }
    if (attribute.Name() == "iofVersion") version = attribute.Value();
  }
  return version;
}

// The version that the elements inside the open one show, or "". Only version 2 has an element
// IOFVersion, and the versions name a class differently.
std::string VersionOfContent(XmlReader& xml) {
  std::string version;
  ForEachChild(xml, [&] {
    const std::string name(xml.LocalName());
    if (!version.empty()) return;
    if (name == "IOFVersion") version = AttributeText(xml, "version");
    if (name == "Class") version = kVersion3;
    if (name == "ClassShortName" || name == "ClassId" || name == "EventClass") version = kVersion2;
    if (name == "ClassResult") version = VersionOfContent(xml);
  });
  return version;
}

bool IsVersion(std::string_view text) {
  return !text.empty() && text.front() >= '1' && text.front() <= '3' &&
         text.find_first_not_of("0123456789.") == std::string_view::npos;
}

// Other spellings of the states of a result; the names of IOF XML 3.0 come from the status itself.
struct StatusWord {
  std::string_view text;
  RunnerStatus status;
};
constexpr std::array kStatusWords = {
    StatusWord{"MisPunch", RunnerStatus::kMissingPunch},
    StatusWord{"Mispunched", RunnerStatus::kMissingPunch},
    StatusWord{"MP", RunnerStatus::kMissingPunch},
    StatusWord{"SportWithdr", RunnerStatus::kSportingWithdrawal},
    StatusWord{"SportWithdrawal", RunnerStatus::kSportingWithdrawal},
    StatusWord{"DNF", RunnerStatus::kDidNotFinish},
    StatusWord{"DNS", RunnerStatus::kDidNotStart},
    StatusWord{"DSQ", RunnerStatus::kDisqualified},
    StatusWord{"DISQ", RunnerStatus::kDisqualified},
    StatusWord{"OT", RunnerStatus::kOverTime},
    StatusWord{"NC", RunnerStatus::kNotCompeting},
};

// Reads digits and removes them from the text; nullopt when there are none, or more than fit.
std::optional<Milliseconds> TakeDigits(std::string_view& text) {
  constexpr std::size_t kMostDigits = 9;
  std::size_t count = 0;
  Milliseconds number = 0;
  for (; count < text.size() && IsDigit(text[count]); ++count) {
    if (count == kMostDigits) return std::nullopt;
    number = number * 10 + (text[count] - '0');
  }
  if (count == 0) return std::nullopt;
  text.remove_prefix(count);
  return number;
}

// "2861", "2861.5" or "2861,5"; nullopt for any other text.
std::optional<Milliseconds> PlainSeconds(std::string_view text) {
  const auto seconds = TakeDigits(text);
  if (!seconds) return std::nullopt;
  Milliseconds time = *seconds * kMillisecondsPerSecond;
  if (text.empty()) return time;
  if (text[0] != '.' && text[0] != ',') return std::nullopt;
  Milliseconds unit = kMillisecondsPerSecond / 10;
  for (const char c : text.substr(1)) {
    if (!IsDigit(c)) return std::nullopt;
    time += (c - '0') * unit;
    unit /= 10;
  }
  return time;
}

// A date, "2025-10-18" or with other separators; also with the year at the end.
std::optional<DateTime> ReadDate(std::string_view text) {
  std::array<Milliseconds, 3> parts{};
  bool year_first = false;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const std::size_t size = text.size();
    const auto number = TakeDigits(text);
    if (!number) return std::nullopt;
    parts[i] = *number;
    if (i == 0) year_first = size - text.size() == 4;
    if (i + 1 == parts.size()) break;
    if (text.empty() || std::string_view("-/.").find(text[0]) == std::string_view::npos) {
      return std::nullopt;
    }
    text.remove_prefix(1);
  }
  if (!year_first) std::swap(parts[0], parts[2]);
  return DateNumber(static_cast<int>(parts[0]), static_cast<int>(parts[1]),
                    static_cast<int>(parts[2]));
}

// Takes the part before the next blank or "T" from the text.
std::string_view TakeWord(std::string_view& text) {
  const std::size_t end = std::min(text.find_first_of(" T"), text.size());
  const std::string_view word = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return word;
}

// "Z", "+02:00", "-0430" or "+02"; nullopt for any other text.
std::optional<Milliseconds> ReadZone(std::string_view text) {
  if (text == "Z" || text == "z") return 0;
  if (text.empty()) return std::nullopt;
  const bool is_west = text[0] == '-';
  text.remove_prefix(1);
  const std::size_t hours_size = std::min<std::size_t>(text.size(), 2);
  std::string_view hours = text.substr(0, hours_size);
  std::string_view minutes = text.substr(hours_size);
  if (minutes.starts_with(':')) minutes.remove_prefix(1);
  const auto hour = TakeDigits(hours);
  const auto minute = minutes.empty() ? 0 : TakeDigits(minutes);
  if (!hour || !minute || !hours.empty() || !minutes.empty()) return std::nullopt;
  const Milliseconds offset = (*hour * 60 + *minute) * 60 * kMillisecondsPerSecond;
  return is_west ? -offset : offset;
}

std::string Counted(std::size_t count, std::string_view things) {
  return std::to_string(count) + " " + std::string(things) + (count == 1 ? "" : "s");
}

}  // namespace

std::optional<IofList> FindIofList(std::string_view text) {
  constexpr std::size_t kBeginning = 64 << 10;
  constexpr std::string_view kBlanks = " \t\r\n";
  const std::size_t first = std::min(text.find_first_not_of(kBlanks), text.size());
  if (!text.substr(first).starts_with('<')) return std::nullopt;
  // The beginning may end within a character; after a tag it does not.
  text = text.substr(0, kBeginning);
  text = text.substr(0, text.rfind('>') + 1);
  XmlReader xml;
  if (xml.OpenText(text) || !xml.NextChild()) return std::nullopt;
  const auto* const known = std::find_if(kLists.begin(), kLists.end(), [&](const KnownList& list) {
    return list.root == xml.LocalName();
  });
  if (known == kLists.end()) return std::nullopt;
  std::string version(VersionOfRoot(xml));
  if (version.empty()) version = VersionOfContent(xml);
  if (version.empty() && !known->is_own_name) return std::nullopt;
  if (!IsVersion(version)) version = version.empty() ? kVersion2 : kVersion3;
  if (version == "2" || version == "2.0") version = kVersion2;
  IofList list{std::string(known->root), std::move(version), known->refusal};
  if (!list.refusal && list.version.starts_with('1')) list.refusal = Refusal::kOldIofVersion;
  return list;
}

IofMoment ReadMoment(std::string_view text) {
  IofMoment moment;
  while (!text.empty()) {
    const std::string_view word = TakeWord(text);
    const auto date = ReadDate(word);
    if (date) moment.date = date;
    if (date || word.find(':') == std::string_view::npos) continue;
    const std::size_t zone = std::min(word.find_first_of("Zz+-"), word.size());
    moment.zone = ReadZone(word.substr(zone));
    moment.is_utc = zone < word.size() && (word[zone] == 'Z' || word[zone] == 'z');
    moment.clock = ForeignClock(word.substr(0, zone));
  }
  return moment;
}

std::optional<DateTime> IofMoment::AsDateTime() const {
  if (!date) return std::nullopt;
  return *date + static_cast<double>(clock.value_or(0)) / kMillisecondsPerDay;
}

std::optional<Milliseconds> ReadSeconds(std::string_view text) {
  if (const auto plain = PlainSeconds(text)) return plain;
  if (const auto time = ForeignTime(text)) return time;
  constexpr double kLongest = kLongestTime * kSecondsPerDay;
  const auto number = NumericValue(text);  // with an exponent
  if (!number || std::fabs(*number) > kLongest) return std::nullopt;
  return std::llround(*number * kMillisecondsPerSecond);
}

std::optional<RunnerStatus> ReadIofStatus(std::string_view text) {
  if (const auto status = RunnerStatusOfName(text)) return status;
  for (const StatusWord& word : kStatusWords) {
    if (EqualsIgnoringCase(word.text, text)) return word.status;
  }
  for (auto i = static_cast<std::int32_t>(RunnerStatus::kOk);
       i <= static_cast<std::int32_t>(RunnerStatus::kCancelled); ++i) {
    const auto status = static_cast<RunnerStatus>(i);
    if (EqualsIgnoringCase(RunnerStatusName(status), text)) return status;
  }
  return std::nullopt;
}

bool SaysScore(std::string_view text) {
  const std::string word = LowerAscii(text);
  return word.starts_with("score") || word.starts_with("rogain");
}

void IofValues::Add(const IofValues& other) {
  utc_clocks |= other.utc_clocks;
  other_zones += other.other_zones;
  additional += other.additional;
  bad_times += other.bad_times;
  bad_statuses += other.bad_statuses;
}

bool IofPerson::HasName() const {
  constexpr std::string_view kBlankBytes = " \t\u00A0";
  const auto is_text = [&](std::string_view text) {
    return text.find_first_not_of(kBlankBytes) != std::string_view::npos;
  };
  return is_text(given) || is_text(family) || is_text(name);
}

bool IofResult::IsOfStarter() const {
  const auto is_timed = [](const Punch& punch) { return punch.time.has_value(); };
  if (time || std::any_of(punches.begin(), punches.end(), is_timed)) return true;
  return status && *status != RunnerStatus::kInactive && *status != RunnerStatus::kDidNotStart &&
         *status != RunnerStatus::kDidNotEnter && *status != RunnerStatus::kCancelled;
}

std::int32_t IofRaces::NumberOf(std::string_view id) {
  constexpr std::size_t kMostDigits = 2;
  if (id.size() <= kMostDigits && IsDigits(id) && ReadCount(id) > 0) return ReadCount(id);
  const auto next = static_cast<std::int32_t>(number_of_id_.size()) + 1;
  return number_of_id_.emplace(id, next).first->second;
}

bool IofRaces::Reads(std::int32_t race) {
  if (read_ == 0) read_ = race;
  starters_[race];
  return race == read_;
}

std::int32_t IofRaces::FirstWithStarters() const {
  const auto found = std::find_if(starters_.begin(), starters_.end(),
                                  [](const auto& entry) { return entry.second > 0; });
  return found == starters_.end() ? read_ : found->first;
}

std::string IofRaces::Numbers() const {
  constexpr std::size_t kShown = 20;
  std::string text;
  std::size_t count = 0;
  for (const auto& [race, starters] : starters_) {
    if (count++ == kShown) return text + ", ...";
    text += (text.empty() ? "" : ", ") + std::to_string(race);
  }
  return text;
}

void IofEvent::SetSite(std::string_view url, bool is_web_site) {
  if (url.empty() || has_web_site || (!site.empty() && !is_web_site)) return;
  site = url;
  has_web_site = is_web_site;
}

std::optional<DateTime> IofEvent::Date(std::int32_t race) const {
  const auto found = races.find(race);
  // The start of an event of several races is that of the first one.
  if (found != races.end() && (race > 1 || !start)) return found->second;
  if (race > 1 && first_runner) return first_runner;
  if (start) return start;
  return first_runner ? first_runner : end;
}

std::optional<Milliseconds> IofReading::TimeText(std::string_view text) {
  const auto time = ReadSeconds(text);
  const bool is_blank = text.find_first_not_of("-:.0 ") == std::string_view::npos;
  if (!time && !is_blank && values.bad_times++ == 0 && notes.values.bad_times == 0) {
    notes.bad_time = text;
    notes.bad_time_line = xml.ElementPlace().Line;
  }
  return time;
}

std::optional<RunnerStatus> IofReading::StatusText(std::string_view text) {
  const auto status = ReadIofStatus(text);
  if (!status && !text.empty() && values.bad_statuses++ == 0 && notes.values.bad_statuses == 0) {
    notes.bad_status = text;
    notes.bad_status_line = xml.ElementPlace().Line;
  }
  return status;
}

namespace {

// A clock with its date in the zone of the first one of its kind.
IofMoment MomentInZone(std::string_view text, std::optional<Milliseconds>& zone,
                       IofValues& values) {
  IofMoment moment = ReadMoment(text);
  if (!moment.clock || !moment.zone) return moment;
  if (!zone) zone = moment.zone;
  values.utc_clocks |= moment.is_utc && zone == 0;
  if (*zone == *moment.zone) return moment;
  ++values.other_zones;
  Milliseconds clock = *moment.clock + *zone - *moment.zone;
  double days = 0;
  for (; clock < 0; clock += kMillisecondsOfDay) --days;
  for (; clock >= kMillisecondsOfDay; clock -= kMillisecondsOfDay) ++days;
  moment.clock = clock;
  if (moment.date) *moment.date += days;
  return moment;
}

}  // namespace

void IofReading::StartText(std::string_view text, IofResult& result) {
  const IofMoment moment = MomentInZone(text, start_zone, values);
  result.start = moment.clock;
  result.start_date = moment.date;
}

void IofReading::FinishText(std::string_view text, IofResult& result) {
  const IofMoment moment = MomentInZone(text, finish_zone, values);
  result.finish = moment.clock;
  result.finish_date = moment.date;
}

void IofReading::TakeNamespace() {
  constexpr std::string_view kDeclaration = "xmlns:";
  prefixes.emplace_back(xml.PrefixOf(xml.LocalName()));
  for (const XmlAttribute& attribute : xml.Attributes()) {
    const std::string_view name = attribute.Name();
    if (!name.starts_with(kDeclaration) || !Contains(attribute.Value(), kNamespace)) continue;
    prefixes.emplace_back(name.substr(kDeclaration.size()));
  }
}

std::string_view AttributeText(const XmlReader& xml, std::string_view name) {
  for (const XmlAttribute& attribute : xml.Attributes()) {
    if (attribute.Name() == name) return TrimSpaces(attribute.Value());
  }
  return "";
}

void SetOnce(std::string& target, std::string_view text) {
  if (target.empty()) target = text;
}

std::int32_t ReadCount(std::string_view text) { return std::max(LeadingLong(text), 0); }

namespace {

// The time from start to finish when their dates are known: clocks alone don't show whole days.
std::optional<Milliseconds> TimeBetweenDates(const IofResult& result) {
  constexpr double kMostDays = 7;
  if (!result.start || !result.finish || !result.start_date || !result.finish_date) {
    return std::nullopt;
  }
  const double days = *result.finish_date - *result.start_date;
  if (days < 0 || days > kMostDays) return std::nullopt;
  const Milliseconds time =
      std::llround(days * kMillisecondsPerDay) + *result.finish - *result.start;
  return time > 0 ? std::optional(time) : std::nullopt;
}

}  // namespace

IofResult TakeResult(IofReading& reading, IofResult&& result) {
  constexpr std::size_t kMostExpected = 64;
  result.values = std::exchange(reading.values, {});
  // Runners who did not start have a total of 0 in some files, and finish when they start.
  if (result.time == 0) result.time.reset();
  if (!result.time) result.time = TimeBetweenDates(result);
  if (result.start && result.finish == result.start) result.finish.reset();
  reading.punches = std::min(result.punches.size(), kMostExpected);
  return std::move(result);
}

void StoreResult(IofReading& reading, IofEntry& entry, IofResult&& result, std::int32_t race) {
  ++entry.results;
  const bool is_read = reading.races.Reads(race);
  if (result.IsOfStarter()) reading.races.CountStarter(race);
  if (!is_read) return;
  if (std::exchange(entry.has_result, true)) {
    ++reading.notes.repeated;
    return;
  }
  reading.notes.values.Add(result.values);
  std::optional<DateTime>& first = reading.header.first_runner;
  for (const auto& date : {result.start_date, result.finish_date}) {
    if (date) first = std::min(*date, first.value_or(*date));
  }
  entry.result = std::move(result);
}

void AddEntry(IofReading& reading, IofEntries& entries, IofEntry&& entry) {
  if (entry.results > 0 && !entry.has_result) return;
  if (!entry.person.HasName() && !entry.result.IsOfStarter()) return;
  if (++reading.entries > kMostRunners) {
    reading.xml.FailAtElement(std::string(kTooManyRunners));
    return;
  }
  entries.push_back(std::move(entry));
}

void AddTeam(IofClass& klass, std::string_view team, std::string_view bib, IofEntries&& members) {
  for (IofEntry& member : members) {
    if (!team.empty()) member.person.club = team;
    SetOnce(member.result.bib, bib);
    klass.entries.push_back(std::move(member));
  }
}

namespace {

// The course of a class or leg among those that the file gives: the one of the race, by its number
// or its place.
IofCourse ChooseCourse(const std::vector<IofCourse>& courses, std::int32_t race) {
  for (const IofCourse& course : courses) {
    if (course.race == race && race > 0) return course;
  }
  std::vector<IofCourse> unnumbered;
  for (const IofCourse& course : courses) {
    if (course.race == 0) unnumbered.push_back(course);
  }
  const auto place = static_cast<std::size_t>(std::max(race - 1, 0));
  if (place < unnumbered.size()) return unnumbered[place];
  return unnumbered.empty() ? IofCourse{} : unnumbered.front();
}

// The course that most of the first runners have.
IofCourse CommonCourse(const IofEntries& entries, std::size_t count) {
  std::map<std::tuple<std::int32_t, std::int32_t, std::int32_t>, std::size_t> counts;
  IofCourse common;
  std::size_t most = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const IofCourse& course = entries[i].result.course;
    if (course.IsEmpty()) continue;
    const std::size_t runners = ++counts[{course.length, course.climb, course.controls}];
    if (runners <= most) continue;
    most = runners;
    common = course;
  }
  return common;
}

bool TimeCounts(RunnerStatus status) {
  return status == RunnerStatus::kOk || status == RunnerStatus::kFinished ||
         status == RunnerStatus::kNotCompeting || status == RunnerStatus::kOverTime;
}

// Some programs give runners who gave up the time of their last control as the total.
void DropTotalOfLastControl(IofResult& result) {
  if (!result.status || TimeCounts(*result.status) || result.punches.empty()) return;
  const Punch& last = result.punches.back();
  if (last.code <= 0 || last.code == ForeignEvent::kFinishNumber || last.time != result.time)
    return;
  result.time.reset();
  result.finish.reset();
}

// A last split without a code is the finish if it has the total time, or if there is no total.
// Others that have neither a code nor a time say nothing where there are codes.
void TidyPunches(IofResult& result) {
  std::vector<Punch>& punches = result.punches;
  const auto has_code = [](const Punch& punch) { return punch.code != 0; };
  const bool has_codes = std::any_of(punches.begin(), punches.end(), has_code);
  if (!punches.empty() && punches.back().code == 0 && punches.back().time) {
    const auto last = punches.back().time;
    if (has_codes && !result.time) result.time = last;
    if (last == result.time) punches.pop_back();
  }
  if (!has_codes) return;
  std::erase_if(punches, [](const Punch& punch) { return punch.code == 0 && !punch.time; });
}

ForeignRunner MakeRunner(IofEntry&& entry) {
  ForeignRunner runner;
  IofPerson& person = entry.person;
  IofResult& result = entry.result;
  TidyPunches(result);
  DropTotalOfLastControl(result);
  runner.given_name = std::move(person.given);
  runner.family_name = std::move(person.family);
  runner.name = std::move(person.name);
  runner.club = std::move(person.club);
  runner.sex = std::move(person.sex);
  runner.nationality = std::move(person.nationality);
  runner.competitor_id = std::move(person.id);
  runner.bib = std::move(result.bib);
  runner.card = std::move(result.card);
  runner.rank = std::move(result.rank);
  runner.status = result.status;
  runner.start = result.start;
  runner.finish = result.finish;
  runner.time = result.time;
  runner.punches = std::move(result.punches);
  runner.line = entry.line;
  return runner;
}

// Whether the entry can be called something: without a name, by the number of the bib or card, or
// by the club.
bool NameEntry(IofReading& reading, IofEntry& entry) {
  IofPerson& person = entry.person;
  if (person.HasName()) return true;
  SetOnce(person.name, entry.result.bib);
  SetOnce(person.name, entry.result.card);
  SetOnce(person.name, person.club);
  ++(person.HasName() ? reading.notes.nameless : reading.notes.left_out);
  return person.HasName();
}

// Adds the first entries, which are the runners of a class or leg, and removes them.
void AddRunners(IofReading& reading, std::string_view name, IofCourse course, IofEntries& entries,
                std::size_t count) {
  const IofCourse common = CommonCourse(entries, count);
  if (course.length == 0) course.length = common.length;
  if (course.climb == 0) course.climb = common.climb;
  if (course.controls == 0) course.controls = common.controls;
  ForeignClass& klass = reading.event.ClassNamed(name);
  if (klass.length == 0) klass.length = course.length;
  if (klass.climb == 0) klass.climb = course.climb;
  if (klass.control_count == 0) klass.control_count = course.controls;
  for (; count > 0; --count, entries.pop_front()) {
    IofEntry& entry = entries.front();
    const IofCourse own = entry.result.course;
    if (!NameEntry(reading, entry)) continue;
    const bool is_other = (own.length != 0 && own.length != klass.length) ||
                          (own.climb != 0 && own.climb != klass.climb);
    reading.notes.own_courses += is_other ? 1 : 0;
    ForeignRunner runner = MakeRunner(std::move(entry));
    if (own.controls != klass.control_count) runner.control_count = own.controls;
    klass.runners.push_back(std::move(runner));
  }
}

}  // namespace

namespace {

// The course of a leg: its own, else that of most of its runners, else that of the whole class.
IofCourse CourseOfLeg(const IofClass& klass, std::int32_t leg, const IofCourse& of_class,
                      const IofCourse& common) {
  const auto place = static_cast<std::size_t>(leg - 1);
  if (place < klass.leg_courses.size() && !klass.leg_courses[place].IsEmpty()) {
    return klass.leg_courses[place];
  }
  return common.IsEmpty() ? of_class : common;
}

}  // namespace

void AddClass(IofReading& reading, IofClass&& klass) {
  std::string name = !klass.name.empty() ? klass.name : klass.short_name;
  if (name.empty()) name = klass.id;
  if (name.empty()) {
    name = "Class " + std::to_string(reading.event.Classes().size() + 1);
    reading.remarks.Add(RemarkSeverity::kNote, klass.line, 0, "class", name,
                        "is the name of a class that has none in the file");
  }
  if (klass.is_score) {
    ++reading.notes.score_classes;
    reading.remarks.Add(RemarkSeverity::kWarning, klass.line, 0, "class", name,
                        "has controls in any order and is not read");
    return;
  }
  IofEntries& entries = klass.entries;
  const auto is_before = [](const IofEntry& a, const IofEntry& b) {
    return a.result.leg < b.result.leg;
  };
  if (!std::is_sorted(entries.begin(), entries.end(), is_before)) {
    std::stable_sort(entries.begin(), entries.end(), is_before);
  }
  const IofCourse course = ChooseCourse(klass.courses, reading.races.Read());
  while (!entries.empty()) {
    const auto end = std::upper_bound(entries.begin(), entries.end(), entries.front(), is_before);
    const auto count = static_cast<std::size_t>(end - entries.begin());
    const std::int32_t leg = entries.front().result.leg;
    if (leg == 0) {
      AddRunners(reading, name, course, entries, count);
    } else {
      AddRunners(reading, name + "-" + std::to_string(leg),
                 CourseOfLeg(klass, leg, course, CommonCourse(entries, count)), entries, count);
    }
  }
}

namespace {

void Note(IofReading& reading, std::string_view subject, std::string_view consequence) {
  reading.remarks.Add(RemarkSeverity::kNote, 0, 0, subject, "", consequence);
}

void Warn(IofReading& reading, std::string_view subject, std::string_view consequence) {
  reading.remarks.Add(RemarkSeverity::kWarning, 0, 0, subject, "", consequence);
}

bool HasPunches(ForeignEvent& event) {
  return std::any_of(event.Classes().begin(), event.Classes().end(), [](const ForeignClass& klass) {
    return std::any_of(klass.runners.begin(), klass.runners.end(),
                       [](const ForeignRunner& runner) { return !runner.punches.empty(); });
  });
}

void RemarkRaces(IofReading& reading) {
  const IofNotes& notes = reading.notes;
  if (reading.races.Count() > 1) {
    Note(reading, "races",
         "the file has races " + reading.races.Numbers() + "; race " +
             std::to_string(reading.races.Read()) + " is read");
  }
  if (notes.unnumbered > 0) {
    Note(reading, "races",
         Counted(notes.unnumbered, "runner") +
             " with several results that have no race number: they are taken as races 1, 2, ...");
  }
  if (notes.repeated > 0) {
    Warn(reading, "results",
         Counted(notes.repeated, "more result") +
             " of runners who have one in the same race; the first one is used");
  }
}

void RemarkValues(IofReading& reading) {
  const IofNotes& notes = reading.notes;
  if (notes.values.utc_clocks) {
    Note(reading, "start and finish times",
         "their time zone is Z; they are used as they are written");
  }
  if (notes.values.other_zones > 0) {
    Note(reading, "start and finish times",
         std::to_string(notes.values.other_zones) +
             " in another time zone than that of the first runner are converted to it");
  }
  if (notes.values.bad_times > 0) {
    reading.remarks.Add(RemarkSeverity::kWarning, notes.bad_time_line, 0, "time", notes.bad_time,
                        std::to_string(notes.values.bad_times) + " like this cannot be read");
  }
  if (notes.values.bad_statuses > 0) {
    reading.remarks.Add(RemarkSeverity::kWarning, notes.bad_status_line, 0, "status",
                        notes.bad_status,
                        std::to_string(notes.values.bad_statuses) + " like this cannot be read");
  }
  if (notes.values.additional > 0) {
    Note(reading, "punches",
         std::to_string(notes.values.additional) + " that the file marks as additional " +
             (notes.values.additional == 1 ? "is" : "are") + " not used");
  }
}

// Remarks on what was found in the whole file.
void RemarkAll(IofReading& reading) {
  const IofNotes& notes = reading.notes;
  if (notes.changes_only) {
    Note(reading, "file", "it holds only what changed since an earlier file");
  }
  RemarkRaces(reading);
  if (notes.has_teams) {
    Note(reading, "teams",
         "each leg is a class with the team as the club; the results of the teams are not read");
  }
  RemarkValues(reading);
  if (notes.own_courses > 0) {
    Note(reading, "courses",
         Counted(notes.own_courses, "runner") +
             " with another length or climb than the class; it keeps its own, or that of most "
             "runners");
  }
  if (notes.nameless > 0) {
    Warn(reading, "names",
         Counted(notes.nameless, "runner") +
             " without a name; the number of the bib or card, or the club, stands for it");
  }
  if (notes.left_out > 0) {
    Warn(reading, "results",
         Counted(notes.left_out, "result") + " without the name or number of a runner: not read");
  }
  if (reading.event.RunnerCount() > 0 && !HasPunches(reading.event)) {
    Warn(reading, "split times", "the file has none; results are read, but there are no laps");
  }
}

void FillHeader(IofReading& reading) {
  LapRecords& header = reading.event.Header();
  if (!reading.header.site.empty()) header.official_site = reading.header.site;
  header.event_date = reading.header.Date(reading.races.Read());
}

// An error in the XML: where reading stopped and what to do.
std::optional<ReadError> ErrorOf(const IofReading& reading, std::string_view format) {
  const std::optional<XmlError>& error =
      reading.open_error ? reading.open_error : reading.xml.Error();
  if (!error) return std::nullopt;
  return ReadError{error->Line, error->Detail + ". " + RefusalText(Refusal::kDamaged, format),
                   error->Column};
}

// Reads the whole document.
void ReadDocument(IofReading& reading, void (*read_root)(IofReading&)) {
  if (reading.open_error) return;
  if (reading.xml.NextChild()) {
    reading.TakeNamespace();
    read_root(reading);
  }
  reading.xml.SkipTo(0);
}

// What makes the file one that is not read, now that all of it has been seen.
std::optional<Refusal> RefusalOf(const IofReading& reading, std::int32_t asked_for,
                                 bool has_error) {
  if (reading.notes.score_event) return Refusal::kScoreResults;
  if (has_error) return std::nullopt;
  if (reading.notes.score_classes > 0 && reading.event.RunnerCount() == 0) {
    return Refusal::kScoreResults;
  }
  if (asked_for > 0 && !reading.races.IsEmpty() && !reading.races.Has(asked_for)) {
    return Refusal::kNoSuchRace;
  }
  return std::nullopt;
}

ReadResult Refused(Refusal refusal, std::string_view format) {
  ReadResult result;
  result.format = format;
  result.error = ReadError{0, RefusalText(refusal, format)};
  return result;
}

}  // namespace

ReadResult ReadIofResultList(std::string_view text, const ForeignOptions& options,
                             void (*read_root)(IofReading& reading)) {
  const auto list = FindIofList(text);
  if (list && list->refusal) return Refused(*list->refusal, list->Format());
  const std::string format = list ? list->Format() : "IOF XML";
  auto reading = std::make_unique<IofReading>(text, options.race);
  ReadDocument(*reading, read_root);
  const std::int32_t race = options.race > 0 ? options.race : reading->races.FirstWithStarters();
  if (race != reading->races.Read()) {
    reading = std::make_unique<IofReading>(text, race);
    ReadDocument(*reading, read_root);
  }
  std::optional<ReadError> error = ErrorOf(*reading, format);
  if (const auto refusal = RefusalOf(*reading, options.race, error.has_value())) {
    return Refused(*refusal, format);
  }
  FillHeader(*reading);
  RemarkAll(*reading);
  return FinishReading(std::move(reading->event), reading->remarks, format, std::move(error));
}

}  // namespace keltrun
