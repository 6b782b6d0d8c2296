#include "toolpack/operations.h"

#include <array>
#include <string>
#include <utility>

#include "core/design_path.h"
#include "tools/auto_baste.h"
#include "tools/color_sort.h"

namespace fennick {
namespace {

struct NamedOperation {
  std::string_view name;
  std::string_view program;
  ToolOperation operation;
};
constexpr std::array<NamedOperation, 4> kOperations{{
    {"mirror", kToolPrograms[0], ToolOperation::kMirror},
    {"autobaste", kToolPrograms[1], ToolOperation::kAutoBaste},
    {"colorsort", kToolPrograms[2], ToolOperation::kColorSort},
    {"split", kToolPrograms[3], ToolOperation::kSplit},
}};

// Left and right exchanged: every move's x turns round.
void Mirror(Design& design) {
  for (StitchNode& node : design.stitches) node.dx = -node.dx;
}

// One design per thread. Each begins with a jump from the origin to where its
// colour begins, so that the pieces still lie over one another when sewn.
std::vector<Design> SplitByColour(Design& design) {
  std::vector<Design> pieces;
  design.NormalizeColorStops();
  const DesignPath whole(design.name);
  const std::string extension = whole.GetExtension().empty() ? "" : "." + whole.GetExtension();
  const std::string stem = extension.empty() ? whole.GetFileName() : whole.GetStem();
  int64_t x = 0, y = 0;
  for (const StitchNode* node = design.stitches.Head(); node != nullptr; node = node->Next()) {
    if (pieces.empty() || node->IsColorStop()) {
      Design& piece = pieces.emplace_back();
      DesignPath name(whole);
      name.SetFileName(stem + "-" + std::to_string(pieces.size()) + extension);
      piece.name = name.ToString();
      piece.threads.push_back(design.threads[pieces.size() - 1]);
      if (x != 0 || y != 0) piece.stitches.PushBack(Wrap32(x), Wrap32(y), STITCH_JUMP);
    }
    x += node->dx;
    y += node->dy;
    if (!node->IsPureStop()) pieces.back().stitches.PushBack(node->dx, node->dy, node->flags & ~STITCH_COLORSTOP);
  }
  return pieces;
}

}  // namespace

std::optional<ToolOperation> OperationNamed(std::string_view name) {
  for (const NamedOperation& known : kOperations) {
    if (name == known.name || name == known.program) return known.operation;
  }
  return std::nullopt;
}

std::vector<Design> ApplyOperation(ToolOperation operation, Design design) {
  std::vector<Design> result;
  switch (operation) {
    case ToolOperation::kMirror: Mirror(design); break;
    case ToolOperation::kAutoBaste: AutoBaste(design); break;
    case ToolOperation::kColorSort: ColorSort(design); break;
    case ToolOperation::kSplit: result = SplitByColour(design); break;
  }
  if (result.empty()) result.push_back(std::move(design));
  for (Design& each : result) {
    each.ComputeBounds();
    each.ComputeThreadStats();
  }
  return result;
}

}  // namespace fennick
