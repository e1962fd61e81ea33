// Comma-separated texts: their cells and header lines.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace keltrun {

/// Walks the cells of a line. There is no quoting: every separator separates.
class CellWalker {
 public:
  explicit CellWalker(std::string_view line, char separator = ',')
      : rest_(line), separator_(separator) {}

  /// Moves to the next cell; false behind the last one. An empty line has one empty cell.
  bool Next();
  /// The cell without the blanks at its ends.
  std::string_view Cell() const { return cell_; }
  /// The position of the cell, from 0.
  std::size_t Position() const { return position_; }

 private:
  std::string_view rest_;
  std::string_view cell_;
  std::size_t position_ = static_cast<std::size_t>(-1);
  char separator_;
  bool last_ = false;
};

/// True when a line holds nothing but separators, commas, blanks, ideographic spaces and NUL.
bool IsBlankLine(std::string_view line, char separator = ',');

/// What a column of a comma-separated list holds.
enum class CsvColumn : std::int32_t {
  kOther,
  kClass,
  kName,
  kClub,
  kTotalTime,
  kStartTime,
  kRank,
  kSeed,
  kSex,
  kStartNumber,
  kAge,
  kLeg,
};
inline constexpr std::size_t kCsvColumnCount = static_cast<std::size_t>(CsvColumn::kLeg) + 1;

/// A cell of a header line.
struct CsvTitle {
  CsvColumn column = CsvColumn::kOther;
  std::int32_t leg = 0;  // of a leg column: 1 to 1,000
  std::string text;      // the normal title; of other columns the title as it stands, folded
};

/// A header line: the titles of the file's own columns, at most 1,000.
struct CsvHeader {
  std::vector<CsvTitle> titles;
  std::int32_t controls = 0;  // the highest number in leg columns
  std::int32_t legs = 0;      // the highest leg of a column, 0 without leg columns

  bool Has(CsvColumn column) const;
};

/// Recognises header lines. The titles are those of both languages, and the resource texts when it
/// is made.
class CsvHeaderReader {
 public:
  CsvHeaderReader();

  /// The header, when one whole cell of the line is a title of the name column; letter case of
  /// ASCII letters is ignored and, where the language is Japanese, full width.
  std::optional<CsvHeader> Read(std::string_view line, char separator = ',') const;

 private:
  struct Title {
    std::string folded;
    CsvColumn column;
    std::string normal;  // empty: stays as it is
  };
  struct LegEnds;

  std::string Fold(std::string_view cell) const;
  bool HasNameTitle(std::string_view line, char separator) const;
  bool IsNameTitle(std::string_view cell) const;
  void AddTitle(CsvColumn column, std::string_view text, const std::string& normal);
  void AddNameStart(std::string_view first);
  const Title* FindTitle(std::string_view folded) const;
  std::optional<LegEnds> ReadLeg(std::string_view folded) const;

  bool fold_width_;
  std::string arrow_, start_, finish_;
  std::vector<Title> titles_;
  std::vector<std::string> name_starts_;  // characters that a title of the name column begins with
  std::array<bool, 256> starts_name_{};   // their first bytes
};

/// A header line with every title replaced by its normal one, led by the title of the class column
/// when the line has none; any other line as it is.
std::string NormalizeCsvHeader(std::string_view line);

}  // namespace keltrun
