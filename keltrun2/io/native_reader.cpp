#include "keltrun2/io/native_reader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "keltrun2/config/settings.h"
#include "keltrun2/io/limits.h"
#include "keltrun2/io/text_reading.h"
#include "keltrun2/model/class_data_internal.h"
#include "keltrun2/model/time_text.h"
#include "keltrun2/text/file_names.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/numbers.h"
#include "keltrun2/text/split.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

// What remarks say about invalid values.
constexpr std::string_view kLeadingDigits =
    "is not a valid number; its leading digits are used, or 0";
constexpr std::string_view kNoDate = "is not a date and is ignored";

// An attribute of an element and where its trimmed value goes. `store` returns false for an invalid
// value; then there is a remark with the consequence.
template <typename Target>
struct AttributeRule {
  std::string_view name;
  bool (*store)(Target& target, std::string_view value);
  std::string_view consequence = {};
};

// The document and the remarks on it.
class Source {
 public:
  explicit Source(XmlReader& xml) : xml_(xml) {}

  XmlReader& Xml() { return xml_; }
  std::vector<LoadRemark> TakeRemarks() { return remarks_.Take(); }

  // Where the element that was opened last begins.
  ElementPlace Place() {
    const XmlError place = xml_.ElementPlace();
    return {place.Line, place.Column};
  }

  // The remark gets the place of the element that was opened last.
  void Warn(std::string_view subject, std::string_view value, std::string_view consequence) {
    const auto [line, column] = Place();
    remarks_.Add(RemarkSeverity::kWarning, line, column, subject, value, consequence);
  }

  // Counts a thing that is limited. Reading stops when there are more than `most`.
  void Count(std::size_t& count, std::size_t most, std::string_view things) {
    if (count++ < most) return;
    xml_.FailAtElement("more than " + std::to_string(most) + " " + std::string(things));
  }

 private:
  XmlReader& xml_;
  RemarkList remarks_;
};

template <typename Target, std::size_t N>
void ReadAttributes(Source& source, Target& target,
                    const std::array<AttributeRule<Target>, N>& rules) {
  for (const XmlAttribute& attribute : source.Xml().Attributes()) {
    for (const AttributeRule<Target>& rule : rules) {
      if (rule.name != attribute.Name()) continue;
      const std::string_view value = TrimSpaces(attribute.Value());
      if (!rule.store(target, value) && !value.empty()) {
        source.Warn(rule.name, value, rule.consequence);
      }
      break;
    }
  }
}

bool StoreText(std::string& target, std::string_view value) {
  target = value;
  return true;
}

// Stores a number, rounded, or the leading digits of an invalid one.
bool StoreNumber(std::int32_t& target, std::string_view value) {
  constexpr std::size_t kSurelyFits = 9;  // digits that no 32-bit number is too small for
  target = LeadingLong(value);
  if (!value.empty() && value.size() <= kSurelyFits && IsDigits(value)) return true;
  const auto number = NumericValue(value);
  return number && std::fabs(*number - target) <= 0.5;
}

// Stores a number of controls, limited to the room for them.
bool StoreControls(std::int32_t& target, std::string_view value, std::int32_t most) {
  const bool good = StoreNumber(target, value);
  const std::int32_t given = std::exchange(target, std::clamp(target, 0, most));
  return good && given == target;
}

// File names of classes and events are kept in half width and lower case.
std::string FoldFileName(std::string_view name) {
  return LowerAscii(ToHalfWidth(name, {.Symbols = false}));
}

// --- event and meta ---

constexpr std::array<AttributeRule<clsEventData>, 6> kEventRules = {{
    {"name", [](clsEventData& e, std::string_view v) { return StoreText(e.EventName, v); }},
    {"date",
     [](clsEventData& e, std::string_view v) {
       const auto date = ParseDateTime(v);
       if (date) e.EventDate()->SetValue(*date);
       return date.has_value();
     },
     kNoDate},
    {"terrain", [](clsEventData& e, std::string_view v) { return StoreText(e.Terrain, v); }},
    {"memo", [](clsEventData& e, std::string_view v) { return StoreText(e.Memo, v); }},
    {"homepage", [](clsEventData& e, std::string_view v) { return StoreText(e.OfficialSite, v); }},
    {"filename",
     [](clsEventData& e, std::string_view v) {
       return StoreText(e.FileName, CleanFileName(FoldFileName(v)));
     }},
}};

struct MetaEntry {
  std::string type, application, username;
  DateTime date = 0;
};

