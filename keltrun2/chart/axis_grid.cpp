#include "keltrun2/chart/axis_grid.h"

#include <cmath>
#include <iterator>
#include <string>

#include "keltrun2/model/time_text.h"

namespace keltrun {
namespace {

constexpr double kLeastLineDistance = 4;  // units between two time lines
constexpr int kMostDecades = 12;

// Ten steps are 1, 2, 5, 10, 20, 30 minutes, 1, 2, 5, 10 hours; then 1 day and its multiples.
constexpr double kTimeSteps[] = {6, 12, 30, 60, 120, 180, 360, 720, 1800, 3600, 8640};

}  // namespace

double TimeStep(double units_per_second, double label_room) {
  const double least =
      std::fmax(kLeastLineDistance, label_room / kLinesPerLabel) / units_per_second;
  for (const double step : kTimeSteps) {
    if (step >= least) return step;
  }
  const double longest = *(std::end(kTimeSteps) - 1);
  return longest * std::ceil(least / longest);
}

std::string TimeLabel(double seconds, bool is_clock) {
  double days = std::round(seconds) / kSecondsPerDay;
  if (is_clock) days -= std::floor(days);
  std::string label(SignText(days));
  // Also "h:nn" for a day and more.
  const long long minutes = WholeSeconds(std::fabs(days)) / 60;
  label += std::to_string(minutes / 60) + ':';
  AppendTwoDigits(label, static_cast<int>(minutes % 60));
  return label;
}

double GridStep(double units_per_one, double room, double least) {
  double decade = least;
  double step = least;
  for (int i = 0; i < kMostDecades; ++i, decade *= 10) {
    for (const double digit : {1.0, 2.0, 5.0}) {
      step = decade * digit;
      if (step * units_per_one >= room) return step;
    }
  }
  return step;
}

}  // namespace keltrun
