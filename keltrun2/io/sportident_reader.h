// The results printout with split times of the SPORTident software, from text to records.
#pragma once

#include <string_view>

#include "keltrun2/io/lap_records.h"

namespace keltrun {

/// Reads a SPORTident or OE2003 results printout, a text of fixed columns counted in Shift-JIS
/// bytes: name and club on one line, or the club below the name. The legs of a class, their columns
/// and the control codes come from the one to four rows of controls below the class line.
///
/// Length, Climb, ControlCount and Codes are those of the printout; Codes has ControlCount entries,
/// 0 for a control without a code. A result is a time, "DNF", "MP" or "P" with the number of
/// controls without a readable time, or "DISQ". A line that looks like a class but brings no
/// controls leaves no class.
///
/// An error means that the text is no such printout, or that there are more than 10,000 classes or
/// 200,000 runners; what was read before stays. The column of a remark counts as the printout's do.
ReadResult ReadSportIdent(std::string_view text);

}  // namespace keltrun
