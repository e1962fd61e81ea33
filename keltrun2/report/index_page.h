// The index page of a site: a block that lists classes with links to their pages. A page may
// contain several blocks, the newest first.
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
/// there is any of them to show.
void AppendIndexHead(std::string& out, const clsEventData& event, bool official_site);

/// A link to a file of the site.
std::string IndexLink(std::string_view file_name, std::string_view attributes,
                      std::string_view text);

/// The row of links to the copies of the lap file; `links` is HTML.
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

/// Whether a page (as bytes) has blocks, all of them link this copy of a lap file, and nothing else
/// is in its body: it may be replaced when the event is published again.
bool IsIndexOfOnly(std::string_view page, std::string_view lap_file);

/// An existing page (as bytes) with a block inserted before its first block; if it has none, before
/// the last "</body>" or at the end. Blocks that contain `replaced_piece` (ASCII), unless that is
/// empty, are replaced by the new one. All lines of the result end in CR LF. The block is encoded
/// like the page: by the byte-order mark or the charset that the page declares (in ASCII with
/// character references when that charset is unknown), else in UTF-8 if the page has UTF-8 beyond
/// ASCII, else in `charset`. Nothing for a page in UTF-16.
std::optional<std::string> IndexWithBlock(std::string_view page, std::string_view block,
                                          Charset charset, std::string_view replaced_piece = "");

}  // namespace keltrun
