// What holds for the records of every file of another program, however damaged.
#pragma once

#include <cstdlib>

#include "keltrun2/io/lap_records.h"

namespace keltrun {

inline void CheckForeignRecords(const ReadResult& read) {
  if (read.format.empty()) std::abort();
  for (const ClassRecords& klass : read.records.classes) {
    if (!klass.list_of_runner.empty() && klass.list_of_runner.size() != klass.runners.size()) {
      std::abort();
    }
    for (const auto& runner : klass.runners) {
      if (runner->LegCount() > clsLapData::kMostLegs) std::abort();
      for (std::int32_t leg = 1; leg <= runner->LegCount(); ++leg) {
        const DateTime lap = runner->Lap(leg);
        if (lap < 0 && lap != kTimeSkip) std::abort();
      }
    }
  }
}

}  // namespace keltrun