constexpr std::array<AttributeRule<MetaEntry>, 4> kMetaRules = {{
    {"type", [](MetaEntry& m, std::string_view v) { return StoreText(m.type, v); }},
    {"application", [](MetaEntry& m, std::string_view v) { return StoreText(m.application, v); }},
    {"date",
     [](MetaEntry& m, std::string_view v) {
       const auto date = ParseDateTime(ToHalfWidth(v));
       m.date = date.value_or(0);
       return date.has_value();
     },
     kNoDate},
    {"username", [](MetaEntry& m, std::string_view v) { return StoreText(m.username, v); }},
}};

void ReadMeta(Source& source, clsMetaData& meta) {
  ForEachChild(source.Xml(), [&] {
    MetaEntry entry;
    ReadAttributes(source, entry, kMetaRules);
    if (entry.type == "create") {
      meta.CreateApplication = entry.application;
      meta.CreateDate = entry.date;
      meta.CreateUserName = entry.username;
    } else if (entry.type == "last-update") {
      meta.LastUpdateApplication = entry.application;
      meta.LastUpdateDate = entry.date;
      meta.LastUpdateUserName = entry.username;
    }
  });
}

// --- courses ---

// The attributes of a course, which are stored in its record together.
struct CourseNumbers {
  std::int32_t number = 0;
  std::int32_t controls = 0;
};

constexpr std::array<AttributeRule<CourseNumbers>, 2> kCourseRules = {{
    {"number", [](CourseNumbers& c, std::string_view v) { return StoreNumber(c.number, v); },
     kLeadingDigits},
    {"controls",
     [](CourseNumbers& c, std::string_view v) {
       return StoreControls(c.controls, v, clsCourseData::kMostControls);
     },
     "is not a number of controls from 0 to 50; the nearest one is used"},
}};

// The numbered value of a leg or control element. It is dropped when its index is 0.
struct IndexedValue {
  std::int32_t index = 0;
  std::string_view value;
  std::string_view code_text;  // of a control
};

IndexedValue ReadIndexed(Source& source, std::string_view value_name, std::string_view subject,
                         std::int32_t most) {
  IndexedValue result;
  std::string_view index;
  for (const XmlAttribute& attribute : source.Xml().Attributes()) {
    if (attribute.Name() == "index") {
      index = attribute.Value();
    } else if (attribute.Name() == value_name) {
      result.value = attribute.Value();
    } else if (attribute.Name() == "code") {
      result.code_text = TrimSpaces(attribute.Value());
    }
  }
  const bool good = StoreNumber(result.index, index);
  if (result.index < 1 || result.index > most) {
    source.Warn(subject, index, "has no index from 1 to 50 and is dropped");
    result.index = 0;
  } else if (!good) {
    source.Warn(subject, index, kLeadingDigits);
  }
  return result;
}

NativeCourse ReadCourse(Source& source) {
  const ElementPlace place = source.Place();
  CourseNumbers numbers;
  ReadAttributes(source, numbers, kCourseRules);
  auto course = std::make_shared<clsCourseData>();
  course->SetCourseIndex(numbers.number);
  course->SetControlCount(numbers.controls);
  std::int32_t highest = 0;
  ForEachChild(source.Xml(), [&] {
    const IndexedValue control =
        ReadIndexed(source, "unit-number", "control", clsCourseData::kMostControls);
    if (control.index == 0) return;
    std::int32_t code = 0;
    if (!StoreNumber(code, control.value) && !control.value.empty()) {
      source.Warn("unit-number", control.value, kLeadingDigits);
    }
    course->SetControlNum(control.index, code);
    course->SetControlCodeText(control.index, control.code_text);
    highest = std::max(highest, control.index);
  });
  if (highest > numbers.controls) {
    source.Warn("course", std::to_string(numbers.number),
                "has more controls than its attribute \"controls\" says; the others are not used");
  }
  return {course, place};
}

// --- classes and runners ---

struct ClassAttributes {
  NativeClass result{std::make_shared<clsClassData>(), {}, {}};
  std::string name;
  std::optional<std::string> file_name;
};

