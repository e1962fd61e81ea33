// What a result text says: a time, that the runner finished, or a status.
//
// The outputs depend on how each of them asks, so the questions differ in what they take for a
// time: a finish time ends before 24 hours, a total time has any number of hours, and a readable
// time is in any notation in which people write one.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "keltrun2/model/runner_status.h"
#include "keltrun2/text/datetime.h"

namespace keltrun {

/// The finish time that the order of a class, the CSV exports and the mail text know: h:mm, h:mm:ss
/// or a date, with or without decimals of a second; below 24 hours, except for dates. nullopt for
/// every other text.
std::optional<DateTime> FinishTime(std::string_view result);

/// The finish time of data sets and result lists: FinishTime, or h:mm:ss with hours of 24 and more.
std::optional<DateTime> TotalTime(std::string_view result);

/// Whether the result is that of a finisher, who has a rank in result lists and a place on the loss
/// map: TotalTime has a value.
bool IsFinished(std::string_view result);

/// The time in any notation that ParseTime reads, also bare digits ("1234"); nullopt for every
/// other text.
std::optional<DateTime> ReadableTime(std::string_view result);

/// The code of a result text that is not a time. Statuses are sorted by this code: "P" and a number
/// gives that number of missing punches, MP 50, DNF 90, ?CL 91, DNQ 92, D... 93, empty or unknown
/// 98, DNS 99. A text that contains ":" or "'" looks like a time and gives 0.
std::int32_t ResultStatusCode(std::string_view text);

/// The key that sorts runners by result: the time in days, else the status code as a number of
/// days, so that statuses come after times. A text that is not a time and has no code above 0 gets
/// the code 98.
DateTime ResultSortKey(std::string_view result);

/// Whether a ResultSortKey is a time that gives the runner a rank in the data set. The key of a
/// time of 24 hours and more is not told from that of a status.
inline bool IsTimeKey(DateTime key) { return key < 1; }

/// The key that orders the runners of a class: FinishTime, else the status code as a day count. A
/// text that looks like a time but is no FinishTime, such as "25:00:00", has the code 0 and comes
/// first.
DateTime ClassSortKey(std::string_view result);

/// How the race ended as a code that depends on no language: "ok", "mp", "dnf", "dns", "dsq" or
/// "nc" (out of competition); empty when neither the status nor the result says so.
std::string_view OutcomeCode(RunnerStatus status, std::string_view result);

}  // namespace keltrun
