// Which lists of controls the runners of a class had.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "keltrun2/io/foreign/foreign_event.h"

namespace keltrun {

using CodeList = std::vector<std::int32_t>;

/// The times of a runner at the controls of their list, and what did not fit.
struct AlignedRunner {
  std::size_t list = 0;  // index of the list in CourseLists::lists
  std::vector<std::optional<Milliseconds>> times;
  std::size_t unused = 0;  // punches that are not on the list
};

/// The lists of controls of a class, that of most runners first, and its runners in their order.
struct CourseLists {
  std::vector<CodeList> lists;  // one empty list when there are no codes
  std::vector<AlignedRunner> runners;
  std::size_t left_out = 0;  // lists beyond the limit
};

/// Finds the lists. Runners whose time counts show them: their punches, which the file may have in
/// the number of controls that it gives. Everybody else ran the list that most of their punches
/// belong to; controls without a punch were missed. Without codes, punches stand for the controls
/// 1, 2, ... The finish is not among the punches. At most `most_lists` are kept, which is at least
/// 1; the runners of the others are compared with the first ones.
CourseLists FindCourseLists(const ForeignClass& klass, std::size_t most_lists);

}  // namespace keltrun
