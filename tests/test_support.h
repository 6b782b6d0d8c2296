// Helpers shared by the tests: designs from node tables, files in a scratch
// folder, and a private preference folder per test.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "core/design.h"

namespace fennick::test {

using Node = std::tuple<int32_t, int32_t, uint32_t>;  // dx, dy, flags

inline void SetNodes(Design& design, const std::vector<Node>& nodes) {
  design.stitches.Clear();
  for (const auto& [dx, dy, flags] : nodes) design.stitches.PushBack(dx, dy, flags);
}

inline std::vector<Node> Nodes(const Design& design) {
  std::vector<Node> nodes;
  for (const StitchNode& node : design.stitches) nodes.emplace_back(node.dx, node.dy, node.flags);
  return nodes;
}

// The file's bytes and the zero byte that ReadDesignFile adds for the readers.
inline std::vector<uint8_t> AsReaderInput(std::vector<uint8_t> bytes) {
  bytes.push_back(0);
  return bytes;
}

std::vector<uint8_t> ReadTestFile(const std::string& name);  // from tests/data

// A fresh folder under the system's temporary folder, removed at the end. For
// its lifetime it is $HOME, $XDG_CONFIG_HOME is its "config" and
// $XDG_CONFIG_DIRS its "etc1" and "etc2", so that preferences start empty.
class ScratchFolder {
 public:
  ScratchFolder();
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  const std::filesystem::path& Path() const { return path_; }
  std::string File(const std::string& name) const { return (path_ / name).string(); }
  void Write(const std::string& name, const std::vector<uint8_t>& bytes) const;
  std::vector<uint8_t> Read(const std::string& name) const;

 private:
  std::filesystem::path path_;
  std::vector<std::pair<std::string, std::optional<std::string>>> savedEnvironment_;
};

}  // namespace fennick::test
