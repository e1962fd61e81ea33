#include "keltrun2/report/report_page.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

#include "keltrun2/codec/base64.h"
#include "keltrun2/codec/gzip.h"
#include "keltrun2/codec/utf8.h"
#include "keltrun2/config/settings.h"
#include "keltrun2/model/class_data_internal.h"
#include "keltrun2/model/result_status.h"
#include "keltrun2/model/time_text.h"
#include "keltrun2/report/class_lists.h"
#include "keltrun2/report/html_parts.h"
#include "keltrun2/report/page_template.h"
#include "keltrun2/report/report_template.h"
#include "keltrun2/text/html.h"
#include "keltrun2/text/letters.h"

namespace keltrun {
namespace {

constexpr std::size_t kPodium = 3;

std::string Duration(DateTime days) {
  return CompactTime(std::round(days * kSecondsPerDay) / kSecondsPerDay);
}

std::string EventTitle(const clsEventData& event) {
  return event.EventName.empty() ? std::string(ResourceText("RES_META_NO_EVENT_NAME"))
                                 : ValidUtf8(event.EventName);
}

// The one whom times are compared with, or null: out of competition, somebody may have been faster.
const ListedRunner* Leader(const std::vector<ListedRunner>& runners) {
  const auto is_ranked = [](const ListedRunner& runner) {
    return runner.time && !runner.rank.empty() && IsDigits(runner.rank);
  };
  const auto ranked = std::find_if(runners.begin(), runners.end(), is_ranked);
  if (ranked != runners.end()) return &*ranked;
  return runners.empty() || !runners.front().time ? nullptr : &runners.front();
}

// The time after the leader; nothing for the leader.
std::string Behind(const ListedRunner& runner, const ListedRunner* leader) {
  if (!runner.time || leader == nullptr || &runner == leader) return "";
  const DateTime behind = *runner.time - *leader->time;
  return (behind < 0 ? "\u2212" : "+") + Duration(std::fabs(behind));
}

// Writes the parts of the page that need no script.
class StaticParts {
 public:
  StaticParts(std::string& page, const EventModel& model, const std::vector<ReportPageSet>& sets,
              const std::vector<ReportLink>& links)
      : page_(page), model_(model), lists_(ListsOfClasses(model, sets)), links_(links) {}

  void AppendOverview() {
    AppendHead();
    page_ += "<h2 class=\"h2\">";
    AppendText(ResourceText("RES_REPORT_CLASSES"));
    page_ += "</h2>\n<div class=\"grid cards\">\n";
    for (const ClassList& list : lists_) AppendCard(list);
    page_ += "</div>\n";
    AppendLinks("RES_REPORT_TAKE_AWAY", true);
    AppendLinks("RES_REPORT_MORE_PAGES", false);
  }

  void AppendLists() {
    for (const ClassList& list : lists_) AppendList(list);
  }

 private:
  void AppendText(std::string_view text) { AppendEscaped(page_, ValidUtf8(text)); }

  void AppendElement(std::string_view opening, std::string_view text, std::string_view closing) {
    page_ += opening;
    AppendText(text);
    page_ += closing;
  }

  void AppendHead() {
    const clsEventData& event = *model_.Event;
    AppendElement("<div class=\"hero\"><div class=\"in\"><h1>", EventTitle(event), "</h1>\n<p>");
    std::int32_t runners = 0;
    for (const auto& klass : model_.Classes()) runners += klass->LapCount();
    const DateTime date = event.EventDate()->Value();
    const std::string date_text =
        date != 0 && std::isfinite(date) ? FormatDateTime(date, "yyyy-mm-dd") : "";
    std::string_view separator;
    for (const std::string& part : {date_text, event.Terrain, CountOfRunners(runners)}) {
      if (part.empty()) continue;
      page_ += separator;
      AppendText(part);
      separator = " · ";
    }
    page_ += "</p></div></div>\n";
  }

  // The links to files, or those to other pages, under a title.
  void AppendLinks(std::string_view title_key, bool files) {
    std::string_view opening = "<ul class=\"chips links\">";
    for (const ReportLink& link : links_) {
      if (IsFileToTake(link.Kind) != files) continue;
      if (!opening.empty()) {
        AppendElement("<h2 class=\"h2\">", ResourceText(title_key), "</h2>\n");
        page_.append(std::exchange(opening, ""));
      }
      AppendElement("<li><a class=\"chip\" href=\"", link.Address, "\"");
      AppendElement(files ? " download>" : ">", ResourceText(LinkTextKey(link.Kind)), "</a></li>");
    }
    if (opening.empty()) page_ += "</ul>\n";
  }

  static std::string_view LinkTextKey(ReportLinkKind kind) {
    constexpr std::string_view kKeys[] = {"RES_REPORT_LAP_FILE", "RES_REPORT_IOF_XML",
                                          "RES_REPORT_TABLE",    "RES_META_CHART",
                                          "RES_REPORT_CLASSIC",  "RES_REPORT_EVENTS"};
    return kKeys[static_cast<std::size_t>(kind)];
  }

