// The list's pictures, each drawn on a thread of its own. The threads take
// one lock in turn, so they run one at a time in the order they were asked
// for, and each draws only if its item is still in view and still without a
// picture when its turn comes: a design is never decoded for an item the
// user has scrolled past.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <semaphore>
#include <string>

#include "tools/render/stitch_bitmap.h"

namespace fennick {

struct ThumbnailRequest {
  uint64_t record = 0;  // BrowserRecord::id
  std::string path;     // the design's text form
  int32_t size = 200;   // edge in pixels
  bool threeD = true;
};

class Thumbnails {
 public:
  // Both are called on the drawing threads. `wanted` says whether the
  // record is in view and still without a picture; `deliver` gets the
  // picture, an invalid bitmap for a design that does not read (the stock
  // picture goes in its place), or nothing when the record was not wanted
  // any more when its turn came.
  using Wanted = std::function<bool(uint64_t record)>;
  using Deliver = std::function<void(const ThumbnailRequest& request, std::optional<StitchBitmap> picture)>;

  Thumbnails(Wanted wanted, Deliver deliver);
  // Threads still waiting end without drawing; the one drawing is waited for.
  ~Thumbnails();
  Thumbnails(const Thumbnails&) = delete;
  Thumbnails& operator=(const Thumbnails&) = delete;

  void Ask(ThumbnailRequest request);

  // The design drawn as a thumbnail: on white, `size` square; invalid for a
  // design without stitches.
  static StitchBitmap Draw(const std::string& path, int32_t size, bool threeD);

 private:
  void Work(const ThumbnailRequest& request);

  Wanted wanted_;
  Deliver deliver_;
  std::counting_semaphore<50> previewLock_{1};
  std::mutex mutex_;
  std::condition_variable idle_;
  int running_ = 0;
  bool gone_ = false;
};

}  // namespace fennick
