// The print book, the printed result list and the printed analysis: what they record and draw.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "keltrun2/print/print_book_internal.h"
#include "keltrun2/text/utf16.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

std::string Join(std::initializer_list<float> numbers) {
  std::ostringstream text;
  text.precision(5);
  for (const float number : numbers) text << number + 0.0f << ",";
  return text.str().substr(0, text.str().size() - 1);
}

Font FontOf(double size) {
  Font font;
  font.SetSize(size);
  return font;
}

/// Records every drawing call. A UTF-16 unit is half as wide as its size.
struct FakePicture : CairoPicture {
  using CairoPicture::CairoPicture;
  std::string calls;

  void Log(const char* what, std::initializer_list<float> at, Color color, float width) {
    calls += std::string(what) + " " + Join(at) + (color ? " #" + std::to_string(color) : "") +
             (width > 0 ? " " + Join({width}) : "") + ";";
  }
  void DrawLine(float x1, float y1, float x2, float y2, Color color, float width) override {
    Log("line", {x1, y1, x2, y2}, color, width);
  }
  void DrawBox(float l, float t, float w, float h, Color color, float width, bool fill) override {
    Log(fill ? "fill" : "box", {l, t, w, h}, color, fill ? 0 : width);
  }
  void DrawCircle(float x, float y, float r, Color color, float width, bool fill) override {
    Log(fill ? "disc" : "circle", {x, y, r}, color, width);
  }
  void DrawText(std::string_view text, float x, float y, const TextStyle& style) override {
    calls += std::string(text) + " " + Join({x, y, style.Size, style.HeightRatio}) +
             (style.Turned ? " turned;" : ";");
  }
  float TextWidth(std::string_view text, const TextStyle& style) override {
    return static_cast<float>(ToUtf16(text).size()) * style.Size / 2;
  }
  float TextHeight(const TextStyle& style) override { return style.Size * style.HeightRatio; }
  void SetClip(float l, float t, float w, float h) override { Log("clip", {l, t, w, h}, 0, 0); }
  void SetScaleMode(std::int32_t mode) override { calls += "mode " + std::to_string(mode) + ";"; }
};

struct FakePrinter : PdfPrinter {
  explicit FakePrinter(const PaperMetrics& metrics) : PdfPrinter("fake"), paper(metrics) {}
  PaperMetrics Metrics() const override { return paper; }
  DrawingSurface& NewSheet() override { return sheet.calls += "sheet;", sheet; }
  void EndDocument() override { sheet.calls += "end;"; }

  PaperMetrics paper;
  FakePicture sheet{1, 1};
};

/// A book on a fake printer. All of the paper is printable unless strips are given.
struct Book {
  Book(float width, float height) : Book(PaperMetrics{width, height, 0, 0, width, height}) {}
  explicit Book(const PaperMetrics& paper, float margin = 0, float zoom = 1)
      : printer(std::make_shared<FakePrinter>(paper)) {
    InstallPrinter(printer);
    book->Init("fake", KR_PAPER_A4, tpotLandscape, margin, margin, margin, margin, zoom);
    RemovePrinter("fake");
  }
  std::string Printed(std::int32_t first = 1, std::int32_t last = 0) const {
    printer->sheet.calls.clear();
    book->Execute(first, last);
    return printer->sheet.calls;
  }
  std::string Area() const { return Join({book->ZoomRatio(), book->Width(), book->Height()}); }

  std::shared_ptr<FakePrinter> printer;
  std::shared_ptr<clsPrintBook> book = std::make_shared<clsPrintBook>();
};

constexpr PaperMetrics kStrips = {210, 297, 5, 6, 198, 283};  // right 7 mm, bottom 8 mm

