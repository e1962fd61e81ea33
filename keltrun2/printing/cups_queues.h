// The print queues of the system's print server.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/printing/printer.h"

namespace keltrun {

/// Names of the installed queues; none without a print server, or where the library was built
/// without one.
std::vector<std::string> QueueNames();

/// The queue of that name as a new printer, or null.
std::shared_ptr<Printer> OpenQueue(std::string_view name);

}  // namespace keltrun
