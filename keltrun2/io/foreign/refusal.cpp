#include "keltrun2/io/foreign/refusal.h"

#include <array>

#include "keltrun2/config/settings.h"

namespace keltrun {
namespace {

// In the order of Refusal.
constexpr std::array<std::string_view, 15> kKeys = {
    "RES_REFUSED_START_LIST",      "RES_REFUSED_COURSE_DATA", "RES_REFUSED_ENTRY_LIST",
    "RES_REFUSED_COMPETITOR_LIST", "RES_REFUSED_CLUB_LIST",   "RES_REFUSED_EVENT_LIST",
    "RES_REFUSED_CONTROL_CARDS",   "RES_REFUSED_SERVICES",    "RES_REFUSED_OLD_VERSION",
    "RES_REFUSED_SCORE_RESULTS",   "RES_REFUSED_NO_SPLITS",   "RES_REFUSED_NO_RESULTS",
    "RES_REFUSED_NO_SUCH_RACE",    "RES_REFUSED_WEB_PAGE",    "RES_REFUSED_DAMAGED",
};

}  // namespace

std::string RefusalText(Refusal refusal, std::string_view format) {
  std::string text = ResourceText(kKeys.at(static_cast<std::size_t>(refusal)));
  // The texts of a host may be older than this kind of file.
  if (text.empty()) text = "This file has no results with split times (%1).";
  const std::size_t place = text.find("%1");
  if (place != std::string::npos) text.replace(place, 2, format);
  return text;
}

}  // namespace keltrun
