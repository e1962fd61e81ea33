#include "apps/keltrun2/info_text.h"

#include <algorithm>
#include <map>
#include <unordered_map>

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
  AppendFact(out, "Format", root.FileControl()->LoadedFormat());
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
    codes += course.ControlCodeText(i);
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

// Runners of the class for each course that they had.
std::map<std::int32_t, std::int32_t> RunnersOfCourses(const clsClassData& klass) {
  std::map<std::int32_t, std::int32_t> courses = {{klass.CourseNum, 0}};
  for (std::int32_t i = 1; i <= klass.LapCount(); ++i) {
    const std::int32_t own = klass.LapData(i)->CourseNum;
    ++courses[own != 0 ? own : klass.CourseNum];
  }
  return courses;
}

// The classes of a course, and how many runners they have together.
struct CourseClasses {
  std::vector<std::shared_ptr<clsClassData>> classes;
  std::int32_t runners = 0;

  std::string Names() const {
    std::string names;
    for (const auto& klass : classes) {
      names.append(names.empty() ? "" : "/").append(InTable(klass->ClassName()));
    }
    return names;
  }

 private:
  // A name can be as long as a file, and its class can have thousands of courses.
  static std::string_view InTable(std::string_view name) {
    constexpr std::size_t kMostBytes = 200;
    std::size_t size = std::min(name.size(), kMostBytes);
    while (size < name.size() && (static_cast<unsigned char>(name[size]) & 0xC0) == 0x80) --size;
    return name.substr(0, size);
  }
};

std::unordered_map<std::int32_t, CourseClasses> ClassesOfCourses(const clsKeltrun2& root) {
  std::unordered_map<std::int32_t, CourseClasses> courses;
  for (std::int32_t i = 1; i <= root.ClassCount(); ++i) {
    const auto klass = root.ClassData(i);
    for (const auto& [course, runners] : RunnersOfCourses(*klass)) {
      CourseClasses& found = courses[course];
      found.classes.push_back(klass);
      found.runners += runners;
    }
  }
  return courses;
}

// The choices are resolved to their classes: a comma in a class name breaks the fields of its text.
void AppendChoices(std::string& out, const clsKeltrun2& root) {
  TextTable table({{"Option"}, {"Runners", kRight}, {"Classes"}});
  const auto choices = root.ClassAndCourseList();
  const auto classes_of_courses = ClassesOfCourses(root);
  for (const std::string& text : choices) {
    const ClassAndCourseValue choice = root.SeparateClassAndCourseValue(text);
    if (const auto klass = root.ClassData(choice.ClassIndex)) {
      table.AddRow({"--class", std::to_string(klass->LapCount()), klass->ClassName()});
      continue;
    }
    const auto found = classes_of_courses.find(choice.CourseNum);
    const CourseClasses classes =
        found == classes_of_courses.end() ? CourseClasses() : found->second;
    table.AddRow({"--course " + std::to_string(choice.CourseNum), std::to_string(classes.runners),
                  classes.Names()});
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

// The remarks of one kind: the first of them, and how many there are.
struct RemarkGroup {
  LoadRemark first;
  std::int32_t count = 0;
};

// Groups in the order of their first remarks. A remark without a kind is a group of its own.
std::vector<RemarkGroup> GroupRemarks(const std::vector<LoadRemark>& remarks) {
  std::vector<RemarkGroup> groups;
  std::map<std::string, std::size_t> group_of_kind;
  for (const LoadRemark& remark : remarks) {
    const auto found = group_of_kind.find(remark.Kind);
    if (found != group_of_kind.end()) {
      ++groups[found->second].count;
      continue;
    }
    if (!remark.Kind.empty()) group_of_kind.emplace(remark.Kind, groups.size());
    groups.push_back({remark, 1});
  }
  return groups;
}

void AppendRemarks(std::string& out, const clsKeltrun2& root) {
  const std::vector<LoadRemark>& remarks = root.FileControl()->LoadRemarks();
  if (remarks.empty()) return;
  TextTable table({{"Times", kRight}, {"Line", kRight}, {"What was assumed or left out"}});
  for (const RemarkGroup& group : GroupRemarks(remarks)) {
    table.AddRow({std::to_string(group.count), Known(group.first.Line),
                  group.count > 1 ? group.first.Text + " (the first)" : group.first.Text});
  }
  AppendSection(out, "Remarks", static_cast<std::int32_t>(remarks.size()), table);
}

void AppendOddities(std::string& out, const clsKeltrun2& root) {
  const auto remarks = root.EventRemarks();
  if (remarks.empty()) return;
  out += "\nOddities: " + std::to_string(remarks.size()) + "\n";
  for (const std::string& remark : remarks) out += "  " + Printable(remark) + "\n";
}

}  // namespace

std::string InfoText(const clsKeltrun2& root) {
  std::string out;
  AppendHead(out, root);
  AppendClasses(out, root);
  AppendCourses(out, root);
  AppendSegments(out, root);
  AppendChoices(out, root);
  AppendRemarks(out, root);
  AppendOddities(out, root);
  return out;
}

}  // namespace keltrun::cli
