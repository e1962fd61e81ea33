#include "keltrun2/print/print_book.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <mutex>

#include "keltrun2/base/automation_error.h"
#include "keltrun2/codec/utf8.h"
#include "keltrun2/drawing/drawing_limits.h"
#include "keltrun2/print/print_book_internal.h"
#include "keltrun2/print/text_layout.h"
#include "keltrun2/text/numbers.h"

namespace keltrun {
namespace {

using Page = PrintBookInternal::Page;

constexpr double kDotsPerInch = 300;

constexpr Color kPreviewBackColor = 0xA0A0A0;
constexpr Color kPaperColor = 0xFFFFFF;
constexpr float kPreviewMargin = 0.04f;  // on each side, of the picture's smaller side
constexpr float kPixel = 1;

// A ratio from a caller. A value that cannot scale anything becomes 1.
float UsableRatio(float ratio) { return std::isfinite(ratio) && ratio != 0 ? ratio : 1; }

float WholeMm(float margin) {
  using Limits = std::numeric_limits<std::int16_t>;
  return static_cast<float>(
      std::clamp<std::int32_t>(RoundToLong(margin), Limits::min(), Limits::max()));
}

// Where something of `size` begins in a cell with an alignment of 0, 1 or 2.
float AlignedOffset(std::int32_t alignment, float cell, float size) {
  if (alignment == PRINTBOOK_ALIGN_CENTER) return (cell - size) / 2;
  if (alignment == PRINTBOOK_ALIGN_RIGHT) return cell - size;
  return 0;
}

// The placement of a page on a surface.
struct Frame {
  float left = 0, top = 0;  // of the virtual area
  float unit = 1;           // units of the surface for each virtual unit
  float width = 0;          // of the virtual area, in units of the surface
  float thinnest_line = 0;

  float X(float x) const { return left + x * unit; }
  float Y(float y) const { return top + y * unit; }
  float LineWidth(float dots) const {
    return std::max(static_cast<float>(dots * kMmPerInch / kDotsPerInch) * unit, thinnest_line);
  }
};

// A page and the number of all pages.
struct PageNumber {
  std::int32_t number, count;
};

std::string WithPageNumber(std::string text, const PageNumber& page) {
  const auto put = [&](std::string_view place, std::int32_t value) {
    const std::size_t at = text.find(place);
    if (at != std::string::npos) text.replace(at, place.size(), std::to_string(value));
  };
  put("%1", page.number);
  put("%2", page.count);
  return text;
}

void DrawTextRecord(DrawingSurface& surface, const Frame& frame, const PageNumber& page,
                    const clsPrintBookLine& line) {
  TextStyle style;
  style.Font = *line.TextFont;
  const double millimeters = line.TextFont->Size() * kMmPerInch / kPointsPerInch;
  style.Size = static_cast<float>(millimeters) * frame.unit;
  style.HeightRatio = line.ChrHeight;
  style.Turned = line.IsLandscape;
  style.Color = line.Color;
  const std::string numbered = line.IsPageNumber ? WithPageNumber(line.Text, page) : "";
  TextBox box = {line.IsPageNumber ? numbered : line.Text,
                 frame.X(line.Left),
                 frame.Y(line.Top),
                 line.Width * frame.unit,
                 line.Height * frame.unit,
                 line.Align,
                 line.Valign,
                 line.AutoStringCut};
  // A text that may be cut is also cut, with an ellipsis, where the virtual area ends.
  if (box.Cut && box.Align == PRINTBOOK_ALIGN_LEFT && !line.IsLandscape) {
    box.Width = std::min(box.Width, frame.left + frame.width - box.Left);
  }
  DrawTextInBox(surface, box, style);
}

void DrawRecord(DrawingSurface& surface, const Frame& frame, const PageNumber& page,
                const clsPrintBookLine& line) {
  const float width = frame.LineWidth(line.DrawWidth);
  switch (line.Kind) {
    case PrintKind::kText:
      DrawTextRecord(surface, frame, page, line);
      break;
    case PrintKind::kBox:
      surface.DrawBox(frame.X(line.Left), frame.Y(line.Top), line.Width * frame.unit,
                      line.Height * frame.unit, line.Color, width, line.Fill);
      break;
    case PrintKind::kLine:
      surface.DrawLine(frame.X(line.Left), frame.Y(line.Top), frame.X(line.Left + line.Width),
                       frame.Y(line.Top + line.Height), line.Color, width);
      break;
    case PrintKind::kCircle:
      surface.DrawCircle(frame.X(line.Left), frame.Y(line.Top), line.Width * frame.unit, line.Color,
                         width, line.Fill);
      break;
  }
}

// Marks a printer as busy with a document. A second document, begun by the printer's own host or by
// another thread, would take away the sheet that the first one draws on.
class Printing {
 public:
  explicit Printing(const Printer* printer) : printer_(printer) {
    const std::lock_guard lock(Mutex());
    if (std::find(Busy().begin(), Busy().end(), printer) != Busy().end()) {
      throw AutomationError(KR_ERROR_INVALID_CALL,
                            "clsPrintBook.Execute: the printer is printing another document; call "
                            "it again when that one is done");
    }
    Busy().push_back(printer);
  }
  ~Printing() {
    const std::lock_guard lock(Mutex());
    std::erase(Busy(), printer_);
  }
  Printing(const Printing&) = delete;
  Printing& operator=(const Printing&) = delete;

