// In place of the other sources of this folder in a library built without KELTRUN2_WITH_DRAWING:
// nobody gets a picture.
#include "keltrun2/base/automation_error.h"
#include "keltrun2/drawing/cairo_picture.h"

namespace keltrun {

struct CairoPicture::State {};

CairoPicture::CairoPicture(std::int32_t /*Width*/, std::int32_t /*Height*/,
                           PictureFormatConst /*Format*/) {
  throw AutomationError(KR_ERROR_INVALID_CALL,
                        "CairoPicture: this version of the program makes no pictures");
}
CairoPicture::~CairoPicture() = default;

// No picture exists, so nothing of this is ever called.
void CairoPicture::SetScaleMode(std::int32_t /*ScaleMode*/) {}
void CairoPicture::SetBackColor(Color /*BackColor*/) {}
void CairoPicture::Clear() {}
float CairoPicture::ScaleWidth() const { return 0; }
float CairoPicture::ScaleHeight() const { return 0; }
float CairoPicture::Width() const { return 0; }
void CairoPicture::SetWidth(float /*Width*/) {}
void CairoPicture::DrawLine(float /*X1*/, float /*Y1*/, float /*X2*/, float /*Y2*/,
                            Color /*LineColor*/, float /*DrawWidth*/) {}
void CairoPicture::DrawBox(float /*Left*/, float /*Top*/, float /*Width*/, float /*Height*/,
                           Color /*BoxColor*/, float /*DrawWidth*/, bool /*Fill*/) {}
void CairoPicture::DrawCircle(float /*X*/, float /*Y*/, float /*Radius*/, Color /*CircleColor*/,
                              float /*DrawWidth*/, bool /*Fill*/) {}
void CairoPicture::DrawText(std::string_view /*Text*/, float /*X*/, float /*Y*/,
                            const TextStyle& /*Style*/) {}
float CairoPicture::TextWidth(std::string_view /*Text*/, const TextStyle& /*Style*/) { return 0; }
float CairoPicture::TextHeight(const TextStyle& /*Style*/) { return 0; }
void CairoPicture::SetClip(float /*Left*/, float /*Top*/, float /*Width*/, float /*Height*/) {}
void CairoPicture::ResetClip() {}
std::string CairoPicture::Encode() { return ""; }
void CairoPicture::Save(std::string_view /*Path*/) {}

// Nothing is drawn, so no font is missed; the picture itself says why there is none.
bool HasJapaneseFont() { return true; }

}  // namespace keltrun
