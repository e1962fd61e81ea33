// A font as a plain value: what to draw with, not how.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

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

}  // namespace keltrun
