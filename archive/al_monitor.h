// Progress callback of the archive layer: a storage with a monitor attached
// reports its position at each load and flush of its buffer, and an archive
// operation announces its start, each entry's name and its end.
#pragma once

#include <string>

namespace fennick {

class ALStorage;

class ALMonitor {
 public:
  virtual ~ALMonitor() = default;
  // `position` is how far the storage has loaded or flushed: the end of the
  // bytes just moved.
  virtual void Progress(long position, ALStorage& storage) = 0;
  // `totalSize` is the byte count of the whole job, or -1 when the monitor
  // counts each object on its own.
  virtual void JobStart(long /*totalSize*/) {}
  virtual void JobEnd() {}
  // The entry that an operation has just come to.
  virtual void EntryName(const std::string& /*text*/) {}
};

}  // namespace fennick
