// The design tools from the command line: each reads IN, changes the design,
// prints one line of what changed and saves OUT as convert does.
#include <string>

#include "cli/commands.h"
#include "tools/auto_baste.h"
#include "tools/color_sort.h"
#include "tools/hue_sort.h"
#include "tools/reduce_needles.h"

namespace fennick::cli {
namespace {

std::string Colours(size_t count) { return std::to_string(count) + (count == 1 ? " colour" : " colours"); }

}  // namespace

int RunColorSort(const Arguments& arguments) {
  Arguments rest = arguments;
  int32_t threshold = GetColorSortThreshold();
  if (const int status = TakeNumber("colorsort", rest, "--threshold", 0, 100, threshold); status != 0) return status;
  return RunTool("colorsort", rest, [threshold](Design& design) {
    const size_t before = design.threads.size();
    const int saved = ColorSort(design, threshold);
    return "Color Sort saved " + Colours(static_cast<size_t>(saved)) + ", " + std::to_string(before) + " -> " +
           std::to_string(design.threads.size());
  });
}

int RunBaste(const Arguments& arguments) {
  Arguments rest = arguments;
  BasteSettings baste = GetBaste();
  if (TakeFlag(rest, "--no-combine")) baste.combine = 0;
  if (TakeFlag(rest, "--no-cross")) baste.cross = 0;
  if (const int status = TakeNumber("baste", rest, "--edge", 0, 100, baste.edge); status != 0) return status;
  if (const int status = TakeNumber("baste", rest, "--length", 1, 100, baste.length); status != 0) return status;
  return RunTool("baste", rest, [&baste](Design& design) {
    const size_t before = design.stitches.Size();
    AutoBaste(design, baste);
    if (baste.combine == 0) return "replaced by its baste of " + std::to_string(design.stitches.Size()) + " stitches";
    return "basted, " + std::to_string(design.stitches.Size() - before) + " stitches added";
  });
}

int RunReduce(const Arguments& arguments) {
  Arguments rest = arguments;
  int32_t needles = 0;
  if (const int status = TakeNumber("reduce", rest, "--needles", 1, 10000, needles); status != 0) return status;
  if (needles == 0) {
    ReportError("reduce", "--needles N names the most colours the design may keep");
    return 2;
  }
  return RunTool("reduce", rest, [needles](Design& design) {
    const size_t before = static_cast<size_t>(CountDistinctColors(design));
    const int removed = ReduceNeedles(design, needles);
    return Colours(static_cast<size_t>(removed)) + " merged, " + std::to_string(before) + " -> " +
           std::to_string(before - static_cast<size_t>(removed)) + " needles";
  });
}

int RunHueSort(const Arguments& arguments) {
  return RunTool("huesort", arguments, [](Design& design) {
    if (design.threads.size() < 3) return Colours(design.threads.size()) + ", order kept";
    HueSortThreads(design.threads);
    return Colours(design.threads.size()) + " in hue order";
  });
}

}  // namespace fennick::cli