 private:
  static std::mutex& Mutex() {
    static std::mutex mutex;
    return mutex;
  }
  static std::vector<const Printer*>& Busy() {
    static std::vector<const Printer*> printers;
    return printers;
  }

  const Printer* printer_;
};

}  // namespace

struct clsPrintBook::State {
  std::shared_ptr<Printer> printer = std::make_shared<PdfPrinter>();
  float margin_left = 0, margin_top = 0, margin_right = 0, margin_bottom = 0;
  float zoom = 1;                               // mm per virtual unit
  float scale = 1;                              // of what is recorded
  float area_left = 0, area_top = 0;            // in the printable part, mm
  float area_width = 0, area_height = 0;        // inside the margins, mm
  float printed_width = 0, printed_height = 0;  // the caller's, times scale
  float cell_width = 0, cell_height = 0;        // mm
  float offset_x = 0, offset_y = 0;             // of the virtual area in its cell, mm
  float virtual_x = 0, virtual_y = 0;           // virtual units
  std::int32_t rows = 1, columns = 1;
  float row_interval = 0, column_interval = 0;  // mm
  // Shared with the copy that is being printed or shown, until another drawing is recorded.
  std::shared_ptr<std::vector<Page>> pages = std::make_shared<std::vector<Page>>();
  bool page_open = false;                          // the last page takes more drawings
  std::vector<std::shared_ptr<const Font>> fonts;  // the ones used last

  std::int32_t PageCount() const { return static_cast<std::int32_t>(pages->size()); }
  const Page& PageAt(std::int32_t number) const {
    return (*pages)[static_cast<std::size_t>(number) - 1];
  }

  std::int64_t CellsPerSheet() const { return std::int64_t{rows} * columns; }

  // The frame of the page in a cell (from 0), in mm from the printable part's corner.
  Frame CellFrame(std::int64_t cell) const {
    const std::int64_t row_index = cell / columns;
    const auto column = static_cast<float>(cell % columns);
    const auto row = static_cast<float>(row_index);
    return {offset_x + area_left + (cell_width + column_interval) * column,
            offset_y + area_top + (cell_height + row_interval) * row, zoom, virtual_x * zoom};
  }

  // Nothing is drawn outside the virtual area, except the outer half of lines along its edge.
  void DrawPage(DrawingSurface& surface, const Frame& frame, std::int32_t number) const {
    const Page& page = PageAt(number);
    float widest = 0;
    for (const clsPrintBookLine& line : page) {
      if (!line.Fill) widest = std::max(widest, line.DrawWidth);
    }
    const float edge = frame.LineWidth(widest) / 2;
    surface.SetClip(frame.left - edge, frame.top - edge, frame.width + 2 * edge,
                    virtual_y * frame.unit + 2 * edge);
    for (const clsPrintBookLine& line : page) {
      DrawRecord(surface, frame, {number, PageCount()}, line);
    }
    surface.ResetClip();
  }

