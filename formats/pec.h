// The PEC block: the machine-facing part of every PES file and the whole of
// a stand-alone PEC file. Stitches are coded in one or two bytes an axis.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "core/byte_cursor.h"
#include "core/design.h"
#include "core/stitch_list.h"

namespace fennick {

struct PecStitch {
  int32_t dx = 0;
  int32_t dy = 0;
  uint32_t flags = 0;  // STITCH_COLORSTOP or STITCH_JUMP
};

// Decodes the stitch at the reader's offset and moves past it. The stream's
// y runs upwards, so dy is negated. Past the end the bytes read as 0.
PecStitch DecodePecStitch(ByteReader& reader);

// Appends the stitch and returns the count of bytes written (at most 7).
// `changeCount` is the number of colour changes so far, this node included;
// it is 0 only for the first node of the stream, which is always long.
size_t EncodePecStitch(std::vector<uint8_t>& out, const StitchNode& node, int changeCount);

// Offsets within a block.
inline constexpr size_t kPecPiecePosition = 36;   // where a multi-block file keeps a piece's place
inline constexpr size_t kPecThumbnailSize = 228;  // 48 by 38 pixels, 1 bit each, 6 bytes a row
inline constexpr size_t kMaxPecColors = 256;      // the count byte holds the colour count less one

// What ReadPecBlock found: the sizes the PES reader steps over, whether the
// bytes hold the block's stitches, and whether the block was closed.
struct PecBlockInfo {
  int colorCount = 0;         // colours listed in the block
  uint32_t stitchLength = 0;  // L: from offset 512 of the block to its first thumbnail
  bool whole = false;         // L was read and the bytes reach as far as it says
  bool closed = false;        // the design's tail is now the block's closing jump
};

// Appends the block's threads (chartIndex and colorName from the palette) and
// its stitches to the design, and sets the rgb of every thread of the design
// from its chartIndex. The block's moves are summed into sumX and sumY; the
// block ends on a closing jump back to its start, and both sums return to 0.
// A block whose L reaches past the bytes gives threads, no stitches and no
// closing node.
PecBlockInfo ReadPecBlock(Design& design, std::span<const uint8_t> bytes, size_t blockOffset, int32_t& sumX,
                          int32_t& sumY);

struct PecBlockSettings {
  std::string_view labelStem;             // the file name without folder and extension
  std::span<const uint8_t> colorIndices;  // one PecPalette index per colour, in sewing order
  bool realColorWriter = false;           // the version 5 and 6 writer marks offset 31 with 0xFF
  // Set when the caller has already moved the first node to the top left
  // corner of the design's box; otherwise the block does it on the way.
  bool startAtCorner = false;
};

// Appends a whole block for a centred design with valid bounds: header, colour
// list, stitch stream, and room for the composite and one thumbnail per colour,
// left zero. Returns the offset in `out` of that thumbnail area, for
// RenderPecThumbnails to fill once the design stands as the pictures need it.
size_t AppendPecBlock(std::vector<uint8_t>& out, const Design& design, const PecBlockSettings& settings);

// Draws colour `colorIndex` alone into a 228-byte thumbnail, fitted to the
// design's bounds: returns 228, or 0 when no canvas could be made. Row 0 stays
// clear in every thumbnail: the composite's first byte follows the stitches'
// end mark, and readers that stop only at FF 00 need it 0. With -1,
// `out` holds the composite followed by one thumbnail per thread: the frame
// goes into all of them and the colours' outlines into the composite, so that
// call comes last; it returns the bytes it finished. Rendering marks the
// nodes it draws with STITCH_DRAWN.
int RenderPecThumbnail(Design& design, int colorIndex, std::span<uint8_t> out);
// The composite and every colour's thumbnail, in the block's order.
void RenderPecThumbnails(Design& design, std::span<uint8_t> area);

}  // namespace fennick
