// The official ranks when a load adds to the event.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "keltrun2/io/remarks.h"
#include "keltrun2/model/event_model.h"

namespace keltrun {

/// Keeps the ranks of an event before a load and brings them up to date after it.
class RankRenewal {
 public:
  explicit RankRenewal(const EventModel& model);

  /// A class whose official ranks were exactly the ranks by result gets the ranks by its new
  /// results. Other ranks were given for a reason, so they stay; if a result, a rank or the number
  /// of runners changed, there is a remark. A new class keeps the ranks that it came with, and a
  /// class without ranks gets none.
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
