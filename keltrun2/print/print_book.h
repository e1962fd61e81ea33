// Pages that are recorded first and printed or previewed afterwards.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "keltrun2/base/export.h"
#include "keltrun2/drawing/picture.h"
#include "keltrun2/printing/printer.h"

namespace keltrun {

/// The horizontal position of a text in its box, or of a virtual area in its cell.
enum PrintBookAlignConst : std::int32_t {
  PRINTBOOK_ALIGN_LEFT = 0,    ///< At the left edge.
  PRINTBOOK_ALIGN_CENTER = 1,  ///< In the middle.
  PRINTBOOK_ALIGN_RIGHT = 2,   ///< At the right edge.
};

/// The vertical position of a text in its box, or of a virtual area in its cell.
enum PrintBookValignConst : std::int32_t {
  PRINTBOOK_VALIGN_TOP = 0,     ///< At the upper edge.
  PRINTBOOK_VALIGN_MIDDLE = 1,  ///< In the middle.
  PRINTBOOK_VALIGN_BOTTOM = 2,  ///< At the lower edge.
};

/// Published alignment values. 0 to 2 equal those of PrintBookAlignConst; tpatEqual, cast to that
/// type, makes `clsPrintBook::PrintText` spread the characters of each line over the box.
enum TorbelPrintAlignType : std::int32_t {
  tpatLeft = 0,    ///< At the left edge.
  tpatCenter = 1,  ///< In the middle.
  tpatRight = 2,   ///< At the right edge.
  tpatEqual = 3,   ///< The characters of each line are spread over the box.
};

/// Published vertical alignment values. 0 to 2 equal those of PrintBookValignConst; tpvtEqual, cast
/// to that type, makes `clsPrintBook::PrintText` spread the lines over the box.
enum TorbelPrintValignType : std::int32_t {
  tpvtTop = 0,     ///< At the upper edge.
  tpvtMiddle = 1,  ///< In the middle.
  tpvtBottom = 2,  ///< At the lower edge.
  tpvtEqual = 3,   ///< The lines are spread over the box.
};

/// The Orientation parameter of `clsPrintBook::Init`.
enum TorbelPrintOrientationType : std::int32_t {
  tpotPortrate = 0,   ///< Portrait: the sheet is taller than it is wide.
  tpotLandscape = 1,  ///< Landscape: the sheet is wider than it is tall.
};

/// For hosts that fit texts into boxes of their own; no member of the component uses it.
enum TorbelTextAutoScaleType : std::int32_t {
  ttastNone = 0,        ///< The text keeps its size.
  ttastRatioFixed = 1,  ///< The text is scaled by the same factor across and down.
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
/// While a page is printed or shown, the host of the printer or picture may change the book as it
/// likes: the pages are those that were there at the beginning.
///
/// Sheet measures are in mm. The zoom converts virtual units to mm. At a zoom of 1, font sizes are
/// in points and line widths in dots of 1/300 inch; both grow with the zoom.
class KELTRUN2_API clsPrintBook {
 public:
  /// An empty book on a PDF printer that keeps its document in memory.
  clsPrintBook();
  ~clsPrintBook();
  clsPrintBook(const clsPrintBook&) = delete;
  clsPrintBook& operator=(const clsPrintBook&) = delete;

  /// The zoom of `ShowPreview`: 1 shows the whole sheet as large as the picture allows; a larger
  /// factor shows its upper left part. 0 and below mean 1.
  float PreviewZoomRatio = 1;

  /// Empties the book and chooses the printer, the paper (PaperSizeConst), the orientation
  /// (TorbelPrintOrientationType), the margins in mm (at least the strips on which the printer
  /// cannot print; the bottom margin is kept as a whole number) and the zoom in mm per virtual unit
  /// (0 means 1). If no printer has the name, the book keeps its printer.
  void Init(std::string_view PrinterName, std::int32_t PaperSize, std::int32_t Orientation,
            float MarginLeft, float MarginTop, float MarginBottom, float MarginRight,
            float ZoomRatio);

  /// Ends the current page; does nothing while that page is empty.
  void NewPage();

