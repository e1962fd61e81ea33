// How legs are named: "S→1", "12→F", with control codes "31(45)→32(51)".
#pragma once

#include <cstdint>
#include <string>

namespace keltrun {

/// The label of a leg: the control it ends at and, with ShowFrom, the control it starts from, with
/// the resource texts for start, finish and arrow. ControlCount + 1 is the leg to the finish. In
/// Japanese mode one-digit numbers are full-width, so that columns line up.
std::string LegLabel(std::int32_t ControlCount, bool ShowFrom, std::int32_t LegIndex);

/// The same with the control codes in parentheses in place of the numbers; nothing is written for
/// start and finish.
std::string LegLabelWithControls(std::int32_t ControlCount, bool ShowFrom, std::int32_t LegIndex,
                                 std::int32_t FromControl, std::int32_t ToControl);

/// Number and control code: "1(31)→2(32)", with the start and finish symbols.
std::string LegLabelFull(std::int32_t ControlCount, bool ShowFrom, std::int32_t LegIndex,
                         std::int32_t FromControl, std::int32_t ToControl);

}  // namespace keltrun
