#include "keltrun2/analysis/loss_map.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <utility>

#include "keltrun2/model/result_status.h"
#include "keltrun2/model/time_values_internal.h"

namespace keltrun {
namespace {

using Runners = std::vector<std::shared_ptr<clsAnalyzedRunnerData>>;

// With more points than this, Jacobi rotations take too long.
constexpr std::size_t kMostJacobiPoints = 300;

void Place(clsAnalyzedRunnerData& runner, const MapPoint& point) {
  runner.SetVesmerX(point.X);
  runner.SetVesmerY(point.Y);
}

// The finishers; the other runners go to the origin.
Runners TakeFinishers(const Runners& runners) {
  Runners finishers;
  for (const auto& runner : runners) {
    if (IsFinished(runner->Result())) {
      finishers.push_back(runner);
    } else {
      Place(*runner, {});
    }
  }
  return finishers;
}

// On a leg without a time, the runner gets the leg's share of their total loss. On other legs the
// loss is computed from the modified lap. That equals MissTime except inside a range, where
// MissTime has the loss of the whole range on the last leg and a marker on the others.
double LossOnLeg(const clsAnalyzedRunnerData& runner, const clsAnalyzedGeneralData& general,
                 std::int32_t leg) {
  const DateTime lap = runner.ModifiedLapTime(leg);
  if (lap == 0) return general.LegLength(leg) * runner.MissTimeTotal()->Value();
  const DateTime reference = general.UpperLapAverage(leg);
  return reference != 0 ? lap - reference * AnalysisValue::Stored(*runner.CruiseSpeed()) : 0;
}

// Keeps separate sums so that the compiler can use vector instructions.
double SumOfDifferences(const double* a, const double* b, std::size_t width) {
  std::array<double, LossProfiles::kLanes> sums{};
  for (std::size_t leg = 0; leg < width; leg += LossProfiles::kLanes) {
    for (std::size_t lane = 0; lane < LossProfiles::kLanes; ++lane) {
      sums[lane] += std::fabs(a[leg + lane] - b[leg + lane]);
    }
  }
  return std::accumulate(sums.begin(), sums.end(), 0.0);
}

std::vector<double> RowMeans(const SymmetricMatrix& matrix) {
  std::vector<double> means(matrix.Size());
  for (std::size_t j = 0; j < matrix.Size(); ++j) {
    const double* column = matrix.Column(j);
    double sum = column[j];
    for (std::size_t i = j + 1; i < matrix.Size(); ++i) {
      means[i] += column[i];
      sum += column[i];
    }
    means[j] += sum;
  }
  for (double& mean : means) mean /= static_cast<double>(matrix.Size());
  return means;
}

// The positions along an axis, relative to the last point.
std::vector<double> Coordinates(Eigenpair&& axis, std::size_t points) {
  if (axis.vector.empty()) return std::vector<double>(points);
  std::vector<double> coordinates = std::move(axis.vector);
  const double length = std::sqrt(std::max(axis.value, 0.0));
  const double origin = coordinates.back();
  for (double& coordinate : coordinates) coordinate = (coordinate - origin) * length;
  return coordinates;
}

// A solver finds an axis in either direction; the map must not depend on which.
void FixSign(std::vector<double>& coordinates) {
  double cubes = 0;
  for (const double coordinate : coordinates) cubes += coordinate * coordinate * coordinate;
  if (cubes >= 0) return;
  for (double& coordinate : coordinates) coordinate = -coordinate;
}

double LargestOf(const std::vector<double>& coordinates) {
  double largest = 0;
  for (const double coordinate : coordinates) largest = std::max(largest, std::fabs(coordinate));
  return largest;
}

}  // namespace

MapSolver SolverFor(std::size_t points) {
  return points <= kMostJacobiPoints ? MapSolver::kJacobi : MapSolver::kLanczos;
}

LossProfiles LossesOf(const Runners& finishers, std::int32_t legs,
                      const clsAnalyzedGeneralData& general) {
  LossProfiles profiles(finishers.size() + 1, static_cast<std::size_t>(legs));
  for (std::size_t i = 0; i < finishers.size(); ++i) {
    for (std::int32_t leg = 1; leg <= legs; ++leg) {
      profiles.Row(i)[leg - 1] = LossOnLeg(*finishers[i], general, leg);
    }
  }
  return profiles;
}

SymmetricMatrix SquaredDistances(const LossProfiles& profiles) {
  SymmetricMatrix matrix(profiles.Points());
  for (std::size_t j = 0; j < matrix.Size(); ++j) {
    double* column = matrix.Column(j);
    for (std::size_t i = j; i < matrix.Size(); ++i) {
      const double distance = SumOfDifferences(profiles.Row(i), profiles.Row(j), profiles.Width());
      column[i] = distance * distance;
    }
  }
  return matrix;
}

bool MakeCenteredProducts(SymmetricMatrix& matrix) {
  const std::vector<double> means = RowMeans(matrix);
  const double mean =
      std::accumulate(means.begin(), means.end(), 0.0) / static_cast<double>(matrix.Size());
  if (!std::isnormal(mean)) return false;
  const double scale = -1 / (mean * static_cast<double>(matrix.Size()));
  for (std::size_t j = 0; j < matrix.Size(); ++j) {
    double* column = matrix.Column(j);
    const double column_mean = means[j] - mean;
    for (std::size_t i = j; i < matrix.Size(); ++i) {
      column[i] = (column[i] - means[i] - column_mean) * scale;
    }
  }
  return true;
}

TopEigenpairs TopAxes(SymmetricMatrix&& products, MapSolver solver) {
  return solver == MapSolver::kJacobi ? TopByJacobi(std::move(products)) : TopByLanczos(products);
}

std::vector<MapPoint> MapProfiles(const LossProfiles& profiles, MapSolver solver) {
  std::vector<MapPoint> points(profiles.Points());
  SymmetricMatrix matrix = SquaredDistances(profiles);
  if (!MakeCenteredProducts(matrix)) return points;
  TopEigenpairs axes = TopAxes(std::move(matrix), solver);
  std::vector<double> x = Coordinates(std::move(axes[0]), points.size());
  std::vector<double> y = Coordinates(std::move(axes[1]), points.size());
  if (solver == MapSolver::kLanczos) {
    FixSign(x);
    FixSign(y);
  }
  const double largest = std::max(LargestOf(x), LargestOf(y));
  if (largest == 0) return points;
  for (std::size_t i = 0; i < points.size(); ++i) {
    points[i] = {x[i] / largest * kMapSize, y[i] / largest * kMapSize};
  }
  return points;
}

bool HasMap(const clsAnalyzer& analyzer) {
  const std::int32_t finishers = analyzer.FinisherCount();
  return finishers >= kFewestOnMap && finishers <= kMostOnMap;
}

void PlaceOnMap(const Runners& runners, std::int32_t legs, const clsAnalyzedGeneralData& general) {
  const Runners finishers = TakeFinishers(runners);
  if (finishers.size() < kFewestOnMap) return;
  std::vector<MapPoint> points(finishers.size());
  if (finishers.size() <= kMostOnMap) {
    const LossProfiles profiles = LossesOf(finishers, legs, general);
    points = MapProfiles(profiles, SolverFor(profiles.Points()));
  }
  for (std::size_t i = 0; i < finishers.size(); ++i) Place(*finishers[i], points[i]);
}

}  // namespace keltrun
