// A host with a grid of its own: shows the analysis of a class as a table in the terminal, with
// colors for ranks where the terminal has colors.
//
//     text_grid event.lxm M21A
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/keltrun2.h"

namespace {

using keltrun::KrAlignTypeConst;
using keltrun::KrColorTypeConst;

// Columns that a UTF-8 text takes in a terminal: two for East Asian characters except half-width
// katakana (U+FF61 to U+FF9F).
std::size_t TerminalWidth(std::string_view text) {
  std::size_t width = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if ((byte & 0xC0) == 0x80) continue;  // inside a character
    const std::string_view character = text.substr(i, 3);
    const bool half_width = character >= "\uFF61" && character <= "\uFF9F";
    width += byte >= 0xE3 && !half_width ? 2 : 1;
  }
  return width;
}

class TextGrid : public keltrun::clsGridObject {
 public:
  // The palette: bands are plain, labels are gray, and the three best of a leg are colored.
  keltrun::Color Color(KrColorTypeConst ColorType) override {
    switch (ColorType) {
      case keltrun::KR_COLOR_RANK1:
        return 0x66CCFF;
      case keltrun::KR_COLOR_RANK2:
        return 0xC0C0C0;
      case keltrun::KR_COLOR_RANK3:
        return 0x6699CC;
      default:
        return ColorType % 2 == 1 ? 0xDDDDDD : kNoColor;  // odd values are those of labels
    }
  }
  void Clear() override { rows_.clear(); }
  void SetVisible(bool Visible) override { visible_ = Visible; }
  void SetRows(std::int32_t Rows) override { rows_.resize(static_cast<std::size_t>(Rows)); }
  void SetCols(std::int32_t Cols) override {
    for (auto& row : rows_) row.resize(static_cast<std::size_t>(Cols));
  }
  void SetTextMatrix(std::int32_t Row, std::int32_t Col, std::string_view Text) override {
    At(Row, Col).text = Text;
  }
  void SelectCell(std::int32_t Row, std::int32_t Col, std::int32_t RowSel,
                  std::int32_t ColSel) override {
    selected_.clear();
    for (std::int32_t row = Row; row <= std::max(Row, RowSel); ++row) {
      for (std::int32_t col = Col; col <= std::max(Col, ColSel); ++col) {
        selected_.push_back(&At(row, col));
      }
    }
  }
  void SetCellBackColor(keltrun::Color BackColor) override {
    for (Cell* cell : selected_) cell->color = BackColor;
  }
  void SetCellAlignment(KrAlignTypeConst Alignment) override {
    for (Cell* cell : selected_) cell->right = Alignment == keltrun::KR_ALIGN_RIGHT;
  }

  void Show(bool with_colors) const {
    if (!visible_) return;
    for (const auto& row : rows_) {
      for (std::size_t col = 0; col < row.size(); ++col) {
        Show(row[col], ColumnWidth(col), with_colors);
      }
      std::puts("");
    }
  }

 private:
  static constexpr keltrun::Color kNoColor = 0xFFFFFF;

  struct Cell {
    std::string text;
    keltrun::Color color = kNoColor;
    bool right = false;
  };

  Cell& At(std::int32_t row, std::int32_t col) {
    return rows_.at(static_cast<std::size_t>(row)).at(static_cast<std::size_t>(col));
  }

  std::size_t ColumnWidth(std::size_t col) const {
    std::size_t width = 0;
    for (const auto& row : rows_) width = std::max(width, TerminalWidth(row[col].text));
    return width;
  }

  static void Show(const Cell& cell, std::size_t width, bool with_colors) {
    const std::string blanks(width - TerminalWidth(cell.text), ' ');
    const bool colored = with_colors && cell.color != kNoColor;
    if (colored) {  // a color number is blue, green, red from the highest byte down
      std::printf("\033[30;48;2;%d;%d;%dm", cell.color & 0xFF, cell.color >> 8 & 0xFF,
                  cell.color >> 16 & 0xFF);
    }
    std::printf("%s%s", cell.right ? blanks.c_str() : "", cell.text.c_str());
    std::printf("%s%s ", cell.right ? "" : blanks.c_str(), colored ? "\033[0m" : "");
  }

  std::vector<std::vector<Cell>> rows_;
  std::vector<Cell*> selected_;
  bool visible_ = false;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: %s EVENT CLASS\n", argv[0]);
    return 2;
  }
  const auto root = std::make_shared<keltrun::clsKeltrun2>();
  if (!root->FileControl()->LoadLapFile(argv[1])) {
    std::fprintf(stderr, "%s\n", root->ErrorComment().c_str());
    return 1;
  }
  const auto analyzer = root->NewAnalyzer();
  analyzer->AddClass(argv[2]);
  analyzer->Execute();
  const auto grid = std::make_shared<TextGrid>();
  root->GraphicControl()->DrawGrid(analyzer, grid);
  grid->Show(isatty(STDOUT_FILENO) != 0);
  return 0;
}
