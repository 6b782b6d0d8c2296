// Ties a design's threads to a format: maps them onto the colours the format
// can hold, lists every colour a format offers, and finds the nearest real
// threads of the brand charts for the design notes.
#pragma once

#include <string>
#include <string_view>

#include "core/design.h"
#include "core/global_memory.h"
#include "core/preferences.h"
#include "threads/thread_charts.h"

namespace fennick {

// Replaces each thread by the nearest colour the format of `extension` (any
// case) holds: "hus", "jef", "pcs", "pes", "vip" and "xxx" map, everything
// else ("dst", "exp", an empty extension, ...) leaves the threads alone. The
// stitches are never touched. Returns 0.
int ConvertThreadsForFormat(Design& design, std::string_view extension);

// Empties `threads` and fills them with every colour the format of
// `design.name`'s extension offers, in the order the format's colour list
// shows them. Palette colours carry their palette index in `chartIndex`,
// chart rows keep their own. Formats without a table are left with no threads.
void BuildFormatColorDesign(Design& design);

// The colour table of the format of `path` as a block (see core/embroidery_file.h),
// or 0. VIP lists its nine display charts and the PES family its nine brand
// charts, each chart headed by a thread that carries only the chart's title
// as `brand`, its rows hue-sorted; other formats give BuildFormatColorDesign.
// `settings` is the caller's row for the format; no word of it narrows the
// table.
GlobalHandle GetFormatColors(const std::string& path, const ConversionSettings& settings);

// The paragraph of thread matches for the design notes: for each distinct
// `rgb`, in thread order, the name and the best three rows of the Sulky,
// MA Rayon, RA Poly and Isacord charts, "\r\n" line ends.
std::string BuildMatchText(const Design& design);

// Appends to `scratch.threads` up to three rows of `chart` near `thread` in
// the hue cone (at 1.5 times the saturation), each with its `matchPercent`.
// The slots are kept by a rule that is not a sort, and are not sorted after.
void BestThreeMatches(const ThreadColor& thread, Design& scratch, ThreadChart chart);

}  // namespace fennick
