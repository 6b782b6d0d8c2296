#include "core/sealed_memfd.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "core/file_io.h"

namespace fennick {
namespace {

constexpr int kContentSeals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE;

std::string Cause(const char* what) { return std::string(what) + ": " + std::strerror(errno); }

}  // namespace

int MakeSealedMemfd(std::span<const uint8_t> bytes, std::string& error) {
  FileDescriptor fd(memfd_create("fennick-block", MFD_CLOEXEC | MFD_ALLOW_SEALING));
  if (fd.Get() < 0) {
    error = Cause("memfd_create");
    return -1;
  }
  // Sized first, so that a block too large for memory fails here and not half written.
  if (ftruncate(fd.Get(), static_cast<off_t>(bytes.size())) != 0) {
    error = Cause("cannot size the block");
    return -1;
  }
  size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t wrote = pwrite(fd.Get(), bytes.data() + done, bytes.size() - done, static_cast<off_t>(done));
    if (wrote < 0 && errno == EINTR) continue;
    if (wrote <= 0) {
      error = Cause("cannot fill the block");
      return -1;
    }
    done += static_cast<size_t>(wrote);
  }
  if (fcntl(fd.Get(), F_ADD_SEALS, kContentSeals | F_SEAL_SEAL) != 0) {
    error = Cause("cannot seal the block");
    return -1;
  }
  return fd.Release();
}

SealedBytes::SealedBytes(SealedBytes&& other) noexcept
    : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)) {}

SealedBytes& SealedBytes::operator=(SealedBytes&& other) noexcept {
  if (this != &other) {
    Unmap();
    data_ = std::exchange(other.data_, nullptr);
    size_ = std::exchange(other.size_, 0);
  }
  return *this;
}

SealedBytes::~SealedBytes() { Unmap(); }

void SealedBytes::Unmap() {
  if (data_ != nullptr) munmap(const_cast<uint8_t*>(data_), size_);
  data_ = nullptr;
  size_ = 0;
}

bool SealedBytes::Map(int fd, std::string& error) {
  Unmap();
  const int seals = fcntl(fd, F_GET_SEALS);
  if (seals < 0 || (seals & kContentSeals) != kContentSeals) {
    error = "the block is not a memfd sealed against writing, growing and shrinking";
    return false;
  }
  struct stat status {};
  if (fstat(fd, &status) != 0) {
    error = Cause("cannot measure the block");
    return false;
  }
  if (status.st_size == 0) return true;
  void* map = mmap(nullptr, static_cast<size_t>(status.st_size), PROT_READ, MAP_PRIVATE, fd, 0);
  if (map == MAP_FAILED) {
    error = Cause("cannot map the block");
    return false;
  }
  data_ = static_cast<const uint8_t*>(map);
  size_ = static_cast<size_t>(status.st_size);
  return true;
}

}  // namespace fennick
