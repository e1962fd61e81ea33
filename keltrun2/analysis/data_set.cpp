#include "keltrun2/analysis/data_set.h"

#include <utility>

#include "keltrun2/model/class_data_internal.h"
#include "keltrun2/model/event_model.h"
#include "keltrun2/model/process_state.h"

namespace keltrun {

// A class and those of its runners that a data set takes.
struct DataSet::Part {
  std::shared_ptr<clsClassData> klass;
  Runners runners;
  const clsCourseData* course = nullptr;  // that of the runners, if it is not that of the class
};

void DataSet::AddClass(std::string_view ClassName) {
  AddClasses({CurrentModel("DataSet.AddClass")->ClassByName(ClassName)});
}

void DataSet::AddClass(std::int32_t ClassNumber) {
  AddClasses({CurrentModel("DataSet.AddClass")->ClassAt(ClassNumber)});
}

void DataSet::AddCourse(std::int32_t CourseNum) {
  if (CourseNum <= 0) return;
  const auto model = CurrentModel("DataSet.AddCourse");
  AddCourseOf(model->Classes(), CourseNum, *model);
}

void DataSet::AddCourseOf(const std::vector<std::shared_ptr<clsClassData>>& classes,
                          std::int32_t course_number, const EventModel& model) {
  const auto course = model.CourseByNumber(course_number);
  std::vector<Part> parts;
  for (const auto& klass : classes) {
    const bool is_of_class = klass->CourseNum == course_number;
    Part part{klass, {}, is_of_class ? nullptr : course.get()};
    for (const auto& runner : ClassDataInternal::Runners(*klass)) {
      if (ClassDataInternal::CourseOf(*klass, *runner) == course_number) {
        part.runners.push_back(runner);
      }
    }
    if (is_of_class || !part.runners.empty()) parts.push_back(std::move(part));
  }
  AddParts(parts);
}

void DataSet::CheckLap(const clsLapData& /*lap*/) const {}

void DataSet::SetDataSetName(std::string_view Name) {
  name_ = Name;
  DataSetIsMix = true;
  DataSetFileName = SafeFileName(name_);
}

void DataSet::ClearHead() {
  name_.clear();
  DataSetFileName.clear();
  course_ = {};
  DataSetIsMix = false;
  ControlCount = 0;
  Length = 0;
  Climb = 0;
  left_out_ = 0;
}

// Null pointers, for unknown classes, are skipped.
void DataSet::AddClasses(const std::vector<std::shared_ptr<clsClassData>>& classes) {
  std::vector<Part> parts;
  for (const auto& klass : classes) {
    if (!klass) continue;
    Part part{klass, {}};
    for (const auto& runner : ClassDataInternal::Runners(*klass)) {
      if (!ComparesLegs() || ClassDataInternal::CourseOf(*klass, *runner) == klass->CourseNum) {
        part.runners.push_back(runner);
      }
    }
    parts.push_back(std::move(part));
  }
  AddParts(parts);
}

// Adds nothing unless everything can be added.
void DataSet::AddParts(const std::vector<Part>& parts) {
  for (const Part& part : parts) {
    for (const auto& runner : part.runners) CheckLap(*runner);
  }
  for (const Part& part : parts) {
    JoinCourse(part.course != nullptr ? part.course->CourseIndex() : part.klass->CourseNum);
    JoinName(*part.klass);
    for (const auto& runner : part.runners) AddLap(runner);
    if (part.course != nullptr) {
      ControlCount = part.course->ControlCount();
      continue;
    }
    left_out_ += part.klass->LapCount() - static_cast<std::int32_t>(part.runners.size());
    if (part.klass->ControlCount != 0) ControlCount = part.klass->ControlCount;
    if (part.klass->Length != 0) Length = part.klass->Length;
    if (part.klass->Climb != 0) Climb = part.klass->Climb;
  }
}

void DataSet::JoinCourse(std::int32_t course_num) {
  const bool is_first = name_.empty();
  if (!is_first && course_.number != course_num) course_num = Place::kSeveral;
  course_ = {course_num, 0};
}

void DataSet::JoinName(const clsClassData& klass) {
  if (name_.empty()) {
    name_ = klass.ClassName();
    DataSetFileName = klass.FileName();
    CutOffRank = klass.CutOffRank;
    return;
  }
  name_ += "/" + klass.ClassName();
  DataSetFileName += "_" + klass.FileName();
  DataSetIsMix = true;
  CutOffRank = 0;
}

}  // namespace keltrun
