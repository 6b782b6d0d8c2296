#include "tools/color_sort.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <numeric>
#include <string>
#include <utility>

#include "core/design_path.h"
#include "core/preferences.h"
#include "core/user_interface.h"
#include "tools/render/design_renderer.h"

namespace fennick {
namespace {

constexpr uint32_t kWhite = 0xFFFFFF;
constexpr size_t kRowBytes = kLayerSide / 8;
// Layers drawn in one walk of the design; their canvases stay near 10 MB.
constexpr size_t kLayersPerWalk = 16;

// The bits that count in each byte of a layer. The lowest, the leftmost pixel
// of each eight, is never counted, deliberately, in either population.
constexpr uint8_t kCountedBits = 0xFE;
constexpr uint64_t kCountedWords = 0x0101010101010101u * kCountedBits;

// The set bits of a word, by adding neighbouring fields: the build targets
// processors without a population count instruction.
int64_t BitCount(uint64_t bits) {
  bits -= (bits >> 1) & 0x5555555555555555u;
  bits = (bits & 0x3333333333333333u) + ((bits >> 2) & 0x3333333333333333u);
  bits = (bits + (bits >> 4)) & 0x0F0F0F0F0F0F0F0Fu;
  return static_cast<int64_t>((bits * 0x0101010101010101u) >> 56);
}

// Counted pixels set in both a and b (of one size); CountCovered(a, a) is a's population.
int64_t CountCovered(std::span<const uint8_t> a, std::span<const uint8_t> b) {
  int64_t count = 0;
  size_t i = 0;
  for (; i + 8 <= a.size(); i += 8) {
    uint64_t wordA = 0, wordB = 0;
    std::memcpy(&wordA, a.data() + i, 8);
    std::memcpy(&wordB, b.data() + i, 8);
    count += BitCount(wordA & wordB & kCountedWords);
  }
  for (; i < a.size(); ++i) count += std::popcount(static_cast<uint8_t>(a[i] & b[i] & kCountedBits));
  return count;
}

int OverlapPercent(int64_t covered, int64_t population) {
  return population == 0 ? 0 : static_cast<int>(covered * 100 / population);
}

// Packs a thin canvas into a layer, each pixel grown to the 2 by 2 block that a
// thick pixel plots: itself, the one to its right and the two below. That is
// the thick drawing exactly, as every point a line plots lies on the canvas:
// a design's points lie within its fitted bounds, and the pen starts in the corner.
void PackThick(const StitchBitmap& canvas, uint8_t* layer) {
  std::array<uint8_t, kRowBytes> above{};
  for (size_t row = 0; row < kLayerSide; ++row) {
    const uint32_t* pixel = canvas.pixels.data() + row * kLayerSide;
    std::array<uint8_t, kRowBytes> bits{};
    for (size_t b = 0; b < kRowBytes; ++b, pixel += 8) {
      unsigned byte = 0;
      for (unsigned q = 0; q < 8; ++q) byte |= static_cast<unsigned>(pixel[q] != kWhite) << q;
      bits[b] = static_cast<uint8_t>(byte);
    }
    uint8_t carry = 0;  // the last pixel of the byte to the left
    for (size_t b = 0; b < kRowBytes; ++b) {
      const auto grown = static_cast<uint8_t>(bits[b] | bits[b] << 1 | carry);
      carry = static_cast<uint8_t>(bits[b] >> 7);
      layer[row * kRowBytes + b] = static_cast<uint8_t>(grown | above[b]);
      above[b] = grown;
    }
  }
}

// Splits the stitch list into `count` blocks, from the head: each takes the
// next thread, the running position and the nodes up to the next colour stop.
// That stop, stripped of its bit, opens the next block if it moves, and is
// dropped if it doesn't. Nodes past the last block are not taken.
std::vector<ColorBlock> SplitIntoBlocks(const Design& design, size_t count) {
  std::vector<ColorBlock> blocks(count);
  const StitchNode* node = design.stitches.Head();
  int32_t x = 0, y = 0;
  auto take = [&](ColorBlock& block, uint32_t flags) {
    block.nodes.push_back({node->dx, node->dy, flags});
    x = Wrap32(int64_t{x} + node->dx);
    y = Wrap32(int64_t{y} + node->dy);
  };
  for (size_t i = 0; i < count; ++i) {
    ColorBlock& block = blocks[i];
    block.startX = x;
    block.startY = y;
    block.thread = design.threads[i];
    if (i > 0 && node != nullptr) {
      if (node->HasMove()) take(block, node->flags & ~STITCH_COLORSTOP);
      node = node->Next();
    }
    for (; node != nullptr && !node->IsColorStop(); node = node->Next()) take(block, node->flags);
  }
  return blocks;
}

// Only a colour that comes again after another needs the layers.
bool AnyBlockCanMove(const std::vector<ColorBlock>& blocks) {
  for (size_t i = 0; i < blocks.size(); ++i) {
    for (size_t j = i + 2; j < blocks.size(); ++j) {
      if (blocks[i].thread.rgb == blocks[j].thread.rgb) return true;
    }
  }
  return false;
}

// BlockOverlap between the layers of blocks as they were first numbered. A
// layer never changes, so each count of shared pixels is made once, and only
// over the bytes where both layers have pixels.
class OverlapTable {
 public:
  OverlapTable(std::span<const uint8_t> layers, size_t count)
      : layers_(layers), count_(count), covered_(count * count, -1) {
    for (size_t i = 0; i < count; ++i) {
      const std::span<const uint8_t> layer = Layer(i);
      population_.push_back(CountCovered(layer, layer));
      const auto set = [](uint8_t byte) { return byte != 0; };
      const size_t first = static_cast<size_t>(std::ranges::find_if(layer, set) - layer.begin());
      const size_t end =
          kLayerBytes - static_cast<size_t>(std::ranges::find_if(layer.rbegin(), layer.rend(), set) - layer.rbegin());
      extent_.push_back({first, std::max(first, end)});
    }
  }

