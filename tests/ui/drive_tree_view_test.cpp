// The drive tree's window over a scratch home folder and a fake mount table:
// the folder commands of its context menu, and roots that follow media.
#include <gtest/gtest.h>

#include <QApplication>
#include <QContextMenuEvent>
#include <QLineEdit>
#include <QMenu>
#include <QTest>
#include <QTimer>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "browser/ui/drive_tree_view.h"
#include "core/user_interface.h"
#include "tests/test_support.h"

namespace fennick {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

constexpr char kDisk[] = "20 1 8:1 / / rw - ext4 /dev/sda1 rw\n";

class DriveTreeWindow : public testing::Test {
 protected:
  DriveTreeWindow() : home(fs::canonical(scratch.Path()).string()) {
    fs::create_directories(scratch.Path() / ".system/proc/self");
    fs::create_directories(scratch.Path() / "projects");
    Mount(kDisk);
    const DriveSources sources{scratch.File(".system"), home};
    tree = std::make_unique<DriveTree>(nullptr, sources);
    tree->BuildDrives();
    view = std::make_unique<DriveTreeView>(*tree);
    view->show();
  }
  void Mount(const std::string& table) const { std::ofstream(scratch.File(".system/proc/self/mountinfo")) << table; }
  Names Texts(TreeItem item) const {
    Names texts;
    for (const TreeItem child : tree->Children(item)) texts.push_back(tree->Text(child));
    return texts;
  }
  std::string Selected() const { return tree->ItemPath(tree->Selected()); }
  QLineEdit* Editor() const { return qobject_cast<QLineEdit*>(view->indexWidget(view->currentIndex())); }
  void Command(int command) {
    for (QAction* action : view->ContextMenu().actions()) {
      if (action->data().toInt() == command) action->trigger();
    }
  }
  // Enter commits on the next turn of the event loop.
  void Type(const QString& text) {
    ASSERT_NE(Editor(), nullptr);
    Editor()->setText(text);
    QTest::keyClick(Editor(), Qt::Key_Return);
    QCoreApplication::processEvents();
  }

  test::ScratchFolder scratch;
  std::string home;
  std::unique_ptr<DriveTree> tree;
  std::unique_ptr<DriveTreeView> view;
};

TEST_F(DriveTreeWindow, FolderCommandsOfTheContextMenu) {
  const TreeItem work = tree->OpenPath(home + "/projects", false);
  ASSERT_NE(work, 0u);
  Names offered;
  QTimer::singleShot(0, [&] {
    if (auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget())) {
      for (QAction* action : menu->actions()) {
        offered.push_back(action->text().toStdString() + " " + action->data().toString().toStdString());
      }
      menu->close();
    }
  });
  const QPoint point = view->visualItemRect(view->ViewItem(work)).center();
  QContextMenuEvent click(QContextMenuEvent::Mouse, point, view->viewport()->mapToGlobal(point));
  QApplication::sendEvent(view->viewport(), &click);
  EXPECT_EQ(tree->Selected(), work) << "the right click selects first";
  EXPECT_EQ(offered, (Names{"Explore... 32805", "New Folder 32850", "Rename Folder 32849", "Delete Folder 32851"}));

  const fs::path folder = scratch.Path() / "projects";
  Command(kNewFolderCommand);
  EXPECT_TRUE(fs::is_directory(folder / "New Folder"));
  EXPECT_EQ(Selected(), home + "/projects/New Folder/");
  ASSERT_NE(Editor(), nullptr) << "the new folder's label is open for editing";
  QTest::keyClick(Editor(), Qt::Key_Escape);

  tree->Select(work);
  Command(kNewFolderCommand);
  EXPECT_EQ(Selected(), home + "/projects/New Folder(2)/");
  Type("Renamed");
  EXPECT_TRUE(fs::is_directory(folder / "Renamed"));
  EXPECT_FALSE(fs::exists(folder / "New Folder(2)"));
  EXPECT_EQ(view->currentItem()->text(0), "Renamed");

  // A name that is taken leaves the folder and its label as they were.
  Command(kRenameFolderCommand);
  Type("New Folder");
  EXPECT_TRUE(fs::is_directory(folder / "Renamed"));
  EXPECT_EQ(view->currentItem()->text(0), "Renamed");

  struct Yes : QuietUserInterface {
    MessageAnswer ShowMessage(const std::string&, const std::string&, MessageButtons) override {
      return MessageAnswer::kYes;
    }
  } yes;
  Command(kDeleteFolderCommand);
  EXPECT_FALSE(fs::exists(folder / "Renamed"));
  EXPECT_EQ(Texts(work), Names{"New Folder"});

  tree->Select(tree->Children(0).back());
  Command(kRenameFolderCommand);
  EXPECT_EQ(Editor(), nullptr) << "a root is not renamed";
}

TEST_F(DriveTreeWindow, MediaChangesFollowTheMountTable) {
  const TreeItem projects = tree->OpenPath(home + "/projects", true);
  tree->Click(projects, TreeHit::kTickBox, false);
  Mount(std::string(kDisk) + "40 20 8:17 / /media/ann/CARD rw - vfat /dev/sdb1 rw\n");
  view->MountsChanged();
  EXPECT_EQ(Texts(0), (Names{"/", home + "/", "/media/ann/CARD/"}));
  EXPECT_EQ(view->topLevelItemCount(), 3);
  EXPECT_EQ(view->topLevelItem(2)->text(0), "/media/ann/CARD/");
  EXPECT_EQ(tree->Selected(), projects) << "the selection survives new roots";
  EXPECT_TRUE(IsTicked(tree->State(projects))) << "and so do the ticks";

  Mount(kDisk);
  view->MountsChanged();
  EXPECT_EQ(Texts(0), (Names{"/", home + "/"}));
  EXPECT_EQ(view->topLevelItemCount(), 2);
  EXPECT_EQ(tree->Selected(), projects);
  EXPECT_TRUE(IsTicked(tree->State(projects)));

  // A remount of the disk reads the open folders again, without a rebuild.
  const TreeItem kept = tree->Selected();
  fs::create_directory(scratch.Path() / "fresh");
  Mount("21 1 8:1 / / rw,noatime - ext4 /dev/sda1 rw\n");
  view->MountsChanged();
  EXPECT_EQ(tree->Selected(), kept);
  const Names folders = Texts(tree->Children(0).back());
  EXPECT_NE(std::find(folders.begin(), folders.end(), "fresh"), folders.end());
}

}  // namespace
}  // namespace fennick
