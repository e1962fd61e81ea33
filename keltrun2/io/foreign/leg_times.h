// The punches of runners whose file has a time for each leg, and no control codes.
#pragma once

#include <cstddef>
#include <optional>
#include <span>

#include "keltrun2/io/foreign/foreign_event.h"

namespace keltrun {

/// What the times of a file are.
enum class LegTimeKind {
  kLaps,    // of each leg; after a control without a time, of all legs from the last one with it
  kSplits,  // since the start
};

/// Sets the punches, the total time and the number of controls of a runner. There are `class_legs`
/// legs, the one to the finish included, or as many as there are times if these are more. A leg
/// without a time is a control that was missed.
void SetLegTimes(std::span<const std::optional<Milliseconds>> times, std::size_t class_legs,
                 LegTimeKind kind, ForeignRunner& runner);

/// Whether times ascend, those that are missing left out.
bool AreAscending(std::span<const std::optional<Milliseconds>> times);

}  // namespace keltrun