TEST(PrintBook, MarginsAndAreas) {
  const Book wide(kStrips, 10), narrow(kStrips, 0, 2);
  const auto margins = [](const clsPrintBook& b) {
    return Join({b.MarginLeft(), b.MarginTop(), b.MarginRight(), b.MarginBottom()}) + " ";
  };
  EXPECT_EQ(margins(*wide.book) + wide.Area(), "10,10,10,10 1,190,277");
  EXPECT_EQ(margins(*narrow.book) + narrow.Area(), "5,6,7,8 2,99,141.5");
  clsPrintBook book;
  const auto printer = book.PrinterObject();
  for (const float bottom : {14.5f, 15.5f}) {  // whole mm, halves to even
    book.Init("nowhere", KR_PAPER_A4, tpotLandscape, 10, 10, bottom, 10, 0);
    EXPECT_EQ(Join({book.Width(), book.Height()}), bottom < 15 ? "277,186" : "277,184");
  }
  EXPECT_EQ(book.PrinterObject(), printer) << "an unknown name keeps the printer";
  for (const auto& [x, y, enlarge, area] : Rows<float, float, bool, const char*>{
           {100, 0, false, "1,100,145.79"},  // 100 * 277 / 190, not enlarged
           {0, 0, true, "1,100,145.79"},
           {100, 0, true, "1.9,100,145.79"},
           {380, 100, false, "0.5,380,100"}}) {
    wide.book->SetVirtualZoomRatio(3);
    wide.book->SetVirtualSize(x, y, enlarge);
    EXPECT_EQ(wide.Area(), area);
  }
  wide.book->SetSeparation(2, 0, 7, 0);
  EXPECT_EQ(wide.Area(), "0.25,760,540") << "190 / 0.25 and (277 - 7) / 2 / 0.25";
}

TEST(PrintBook, PagesInCells) {
  const Book print(kStrips, 10);
  clsPrintBook& book = *print.book;
  EXPECT_EQ(print.Printed(), "") << "nothing to print, no document";
  book.SetSeparation(2, 2, 5, 5);
  EXPECT_EQ(print.Area(), "0.5,185,272");
  for (int page = 0; page < 5; ++page) {
    book.NewPage();
    book.NewPage();
    book.DrawBox(10, 20, 30, 40, page, 0, true);
  }
  EXPECT_EQ(book.PageCount(), 5) << "a page without drawings is not counted";
  // Cells of 92.5 x 136, 97.5 and 141 apart; the area starts 5 and 4 inside the printable part.
  const std::string first = "sheet;clip 5,4,92.5,136;fill 10,14,15,20";
  EXPECT_EQ(print.Printed(), first +
                                 ";clip 102.5,4,92.5,136;fill 107.5,14,15,20 #1;"
                                 "clip 5,145,92.5,136;fill 10,155,15,20 #2;"
                                 "clip 102.5,145,92.5,136;fill 107.5,155,15,20 #3;" +
                                 first + " #4;end;");
  EXPECT_EQ(print.Printed(5, 9), first + " #4;end;");
  EXPECT_EQ(print.Printed(3, 2), "");
  book.TryUnload(nullptr);
  EXPECT_EQ(book.PageCount(), 0);
}

TEST(PrintBook, ScaleZoomAndOffset) {
  // Zoom 2 = the smaller of 100 / 50 and 200 / 50; 100 mm are free above the area.
  const Book print(100, 200);
  print.book->SetVirtualSize(50, 50, true, PRINTBOOK_ALIGN_CENTER, PRINTBOOK_VALIGN_BOTTOM);
  print.book->SetVirtualZoomRatio(0.5f);
  EXPECT_EQ(print.Area(), "2,100,100");
  print.book->DrawLine(10, 10, 20, -4, 255, 6);
  print.book->DrawCircle(50, 50, 10, 65280, false);
  print.book->PrintText("A\xFFz", FontOf(72), 0, 0, 10, 10, PRINTBOOK_ALIGN_LEFT,
                        PRINTBOOK_VALIGN_TOP);
  // A line of 6 dots is 6 * 0.5 * 2 * 25.4 / 300 mm wide, the clip wider by half of it; 72 points
  // are an inch at a scale times zoom of 1.
  EXPECT_EQ(print.Printed(),
            "sheet;clip -0.254,99.746,100.51,100.51;line 10,110,30,106 #255 0.508;"
            "circle 50,150,10 #65280 0.084667;A\uFFFDz 0,100,25.4,1;end;");
}

