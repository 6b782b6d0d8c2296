#include "archive/al_pk_engine.h"

#include <algorithm>
#include <cstdint>
#include <vector>
#include <zlib.h>

namespace fennick {
namespace {

constexpr size_t kChunk = 4096;

struct LevelName {
  const char* name;
  int option;
};

LevelName NameOfLevel(int level) {
  if (level == 0) return {"Stored", 0};
  if (level == 1) return {"Deflate Fast", 2};
  if (level >= 2 && level <= 8) return {"Deflate Normal", 0};
  if (level == 9) return {"Deflate Maximum", 1};
  return {"???", 0};
}

int TakeStatus(ALStatus& engine, const ALStorage& storage) {
  if (engine.GetStatusCode() >= 0 && storage.status.GetStatusCode() < 0) {
    engine.SetError(storage.status.GetStatusCode(), "%s", storage.status.GetStatusDetail());
  }
  return engine.GetStatusCode();
}

// Writes the bytes zlib has produced into `output`; false on a short write.
bool Drain(ALStorage& output, std::vector<uint8_t>& out, const z_stream& stream) {
  const size_t produced = out.size() - stream.avail_out;
  return produced == 0 || output.WriteBuffer(std::span<const uint8_t>(out).first(produced)) == produced;
}

}  // namespace

ALPkCompressor::ALPkCompressor(int level, int windowBits, int memLevel)
    : ALCompressor(AL_COMPRESSION_DEFLATE, NameOfLevel(level).name),
      level_(level >= 0 && level <= 9 ? level : -1),
      windowBits_(windowBits),
      memLevel_(memLevel),
      option_(NameOfLevel(level).option) {}

int ALPkCompressor::Compress(ALStorage& input, ALStorage& output) {
  if (status.GetStatusCode() < 0) return status.GetStatusCode();
  z_stream stream{};
  // deflateInit2 passes this zlib's own version and stream size, the
  // equivalent of the fixed values of the zlib the format was first built on.
  // Negated window bits: raw deflate without the zlib header.
  const int init = deflateInit2(&stream, level_, Z_DEFLATED, -windowBits_, memLevel_, Z_DEFAULT_STRATEGY);
  if (init != Z_OK) return status.SetError(AL_CANT_CREATE_ENGINE, "Error creating deflate engine. ZLIB returned %d\n", init);
  std::vector<uint8_t> in(kChunk), out(kChunk);
  int result = Z_OK;
  // Buffer by buffer until the input ends or deflate reports anything but Z_OK.
  while (result == Z_OK) {
    const size_t got = input.ReadBuffer(in);
    if (got == 0) break;
    stream.next_in = in.data();
    stream.avail_in = static_cast<uInt>(got);
    while (result == Z_OK && stream.avail_in > 0) {
      stream.next_out = out.data();
      stream.avail_out = static_cast<uInt>(out.size());
      result = deflate(&stream, Z_NO_FLUSH);
      if (!Drain(output, out, stream)) result = Z_ERRNO;
    }
  }
  if (result == Z_OK && TakeStatus(status, input) >= 0) {
    do {
      stream.next_out = out.data();
      stream.avail_out = static_cast<uInt>(out.size());
      result = deflate(&stream, Z_FINISH);
      if (!Drain(output, out, stream)) result = Z_ERRNO;
    } while (result == Z_OK || result == Z_BUF_ERROR);
  }
  deflateEnd(&stream);
  if (TakeStatus(status, input) < 0 || TakeStatus(status, output) < 0) return status.GetStatusCode();
  if (result != Z_STREAM_END) return status.SetError(AL_INTERNAL_ERROR, "Deflate failed.  ZLIB returned %d", result);
  return AL_SUCCESS;
}

ALPkDecompressor::ALPkDecompressor(int windowBits) : ALDecompressor(AL_COMPRESSION_DEFLATE, "Inflate"), windowBits_(windowBits) {}

int ALPkDecompressor::Decompress(ALStorage& input, ALStorage& output, long length) {
  if (status.GetStatusCode() < 0) return status.GetStatusCode();
  z_stream stream{};
  const int init = inflateInit2(&stream, -windowBits_);
  if (init != Z_OK) return status.SetError(AL_CANT_CREATE_ENGINE, "Error creating inflate engine. ZLIB returned %d\n", init);
  std::vector<uint8_t> in(kChunk), out(kChunk);
  long remaining = length;
  long written = 0;
  int result = Z_OK;
  bool needInput = true;  // false while a full output buffer may leave more to take out
  while (result == Z_OK) {
    if (stream.avail_in == 0 && needInput) {
      const size_t want = remaining < 0 ? kChunk : std::min(kChunk, static_cast<size_t>(remaining));
      const size_t got = want == 0 ? 0 : input.ReadBuffer(std::span(in).first(want));
      if (got == 0) break;  // the packed bytes ended before the stream did
      if (remaining > 0) remaining -= static_cast<long>(got);
      stream.next_in = in.data();
      stream.avail_in = static_cast<uInt>(got);
    }
    stream.next_out = out.data();
    stream.avail_out = static_cast<uInt>(out.size());
    result = inflate(&stream, Z_NO_FLUSH);
    if (result == Z_BUF_ERROR) result = Z_OK;  // no progress possible until more input comes
    written += static_cast<long>(out.size() - stream.avail_out);
    if (outputLimit >= 0 && written > outputLimit) {
      inflateEnd(&stream);
      return status.SetError(AL_INVALID_ARCHIVE, "Inflated data of %s runs past its size of %ld bytes",
                             output.name.c_str(), outputLimit);
    }
    if (!Drain(output, out, stream)) break;
    needInput = stream.avail_out != 0;
  }
  inflateEnd(&stream);
  if (TakeStatus(status, input) < 0 || TakeStatus(status, output) < 0) return status.GetStatusCode();
  if (result != Z_STREAM_END) {
    return status.SetError(AL_INVALID_ARCHIVE, "Inflate failed on %s.  ZLIB returned %d", output.name.c_str(),
                           result == Z_OK ? Z_DATA_ERROR : result);
  }
  return AL_SUCCESS;
}

}  // namespace fennick
