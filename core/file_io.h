// Whole-file reading and writing. A write goes to a temporary file beside the
// target and is renamed over it, so a failed write leaves the old file whole.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace fennick {

// The file's bytes; false with `error` set when it can't be read.
bool ReadWholeFile(const std::string& path, std::vector<uint8_t>& bytes, std::string* error = nullptr);
// False with `error` set (the system's reason) when anything fails.
bool WriteFileAtomic(const std::string& path, std::span<const uint8_t> bytes, std::string* error = nullptr);

}  // namespace fennick
