// The deflate engine pair of ZIP members: raw deflate and inflate by zlib.
#pragma once

#include "archive/al_engine.h"

namespace fennick {

class ALPkCompressor : public ALCompressor {
 public:
  // Levels 0 to 9; any other level is taken as -1, zlib's default.
  explicit ALPkCompressor(int level = 6, int windowBits = 15, int memLevel = 8);
  int Compress(ALStorage& input, ALStorage& output) override;
  // 0 normal, 1 maximum, 2 fast.
  int GetOption() const override { return option_; }
  int GetLevel() const { return level_; }

 private:
  int level_;
  int windowBits_;
  int memLevel_;
  int option_;
};

class ALPkDecompressor : public ALDecompressor {
 public:
  explicit ALPkDecompressor(int windowBits = 15);
  int Decompress(ALStorage& input, ALStorage& output, long length = -1) override;

 private:
  int windowBits_;
};

}  // namespace fennick
