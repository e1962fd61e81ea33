#include "keltrun2/io/import_only_reader.h"

#include <array>
#include <optional>
#include <string>
#include <utility>

#include "keltrun2/io/csv_header.h"
#include "keltrun2/io/csv_lines.h"
#include "keltrun2/io/text_reading.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

constexpr std::size_t kMostUpdates = 500000;

class ImportOnlyReader {
 public:
  ReadResult Read(std::string_view text);

 private:
  void ReadHeader(CsvHeader header);
  void Remark(RemarkSeverity severity, std::size_t column, std::string_view subject,
              std::string_view cell, std::string_view consequence) {
    remarks_.Add(severity, line_, static_cast<std::int32_t>(column), subject, cell, consequence);
  }
  void ReadRow(const CsvLine& line);
  std::string_view& CellOf(CsvColumn column) { return cells_[static_cast<std::size_t>(column)]; }

  CsvHeaderReader headers_;
  std::optional<CsvHeader> header_;
  std::array<std::string_view, kCsvColumnCount> cells_;  // of the current row
  std::int32_t line_ = 0;
  RemarkList remarks_;
  ReadResult result_;
};

void ImportOnlyReader::ReadHeader(CsvHeader header) {
  header_ = std::move(header);
  if (!header_->Has(CsvColumn::kClub) && !header_->Has(CsvColumn::kSex)) {
    Remark(RemarkSeverity::kWarning, 0, "header", "", "no column for club or sex");
  }
  for (std::size_t i = 0; i < header_->titles.size(); ++i) {
    const CsvColumn column = header_->titles[i].column;
    if (column == CsvColumn::kOther && !header_->titles[i].text.empty()) {
      Remark(RemarkSeverity::kNote, i + 1, "column", header_->titles[i].text, "not used");
    }
  }
}

void ImportOnlyReader::ReadRow(const CsvLine& line) {
  cells_.fill({});
  std::size_t extra_at = 0;
  CellWalker cells(line.text, line.separator);
  while (cells.Next()) {
    if (cells.Position() < header_->titles.size()) {
      // When two columns have the same meaning, the last one is used.
      CellOf(header_->titles[cells.Position()].column) = cells.Cell();
    } else if (extra_at == 0 && !cells.Cell().empty()) {
      extra_at = cells.Position() + 1;
    }
  }
  if (extra_at != 0) {
    Remark(RemarkSeverity::kNote, extra_at, "line", line.shown,
           "more cells than the header; a separator inside a text?");
  }
  const std::string_view name = CellOf(CsvColumn::kName);
  if (IsBlankLine(name)) {
    Remark(RemarkSeverity::kWarning, 0, "line", line.shown, "names no runner, skipped");
    return;
  }
  result_.records.updates.push_back({std::string(name), std::string(CellOf(CsvColumn::kClub)),
                                     std::string(CellOf(CsvColumn::kSex))});
}

ReadResult ImportOnlyReader::Read(std::string_view text) {
  std::int32_t skipped = 0;
  const CsvForm form = FindCsvForm(text, headers_);
  for (CsvLineCursor lines(text, form, remarks_); !lines.AtEnd(); lines.Next()) {
    const CsvLine& line = lines.Line();
    line_ = line.number;
    if (IsBlankLine(line.text, line.separator)) continue;
    if (auto header = headers_.Read(line.text, line.separator)) {
      ReadHeader(std::move(*header));
    } else if (!header_) {
      if (line_ > 1) ++skipped;  // line 1 names the format
    } else if (result_.records.updates.size() == kMostUpdates) {
      result_.error = ReadError{line_, "more than 500,000 runners"};
      break;
    } else {
      ReadRow(line);
    }
  }
  if (!header_) {
    remarks_.Add(RemarkSeverity::kNothing, 0, 0, "file", "",
                 "no header line with a column for names, nothing was read");
  } else if (skipped > 0) {
    remarks_.Add(RemarkSeverity::kNote, 0, 0, "lines before the first header", "",
                 std::to_string(skipped) + " skipped");
  }
  result_.remarks = remarks_.Take();
  return std::move(result_);
}

}  // namespace

ReadResult ReadImportOnly(std::string_view text) { return ImportOnlyReader().Read(text); }

}  // namespace keltrun
