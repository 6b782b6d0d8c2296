// Progress callback of the archive layer: a storage with a monitor attached
// reports its position at each load and flush of its buffer.
#pragma once

namespace fennick {

class ALStorage;

class ALMonitor {
 public:
  virtual ~ALMonitor() = default;
  // `position` is how far the storage has loaded or flushed: the end of the
  // bytes just moved.
  virtual void Progress(long position, ALStorage& storage) = 0;
};

}  // namespace fennick
