#include "keltrun2/report/plain_page.h"

#include "keltrun2/base/version.h"
#include "keltrun2/codec/utf8.h"
#include "keltrun2/config/page_texts.h"
#include "keltrun2/text/html.h"

namespace keltrun {
namespace {

constexpr std::string_view kDoctype = "<!DOCTYPE html>\r\n<html lang=\"";
constexpr std::string_view kMark = "<meta name=\"keltrun2-page\" content=\"plain\">";
constexpr std::string_view kStyle = R"(
:root { color-scheme: light dark; --bg: #f5f4ef; --card: #fff; --ink: #15201a; --mut: #53615a; --line: #dcdfd8; --accent: #0b6a4a; --flag: #f26b1d; }
@media (prefers-color-scheme: dark) { :root { --bg: #0e1411; --card: #171f1b; --ink: #e9f0eb; --mut: #a1b1a8; --line: #2d3933; --accent: #4fcf9c; --flag: #ff8a47; } }
* { box-sizing: border-box; }
html { -webkit-text-size-adjust: 100%; }
body { margin: 0 auto; max-width: 1180px; padding: 14px; background: var(--bg); color: var(--ink); font: 16px/1.5 system-ui, -apple-system, "Segoe UI", Roboto, "Helvetica Neue", "Hiragino Sans", "Yu Gothic UI", Meiryo, "Noto Sans JP", sans-serif; font-variant-numeric: tabular-nums; overflow-wrap: anywhere; }
h1 { font-size: 26px; line-height: 1.2; margin: 14px 0 18px; padding-left: 14px; border-left: 8px solid var(--flag); }
h2 { font-size: 19px; margin: 28px 0 10px; }
p { margin: 0; color: var(--mut); font-size: 14.5px; }
a { color: var(--accent); text-underline-offset: 3px; }
a:focus-visible { outline: 3px solid var(--accent); outline-offset: 2px; border-radius: 4px; }
ul { list-style: none; margin: 0; padding: 0; }
.keltrun-events ul { display: grid; gap: 12px; grid-template-columns: repeat(auto-fill, minmax(min(340px, 100%), 1fr)); }
.keltrun-events li { position: relative; background: var(--card); border: 1px solid var(--line); border-radius: 14px; padding: 14px 16px; }
.keltrun-events li:hover { border-color: var(--accent); }
.keltrun-events p:first-child { color: var(--ink); font-size: 17.5px; font-weight: 700; line-height: 1.3; margin-bottom: 5px; }
.keltrun-events li a { color: inherit; text-decoration: none; }
.keltrun-events li a::after { content: ""; position: absolute; inset: 0; border-radius: 14px; }
.keltrun-events li:hover a { color: var(--accent); }
.jump { display: flex; flex-wrap: wrap; gap: 8px; }
.jump a { display: block; padding: 8px 13px; border: 1px solid var(--line); border-radius: 20px; background: var(--card); text-decoration: none; }
figure { margin: 0 0 16px; padding: 10px; background: var(--card); border: 1px solid var(--line); border-radius: 14px; }
figcaption { font-weight: 700; margin-bottom: 8px; }
figure a { display: block; }
figure img { display: block; width: 100%; height: auto; background: #fff; border-radius: 6px; }
.made { margin-top: 36px; font-size: 12.5px; text-align: center; }
@media (min-width: 760px) { body { padding: 24px; } h1 { font-size: 32px; } .pictures { display: grid; grid-template-columns: 1fr 1fr; gap: 0 16px; } }
@media print { figure { break-inside: avoid; } }
)";

}  // namespace

void AppendPlainHead(std::string& page, std::string_view title) {
  page.append(kDoctype).append(HasJapaneseTexts() ? "ja" : "en");
  page +=
      "\">\r\n<head>\r\n<meta charset=\"utf-8\">\r\n"
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\r\n";
  page.append(kMark).append("\r\n<link rel=\"icon\" href=\"data:,\">\r\n<title>");
  AppendEscaped(page, ValidUtf8(title));
  page.append("</title>\r\n<style>").append(kStyle).append("</style>\r\n</head>\r\n<body>\r\n");
}

void AppendPlainFoot(std::string& page) {
  page.append("<p class=\"made\">Keltrun ").append(VersionText(false));
  page += "</p>\r\n</body>\r\n</html>\r\n";
}

bool IsPlainPage(std::string_view page) {
  constexpr std::size_t kHeadBytes = 1024;
  return page.starts_with("<!DOCTYPE html>") &&
         page.substr(0, kHeadBytes).find(kMark) != std::string_view::npos;
}

}  // namespace keltrun
