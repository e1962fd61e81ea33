#include "apps/keltrun2/info_text.h"

#include "apps/keltrun2/display_text.h"

namespace keltrun::cli {
namespace {

constexpr std::string_view kMomentPattern = "yyyy-mm-dd hh:nn:ss";
constexpr TextTable::Align kRight = TextTable::Align::kRight;

std::string Moment(DateTime value) {
  return value > 0 ? FormatDateTime(value, kMomentPattern) : "";
}

// Words that are not empty, with a blank between them.
std::string Words(std::initializer_list<std::string> words) {
  std::string out;
  for (const std::string& word : words) {
    if (!out.empty() && !word.empty()) out += ' ';
    out += word;
  }
  return out;
}

std::string InBrackets(const std::string& text) { return text.empty() ? "" : "(" + text + ")"; }

// In the numbers of a class 0 means unknown.
std::string Known(std::int32_t number, const char* unit = "") {
  return number == 0 ? "-" : std::to_string(number) + unit;
}

void AppendHead(std::string& out, const clsKeltrun2& root) {
  const auto event = root.EventData();
  const auto meta = root.MetaData();
  AppendFact(out, "Event", event->ToString());
  AppendFact(out, "Memo", event->Memo);
  AppendFact(out, "Web site", event->OfficialSite);
  AppendFact(out, "File", Words({root.FileName(), InBrackets(Moment(root.FileDate()))}));
  AppendFact(
      out, "Created",
      Words({Moment(meta->CreateDate), meta->CreateApplication, InBrackets(meta->CreateUserName)}));
  AppendFact(out, "Updated",
             Words({Moment(meta->LastUpdateDate), meta->LastUpdateApplication,
                    InBrackets(meta->LastUpdateUserName)}));
}

void AppendSection(std::string& out, const std::string& title, std::int32_t count,
                   const TextTable& table) {
  out += "\n" + title + ": " + std::to_string(count) + "\n";
  if (count > 0) table.AppendTo(out);
}

void AppendClasses(std::string& out, const clsKeltrun2& root) {
  TextTable table({{"Name"},
                   {"Runners", kRight},
                   {"Controls", kRight},
                   {"Length", kRight},
                   {"Climb", kRight},
                   {"Course", kRight},
                   {"Qualify", kRight},
                   {"Files"}});
  for (std::int32_t i = 1; i <= root.ClassCount(); ++i) {
    const auto klass = root.ClassData(i);
    table.AddRow({klass->ClassName(), std::to_string(klass->LapCount()), Known(klass->ControlCount),
                  Known(klass->Length, " m"), Known(klass->Climb, " m"), Known(klass->CourseNum),
                  Known(klass->CutOffRank), klass->FileName()});
  }
  AppendSection(out, "Classes", root.ClassCount(), table);
}

std::string ControlCodes(const clsCourseData& course) {
  std::string codes;
  for (std::int32_t i = 1; i <= course.ControlCount(); ++i) {
    if (i > 1) codes += ' ';
    codes += std::to_string(course.ControlNum(i));
  }
  return codes;
}

void AppendCourses(std::string& out, const clsKeltrun2& root) {
  TextTable table({{"Number", kRight}, {"Controls", kRight}, {"Codes"}});
  for (std::int32_t i = 1; i <= root.CourseCount(); ++i) {
    const auto course = root.CourseData(i);
    table.AddRow({std::to_string(course->CourseIndex()), std::to_string(course->ControlCount()),
                  ControlCodes(*course)});
  }
  AppendSection(out, "Courses", root.CourseCount(), table);
}

// The classes of a course, and how many runners they have together.
struct CourseClasses {
  std::string names;
  std::int32_t runners = 0;
};

CourseClasses ClassesOf(const clsKeltrun2& root, std::int32_t course) {
  CourseClasses found;
  for (std::int32_t i = 1; i <= root.ClassCount(); ++i) {
    const auto klass = root.ClassData(i);
    if (klass->CourseNum != course) continue;
    found.names += (found.names.empty() ? "" : "/") + klass->ClassName();
    found.runners += klass->LapCount();
  }
  return found;
}

// The choices are resolved to their classes: a comma in a class name breaks the fields of its text.
void AppendChoices(std::string& out, const clsKeltrun2& root) {
  TextTable table({{"Option"}, {"Runners", kRight}, {"Classes"}});
  const auto choices = root.ClassAndCourseList();
  for (const std::string& text : choices) {
    const ClassAndCourseValue choice = root.SeparateClassAndCourseValue(text);
    if (const auto klass = root.ClassData(choice.ClassIndex)) {
      table.AddRow({"--class", std::to_string(klass->LapCount()), klass->ClassName()});
      continue;
    }
    const CourseClasses classes = ClassesOf(root, choice.CourseNum);
    table.AddRow({"--course " + std::to_string(choice.CourseNum), std::to_string(classes.runners),
                  classes.names});
  }
  AppendSection(out, "To analyze", static_cast<std::int32_t>(choices.size()), table);
}

void AppendSegments(std::string& out, const clsKeltrun2& root) {
  if (root.SegmentCount() == 0) return;
  TextTable table({{"Segment"}, {"Controls", kRight}, {"Classes, and where it begins"}});
  for (std::int32_t i = 1; i <= root.SegmentCount(); ++i) {
    const auto segment = root.SegmentData(i);
    std::string classes;
    for (const std::string& target : segment->TargetClassList()) {
      classes += (classes.empty() ? "" : " ") + target;
    }
    table.AddRow({segment->SegmentName(), std::to_string(segment->ControlCount()), classes});
  }
  AppendSection(out, "Segments", root.SegmentCount(), table);
}

}  // namespace

std::string InfoText(const clsKeltrun2& root) {
  std::string out;
  AppendHead(out, root);
  AppendClasses(out, root);
  AppendCourses(out, root);
  AppendSegments(out, root);
  AppendChoices(out, root);
  return out;
}

}  // namespace keltrun::cli
