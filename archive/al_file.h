// ALFile: a storage on a disk file, through a POSIX file descriptor.
#pragma once

#include <string>

#include "archive/al_storage.h"

namespace fennick {

class ALFile : public ALStorage {
 public:
  // An empty name makes Create pick a temporary name "~al~NNN.tmp" in the
  // current folder.
  explicit ALFile(std::string fileName = {}, size_t bufferSize = kALDefaultBufferSize, ALCase nameCase = AL_EXACT_CASE);
  ~ALFile() override;

  // Read-write, or read-only when attributes.readOnly is set or writing is
  // refused. Size, time stamp and attributes come from the file.
  int Open() override;
  // Truncates or makes the file, and any missing folders on its path.
  int Create() override;
  int Close() override;
  int LoadBuffer(long position) override;
  int FlushBuffer() override;
  int Rename(const std::string& newName = {}, bool deleteOnClash = true) override;
  int Delete() override;

 private:
  int CreateTemporary();
  bool CloseDescriptor();  // false when close() reports a failure

  int fd_ = -1;
  long fileOffset_ = 0;  // where the descriptor stands, so that seeks happen only when needed
};

}  // namespace fennick
