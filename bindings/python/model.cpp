// Values, runners, classes, courses and the event.
#include "bindings/python/binding.h"
#include "keltrun2/keltrun2.h"

namespace keltrun::python {
namespace {

using py::arg;

void BindDays(py::module_& module) {
  module.attr("kSecondsPerDay") = kSecondsPerDay;
  module.attr("kMillisecondsPerDay") = kMillisecondsPerDay;
  module.attr("kLongestTime") = kLongestTime;
  module.attr("kTimeNoData") = kTimeNoData;
  module.attr("kTimeSkip") = kTimeSkip;
  module.attr("kTimeDisq") = kTimeDisq;
  module.attr("kNoDataText") = kNoDataText;
  module.attr("kSkipText") = kSkipText;
  module.attr("kDisqText") = kDisqText;
  module.def("Canonical", &Canonical, Doc("Canonical"), arg("value"));
  module.def("WholeSeconds", &WholeSeconds, Doc("WholeSeconds"), arg("value"));
  module.def("DateNumber", &DateNumber, Doc("DateNumber"), arg("year"), arg("month"), arg("day"));
  module.def("ParseDateTime", &ParseDateTime, Doc("ParseDateTime"), arg("text"));
  module.def("FormatDateTime", &FormatDateTime, Doc("FormatDateTime"), arg("value"),
             arg("pattern"));
  Enumeration<LapTimeConst>(
      module, "LapTimeConst",
      {KR_VALUE(KR_TIME_NODATA), KR_VALUE(KR_TIME_SKIP), KR_VALUE(KR_TIME_DISQ)});
}

/// The arguments that most members with the text of a time have.
struct TimeTextArguments {
  py::arg_v format{"FormatExpression", std::string("hh:nn:ss")};
  py::arg_v compact{"Compact", false};
  py::arg_v no_data{"NoDataValue", std::string(kNoDataText)};
  py::arg_v skip{"SkipValue", std::string(kSkipText)};
  py::arg_v disq{"DisqValue", std::string(kDisqText)};
};

void BindValues(py::module_& module) {
  const std::vector<std::string> members = {"Value", "ToString"};
  const auto [format, compact, no_data, skip, disq] = TimeTextArguments();
  Class<clsTimeValue>(module, "clsTimeValue")
      .MadeBy(py::init<DateTime>(), arg("Value") = 0.0)
      .Property("Value", &clsTimeValue::Value, &clsTimeValue::SetValue)
      .Method("ToString", &clsTimeValue::ToString, format, compact, no_data, skip, disq)
      .Shows(members)
      .Text();
  Class<clsDateValue>(module, "clsDateValue")
      .MadeBy(py::init<DateTime>(), arg("Value") = 0.0)
      .Property("Value", &clsDateValue::Value, &clsDateValue::SetValue)
      .Method("ToString", &clsDateValue::ToString, arg("FormatExpression") = "yyyy/mm/dd")
      .Shows(members)
      .Text();
  Class<clsMissTimeValue>(module, "clsMissTimeValue")
      .ReadOnly("Value", &clsMissTimeValue::Value)
      .Method("ToString", &clsMissTimeValue::ToString, format, compact, no_data, skip)
      .Shows(members)
      .Text();
  Class<clsPercentValue>(module, "clsPercentValue")
      .ReadOnly("Value", &clsPercentValue::Value)
      .Method("ToString", &clsPercentValue::ToString, arg("FormatExpression") = "#0", no_data, skip)
      .Shows(members)
      .Text();
  Class<clsLegRankValue>(module, "clsLegRankValue")
      .ReadOnly("Value", &clsLegRankValue::Value)
      .Method("ToString", &clsLegRankValue::ToString, arg("UseHyphen") = true,
              arg("UseParentheses") = false)
      .Shows(members)
      .Text();
}

void BindRunnerStatus(py::module_& module) {
  Enumeration<RunnerStatus>(module, "RunnerStatus",
                            {{"kUnknown", RunnerStatus::kUnknown},
                             {"kOk", RunnerStatus::kOk},
                             {"kFinished", RunnerStatus::kFinished},
                             {"kMissingPunch", RunnerStatus::kMissingPunch},
                             {"kDisqualified", RunnerStatus::kDisqualified},
                             {"kDidNotFinish", RunnerStatus::kDidNotFinish},
                             {"kActive", RunnerStatus::kActive},
                             {"kInactive", RunnerStatus::kInactive},
                             {"kOverTime", RunnerStatus::kOverTime},
                             {"kSportingWithdrawal", RunnerStatus::kSportingWithdrawal},
                             {"kNotCompeting", RunnerStatus::kNotCompeting},
                             {"kMoved", RunnerStatus::kMoved},
                             {"kMovedUp", RunnerStatus::kMovedUp},
                             {"kDidNotStart", RunnerStatus::kDidNotStart},
                             {"kDidNotEnter", RunnerStatus::kDidNotEnter},
                             {"kCancelled", RunnerStatus::kCancelled}});
  module.def("RunnerStatusName", &RunnerStatusName, Doc("RunnerStatusName"), arg("Status"));
  module.def("RunnerStatusOfName", &RunnerStatusOfName, Doc("RunnerStatusOfName"), arg("Name"));
}

void BindRunnerRecord(py::module_& module) {
  BindRunnerStatus(module);
  const auto [format, compact, no_data, skip, disq] = TimeTextArguments();
  Class<clsLapData>(module, "clsLapData")
      .MadeBy(py::init<>())
      .Constant("kMostLegs", clsLapData::kMostLegs)
      .Field("RunnerName", &clsLapData::RunnerName)
      .Field("ClubName", &clsLapData::ClubName)
      .Field("Rank", &clsLapData::Rank)
      .Field("ID", &clsLapData::ID)
      .Field("Ecard", &clsLapData::Ecard)
      .Field("RankFix", &clsLapData::RankFix)
      .Field("Seed", &clsLapData::Seed)
      .Field("Age", &clsLapData::Age)
      .Field("Sex", &clsLapData::Sex)
      .Field("CompetitorId", &clsLapData::CompetitorId)
      .Field("Status", &clsLapData::Status)
      .Field("Bib", &clsLapData::Bib)
      .Field("ControlCard", &clsLapData::ControlCard)
      .Field("GivenName", &clsLapData::GivenName)
      .Field("FamilyName", &clsLapData::FamilyName)
      .Field("Nationality", &clsLapData::Nationality)
      .Field("CourseNum", &clsLapData::CourseNum)
      .Property("StartTime", &clsLapData::StartTime, &clsLapData::SetStartTime)
      .ReadOnly("SerialNum", &clsLapData::SerialNum)
      .Property("ClassName", &clsLapData::ClassName, &clsLapData::SetClassName)
      .Property("LegCount", &clsLapData::LegCount, &clsLapData::SetLegCount)
      .Property("Result", &clsLapData::Result, &clsLapData::SetResult)
      .Method("Lap", &clsLapData::Lap, arg("Index"))
      .Method("SetLap", &clsLapData::SetLap, arg("Index"), arg("Time"))
      .Method("LapToString", &clsLapData::LapToString, arg("Index"), format, compact, no_data, skip,
              disq)
      .Shows({"RunnerName", "ClassName", "Result"});
}

void BindClasses(py::module_& module) {
  Enumeration<KrLapFileLoadModeCosnt>(
      module, "KrLapFileLoadModeCosnt",
      {KR_VALUE(KR_LOADMODE_NORMAL), KR_VALUE(KR_LOADMODE_APPEND), KR_VALUE(KR_LOADMODE_MERGE_ID),
       KR_VALUE(KR_LOADMODE_MERGE_NAME), KR_VALUE(KR_LOADMODE_NOTADD_NEWDATA),
       KR_VALUE(KR_LOADMODE_PRIORITY_ORIGINAL), KR_VALUE(KR_LOADMODE_PRIORITY_NEWDATA)});
  Class<clsClassData>(module, "clsClassData")
      .Field("ControlCount", &clsClassData::ControlCount)
      .Field("CourseNum", &clsClassData::CourseNum)
      .Field("Length", &clsClassData::Length)
      .Field("Climb", &clsClassData::Climb)
      .Field("CutOffRank", &clsClassData::CutOffRank)
      .ReadOnly("ClassName", &clsClassData::ClassName)
      .ReadOnly("ClassInfo", &clsClassData::ClassInfo)
      .Property("FileName", &clsClassData::FileName, &clsClassData::SetFileName)
      .ReadOnly("LapCount", &clsClassData::LapCount)
      .Method("AddLapObject", &clsClassData::AddLapObject, arg("LapObject"),
              arg("LapFileLoadMode") = KR_LOADMODE_NORMAL)
      .Method("AddLap", &clsClassData::AddLap)
      .Method("RemoveLap", &clsClassData::RemoveLap, arg("Index"))
      .Method("ClearLap", &clsClassData::ClearLap)
      .Method("LapData", MayBeNone(&clsClassData::LapData), arg("Index"))
      .Method("SortLap", &clsClassData::SortLap)
      .Sequence(&clsClassData::LapCount, &clsClassData::LapData, "the runners of the class")
      .Shows({"ClassName", "LapCount"});

  Class<clsCourseData>(module, "clsCourseData")
      .MadeBy(py::init<>())
      .Constant("kMostControls", clsCourseData::kMostControls)
      .Constant("kStartCode", clsCourseData::kStartCode)
      .Constant("kFinishCode", clsCourseData::kFinishCode)
      .Property("CourseIndex", &clsCourseData::CourseIndex, &clsCourseData::SetCourseIndex)
      .Property("ControlCount", &clsCourseData::ControlCount, &clsCourseData::SetControlCount)
      .Method("ControlNum", &clsCourseData::ControlNum, arg("Index"))
      .Method("SetControlNum", &clsCourseData::SetControlNum, arg("Index"), arg("Code"))
      .Method("ControlCodeText", &clsCourseData::ControlCodeText, arg("Index"))
      .Method("SetControlCodeText", &clsCourseData::SetControlCodeText, arg("Index"), arg("Text"))
      .Method("HasCodeText", &clsCourseData::HasCodeText, arg("Index"))
      .Sequence(&clsCourseData::ControlCount, &clsCourseData::ControlNum,
                "the codes of the controls")
      .Shows({"CourseIndex", "ControlCount"});
}

void BindEvent(py::module_& module) {
  Class<clsEventData>(module, "clsEventData")
      .MadeBy(py::init<>())
      .Field("EventName", &clsEventData::EventName)
      .Field("Terrain", &clsEventData::Terrain)
      .Field("Memo", &clsEventData::Memo)
      .Field("FileName", &clsEventData::FileName)
      .Field("OfficialSite", &clsEventData::OfficialSite)
      .Property("EventDate", &clsEventData::EventDate, &clsEventData::SetEventDate)
      .Method("ToString", &clsEventData::ToString)
      .Shows({"EventName", "EventDate", "Terrain"})
      .Text();

  Class<clsMetaData>(module, "clsMetaData")
      .MadeBy(py::init<>())
      .Field("CreateApplication", &clsMetaData::CreateApplication)
      .Field("CreateDate", &clsMetaData::CreateDate)
      .Field("CreateUserName", &clsMetaData::CreateUserName)
      .Field("LastUpdateApplication", &clsMetaData::LastUpdateApplication)
      .Field("LastUpdateDate", &clsMetaData::LastUpdateDate)
      .Field("LastUpdateUserName", &clsMetaData::LastUpdateUserName)
      .ShowsFields();
}

}  // namespace

void BindModel(py::module_& module) {
  BindDays(module);
  BindValues(module);
  BindRunnerRecord(module);
  BindClasses(module);
  BindEvent(module);
}

}  // namespace keltrun::python
