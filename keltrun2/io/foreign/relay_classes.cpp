#include "keltrun2/io/foreign/relay_classes.h"

#include <cstdlib>
#include <unordered_map>
#include <unordered_set>

#include "keltrun2/io/foreign/iof_elements.h"
#include "keltrun2/model/class_data_internal.h"
#include "keltrun2/model/result_facts.h"
#include "keltrun2/text/letters.h"

namespace keltrun {
namespace {

constexpr std::int64_t kHandOverTolerance = 2000;  // milliseconds

using Teams = std::unordered_map<std::string, const clsLapData*>;

// The runners of a leg by team; empty when a runner has no team or a team has two runners.
Teams TeamsOf(const clsClassData& leg) {
  Teams teams;
  for (const auto& runner : ClassDataInternal::Runners(leg)) {
    if (runner->ClubName.empty() || !teams.emplace(TeamKey(*runner), runner.get()).second) {
      return {};
    }
  }
  return teams;
}

bool HandsOver(ResultFacts& facts, const clsClassData& leg, const Teams& next) {
  std::size_t hand_overs = 0;
  for (const RunnerFacts& runner : facts.RunnersOf(leg)) {
    if (runner.start == kNoMilliseconds || runner.time == kNoMilliseconds) continue;
    const auto partner = next.find(TeamKey(*runner.record));
    if (partner == next.end()) continue;
    const std::int64_t start = ToMilliseconds(partner->second->StartTime()->Value());
    if (std::abs(start - runner.start - runner.time) <= kHandOverTolerance) ++hand_overs;
  }
  return hand_overs > 0 && 2 * hand_overs >= next.size();
}

// Whether most runners of a leg have a partner in the first one who is another person.
bool HavePartners(const Teams& first, const Teams& leg, bool& have_numbers) {
  std::size_t partners = 0;
  std::size_t numbered = 0;
  for (const auto& [key, runner] : leg) {
    const auto partner = first.find(key);
    if (partner == first.end() || partner->second->RunnerName == runner->RunnerName) continue;
    ++partners;
    if (!BibText(*runner).empty()) ++numbered;
  }
  have_numbers = 2 * numbered >= leg.size();
  return partners > 0 && 2 * partners >= leg.size();
}

bool IsRelay(const EventModel& model, const std::vector<const clsClassData*>& legs) {
  const Teams first = TeamsOf(*legs.front());
  if (first.empty()) return false;
  for (std::size_t i = 1; i < legs.size(); ++i) {
    const Teams leg = TeamsOf(*legs[i]);
    bool have_numbers = false;
    if (!HavePartners(first, leg, have_numbers)) return false;
    if (have_numbers) continue;
    ResultFacts facts(model);
    if (!HandsOver(facts, *legs[i - 1], leg)) return false;
  }
  return true;
}

}  // namespace

std::string_view TeamBib(std::string_view bib) {
  const std::size_t digits = bib.find_first_not_of("0123456789");
  if (digits == 0 || digits == std::string_view::npos) return bib;
  const bool is_leg = std::string_view("-./").find(bib[digits]) != std::string_view::npos &&
                      IsDigits(bib.substr(digits + 1));
  return is_leg ? bib.substr(0, digits) : bib;
}

std::string TeamKey(const clsLapData& runner) {
  const std::string bib = BibText(runner);
  return runner.ClubName + "\n" + std::string(TeamBib(bib));
}

std::vector<RelayClass> FindRelays(const EventModel& model) {
  std::vector<RelayClass> relays;
  for (const auto& klass : model.Classes()) {
    const std::string& first = klass->ClassName();
    if (first.size() < 3 || !first.ends_with("-1")) continue;
    RelayClass relay{first.substr(0, first.size() - 2), {klass.get()}};
    for (std::size_t leg = 2;; ++leg) {
      const auto next = model.ClassByName(relay.name + "-" + std::to_string(leg));
      if (!next) break;
      relay.legs.push_back(next.get());
    }
    const bool name_is_free = model.ClassByName(relay.name) == nullptr;
    if (relay.legs.size() > 1 && name_is_free && IsRelay(model, relay.legs)) {
      relays.push_back(std::move(relay));
    }
  }
  return relays;
}

}  // namespace keltrun
