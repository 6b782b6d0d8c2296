#include "archive/al_file.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fennick {
namespace {

constexpr int kTemporaryTries = 1000;

int OpenFile(const std::string& path, int flags) { return open(path.c_str(), flags | O_CLOEXEC, 0666); }

// Makes each folder on the path in turn; existing folders are fine, and any
// other failure shows when the file itself is opened again.
void MakeFolders(const std::string& path) {
  for (size_t slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1)) {
    mkdir(path.substr(0, slash).c_str(), 0777);
  }
}

// Mode bits have no archive, system-file or label bits: read-only is a missing
// owner write bit, hidden a name starting with '.', system anything that is
// neither a plain file nor a folder (devices, pipes, sockets).
ALFileAttributes AttributesOf(const struct stat& info, const std::string& path) {
  const size_t slash = path.find_last_of('/');
  const std::string base = slash == std::string::npos ? path : path.substr(slash + 1);
  ALFileAttributes attributes;
  attributes.readOnly = (info.st_mode & S_IWUSR) == 0;
  attributes.hidden = !base.empty() && base[0] == '.';
  attributes.directory = S_ISDIR(info.st_mode);
  attributes.system = !S_ISREG(info.st_mode) && !S_ISDIR(info.st_mode);
  return attributes;
}

}  // namespace

ALFile::ALFile(std::string fileName, size_t bufferSize, ALCase nameCase)
    : ALStorage(std::move(fileName), bufferSize, AL_FILE_OBJECT, nameCase) {}

ALFile::~ALFile() { Close(); }

bool ALFile::CloseDescriptor() {
  const bool closed = fd_ < 0 || close(fd_) == 0;
  fd_ = -1;
  fileOffset_ = 0;
  return closed;
}

int ALFile::Open() {
  if (StatusCode() < 0) return StatusCode();
  if (IsOpen()) Close();
  fd_ = OpenFile(name.Get(), attributes.readOnly ? O_RDONLY : O_RDWR);
  // A file we may not write is still read; EROFS is the same refusal on a
  // read-only mount.
  if (fd_ < 0 && !attributes.readOnly && (errno == EACCES || errno == EROFS)) fd_ = OpenFile(name.Get(), O_RDONLY);
  if (fd_ < 0) {
    return status.SetError(AL_CANT_OPEN_FILE, "File open failure.  Open of %s returned errno = %d", name.c_str(), errno);
  }
  if (ALStorage::Open() < 0) {
    CloseDescriptor();
    return StatusCode();
  }
  struct stat info {};
  if (fstat(fd_, &info) != 0) {
    const int error = errno;
    CloseDescriptor();
    return status.SetError(AL_CANT_OPEN_FILE, "Couldn't get time, date, and size information for %s.  errno = %d.",
                           name.c_str(), error);
  }
  size_ = static_cast<long>(info.st_size);
  timeDate = ALTimeDate::FromTime(info.st_mtime);
  attributes = AttributesOf(info, name.Get());
  return AL_SUCCESS;
}

int ALFile::CreateTemporary() {
  char temporary[32];
  for (int i = 0; i < kTemporaryTries; ++i) {
    std::snprintf(temporary, sizeof temporary, "~al~%03d.tmp", i);
    fd_ = OpenFile(temporary, O_RDWR | O_CREAT | O_EXCL);
    if (fd_ >= 0) {
      name.Set(temporary);
      temporary_ = true;
      return AL_SUCCESS;
    }
    if (errno != EEXIST && errno != EACCES) {
      return status.SetError(AL_CANT_OPEN_FILE, "Temporary file creation failure.  Open of %s returned errno = %d",
                             temporary, errno);
    }
  }
  return status.SetError(AL_CANT_OPEN_FILE, "Temporary file creation failure.  Tried %d times to open %s",
                         kTemporaryTries, temporary);
}

int ALFile::Create() {
  if (StatusCode() < 0) return StatusCode();
  if (IsOpen()) Close();
  if (ALStorage::Create() < 0) return StatusCode();
  if (name.Empty()) return CreateTemporary();
  constexpr int kCreateFlags = O_RDWR | O_CREAT | O_TRUNC;
  fd_ = OpenFile(name.Get(), kCreateFlags);
  if (fd_ < 0 && errno == ENOENT && name.Get().find('/', 1) != std::string::npos) {
    MakeFolders(name.Get());
    fd_ = OpenFile(name.Get(), kCreateFlags);
  }
  if (fd_ < 0) {
    return status.SetError(AL_CANT_OPEN_FILE, "File creation failure.  Open of %s returned errno = %d", name.c_str(),
                           errno);
  }
  timeDate = ALTimeDate::FromTime(std::time(nullptr));
  return AL_SUCCESS;
}

