// Filling a host's grid.
#pragma once

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/print/grid_object.h"

namespace keltrun {

/// Fills the grid with the selected runners of an executed analysis: one column for each runner,
/// the labels in column 0. Without runners the grid stays empty and hidden.
void FillGrid(const clsAnalyzer& analyzer, clsGridObject& grid);

}  // namespace keltrun
