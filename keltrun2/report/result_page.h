// The HTML page of a result list.
#pragma once

#include <string>
#include <string_view>

#include "keltrun2/analysis/results_holder.h"

namespace keltrun {

/// Appends the whole page. `top_value` (above the table) and `link_style_file` are the host's own
/// HTML; `charset` is the charset that the page declares.
void AppendResultPage(std::string& out, const clsResultsHolder& results, std::string_view top_value,
                      std::string_view link_style_file, std::string_view charset);

}  // namespace keltrun
