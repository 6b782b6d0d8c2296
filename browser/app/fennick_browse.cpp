// fennick-browse: the design browser alone. It opens at FOLDER (or where the
// browser was last), and prints the designs imported, one a line in their
// text form ("Zip:" members included); exit status 1 when it is closed.
#include <QApplication>
#include <QDir>
#include <cstdio>
#include <string>

#include "browser/ui/import_design_dialog.h"
#include "control/ui/qt_user_interface.h"

int main(int argc, char** argv) {
  const std::string first = argc > 1 ? argv[1] : "";
  if (argc > 2 || first == "--help" || first == "-h") {
    std::fputs("usage: fennick-browse [FOLDER]\n", argc > 2 ? stderr : stdout);
    return argc > 2 ? 2 : 0;
  }
  QApplication application(argc, argv);
  const fennick::QtUserInterface ui;
  const std::string start = first.empty() ? "" : QDir(QString::fromStdString(first)).absolutePath().toStdString() + "/";
  fennick::ImportDesignDialog dialog(start);
  dialog.exec();
  for (const std::string& path : dialog.selected) std::printf("%s\n", path.c_str());
  return dialog.selected.empty() ? 1 : 0;
}
