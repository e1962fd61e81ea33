// Cells of the tables for other programs.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "keltrun2/io/foreign/iof_elements.h"
#include "keltrun2/model/result_facts.h"

namespace keltrun {

/// Milliseconds as whole seconds, halves up.
inline std::int64_t RoundedSeconds(std::int64_t milliseconds) {
  return (milliseconds + 500) / 1000;
}

/// The time of a runner's leg to the finish in whole seconds: what the total leaves after the last
/// control, at `last` seconds. 0 without a time, and for somebody whose time does not count
/// although they have all controls: without a place for a status, they would be classified.
std::int64_t FinishLeg(const RunnerFacts& runner, const SplitTimes& splits, std::int64_t last);

/// "h<sep>mm<sep>ss"; with `short_form`, "m<sep>ss" below an hour.
void AppendTimeCell(std::string& out, std::int64_t seconds, char separator, bool short_form);

/// Hours and minutes of a time of day with two digits each, and with `seconds` these as well.
void AppendClockCell(std::string& out, std::int64_t seconds, char separator, bool with_seconds);

/// The text without blanks at its ends, and with a blank in the place of each of these ASCII
/// characters.
void AppendWithout(std::string& out, std::string_view text, std::string_view characters);

}  // namespace keltrun
