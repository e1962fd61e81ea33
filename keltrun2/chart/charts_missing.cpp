// In place of chart_builder.cpp and chart_drawing.cpp in a library built without
// KELTRUN2_WITH_DRAWING: there are no charts.
#include "keltrun2/base/automation_error.h"
#include "keltrun2/chart/chart_builder.h"
#include "keltrun2/chart/chart_drawing.h"
#include "keltrun2/chart/chart_object.h"

namespace keltrun {
namespace {

[[noreturn]] void Refuse() {
  throw AutomationError(KR_ERROR_INVALID_CALL, "this version of the program draws no charts");
}

}  // namespace

void BuildChart(const std::shared_ptr<clsAnalyzer>& /*analyzer*/, clsChartObject& /*chart*/,
                KrChartModeConst /*mode*/, float /*ratio_x*/, float /*ratio_y*/,
                float /*position_x*/, float /*position_y*/) {
  Refuse();
}

float ChartRatioToFit(const clsAnalyzer& /*analyzer*/, const clsChartObject& /*chart*/,
                      KrChartModeConst /*mode*/) {
  Refuse();
}

ChartDrawing::ChartDrawing(const State& state) : state_(state), pen_(state.picture, state.book) {}

void ChartDrawing::Draw() { Refuse(); }

}  // namespace keltrun
