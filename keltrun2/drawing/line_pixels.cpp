#include "keltrun2/drawing/line_pixels.h"

#include <algorithm>
#include <cmath>

namespace keltrun {
namespace {

// How far a line reaches over a point.
class Coverage {
 public:
  Coverage(const LineSegment& line, double width)
      : line_(line),
        reach_(width / 2 + 0.5),
        length_(std::hypot(line.X2 - line.X1, line.Y2 - line.Y1)),
        along_x_(length_ > 0 ? (line.X2 - line.X1) / length_ : 1),
        along_y_(length_ > 0 ? (line.Y2 - line.Y1) / length_ : 0) {}

  /// From 0, not at all, to 1.
  double At(double x, double y) const {
    const double dx = x - line_.X1, dy = y - line_.Y1;
    const double along = dx * along_x_ + dy * along_y_;
    const double distance = along < 0         ? std::hypot(dx, dy)
                            : along > length_ ? std::hypot(x - line_.X2, y - line_.Y2)
                                              : std::abs(dx * along_y_ - dy * along_x_);
    return std::clamp(reach_ - distance, 0.0, 1.0);
  }

  double Reach() const { return reach_; }

  struct Range {
    double From, To;
  };
  /// Where the line may cover points of this height.
  Range At(double y) const {
    Range range = {std::min(line_.X1, line_.X2) - reach_, std::max(line_.X1, line_.X2) + reach_};
    if (std::abs(along_y_) < 1e-6) return range;
    const double middle = line_.X1 + (y - line_.Y1) * along_x_ / along_y_;
    const double half = reach_ / std::abs(along_y_);
    return {std::max(range.From, middle - half), std::min(range.To, middle + half)};
  }

 private:
  LineSegment line_;
  double reach_;
  double length_;
  double along_x_, along_y_;
};

void Blend(std::uint32_t& pixel, std::uint32_t rgb, double covered) {
  const auto part = static_cast<std::uint32_t>(covered * 256 + 0.5);
  const std::uint32_t rest = 256 - part;
  // Red and blue at once, and green: their products do not overlap.
  const std::uint32_t red_blue = ((rgb & 0xFF00FF) * part + (pixel & 0xFF00FF) * rest + 0x800080);
  const std::uint32_t green = ((rgb & 0x00FF00) * part + (pixel & 0x00FF00) * rest + 0x008000);
  pixel = (red_blue >> 8 & 0xFF00FF) | (green >> 8 & 0x00FF00);
}

std::int32_t Limited(double value, std::int32_t least, std::int32_t most) {
  return static_cast<std::int32_t>(std::clamp<double>(value, least, most));
}

}  // namespace

void DrawLinePixels(const PixelPlane& plane, const LineSegment& line, double width,
                    std::uint32_t rgb, const std::optional<LineSegment>& before) {
  const Coverage coverage(line, width);
  const Coverage covered_before(before.value_or(line), width);
  const double reach = coverage.Reach();
  const std::int32_t top =
      Limited(std::floor(std::min(line.Y1, line.Y2) - reach), plane.Top, plane.Bottom);
  const std::int32_t bottom =
      Limited(std::ceil(std::max(line.Y1, line.Y2) + reach), plane.Top, plane.Bottom);
  for (std::int32_t row = top; row < bottom; ++row) {
    const double y = row + 0.5;
    const auto [from, to] = coverage.At(y);
    const std::int32_t right = Limited(std::ceil(to), plane.Left, plane.Right);
    std::uint32_t* const pixels = plane.Pixels + std::int64_t{row} * plane.RowLength;
    for (std::int32_t column = Limited(std::floor(from), plane.Left, plane.Right); column < right;
         ++column) {
      const double x = column + 0.5;
      double covered = coverage.At(x, y);
      if (covered <= 0) continue;
      if (before) {
        const double old = covered_before.At(x, y);
        if (old >= covered) continue;
        covered = (covered - old) / (1 - old);
      }
      Blend(pixels[column], rgb, covered);
    }
  }
}

}  // namespace keltrun
