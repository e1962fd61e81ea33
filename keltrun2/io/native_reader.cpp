#include "keltrun2/io/native_reader.h"

#include <algorithm>
#include <array>

#include "keltrun2/config/settings.h"
#include "keltrun2/io/limits.h"
#include "keltrun2/model/class_data_internal.h"
#include "keltrun2/model/time_text.h"
#include "keltrun2/platform/encodings.h"
#include "keltrun2/text/file_names.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/numbers.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

// One attribute of an element and where its (trimmed) value goes.
template <typename Target>
struct AttributeRule {
  std::string_view name;
  void (*store)(Target& target, std::string_view value);
};

template <typename Target, std::size_t N>
void ReadAttributes(const pugi::xml_node& element, Target& target,
                    const std::array<AttributeRule<Target>, N>& rules) {
  for (pugi::xml_attribute attribute = element.first_attribute(); attribute;
       attribute = attribute.next_attribute()) {
    const std::string_view name = attribute.name();
    for (const AttributeRule<Target>& rule : rules) {
      if (rule.name != name) continue;
      rule.store(target, TrimSpaces(attribute.value()));
      break;
    }
  }
}

template <typename Visit>
void ForEachElement(const pugi::xml_node& parent, Visit visit) {
  for (pugi::xml_node child = parent.first_child(); child; child = child.next_sibling()) {
    if (child.type() == pugi::node_element) visit(child);
  }
}

// File names of classes and events are compared and kept in half width and lower case.
std::string FoldFileName(std::string_view name) {
  return LowerAscii(ToHalfWidth(name, {.Symbols = false}));
}

// --- event and meta ---

constexpr std::array<AttributeRule<clsEventData>, 6> kEventRules = {{
    {"name", [](clsEventData& e, std::string_view v) { e.EventName = v; }},
    {"date",
     [](clsEventData& e, std::string_view v) {
       if (const auto date = ParseDateTime(v)) e.EventDate()->SetValue(*date);
     }},
    {"terrain", [](clsEventData& e, std::string_view v) { e.Terrain = v; }},
    {"memo", [](clsEventData& e, std::string_view v) { e.Memo = v; }},
    {"homepage", [](clsEventData& e, std::string_view v) { e.OfficialSite = v; }},
    {"filename",
     [](clsEventData& e, std::string_view v) { e.FileName = CleanFileName(FoldFileName(v)); }},
}};

struct MetaEntry {
  std::string type, application, username;
  DateTime date = 0;
};

constexpr std::array<AttributeRule<MetaEntry>, 4> kMetaRules = {{
    {"type", [](MetaEntry& m, std::string_view v) { m.type = v; }},
    {"application", [](MetaEntry& m, std::string_view v) { m.application = v; }},
    {"date",
     [](MetaEntry& m, std::string_view v) { m.date = ParseDateTime(ToHalfWidth(v)).value_or(0); }},
    {"username", [](MetaEntry& m, std::string_view v) { m.username = v; }},
}};

