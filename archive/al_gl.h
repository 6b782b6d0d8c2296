// The Gl engine on storages: ALGlCompressor and ALGlDecompressor read their
// input through one ALStorage and write through another, around the span
// engine of archive/gl_engine.h.
#pragma once

#include "archive/al_engine.h"
#include "archive/al_storage.h"
#include "archive/gl_engine.h"

namespace fennick {

// The engine type number of Gl entries.
inline constexpr int AL_COMPRESSION_GL = 1;

class ALGlCompressor : public ALCompressor {
 public:
  // `level` 0 to 4 (windows of 1,024 to 16,384 bytes), or kGlCopyLevel.
  explicit ALGlCompressor(int level = kGlMaxLevel, bool failUncompressible = false);

  // Reads `input`, open, from its position to its end and writes the packed
  // bytes at `output`'s position. With failUncompressible, input that does
  // not get smaller is copied instead and the level becomes kGlCopyLevel,
  // which the caller must keep to unpack it. Returns the status.
  int Compress(ALStorage& input, ALStorage& output) override;
  // The level the last stream was made at.
  int CompressionLevel() const { return level_; }
  int GetOption() const override { return level_; }

 private:
  int level_;
  bool failUncompressible_;
};

class ALGlDecompressor : public ALDecompressor {
 public:
  // The window of `level` must be at least the packer's; kGlCopyLevel copies.
  explicit ALGlDecompressor(int level = kGlMaxLevel);

  // Reads `compressedLength` packed bytes at `input`'s position (-1: to its
  // end) and writes the unpacked bytes at `output`'s position. A truncated
  // stream stops quietly with what it gave. Returns the status.
  int Decompress(ALStorage& input, ALStorage& output, long compressedLength = -1) override;
  int CompressionLevel() const { return level_; }

 private:
  int level_;
};

}  // namespace fennick
