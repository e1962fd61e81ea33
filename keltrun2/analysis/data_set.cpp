#include "keltrun2/analysis/data_set.h"

#include "keltrun2/model/class_data_internal.h"
#include "keltrun2/model/event_model.h"
#include "keltrun2/model/process_state.h"

namespace keltrun {

void DataSet::AddClass(std::string_view ClassName) {
  AddClassObject(CurrentModel()->ClassByName(ClassName));
}

void DataSet::AddClass(std::int32_t ClassNumber) {
  AddClassObject(CurrentModel()->ClassAt(ClassNumber));
}

void DataSet::AddCourse(std::int32_t CourseNum) {
  if (CourseNum <= 0) return;
  const auto model = CurrentModel();
  for (const auto& klass : model->Classes()) {
    if (klass->CourseNum == CourseNum) AddClassObject(klass);
  }
}

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

void DataSet::AddClassObject(const std::shared_ptr<clsClassData>& klass) {
  if (!klass) return;
  JoinName(*klass);
  for (const auto& runner : ClassDataInternal::Runners(*klass)) AddLap(runner);
  if (klass->ControlCount != 0) ControlCount = klass->ControlCount;
  if (klass->Length != 0) Length = klass->Length;
  if (klass->Climb != 0) Climb = klass->Climb;
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
