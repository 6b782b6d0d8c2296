// fennick-preferences: the preference sheet alone, titled as the control's
// ShowFennickPreferences titles it. OK and Apply write the settings, Cancel
// writes nothing; the exit status is 0 either way.
#include <QApplication>
#include <cstdio>
#include <string>

#include "control/ui/prop_sheet.h"

int main(int argc, char** argv) {
  const std::string first = argc > 1 ? argv[1] : "";
  if (argc > 1) {
    const bool help = argc == 2 && (first == "--help" || first == "-h");
    std::fputs("usage: fennick-preferences\n", help ? stdout : stderr);
    return help ? 0 : 2;
  }
  QApplication application(argc, argv);
  fennick::SPropSheet sheet(QStringLiteral("Fennick Preferences"));
  sheet.exec();
  return 0;
}
