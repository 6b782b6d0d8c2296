// The design browser as a person uses it, without a display
// (QT_QPA_PLATFORM=offscreen): ticking folders and categories, picking and
// importing, and the thumbnails drawn only for what is in view. Under a real
// X server with FENNICK_SCREENSHOTS set, BrowserScreenshots saves the
// pictures docs/ shows.
#include <gtest/gtest.h>

#include <QApplication>
#include <QScreen>
#include <QScrollBar>
#include <QStatusBar>
#include <QTest>
#include <QTimer>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "archive/zip_member.h"
#include "browser/ui/browser_view.h"
#include "browser/ui/container_view.h"
#include "browser/ui/import_design_dialog.h"
#include "browser/ui/tick_tree_view.h"
#include "control/addin_ctrl.h"
#include "control/ui/qt_user_interface.h"
#include "core/byte_cursor.h"
#include "core/embroidery_file.h"
#include "core/preferences.h"
#include "tests/test_support.h"

namespace fennick {
namespace {

using Clock = std::chrono::steady_clock;

// Runs the event loop until `done` holds; false after `limit`.
bool WaitUntil(const std::function<bool()>& done, std::chrono::milliseconds limit = std::chrono::seconds(60)) {
  const auto deadline = Clock::now() + limit;
  while (!done()) {
    if (Clock::now() > deadline) return false;
    QTest::qWait(5);
  }
  return true;
}

// A home folder (the drive tree's root) with folders of real designs.
class BrowserWindow : public testing::Test {
 protected:
  BrowserWindow() {
    std::filesystem::create_directories(scratch.Path() / "designs" / "more");
    for (const char* name : {"geometric_objects.pes", "star.pes", "Star.vip", "geometric_objects.jef",
                             "geometric_objects.exp", "shamrockin.pes"}) {
      scratch.Write(std::string("designs/") + name, test::ReadTestFile(name));
    }
    scratch.Write("designs/damaged.dst", {1, 2, 3, 4});
    scratch.Write("designs/readme.txt", test::ToBytes("not a design"));
  }

  std::string Folder(const std::string& name) const { return scratch.File(name) + "/"; }
  // Ticks a folder as a click on its label does.
  TreeItem Tick(ImportDesignDialog& dialog, const std::string& folder) {
    DriveTree& drives = dialog.Frame().Container().Drives();
    const TreeItem item = drives.OpenPath(folder, true);
    EXPECT_NE(item, 0u) << folder;
    drives.Click(item, TreeHit::kLabel, false);
    return item;
  }
  std::vector<std::string> ListNames(ImportDesignDialog& dialog) {
    std::vector<std::string> names;
    for (const BrowserRecord& record : dialog.Frame().List().Model().Records()) names.push_back(record.path.GetFileName());
    return names;
  }

