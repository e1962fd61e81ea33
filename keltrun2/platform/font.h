// A font as a plain value: what to draw with, not how.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/platform/export.h"

namespace keltrun {

/// A font description. The setters skip values that no font can have, so that a gap in the
/// settings leaves the default standing.
class KELTRUN2_API Font {
 public:
  /// The name of the font family.
  const std::string& Face() const { return face_; }
  /// An empty face is skipped.
  void SetFace(std::string_view face) {
    if (!face.empty()) face_ = face;
  }
  /// In points.
  double Size() const { return size_; }
  /// A size that is not above 0 is skipped.
  void SetSize(double size) {
    if (size > 0) size_ = size;
  }
  /// The style.
  bool Bold = false;
  bool Italic = false;
  bool Underline = false;
  /// Character set number (128 is Japanese, 0 Western).
  std::int32_t Charset = 0;

  friend bool operator==(const Font&, const Font&) = default;

 private:
  std::string face_ = "sans-serif";
  double size_ = 9;
};

/// One control on a window of the component, as far as fonts are concerned.
struct FormControl {
  std::string TypeName;  // kind of control, such as "FloatButton"
  keltrun::Font Font;    // what its text is written in
  /// Used by a control whose TypeName is "FloatButton" in place of Font: its own four fonts.
  keltrun::Font Font1;
  keltrun::Font FontOnMouse1;
  keltrun::Font Font2;
  keltrun::Font FontOnMouse2;
};

/// The fonts of a window of the component and of every control on it.
struct FormFonts {
  keltrun::Font Font;                 // of the window itself
  std::vector<FormControl> Controls;  // in the order of the window
};

}  // namespace keltrun