TEST(PrintBook, Preview) {
  // 0.04 * 250 pixels of margin; (350 - 20) / 165 = 2 pixels a mm. Cells of 45 mm, zoom 0.5, so 1
  // pixel a unit; 30 dots are 2.54 mm at a zoom of 1.
  const Book print(PaperMetrics{115, 165, 5, 5, 105, 155}, 10);
  print.book->SetSeparation(1, 2, 0, 5);
  for (const Color color : {1, 2, 3}) {
    print.book->DrawBox(0, 0, 10, 10, color, 30, false);
    print.book->NewPage();
  }
  const auto shown = [&](std::int32_t page) {
    const auto picture = std::make_shared<FakePicture>(250, 350);
    print.book->ShowPreview(picture, page);
    return picture->calls;
  };
  const std::string paper = "mode 3;fill 10,10,230,330 #16777215;box 10,10,230,330 1;";
  EXPECT_EQ(shown(0) + shown(4), paper + paper);
  EXPECT_EQ(shown(2), paper + "clip 128.73,28.73,92.54,292.54;box 130,30,10,10 #2 2.54;");
  EXPECT_EQ(shown(3), paper + "clip 28.73,28.73,92.54,292.54;box 30,30,10,10 #3 2.54;");
  print.book->PreviewZoomRatio = 2;
  EXPECT_EQ(shown(4), "mode 3;fill 10,10,460,660 #16777215;box 10,10,460,660 1;");
  EXPECT_THROW(print.book->ShowPreview(nullptr, 1), AutomationError);
}

TEST(PrintBook, TextsInBoxes) {
  // Letters 1 wide and 2 high in a box of 10 x 8 at (20, 30). A case: the text ("/" ends a line,
  // "_" is a tab), alignment (left, center, right, equal), vertical alignment (top, middle, bottom,
  // equal), height of letters, c for cut, t for turned; and what is drawn. A combining mark belongs
  // to its letter; a character beyond U+FFFF stays whole.
  for (auto [text, how, drawn] : Table<3>(R"(
           abc LT1 "abc 20,30,2,1;" | abc CM1 "abc 23.5,33,2,1;" | abc RB3 "abc 27,32,2,3;"
           ab/c//d RT1 "ab 28,30,2,1;c 29,32,2,1;d 29,36,2,1;"
           ab/c CM1t "ab 27,33,2,1 turned;c 25,33.5,2,1 turned;"
           abcd ET1 "a 20,30,2,1;b 23,30,2,1;c 26,30,2,1;d 29,30,2,1;"
           a/b EE1 "a 24.5,30,2,1;b 24.5,36,2,1;" | a_b LT1 "a 20,30,2,1;b 28,30,2,1;"
           12345678_b RT1 "12345678 13,30,2,1;b 29,30,2,1;"
           0123456789 LT1c "0123456789 20,30,2,1;" | 0123456789a LT1 "0123456789a 20,30,2,1;"
           0123456789a CT1c "012345678… 20,30,2,1;" | 0123456789a LT1ct "0123456… 30,30,2,1 turned;"
           "01234567 9ab" LT1c "01234567… 20,30,2,1;" | か゚ ET1 "か゚ 24,30,2,1;"
           01234567é́xyz LT1c "01234567… 20,30,2,1;" | 0123456𠮟xyz LT1c "0123456𠮟… 20,30,2,1;")")) {
    std::replace(text.begin(), text.end(), '/', '\n');
    std::replace(text.begin(), text.end(), '_', '\t');
    const Book print(100, 100);
    const auto has = [&how = how](char flag) { return how.find(flag, 3) != std::string::npos; };
    print.book->PrintText(text, FontOf(144 / 25.4), 20, 30, 10, 8,
                          PrintBookAlignConst(std::string_view("LCRE").find(how[0])),
                          PrintBookValignConst(std::string_view("TMBE").find(how[1])), has('t'),
                          how[2] - '0', 0, has('c'));
    EXPECT_EQ(print.Printed(), "sheet;clip 0,0,100,100;" + drawn + "end;") << how;
  }
  const Book print(100, 100);
  print.book->PrintText("0123456789", Font(), 95, 0, 50, 8, PRINTBOOK_ALIGN_LEFT,
                        PRINTBOOK_VALIGN_TOP, false, 1, 0, true);
  EXPECT_NE(print.Printed().find(";01… 95,0,"), std::string::npos)
      << "cut where the virtual area ends: 5 mm hold three characters of 1.5875";
}

