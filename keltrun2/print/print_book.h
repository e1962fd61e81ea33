// Pages that are recorded first and printed or previewed afterwards.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "keltrun2/base/export.h"
#include "keltrun2/drawing/picture.h"
#include "keltrun2/printing/printer.h"

namespace keltrun {

/// Where a text stands across its box, or a virtual area across its cell.
enum PrintBookAlignConst : std::int32_t {
  PRINTBOOK_ALIGN_LEFT = 0,    ///< At the left edge.
  PRINTBOOK_ALIGN_CENTER = 1,  ///< In the middle.
  PRINTBOOK_ALIGN_RIGHT = 2,   ///< At the right edge.
};

/// Where a text stands down its box, or a virtual area down its cell.
enum PrintBookValignConst : std::int32_t {
  PRINTBOOK_VALIGN_TOP = 0,     ///< At the upper edge.
  PRINTBOOK_VALIGN_MIDDLE = 1,  ///< In the middle.
  PRINTBOOK_VALIGN_BOTTOM = 2,  ///< At the lower edge.
};

/// Published alignment values. 0 to 2 equal those of PrintBookAlignConst; Equal, cast to it, makes
/// `clsPrintBook::PrintText` spread the characters of each line over the box.
enum TorbelPrintAlignType : std::int32_t {
  tpatLeft = 0,    ///< At the left edge.
  tpatCenter = 1,  ///< In the middle.
  tpatRight = 2,   ///< At the right edge.
  tpatEqual = 3,   ///< The characters of each line are spread over the box.
};

/// Published vertical alignment values. 0 to 2 equal those of PrintBookValignConst; Equal, cast to
/// it, makes `clsPrintBook::PrintText` spread the lines over the box.
enum TorbelPrintValignType : std::int32_t {
  tpvtTop = 0,     ///< At the upper edge.
  tpvtMiddle = 1,  ///< In the middle.
  tpvtBottom = 2,  ///< At the lower edge.
  tpvtEqual = 3,   ///< The lines are spread over the box.
};

/// What `clsPrintBook::Init` takes as Orientation.
enum TorbelPrintOrientationType : std::int32_t {
  tpotPortrate = 0,   ///< Portrait: the sheet is higher than wide.
  tpotLandscape = 1,  ///< Landscape: the sheet is wider than high.
};

/// For hosts that fit texts into boxes of their own; nothing here takes it.
enum TorbelTextAutoScaleType : std::int32_t {
  ttastNone = 0,        ///< The text keeps its size.
  ttastRatioFixed = 1,  ///< The text is scaled, as much across as down.
  ttastJustFit = 2,     ///< The text is scaled to fill the box, across and down.
};

/// A page-layout engine on top of a printer. A virtual drawing area is fitted onto the sheet, or
/// onto each cell of a sheet that is split into rows and columns of pages; texts, boxes, lines and
/// circles are recorded page by page; nothing is printed before `Execute`.
///
///     auto book = std::make_shared<clsPrintBook>();
///     book->Init("", KR_PAPER_A4, tpotPortrate, 15, 15, 15, 15, 1);
///     root->GraphicControl()->PrintResult(results, book);
///     book->Execute();
///
/// While a page is printed or shown, the printer's or the picture's host may do with the book what
/// it likes: the pages are those of the beginning.
///
/// Sheet measures are mm. Virtual units are turned into mm by the zoom; font sizes are points at a
/// zoom of 1, line widths dots of 1/300 inch at a zoom of 1, and both grow with it.
class KELTRUN2_API clsPrintBook {
 public:
  /// An empty book on a PDF printer that keeps its document in memory.
  clsPrintBook();
  ~clsPrintBook();
  clsPrintBook(const clsPrintBook&) = delete;
  clsPrintBook& operator=(const clsPrintBook&) = delete;

  /// Factor of `ShowPreview`: 1 (also taken for 0 and below) shows the whole sheet as large as the
  /// picture allows; of a larger one the upper left part is seen.
  float PreviewZoomRatio = 1;

  /// Empties the book and chooses printer, paper (PaperSizeConst), orientation
  /// (TorbelPrintOrientationType), margins in mm (raised to the printer's unprintable strips; the
  /// bottom one kept as a whole number) and mm per virtual unit (0 is taken as 1). A name that no
  /// printer has leaves the book's printer as it is.
  void Init(std::string_view PrinterName, std::int32_t PaperSize, std::int32_t Orientation,
            float MarginLeft, float MarginTop, float MarginBottom, float MarginRight,
            float ZoomRatio);

  /// Ends the page; does nothing while it is empty.
  void NewPage();

