// The desktop host without a screen: does what a user does, and takes a picture of each tab when
// KELTRUN2_SCREENSHOTS names a folder.
#include <QMessageBox>
#include <QProgressDialog>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include "main_window.h"

class DesktopTest : public QObject {
  Q_OBJECT

 private slots:
  void initTestCase() {
    qputenv("XDG_CONFIG_HOME", folder_.path().toLocal8Bit());
    keltrun::SetStartup({.Language = "en", .Folder = KELTRUN2_DATA_FOLDER});
    window_ = std::make_unique<MainWindow>();
    window_->show();
    QVERIFY(window_->Open(KELTRUN2_EXAMPLES "/hoshinomori/event.lxm"));
  }

  void GridShowsWhatIsChosen() {
    const QTableWidget& grid = window_->Grid();
    for (const char* set : {"Course", "Segment", "M21A"}) {
      window_->Sets().setCurrentIndex(window_->Sets().findText(set, Qt::MatchStartsWith));
      QVERIFY(grid.columnCount() > 1 && !grid.horizontalHeaderItem(0)->text().isEmpty());
      Shoot(0, set);
    }
    QVERIFY(grid.item(0, 0)->background() != grid.verticalHeaderItem(0)->background());
  }

  void ChartsFindAndColorRunnersZoomAndScroll() {
    window_->Tabs().setCurrentIndex(1);
    ChartView& chart = window_->Chart();
    for (int mode = window_->Modes().count() - 1; mode >= 0; --mode) {
      window_->Modes().setCurrentIndex(mode);
      const QImage before = chart.Image();
      const auto point = RunnerUnderMouse();
      QVERIFY2(point, qPrintable(window_->Modes().currentText()));
      const QImage hovered = chart.Image();
      QTest::mouseClick(chart.viewport(), Qt::LeftButton, {}, *point);
      QVERIFY(hovered != before && chart.Image() != hovered);
      Shoot(1, QString("chart%1").arg(mode));
      chart.ClearColors();
      QCOMPARE(chart.Image(), before);
    }
    chart.SetZoom(3, 2);
    QVERIFY(ScrollingChanges(chart));
  }

  void PreviewsAndPrints() {
    Shoot(2, "preview");
    const QImage first = window_->Preview().Image();
    window_->Preview().SetPage(2);
    QVERIFY(window_->Preview().Image() != first);
    window_->Preview().SetZoom(3);
    QVERIFY(ScrollingChanges(window_->Preview()));
    QVERIFY(window_->PrintToPdf(folder_.filePath("results.pdf")));
    QVERIFY(Bytes("results.pdf").startsWith("%PDF-"));
    Answer({QMessageBox::Ok});
    QVERIFY(!window_->PrintOn("nowhere"));
  }

  void ExportsASiteIntoANewFolder() {
    const keltrun::SiteOptions options{.OutputFolder = folder_.filePath("site").toStdString(),
                                       .IndexFile = "index.html",
                                       .ViewerFile = "viewer.html"};
    Answer({QMessageBox::No, QMessageBox::Ok});  // the second dialog says what was not done
    QVERIFY(!window_->ExportSite(options) && !QFile::exists(folder_.filePath("site")));
    Answer({QMessageBox::Yes});
    QVERIFY(window_->ExportSite(options));
    QVERIFY(Bytes("site/index.html").contains("viewer.html"));
  }

  void MergesAndChoosesFromArchives() {
    const int sets = window_->Sets().count();
    QVERIFY(window_->Save(folder_.filePath("one.lzh"), keltrun::KR_FILETYPE_KELTRUN2));
    QVERIFY(window_->Merge(KELTRUN2_EXAMPLES "/midorigaoka/event.lxm"));
    QVERIFY(window_->Sets().count() > sets);
    QVERIFY(window_->Save(folder_.filePath("two.lzh"), keltrun::KR_FILETYPE_KELTRUN2));
    QFile both(folder_.filePath("both.lzh"));
    QVERIFY(both.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    both.write(Bytes("one.lzh").chopped(1) + Bytes("two.lzh"));  // an archive ends with a zero byte
    Answer({QMessageBox::Ok});
    QVERIFY(window_->Open(both.fileName()));
    QCOMPARE(window_->Sets().count(), sets);
    Answer({QMessageBox::Cancel, QMessageBox::Ok});
    QVERIFY(!window_->Open(both.fileName()));
  }

  void cleanup() { QVERIFY(answers_.empty()); }

 private:
  QByteArray Bytes(const QString& name) {
    QFile file(folder_.filePath(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
  }

  // A point of the chart at which the mouse finds a runner.
  std::optional<QPoint> RunnerUnderMouse() {
    QSignalSpy hovered(&window_->Chart(), &ChartView::RunnerHovered);
    for (int step = 0; step < 180 * 110; ++step) {
      const QPoint point(60 + step % 180 * 5, 60 + step / 180 * 5);
      QTest::mouseMove(window_->Chart().viewport(), point);
      QCoreApplication::processEvents();
      if (!hovered.empty()) return point;
    }
    return std::nullopt;
  }

  static bool ScrollingChanges(auto& view) {
    const QImage before = view.Image();
    view.horizontalScrollBar()->triggerAction(QScrollBar::SliderToMaximum);
    const QImage across = view.Image();
    view.verticalScrollBar()->triggerAction(QScrollBar::SliderToMaximum);
    return across != before && view.Image() != across;
  }

  // Answers the dialogs to come, in this order.
  void Answer(const QList<QMessageBox::StandardButton>& answers) {
    answers_ = answers;
    QTimer::singleShot(0, this, &DesktopTest::AnswerDialog);
  }

  void AnswerDialog() {
    auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (auto* box = qobject_cast<QMessageBox*>(dialog)) {
      box->button(answers_.takeFirst())->click();
    } else if (dialog != nullptr && qobject_cast<QProgressDialog*>(dialog) == nullptr) {
      answers_.takeFirst() == QMessageBox::Ok ? dialog->accept() : dialog->reject();
    }
    if (!answers_.empty()) QTimer::singleShot(20, this, &DesktopTest::AnswerDialog);
  }

  void Shoot(int tab, const QString& name) {
    window_->Tabs().setCurrentIndex(tab);
    QCoreApplication::processEvents();
    const QString folder = qEnvironmentVariable("KELTRUN2_SCREENSHOTS");
    if (!folder.isEmpty()) window_->grab().save(folder + "/desktop-" + name + ".png");
  }

  QTemporaryDir folder_;
  std::unique_ptr<MainWindow> window_;
  QList<QMessageBox::StandardButton> answers_;
};

QTEST_MAIN(DesktopTest)
#include "desktop_test.moc"