/// The records of a page: place, size and what is drawn; for a text also how, and the font size.
std::string Records(const clsPrintBook& book, std::size_t page) {
  std::string text;
  for (const clsPrintBookLine& line : PrintBookInternal::Pages(book).at(page)) {
    const bool is_text = line.Kind == PrintKind::kText;
    text += Join({line.Left, line.Top, line.Width, line.Height}) + (line.Fill ? " fill" : " ");
    if (is_text) text += std::string(1, "LCR"[line.Align]) + (line.AutoStringCut ? "c" : "");
    if (!line.Fill) text += Join({is_text ? float(line.TextFont->Size()) : line.DrawWidth});
    text += (is_text ? " " + line.Text : "") + ";";
  }
  return text;
}

TEST(ResultList, LinesBorderAndPages) {
  const auto root = NewRoot();
  for (const std::string rank : {"1", "2"}) {
    const auto runner = AddRunner(*root->AddClass("M21"), "N", "0:1" + rank + ":00", {});
    runner->Rank = rank;
    runner->ClubName = "C";
    runner->ID = 7;
    runner->Age = "20";
  }
  const auto results = root->NewResultsHolder();
  const Book print(141, 60);  // eight lines of 7.5
  const auto print_list = [&](auto... options) {
    root->GraphicControl()->PrintResult(results, print.book, options...);
  };
  print_list();
  EXPECT_EQ(print.book->PageCount(), 0) << "no runners to print";
  results->AddClass("M21");
  results->CalcRank();
  results->CutOffRank = 1;
  print_list();
  EXPECT_EQ(Records(*print.book, 0),
            "0,0,141,13.5 8;0,0,5.64,13.5 fill;9.87,0,112.8,13.5 Lc18 M21;"
            "0,15,15,7.5 R11 1;15,15,4,7.5 C8 ;19,15,6,7.5 Cc9 ;25,15,50,7.5 L11 N;"
            "75,15,22,7.5 R11 0:11:00;103,15,53,7.5 Lc11 C;"
            "2,22.5,137,7.5 C11 ---------  予選通過ライン  ---------;"
            "0,30.75,15,7.5 R11 2;15,30.75,4,7.5 C8 ;19,30.75,6,7.5 Cc9 ;25,30.75,50,7.5 L11 N;"
            "75,30.75,22,7.5 R11 0:12:00;103,30.75,53,7.5 Lc11 C;");
  EXPECT_EQ(print.book->PrintedAreaHeight(), 45.75) << "one line below 5.1 lines";
  EXPECT_EQ(print.book->PrintedAreaWidth(), 184);
  // Here 69.36 / 7.5 lines fit on a page; 3.1 are left, fewer than four. A mix shows the class,
  // but neither seed nor fixed rank nor here a border.
  results->CutOffRank = 0;
  results->DataSetIsMix = true;
  print_list(1.5f, true, true, true);
  const std::string mixed = Records(*print.book, 1);
  EXPECT_EQ(mixed.substr(0, mixed.find("0,22.5")),
            "0,0,163,13.5 8;0,0,6.52,13.5 fill;11.41,0,130.4,13.5 Lc18 M21;"
            "0,15,15,7.5 R11 1;15,15,20,7.5 Cc9 (M21);35,15,17,7.5 C11 (7);52,15,45,7.5 L11 N;"
            "97,15,22,7.5 R11 0:11:00;122,15,5,7.5 C11 20;130,15,48,7.5 Lc11 C;");
  // On the new page that was requested; a line interval below 1 is 1.
  print_list(0.5f);
  EXPECT_EQ(Records(*print.book, 2).substr(0, 15), "0,37.5,141,9 8;");
  EXPECT_EQ(print.book->PrintedAreaHeight(), 62.5) << "37.5 + (2 + 2 + 1) * 5";
}

