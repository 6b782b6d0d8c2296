// fennick-host [FILE]: the reference host, one design page with the
// control's tool bar.
#include <QApplication>
#include <cstdio>
#include <cstring>

#include "control/host/host_window.h"

int main(int argc, char** argv) {
  if (argc > 1 && (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0)) {
    std::puts("usage: fennick-host [FILE]\n\nA design page with the Fennick control's tool bar; FILE is opened on it.");
    return 0;
  }
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