constexpr std::array<AttributeRule<ClassAttributes>, 7> kClassRules = {{
    {"name", [](ClassAttributes& c, std::string_view v) { return StoreText(c.name, v); }},
    {"filename",
     [](ClassAttributes& c, std::string_view v) {
       c.file_name = FoldFileName(v);
       return true;
     }},
    {"length",
     [](ClassAttributes& c, std::string_view v) { return StoreNumber(c.result.klass->Length, v); },
     kLeadingDigits},
    {"climb",
     [](ClassAttributes& c, std::string_view v) { return StoreNumber(c.result.klass->Climb, v); },
     kLeadingDigits},
    {"controls",
     [](ClassAttributes& c, std::string_view v) {
       return StoreControls(c.result.klass->ControlCount, v, kMostClassControls);
     },
     "is not a number of controls from 0 to 49; the nearest one is used"},
    {"course",
     [](ClassAttributes& c, std::string_view v) {
       return StoreNumber(c.result.klass->CourseNum, v);
     },
     kLeadingDigits},
    {"cutoffrank",
     [](ClassAttributes& c, std::string_view v) {
       return StoreNumber(c.result.klass->CutOffRank, v);
     },
     kLeadingDigits},
}};

// "h:mm:ss" with any number of hours and an optional fraction of a second, or "h:mm". nullopt for
// other texts, dates and negative times included.
std::optional<DateTime> Duration(std::string_view text) {
  if (text.size() >= kShortestWithSeconds) {
    if (const auto time = ParsePlainTime(text)) return time;
  }
  if (text.find_first_of("/-") != std::string_view::npos) return std::nullopt;
  if (const auto time = ParseTimeOfDay(text)) {
    if (IsTimeOfDay(*time)) return time;
    return std::nullopt;
  }
  const auto [whole, fraction] = SplitAt(text, ".");
  // With a fraction, "12:34" would be minutes and seconds to its writer, but it is read as hours.
  const bool has_fraction = whole.size() < text.size();
  if (has_fraction && std::count(whole.begin(), whole.end(), ':') != 2) return std::nullopt;
  if (!IsTimeText(whole) || !IsDigits(fraction)) return std::nullopt;
  const DateTime time = ParseSignedTime(whole, false, false, kNoTime);
  if (time < 0) return std::nullopt;
  const double seconds = NumericValue("0." + std::string(fraction)).value_or(0);
  return Canonical(time + seconds / kSecondsPerDay);
}

constexpr std::array<AttributeRule<clsLapData>, 19> kRunnerRules = {{
    {"name", [](clsLapData& r, std::string_view v) { return StoreText(r.RunnerName, v); }},
    {"id", [](clsLapData& r, std::string_view v) { return StoreNumber(r.ID, v); }, kLeadingDigits},
    {"ecard", [](clsLapData& r, std::string_view v) { return StoreNumber(r.Ecard, v); },
     kLeadingDigits},
    {"seed", [](clsLapData& r, std::string_view v) { return StoreText(r.Seed, v); }},
    {"club", [](clsLapData& r, std::string_view v) { return StoreText(r.ClubName, v); }},
    {"start",
     [](clsLapData& r, std::string_view v) {
       const auto time = Duration(v);
       if (time) r.StartTime()->SetValue(*time);
       return time.has_value();
     },
     "is not a time and is ignored"},
    {"result",
     [](clsLapData& r, std::string_view v) {
       SetResultWord(r, v);
       return true;
     }},
    {"rank", [](clsLapData& r, std::string_view v) { return StoreText(r.Rank, v); }},
    {"sex", [](clsLapData& r, std::string_view v) { return StoreText(r.Sex, v); }},
    {"competitor-id",
     [](clsLapData& r, std::string_view v) { return StoreText(r.CompetitorId, v); }},
    {"rankfix", [](clsLapData& r, std::string_view v) { return StoreText(r.RankFix, v); }},
    {"age", [](clsLapData& r, std::string_view v) { return StoreText(r.Age, v); }},
    {"status",
     [](clsLapData& r, std::string_view v) {
       const auto status = RunnerStatusOfName(v);
       if (status) r.Status = *status;
       return status.has_value();
     },
     "is not a status of IOF XML 3.0 and is ignored"},
    {"bib", [](clsLapData& r, std::string_view v) { return StoreText(r.Bib, v); }},
    {"card", [](clsLapData& r, std::string_view v) { return StoreText(r.ControlCard, v); }},
    {"given-name", [](clsLapData& r, std::string_view v) { return StoreText(r.GivenName, v); }},
    {"family-name", [](clsLapData& r, std::string_view v) { return StoreText(r.FamilyName, v); }},
    {"nationality", [](clsLapData& r, std::string_view v) { return StoreText(r.Nationality, v); }},
    {"course", [](clsLapData& r, std::string_view v) { return StoreNumber(r.CourseNum, v); },
     kLeadingDigits},
}};