  void AppendCard(const ClassList& list) {
    page_ += "<a class=\"card class-card\" href=\"#class=";
    page_ += PercentEncode(ValidUtf8(list.klass->ClassName()));
    AppendElement("\"><header><h3>", list.klass->ClassName(), "</h3><span>");
    AppendText(CourseText(*list.klass));
    AppendElement("</span><span class=\"n\">", CountOfRunners(list.klass->LapCount()),
                  "</span></header>\n<ol class=\"podium\">");
    const ListedRunner* const leader = Leader(list.runners);
    for (std::size_t i = 0; i < std::min(list.runners.size(), kPodium); ++i) {
      const ListedRunner& runner = list.runners[i];
      if (!runner.time) break;
      AppendPlace(runner, &runner == leader ? Duration(*runner.time) : Behind(runner, leader));
    }
    if (leader == nullptr)
      AppendElement("<li class=\"mut\">", ResourceText("RES_REPORT_NO_TIMES"), "</li>");
    page_ += "</ol></a>\n";
  }

  void AppendPlace(const ListedRunner& runner, std::string_view time) {
    const std::string& rank = runner.rank;
    page_ += "<li><span class=\"medal";
    if (rank == "1" || rank == "2" || rank == "3") page_.append(" m").append(rank);
    AppendElement("\">", rank.empty() ? "–" : rank, "</span>");
    AppendElement("<span class=\"nm\">", runner.record->RunnerName, "</span>");
    AppendElement("<span class=\"t\">", time, "</span></li>");
  }

  static std::string CourseText(const clsClassData& klass) {
    std::string text = klass.ClassInfo();
    if (klass.ControlCount <= 0) return text;
    if (!text.empty()) text += " · ";
    return text + CountOfControls(klass.ControlCount);
  }

  // The address of a class leads here when there are no scripts.
  void AppendList(const ClassList& list) {
    page_ += "<h2 id=\"class=";
    AppendText(list.klass->ClassName());
    AppendElement("\">", list.klass->ClassName(), "</h2>\n<table>");
    const ListedRunner* const leader = Leader(list.runners);
    for (const ListedRunner& runner : list.runners) {
      AppendRow(runner.time ? runner.rank : "", *runner.record,
                runner.time ? Duration(*runner.time) : runner.record->Result(),
                Behind(runner, leader));
    }
    if (list.analyzer) AppendUnlisted(*list.klass);
    page_ += "</table>\n";
  }

  // Runners with neither laps nor a time, as those who did not start.
  void AppendUnlisted(const clsClassData& klass) {
    for (const auto& record : ClassDataInternal::Runners(klass)) {
      if (record->LegCount() > 0 || TotalTime(record->Result())) continue;
      AppendRow("", *record, record->Result(), "");
    }
  }

  void AppendRow(std::string_view rank, const clsLapData& record, std::string_view result,
                 std::string_view behind) {
    page_ += "<tr>";
    for (const std::string_view cell : {rank, std::string_view(record.RunnerName),
                                        std::string_view(record.ClubName), result, behind}) {
      AppendElement("<td>", cell, "");
    }
    page_ += '\n';
  }

  std::string& page_;
  const EventModel& model_;
  const std::vector<ClassList> lists_;
  const std::vector<ReportLink>& links_;
};

// What an index of events reads in the report.
void AppendPublication(std::string& page, std::string_view publication) {
  if (publication.empty()) return;
  page += "\n<meta name=\"keltrun2-event\" content=\"";
  AppendEscaped(page, publication);
  page += "\">";
}

}  // namespace

void AppendReportPage(std::string& page, const EventModel& model,
                      const std::vector<ReportPageSet>& sets, const clsEstimate* estimate,
                      const ReportSurroundings& surroundings) {
  StaticParts parts(page, model, sets, surroundings.Links);
  std::string_view rest = kReportTemplate;
  AppendUpTo(page, rest, "{language}");
  page += CurrentSettings().Language == "ja" ? "ja" : "en";
  AppendUpTo(page, rest, "{title}");
  AppendEscaped(page, EventTitle(*model.Event));
  AppendUpTo(page, rest, "{publication}");
  AppendPublication(page, surroundings.Publication);
  AppendUpTo(page, rest, "{event}");
  AppendEscaped(page, EventTitle(*model.Event));
  AppendUpTo(page, rest, "{overview}");
  parts.AppendOverview();
  AppendUpTo(page, rest, "{lists}");
  parts.AppendLists();
  AppendUpTo(page, rest, "{data}");
  AppendBase64(page, Gzip(ReportData(model, sets, estimate, surroundings)));
  page.append(rest);
}

}  // namespace keltrun
