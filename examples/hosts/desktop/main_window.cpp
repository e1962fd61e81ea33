#include "main_window.h"

#include <QAction>
#include <QFileDialog>
#include <QHeaderView>
#include <QInputDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QStatusBar>
#include <QStyle>
#include <QToolBar>
#include <QVBoxLayout>

#include "qt_grid.h"
#include "qt_windows.h"
#include "site_dialog.h"

namespace {

// In the order of KrChartModeConst.
const QStringList kModeNames = {
    "Splits",       "Splits by time of day", "Behind the best",       "Behind 110 %",
    "Behind 130 %", "Speed and time lost",   "First and second half", "Map of losses"};

enum Content { kResultsAndSplits, kResults, kSplits, kTimeLost };
const QStringList kContentNames = {"Results and splits", "Results", "Splits", "Time lost"};

constexpr int kPreviewPercents[] = {100, 150, 200, 300, 400};
constexpr int kPrintMargin = 12;  // mm
const QString kPdfFile = "PDF file";

// The filters of the component, "description|pattern|...", as those of a Qt dialog.
QStringList FileFilters(const std::string& filters) {
  QStringList descriptions;
  const QStringList parts = ToQt(filters).split('|');
  for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
    descriptions << QString(parts[i]).replace(';', ' ').replace("*.*", "*");
  }
  return descriptions;
}

}  // namespace

MainWindow::MainWindow() {
  setWindowTitle("Keltrun2");
  resize(1060, 760);
  keltrun::SetHostWindows(std::make_shared<QtWindows>(this));
  root_->FileControl()->SetProgressVisible(true);
  MakeToolBar();
  tabs_->addTab(MakeGridTab(), "Splits");
  tabs_->addTab(MakeChartTab(), "Chart");
  tabs_->addTab(MakePreviewTab(), "Print");
  setCentralWidget(tabs_);
  statusBar()->addWidget(status_, 1);
  status_->setText("Open a lap file to begin");
}

MainWindow::~MainWindow() { keltrun::SetHostWindows(nullptr); }

// --- the window ---

void MainWindow::MakeToolBar() {
  QToolBar* bar = addToolBar("Main");
  bar->setMovable(false);
  bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  const auto add = [&](QStyle::StandardPixmap icon, const QString& text, const QString& keys,
                       auto action) {
    QAction* item = bar->addAction(style()->standardIcon(icon), text);
    item->setShortcut(QKeySequence(keys));
    connect(item, &QAction::triggered, this, action);
  };
  add(QStyle::SP_DialogOpenButton, "Open", "Ctrl+O", [this] { AskAndOpen(false); });
  add(QStyle::SP_FileDialogNewFolder, "Merge", "Ctrl+M", [this] { AskAndOpen(true); });
  add(QStyle::SP_DialogSaveButton, "Save", "Ctrl+S", [this] { AskAndSave(); });
  add(QStyle::SP_DriveNetIcon, "Export site", "Ctrl+E", [this] { AskAndExport(); });
  add(QStyle::SP_FileIcon, "Print", "Ctrl+P", [this] { AskAndPrint(); });
  bar->addSeparator();
  sets_->setMinimumWidth(280);
  sets_->setMaxVisibleItems(30);
  bar->addWidget(sets_);
  connect(sets_, &QComboBox::currentIndexChanged, this, [this] { ShowSet(); });
}

QWidget* MainWindow::WithBar(std::initializer_list<QWidget*> bar, QWidget* view) {
  auto* tab = new QWidget;
  auto* layout = new QVBoxLayout(tab);
  auto* row = new QHBoxLayout;
  for (QWidget* widget : bar) row->addWidget(widget);
  row->addStretch();
  layout->addLayout(row);
  layout->addWidget(view, 1);
  return tab;
}

QWidget* MainWindow::MakeGridTab() {
  table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  table_->setSelectionMode(QAbstractItemView::SingleSelection);
  table_->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
  table_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  table_->setCornerButtonEnabled(false);
  connect(table_, &QTableWidget::currentCellChanged, this,
          [this](int, int column) { ShowRunner(column + 1); });
  return table_;
}

QWidget* MainWindow::MakeChartTab() {
  modes_->addItems(kModeNames);
  connect(modes_, &QComboBox::currentIndexChanged, this,
          [this](int mode) { chart_->SetMode(static_cast<keltrun::KrChartModeConst>(mode)); });
  for (QDoubleSpinBox* zoom : {zoom_x_, zoom_y_}) {
    zoom->setRange(1, 20);
    zoom->setSingleStep(0.5);
    zoom->setPrefix(zoom == zoom_x_ ? "Across × " : "Down × ");
    connect(zoom, &QDoubleSpinBox::valueChanged, this,
            [this] { chart_->SetZoom(zoom_x_->value(), zoom_y_->value()); });
  }
  auto* clear = new QPushButton("Clear colors");
  connect(clear, &QPushButton::clicked, this, [this] { chart_->ClearColors(); });
  connect(chart_, &ChartView::RunnerHovered, this, [this](int index) { ShowRunner(index); });
  connect(chart_, &ChartView::ZoomWanted, this, [this](double factor) {
    zoom_x_->setValue(zoom_x_->value() * factor);
    zoom_y_->setValue(zoom_y_->value() * factor);
  });
  return WithBar({modes_, zoom_x_, zoom_y_, clear,
                  new QLabel("Click a runner for a color; Ctrl and the wheel zoom")},
                 chart_);
}

