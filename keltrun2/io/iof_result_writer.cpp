#include "keltrun2/io/iof_result_writer.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <unordered_map>

#include "keltrun2/analysis/data_set_internal.h"
#include "keltrun2/analysis/results_holder.h"
#include "keltrun2/codec/xml.h"
#include "keltrun2/model/lap_data_internal.h"
#include "keltrun2/model/result_status.h"
#include "keltrun2/model/time_text.h"
#include "keltrun2/text/html.h"
#include "keltrun2/text/numbers.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

struct Attribute {
  std::string_view name, value;  // the value needs no escaping
};

constexpr Attribute kDateFormat = {"dateFormat", "YYYY-MM-DD"};
constexpr Attribute kClockFormat = {"clockFormat", "HH:MM:SS"};
constexpr Attribute kTimeFormat = {"timeFormat", "MM:SS"};
constexpr Attribute kMetres = {"unit", "m"};
constexpr std::string_view kDatePattern = "yyyy-mm-dd";
constexpr std::string_view kClockPattern = "hh:nn:ss";

struct SexWord {
  std::string_view word, value;
};
constexpr SexWord kSexWords[] = {{"M", "M"}, {"m", "M"}, {"男", "M"}, {"男性", "M"},
                                 {"F", "F"}, {"f", "F"}, {"女", "F"}, {"女性", "F"}};

// "<name" with its attribute, still open.
void AppendTagStart(std::string& out, std::string_view name, const Attribute& attribute) {
  out.append("<").append(name);
  if (attribute.name.empty()) return;
  out.append(" ").append(attribute.name).append("=\"").append(attribute.value).append("\"");
}

// An element with children. The destructor writes its end tag.
class Element {
 public:
  Element(std::string& out, std::string_view name, const Attribute& attribute = {})
      : out_(out), name_(name) {
    AppendTagStart(out_, name_, attribute);
    out_ += '>';
  }
  ~Element() { out_.append("</").append(name_).append(">"); }
  Element(const Element&) = delete;
  Element& operator=(const Element&) = delete;

 private:
  std::string& out_;
  std::string_view name_;
};

// An element with a text, which may be empty.
void Write(std::string& out, std::string_view name, std::string_view text,
           const Attribute& attribute = {}) {
  AppendTagStart(out, name, attribute);
  const std::string allowed = AllowedInXml(text);
  if (allowed.empty()) {
    out += "/>";
    return;
  }
  out += '>';
  AppendEscaped(out, allowed);
  out.append("</").append(name).append(">");
}

void Write(std::string& out, std::string_view name, std::int32_t number,
           const Attribute& attribute = {}) {
  Write(out, name, std::to_string(number), attribute);
}

void WriteIfSet(std::string& out, std::string_view name, std::int32_t number) {
  if (number != 0) Write(out, name, number);
}

// Minutes and seconds; hours are given in minutes: "75:05".
void WriteTime(std::string& out, DateTime time) {
  std::string text = std::to_string(TotalMinutes(time)) + ":";
  AppendTwoDigits(text, static_cast<int>(WholeSeconds(time) % 60));
  Write(out, "Time", text, kTimeFormat);
}

void WriteEvent(std::string& out, const clsEventData& data) {
  const Element event(out, "Event");
  Write(out, "EventId", "");
  Write(out, "Name", data.EventName);
  Write(out, "EventClassificationId", "");
  {
    const Element start(out, "StartDate");
    Write(out, "Date", data.EventDate()->ToString(kDatePattern), kDateFormat);
  }
  if (!data.OfficialSite.empty()) Write(out, "WebURL", data.OfficialSite);
}

void WriteModifyDate(std::string& out, DateTime date) {
  const Element modified(out, "ModifyDate");
  Write(out, "Date", FormatDateTime(date, kDatePattern), kDateFormat);
  Write(out, "Clock", FormatDateTime(date, kClockPattern), kClockFormat);
}

