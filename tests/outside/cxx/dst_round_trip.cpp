// Builds a two-colour design, writes it as DST in memory and reads it back:
// the shape, the stitches and the colour stop must survive.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include "core/design.h"
#include "formats/dst.h"

namespace {

struct Shape {
  int stitches = 0;
  int stops = 0;
  int width = 0;
  int height = 0;
};

Shape Measure(fennick::Design& design) {
  Shape shape;
  for (const fennick::StitchNode& node : design.stitches) {
    if (node.IsColorStop()) ++shape.stops;
    else if (!node.IsJump() && node.HasMove()) ++shape.stitches;
  }
  design.ComputeBounds();
  shape.width = design.maxX - design.minX;
  shape.height = design.maxY - design.minY;
  return shape;
}

// A square of `side` units, anticlockwise from the needle.
void SewSquare(fennick::Design& design, int32_t side) {
  design.stitches.PushBack(side, 0, 0);
  design.stitches.PushBack(0, side, 0);
  design.stitches.PushBack(-side, 0, 0);
  design.stitches.PushBack(0, -side, 0);
}

}  // namespace

int main() {
  fennick::Design design;
  design.name = "square.dst";
  design.threads.emplace_back().rgb = fennick::ColorRef(200, 30, 30);
  design.threads.emplace_back().rgb = fennick::ColorRef(30, 30, 200);
  // A 40 x 40 square, a stop, then a jump longer than one DST record can
  // carry and a second square.
  SewSquare(design, 40);
  design.stitches.PushBack(0, 0, fennick::STITCH_COLORSTOP);
  design.stitches.PushBack(300, 0, fennick::STITCH_JUMP);
  SewSquare(design, 20);
  const Shape sent = Measure(design);

  std::vector<uint8_t> bytes;
  if (fennick::WriteDst(design, bytes) != 0 || bytes.size() <= 512 || (bytes.size() - 512) % 3 != 0 ||
      std::memcmp(bytes.data(), "LA:square", 9) != 0) {
    std::fprintf(stderr, "WriteDst gave %zu bytes without the expected header\n", bytes.size());
    return 1;
  }
  bytes.push_back(0);  // readers expect the zero byte a file read appends
  fennick::Design back;
  if (!fennick::ReadDst(back, bytes)) {
    std::fprintf(stderr, "ReadDst refused what WriteDst wrote\n");
    return 1;
  }
  const Shape read = Measure(back);
  std::printf("DST of %zu bytes: %d x %d units, %d stitches, %zu threads\n", bytes.size() - 1, read.width,
              read.height, read.stitches, back.threads.size());
  if (read.stitches != sent.stitches || read.stops != sent.stops || read.width != sent.width ||
      read.height != sent.height || back.threads.size() != 2) {
    std::fprintf(stderr, "sent %d stitches, %d stops, %d x %d; read %d, %d, %d x %d\n", sent.stitches, sent.stops,
                 sent.width, sent.height, read.stitches, read.stops, read.width, read.height);
    return 1;
  }
  return 0;
}
