#include "keltrun2/drawing/cairo_picture.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <mutex>
#include <new>
#include <utility>

#include "keltrun2/base/automation_error.h"
#include "keltrun2/drawing/cairo_fonts.h"
#include "keltrun2/drawing/cairo_surface.h"
#include "keltrun2/drawing/pdf_document.h"
#include "keltrun2/drawing/png_writer.h"
#include "keltrun2/drawing/svg_surface.h"
#include "keltrun2/os/files.h"

namespace keltrun {
namespace {

constexpr std::int32_t kLongestSide = 20000;
constexpr std::int32_t kMostPixels = 100'000'000;
constexpr std::size_t kMostKeptPixels = std::size_t{1} << 24;
constexpr double kPointsPerPixel = 72.0 / 96;

struct Size {
  std::int32_t Width;
  std::int32_t Height;

  std::size_t PixelCount() const {
    return static_cast<std::size_t>(Width) * static_cast<std::size_t>(Height);
  }
};

// The canvas that a picture is drawn on. Each format has its own.
class Canvas {
 public:
  virtual ~Canvas() = default;
  /// Starts an empty picture.
  virtual void Start(Size size, Color back_color) = 0;
  virtual DrawingSurface& Drawing() = 0;
  virtual std::string Encode() = 0;
};

// --- PNG ---

// Allocating fresh memory takes as long as drawing in it, so the pixels of the last picture are
// kept for the next one.
struct Pixels {
  std::unique_ptr<std::uint32_t[]> Data;
  std::size_t Count = 0;
};

// Shared by all threads: a spare picture for each of them would take too much memory.
class SparePixels {
 public:
  static Pixels Exchange(Pixels pixels) {
    static SparePixels spare;
    const std::lock_guard lock(spare.mutex_);
    return std::exchange(spare.pixels_, std::move(pixels));
  }

 private:
  std::mutex mutex_;
  Pixels pixels_;
};

Pixels TakePixels(std::size_t count) {
  Pixels pixels = SparePixels::Exchange({});
  if (pixels.Count < count) {
    pixels.Data.reset();
    pixels.Data = std::make_unique_for_overwrite<std::uint32_t[]>(count);
    pixels.Count = count;
  }
  return pixels;
}

// Keeps these pixels or the spare ones, whichever are more.
void GiveBack(Pixels pixels) {
  if (pixels.Count > kMostKeptPixels) return;
  Pixels before = SparePixels::Exchange({});
  if (before.Count >= pixels.Count) pixels = std::move(before);
  SparePixels::Exchange(std::move(pixels));
}

class PngCanvas final : public Canvas {
 public:
  ~PngCanvas() override {
    Close();
    GiveBack(std::move(pixels_));
  }

  void Start(Size size, Color back_color) override {
    // A context that has failed draws nothing more. There is a context unless the size is 0.
    const bool same_size = size.Width == size_.Width && size.Height == size_.Height;
    if (!same_size || cairo_status(context_) != CAIRO_STATUS_SUCCESS) Open(size);
    const std::uint32_t rgb = static_cast<std::uint32_t>(Red(back_color) << 16 |
                                                         Green(back_color) << 8 | Blue(back_color));
    drawing_.ResetClip();
    cairo_surface_flush(surface_);
    std::fill_n(pixels_.Data.get(), size_.PixelCount(), rgb);
    cairo_surface_mark_dirty(surface_);
  }

  DrawingSurface& Drawing() override { return drawing_; }

  std::string Encode() override {
    if (context_ == nullptr) {  // there was not enough memory to open it
      throw AutomationError(KR_ERROR_INVALID_CALL, "cannot draw the picture: out of memory");
    }
    drawing_.Flush();
    if (const cairo_status_t status = cairo_status(context_)) {
      throw AutomationError(KR_ERROR_INVALID_CALL, std::string("cannot draw the picture: ") +
                                                       cairo_status_to_string(status));
    }
    cairo_surface_flush(surface_);
    try {
      return encoder_.Encode({pixels_.Data.get(), size_.Width, size_.Height});
    } catch (const std::bad_alloc&) {
      throw AutomationError(KR_ERROR_INVALID_CALL, "cannot make the PNG: out of memory");
    }
  }

 private:
  void Open(Size size) {
    Close();
    size_ = {0, 0};  // stays 0 if there is not enough memory
    const std::size_t count = size.PixelCount();
    if (pixels_.Count < count) {
      GiveBack(std::exchange(pixels_, {}));
      pixels_ = TakePixels(count);
    }
    size_ = size;
    surface_ = cairo_image_surface_create_for_data(
        reinterpret_cast<unsigned char*>(pixels_.Data.get()), CAIRO_FORMAT_RGB24, size.Width,
        size.Height, size.Width * 4);
    context_ = cairo_create(surface_);
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_SLIGHT);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    cairo_set_font_options(context_, options);
    cairo_font_options_destroy(options);
    drawing_.SetContext(context_, CairoSurface::Target::kPixels);
  }

  void Close() {
    drawing_.SetContext(nullptr);
    const auto lock = LockFonts();
    if (context_ != nullptr) cairo_destroy(std::exchange(context_, nullptr));
    if (surface_ != nullptr) cairo_surface_destroy(std::exchange(surface_, nullptr));
  }

  Size size_{0, 0};
  Pixels pixels_;
  cairo_surface_t* surface_ = nullptr;
  cairo_t* context_ = nullptr;
  CairoSurface drawing_;
  PngEncoder encoder_;
};

// --- SVG and PDF ---

class SvgCanvas final : public Canvas {
 public:
  void Start(Size size, Color back_color) override {
    drawing_.Start(size.Width, size.Height, back_color);
  }
  DrawingSurface& Drawing() override { return drawing_; }
  std::string Encode() override { return drawing_.Document(); }

