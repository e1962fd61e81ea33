#include "keltrun2/io/foreign/page_script.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "keltrun2/codec/utf8.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/numbers.h"

namespace keltrun {
namespace {

constexpr std::string_view kFunction = "getData(";
constexpr std::string_view kCondition = "tableNumber ==";
constexpr std::string_view kReturn = "return";

int HexDigit(char c) {
  if (IsDigit(c)) return c - '0';
  const char lower = c >= 'A' && c <= 'F' ? static_cast<char>(c + 32) : c;
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// Reads an array of arrays of texts, the value of a JavaScript expression.
class ArrayReader {
 public:
  explicit ArrayReader(std::string_view text) : text_(text) {}

  // Appends the rows as HTML until the outer array ends, or something else is found.
  void AppendRows(std::string& html) {
    if (!Take('[')) return;
    while (Take('[')) {
      html += "<tr>";
      AppendCells(html);
      html += "</tr>";
      if (!Take(',')) return;
    }
  }

 private:
  void AppendCells(std::string& html) {
    while (!Take(']') && pos_ < text_.size()) {
      html += "<td>";
      if (!AppendText(html)) AppendBare(html);
      html += "</td>";
      Take(',');
    }
  }

  // Takes the next character other than a blank if it is this one.
  bool Take(char c) {
    pos_ = std::min(text_.find_first_not_of(" \t\r\n", pos_), text_.size());
    if (pos_ == text_.size() || text_[pos_] != c) return false;
    ++pos_;
    return true;
  }

  // A number, null, and whatever else is not in quotation marks.
  void AppendBare(std::string& html) {
    const std::size_t end = std::min(text_.find_first_of(",]", pos_), text_.size());
    const std::string_view bare = text_.substr(pos_, end - pos_);
    if (bare != "null") html += bare;
    pos_ = end;
  }

  bool AppendText(std::string& html) {
    const char quote = Take('"') ? '"' : Take('\'') ? '\'' : '\0';
    if (quote == '\0') return false;
    while (pos_ < text_.size() && text_[pos_] != quote) {
      const char c = text_[pos_++];
      if (c == '\\') {
        AppendEscape(html);
      } else {
        html += c;
      }
    }
    if (pos_ < text_.size()) ++pos_;
    return true;
  }

  void AppendEscape(std::string& html) {
    if (pos_ == text_.size()) return;
    const char c = text_[pos_++];
    if (c == 'u') {
      char32_t code = 0;
      for (int i = 0; i < 4 && pos_ < text_.size() && HexDigit(text_[pos_]) >= 0; ++i) {
        code = code * 16 + static_cast<char32_t>(HexDigit(text_[pos_++]));
      }
      AppendUtf8(html, code);
    } else {
      html += c == 'n' || c == 'r' || c == 't' ? ' ' : c;
    }
  }

  std::string_view text_;
  std::size_t pos_ = 0;
};

}  // namespace

void ScriptTables::Add(std::string_view script) {
  std::size_t pos = script.find(kFunction);
  if (pos == std::string_view::npos) return;
  pos = script.find(kCondition, pos);
  while (pos != std::string_view::npos) {
    const std::size_t next = script.find(kCondition, pos + kCondition.size());
    const std::string_view part = script.substr(pos, next == script.npos ? next : next - pos);
    const std::size_t returns = part.find(kReturn);
    if (returns != std::string_view::npos) {
      tables_.emplace(LeadingLong(part.substr(kCondition.size())),
                      part.substr(returns + kReturn.size()));
    }
    pos = next;
  }
}

std::string ScriptTables::TakeRows(std::int32_t table) {
  const auto found = tables_.find(table);
  if (found == tables_.end()) return {};
  const std::string text = std::move(found->second);
  tables_.erase(found);
  std::string html;
  ArrayReader(text).AppendRows(html);
  return html;
}

}  // namespace keltrun
