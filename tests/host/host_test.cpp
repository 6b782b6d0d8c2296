// The reference host end to end: the control loaded as a host loads it, its
// tool bar in the host's window, the design commands and Save As on a real
// design, and a tool pack started from the tool bar over this test's own
// session bus. With FENNICK_SCREENSHOTS set under X, HostWindow.Screenshots
// saves the window for docs/.
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>
#include <QProcess>
#include <QScreen>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "control/host/host_window.h"
#include "core/format_table.h"
#include "tests/test_support.h"

namespace fennick {
namespace {

namespace fs = std::filesystem;

std::string Sample(const std::string& name) { return std::string(FENNICK_TEST_DATA) + "/" + name; }

bool WaitUntil(const std::function<bool()>& done, int milliseconds = 30000) {
  for (int waited = 0; !done(); waited += 20) {
    if (waited > milliseconds) return false;
    QTest::qWait(20);
  }
  return true;
}

// Processes running `program`, found by their executable.
int Running(const std::string& program) {
  int count = 0;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator("/proc", error)) {
    std::error_code unreadable;
    if (fs::read_symlink(entry.path() / "exe", unreadable) == fs::path(program)) ++count;
  }
  return count;
}

class HostTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(QProcess::execute(FENNICK_TOOL, {"--register", QString::fromStdString(scratch.File("etc1")),
                                               FENNICK_TOOL_PACK}),
              0);
    window = std::make_unique<HostWindow>();
    ASSERT_TRUE(window->OpenFile(Sample("geometric_objects.pes")));
    window->resize(1000, 700);
    window->show();
  }
  void Trigger(int32_t command) {
    for (QAction* action : window->findChildren<QAction*>(QString::number(command))) return action->trigger();
    FAIL() << "no action for " << command;
  }
  const Design& Page() const { return window->Page(); }

  test::ScratchFolder scratch;
  std::unique_ptr<HostWindow> window;
};

TEST_F(HostTest, DesignCommandsFromTheHostChangeThePage) {
  const size_t stitches = Page().stitches.Size();
  Trigger(FENNICK_CMD_AUTO_BASTE);
  EXPECT_GT(Page().stitches.Size(), stitches);

  ASSERT_TRUE(window->OpenFile(Sample("geometric_objects.pes")));
  const size_t threads = Page().threads.size();
  Trigger(FENNICK_CMD_COLOR_SORT);
  EXPECT_LE(Page().threads.size(), threads);
  EXPECT_FALSE(Page().stitches.Empty());

  window->SetHoop(400, 300);
  Trigger(FENNICK_CMD_FIT_HOOP);
  EXPECT_LE(Page().maxX - Page().minX, 400);
  EXPECT_LE(Page().maxY - Page().minY, 300);
}

TEST_F(HostTest, SaveAsWritesAFileThatReadsBack) {
  // The design's own format is offered first; a name typed without extension takes its extension.
  const std::string target = scratch.File("saved.pes");
  QTimer::singleShot(0, [&] {
    ASSERT_TRUE(WaitUntil([] { return qobject_cast<QFileDialog*>(QApplication::activeModalWidget()) != nullptr; }));
    auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
    EXPECT_EQ(dialog->selectedNameFilter(), "PES files (*.pes)");
    EXPECT_TRUE(dialog->nameFilters().contains("DST files (*.dst)"));
    auto* name = dialog->findChild<QLineEdit*>("fileNameEdit");
    ASSERT_NE(name, nullptr);
    name->setText(QString::fromStdString(scratch.File("saved")));
    QTest::keyClick(name, Qt::Key_Return);
  });
  const size_t stitches = Page().stitches.Size();
  for (QAction* action : window->findChildren<QAction*>()) {
    if (action->text() == "Save &As...") action->trigger();
  }
  ASSERT_TRUE(fs::exists(target));
  Design saved;
  ASSERT_EQ(ReadDesignFile(saved, target, LastFile::kLeave), 0);
  EXPECT_GE(saved.stitches.Size(), stitches / 2);
  EXPECT_EQ(Page().name, target);  // the page took the saved design
}

TEST_F(HostTest, AToolPackFromTheToolBarChangesThePageAndEnds) {
  ASSERT_NE(window->ToolBar(), nullptr);
  auto* mirror = window->ToolBar()->findChild<QAction*>("32787");
  ASSERT_NE(mirror, nullptr) << "the pack's first button";
  const int32_t left = Page().minX;
  const int32_t right = Page().maxX;
  const std::string tool = fs::canonical(FENNICK_TOOL).string();
  mirror->trigger();
  ASSERT_TRUE(WaitUntil([&] { return Page().minX == -right && Page().maxX == -left; }))
      << "the mirrored design on the page";
  EXPECT_TRUE(WaitUntil([&] { return Running(tool) == 0; })) << "the tool ended";
}

// The window for docs/, taken under a real X server by scripts/screenshots.sh.
TEST_F(HostTest, Screenshots) {
  const char* folder = std::getenv("FENNICK_SCREENSHOTS");
  if (folder == nullptr || QGuiApplication::platformName() != "xcb") GTEST_SKIP() << "needs X and FENNICK_SCREENSHOTS";
  window->SetHoop(1300, 1800);
  QTest::qWait(500);
  const QPixmap picture = window->screen()->grabWindow(window->winId());
  ASSERT_TRUE(picture.save(QString::fromStdString(std::string(folder) + "/windows/host.png")));
}

}  // namespace
}  // namespace fennick
