// The preference sheet as a person uses it: typing, clicking and the sheet's
// buttons, seen in the store. Under an X server with FENNICK_SCREENSHOTS set,
// PreferenceSheet.Screenshots saves the pictures docs/ shows.
#include "control/ui/prop_sheet.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QSlider>
#include <QTabWidget>
#include <QTest>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <tuple>

#include "core/preferences.h"
#include "tests/test_support.h"

namespace fennick {
namespace {

// A control of the sheet's page `tab`, which is made current, by its object name.
template <typename Widget>
Widget* Control(SPropSheet& sheet, int tab, const char* name) {
  sheet.Tabs().setCurrentIndex(tab);
  auto* widget = sheet.Tabs().widget(tab)->findChild<Widget*>(name);
  EXPECT_NE(widget, nullptr) << name;
  return widget;
}

// Clicks where a check box's or radio button's mark is, inside any button.
void Click(QAbstractButton* button) { QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(6, button->height() / 2)); }

void Type(QLineEdit* edit, const char* text) {
  edit->selectAll();
  QTest::keyClicks(edit, text);
}

QPushButton* SheetButton(SPropSheet& sheet, QDialogButtonBox::StandardButton which) {
  return sheet.findChild<QDialogButtonBox*>()->button(which);
}

TEST(PreferenceSheet, ControlsReachThePagesAndApplyWrites) {
  test::ScratchFolder scratch;
  SPropSheet sheet("Fennick Preferences");
  sheet.show();
  ASSERT_EQ(sheet.Tabs().count(), 4);
  for (int i = 0; const char* title : {"Color Sort", "Baste", "Conversion", "Tessimo"}) {
    EXPECT_EQ(sheet.Tabs().tabText(i++), title);
  }
  EXPECT_FALSE(sheet.ApplyButton().isEnabled());

  auto* threshold = Control<QLineEdit>(sheet, 0, "threshold");
  Type(threshold, "101");
  EXPECT_EQ(threshold->text(), "100");
  EXPECT_TRUE(sheet.ApplyButton().isEnabled());

  auto* length = Control<QLineEdit>(sheet, 1, "1020");
  Type(length, "101");
  EXPECT_EQ(length->text(), "100") << "corrected at once";
  auto* edge = Control<QSlider>(sheet, 1, "1078");
  QTest::keyClick(edge, Qt::Key_Right);
  EXPECT_EQ(Control<QLabel>(sheet, 1, "1079")->text(), "2 mm");
  Click(Control<QPushButton>(sheet, 1, "default"));
  EXPECT_EQ(length->text(), "6");
  EXPECT_EQ(edge->value(), 1);

  auto* pes5 = Control<QCheckBox>(sheet, 2, "1094");
  Click(Control<QRadioButton>(sheet, 2, "1016"));  // .SEW
  EXPECT_TRUE(pes5->isHidden());
  Type(Control<QLineEdit>(sheet, 2, "1033"), "150");
  auto* rotate = Control<QCheckBox>(sheet, 2, "1040");
  Click(Control<QCheckBox>(sheet, 2, "1042"));
  EXPECT_FALSE(rotate->isChecked() || rotate->isEnabled());
  Click(Control<QCheckBox>(sheet, 2, "1037"));
  EXPECT_FALSE(Control<QLineEdit>(sheet, 2, "1035")->isEnabled());
  Click(Control<QRadioButton>(sheet, 2, "1013"));  // .PES
  EXPECT_FALSE(pes5->isHidden());

  Click(&sheet.ApplyButton());
  EXPECT_FALSE(sheet.ApplyButton().isEnabled());
  EXPECT_EQ(GetColorSortThreshold(), 100);
  EXPECT_EQ(GetBaste().length, 6);
  ConversionSettings sew;
  ReadConversion("sew", sew);
  EXPECT_EQ(std::tuple(sew.hoopWidth, sew.bothOrientations, sew.rotate, sew.splitColors), std::tuple(150, 1, 0, 0));
  EXPECT_TRUE(sheet.isVisible()) << "Apply keeps the sheet open";
}

TEST(PreferenceSheet, CancelWritesNothingAndOkWritesAll) {
  test::ScratchFolder scratch;
  {
    SPropSheet sheet("Fennick Properties");
    sheet.show();
    Type(Control<QLineEdit>(sheet, 0, "threshold"), "3");
    QTest::keyClick(Control<QSlider>(sheet, 3, "1010"), Qt::Key_End);
    Click(SheetButton(sheet, QDialogButtonBox::Cancel));
    EXPECT_EQ(sheet.result(), QDialog::Rejected);
    EXPECT_FALSE(std::filesystem::exists(scratch.Path() / "config")) << "Cancel wrote the store";
  }
  SPropSheet sheet("Fennick Properties");
  sheet.show();
  EXPECT_EQ(Control<QLineEdit>(sheet, 0, "threshold")->text(), "5");
  auto* maxFill = Control<QSlider>(sheet, 3, "1010");
  QTest::keyClick(maxFill, Qt::Key_End);
  EXPECT_EQ(Control<QLineEdit>(sheet, 3, "readout1010")->text(), "25.0 mm");
  Click(SheetButton(sheet, QDialogButtonBox::Ok));
  EXPECT_EQ(sheet.result(), QDialog::Accepted);
  EXPECT_EQ(PreferenceStore(PreferenceTree::kResize).GetInt("", "MaxSL", 0), 250);
  EXPECT_EQ(PreferenceStore().GetInt("Conversion", "vipnc", 0), 60) << "every page writes on OK";
}

// Pictures for docs/, taken under a real X server by scripts/screenshots.sh.
TEST(PreferenceSheet, Screenshots) {
  const char* folder = std::getenv("FENNICK_SCREENSHOTS");
  if (folder == nullptr || QGuiApplication::platformName() != "xcb") GTEST_SKIP() << "needs X and FENNICK_SCREENSHOTS";
  test::ScratchFolder scratch;
  SPropSheet sheet("Fennick Preferences");
  sheet.show();
  for (int i = 0; const char* name : {"colorsort", "baste", "conversion", "tessimo"}) {
    sheet.Tabs().setCurrentIndex(i++);
    QTest::qWait(300);
    const QPixmap picture = sheet.screen()->grabWindow(sheet.winId());
    const std::string path = std::string(folder) + "/windows/preferences-" + name + ".png";
    EXPECT_TRUE(picture.save(QString::fromStdString(path))) << path;
  }
}

}  // namespace
}  // namespace fennick
