#include "keltrun2/drawing/line_pixels.h"

#include <algorithm>
#include <cmath>

namespace keltrun {
namespace {

// The share of a pixel that lies on one side of an edge.
class Edge {
 public:
  /// The edge runs in the direction (along_x, along_y), a vector of length 1.
  Edge(double along_x, double along_y)
      : longer_(std::max(std::abs(along_x), std::abs(along_y))),
        reach_((std::abs(along_x) + std::abs(along_y)) / 2) {}

  /// How far from the middle of a pixel an edge may be and still cut it.
  double Reach() const { return reach_; }

  /// The share for an edge that far beyond the middle of the pixel, or before it if below 0.
  double ShareAt(double distance) const {
    const double inside = Tail(reach_ - std::abs(distance));
    return distance < 0 ? inside : 1 - inside;
  }

 private:
  // The area beyond the edge, which is `depth` inside the farthest corner: a triangle, and from the
  // next corner on a band as well.
  double Tail(double depth) const {
    if (depth <= 0) return 0;
    const double corner = 2 * reach_ - longer_;  // the shorter part of the direction
    if (depth < corner) return depth * depth / (2 * longer_ * corner);
    return (depth - corner / 2) / longer_;
  }

  double longer_;
  double reach_;
};

// How much of a pixel a line covers.
class Coverage {
 public:
  Coverage(const LineSegment& line, double width)
      : line_(line),
        half_width_(width / 2),
        length_(std::hypot(line.X2 - line.X1, line.Y2 - line.Y1)),
        along_x_(length_ > 0 ? (line.X2 - line.X1) / length_ : 1),
        along_y_(length_ > 0 ? (line.Y2 - line.Y1) / length_ : 0),
        edge_(along_x_, along_y_),
        reach_(half_width_ + edge_.Reach()) {}

  /// For the pixel with its middle there, from 0, not at all, to 1. That is exact between the ends
  /// of the line; at its round ends it goes by the distance alone.
  double At(double x, double y) const {
    const double dx = x - line_.X1, dy = y - line_.Y1;
    const double along = dx * along_x_ + dy * along_y_;
    if (along < 0) return OfRoundEnd(std::hypot(dx, dy));
    if (along > length_) return OfRoundEnd(std::hypot(x - line_.X2, y - line_.Y2));
    const double distance = std::abs(dx * along_y_ - dy * along_x_);
    return edge_.ShareAt(half_width_ - distance) - edge_.ShareAt(-half_width_ - distance);
  }

  /// How far from the line pixels are covered.
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
  double OfRoundEnd(double distance) const {
    return std::clamp(half_width_ + 0.5 - distance, 0.0, 1.0);
  }

  LineSegment line_;
  double half_width_;
  double length_;
  double along_x_, along_y_;
  Edge edge_;
  double reach_;
};

// Few enough shades for small files, and more than the eye tells apart at an edge.
constexpr std::uint32_t kShades = 32;

// Rounds a number that is not negative, without a call: this is done for each pixel at an edge.
std::uint32_t Rounded(double value) {
  constexpr double kHalf = 0.5;
  return static_cast<std::uint32_t>(value + kHalf);
}

void Blend(std::uint32_t& pixel, std::uint32_t rgb, double covered) {
  const std::uint32_t part = Rounded(covered * kShades) * (256 / kShades);
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
