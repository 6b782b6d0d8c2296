// The Reduce Needles dialog without a display, and the renderer's pixels as Qt
// draws them. ReduceNeedlesWindow.Screenshots saves the picture docs/ shows.
#include <gtest/gtest.h>

#include <QApplication>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <cstdlib>
#include <filesystem>

#include "control/ui/blit.h"
#include "control/ui/reduce_needles_dialog.h"
#include "core/format_table.h"
#include "tests/test_support.h"

namespace fennick {
namespace {

class ReduceNeedlesWindow : public testing::Test {
 protected:
  // 17 threads in 15 colours: a ring of squares.
  ReduceNeedlesWindow() { EXPECT_EQ(ReadDesignFile(design, FENNICK_TEST_DATA "/reorder.pes", LastFile::kLeave), 0); }

  template <typename Widget = QWidget>
  static Widget* Find(QWidget& dialog, const char* name) {
    auto* widget = dialog.findChild<Widget*>(QString::fromLatin1(name));
    EXPECT_NE(widget, nullptr) << name;
    return widget;
  }
  static QImage Picture(QWidget& dialog, const char* pane) { return Find(dialog, pane)->grab().toImage(); }
  static QStringList Lines(QWidget& dialog, const char* name) {
    QStringList lines;
    const auto* list = Find<QListWidget>(dialog, name);
    while (lines.size() < list->count()) lines << list->item(lines.size())->text();
    return lines;
  }
  static void Click(QWidget& dialog, const char* button, int times = 1) {
    for (int i = 0; i < times; ++i) Find<QToolButton>(dialog, button)->click();
  }

