#include "apps/keltrun2/display_text.h"

#include <locale.h>
#include <wchar.h>

#include <algorithm>
#include <cwchar>
#include <cwctype>

namespace keltrun::cli {
namespace {

constexpr std::size_t kLabelColumns = 9;
constexpr std::string_view kIndent = "  ";

// While an object of this class exists, character functions read UTF-8 whatever the environment
// says.
class Utf8Locale {
 public:
  Utf8Locale() : previous_(uselocale(Utf8())) {}
  ~Utf8Locale() { uselocale(previous_); }
  Utf8Locale(const Utf8Locale&) = delete;
  Utf8Locale& operator=(const Utf8Locale&) = delete;

 private:
  static locale_t Utf8() {
    static const locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return utf8;
  }

  locale_t previous_;
};

constexpr wchar_t kNoCharacter = L'\1';  // has no width

// The character at the start of a text that is not empty, and the number of its bytes;
// kNoCharacter for a byte that is not UTF-8.
std::pair<wchar_t, std::size_t> FirstCharacter(std::string_view text) {
  std::mbstate_t state{};
  wchar_t character = 0;
  const std::size_t length = std::mbrtowc(&character, text.data(), text.size(), &state);
  if (length == 0 || length > text.size()) return {kNoCharacter, 1};
  return {character, length};
}

struct Shown {
  std::string text;
  std::size_t columns = 0;
};

// Characters without a width could move the cursor or worse, and a file can contain any of them.
Shown MakeShown(std::string_view text) {
  const Utf8Locale locale;
  Shown shown;
  while (!text.empty()) {
    const auto [character, length] = FirstCharacter(text);
    const int columns = wcwidth(character);
    shown.text += columns < 0 ? std::string_view("?") : text.substr(0, length);
    shown.columns += columns < 0 ? 1 : static_cast<std::size_t>(columns);
    text.remove_prefix(length);
  }
  return shown;
}

using ShownRow = std::vector<Shown>;

std::vector<std::size_t> ColumnWidths(const std::vector<ShownRow>& rows) {
  std::vector<std::size_t> widths(rows.front().size());
  for (const ShownRow& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].columns);
  }
  return widths;
}

void AppendCell(std::string& out, const Shown& cell, TextTable::Align align, std::size_t width) {
  const std::string padding(width - cell.columns, ' ');
  if (align == TextTable::Align::kRight) out += padding;
  out += cell.text;
  if (align == TextTable::Align::kLeft) out += padding;
}

}  // namespace

void TextTable::AddRow(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }

void TextTable::AppendTo(std::string& out) const {
  std::vector<ShownRow> rows(1);
  for (const Column& column : columns_) rows.front().push_back(MakeShown(column.title));
  for (const auto& cells : rows_) {
    ShownRow& row = rows.emplace_back();
    for (const std::string& cell : cells) row.push_back(MakeShown(cell));
  }
  const std::vector<std::size_t> widths = ColumnWidths(rows);
  for (const ShownRow& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      out += kIndent;
      AppendCell(out, row[i], columns_[i].align, widths[i]);
    }
    out.erase(out.find_last_not_of(' ') + 1);
    out += '\n';
  }
}

std::string Printable(std::string_view text) { return MakeShown(text).text; }

std::wstring FoldedName(std::string_view name) {
  constexpr wchar_t kWideSpace = 0x3000;
  constexpr wchar_t kFirstWide = 0xFF01;  // of the wide counterparts of "!" to "~"
  constexpr wchar_t kLastWide = 0xFF5E;
  const Utf8Locale locale;
  std::wstring folded;
  while (!name.empty()) {
    auto [character, length] = FirstCharacter(name);
    if (character == kWideSpace) character = L' ';
    if (character >= kFirstWide && character <= kLastWide) character -= kFirstWide - L'!';
    folded += static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(character)));
    name.remove_prefix(length);
  }
  return folded;
}

void AppendFact(std::string& out, std::string_view label, std::string_view text) {
  if (text.empty()) return;
  out += label;
  out.append(kLabelColumns - label.size(), ' ');
  out += MakeShown(text).text;
  out += '\n';
}

}  // namespace keltrun::cli