 private:
  SvgSurface drawing_;
};

class PdfCanvas final : public Canvas {
 public:
  void Start(Size size, Color back_color) override {
    size_ = size;
    back_color_ = back_color;
    document_.Discard();
    drawing_ = &document_.NewPage(
        {size.Width * kPointsPerPixel, size.Height * kPointsPerPixel, kPointsPerPixel});
    if (back_color == kWhite) return;  // the page is white already
    drawing_->DrawBox(0, 0, static_cast<float>(size.Width), static_cast<float>(size.Height),
                      back_color, 0, true);
  }
  DrawingSurface& Drawing() override { return *drawing_; }
  std::string Encode() override {
    try {
      std::string bytes = document_.Finish();
      Start(size_, back_color_);
      return bytes;
    } catch (const AutomationError&) {
      Start(size_, back_color_);  // the next picture needs a document too
      throw;
    }
  }

 private:
  Size size_{0, 0};
  Color back_color_ = kWhite;
  PdfDocument document_;
  DrawingSurface* drawing_ = nullptr;  // owned by the document
};

std::unique_ptr<Canvas> NewCanvas(PictureFormatConst format) {
  switch (format) {
    case KR_PICTURE_PNG:
      return std::make_unique<PngCanvas>();
    case KR_PICTURE_SVG:
      return std::make_unique<SvgCanvas>();
    case KR_PICTURE_PDF:
      return std::make_unique<PdfCanvas>();
  }
  throw AutomationError(KR_ERROR_INVALID_CALL, "CairoPicture: there is no picture format " +
                                                   std::to_string(format) +
                                                   "; choose 0 (PNG), 1 (SVG) or 2 (PDF)");
}

void CheckSize(std::int32_t width, std::int32_t height) {
  if (std::min(width, height) >= 1 && std::max(width, height) <= kLongestSide &&
      height <= kMostPixels / width) {
    return;
  }
  throw AutomationError(KR_ERROR_INVALID_CALL,
                        "CairoPicture: a picture cannot have " + std::to_string(width) + " x " +
                            std::to_string(height) + " pixels; both sizes must be 1 to " +
                            std::to_string(kLongestSide) + ", with at most " +
                            std::to_string(kMostPixels) + " pixels in all");
}

}  // namespace

struct CairoPicture::State {
  Size PictureSize;
  Color BackColor = kWhite;
  std::unique_ptr<keltrun::Canvas> Canvas;

  void Start() const { Canvas->Start(PictureSize, BackColor); }
  DrawingSurface& Drawing() const { return Canvas->Drawing(); }
};

CairoPicture::CairoPicture(std::int32_t Width, std::int32_t Height, PictureFormatConst Format) {
  CheckSize(Width, Height);
  state_ = std::make_unique<State>(State{{Width, Height}, kWhite, NewCanvas(Format)});
  state_->Start();
}

CairoPicture::~CairoPicture() = default;

void CairoPicture::SetScaleMode(std::int32_t /*ScaleMode*/) {}

void CairoPicture::SetBackColor(Color BackColor) {
  state_->BackColor = BackColor;
  state_->Start();
}

void CairoPicture::Clear() { state_->Start(); }

float CairoPicture::ScaleWidth() const { return static_cast<float>(state_->PictureSize.Width); }
float CairoPicture::ScaleHeight() const { return static_cast<float>(state_->PictureSize.Height); }
float CairoPicture::Width() const { return ScaleWidth(); }

void CairoPicture::SetWidth(float Width) {
  if (std::isnan(Width)) return;
  const std::int32_t widest = std::min(kLongestSide, kMostPixels / state_->PictureSize.Height);
  const Size before = state_->PictureSize;
  state_->PictureSize.Width =
      static_cast<std::int32_t>(std::ceil(std::clamp(Width, 1.0F, static_cast<float>(widest))));
  try {
    state_->Start();
  } catch (...) {  // not enough memory for that width
    state_->PictureSize = before;
    throw;
  }
}

void CairoPicture::DrawLine(float X1, float Y1, float X2, float Y2, Color LineColor,
                            float DrawWidth) {
  state_->Drawing().DrawLine(X1, Y1, X2, Y2, LineColor, DrawWidth);
}

void CairoPicture::DrawBox(float Left, float Top, float Width, float Height, Color BoxColor,
                           float DrawWidth, bool Fill) {
  state_->Drawing().DrawBox(Left, Top, Width, Height, BoxColor, DrawWidth, Fill);
}

void CairoPicture::DrawCircle(float X, float Y, float Radius, Color CircleColor, float DrawWidth,
                              bool Fill) {
  state_->Drawing().DrawCircle(X, Y, Radius, CircleColor, DrawWidth, Fill);
}

void CairoPicture::DrawText(std::string_view Text, float X, float Y, const TextStyle& Style) {
  state_->Drawing().DrawText(Text, X, Y, Style);
}

float CairoPicture::TextWidth(std::string_view Text, const TextStyle& Style) {
  return state_->Drawing().TextWidth(Text, Style);
}

float CairoPicture::TextHeight(const TextStyle& Style) {
  return state_->Drawing().TextHeight(Style);
}

void CairoPicture::SetClip(float Left, float Top, float Width, float Height) {
  state_->Drawing().SetClip(Left, Top, Width, Height);
}

void CairoPicture::ResetClip() { state_->Drawing().ResetClip(); }

std::string CairoPicture::Encode() { return state_->Canvas->Encode(); }

void CairoPicture::Save(std::string_view Path) {
  std::string error;
  if (!WriteFile(std::string(Path), Encode(), error)) {
    throw AutomationError(KR_ERROR_INVALID_CALL, error);
  }
}

}  // namespace keltrun
