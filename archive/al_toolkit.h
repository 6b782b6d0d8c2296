// ALToolKit: the factories an archive uses to make storage objects and
// engines by number while it reads a directory.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "archive/al_engine.h"
#include "archive/al_storage.h"

namespace fennick {

// Engine numbers of the toolkit: 100 + the ZIP method, with deflate's speed
// bits added to 108.
inline constexpr int AL_TOOLKIT_STORED = 100;
inline constexpr int AL_TOOLKIT_DEFLATE_NORMAL = 108;
inline constexpr int AL_TOOLKIT_DEFLATE_MAXIMUM = 109;
inline constexpr int AL_TOOLKIT_DEFLATE_FAST = 110;
inline constexpr int AL_TOOLKIT_DEFLATE_SUPER_FAST = 111;

class ALToolKit {
 public:
  struct StorageMaker {
    ALStorageType type;
    std::function<std::unique_ptr<ALStorage>(const std::string& name)> make;
  };
  struct EngineMaker {
    int firstNumber, lastNumber;
    std::function<std::unique_ptr<ALCompressor>()> compressor;
    std::function<std::unique_ptr<ALDecompressor>()> decompressor;
  };

  void Add(StorageMaker maker) { storages_.push_back(std::move(maker)); }
  void Add(EngineMaker maker) { engines_.push_back(std::move(maker)); }

  // AL_UNDEFINED takes the first maker. Null when none fits.
  std::unique_ptr<ALStorage> CreateStorageObject(const std::string& name, ALStorageType type) const;
  std::unique_ptr<ALCompressor> CreateCompressor(int number) const;
  std::unique_ptr<ALDecompressor> CreateDecompressor(int number) const;

 private:
  std::vector<StorageMaker> storages_;
  std::vector<EngineMaker> engines_;
};

// Memory, file, copy pair and deflate pair; storage names ignore case, as
// ZIP member names do here.
ALToolKit ZipToolKit(int level = 6, int windowBits = 15, int memLevel = 8);

}  // namespace fennick