  test::ScratchFolder scratch;
};

TEST_F(BrowserWindow, TickingAFolderListsItsDesignsAndUntickingTakesThemAway) {
  std::string zip = scratch.File("designs/pack.zip");
  ASSERT_EQ(WriteZipMember(DesignPath("Zip:" + zip + ":b/Rose.dst"), test::ReadTestFile("geometric_objects.dst")), 0);
  ASSERT_EQ(WriteZipMember(DesignPath("Zip:" + zip + ":Anchor.pes"), test::ReadTestFile("star.pes")), 0);
  ImportDesignDialog dialog(Folder("designs"));
  dialog.show();
  EXPECT_EQ(dialog.windowTitle(), "Import Design");
  const TreeItem item = Tick(dialog, Folder("designs"));
  EXPECT_EQ(ListNames(dialog), (std::vector<std::string>{"Anchor.pes", "Rose.dst", "damaged.dst", "geometric_objects.exp",
                                                         "geometric_objects.jef", "geometric_objects.pes",
                                                         "shamrockin.pes", "star.pes", "Star.vip"}));
  const auto texts = [&] {
    std::vector<QString> panes;
    for (QLabel* pane : dialog.Frame().statusBar()->findChildren<QLabel*>()) panes.push_back(pane->text());
    return panes;
  };
  EXPECT_EQ(texts(), (std::vector<QString>{"TMP", "Files: 9", "Selected: 0"}));
  dialog.Frame().Container().Drives().Click(item, TreeHit::kLabel, false);
  EXPECT_TRUE(ListNames(dialog).empty());
  EXPECT_EQ(texts()[1], "Files: 0");
}

TEST_F(BrowserWindow, ImportGivesTheSelectionInListOrderAndCloseNothing) {
  for (const int command : {kImportCommand, kCloseCommand, 0}) {
    ImportDesignDialog dialog(Folder("designs"));
    dialog.show();
    Tick(dialog, Folder("designs"));
    BrowserView& view = dialog.Frame().View();
    const QAbstractItemModel& list = *view.model();
    if (command != 0) {
      view.selectionModel()->select(list.index(3, 0), QItemSelectionModel::Select);
      view.selectionModel()->select(list.index(1, 0), QItemSelectionModel::Select);
      emit dialog.Frame().Command(command);
    } else {
      // A double click selects its item and imports it.
      QTest::qWait(50);
      QTest::mouseDClick(view.viewport(), Qt::LeftButton, {}, view.visualRect(list.index(3, 0)).center());
    }
    std::vector<std::string> expected{Folder("designs") + "geometric_objects.exp",
                                      Folder("designs") + "geometric_objects.pes"};
    if (command == kCloseCommand) expected.clear();
    if (command == 0) expected.erase(expected.begin());
    EXPECT_EQ(dialog.selected, expected) << command;
    EXPECT_EQ(dialog.result(), command == kCloseCommand ? 1 : 2) << command;
  }
}

TEST_F(BrowserWindow, OnlyDesignsInViewAreDecodedAndTheInterfaceNeverWaits) {
  const std::vector<uint8_t> design = test::ReadTestFile("geometric_objects.dst");
  std::filesystem::create_directory(scratch.Path() / "many");
  for (int i = 0; i < 1000; ++i) scratch.Write("many/" + std::to_string(10000 + i) + ".dst", design);
  std::filesystem::create_directory(scratch.Path() / "members");
  for (int i = 0; i < 500; ++i) scratch.Write("members/m" + std::to_string(1000 + i) + ".dst", design);
  const std::string zip = "cd '" + scratch.File("members") + "' && zip -q -0 ../many/pack.zip *.dst";
  ASSERT_EQ(std::system(zip.c_str()), 0);
  // Small pictures in a large window: a page of about forty, enough to time.
  PreferenceStore().SetInt(kBrowserSection, "previewSize", 128);
  ImportDesignDialog dialog(Folder("many"));
  dialog.resize(1300, 900);
  dialog.show();
  BrowserListModel& list = dialog.Frame().List();
  BrowserView& view = dialog.Frame().View();

  const auto start = Clock::now();
  Tick(dialog, Folder("many"));
  const auto filled = Clock::now() - start;
  EXPECT_EQ(list.rowCount(), 1500);
  EXPECT_EQ(list.DrawnCount(), 0) << "nothing is decoded while the list fills";
  EXPECT_LT(filled, std::chrono::seconds(2));

  // Pictures come for the rows in view only, while the interface keeps turning.
  ASSERT_TRUE(WaitUntil([&] { return list.DrawnCount() > 0; }));
  const auto firstPicture = Clock::now() - start;
  const auto shown = [&] {
    int count = 0;
    for (int row = 0; row < list.rowCount(); ++row) count += view.visualRect(list.index(row)).intersects(view.viewport()->rect());
    return count;
  };
  ASSERT_TRUE(WaitUntil([&] { return list.DrawnCount() >= shown(); }));
  const auto pageDrawn = Clock::now() - start;
  QTest::qWait(200);
  const int firstPage = list.DrawnCount();
  EXPECT_LE(firstPage, shown() + 1);

  view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum());
  ASSERT_TRUE(WaitUntil([&] { return list.DrawnCount() >= firstPage + shown(); }));
  QTest::qWait(200);
  EXPECT_LE(list.DrawnCount(), firstPage + shown() + 1) << "scrolled past, never drawn";
  const double seconds = std::chrono::duration<double>(pageDrawn - firstPicture).count();
  std::printf("1,500 designs listed in %.1f ms; first picture after %.1f ms; %d pictures at %.0f a second\n",
              std::chrono::duration<double, std::milli>(filled).count(),
              std::chrono::duration<double, std::milli>(firstPicture).count(), firstPage,
              seconds > 0 ? (firstPage - 1) / seconds : 0.0);
}

TEST_F(BrowserWindow, DamagedDesignsAndMissingMediaGetTheStockPicture) {
  PreferenceStore().SetString("Settings", "Catalog Path", Folder("catalog"));
  std::filesystem::create_directory(scratch.Path() / "catalog");
  const std::string present = Folder("designs") + "star.pes";
  scratch.Write("catalog/Catalog.SV",
                test::ToBytes("Flowers\n" + present + "\n\tGone\n/media/nobody/CARD/rose.pes\tCard Pack 3\n"));
  ImportDesignDialog dialog(Folder("designs"));
  dialog.show();
  SContainerView& container = dialog.Frame().Container();
  ASSERT_EQ(container.count(), 2);
  EXPECT_EQ(container.tabText(0), "Browse");
  EXPECT_EQ(container.tabText(1), "Catalog");
  SCatalogTree& catalog = container.Catalog();
  const TreeItem flowers = catalog.Children(0).at(0);
  // A click on the tick box ticks the whole branch; on the label the item alone.
  container.setCurrentIndex(1);
  TickTreeView& tree = *container.CatalogView();
  const QRect line = tree.visualItemRect(tree.ViewItem(flowers));
  TreeItem hit = 0;
  QPoint box;
  for (int x = line.left(); x < line.right() && box.isNull(); ++x) {
    if (tree.HitTest({x, line.center().y()}, hit) == TreeHit::kTickBox) box = {x + 6, line.center().y()};
  }
  ASSERT_FALSE(box.isNull());
  QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, box);
  EXPECT_EQ(catalog.State(flowers), kTickAll);
  EXPECT_EQ(ListNames(dialog), (std::vector<std::string>{"star.pes", "rose.pes"}));
  BrowserListModel& list = dialog.Frame().List();
  ASSERT_TRUE(WaitUntil([&] { return list.DrawnCount() == 2; }));
  const auto picture = [&](int row) {
    return list.data(list.index(row), Qt::DecorationRole).value<QPixmap>().toImage().convertToFormat(QImage::Format_RGB32);
  };
  const QImage stock = BrowserListModel::StockPicture(list.Model().PreviewSize()).convertToFormat(QImage::Format_RGB32);
  EXPECT_EQ(picture(1), stock);
  EXPECT_NE(picture(0), stock);
  BrowserView& view = dialog.Frame().View();
  EXPECT_EQ(view.PointerText(view.visualRect(list.index(1)).center()).toStdString(),
            "/media/nobody/CARD/rose.pesCard Pack 3'");
}

