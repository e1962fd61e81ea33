#include "keltrun2/report/html_parts.h"

#include <array>
#include <charconv>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/base/version.h"
#include "keltrun2/config/page_texts.h"
#include "keltrun2/config/settings.h"
#include "keltrun2/model/event_model.h"
#include "keltrun2/text/html.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/split.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

void AppendHexColor(std::string& out, std::uint32_t color) {
  std::array<char, 8> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), color, 16);
  out += UpperAscii(std::string(digits.data(), end.ptr));
}

void AppendAttribute(std::string& out, std::string_view attribute) {
  if (!attribute.empty()) out.append(" ").append(attribute);
}

void MakeStyleBlock(std::string& out, std::string_view td_style, std::string_view extra_style) {
  out.append("<style type=\"text/css\">\r\n<!--\r\n");
  out.append("table { border-width: 0px 0px 1px 1px ; border-color: black }\r\n");
  out.append("td { ").append(td_style);
  out.append("border-width: 1px 1px 0px 0px ; border-color: black }\r\n");
  if (!extra_style.empty()) out.append(extra_style).append(kCrLf);
  out.append("-->\r\n</style>\r\n");
}

void MakeNoRunnersMessage(std::string& out, const EventModel& model) {
  if (model.ClassCount() == 0) {
    AppendEscaped(out, PageText("RES_TITLE_NOTHING_LOADED", "ファイルが読み込まれてません。"));
    out.append("<br>\r\n");
  }
  AppendEscaped(out, PageText("RES_TITLE_NO_ANALYSIS", "解析できません。"));
  out.append("<br>\r\n");
}

}  // namespace

std::string_view TableFontStyle() {
  return HasJapaneseTexts() ? kJapaneseTableFontStyle
                            : "font-family: 'MS Gothic', monospace; font-size: 10pt;";
}

void MakeHead(std::string& out, const HeadOptions& options) {
  out.append("<head>\r\n<meta http-equiv=\"Content-Type\" content=\"text/html; charset=");
  out.append(options.Charset).append("\">\r\n");
  out.append("<meta name=\"generator\" content=\"Keltrun Ver.");
  out.append(VersionText(false)).append("\">\r\n");
  if (options.UseStyle) MakeStyleBlock(out, options.TdStyle, options.ExtraStyle);
  if (!options.LinkStyleFile.empty()) {
    out.append("<link rel=\"stylesheet\" type=\"text/css\" href=\"");
    out.append(options.LinkStyleFile).append("\">\r\n");
  }
  out.append("</head>");
}

void MakeTitleRow(std::string& out, std::string_view Text, std::int32_t ColSpan,
                  std::uint32_t BackColor, std::string_view TrAttr, std::string_view TdAttr) {
  out.append("<tr");
  if (BackColor != kNoColor) {
    out.append(" bgcolor=\"#");
    AppendHexColor(out, BackColor);
    out.append("\"");
  }
  AppendAttribute(out, TrAttr);
  out.append("><td colspan=\"").append(std::to_string(ColSpan)).append("\"");
  AppendAttribute(out, TdAttr);
  out.append(">").append(Text).append("</td></tr>");
}

std::string_view RankBgColor(std::int32_t rank) {
  switch (rank) {
    case 1:
      return " bgcolor=\"#ffccdc\"";
    case 2:
      return " bgcolor=\"#ffdde8\"";
    case 3:
      return " bgcolor=\"#ffeef4\"";
    default:
      return "";
  }
}

void MakeFooter(std::string& out) {
  out.append("<br><a href=\"").append(kMakerAddress);
  out.append("\">").append(PageText("RES_TITLE_MADE_WITH", "Made with ケルトラン２"));
  out.append(" (Ver.").append(VersionText(false)).append(")</a>\r\n");
}

void MakeAnalyzerPage(std::string& out, const EventModel& model, const clsAnalyzer& analyzer,
                      const HeadOptions& head, const std::function<void()>& make_body) {
  out += "<html>\r\n";
  MakeHead(out, head);
  out += "<body>\r\n";
  if (analyzer.Count() == 0) {
    MakeNoRunnersMessage(out, model);
  } else {
    make_body();
  }
  MakeFooter(out);
  out += "</body></html>";
}

void MakePageTitleRow(std::string& out, const clsAnalyzer& analyzer, std::string_view event,
                      std::int32_t ColSpan, std::string_view TdAttr) {
  std::string title(event);
  const std::string info = analyzer.ClassInfo();
  if (!info.empty()) title += " - " + info;
  const std::string text = "&nbsp;<font color=\"#ffffff\" size=\"+1\"><b>" +
                           EscapeHtml(TitleName(analyzer.DataSetName())) +
                           "</b></font><font color=\"#ffffff\"> - " + EscapeHtml(title) + "</font>";
  MakeTitleRow(out, text, ColSpan, kPageTitleColor, "", TdAttr);
}

std::string CountOfRunners(std::int32_t count) {
  return count == 1 ? ResourceText("RES_REPORT_RUNNER")
                    : CclsSplit("%1", ResourceText("RES_REPORT_RUNNERS"))
                          .Expression(std::to_string(count));
}

std::string CountOfControls(std::int32_t count) {
  return count == 1 ? ResourceText("RES_REPORT_CONTROL")
                    : CclsSplit("%1", ResourceText("RES_REPORT_CONTROLS"))
                          .Expression(std::to_string(count));
}

std::string TitleName(std::string_view name) {
  return IsJapaneseMode() ? ToFullWidth(name) : std::string(name);
}

}  // namespace keltrun
