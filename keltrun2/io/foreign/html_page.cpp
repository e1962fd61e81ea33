#include "keltrun2/io/foreign/html_page.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <utility>

#include "keltrun2/codec/encodings.h"
#include "keltrun2/codec/html.h"
#include "keltrun2/io/foreign/page_script.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/numbers.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

constexpr std::string_view kNoBreakSpace = "\u00A0";

using Names = std::initializer_list<std::string_view>;

bool IsOneOf(std::string_view name, Names names) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

// Elements that neither end a line of text nor have one of their own.
bool IsInline(std::string_view name) {
  return IsOneOf(
      name, {"b",  "font", "nobr", "i",   "a",   "span", "strong", "em", "u",    "small", "big",
             "tt", "code", "sub",  "sup", "img", "abbr", "label",  "s",  "mark", "col"});
}

bool IsHeading(std::string_view name) {
  return IsOneOf(name, {"h1", "h2", "h3", "h4", "h5", "h6", "caption", "legend"});
}

// What is inside of these is for machines, or is offered for a choice.
bool IsHidden(std::string_view name) {
  return IsOneOf(name, {"script", "style", "select", "button", "textarea", "noscript"});
}

// Elements that set off cells in preformatted lines. A font says nothing, and is often left open.
bool IsMarkup(std::string_view name) { return name != "font" && IsInline(name); }

bool IsItalic(std::string_view name) { return IsOneOf(name, {"i", "em"}); }

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f'; }

std::string_view ValueOf(std::string_view name, std::span<const HtmlAttribute> attributes) {
  for (const HtmlAttribute& attribute : attributes) {
    if (attribute.name == name) return attribute.value;
  }
  return {};
}

std::int32_t SpanOf(std::string_view name, std::span<const HtmlAttribute> attributes) {
  return std::clamp(LeadingLong(ValueOf(name, attributes)), 1, kMostColumns);
}

// Appends a text, each run of blanks as one blank, none at the start of a line.
void AppendCollapsed(std::string& out, std::string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    const bool no_break = text.substr(i).starts_with(kNoBreakSpace);
    if (no_break || IsBlank(text[i])) {
      if (!out.empty() && out.back() != ' ' && out.back() != '\n') out += ' ';
      i += no_break ? kNoBreakSpace.size() : 1;
    } else {
      out += text[i++];
    }
  }
}

void TrimEnd(std::string& text) {
  while (!text.empty() && (text.back() == ' ' || text.back() == '\n')) text.pop_back();
}

void EndLine(std::string& text) {
  while (!text.empty() && text.back() == ' ') text.pop_back();
  if (!text.empty() && text.back() != '\n') text += '\n';
}

// A table with the row that is being read.
struct OpenTable {
  std::string id;
  PageRow row;
  bool in_row = false, in_cell = false;
  std::int32_t column = 0;
  std::vector<std::int32_t> reaching_down;  // for each column: rows that a cell above still takes
};

// The pieces of a preformatted line.
class PreformattedLine {
 public:
  // Adds characters of the line, which has the same markup as those before.
  void Append(std::string_view text) { piece_ += text; }

  // Ends the piece before another one, which has other markup.
  void EndPiece(bool is_marked, bool is_italic) {
    if (piece_.empty()) return;
    const auto first = std::min(piece_.find_first_not_of(' '), piece_.size());
    if (is_marked && !has_plain_) {
      const std::size_t last = piece_.find_last_not_of(' ') + 1;
      Add(first, first < piece_.size() ? last : first, is_italic);
      has_marked_ = true;
    } else {
      AddWords(is_italic);
    }
    width_ += static_cast<std::int32_t>(DisplayWidth(piece_));
    if (is_marked && !has_plain_) marked_end_ = width_;
    piece_.clear();
  }

  // The line as a row. The next line begins.
  PageRow Take(std::int32_t line) {
    PageRow row{has_marked_ ? RowKind::kMarked : RowKind::kPlain, line, std::move(cells_)};
    for (PageCell& cell : row.cells) cell.start -= marked_end_, cell.end -= marked_end_;
    *this = PreformattedLine();
    return row;
  }

 private:
  void Add(std::size_t from, std::size_t to, bool is_italic) {
    if (cells_.size() >= static_cast<std::size_t>(kMostColumns)) return;
    PageCell& cell = cells_.emplace_back();
    cell.text = piece_.substr(from, to - from);
    cell.column = static_cast<std::int32_t>(cells_.size()) - 1;
    cell.start = width_ + static_cast<std::int32_t>(DisplayWidth(piece_.substr(0, from)));
    cell.end = cell.start + static_cast<std::int32_t>(DisplayWidth(cell.text));
    cell.italic = is_italic;
  }

  // Each word is a cell; those of a name, which one blank separates, are one.
  void AddWords(bool is_italic) {
    std::size_t pos = piece_.find_first_not_of(' ');
    while (pos < piece_.size()) {
      std::size_t end = std::min(piece_.find(' ', pos), piece_.size());
      while (IsWord(pos) && end + 1 < piece_.size() && IsWord(end + 1)) {
        end = std::min(piece_.find(' ', end + 1), piece_.size());
      }
      Add(pos, end, is_italic);
      has_plain_ = true;
      pos = piece_.find_first_not_of(' ', end);
    }
  }

