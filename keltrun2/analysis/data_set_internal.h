// What the component does with a data set and a host may not.
#pragma once

#include <memory>
#include <vector>

#include "keltrun2/analysis/data_set.h"

namespace keltrun {

class DataSetInternal {
 public:
  /// Adds classes themselves, whichever event is the current one.
  static void AddClasses(DataSet& set, const std::vector<std::shared_ptr<clsClassData>>& classes) {
    set.AddClasses(classes);
  }
};

}  // namespace keltrun
