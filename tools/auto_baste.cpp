#include "tools/auto_baste.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "tools/save_pipeline.h"

namespace fennick {
namespace {

// A baste saved alone over a black design is kept from staying black by
// accident. 0xFF0000 is blue in 0x00BBGGRR; the value is the rule's.
constexpr uint32_t kAloneOnBlackColor = 0xFF0000;

// Appends the baste's nodes with a cursor at the needle's position. Positions
// are 64-bit so that the corners of an extreme design cannot overflow; each
// move is narrowed to 32 bits as every pass over a design does.
class BasteWriter {
 public:
  BasteWriter(StitchList& stitches, int64_t length, int64_t x, int64_t y)
      : stitches_(stitches), length_(length), x_(x), y_(y) {}

  void Node(int64_t dx, int64_t dy) { stitches_.PushBack(Wrap32(dx), Wrap32(dy), 0); }
  void Zero() { Node(0, 0); }
  // Out by (dx, dy) and back on itself, between two zero nodes.
  void Tick(int64_t dx, int64_t dy) {
    Zero();
    Node(dx, dy);
    Node(-dx, -dy);
    Zero();
  }
  // Runs of stitches of the baste length in `direction` (+1 or -1) to `end`,
  // the last one the remainder.
  void RunX(int64_t end, int direction) { Run(x_, end, direction, true); }
  void RunY(int64_t end, int direction) { Run(y_, end, direction, false); }

 private:
  void Run(int64_t& cursor, int64_t end, int direction, bool alongX) {
    // A tiny design (or a length of 0 from the command line) leaves the length
    // at 0 or below: no step would come nearer the end, so every run is then
    // its remainder alone, one stitch a side or half side.
    if (length_ > 0) {
      const int64_t step = direction * length_;
      while ((end - cursor) * direction > length_) {
        Along(alongX, step);
        cursor += step;
      }
    }
    Along(alongX, end - cursor);
    cursor = end;
  }
  void Along(bool alongX, int64_t move) {
    if (alongX) {
      Node(move, 0);
    } else {
      Node(0, move);
    }
  }

  StitchList& stitches_;
  int64_t length_;  // stitch units
  int64_t x_, y_;
};

}  // namespace

void AutoBaste(Design& design) { AutoBaste(design, GetBaste()); }

void AutoBaste(Design& design, const BasteSettings& settings) {
  if (design.stitches.Empty()) return;
  design.Centre();

  // Measures, in stitch units of 0.1 mm.
  const bool cross = settings.cross != 0;
  const int64_t edge = int64_t{settings.edge} * 10;
  const int64_t size = std::max(int64_t{design.maxX} - design.minX - 4, int64_t{design.maxY} - design.minY - 4);
  const int64_t tick = size / 10;
  const int64_t length = std::min(int64_t{settings.length} * 10, cross ? size / 4 : size);

  int64_t left = int64_t{design.minX} - edge, right = int64_t{design.maxX} + edge;
  int64_t bottom = int64_t{design.minY} - edge, top = int64_t{design.maxY} + edge;
  // Measured from the design's centre against half the hoop: a margin that
  // would leave the hoop is dropped, never the baste.
  const HoopSize hoop = HoopForName(design.name);
  if (left < int64_t{hoop.width} * -5 || right > int64_t{hoop.width} * 5 || bottom < int64_t{hoop.height} * -5 ||
      top > int64_t{hoop.height} * 5) {
    left = design.minX;
    right = design.maxX;
    bottom = design.minY;
    top = design.maxY;
  }

  ThreadColor thread;
  if (settings.combine == 0 && !design.threads.empty() && design.threads.front().rgb == 0) {
    thread.rgb = kAloneOnBlackColor;
  }

  // From the origin to the top left corner and a small lock there, then the
  // sides clockwise (y up), each tick pointing inwards, back to the corner.
  StitchList baste;
  baste.PushBack(Wrap32(left), Wrap32(top), STITCH_JUMP);
  BasteWriter writer(baste, length, left, top);
  writer.Zero();
  writer.Node(10, 0);
  writer.Node(-10, 0);
  const int64_t middleX = left + (right - left) / 2;
  const int64_t middleY = bottom + (top - bottom) / 2;
  if (cross) {
    writer.RunX(middleX, +1);
    writer.Tick(0, -tick);
  }
  writer.RunX(right, +1);
  writer.Zero();
  if (cross) {
    writer.RunY(middleY, -1);
    writer.Tick(-tick, 0);
  }
  writer.RunY(bottom, -1);
  writer.Zero();
  if (cross) {
    writer.RunX(middleX, -1);
    writer.Tick(0, tick);
  }
  writer.RunX(left, -1);
  writer.Zero();
  if (cross) {
    writer.RunY(middleY, +1);
    writer.Tick(tick, 0);
  }
  writer.RunY(top, +1);

  if (settings.combine != 0) {
    // The design follows from the corner where the baste ends: its first node
    // keeps its flags and takes the corner's offset. The baste goes in front
    // of the design's own nodes rather than the design after the baste, which
    // leaves a large design's nodes where they are.
    StitchNode* first = design.stitches.Head();
    first->dx = Wrap32(int64_t{first->dx} - left);
    first->dy = Wrap32(int64_t{first->dy} - top);
    StitchNode* before = design.threads.empty() ? first : design.stitches.InsertBefore(first, 0, 0, STITCH_COLORSTOP);
    for (const StitchNode& node : baste) design.stitches.InsertBefore(before, node.dx, node.dy, node.flags);
    design.threads.insert(design.threads.begin(), std::move(thread));
  } else {
    design.stitches = std::move(baste);
    design.threads.assign(1, std::move(thread));
  }
  design.Centre();
}

}  // namespace fennick
