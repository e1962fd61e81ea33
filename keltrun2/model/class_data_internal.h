// What the component does with a class and a host may not.
#pragma once

#include "keltrun2/model/class_data.h"

namespace keltrun {

class ClassDataInternal {
 public:
  /// Names the class and derives its file base name anew.
  static void SetClassName(clsClassData& klass, std::string_view name) {
    klass.class_name_ = name;
    klass.SetFileName("");
  }
  static const std::vector<std::shared_ptr<clsLapData>>& Runners(const clsClassData& klass) {
    return klass.laps_;
  }
};

}  // namespace keltrun
