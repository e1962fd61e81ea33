// The result lists of a report, also of classes of which no laps are known.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "keltrun2/model/event_model.h"
#include "keltrun2/report/report_data.h"

namespace keltrun {

/// A line of a result list. Runners without a time come last.
struct ListedRunner {
  std::shared_ptr<const clsLapData> record;  // not null
  std::string rank;                          // as published, else by time; may be empty
  std::optional<DateTime> time;              // none for a status
};

struct ClassList {
  std::shared_ptr<const clsClassData> klass;    // not null
  std::shared_ptr<const clsAnalyzer> analyzer;  // null for a class without laps
  /// Those with laps or a time, also the runners that the analysis leaves out because they had
  /// another course or have no laps; all with a result if there is no analysis.
  std::vector<ListedRunner> runners;
};

/// The lists of all classes that have runners, in the order of the event.
std::vector<ClassList> ListsOfClasses(const EventModel& model,
                                      const std::vector<ReportPageSet>& sets);

}  // namespace keltrun
