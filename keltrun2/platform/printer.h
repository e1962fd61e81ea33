// Printers: where the pages of a print book go.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/platform/export.h"
#include "keltrun2/platform/picture.h"

namespace keltrun {

/// Paper and its printable part in mm, as the paper lies in the chosen orientation.
struct PaperMetrics {
  /// The whole sheet.
  float PaperWidth = 210;
  float PaperHeight = 297;
  /// From the paper's left and upper edge to the printable part.
  float OffsetLeft = 0;
  float OffsetTop = 0;
  /// The printable part.
  float PrintableWidth = 210;
  float PrintableHeight = 297;
};

/// The paper sizes that every printer here knows, by their usual numbers.
enum PaperSizeConst : std::int32_t {
  KR_PAPER_LETTER = 1,
  KR_PAPER_LEGAL = 5,
  KR_PAPER_A3 = 8,
  KR_PAPER_A4 = 9,
  KR_PAPER_A5 = 11,
  KR_PAPER_B4 = 12,
  KR_PAPER_B5 = 13,
};

/// A printer: `PdfPrinter`, an installed queue, or one that the host implements and installs with
/// `InstallPrinter`. A document begins with the first NewSheet and ends with EndDocument.
class KELTRUN2_API Printer {
 public:
  virtual ~Printer() = default;

  /// The name by which hosts choose the printer.
  virtual const std::string& DeviceName() const = 0;
  /// A value of PaperSizeConst; an unknown number leaves the paper as it is.
  virtual void SetPaperSize(std::int32_t PaperSize) = 0;
  /// A value of TorbelPrintOrientationType: 1 is landscape, anything else portrait.
  virtual void SetOrientation(std::int32_t Orientation) = 0;
  /// The sheet as paper size and orientation make it.
  virtual PaperMetrics Metrics() const = 0;

  /// Begins a sheet and gives it, in mm from the upper left corner of the printable part; valid
  /// until the next call of NewSheet or EndDocument.
  virtual DrawingSurface& NewSheet() = 0;
  /// Something to measure texts with, in mm, also outside a document.
  virtual DrawingSurface& Measure() = 0;
  /// Prints the sheets. Raises invalid procedure call (5) with the reason when that fails.
  virtual void EndDocument() = 0;
};

/// Writes a PDF document; it has no unprintable strips.
class KELTRUN2_API PdfPrinter : public Printer {
 public:
  /// A printer of that name that writes each document to the file (replacing it); with an empty
  /// path the document is kept in memory.
  explicit PdfPrinter(std::string Name = "PDF", std::string Path = "");
  ~PdfPrinter() override;

  const std::string& DeviceName() const override;
  void SetPaperSize(std::int32_t PaperSize) override;
  void SetOrientation(std::int32_t Orientation) override;
  PaperMetrics Metrics() const override;
  DrawingSurface& NewSheet() override;
  DrawingSurface& Measure() override;
  void EndDocument() override;

  /// The last document that was ended, as PDF bytes; empty when it went to a file.
  const std::string& Document() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

/// The printers there are: those that hosts installed, in that order, then the system's queues.
KELTRUN2_API std::vector<std::string> PrinterNames();

/// The printer of that name, or null. A host's printer is the object it installed, a queue a new
/// object each time.
KELTRUN2_API std::shared_ptr<Printer> FindPrinter(std::string_view DeviceName);

/// Adds a printer for the whole process, under the name that it has now; one of the same name is
/// replaced. It prints one document at a time: threads that print install one each.
KELTRUN2_API void InstallPrinter(std::shared_ptr<Printer> NewPrinter);

/// Takes a printer that was installed away again; unknown names are ignored.
KELTRUN2_API void RemovePrinter(std::string_view DeviceName);

}  // namespace keltrun
