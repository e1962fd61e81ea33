// The root object, its services and the hosts' windows.
#include "bindings/python/binding.h"
#include "keltrun2/keltrun2.h"

namespace keltrun::python {
namespace {

using py::arg;

class PythonProgressBar : public frmProgressBar {
 public:
  void SetPercent(std::int32_t Percent) override {
    PYBIND11_OVERRIDE_PURE(void, frmProgressBar, SetPercent, Percent);
  }
};

// A progress window written in Python, kept alive while the component shows it.
class KeptProgressBar : public frmProgressBar {
 public:
  explicit KeptProgressBar(py::object window) : window_(std::move(window)) {}
  ~KeptProgressBar() override {
    const py::gil_scoped_acquire lock;
    window_ = py::object();
  }
  KeptProgressBar(const KeptProgressBar&) = delete;
  KeptProgressBar& operator=(const KeptProgressBar&) = delete;
  void SetPercent(std::int32_t Percent) override {
    const py::gil_scoped_acquire lock;
    window_.attr("SetPercent")(Percent);
  }

 private:
  py::object window_;
};

class PythonWindows : public HostWindows {
 public:
  std::unique_ptr<frmProgressBar> OpenProgress(std::string_view Caption) override {
    const py::gil_scoped_acquire lock;
    const py::function open = py::get_override(static_cast<HostWindows*>(this), "OpenProgress");
    if (!open) return nullptr;
    py::object window = open(Caption);
    if (window.is_none()) return nullptr;
    return std::make_unique<KeptProgressBar>(std::move(window));
  }
  std::optional<std::size_t> ChooseName(std::string_view Caption,
                                        const std::vector<std::string>& Names) override {
    PYBIND11_OVERRIDE_PURE(std::optional<std::size_t>, HostWindows, ChooseName, Caption, Names);
  }
  bool AskYesNo(std::string_view Text, std::string_view Title) override {
    PYBIND11_OVERRIDE_PURE(bool, HostWindows, AskYesNo, Text, Title);
  }
};

void BindWindows(py::module_& module) {
  Class<frmProgressBar, PythonProgressBar>(module, "frmProgressBar")
      .MadeBy(py::init<>())
      .Constant("kFullBarTwips", frmProgressBar::kFullBarTwips)
      .Method("SetPercent", &frmProgressBar::SetPercent, arg("Percent"))
      .Static("BarTwips", &frmProgressBar::BarTwips, arg("Percent"));
  Class<HostWindows, PythonWindows>(module, "HostWindows")
      .MadeBy(py::init<>())
      .Method(
          "OpenProgress",
          [](HostWindows& windows, std::string_view caption) {
            return OrNone<std::shared_ptr<frmProgressBar>>{windows.OpenProgress(caption)};
          },
          arg("Caption"))
      .Method("ChooseName", &HostWindows::ChooseName, arg("Caption"), arg("Names"))
      .Method("AskYesNo", &HostWindows::AskYesNo, arg("Text"), arg("Title"));
  module.def(
      "SetHostWindows",
      [](const py::object& windows) { SetHostWindows(Kept<HostWindows>(windows)); },
      Doc("SetHostWindows"), arg("Windows"));
  module.def("CurrentHostWindows", &CurrentHostWindows, Doc("CurrentHostWindows"));
  AtExit([] { SetHostWindows(nullptr); });
}

void BindSite(py::module_& module) {
  Class<SiteOptions>(module, "SiteOptions")
      .MadeBy(Fields<SiteOptions>())
      .Field("OutputFolder", &SiteOptions::OutputFolder)
      .Field("IndexFile", &SiteOptions::IndexFile)
      .Field("ResultFile", &SiteOptions::ResultFile)
      .Field("AnalysisFile", &SiteOptions::AnalysisFile)
      .Field("LegDataFile", &SiteOptions::LegDataFile)
      .Field("ChartFile", &SiteOptions::ChartFile)
      .Field("ChartOption", &SiteOptions::ChartOption)
      .Field("ChartFormat", &SiteOptions::ChartFormat)
      .Field("ResultIncludeCourse", &SiteOptions::ResultIncludeCourse)
      .Field("AnalysisIncludeCourse", &SiteOptions::AnalysisIncludeCourse)
      .Field("LegDataIncludeCourse", &SiteOptions::LegDataIncludeCourse)
      .Field("ChartIncludeCourse", &SiteOptions::ChartIncludeCourse)
      .Field("Lap2File", &SiteOptions::Lap2File)
      .Field("Lap1File", &SiteOptions::Lap1File)
      .Field("ViewerFile", &SiteOptions::ViewerFile)
      .Field("ActiveXFile", &SiteOptions::ActiveXFile)
      .Field("ActiveXAddress", &SiteOptions::ActiveXAddress)
      .Field("LinkStyleFile", &SiteOptions::LinkStyleFile)
      .Field("OfficialSite", &SiteOptions::OfficialSite)
      .Field("IndexFileAddMode", &SiteOptions::IndexFileAddMode)
      .Field("IndexReplaceBlock", &SiteOptions::IndexReplaceBlock)
      .Field("UntimedLegs", &SiteOptions::UntimedLegs)
      .Field("BridgeGaps", &SiteOptions::BridgeGaps)
      .Field("Jobs", &SiteOptions::Jobs)
      .Field("Charset", &SiteOptions::Charset)
      .ShowsFields();
  Class<ReportSiteOptions>(module, "ReportSiteOptions")
      .MadeBy(Fields<ReportSiteOptions>())
      .Field("OutputFolder", &ReportSiteOptions::OutputFolder)
      .Field("Prefix", &ReportSiteOptions::Prefix)
      .Field("AddToIndex", &ReportSiteOptions::AddToIndex)
      .Field("ReplaceOthers", &ReportSiteOptions::ReplaceOthers)
      .Field("OfficialSite", &ReportSiteOptions::OfficialSite)
      .Field("ChartOption", &ReportSiteOptions::ChartOption)
      .Field("ChartFormat", &ReportSiteOptions::ChartFormat)
      .Field("ChartIncludeCourse", &ReportSiteOptions::ChartIncludeCourse)
      .Field("UntimedLegs", &ReportSiteOptions::UntimedLegs)
      .Field("Jobs", &ReportSiteOptions::Jobs)
      .Field("ClassicIndex", &ReportSiteOptions::ClassicIndex)
      .ShowsFields();
}

void BindFileControl(py::module_& module) {
  Enumeration<KrLapFileTypeConst>(
      module, "KrLapFileTypeConst",
      {KR_VALUE(KR_FILETYPE_AUTODETECT), KR_VALUE(KR_FILETYPE_UNKNOWN),
       KR_VALUE(KR_FILETYPE_KELTRUN2), KR_VALUE(KR_FILETYPE_KELTRUN1),
       KR_VALUE(KR_FILETYPE_SPORTIDENT), KR_VALUE(KR_FILETYPE_OEVENT),
       KR_VALUE(KR_FILETYPE_IMPORT_ONLY), KR_VALUE(KR_FILETYPE_IOF_XML_20_RESULT),
       KR_VALUE(KR_FILETYPE_IOF_XML_30_RESULT), KR_VALUE(KR_FILETYPE_OE_CSV),
       KR_VALUE(KR_FILETYPE_OS_CSV), KR_VALUE(KR_FILETYPE_SPLITSBROWSER_CSV),
       KR_VALUE(KR_FILETYPE_TRIPLE_CSV), KR_VALUE(KR_FILETYPE_RESULT_HTML),
       KR_VALUE(KR_FILETYPE_WINSPLITS_TEXT), KR_VALUE(KR_FILETYPE_SWISS_CSV),
       KR_VALUE(KR_FILETYPE_IOF_XML_20_EXCHANGE)});
  module.def("LapFileTypeName", &LapFileTypeName, Doc("LapFileTypeName"), arg("Type"));
  module.def("LapFileTypeOfWord", &LapFileTypeOfWord, Doc("LapFileTypeOfWord"), arg("Word"));
  module.def("LapFileTypeWords", &LapFileTypeWords, Doc("LapFileTypeWords"));
  module.def("SaveTypeOfWord", &SaveTypeOfWord, Doc("SaveTypeOfWord"), arg("Word"));
  module.def("SaveTypeWords", &SaveTypeWords, Doc("SaveTypeWords"));
  Enumeration<KrLapFileSaveModeCosnt>(module, "KrLapFileSaveModeCosnt",
                                      {KR_VALUE(KR_SAVEMODE_NORMAL), KR_VALUE(KR_SAVEMODE_FULL)});
  Enumeration<RemarkSeverity>(module, "RemarkSeverity",
                              {{"kNote", RemarkSeverity::kNote},
                               {"kWarning", RemarkSeverity::kWarning},
                               {"kNothing", RemarkSeverity::kNothing}});
  Class<LoadRemark>(module, "LoadRemark")
      .Field("Line", &LoadRemark::Line)
      .Field("Column", &LoadRemark::Column)
      .Field("Severity", &LoadRemark::Severity)
      .Field("Text", &LoadRemark::Text)
      .Field("Kind", &LoadRemark::Kind)
      .ShowsFields();
  Class<ProgressHandle>(module, "ProgressHandle").Method("Detach", &ProgressHandle::Detach);
  Class<clsFileControl>(module, "clsFileControl")
      .Property("ProgressVisible", &clsFileControl::ProgressVisible,
                &clsFileControl::SetProgressVisible)
      .Property("RenewRanks", &clsFileControl::RenewRanks, &clsFileControl::SetRenewRanks)
      .Property("InputCharset", &clsFileControl::InputCharset, &clsFileControl::SetInputCharset)
      .Property("OutputCharset", &clsFileControl::OutputCharset, &clsFileControl::SetOutputCharset)
      .Property("ForeignFormats", &clsFileControl::ForeignFormats,
                &clsFileControl::SetForeignFormats)
      .Property("Race", &clsFileControl::Race, &clsFileControl::SetRace)
      .ReadOnly("LoadedType", &clsFileControl::LoadedType)
      .ReadOnly("LoadedFormat", &clsFileControl::LoadedFormat)
      .Method("OutputSite", &clsFileControl::OutputSite, arg("Options"), Released())
      .Method("SiteFiles", &clsFileControl::SiteFiles, arg("Options"), Released())
      .Method("SiteConflicts", &clsFileControl::SiteConflicts, arg("Options"), Released())
      .Method("OutputReportSite", &clsFileControl::OutputReportSite, arg("Options"), Released())
      .Method("ReportSiteConflicts", &clsFileControl::ReportSiteConflicts, arg("Options"),
              Released())
      .Method("ReportSiteFiles", &clsFileControl::ReportSiteFiles, arg("Options"), Released())
      .Method("OutputHtml", &clsFileControl::OutputHtml, arg("OutputFolder"), arg("IndexFile") = "",
              arg("AnalysisFile") = "", arg("ResultFile") = "", arg("Lap2File") = "",
              arg("Lap1File") = "", arg("OfficialSite") = false, arg("IndexFileAddMode") = false,
              arg("ActiveXFile") = "", arg("ActiveXAddress") = "",
              arg("AnalysisIncludeCourse") = false, arg("ResultIncludeCourse") = false,
              arg("LegDataFile") = "", arg("LegDataIncludeCourse") = false, arg("ChartFile") = "",
              arg("ChartIncludeCourse") = false, arg("ChartOption") = "", arg("LinkStyleFile") = "",
              Released())
      .Method("LoadLapFile", &clsFileControl::LoadLapFile, arg("FileName"),
              arg("LapFileType") = KR_FILETYPE_AUTODETECT, arg("LoadMode") = KR_LOADMODE_NORMAL,
              arg("FileData") = "", Released())
      .ReadOnly("LoadRemarks", &clsFileControl::LoadRemarks)
      .ReadOnly("SaveRemarks", &clsFileControl::SaveRemarks)
      .Method("SaveLapFile", &clsFileControl::SaveLapFile, arg("FileName"),
              arg("LapFileType") = KR_FILETYPE_AUTODETECT, arg("SaveMode") = KR_SAVEMODE_NORMAL,
              Released())
      .Method("FileSaveMode", &clsFileControl::FileSaveMode, arg("FilterIndex"))
      .ReadOnly("FileSaveFilter", &clsFileControl::FileSaveFilter)
      .ReadOnly("FileLoadFilter", &clsFileControl::FileLoadFilter)
      .Method("OnProgress", &clsFileControl::OnProgress, arg("Handler"));
}

// An analysis or a result list, with the kind of its data set.
template <typename Set, typename Data>
void BindOutputSet(py::module_& module, const char* name, const char* data_name,
                   std::shared_ptr<Data> Set::*data) {
  Class<Set>(module, name)
      .MadeBy(py::init([](std::shared_ptr<Data> made_of, DataSetKind kind) {
                return Set{std::move(made_of), kind};
              }),
              arg(data_name), arg("Kind") = DataSetKind::kClass)
      .Field(data_name, data)
      .Field("Kind", &Set::Kind)
      .ShowsFields();
}

void BindOutputs(py::module_& module) {
  BindOutputSet(module, "ViewerSet", "Analyzer", &clsHtmlControl::ViewerSet::Analyzer);
  BindOutputSet(module, "AnalysisSet", "Analyzer", &clsTextControl::AnalysisSet::Analyzer);
  BindOutputSet(module, "ResultSet", "ResultsHolder", &clsTextControl::ResultSet::ResultsHolder);
  Class<clsHtmlControl>(module, "clsHtmlControl")
      .Method("OutputAnalysis", &clsHtmlControl::OutputAnalysis, arg("Analyzer"),
              arg("LinkStyleFile") = "", arg("Encoding") = "x-sjis", Released())
      .Method("OutputResult", &clsHtmlControl::OutputResult, arg("ResultsHolder"),
              arg("TopValue") = "", arg("LinkStyleFile") = "", arg("Encoding") = "x-sjis",
              Released())
      .Method("OutputLegData", &clsHtmlControl::OutputLegData, arg("Analyzer"),
              arg("LinkStyleFile") = "", arg("Encoding") = "x-sjis", Released())
      .Method("OutputChart", &clsHtmlControl::OutputChart, arg("Analyzer"), arg("ChartName"),
              arg("ChartOption"), Released())
      .Method("OutputActiveXPage", &clsHtmlControl::OutputActiveXPage, arg("LapFileURL"))
      .Method("OutputViewer", &clsHtmlControl::OutputViewer, arg("Sets"),
              arg("Estimate") = py::none(), Released());
  Class<clsTextControl>(module, "clsTextControl")
      .Method("OutputEstimateText", &clsTextControl::OutputEstimateText, arg("Estimate"),
              arg("ClassName") = "", Released())
      .Method("OutputEstimateCsv", &clsTextControl::OutputEstimateCsv, arg("Estimate"),
              arg("ClassName") = "", Released())
      .Method("OutputJson", &clsTextControl::OutputJson, arg("Analyzer"),
              arg("Kind") = DataSetKind::kClass, arg("Estimate") = py::none(), Released())
      .Method("OutputResultJson", &clsTextControl::OutputResultJson, arg("Sets"), Released())
      .Method("OutputCsvResults", &clsTextControl::OutputCsvResults, arg("ClassName") = "",
              arg("CourseNum") = 0, arg("Splits") = false, arg("Delimiter") = ",", Released())
      .Method("OutputCsvLaps", &clsTextControl::OutputCsvLaps, arg("Sets"), arg("Delimiter") = ",",
              Released())
      .Method(
          "EncodeText",
          [](const clsTextControl& text, std::string_view value, std::string_view charset) {
            return py::bytes(text.EncodeText(value, charset));
          },
          arg("Text"), arg("Charset"))
      .Method("OutputInfoJson", &clsTextControl::OutputInfoJson, Released())
      .Method("OutputTextMail", &clsTextControl::OutputTextMail, arg("Analyzer"), Released())
      .Method("OutputTextResult", &clsTextControl::OutputTextResult, arg("Results"), Released())
      .Method("OutputCsvQuillonMacro", &clsTextControl::OutputCsvQuillonMacro, arg("Analyzer"),
              Released())
      .Method("OutputCsvSplitsBrowser", &clsTextControl::OutputCsvSplitsBrowser, arg("Analyzer"),
              Released());
}

void BindGraphics(py::module_& module) {
  Enumeration<KrPrintAnalysisModeConst>(
      module, "KrPrintAnalysisModeConst",
      {KR_VALUE(KR_PRINT_ANALYSIS_LAP), KR_VALUE(KR_PRINT_ANALYSIS_MISS)});
  Class<clsGraphicControl>(module, "clsGraphicControl")
      .Field("PrintHeads", &clsGraphicControl::PrintHeads)
      .Method(
          "DrawChart",
          [](clsGraphicControl& graphics, const std::shared_ptr<clsAnalyzer>& analyzer,
             const std::shared_ptr<PythonChart>& chart, KrChartModeConst mode, float ratio_x,
             float ratio_y, float x,
             float y) { graphics.DrawChart(analyzer, chart, mode, ratio_x, ratio_y, x, y); },
          Released(), arg("AnalyzerObject"), arg("ChartObject"), arg("ChartMode"), arg("RatioX"),
          arg("RatioY"), arg("PositionX"), arg("PositionY"))
      .Method("PrintResult", &clsGraphicControl::PrintResult, arg("ResultsHolderObject"),
              arg("PrintBookObject"), arg("LineInterval") = 1.5F, arg("PrintNewPage") = false,
              arg("PrintID") = false, arg("PrintAge") = false, Released())
      .Method("PrintAnalysis", &clsGraphicControl::PrintAnalysis, arg("AnalyzerObject"),
              arg("PrintBookObject"), arg("Mode") = KR_PRINT_ANALYSIS_LAP, Released())
      .Method("DrawGrid", &clsGraphicControl::DrawGrid, arg("AnalyzerObject"), arg("GridObject"),
              Released());
}

void BindSettings(py::module_& module) {
  Enumeration<KrConfigFolderConst>(
      module, "KrConfigFolderConst",
      {KR_VALUE(KR_CONFIG_FOLDER_SYSTEM), KR_VALUE(KR_CONFIG_FOLDER_DATA)});
  Class<clsConfigControl>(module, "clsConfigControl")
      .Method("Value", &clsConfigControl::Value, arg("ConfigFolder"), arg("Item"),
              arg("DefaultValue") = "", Released())
      .Method("SetValue", &clsConfigControl::SetValue, arg("ConfigFolder"), arg("Item"),
              arg("NewValue"), arg("DefaultValue") = "", Released());
}

using Root = clsKeltrun2;

// The event of the root: its classes, courses and segments.
void BindEvent(Class<Root>& root) {
  root.Method("AddClass", &Root::AddClass, arg("ClassName"))
      .Method("RemoveClass", &Root::RemoveClass, arg("ClassName"))
      .Method("RenameClass", &Root::RenameClass, arg("OldName"), arg("NewName"))
      .Method("ClassData", MayBeNone(py::overload_cast<std::int32_t>(&Root::ClassData, py::const_)),
              arg("ClassID"))
      .Method("ClassData",
              MayBeNone(py::overload_cast<std::string_view>(&Root::ClassData, py::const_)),
              arg("ClassID"))
      .ReadOnly("ClassCount", &Root::ClassCount)
      .Method("IsClassExists", &Root::IsClassExists, arg("ClassName"))
      .Method("AddCourse", &Root::AddCourse, arg("CourseIndex"))
      .Method("RemoveCourse", &Root::RemoveCourse, arg("CourseIndex"))
      .Method("CourseData",
              MayBeNone(py::overload_cast<std::int32_t>(&Root::CourseData, py::const_)),
              arg("CourseID"))
      .Method("CourseData",
              MayBeNone(py::overload_cast<std::string_view>(&Root::CourseData, py::const_)),
              arg("CourseID"))
      .ReadOnly("CourseCount", &Root::CourseCount)
      .Method("ClearCourse", &Root::ClearCourse)
      .Method("IsCourseExists", &Root::IsCourseExists, arg("CourseIndex"))
      .ReadOnly("ClassAndCourseList", &Root::ClassAndCourseList)
      .Method("SeparateClassAndCourseValue", &Root::SeparateClassAndCourseValue, arg("Expression"))
      .Method("SortLap", &Root::SortLap)
      .Method("SortClass", &Root::SortClass, arg("OrderExpression"))
      .Method("SegmentData", &Root::SegmentData, arg("Index"))
      .ReadOnly("SegmentCount", &Root::SegmentCount)
      .Method("MakeSegmentSet", &Root::MakeSegmentSet, Released())
      .ReadOnly("SegmentRemark", &Root::SegmentRemark)
      .Method("Clear", &Root::Clear)
      .Method("Version", &Root::Version, arg("WithTestBuild") = true);
}

void BindLists(Class<Root>& binding) {
  binding
      .Extra(
          "classes",
          [class_at = py::overload_cast<std::int32_t>(&Root::ClassData, py::const_)](
              const Root& root) { return AllItems(root, &Root::ClassCount, class_at); },
          "A new list of the classes, in the order of ClassData.")
      .Extra(
          "courses",
          [course_at = py::overload_cast<std::int32_t>(&Root::CourseData, py::const_)](
              const Root& root) { return AllItems(root, &Root::CourseCount, course_at); },
          "A new list of the courses, in the order of CourseData.")
      .Extra(
          "segments",
          [](const Root& root) { return AllItems(root, &Root::SegmentCount, &Root::SegmentData); },
          "A new list of the segment sets, in the order of SegmentData.")
      .Shows({"FileName", "ClassCount", "CourseCount"});
}

void BindRoot(py::module_& module) {
  Class<ClassAndCourseValue>(module, "ClassAndCourseValue")
      .Field("ValueName", &ClassAndCourseValue::ValueName)
      .Field("ClassIndex", &ClassAndCourseValue::ClassIndex)
      .Field("CourseNum", &ClassAndCourseValue::CourseNum)
      .Field("FileName", &ClassAndCourseValue::FileName)
      .Field("RunnerCount", &ClassAndCourseValue::RunnerCount)
      .ShowsFields();
  Class<Root> root(module, "clsKeltrun2");
  root.MadeBy(py::init<>(), Released())
      .Property("FileName", &Root::FileName, &Root::SetFileName)
      .Property("FileDate", &Root::FileDate, &Root::SetFileDate)
      .ReadOnly("ErrorComment", &Root::ErrorComment)
      .ReadOnly("NewAnalyzer", &Root::NewAnalyzer)
      .ReadOnly("NewResultsHolder", &Root::NewResultsHolder)
      .Method("NewAnalyzersOfOtherCourses", &Root::NewAnalyzersOfOtherCourses, arg("ClassNum"))
      .Method("NewEstimate", &Root::NewEstimate, arg("UntimedLegs") = "auto", Released())
      .Method("EventRemarks", &Root::EventRemarks, Released())
      .Method("ShiftClock", &Root::ShiftClock, arg("ControlCode"), arg("Seconds"))
      .ReadOnly("EventData", &Root::EventData)
      .ReadOnly("FileControl", &Root::FileControl)
      .ReadOnly("GraphicControl", &Root::GraphicControl)
      .ReadOnly("HtmlControl", &Root::HtmlControl)
      .ReadOnly("TextControl", &Root::TextControl)
      .ReadOnly("ConfigControl", &Root::ConfigControl)
      .ReadOnly("MetaData", &Root::MetaData);
  BindEvent(root);
  BindLists(root);
}

}  // namespace

void BindServices(py::module_& module) {
  BindWindows(module);
  BindSite(module);
  BindFileControl(module);
  BindOutputs(module);
  BindGraphics(module);
  BindSettings(module);
  BindRoot(module);
}

}  // namespace keltrun::python
