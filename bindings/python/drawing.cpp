// Print books and charts.
#include "bindings/python/binding.h"
#include "keltrun2/keltrun2.h"

namespace keltrun::python {
namespace {

using py::arg;

void BindPrintBook(py::module_& module) {
  Enumeration<PrintBookAlignConst>(
      module, "PrintBookAlignConst",
      {KR_VALUE(PRINTBOOK_ALIGN_LEFT), KR_VALUE(PRINTBOOK_ALIGN_CENTER),
       KR_VALUE(PRINTBOOK_ALIGN_RIGHT)});
  Enumeration<PrintBookValignConst>(
      module, "PrintBookValignConst",
      {KR_VALUE(PRINTBOOK_VALIGN_TOP), KR_VALUE(PRINTBOOK_VALIGN_MIDDLE),
       KR_VALUE(PRINTBOOK_VALIGN_BOTTOM)});
  Enumeration<TorbelPrintAlignType>(
      module, "TorbelPrintAlignType",
      {KR_VALUE(tpatLeft), KR_VALUE(tpatCenter), KR_VALUE(tpatRight), KR_VALUE(tpatEqual)});
  Enumeration<TorbelPrintValignType>(
      module, "TorbelPrintValignType",
      {KR_VALUE(tpvtTop), KR_VALUE(tpvtMiddle), KR_VALUE(tpvtBottom), KR_VALUE(tpvtEqual)});
  Enumeration<TorbelPrintOrientationType>(module, "TorbelPrintOrientationType",
                                          {KR_VALUE(tpotPortrate), KR_VALUE(tpotLandscape)});
  Enumeration<TorbelTextAutoScaleType>(
      module, "TorbelTextAutoScaleType",
      {KR_VALUE(ttastNone), KR_VALUE(ttastRatioFixed), KR_VALUE(ttastJustFit)});
  Class<clsPrintBook>(module, "clsPrintBook")
      .MadeBy(py::init<>())
      .Field("PreviewZoomRatio", &clsPrintBook::PreviewZoomRatio)
      .Method("Init", &clsPrintBook::Init, arg("PrinterName"), arg("PaperSize"), arg("Orientation"),
              arg("MarginLeft"), arg("MarginTop"), arg("MarginBottom"), arg("MarginRight"),
              arg("ZoomRatio"), Released())
      .Method("NewPage", &clsPrintBook::NewPage)
      .Method("SetVirtualSize", &clsPrintBook::SetVirtualSize, arg("VirtualPrintAreaX"),
              arg("VirtualPrintAreaY"), arg("AutoEnlarge") = true,
              arg("PageAlign") = PRINTBOOK_ALIGN_CENTER,
              arg("PageValign") = PRINTBOOK_VALIGN_MIDDLE)
      .Method("SetSeparation", &clsPrintBook::SetSeparation, arg("RowCount"), arg("ColCount"),
              arg("RowInterval"), arg("ColInterval"))
      .Method("Execute", &clsPrintBook::Execute, arg("StartPage") = 1, arg("EndPage") = 0,
              Released())
      .Method("ShowPreview", &clsPrintBook::ShowPreview, arg("PreviewPicture"), arg("PageNum"),
              Released())
      .Method("PrintText", &clsPrintBook::PrintText, arg("Expression"), arg("TextFont"),
              arg("Left"), arg("Top"), arg("Width"), arg("Height"), arg("TextAlign"),
              arg("TextValign"), arg("IsLandscape") = false, arg("ChrHeight") = 1.0F,
              arg("TextColor") = 0, arg("AutoStringCut") = false)
      .Method("DrawBox", &clsPrintBook::DrawBox, arg("Left"), arg("Top"), arg("Width"),
              arg("Height"), arg("BoxColor"), arg("DrawWidth"), arg("Fill"))
      .Method("DrawLine", &clsPrintBook::DrawLine, arg("Left"), arg("Top"), arg("Width"),
              arg("Height"), arg("LineColor"), arg("DrawWidth"))
      .Method("DrawCircle", &clsPrintBook::DrawCircle, arg("X"), arg("Y"), arg("Radius"),
              arg("CircleColor"), arg("Fill"))
      .ReadOnly("MarginTop", &clsPrintBook::MarginTop)
      .ReadOnly("MarginBottom", &clsPrintBook::MarginBottom)
      .ReadOnly("MarginLeft", &clsPrintBook::MarginLeft)
      .ReadOnly("MarginRight", &clsPrintBook::MarginRight)
      .ReadOnly("ZoomRatio", &clsPrintBook::ZoomRatio)
      .ReadOnly("Width", &clsPrintBook::Width)
      .ReadOnly("Height", &clsPrintBook::Height)
      .Property("VirtualZoomRatio", &clsPrintBook::VirtualZoomRatio,
                &clsPrintBook::SetVirtualZoomRatio)
      .Property("PrintedAreaWidth", &clsPrintBook::PrintedAreaWidth,
                &clsPrintBook::SetPrintedAreaWidth)
      .Property("PrintedAreaHeight", &clsPrintBook::PrintedAreaHeight,
                &clsPrintBook::SetPrintedAreaHeight)
      .ReadOnly("RowCount", &clsPrintBook::RowCount)
      .ReadOnly("ColCount", &clsPrintBook::ColCount)
      .ReadOnly("PageCount", &clsPrintBook::PageCount)
      .ReadOnly("PrinterObject", &clsPrintBook::PrinterObject)
      .Method(
          "TryUnload",
          [](clsPrintBook& book, const py::object& form) { book.TryUnload(form.ptr()); },
          arg("FormObject") = py::none());
}

// The chart in a Python object; null before the object is initialized.
PythonChart* ChartOf(PyObject* self) {
  auto* const instance = reinterpret_cast<py::detail::instance*>(self);
  if (!instance->simple_layout || !instance->simple_holder_constructed) return nullptr;
  return static_cast<PythonChart*>(instance->simple_value_holder[0]);
}

// Lets the garbage collector see the picture, and release it when nothing but the chart and the
// picture refer to each other.
void TraversePicture(PyHeapTypeObject* heap_type) {
  PyTypeObject& type = heap_type->ht_type;
  type.tp_flags |= Py_TPFLAGS_HAVE_GC;
  type.tp_traverse = [](PyObject* self, visitproc visit, void* arg) {
    Py_VISIT(Py_TYPE(self));
    if (const PythonChart* chart = ChartOf(self)) Py_VISIT(chart->picture.ptr());
    return 0;
  };
  type.tp_clear = [](PyObject* self) {
    PythonChart* const chart = ChartOf(self);
    if (chart == nullptr || !chart->picture) return 0;
    chart->picture = {};
    chart->SetPrintBookObject(std::make_shared<clsPrintBook>());  // in place of the picture
    return 0;
  };
  type.tp_dealloc = [](PyObject* self) {
    PyObject_GC_UnTrack(self);
    py::detail::pybind11_object_dealloc(self);
  };
}

void BindCharts(py::module_& module) {
  Enumeration<KrChartModeConst>(
      module, "KrChartModeConst",
      {KR_VALUE(KR_CHART_NORMAL), KR_VALUE(KR_CHART_REALTIME), KR_VALUE(KR_CHART_RELATIVE),
       KR_VALUE(KR_CHART_RELATIVE_110), KR_VALUE(KR_CHART_RELATIVE_130),
       KR_VALUE(KR_CHART_CRUISE_MISSRATE), KR_VALUE(KR_CHART_CRUISE_HALFRATIO),
       KR_VALUE(KR_CHART_VESMER)});
  module.attr("kMostNamesUnasked") = kMostNamesUnasked;
  module.attr("kChartColors") = py::tuple(py::cast(kChartColors));
  Enumeration<ChartRunnerFlagConst>(module, "ChartRunnerFlagConst",
                                    {KR_VALUE(KR_CHART_FLAG_NAME), KR_VALUE(KR_CHART_FLAG_LEGEND),
                                     KR_VALUE(KR_CHART_FLAG_HIDE), KR_VALUE(KR_CHART_FLAG_DASH)});
  Class<ChartRunnerSetting>(module, "ChartRunnerSetting")
      .Field("ForeColor", &ChartRunnerSetting::ForeColor)
      .Field("DrawWidth", &ChartRunnerSetting::DrawWidth)
      .Field("Flag", &ChartRunnerSetting::Flag)
      .ShowsFields();
  Class<ChartRunnerSetting2>(module, "ChartRunnerSetting2")
      .Field("BackLineColor", &ChartRunnerSetting2::BackLineColor)
      .Field("BackLineWidth", &ChartRunnerSetting2::BackLineWidth)
      .ShowsFields();
  Class<PythonChart>(module, "clsChartObject", py::custom_type_setup(TraversePicture))
      .MadeBy(py::init<>())
      .Field("AutoSize", &clsChartObject::AutoSize)
      .Field("BridgeGaps", &clsChartObject::BridgeGaps)
      .Field("Titles", &clsChartObject::Titles)
      .Field("AutoColors", &clsChartObject::AutoColors)
      .Field("ClearNames", &clsChartObject::ClearNames)
      .Field("FitMost", &clsChartObject::FitMost)
      .ReadOnly("RatioX", &clsChartObject::RatioX)
      .ReadOnly("RatioY", &clsChartObject::RatioY)
      .ReadOnly("PositionX", &clsChartObject::PositionX)
      .ReadOnly("PositionY", &clsChartObject::PositionY)
      .ReadOnly("ChartMode", &clsChartObject::ChartMode)
      .Method("ClearRunnerSetting", &clsChartObject::ClearRunnerSetting)
      .Method("SetRunnerSetting", &clsChartObject::SetRunnerSetting, arg("RunnerIndex"),
              arg("ForeColor"), arg("DrawWidth"), arg("Flag"))
      .Method("GetRunnerSetting", &clsChartObject::GetRunnerSetting, arg("RunnerIndex"))
      .Method("SetRunnerSetting2", &clsChartObject::SetRunnerSetting2, arg("RunnerIndex"),
              arg("BackLineColor"), arg("BackLineWidth"))
      .Method("GetRunnerSetting2", &clsChartObject::GetRunnerSetting2, arg("RunnerIndex"))
      .Method(
          "SetPictureObject",
          [](PythonChart& chart, const py::object& picture) {
            chart.SetPictureObject(Kept<PictureBox>(picture));
            chart.picture = picture;
          },
          arg("PictureObject"))
      .Method(
          "SetPrintBookObject",
          [](PythonChart& chart, std::shared_ptr<clsPrintBook> book) {
            chart.SetPrintBookObject(std::move(book));
            chart.picture = {};
          },
          arg("PrintBookObject"))
      .ReadOnly("Width", &clsChartObject::Width)
      .ReadOnly("Height", &clsChartObject::Height)
      .ReadOnly("WidthOccupied", &clsChartObject::WidthOccupied)
      .ReadOnly("HeightOccupied", &clsChartObject::HeightOccupied)
      .Method("MousePointRunnerIndex", &clsChartObject::MousePointRunnerIndex, arg("X"), arg("Y"))
      .Method("DrawChart", &clsChartObject::DrawChart, Released());
  module.def(
      "ChartRatioToFit",
      [](const clsAnalyzer& analyzer, const PythonChart& chart, KrChartModeConst mode) {
        return ChartRatioToFit(analyzer, chart, mode);
      },
      Doc("ChartRatioToFit"), arg("Analyzer"), arg("Chart"), arg("ChartMode"));
}

}  // namespace

void BindDrawing(py::module_& module) {
  BindPrintBook(module);
  BindCharts(module);
}

}  // namespace keltrun::python
