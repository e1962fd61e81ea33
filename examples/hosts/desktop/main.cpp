// A small desktop host of Keltrun2.
#include <QApplication>

#include "main_window.h"

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  keltrun::SetStartup({.Folder = KELTRUN2_DATA_FOLDER});
  MainWindow window;
  window.show();
  if (argc > 1) window.Open(QString::fromLocal8Bit(argv[1]));
  return application.exec();
}
