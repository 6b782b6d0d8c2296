#include "archive/gl_codes.h"

#include <array>
#include <cstdio>

namespace fennick {
namespace {

constexpr int kMaxNodes = 2 * kGlMaxAlphabet;

// A binary min-heap of symbol and node indices keyed by 16-bit counts. Its
// exact sift order decides which of equal counts is taken first, and so the
// order in which leaves are met: part of the stream.
class CountHeap {
 public:
  explicit CountHeap(const std::array<uint16_t, kMaxNodes>& counts) : counts_(counts) {}

  int Size() const { return size_; }
  int Top() const { return heap_[1]; }
  void Push(int item) { heap_[++size_] = static_cast<int16_t>(item); }
  void ReplaceTop(int item) {
    heap_[1] = static_cast<int16_t>(item);
    SiftDown(1);
  }
  void PopTop() {
    heap_[1] = heap_[size_--];
    SiftDown(1);
  }
  void Build() {
    for (int i = size_ / 2; i >= 1; --i) SiftDown(i);
  }

 private:
  void SiftDown(int i) {
    const int item = heap_[i];
    for (int j = 2 * i; j <= size_; j = 2 * i) {
      if (j < size_ && counts_[heap_[j]] > counts_[heap_[j + 1]]) ++j;
      if (counts_[item] <= counts_[heap_[j]]) break;
      heap_[i] = heap_[j];
      i = j;
    }
    heap_[i] = static_cast<int16_t>(item);
  }

  const std::array<uint16_t, kMaxNodes>& counts_;
  std::array<int16_t, kGlMaxAlphabet + 1> heap_{};
  int size_ = 0;
};

}  // namespace

GlResult GlCheckLevel(int level) {
  if (level >= kGlMinLevel && level <= kGlMaxLevel) return {};
  // The text names the engine's own level, which runs from 10 to 14.
  char text[120];
  std::snprintf(text, sizeof text, "Incorrect compression level parameter passed to compressor.  Compression level = %d",
                level + 10);
  return {kGlIllegalParameter, text};
}

int GlMakeCodeLengths(std::span<const uint16_t> counts, std::span<uint8_t> lengths, uint16_t& rootCount) {
  const int n = static_cast<int>(counts.size());
  std::array<uint16_t, kMaxNodes> nodeCounts{};
  std::array<int16_t, kMaxNodes> left{};
  std::array<int16_t, kMaxNodes> right{};
  std::array<int16_t, kGlMaxAlphabet> metOrder{};  // leaves as the tree takes them

  CountHeap heap(nodeCounts);
  int firstUsed = 0;
  for (int i = 0; i < n; ++i) {
    nodeCounts[i] = counts[i];
    lengths[i] = 0;
    if (counts[i] != 0) {
      if (heap.Size() == 0) firstUsed = i;
      heap.Push(i);
    }
  }
  if (heap.Size() < 2) {
    rootCount = nodeCounts[firstUsed];
    return firstUsed;
  }

  heap.Build();
  int met = 0;
  int next = n;
  int root = n;
  do {
    const int a = heap.Top();
    if (a < n) metOrder[met++] = static_cast<int16_t>(a);
    heap.PopTop();
    const int b = heap.Top();
    if (b < n) metOrder[met++] = static_cast<int16_t>(b);
    root = next++;
    nodeCounts[root] = static_cast<uint16_t>(nodeCounts[a] + nodeCounts[b]);  // wraps in 16 bits on purpose
    heap.ReplaceTop(root);
    left[root] = static_cast<int16_t>(a);
    right[root] = static_cast<int16_t>(b);
  } while (heap.Size() > 1);
  rootCount = nodeCounts[root];

  // Leaf depths, deeper than 16 counted as 16.
  std::array<int, kGlMaxCodeLength + 1> lengthCount{};
  std::array<std::pair<int16_t, int16_t>, kMaxNodes> stack{};
  int top = 0;
  stack[top++] = {static_cast<int16_t>(root), 0};
  while (top > 0) {
    const auto [node, depth] = stack[--top];
    if (node < n) {
      ++lengthCount[depth < kGlMaxCodeLength ? depth : kGlMaxCodeLength];
    } else {
      stack[top++] = {right[node], static_cast<int16_t>(depth + 1)};
      stack[top++] = {left[node], static_cast<int16_t>(depth + 1)};
    }
  }

  // Capping overfills the code; trade one 16-bit code at a time for a split
  // of the deepest shorter code until the Kraft sum is exact again.
  uint32_t kraft = 0;
  for (int length = 1; length <= kGlMaxCodeLength; ++length) {
    kraft += static_cast<uint32_t>(lengthCount[length]) << (kGlMaxCodeLength - length);
  }
  while (kraft != (1u << kGlMaxCodeLength)) {
    --lengthCount[kGlMaxCodeLength];
    for (int length = kGlMaxCodeLength - 1; length > 0; --length) {
      if (lengthCount[length] != 0) {
        --lengthCount[length];
        lengthCount[length + 1] += 2;
        break;
      }
    }
    --kraft;
  }

  // The leaves met first get the longest codes.
  int leaf = 0;
  for (int length = kGlMaxCodeLength; length > 0; --length) {
    for (int k = 0; k < lengthCount[length]; ++k) lengths[metOrder[leaf++]] = static_cast<uint8_t>(length);
  }
  return root;
}

uint32_t GlCanonicalCodes(std::span<const uint8_t> lengths, std::span<uint32_t> codes) {
  std::array<uint32_t, kGlMaxCodeLength + 2> lengthCount{};
  for (const uint8_t length : lengths) ++lengthCount[length];
  std::array<uint32_t, kGlMaxCodeLength + 2> start{};
  uint32_t kraft = 0;
  for (int length = 1; length <= kGlMaxCodeLength; ++length) {
    start[length + 1] = (start[length] + lengthCount[length]) << 1;
    kraft += lengthCount[length] << (kGlMaxCodeLength - length);
  }
  for (size_t i = 0; i < lengths.size(); ++i) codes[i] = lengths[i] == 0 ? 0 : start[lengths[i]]++;
  return kraft;
}

}  // namespace fennick
