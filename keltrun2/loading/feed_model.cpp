#include "keltrun2/loading/feed_model.h"

#include <algorithm>
#include <map>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "keltrun2/config/settings.h"
#include "keltrun2/model/class_data_internal.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

template <typename T>
void SetIfGiven(T& target, const std::optional<T>& value) {
  if (value) target = *value;
}

void ApplyEventName(clsEventData& event, const LapRecords& records, EventNameRule rule,
                    KrLapFileLoadModeCosnt mode) {
  if (rule == EventNameRule::kNormalLoad) {
    if (mode == KR_LOADMODE_NORMAL) SetIfGiven(event.EventName, records.event_name);
    return;
  }
  if (rule == EventNameRule::kAlways || event.EventName.empty()) {
    SetIfGiven(event.EventName, records.event_name);
  }
  if (event.EventName.empty()) event.EventName = ResourceText("RES_META_NO_EVENT_NAME");
}

void ApplyHeader(EventModel& model, const LapRecords& records, EventNameRule rule,
                 KrLapFileLoadModeCosnt mode) {
  clsEventData& event = *model.Event;
  ApplyEventName(event, records, rule, mode);
  if (mode == KR_LOADMODE_NORMAL) {
    if (records.event_date) event.EventDate()->SetValue(*records.event_date);
    SetIfGiven(event.Terrain, records.terrain);
    SetIfGiven(event.Memo, records.memo);
    SetIfGiven(event.OfficialSite, records.official_site);
    SetIfGiven(event.FileName, records.event_file_name);
  }
  SetIfGiven(model.Meta->CreateApplication, records.create_application);
  SetIfGiven(model.Meta->CreateDate, records.create_date);
}

// The numbers that the event gives to codes that are no numbers. A file has its own.
class TextCodes {
 public:
  TextCodes(const EventModel& model, const std::vector<std::string>& texts_of_file)
      : texts_of_file_(texts_of_file) {
    for (const auto& course : model.Courses()) See(*course);
    for (const std::string& text : texts_of_file) {
      const auto [found, added] = number_of_text_.emplace(text, next_);
      if (added) ++next_;
      numbers_of_file_.push_back(found->second);
    }
  }

  // The number in the event of a code of the file.
  std::int32_t NumberOf(std::int32_t code) const {
    return IsText(code) ? numbers_of_file_[IndexOf(code)] : code;
  }
  // The text of a code of the file; empty when it is a number.
  std::string_view TextOf(std::int32_t code) const {
    return IsText(code) ? std::string_view(texts_of_file_[IndexOf(code)]) : std::string_view();
  }

 private:
  static std::size_t IndexOf(std::int32_t code) {
    return static_cast<std::size_t>(code - kFirstTextCode);
  }
  bool IsText(std::int32_t code) const {
    return code >= kFirstTextCode && IndexOf(code) < texts_of_file_.size();
  }

  void See(const clsCourseData& course) {
    const std::int32_t held = std::min(course.ControlCount(), clsCourseData::kMostControls);
    for (std::int32_t i = 1; i <= held; ++i) {
      const std::int32_t number = course.ControlNum(i);
      if (course.HasCodeText(i)) next_ = std::max(next_, number + 1);
      if (course.HasCodeText(i)) number_of_text_.emplace(course.ControlCodeText(i), number);
    }
  }

  const std::vector<std::string>& texts_of_file_;
  std::vector<std::int32_t> numbers_of_file_;
  std::unordered_map<std::string, std::int32_t> number_of_text_;
  std::int32_t next_ = kFirstTextCode;
};

// Finds the courses of the model by their codes.
class CourseFinder {
 public:
  CourseFinder(EventModel& model, const std::vector<std::string>& texts_of_file)
      : model_(model), texts_(model, texts_of_file) {
    for (const auto& course : model.Courses()) {
      highest_ = std::max(highest_, course->CourseIndex());
      if (course->ControlCount() > clsCourseData::kMostControls) continue;
      std::vector<std::int32_t> codes;
      for (std::int32_t i = 1; i <= course->ControlCount(); ++i) {
        codes.push_back(course->ControlNum(i));
      }
      number_of_codes_.emplace(std::move(codes), course->CourseIndex());
    }
  }

