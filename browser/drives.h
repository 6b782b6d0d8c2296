// The drive tree's roots and media, window-free: the places a user browses
// (the root, the home folder and every mounted volume), their kind, label
// and serial, their subfolders, and the mount-table changes that call for a
// root to be read again.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "core/design_path.h"

namespace fennick {

// Tree images.
inline constexpr int kImageClosedFolder = 5;
inline constexpr int kImageOpenFolder = 6;

// Where the system is read from. `systemRoot` goes before /proc, /dev and
// /sys so that tests can stand up a fake tree; mount points stay as written.
struct DriveSources {
  std::string systemRoot;
  std::string home;  // empty: $HOME, else the password entry's

  std::string MountTable() const { return systemRoot + "/proc/self/mountinfo"; }
  // The home folder, without a final '/'.
  std::string HomeFolder() const;
};

struct DriveRoot {
  std::string path;        // ends in '/'
  std::string mountPoint;  // of the mount it lay on when built
  DriveType type = kDriveFixed;
  int image = 0;
  bool dummyChild = false;  // shows a button without reading the medium
  std::string label;
  std::string serial;  // empty without a medium
};

// True for a mount point under /media, /run/media or /mnt: a volume that the
// tree shows as a root of its own.
bool IsVolumePoint(const std::string& point);
// A folder's path ending in '/'.
std::string WithSlash(const std::string& path);
// The image of a drive kind, or -1 for a kind that gets no item.
int DriveImage(DriveType type);

// The mount table at one moment, for comparing with the next.
class MountSnapshot {
 public:
  MountSnapshot() = default;
  MountSnapshot(std::vector<MountEntry> mounts, std::string home)
      : mounts_(std::move(mounts)), home_(std::move(home)) {}
  static MountSnapshot Read(const DriveSources& sources);

  const std::vector<MountEntry>& Mounts() const { return mounts_; }
  const MountEntry* MountOf(const std::string& path) const { return MountHolding(mounts_, path); }
  // "/", the home folder, then the volumes under /media, /run/media and /mnt
  // by path; each ends in '/'.
  std::vector<std::string> RootPaths() const;
  bool operator==(const MountSnapshot&) const = default;

 private:
  std::vector<MountEntry> mounts_;
  std::string home_;
};

struct RootChanges {
  std::vector<std::string> added, removed, changed;
};
// Roots that came or went, and roots that lie on another mount than before
// (a new medium, a remount): those are read again.
RootChanges CompareSnapshots(const MountSnapshot& before, const MountSnapshot& after);

std::vector<DriveRoot> BuildDriveRoots(const DriveSources& sources = {});
// The filesystem label of a mount's device; empty without one.
std::string VolumeLabel(const MountEntry& mount, const DriveSources& sources);
// The filesystem UUID of a mount's device, else its device number: never
// empty, since empty means "no medium".
std::string VolumeSerial(const MountEntry& mount, const DriveSources& sources);

// Subfolders as the tree shows them: no hidden ones, no links, in the tree's
// case-blind order.
std::vector<std::string> ListSubfolders(const std::string& path);
bool HasSubfolders(const std::string& path);

// The serials seen on each root with a medium that can change.
class MediumState {
 public:
  explicit MediumState(std::vector<DriveRoot> roots, DriveSources sources = {});

  const std::vector<DriveRoot>& Roots() const { return roots_; }
  // The root that holds `path`, or nullptr.
  const DriveRoot* RootOf(const std::string& path) const;
  // False when the medium of the path's root is gone or was changed since the
  // last look; always true on a drive whose medium cannot change.
  bool MediumSame(const std::string& path);
  // A root always exists; any other path only as a folder.
  bool PathExists(const std::string& path) const;
  // The serial last seen on `rootPath`; empty for "no medium".
  std::string StoredSerial(const std::string& rootPath) const;

 private:
  std::vector<DriveRoot> roots_;
  DriveSources sources_;
  std::map<std::string, std::string> serials_;
};

}  // namespace fennick
