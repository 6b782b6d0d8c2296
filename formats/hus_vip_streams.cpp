#include "formats/hus_vip_streams.h"

#include <algorithm>
#include <utility>

#include "archive/al_gl.h"
#include "archive/al_memory.h"
#include "core/byte_cursor.h"
#include "core/user_interface.h"

namespace fennick {
namespace {

// The writers pack with the smallest window; readers unpack with the largest,
// which is harmless as the window only bounds distances.
constexpr int kPackLevel = 0;
constexpr int kUnpackLevel = 4;
constexpr uint8_t kCommandBase = 0x80;
constexpr uint8_t kCommandJump = 0x01;
constexpr uint8_t kCommandStop = 0x04;
// Never written, but files of other programs set them: the next node is a jump too.
constexpr uint8_t kCommandNextJump = 0x02 | 0x08;
// Streams get room for this many bytes more than the stitch count.
constexpr size_t kStreamSlack = 10;
// A stitch count beyond this many stitches a file byte (plus a little) is
// refused before anything is allocated for it. Streams that are not constant
// for half a million bytes pack to at least 2 bits per 256 bytes, so three of
// them stay under about 341 stitches a byte; this writer's own million-stitch
// sample needs 65.
constexpr uint64_t kMostStitchesPerByte = 1024;
constexpr uint64_t kStitchCountSlack = 1024;

bool PackStream(std::vector<uint8_t>& stream, std::vector<uint8_t>& packed) {
  ALMemory input("buffer", stream);
  // An empty user buffer would be no buffer at all; a created storage reads as empty.
  if ((stream.empty() ? input.Create() : input.Open()) < 0) return false;
  ALMemory output("buffer");
  if (output.Create() < 0) return false;
  ALGlCompressor compressor(kPackLevel, false);
  if (compressor.Compress(input, output) < 0) return false;
  packed = output.ReleaseBytes();
  return output.status.GetStatusCode() >= 0;
}

// Unpacks `packed` into `stream`, which keeps its size and its zeros past
// the end of what was unpacked.
bool UnpackStream(const char* streamName, std::span<const uint8_t> packed, std::vector<uint8_t>& stream) {
  std::vector<uint8_t> copy(packed.begin(), packed.end());
  ALMemory buff("buff", copy);
  if ((copy.empty() ? buff.Create() : buff.Open()) < 0) return false;
  ALMemory output(streamName, stream);
  if (output.Create() < 0) return false;
  ALGlDecompressor decompressor(kUnpackLevel);
  decompressor.outputLimit = static_cast<long>(stream.size());
  const int result = decompressor.Decompress(buff, output, -1);
  output.Close();
  return result >= 0 && output.status.GetStatusCode() >= 0;
}

}  // namespace

void WriteHusVipHeader(std::vector<uint8_t>& out, uint32_t signature, uint32_t colorCount, const Design& design) {
  ByteWriter writer(out);
  writer.U32LE(signature);
  writer.U32LE(static_cast<uint32_t>(design.stitches.Size()));
  writer.U32LE(colorCount);
  writer.S16LE(static_cast<int16_t>(design.maxX));
  writer.S16LE(static_cast<int16_t>(design.maxY));
  writer.S16LE(static_cast<int16_t>(design.minX));
  writer.S16LE(static_cast<int16_t>(design.minY));
  writer.Fill(0, 12 + 10);  // three stream offsets, set later, and ten zeros
}

bool AppendHusVipStreams(const Design& design, std::vector<uint8_t>& out) {
  const size_t count = design.stitches.Size();
  std::vector<uint8_t> streams[3];
  for (std::vector<uint8_t>& stream : streams) stream.reserve(count);
  for (const StitchNode& node : design.stitches) {
    uint8_t command = kCommandBase;
    if (node.IsJump()) command |= kCommandJump;
    if (node.IsColorStop()) command |= kCommandStop;
    streams[0].push_back(command);
    streams[1].push_back(static_cast<uint8_t>(node.dx));
    streams[2].push_back(static_cast<uint8_t>(node.dy));
  }
  std::vector<uint8_t> packed[3];
  for (int i = 0; i < 3; ++i) {
    if (!PackStream(streams[i], packed[i])) return false;
  }
  ByteWriter writer(out);
  for (int i = 0; i < 3; ++i) {
    writer.PatchU32LE(20 + 4 * static_cast<size_t>(i), static_cast<uint32_t>(writer.Size()));
    writer.Bytes(packed[i]);
  }
  return true;
}

bool ReadHusVipHeader(Design& design, std::span<const uint8_t> bytes, HusVipHeader& header) {
  const std::string name = design.name;
  if (name.empty()) return false;
  design.Clear();
  design.name = name;
  ByteReader reader(bytes);
  header.signature = reader.U32LE();
  header.stitchCount = reader.U32LE();
  header.colorCount = reader.U32LE();
  header.maxX = reader.S16LE();
  header.maxY = reader.S16LE();
  header.minX = reader.S16LE();
  header.minY = reader.S16LE();
  for (uint32_t& offset : header.streamOffsets) offset = reader.U32LE();
  reader.Skip(10);
  return reader.Ok();
}

bool ReadHusVipStitches(Design& design, std::span<const uint8_t> bytes, const HusVipHeader& header) {
  auto fail = [&](const std::string& cause) {
    ReportToUser(design.name + cause);
    design.Clear();
    return false;
  };
  if (header.stitchCount > kMostStitchesPerByte * bytes.size() + kStitchCountSlack) {
    return fail(": The stitch count of " + std::to_string(header.stitchCount) + " is more than the file can hold.");
  }
  static const char* const kStreamNames[3] = {"command", "xSeries", "ySeries"};
  static const char* const kFailures[3] = {": Failure processing command data.", ": Failure processing x-stitch data.",
                                           ": Failure processing y-stitch data."};
  const size_t count = header.stitchCount;
  std::vector<uint8_t> streams[3];
  for (int i = 0; i < 3; ++i) {
    // Each stream runs to the next one's offset; the last to the end.
    const size_t start = header.streamOffsets[i];
    const size_t end = i < 2 ? header.streamOffsets[i + 1] : bytes.size();
    streams[i].assign(count + kStreamSlack, 0);
    if (start > end || end > bytes.size() ||
        !UnpackStream(kStreamNames[i], bytes.subspan(start, end - start), streams[i])) {
      return fail(kFailures[i]);
    }
  }

  design.stitches.Reserve(count);
  size_t thread = 0;
  bool carriedJump = false;
  for (size_t i = 0; i < count; ++i) {
    const uint8_t command = streams[0][i];
    uint32_t flags = 0;
    if ((command & kCommandJump) != 0 || carriedJump) flags |= STITCH_JUMP;
    carriedJump = (command & kCommandNextJump) != 0;
    // A change with no thread left to change to is dropped.
    if ((command & kCommandStop) != 0 && thread + 1 < design.threads.size()) {
      ++thread;
      flags |= STITCH_COLORSTOP;
    }
    design.stitches.PushBack(static_cast<int8_t>(streams[1][i]), static_cast<int8_t>(streams[2][i]), flags);
  }
  design.MergeJumps(false);
  design.ReclassifyJumps();
  design.Centre();
  return true;
}

}  // namespace fennick
