// What the component does with a class and a host may not.
#pragma once

#include <string>
#include <unordered_map>

#include "keltrun2/model/class_data.h"

namespace keltrun {

class ClassDataInternal {
 public:
  /// Names the class and derives its file base name anew.
  static void SetClassName(clsClassData& klass, std::string_view name) {
    klass.class_name_ = name;
    klass.SetFileName("");
  }
  /// Adds a record without looking for a match.
  static void Append(clsClassData& klass, const std::shared_ptr<clsLapData>& lap) {
    klass.Append(lap);
  }
  static const std::vector<std::shared_ptr<clsLapData>>& Runners(const clsClassData& klass) {
    return klass.laps_;
  }
};

/// Adds many records to one class as clsClassData::AddLapObject adds each, with the runners of the
/// class found by key instead of one by one. Nobody else may change the class meanwhile.
class LapMerger {
 public:
  LapMerger(clsClassData& klass, KrLapFileLoadModeCosnt mode);

  /// True only when the record was added as a new runner.
  bool Add(const std::shared_ptr<clsLapData>& lap);

 private:
  void Remember(const std::shared_ptr<clsLapData>& lap);

  clsClassData& class_;
  const KrLapFileLoadModeCosnt mode_;
  std::unordered_map<std::string, std::shared_ptr<clsLapData>> first_by_key_;
};

}  // namespace keltrun
