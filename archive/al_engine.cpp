#include "archive/al_engine.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace fennick {
namespace {

constexpr size_t kCopyChunk = 4096;

// Takes the first failure of a storage into the engine's status.
int TakeStatus(ALStatus& engine, const ALStorage& storage) {
  if (engine.GetStatusCode() >= 0 && storage.status.GetStatusCode() < 0) {
    engine.SetError(storage.status.GetStatusCode(), "%s", storage.status.GetStatusDetail());
  }
  return engine.GetStatusCode();
}

}  // namespace

long ALCopyBytes(ALStorage& input, ALStorage& output, long length, ALStatus& status) {
  std::vector<uint8_t> chunk(kCopyChunk);
  long copied = 0;
  while (length < 0 || copied < length) {
    const size_t want = length < 0 ? kCopyChunk : std::min(kCopyChunk, static_cast<size_t>(length - copied));
    const size_t got = input.ReadBuffer(std::span(chunk).first(want));
    if (got > 0 && output.WriteBuffer(std::span<const uint8_t>(chunk).first(got)) != got) break;
    copied += static_cast<long>(got);
    if (got < want) break;
  }
  if (TakeStatus(status, input) < 0 || TakeStatus(status, output) < 0) return status.GetStatusCode();
  if (length >= 0 && copied < length) {
    return status.SetError(AL_READ_ERROR, "Unexpected end of %s after %ld of %ld bytes", input.name.c_str(), copied,
                           length);
  }
  return copied;
}

int ALCopyCompressor::Compress(ALStorage& input, ALStorage& output) {
  if (status.GetStatusCode() < 0) return status.GetStatusCode();
  const long copied = ALCopyBytes(input, output, -1, status);
  return copied < 0 ? static_cast<int>(copied) : AL_SUCCESS;
}

int ALCopyDecompressor::Decompress(ALStorage& input, ALStorage& output, long length) {
  if (status.GetStatusCode() < 0) return status.GetStatusCode();
  const long copied = ALCopyBytes(input, output, length, status);
  return copied < 0 ? static_cast<int>(copied) : AL_SUCCESS;
}

}  // namespace fennick
