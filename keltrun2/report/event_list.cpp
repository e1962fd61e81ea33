#include "keltrun2/report/event_list.h"

#include <algorithm>
#include <charconv>
#include <set>
#include <tuple>
#include <utility>

#include "keltrun2/codec/utf8.h"
#include "keltrun2/config/settings.h"
#include "keltrun2/model/class_data_internal.h"
#include "keltrun2/report/html_parts.h"
#include "keltrun2/report/index_page.h"
#include "keltrun2/report/plain_page.h"
#include "keltrun2/text/html.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/split.h"

namespace keltrun {
namespace {

constexpr std::string_view kReportName = "report.html";
constexpr std::string_view kLapFileName = "event.lxm";
constexpr std::string_view kReportMark = "<meta name=\"keltrun2-event\" content=\"";
constexpr std::string_view kListMark = "class=\"keltrun-events\"";
constexpr std::string_view kItemMark = "<li data-keltrun2-event=\"";
constexpr std::string_view kSeparators = " \u00B7 ";

struct TextField {
  std::string_view key;
  std::string ListedEvent::*member;
};
constexpr TextField kTexts[] = {{"prefix", &ListedEvent::Prefix},
                                {"name", &ListedEvent::Name},
                                {"date", &ListedEvent::Date},
                                {"terrain", &ListedEvent::Terrain},
                                {"published", &ListedEvent::Published}};
constexpr std::string_view kRunnersKey = "runners";

std::string PercentDecode(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    unsigned byte = 0;
    const char* const digits = text.data() + i + 1;
    const bool is_code = text[i] == '%' && i + 2 < text.size() &&
                         std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2;
    out += is_code ? static_cast<char>(byte) : text[i];
    if (is_code) i += 2;
  }
  return ValidUtf8(out);
}

// Whether a text has digits where the pattern has "0", and otherwise the characters of the pattern.
bool Matches(std::string_view text, std::string_view pattern) {
  return std::equal(text.begin(), text.end(), pattern.begin(), pattern.end(),
                    [](char c, char p) { return p == '0' ? IsDigit(c) : c == p; });
}

void ReadField(ListedEvent& event, std::string_view key, std::string_view value) {
  for (const TextField& field : kTexts) {
    if (key == field.key) event.*field.member = PercentDecode(value);
  }
  if (key == kRunnersKey) {
    std::from_chars(value.data(), value.data() + value.size(), event.Runners);
  }
}

bool IsInFolder(std::string_view prefix) {
  return std::none_of(prefix.begin(), prefix.end(), [](char c) {
    return c == '/' || c == '\\' || static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
  });
}

// The text after the mark up to the quotation mark.
std::string_view Quoted(std::string_view page, std::size_t mark, std::size_t mark_size) {
  page.remove_prefix(mark + mark_size);
  return page.substr(0, page.find('"'));
}

// The date as readers of the language write it.
std::string ShownDate(const std::string& date) {
  const auto value = ParseDateTime(CclsSplit("-", date).Expression("/"));
  return value ? FormatDateTime(*value, ResourceText("RES_META_DATE_FORMAT")) : date;
}

std::string AboutEvent(const ListedEvent& event) {
  std::string about;
  const auto add = [&about](std::string_view html) {
    if (html.empty()) return;
    if (!about.empty()) about += kSeparators;
    about += html;
  };
  if (!event.Date.empty()) {
    add("<time datetime=\"" + event.Date + "\">" + EscapeHtml(ShownDate(event.Date)) + "</time>");
  }
  add(EscapeHtml(event.Terrain));
  std::string runners;
  AppendEscapedNoBreak(runners, CountOfRunners(event.Runners));
  add(runners);
  return about;
}

void AppendItem(std::string& out, const ListedEvent& event) {
  out.append(kItemMark).append(TextOfEvent(event)).append("\"><p><a href=\"");
  out.append(PercentEncode(ReportFileOf(event))).append("\">");
  AppendEscaped(out, event.Name.empty() ? ResourceText("RES_META_NO_EVENT_NAME") : event.Name);
  out.append("</a></p><p>").append(AboutEvent(event)).append("</p></li>\r\n");
}

// The list between the lines by which blocks of an index are found. On somebody else's page its
// title is not the first one.
std::string EventListBlock(const std::vector<ListedEvent>& events, bool own_page) {
  const std::string heading = own_page ? "h1>" : "h2>";
  std::string out = "\r\n";
  out.append(kIndexStart)
      .append("\r\n<section ")
      .append(kListMark)
      .append(">\r\n<")
      .append(heading);
  AppendEscaped(out, ResourceText("RES_EVENTS_TITLE"));
  out.append("</").append(heading).append("\r\n<ul>\r\n");
  for (const ListedEvent& event : events) AppendItem(out, event);
  out.append("</ul>\r\n</section>\r\n").append(kIndexFinish).append("\r\n\r\n");
  return out;
}

}  // namespace

