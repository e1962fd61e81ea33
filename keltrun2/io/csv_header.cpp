#include "keltrun2/io/csv_header.h"

#include <algorithm>

#include "keltrun2/codec/utf8.h"
#include "keltrun2/config/leg_labels.h"
#include "keltrun2/config/settings.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/numbers.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

constexpr std::size_t kMostTitles = 1000;
constexpr std::string_view kIdeographicSpace = "\u3000";

// The titles of a column: resource texts, the words of both languages (so that a list is read in
// the same way in either language) and words that other programs use.
struct TitleRule {
  CsvColumn column;
  std::string_view normal_key;  // the normal title; empty: the title stays as it is
  std::array<std::string_view, 4> keys;
  std::array<std::string_view, 12> words;
};

constexpr TitleRule kTitleRules[] = {
    {CsvColumn::kClass,
     "RES_META_CSV_CLASS",
     {"RES_META_CSV_CLASS"},
     {"クラス", "CLASS", "**", "クラス名"}},
    {CsvColumn::kName,
     "RES_META_CSV_NAME",
     {"RES_META_CSV_NAME", "RES_META_CSV_NAME_2"},
     {"氏名", "名前", "NAME", "RUNNER NAME", "NAMAE"}},
    {CsvColumn::kClub,
     "RES_META_CSV_CLUB",
     {"RES_META_CSV_CLUB"},
     {"所属", "CLUB", "SYOZOKU", "SHOZOKU"}},
    {CsvColumn::kTotalTime,
     "RES_META_CSV_TOTAL_TIME",
     {"RES_META_CSV_RECORD", "RES_META_CSV_TOTAL_TIME", "RES_META_CSV_RESULT"},
     {"記録", "合計タイム", "結果", "RACE TIME", "TOTAL TIME", "RESULT", "TIME", "TOTAL", "T", "TT",
      "タイム", "時間"}},
    {CsvColumn::kStartTime,
     "RES_META_CSV_START_TIME",
     {"RES_META_CSV_START_TIME"},
     {"スタート時刻", "START TIME", "START", "STARTTIME"}},
    {CsvColumn::kRank,
     "RES_META_CSV_RANK",
     {"RES_META_CSV_RANK"},
     {"順位", "PLACE", "RANK", "ORDER", "POSITION"}},
    {CsvColumn::kSeed, "RES_META_CSV_SEED", {"RES_META_CSV_SEED"}, {"シード", "SEED"}},
    {CsvColumn::kSex, "", {"RES_META_CSV_GENDER"}, {"性別", "SEX"}},
    {CsvColumn::kStartNumber, "", {"RES_META_CSV_STNO"}, {"ゼッケン", "STNO"}},
    {CsvColumn::kAge, "", {"RES_META_CSV_AGE"}, {"年齢", "AGE"}},
    {CsvColumn::kStartTime, "", {"RES_META_CSV_START"}, {"スタート"}},
};

bool IsNumber(std::string_view text) { return !text.empty() && IsDigits(text); }

// 1 to 999, or 0 for any other text. Longer numbers in a header are years or card numbers.
std::int32_t LegNumber(std::string_view text) {
  return text.size() <= 3 && IsNumber(text) ? NumericLong(text) : 0;
}

std::string_view FirstCharacter(std::string_view text) {
  std::size_t end = 0;
  NextCodePoint(text, end);
  return text.substr(0, end);
}

// Where the cell that begins at `begin` ends. Cells are so short that a function of the C library
// would take longer to call.
std::size_t CellEnd(std::string_view line, std::size_t begin, char separator) {
  std::size_t end = begin;
  while (end < line.size() && line[end] != separator) ++end;
  return end;
}

// The leg to the finish follows the highest number. All legs get the labels that the lap file and
// the CSV outputs write.
void NameLegs(CsvHeader& header) {
  for (CsvTitle& title : header.titles) {
    if (title.column != CsvColumn::kLeg) continue;
    if (title.leg == 0) title.leg = header.controls + 1;
    title.text = LegLabel(header.controls, false, title.leg);
    header.legs = std::max(header.legs, title.leg);
  }
}

}  // namespace

bool CellWalker::Next() {
  if (last_) return false;
  const std::size_t end = CellEnd(rest_, 0, separator_);
  cell_ = rest_.substr(0, end);
  if (cell_.starts_with(' ') || cell_.ends_with(' ')) cell_ = TrimSpaces(cell_);
  ++position_;
  last_ = end == rest_.size();
  if (!last_) rest_.remove_prefix(end + 1);
  return true;
}

bool IsBlankLine(std::string_view line, char separator) {
  while (!line.empty()) {
    const char c = line.front();
    if (c == separator || c == ',' || c == ' ' || c == '\0') {
      line.remove_prefix(1);
    } else if (line.starts_with(kIdeographicSpace)) {
      line.remove_prefix(kIdeographicSpace.size());
    } else {
      return false;
    }
  }
  return true;
}

bool CsvHeader::Has(CsvColumn column) const {
  return std::any_of(titles.begin(), titles.end(),
                     [column](const CsvTitle& title) { return title.column == column; });
}

// Where the leg of a title begins and ends. A leg to the finish gets its number once all legs are
// known.
struct CsvHeaderReader::LegEnds {
  std::int32_t from = 0;  // 0: the start, or not given
  std::int32_t to = 0;    // 0: the finish
};