  /// Fits a virtual area into the cell. A size of 0 is computed from the other one by the shape of
  /// the cell; two zeros change nothing. An area smaller than the cell is enlarged to fill it only
  /// with AutoEnlarge.
  void SetVirtualSize(float VirtualPrintAreaX, float VirtualPrintAreaY, bool AutoEnlarge = true,
                      PrintBookAlignConst PageAlign = PRINTBOOK_ALIGN_CENTER,
                      PrintBookValignConst PageValign = PRINTBOOK_VALIGN_MIDDLE);

  /// Splits each sheet into RowCount x ColCount cells (at least 1 each), one page per cell, filled
  /// row by row. The intervals between them are in mm.
  void SetSeparation(std::int32_t RowCount, std::int32_t ColCount, float RowInterval,
                     float ColInterval);

  /// Prints the pages from StartPage to EndPage, counted from 1; 0 is the last page. The first of
  /// them goes into the first cell of the first sheet. Raises invalid procedure call (5) when the
  /// printer fails or is still printing another document.
  void Execute(std::int32_t StartPage = 1, std::int32_t EndPage = 0);

  /// Draws a sheet into a picture with the given page (from 1) alone in its cell. If there is no
  /// such page, the sheet is empty. The margin around the sheet is 4 percent of the picture's
  /// smaller side. Parts that a zoom moves beyond the edge of the picture are drawn there all the
  /// same, so a host scrolls by moving its picture's origin. Raises object not set (91) for null.
  void ShowPreview(const std::shared_ptr<PictureBox>& PreviewPicture, std::int32_t PageNum);

  /// Prints a text in a box. Lines end at CR LF, CR or LF; a TAB moves to the next multiple of the
  /// width of eight digits. A line wider than the box extends beyond it; with AutoStringCut it is
  /// cut and ends in an ellipsis (a left-aligned line is cut where the virtual area ends as well).
  /// With IsLandscape the text is turned 90 degrees clockwise: it runs from the top of the box to
  /// its bottom, TextAlign applies along the height, and the first line is at the right. ChrHeight
  /// multiplies the height of the letters; their width stays the same.
  void PrintText(std::string_view Expression, const Font& TextFont, float Left, float Top,
                 float Width, float Height, PrintBookAlignConst TextAlign,
                 PrintBookValignConst TextValign, bool IsLandscape = false, float ChrHeight = 1.0f,
                 Color TextColor = 0, bool AutoStringCut = false);
  /// Draws the outline of a rectangle, or fills the rectangle and ignores DrawWidth.
  void DrawBox(float Left, float Top, float Width, float Height, Color BoxColor, float DrawWidth,
               bool Fill);
  /// Draws a line from (Left, Top) to (Left + Width, Top + Height).
  void DrawLine(float Left, float Top, float Width, float Height, Color LineColor, float DrawWidth);
  /// Fills a circle, or draws its outline with a line of width 1. Only here is the color a float;
  /// everywhere else it is an integer.
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
  /// Changes the factor; 0 means 1. SetVirtualSize and SetSeparation reset it to 1.
  void SetVirtualZoomRatio(float Ratio);
  /// How far the current page is filled across. The book only stores it for the caller.
  float PrintedAreaWidth() const;
  /// Notes how far the current page is filled across.
  void SetPrintedAreaWidth(float Width);
  /// How far the current page is filled down. The book only stores it for the caller.
  float PrintedAreaHeight() const;
  /// Notes how far the current page is filled down.
  void SetPrintedAreaHeight(float Height);

  /// Rows of cells on a sheet.
  std::int32_t RowCount() const;
  /// Columns of cells on a sheet.
  std::int32_t ColCount() const;
  /// Number of pages with at least one drawing.
  std::int32_t PageCount() const;

  /// The printer in use, never null. Until `Init` has found one, it is a PDF printer that keeps its
  /// document in memory.
  const std::shared_ptr<Printer>& PrinterObject() const;

  /// Releases the printer and the recorded pages when the host closes the window FormObject; the
  /// book is then like a new one. Never fails.
  void TryUnload(const void* FormObject);

 private:
  friend class PrintBookInternal;
  struct State;
  std::shared_ptr<State> state_;
};

}  // namespace keltrun
