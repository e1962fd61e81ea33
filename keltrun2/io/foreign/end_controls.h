// Control codes that stand for the start or the finish.
#pragma once

#include <vector>

#include "keltrun2/io/foreign/foreign_event.h"

namespace keltrun {

/// Programs that time the start and the finish with units of their own also write these among the
/// splits, with codes that nobody knows in advance, such as 100 or 250. The file shows them: nearly
/// everybody has their last split at the total time, or their first one at 0. These punches get the
/// code of the start or the finish, and each kind is a remark. One runner alone shows nothing.
void MarkEndControls(std::vector<ForeignClass>& classes, RemarkList& remarks);

}  // namespace keltrun
