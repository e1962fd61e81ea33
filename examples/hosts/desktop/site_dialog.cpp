#include "site_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>

namespace {

class SiteDialog : public QDialog {
 public:
  SiteDialog(QWidget* parent, const QStringList& chart_modes) : QDialog(parent) {
    setWindowTitle("Export site");
    auto* form = new QFormLayout(this);
    form->addRow("Folder", FolderRow());
    form->addRow("Pages", Group({results_, analyses_, legs_, viewer_, lap_file_}));
    for (const QString& mode : chart_modes) charts_ << new QCheckBox(mode);
    charts_.front()->setChecked(true);
    form->addRow("Charts", Group(charts_));
    form->addRow("", courses_);
    form->addRow("", add_);
    charset_->addItems({"x-sjis", "utf-8"});
    form->addRow("Character set", charset_);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    form->addRow(buttons);
    for (QCheckBox* box : {results_, analyses_, courses_}) box->setChecked(true);
    const auto may_export = [this, buttons] {
      buttons->button(QDialogButtonBox::Ok)->setEnabled(!folder_->text().isEmpty());
    };
    connect(folder_, &QLineEdit::textChanged, this, may_export);
    may_export();
  }

  keltrun::SiteOptions Options() const {
    keltrun::SiteOptions options;
    const auto name = [](const QCheckBox* box, const char* file) {
      return std::string(box->isChecked() ? file : "");
    };
    options.OutputFolder = folder_->text().toStdString();
    options.IndexFile = "index.html";
    options.ResultFile = name(results_, "result_*.html");
    options.AnalysisFile = name(analyses_, "lap_*.html");
    options.LegDataFile = name(legs_, "leg_*.html");
    options.ViewerFile = name(viewer_, "viewer.html");
    options.Lap2File = name(lap_file_, "event.lxm");
    options.ChartOption = ChosenCharts().join(',').toStdString();
    options.ChartFile = options.ChartOption.empty() ? "" : "chart_*.html";
    for (bool* include : {&options.ResultIncludeCourse, &options.AnalysisIncludeCourse,
                          &options.LegDataIncludeCourse, &options.ChartIncludeCourse}) {
      *include = courses_->isChecked();
    }
    options.IndexFileAddMode = add_->isChecked();
    options.Charset = charset_->currentText().toStdString();
    return options;
  }

 private:
  QWidget* FolderRow() {
    auto* row = new QWidget;
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* browse = new QPushButton("Browse…");
    connect(browse, &QPushButton::clicked, this, [this] {
      const QString folder = QFileDialog::getExistingDirectory(this, "Folder", folder_->text());
      if (!folder.isEmpty()) folder_->setText(folder);
    });
    layout->addWidget(folder_);
    layout->addWidget(browse);
    return row;
  }

  static QWidget* Group(const QList<QCheckBox*>& boxes) {
    constexpr int kColumns = 3;
    auto* group = new QGroupBox;
    auto* layout = new QGridLayout(group);
    for (int i = 0; i < boxes.size(); ++i) {
      layout->addWidget(boxes[i], i / kColumns, i % kColumns);
    }
    return group;
  }

  QStringList ChosenCharts() const {
    QStringList modes;
    for (int i = 0; i < charts_.size(); ++i) {
      if (charts_[i]->isChecked()) modes << QString::number(i);
    }
    return modes;
  }

  QLineEdit* folder_ = new QLineEdit;
  QCheckBox* results_ = new QCheckBox("Result lists");
  QCheckBox* analyses_ = new QCheckBox("Split analyses");
  QCheckBox* legs_ = new QCheckBox("Leg analyses");
  QCheckBox* viewer_ = new QCheckBox("Page to browse in");
  QCheckBox* lap_file_ = new QCheckBox("Lap file");
  QList<QCheckBox*> charts_;
  QCheckBox* courses_ = new QCheckBox("Also for courses that several classes run");
  QCheckBox* add_ = new QCheckBox("Add to an index page that is there");
  QComboBox* charset_ = new QComboBox;
};

}  // namespace

std::optional<keltrun::SiteOptions> AskSiteOptions(QWidget* parent,
                                                   const QStringList& chart_modes) {
  SiteDialog dialog(parent, chart_modes);
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return dialog.Options();
}
