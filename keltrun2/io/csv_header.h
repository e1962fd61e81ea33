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

/// Walks the cells of a line. Quotes have no meaning here: every separator ends a cell.
class CellWalker {
 public:
  explicit CellWalker(std::string_view line, char separator = ',')
      : rest_(line), separator_(separator) {}

  /// Moves to the next cell; false after the last one. An empty line has one empty cell.
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

/// Whether a line has nothing but separators, commas, blanks, ideographic spaces and NUL bytes.
bool IsBlankLine(std::string_view line, char separator = ',');

/// The columns of a comma-separated list that readers know.
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
  std::int32_t leg = 0;  // in a leg column, 1 to 1,000
  std::string text;      // the normal title; in other columns, the folded title
};

/// A header line: the titles of the columns in the order of the file, at most 1,000.
struct CsvHeader {
  std::vector<CsvTitle> titles;
  std::int32_t controls = 0;  // the highest number in leg columns
  std::int32_t legs = 0;      // the highest leg, 0 without leg columns

  bool Has(CsvColumn column) const;
};

/// Recognizes header lines. It knows the titles of both languages and the resource texts of the
/// time when it is made.
class CsvHeaderReader {
 public:
  CsvHeaderReader();

  /// The header, when a cell of the line is a title of the name column. Neither the case of ASCII
  /// letters nor the width of characters matters.
  std::optional<CsvHeader> Read(std::string_view line, char separator = ',') const;

 private:
  struct Title {
    std::string folded;
    CsvColumn column;
    std::string normal;  // empty: the title stays as it is
  };
  struct LegEnds;

  static std::string Fold(std::string_view cell);
  bool HasNameTitle(std::string_view line, char separator) const;
  bool IsNameTitle(std::string_view cell) const;
  void AddTitle(CsvColumn column, std::string_view text, const std::string& normal);
  void AddNameStart(std::string_view first);
  const Title* FindTitle(std::string_view folded) const;
  std::optional<LegEnds> ReadLeg(std::string_view folded) const;

  std::string arrow_, start_, finish_;
  std::vector<Title> titles_;
  std::vector<std::string> name_starts_;  // the first characters of the name titles
  std::array<bool, 256> starts_name_{};   // their first bytes
};

/// A header line with every title replaced by its normal one; a line without a class column gets
/// one in front. Other lines are returned unchanged.
std::string NormalizeCsvHeader(std::string_view line);

}  // namespace keltrun
