// Why a file of another program cannot be read, in the user's language.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace keltrun {

/// What a file is that has no results with split times.
enum class Refusal : std::int32_t {
  kStartList,
  kCourseData,
  kEntryList,
  kCompetitorList,
  kClubList,
  kEventList,
  kControlCards,
  kServiceRequests,
  kOldIofVersion,  // IOF XML 1
  kScoreResults,   // controls in any order
  kNoSplits,       // results, but no split times
  kNoResults,      // of a format that has results, but there are none
  kNoSuchRace,     // the race that was asked for
  kWebPage,        // a page of the web without results
  kDamaged,        // a file that ends or is broken in the middle
};

/// The text of a refusal: what the file is and what to do. `format` is the name of the format, such
/// as "IOF XML 3.0".
std::string RefusalText(Refusal refusal, std::string_view format);

}  // namespace keltrun
