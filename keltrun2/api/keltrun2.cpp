#include "keltrun2/api/keltrun2.h"

#include <cmath>

#include "keltrun2/analysis/clock_check.h"
#include "keltrun2/analysis/estimate_internal.h"
#include "keltrun2/analysis/event_remarks.h"
#include "keltrun2/analysis/other_courses.h"
#include "keltrun2/analysis/segment_sets.h"
#include "keltrun2/base/automation_error.h"
#include "keltrun2/base/version.h"
#include "keltrun2/config/settings.h"
#include "keltrun2/model/event_model.h"
#include "keltrun2/model/process_state.h"
#include "keltrun2/text/numbers.h"
#include "keltrun2/text/split.h"

namespace keltrun {

clsKeltrun2::clsKeltrun2() : model_(std::make_shared<EventModel>()) {
  LoadSettings();
  SetCurrentModel(model_);
  file_control_ = std::make_shared<clsFileControl>();
  config_control_ = std::make_shared<clsConfigControl>();
  graphic_control_ = std::make_shared<clsGraphicControl>(config_control_);
  html_control_ = std::make_shared<clsHtmlControl>();
  text_control_ = std::make_shared<clsTextControl>();
  Clear();
}

clsKeltrun2::~clsKeltrun2() = default;

const std::string& clsKeltrun2::FileName() const { return model_->FileName; }
void clsKeltrun2::SetFileName(std::string_view FileName) { model_->FileName = FileName; }
DateTime clsKeltrun2::FileDate() const { return model_->FileDate; }
void clsKeltrun2::SetFileDate(DateTime FileDate) { model_->FileDate = FileDate; }

std::string clsKeltrun2::ErrorComment() const { return ErrorText(); }

std::shared_ptr<clsAnalyzer> clsKeltrun2::NewAnalyzer() const {
  return std::make_shared<clsAnalyzer>();
}

std::shared_ptr<clsResultsHolder> clsKeltrun2::NewResultsHolder() const {
  return std::make_shared<clsResultsHolder>();
}

std::vector<std::shared_ptr<clsAnalyzer>> clsKeltrun2::NewAnalyzersOfOtherCourses(
    std::int32_t ClassNum) const {
  const auto klass = ClassData(ClassNum);
  return klass ? AnalyzersOfOtherCourses(*model_, *klass)
               : std::vector<std::shared_ptr<clsAnalyzer>>();
}

std::shared_ptr<clsEstimate> clsKeltrun2::NewEstimate(std::string_view UntimedLegs) const {
  return EstimateInternal::Make(*model_,
                                CheckedUntimedLegs(UntimedLegs, "clsKeltrun2.NewEstimate"));
}

std::vector<std::string> clsKeltrun2::EventRemarks() const {
  return keltrun::EventRemarks(*model_);
}

std::int32_t clsKeltrun2::ShiftClock(std::int32_t ControlCode, double Seconds) {
  if (!(std::fabs(Seconds) < kSecondsPerDay)) {
    throw AutomationError(KR_ERROR_INVALID_CALL,
                          "clsKeltrun2.ShiftClock: the time must be below a day");
  }
  return keltrun::ShiftClock(*model_, ControlCode, Seconds);
}

std::shared_ptr<clsEventData> clsKeltrun2::EventData() const { return model_->Event; }
std::shared_ptr<clsMetaData> clsKeltrun2::MetaData() const { return model_->Meta; }

std::shared_ptr<clsClassData> clsKeltrun2::AddClass(std::string_view ClassName) {
  return model_->AddClass(ClassName);
}

void clsKeltrun2::RemoveClass(std::string_view ClassName) { model_->RemoveClass(ClassName); }

void clsKeltrun2::RenameClass(std::string_view OldName, std::string_view NewName) {
  model_->RenameClass(OldName, NewName);
}

std::shared_ptr<clsClassData> clsKeltrun2::ClassData(std::string_view ClassID) const {
  return model_->ClassByName(ClassID);
}

std::shared_ptr<clsClassData> clsKeltrun2::ClassData(std::int32_t ClassID) const {
  return model_->ClassAt(ClassID);
}

std::int32_t clsKeltrun2::ClassCount() const { return model_->ClassCount(); }

bool clsKeltrun2::IsClassExists(std::string_view ClassName) const {
  return model_->ClassByName(ClassName) != nullptr;
}

std::shared_ptr<clsCourseData> clsKeltrun2::AddCourse(std::int32_t CourseIndex) {
  return model_->AddCourse(CourseIndex);
}

void clsKeltrun2::RemoveCourse(std::int32_t CourseIndex) { model_->RemoveCourse(CourseIndex); }

std::shared_ptr<clsCourseData> clsKeltrun2::CourseData(std::string_view CourseID) const {
  return model_->CourseByKey(CourseID);
}

std::shared_ptr<clsCourseData> clsKeltrun2::CourseData(std::int32_t CourseID) const {
  return model_->CourseAt(CourseID);
}

std::int32_t clsKeltrun2::CourseCount() const { return model_->CourseCount(); }

void clsKeltrun2::ClearCourse() { model_->ClearCourse(); }

bool clsKeltrun2::IsCourseExists(std::int32_t CourseIndex) const {
  return model_->CourseByNumber(CourseIndex) != nullptr;
}

std::vector<std::string> clsKeltrun2::ClassAndCourseList() const {
  std::vector<std::string> list;
  for (const ClassAndCourseChoice& choice :
       CurrentModel("clsKeltrun2.ClassAndCourseList")->Choices()) {
    list.push_back(ToString(choice));
  }
  return list;
}

ClassAndCourseValue clsKeltrun2::SeparateClassAndCourseValue(std::string_view Expression) const {
  const CclsSplit fields(",", Expression);
  ClassAndCourseValue value;
  value.ClassIndex = NumericLong(fields.Value(0));
  value.CourseNum = NumericLong(fields.Value(1));
  value.ValueName = fields.Value(2);
  value.FileName = fields.Value(3);
  value.RunnerCount = NumericLong(fields.Value(4));
  return value;
}

void clsKeltrun2::SortLap() { model_->SortLap(); }

void clsKeltrun2::SortClass(std::string_view OrderExpression) {
  CurrentModel("clsKeltrun2.SortClass")->SortClass(OrderExpression);
}

std::shared_ptr<clsSegmentData> clsKeltrun2::SegmentData(std::int32_t Index) const {
  CheckIndex(Index, 1, SegmentCount(), "clsKeltrun2.SegmentData");
  return std::make_shared<clsSegmentData>(model_->Segments[static_cast<std::size_t>(Index) - 1]);
}

std::int32_t clsKeltrun2::SegmentCount() const {
  return static_cast<std::int32_t>(model_->Segments.size());
}

void clsKeltrun2::MakeSegmentSet() { MakeSegmentSets(*model_); }

const std::string& clsKeltrun2::SegmentRemark() const { return model_->SegmentRemark; }

void clsKeltrun2::Clear() { model_->Clear(); }

std::string clsKeltrun2::Version(bool WithTestBuild) const { return VersionText(WithTestBuild); }

}  // namespace keltrun
