// Texts on a terminal.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace keltrun::cli {

/// A table whose columns line up on a terminal, where Japanese characters are two columns wide.
class TextTable {
 public:
  enum class Align { kLeft, kRight };
  struct Column {
    std::string title;
    Align align = Align::kLeft;
  };

  explicit TextTable(std::vector<Column> columns) : columns_(std::move(columns)) {}

  /// Adds a row with one cell per column.
  void AddRow(std::vector<std::string> cells);

  /// Appends the titles and the rows, each line indented. Control characters show as "?".
  void AppendTo(std::string& out) const;

 private:
  std::vector<Column> columns_;
  std::vector<std::vector<std::string>> rows_;
};

/// A text without characters that would move the cursor or command the terminal: they show as "?".
std::string Printable(std::string_view text);

/// A form in which names are equal that differ only in letter case and in the width of letters.
std::wstring FoldedName(std::string_view name);

/// A line "Label   text" of a list of facts; nothing for an empty text.
void AppendFact(std::string& out, std::string_view label, std::string_view text);

}  // namespace keltrun::cli
