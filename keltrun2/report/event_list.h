// The events of a site: what a report and an index page tell of each, and the list of them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/codec/encodings.h"
#include "keltrun2/model/event_model.h"

namespace keltrun {

/// What an index tells of an event. A report has the same in its head, so that it can be listed
/// later. All texts are UTF-8.
struct ListedEvent {
  std::string Prefix = {};     // of the names of its files; no separators
  std::string Name = {};       // may be empty
  std::string Date = {};       // "2026-05-03", or "" if it is not known
  std::string Terrain = {};    // may be empty
  std::string Published = {};  // "2026-05-03 18:40:00", or ""
  std::int32_t Runners = 0;
};

ListedEvent MakeListedEvent(const EventModel& model, std::string_view prefix, DateTime now);

/// The names of the report of an event that is listed, and of the copy of its lap file.
std::string ReportFileOf(const ListedEvent& event);
std::string LapFileOf(const ListedEvent& event);

/// The event as one line of ASCII without quotation marks, and back. Nothing for a text that is no
/// event, and for a prefix that could lead out of the folder.
std::string TextOfEvent(const ListedEvent& event);
std::optional<ListedEvent> EventOfText(std::string_view text);

/// Whether two publications under one prefix are of one event: the name or the date may have been
/// corrected, but not both.
bool IsSameEvent(const ListedEvent& a, const ListedEvent& b);

/// The event that a page is the report of, if it is one of a site.
std::optional<ListedEvent> EventOfReport(std::string_view page);

/// The events that a page lists, as bytes in any charset that contains ASCII.
bool HasEventList(std::string_view page);
std::vector<ListedEvent> EventsOfIndex(std::string_view page);

/// Adds an event in the place of one with the same prefix, and sorts: newest date first, then what
/// was published last; events without a date are at the end.
void AddEvent(std::vector<ListedEvent>& events, ListedEvent event);

/// A new page that lists events.
std::string EventListPage(const std::vector<ListedEvent>& events);

/// An existing page (bytes) with the list in the place of its former one, or else of the block that
/// links `lap_file`, or else before the first block or at the end of its body. Everything around it
/// stays. Nothing for a page in UTF-16.
std::optional<std::string> PageWithEvents(std::string_view page,
                                          const std::vector<ListedEvent>& events,
                                          std::string_view lap_file);

}  // namespace keltrun
