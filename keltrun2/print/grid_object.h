// A grid of the host's, filled by the component.
#pragma once

#include <cstdint>
#include <string_view>

#include "keltrun2/platform/export.h"
#include "keltrun2/platform/picture.h"

namespace keltrun {

enum KrAlignTypeConst : std::int32_t {
  KR_ALIGN_CENTER = 0,
  KR_ALIGN_RIGHT = 1,
  KR_ALIGN_LEFT = 2,
};

/// What a colour of the grid stands for: the cells of a band, or (TITLE) its labels in column 0.
enum KrColorTypeConst : std::int32_t {
  KR_COLOR_NAME = 0,
  KR_COLOR_NAME_TITLE = 1,
  KR_COLOR_RESULT = 2,
  KR_COLOR_RESULT_TITLE = 3,
  KR_COLOR_LAP = 4,
  KR_COLOR_LAP_TITLE = 5,
  KR_COLOR_SPLIT = 6,
  KR_COLOR_SPLIT_TITLE = 7,
  KR_COLOR_RELATIVE = 8,
  KR_COLOR_RELATIVE_TITLE = 9,
  KR_COLOR_MISS = 10,
  KR_COLOR_MISS_TITLE = 11,
  KR_COLOR_CRUISE_MISSRATE = 12,
  KR_COLOR_CRUISE_MISSRATE_TITLE = 13,
  KR_COLOR_MISSTOTAL = 14,
  KR_COLOR_MISSTOTAL_TITLE = 15,
  KR_COLOR_RELATIVETOTAL = 16,
  KR_COLOR_RELATIVETOTAL_TITLE = 17,
  KR_COLOR_NOMISS = 18,
  KR_COLOR_NOMISS_TITLE = 19,
  KR_COLOR_RANK1 = 20,
  KR_COLOR_RANK2 = 21,
  KR_COLOR_RANK3 = 22,
};

/// The grid as `clsGraphicControl::DrawGrid` drives it. A host derives its own from it; here every
/// member does nothing. Rows and columns count from 0, column 0 holds the labels.
class KELTRUN2_API clsGridObject {
 public:
  virtual ~clsGridObject() = default;

  /// The colour that the host shows cells of a kind in.
  virtual keltrun::Color Color(KrColorTypeConst /*ColorType*/) { return 0; }
  /// Puts a text into a cell.
  virtual void SetTextMatrix(std::int32_t /*Row*/, std::int32_t /*Col*/,
                             std::string_view /*Text*/) {}
  /// Empties every cell.
  virtual void Clear() {}
  /// Hides the grid while it is filled, and shows it at the end; with nobody to show it stays
  /// hidden.
  virtual void SetVisible(bool /*Visible*/) {}
  /// The number of columns and rows from now on.
  virtual void SetCols(std::int32_t /*Cols*/) {}
  virtual void SetRows(std::int32_t /*Rows*/) {}
  /// The width of a column, in twips (1/1440 inch).
  virtual void SetColWidth(std::int32_t /*Index*/, std::int32_t /*Width*/) {}
  /// Selects the cells from (Row, Col) to (RowSel, ColSel); -1 stands for Row and Col themselves.
  virtual void SelectCell(std::int32_t /*Row*/, std::int32_t /*Col*/, std::int32_t /*RowSel*/ = -1,
                          std::int32_t /*ColSel*/ = -1) {}
  /// These three apply to the selected cells.
  virtual void SetCellBackColor(keltrun::Color /*BackColor*/) {}
  virtual void SetCellAlignment(KrAlignTypeConst /*Alignment*/) {}
  virtual void SetCellForeColor(keltrun::Color /*ForeColor*/) {}
  /// How the texts of a column stand, cells with an alignment of their own excepted.
  virtual void SetColAlignment(std::int32_t /*Index*/, KrAlignTypeConst /*Alignment*/) {}
};

}  // namespace keltrun
