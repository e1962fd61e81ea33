// Clocks that were wrong for the whole event.
#pragma once

#include <vector>

#include "keltrun2/io/foreign/foreign_event.h"

namespace keltrun {

/// Mends clocks that are one or twelve hours off, as with a wrong zero time, a change to summer
/// time or cards that count twelve hours. A fault is mended only when every runner that could show
/// it does, so the times of single runners are never touched. Each mended fault is a remark.
void MendClocks(std::vector<ForeignClass>& classes, RemarkList& remarks);

}  // namespace keltrun
