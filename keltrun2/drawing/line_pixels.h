// Slanted lines with smooth edges, drawn straight into pixels.
#pragma once

#include <cstdint>
#include <optional>

namespace keltrun {

/// Rows of pixels of 0x__RRGGBB each, and the box of them that may be drawn on. Right and Bottom
/// are just outside.
struct PixelPlane {
  std::uint32_t* Pixels;
  std::int32_t RowLength;
  std::int32_t Left, Top, Right, Bottom;
};

/// A line from one point to another. Pixels are squares whose corners have whole numbers.
struct LineSegment {
  double X1, Y1, X2, Y2;
};

/// Draws a line with round ends, at least one pixel wide. Each pixel gets as much of the color as
/// the line covers of it, so a line has the same weight in every direction. A line that continues
/// one of the same width and color covers only what that one has left, so that the joint is not
/// drawn twice.
void DrawLinePixels(const PixelPlane& plane, const LineSegment& line, double width,
                    std::uint32_t rgb, const std::optional<LineSegment>& before = std::nullopt);

}  // namespace keltrun
