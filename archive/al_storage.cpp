#include "archive/al_storage.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <vector>

namespace fennick {

ALTimeDate ALTimeDate::FromTime(std::time_t time) {
  std::tm local{};
  if (localtime_r(&time, &local) == nullptr) return {};
  return {local.tm_year, local.tm_mon, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec};
}

ALStorage::ALStorage(std::string objectName, size_t bufferSize, ALStorageType type, ALCase nameCase)
    : name(std::move(objectName), nameCase), type_(type), bufferSize_(bufferSize) {}

int ALStorage::WriteStorageObjectData(ALStorage& archive) { return archive.WriteUint16(0); }

int ALStorage::ReadStorageObjectData(ALStorage& archive) {
  uint16_t length = 0;
  const int result = archive.ReadUint16(length);
  if (result < 0) return result;
  for (uint16_t i = 0; i < length; ++i) {
    const int c = archive.ReadChar();
    if (c < 0) return c;
  }
  return archive.status.GetStatusCode();
}

int ALStorage::StartBuffer() {
  buffer_.reset();
  capacity_ = 0;
  if (bufferSize_ > 0) {
    buffer_.reset(new (std::nothrow) uint8_t[bufferSize_]);
    if (!buffer_) return status.SetError(AL_CANT_ALLOCATE_BUFFER, "Allocation of buffer failed in Open()");
    capacity_ = bufferSize_;
  }
  crc_ = kCrc32Start;
  validBytes_ = writeIndex_ = readIndex_ = 0;
  position_ = 0;
  open_ = true;
  return AL_SUCCESS;
}

int ALStorage::Open() {
  if (StatusCode() < 0) return StatusCode();
  createCalled_ = false;
  return StartBuffer();
}

int ALStorage::Create() {
  if (StatusCode() < 0) return StatusCode();
  const int result = StartBuffer();
  createCalled_ = true;
  size_ = 0;
  return result;
}

int ALStorage::Close() {
  buffer_.reset();
  capacity_ = 0;
  validBytes_ = writeIndex_ = readIndex_ = 0;
  open_ = false;
  return StatusCode();
}

int ALStorage::Seek(long position) {
  if (StatusCode() < 0) return StatusCode();
  if (FlushBuffer() < 0) return StatusCode();
  if (position < 0) return status.SetError(AL_SEEK_ERROR, "Seek failure on %s.  errno = %d", name.c_str(), EINVAL);
  validBytes_ = readIndex_ = 0;
  position_ = position;
  return AL_SUCCESS;
}

void ALStorage::YieldTime() {
  if (monitor != nullptr) monitor->Progress(position_, *this);
}

int ALStorage::Rename(const std::string& newName, bool /*deleteOnClash*/) {
  if (StatusCode() < 0) return StatusCode();
  const std::string target = newName.empty() ? name.GetOldName() : newName;
  if (name.Matches(target)) {
    return status.SetError(AL_RENAME_ERROR, "Error attempting to rename %s to %s.  Can't rename to the same name!",
                           name.c_str(), target.c_str());
  }
  name.Set(target);
  return AL_SUCCESS;
}

int ALStorage::FinishLoad(long position, size_t count) {
  UpdateCrc(Buffer().first(count));
  readIndex_ = 0;
  validBytes_ = count;
  position_ = position + static_cast<long>(count);
  YieldTime();
  return static_cast<int>(count);
}

void ALStorage::FinishFlush() {
  position_ += static_cast<long>(writeIndex_);
  size_ = std::max(size_, position_);
  writeIndex_ = readIndex_ = validBytes_ = 0;
  YieldTime();
}

int ALStorage::Refill() {
  if (StatusCode() < 0) return StatusCode();
  if (capacity_ == 0) {
    return status.SetError(AL_LOGIC_ERROR, "Attempt to read from %s, which is not open or has no buffer", name.c_str());
  }
  return LoadBuffer(Tell());
}

int ALStorage::ReadCharSlow() {
  const int loaded = Refill();
  if (loaded < 0) return loaded;
  return buffer_[readIndex_++];
}

bool ALStorage::PrepareWrite() {
  if (StatusCode() < 0) return false;
  if (capacity_ == 0) {
    status.SetError(AL_LOGIC_ERROR, "Attempt to write to %s, which is not open or has no buffer", name.c_str());
    return false;
  }
  if (validBytes_ > 0) {
    // Writing after reading goes on at the next unread byte.
    position_ = Tell();
    validBytes_ = readIndex_ = 0;
  }
  return writeIndex_ < capacity_ || FlushBuffer() >= 0;
}

int ALStorage::WriteCharSlow(int c) {
  if (!PrepareWrite()) return StatusCode();
  buffer_[writeIndex_++] = static_cast<uint8_t>(c);
  return c & 255;
}

size_t ALStorage::ReadBuffer(std::span<uint8_t> bytes) {
  size_t done = 0;
  while (done < bytes.size() && StatusCode() >= 0) {
    if (readIndex_ >= validBytes_ && Refill() < 0) break;
    const size_t count = std::min(validBytes_ - readIndex_, bytes.size() - done);
    std::copy_n(Buffer().subspan(readIndex_).begin(), count, bytes.subspan(done).begin());
    readIndex_ += count;
    done += count;
  }
  return done;
}

size_t ALStorage::WriteBuffer(std::span<const uint8_t> bytes) {
  size_t done = 0;
  while (done < bytes.size() && PrepareWrite()) {
    const size_t count = std::min(capacity_ - writeIndex_, bytes.size() - done);
    std::copy_n(bytes.subspan(done).begin(), count, Buffer().subspan(writeIndex_).begin());
    writeIndex_ += count;
    done += count;
  }
  return done;
}

int ALStorage::ReadUint16(uint16_t& value) {
  const int low = ReadChar();
  const int high = low < 0 ? low : ReadChar();
  if (high < 0) return high;
  value = static_cast<uint16_t>(low | high << 8);
  return AL_SUCCESS;
}

int ALStorage::ReadUint32(uint32_t& value) {
  uint16_t low = 0;
  uint16_t high = 0;
  int result = ReadUint16(low);
  if (result >= 0) result = ReadUint16(high);
  if (result < 0) return result;
  value = static_cast<uint32_t>(low) | static_cast<uint32_t>(high) << 16;
  return AL_SUCCESS;
}

int ALStorage::WriteUint16(uint16_t value) {
  int result = WriteChar(value & 255);
  if (result >= 0) result = WriteChar(value >> 8);
  return result < 0 ? result : AL_SUCCESS;
}

int ALStorage::WriteUint32(uint32_t value) {
  const int result = WriteUint16(static_cast<uint16_t>(value));
  return result < 0 ? result : WriteUint16(static_cast<uint16_t>(value >> 16));
}

int ALStorage::ReadString(std::string& text, uint16_t length) {
  text.clear();
  if (StatusCode() < 0) return StatusCode();
  if (length == 0xFFFF && ReadUint16(length) < 0) {
    return status.SetError(AL_READ_ERROR, "Error reading string lengthin ReadString() for object %s", name.c_str());
  }
  std::vector<uint8_t> bytes;
  try {
    bytes.resize(length);
    text.reserve(length);
  } catch (const std::bad_alloc&) {
    return status.SetError(AL_CANT_ALLOCATE_MEMORY, "Error allocating buffer space in call to ReadString() for object %s",
                           name.c_str());
  }
  const size_t got = ReadBuffer(bytes);
  text.assign(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(got));
  if (StatusCode() < 0) return StatusCode();
  return got < length ? AL_END_OF_FILE : AL_SUCCESS;
}

long ALStorage::GetSize() const {
  if (size_ < 0 || writeIndex_ == 0) return size_;
  return std::max(size_, position_ + static_cast<long>(writeIndex_));
}

}  // namespace fennick
