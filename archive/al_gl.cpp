#include "archive/al_gl.h"

#include <algorithm>
#include <new>
#include <vector>

namespace fennick {
namespace {

constexpr size_t kReadChunk = 65536;

// Takes a storage's failure into the engine's status, keeping its text.
int TakeStorageFailure(ALStatus& status, const ALStorage& storage) {
  return status.SetError(storage.status.GetStatusCode(), "%s", storage.status.GetStatusDetail());
}

// Reads up to `limit` bytes (SIZE_MAX: to the end) from the storage's
// position; false when the storage failed.
bool ReadThrough(ALStorage& input, size_t limit, std::vector<uint8_t>& bytes) {
  bytes.clear();
  const long size = input.GetSize();
  const long position = input.Tell();
  if (size > position) bytes.reserve(std::min(limit, static_cast<size_t>(size - position)));
  while (bytes.size() < limit) {
    const size_t start = bytes.size();
    const size_t want = std::min(kReadChunk, limit - start);
    bytes.resize(start + want);
    const size_t got = input.ReadBuffer(std::span<uint8_t>(bytes).subspan(start, want));
    bytes.resize(start + got);
    if (got < want) break;
  }
  return input.status.GetStatusCode() >= 0;
}

bool WriteThrough(ALStorage& output, std::span<const uint8_t> bytes) {
  return output.WriteBuffer(bytes) == bytes.size() && output.status.GetStatusCode() >= 0;
}

}  // namespace

ALGlCompressor::ALGlCompressor(int level, bool failUncompressible)
    : ALCompressor(AL_COMPRESSION_GL, "Gl"), level_(level), failUncompressible_(failUncompressible) {}

int ALGlCompressor::Compress(ALStorage& input, ALStorage& output) {
  if (status.GetStatusCode() < 0) return status.GetStatusCode();
  try {
    std::vector<uint8_t> plain;
    if (!ReadThrough(input, SIZE_MAX, plain)) return TakeStorageFailure(status, input);
    std::vector<uint8_t> packed;
    int usedLevel = level_;
    if (const GlResult result = GlCompress(plain, level_, failUncompressible_, packed, usedLevel); !result.Ok()) {
      return status.SetError(result.code, "%s", result.text.c_str());
    }
    // Packing happens in memory, so the copy that replaces an uncompressible
    // stream needs no rewind of either storage.
    level_ = usedLevel;
    if (!WriteThrough(output, packed)) return TakeStorageFailure(status, output);
  } catch (const std::bad_alloc&) {
    return status.SetError(AL_CANT_ALLOCATE_MEMORY, "Memory allocation failure in compression startup");
  }
  return AL_SUCCESS;
}

ALGlDecompressor::ALGlDecompressor(int level) : ALDecompressor(AL_COMPRESSION_GL, "Gl"), level_(level) {}

int ALGlDecompressor::Decompress(ALStorage& input, ALStorage& output, long compressedLength) {
  if (status.GetStatusCode() < 0) return status.GetStatusCode();
  try {
    std::vector<uint8_t> packed;
    const size_t limit = compressedLength < 0 ? SIZE_MAX : static_cast<size_t>(compressedLength);
    if (!ReadThrough(input, limit, packed)) return TakeStorageFailure(status, input);
    std::vector<uint8_t> plain;
    const size_t maxOutput = outputLimit < 0 ? SIZE_MAX : static_cast<size_t>(outputLimit);
    const GlResult result = GlExpand(packed, level_, -1, plain, maxOutput);
    // What was unpacked before a failure is written all the same.
    if (!WriteThrough(output, plain)) return TakeStorageFailure(status, output);
    if (!result.Ok()) return status.SetError(result.code, "%s", result.text.c_str());
  } catch (const std::bad_alloc&) {
    return status.SetError(AL_CANT_ALLOCATE_MEMORY, "Memory allocation failure in expansion startup");
  }
  return AL_SUCCESS;
}

}  // namespace fennick
