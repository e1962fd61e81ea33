// The description of a font as a plain value, independent of how it is drawn.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "keltrun2/base/export.h"

namespace keltrun {

/// A font description. The setters ignore values that no font can have, so that a setting that is
/// missing or empty leaves the default in place.
class KELTRUN2_API Font {
 public:
  /// The name of the font family.
  const std::string& Face() const { return face_; }
  /// Sets the name of the font family; an empty name is ignored.
  void SetFace(std::string_view face) {
    if (!face.empty()) face_ = face;
  }
  /// The size in points.
  double Size() const { return size_; }
  /// Sets the size in points; a size that is not above 0 is ignored.
  void SetSize(double size) {
    if (size > 0) size_ = size;
  }
  bool Bold = false;       ///< Whether letters are bold.
  bool Italic = false;     ///< Whether letters are italic.
  bool Underline = false;  ///< Whether text is underlined.
  /// Character set number (128 is Japanese, 0 Western).
  std::int32_t Charset = 0;

  /// Whether all values are equal.
  friend bool operator==(const Font&, const Font&) = default;

 private:
  std::string face_ = "sans-serif";
  double size_ = 9;
};

}  // namespace keltrun
