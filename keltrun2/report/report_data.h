// The data block of the report page: everything that the page shows, each thing once.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/analysis/data_set_kind.h"
#include "keltrun2/analysis/estimate.h"
#include "keltrun2/model/event_model.h"

namespace keltrun {

struct ReportPageSet {
  std::shared_ptr<const clsAnalyzer> Analyzer;
  DataSetKind Kind;
};

/// What lies beside a report that is part of a site.
enum class ReportLinkKind { kLapFile, kIofXml, kTable, kCharts, kClassicPages, kEvents };
struct ReportLink {
  ReportLinkKind Kind;
  std::string Address;  // as in a link, so percent-encoded
};

/// What a report that is part of a site has in addition.
struct ReportSurroundings {
  std::vector<ReportLink> Links;
  bool OfficialSite = true;  // whether the event's own web site is linked
  std::string Publication;   // what an index tells of the event; "" outside a site
};

/// The word of a kind in the data block.
std::string_view ReportLinkWord(ReportLinkKind kind);
/// Whether it is a file to take away, otherwise another page.
bool IsFileToTake(ReportLinkKind kind);

/// The data block as JSON. Its form is that of one version of the page and is described in
/// report_page/README.md; others read the documents of docs/json.md. `estimate` may be null.
std::string ReportData(const EventModel& model, const std::vector<ReportPageSet>& sets,
                       const clsEstimate* estimate, const ReportSurroundings& surroundings = {});

}  // namespace keltrun
