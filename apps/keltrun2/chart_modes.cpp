#include "apps/keltrun2/chart_modes.h"

#include <algorithm>
#include <iterator>

namespace keltrun::cli {
namespace {

// In the order of KrChartModeConst.
constexpr const char* kNames[] = {"normal",      "realtime", "relative",  "relative110",
                                  "relative130", "missrate", "halfratio", "map"};

}  // namespace

std::vector<std::string> ChartModeNames() { return {std::begin(kNames), std::end(kNames)}; }

KrChartModeConst ChartMode(const std::string& name) {
  const auto found = std::find(std::begin(kNames), std::end(kNames), name);
  return static_cast<KrChartModeConst>(found - std::begin(kNames));
}

std::string ChartModeNumbers(const std::vector<std::string>& names) {
  std::string numbers;
  const bool all = std::find(names.begin(), names.end(), "all") != names.end();
  for (const std::string& name : all ? ChartModeNames() : names) {
    if (!numbers.empty()) numbers += ',';
    numbers += std::to_string(ChartMode(name));
  }
  return numbers;
}

}  // namespace keltrun::cli
