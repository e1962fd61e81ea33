#include "keltrun2/analysis/data_set.h"

#include <algorithm>
#include <iterator>

#include "keltrun2/model/class_data_internal.h"
#include "keltrun2/model/event_model.h"
#include "keltrun2/model/process_state.h"

namespace keltrun {

void DataSet::AddClass(std::string_view ClassName) {
  AddClasses({CurrentModel("DataSet.AddClass")->ClassByName(ClassName)});
}

void DataSet::AddClass(std::int32_t ClassNumber) {
  AddClasses({CurrentModel("DataSet.AddClass")->ClassAt(ClassNumber)});
}

void DataSet::AddCourse(std::int32_t CourseNum) {
  if (CourseNum <= 0) return;
  const auto model = CurrentModel("DataSet.AddCourse");
  std::vector<std::shared_ptr<clsClassData>> classes;
  std::copy_if(model->Classes().begin(), model->Classes().end(), std::back_inserter(classes),
               [&](const auto& klass) { return klass->CourseNum == CourseNum; });
  AddClasses(classes);
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
  DataSetIsMix = false;
  ControlCount = 0;
  Length = 0;
  Climb = 0;
}

// Adds nothing unless everything can be added. Null pointers, for unknown classes, are skipped.
void DataSet::AddClasses(const std::vector<std::shared_ptr<clsClassData>>& classes) {
  for (const auto& klass : classes) {
    if (!klass) continue;
    for (const auto& runner : ClassDataInternal::Runners(*klass)) CheckLap(*runner);
  }
  for (const auto& klass : classes) {
    if (!klass) continue;
    JoinName(*klass);
    for (const auto& runner : ClassDataInternal::Runners(*klass)) AddLap(runner);
    if (klass->ControlCount != 0) ControlCount = klass->ControlCount;
    if (klass->Length != 0) Length = klass->Length;
    if (klass->Climb != 0) Climb = klass->Climb;
  }
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