// The texts of a page, separated by "|".
std::string Texts(const clsPrintBook& book, std::size_t page) {
  std::string texts;
  for (const clsPrintBookLine& line : PrintBookInternal::Pages(book)[page]) {
    if (line.Kind == PrintKind::kText) texts += line.Text + "|";
  }
  return texts;
}

struct HeadedFixture {
  HeadedFixture() {
    root->EventData()->EventName = "Cup";
    root->GraphicControl()->PrintHeads = true;
  }
  void Add(const std::string& klass, const std::string& name, const std::string& result,
           const std::string& rank) const {
    AddRunner(*root->AddClass(klass), name, result, {})->Rank = rank;
  }
  void AddMany(const std::string& klass, int runners) const {
    for (int i = 10; i < 10 + runners; ++i) {
      Add(klass, "N" + std::to_string(i), "0:" + std::to_string(i) + ":00", std::to_string(i - 9));
    }
  }
  void Print(const std::string& klass, bool ids = false, bool ages = false) const {
    const auto results = root->NewResultsHolder();
    results->AddClass(klass);
    results->CalcRank();
    root->GraphicControl()->PrintResult(results, print.book, 1, false, ids, ages);
  }
  std::size_t Pages() const { return PrintBookInternal::Pages(*print.book).size(); }

  std::shared_ptr<clsKeltrun2> root = NewRoot(Mode::kEnglishTexts);
  // 19 lines of 5 fit below the heads of 25.5 units.
  Book print{160, 121};
};

TEST(HeadedList, HasHeadsTitlesAndTimesAfterTheBest) {
  const HeadedFixture f;
  f.Add("M21", "Fast", "0:59:00", "(1)");  // outside the competition
  f.Add("M21", "Ann", "1:00:00", "1");
  f.Add("M21", "Bob", "1:00:30", "2");
  f.Add("M21", "Cy", "2:10:00", "3");
  f.Add("M21", "Di", "DNF", "");
  const auto klass = f.root->ClassData("M21");
  klass->CutOffRank = 2;
  klass->Length = 4400;
  klass->Climb = 85;
  klass->ControlCount = 17;
  f.Print("M21");
  const std::string rows =
      "(1)|Fast|0:59:00|1|Ann|1:00:00|2|Bob|1:00:30|+0:30|Qualifying line|3|Cy|2:10:00|+1:10:00|"
      "Di|DNF|";
  EXPECT_EQ(Texts(*f.print.book, 0),
            "Cup|Page %1 of %2|M21|Controls 17  4.4km \u219185m|Place|Name|Result|Behind|" + rows);
  // With numbers, ages and clubs there are more columns.
  klass->LapData(1)->ClubName = "Club";
  klass->LapData(2)->Age = "20";
  f.Print("M21", true, true);
  EXPECT_NE(Texts(*f.print.book, 0).find("Place|No.|Name|Age|Club|Result|Behind|"),
            std::string::npos);
  EXPECT_EQ(f.Pages(), 1U) << "the second list is below the first one";
}

TEST(HeadedList, TimesAreAfterTheBestWhoCompetes) {
  const HeadedFixture f;
  f.Add("Open", "Guest", "0:50:00", "");
  f.Add("Open", "Ann", "1:00:00", "");
  f.Add("Open", "Bob", "1:00:30", "");
  f.root->ClassData("Open")->LapData(1)->Status = RunnerStatus::kNotCompeting;
  f.Print("Open");
  EXPECT_NE(Texts(*f.print.book, 0).find("|Guest|0:50:00|1|Ann|1:00:00|2|Bob|1:00:30|+0:30|"),
            std::string::npos)
      << Texts(*f.print.book, 0);
}

