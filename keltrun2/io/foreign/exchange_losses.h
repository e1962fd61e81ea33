// What the files for other programs do not hold.
#pragma once

#include <vector>

#include "keltrun2/codec/encodings.h"
#include "keltrun2/io/lap_file_types.h"
#include "keltrun2/io/remarks.h"
#include "keltrun2/model/event_model.h"

namespace keltrun {

/// Whether files of this type are for other programs: IOF XML (except the plain 2.0 list),
/// SplitsBrowser, WinSplits, OE2010.
bool IsExchangeType(KrLapFileTypeConst type);

/// What is lost or shown differently when the event is written in such a form.
std::vector<LoadRemark> ExchangeLosses(const EventModel& model, KrLapFileTypeConst type,
                                       Charset charset);

}  // namespace keltrun
