// The window of the desktop host.
#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QMainWindow>
#include <QSpinBox>
#include <QTabWidget>
#include <QTableWidget>
#include <functional>

#include "chart_view.h"
#include "keltrun2/keltrun2.h"
#include "preview_view.h"

class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  MainWindow();
  ~MainWindow() override;

  /// Loads a lap file, or merges it into what is loaded.
  bool Open(const QString& file);
  bool Merge(const QString& file);
  bool Save(const QString& file, keltrun::KrLapFileTypeConst type);
  bool ExportSite(const keltrun::SiteOptions& options);
  /// Prints the pages of the preview on a printer, or into a PDF file.
  bool PrintOn(const QString& printer);
  bool PrintToPdf(const QString& file);

  QComboBox& Sets() { return *sets_; }
  QComboBox& Modes() { return *modes_; }
  QTabWidget& Tabs() { return *tabs_; }
  QTableWidget& Grid() { return *table_; }
  ChartView& Chart() { return *chart_; }
  PreviewView& Preview() { return *preview_; }

 private:
  void MakeToolBar();
  QWidget* MakeGridTab();
  QWidget* MakeChartTab();
  QWidget* MakePreviewTab();
  QWidget* WithBar(std::initializer_list<QWidget*> bar, QWidget* view);

  void Warn(const std::string& text);
  bool Attempt(const std::function<bool()>& action);
  bool AttemptFile(const std::function<bool(keltrun::clsFileControl&)>& action);
  bool Load(const QString& file, keltrun::KrLapFileLoadModeCosnt mode);
  void ShowRemarks(const QString& file);
  void FillSets();
  void ShowSet();
  void FillDataSets();
  void ShowRunner(int index);
  std::shared_ptr<keltrun::clsPrintBook> MakeBook(const std::string& printer) const;
  void FillPreview();
  void AskAndOpen(bool merge);
  void AskAndSave();
  void AskAndExport();
  void AskAndPrint();

  std::shared_ptr<keltrun::clsKeltrun2> root_ = std::make_shared<keltrun::clsKeltrun2>();
  std::shared_ptr<keltrun::clsAnalyzer> analyzer_;
  std::shared_ptr<keltrun::clsResultsHolder> results_;
  QComboBox* sets_ = new QComboBox;  // classes, courses and segments
  QTabWidget* tabs_ = new QTabWidget;
  QTableWidget* table_ = new QTableWidget;
  ChartView* chart_ = new ChartView(root_->GraphicControl());
  QComboBox* modes_ = new QComboBox;
  QDoubleSpinBox* zoom_x_ = new QDoubleSpinBox;
  QDoubleSpinBox* zoom_y_ = new QDoubleSpinBox;
  PreviewView* preview_ = new PreviewView;
  QComboBox* content_ = new QComboBox;  // what is printed
  QCheckBox* landscape_ = new QCheckBox("Landscape");
  QSpinBox* page_ = new QSpinBox;
  QComboBox* preview_zoom_ = new QComboBox;
  QLabel* status_ = new QLabel;
};