TEST_F(BrowserWindow, TheControlsFileImportOpensTheBrowser) {
  const QtUserInterface ui;
  QTimer::singleShot(0, [this] {
    auto* dialog = qobject_cast<ImportDesignDialog*>(QApplication::activeModalWidget());
    ASSERT_NE(dialog, nullptr);
    Tick(*dialog, Folder("designs"));
    dialog->Frame().View().selectAll();
    emit dialog->Frame().Command(kImportCommand);
  });
  CFennickAddinCtrl control;
  const auto list = static_cast<GlobalHandle>(control.FileImport());
  const std::vector<uint8_t> handles = GlobalCopyOut(list);
  ByteReader in(handles);
  ASSERT_EQ(in.U32LE(), 7u) << "a handle for each design picked";
  Design first;
  ParseEmbroideryFile(first, in.U32LE());
  EXPECT_TRUE(first.stitches.Empty()) << "damaged.dst reads as nothing";
  Design second;
  const GlobalHandle block = in.U32LE();
  ParseEmbroideryFile(second, block);
  EXPECT_GT(second.stitches.Size(), 100u);
  GlobalFree(block);
  GlobalFree(list);
}

// Pictures for docs/, taken under a real X server by scripts/screenshots.sh.
TEST_F(BrowserWindow, Screenshots) {
  const char* folder = std::getenv("FENNICK_SCREENSHOTS");
  if (folder == nullptr || QGuiApplication::platformName() != "xcb") GTEST_SKIP() << "needs X and FENNICK_SCREENSHOTS";
  PreferenceStore().SetString("Settings", "Catalog Path", Folder("designs"));
  scratch.Write("designs/Catalog.SV", test::ToBytes("Geometry\n" + Folder("designs") + "geometric_objects.pes\n" +
                                                    Folder("designs") + "geometric_objects.jef\n\tStars\n" +
                                                    Folder("designs") + "star.pes\nClover\n" + Folder("designs") +
                                                    "shamrockin.pes\n"));
  const auto snap = [&](ImportDesignDialog& dialog, const std::string& name) {
    QTest::qWait(300);
    ASSERT_TRUE(WaitUntil([&] { return dialog.Frame().List().DrawnCount() >= dialog.Frame().List().rowCount(); }));
    QTest::qWait(300);
    const QPixmap picture = dialog.screen()->grabWindow(dialog.winId());
    ASSERT_TRUE(picture.save(QString::fromStdString(std::string(folder) + "/browser/" + name)));
  };
  PreferenceStore().SetInt(kBrowserSection, "previewSize", 128);
  for (const bool threeD : {true, false}) {
    PreferenceStore().SetInt(kBrowserSection, "browse3d", threeD ? 1 : 0);
    ImportDesignDialog dialog(Folder("designs"));
    dialog.resize(1100, 700);
    dialog.show();
    Tick(dialog, Folder("designs"));
    dialog.Frame().View().selectionModel()->select(dialog.Frame().List().index(2), QItemSelectionModel::Select);
    snap(dialog, threeD ? "browser-3d.png" : "browser-flat.png");
  }
  ImportDesignDialog dialog(Folder("designs"));
  dialog.resize(1100, 700);
  dialog.show();
  SContainerView& container = dialog.Frame().Container();
  container.setCurrentIndex(1);
  container.Catalog().Click(container.Catalog().Children(0).at(0), TreeHit::kTickBox, false);
  container.CatalogView()->expandAll();
  snap(dialog, "browser-catalog.png");
}

}  // namespace
}  // namespace fennick
