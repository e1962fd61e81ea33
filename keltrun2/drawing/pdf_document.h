// A PDF document, made in memory page by page.
#pragma once

#include <cairo.h>

#include <string>

#include "keltrun2/drawing/cairo_surface.h"

namespace keltrun {

class PdfDocument {
 public:
  PdfDocument() = default;
  ~PdfDocument();
  PdfDocument(const PdfDocument&) = delete;
  PdfDocument& operator=(const PdfDocument&) = delete;

  /// Width and height are in points. The unit of the drawing is PointsPerUnit points; its origin is
  /// Left and Top units away from the upper left corner of the paper.
  struct Page {
    double Width;
    double Height;
    double PointsPerUnit;
    double Left = 0;
    double Top = 0;
  };

  /// Begins a page. The surface is valid as long as this object exists; it always draws on the page
  /// begun last.
  CairoSurface& NewPage(const Page& page);
  bool IsEmpty() const { return surface_ == nullptr; }

  /// Ends the document and returns its bytes; afterwards it is empty again. Raises invalid
  /// procedure call (5) if the drawing ran out of memory.
  std::string Finish();
  /// Discards all pages.
  void Discard();

 private:
  void Begin(const Page& page);

  cairo_surface_t* surface_ = nullptr;
  cairo_t* context_ = nullptr;
  CairoSurface drawing_;
  std::string bytes_;
};

}  // namespace keltrun
