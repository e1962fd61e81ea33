#include <algorithm>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "keltrun2/base/version.h"
#include "keltrun2/io/foreign/iof_elements.h"
#include "keltrun2/io/foreign/iof_writers.h"
#include "keltrun2/io/foreign/relay_classes.h"
#include "keltrun2/model/person_name.h"
#include "keltrun2/model/result_facts.h"
#include "keltrun2/text/numbers.h"

namespace keltrun {
namespace {

constexpr std::int64_t kMillisecondsOfDay = 86'400'000;
constexpr std::string_view kDatePattern = "yyyy-mm-dd";

// Seconds with at most one decimal.
void AppendSeconds(std::string& out, std::int64_t milliseconds) {
  const std::int64_t tenths = (milliseconds + 50) / 100;
  AppendInteger(out, tenths / 10);
  if (tenths % 10 == 0) return;
  out += '.';
  out += static_cast<char>('0' + tenths % 10);
}

void AppendSecondsElement(std::string& out, std::string_view name, std::int64_t milliseconds) {
  out.append("<").append(name).append(">");
  AppendSeconds(out, milliseconds);
  out.append("</").append(name).append(">");
}

// "+09:00"
std::string ZoneText(std::int32_t utc_offset) {
  std::string text = utc_offset < 0 ? "-" : "+";
  const std::int32_t minutes = std::min(std::abs(utc_offset), 14 * 60);
  AppendTwoDigits(text, minutes / 60);
  text += ':';
  AppendTwoDigits(text, minutes % 60);
  return text;
}

// Stands for the date of an event that has none. A start time cannot be written without a date, and
// some programs refuse runners without a start time.
constexpr std::int64_t kFirstOfJanuary1970 = 25'569;

// Moments of the event: its date, a time since midnight and the zone.
class Moments {
 public:
  Moments(DateTime date, std::int32_t utc_offset)
      : day_(date != 0 ? static_cast<std::int64_t>(date) : kFirstOfJanuary1970),
        zone_(date != 0 ? ZoneText(utc_offset) : "") {}

  void Append(std::string& out, std::string_view name, std::int64_t milliseconds) {
    out.append("<").append(name).append(">");
    AppendDay(out, milliseconds / kMillisecondsOfDay);
    const std::int64_t of_day = milliseconds % kMillisecondsOfDay;
    const std::int64_t seconds = of_day / 1000;
    out += 'T';
    AppendTwoDigits(out, static_cast<int>(seconds / 3600));
    out += ':';
    AppendTwoDigits(out, static_cast<int>(seconds / 60 % 60));
    out += ':';
    AppendTwoDigits(out, static_cast<int>(seconds % 60));
    if (of_day % 1000 != 0) AppendFraction(out, of_day % 1000);
    out.append(zone_).append("</").append(name).append(">");
  }

 private:
  static void AppendFraction(std::string& out, std::int64_t milliseconds) {
    out += '.';
    for (std::int64_t place = 100; milliseconds != 0; place /= 10) {
      out += static_cast<char>('0' + milliseconds / place);
      milliseconds %= place;
    }
  }

  void AppendDay(std::string& out, std::int64_t days_later) {
    if (days_later != days_later_ || day_text_.empty()) {
      days_later_ = days_later;
      day_text_ = FormatDateTime(static_cast<DateTime>(day_ + days_later), kDatePattern);
    }
    out += day_text_;
  }

  std::int64_t day_;
  std::string zone_;
  std::int64_t days_later_ = 0;
  std::string day_text_;  // of days_later_
};

// The elements of a course that are the same for all its runners.
struct CourseTexts {
  std::vector<std::string> split_starts;    // up to the seconds
  std::vector<std::string> missing_splits;  // the whole elements
};

constexpr std::string_view kSplitEnd = "</Time></SplitTime>";

CourseTexts MakeCourseTexts(const CourseFacts& course) {
  CourseTexts texts;
  for (const std::string& code : course.codes) {
    std::string element;
    AppendElement(element, "ControlCode", code);
    texts.split_starts.push_back("<SplitTime>" + element + "<Time>");
    texts.missing_splits.push_back("<SplitTime status=\"Missing\">" + element + "</SplitTime>");
  }
  return texts;
}

// A runner as a member of a team.
struct TeamMember {
  std::int32_t leg = 0;
  RunnerFacts runner;
  std::int64_t best_of_leg = kNoMilliseconds;
  RunnerStatus overall = RunnerStatus::kOk;  // of the team up to this leg
  std::int64_t overall_time = 0;
};

struct Team {
  std::vector<TeamMember> members;
  bool is_complete = false;  // every leg is OK
  std::int64_t time = 0;
};

class Writer {
 public:
  Writer(std::string& out, const EventModel& model, const IofOptions& options)
      : out_(out),
        model_(model),
        options_(options),
        facts_(model),
        moments_(model.Event->EventDate()->Value(), options.utc_offset) {}

