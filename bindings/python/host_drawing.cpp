// Fonts, and the pictures, printers and grids that Python classes can implement.
#include <set>

#include "bindings/python/binding.h"
#include "keltrun2/keltrun2.h"

namespace keltrun::python {
namespace {

using py::arg;

// The members that a Python class overrides. A call of a required member that is missing raises
// RuntimeError in Python.
template <typename Base>
class PythonSurface : public Base {
 public:
  void DrawLine(float X1, float Y1, float X2, float Y2, Color LineColor, float DrawWidth) override {
    PYBIND11_OVERRIDE_PURE(void, Base, DrawLine, X1, Y1, X2, Y2, LineColor, DrawWidth);
  }
  void DrawBox(float Left, float Top, float Width, float Height, Color BoxColor, float DrawWidth,
               bool Fill) override {
    PYBIND11_OVERRIDE_PURE(void, Base, DrawBox, Left, Top, Width, Height, BoxColor, DrawWidth,
                           Fill);
  }
  void DrawCircle(float X, float Y, float Radius, Color CircleColor, float DrawWidth,
                  bool Fill) override {
    PYBIND11_OVERRIDE_PURE(void, Base, DrawCircle, X, Y, Radius, CircleColor, DrawWidth, Fill);
  }
  void DrawText(std::string_view Text, float X, float Y, const TextStyle& Style) override {
    PYBIND11_OVERRIDE_PURE(void, Base, DrawText, Text, X, Y, Style);
  }
  float TextWidth(std::string_view Text, const TextStyle& Style) override {
    PYBIND11_OVERRIDE_PURE(float, Base, TextWidth, Text, Style);
  }
  float TextHeight(const TextStyle& Style) override {
    PYBIND11_OVERRIDE_PURE(float, Base, TextHeight, Style);
  }
  void SetClip(float Left, float Top, float Width, float Height) override {
    PYBIND11_OVERRIDE_PURE(void, Base, SetClip, Left, Top, Width, Height);
  }
  void ResetClip() override { PYBIND11_OVERRIDE_PURE(void, Base, ResetClip, ); }
};

class PythonPicture : public PythonSurface<PictureBox> {
 public:
  void SetScaleMode(std::int32_t ScaleMode) override {
    PYBIND11_OVERRIDE_PURE(void, PictureBox, SetScaleMode, ScaleMode);
  }
  void SetBackColor(Color BackColor) override {
    PYBIND11_OVERRIDE_PURE(void, PictureBox, SetBackColor, BackColor);
  }
  void Clear() override { PYBIND11_OVERRIDE_PURE(void, PictureBox, Clear, ); }
  float ScaleWidth() const override { PYBIND11_OVERRIDE_PURE(float, PictureBox, ScaleWidth, ); }
  float ScaleHeight() const override { PYBIND11_OVERRIDE_PURE(float, PictureBox, ScaleHeight, ); }
  float Width() const override { PYBIND11_OVERRIDE_PURE(float, PictureBox, Width, ); }
  void SetWidth(float Width) override { PYBIND11_OVERRIDE_PURE(void, PictureBox, SetWidth, Width); }
};

class PythonPrinter : public Printer {
 public:
  const std::string& DeviceName() const override {
    const py::gil_scoped_acquire lock;
    name_ = Call("DeviceName").cast<std::string>();
    return name_;
  }
  void SetPaperSize(std::int32_t PaperSize) override {
    PYBIND11_OVERRIDE_PURE(void, Printer, SetPaperSize, PaperSize);
  }
  void SetOrientation(std::int32_t Orientation) override {
    PYBIND11_OVERRIDE_PURE(void, Printer, SetOrientation, Orientation);
  }
  PaperMetrics Metrics() const override {
    PYBIND11_OVERRIDE_PURE(PaperMetrics, Printer, Metrics, );
  }
  DrawingSurface& NewSheet() override { return Surface(sheet_, "NewSheet"); }
  DrawingSurface& Measure() override { return Surface(measure_, "Measure"); }
  void EndDocument() override { PYBIND11_OVERRIDE_PURE(void, Printer, EndDocument, ); }

