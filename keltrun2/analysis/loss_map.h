// The loss map: a plane on which runners who lost time on the same legs lie close together.
//
// The method is classical multidimensional scaling. The distance of two runners is the sum of the
// absolute differences between their losses, leg by leg. The squared distances, centered on both
// sides, are the inner products of the positions seen from their center; the two eigenvectors with
// the largest eigenvalues are the axes of the plane on which the distances are kept best. A runner
// without losses is added as a last point and becomes the origin.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "keltrun2/analysis/analyzed_general_data.h"
#include "keltrun2/analysis/analyzed_runner_data.h"
#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/analysis/symmetric_eigen.h"

namespace keltrun {

/// The losses of each point, leg by leg; all 0 at first. Rows are padded with zeros to a multiple
/// of kLanes, which changes no distance.
class LossProfiles {
 public:
  static constexpr std::size_t kLanes = 4;  // differences that are summed side by side

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

/// How far the map reaches from the origin along its wider axis.
inline constexpr double kMapSize = 100;

struct MapPoint {
  double X = 0;
  double Y = 0;
};

/// Which solver finds the axes of the map.
enum class MapSolver {
  // For small fields. The rotations decide the signs of the axes.
  kJacobi,
  // For large fields. Each axis has the sign that makes the sum of its cubed coordinates at least
  // 0.
  kLanczos,
};

/// The solver for a map of that many points.
MapSolver SolverFor(std::size_t points);

/// The profiles of the finishers, followed by that of a runner without losses.
LossProfiles LossesOf(const std::vector<std::shared_ptr<clsAnalyzedRunnerData>>& finishers,
                      std::int32_t legs, const clsAnalyzedGeneralData& general);

/// The squares of the sums of absolute differences between the profiles.
SymmetricMatrix SquaredDistances(const LossProfiles& profiles);

/// Turns squared distances into the inner products of the positions seen from their center, divided
/// by the trace. Returns false, leaving the matrix useless, when the trace is 0 or not finite: all
/// distances are 0, or a loss is not a number or far too large.
[[nodiscard]] bool MakeCenteredProducts(SymmetricMatrix& matrix);

/// The axes of the map. Destroys the matrix.
TopEigenpairs TopAxes(SymmetricMatrix&& products, MapSolver solver);

/// The map of the profiles, with the last point at (0, 0) and the largest coordinate at 100 or -100
/// (kMapSize). Along an axis that cannot be found all points are at 0.
std::vector<MapPoint> MapProfiles(const LossProfiles& profiles, MapSolver solver);

/// Whether the data set has as many finishers as a map takes.
bool HasMap(const clsAnalyzer& analyzer);

/// Places the finishers among analyzed runners on a map where a runner without losses would be at
/// (0, 0). Runners who did not finish go to (0, 0). Fewer finishers than kFewestOnMap stay where
/// they are. For more than kMostOnMap no map is made, and they go to (0, 0) as well.
void PlaceOnMap(const std::vector<std::shared_ptr<clsAnalyzedRunnerData>>& runners,
                std::int32_t legs, const clsAnalyzedGeneralData& general);

}  // namespace keltrun
