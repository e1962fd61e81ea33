// Index pages: whatever a page is, the events that it lists are still listed after one was added,
// and their files lie in the folder.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "keltrun2/report/event_list.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace keltrun;
  const std::string_view page(reinterpret_cast<const char*>(data), size);
  if (const auto event = EventOfReport(page)) {
    if (ReportFileOf(*event).find('/') != std::string::npos) std::abort();
  }
  std::vector<ListedEvent> events = EventsOfIndex(page);
  AddEvent(events, ListedEvent{.Prefix = "added_", .Name = "Added"});
  const auto changed = PageWithEvents(page, events, "event.lxm");
  if (!changed) return 0;
  const std::vector<ListedEvent> listed = EventsOfIndex(*changed);
  for (const ListedEvent& event : events) {
    const auto has_prefix = [&event](const auto& other) { return other.Prefix == event.Prefix; };
    if (std::none_of(listed.begin(), listed.end(), has_prefix)) std::abort();
  }
  return 0;
}
