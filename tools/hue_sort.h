// Hue sort: orders a colour list so that near colours stand together, by a
// greedy chain through hue sector and brightness rather than a numeric sort.
#pragma once

#include <cstddef>
#include <vector>

#include "core/design.h"

namespace fennick {

// Sorts in place and fills every entry's `colorAnalysis`; lists of fewer than
// three entries are left alone. The chain starts from the first entry of the
// lowest hue sector, which ends up last.
void HueSortThreads(std::vector<ThreadColor>& threads);
// The same over a plain array of `count` records: a copy is sorted and the
// records are written back in the new order.
void SortThreadArray(ThreadColor* array, size_t count);

}  // namespace fennick