  clsPrintBookLine& Record(PrintKind kind, float left, float top, float width, float height,
                           Color color, float draw_width, bool fill) {
    if (pages.use_count() > 1) pages = std::make_shared<std::vector<Page>>(*pages);
    if (!page_open) pages->emplace_back();
    page_open = true;
    clsPrintBookLine& line = pages->back().emplace_back();
    line.Kind = kind;
    line.Left = left * scale;
    line.Top = top * scale;
    line.Width = width * scale;
    line.Height = height * scale;
    line.Color = color;
    line.DrawWidth = draw_width * scale;
    line.Fill = fill;
    return line;
  }

  // The font in its recorded size. A page uses few fonts, so the records share them.
  std::shared_ptr<const Font> SharedFont(Font font) {
    constexpr std::size_t kKept = 8;
    font.SetSize(font.Size() * static_cast<double>(scale));
    for (const auto& kept : fonts) {
      if (*kept == font) return kept;
    }
    if (fonts.size() == kKept) fonts.erase(fonts.begin());
    return fonts.emplace_back(std::make_shared<const Font>(std::move(font)));
  }
};

clsPrintBook::clsPrintBook() : state_(std::make_shared<State>()) {}
clsPrintBook::~clsPrintBook() = default;

void clsPrintBook::Init(std::string_view PrinterName, std::int32_t PaperSize,
                        std::int32_t Orientation, float MarginLeft, float MarginTop,
                        float MarginBottom, float MarginRight, float ZoomRatio) {
  const std::shared_ptr<State> state = state_;  // the printer's host may release the book
  State fresh;
  fresh.printer = FindPrinter(PrinterName);
  if (!fresh.printer) fresh.printer = state_->printer;
  fresh.printer->SetPaperSize(PaperSize);
  fresh.printer->SetOrientation(Orientation);
  fresh.zoom = UsableRatio(ZoomRatio);

  const PaperMetrics paper = fresh.printer->Metrics();
  const float right = paper.PaperWidth - paper.PrintableWidth - paper.OffsetLeft;
  const float bottom = paper.PaperHeight - paper.PrintableHeight - paper.OffsetTop;
  fresh.margin_left = std::max(paper.OffsetLeft, MarginLeft);
  fresh.margin_top = std::max(paper.OffsetTop, MarginTop);
  fresh.margin_right = std::max(right, MarginRight);
  fresh.margin_bottom = WholeMm(std::max(WholeMm(MarginBottom), bottom));

  fresh.area_left = fresh.margin_left - paper.OffsetLeft;
  fresh.area_top = fresh.margin_top - paper.OffsetTop;
  fresh.area_width = paper.PrintableWidth - fresh.area_left - (fresh.margin_right - right);
  fresh.area_height = paper.PrintableHeight - fresh.area_top - (fresh.margin_bottom - bottom);
  fresh.cell_width = fresh.area_width;
  fresh.cell_height = fresh.area_height;
  fresh.virtual_x = fresh.area_width / fresh.zoom;
  fresh.virtual_y = fresh.area_height / fresh.zoom;
  *state = std::move(fresh);
}

void clsPrintBook::NewPage() { state_->page_open = false; }

void clsPrintBook::SetVirtualSize(float VirtualPrintAreaX, float VirtualPrintAreaY,
                                  bool AutoEnlarge, PrintBookAlignConst PageAlign,
                                  PrintBookValignConst PageValign) {
  State& s = *state_;
  s.scale = 1;
  const bool has_x = VirtualPrintAreaX > 0, has_y = VirtualPrintAreaY > 0;
  const bool has_cell = s.cell_width > 0 && s.cell_height > 0;
  if (!has_cell || (!has_x && !has_y)) return;
  s.virtual_x = has_x ? VirtualPrintAreaX : VirtualPrintAreaY * s.cell_width / s.cell_height;
  s.virtual_y = has_y ? VirtualPrintAreaY : VirtualPrintAreaX * s.cell_height / s.cell_width;
  const float fit = std::min(s.cell_width / s.virtual_x, s.cell_height / s.virtual_y);
  if (fit < 1 || AutoEnlarge) s.zoom = fit;
  s.offset_x = AlignedOffset(PageAlign, s.cell_width, s.virtual_x * s.zoom);
  s.offset_y = AlignedOffset(PageValign, s.cell_height, s.virtual_y * s.zoom);
}

void clsPrintBook::SetSeparation(std::int32_t RowCount, std::int32_t ColCount, float RowInterval,
                                 float ColInterval) {
  State& s = *state_;
  s.row_interval = RowInterval;
  s.column_interval = ColInterval;
  s.rows = std::max(RowCount, 1);
  s.columns = std::max(ColCount, 1);
  s.scale = 1;
  const auto rows = static_cast<float>(s.rows), columns = static_cast<float>(s.columns);
  s.zoom /= std::max(rows, columns);
  s.cell_width = (s.area_width - ColInterval * (columns - 1)) / columns;
  s.cell_height = (s.area_height - RowInterval * (rows - 1)) / rows;
  s.offset_x = s.offset_y = 0;
  s.virtual_x = s.cell_width / s.zoom;
  s.virtual_y = s.cell_height / s.zoom;
}

void clsPrintBook::Execute(std::int32_t StartPage, std::int32_t EndPage) {
  const State s = *state_;  // a copy, which shares the pages
  const std::int32_t first = std::max(StartPage, 1);
  const std::int32_t last = EndPage < 1 ? s.PageCount() : std::min(EndPage, s.PageCount());
  if (first > last) return;
  const Printing printing(s.printer.get());
  DrawingSurface* sheet = nullptr;
  for (std::int32_t number = first; number <= last; ++number) {
    const std::int64_t cell = (number - first) % s.CellsPerSheet();
    if (cell == 0) sheet = &s.printer->NewSheet();
    s.DrawPage(*sheet, s.CellFrame(cell), number);
  }
  s.printer->EndDocument();
}

void clsPrintBook::ShowPreview(const std::shared_ptr<PictureBox>& PreviewPicture,
                               std::int32_t PageNum) {
  CheckObject(PreviewPicture, "clsPrintBook.ShowPreview");
  const State s = *state_;  // a copy, which shares the pages
  const float zoom = PreviewZoomRatio > 0 ? UsableRatio(PreviewZoomRatio) : 1;
  // The host may drop its own picture while it is drawn on.
  // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
  const std::shared_ptr<PictureBox> kept = PreviewPicture;
  PictureBox& picture = *kept;
  picture.SetScaleMode(PictureBox::kScalePixels);
  picture.SetBackColor(kPreviewBackColor);
  picture.Clear();

  const PaperMetrics paper = s.printer->Metrics();
  const float width = picture.ScaleWidth(), height = picture.ScaleHeight();
  const float margin = kPreviewMargin * std::min(width, height);
  const float fit =
      std::min((width - 2 * margin) / paper.PaperWidth, (height - 2 * margin) / paper.PaperHeight);
  const float pixels = fit * zoom;  // per mm
  const float sheet_width = paper.PaperWidth * pixels, sheet_height = paper.PaperHeight * pixels;
  // A sheet that is larger than the picture shows its upper left part.
  const float left = std::max((width - sheet_width) / 2, margin);
  const float top = std::max((height - sheet_height) / 2, margin);
  picture.DrawBox(left, top, sheet_width, sheet_height, kPaperColor, kPixel, true);
  picture.DrawBox(left, top, sheet_width, sheet_height, 0, kPixel, false);
  if (PageNum < 1 || PageNum > s.PageCount()) return;

  const Frame on_sheet = s.CellFrame((PageNum - 1) % s.CellsPerSheet());
  const Frame frame = {left + (paper.OffsetLeft + on_sheet.left) * pixels,
                       top + (paper.OffsetTop + on_sheet.top) * pixels, on_sheet.unit * pixels,
                       on_sheet.width * pixels, kPixel};
  s.DrawPage(picture, frame, PageNum);
}

void clsPrintBook::PrintText(std::string_view Expression, const Font& TextFont, float Left,
                             float Top, float Width, float Height, PrintBookAlignConst TextAlign,
                             PrintBookValignConst TextValign, bool IsLandscape, float ChrHeight,
                             Color TextColor, bool AutoStringCut) {
  State& s = *state_;
  // Everything that can run out of memory comes before the record is added.
  std::string text = ValidUtf8(Expression);
  auto font = s.SharedFont(TextFont);
  clsPrintBookLine& line =
      s.Record(PrintKind::kText, Left, Top, Width, Height, TextColor, 0, false);
  line.Text = std::move(text);
  line.TextFont = std::move(font);
  line.Align = TextAlign;
  line.Valign = TextValign;
  line.IsLandscape = IsLandscape;
  line.ChrHeight = ChrHeight > 0 ? UsableRatio(ChrHeight) : 1;
  line.AutoStringCut = AutoStringCut;
}

void clsPrintBook::DrawBox(float Left, float Top, float Width, float Height, Color BoxColor,
                           float DrawWidth, bool Fill) {
  state_->Record(PrintKind::kBox, Left, Top, Width, Height, BoxColor, DrawWidth, Fill);
}

void clsPrintBook::DrawLine(float Left, float Top, float Width, float Height, Color LineColor,
                            float DrawWidth) {
  state_->Record(PrintKind::kLine, Left, Top, Width, Height, LineColor, DrawWidth, false);
}

void clsPrintBook::DrawCircle(float X, float Y, float Radius, float CircleColor, bool Fill) {
  constexpr float kOutline = 1;  // the call has no line width
  state_->Record(PrintKind::kCircle, X, Y, Radius, 0, RoundToLong(CircleColor), kOutline, Fill);
}

float clsPrintBook::MarginTop() const { return state_->margin_top; }
float clsPrintBook::MarginBottom() const { return state_->margin_bottom; }
float clsPrintBook::MarginLeft() const { return state_->margin_left; }
float clsPrintBook::MarginRight() const { return state_->margin_right; }
float clsPrintBook::ZoomRatio() const { return state_->zoom; }
float clsPrintBook::Width() const { return state_->virtual_x / state_->scale; }
float clsPrintBook::Height() const { return state_->virtual_y / state_->scale; }

float clsPrintBook::VirtualZoomRatio() const { return state_->scale; }
void clsPrintBook::SetVirtualZoomRatio(float Ratio) { state_->scale = UsableRatio(Ratio); }
float clsPrintBook::PrintedAreaWidth() const { return state_->printed_width / state_->scale; }
void clsPrintBook::SetPrintedAreaWidth(float Width) {
  state_->printed_width = Width * state_->scale;
}
float clsPrintBook::PrintedAreaHeight() const { return state_->printed_height / state_->scale; }
void clsPrintBook::SetPrintedAreaHeight(float Height) {
  state_->printed_height = Height * state_->scale;
}

std::int32_t clsPrintBook::RowCount() const { return state_->rows; }
std::int32_t clsPrintBook::ColCount() const { return state_->columns; }
std::int32_t clsPrintBook::PageCount() const { return state_->PageCount(); }
const std::shared_ptr<Printer>& clsPrintBook::PrinterObject() const { return state_->printer; }

void clsPrintBook::TryUnload(const void* /*FormObject*/) {
  *state_ = State();
  PreviewZoomRatio = 1;
}

void PrintBookInternal::PrintPageNumber(clsPrintBook& book, std::string_view text, const Font& font,
                                        float left, float top, float width, float height) {
  book.PrintText(text, font, left, top, width, height, PRINTBOOK_ALIGN_RIGHT,
                 PRINTBOOK_VALIGN_MIDDLE);
  book.state_->pages->back().back().IsPageNumber = true;
}

const std::vector<PrintBookInternal::Page>& PrintBookInternal::Pages(const clsPrintBook& book) {
  return *book.state_->pages;
}

}  // namespace keltrun
