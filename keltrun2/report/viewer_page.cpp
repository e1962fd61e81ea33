#include "keltrun2/report/viewer_page.h"

#include <string_view>

#include "keltrun2/codec/base64.h"
#include "keltrun2/codec/gzip.h"
#include "keltrun2/codec/utf8.h"
#include "keltrun2/config/settings.h"
#include "keltrun2/report/json.h"
#include "keltrun2/report/page_template.h"
#include "keltrun2/report/viewer_template.h"
#include "keltrun2/text/html.h"

namespace keltrun {
namespace {

// The gaps in the template, in the order in which they appear.
constexpr std::string_view kLanguageGap = "{language}";
constexpr std::string_view kTitleGap = "{title}";
constexpr std::string_view kDataGap = "{data}";

void AppendAttribute(std::string& page, std::string_view name, std::string_view value) {
  page.append(" ").append(name).append("=\"");
  AppendEscaped(page, ValidUtf8(value));
  page += '"';
}

void AppendSet(std::string& page, const EventModel& model, const ViewerPageSet& set) {
  page += "<script type=\"application/gzip\"";
  AppendAttribute(page, "data-kind", KindWord(set.Kind));
  AppendAttribute(page, "data-name", set.Analyzer->DataSetName());
  AppendAttribute(page, "data-runners", std::to_string(set.Analyzer->Count()));
  page += '>';
  AppendBase64(page, Gzip(AnalysisJson(model, *set.Analyzer, set.Kind)));
  page += "</script>\n";
}

}  // namespace

void AppendViewerPage(std::string& page, const EventModel& model,
                      const std::vector<ViewerPageSet>& sets) {
  std::string_view rest = kViewerTemplate;
  AppendUpTo(page, rest, kLanguageGap);
  page += CurrentSettings().Language == "ja" ? "ja" : "en";
  AppendUpTo(page, rest, kTitleGap);
  AppendEscaped(page, ValidUtf8(model.Event->EventName));
  AppendUpTo(page, rest, kDataGap);
  for (const ViewerPageSet& set : sets) AppendSet(page, model, set);
  page.append(rest);
}

}  // namespace keltrun
