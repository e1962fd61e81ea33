#include "keltrun2/drawing/pdf_document.h"

#include <cairo-pdf.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <exception>
#include <utility>

#include "keltrun2/base/automation_error.h"
#include "keltrun2/drawing/cairo_fonts.h"
#include "keltrun2/os/clock.h"

namespace keltrun {
namespace {

// Called from C code, so no exception may leave it.
cairo_status_t AppendBytes(void* closure, const unsigned char* data, unsigned int length) {
  try {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
  } catch (const std::exception&) {
    return CAIRO_STATUS_WRITE_ERROR;
  }
}

// The time of our clock as YYYY-MM-DDThh:mm:ss. Otherwise cairo would use the system's clock, and
// documents could not be reproduced.
std::string CreationDate() {
  using namespace std::chrono;
  const double days = Now();
  const sys_seconds moment = sys_days(year{1899} / December / 30) +
                             seconds(static_cast<std::int64_t>(std::llround(days * 86400)));
  const sys_days day = floor<std::chrono::days>(moment);
  const year_month_day date(day);
  const hh_mm_ss time(moment - day);
  char text[32];
  std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02d", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                static_cast<int>(time.seconds().count()));
  return text;
}

}  // namespace

PdfDocument::~PdfDocument() { Discard(); }

void PdfDocument::Begin(const Page& page) {
  surface_ = cairo_pdf_surface_create_for_stream(AppendBytes, &bytes_, page.Width, page.Height);
  cairo_pdf_surface_set_metadata(surface_, CAIRO_PDF_METADATA_CREATOR, "Keltrun2");
  cairo_pdf_surface_set_metadata(surface_, CAIRO_PDF_METADATA_CREATE_DATE, CreationDate().c_str());
  context_ = cairo_create(surface_);
  cairo_font_options_t* options = cairo_font_options_create();
  cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
  cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
  cairo_set_font_options(context_, options);
  cairo_font_options_destroy(options);
}

CairoSurface& PdfDocument::NewPage(const Page& page) {
  if (surface_ == nullptr) {
    Begin(page);
  } else {
    drawing_.ResetClip();
    const auto lock = LockFonts();
    cairo_show_page(context_);
    cairo_pdf_surface_set_size(surface_, page.Width, page.Height);
  }
  cairo_identity_matrix(context_);
  cairo_scale(context_, page.PointsPerUnit, page.PointsPerUnit);
  cairo_translate(context_, page.Left, page.Top);
  drawing_.SetContext(context_, CairoSurface::Target::kVectors, page.PointsPerUnit);
  return drawing_;
}

std::string PdfDocument::Finish() {
  drawing_.Flush();
  cairo_status_t status = cairo_status(context_);
  {
    const auto lock = LockFonts();  // this call embeds the fonts
    cairo_surface_finish(surface_);
  }
  if (status == CAIRO_STATUS_SUCCESS) status = cairo_surface_status(surface_);
  std::string bytes = std::move(bytes_);
  Discard();
  if (status == CAIRO_STATUS_SUCCESS) return bytes;
  throw AutomationError(KR_ERROR_INVALID_CALL,
                        std::string("cannot make the PDF: ") + cairo_status_to_string(status));
}

void PdfDocument::Discard() {
  drawing_.SetContext(nullptr);
  const auto lock = LockFonts();
  if (context_ != nullptr) cairo_destroy(std::exchange(context_, nullptr));
  if (surface_ != nullptr) cairo_surface_destroy(std::exchange(surface_, nullptr));
  bytes_.clear();
}

}  // namespace keltrun
