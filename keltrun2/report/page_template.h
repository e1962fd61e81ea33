// The templates of pages that are part of the library.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace keltrun {

/// Appends the template up to `gap`, and removes that part and the gap from `rest`.
inline void AppendUpTo(std::string& page, std::string_view& rest, std::string_view gap) {
  const std::size_t at = rest.find(gap);
  page.append(rest.substr(0, at));
  rest.remove_prefix(at + gap.size());
}

}  // namespace keltrun
