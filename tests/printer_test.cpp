#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "keltrun2/os/clock.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

TEST(PdfPrinter, WritesSheetsWithTexts) {
  SetClock([] { return 46023.5; });  // 2026-01-01 12:00
  const TemporaryFolder folder;
  TextStyle style;
  style.Size = 10;
  for (const char* name : {"a.pdf", "b.pdf"}) {
    PdfPrinter printer("PDF", folder.Path(name));
    printer.EndDocument();  // there is no document to end
    EXPECT_FALSE(std::filesystem::exists(folder.Path(name)));
    printer.SetPaperSize(KR_PAPER_B5);
    printer.SetPaperSize(777);  // an unknown paper is ignored
    printer.SetOrientation(1);
    EXPECT_EQ(printer.Metrics().PaperWidth, 257);
    EXPECT_EQ(printer.Metrics().PrintableHeight, 182);
    style.Font.Bold = false;
    printer.NewSheet().DrawText("山田太郎", 20, 30, style);
    printer.SetOrientation(0);
    style.Font.Bold = true;
    printer.NewSheet().DrawText("鈴木花子", 20, 30, style);
    EXPECT_EQ(printer.Measure().TextWidth("鈴木花子", style), 40);
    printer.EndDocument();
  }
  SetClock({});
  const std::string document = ReadBytes(folder.Path("a.pdf"));
  EXPECT_EQ(document, ReadBytes(folder.Path("b.pdf")));
  EXPECT_NE(document.find("20260101120000"), std::string::npos);
  PdfPrinter nowhere("N", folder.Path("none/a.pdf"));
  nowhere.NewSheet();
  EXPECT_THROW(nowhere.EndDocument(), AutomationError);

  const std::string ask = "pdftotext -bbox " + folder.Path("a.pdf") + " " + folder.Path("words");
  if (std::system(ask.c_str()) != 0) {
    GTEST_SKIP() << "TEXTS IN PDFs WERE NOT TESTED: no pdftotext (poppler-utils)";
  }
  const std::string words = ReadBytes(folder.Path("words"));
  for (const char* part : {"<page width=\"728.5", "<page width=\"515.9", "山田太郎", "鈴木花子",
                           "<word xMin=\"56.69"}) {  // 257, 182 and 20 mm in points
    EXPECT_NE(words.find(part), std::string::npos) << part << " in " << words;
  }
}

TEST(Printers, HostsInstallTheirOwn) {
  const auto second = std::make_shared<PdfPrinter>("A");
  for (const char* name : {"A", "B"}) InstallPrinter(std::make_shared<PdfPrinter>(name));
  InstallPrinter(second);
  EXPECT_EQ(FindPrinter("A"), second);
  EXPECT_EQ(PrinterNames().at(1), "B");
  for (const char* name : {"A", "B", "C"}) RemovePrinter(name);
  EXPECT_EQ(FindPrinter("A"), nullptr);
  EXPECT_THROW(InstallPrinter(nullptr), AutomationError);
}

}  // namespace
}  // namespace keltrun::test
