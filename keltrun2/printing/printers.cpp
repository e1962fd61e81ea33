#include <algorithm>
#include <mutex>
#include <utility>

#include "keltrun2/base/automation_error.h"
#include "keltrun2/printing/cups_queues.h"
#include "keltrun2/printing/printer.h"

namespace keltrun {
namespace {

// The name is stored here because DeviceName calls the host, which may call this file again.
struct InstalledPrinter {
  std::string name;
  std::shared_ptr<Printer> printer;
};
using Printers = std::vector<InstalledPrinter>;

struct Installation {
  std::mutex mutex;
  Printers printers;
};

Installation& Installed() {
  static Installation installed;
  return installed;
}

Printers InstalledPrinters() {
  const std::lock_guard lock(Installed().mutex);
  return Installed().printers;
}

Printers::iterator Find(Printers& printers, std::string_view name) {
  return std::find_if(printers.begin(), printers.end(),
                      [name](const InstalledPrinter& entry) { return entry.name == name; });
}

}  // namespace

std::vector<std::string> PrinterNames() {
  Printers installed = InstalledPrinters();
  std::vector<std::string> names;
  for (const InstalledPrinter& entry : installed) names.push_back(entry.name);
  for (std::string& queue : QueueNames()) {
    if (Find(installed, queue) == installed.end()) names.push_back(std::move(queue));
  }
  return names;
}

std::shared_ptr<Printer> FindPrinter(std::string_view DeviceName) {
  if (DeviceName.empty()) return nullptr;  // no need to query the print server
  Printers installed = InstalledPrinters();
  const auto found = Find(installed, DeviceName);
  return found != installed.end() ? found->printer : OpenQueue(DeviceName);
}

void InstallPrinter(std::shared_ptr<Printer> NewPrinter) {
  CheckObject(NewPrinter, "InstallPrinter");
  std::string name = NewPrinter->DeviceName();
  const std::lock_guard lock(Installed().mutex);
  Printers& printers = Installed().printers;
  const auto found = Find(printers, name);
  if (found != printers.end()) {
    found->printer.swap(NewPrinter);  // the previous one is destroyed after the lock is released
  } else {
    printers.push_back({std::move(name), std::move(NewPrinter)});
  }
}

void RemovePrinter(std::string_view DeviceName) {
  InstalledPrinter removed;  // destroyed after the lock is released
  const std::lock_guard lock(Installed().mutex);
  Printers& printers = Installed().printers;
  const auto found = Find(printers, DeviceName);
  if (found == printers.end()) return;
  removed = std::move(*found);
  printers.erase(found);
}

}  // namespace keltrun
