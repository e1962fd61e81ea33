// The component's grid on a Qt table. Row 0 and column 0, names and labels, become the headers of
// the table, which stay in view when it scrolls.
#pragma once

#include <QTableWidget>

#include "keltrun2/keltrun2.h"

class QtGrid : public keltrun::clsGridObject {
 public:
  explicit QtGrid(QTableWidget& table);
  ~QtGrid() override;  // shows the table again: without runners the grid is left hidden

  keltrun::Color Color(keltrun::KrColorTypeConst type) override;
  void SetTextMatrix(std::int32_t row, std::int32_t col, std::string_view text) override;
  void Clear() override;
  void SetVisible(bool visible) override { table_.setUpdatesEnabled(visible); }
  void SetCols(std::int32_t cols) override { table_.setColumnCount(cols - 1); }
  void SetRows(std::int32_t rows) override { table_.setRowCount(rows - 1); }
  void SetColWidth(std::int32_t index, std::int32_t twips) override;
  void SelectCell(std::int32_t row, std::int32_t col, std::int32_t row_to,
                  std::int32_t col_to) override;
  void SetCellBackColor(keltrun::Color color) override;
  void SetCellAlignment(keltrun::KrAlignTypeConst alignment) override;
  void SetCellForeColor(keltrun::Color color) override;

 private:
  QTableWidgetItem& Item(int row, int col);
  template <typename Action>
  void ForSelected(Action action);

  QTableWidget& table_;
  QTableWidgetItem corner_;  // cell (0, 0), which the table does not show
  QRect selected_;           // columns and rows
};