QWidget* MainWindow::MakePreviewTab() {
  content_->addItems(kContentNames);
  connect(content_, &QComboBox::currentIndexChanged, this, [this] { FillPreview(); });
  connect(landscape_, &QCheckBox::toggled, this, [this] { FillPreview(); });
  page_->setPrefix("Page ");
  page_->setRange(1, 1);
  connect(page_, &QSpinBox::valueChanged, preview_, &PreviewView::SetPage);
  for (const int percent : kPreviewPercents) {
    preview_zoom_->addItem(percent == 100 ? "Whole page" : QString("%1 %").arg(percent), percent);
  }
  connect(preview_zoom_, &QComboBox::currentIndexChanged, this,
          [this] { preview_->SetZoom(preview_zoom_->currentData().toInt() / 100.0); });
  return WithBar({content_, landscape_, page_, preview_zoom_}, preview_);
}

// --- the event ---

void MainWindow::Warn(const std::string& text) {
  QMessageBox::warning(this, "Keltrun2", ToQt(text));
}

// Any mistake of a caller throws.
bool MainWindow::Attempt(const std::function<bool()>& action) {
  try {
    return action();
  } catch (const keltrun::AutomationError& error) {
    Warn(error.what());
    return false;
  }
}

// The file service returns false for bad files.
bool MainWindow::AttemptFile(const std::function<bool(keltrun::clsFileControl&)>& action) {
  return Attempt([&] {
    const bool done = action(*root_->FileControl());
    if (!done) Warn(root_->ErrorComment());
    return done;
  });
}

bool MainWindow::Load(const QString& file, keltrun::KrLapFileLoadModeCosnt mode) {
  const bool done = AttemptFile([&](auto& files) {
    files.SetForeignFormats(true);
    return files.LoadLapFile(file.toStdString(), keltrun::KR_FILETYPE_AUTODETECT, mode);
  });
  const QString event = ToQt(root_->EventData()->ToString());
  setWindowTitle((event.isEmpty() ? file : event) + " – Keltrun2");
  FillSets();
  ShowRemarks(file);
  return done;
}

bool MainWindow::Open(const QString& file) { return Load(file, keltrun::KR_LOADMODE_NORMAL); }

bool MainWindow::Merge(const QString& file) {
  return Load(file, keltrun::KR_LOADMODE_MERGE_NAME | keltrun::KR_LOADMODE_PRIORITY_NEWDATA);
}

bool MainWindow::Save(const QString& file, keltrun::KrLapFileTypeConst type) {
  return AttemptFile([&](auto& files) {
    const std::string before = root_->ErrorComment();
    const bool done = files.SaveLapFile(file.toStdString(), type);
    // When an archive could not be written, only the text says so.
    if (done && root_->ErrorComment() != before) Warn(root_->ErrorComment());
    return done;
  });
}

bool MainWindow::ExportSite(const keltrun::SiteOptions& options) {
  return AttemptFile([&](auto& files) {
    const bool done = files.OutputSite(options);
    const std::string missing = root_->ErrorComment();  // pages that could not be written
    if (done && !missing.empty()) Warn(missing);
    return done;
  });
}

void MainWindow::ShowRemarks(const QString& file) {
  const auto& remarks = root_->FileControl()->LoadRemarks();
  QStringList lines;
  for (const keltrun::LoadRemark& remark : remarks) {
    lines << QString("%1: %2").arg(remark.Line).arg(ToQt(remark.Text));
  }
  status_->setToolTip(lines.mid(0, 30).join('\n'));
  status_->setText(lines.empty() ? file : QString("%1: %2 remarks").arg(file).arg(lines.size()));
}

void MainWindow::FillSets() {
  {
    const QSignalBlocker quiet(sets_);
    sets_->clear();
    for (const std::string& choice : root_->ClassAndCourseList()) {
      const auto value = root_->SeparateClassAndCourseValue(choice);
      const QString kind = value.ClassIndex > 0 ? "" : QString("Course %1: ").arg(value.CourseNum);
      sets_->addItem(
          QString("%1%2 (%3)").arg(kind, ToQt(value.ValueName), QString::number(value.RunnerCount)),
          ToQt(choice));
    }
    for (std::int32_t i = 1; i <= root_->SegmentCount(); ++i) {
      sets_->addItem("Segment " + ToQt(root_->SegmentData(i)->SegmentName()), i);
    }
  }
  ShowSet();
}

