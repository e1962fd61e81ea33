// A PDF document in memory, page by page.
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

  /// Sizes in points; the drawing's unit is `points_per_unit` points, its origin lies `left` and
  /// `top` units from the paper's corner.
  struct Page {
    double Width;
    double Height;
    double PointsPerUnit;
    double Left = 0;
    double Top = 0;
  };

  /// Begins a page; what it gives is valid as long as the document lives and draws on the page that
  /// was begun last.
  CairoSurface& NewPage(const Page& page);
  bool IsEmpty() const { return surface_ == nullptr; }

  /// Ends the document and gives its bytes; afterwards it is empty again. Raises invalid procedure
  /// call (5) when the drawing failed for want of memory.
  std::string Finish();
  /// Forgets the document.
  void Discard();

 private:
  void Begin(const Page& page);

  cairo_surface_t* surface_ = nullptr;
  cairo_t* context_ = nullptr;
  CairoSurface drawing_;
  std::string bytes_;
};

}  // namespace keltrun