  void WriteList() {
    AppendXmlDeclaration(out_, options_.encoding);
    out_ +=
        "<ResultList xmlns=\"http://www.orienteering.org/datastandard/3.0\" "
        "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" iofVersion=\"3.0\"";
    if (options_.now > 0) {
      out_ += " createTime=\"" + FormatDateTime(options_.now, "yyyy-mm-dd\\Thh:nn:ss") +
              ZoneText(options_.utc_offset) + "\"";
    }
    out_ += " creator=\"Keltrun " + VersionText(false) + "\" status=\"Complete\">\r\n";
    WriteEvent();
    WriteClasses();
    out_ += "</ResultList>\r\n";
  }

 private:
  void WriteEvent() {
    const clsEventData& event = *model_.Event;
    {
      const IofElement element(out_, "Event");
      AppendElement(out_, "Name", event.EventName);
      if (event.EventDate()->Value() != 0) {
        const IofElement start(out_, "StartTime");
        AppendElement(out_, "Date", event.EventDate()->ToString(kDatePattern));
      }
      if (!event.OfficialSite.empty()) {
        out_ += "<URL type=\"Website\">";
        AppendXmlText(out_, event.OfficialSite);
        out_ += "</URL>";
      }
    }
    out_ += "\r\n";
  }

  void WriteClasses() {
    const std::vector<RelayClass> relays = FindRelays(model_);
    std::unordered_map<const clsClassData*, const RelayClass*> first_legs;
    std::unordered_set<const clsClassData*> later_legs;
    for (const RelayClass& relay : relays) {
      first_legs.emplace(relay.legs.front(), &relay);
      later_legs.insert(relay.legs.begin() + 1, relay.legs.end());
    }
    for (const auto& klass : model_.Classes()) {
      if (later_legs.contains(klass.get())) continue;
      const auto relay = first_legs.find(klass.get());
      if (relay != first_legs.end()) {
        WriteRelay(*relay->second);
      } else {
        WriteClass(*klass);
      }
    }
  }

  void WriteClass(const clsClassData& klass) {
    const auto runners = facts_.RunnersOf(klass);
    const CourseFacts& course = facts_.CourseOf(klass);
    const std::int64_t best = BestTime(runners);
    {
      const IofElement element(out_, "ClassResult");
      {
        const IofElement name(out_, "Class");
        AppendElement(out_, "Name", klass.ClassName());
      }
      WriteCourse(course);
      out_ += "\r\n";
      for (const RunnerFacts& runner : runners) {
        WritePersonResult(runner, best, runner.course != &course);
        out_ += "\r\n";
      }
    }
    out_ += "\r\n";
  }

  void WriteCourse(const CourseFacts& course) {
    const IofElement element(out_, "Course");
    if (course.number != 0) AppendElement(out_, "Id", course.number);
    if (course.length > 0) AppendElement(out_, "Length", course.length);
    if (course.climb > 0) AppendElement(out_, "Climb", course.climb);
    AppendElement(out_, "NumberOfControls", course.ControlCount());
  }

  void WritePersonResult(const RunnerFacts& runner, std::int64_t best, bool has_own_course) {
    const IofElement element(out_, "PersonResult");
    WritePerson(*runner.record);
    WriteOrganisation(runner.record->ClubName);
    const IofElement result(out_, "Result");
    WriteBibAndTimes(runner);
    if (runner.place > 0 && runner.time != kNoMilliseconds) {
      AppendSecondsElement(out_, "TimeBehind", std::max<std::int64_t>(runner.time - best, 0));
    }
    if (runner.place > 0) AppendElement(out_, "Position", runner.place);
    AppendElement(out_, "Status", RunnerStatusName(runner.status));
    if (has_own_course) WriteCourse(*runner.course);
    WriteSplits(runner);
    AppendElementIfSet(out_, "ControlCard", CardText(*runner.record));
  }

  void WritePerson(const clsLapData& record) {
    AppendPersonTag(out_, record);
    AppendElementIfSet(out_, "Id", record.CompetitorId);
    {
      const PersonName parts = NameParts(record);
      const IofElement name(out_, "Name");
      AppendElement(out_, "Family", parts.family.empty() ? kNoName : parts.family);
      AppendElement(out_, "Given", parts.given);
    }
    if (!record.Nationality.empty()) {
      out_ += "<Nationality code=\"";
      AppendXmlText(out_, record.Nationality);
      out_ += "\"/>";
    }
    out_ += "</Person>";
  }

  // Some programs read the name, others the short name, and some expect one of every runner.
  void WriteOrganisation(std::string_view club) {
    const IofElement element(out_, "Organisation");
    AppendElement(out_, "Name", club);
    AppendElement(out_, "ShortName", club);
  }

  void WriteBibAndTimes(const RunnerFacts& runner) {
    AppendElementIfSet(out_, "BibNumber", BibText(*runner.record));
    const bool has_start = runner.start != kNoMilliseconds;
    const bool has_time = runner.time != kNoMilliseconds;
    if (has_start) moments_.Append(out_, "StartTime", runner.start);
    if (has_start && has_time) moments_.Append(out_, "FinishTime", runner.start + runner.time);
    if (has_time) AppendSecondsElement(out_, "Time", runner.time);
  }

