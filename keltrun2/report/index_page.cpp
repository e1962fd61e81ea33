#include "keltrun2/report/index_page.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

#include "keltrun2/codec/utf8.h"
#include "keltrun2/config/settings.h"
#include "keltrun2/report/html_parts.h"
#include "keltrun2/text/html.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/split.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

bool IsWebAddress(std::string_view site) {
  const std::string lower = LowerAscii(site.substr(0, 8));
  return lower.starts_with("http://") || lower.starts_with("https://");
}

// Only a web address becomes a link: anything else could run as a script when it is clicked.
void AppendOfficialSite(std::string& out, const std::string& site) {
  out += "&nbsp;";
  if (!IsWebAddress(site)) {
    AppendEscaped(out, site);
    return;
  }
  out += "<a href=\"";
  AppendEscaped(out, site);
  out += "\" target=\"_blank\">";
  AppendEscaped(out, ResourceText("RES_META_WEBSITE"));
  out += "</a>";
}

std::string EventInformation(const clsEventData& event, bool official_site) {
  std::string out;
  if (event.EventDate()->Value() != 0) {
    AppendEscaped(out, event.EventDate()->ToString(ResourceText("RES_META_DATE_FORMAT")));
    out += "&nbsp;";
  }
  if (!event.Terrain.empty()) {
    out += "&nbsp;[";
    AppendEscaped(out, event.Terrain);
    out += "]";
  }
  if (official_site && !event.OfficialSite.empty()) AppendOfficialSite(out, event.OfficialSite);
  return out;
}

// Short class names are shown full-width in Japanese mode; long ones would need too much room.
std::string RowName(std::string_view name) {
  constexpr std::size_t kWidestFullWidthName = 10;
  return DisplayWidth(name) <= kWidestFullWidthName ? TitleName(name) : std::string(name);
}

// The value of an attribute such as "charset=" inside a tag, or "".
std::string AttributeWord(std::string_view tag, std::string_view name) {
  const std::size_t found = tag.find(name);
  if (found == std::string_view::npos) return "";
  const std::size_t begin = tag.find_first_not_of("\"' ", found + name.size());
  if (begin == std::string_view::npos) return "";
  return std::string(tag.substr(begin, tag.find_first_of("\"' ;/?>", begin) - begin));
}

// The charset that a page declares in a meta element or an XML declaration, or "".
std::string DeclaredCharset(std::string_view page) {
  constexpr std::size_t kHeadBytes = 2048;
  const std::string text = LowerAscii(page.substr(0, kHeadBytes));
  const std::string_view head = text;
  for (std::size_t at = 0; (at = head.find("<meta", at)) != head.npos; ++at) {
    const std::string_view tag = head.substr(at, head.find('>', at) - at);
    if (std::string word = AttributeWord(tag, "charset="); !word.empty()) return word;
  }
  if (!head.starts_with("<?xml")) return "";
  return AttributeWord(head.substr(0, head.find('>')), "encoding=");
}

// HTML in ASCII, which is part of every charset that old pages use.
std::string InAscii(std::string_view html) {
  std::string out;
  for (std::size_t pos = 0; pos < html.size();) {
    const char32_t c = NextCodePoint(html, pos);
    if (c < 0x80) {
      out += static_cast<char>(c);
    } else {
      out.append("&#").append(std::to_string(static_cast<std::uint32_t>(c))).append(";");
    }
  }
  return out;
}

std::string BlockInBytesOf(std::string_view page, std::string_view block, Charset charset) {
  const std::string declared = DeclaredCharset(page);
  const bool looks_like_utf8 =
      declared.empty() && !IsAscii(page) && FindInvalidUtf8(page) == std::string_view::npos;
  if (page.starts_with("\xEF\xBB\xBF") || looks_like_utf8) {
    charset = Charset::kUtf8;
  } else if (const auto known = CharsetFromName(declared)) {
    charset = *known;
  } else if (!declared.empty() || charset == Charset::kUtf8) {
    return InAscii(block);  // right in every charset, known or not
  }
  std::string bytes;
  AppendEncoded(bytes, block, charset, MissingCharacter::kCharacterReference);
  return bytes;
}