// Reads a lap, which is a time or a marker; nullopt for other texts.
class LapTextReader {
 public:
  std::optional<DateTime> Read(std::string_view text) const {
    if (const auto time = Duration(text)) return time;
    if (text == kDisqText || text == "X") return kTimeDisq;
    if (text == kSkipText || text == "+" || (!arrow_.empty() && text == arrow_)) return kTimeSkip;
    if (text.empty() || text == "-") return kTimeNoData;
    return std::nullopt;
  }

 private:
  std::string arrow_ = ResourceText("RES_META_RIGHT_ARROW");
};

std::shared_ptr<clsLapData> ReadRunner(Source& source, const LapTextReader& laps) {
  auto runner = std::make_shared<clsLapData>();
  ReadAttributes(source, *runner, kRunnerRules);
  ForEachChild(source.Xml(), [&] {
    if (!source.Xml().IsNamed("leg")) return;
    const IndexedValue leg = ReadIndexed(source, "laptime", "leg", clsLapData::kMostLegs);
    if (leg.index == 0) return;
    const auto lap = laps.Read(leg.value);
    if (!lap) source.Warn("laptime", leg.value, "is not a time; the leg has no data");
    runner->SetLap(leg.index, lap.value_or(kTimeNoData));
  });
  return runner;
}

std::string WithoutLineBreaks(std::string text) {
  std::erase_if(text, [](char c) { return c == '\r' || c == '\n'; });
  return text;
}

NativeClass ReadClass(Source& source, const LapTextReader& laps, std::size_t& runners) {
  ClassAttributes attributes;
  ReadAttributes(source, attributes, kClassRules);
  NativeClass& klass = attributes.result;
  klass.place = source.Place();
  ClassDataInternal::SetClassName(*klass.klass, WithoutLineBreaks(std::move(attributes.name)));
  if (attributes.file_name) klass.klass->SetFileName(*attributes.file_name);
  ForEachChild(source.Xml(), [&] {
    source.Count(runners, kMostRunners, "runners");
    klass.runners.push_back(ReadRunner(source, laps));
  });
  return std::move(klass);
}

std::optional<DateTime> ReadFileDate(Source& source) {
  for (const XmlAttribute& attribute : source.Xml().Attributes()) {
    if (attribute.Name() != "filedate") continue;
    const auto date = ParseDateTime(attribute.Value());
    if (!date && !attribute.Value().empty()) source.Warn("filedate", attribute.Value(), kNoDate);
    return date;
  }
  return std::nullopt;
}

// Reads the children of the root element.
NativeLapFile ReadRoot(Source& source) {
  XmlReader& xml = source.Xml();
  NativeLapFile file;
  const LapTextReader laps;
  std::size_t runners = 0;
  std::size_t classes = 0;
  std::size_t courses = 0;
  file.file_date = ReadFileDate(source);
  ForEachChild(xml, [&] {
    const std::string_view name = xml.LocalName();
    if (name == "event") {
      ReadAttributes(source, file.event, kEventRules);
    } else if (name == "meta") {
      ReadMeta(source, file.meta);
    } else if (name == "courses") {
      ForEachChild(xml, [&] {
        source.Count(courses, kMostCourses, "courses");
        file.courses.push_back(ReadCourse(source));
      });
    } else if (name == "classes") {
      ForEachChild(xml, [&] {
        source.Count(classes, kMostClasses, "classes");
        file.classes.push_back(ReadClass(source, laps, runners));
      });
    }
  });
  return file;
}

}  // namespace

NativeReadResult ReadNativeLapFile(std::string_view bytes, NativeSource kind) {
  XmlReader xml;
  std::optional<XmlError> error =
      kind == NativeSource::kText ? xml.OpenText(bytes) : xml.OpenBytes(bytes);
  if (error) return {{}, {}, std::move(error)};
  Source source(xml);
  NativeLapFile file;
  if (xml.NextChild() && xml.LocalName() != "keltrun") {
    xml.FailAtElement("the root element is <" + std::string(xml.LocalName()) +
                      ">, expected <keltrun>: this is not a native lap file");
  }
  if (!xml.Error()) file = ReadRoot(source);
  xml.SkipTo(0);
  if (xml.Error()) return {{}, {}, xml.Error()};
  return {std::move(file), source.TakeRemarks(), std::nullopt};
}

}  // namespace keltrun
