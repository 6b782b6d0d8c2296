#include "tools/hue_sort.h"

#include <algorithm>
#include <cstdlib>
#include <span>

namespace fennick {
namespace {

// Hue sectors weigh far more than brightness: the largest brightness term,
// 765 * 0.13, can never outweigh one sector.
constexpr float kSectorWeight = 1000.0f;
constexpr float kBrightnessWeight = 0.13020834f;
constexpr float kNoScore = 1000000.0f;

float Score(const ThreadColor& from, const ThreadColor& to) {
  // Signed on purpose: within a sector the brightest colour comes next.
  return static_cast<float>(std::abs(from.colorAnalysis[kHueSector] - to.colorAnalysis[kHueSector])) *
             kSectorWeight +
         static_cast<float>(from.colorAnalysis[kRgbSum] - to.colorAnalysis[kRgbSum]) * kBrightnessWeight;
}

// Moves the entry at `from` to stand at `to`, keeping the others in order.
void MoveEntry(std::vector<ThreadColor>& threads, size_t from, size_t to) {
  const auto source = threads.begin() + static_cast<std::ptrdiff_t>(from);
  const auto target = threads.begin() + static_cast<std::ptrdiff_t>(to);
  if (from > to) {
    std::rotate(target, source, source + 1);
  } else if (from < to) {
    std::rotate(source, source + 1, target + 1);
  }
}

}  // namespace

void HueSortThreads(std::vector<ThreadColor>& threads) {
  if (threads.size() < 3) return;
  for (ThreadColor& thread : threads) thread.AnalyseColor();

  size_t seed = threads.size();
  int32_t lowestSector = 10000;
  for (size_t i = 0; i < threads.size(); ++i) {
    if (threads[i].colorAnalysis[kHueSector] < lowestSector) {
      lowestSector = threads[i].colorAnalysis[kHueSector];
      seed = i;
    }
  }
  if (seed < threads.size()) MoveEntry(threads, seed, 0);

  bool firstRound = true;
  for (size_t current = 0; current + 1 < threads.size();) {
    size_t best = threads.size();
    float bestScore = kNoScore;
    for (size_t i = current + 1; i < threads.size(); ++i) {
      const float score = Score(threads[current], threads[i]);
      if (score <= bestScore) {  // of equal scores the last wins
        bestScore = score;
        best = i;
      }
    }
    if (best < threads.size()) MoveEntry(threads, best, current + 1);
    if (firstRound) {
      // Deliberately kept: the seed goes to the tail, and the chain goes on
      // from the entry just placed, which is now at the head.
      MoveEntry(threads, 0, threads.size() - 1);
      firstRound = false;
      continue;
    }
    ++current;
  }
}

void SortThreadArray(ThreadColor* array, size_t count) {
  if (array == nullptr || count == 0) return;
  const std::span<ThreadColor> records(array, count);
  std::vector<ThreadColor> sorted(records.begin(), records.end());
  HueSortThreads(sorted);
  std::move(sorted.begin(), sorted.end(), records.begin());
}

}  // namespace fennick
