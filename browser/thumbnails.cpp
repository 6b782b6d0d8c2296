#include "browser/thumbnails.h"

#include <thread>
#include <utility>

#include "core/format_table.h"
#include "tools/bitmap_file.h"
#include "tools/render/design_renderer.h"

namespace fennick {

Thumbnails::Thumbnails(Wanted wanted, Deliver deliver) : wanted_(std::move(wanted)), deliver_(std::move(deliver)) {}

Thumbnails::~Thumbnails() {
  std::unique_lock lock(mutex_);
  gone_ = true;
  idle_.wait(lock, [this] { return running_ == 0; });
}

void Thumbnails::Ask(ThumbnailRequest request) {
  {
    const std::lock_guard lock(mutex_);
    if (gone_) return;
    ++running_;
  }
  std::thread([this, request = std::move(request)] {
    previewLock_.acquire();
    Work(request);
    previewLock_.release();
    const std::lock_guard lock(mutex_);
    if (--running_ == 0) idle_.notify_all();
  }).detach();
}

void Thumbnails::Work(const ThumbnailRequest& request) {
  {
    const std::lock_guard lock(mutex_);
    if (gone_) return;
  }
  if (!wanted_(request.record)) {
    deliver_(request, std::nullopt);
    return;
  }
  deliver_(request, Draw(request.path, request.size, request.threeD));
}

StitchBitmap Thumbnails::Draw(const std::string& path, int32_t size, bool threeD) {
  Design design;
  DesignRenderer renderer;
  if (ReadDesignFile(design, path, LastFile::kLeave) != 0 || design.stitches.Empty()) return renderer.bitmap;
  BitmapOptions options;
  options.size = size;
  options.shaded = threeD;
  options.flipY = true;  // the list's pictures run from the top row down
  options.background = 0xFFFFFF;
  RenderBitmap(design, options, renderer);
  return std::move(renderer.bitmap);
}

}  // namespace fennick
