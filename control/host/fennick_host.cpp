// fennick-host [FILE]: the reference host, one design page with the
// control's tool bar.
#include <QApplication>
#include <cstdio>

#include "control/host/host_window.h"

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QApplication::setApplicationName("fennick-host");
  fennick::HostWindow window;
  if (argc > 1 && !window.OpenFile(argv[1])) {
    std::fprintf(stderr, "fennick-host: %s: no design could be read from it\n", argv[1]);
  }
  window.resize(1000, 760);
  window.show();
  return QApplication::exec();
}