// The family name and the given name are the first two parts of the name. Parts are separated by
// blanks of either width or commas; two separators in a row have an empty part between them.
void WritePersonName(std::string& out, std::string_view name) {
  constexpr std::string_view kSeparators = " ,";
  const std::string parts =
      ToHalfWidth(name, {.Letters = false, .Digits = false, .Symbols = false});
  const std::size_t family_end = std::min(parts.find_first_of(kSeparators), parts.size());
  const std::size_t given = std::min(family_end + 1, parts.size());
  const std::size_t given_end = std::min(parts.find_first_of(kSeparators, given), parts.size());
  const Element element(out, "PersonName");
  Write(out, "Family", parts.substr(0, family_end));
  Write(out, "Given", parts.substr(given, given_end - given));
}

void WritePerson(std::string& out, const clsLapData& runner) {
  Attribute sex;
  for (const SexWord& known : kSexWords) {
    if (runner.Sex == known.word) sex = {"sex", known.value};
  }
  const Element person(out, "Person", sex);
  WritePersonName(out, runner.RunnerName);
  Write(out, "PersonId", "");
}

void WriteClub(std::string& out, const clsLapData& runner) {
  const Element club(out, "Club");
  Write(out, "ClubId", "");
  Write(out, "ShortName", runner.ClubName);
}

struct RunnerTime {
  DateTime time = 0;
  bool disqualified = false;  // a leg is; known only when the laps were summed
};

// The time of the result or, when it has none, the sum of the timed laps.
RunnerTime GetTotalTime(const clsLapData& runner) {
  RunnerTime total{TotalTime(runner.Result()).value_or(0)};
  if (total.time != 0) return total;
  for (std::int32_t leg = 1; leg <= LapDataInternal::HeldLegs(runner); ++leg) {
    const DateTime lap = LapDataInternal::Lap(runner, leg);
    if (lap > 0) total.time = Canonical(total.time + lap);
    if (lap == kTimeDisq) total.disqualified = true;
  }
  return total;
}

// An official rank that is not a number, such as "(3)" or a word, means that the runner does not
// compete. The laps would decide for a runner without a result, but a results holder leaves such a
// runner out.
std::string_view CompetitorStatus(const clsLapData& runner, bool disqualified) {
  if (!runner.Rank.empty() && !NumericValue(runner.Rank)) return "NotCompeting";
  if (IsFinished(runner.Result())) return "OK";
  if (!runner.Result().empty()) return runner.Result() == "DNS" ? "Inactive" : "Disqualified";
  return disqualified ? "Disqualified" : "OK";
}

void WriteStartAndFinish(std::string& out, const clsTimeValue& start, DateTime total) {
  if (start.Value() == 0) return;
  {
    const Element element(out, "StartTime");
    Write(out, "Clock", start.ToString(kClockPattern), kClockFormat);
  }
  const Element element(out, "FinishTime");
  const DateTime finish = Canonical(start.Value() + total);
  Write(out, "Clock", FormatDateTime(finish, kClockPattern), kClockFormat);
}

// The first class of each course. It gives the length of the course.
using FirstClasses = std::unordered_map<std::int32_t, const clsClassData*>;

FirstClasses FindFirstClasses(const EventModel& model) {
  FirstClasses first;
  for (const auto& klass : model.Classes()) first.emplace(klass->CourseNum, klass.get());
  return first;
}

void WriteCourseVariation(std::string& out, const clsCourseData& course,
                          const FirstClasses& first_classes) {
  const Element variation(out, "CourseVariation");
  Write(out, "CourseVariationId", course.CourseIndex());
  const auto klass = first_classes.find(course.CourseIndex());
  if (klass != first_classes.end()) {
    Write(out, "CourseLength", klass->second->Length, kMetres);
    Write(out, "CourseClimb", klass->second->Climb, kMetres);
  }
  const std::int32_t held = std::min(course.ControlCount(), clsCourseData::kMostControls);
  for (std::int32_t position = 1; position <= held; ++position) {
    const Element control(out, "CourseControl");
    Write(out, "Sequence", position);
    Write(out, "ControlCode", course.ControlNum(position));
  }
}

