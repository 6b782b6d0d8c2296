// The drive tree's roots and media from a fake mount table and fake /dev and
// /sys trees, and the folder dialog's checks.
#include <cerrno>
#include <cstdlib>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <unistd.h>

#include "browser/drives.h"
#include "browser/folder_check.h"
#include "test_support.h"

namespace fennick {
namespace {

namespace fs = std::filesystem;

std::string Mount(int id, const std::string& point, const std::string& type, const std::string& source) {
  const std::string number = std::to_string(id);
  return number + " 1 8:" + number + " / " + point + " rw shared:1 - " + type + " " + source + " rw\n";
}

const std::string kBaseTable = Mount(20, "/", "ext4", "/dev/sda1") + Mount(21, "/proc", "proc", "proc") +
                               Mount(23, "/mnt/data", "ext4", "/dev/sdc1") +
                               Mount(24, "/mnt/my\\040disk", "ext4", "/dev/sda2") +
                               Mount(25, "/mnt/ram", "tmpfs", "none") + Mount(26, "/mnt/share", "nfs4", "server:/x") +
                               Mount(27, "/run/media/u/CD", "iso9660", "/dev/sr0");
const std::string kStick = Mount(28, "/media/u/STICK", "vfat", "/dev/sdb1");

// Fake /proc, /dev and /sys under a scratch folder that nobody may enter too.
struct FakeSystem {
  FakeSystem() {
    fs::permissions(scratch.Path(), fs::perms::owner_all | fs::perms::group_exec | fs::perms::others_exec);
    sources = {scratch.File("system"), scratch.File("home")};
    for (const char* folder : {"system/proc/self", "system/dev/disk/by-uuid", "system/dev/disk/by-label",
                               "system/sys/class/block/sdc/sdc1", "home/designs"}) {
      fs::create_directories(scratch.Path() / folder);
    }
    for (const char* device : {"sda1", "sda2", "sdb1", "sdc1", "sr0"}) std::ofstream{Dev(device)};
    std::ofstream(scratch.File("system/sys/class/block/sdc/removable")) << "1\n";
    fs::create_directory_symlink("sdc/sdc1", scratch.Path() / "system/sys/class/block/sdc1");  // a partition
    Link("by-uuid/ABCD-1234", "sdb1");
    Link("by-uuid/2024-05-01-10-00-00-00", "sr0");
    Link("by-label/MY\\x20STICK", "sdb1");
    WriteTable(kBaseTable + kStick);
  }
  std::string Dev(const std::string& name) const { return scratch.File("system/dev/" + name); }
  void Link(const std::string& name, const std::string& device) const {
    fs::remove(Dev("disk/" + name));
    fs::create_symlink("../../" + device, Dev("disk/" + name));
  }
  void WriteTable(const std::string& table) const { std::ofstream(sources.MountTable()) << table; }