// Also that the numbers of pages are known only when the book is printed.
TEST(HeadedList, KeepsClassesTogetherOrContinuesThem) {
  const HeadedFixture f;
  f.AddMany("A", 10), f.AddMany("B", 11), f.AddMany("C", 45), f.AddMany("D", 4);
  for (const std::string klass : {"A", "B", "C", "D"}) f.Print(klass);
  std::string heads;
  for (std::size_t page = 0; page < f.Pages(); ++page) {
    for (const clsPrintBookLine& line : PrintBookInternal::Pages(*f.print.book)[page]) {
      if (line.Kind != PrintKind::kText || line.TextFont->Size() != 18) continue;
      heads += std::to_string(page + 1) + ":" + line.Text + " ";
    }
    for (const clsPrintBookLine& line : PrintBookInternal::Pages(*f.print.book)[page]) {
      EXPECT_LE(line.Top + line.Height, 121) << line.Text;
    }
  }
  // B fits on a page, so it begins on one; C fits on none, so it does not. D has room.
  EXPECT_EQ(heads, "1:A 2:B 2:C 3:C (continued) 4:C (continued) 5:C (continued) 5:D ");
  const std::string printed = f.print.Printed();
  EXPECT_NE(printed.find("Page 1 of 5"), std::string::npos);
  EXPECT_NE(printed.find("Page 5 of 5"), std::string::npos);
  EXPECT_NE(f.print.Printed(2, 2).find("Page 2 of 5"), std::string::npos);
}

TEST(HeadedList, ShrinksLongNamesBeforeTheyAreCut) {
  const HeadedFixture f;
  // A letter of 11 points is less than 2 units wide, the column of names 124.
  for (const int letters : {40, 85, 200}) {
    f.Add("A", std::string(static_cast<std::size_t>(letters), 'x'), "0:10:00", "1");
  }
  f.Print("A");
  std::map<std::size_t, double> sizes;
  for (const clsPrintBookLine& line : PrintBookInternal::Pages(*f.print.book)[0]) {
    if (line.Text.starts_with("xx")) {
      sizes[line.Text.size()] = line.TextFont->Size();
      EXPECT_TRUE(line.AutoStringCut);
    }
  }
  EXPECT_DOUBLE_EQ(sizes[40], 11);
  EXPECT_LT(sizes[85], 10.5);
  EXPECT_GT(sizes[85], 7.8);
  EXPECT_NEAR(sizes[200], 7.7, 1e-6);
}

// Pages too low for a head and a line, and books of no size.
TEST(HeadedList, SurvivesOddPages) {
  for (const auto& [width, height] : Rows<float, float>{{160, 10}, {1, 500}, {0, 0}, {10, 10}}) {
    HeadedFixture f;
    f.print = Book(width, height);
    f.AddMany("A", 5);
    f.Print("A");
    EXPECT_GE(f.Pages(), 1U);
    EXPECT_LE(f.Pages(), 5U);
  }
}

TEST(PrintedAnalysis, GroupsOfRunnersOnPages) {
  const auto root = NewRoot(Mode::kEnglishTexts);
  const auto analyzer = root->NewAnalyzer();
  for (int i = 10; i < 60; ++i) {
    const std::string number = std::to_string(i);
    AddRunner(*root->AddClass("M21"), "N" + number, "1:00:" + number, std::vector(20, 90. + i));
  }
  analyzer->AddClass("M21");
  analyzer->ControlCount = 19;
  analyzer->Execute();
  root->ConfigControl()->SetValue(KR_CONFIG_FOLDER_DATA, "PRINT_COLOR_RANK1", "&H101010");
  clsGraphicControl graphics(root->ConfigControl());
  for (const float width : {210.f, 297.f}) {
    const Book print(width, 507 - width);
    print.book->SetVirtualSize(77, 0);
    const std::string area = print.Area();
    graphics.PrintAnalysis(analyzer, print.book, KR_PRINT_ANALYSIS_LAP);
    EXPECT_EQ(print.Area(), area);
    const auto& pages = PrintBookInternal::Pages(*print.book);
    std::map<std::string, int> all;
    for (std::size_t page = 0; page < pages.size(); ++page) {
      std::map<std::string, int> texts;
      std::map<Color, int> colors;
      for (const clsPrintBookLine& line : pages[page]) {
        ++texts[line.Text], ++all[line.Text], ++colors[line.Color];
        EXPECT_LE(line.Left + line.Width, print.book->Width() + 0.01f) << line.Text;
        EXPECT_LE(line.Top + line.Height, print.book->Height() + 0.01f) << line.Text;
      }
      const std::string number = std::to_string(page + 1) + " / " + std::to_string(pages.size());
      EXPECT_EQ(texts["M21"] + texts["S→1"] + texts["19→F"] + texts[number], 4) << number;
      // The reference and the best runner, whose laps are white on the dark shade: time and rank.
      EXPECT_EQ(texts["Leg times (1-3)"] * 10000 + colors[0x101010] * 100 + colors[0xFFFFFF],
                page == 0 ? 12040 : 0);
    }
    for (int i = 10; i < 60; ++i) EXPECT_EQ(all["N" + std::to_string(i)], 1);
  }
  const Book print(210, 297);
  graphics.PrintAnalysis(root->NewAnalyzer(), print.book);
  EXPECT_EQ(print.book->PageCount(), 0);
  graphics.PrintAnalysis(analyzer, print.book, KR_PRINT_ANALYSIS_MISS);
  EXPECT_NE(Records(*print.book, 0).find("Leg times / Mistakes;"), std::string::npos);
  EXPECT_THROW(graphics.PrintAnalysis(nullptr, print.book), AutomationError);
  EXPECT_THROW(graphics.PrintResult(nullptr, print.book), AutomationError);
}

