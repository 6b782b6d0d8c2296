#include "core/file_io.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <pwd.h>
#include <libgen.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fennick {
namespace {

bool Fail(std::string* error, int code) {
  if (error != nullptr) *error = std::strerror(code);
  return false;
}

std::string Folder(const std::string& path) {
  std::string copy = path;
  return dirname(copy.data());
}

}  // namespace

bool FileDescriptor::Close() {
  const int fd = fd_;
  fd_ = -1;
  return fd < 0 || close(fd) == 0;
}

FileRead ReadWholeFile(const std::string& path, std::vector<uint8_t>& bytes, size_t maxSize, std::string* error) {
  bytes.clear();
  // Non-blocking, so that a pipe in a file's place cannot stall the read.
  FileDescriptor fd(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (fd.Get() < 0) {
    const int code = errno;
    Fail(error, code);
    return code == ENOENT || code == ENOTDIR ? FileRead::kMissing : FileRead::kFailed;
  }
  struct stat info {};
  if (fstat(fd.Get(), &info) != 0) return Fail(error, errno), FileRead::kFailed;
  if (S_ISDIR(info.st_mode)) return Fail(error, EISDIR), FileRead::kFailed;
  if (!S_ISREG(info.st_mode)) return Fail(error, EINVAL), FileRead::kFailed;
  if (static_cast<uint64_t>(info.st_size) > maxSize) return Fail(error, EFBIG), FileRead::kFailed;
  // One byte more than the file, for the terminator callers such as
  // ReadDesignFile add: a large file is then never copied to grow.
  bytes.reserve(static_cast<size_t>(info.st_size) + 1);
  bytes.resize(static_cast<size_t>(info.st_size));
  size_t done = 0;
  while (true) {
    uint8_t probe = 0;
    // At the expected end a one-byte read tells whether the file grew since fstat.
    const bool atEnd = done == bytes.size();
    const ssize_t got = atEnd ? read(fd.Get(), &probe, 1) : read(fd.Get(), bytes.data() + done, bytes.size() - done);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return Fail(error, errno), FileRead::kFailed;
    if (got == 0) break;
    if (atEnd) {
      if (done >= maxSize) return Fail(error, EFBIG), FileRead::kFailed;
      bytes.push_back(probe);
      bytes.resize(done + 1 + std::min<size_t>(maxSize - done - 1, 65536));
    }
    done += static_cast<size_t>(got);
  }
  bytes.resize(done);
  return FileRead::kOk;
}

bool WriteFileAtomic(const std::string& path, std::span<const uint8_t> bytes, std::string* error) {
  std::string target = path;
  struct stat link {};
  if (lstat(path.c_str(), &link) == 0 && S_ISLNK(link.st_mode)) {
    char resolved[PATH_MAX];
    if (realpath(path.c_str(), resolved) != nullptr) target = resolved;
  }
  static std::atomic<unsigned> counter{0};
  std::string temporary;
  int descriptor = -1;
  // O_EXCL with a name of our own: the kernel applies the umask to a new file.
  for (int attempt = 0; descriptor < 0 && attempt < 100; ++attempt) {
    temporary = target + ".tmp-" + std::to_string(getpid()) + "-" + std::to_string(counter++);
    descriptor = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666);
    if (descriptor < 0 && (errno == ENOENT || errno == ENOTDIR)) {
      if (error != nullptr) *error = "the folder " + Folder(target) + " does not exist";
      return false;
    }
    if (descriptor < 0 && errno != EEXIST) return Fail(error, errno);
  }
  if (descriptor < 0) return Fail(error, EEXIST);
  FileDescriptor fd(descriptor);
  int code = 0;
  struct stat old {};
  if (stat(target.c_str(), &old) == 0 && fchmod(fd.Get(), old.st_mode & 07777) != 0) code = errno;
  size_t done = 0;
  while (code == 0 && done < bytes.size()) {
    const ssize_t put = write(fd.Get(), bytes.data() + done, bytes.size() - done);
    if (put < 0 && errno == EINTR) continue;
    if (put < 0) {
      code = errno;
    } else {
      done += static_cast<size_t>(put);
    }
  }
  if (code == 0 && fsync(fd.Get()) != 0) code = errno;
  if (!fd.Close() && code == 0) code = errno;
  if (code == 0 && rename(temporary.c_str(), target.c_str()) != 0) code = errno;
  if (code != 0) {
    unlink(temporary.c_str());
    return Fail(error, code);
  }
  // Makes the rename itself durable.
  FileDescriptor folder(open(Folder(target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.Get() >= 0) fsync(folder.Get());
  return true;
}

std::string HomeDirectory() {
  const char* home = std::getenv("HOME");
  if (home != nullptr && home[0] == '/') return home;
  std::vector<char> buffer(16384);
  passwd entry{};
  passwd* found = nullptr;
  if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr &&
      found->pw_dir != nullptr && found->pw_dir[0] == '/') {
    return found->pw_dir;
  }
  return {};
}

}  // namespace fennick
