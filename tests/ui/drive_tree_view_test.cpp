// The drive tree's window over a scratch home folder and a fake mount table:
// the folder commands of its context menu, the wheel, and roots that follow
// media as they come and go.
#include <gtest/gtest.h>

#include <QApplication>
#include <QContextMenuEvent>
#include <QLineEdit>
#include <QMenu>
#include <QScrollBar>
#include <QTest>
#include <QTimer>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "browser/ui/drive_tree_view.h"
#include "tests/test_support.h"

namespace fennick {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

constexpr char kDisk[] = "20 1 8:1 / / rw - ext4 /dev/sda1 rw\n";
constexpr char kCard[] = "40 20 8:17 / /media/ann/CARD rw - vfat /dev/sdb1 rw\n";

class DriveTreeWindow : public testing::Test {
 protected:
  DriveTreeWindow() {
    fs::create_directories(scratch.Path() / ".system/proc/self");
    fs::create_directories(scratch.Path() / "work");
    home = fs::canonical(scratch.Path()).string();
    Mount(kDisk);
    const DriveSources sources{scratch.File(".system"), home};
    tree = std::make_unique<DriveTree>(nullptr, sources);
    tree->BuildDrives();
    view = std::make_unique<DriveTreeView>(*tree, sources);
    view->show();
  }
  void Mount(const std::string& table) const { std::ofstream(scratch.File(".system/proc/self/mountinfo")) << table; }
  Names Texts(TreeItem item) const {
    Names texts;
    for (const TreeItem child : tree->Children(item)) texts.push_back(tree->Text(child));
    return texts;
  }
  void Command(int command) {
    for (QAction* action : view->ContextMenu().actions()) {
      if (action->data().toInt() == command) action->trigger();
    }
  }
  QLineEdit* Editor() const { return qobject_cast<QLineEdit*>(view->indexWidget(view->currentIndex())); }
  std::string Selected() const { return tree->ItemPath(tree->Selected()); }

  test::ScratchFolder scratch;
  std::string home;
  std::unique_ptr<DriveTree> tree;
  std::unique_ptr<DriveTreeView> view;
};

TEST_F(DriveTreeWindow, RightClickSelectsTheFolderAndOffersItsCommands) {
  const TreeItem work = tree->OpenPath(home + "/work", false);
  ASSERT_NE(work, 0u);
  std::vector<std::pair<QString, int>> offered;
  QTimer::singleShot(0, [&] {
    if (auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget())) {
      for (QAction* action : menu->actions()) offered.emplace_back(action->text(), action->data().toInt());
      menu->close();
    }
  });
  const QPoint point = view->visualItemRect(view->ViewItem(work)).center();
  QContextMenuEvent event(QContextMenuEvent::Mouse, point, view->viewport()->mapToGlobal(point));
  QApplication::sendEvent(view->viewport(), &event);
  EXPECT_EQ(tree->Selected(), work);
  EXPECT_EQ(offered, (std::vector<std::pair<QString, int>>{
                         {"Explore...", 32805}, {"New Folder", 32850}, {"Rename Folder", 32849}, {"Delete Folder", 32851}}));
}

TEST_F(DriveTreeWindow, FolderCommandsChangeTheDiskAndTheTree) {
  const TreeItem work = tree->OpenPath(home + "/work", true);
  const fs::path folder = scratch.Path() / "work";

  Command(kNewFolderCommand);
  EXPECT_TRUE(fs::is_directory(folder / "New Folder"));
  EXPECT_EQ(Selected(), home + "/work/New Folder/");
  ASSERT_NE(Editor(), nullptr) << "the new folder's label is open for editing";
  QTest::keyClick(Editor(), Qt::Key_Escape);

  tree->Select(work);
  Command(kNewFolderCommand);
  EXPECT_EQ(Selected(), home + "/work/New Folder(2)/");
  ASSERT_NE(Editor(), nullptr);
  Editor()->setText("Renamed");
  QTest::keyClick(Editor(), Qt::Key_Return);
  EXPECT_TRUE(fs::is_directory(folder / "Renamed"));
  EXPECT_FALSE(fs::exists(folder / "New Folder(2)"));
  EXPECT_EQ(view->currentItem()->text(0), "Renamed");

  // A name that is taken leaves the folder and its label as they were.
  Command(kRenameFolderCommand);
  ASSERT_NE(Editor(), nullptr);
  Editor()->setText("New Folder");
  QTest::keyClick(Editor(), Qt::Key_Return);
  EXPECT_TRUE(fs::is_directory(folder / "Renamed"));
  EXPECT_EQ(view->currentItem()->text(0), "Renamed");
  EXPECT_EQ(Texts(work), (Names{"New Folder", "Renamed"}));

  Command(kDeleteFolderCommand);
  EXPECT_FALSE(fs::exists(folder / "Renamed"));
  EXPECT_EQ(Texts(work), Names{"New Folder"});

  // A root is a place, not a folder to rename.
  tree->Select(tree->Children(0).back());
  Command(kRenameFolderCommand);
  EXPECT_EQ(Editor(), nullptr);
}

TEST_F(DriveTreeWindow, EachWheelNotchMovesOneLine) {
  for (int i = 0; i < 60; ++i) fs::create_directory(scratch.Path() / "work" / ("f" + std::to_string(100 + i)));
  tree->OpenPath(home + "/work/f100", false);
  view->resize(200, 150);
  QCoreApplication::processEvents();
  QScrollBar& bar = *view->verticalScrollBar();
  ASSERT_GT(bar.maximum(), 20);
  bar.setValue(10);
  // Small deltas add up to a notch; a positive delta scrolls up.
  for (const auto& [delta, value] : {std::pair{-120, 11}, {-240, 13}, {60, 13}, {60, 12}, {-90, 12}, {-30, 13}}) {
    QWheelEvent wheel(QPointF(10, 10), view->viewport()->mapToGlobal(QPointF(10, 10)), {}, {0, delta}, Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(view->viewport(), &wheel);
    EXPECT_EQ(bar.value(), value) << delta;
  }
}

TEST_F(DriveTreeWindow, MediaChangesFollowTheMountTable) {
  const TreeItem work = tree->OpenPath(home + "/work", true);
  Mount(std::string(kDisk) + kCard);
  view->MountsChanged();
  EXPECT_EQ(Texts(0), (Names{"/", home + "/", "/media/ann/CARD/"}));
  EXPECT_EQ(view->topLevelItemCount(), 3);
  EXPECT_EQ(Selected(), home + "/work/") << "the selection survives the new roots";

  Mount(kDisk);
  view->MountsChanged();
  EXPECT_EQ(Texts(0), (Names{"/", home + "/"}));
  EXPECT_EQ(Selected(), home + "/work/");

  // A remount of the disk reads the open folders again, without a rebuild.
  const TreeItem kept = tree->Selected();
  EXPECT_NE(kept, work);
  fs::create_directory(scratch.Path() / "fresh");
  Mount("21 1 8:1 / / rw,noatime - ext4 /dev/sda1 rw\n");
  view->MountsChanged();
  EXPECT_EQ(tree->Selected(), kept);
  const Names roots = Texts(tree->Children(0).back());
  EXPECT_NE(std::find(roots.begin(), roots.end(), "fresh"), roots.end());
}

}  // namespace
}  // namespace fennick
