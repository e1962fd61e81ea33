// The map of loss profiles: runners who lost time on the same legs lie close together.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "keltrun2/analysis/analyzed_general_data.h"
#include "keltrun2/analysis/analyzed_runner_data.h"
#include "keltrun2/analysis/symmetric_eigen.h"

namespace keltrun {

/// The loss of each point on each leg; all 0 at first. Rows are filled up with zeros to a multiple
/// of kLanes, which changes no distance.
class LossProfiles {
 public:
  static constexpr std::size_t kLanes = 4;  // losses that are summed up side by side

  LossProfiles(std::size_t points, std::size_t legs)
      : points_(points), width_((legs + kLanes - 1) / kLanes * kLanes), losses_(points * width_) {}

  std::size_t Points() const { return points_; }
  std::size_t Width() const { return width_; }
  double* Row(std::size_t point) { return losses_.data() + point * width_; }
  const double* Row(std::size_t point) const { return losses_.data() + point * width_; }

 private:
  std::size_t points_, width_;
  std::vector<double> losses_;
};

struct MapPoint {
  double X = 0;
  double Y = 0;
};

/// Which solver finds the axes of the map.
enum class MapSolver {
  kJacobi,   // for small fields: the signs of the axes are those of the rotations
  kLanczos,  // for large ones: the sum of the cubes of each axis's coordinates is not negative
};

MapSolver SolverFor(std::size_t points);

/// The profiles of finishers, and as last point a runner without loss.
LossProfiles LossesOf(const std::vector<std::shared_ptr<clsAnalyzedRunnerData>>& finishers,
                      std::int32_t legs, const clsAnalyzedGeneralData& general);

/// The squares of the sums of absolute differences between the profiles.
SymmetricMatrix SquaredDistances(const LossProfiles& profiles);

/// Turns squared distances into products of positions seen from their centre, as multiples of their
/// trace. False, and the matrix is of no use, when that is 0 or not finite: all
/// distances are 0, or a loss is not a number or far too large.
[[nodiscard]] bool MakeCentredProducts(SymmetricMatrix& matrix);

/// The axes of the map; the matrix is used up.
TopEigenpairs TopAxes(SymmetricMatrix&& products, MapSolver solver);

/// The map of the profiles, with the last point at (0, 0) and the largest coordinate at 100 or
/// -100. Along an axis that cannot be found everybody is at 0.
std::vector<MapPoint> MapProfiles(const LossProfiles& profiles, MapSolver solver);

/// Places the finishers among executed runners on a map with a runner without loss at (0, 0), and
/// the other runners at (0, 0). Fewer finishers than kFewestOnMap stay where they are; of more than
/// kMostOnMap no map is made, and they are at (0, 0) too.
void PlaceOnMap(const std::vector<std::shared_ptr<clsAnalyzedRunnerData>>& runners,
                std::int32_t legs, const clsAnalyzedGeneralData& general);

}  // namespace keltrun
