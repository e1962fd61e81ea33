// Official ranks when a load adds to the event.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "keltrun2/io/remarks.h"
#include "keltrun2/model/event_model.h"

namespace keltrun {

/// Knows how the ranks of an event were before a load, and brings them up to date after it.
class RankRenewal {
 public:
  explicit RankRenewal(const EventModel& model);

  /// A class whose official ranks were exactly the ranks of its results gets those of its results
  /// now. Other ranks were given by somebody for a reason: they stay, and where a result, a rank or
  /// the number of runners changed, a remark says so. A class that is new has the ranks it came
  /// with, and one without any ranks gets none.
  void Renew(std::vector<LoadRemark>& remarks) const;

 private:
  struct Standing {
    std::string result, rank;
    friend bool operator==(const Standing&, const Standing&) = default;
  };
  using Standings = std::unordered_map<const clsLapData*, Standing>;
  struct Before {
    std::shared_ptr<clsClassData> klass;
    Standings standings;
    bool ranked_by_result;
  };
  static Standings StandingsOf(const clsClassData& klass);

  std::vector<Before> classes_;
};

}  // namespace keltrun
