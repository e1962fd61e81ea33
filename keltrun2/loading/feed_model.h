// Handing what a reader found to the event.
#pragma once

#include "keltrun2/io/lap_records.h"
#include "keltrun2/io/native_reader.h"
#include "keltrun2/io/text_reading.h"
#include "keltrun2/loading/progress_report.h"
#include "keltrun2/model/event_model.h"
#include "keltrun2/model/load_mode.h"

namespace keltrun {

/// When a file's event name becomes that of the event.
enum class EventNameRule {
  kAlways,      // an event without a name gets the resource text for that
  kIfEmpty,     // likewise
  kNormalLoad,  // only with KR_LOADMODE_NORMAL, as the rest of the event header
};

/// A native lap file: the header only with KR_LOADMODE_NORMAL, courses and classes that are new,
/// and every runner as the mode says. Progress advances with each class. A course that is dropped
/// for another one of its number is a remark, and so are two classes that become one.
void FeedModel(EventModel& model, NativeLapFile& file, KrLapFileLoadModeCosnt mode,
               ProgressReport& progress, RemarkList& remarks);

/// The records of a text format, in the same way. A class with control codes, or with the finish
/// alone, gets the course that has them, or a new one numbered after the highest.
void FeedModel(EventModel& model, const LapRecords& records, EventNameRule rule,
               KrLapFileLoadModeCosnt mode, ProgressReport& progress, RemarkList& remarks);

/// Club and sex for the runners of these names, in every class: a club where there is none, or over
/// any with KR_LOADMODE_PRIORITY_NEWDATA; a sex only where there is none.
void ApplyUpdates(EventModel& model, const std::vector<RunnerUpdate>& updates,
                  KrLapFileLoadModeCosnt mode);

}  // namespace keltrun
