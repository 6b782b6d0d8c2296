// The drive tree over a scratch home folder, which a fake mount table puts on
// the disk of "/" or on a removable medium.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>

#include "browser/drive_tree.h"
#include "test_support.h"

namespace fennick {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

struct RecordingSink : DesignListSink {
  int32_t AddFolder(TreeItem owner, const std::string& folder) override {
    added.emplace_back(owner, folder);
    return 0;
  }
  int32_t AddEntries(TreeItem, const std::vector<std::string>&) override { return 0; }
  void RemoveOwner(TreeItem owner) override { removed.push_back(owner); }
  void ClearAll() override {}
  std::vector<std::pair<TreeItem, std::string>> added;
  std::vector<TreeItem> removed;
};

struct Answering : QuietUserInterface {
  explicit Answering(MessageAnswer answer) : reply(answer) {}
  MessageAnswer ShowMessage(const std::string& text, const std::string& caption, MessageButtons) override {
    EXPECT_EQ(text + "|" + caption, std::string(kLargeDriveText) + "|" + kLargeDriveCaption);
    ++asked;
    return reply;
  }
  MessageAnswer reply;
  int asked = 0;
};

class DriveTreeTest : public testing::Test {
 protected:
  DriveTreeTest() {
    for (const char* folder : {"system/proc/self", "system/sys/class/block/sdb1", "home/Alpha/x/deep", "home/beta",
                               "home/.hidden/sub", "home/Gamma"}) {
      fs::create_directories(scratch.Path() / folder);
    }
    std::ofstream(scratch.File("system/sys/class/block/sdb1/removable")) << "1\n";
    home = fs::canonical(scratch.Path() / "home").string() + "/";
  }
  // The home folder on the disk of "/", or on a removable medium of this device number.
  void Mount(const std::string& medium = "") const {
    std::ofstream table(scratch.File("system/proc/self/mountinfo"));
    table << "20 1 8:1 / / rw - ext4 /dev/sda1 rw\n";
    const std::string point = fs::path(home).parent_path().string();
    if (!medium.empty()) table << "30 1 " << medium << " / " << point << " rw - vfat /dev/sdb1 rw\n";
  }
  DriveTree& Build(const std::string& medium = "") {
    Mount(medium);
    tree = std::make_unique<DriveTree>(&sink, DriveSources{scratch.File("system"), home});
    EXPECT_EQ(tree->BuildDrives(), 2);
    root = tree->Children(0).back();
    return *tree;
  }
  Names Texts(TreeItem item) const {
    Names texts;
    for (const TreeItem child : tree->Children(item)) texts.push_back(tree->Text(child));
    return texts;
  }
  TreeItem Child(TreeItem item, const std::string& text) const {
    const std::vector<TreeItem>& items = tree->Children(item);
    return *std::find_if(items.begin(), items.end(), [&](TreeItem child) { return tree->Text(child) == text; });
  }

