// Paper sizes, and the sheets of a document on them.
#pragma once

#include <cstdint>
#include <string>

#include "keltrun2/drawing/pdf_document.h"
#include "keltrun2/printing/printer.h"

namespace keltrun {

/// A paper size in portrait orientation, in mm. The name is the one that print servers use.
struct Paper {
  PaperSizeConst Number;
  float Width;
  float Height;
  const char* MediaName;
};

/// The edges of a portrait sheet that a printer cannot print on, in mm.
struct PaperStrips {
  float Left = 0;
  float Top = 0;
  float Right = 0;
  float Bottom = 0;
};

/// The part that all printers here share: sheets that are collected in a PDF document.
class Sheets {
 public:
  void SetPaperSize(std::int32_t paper_size);
  void SetOrientation(std::int32_t orientation) { is_landscape_ = orientation == 1; }
  const Paper& SheetPaper() const { return *paper_; }
  PaperMetrics Metrics(const PaperStrips& strips = {}) const;

  DrawingSurface& NewSheet(const PaperMetrics& metrics);
  DrawingSurface& Measure() { return measure_; }
  bool IsEmpty() const { return document_.IsEmpty(); }
  /// The sheets since the last call as a PDF document.
  std::string Finish() { return document_.Finish(); }

 private:
  const Paper* paper_ = FindPaper(KR_PAPER_A4);
  bool is_landscape_ = false;
  PdfDocument document_;
  CairoSurface measure_;

  static const Paper* FindPaper(std::int32_t number);
};

}  // namespace keltrun
