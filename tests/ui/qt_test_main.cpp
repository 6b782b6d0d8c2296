// The main of the window tests: a QApplication, offscreen unless the caller
// chose a platform.
#include <gtest/gtest.h>

#include <QApplication>

int main(int argc, char** argv) {
  // Listing the tests at build time has no display either.
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
