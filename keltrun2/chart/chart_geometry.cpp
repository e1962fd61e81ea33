#include "keltrun2/chart/chart_geometry.h"

#include <cmath>

namespace keltrun {
namespace {

// Narrows the part [from, to] of a line to where start + part * length is not above `limit`.
bool Narrow(double start, double length, double limit, double& from, double& to) {
  if (length == 0) return start <= limit;
  const double part = (limit - start) / length;
  if (length > 0) {
    to = std::min(to, part);
  } else {
    from = std::max(from, part);
  }
  return from <= to;
}

}  // namespace

bool CutToBox(const ChartBox& box, ChartPoint& a, ChartPoint& b) {
  const double dx = b.X - a.X;
  const double dy = b.Y - a.Y;
  if (!std::isfinite(dx) || !std::isfinite(dy)) return false;
  double from = 0;
  double to = 1;
  if (!Narrow(a.X, dx, box.Right, from, to) || !Narrow(-a.X, -dx, -box.Left, from, to) ||
      !Narrow(a.Y, dy, box.Bottom, from, to) || !Narrow(-a.Y, -dy, -box.Top, from, to)) {
    return false;
  }
  const auto at = [&](double part, const ChartPoint& end) {
    const bool cut = part > 0 && part < 1;
    const ChartPoint point = cut ? ChartPoint{a.X + part * dx, a.Y + part * dy} : end;
    return ChartPoint{std::clamp(point.X, box.Left, box.Right),
                      std::clamp(point.Y, box.Top, box.Bottom)};
  };
  const ChartPoint first = at(from, from < 1 ? a : b);
  b = at(to, to > 0 ? b : a);
  a = first;
  return true;
}

double SquaredDistance(ChartPoint point, ChartPoint a, ChartPoint b) {
  const double dx = b.X - a.X;
  const double dy = b.Y - a.Y;
  const double length = dx * dx + dy * dy;
  double part = 0;
  if (length > 0) {
    part = std::clamp(((point.X - a.X) * dx + (point.Y - a.Y) * dy) / length, 0.0, 1.0);
  }
  const double to_x = point.X - (a.X + part * dx);
  const double to_y = point.Y - (a.Y + part * dy);
  return to_x * to_x + to_y * to_y;
}

}  // namespace keltrun
