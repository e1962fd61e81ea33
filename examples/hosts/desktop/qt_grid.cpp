#include "qt_grid.h"

#include <QFontDatabase>
#include <QFontMetrics>
#include <QHeaderView>
#include <array>

#include "qt_picture.h"

namespace {

// Column widths are meant for letters with a fixed width of 1/16 inch; those of the table may
// differ.
constexpr int kTwipsPerLetter = 90;
constexpr int kRowPadding = 5;
constexpr int kColumnPadding = 8;

// By KrColorTypeConst, in the component's order of blue, green, red: every band is light, and its
// labels are in a darker tone of the same color.
constexpr std::array<keltrun::Color, 23> kPalette = {
    0xFFFFFF, 0xE8D8C8, 0xF4FFFF, 0xB8E4F0, 0xFFFFFF, 0xE0E0E0, 0xF8F8F8, 0xD4D4D4,
    0xFFF4E8, 0xF0D8B8, 0xF0F0FF, 0xC8C8F4, 0xE8FFE8, 0xB8E8B8, 0xE4E4FF, 0xB8B8F0,
    0xFFECD8, 0xE8C8A0, 0xECFFF4, 0xB8E8D0, 0x9898FF, 0xFFCC98, 0x98E898};

}  // namespace

QtGrid::QtGrid(QTableWidget& table) : table_(table) {
  const QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
  table_.setFont(font);
  table_.horizontalHeader()->setFont(font);
  table_.verticalHeader()->setDefaultSectionSize(QFontMetrics(font).height() + kRowPadding);
}

QtGrid::~QtGrid() { table_.setUpdatesEnabled(true); }

keltrun::Color QtGrid::Color(keltrun::KrColorTypeConst type) { return kPalette[type]; }

QTableWidgetItem& QtGrid::Item(int row, int col) {
  const auto made = [](QTableWidgetItem* item, auto set) -> QTableWidgetItem& {
    if (item == nullptr) set(item = new QTableWidgetItem);
    return *item;
  };
  if (row == 0 && col == 0) return corner_;
  if (row == 0) {
    return made(table_.horizontalHeaderItem(col - 1),
                [&](auto* item) { table_.setHorizontalHeaderItem(col - 1, item); });
  }
  if (col == 0) {
    return made(table_.verticalHeaderItem(row - 1),
                [&](auto* item) { table_.setVerticalHeaderItem(row - 1, item); });
  }
  return made(table_.item(row - 1, col - 1),
              [&](auto* item) { table_.setItem(row - 1, col - 1, item); });
}

void QtGrid::SetTextMatrix(std::int32_t row, std::int32_t col, std::string_view text) {
  QTableWidgetItem& item = Item(row, col);
  item.setText(ToQt(text));
  if (row <= 1) item.setToolTip(item.text());  // names and clubs may be wider than their column
}

void QtGrid::Clear() {
  table_.clear();
  table_.setRowCount(0);
  table_.setColumnCount(0);
}

void QtGrid::SetColWidth(std::int32_t index, std::int32_t twips) {
  if (index == 0) return;  // labels take the width that they need
  const int letter = QFontMetrics(table_.font()).horizontalAdvance('0');
  table_.setColumnWidth(index - 1, twips * letter / kTwipsPerLetter + kColumnPadding);
}

void QtGrid::SelectCell(std::int32_t row, std::int32_t col, std::int32_t row_to,
                        std::int32_t col_to) {
  selected_ = QRect(QPoint(col, row), QPoint(col_to < 0 ? col : col_to, row_to < 0 ? row : row_to));
}

template <typename Action>
void QtGrid::ForSelected(Action action) {
  for (int row = selected_.top(); row <= selected_.bottom(); ++row) {
    for (int col = selected_.left(); col <= selected_.right(); ++col) action(Item(row, col));
  }
}

void QtGrid::SetCellBackColor(keltrun::Color color) {
  ForSelected([brush = QBrush(ToQt(color))](QTableWidgetItem& item) {
    item.setBackground(brush);
    item.setForeground(Qt::black);  // on a dark desktop too
  });
}

void QtGrid::SetCellForeColor(keltrun::Color color) {
  ForSelected([color](QTableWidgetItem& item) { item.setForeground(ToQt(color)); });
}

void QtGrid::SetCellAlignment(keltrun::KrAlignTypeConst alignment) {
  const Qt::AlignmentFlag side = alignment == keltrun::KR_ALIGN_LEFT    ? Qt::AlignLeft
                                 : alignment == keltrun::KR_ALIGN_RIGHT ? Qt::AlignRight
                                                                        : Qt::AlignHCenter;
  ForSelected([side](QTableWidgetItem& item) { item.setTextAlignment(side | Qt::AlignVCenter); });
}
