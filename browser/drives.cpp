#include "browser/drives.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string_view>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/statfs.h>

#include "core/file_io.h"
#include "core/text.h"

namespace fs = std::filesystem;

namespace fennick {
namespace {

// udev writes a blank in a link name as "\x20".
std::string UnescapeUdevName(const std::string& name) {
  std::string text;
  for (size_t i = 0; i < name.size(); ++i) {
    if (name.compare(i, 2, "\\x") == 0 && i + 3 < name.size() &&
        name.substr(i + 2, 2).find_first_not_of("0123456789abcdefABCDEF") == std::string::npos) {
      text.push_back(static_cast<char>(std::strtol(name.substr(i + 2, 2).c_str(), nullptr, 16)));
      i += 3;
    } else {
      text.push_back(name[i]);
    }
  }
  return text;
}

// The name of the link in a /dev/disk folder that leads to the mount's device.
std::string DiskLinkName(const MountEntry& mount, const DriveSources& sources, const char* folder) {
  if (mount.source.rfind("/dev/", 0) != 0) return {};
  std::error_code error;
  const fs::path device = fs::canonical(sources.systemRoot + mount.source, error);
  if (error) return {};
  for (fs::directory_iterator it(sources.systemRoot + "/dev/disk/" + folder, error), end; !error && it != end;
       it.increment(error)) {
    std::error_code linkError;
    if (fs::canonical(it->path(), linkError) == device && !linkError) return it->path().filename().string();
  }
  return {};
}

// The kernel's own file systems (processes, devices, control groups) hold no
// designs, and /proc alone has thousands of folders that change as they are read.
bool IsKernelFileSystem(const std::string& folder) {
  struct statfs about {};
  if (statfs(folder.c_str(), &about) != 0) return false;
  switch (static_cast<unsigned long>(about.f_type)) {
    case PROC_SUPER_MAGIC:
    case SYSFS_MAGIC:
    case DEVPTS_SUPER_MAGIC:
    case CGROUP_SUPER_MAGIC:
    case CGROUP2_SUPER_MAGIC:
    case DEBUGFS_MAGIC:
    case TRACEFS_MAGIC:
    case SECURITYFS_MAGIC:
    case PSTOREFS_MAGIC:
    case BPF_FS_MAGIC: return true;
    default: return false;
  }
}

// Calls `visit` with each subfolder's name until it returns false. Links are
// left out: one that leads back up would make a recursive tick read forever.
template <class Visit>
void ForEachSubfolder(const std::string& path, Visit visit) {
  struct stat parent {};
  if (stat(path.c_str(), &parent) != 0) return;
  std::error_code error;
  for (fs::directory_iterator it(path, fs::directory_options::skip_permission_denied, error), end;
       !error && it != end; it.increment(error)) {
    const std::string name = it->path().filename().string();
    struct stat child {};
    if (name.empty() || name.front() == '.' || lstat(it->path().c_str(), &child) != 0 || !S_ISDIR(child.st_mode)) {
      continue;
    }
    // Only a mount point can start another file system.
    if (child.st_dev != parent.st_dev && IsKernelFileSystem(it->path().string())) continue;
    if (!visit(name)) return;
  }
}

}  // namespace

std::string WithSlash(const std::string& path) { return !path.empty() && path.back() == '/' ? path : path + "/"; }

std::string DriveSources::HomeFolder() const {
  std::string folder = home;
  if (folder.empty()) folder = HomeDirectory();
  if (folder.empty() || folder.front() != '/') return "/";
  // A linked home must be found on the mount it really lies on.
  std::error_code error;
  const std::string real = fs::weakly_canonical(folder, error).string();
  if (!error) folder = real;
  while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
  return folder;
}

bool IsVolumePoint(const std::string& point) {
  for (const std::string_view area : {"/media/", "/run/media/", "/mnt/"}) {
    if (point.starts_with(area) && point.size() > area.size()) return true;
  }
  return false;
}

int DriveImage(DriveType type) {
  switch (type) {
    case kDriveFixed: return 0;
    case kDriveRemovable: return 1;
    case kDriveCdRom: return 2;
    case kDriveRemote: return 3;
    case kDriveRamDisk: return 4;
    default: return -1;
  }
}

MountSnapshot MountSnapshot::Read(const DriveSources& sources) {
  return MountSnapshot(ReadMountTable(sources.MountTable()), sources.HomeFolder());
}

std::vector<std::string> MountSnapshot::RootPaths() const {
  std::vector<std::string> roots{"/"};
  if (home_ != "/") roots.push_back(WithSlash(home_));
  std::set<std::string> volumes;
  for (const MountEntry& mount : mounts_) {
    if (IsVolumePoint(mount.point) && mount.point != home_) volumes.insert(WithSlash(mount.point));
  }
  roots.insert(roots.end(), volumes.begin(), volumes.end());
  return roots;
}

RootChanges CompareSnapshots(const MountSnapshot& before, const MountSnapshot& after) {
  const std::vector<std::string> old = before.RootPaths(), now = after.RootPaths();
  RootChanges changes;
  for (const std::string& root : now) {
    if (std::find(old.begin(), old.end(), root) == old.end()) {
      changes.added.push_back(root);
      continue;
    }
    const MountEntry* was = before.MountOf(root);
    const MountEntry* is = after.MountOf(root);
    if ((was == nullptr) != (is == nullptr) || (was != nullptr && !(*was == *is))) changes.changed.push_back(root);
  }
  for (const std::string& root : old) {
    if (std::find(now.begin(), now.end(), root) == now.end()) changes.removed.push_back(root);
  }
  return changes;
}

std::string VolumeLabel(const MountEntry& mount, const DriveSources& sources) {
  return UnescapeUdevName(DiskLinkName(mount, sources, "by-label"));
}

std::string VolumeSerial(const MountEntry& mount, const DriveSources& sources) {
  const std::string uuid = DiskLinkName(mount, sources, "by-uuid");
  return uuid.empty() ? mount.device : uuid;
}

std::vector<DriveRoot> BuildDriveRoots(const DriveSources& sources) {
  const MountSnapshot snapshot = MountSnapshot::Read(sources);
  std::vector<DriveRoot> roots;
  for (const std::string& path : snapshot.RootPaths()) {
    DriveRoot root;
    root.path = path;
    const MountEntry* mount = snapshot.MountOf(path);
    // Without a readable mount table the root still shows, as a plain disk.
    root.type = mount != nullptr ? DriveTypeOfMount(*mount, sources.systemRoot) : kDriveFixed;
    root.image = DriveImage(root.type);
    if (root.image < 0) continue;
    if (mount != nullptr) {
      root.mountPoint = mount->point;
      root.label = VolumeLabel(*mount, sources);
      root.serial = VolumeSerial(*mount, sources);
    }
    // A medium that may be missing is not read for its button.
    root.dummyChild = root.type == kDriveRemovable || root.type == kDriveCdRom || HasSubfolders(path);
    roots.push_back(std::move(root));
  }
  return roots;
}

std::vector<std::string> ListSubfolders(const std::string& path) {
  std::vector<std::string> names;
  ForEachSubfolder(path, [&names](const std::string& name) {
    names.push_back(name);
    return true;
  });
  std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) {
    return LessIgnoringCase(a, b) || (!LessIgnoringCase(b, a) && a < b);
  });
  return names;
}