  /// Fits a virtual area into the cell. A size of 0 follows the other one by the cell's shape; both
  /// 0 change nothing. An area smaller than the cell is enlarged to fill it only with AutoEnlarge.
  void SetVirtualSize(float VirtualPrintAreaX, float VirtualPrintAreaY, bool AutoEnlarge = true,
                      PrintBookAlignConst PageAlign = PRINTBOOK_ALIGN_CENTER,
                      PrintBookValignConst PageValign = PRINTBOOK_VALIGN_MIDDLE);

  /// Splits each sheet into RowCount x ColCount cells (at least 1 each), one page a cell, filled
  /// row by row, with gaps in mm.
  void SetSeparation(std::int32_t RowCount, std::int32_t ColCount, float RowInterval,
                     float ColInterval);

  /// Prints the pages from StartPage to EndPage (from 1; 0 is the last). The first of them stands
  /// in the first cell of the first sheet. Raises invalid procedure call (5) when the printer fails
  /// or is printing already: one document at a time.
  void Execute(std::int32_t StartPage = 1, std::int32_t EndPage = 0);

  /// Draws the sheet of which the page (from 1) stands alone in its cell into a picture. A page
  /// that is not there shows an empty sheet. Around the sheet is a margin of 4 percent of the
  /// picture's smaller side; what a zoom moves beyond the picture is drawn there all the same, so a
  /// host scrolls by moving its picture's origin. Raises object not set (91) for null.
  void ShowPreview(const std::shared_ptr<PictureBox>& PreviewPicture, std::int32_t PageNum);

  /// Prints a text in a box. Lines are split at CR LF, CR or LF; a TAB goes to the next multiple of
  /// eight digits' width. A line wider than the box goes beyond it, or with AutoStringCut is cut
  /// and ends in an ellipsis (a left-aligned one also where the virtual area ends). With
  /// IsLandscape the text is turned by 90 degrees clockwise: it runs from the top of the box to its
  /// bottom, TextAlign along the height, its first line at the right. ChrHeight makes letters that
  /// many times higher at the same width.
  void PrintText(std::string_view Expression, const Font& TextFont, float Left, float Top,
                 float Width, float Height, PrintBookAlignConst TextAlign,
                 PrintBookValignConst TextValign, bool IsLandscape = false, float ChrHeight = 1.0f,
                 Color TextColor = 0, bool AutoStringCut = false);
  /// Draws the outline of a rectangle, or fills it; then DrawWidth does not count.
  void DrawBox(float Left, float Top, float Width, float Height, Color BoxColor, float DrawWidth,
               bool Fill);
  /// Draws a line from (Left, Top) to (Left + Width, Top + Height).
  void DrawLine(float Left, float Top, float Width, float Height, Color LineColor, float DrawWidth);
  /// Fills a circle, or draws its outline in a line of width 1. The color is a Single here and a
  /// Long everywhere else.
  void DrawCircle(float X, float Y, float Radius, float CircleColor, bool Fill);

  /// Upper margin in mm.
  float MarginTop() const;
  /// Lower margin in mm.
  float MarginBottom() const;
  /// Left margin in mm.
  float MarginLeft() const;
  /// Right margin in mm.
  float MarginRight() const;
  /// The zoom, in mm per virtual unit.
  float ZoomRatio() const;

  /// Width of the virtual area of a page, in virtual units divided by VirtualZoomRatio.
  float Width() const;
  /// Height of the virtual area of a page, in virtual units divided by VirtualZoomRatio.
  float Height() const;

  /// Factor by which everything recorded from now on is multiplied; 1 at first.
  float VirtualZoomRatio() const;
  /// Changes the factor; 0 is taken as 1. SetVirtualSize and SetSeparation put it back to 1.
  void SetVirtualZoomRatio(float Ratio);
  /// How far the current page is filled across. The book only keeps it for the caller.
  float PrintedAreaWidth() const;
  /// Notes how far the current page is filled across.
  void SetPrintedAreaWidth(float Width);
  /// How far the current page is filled down. The book only keeps it for the caller.
  float PrintedAreaHeight() const;
  /// Notes how far the current page is filled down.
  void SetPrintedAreaHeight(float Height);

  /// Rows of cells on a sheet.
  std::int32_t RowCount() const;
  /// Columns of cells on a sheet.
  std::int32_t ColCount() const;
  /// Number of pages with at least one drawing.
  std::int32_t PageCount() const;

  /// The printer in use, never null: before `Init` found one, a PDF printer that keeps its document
  /// in memory.
  const std::shared_ptr<Printer>& PrinterObject() const;

  /// Lets go of the printer and the recorded pages when the host closes the window FormObject; the
  /// book is then as new. Never fails.
  void TryUnload(const void* FormObject);

 private:
  friend class PrintBookInternal;
  struct State;
  std::shared_ptr<State> state_;
};

}  // namespace keltrun
