// Lines and points in a rectangle.
#pragma once

#include <algorithm>

namespace keltrun {

struct ChartPoint {
  double X = 0, Y = 0;
};

/// A rectangle by its edges.
struct ChartBox {
  double Left = 0, Top = 0, Right = 0, Bottom = 0;
};

/// Clips the line from `a` to `b` to the box; false when no part of it lies inside or when a
/// coordinate is not finite. The new ends lie exactly inside.
[[nodiscard]] bool CutToBox(const ChartBox& box, ChartPoint& a, ChartPoint& b);

/// The square of the distance from a point to the nearest point of a line, its ends included.
double SquaredDistance(ChartPoint point, ChartPoint a, ChartPoint b);

inline bool Overlap(const ChartBox& a, const ChartBox& b) {
  return a.Left < b.Right && b.Left < a.Right && a.Top < b.Bottom && b.Top < a.Bottom;
}

}  // namespace keltrun