  // Whether something that begins here can belong to a name.
  bool IsWord(std::size_t pos) const {
    const auto c = static_cast<unsigned char>(piece_[pos]);
    return c >= 0x80 || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
  }

  std::vector<PageCell> cells_;
  std::string piece_;
  std::int32_t width_ = 0;       // of the pieces before
  std::int32_t marked_end_ = 0;  // where the marked pieces that the line begins with end
  bool has_marked_ = false, has_plain_ = false;
};

class RowMaker : public HtmlListener {
 public:
  explicit RowMaker(const std::function<void(PageRow&)>& on_row) : on_row_(on_row) {}

  PageFacts Read(std::string_view text) {
    facts_.is_complete = WalkHtml(text, *this);
    EndText();
    while (!tables_.empty()) EndTable();
    TrimEnd(facts_.title);
    return std::move(facts_);
  }

  void Open(std::string_view name, std::span<const HtmlAttribute> attributes,
            std::int32_t line) override {
    if (!in_script_table_) line_ = line;
    if (IsHidden(name)) {
      ++hidden_;
      in_script_ = name == "script";
    }
    if (hidden_ > 0) return;
    if (name == "meta") return ReadMeta(attributes);
    if (name == "title") in_title_ = true;
    if (in_preformatted_ > 0) EndPiece();
    if (IsInline(name)) {
      marked_ += IsMarkup(name) ? 1 : 0;
      italic_ += IsItalic(name) ? 1 : 0;
    } else if (!OpenTablePart(name, attributes)) {
      BreakLine();
    }
    if (name == "pre") {
      EndText();
      ++in_preformatted_;
      BeginPreformattedLine();
    }
    heading_ += IsHeading(name) ? 1 : 0;
  }

  void Text(std::string_view text, std::int32_t line) override {
    if (!in_script_table_) line_ = line;
    if (in_script_) script_ += text;
    if (hidden_ > 0) return;
    if (in_title_) {
      AppendCollapsed(facts_.title, text);
    } else if (in_preformatted_ > 0) {
      AppendPreformatted(text);
    } else if (PageCell* const cell = Cell()) {
      AppendCollapsed(cell->text, text);
    } else {
      AppendCollapsed(text_, text);
    }
  }

  void Close(std::string_view name) override {
    if (IsHidden(name)) {
      --hidden_;
      if (in_script_) script_tables_.Add(std::exchange(script_, {}));
      in_script_ = false;
      return;
    }
    if (hidden_ > 0 || name == "meta") return;
    if (name == "title") in_title_ = false;
    if (in_preformatted_ > 0) EndPiece();
    if (IsInline(name)) {
      marked_ -= IsMarkup(name) ? 1 : 0;
      italic_ -= IsItalic(name) ? 1 : 0;
    } else if (!CloseTablePart(name)) {
      BreakLine();
    }
    if (name == "pre") {
      EndPreformatted();
      --in_preformatted_;
    }
    heading_ -= IsHeading(name) ? 1 : 0;
  }

 private:
  void ReadMeta(std::span<const HtmlAttribute> attributes) {
    if (!EqualsIgnoringCase(ValueOf("name", attributes), "generator")) return;
    AppendCollapsed(facts_.generator, ValueOf("content", attributes));
    TrimEnd(facts_.generator);
  }

  // Ends a line of text: the browser begins a new one.
  void BreakLine() {
    if (in_preformatted_ > 0) return;
    if (PageCell* const cell = Cell()) {
      EndLine(cell->text);
    } else {
      EndText();
    }
  }

  // Hands over the text outside of tables and preformatted lines.
  void EndText() {
    TrimEnd(text_);
    if (text_.empty()) return;
    PageRow row{heading_ > 0 ? RowKind::kHeading : RowKind::kText, line_, {}};
    row.cells.emplace_back().text = std::exchange(text_, {});
    on_row_(row);
  }

  // --- preformatted lines ---

  // A blank of another kind, or the first byte of one.
  static bool IsSpecial(char c) { return c == '\xC2' || (c != ' ' && IsBlank(c)); }

  void AppendPreformatted(std::string_view text) {
    std::int32_t breaks_left =
        static_cast<std::int32_t>(std::count(text.begin(), text.end(), '\n'));
    while (!text.empty()) {
      std::size_t end = 0;
      while (end < text.size() && !IsSpecial(text[end])) ++end;
      pre_.Append(text.substr(0, end));
      text.remove_prefix(end);
      if (text.empty()) return;
      const bool no_break = text.starts_with(kNoBreakSpace);
      const char c = text.front();
      if (c == '\n') {
        EndPreformattedLine(line_ - breaks_left--);
      } else if (c == '\xC2' && !no_break) {
        pre_.Append(text.substr(0, 1));
      } else if (c != '\r') {
        pre_.Append(" ");
      }
      text.remove_prefix(no_break ? kNoBreakSpace.size() : 1);
    }
  }

