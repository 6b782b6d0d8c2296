#include "archive/file_operations.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include "archive/zip_member.h"
#include "core/file_io.h"

namespace fennick {
namespace {

std::string WithoutFinalSlash(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

bool CanOpenForReading(const std::string& path) {
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (fd < 0) return false;
  close(fd);
  return true;
}

}  // namespace

int WriteFileBlock(std::span<const uint8_t> bytes, DesignPath& path, int mode, std::string* cause) {
  if (path.IsZipMember()) return WriteZipMember(path, bytes, cause);
  const std::string& name = path.GetFileName();
  size_t cut = name.find_last_of('\\');
  if (cut == std::string::npos) cut = name.find_last_of('/');
  if (cut == std::string::npos) cut = name.find_last_of(':');
  if (cut != std::string::npos) path.SetFileName(name.substr(cut + 1));
  if ((mode & kWriteFreeName) != 0) {
    // Bounded: a folder holds finitely many names, and each turn takes a new one.
    while (CanOpenForReading(path.FullName())) path.NextVariant();
  }
  // Deliberately no TitleCase and no floppy space test on Linux: see docs/platform.md.
  errno = 0;
  if (WriteFileAtomic(path.FullName(), bytes, cause)) return 0;
  return errno != 0 ? errno : EIO;
}

void DeleteDesign(const DesignPath& path) {
  if (!path.IsZipMember()) {
    unlink(path.FullName().c_str());  // failures are not reported
    return;
  }
  DeleteZipMember(path);
}

int RenameFolder(const std::string& from, const std::string& to) {
  if (from == to) return 0;
  // Names that differ only in case are two names here, so a change of case is a plain rename.
  if (renameat2(AT_FDCWD, WithoutFinalSlash(from).c_str(), AT_FDCWD, WithoutFinalSlash(to).c_str(),
                RENAME_NOREPLACE) != 0) {
    return errno;
  }
  return 0;
}

std::string NewFolderName(const std::string& path) {
  if (!FolderExists(path)) return path;
  const std::string base = WithoutFinalSlash(path);
  for (int i = 2;; ++i) {
    const std::string candidate = base + "(" + std::to_string(i) + ")";
    if (!FolderExists(candidate)) return candidate;
  }
}

std::string CreateFolderUnique(const std::string& path) {
  const std::string folder = NewFolderName(path);
  return mkdir(folder.c_str(), 0777) == 0 ? folder : std::string();
}

bool FolderExists(const std::string& path) {
  struct stat info {};
  return !path.empty() && lstat(WithoutFinalSlash(path).c_str(), &info) == 0;
}

bool FolderTest(const std::string& path) {
  struct stat info {};
  return !path.empty() && stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool EnsureFolder(const std::string& path) {
  const std::string folder = WithoutFinalSlash(path);
  for (size_t slash = folder.find('/', 1); slash != std::string::npos; slash = folder.find('/', slash + 1)) {
    mkdir(folder.substr(0, slash).c_str(), 0777);  // existing levels are fine; the test below decides
  }
  if (!folder.empty()) mkdir(folder.c_str(), 0777);
  return FolderTest(folder);
}

int64_t DiskFree(const std::string& root) {
  struct statvfs info {};
  if (statvfs(root.c_str(), &info) != 0) return -errno;
  return static_cast<int64_t>(info.f_bavail) * static_cast<int64_t>(info.f_frsize);
}

int ShellDelete(const std::string& path) {
  namespace fs = std::filesystem;
  std::error_code error;
  if (path.empty()) return EINVAL;
  const fs::path target = fs::weakly_canonical(path, error);
  if (error) return error.value();
  const std::string home = HomeDirectory();
  if (target == target.root_path() || (!home.empty() && target == fs::weakly_canonical(home, error))) {
    return EPERM;
  }
  fs::remove_all(path, error);  // a link is removed, not what it points to
  return error ? error.value() : 0;
}

}  // namespace fennick
