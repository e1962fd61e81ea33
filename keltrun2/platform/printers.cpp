#include <algorithm>
#include <utility>

#include "keltrun2/platform/automation_error.h"
#include "keltrun2/platform/cups_queues.h"
#include "keltrun2/platform/printer.h"

namespace keltrun {
namespace {

using Printers = std::vector<std::shared_ptr<Printer>>;

Printers& Installed() {
  static Printers printers;
  return printers;
}

Printers::iterator FindInstalled(std::string_view name) {
  return std::find_if(Installed().begin(), Installed().end(),
                      [name](const auto& printer) { return printer->DeviceName() == name; });
}

}  // namespace

std::vector<std::string> PrinterNames() {
  std::vector<std::string> names;
  for (const auto& printer : Installed()) names.push_back(printer->DeviceName());
  for (std::string& queue : QueueNames()) {
    if (FindInstalled(queue) == Installed().end()) names.push_back(std::move(queue));
  }
  return names;
}

std::shared_ptr<Printer> FindPrinter(std::string_view DeviceName) {
  if (DeviceName.empty()) return nullptr;  // asks no print server for nothing
  const auto found = FindInstalled(DeviceName);
  return found != Installed().end() ? *found : OpenQueue(DeviceName);
}

void InstallPrinter(std::shared_ptr<Printer> NewPrinter) {
  CheckObject(NewPrinter, "InstallPrinter");
  const auto found = FindInstalled(NewPrinter->DeviceName());
  if (found != Installed().end()) {
    *found = std::move(NewPrinter);
  } else {
    Installed().push_back(std::move(NewPrinter));
  }
}

void RemovePrinter(std::string_view DeviceName) {
  const auto found = FindInstalled(DeviceName);
  if (found != Installed().end()) Installed().erase(found);
}

}  // namespace keltrun
