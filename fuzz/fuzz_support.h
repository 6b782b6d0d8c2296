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

// The checks a design read from any file must pass; aborts on a failure so
// that libFuzzer keeps the input.
void CheckWellFormed(const Design& design, const char* what);

}  // namespace fennick::fuzz