  // The number of the first course with these codes of the file, which is added if necessary.
  std::int32_t NumberOf(const std::vector<std::int32_t>& codes) {
    std::vector<std::int32_t> numbers;
    for (const std::int32_t code : codes) numbers.push_back(texts_.NumberOf(code));
    const auto [found, added] = number_of_codes_.emplace(std::move(numbers), highest_ + 1);
    if (added) MakeCourse(++highest_, codes);
    return found->second;
  }

 private:
  void MakeCourse(std::int32_t number, const std::vector<std::int32_t>& codes) {
    const auto course = model_.AddCourse(number);
    course->SetControlCount(static_cast<std::int32_t>(codes.size()));
    std::int32_t index = 0;
    for (const std::int32_t code : codes) {
      course->SetControlNum(++index, texts_.NumberOf(code));
      course->SetControlCodeText(index, texts_.TextOf(code));
    }
  }

  EventModel& model_;
  const TextCodes texts_;
  std::int32_t highest_ = 0;
  std::map<std::vector<std::int32_t>, std::int32_t> number_of_codes_;
};

// A class without controls also has all its codes, unless the file says its course or its runners
// show that it has controls after all.
bool HasCodes(const ClassRecords& records) {
  if (!records.codes.empty()) return true;
  return records.control_count == 0 && records.legs_seen == 0 && !records.course_num;
}

void ApplyClass(CourseFinder& courses, clsClassData& klass, const ClassRecords& records) {
  SetIfGiven(klass.Length, records.length);
  SetIfGiven(klass.Climb, records.climb);
  SetIfGiven(klass.ControlCount, records.control_count);
  SetIfGiven(klass.CourseNum, records.course_num);
  klass.ControlCount = std::max(klass.ControlCount, records.legs_seen - 1);
  if (HasCodes(records)) klass.CourseNum = courses.NumberOf(records.codes);
}

// Gives the runners who had another course than their class the number of theirs.
void ApplyOtherCourses(CourseFinder& courses, const ClassRecords& records) {
  std::vector<std::int32_t> numbers = {0};
  for (const auto& codes : records.other_codes) numbers.push_back(courses.NumberOf(codes));
  for (std::size_t i = 0; i < records.list_of_runner.size(); ++i) {
    records.runners[i]->CourseNum = numbers[records.list_of_runner[i]];
  }
}

void AddRunners(clsClassData& klass, const std::vector<std::shared_ptr<clsLapData>>& runners,
                KrLapFileLoadModeCosnt mode) {
  LapMerger merger(klass, mode);
  for (const auto& runner : runners) merger.Add(runner);
}

// Adds remarks on classes that become one although their names differ, or that are twice in a file.
// A class of the file that has exactly the name of one in the event is meant to join it.
class ClassJoins {
 public:
  explicit ClassJoins(RemarkList& remarks) : remarks_(remarks) {}

  // Notes a class of the file whose runners go to `klass`.
  void See(std::string_view name, const clsClassData& klass, bool existed,
           const ElementPlace& place = {}) {
    const bool of_file = !seen_.insert(&klass).second;
    if (!existed || (!of_file && klass.ClassName() == name)) return;
    remarks_.Add(RemarkSeverity::kWarning, place.line, place.column, "class", name,
                 "is merged with the class \"" + klass.ClassName() +
                     "\" that was there before: the runners of both are in it");
  }

 private:
  RemarkList& remarks_;
  std::unordered_set<const clsClassData*> seen_;
};

bool HaveEqualControls(const clsCourseData& a, const clsCourseData& b) {
  if (a.ControlCount() != b.ControlCount()) return false;
  const std::int32_t held = std::min(a.ControlCount(), clsCourseData::kMostControls);
  for (std::int32_t i = 1; i <= held; ++i) {
    if (a.ControlNum(i) != b.ControlNum(i)) return false;
  }
  return true;
}

