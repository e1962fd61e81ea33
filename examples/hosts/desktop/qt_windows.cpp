#include "qt_windows.h"

#include <QInputDialog>
#include <QMessageBox>
#include <QProgressDialog>

#include "qt_picture.h"

namespace {

constexpr int kQuietMilliseconds = 300;  // shorter work shows no window

class QtProgress : public keltrun::frmProgressBar {
 public:
  QtProgress(QWidget* parent, const QString& caption) : dialog_(caption, "", 0, 100, parent) {
    dialog_.setCancelButton(nullptr);
    dialog_.setWindowModality(Qt::WindowModal);
    dialog_.setMinimumDuration(kQuietMilliseconds);
    dialog_.setValue(0);
  }
  void SetPercent(std::int32_t percent) override {
    if (percent != dialog_.value()) dialog_.setValue(percent);
  }

 private:
  QProgressDialog dialog_;
};

}  // namespace

std::unique_ptr<keltrun::frmProgressBar> QtWindows::OpenProgress(std::string_view caption) {
  return std::make_unique<QtProgress>(parent_, ToQt(caption));
}

std::optional<std::size_t> QtWindows::ChooseName(std::string_view caption,
                                                 const std::vector<std::string>& names) {
  QStringList items;
  for (const std::string& name : names) {
    items << QString("%1  %2").arg(items.size() + 1).arg(ToQt(name));  // names may be equal
  }
  bool chosen = false;
  const QString item =
      QInputDialog::getItem(parent_, "Choose a lap file", ToQt(caption), items, 0, false, &chosen);
  if (!chosen) return std::nullopt;
  return static_cast<std::size_t>(items.indexOf(item));
}

bool QtWindows::AskYesNo(std::string_view text, std::string_view title) {
  return QMessageBox::question(parent_, ToQt(title), ToQt(text)) == QMessageBox::Yes;
}
