// What every drawing surface shares: bounds, so that no coordinate from a host can upset a drawing
// library, units, and the parts of a color.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "keltrun2/drawing/picture.h"

namespace keltrun {

inline constexpr double kLargestCoordinate = 1e6;
inline constexpr double kLargestLineWidth = 1e4;
inline constexpr double kLargestTextSize = 1e4;
inline constexpr Color kWhite = 0xFFFFFF;
inline constexpr double kPointsPerInch = 72;
inline constexpr double kMmPerInch = 25.4;

/// Whether all numbers are finite. A shape with a coordinate that is not finite is not drawn.
template <typename... Numbers>
bool AllFinite(Numbers... numbers) {
  return (std::isfinite(numbers) && ...);
}

inline double LimitedCoordinate(double value) {
  return std::clamp(value, -kLargestCoordinate, kLargestCoordinate);
}

/// A rectangle with its corners in order.
struct Rectangle {
  double Left, Top, Right, Bottom;
};

inline Rectangle LimitedRectangle(float left, float top, float width, float height) {
  const double x1 = LimitedCoordinate(left);
  const double y1 = LimitedCoordinate(top);
  const double x2 = LimitedCoordinate(static_cast<double>(left) + width);
  const double y2 = LimitedCoordinate(static_cast<double>(top) + height);
  return {std::min(x1, x2), std::min(y1, y2), std::max(x1, x2), std::max(y1, y2)};
}

/// The width and height of the em square of a text. If they are 0, nothing is drawn and texts have
/// no width.
struct TextScale {
  double Size = 0;
  double Height = 0;
};

inline TextScale LimitedTextScale(const TextStyle& style) {
  if (!(style.Size > 0) || !(style.HeightRatio > 0)) return {};
  const double size = std::min<double>(style.Size, kLargestTextSize);
  return {size, std::min(size * style.HeightRatio, kLargestTextSize)};
}

/// The width of the white rim around the letters of a text; 0 for none.
inline double LimitedHalo(const TextStyle& style) {
  return style.Halo > 0 ? std::min<double>(style.Halo, kLargestLineWidth) : 0;
}

/// The three parts of a color number, each 0 to 255.
inline std::int32_t Red(Color color) { return color & 0xFF; }
inline std::int32_t Green(Color color) { return color >> 8 & 0xFF; }
inline std::int32_t Blue(Color color) { return color >> 16 & 0xFF; }

}  // namespace keltrun