using Lines = std::vector<std::string_view>;

void AppendLines(std::string& out, Lines::const_iterator begin, Lines::const_iterator end) {
  for (auto line = begin; line != end; ++line) out.append(*line).append(kCrLf);
}

// Replaces the blocks of the page that contain this piece of HTML: the new block takes the place of
// the first, and the others are removed. False when there is none.
bool ReplaceBlocks(std::string& out, const Lines& lines, std::string_view block,
                   std::string_view piece) {
  bool replaced = false;
  auto line = lines.begin();
  while (true) {
    const auto finish = std::find(line, lines.end(), kIndexFinish);
    if (finish == lines.end()) {
      AppendLines(out, line, finish);
      return replaced;
    }
    // A block that was cut off has no finish, so the start is the last one before this finish.
    const auto start = std::find_end(line, finish, &kIndexStart, &kIndexStart + 1);
    AppendLines(out, line, start);
    line = std::next(finish);
    const bool same = std::any_of(start, finish,
                                  [piece](std::string_view text) { return Contains(text, piece); });
    if (!same) {
      AppendLines(out, start, line);
    } else if (!std::exchange(replaced, true)) {
      // The empty lines around the old block stay.
      out.append(block.substr(kCrLf.size(), block.size() - 2 * kCrLf.size()));
    }
  }
}

bool HasEmptyBody(std::string_view page) {
  const std::size_t body = page.find("<body");
  const std::size_t begin = page.find('>', body);
  const std::size_t end = page.find("</body>", begin);
  if (body == std::string_view::npos || end == std::string_view::npos) return false;
  return page.substr(begin + 1, end - begin - 1).find_first_not_of(" \t\r\n") ==
         std::string_view::npos;
}

// Where the last end tag of a body begins in a line, or npos. Blanks may precede its ">".
std::size_t FindBodyEnd(std::string_view line) {
  const std::string lower = LowerAscii(line);
  std::size_t tag = lower.size();
  while (tag > 0 && (tag = lower.rfind("</body", tag - 1)) != std::string::npos) {
    const std::size_t end = lower.find_first_not_of(" \t", tag + std::size("</body") - 1);
    if (end != std::string::npos && lower[end] == '>') return tag;
  }
  return std::string::npos;
}

// The line before which a block goes. When that is the last "</body>", the lines are split so that
// it begins one.
Lines::iterator PlaceOfBlock(Lines& lines) {
  const auto marker = std::find(lines.begin(), lines.end(), kIndexStart);
  if (marker != lines.end()) return marker;
  for (auto line = lines.end(); line != lines.begin();) {
    --line;
    const std::size_t body = FindBodyEnd(*line);
    if (body == std::string::npos) continue;
    const std::string_view before = line->substr(0, body);
    if (before.find_first_not_of(" \t") == std::string_view::npos) return line;
    line->remove_prefix(body);
    return std::next(lines.insert(line, before));
  }
  return lines.end();
}

std::string InsertBytes(std::string_view page, std::string_view block,
                        std::string_view replaced_piece) {
  Lines lines = SplitLines(page);
  std::string out;
  out.reserve(page.size() + block.size() + lines.size());
  if (!replaced_piece.empty() && ReplaceBlocks(out, lines, block, replaced_piece)) return out;
  out.clear();
  const auto place = PlaceOfBlock(lines);
  AppendLines(out, lines.begin(), place);
  out += block;
  AppendLines(out, place, lines.end());
  return out;
}

}  // namespace

void AppendIndexHead(std::string& out, const clsEventData& event, bool official_site) {
  out.append(kCrLf).append(kIndexStart).append(kCrLf);
  out += "<table cellpadding=\"2\" cellspacing=\"0\" border=\"1\" width=\"650\" class=\"top\">\r\n";
  out +=
      "<tr><td nowrap colspan=\"4\" bgcolor=\"#c04040\" class=\"t-event-name\">"
      "<font size=\"+1\" color=\"white\"><b>&nbsp;";
  AppendEscaped(out, event.EventName);
  out += "&nbsp;</b></font></td></tr>\r\n";
  const std::string information = EventInformation(event, official_site);
  if (information.empty()) return;
  out += "<tr><td nowrap colspan=\"4\" bgcolor=\"#ffdddd\" class=\"t-event-info\">";
  out += information;
  out += "</td></tr>\r\n";
}

