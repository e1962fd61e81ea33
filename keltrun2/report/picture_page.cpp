#include "keltrun2/report/picture_page.h"

#include "keltrun2/codec/utf8.h"
#include "keltrun2/config/settings.h"
#include "keltrun2/report/plain_page.h"
#include "keltrun2/text/html.h"

namespace keltrun {
namespace {

void AppendText(std::string& page, std::string_view text) { AppendEscaped(page, ValidUtf8(text)); }

// Links to all groups, when there are several.
void AppendJumps(std::string& page, const std::vector<PictureGroup>& groups) {
  if (groups.size() < 2) return;
  page += "<h2>";
  AppendText(page, ResourceText("RES_REPORT_CLASSES"));
  page += "</h2>\r\n<ul class=\"jump\">\r\n";
  for (std::size_t i = 0; i < groups.size(); ++i) {
    page.append("<li><a href=\"#g").append(std::to_string(i + 1)).append("\">");
    AppendText(page, groups[i].Name);
    page += "</a></li>\r\n";
  }
  page += "</ul>\r\n";
}

void AppendPicture(std::string& page, const PictureGroup& group, const PagePicture& picture,
                   const std::string& size) {
  const std::string address = EscapeHtml(PercentEncode(picture.File));
  page += "<figure><figcaption>";
  AppendText(page, picture.Title);
  page.append("</figcaption><a href=\"").append(address).append("\"><img src=\"").append(address);
  page.append("\"").append(size).append(" loading=\"lazy\" alt=\"");
  AppendText(page, group.Name + ": " + picture.Title);
  page += "\"></a></figure>\r\n";
}

}  // namespace

void AppendPicturePage(std::string& page, std::string_view event_name, std::string_view report,
                       const std::vector<PictureGroup>& groups, int width, int height) {
  const std::string title = std::string(event_name) + " – " + ResourceText("RES_META_CHART");
  const std::string size =
      " width=\"" + std::to_string(width) + "\" height=\"" + std::to_string(height) + "\"";
  AppendPlainHead(page, title);
  page += "<h1>";
  AppendText(page, title);
  page.append("</h1>\r\n<p><a href=\"").append(EscapeHtml(report)).append("\">");
  AppendText(page, ResourceText("RES_EVENTS_REPORT"));
  page += "</a></p>\r\n";
  AppendJumps(page, groups);
  for (std::size_t i = 0; i < groups.size(); ++i) {
    page.append("<h2 id=\"g").append(std::to_string(i + 1)).append("\">");
    AppendText(page, groups[i].Name);
    page += "</h2>\r\n<div class=\"pictures\">\r\n";
    for (const PagePicture& picture : groups[i].Pictures) {
      AppendPicture(page, groups[i], picture, size);
    }
    page += "</div>\r\n";
  }
  AppendPlainFoot(page);
}

}  // namespace keltrun
