// Every runner of an event as a row of a table.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "keltrun2/model/event_model.h"

namespace keltrun {

/// Which rows and columns a table has.
struct ResultCsvOptions {
  std::string_view class_name;  // only this class; "" for all
  std::int32_t course_num = 0;  // only runners who had this course; 0 for all
  bool splits = false;          // also the times at the controls
  char delimiter = ',';
};

/// Appends a header line and a line for each runner, whatever the status, in the order of the
/// classes and of their result lists. The text is UTF-8, and lines end in CR LF.
void AppendResultCsv(std::string& out, const EventModel& model, const ResultCsvOptions& options);

}  // namespace keltrun