CsvHeaderReader::CsvHeaderReader()
    : arrow_(ResourceText("RES_META_RIGHT_ARROW")),
      start_(Fold(ResourceText("RES_META_START_SYMBOL"))),
      finish_(Fold(ResourceText("RES_META_FINISH_SYMBOL"))) {
  for (const TitleRule& rule : kTitleRules) {
    const std::string normal = ResourceText(rule.normal_key);
    for (const std::string_view key : rule.keys) AddTitle(rule.column, ResourceText(key), normal);
    for (const std::string_view word : rule.words) AddTitle(rule.column, word, normal);
  }
}

// A key that the resources do not have adds no title, because an empty cell must not name a column.
// When two columns have the same title, the first one keeps it.
void CsvHeaderReader::AddTitle(CsvColumn column, std::string_view text, const std::string& normal) {
  std::string folded = Fold(text);
  if (folded.empty() || FindTitle(folded) != nullptr) return;
  if (column == CsvColumn::kName) AddNameStart(FirstCharacter(folded));
  titles_.push_back({std::move(folded), column, normal});
}

// Every character that folds to the first one of a title, and the space that folding removes.
void CsvHeaderReader::AddNameStart(std::string_view first) {
  for (const std::string& start : {std::string(first), LowerAscii(first), ToFullWidth(first),
                                   std::string(kIdeographicSpace)}) {
    name_starts_.push_back(start);
    starts_name_[static_cast<unsigned char>(start.front())] = true;
  }
}

std::string CsvHeaderReader::Fold(std::string_view cell) {
  return std::string(TrimSpaces(ToHalfWidth(UpperAscii(cell))));
}

// This runs for every line of a list. The first byte shows for nearly every cell that it is not a
// title, and the first character for most of the others.
bool CsvHeaderReader::HasNameTitle(std::string_view line, char separator) const {
  std::size_t begin = 0;
  for (std::size_t position = 0; position < kMostTitles; ++position) {
    while (begin < line.size() && line[begin] == ' ') ++begin;
    if (begin == line.size()) return false;
    const std::size_t end = CellEnd(line, begin, separator);
    if (starts_name_[static_cast<unsigned char>(line[begin])] &&
        IsNameTitle(TrimSpaces(line.substr(begin, end - begin)))) {
      return true;
    }
    if (end == line.size()) return false;
    begin = end + 1;
  }
  return false;
}

bool CsvHeaderReader::IsNameTitle(std::string_view cell) const {
  constexpr std::size_t kLongestTitle = 200;
  if (cell.size() > kLongestTitle) return false;
  const auto begins = [cell](const std::string& start) { return cell.starts_with(start); };
  if (std::none_of(name_starts_.begin(), name_starts_.end(), begins)) return false;
  const Title* title = FindTitle(Fold(cell));
  return title != nullptr && title->column == CsvColumn::kName;
}

const CsvHeaderReader::Title* CsvHeaderReader::FindTitle(std::string_view folded) const {
  for (const Title& title : titles_) {
    if (title.folded == folded) return &title;
  }
  return nullptr;
}

// "7", "6-7", "-7", "S→1", "12→F" and, alone, "F".
std::optional<CsvHeaderReader::LegEnds> CsvHeaderReader::ReadLeg(std::string_view folded) const {
  const auto is_finish = [this](std::string_view text) {
    return !text.empty() && (text == "F" || text == finish_);
  };
  if (is_finish(folded)) return LegEnds{};
  if (const std::int32_t number = LegNumber(folded)) return LegEnds{0, number};
  std::size_t separator_size = 1;
  std::size_t at = folded.find('-');
  if (at == std::string_view::npos && !arrow_.empty()) {
    at = folded.find(arrow_);
    separator_size = arrow_.size();
  }
  if (at == std::string_view::npos) return std::nullopt;
  const std::string_view from = TrimSpaces(folded.substr(0, at));
  const std::string_view to = TrimSpaces(folded.substr(at + separator_size));
  if (!from.empty() && !IsNumber(from) && from != "S" && from != start_) return std::nullopt;
  if (is_finish(to) || to == "G") return LegEnds{LegNumber(from), 0};
  if (LegNumber(to) == 0) return std::nullopt;
  return LegEnds{LegNumber(from), LegNumber(to)};
}

std::optional<CsvHeader> CsvHeaderReader::Read(std::string_view line, char separator) const {
  if (!HasNameTitle(line, separator)) return std::nullopt;
  CsvHeader header;
  CellWalker cells(line, separator);
  while (cells.Next() && cells.Position() < kMostTitles) {
    std::string folded = Fold(cells.Cell());
    if (const Title* title = FindTitle(folded)) {
      if (!title->normal.empty()) folded = title->normal;
      header.titles.push_back({title->column, 0, std::move(folded)});
    } else if (const auto leg = ReadLeg(folded)) {
      header.controls = std::max({header.controls, leg->from, leg->to});
      header.titles.push_back({CsvColumn::kLeg, leg->to, ""});
    } else {
      header.titles.push_back({CsvColumn::kOther, 0, std::move(folded)});
    }
  }
  NameLegs(header);
  return header;
}

std::string NormalizeCsvHeader(std::string_view line) {
  const std::optional<CsvHeader> header = CsvHeaderReader().Read(line);
  if (!header) return std::string(line);
  const bool adds_class = !header->Has(CsvColumn::kClass);
  // One more title could push the name out of the columns that are read.
  if (adds_class && header->titles.size() == kMostTitles) return std::string(line);
  std::string out;
  if (adds_class) out = ResourceText("RES_META_CSV_CLASS") + ",";
  for (std::size_t i = 0; i < header->titles.size(); ++i) {
    if (i > 0) out += ',';
    out += header->titles[i].text;
  }
  return out;
}

}  // namespace keltrun
