// The Gl engine on storages: ALGlCompressor and ALGlDecompressor read their
// input through one ALStorage and write through another, around the span
// engine of archive/gl_engine.h.
#pragma once

#include "archive/al_status.h"
#include "archive/al_storage.h"
#include "archive/gl_engine.h"

namespace fennick {

class ALGlCompressor {
 public:
  // `level` 0 to 4 (windows of 1,024 to 16,384 bytes), or kGlCopyLevel.
  explicit ALGlCompressor(int level = kGlMaxLevel, bool failUncompressible = false);
  ALGlCompressor(const ALGlCompressor&) = delete;
  ALGlCompressor& operator=(const ALGlCompressor&) = delete;

  // Reads `input`, open, from its position to its end and writes the packed
  // bytes at `output`'s position. With failUncompressible, input that does
  // not get smaller is copied instead and the level becomes kGlCopyLevel,
  // which the caller must keep to unpack it. Returns the status.
  int Compress(ALStorage& input, ALStorage& output);
  // The level the last stream was made at.
  int CompressionLevel() const { return level_; }
  bool FailUncompressible() const { return failUncompressible_; }

  ALStatus status;

 private:
  int level_;
  bool failUncompressible_;
};

class ALGlDecompressor {
 public:
  // The window of `level` must be at least the packer's; kGlCopyLevel copies.
  explicit ALGlDecompressor(int level = kGlMaxLevel);
  ALGlDecompressor(const ALGlDecompressor&) = delete;
  ALGlDecompressor& operator=(const ALGlDecompressor&) = delete;

  // Reads `compressedLength` packed bytes at `input`'s position (-1: to its
  // end) and writes the unpacked bytes at `output`'s position. A truncated
  // stream stops quietly with what it gave. Returns the status.
  int Decompress(ALStorage& input, ALStorage& output, long compressedLength = -1);
  int CompressionLevel() const { return level_; }

  // When not -1, output beyond this many bytes is a failure: a damaged
  // stream cannot fill memory.
  long outputLimit = -1;
  ALStatus status;

 private:
  int level_;
};

}  // namespace fennick
