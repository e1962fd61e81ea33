// What the component does with a data set and a host may not.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "keltrun2/analysis/data_set.h"
#include "keltrun2/model/time_text.h"

namespace keltrun {

/// Whether a result is that of a finisher. A result of 24 hours and more is a finish time in data
/// sets, although the order by class does not take it for one.
inline bool HasFinishTime(std::string_view result) {
  return ParseFinishTime(result).has_value() || IsTimeText(result);
}

class DataSetInternal {
 public:
  /// Adds classes themselves, whichever event is the current one.
  static void AddClasses(DataSet& set, const std::vector<std::shared_ptr<clsClassData>>& classes) {
    set.AddClasses(classes);
  }
};

}  // namespace keltrun