ListedEvent MakeListedEvent(const EventModel& model, std::string_view prefix, DateTime now) {
  ListedEvent event;
  event.Prefix = prefix;
  event.Name = ValidUtf8(model.Event->EventName);
  const DateTime date = model.Event->EventDate()->Value();
  if (date > 0) event.Date = FormatDateTime(date, "yyyy-mm-dd");
  if (!Matches(event.Date, "0000-00-00")) event.Date.clear();
  event.Terrain = ValidUtf8(model.Event->Terrain);
  event.Published = FormatDateTime(now, "yyyy-mm-dd hh:nn:ss");
  for (const auto& klass : model.Classes()) event.Runners += klass->LapCount();
  return event;
}

std::string ReportFileOf(const ListedEvent& event) {
  return event.Prefix + std::string(kReportName);
}

std::string LapFileOf(const ListedEvent& event) { return event.Prefix + std::string(kLapFileName); }

std::string TextOfEvent(const ListedEvent& event) {
  std::string text;
  for (const TextField& field : kTexts) {
    text.append(field.key).append("=").append(PercentEncode(event.*field.member)).append(";");
  }
  return text.append(kRunnersKey).append("=").append(std::to_string(event.Runners));
}

std::optional<ListedEvent> EventOfText(std::string_view text) {
  ListedEvent event;
  if (!text.starts_with("prefix=")) return std::nullopt;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(';'), text.size());
    const auto [key, value] = SplitAt(text.substr(0, end), "=");
    ReadField(event, key, value);
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  if (!IsInFolder(event.Prefix)) return std::nullopt;
  if (!Matches(event.Date, "0000-00-00")) event.Date.clear();
  if (!Matches(event.Published, "0000-00-00 00:00:00")) event.Published.clear();
  return event;
}

bool IsSameEvent(const ListedEvent& a, const ListedEvent& b) {
  return a.Name == b.Name || (!a.Date.empty() && a.Date == b.Date);
}

std::optional<ListedEvent> EventOfReport(std::string_view page) {
  constexpr std::size_t kHeadBytes = 1 << 20;  // the style stands after it, long names before it
  const std::size_t mark = page.substr(0, kHeadBytes).find(kReportMark);
  if (mark == std::string_view::npos) return std::nullopt;
  return EventOfText(Quoted(page, mark, kReportMark.size()));
}

bool HasEventList(std::string_view page) { return Contains(page, kListMark); }

std::vector<ListedEvent> EventsOfIndex(std::string_view page) {
  std::vector<ListedEvent> events;
  std::set<std::string> seen;
  for (std::size_t at = 0; (at = page.find(kItemMark, at)) != std::string_view::npos; ++at) {
    auto event = EventOfText(Quoted(page, at, kItemMark.size()));
    if (event && seen.insert(event->Prefix).second) events.push_back(std::move(*event));
  }
  return events;
}

void AddEvent(std::vector<ListedEvent>& events, ListedEvent event) {
  std::erase_if(events, [&event](const ListedEvent& old) { return old.Prefix == event.Prefix; });
  events.push_back(std::move(event));
  std::stable_sort(events.begin(), events.end(), [](const ListedEvent& a, const ListedEvent& b) {
    return std::tie(a.Date, a.Published) > std::tie(b.Date, b.Published);
  });
}

std::string EventListPage(const std::vector<ListedEvent>& events) {
  std::string page;
  AppendPlainHead(page, ResourceText("RES_EVENTS_TITLE"));
  page += EventListBlock(events, true);
  AppendPlainFoot(page);
  return page;
}

std::optional<std::string> PageWithEvents(std::string_view page,
                                          const std::vector<ListedEvent>& events,
                                          std::string_view lap_file) {
  const std::string piece =
      HasEventList(page) ? std::string(kListMark) : "<a href=\"" + PercentEncode(lap_file) + "\"";
  return IndexWithBlock(page, EventListBlock(events, IsPlainPage(page)), Charset::kUtf8, piece);
}

}  // namespace keltrun