 private:
  py::object Call(const char* name) const {
    const py::function method = py::get_override(static_cast<const Printer*>(this), name);
    if (!method) py::pybind11_fail(std::string("Printer is missing ") + name);
    return method();
  }
  // The component goes on using the surface after the call.
  DrawingSurface& Surface(py::object& kept, const char* name) {
    const py::gil_scoped_acquire lock;
    kept = Call(name);
    return kept.cast<DrawingSurface&>();
  }

  mutable std::string name_;
  py::object sheet_, measure_;
};

class PythonGrid : public clsGridObject {
 public:
  keltrun::Color Color(KrColorTypeConst ColorType) override {
    PYBIND11_OVERRIDE(keltrun::Color, clsGridObject, Color, ColorType);
  }
  void SetTextMatrix(std::int32_t Row, std::int32_t Col, std::string_view Text) override {
    PYBIND11_OVERRIDE(void, clsGridObject, SetTextMatrix, Row, Col, Text);
  }
  void Clear() override { PYBIND11_OVERRIDE(void, clsGridObject, Clear, ); }
  void SetVisible(bool Visible) override {
    PYBIND11_OVERRIDE(void, clsGridObject, SetVisible, Visible);
  }
  void SetCols(std::int32_t Cols) override {
    PYBIND11_OVERRIDE(void, clsGridObject, SetCols, Cols);
  }
  void SetRows(std::int32_t Rows) override {
    PYBIND11_OVERRIDE(void, clsGridObject, SetRows, Rows);
  }
  void SetColWidth(std::int32_t Index, std::int32_t Width) override {
    PYBIND11_OVERRIDE(void, clsGridObject, SetColWidth, Index, Width);
  }
  void SelectCell(std::int32_t Row, std::int32_t Col, std::int32_t RowSel,
                  std::int32_t ColSel) override {
    PYBIND11_OVERRIDE(void, clsGridObject, SelectCell, Row, Col, RowSel, ColSel);
  }
  void SetCellBackColor(keltrun::Color BackColor) override {
    PYBIND11_OVERRIDE(void, clsGridObject, SetCellBackColor, BackColor);
  }
  void SetCellAlignment(KrAlignTypeConst Alignment) override {
    PYBIND11_OVERRIDE(void, clsGridObject, SetCellAlignment, Alignment);
  }
  void SetCellForeColor(keltrun::Color ForeColor) override {
    PYBIND11_OVERRIDE(void, clsGridObject, SetCellForeColor, ForeColor);
  }
  void SetColAlignment(std::int32_t Index, KrAlignTypeConst Alignment) override {
    PYBIND11_OVERRIDE(void, clsGridObject, SetColAlignment, Index, Alignment);
  }
};

void BindFont(py::module_& module) {
  Class<Font>(module, "Font")
      .MadeBy(Fields<Font>())
      .Property("Face", &Font::Face, &Font::SetFace)
      .Property("Size", &Font::Size, &Font::SetSize)
      .Field("Bold", &Font::Bold)
      .Field("Italic", &Font::Italic)
      .Field("Underline", &Font::Underline)
      .Field("Charset", &Font::Charset)
      .Shows({"Face", "Size", "Bold", "Italic", "Underline", "Charset"});
  Class<TextStyle>(module, "TextStyle")
      .MadeBy(Fields<TextStyle>())
      .Field("Font", &TextStyle::Font)
      .Field("Size", &TextStyle::Size)
      .Field("HeightRatio", &TextStyle::HeightRatio)
      .Field("Turned", &TextStyle::Turned)
      .Field("Color", &TextStyle::Color)
      .Field("Halo", &TextStyle::Halo)
      .ShowsFields();
}

void BindPictures(py::module_& module) {
  Class<DrawingSurface, PythonSurface<DrawingSurface>>(module, "DrawingSurface")
      .MadeBy(py::init<>())
      .Method("DrawLine", &DrawingSurface::DrawLine, arg("X1"), arg("Y1"), arg("X2"), arg("Y2"),
              arg("LineColor"), arg("DrawWidth"))
      .Method("DrawBox", &DrawingSurface::DrawBox, arg("Left"), arg("Top"), arg("Width"),
              arg("Height"), arg("BoxColor"), arg("DrawWidth"), arg("Fill"))
      .Method("DrawCircle", &DrawingSurface::DrawCircle, arg("X"), arg("Y"), arg("Radius"),
              arg("CircleColor"), arg("DrawWidth"), arg("Fill"))
      .Method("DrawText", &DrawingSurface::DrawText, arg("Text"), arg("X"), arg("Y"), arg("Style"))
      .Method("TextWidth", &DrawingSurface::TextWidth, arg("Text"), arg("Style"))
      .Method("TextHeight", &DrawingSurface::TextHeight, arg("Style"))
      .Method("SetClip", &DrawingSurface::SetClip, arg("Left"), arg("Top"), arg("Width"),
              arg("Height"))
      .Method("ResetClip", &DrawingSurface::ResetClip);
  Class<PictureBox, DrawingSurface, PythonPicture>(module, "PictureBox")
      .MadeBy(py::init<>())
      .Constant("kScalePixels", PictureBox::kScalePixels)
      .Method("SetScaleMode", &PictureBox::SetScaleMode, arg("ScaleMode"))
      .Method("SetBackColor", &PictureBox::SetBackColor, arg("BackColor"))
      .Method("Clear", &PictureBox::Clear)
      .Method("ScaleWidth", &PictureBox::ScaleWidth)
      .Method("ScaleHeight", &PictureBox::ScaleHeight)
      .Method("Width", &PictureBox::Width)
      .Method("SetWidth", &PictureBox::SetWidth, arg("Width"));
  Enumeration<PictureFormatConst>(
      module, "PictureFormatConst",
      {KR_VALUE(KR_PICTURE_PNG), KR_VALUE(KR_PICTURE_SVG), KR_VALUE(KR_PICTURE_PDF)});
  Class<CairoPicture, PictureBox>(module, "CairoPicture")
      .MadeBy(py::init<std::int32_t, std::int32_t, PictureFormatConst>(), arg("Width"),
              arg("Height"), arg("Format") = KR_PICTURE_PNG)
      .Method("Encode",
              [](CairoPicture& picture) {
                std::string bytes;
                {
                  const py::gil_scoped_release released;
                  bytes = picture.Encode();
                }
                return py::bytes(bytes);
              })
      .Method("Save", &CairoPicture::Save, arg("Path"), Released());
  module.def("HasJapaneseFont", &HasJapaneseFont, Doc("HasJapaneseFont"), Released());
}

// The printers that Python installed; they must be removed before the interpreter ends.
std::set<std::string>& InstalledNames() {
  static std::set<std::string> names;
  return names;
}

void BindPrinters(py::module_& module) {
  Enumeration<PaperSizeConst>(
      module, "PaperSizeConst",
      {KR_VALUE(KR_PAPER_LETTER), KR_VALUE(KR_PAPER_LEGAL), KR_VALUE(KR_PAPER_A3),
       KR_VALUE(KR_PAPER_A4), KR_VALUE(KR_PAPER_A5), KR_VALUE(KR_PAPER_B4), KR_VALUE(KR_PAPER_B5)});
  Class<PaperMetrics>(module, "PaperMetrics")
      .MadeBy(Fields<PaperMetrics>())
      .Field("PaperWidth", &PaperMetrics::PaperWidth)
      .Field("PaperHeight", &PaperMetrics::PaperHeight)
      .Field("OffsetLeft", &PaperMetrics::OffsetLeft)
      .Field("OffsetTop", &PaperMetrics::OffsetTop)
      .Field("PrintableWidth", &PaperMetrics::PrintableWidth)
      .Field("PrintableHeight", &PaperMetrics::PrintableHeight)
      .ShowsFields();
  Class<Printer, PythonPrinter>(module, "Printer")
      .MadeBy(py::init<>())
      .Method("DeviceName", &Printer::DeviceName)
      .Method("SetPaperSize", &Printer::SetPaperSize, arg("PaperSize"))
      .Method("SetOrientation", &Printer::SetOrientation, arg("Orientation"))
      .Method("Metrics", &Printer::Metrics)
      .Method("NewSheet", &Printer::NewSheet)
      .Method("Measure", &Printer::Measure)
      .Method("EndDocument", &Printer::EndDocument);
  Class<PdfPrinter, Printer>(module, "PdfPrinter")
      .MadeBy(py::init<std::string, std::string>(), arg("Name") = "PDF", arg("Path") = "")
      .ReadOnly("Document",
                [](const PdfPrinter& printer) { return py::bytes(printer.Document()); });
  module.def("PrinterNames", &PrinterNames, Doc("PrinterNames"), Released());
  module.def("FindPrinter", MayBeNone(&FindPrinter), Doc("FindPrinter"), arg("DeviceName"),
             Released());
  module.def(
      "InstallPrinter",
      [](const py::object& printer) {
        const auto kept = Kept<Printer>(printer);
        InstallPrinter(kept);
        InstalledNames().insert(kept->DeviceName());
      },
      Doc("InstallPrinter"), arg("NewPrinter"));
  module.def("RemovePrinter", &RemovePrinter, Doc("RemovePrinter"), arg("DeviceName"));
  AtExit([] {
    for (const std::string& name : InstalledNames()) RemovePrinter(name);
  });
}

void BindGrid(py::module_& module) {
  Enumeration<KrAlignTypeConst>(
      module, "KrAlignTypeConst",
      {KR_VALUE(KR_ALIGN_CENTER), KR_VALUE(KR_ALIGN_RIGHT), KR_VALUE(KR_ALIGN_LEFT)});
  Enumeration<KrColorTypeConst>(module, "KrColorTypeConst",
                                {KR_VALUE(KR_COLOR_NAME),
                                 KR_VALUE(KR_COLOR_NAME_TITLE),
                                 KR_VALUE(KR_COLOR_RESULT),
                                 KR_VALUE(KR_COLOR_RESULT_TITLE),
                                 KR_VALUE(KR_COLOR_LAP),
                                 KR_VALUE(KR_COLOR_LAP_TITLE),
                                 KR_VALUE(KR_COLOR_SPLIT),
                                 KR_VALUE(KR_COLOR_SPLIT_TITLE),
                                 KR_VALUE(KR_COLOR_RELATIVE),
                                 KR_VALUE(KR_COLOR_RELATIVE_TITLE),
                                 KR_VALUE(KR_COLOR_MISS),
                                 KR_VALUE(KR_COLOR_MISS_TITLE),
                                 KR_VALUE(KR_COLOR_CRUISE_MISSRATE),
                                 KR_VALUE(KR_COLOR_CRUISE_MISSRATE_TITLE),
                                 KR_VALUE(KR_COLOR_MISSTOTAL),
                                 KR_VALUE(KR_COLOR_MISSTOTAL_TITLE),
                                 KR_VALUE(KR_COLOR_RELATIVETOTAL),
                                 KR_VALUE(KR_COLOR_RELATIVETOTAL_TITLE),
                                 KR_VALUE(KR_COLOR_NOMISS),
                                 KR_VALUE(KR_COLOR_NOMISS_TITLE),
                                 KR_VALUE(KR_COLOR_RANK1),
                                 KR_VALUE(KR_COLOR_RANK2),
                                 KR_VALUE(KR_COLOR_RANK3)});
  Class<clsGridObject, PythonGrid>(module, "clsGridObject")
      .MadeBy(py::init<>())
      .Method("Color", &clsGridObject::Color, arg("ColorType"))
      .Method("SetTextMatrix", &clsGridObject::SetTextMatrix, arg("Row"), arg("Col"), arg("Text"))
      .Method("Clear", &clsGridObject::Clear)
      .Method("SetVisible", &clsGridObject::SetVisible, arg("Visible"))
      .Method("SetCols", &clsGridObject::SetCols, arg("Cols"))
      .Method("SetRows", &clsGridObject::SetRows, arg("Rows"))
      .Method("SetColWidth", &clsGridObject::SetColWidth, arg("Index"), arg("Width"))
      .Method("SelectCell", &clsGridObject::SelectCell, arg("Row"), arg("Col"), arg("RowSel") = -1,
              arg("ColSel") = -1)
      .Method("SetCellBackColor", &clsGridObject::SetCellBackColor, arg("BackColor"))
      .Method("SetCellAlignment", &clsGridObject::SetCellAlignment, arg("Alignment"))
      .Method("SetCellForeColor", &clsGridObject::SetCellForeColor, arg("ForeColor"))
      .Method("SetColAlignment", &clsGridObject::SetColAlignment, arg("Index"), arg("Alignment"));
}

}  // namespace

void BindHostDrawing(py::module_& module) {
  BindFont(module);
  BindPictures(module);
  BindPrinters(module);
  BindGrid(module);
}

}  // namespace keltrun::python