// The split times at the ends of the timed legs, the finish included. `course` may be null.
void WriteSplitTimes(std::string& out, const clsLapData& runner, const clsCourseData* course) {
  std::int32_t sequence = 0;
  DateTime split = 0;
  for (std::int32_t leg = 1; leg <= LapDataInternal::HeldLegs(runner); ++leg) {
    const DateTime lap = LapDataInternal::Lap(runner, leg);
    if (!(lap > 0)) continue;
    split = Canonical(split + lap);
    const std::string number = std::to_string(++sequence);
    const Element element(out, "SplitTime", {"sequence", number});
    if (course != nullptr && course->ControlNum(leg) != clsCourseData::kFinishCode) {
      Write(out, "ControlCode", course->ControlNum(leg));
    }
    WriteTime(out, split);
  }
}

// The runners of a class share its course, which is written in full only for the first of them.
struct ClassCourse {
  const clsCourseData* course;  // null for a class without a course
  const FirstClasses& first_classes;
};

void WriteResult(std::string& out, const clsLapData& runner, const ClassCourse& of_class,
                 bool course_in_full) {
  const Element result(out, "Result");
  const RunnerTime total = GetTotalTime(runner);
  WriteIfSet(out, "StartNumber", runner.ID);
  WriteIfSet(out, "CCardId", runner.Ecard);
  WriteStartAndFinish(out, *runner.StartTime(), total.time);
  WriteTime(out, total.time);
  if (NumericValue(runner.Rank)) Write(out, "ResultPosition", runner.Rank);
  Write(out, "CompetitorStatus", "", {"value", CompetitorStatus(runner, total.disqualified)});
  if (of_class.course != nullptr && course_in_full) {
    WriteCourseVariation(out, *of_class.course, of_class.first_classes);
  } else if (of_class.course != nullptr) {
    Write(out, "CourseVariationId", of_class.course->CourseIndex());
  }
  WriteSplitTimes(out, runner, of_class.course);
}

void WriteClassResult(std::string& out, const std::shared_ptr<clsClassData>& klass,
                      const ClassCourse& of_class) {
  const Element class_result(out, "ClassResult");
  Write(out, "ClassShortName", klass->ClassName());
  clsResultsHolder results;
  DataSetInternal::AddClasses(results, {klass});
  for (std::int32_t index = 1; index <= results.Count(); ++index) {
    const clsLapData& runner = *results.Item(index);
    const Element person_result(out, "PersonResult");
    WritePerson(out, runner);
    WriteClub(out, runner);
    WriteResult(out, runner, of_class, index == 1);
  }
}

void WriteResultList(std::string& out, const EventModel& model, DateTime now) {
  const Element list(out, "ResultList", {"status", "complete"});
  Write(out, "IOFVersion", "", {"version", "2.0.3"});
  WriteEvent(out, *model.Event);
  const FirstClasses first_classes = FindFirstClasses(model);
  for (const auto& klass : model.Classes()) {
    const auto course = klass->CourseNum != 0 ? model.CourseByNumber(klass->CourseNum) : nullptr;
    WriteClassResult(out, klass, {course.get(), first_classes});
  }
  const DateTime last_update = model.Meta->LastUpdateDate;
  WriteModifyDate(out, last_update != 0 ? last_update : now);
}

}  // namespace

std::string WriteIofXmlResult(const EventModel& model, DateTime now) {
  // XML without an encoding declaration is UTF-8.
  std::string out = "<?xml version=\"1.0\"?>\r\n";
  WriteResultList(out, model, now);
  return out += "\r\n";
}

}  // namespace keltrun
