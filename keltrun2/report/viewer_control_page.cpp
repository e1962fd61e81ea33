#include "keltrun2/report/viewer_control_page.h"

#include "keltrun2/config/page_texts.h"
#include "keltrun2/report/html_parts.h"
#include "keltrun2/text/html.h"

namespace keltrun {
namespace {

void AppendHead(std::string& out, std::string_view charset) {
  out += "<head>";
  if (!charset.empty()) {
    out += "<meta http-equiv=\"Content-Type\" content=\"text/html; charset=";
    out.append(charset).append("\">");
  }
  out += "<title>Keltrun2 ActiveX Page</title></head>\r\n";
}

// The control reads lap files with this parser, which must be installed as well.
void AppendParserObject(std::string& out) {
  out +=
      "<object id=\"MSXML3\" ClassID = \"clsid:f5078f32-c551-11d3-89b9-0000f81fe221\"\r\n"
      "codebase = \"";
  out.append(kXmlParserCabinetAddress).append("#version=8,00,7820,0\"\r\n");
  out += "type=\"application/x-oleobject\"\r\nSTYLE=\"display: none\">\r\n</object>\r\n";
}

void AppendViewerObject(std::string& out, std::string_view lap_file_address) {
  out.append("<OBJECT ID=\"ctlDataView\" CLASSID=\"CLSID:").append(kViewerControlClassId);
  out.append("\"\r\nCODEBASE=\"").append(kViewerControlCabinetAddress);
  out += "#version=1,0,0,61\" width=\"100%\" height=\"100%\">\r\n<PARAM NAME=\"FileName\" VALUE=\"";
  out += lap_file_address;
  out += "\">\r\n<NOOBJECT>\r\n";
  AppendEscaped(out, PageText("RES_TITLE_NO_CONTROL",
                              "申し訳ありませんがお使いのブラウザではご利用できません。"));
  out.append("<br>\r\n<a href=\"").append(kVelmoraAddress).append("\">");
  AppendEscaped(out, PageText("RES_TITLE_VELMORA", "Velmoraへ"));
  out += "</a>\r\n";
  out += "</NOOBJECT>\r\n</OBJECT>\r\n";
}

}  // namespace

void AppendViewerControlPage(std::string& out, std::string_view lap_file_address,
                             std::string_view charset) {
  out += "<html>\r\n";
  AppendHead(out, charset);
  out += "<body>\r\n";
  AppendParserObject(out);
  AppendViewerObject(out, lap_file_address);
  out += "</body>\r\n</html>";
}

}  // namespace keltrun
