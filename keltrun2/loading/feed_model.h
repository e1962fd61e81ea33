// Puts what a reader found into the event.
#pragma once

#include "keltrun2/io/lap_records.h"
#include "keltrun2/io/native_reader.h"
#include "keltrun2/io/text_reading.h"
#include "keltrun2/loading/progress_report.h"
#include "keltrun2/model/event_model.h"
#include "keltrun2/model/load_mode.h"

namespace keltrun {

/// When the event name of a file becomes that of the event.
enum class EventNameRule {
  kAlways,      // an event that is still without one gets the resource text for that
  kIfEmpty,     // the same, but an event with a name keeps it
  kNormalLoad,  // only with KR_LOADMODE_NORMAL, as the rest of the event header
};

/// Adds a native lap file: the header only with KR_LOADMODE_NORMAL, the courses and classes that
/// are new, and every runner as the mode says. Progress advances with each class. There is a remark
/// when a course is dropped because another one has its number, and when two classes become one.
void FeedModel(EventModel& model, NativeLapFile& file, KrLapFileLoadModeCosnt mode,
               ProgressReport& progress, RemarkList& remarks);

/// Adds the records of a text format in the same way. A class with control codes, or with the
/// finish alone, gets the course with these codes, or a new one with the next higher number.
void FeedModel(EventModel& model, const LapRecords& records, EventNameRule rule,
               KrLapFileLoadModeCosnt mode, ProgressReport& progress, RemarkList& remarks);

/// Sets the club and sex of the runners with these names in every class. A club is set when the
/// runner has none, or always with KR_LOADMODE_PRIORITY_NEWDATA; a sex only when the runner has
/// none. There is a remark when the event does not have some of the runners.
void ApplyUpdates(EventModel& model, const std::vector<RunnerUpdate>& updates,
                  KrLapFileLoadModeCosnt mode, RemarkList& remarks);

}  // namespace keltrun
