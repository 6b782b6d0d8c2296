// Whole-file reading and writing. A write goes to a temporary file beside the
// target and is renamed over it, so a failed write leaves the old file whole.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace fennick {

// Owns a file descriptor and closes it when it goes.
class FileDescriptor {
 public:
  explicit FileDescriptor(int fd) : fd_(fd) {}
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor() { Close(); }
  int Get() const { return fd_; }
  // Gives the descriptor up to the caller, who closes it.
  int Release() {
    const int fd = fd_;
    fd_ = -1;
    return fd;
  }
  // A failed close after writing can mean lost data, so it is reported.
  bool Close();

 private:
  int fd_;
};

enum class FileRead { kOk, kMissing, kFailed };

// The bytes of a regular file of at most `maxSize` bytes. Anything else (a
// folder, a pipe, a device, a larger file) fails without blocking; `error`
// then tells the system's reason.
FileRead ReadWholeFile(const std::string& path, std::vector<uint8_t>& bytes, size_t maxSize = SIZE_MAX,
                       std::string* error = nullptr);
// False with `error` set when anything fails. A file kept as a link stays a
// link: the file it points to is replaced.
bool WriteFileAtomic(const std::string& path, std::span<const uint8_t> bytes, std::string* error = nullptr);

// The user's home folder: $HOME, else the password entry's; empty when
// neither gives an absolute path.
std::string HomeDirectory();

}  // namespace fennick
