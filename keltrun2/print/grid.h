// Filling a host's grid.
#pragma once

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/print/grid_object.h"

namespace keltrun {

/// Lays the selected runners of an executed analysis out in the grid: a column a runner, labels in
/// column 0. Without runners the grid stays cleared and hidden.
void FillGrid(const clsAnalyzer& analyzer, clsGridObject& grid);

}  // namespace keltrun