void ReadMeta(const pugi::xml_node& element, clsMetaData& meta) {
  ForEachElement(element, [&](const pugi::xml_node& child) {
    MetaEntry entry;
    ReadAttributes(child, entry, kMetaRules);
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

constexpr std::array<AttributeRule<clsCourseData>, 2> kCourseRules = {{
    {"number", [](clsCourseData& c, std::string_view v) { c.SetCourseIndex(LeadingLong(v)); }},
    {"controls",
     [](clsCourseData& c, std::string_view v) {
       c.SetControlCount(std::clamp(LeadingLong(v), 0, clsCourseData::kMostControls));
     }},
}};

// A numbered value of an element: a leg or a control. Without an index it belongs nowhere.
struct IndexedValue {
  std::int32_t index = -1;
  std::string_view value;
};

IndexedValue ReadIndexed(const pugi::xml_node& element, std::string_view value_name) {
  IndexedValue result;
  for (pugi::xml_attribute attribute = element.first_attribute(); attribute;
       attribute = attribute.next_attribute()) {
    const std::string_view name = attribute.name();
    if (name == "index") {
      result.index = LeadingLong(attribute.value());
    } else if (name == value_name) {
      result.value = attribute.value();
    }
  }
  return result;
}

std::shared_ptr<clsCourseData> ReadCourse(const pugi::xml_node& element) {
  auto course = std::make_shared<clsCourseData>();
  ReadAttributes(element, *course, kCourseRules);
  ForEachElement(element, [&](const pugi::xml_node& child) {
    const IndexedValue control = ReadIndexed(child, "unit-number");
    if (control.index < 0 || control.index > clsCourseData::kMostControls) return;
    course->SetControlNum(control.index, LeadingLong(control.value));
  });
  return course;
}

// --- classes and runners ---

struct ClassAttributes {
  NativeClass result{std::make_shared<clsClassData>(), {}};
  std::string name;
  std::optional<std::string> file_name;
};

constexpr std::array<AttributeRule<ClassAttributes>, 7> kClassRules = {{
    {"name", [](ClassAttributes& c, std::string_view v) { c.name = ThroughShiftJis(v); }},
    {"filename", [](ClassAttributes& c, std::string_view v) { c.file_name = FoldFileName(v); }},
    {"length",
     [](ClassAttributes& c, std::string_view v) { c.result.Class->Length = LeadingLong(v); }},
    {"climb",
     [](ClassAttributes& c, std::string_view v) { c.result.Class->Climb = LeadingLong(v); }},
    {"controls",
     [](ClassAttributes& c, std::string_view v) {
       c.result.Class->ControlCount = std::clamp(LeadingLong(v), 0, kMostClassControls);
     }},
    {"course",
     [](ClassAttributes& c, std::string_view v) { c.result.Class->CourseNum = LeadingLong(v); }},
    {"cutoffrank",
     [](ClassAttributes& c, std::string_view v) { c.result.Class->CutOffRank = LeadingLong(v); }},
}};

constexpr std::array<AttributeRule<clsLapData>, 12> kRunnerRules = {{
    {"name", [](clsLapData& r, std::string_view v) { r.RunnerName = v; }},
    {"id", [](clsLapData& r, std::string_view v) { r.ID = LeadingLong(v); }},
    {"ecard", [](clsLapData& r, std::string_view v) { r.Ecard = LeadingLong(v); }},
    {"seed", [](clsLapData& r, std::string_view v) { r.Seed = v; }},
    {"club", [](clsLapData& r, std::string_view v) { r.ClubName = v; }},
    {"start",
     [](clsLapData& r, std::string_view v) {
       const auto time = ParseDateTime(v);
       if (time && *time >= 0 && *time < 1) r.StartTime()->SetValue(*time);
     }},
    {"result", [](clsLapData& r, std::string_view v) { r.SetResult(v); }},
    {"rank", [](clsLapData& r, std::string_view v) { r.Rank = v; }},
    {"sex", [](clsLapData& r, std::string_view v) { r.Sex = v; }},
    {"competitor-id", [](clsLapData& r, std::string_view v) { r.CompetitorId = v; }},
    {"rankfix", [](clsLapData& r, std::string_view v) { r.RankFix = v; }},
    {"age", [](clsLapData& r, std::string_view v) { r.Age = v; }},
}};

// A lap as a time or marker. Times with a fraction and of 24 hours and more are times too: a file
// that holds one must not lose it. Dates and negative times are no laps.
class LapTextReader {
 public:
  DateTime Read(std::string_view text) const {
    if (text.find_first_of("/-") == std::string_view::npos) {
      if (const auto time = ParseFinishTime(text)) return *time;
      if (IsTimeText(text)) return ParseSignedTime(text, false, false, 0);
    }
    if (text == kDisqText || text == "X") return kTimeDisq;
    if (text == kSkipText || text == "+" || (!arrow_.empty() && text == arrow_)) return kTimeSkip;
    return kTimeNoData;
  }

 private:
  std::string arrow_ = ResourceText("RES_META_RIGHT_ARROW");
};

std::shared_ptr<clsLapData> ReadRunner(const pugi::xml_node& element, const LapTextReader& laps) {
  auto runner = std::make_shared<clsLapData>();
  ReadAttributes(element, *runner, kRunnerRules);
  ForEachElement(element, [&](const pugi::xml_node& child) {
    if (LocalName(child) != "leg") return;
    const IndexedValue leg = ReadIndexed(child, "laptime");
    if (leg.index < 0 || leg.index > clsLapData::kMostLegs) return;
    runner->SetLap(leg.index, laps.Read(leg.value));
  });
  return runner;
}

std::string WithoutLineBreaks(std::string text) {
  std::erase_if(text, [](char c) { return c == '\r' || c == '\n'; });
  return text;
}

NativeClass ReadClass(const pugi::xml_node& element, const LapTextReader& laps) {
  ClassAttributes attributes;
  ReadAttributes(element, attributes, kClassRules);
  NativeClass& klass = attributes.result;
  ClassDataInternal::SetClassName(*klass.Class, WithoutLineBreaks(std::move(attributes.name)));
  if (attributes.file_name) klass.Class->SetFileName(*attributes.file_name);
  ForEachElement(element, [&](const pugi::xml_node& child) {
    klass.Runners.push_back(ReadRunner(child, laps));
  });
  return std::move(klass);
}

std::size_t CountChildren(const pugi::xml_node& parent) {
  std::size_t count = 0;
  ForEachElement(parent, [&](const pugi::xml_node&) { ++count; });
  return count;
}

// "" when the document is of a size that an event can have.
std::string TooLarge(const pugi::xml_node& root) {
  std::size_t runners = 0;
  std::size_t classes = 0;
  std::size_t courses = 0;
  ForEachElement(root, [&](const pugi::xml_node& child) {
    const std::string_view name = LocalName(child);
    if (name == "courses") courses += CountChildren(child);
    if (name != "classes") return;
    classes += CountChildren(child);
    ForEachElement(child, [&](const pugi::xml_node& klass) { runners += CountChildren(klass); });
  });
  const auto message = [](std::size_t count, std::size_t most, const char* things) {
    return std::to_string(count) + " " + things + ", more than " + std::to_string(most);
  };
  if (runners > kMostRunners) return message(runners, kMostRunners, "runners");
  if (classes > kMostClasses) return message(classes, kMostClasses, "classes");
  if (courses > kMostCourses) return message(courses, kMostCourses, "courses");
  return "";
}

NativeLapFile ReadDocument(const pugi::xml_node& root) {
  NativeLapFile file;
  const LapTextReader laps;
  file.FileDate = ParseDateTime(root.attribute("filedate").value());
  ForEachElement(root, [&](const pugi::xml_node& child) {
    const std::string_view name = LocalName(child);
    if (name == "event") {
      ReadAttributes(child, file.Event, kEventRules);
    } else if (name == "meta") {
      ReadMeta(child, file.Meta);
    } else if (name == "courses") {
      ForEachElement(child, [&](const auto& node) { file.Courses.push_back(ReadCourse(node)); });
    } else if (name == "classes") {
      ForEachElement(child,
                     [&](const auto& node) { file.Classes.push_back(ReadClass(node, laps)); });
    }
  });
  return file;
}

}  // namespace

NativeReadResult ReadNativeLapFile(std::string_view source, NativeSource kind) {
  XmlDocument document;
  std::optional<XmlError> error =
      kind == NativeSource::kText ? document.LoadText(source) : document.LoadBytes(source);
  if (error) return {{}, std::move(error)};
  const pugi::xml_node root = document.Root();
  if (LocalName(root) != "keltrun") {
    return {{},
            document.ErrorAtRoot("the root element is <" + std::string(root.name()) +
                                 ">, expected <keltrun>: this is no native lap file")};
  }
  const std::string too_large = TooLarge(root);
  if (!too_large.empty()) return {{}, document.ErrorAtRoot(too_large)};
  return {ReadDocument(root), std::nullopt};
}

}  // namespace keltrun
