// Result lists of the whole event in IOF XML, in the forms that programs of the field read.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "keltrun2/model/event_model.h"

namespace keltrun {

/// When and where a document is written.
struct IofOptions {
  DateTime now = 0;                     // the creation time, local
  std::int32_t utc_offset = 0;          // minutes that the times of the event are ahead of UTC
  std::string_view encoding = "UTF-8";  // what the XML declaration says; the text is UTF-8
};

/// Appends the event as an IOF XML 3.0 result list, valid by its schema. Every runner has a
/// SplitTime for every control of their course, whether or not they started, because programs take
/// the controls of a class from its first runner. The finish is no control. Relays are teams.
void AppendIofXml3(std::string& out, const EventModel& model, const IofOptions& options);

/// Appends the event as an IOF XML 2.0.3 result list, valid by its DTD, with a document type
/// declaration, and a SplitTime for every control as above. Legs of relays are classes.
void AppendIofXml2(std::string& out, const EventModel& model, const IofOptions& options);

}  // namespace keltrun
