// The queues of the system's print server.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/printing/printer.h"

namespace keltrun {

/// The names of the installed queues. Empty if there is no print server or the library was built
/// without support for one.
std::vector<std::string> QueueNames();

/// The queue with this name as a new printer, or null if there is none.
std::shared_ptr<Printer> OpenQueue(std::string_view name);

}  // namespace keltrun
