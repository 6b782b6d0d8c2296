#include "browser/folder_check.h"

#include <cerrno>
#include <climits>
#include <sys/stat.h>

#include "core/user_interface.h"

namespace fennick {
namespace {

bool ValidForm(const std::string& text) {
  if (text.empty() || text.size() >= PATH_MAX || text.find('\0') != std::string::npos) return false;
  size_t start = 0;
  for (size_t slash = text.find('/'); start < text.size(); slash = text.find('/', start)) {
    const size_t end = slash == std::string::npos ? text.size() : slash;
    if (end - start > NAME_MAX) return false;
    start = end + 1;
  }
  return true;
}

bool InVolumeArea(const std::string& path) {
  return path.starts_with("/media/") || path.starts_with("/run/media/") || path.starts_with("/mnt/");
}

}  // namespace

FolderVerdict JudgeFolderText(const std::string& text, const DriveSources& sources) {
  if (!ValidForm(text)) return FolderVerdict::kNotValid;
  if (text.front() != '/') return FolderVerdict::kNoDrive;
  struct stat info {};
  if (stat(text.c_str(), &info) == 0) return S_ISDIR(info.st_mode) ? FolderVerdict::kFolder : FolderVerdict::kIsFile;
  // A file in the middle of the path, or a loop of links: no folder can be there.
  if (errno == ENOTDIR || errno == ENAMETOOLONG || errno == ELOOP) return FolderVerdict::kNotValid;
  if (InVolumeArea(text)) {
    const MountSnapshot mounts = MountSnapshot::Read(sources);
    const MountEntry* mount = mounts.MountOf(text);
    if (mount == nullptr || !IsVolumePoint(mount->point)) return FolderVerdict::kNoDrive;
  }
  return FolderVerdict::kMissing;
}

std::string VerdictMessage(FolderVerdict verdict) {
  switch (verdict) {
    case FolderVerdict::kNotValid: return "\nThis is not a valid folder.";
    case FolderVerdict::kNoDrive: return "\nThe drive is invalid.";
    case FolderVerdict::kIsFile: return "\nThis is a file not a directory.";
    case FolderVerdict::kMissing: return "\nThis folder does not exist.\n\nDo you want to create it?";
    case FolderVerdict::kFolder: break;
  }
  return {};
}

int CreateFolderLevels(const std::string& path) {
  // Unlike EnsureFolder this keeps the cause, which picks the refusal.
  std::string folder = path;
  while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
  for (size_t slash = folder.find('/', 1);; slash = folder.find('/', slash + 1)) {
    const std::string level = folder.substr(0, slash);
    struct stat info {};
    if (stat(level.c_str(), &info) == 0) {
      if (!S_ISDIR(info.st_mode)) return ENOTDIR;
    } else if (mkdir(level.c_str(), 0777) != 0 && errno != EEXIST) {
      return errno;
    }
    if (slash == std::string::npos) return 0;
  }
}

std::string CreationRefusal(int error, DriveType type, bool fromEnterKey) {
  // The drive's kind says more than the error on media that are read-only or
  // remote; elsewhere a refused permission is told as such.
  if (type == kDriveCdRom) return "You cannot create this folder\nas the CD ROM medium is read-only.";
  if (type == kDriveRemote) return "You do not have permission to create\nthis folder on the network.";
  if (error == EACCES || error == EPERM) {
    return fromEnterKey ? "You do not have permission or\notherwise cannot create this folder."
                        : "You do not have permission\nto create this folder.";
  }
  return "You cannot create this folder.\nThe medium may be write-protected.";
}

bool AcceptFolderText(const std::string& text, bool fromEnterKey, const DriveSources& sources) {
  UserInterface& ui = CurrentUserInterface();
  const FolderVerdict verdict = JudgeFolderText(text, sources);
  if (verdict == FolderVerdict::kFolder) return true;
  if (verdict != FolderVerdict::kMissing) {
    ui.ShowMessage(VerdictMessage(verdict), kFolderDialogTitle, MessageButtons::kOk);
    return false;
  }
  if (ui.ShowMessage(VerdictMessage(verdict), kFolderDialogTitle, MessageButtons::kYesNo) != MessageAnswer::kYes) {
    return false;
  }
  const int error = CreateFolderLevels(text);
  if (error == 0) return true;
  const MountSnapshot mounts = MountSnapshot::Read(sources);
  const MountEntry* mount = mounts.MountOf(text);
  const DriveType type = mount != nullptr ? DriveTypeOfMount(*mount, sources.systemRoot) : kDriveFixed;
  ui.ShowMessage(CreationRefusal(error, type, fromEnterKey), kFolderDialogTitle, MessageButtons::kOk);
  return false;
}

}  // namespace fennick