  test::ScratchFolder scratch;  // preferences start empty
  Design design;
};

TEST_F(ReduceNeedlesWindow, TheSpinRedrawsTheRightPaneAndListAloneAndTheSmallButtonsHideTheLists) {
  SVReduceNeedleDlg dialog(design);
  dialog.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
  auto* edit = Find<QLineEdit>(dialog, "edit");
  EXPECT_EQ(edit->text(), "15");
  const QImage left = Picture(dialog, "originalPreview"), right = Picture(dialog, "modifiedPreview");
  const QStringList lines = Lines(dialog, "originalList");
  EXPECT_EQ(Lines(dialog, "modifiedList"), lines);

  Click(dialog, "down", 10);
  EXPECT_EQ(edit->text(), "5");
  EXPECT_NE(Picture(dialog, "modifiedPreview"), right);
  EXPECT_NE(Lines(dialog, "modifiedList"), lines);
  EXPECT_EQ(Lines(dialog, "modifiedList").size(), 17) << "every stop keeps its line";
  EXPECT_EQ(Picture(dialog, "originalPreview"), left);
  EXPECT_EQ(Lines(dialog, "originalList"), lines);
  Click(dialog, "down", 6);
  EXPECT_EQ(edit->text(), "1") << "the spin's bottom";
  edit->selectAll();
  QTest::keyClicks(edit, "99");
  EXPECT_EQ(edit->text(), "15") << "the model's correction shown";

  const int paneHeight = Find(dialog, "originalPreview")->height();
  const auto hidden = [&] {
    return std::pair(Find(dialog, "originalList")->isHidden(), Find(dialog, "modifiedList")->isHidden());
  };
  Click(dialog, "1101");
  QCoreApplication::processEvents();
  EXPECT_EQ(hidden(), std::pair(true, false));
  EXPECT_GT(Find(dialog, "originalPreview")->height(), paneHeight) << "the pane takes the room";
  Click(dialog, "1103");
  EXPECT_EQ(hidden(), std::pair(true, true));
  Click(dialog, "1101");
  EXPECT_EQ(hidden(), std::pair(false, true));
}

TEST_F(ReduceNeedlesWindow, OkGivesTheReducedDesignAndCancelNothing) {
  const std::tuple<int, bool, bool> cases[] = {{11, true, true}, {0, true, false}, {11, false, false}};
  for (const auto& [steps, ok, reduced] : cases) {  // clicks down, OK or Cancel, a result
    SCOPED_TRACE(testing::Message() << steps << (ok ? " OK" : " Cancel"));
    QTimer::singleShot(0, [&, steps = steps, ok = ok] {
      auto* dialog = qobject_cast<SVReduceNeedleDlg*>(QApplication::activeModalWidget());
      ASSERT_NE(dialog, nullptr);
      Click(*dialog, "down", steps);
      dialog->findChild<QDialogButtonBox*>()->button(ok ? QDialogButtonBox::Ok : QDialogButtonBox::Cancel)->click();
    });
    Design result;
    ASSERT_EQ(SVReduceNeedleDlg::Run(design, result), reduced);
    if (!reduced) continue;
    EXPECT_EQ(CountDistinctColors(result), 4);
    EXPECT_EQ(result.threads.size(), design.threads.size());
    EXPECT_EQ(test::Nodes(result), test::Nodes(design)) << "the stitches and their stops stay";
  }
}

// Blocks past the 250th are left out: the last, red, among blue ones.
TEST_F(ReduceNeedlesWindow, APaneShowsTheFirst250Blocks) {
  for (const size_t blocks : {250u, 251u}) {
    std::vector<uint32_t> colors(blocks, ColorRef(0, 0, 255));
    colors.back() = ColorRef(255, 0, 0);
    Design stack = test::StitchPerColour(colors);
    stack.stitches.Tail()->dx = 300;
    stack.Centre();
    SVReduceNeedleDlg dialog(stack);
    dialog.show();
    const QImage picture = Picture(dialog, "originalPreview");
    bool red = false;
    for (int i = 0; i < picture.width() * picture.height(); ++i) {
      const QColor pixel = picture.pixelColor(i % picture.width(), i / picture.width());
      red = red || (pixel.red() > 128 && pixel.green() < 64 && pixel.blue() < 64);
    }
    EXPECT_EQ(red, blocks == 250) << blocks;
  }
}

TEST(Blit, CopiesThePixelsOpaqueAndStretchesThemIntoTheTarget) {
  StitchBitmap bitmap, one;
  ASSERT_EQ(bitmap.Create(3, 2) | one.Create(1, 1), 0);
  bitmap.pixels = {0x102030, 0x405060, 0x708090, 0xA0B0C0, 0xD0E0F0, 0x000000};
  one.pixels = {0x336699};
  EXPECT_TRUE(ToQImage(StitchBitmap()).isNull());
  const QImage image = ToQImage(bitmap);
  ASSERT_EQ(image.size(), QSize(3, 2));
  for (size_t i = 0; i < 6; ++i) {  // the stored words: pixel() would hide a missing alpha
    const auto* row = reinterpret_cast<const uint32_t*>(image.constScanLine(static_cast<int>(i / 3)));
    EXPECT_EQ(row[i % 3], 0xFF000000u | bitmap.pixels[i]) << i;
  }
  QImage canvas(6, 5, QImage::Format_RGB32);
  canvas.fill(Qt::black);
  {
    QPainter painter(&canvas);
    Blit(bitmap, painter, QRect(1, 1, 3, 2));  // at its own size
    Blit(one, painter, QRect(2, 3, 4, 2));     // stretched
  }
  for (int i = 0; i < 30; ++i) {
    const int x = i % 6, y = i / 6;
    uint32_t expected = x >= 2 && y >= 3 ? 0x336699 : 0;
    if (x >= 1 && x < 4 && y >= 1 && y < 3) expected = bitmap.pixels[static_cast<size_t>((y - 1) * 3 + x - 1)];
    EXPECT_EQ(canvas.pixel(x, y), 0xFF000000u | expected) << x << "," << y;
  }
}

// Taken under a real X server by scripts/screenshots.sh.
TEST_F(ReduceNeedlesWindow, Screenshots) {
  const char* folder = std::getenv("FENNICK_SCREENSHOTS");
  if (folder == nullptr || QGuiApplication::platformName() != "xcb") GTEST_SKIP() << "needs X and FENNICK_SCREENSHOTS";
  SVReduceNeedleDlg dialog(design);
  dialog.resize(820, 640);
  dialog.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
  Find<QLineEdit>(dialog, "edit")->selectAll();
  QTest::keyClicks(Find<QLineEdit>(dialog, "edit"), "6");
  QTest::qWait(300);
  std::filesystem::create_directories(std::string(folder) + "/windows");
  const QPixmap picture = dialog.screen()->grabWindow(dialog.winId());
  ASSERT_TRUE(picture.save(QString::fromStdString(std::string(folder) + "/windows/reduce-needles.png")));
}

}  // namespace
}  // namespace fennick