  void WriteSplits(const RunnerFacts& runner) {
    const CourseTexts& texts = TextsOf(*runner.course);
    splits_.Find(runner);
    for (std::int32_t i = 0; i < splits_.ControlCount(); ++i) {
      const auto control = static_cast<std::size_t>(i);
      if (splits_[i] == kNoMilliseconds) {
        out_ += texts.missing_splits[control];
        continue;
      }
      out_ += texts.split_starts[control];
      AppendSeconds(out_, splits_[i]);
      out_ += kSplitEnd;
    }
  }

  const CourseTexts& TextsOf(const CourseFacts& course) {
    const auto [found, added] = texts_.try_emplace(&course);
    if (added) found->second = MakeCourseTexts(course);
    return found->second;
  }

  void WriteRelay(const RelayClass& relay) {
    const std::vector<Team> teams = TeamsOf(relay);
    {
      const IofElement element(out_, "ClassResult");
      {
        const IofElement klass(out_, "Class");
        AppendElement(out_, "Name", relay.name);
        for (std::size_t leg = 0; leg < relay.legs.size(); ++leg) out_ += "<Leg/>";
      }
      out_ += "\r\n";
      for (const Team& team : teams) {
        WriteTeam(team);
        out_ += "\r\n";
      }
    }
    out_ += "\r\n";
  }

  // Complete teams by time, then the others in the order of the first leg that they have.
  std::vector<Team> TeamsOf(const RelayClass& relay) {
    std::vector<Team> teams;
    std::unordered_map<std::string, std::size_t> team_of_key;
    for (std::size_t leg = 0; leg < relay.legs.size(); ++leg) {
      const auto runners = facts_.RunnersOf(*relay.legs[leg]);
      const std::int64_t best = BestTime(runners);
      for (const RunnerFacts& runner : runners) {
        const auto [found, added] = team_of_key.emplace(TeamKey(*runner.record), teams.size());
        if (added) teams.emplace_back();
        teams[found->second].members.push_back(
            {static_cast<std::int32_t>(leg) + 1, runner, best, RunnerStatus::kOk, 0});
      }
    }
    for (Team& team : teams) AddUp(team, relay.legs.size());
    std::stable_sort(teams.begin(), teams.end(), [](const Team& a, const Team& b) {
      if (a.is_complete != b.is_complete) return a.is_complete;
      return a.is_complete && a.time < b.time;
    });
    return teams;
  }

  static void AddUp(Team& team, std::size_t legs) {
    RunnerStatus status = RunnerStatus::kOk;
    std::int32_t leg = 0;
    for (TeamMember& member : team.members) {
      if (status == RunnerStatus::kOk) status = member.runner.status;
      if (status == RunnerStatus::kOk && member.leg != ++leg) status = RunnerStatus::kDidNotFinish;
      if (status == RunnerStatus::kOk) team.time += std::max<std::int64_t>(member.runner.time, 0);
      member.overall = status;
      member.overall_time = team.time;
    }
    team.is_complete = status == RunnerStatus::kOk && team.members.size() == legs;
  }

  void WriteTeam(const Team& team) {
    const clsLapData& first = *team.members.front().runner.record;
    const std::string bib = BibText(first);
    const IofElement element(out_, "TeamResult");
    AppendElement(out_, "Name", first.ClubName);
    WriteOrganisation(first.ClubName);
    AppendElementIfSet(out_, "BibNumber", TeamBib(bib));
    for (const TeamMember& member : team.members) WriteMember(member);
  }

  void WriteMember(const TeamMember& member) {
    const RunnerFacts& runner = member.runner;
    const IofElement element(out_, "TeamMemberResult");
    WritePerson(*runner.record);
    const IofElement result(out_, "Result");
    AppendElement(out_, "Leg", member.leg);
    AppendElement(out_, "LegOrder", 1);
    WriteBibAndTimes(runner);
    if (runner.place > 0) {
      out_ += "<TimeBehind type=\"Leg\">";
      AppendSeconds(out_, std::max<std::int64_t>(runner.time - member.best_of_leg, 0));
      out_ += "</TimeBehind><Position type=\"Leg\">";
      AppendInteger(out_, runner.place);
      out_ += "</Position>";
    }
    AppendElement(out_, "Status", RunnerStatusName(runner.status));
    {
      const IofElement overall(out_, "OverallResult");
      if (member.overall == RunnerStatus::kOk) {
        AppendSecondsElement(out_, "Time", member.overall_time);
      }
      AppendElement(out_, "Status", RunnerStatusName(member.overall));
    }
    WriteCourse(*runner.course);
    WriteSplits(runner);
    AppendElementIfSet(out_, "ControlCard", CardText(*runner.record));
  }

  std::string& out_;
  const EventModel& model_;
  const IofOptions& options_;
  ResultFacts facts_;
  Moments moments_;
  SplitTimes splits_;
  std::unordered_map<const CourseFacts*, CourseTexts> texts_;
};

}  // namespace

void AppendIofXml3(std::string& out, const EventModel& model, const IofOptions& options) {
  Writer(out, model, options).WriteList();
}

}  // namespace keltrun