int ALFile::Close() {
  if (fd_ >= 0) FlushBuffer();
  if (!CloseDescriptor() && StatusCode() >= 0) {
    // A failed close after writing can mean lost data.
    status.SetError(AL_WRITE_ERROR, "Write failure on %s.  result = %d, errno = %d", name.c_str(), -1, errno);
  }
  return ALStorage::Close();
}

int ALFile::LoadBuffer(long position) {
  if (StatusCode() < 0) return StatusCode();
  if (writeIndex_ > 0 && FlushBuffer() < 0) return StatusCode();
  if (fileOffset_ != position) {
    if (lseek(fd_, position, SEEK_SET) < 0) {
      return status.SetError(AL_SEEK_ERROR, "Seek failure on %s.  errno = %d", name.c_str(), errno);
    }
    fileOffset_ = position;
  }
  const std::span<uint8_t> buffer = Buffer();
  ssize_t got;
  do {
    got = read(fd_, buffer.data(), buffer.size());
  } while (got < 0 && errno == EINTR);
  if (got < 0) return status.SetError(AL_READ_ERROR, "Read failure on %s.  errno = %d", name.c_str(), errno);
  if (got == 0) {
    validBytes_ = readIndex_ = 0;
    position_ = position;
    return AL_END_OF_FILE;
  }
  fileOffset_ = position + got;
  return FinishLoad(position, static_cast<size_t>(got));
}

int ALFile::FlushBuffer() {
  if (StatusCode() < 0) return StatusCode();
  if (writeIndex_ == 0) return AL_SUCCESS;
  if (fileOffset_ != position_) {
    if (lseek(fd_, position_, SEEK_SET) < 0) {
      return status.SetError(AL_SEEK_ERROR, "Seek failure on %s.  errno = %d", name.c_str(), errno);
    }
    fileOffset_ = position_;
  }
  const std::span<const uint8_t> pending = Buffer().first(writeIndex_);
  UpdateCrc(pending);
  size_t done = 0;
  while (done < pending.size()) {
    const std::span<const uint8_t> rest = pending.subspan(done);
    const ssize_t result = write(fd_, rest.data(), rest.size());
    if (result < 0 && errno == EINTR) continue;
    if (result <= 0) {
      fileOffset_ = -1;  // unknown after a failed write
      return status.SetError(AL_WRITE_ERROR, "Write failure on %s.  result = %d, errno = %d", name.c_str(),
                             static_cast<int>(result), errno);
    }
    done += static_cast<size_t>(result);
  }
  FinishFlush();
  fileOffset_ = position_;
  return AL_SUCCESS;
}

int ALFile::Rename(const std::string& newName, bool deleteOnClash) {
  if (StatusCode() < 0) return StatusCode();
  const std::string target = newName.empty() ? name.GetOldName() : newName;
  if (name.Matches(target)) {
    return status.SetError(AL_RENAME_ERROR, "Error attempting to rename %s to %s.  Can't rename to the same name!",
                           name.c_str(), target.c_str());
  }
  // rename() replaces an existing file in one step; without deleteOnClash an
  // existing target is kept and the rename fails.
  const int result = deleteOnClash ? rename(name.c_str(), target.c_str())
                                   : renameat2(AT_FDCWD, name.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE);
  if (result != 0) {
    const int error = errno;
    if (deleteOnClash && (error == EISDIR || error == ENOTEMPTY || error == EEXIST)) {
      return status.SetError(AL_RENAME_ERROR, "Error deleting %s before renaming %s.  errno = %d", target.c_str(),
                             name.c_str(), error);
    }
    return status.SetError(AL_RENAME_ERROR, "Error renaming %s to %s.  errno = %d", name.c_str(), target.c_str(), error);
  }
  name.Set(target);
  return AL_SUCCESS;
}

int ALFile::Delete() {
  if (StatusCode() < 0) return StatusCode();
  if (unlink(name.c_str()) != 0) {
    return status.SetError(AL_DELETE_ERROR, "Error deleting file %s, errno = %d", name.c_str(), errno);
  }
  return AL_SUCCESS;
}

}  // namespace fennick
