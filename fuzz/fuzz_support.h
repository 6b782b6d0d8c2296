// What every fuzz target shares: a private scratch folder that is also the
// preference home, and a silent user interface so that readers' messages do
// not flood the fuzzer's output.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "core/design.h"

namespace fennick::fuzz {

// Made once per process; $HOME and $XDG_CONFIG_HOME point into it.
const std::filesystem::path& ScratchFolder();

// Call first in LLVMFuzzerInitialize.
void Setup();

void WriteFile(const std::filesystem::path& path, std::span<const uint8_t> bytes);

size_t CountColorStops(const Design& design);

// Both abort on a failure, so that libFuzzer keeps the input.
// A design read back from a writer's file: sane bounds, a thread for every stop plus one.
void CheckWellFormed(const Design& design, const char* what);
// A design read from any bytes: sane bounds, and the passes that every
// command runs first (thread stats, normalizing the stops, the block form)
// take it and leave it consistent.
void CheckUsable(Design& design, const char* what);

}  // namespace fennick::fuzz
