// Grids, pictures and printers belong to the host. Whatever it does while one of them is called,
// the output shows the state at the beginning of the call.
#include <gtest/gtest.h>

#include <functional>

#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using Disturb = std::function<void()>;

// The calls, which outlive the object that was called.
using Calls = std::shared_ptr<std::string>;

// Records every call, then lets the host do something.
class HostPicture : public PictureBox {
 public:
  Calls calls = std::make_shared<std::string>();
  Disturb disturb;

  void DrawLine(float x1, float y1, float x2, float y2, Color, float) override {
    Note("line", {x1, y1, x2, y2});
  }
  void DrawBox(float left, float top, float width, float height, Color, float, bool) override {
    Note("box", {left, top, width, height});
  }
  void DrawCircle(float x, float y, float radius, Color, float, bool) override {
    Note("circle", {x, y, radius});
  }
  void DrawText(std::string_view text, float x, float y, const TextStyle&) override {
    const std::string kept(text);
    Note("text", {x, y});
    *calls += kept + (kept == text ? ";" : " was lost;");
  }
  float TextWidth(std::string_view text, const TextStyle& style) override {
    Note("", {});
    return static_cast<float>(text.size()) * style.Size / 2;
  }
  float TextHeight(const TextStyle& style) override { return Note("", {}), style.Size; }
  void SetClip(float, float, float, float) override { Note("clip", {}); }
  void ResetClip() override { Note("", {}); }
  void SetScaleMode(std::int32_t) override { Note("", {}); }
  void SetBackColor(Color) override { Note("", {}); }
  void Clear() override { Note("clear", {}); }
  float ScaleWidth() const override { return width_; }
  float ScaleHeight() const override { return 400; }
  float Width() const override { return width_; }
  void SetWidth(float width) override {
    width_ = width;
    Note("width", {width});
  }

 private:
  void Note(const char* what, std::initializer_list<float> numbers) {
    if (*what != '\0') *calls += std::string(what) + " ";
    for (const float number : numbers) *calls += std::to_string(number) + ",";
    if (disturb) disturb();
  }

  float width_ = 704;
};

class HostPrinter : public Printer {
 public:
  HostPicture sheet, measure;
  std::string name = "host";

  const std::string& DeviceName() const override { return name; }
  void SetPaperSize(std::int32_t) override { Call(); }
  void SetOrientation(std::int32_t) override { Call(); }
  PaperMetrics Metrics() const override { return {}; }
  DrawingSurface& NewSheet() override { return *sheet.calls += "sheet;", Call(), sheet; }
  DrawingSurface& Measure() override { return Call(), measure; }
  void EndDocument() override {
    *sheet.calls += "end;";
    Call();
  }
  void SetDisturb(const Disturb& disturb) { sheet.disturb = measure.disturb = disturb; }

 private:
  void Call() const {
    if (sheet.disturb) sheet.disturb();
  }
};

struct HostGrid : clsGridObject {
  Calls texts = std::make_shared<std::string>();
  Disturb disturb;

  void SetTextMatrix(std::int32_t row, std::int32_t col, std::string_view text) override {
    *texts += std::to_string(row) + "," + std::to_string(col) + std::string(text) + ";";
    disturb();
  }
  void Clear() override { disturb(); }
  void SetColWidth(std::int32_t, std::int32_t) override { disturb(); }
  keltrun::Color Color(KrColorTypeConst) override { return disturb(), 0; }
};

// The objects of a host. An action may release any of them.
struct Host {
  Host() {
    const auto klass = root->AddClass("M21A");
    klass->ControlCount = 2;
    for (int i = 1; i <= 3; ++i) {
      AddRunner(*klass, "Runner " + std::to_string(i), "0:10:0" + std::to_string(i),
                {100. + i, 200, 300});
    }
    const auto course = root->AddCourse(1);
    course->SetControlCount(2);
    analyzer->AddClass("M21A");
    analyzer->SetCourseData(course);
    analyzer->Execute();
    results->AddClass("M21A");
    results->CalcRank();
    InstallPrinter(printer);
    book->Init("host", KR_PAPER_A4, tpotPortrate, 10, 10, 10, 10, 1);
    RemovePrinter("host");
    printer->sheet.calls->clear();
  }

  std::shared_ptr<clsKeltrun2> root = NewRoot(Mode::kEnglishTexts);
  std::shared_ptr<clsGraphicControl> graphics = root->GraphicControl();
  std::shared_ptr<clsAnalyzer> analyzer = root->NewAnalyzer();
  std::shared_ptr<clsResultsHolder> results = root->NewResultsHolder();
  std::shared_ptr<clsPrintBook> book = std::make_shared<clsPrintBook>();
  std::shared_ptr<clsChartObject> chart = std::make_shared<clsChartObject>();
  std::shared_ptr<HostPicture> picture = std::make_shared<HostPicture>();
  std::shared_ptr<HostPrinter> printer = std::make_shared<HostPrinter>();
  std::shared_ptr<HostGrid> grid = std::make_shared<HostGrid>();
};

