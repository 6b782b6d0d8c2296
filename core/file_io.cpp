#include "core/file_io.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <string>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fennick {
namespace {

bool Fail(std::string* error, int code) {
  if (error != nullptr) *error = std::strerror(code);
  return false;
}

}  // namespace

bool ReadWholeFile(const std::string& path, std::vector<uint8_t>& bytes, std::string* error) {
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return Fail(error, errno);
  struct stat info {};
  if (fstat(fd, &info) != 0 || S_ISDIR(info.st_mode)) {
    const int code = S_ISDIR(info.st_mode) ? EISDIR : errno;
    close(fd);
    return Fail(error, code);
  }
  bytes.resize(static_cast<size_t>(info.st_size));
  size_t done = 0;
  while (true) {
    if (done == bytes.size()) bytes.resize(bytes.size() + 65536);  // the file may have grown
    const ssize_t got = read(fd, bytes.data() + done, bytes.size() - done);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) {
      const int code = errno;
      close(fd);
      return Fail(error, code);
    }
    if (got == 0) break;
    done += static_cast<size_t>(got);
  }
  close(fd);
  bytes.resize(done);
  return true;
}

bool WriteFileAtomic(const std::string& path, std::span<const uint8_t> bytes, std::string* error) {
  static std::atomic<unsigned> counter{0};
  std::string temporary;
  int fd = -1;
  // O_EXCL with a name of our own: the kernel applies the umask to a new file.
  for (int attempt = 0; fd < 0 && attempt < 100; ++attempt) {
    temporary = path + ".tmp-" + std::to_string(getpid()) + "-" + std::to_string(counter++);
    fd = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0 && errno != EEXIST) return Fail(error, errno);
  }
  if (fd < 0) return Fail(error, EEXIST);
  int code = 0;
  struct stat old {};
  if (stat(path.c_str(), &old) == 0 && fchmod(fd, old.st_mode & 07777) != 0) code = errno;
  size_t done = 0;
  while (code == 0 && done < bytes.size()) {
    const ssize_t put = write(fd, bytes.data() + done, bytes.size() - done);
    if (put < 0 && errno == EINTR) continue;
    if (put < 0) {
      code = errno;
    } else {
      done += static_cast<size_t>(put);
    }
  }
  if (code == 0 && fsync(fd) != 0) code = errno;
  if (close(fd) != 0 && code == 0) code = errno;
  if (code == 0 && rename(temporary.c_str(), path.c_str()) != 0) code = errno;
  if (code != 0) {
    unlink(temporary.c_str());
    return Fail(error, code);
  }
  return true;
}

}  // namespace fennick