  test::ScratchFolder scratch;
  DriveSources sources;
};

// Gives `reply` to every question and keeps what was shown.
struct Answering : QuietUserInterface {
  explicit Answering(MessageAnswer answer) : reply(answer) {}
  MessageAnswer ShowMessage(const std::string& text, const std::string& caption, MessageButtons buttons) override {
    lines.push_back(text);
    EXPECT_EQ(caption, kFolderDialogTitle);
    return buttons == MessageButtons::kYesNo ? reply : MessageAnswer::kOk;
  }
  MessageAnswer reply;
  std::vector<std::string> lines;
};

TEST(DrivesTest, RootsKindsLabelsSerialsAndExistence) {
  FakeSystem system;
  const std::vector<DriveRoot> roots = BuildDriveRoots(system.sources);
  const std::string home = system.sources.home + "/";
  // Volumes missing from this disk get a button only where the medium may be absent.
  const std::vector<std::tuple<std::string, DriveType, int, bool>> expected = {
      {"/", kDriveFixed, 0, true},          {home, kDriveFixed, 0, true},
      {"/media/u/STICK/", kDriveRemovable, 1, true}, {"/mnt/data/", kDriveRemovable, 1, true},
      {"/mnt/my disk/", kDriveFixed, 0, false},      {"/mnt/ram/", kDriveRamDisk, 4, false},
      {"/mnt/share/", kDriveRemote, 3, false},       {"/run/media/u/CD/", kDriveCdRom, 2, true}};
  ASSERT_EQ(roots.size(), expected.size());
  for (size_t i = 0; i < roots.size(); ++i) {
    EXPECT_EQ(std::tuple(roots[i].path, roots[i].type, roots[i].image, roots[i].dummyChild), expected[i]);
  }
  EXPECT_EQ(roots[2].label + " " + roots[2].serial, "MY STICK ABCD-1234");
  EXPECT_EQ(roots[7].serial, "2024-05-01-10-00-00-00");
  EXPECT_EQ(roots[3].serial, "8:23") << "without a UUID the device number stands in";

  const MediumState state(roots, system.sources);
  std::ofstream(home + "file");
  EXPECT_TRUE(state.PathExists("/mnt/ram"));
  EXPECT_FALSE(state.PathExists("/mnt/ram/sub"));
  EXPECT_TRUE(state.PathExists(home + "designs"));
  EXPECT_FALSE(state.PathExists(home + "file"));
  EXPECT_EQ(state.RootOf("/mnt/rammer")->path, "/");
}

TEST(DrivesTest, SubfoldersSkipHiddenFilesAndLinksInCaseBlindOrder) {
  test::ScratchFolder scratch;
  for (const char* folder : {"Zeta", "alpha", "B", ".hidden", "empty", "onlyhidden/.git"}) {
    fs::create_directories(scratch.Path() / folder);
  }
  std::ofstream(scratch.File("file"));
  fs::create_directory_symlink("alpha", scratch.Path() / "link");
  EXPECT_EQ(ListSubfolders(scratch.File("")), (std::vector<std::string>{"alpha", "B", "empty", "onlyhidden", "Zeta"}));
  EXPECT_TRUE(HasSubfolders(scratch.File("")));
  EXPECT_FALSE(HasSubfolders(scratch.File("onlyhidden")));
  EXPECT_FALSE(HasSubfolders(scratch.File("missing")));
  // The kernel's file systems are no place for designs: /proc, /sys.
  const std::vector<std::string> top = ListSubfolders("/");
  for (const auto& [kernel, inside] : {std::pair("proc", "self"), std::pair("sys", "kernel")}) {
    if (fs::exists(fs::path("/") / kernel / inside)) {
      EXPECT_EQ(std::count(top.begin(), top.end(), kernel), 0) << kernel;
    }
  }
  EXPECT_EQ(std::count(top.begin(), top.end(), "usr"), 1);
}

TEST(DrivesTest, MediumSameFollowsTheSerialOfChangeableMedia) {
  FakeSystem system;
  MediumState state(BuildDriveRoots(system.sources), system.sources);
  const std::string stick = "/media/u/STICK/designs";
  EXPECT_TRUE(state.MediumSame(stick)) << "the first look stores the serial";
  system.WriteTable(kBaseTable);  // ejected
  EXPECT_FALSE(state.MediumSame(stick));
  EXPECT_EQ(state.StoredSerial("/media/u/STICK"), "");
  EXPECT_TRUE(state.MediumSame(system.sources.home + "/designs")) << "a fixed drive never changes";

  system.WriteTable(kBaseTable + kStick);
  EXPECT_TRUE(state.MediumSame(stick)) << "after no medium any serial is taken";
  system.Link("by-uuid/ABCD-1234", "sda2");
  system.Link("by-uuid/FFFF-0000", "sdb1");
  EXPECT_FALSE(state.MediumSame(stick));
  EXPECT_EQ(state.StoredSerial("/media/u/STICK/"), "FFFF-0000");
  EXPECT_TRUE(state.MediumSame(stick));

  // The CD's serial is known from the build, so a swap before the first look counts.
  system.Link("by-uuid/2024-05-01-10-00-00-00", "sda1");
  system.Link("by-uuid/1999-12-31-00-00-00-00", "sr0");
  EXPECT_FALSE(state.MediumSame("/run/media/u/CD"));
}

TEST(DrivesTest, SnapshotsTellWhichRootsChanged) {
  FakeSystem system;
  const MountSnapshot before = MountSnapshot::Read(system.sources);
  std::string table = kBaseTable + Mount(30, "/media/u/NEW", "vfat", "/dev/sdd1") + Mount(31, "/proc/fs", "x", "y");
  table.replace(table.find("23 1 8:23"), 9, "32 1 8:33");  // /mnt/data remounted from another disk
  system.WriteTable(table);
  const RootChanges changes = CompareSnapshots(before, MountSnapshot::Read(system.sources));
  EXPECT_EQ(changes.added, std::vector<std::string>{"/media/u/NEW/"});
  EXPECT_EQ(changes.removed, std::vector<std::string>{"/media/u/STICK/"});
  EXPECT_EQ(changes.changed, std::vector<std::string>{"/mnt/data/"});
}

TEST(FolderCheckTest, MessagesForTypedText) {
  FakeSystem system;
  const std::string home = system.sources.home;
  std::ofstream(home + "/file");
  const std::pair<std::string, std::string> cases[] = {  // text, message; none: accepted
      {home + "/designs/", ""},
      {"", "\nThis is not a valid folder."},
      {home + "/" + std::string(300, 'x'), "\nThis is not a valid folder."},
      {home + "/file/sub", "\nThis is not a valid folder."},
      {"designs", "\nThe drive is invalid."},
      {"/mnt/gone/designs", "\nThe drive is invalid."},
      {home + "/file", "\nThis is a file not a directory."},
      {"/mnt/ram/new", "\nThis folder does not exist.\n\nDo you want to create it?"},
  };
  for (const auto& [text, message] : cases) {
    Answering ui(MessageAnswer::kNo);
    EXPECT_EQ(AcceptFolderText(text, false, system.sources), message.empty()) << text;
    EXPECT_EQ(ui.lines, message.empty() ? std::vector<std::string>{} : std::vector{message}) << text;
  }
}

TEST(FolderCheckTest, CreatesLevelsOrRefusesByDrive) {
  FakeSystem system;
  const std::string home = system.sources.home;
  {
    Answering ui(MessageAnswer::kYes);
    EXPECT_TRUE(AcceptFolderText(home + "/a/b/c", false, system.sources));
    EXPECT_TRUE(fs::is_directory(home + "/a/b/c"));
  }
  for (const char* folder : {"/ro", "/cd", "/net"}) {
    fs::create_directory(home + folder);
    fs::permissions(home + folder, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
  }
  system.WriteTable(kBaseTable + Mount(40, home + "/cd", "udf", "/dev/sr0") + Mount(41, home + "/net", "cifs", "//s"));
  const std::tuple<std::string, bool, std::string> cases[] = {  // text, Enter key, refusal
      {home + "/ro/new/deeper", false, "You do not have permission\nto create this folder."},
      {home + "/ro/new", true, "You do not have permission or\notherwise cannot create this folder."},
      {home + "/cd/new", false, "You cannot create this folder\nas the CD ROM medium is read-only."},
      {home + "/net/new", true, "You do not have permission to create\nthis folder on the network."},
  };
  for (const auto& [text, enterKey, refusal] : cases) {
    Answering ui(MessageAnswer::kYes);
    // Root passes every permission check: act as nobody meanwhile.
    const bool dropped = geteuid() == 0 && seteuid(65534) == 0;
    EXPECT_FALSE(AcceptFolderText(text, enterKey, system.sources));
    if (dropped && seteuid(0) != 0) std::abort();
    EXPECT_EQ(ui.lines.back(), refusal) << text;
  }
  EXPECT_EQ(CreationRefusal(EROFS, kDriveRemovable, false),
            "You cannot create this folder.\nThe medium may be write-protected.");
}

}  // namespace
}  // namespace fennick
