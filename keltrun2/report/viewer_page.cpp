#include "keltrun2/report/viewer_page.h"

#include <cstdint>
#include <string_view>

#include "keltrun2/codec/gzip.h"
#include "keltrun2/codec/utf8.h"
#include "keltrun2/config/settings.h"
#include "keltrun2/report/json.h"
#include "keltrun2/report/viewer_template.h"
#include "keltrun2/text/html.h"

namespace keltrun {
namespace {

// The gaps in the template, in the order in which they appear.
constexpr std::string_view kLanguageGap = "{language}";
constexpr std::string_view kTitleGap = "{title}";
constexpr std::string_view kDataGap = "{data}";

// Appends the template up to `gap`, and removes that part and the gap from `rest`.
void AppendUpTo(std::string& page, std::string_view& rest, std::string_view gap) {
  const std::size_t at = rest.find(gap);
  page.append(rest.substr(0, at));
  rest.remove_prefix(at + gap.size());
}

void AppendBase64(std::string& out, std::string_view bytes) {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  out.reserve(out.size() + bytes.size() / 3 * 4 + 4);
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    const std::string_view group = bytes.substr(at, 3);
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < 3; ++i) {
      bits = bits << 8 | (i < group.size() ? static_cast<unsigned char>(group[i]) : 0U);
    }
    for (std::size_t i = 0; i < 4; ++i) {
      out += i <= group.size() ? kDigits[bits >> (18 - 6 * i) & 63] : '=';
    }
  }
}

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