// Makes the analysis and the results of the chosen set, or empty ones.
void MainWindow::FillDataSets() {
  const QVariant choice = sets_->currentData();
  if (choice.typeId() == QMetaType::Int) {
    const auto segment = root_->SegmentData(choice.toInt());
    analyzer_ = segment->Analyzer();
    results_ = segment->ResultsHolder();
    return;
  }
  analyzer_ = root_->NewAnalyzer();
  results_ = root_->NewResultsHolder();
  const auto value = root_->SeparateClassAndCourseValue(choice.toString().toStdString());
  std::int32_t course = value.CourseNum;
  if (value.ClassIndex > 0) {
    analyzer_->AddClass(value.ClassIndex);
    results_->AddClass(value.ClassIndex);
    course = root_->ClassData(value.ClassIndex)->CourseNum;
  } else {
    analyzer_->AddCourse(value.CourseNum);
    results_->AddCourse(value.CourseNum);
  }
  analyzer_->SetCourseData(root_->CourseData(std::to_string(course)));
}

void MainWindow::ShowSet() {
  Attempt([this] {
    FillDataSets();
    analyzer_->Execute();
    analyzer_->ExtraAnalyze();
    analyzer_->Vesmer();
    results_->CalcRank();
    root_->GraphicControl()->DrawGrid(analyzer_, std::make_shared<QtGrid>(*table_));
    chart_->SetAnalyzer(analyzer_);
    FillPreview();
    return true;
  });
}

void MainWindow::ShowRunner(int index) {
  const auto runner = analyzer_->Item(index);
  if (!runner) return status_->clear();
  QStringList facts;
  for (const std::string& fact :
       {runner->Rank(), runner->RunnerName(), runner->ClubName(), runner->Result()}) {
    if (!fact.empty()) facts << ToQt(fact);
  }
  facts << QString("speed %1 %").arg(ToQt(runner->CruiseSpeed()->ToString("#0.0")))
        << QString("lost %1").arg(ToQt(runner->MissTimeTotal()->ToString("hh:nn:ss", true)));
  status_->setText(facts.join("   "));
}

// --- printing ---

std::shared_ptr<keltrun::clsPrintBook> MainWindow::MakeBook(const std::string& printer) const {
  auto book = std::make_shared<keltrun::clsPrintBook>();
  book->Init(printer, keltrun::KR_PAPER_A4,
             landscape_->isChecked() ? keltrun::tpotLandscape : keltrun::tpotPortrate, kPrintMargin,
             kPrintMargin, kPrintMargin, kPrintMargin, 1);
  const auto graphics = root_->GraphicControl();
  const int content = content_->currentIndex();
  if (content == kResultsAndSplits || content == kResults) graphics->PrintResult(results_, book);
  if (content != kResults) {
    graphics->PrintAnalysis(
        analyzer_, book,
        content == kTimeLost ? keltrun::KR_PRINT_ANALYSIS_MISS : keltrun::KR_PRINT_ANALYSIS_LAP);
  }
  return book;
}

void MainWindow::FillPreview() {
  if (!analyzer_) return;
  const auto book = MakeBook("");
  page_->setMaximum(std::max(1, book->PageCount()));
  page_->setSuffix(QString(" of %1").arg(page_->maximum()));
  page_->setValue(1);
  preview_->SetBook(book);
}

bool MainWindow::PrintOn(const QString& printer) {
  if (!analyzer_) return false;
  return Attempt([&] {
    const auto book = MakeBook(printer.toStdString());
    if (book->PrinterObject()->DeviceName() != printer.toStdString()) {
      Warn("There is no printer " + printer.toStdString() + " any more.");
      return false;
    }
    book->Execute();
    return true;
  });
}

bool MainWindow::PrintToPdf(const QString& file) {
  const std::string name = kPdfFile.toStdString();
  keltrun::InstallPrinter(std::make_shared<keltrun::PdfPrinter>(name, file.toStdString()));
  const bool done = PrintOn(kPdfFile);
  keltrun::RemovePrinter(name);
  return done;
}

// --- what the user is asked ---

void MainWindow::AskAndOpen(bool merge) {
  const QStringList filters = FileFilters(root_->FileControl()->FileLoadFilter());
  const QString file =
      QFileDialog::getOpenFileName(this, merge ? "Merge" : "Open", "", filters.join(";;"));
  if (file.isEmpty()) return;
  merge ? Merge(file) : Open(file);
}

void MainWindow::AskAndSave() {
  const QStringList filters = FileFilters(root_->FileControl()->FileSaveFilter());
  QString filter;
  const QString file = QFileDialog::getSaveFileName(this, "Save", "", filters.join(";;"), &filter);
  if (file.isEmpty()) return;
  Save(file, root_->FileControl()->FileSaveMode(static_cast<double>(filters.indexOf(filter) + 1)));
}

void MainWindow::AskAndExport() {
  if (const auto options = AskSiteOptions(this, kModeNames)) ExportSite(*options);
}

void MainWindow::AskAndPrint() {
  QStringList printers{kPdfFile};
  for (const std::string& name : keltrun::PrinterNames()) printers << ToQt(name);
  bool chosen = false;
  const QString printer =
      QInputDialog::getItem(this, "Print", "Printer", printers, 0, false, &chosen);
  if (!chosen) return;
  if (printer != kPdfFile) {
    PrintOn(printer);
    return;
  }
  const QString file = QFileDialog::getSaveFileName(this, "Print", "results.pdf", "PDF (*.pdf)");
  if (!file.isEmpty()) PrintToPdf(file);
}
