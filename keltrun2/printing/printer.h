// Printers: the destinations of printed pages.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/base/export.h"
#include "keltrun2/drawing/picture.h"

namespace keltrun {

/// The paper and its printable part in mm, in the chosen orientation.
struct PaperMetrics {
  float PaperWidth = 210;       ///< Width of the whole sheet.
  float PaperHeight = 297;      ///< Height of the whole sheet.
  float OffsetLeft = 0;         ///< From the left edge of the paper to the printable part.
  float OffsetTop = 0;          ///< From the upper edge of the paper to the printable part.
  float PrintableWidth = 210;   ///< Width of the printable part.
  float PrintableHeight = 297;  ///< Height of the printable part.
};

/// The paper sizes that every printer of the library supports, with their usual numbers.
enum PaperSizeConst : std::int32_t {
  KR_PAPER_LETTER = 1,  ///< US Letter, 215.9 x 279.4 mm.
  KR_PAPER_LEGAL = 5,   ///< US Legal, 215.9 x 355.6 mm.
  KR_PAPER_A3 = 8,      ///< ISO A3, 297 x 420 mm.
  KR_PAPER_A4 = 9,      ///< ISO A4, 210 x 297 mm.
  KR_PAPER_A5 = 11,     ///< ISO A5, 148 x 210 mm.
  KR_PAPER_B4 = 12,     ///< JIS B4, 257 x 364 mm.
  KR_PAPER_B5 = 13,     ///< JIS B5, 182 x 257 mm.
};

/// A printer: `PdfPrinter`, an installed queue, or one that the host implements and installs with
/// `InstallPrinter`. A document begins with the first NewSheet and ends with EndDocument.
class KELTRUN2_API Printer {
 public:
  virtual ~Printer() = default;

  /// The name by which hosts choose the printer.
  virtual const std::string& DeviceName() const = 0;
  /// Chooses the paper by a value of PaperSizeConst; an unknown number is ignored.
  virtual void SetPaperSize(std::int32_t PaperSize) = 0;
  /// Chooses the orientation by a value of TorbelPrintOrientationType: 1 is landscape, anything
  /// else is portrait.
  virtual void SetOrientation(std::int32_t Orientation) = 0;
  /// The measures of a sheet with the chosen paper and orientation.
  virtual PaperMetrics Metrics() const = 0;

  /// Begins a sheet and returns its surface, in mm from the upper left corner of the printable
  /// part. It is valid until the next call of NewSheet or EndDocument.
  virtual DrawingSurface& NewSheet() = 0;
  /// A surface for measuring texts, in mm. It can also be used outside a document.
  virtual DrawingSurface& Measure() = 0;
  /// Prints the sheets. Raises invalid procedure call (5) with the reason if that fails.
  virtual void EndDocument() = 0;
};

/// A printer that writes PDF documents. The whole sheet is printable.
class KELTRUN2_API PdfPrinter : public Printer {
 public:
  /// Creates a printer with a name. Each document is written to the file, which is replaced; if the
  /// path is empty, the document is kept in memory.
  explicit PdfPrinter(std::string Name = "PDF", std::string Path = "");
  ~PdfPrinter() override;

  /// The name by which hosts choose the printer.
  const std::string& DeviceName() const override;
  /// Chooses the paper by a value of PaperSizeConst, A4 at first; an unknown number is ignored.
  void SetPaperSize(std::int32_t PaperSize) override;
  /// Chooses the orientation by a value of TorbelPrintOrientationType, portrait at first: 1 is
  /// landscape, anything else is portrait.
  void SetOrientation(std::int32_t Orientation) override;
  /// The measures of a sheet with the chosen paper and orientation; all of it is printable.
  PaperMetrics Metrics() const override;
  /// Begins a page and returns its surface, in mm from the upper left corner. It is valid until the
  /// next call of NewSheet or EndDocument.
  DrawingSurface& NewSheet() override;
  /// A surface for measuring texts, in mm. It can also be used outside a document.
  DrawingSurface& Measure() override;
  /// Ends the document and writes it to the file, or keeps it for Document. Raises invalid
  /// procedure call (5) with the reason if that fails.
  void EndDocument() override;

  /// The bytes of the last finished PDF document; empty if documents are written to a file.
  const std::string& Document() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

/// The names of all printers: first those that hosts installed, in the order of installation, then
/// the queues of the system.
KELTRUN2_API std::vector<std::string> PrinterNames();

/// The printer with this name, or null. For a printer that a host installed, the result is that
/// object; for a queue it is a new object each time.
KELTRUN2_API std::shared_ptr<Printer> FindPrinter(std::string_view DeviceName);

/// Adds a printer for the whole process, under the name that it has now; a printer with the same
/// name is replaced. It prints one document at a time, so each thread that prints must install its
/// own.
KELTRUN2_API void InstallPrinter(std::shared_ptr<Printer> NewPrinter);

/// Removes a printer that a host installed; unknown names are ignored.
KELTRUN2_API void RemovePrinter(std::string_view DeviceName);

}  // namespace keltrun
