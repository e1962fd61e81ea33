// The host's grid, which the component fills.
#pragma once

#include <cstdint>
#include <string_view>

#include "keltrun2/base/export.h"
#include "keltrun2/drawing/picture.h"

namespace keltrun {

/// How texts are aligned in the cells of a grid.
enum KrAlignTypeConst : std::int32_t {
  KR_ALIGN_CENTER = 0,  ///< In the middle of the cell.
  KR_ALIGN_RIGHT = 1,   ///< At the right edge of the cell.
  KR_ALIGN_LEFT = 2,    ///< At the left edge of the cell.
};

/// What a color of the grid stands for: the cells of a band of rows, or its labels in column 0.
enum KrColorTypeConst : std::int32_t {
  KR_COLOR_NAME = 0,                    ///< Names and clubs.
  KR_COLOR_NAME_TITLE = 1,              ///< Labels of names and clubs.
  KR_COLOR_RESULT = 2,                  ///< Results and ranks.
  KR_COLOR_RESULT_TITLE = 3,            ///< Labels of results and ranks.
  KR_COLOR_LAP = 4,                     ///< Laps with their ranks.
  KR_COLOR_LAP_TITLE = 5,               ///< Labels of the laps.
  KR_COLOR_SPLIT = 6,                   ///< Splits with their ranks.
  KR_COLOR_SPLIT_TITLE = 7,             ///< Labels of the splits.
  KR_COLOR_RELATIVE = 8,                ///< Laps in percent of the reference laps.
  KR_COLOR_RELATIVE_TITLE = 9,          ///< Labels of the relative laps.
  KR_COLOR_MISS = 10,                   ///< Times lost.
  KR_COLOR_MISS_TITLE = 11,             ///< Labels of the times lost.
  KR_COLOR_CRUISE_MISSRATE = 12,        ///< Cruise speeds and loss rates.
  KR_COLOR_CRUISE_MISSRATE_TITLE = 13,  ///< Labels of cruise speeds and loss rates.
  KR_COLOR_MISSTOTAL = 14,              ///< Times lost in total.
  KR_COLOR_MISSTOTAL_TITLE = 15,        ///< Label of the times lost in total.
  KR_COLOR_RELATIVETOTAL = 16,          ///< Total times in percent of the reference.
  KR_COLOR_RELATIVETOTAL_TITLE = 17,    ///< Label of the relative totals.
  KR_COLOR_NOMISS = 18,                 ///< Results without the losses.
  KR_COLOR_NOMISS_TITLE = 19,           ///< Label of the results without the losses.
  KR_COLOR_RANK1 = 20,                  ///< Cells of rank 1 on a leg.
  KR_COLOR_RANK2 = 21,                  ///< Cells of rank 2 on a leg.
  KR_COLOR_RANK3 = 22,                  ///< Cells of rank 3 on a leg.
};

/// The grid that `clsGraphicControl::DrawGrid` fills. A host derives its own class from it; the
/// members of this one do nothing. Rows and columns are numbered from 0, and column 0 has the
/// labels.
class KELTRUN2_API clsGridObject {
 public:
  virtual ~clsGridObject() = default;

  /// The color in which the host shows cells of a kind.
  virtual keltrun::Color Color(KrColorTypeConst /*ColorType*/) { return 0; }
  /// Puts a text into a cell.
  virtual void SetTextMatrix(std::int32_t /*Row*/, std::int32_t /*Col*/,
                             std::string_view /*Text*/) {}
  /// Empties every cell.
  virtual void Clear() {}
  /// Hides the grid while it is filled, and shows it at the end. Without runners it stays hidden.
  virtual void SetVisible(bool /*Visible*/) {}
  /// Sets the number of columns, including the column of the labels.
  virtual void SetCols(std::int32_t /*Cols*/) {}
  /// Sets the number of rows.
  virtual void SetRows(std::int32_t /*Rows*/) {}
  /// Sets the width of a column in twips (1/1440 inch).
  virtual void SetColWidth(std::int32_t /*Index*/, std::int32_t /*Width*/) {}
  /// Selects the cells from (Row, Col) to (RowSel, ColSel); -1 stands for Row and Col themselves.
  virtual void SelectCell(std::int32_t /*Row*/, std::int32_t /*Col*/, std::int32_t /*RowSel*/ = -1,
                          std::int32_t /*ColSel*/ = -1) {}
  /// Sets the background color of the selected cells.
  virtual void SetCellBackColor(keltrun::Color /*BackColor*/) {}
  /// Sets the alignment of the texts in the selected cells.
  virtual void SetCellAlignment(KrAlignTypeConst /*Alignment*/) {}
  /// Sets the text color of the selected cells.
  virtual void SetCellForeColor(keltrun::Color /*ForeColor*/) {}
  /// Sets the alignment of the texts in a column, except in cells with an alignment of their own.
  virtual void SetColAlignment(std::int32_t /*Index*/, KrAlignTypeConst /*Alignment*/) {}
};

}  // namespace keltrun
