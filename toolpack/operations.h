// What the reference tool pack does to the design it is given: each
// operation is a button of its own on the tool bar.
#pragma once

#include <array>
#include <optional>
#include <string_view>
#include <vector>

#include "core/design.h"

namespace fennick {

enum class ToolOperation { kMirror, kAutoBaste, kColorSort, kSplit };

// The programs the tool bar starts, one per operation, in that order: links
// to fennick-tool, each with its bitmap beside it. Their names are the
// buttons' tips ("Launch Color Sort").
inline constexpr std::array<std::string_view, 4> kToolPrograms{"Mirror", "Auto-Baste", "Color Sort", "Split by Color"};

// The operation of a name ("mirror", "autobaste", "colorsort", "split") or
// of its program.
std::optional<ToolOperation> OperationNamed(std::string_view name);

// The designs to send back: one, or one per colour for kSplit.
std::vector<Design> ApplyOperation(ToolOperation operation, Design design);

}  // namespace fennick
