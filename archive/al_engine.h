// Compression engines of the archive layer: the shared shape of a compressor
// and a decompressor, and the copy pair that stores bytes unchanged.
#pragma once

#include <string>

#include "archive/al_status.h"
#include "archive/al_storage.h"

namespace fennick {

// Engine type numbers as entries carry them.
inline constexpr int AL_COMPRESSION_COPY = 0;
inline constexpr int AL_COMPRESSION_DEFLATE = 108;

class ALCompressor {
 public:
  virtual ~ALCompressor() = default;
  ALCompressor(const ALCompressor&) = delete;
  ALCompressor& operator=(const ALCompressor&) = delete;

  // Reads `input`, open and at its start, to its end and writes the packed
  // bytes at `output`'s position. Returns the status.
  virtual int Compress(ALStorage& input, ALStorage& output) = 0;
  // The engine's own setting as archives record it (deflate: 0 normal,
  // 1 maximum, 2 fast).
  virtual int GetOption() const { return 0; }

  int GetType() const { return type_; }
  const std::string& GetName() const { return name_; }
  ALStatus status;

 protected:
  ALCompressor(int type, std::string engineName) : type_(type), name_(std::move(engineName)) {}

 private:
  int type_;
  std::string name_;
};

class ALDecompressor {
 public:
  virtual ~ALDecompressor() = default;
  ALDecompressor(const ALDecompressor&) = delete;
  ALDecompressor& operator=(const ALDecompressor&) = delete;

  // Reads `length` packed bytes at `input`'s position (-1: to its end) and
  // writes the unpacked bytes at `output`'s position. Returns the status.
  virtual int Decompress(ALStorage& input, ALStorage& output, long length = -1) = 0;

  int GetType() const { return type_; }
  const std::string& GetName() const { return name_; }
  // When not -1, output beyond this many bytes is a failure: a damaged
  // stream cannot fill memory.
  long outputLimit = -1;
  ALStatus status;

 protected:
  ALDecompressor(int type, std::string engineName) : type_(type), name_(std::move(engineName)) {}

 private:
  int type_;
  std::string name_;
};

class ALCopyCompressor : public ALCompressor {
 public:
  ALCopyCompressor() : ALCompressor(AL_COMPRESSION_COPY, "Binary copy") {}
  int Compress(ALStorage& input, ALStorage& output) override;
};

class ALCopyDecompressor : public ALDecompressor {
 public:
  ALCopyDecompressor() : ALDecompressor(AL_COMPRESSION_COPY, "Binary copy") {}
  int Decompress(ALStorage& input, ALStorage& output, long length = -1) override;
};

// Copies `length` bytes (-1: to the end) from `input` to `output` through a
// buffer; the count copied, or a negative status taken into `status`.
long ALCopyBytes(ALStorage& input, ALStorage& output, long length, ALStatus& status);

}  // namespace fennick