std::string IndexLink(std::string_view file_name, std::string_view attributes,
                      std::string_view text) {
  return "<a href=\"" + PercentEncode(file_name) + "\"" + std::string(attributes) + ">" +
         EscapeHtml(text) + "</a>";
}

void AppendIndexLinksRow(std::string& out, std::string_view links) {
  out += "<tr><td nowrap colspan=\"4\" bgcolor=\"#f0f0f0\" align=\"right\" class=\"t-link\">\r\n";
  out.append(links).append("\r\n</td></tr>\r\n");
}

void AppendIndexRow(std::string& out, const IndexRow& row) {
  constexpr std::size_t kNameColumns = 6;
  constexpr std::size_t kResultColumns = 8;
  out +=
      "<tr><td nowrap bgcolor=\"#405080\" width=\"125\" class=\"t-class-head\">"
      "<font color=\"white\"><B>&nbsp;";
  AppendEscaped(out, RowName(row.Name));
  out +=
      "&nbsp;</B></font></td>\r\n"
      "<td nowrap bgcolor=\"#ffffff\" width=\"300\" class=\"t-class-body\">\r\n";
  out.append(row.Links).append("</td>\r\n");
  out += "<td nowrap bgcolor=\"#ddffdd\" align=\"center\" width=\"100\" class=\"t-class-length\">";
  if (row.ClassInfo.empty()) out += "&nbsp;";
  AppendEscaped(out, row.ClassInfo);
  out +=
      "</td>\r\n"
      "<td nowrap align=\"center\" bgcolor=\"#ffffcc\" width=\"100\" class=\"t-class-winner\">";
  AppendEscapedNoBreak(out, PadByWidth(NormalizeName(row.WinnerName), kNameColumns, false, true) +
                                PadByWidth(row.WinnerResult, kResultColumns, true, true));
  out += "</td>\r\n</tr>\r\n";
}

void AppendIndexFoot(std::string& out, DateTime now) {
  out += "<tr><td nowrap colspan=\"4\" bgcolor=\"#f0f0f0\" align=\"right\" class=\"t-output\">";
  AppendEscaped(out, ResourceText("RES_META_OUTPUT_DATE"));
  out += " : ";
  AppendDateTime(out, now, "yyyy/mm/dd hh:nn");
  out += "</td></tr>\r\n</table>\r\n<br>\r\n";
  out.append(kIndexFinish).append("\r\n\r\n");
}

std::string IndexPage(std::string_view block, std::string_view link_style_file,
                      std::string_view charset) {
  std::string out = "<html>\r\n";
  MakeHead(out, {.UseStyle = true,
                 .TdStyle = "font-size:10pt; ",
                 .LinkStyleFile = link_style_file,
                 .Charset = charset});
  out.append("\r\n<body bgcolor=\"#ffffff\">\r\n").append(block).append("</body>\r\n</html>");
  return out;
}

bool IsIndexOfOnly(std::string_view page, std::string_view lap_file) {
  const std::string link = "href=\"" + PercentEncode(lap_file) + "\"";
  std::string frame;
  for (bool has_block = false;; has_block = true) {
    const std::size_t start = page.find(kIndexStart);
    frame += page.substr(0, start);
    if (start == std::string_view::npos) return has_block && HasEmptyBody(frame);
    const std::size_t finish = page.find(kIndexFinish, start);
    if (finish == std::string_view::npos) return false;
    if (!Contains(page.substr(start, finish - start), link)) return false;
    page.remove_prefix(finish + kIndexFinish.size());
  }
}

std::optional<std::string> IndexWithBlock(std::string_view page, std::string_view block,
                                          Charset charset, std::string_view replaced_piece) {
  if (page.starts_with("\xFF\xFE") || page.starts_with("\xFE\xFF")) return std::nullopt;
  return InsertBytes(page, BlockInBytesOf(page, block, charset), replaced_piece);
}

}  // namespace keltrun
