// The controls between which the legs of a data set go.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/analysis/data_set_kind.h"
#include "keltrun2/model/event_model.h"

namespace keltrun {

/// The codes of the controls at the ends of all legs, one more than there are legs: "S" for the
/// start, "F" for the finish, "" where the code is unknown.
std::vector<std::string> PointsOfSet(const EventModel& model, const clsAnalyzer& analyzer,
                                     DataSetKind kind);

}  // namespace keltrun
