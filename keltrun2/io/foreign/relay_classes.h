// Relays: events have a class for each leg of them, files of other programs have teams.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/model/event_model.h"

namespace keltrun {

/// A relay whose legs are the classes "NAME-1", "NAME-2" and so on.
struct RelayClass {
  std::string name;
  std::vector<const clsClassData*> legs;
};

/// The relays of an event. Classes with such names are the legs of one when most runners of a later
/// leg have a partner in the first one: another person of the same team (the club), with the same
/// number, or, where no numbers are known, who handed over to somebody of the team. In every leg a
/// team has one runner.
std::vector<RelayClass> FindRelays(const EventModel& model);

/// What the runners of one team have in common: the club and the number without a part for the leg.
std::string TeamKey(const clsLapData& runner);

/// The number of a team: that of a runner up to the part for the leg ("101" of "101-2", "101.2").
std::string_view TeamBib(std::string_view bib);

}  // namespace keltrun
