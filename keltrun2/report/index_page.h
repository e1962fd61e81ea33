// The index page of a site: a block that lists classes with links to their pages. A page may hold
// several blocks, the newest first.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "keltrun2/codec/encodings.h"
#include "keltrun2/model/event_model.h"

namespace keltrun {

/// A line of an index page that begins a block.
inline constexpr std::string_view kIndexStart = "<!-- ### KELTRUN START ### -->";
inline constexpr std::string_view kIndexFinish = "<!-- ### KELTRUN FINISH ### -->";

/// The beginning of a block: marker, table, event row, and a row of date, terrain and web site when
/// there is something to show.
void AppendIndexHead(std::string& out, const clsEventData& event, bool official_site);

/// A link to a file of the site.
std::string IndexLink(std::string_view file_name, std::string_view attributes,
                      std::string_view text);

/// The row of links to lap-file copies; `links` is HTML.
void AppendIndexLinksRow(std::string& out, std::string_view links);

/// The row of a class or course. `links` is HTML.
struct IndexRow {
  std::string_view Name;
  std::string_view Links;
  std::string_view ClassInfo;
  std::string_view WinnerName;
  std::string_view WinnerResult;
};
void AppendIndexRow(std::string& out, const IndexRow& row);

/// The end of a block, with the moment of output.
void AppendIndexFoot(std::string& out, DateTime now);

/// A whole page around a block.
std::string IndexPage(std::string_view block, std::string_view link_style_file,
                      std::string_view charset);

/// An existing page (bytes) with a block put in front of its first one; without one before the last
/// "</body>", or at the end. Blocks that have `replaced_piece` (ASCII) in them, unless that is
/// empty, give their place to the new one. Lines end in CR LF afterwards. The block comes in the
/// bytes of the page: those of its byte-order mark or of the charset that it declares (ASCII
/// with character references when that is not known), else UTF-8 where the page is UTF-8 beyond
/// ASCII, else `charset`. Nothing for a page in UTF-16.
std::optional<std::string> IndexWithBlock(std::string_view page, std::string_view block,
                                          Charset charset, std::string_view replaced_piece = "");

}  // namespace keltrun
