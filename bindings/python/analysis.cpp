// Analyzers, result lists and segment sets.
#include "bindings/python/binding.h"
#include "keltrun2/keltrun2.h"

namespace keltrun::python {
namespace {

using py::arg;
using Runner = clsAnalyzedRunnerData;

void BindDataSet(py::module_& module) {
  Enumeration<DataSetKind>(module, "DataSetKind",
                           {{"kClass", DataSetKind::kClass},
                            {"kCourse", DataSetKind::kCourse},
                            {"kSegment", DataSetKind::kSegment}});
  Class<DataSet>(module, "DataSet")
      .Field("DataSetFileName", &DataSet::DataSetFileName)
      .Field("DataSetIsMix", &DataSet::DataSetIsMix)
      .Field("ControlCount", &DataSet::ControlCount)
      .Field("Length", &DataSet::Length)
      .Field("Climb", &DataSet::Climb)
      .Field("CutOffRank", &DataSet::CutOffRank)
      .Property("DataSetName", &DataSet::DataSetName, &DataSet::SetDataSetName)
      .Method("AddClass", py::overload_cast<std::int32_t>(&DataSet::AddClass), arg("ClassNumber"))
      .Method("AddClass", py::overload_cast<std::string_view>(&DataSet::AddClass), arg("ClassName"))
      .Method("AddCourse", &DataSet::AddCourse, arg("CourseNum"))
      .ReadOnly("LeftOutCount", &DataSet::LeftOutCount)
      .Method("AddLap", &DataSet::AddLap, arg("LapObject"));
}

void BindGeneralData(py::module_& module) {
  using General = clsAnalyzedGeneralData;
  Class<General>(module, "clsAnalyzedGeneralData")
      .Constant("kMostAnalyzedLegs", General::kMostAnalyzedLegs)
      .Constant("kMostUpperLaps", General::kMostUpperLaps)
      .Method("LegDifficulty", MayBeNone(&General::LegDifficulty), arg("LegIndex"))
      .Method("IsUpperLapExists", &General::IsUpperLapExists, arg("LegIndex"), arg("RankIndex"))
      .Method("UpperLapAverage", &General::UpperLapAverage, arg("LegIndex"))
      .Method("LegLength", &General::LegLength, arg("LegIndex"))
      .Method("IsTimed", &General::IsTimed, arg("LegIndex"))
      .ReadOnly("UpperLapTotal", &General::UpperLapTotal)
      .Method("UpperLapObject", MayBeNone(&General::UpperLapObject), arg("LegIndex"),
              arg("RankIndex"));
}

void BindTimes(Class<Runner>& type) {
  const auto bind_text = [&type](const char* name, auto text) {
    type.Method(name, text, arg("Index"), arg("FormatExpression") = "hh:nn:ss",
                arg("Compact") = false, arg("NoDataValue") = std::string(kNoDataText),
                arg("SkipValue") = std::string(kSkipText),
                arg("DisqValue") = std::string(kDisqText));
  };
  type.Method("LapTime", &Runner::LapTime, arg("Index"))
      .Method("SplitTime", &Runner::SplitTime, arg("Index"))
      .Method("SetSplitTime", &Runner::SetSplitTime, arg("Index"), arg("Time"))
      .Method("ModifiedLapTime", &Runner::ModifiedLapTime, arg("Index"))
      .Method("SetModifiedLapTime", &Runner::SetModifiedLapTime, arg("Index"), arg("Time"))
      .Method("ModifiedSplitTime", &Runner::ModifiedSplitTime, arg("Index"))
      .Method("SetModifiedSplitTime", &Runner::SetModifiedSplitTime, arg("Index"), arg("Time"));
  bind_text("LapTimeToString", &Runner::LapTimeToString);
  bind_text("SplitTimeToString", &Runner::SplitTimeToString);
  bind_text("ModifiedLapTimeToString", &Runner::ModifiedLapTimeToString);
  bind_text("ModifiedSplitTimeToString", &Runner::ModifiedSplitTimeToString);
}

void BindRanks(Class<Runner>& type) {
  const auto bind = [&type](const char* name, auto get, const char* set_name, auto set,
                            const char* text_name, auto text) {
    type.Method(name, get, arg("Index"))
        .Method(set_name, set, arg("Index"), arg("Rank"))
        .Method(text_name, text, arg("Index"), arg("UseHyphen") = true,
                arg("UseParentheses") = false);
  };
  bind("LapRank", &Runner::LapRank, "SetLapRank", &Runner::SetLapRank, "LapRankToString",
       &Runner::LapRankToString);
  bind("SplitRank", &Runner::SplitRank, "SetSplitRank", &Runner::SetSplitRank, "SplitRankToString",
       &Runner::SplitRankToString);
  bind("ModifiedLapRank", &Runner::ModifiedLapRank, "SetModifiedLapRank",
       &Runner::SetModifiedLapRank, "ModifiedLapRankToString", &Runner::ModifiedLapRankToString);
  bind("ModifiedSplitRank", &Runner::ModifiedSplitRank, "SetModifiedSplitRank",
       &Runner::SetModifiedSplitRank, "ModifiedSplitRankToString",
       &Runner::ModifiedSplitRankToString);
}

void BindRunner(py::module_& module) {
  Class<Runner> type(module, "clsAnalyzedRunnerData");
  type.Constant("kMostAnalyzedLegs", Runner::kMostAnalyzedLegs)
      .Property("VesmerX", &Runner::VesmerX, &Runner::SetVesmerX)
      .Property("VesmerY", &Runner::VesmerY, &Runner::SetVesmerY)
      .Method("TotalLapTo", &Runner::TotalLapTo, arg("Index"))
      .Method("TotalLapFrom", &Runner::TotalLapFrom, arg("Index"))
      .Method("IsValidLapTime", &Runner::IsValidLapTime, arg("Index"))
      .Method("IsValidSplitTime", &Runner::IsValidSplitTime, arg("Index"))
      .ReadOnly("RankInDataSet", &Runner::RankInDataSet)
      .ReadOnly("Rank", &Runner::Rank)
      .ReadOnly("CruiseSpeed", &Runner::CruiseSpeed)
      .ReadOnly("FirstHalfCruiseSpeed", &Runner::FirstHalfCruiseSpeed)
      .ReadOnly("SecondHalfCruiseSpeed", &Runner::SecondHalfCruiseSpeed)
      .ReadOnly("TotalTimeRelative", &Runner::TotalTimeRelative)
      .Method("LapRelative", MayBeNone(&Runner::LapRelative), arg("Index"))
      .Method("MissTime", MayBeNone(&Runner::MissTime), arg("Index"))
      .ReadOnly("MissTimeTotal", &Runner::MissTimeTotal)
      .ReadOnly("MissRate", &Runner::MissRate)
      .ReadOnly("TotalTimeWithoutMiss", &Runner::TotalTimeWithoutMiss)
      .ReadOnly("SerialNum", &Runner::SerialNum)
      .ReadOnly("RunnerName", &Runner::RunnerName)
      .ReadOnly("ClubName", &Runner::ClubName)
      .ReadOnly("Result", &Runner::Result)
      .ReadOnly("ResultRank", &Runner::ResultRank)
      .ReadOnly("StartTime", &Runner::StartTime)
      .ReadOnly("OtherData", &Runner::OtherData)
      .Shows({"RunnerName", "Rank", "Result"});
  BindTimes(type);
  BindRanks(type);
}

void BindEstimate(py::module_& module) {
  using EstimatedClass = clsEstimatedClassData;
  using EstimatedRunner = clsEstimatedRunnerData;
  Enumeration<MistakeWord>(module, "MistakeWord",
                           {{"kNone", MistakeWord::kNone},
                            {"kPerhaps", MistakeWord::kPerhaps},
                            {"kLikely", MistakeWord::kLikely},
                            {"kSure", MistakeWord::kSure}});
  module.def("MistakeWordName", &MistakeWordName, Doc("MistakeWordName"), arg("Word"));
  Class<EstimatedRunner>(module, "clsEstimatedRunnerData")
      .ReadOnly("OtherData", &EstimatedRunner::OtherData)
      .ReadOnly("SerialNum", &EstimatedRunner::SerialNum)
      .ReadOnly("RunnerName", &EstimatedRunner::RunnerName)
      .ReadOnly("Speed", &EstimatedRunner::Speed)
      .ReadOnly("SpeedError", &EstimatedRunner::SpeedError)
      .ReadOnly("Spread", &EstimatedRunner::Spread)
      .ReadOnly("TimeLost", &EstimatedRunner::TimeLost)
      .ReadOnly("LeastTimeLost", &EstimatedRunner::LeastTimeLost)
      .ReadOnly("LargestTimeLost", &EstimatedRunner::LargestTimeLost)
      .ReadOnly("MistakeCount", &EstimatedRunner::MistakeCount)
      .ReadOnly("MistakeSize", &EstimatedRunner::MistakeSize)
      .ReadOnly("LegCount", &EstimatedRunner::LegCount)
      .Method("IsTimed", &EstimatedRunner::IsTimed, arg("Index"))
      .Method("IsKnown", &EstimatedRunner::IsKnown, arg("Index"))
      .Method("NormalTime", &EstimatedRunner::NormalTime, arg("Index"))
      .Method("Loss", &EstimatedRunner::Loss, arg("Index"))
      .Method("LeastLoss", &EstimatedRunner::LeastLoss, arg("Index"))
      .Method("LargestLoss", &EstimatedRunner::LargestLoss, arg("Index"))
      .Method("MistakeTime", &EstimatedRunner::MistakeTime, arg("Index"))
      .Method("MistakeChance", &EstimatedRunner::MistakeChance, arg("Index"))
      .Method("MistakeWord", &EstimatedRunner::MistakeWord, arg("Index"))
      .Method("IsMistake", &EstimatedRunner::IsMistake, arg("Index"))
      .Shows({"RunnerName", "Speed", "MistakeCount"});
  Class<EstimatedClass>(module, "clsEstimatedClassData")
      .ReadOnly("ClassName", &EstimatedClass::ClassName)
      .ReadOnly("LegCount", &EstimatedClass::LegCount)
      .Method("IsTimed", &EstimatedClass::IsTimed, arg("LegIndex"))
      .Method("NormalTime", &EstimatedClass::NormalTime, arg("LegIndex"))
      .Method("Spread", &EstimatedClass::Spread, arg("LegIndex"))
      .Method("MistakeRate", &EstimatedClass::MistakeRate, arg("LegIndex"))
      .ReadOnly("Count", &EstimatedClass::Count)
      .Method("Item", MayBeNone(&EstimatedClass::Item), arg("Index"))
      .Sequence(&EstimatedClass::Count, &EstimatedClass::Item, "the runners of the class")
      .Shows({"ClassName", "Count"});
  Class<clsEstimate>(module, "clsEstimate")
      .ReadOnly("ClassCount", &clsEstimate::ClassCount)
      .Method("ClassData",
              MayBeNone(py::overload_cast<std::int32_t>(&clsEstimate::ClassData, py::const_)),
              arg("ClassID"))
      .Method("ClassData",
              MayBeNone(py::overload_cast<std::string_view>(&clsEstimate::ClassData, py::const_)),
              arg("ClassID"))
      .Method("RunnerData", MayBeNone(&clsEstimate::RunnerData), arg("SerialNum"))
      .Extra(
          "classes",
          [class_at = py::overload_cast<std::int32_t>(&clsEstimate::ClassData, py::const_)](
              const clsEstimate& estimate) {
            return AllItems(estimate, &clsEstimate::ClassCount, class_at);
          },
          "A new list of the classes, in the order of ClassData.")
      .Shows({"ClassCount"});
}

}  // namespace

void BindAnalysis(py::module_& module) {
  BindDataSet(module);
  BindRunner(module);
  BindGeneralData(module);
  BindEstimate(module);
  module.attr("kFewestOnMap") = kFewestOnMap;
  module.attr("kMostOnMap") = kMostOnMap;
  Class<clsAnalyzer, DataSet>(module, "clsAnalyzer")
      .MadeBy(py::init<>())
      .Property("CourseData", MayBeNone(&clsAnalyzer::CourseData), &clsAnalyzer::SetCourseData)
      .Property("UntimedLegs", &clsAnalyzer::UntimedLegs, &clsAnalyzer::SetUntimedLegs)
      .ReadOnly("IsExecuted", &clsAnalyzer::IsExecuted)
      .ReadOnly("ClassInfo", &clsAnalyzer::ClassInfo)
      .Method("Clear", &clsAnalyzer::Clear)
      .ReadOnly("Count", &clsAnalyzer::Count)
      .Method("Item", MayBeNone(&clsAnalyzer::Item), arg("Index"))
      .ReadOnly("FullSetCount", &clsAnalyzer::FullSetCount)
      .Method("FullSetItem", MayBeNone(&clsAnalyzer::FullSetItem), arg("Index"))
      .ReadOnly("GeneralData", &clsAnalyzer::GeneralData)
      .Method("Execute", &clsAnalyzer::Execute, Released())
      .Method("ExtraAnalyze", &clsAnalyzer::ExtraAnalyze, Released())
      .ReadOnly("FinisherCount", &clsAnalyzer::FinisherCount)
      .Method("Vesmer", &clsAnalyzer::Vesmer, Released())
      .Method("SelectItem", &clsAnalyzer::SelectItem, arg("SerialNum"))
      .Method("SelectSort", &clsAnalyzer::SelectSort)
      .Method("SelectAll", &clsAnalyzer::SelectAll)
      .Method("SelectNone", &clsAnalyzer::SelectNone)
      .Sequence(&clsAnalyzer::Count, &clsAnalyzer::Item, "the runners of the selected set")
      .Shows({"DataSetName", "IsExecuted", "Count"});
  Class<clsResultsHolder, DataSet>(module, "clsResultsHolder")
      .MadeBy(py::init<>())
      .ReadOnly("ClassInfo", &clsResultsHolder::ClassInfo)
      .Method("Clear", &clsResultsHolder::Clear)
      .ReadOnly("Count", &clsResultsHolder::Count)
      .Method("Item", MayBeNone(&clsResultsHolder::Item), arg("Index"))
      .Method("RankInDataSet", &clsResultsHolder::RankInDataSet, arg("Index"))
      .Method("CalcRank", &clsResultsHolder::CalcRank, Released())
      .ReadOnly("RankIsAvalilable", &clsResultsHolder::RankIsAvalilable)
      .ReadOnly("FullSetCount", &clsResultsHolder::FullSetCount)
      .Method("FullSetItem", MayBeNone(&clsResultsHolder::FullSetItem), arg("Index"))
      .Method("SelectItem", &clsResultsHolder::SelectItem, arg("SerialNum"))
      .Method("SelectAll", &clsResultsHolder::SelectAll)
      .Method("SelectNone", &clsResultsHolder::SelectNone)
      .Sequence(&clsResultsHolder::Count, &clsResultsHolder::Item,
                "the records of the selected set")
      .Shows({"DataSetName", "Count"});
  Class<SegmentSet>(module, "SegmentSet")
      .MadeBy(Fields<SegmentSet>())
      .Field("TargetCourseTable", &SegmentSet::TargetCourseTable)
      .Field("TargetClassList", &SegmentSet::TargetClassList)
      .Field("ControlCount", &SegmentSet::ControlCount)
      .Field("SegmentName", &SegmentSet::SegmentName)
      .Field("SegmentBinaryName", &SegmentSet::SegmentBinaryName)
      .Shows({"SegmentName", "ControlCount"});
  Class<clsSegmentData>(module, "clsSegmentData")
      .MadeBy(py::init<std::shared_ptr<SegmentSet>>(), arg("segment"))
      .Property("TargetCourseTable", &clsSegmentData::TargetCourseTable,
                &clsSegmentData::SetTargetCourseTable)
      .Property("TargetClassList", &clsSegmentData::TargetClassList,
                &clsSegmentData::SetTargetClassList)
      .ReadOnly("ControlCount", &clsSegmentData::ControlCount)
      .ReadOnly("SegmentName", &clsSegmentData::SegmentName)
      .ReadOnly("SegmentBinaryName", &clsSegmentData::SegmentBinaryName)
      .Method("Analyzer", &clsSegmentData::Analyzer, arg("SexOption") = "", Released())
      .Method("ResultsHolder", &clsSegmentData::ResultsHolder, arg("SexOption") = "", Released())
      .Shows({"SegmentName", "ControlCount"});
}

}  // namespace keltrun::python