bool HasSubfolders(const std::string& path) {
  bool found = false;
  ForEachSubfolder(path, [&found](const std::string&) {
    found = true;
    return false;
  });
  return found;
}

MediumState::MediumState(std::vector<DriveRoot> roots, DriveSources sources)
    : roots_(std::move(roots)), sources_(std::move(sources)) {
  // A CD's serial is known from the start; a removable drive's is first taken
  // when it is opened, so its first look never counts as a change.
  for (const DriveRoot& root : roots_) {
    if (root.type == kDriveCdRom) serials_[root.path] = root.serial;
  }
}

const DriveRoot* MediumState::RootOf(const std::string& path) const {
  const std::string folder = WithSlash(path);
  const DriveRoot* best = nullptr;
  for (const DriveRoot& root : roots_) {
    if (folder.rfind(root.path, 0) == 0 && (best == nullptr || root.path.size() > best->path.size())) best = &root;
  }
  return best;
}

bool MediumState::MediumSame(const std::string& path) {
  const DriveRoot* root = RootOf(path);
  if (root == nullptr || (root->type != kDriveRemovable && root->type != kDriveCdRom)) return true;
  const MountSnapshot now = MountSnapshot::Read(sources_);
  const MountEntry* mount = now.MountOf(root->path);
  // Once the volume is unmounted its folder lies on the disk below: no medium.
  const std::string serial =
      mount != nullptr && mount->point == root->mountPoint ? VolumeSerial(*mount, sources_) : std::string();
  std::string& stored = serials_[root->path];
  const bool same = !serial.empty() && (stored.empty() || stored == serial);
  stored = serial;
  return same;
}

bool MediumState::PathExists(const std::string& path) const {
  const std::string folder = WithSlash(path);
  for (const DriveRoot& root : roots_) {
    if (root.path == folder) return true;
  }
  struct stat info {};
  return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

std::string MediumState::StoredSerial(const std::string& rootPath) const {
  const auto found = serials_.find(WithSlash(rootPath));
  return found == serials_.end() ? std::string() : found->second;
}

}  // namespace fennick
