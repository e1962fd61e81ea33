#include "keltrun2/analysis/best_legs.h"

#include "keltrun2/analysis/analyzed_runner_data_internal.h"

namespace keltrun {

double SpeedOnBestLegs(const clsAnalyzedRunnerData& runner, const clsAnalyzedGeneralData& general,
                       std::int32_t from, std::int32_t to, double share,
                       CclsSort<std::int32_t>& order) {
  order.Clear();
  for (std::int32_t leg = from; leg <= to; ++leg) {
    const DateTime lap = AnalyzedRunnerInternal::Leg(runner, leg).modified_lap_time;
    const DateTime reference = general.UpperLapAverage(leg);
    if (lap > 0 && reference != 0) order.Add(lap / reference, leg);
  }
  double covered = 0;
  DateTime laps = 0;
  DateTime references = 0;
  for (const auto& line : order.LineSet()) {
    covered += general.LegLength(line.Item);
    laps += AnalyzedRunnerInternal::Leg(runner, line.Item).modified_lap_time;
    references += general.UpperLapAverage(line.Item);
    if (covered >= share) break;
  }
  return references != 0 ? laps / references : 0;
}

}  // namespace keltrun