  test::ScratchFolder scratch;
  std::string home;
  RecordingSink sink;
  std::unique_ptr<DriveTree> tree;
  TreeItem root = 0;
};

TEST_F(DriveTreeTest, ExpandingReadsSortedFoldersAndCollapsingForgetsUntickedBranches) {
  DriveTree& drives = Build();
  EXPECT_EQ(Texts(0), (Names{"/", home}));
  EXPECT_EQ(Texts(root), Names{""}) << "a button before any disk access";
  ASSERT_TRUE(drives.Expanding(root, true));
  EXPECT_EQ(Texts(root), (Names{"Alpha", "beta", "Gamma"}));
  const TreeItem alpha = Child(root, "Alpha");
  EXPECT_EQ(std::pair(drives.Image(alpha), drives.SelectedImage(alpha)), std::pair(5, 6));
  EXPECT_EQ(Texts(alpha), Names{""});
  EXPECT_TRUE(Texts(Child(root, "beta")).empty());

  ASSERT_TRUE(drives.Expanding(alpha, true) && drives.Expanding(alpha, false));
  EXPECT_EQ(Texts(alpha), Names{""});
  ASSERT_TRUE(drives.Expanding(alpha, true));
  const TreeItem x = Child(alpha, "x");
  drives.Click(x, TreeHit::kLabel, false);
  EXPECT_EQ(sink.added, (std::vector<std::pair<TreeItem, std::string>>{{x, home + "Alpha/x/"}}));
  ASSERT_TRUE(drives.Expanding(alpha, false));
  EXPECT_EQ(Texts(alpha), Names{"x"}) << "a ticked branch stays";

  fs::remove(home + "beta");
  EXPECT_FALSE(drives.Expanding(Child(root, "beta"), true));
  EXPECT_EQ(Texts(root), (Names{"Alpha", "Gamma"}));
}

TEST_F(DriveTreeTest, AChangedOrMissingMediumTakesTheRootBackToADummy) {
  DriveTree& drives = Build("8:30");
  ASSERT_TRUE(drives.Expanding(root, true));
  const TreeItem alpha = Child(root, "Alpha");
  ASSERT_TRUE(drives.Expanding(alpha, true));
  const TreeItem x = Child(alpha, "x");
  drives.Click(x, TreeHit::kLabel, false);
  Mount("8:31");
  EXPECT_FALSE(drives.Expanding(alpha, false));
  EXPECT_FALSE(drives.Contains(alpha));
  EXPECT_EQ(Texts(root), Names{""});
  EXPECT_NE(std::find(sink.removed.begin(), sink.removed.end(), x), sink.removed.end()) << "its designs go too";

  ASSERT_TRUE(drives.Expanding(root, true));
  Mount();
  drives.RefreshDrive(home);
  EXPECT_FALSE(drives.IsExpanded(root));
  EXPECT_EQ(Texts(root), Names{""});
  EXPECT_FALSE(drives.Expanding(root, true));
  Mount("8:32");
  EXPECT_TRUE(drives.Expanding(root, true)) << "after no medium any medium is new";
}

TEST_F(DriveTreeTest, OpenPathAndTickingARootAfterTheQuestion) {
  DriveTree& drives = Build();
  const TreeItem x = drives.OpenPath(home + "Alpha/x", true);
  ASSERT_NE(x, 0u);
  EXPECT_TRUE(drives.Selected() == x && drives.IsExpanded(drives.Parent(x)) && !drives.IsExpanded(x));
  EXPECT_EQ(drives.OpenPath(home, false), root) << "the longest root, not a folder of /";
  for (const std::string& path : {home + "Alpha/nope", home + ".hidden", std::string("Alpha")}) {
    EXPECT_EQ(drives.OpenPath(path, true), 0u) << path;
  }
  EXPECT_EQ(drives.Selected(), x);

  Answering ui(MessageAnswer::kNo);
  drives.Click(root, TreeHit::kTickBox, false);
  EXPECT_TRUE(sink.added.empty());
  ui.reply = MessageAnswer::kYes;
  drives.Click(root, TreeHit::kTickBox, false);
  Names paths;
  for (const auto& [owner, path] : sink.added) paths.push_back(path.substr(home.size()));
  std::sort(paths.begin(), paths.end());
  EXPECT_EQ(paths, (Names{"", "Alpha/", "Alpha/x/", "Alpha/x/deep/", "Gamma/", "beta/"})) << "read from disk";
  drives.Click(root, TreeHit::kTickBox, false);
  EXPECT_EQ(ui.asked, 2) << "unticking asks nothing";
  EXPECT_EQ(sink.removed.size(), 6u);
}

TEST_F(DriveTreeTest, RefreshAndFolderCommandsFollowTheDisk) {
  DriveTree& drives = Build();
  ASSERT_NE(drives.NewFolder(root), 0u) << "an unread root";
  const TreeItem alpha = drives.OpenPath(home + "Alpha", false);
  ASSERT_TRUE(drives.Expanding(alpha, true));
  const TreeItem gamma = Child(root, "Gamma");
  drives.Click(gamma, TreeHit::kLabel, false);
  for (const char* folder : {"Delta/sub", "beta/sub", "Alpha/y"}) fs::create_directories(home + folder);
  fs::remove(home + "Gamma");
  drives.RefreshDrive(home);
  EXPECT_EQ(Texts(root), (Names{"Alpha", "beta", "Delta", "New Folder"}));
  EXPECT_EQ(Texts(alpha), (Names{"x", "y"}));
  EXPECT_EQ(Texts(Child(root, "beta")), Names{""});
  EXPECT_EQ(sink.removed, std::vector<TreeItem>{gamma});
  EXPECT_EQ(drives.State(root), kTickNone);

  const TreeItem made = drives.NewFolder(alpha);
  EXPECT_TRUE(made != 0 && drives.Selected() == made && fs::is_directory(home + "Alpha/New Folder"));
  drives.NewFolder(Child(root, "beta"));
  EXPECT_EQ(Texts(Child(root, "beta")), (Names{"New Folder", "sub"}));
  EXPECT_EQ(drives.Text(drives.NewFolder(alpha)), "New Folder(2)");
  // A ticked folder renamed lists its designs again under the new name.
  drives.Click(made, TreeHit::kTickBox, false);
  sink.added.clear();
  sink.removed.clear();
  EXPECT_TRUE(drives.RenameFolder(made, "Renamed") && fs::is_directory(home + "Alpha/Renamed"));
  EXPECT_EQ(sink.removed, std::vector<TreeItem>{made});
  EXPECT_EQ(sink.added, (std::vector<std::pair<TreeItem, std::string>>{{made, home + "Alpha/Renamed/"}}));
  for (const char* text : {"New Folder(2)", "a/b", ""}) {
    EXPECT_FALSE(drives.RenameFolder(made, text)) << text;
    EXPECT_EQ(drives.Text(made), "Renamed");
  }
  // Deleting a whole folder is asked first; without a Yes nothing goes.
  EXPECT_FALSE(drives.DeleteFolder(made));
  EXPECT_TRUE(fs::is_directory(home + "Alpha/Renamed"));
  struct Yes : QuietUserInterface {
    MessageAnswer ShowMessage(const std::string& text, const std::string& caption, MessageButtons) override {
      EXPECT_EQ(caption + ": " + text,
                "Confirm Folder Delete: Are you sure you want to delete the folder 'Renamed' and all of its contents?");
      return MessageAnswer::kYes;
    }
  } yes;
  EXPECT_TRUE(drives.DeleteFolder(made));
  EXPECT_FALSE(fs::exists(home + "Alpha/Renamed") || drives.Contains(made));
  EXPECT_FALSE(drives.DeleteFolder(root));
}

}  // namespace
}  // namespace fennick
