// Split times of the whole event in the tables that programs of the field read. The texts are
// UTF-8 without a byte-order mark, with lines that end in CR LF.
#pragma once

#include <string>

#include "keltrun2/model/event_model.h"

namespace keltrun {

/// Appends the CSV of SplitsBrowser. Classes are separated by an empty line, and no line break ends
/// the last line, because some programs would take what follows for a runner. A class in which
/// nobody has a time is left out, because it would make the program refuse the file. Runners on
/// courses with another number of controls than that of their class are in a class of their own.
void AppendSplitsBrowserEvent(std::string& out, const EventModel& model);

/// Appends the WinSplits Standard Text.
void AppendWinSplits(std::string& out, const EventModel& model);

/// Appends the CSV with split times of OE2010.
void AppendOe2010(std::string& out, const EventModel& model);

}  // namespace keltrun
