// The pieces that all HTML pages are made of. Every builder appends to `out`.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "keltrun2/text/cells.h"

namespace keltrun {

class clsAnalyzer;
class EventModel;

/// The charset that pages declare by default.
inline constexpr std::string_view kPageCharset = "x-sjis";

/// The target of the link in page footers: the maker's page.
inline constexpr std::string_view kMakerAddress = "https://keltrun.example/";

/// The viewer control with which an old browser can show lap files: its class, the addresses from
/// which browsers download it and the parser that it needs, and the page for all other browsers.
inline constexpr std::string_view kViewerControlClassId = "5B0D9C3E-7A64-4E18-9F2C-C41E83D6A70B";
inline constexpr std::string_view kViewerControlCabinetAddress =
    "https://keltrun.example/download/ctlDataView.cab";
inline constexpr std::string_view kXmlParserCabinetAddress =
    "https://keltrun.example/download/msxml3.cab";
inline constexpr std::string_view kVelmoraAddress = "https://keltrun.example/velmora/";

/// Title row colors, written as six hexadecimal digits.
inline constexpr std::uint32_t kPageTitleColor = 0x3030A0;
inline constexpr std::uint32_t kSectionTitleColor = 0xFFDD99;
inline constexpr std::uint32_t kNoColor = 0xFFFFFF;

/// The fixed-pitch Japanese font of table cells, as a CSS declaration.
inline constexpr std::string_view kJapaneseTableFontStyle =
    "font-family: 'ＭＳ ゴシック'; font-size: 10pt;";

/// The same declaration with the font's name in the language of the texts.
std::string_view TableFontStyle();

struct HeadOptions {
  bool UseStyle = false;                // write the inline style block
  std::string_view TdStyle = {};        // declarations for table cells
  std::string_view ExtraStyle = {};     // further rules
  std::string_view LinkStyleFile = {};  // address of a style sheet, the host's own HTML
  std::string_view Charset = {};
};

/// The head element.
void MakeHead(std::string& out, const HeadOptions& options);

/// A row of one cell across `ColSpan` columns; `Text` is HTML. A blank goes in front of each
/// attribute text that is not empty.
void MakeTitleRow(std::string& out, std::string_view Text, std::int32_t ColSpan,
                  std::uint32_t BackColor, std::string_view TrAttr, std::string_view TdAttr);

/// The background attribute of ranks 1 to 3, "" for others.
std::string_view RankBgColor(std::int32_t rank);

/// The line that names the maker, with its address.
void MakeFooter(std::string& out);

/// A whole page about an analysis: the head, what `make_body` appends, and the foot. When the data
/// set has no runners, messages that say so take the place of the body.
void MakeAnalyzerPage(std::string& out, const EventModel& model, const clsAnalyzer& analyzer,
                      const HeadOptions& head, const std::function<void()>& make_body);

/// The title row of an analysis: the data set, the event as `event` names it, and the course.
void MakePageTitleRow(std::string& out, const clsAnalyzer& analyzer, std::string_view event,
                      std::int32_t ColSpan, std::string_view TdAttr);

/// "12 runners" and "1 control" in the language of the texts.
std::string CountOfRunners(std::int32_t count);
std::string CountOfControls(std::int32_t count);

/// A data-set name as titles show it, full-width in Japanese mode. It is not escaped yet.
std::string TitleName(std::string_view name);

}  // namespace keltrun