// 11 legs need two lines of a portrait page.
TEST(PrintedAnalysis, WithHeadsIsBalancedAndNamesTheReference) {
  const auto root = NewRoot(Mode::kEnglishTexts);
  const auto analyzer = root->NewAnalyzer();
  AddRunner(*root->AddClass("M21"), "N", "1:00:00", std::vector(11, 90.));
  analyzer->AddClass("M21");
  analyzer->ControlCount = 10;
  analyzer->Execute();
  for (const bool heads : {false, true}) {
    root->GraphicControl()->PrintHeads = heads;
    const Book print(190, 277);
    root->GraphicControl()->PrintAnalysis(analyzer, print.book);
    std::map<float, int> labels;  // per line
    for (const clsPrintBookLine& line : PrintBookInternal::Pages(*print.book)[0]) {
      if (line.Text.find("→") != std::string::npos) ++labels[line.Top];
    }
    ASSERT_EQ(labels.size(), 2U);
    EXPECT_EQ(labels.begin()->second - labels.rbegin()->second <= 1, heads);
    const std::string texts = Texts(*print.book, 0);
    EXPECT_EQ(texts.find("Mean of the three best laps") != std::string::npos, heads);
    EXPECT_EQ(texts.find("Leg times (1-3)") != std::string::npos, !heads);
  }
}

// Official ranks are ranks in a class; for a course the rank among all its runners is shown.
TEST(PrintedAnalysis, RanksOfACourseAndControlCodes) {
  const auto root = NewRoot(Mode::kEnglishTexts);
  const auto course = root->AddCourse(1);
  course->SetControlCount(1);
  course->SetControlNum(1, 231);
  for (int i = 1; i <= 4; ++i) {
    const auto klass = root->AddClass(i > 2 ? "W21" : "M21");
    klass->CourseNum = klass->ControlCount = 1;
    const std::string number = std::to_string(i);
    AddRunner(*klass, "N" + number, "0:1" + number + ":00", {60., 60.})->Rank = i > 2 ? "7" : "8";
  }
  const auto printed = [&](const std::shared_ptr<clsAnalyzer>& analyzer) {
    analyzer->Execute();
    const Book print(210, 297);
    root->GraphicControl()->PrintAnalysis(analyzer, print.book);
    std::string places;
    for (const clsPrintBookLine& line : PrintBookInternal::Pages(*print.book)[0]) {
      if (line.Left == 0 && line.Text.size() == 1) places += line.Text;
      if (line.Text.find("231") != std::string::npos) places += line.Text + " ";
    }
    return places;
  };
  const auto all = root->NewAnalyzer(), one = root->NewAnalyzer();
  all->AddCourse(1);
  all->SetCourseData(course);
  one->AddClass("M21");
  EXPECT_EQ(printed(all), "→(231) (231)→ 1234");
  EXPECT_EQ(printed(one), "88");
}

}  // namespace
}  // namespace keltrun::test
