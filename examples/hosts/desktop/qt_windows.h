// The component's windows as Qt dialogs.
#pragma once

#include <QWidget>

#include "keltrun2/keltrun2.h"

class QtWindows : public keltrun::HostWindows {
 public:
  explicit QtWindows(QWidget* parent) : parent_(parent) {}

  std::unique_ptr<keltrun::frmProgressBar> OpenProgress(std::string_view caption) override;
  std::optional<std::size_t> ChooseName(std::string_view caption,
                                        const std::vector<std::string>& names) override;
  bool AskYesNo(std::string_view text, std::string_view title) override;

 private:
  QWidget* parent_;
};