void AddCourses(EventModel& model, const std::vector<NativeCourse>& courses, RemarkList& remarks) {
  for (const auto& [course, place] : courses) {
    if (model.AddCourseObject(course)) continue;
    if (HaveEqualControls(*model.CourseByNumber(course->CourseIndex()), *course)) continue;
    remarks.Add(RemarkSeverity::kWarning, place.line, place.column, "course",
                std::to_string(course->CourseIndex()),
                "a course with this number but other controls was there before and is kept");
  }
}

}  // namespace

void FeedModel(EventModel& model, NativeLapFile& file, KrLapFileLoadModeCosnt mode,
               ProgressReport& progress, RemarkList& remarks) {
  if (file.file_date) model.FileDate = *file.file_date;
  if (mode == KR_LOADMODE_NORMAL) {
    // The event and metadata objects stay the same, because a host can keep them.
    *model.Event = std::move(file.event);
    *model.Meta = std::move(file.meta);
  }
  AddCourses(model, file.courses, remarks);
  ClassJoins joins(remarks);
  std::int64_t done = 0;
  for (const NativeClass& read : file.classes) {
    progress.Advance(++done, static_cast<std::int64_t>(file.classes.size()));
    const auto existing = model.ClassByName(read.klass->ClassName());
    const auto& klass = existing ? existing : read.klass;
    if (!existing) model.AddClassObject(klass);
    joins.See(read.klass->ClassName(), *klass, existing != nullptr, read.place);
    AddRunners(*klass, read.runners, mode);
  }
}

void FeedModel(EventModel& model, const LapRecords& records, EventNameRule rule,
               KrLapFileLoadModeCosnt mode, ProgressReport& progress, RemarkList& remarks) {
  ApplyHeader(model, records, rule, mode);
  CourseFinder courses(model, records.code_texts);
  ClassJoins joins(remarks);
  std::int64_t done = 0;
  for (const ClassRecords& read : records.classes) {
    progress.Advance(++done, static_cast<std::int64_t>(records.classes.size()));
    const bool existed = model.ClassByName(read.name) != nullptr;
    const auto klass = model.AddClass(read.name);
    joins.See(read.name, *klass, existed);
    ApplyClass(courses, *klass, read);
    ApplyOtherCourses(courses, read);
    AddRunners(*klass, read.runners, mode);
  }
}

void ApplyUpdates(EventModel& model, const std::vector<RunnerUpdate>& updates,
                  KrLapFileLoadModeCosnt mode, RemarkList& remarks) {
  const bool overwrite = (mode & KR_LOADMODE_PRIORITY_NEWDATA) != 0;
  std::unordered_multimap<std::string, std::shared_ptr<clsLapData>> runners;
  for (const auto& klass : model.Classes()) {
    for (const auto& runner : ClassDataInternal::Runners(*klass)) {
      runners.emplace(NormalizeName(runner->RunnerName), runner);
    }
  }
  std::size_t unknown = 0;
  std::string_view first_unknown;
  for (const RunnerUpdate& update : updates) {
    const auto [begin, end] = runners.equal_range(NormalizeName(update.name));
    if (begin == end && unknown++ == 0) first_unknown = update.name;
    for (auto found = begin; found != end; ++found) {
      clsLapData& runner = *found->second;
      if (runner.ClubName.empty() || overwrite) runner.ClubName = update.club;
      if (runner.Sex.empty()) runner.Sex = update.sex;
    }
  }
  if (unknown == 0) return;
  remarks.Add(RemarkSeverity::kWarning, 0, 0, "name", first_unknown,
              unknown == 1 ? "no runner of the event has this name"
                           : "the first of " + std::to_string(unknown) +
                                 " lines with a name that no runner of the event has");
}

}  // namespace keltrun