  int Percent(size_t j, size_t k) {
    if (population_[j] == 0) return 0;
    int64_t& covered = covered_[std::min(j, k) * count_ + std::max(j, k)];
    if (covered < 0) {
      const size_t from = std::max(extent_[j].first, extent_[k].first);
      const size_t to = std::min(extent_[j].second, extent_[k].second);
      covered = from < to ? CountCovered(Layer(j).subspan(from, to - from), Layer(k).subspan(from, to - from)) : 0;
    }
    return OverlapPercent(covered, population_[j]);
  }

 private:
  std::span<const uint8_t> Layer(size_t i) const { return layers_.subspan(i * kLayerBytes, kLayerBytes); }

  std::span<const uint8_t> layers_;
  size_t count_;
  std::vector<int64_t> population_;
  std::vector<std::pair<size_t, size_t>> extent_;  // the bytes from the first to past the last with pixels
  std::vector<int64_t> covered_;
};

// Moves each later block of block i's colour up behind it, when no block it
// jumps over covers more than `threshold` percent of it. Later blocks end up
// ahead of earlier ones.
void SortBlocks(std::vector<ColorBlock>& blocks, std::span<const uint8_t> layers, int threshold) {
  OverlapTable overlap(layers, blocks.size());
  std::vector<size_t> layerOf(blocks.size());
  std::iota(layerOf.begin(), layerOf.end(), 0);
  for (size_t i = 0; i + 2 < blocks.size(); ++i) {
    for (size_t j = i + 2; j < blocks.size(); ++j) {
      if (blocks[i].thread.rgb != blocks[j].thread.rgb) continue;
      bool covered = false;
      for (size_t k = i + 1; k < j && !covered; ++k) covered = overlap.Percent(layerOf[j], layerOf[k]) > threshold;
      if (covered) continue;
      const auto at = [&](auto& list, size_t index) { return list.begin() + static_cast<std::ptrdiff_t>(index); };
      std::rotate(at(blocks, i + 1), at(blocks, j), at(blocks, j + 1));
      std::rotate(at(layerOf, i + 1), at(layerOf, j), at(layerOf, j + 1));
    }
  }
}

// Sews the blocks in their new order: a stop and a thread where the colour
// changes, a jump where a block starts away from the needle.
void Rebuild(Design& design, std::vector<ColorBlock>& blocks) {
  design.threads.clear();
  design.stitches.Clear();
  size_t nodes = 0;
  for (const ColorBlock& block : blocks) nodes += block.nodes.size() + 2;
  design.stitches.Reserve(nodes);
  int32_t x = 0, y = 0;
  uint32_t previousRgb = 0;
  for (ColorBlock& block : blocks) {
    const uint32_t rgb = block.thread.rgb;
    if (design.stitches.Empty()) {
      design.threads.push_back(std::move(block.thread));
    } else if (rgb != previousRgb) {
      design.stitches.PushBack(0, 0, STITCH_COLORSTOP);
      design.threads.push_back(std::move(block.thread));
    }
    previousRgb = rgb;
    if (x != block.startX || y != block.startY) {
      design.stitches.PushBack(Wrap32(int64_t{block.startX} - x), Wrap32(int64_t{block.startY} - y), STITCH_JUMP);
      x = block.startX;
      y = block.startY;
    }
    for (const BlockNode& node : block.nodes) {
      design.stitches.PushBack(node.dx, node.dy, node.flags);
      x = Wrap32(int64_t{x} + node.dx);
      y = Wrap32(int64_t{y} + node.dy);
    }
  }
}

}  // namespace

int BlockOverlap(std::span<const uint8_t> layers, int32_t side, size_t j, size_t k) {
  const size_t bytes = side > 0 ? static_cast<size_t>(side) * static_cast<size_t>(side) / 8 : 0;
  if (bytes == 0 || std::max(j, k) >= layers.size() / bytes) return 0;
  const std::span<const uint8_t> layerJ = layers.subspan(j * bytes, bytes), layerK = layers.subspan(k * bytes, bytes);
  return OverlapPercent(CountCovered(layerJ, layerK), CountCovered(layerJ, layerJ));
}

std::vector<uint8_t> DrawColorLayers(Design& design, size_t count) {
  std::vector<uint8_t> layers(count * kLayerBytes, 0);
  const size_t drawn = std::min(count, design.threads.size());
  if (drawn == 0) return layers;
  std::vector<StitchBitmap> canvases(std::min(drawn, kLayersPerWalk));
  for (StitchBitmap& canvas : canvases) {
    canvas.background = kWhite;
    if (canvas.Create(kLayerSide, kLayerSide) != 0) return {};
  }
  for (size_t first = 0; first < drawn; first += kLayersPerWalk) {
    const size_t walkLayers = std::min(drawn - first, kLayersPerWalk);
    RenderBlocksApart(design, std::span(canvases).first(walkLayers), walkLayers, false, 0, first);
    for (size_t i = 0; i < walkLayers; ++i) PackThick(canvases[i], layers.data() + (first + i) * kLayerBytes);
  }
  return layers;
}

int ColorSort(Design& design, int threshold) {
  // What the tool changes, to be put back when it saves nothing.
  StitchList stitches = design.stitches;
  std::vector<ThreadColor> threads = design.threads;
  const StitchPoint high{design.maxX, design.maxY}, low{design.minX, design.minY};
  auto restore = [&] {
    design.stitches = std::move(stitches);
    design.threads = std::move(threads);
    design.maxX = high.x, design.maxY = high.y, design.minX = low.x, design.minY = low.y;
  };

  const size_t threadCount = design.threads.size();
  design.Centre();
  const size_t blockCount = std::min(threadCount, kMaxColorBlocks);
  std::vector<ColorBlock> blocks = SplitIntoBlocks(design, blockCount);
  if (AnyBlockCanMove(blocks)) {
    const std::vector<uint8_t> layers = DrawColorLayers(design, blockCount);
    if (layers.empty()) {
      restore();
      return 0;
    }
    SortBlocks(blocks, layers, threshold);
  }
  Rebuild(design, blocks);

  const int saved = static_cast<int>(threadCount - design.threads.size());
  if (saved == 0) {
    restore();
    return 0;
  }
  const std::string name = DesignPath(design.name).GetFileName();
  const std::string text =
      saved == 1 ? name + " reduced 1 color." : name + " reduced " + std::to_string(saved) + " colors.";
  CurrentUserInterface().ShowMessage(text, "Color Sort", MessageButtons::kOk);
  return saved;
}

int ColorSort(Design& design) { return ColorSort(design, GetColorSortThreshold()); }

}  // namespace fennick