// Things that hosts do, perhaps by mistake, while they are called.
using Action = std::function<void(Host&)>;
const Rows<const char*, Action> kActions = {
    {"clear",
     [](Host& host) {
       if (host.analyzer) host.analyzer->Clear();
       if (host.results) host.results->Clear();
       if (host.root) host.root->Clear();
     }},
    {"execute", [](Host& host) { host.analyzer->Execute(); }},
    {"let go of the data",
     [](Host& host) {
       host.analyzer.reset();
       host.results.reset();
       host.root.reset();
       host.graphics.reset();
     }},
    {"let go of the target",
     [](Host& host) {
       host.grid.reset();
       host.book.reset();
       host.chart.reset();
       host.picture.reset();
       host.printer.reset();
     }},
    {"use the book anew",
     [](Host& host) {
       host.book->TryUnload(nullptr);
       host.book->DrawBox(0, 0, 1, 1, 0, 1, true);
       host.book->NewPage();
     }},
    {"record into the book",
     [](Host& host) {
       for (int i = 0; i < 9; ++i)
         host.book->PrintText("more", Font(), 0, 0, 9, 9, PRINTBOOK_ALIGN_LEFT,
                              PRINTBOOK_VALIGN_TOP);
     }},
    {"another target of the chart", [](Host& host) { host.chart->SetPrintBookObject(host.book); }},
};

using Output = std::function<Calls(Host&, const Disturb&)>;

Calls DrawGrid(Host& host, const Disturb& disturb) {
  host.grid->disturb = disturb;
  const Calls texts = host.grid->texts;
  host.graphics->DrawGrid(host.analyzer, host.grid);
  return texts;
}

// Measures texts only.
Calls PrintTheAnalysis(Host& host, const Disturb& disturb) {
  host.printer->SetDisturb(disturb);
  host.graphics->PrintAnalysis(host.analyzer, host.book);
  return std::make_shared<std::string>();
}

Calls Print(Host& host, const Disturb& disturb) {
  host.graphics->PrintResult(host.results, host.book);
  host.graphics->PrintAnalysis(host.analyzer, host.book);
  host.printer->SetDisturb(disturb);
  const Calls calls = host.printer->sheet.calls;
  host.book->Execute();
  return calls;
}

Calls Preview(Host& host, const Disturb& disturb) {
  host.graphics->PrintResult(host.results, host.book);
  host.picture->disturb = disturb;
  const Calls calls = host.picture->calls;
  host.book->ShowPreview(host.picture, 1);
  return calls;
}

Calls BuildChart(Host& host, const Disturb& disturb) {
  host.chart->AutoSize = true;
  host.chart->SetPictureObject(host.picture);
  host.picture->disturb = disturb;
  const Calls calls = host.picture->calls;
  host.graphics->DrawChart(host.analyzer, host.chart, KR_CHART_NORMAL, 20, 1, 0, 0);
  return calls;
}

Calls DrawChart(Host& host, const Disturb& disturb) {
  host.chart->SetPictureObject(host.picture);
  host.graphics->DrawChart(host.analyzer, host.chart, KR_CHART_NORMAL, 1, 1, 0, 0);
  host.picture->disturb = disturb;
  const Calls calls = host.picture->calls;
  host.chart->DrawChart();
  return calls;
}

Calls SetTarget(Host& host, const Disturb& disturb) {
  host.picture->disturb = disturb;
  host.chart->SetPictureObject(host.picture);
  return std::make_shared<std::string>();
}

Calls Initialise(Host& host, const Disturb& disturb) {
  InstallPrinter(host.printer);
  host.printer->SetDisturb([&disturb] {
    RemovePrinter("host");
    disturb();
  });
  host.book->Init("host", KR_PAPER_A5, tpotLandscape, 1, 1, 1, 1, 1);
  return std::make_shared<std::string>();
}

TEST(HostCallbacks, DisturbNoOutput) {
  const Rows<const char*, Output> outputs = {{"DrawGrid", DrawGrid},
                                             {"PrintAnalysis", PrintTheAnalysis},
                                             {"Execute", Print},
                                             {"ShowPreview", Preview},
                                             {"build a chart", BuildChart},
                                             {"DrawChart", DrawChart},
                                             {"SetPictureObject", SetTarget},
                                             {"Init", Initialise}};
  for (const auto& [output_name, output] : outputs) {
    Host quiet;
    const std::string expected = *output(quiet, [] {});
    for (const auto& [action_name, action] : kActions) {
      Host host;
      bool done = false;
      const std::string drawn = *output(host, [&, &act = action] {
        if (!std::exchange(done, true)) act(host);
      });
      EXPECT_TRUE(done) << output_name << ": the host was not called";
      EXPECT_EQ(drawn, expected) << output_name << ": " << action_name;
    }
  }
}

TEST(HostCallbacks, TheSameTwiceAtOnceIsRefused) {
  Host host;
  host.graphics->PrintResult(host.results, host.book);
  int refused = 0;
  const auto refuse = [&refused](const auto& call) {
    try {
      call();
    } catch (const AutomationError& error) {
      refused += error.Number() == KR_ERROR_INVALID_CALL ? 1 : 100;
    }
  };
  host.printer->SetDisturb([&] {
    if (refused == 0) refuse([&] { host.book->Execute(); });
  });
  host.book->Execute();
  EXPECT_EQ(refused, 1) << "a printer prints one document at a time";
  host.printer->SetDisturb({});
  host.printer->sheet.calls->clear();
  host.book->Execute();
  EXPECT_TRUE(host.printer->sheet.calls->ends_with("end;")) << "and then the next one";

  host.chart->SetPictureObject(host.picture);
  const auto build = [&host] {
    host.graphics->DrawChart(host.analyzer, host.chart, KR_CHART_NORMAL, 1, 1, 0, 0);
  };
  host.picture->disturb = [&] {
    if (refused == 1) refuse(build);
  };
  build();
  EXPECT_EQ(refused, 2) << "a chart is built once at a time";
  host.picture->disturb = {};
  EXPECT_NO_THROW(build());
}

}  // namespace
}  // namespace keltrun::test
