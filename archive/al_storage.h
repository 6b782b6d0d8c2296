// The byte stream of the archive layer: a named object with its own buffer,
// one position, a running CRC-32 and a sticky status. Files and memory blocks
// derive from it; engines and archives read and write through it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <memory>
#include <span>
#include <string>

#include "archive/al_monitor.h"
#include "archive/al_name.h"
#include "archive/al_status.h"
#include "archive/crc32.h"

namespace fennick {

enum ALStorageType : int { AL_UNDEFINED = -1, AL_MEMORY_OBJECT = 0, AL_FILE_OBJECT = 1, AL_WIN_MEMORY_OBJECT = 2 };

inline constexpr size_t kALDefaultBufferSize = 4096;

// Time stamp in the manner of struct tm: years since 1900, month 0 to 11.
struct ALTimeDate {
  int year = 80;
  int month = 0;
  int day = 1;
  int hour = 0;
  int minute = 0;
  int second = 0;
  static ALTimeDate FromTime(std::time_t time);  // local time
};

struct ALFileAttributes {
  bool readOnly = false;
  bool system = false;
  bool hidden = false;
  bool archive = false;
  bool directory = false;
  bool label = false;
};

// There is no crypto engine in this system, so a storage has no crypto
// object: the buffer passes only through the CRC at each load and flush.
class ALStorage {
 public:
  virtual ~ALStorage() = default;
  ALStorage(const ALStorage&) = delete;
  ALStorage& operator=(const ALStorage&) = delete;

  // Data of the storage kind kept in an archive: none by default, written as
  // a 16-bit 0; reading skips a 16-bit length and that many bytes.
  virtual int WriteStorageObjectData(ALStorage& archive);
  virtual int ReadStorageObjectData(ALStorage& archive);
  // Open allocates the buffer (a buffer size of 0 gives none) and starts the
  // CRC, indices and position at the beginning; Create also sets size 0.
  virtual int Open();
  virtual int Create();
  virtual int Close();
  // Fills the buffer from `position`: the count loaded, AL_END_OF_FILE with
  // the status untouched when nothing is left, or the failure. Pending writes
  // are flushed first.
  virtual int LoadBuffer(long position) = 0;
  // Writes the pending bytes and moves the position past them.
  virtual int FlushBuffer() = 0;
  // Flushes, then makes `position` the next byte to read or write.
  virtual int Seek(long position);
  // Reports how far loading or flushing has come to the monitor, if any.
  virtual void YieldTime();
  // An empty `newName` restores the old name. The base only renames the
  // object; files rename on disk too.
  virtual int Rename(const std::string& newName = {}, bool deleteOnClash = true);
  virtual int UnRename(bool deleteOnClash = true) { return Rename({}, deleteOnClash); }
  virtual int Delete() { return status.GetStatusCode(); }
  // Renames to the name with the extension ".bak".
  virtual int RenameToBackup(bool deleteOnClash = true) { return Rename(name.WithExtension(".bak"), deleteOnClash); }

  // The next byte 0 to 255; AL_END_OF_FILE at the end (status stays 0), or
  // the failure status.
  int ReadChar() {
    if (readIndex_ < validBytes_ && status.GetStatusCode() >= 0) return buffer_[readIndex_++];
    return ReadCharSlow();
  }
  // `c & 255`, or the failure status.
  int WriteChar(int c) {
    if (writeIndex_ < capacity_ && validBytes_ == 0 && status.GetStatusCode() >= 0) {
      buffer_[writeIndex_++] = static_cast<uint8_t>(c);
      return c & 255;
    }
    return WriteCharSlow(c);
  }
  // The count copied; short only at the end of data or on failure.
  size_t ReadBuffer(std::span<uint8_t> bytes);
  size_t WriteBuffer(std::span<const uint8_t> bytes);
  // Little-endian values; a short read gives AL_END_OF_FILE or the failure.
  int ReadUint16(uint16_t& value);
  int ReadUint32(uint32_t& value);
  int WriteUint16(uint16_t value);
  int WriteUint32(uint32_t value);
  // `length` bytes into `text`; a length of 0xFFFF reads a 16-bit length
  // first. A short read of the text gives AL_END_OF_FILE.
  int ReadString(std::string& text, uint16_t length = 0xFFFF);

  // The position of the next byte to read or write.
  long Tell() const {
    return writeIndex_ > 0 ? position_ + static_cast<long>(writeIndex_)
                           : position_ - static_cast<long>(validBytes_) + static_cast<long>(readIndex_);
  }
  // -1 when unknown; counts bytes still waiting in the buffer.
  long GetSize() const;
  void SetSize(long size) { size_ = size; }
  bool IsOpen() const { return open_; }
  int ClearError() {
    status.ClearError();
    return AL_SUCCESS;
  }
  const std::string& GetName() const { return name.Get(); }
  const std::string& GetOldName() const { return name.GetOldName(); }
  ALStorageType GetStorageType() const { return type_; }
  bool IsTemporary() const { return temporary_; }
  bool WasCreated() const { return createCalled_; }

  // The running CRC-32 of the bytes loaded and flushed since Open or Create,
  // not inverted; kCrc32Start before any.
  uint32_t GetCrc32() const { return crc_; }
  void SetCrcEnabled(bool enabled) { crcEnabled_ = enabled; }

  ALName name;
  ALStatus status;
  ALTimeDate timeDate;
  ALFileAttributes attributes;
  ALMonitor* monitor = nullptr;

 protected:
  ALStorage(std::string objectName, size_t bufferSize, ALStorageType type, ALCase nameCase);

  // The buffer is `capacity_` bytes: 0 while closed. Bytes [readIndex_,
  // validBytes_) are loaded and unread; bytes [0, writeIndex_) wait to be
  // written at position_. At most one of validBytes_ and writeIndex_ is set.
  // After a load position_ is just past the loaded bytes.
  std::span<uint8_t> Buffer() { return {buffer_.get(), capacity_}; }
  // Bookkeeping after `count` bytes were loaded from `position`: CRC, indices,
  // position, monitor. Returns the count.
  int FinishLoad(long position, size_t count);
  // Bookkeeping after the pending bytes went out; CRC is taken by the caller
  // before writing.
  void FinishFlush();
  void UpdateCrc(std::span<const uint8_t> bytes) {
    if (crcEnabled_) crc_ = Crc32Update(crc_, bytes);
  }
  int StatusCode() const { return status.GetStatusCode(); }

  size_t validBytes_ = 0;
  size_t writeIndex_ = 0;
  size_t readIndex_ = 0;
  long position_ = 0;
  long size_ = -1;
  bool temporary_ = false;

 private:
  int StartBuffer();
  // Loads at Tell() after the status and buffer checks.
  int Refill();
  int ReadCharSlow();
  int WriteCharSlow(int c);
  // Makes room for at least one byte to write; false with the status set.
  bool PrepareWrite();

  std::unique_ptr<uint8_t[]> buffer_;
  size_t capacity_ = 0;
  uint32_t crc_ = kCrc32Start;
  bool crcEnabled_ = false;
  bool createCalled_ = false;
  bool open_ = false;
  ALStorageType type_;
  size_t bufferSize_;
};

}  // namespace fennick