  // Markup that is open when a line begins belongs to all of it, or was never closed.
  void BeginPreformattedLine() {
    outer_marked_ = marked_;
    outer_italic_ = italic_;
  }

  void EndPiece() { pre_.EndPiece(marked_ > outer_marked_, italic_ > outer_italic_); }

  void EndPreformattedLine(std::int32_t line) {
    EndPiece();
    PageRow row = pre_.Take(line);
    BeginPreformattedLine();
    HandOver(row);
  }

  void EndPreformatted() { EndPreformattedLine(line_); }

  // --- tables ---

  PageCell* Cell() {
    if (tables_.empty() || !tables_.back().in_cell) return nullptr;
    return &tables_.back().row.cells.back();
  }

  bool OpenTablePart(std::string_view name, std::span<const HtmlAttribute> attributes) {
    if (name == "table") {
      if (tables_.empty()) EndText();
      tables_.emplace_back().id = ValueOf("id", attributes);
    } else if (tables_.empty()) {
      return false;
    } else if (name == "tr") {
      EndRow();
      tables_.back().in_row = true;
      tables_.back().row.line = line_;
    } else if (name == "td" || name == "th") {
      OpenCell(attributes);
    } else {
      return IsOneOf(name, {"thead", "tbody", "tfoot", "colgroup"});
    }
    return true;
  }

  bool CloseTablePart(std::string_view name) {
    if (tables_.empty()) return false;
    if (name == "table") {
      EndTable();
    } else if (name == "tr") {
      EndRow();
    } else if (name == "td" || name == "th") {
      tables_.back().in_cell = false;
    } else {
      return IsOneOf(name, {"thead", "tbody", "tfoot", "colgroup"});
    }
    return true;
  }

  void OpenCell(std::span<const HtmlAttribute> attributes) {
    OpenTable& table = tables_.back();
    if (!table.in_row) table.row.line = line_;
    table.in_row = true;
    auto& taken = table.reaching_down;
    auto column = static_cast<std::size_t>(table.column);
    while (column < taken.size() && taken[column] > 0) ++column;
    table.in_cell = column < static_cast<std::size_t>(kMostColumns);
    if (!table.in_cell) return;
    PageCell& cell = table.row.cells.emplace_back();
    cell.column = static_cast<std::int32_t>(column);
    cell.span = SpanOf("colspan", attributes);
    table.column = std::min(cell.column + cell.span, kMostColumns);
    const std::int32_t rows = SpanOf("rowspan", attributes);
    if (rows == 1) return;
    taken.resize(std::max(taken.size(), static_cast<std::size_t>(table.column)));
    std::fill(taken.begin() + cell.column, taken.begin() + table.column, rows);
  }

  void EndRow() {
    OpenTable& table = tables_.back();
    if (!table.in_row) return;
    table.in_row = table.in_cell = false;
    table.column = 0;
    for (std::int32_t& rows : table.reaching_down) rows -= rows > 0 ? 1 : 0;
    PageRow row = std::exchange(table.row, {});
    HandOver(row);
  }

  void EndTable() {
    EndRow();
    ReadScriptTable();
    tables_.pop_back();
  }

  // The body of a table can be in a script.
  void ReadScriptTable() {
    constexpr std::string_view kId = "results-table";
    const std::string_view id = tables_.back().id;
    if (in_script_table_ || script_tables_.IsEmpty() || !id.starts_with(kId)) return;
    const std::string rows = script_tables_.TakeRows(LeadingLong(id.substr(kId.size())));
    if (rows.empty()) return;
    facts_.has_script = true;
    in_script_table_ = true;
    WalkHtml(rows, *this);
    EndRow();
    in_script_table_ = false;
  }

  static bool HasText(const PageCell& cell) { return !cell.text.empty(); }

  void HandOver(PageRow& row) {
    for (PageCell& cell : row.cells) TrimEnd(cell.text);
    if (row.cells.size() > 1 || std::any_of(row.cells.begin(), row.cells.end(), HasText)) {
      on_row_(row);
    }
  }

  const std::function<void(PageRow&)>& on_row_;
  PageFacts facts_;
  std::vector<OpenTable> tables_;
  PreformattedLine pre_;
  std::string text_;    // outside of tables and preformatted lines
  std::string script_;  // that is open
  ScriptTables script_tables_;
  std::int32_t line_ = 0;
  // How many elements of each kind are open.
  std::int32_t hidden_ = 0, marked_ = 0, italic_ = 0, heading_ = 0, in_preformatted_ = 0;
  std::int32_t outer_marked_ = 0, outer_italic_ = 0;  // when the preformatted line began
  bool in_title_ = false, in_script_ = false;
  bool in_script_table_ = false;  // the rows of a script are read
};

}  // namespace

PageFacts ReadPageRows(std::string_view text, const std::function<void(PageRow&)>& on_row) {
  return RowMaker(on_row).Read(text);
}

}  // namespace keltrun
