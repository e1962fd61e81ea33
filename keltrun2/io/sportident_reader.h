// The results printout with split times of the SPORTident software, from text to records.
#pragma once

#include <string_view>

#include "keltrun2/io/lap_records.h"

namespace keltrun {

/// Reads a SPORTident or OE2003 results printout, a text with fixed columns counted in Shift-JIS
/// bytes. The name and the club are on one line, or the club is below the name. The legs of a
/// class, their columns and the control codes come from the one to four rows of controls below the
/// class line.
///
/// `length`, `climb`, `control_count` and `codes` of a class are those of the printout. `codes` has
/// `control_count` entries, 0 for a control without a code. A result is a time, "DNF", "DNS", "MP",
/// "P" with the number of controls without a readable time, or "DISQ". A line that looks like a
/// class but is not followed by controls adds no class.
///
/// An error means that the text is not such a printout, or that there are more than 10,000 classes
/// or 200,000 runners. What was read before stays. The column of a remark is counted like those of
/// the printout.
ReadResult ReadSportIdent(std::string_view text);

}  // namespace keltrun
