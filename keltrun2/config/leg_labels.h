// The labels of legs: "S→1", "12→F", or with control codes "1(31)→2(32)".
#pragma once

#include <cstdint>
#include <string>

namespace keltrun {

/// The label of a leg: an arrow and the control where the leg ends, preceded by the control where
/// it begins if ShowFrom is true. The texts for start, finish and arrow are resource texts. Leg
/// ControlCount + 1 is the one to the finish. In Japanese mode one-digit numbers are full-width, so
/// that columns line up.
std::string LegLabel(std::int32_t ControlCount, bool ShowFrom, std::int32_t LegIndex);

/// The same with the control codes in parentheses instead of the numbers, and nothing for the start
/// and the finish.
std::string LegLabelWithControls(std::int32_t ControlCount, bool ShowFrom, std::int32_t LegIndex,
                                 std::int32_t FromControl, std::int32_t ToControl);

/// The same with numbers and control codes, "1(31)→2(32)", and the symbols for start and finish.
std::string LegLabelFull(std::int32_t ControlCount, bool ShowFrom, std::int32_t LegIndex,
                         std::int32_t FromControl, std::int32_t ToControl);

}  // namespace keltrun
