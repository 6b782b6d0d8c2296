// Helpers shared by the tests: designs from node tables, where their needle
// lands, cut sample files, files in a scratch folder, and a private
// preference folder per test.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <numeric>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "core/design.h"
#include "core/user_interface.h"

namespace fennick::test {

using Node = std::tuple<int32_t, int32_t, uint32_t>;  // dx, dy, flags

inline void SetNodes(Design& design, const std::vector<Node>& nodes) {
  design.stitches.Clear();
  for (const auto& [dx, dy, flags] : nodes) design.stitches.PushBack(dx, dy, flags);
}

// A design of `nodes` with a thread of each colour (0x00BBGGRR) in `colors`;
// {0, 0} gives two blank threads.
inline Design DesignOf(const std::vector<Node>& nodes, const std::vector<uint32_t>& colors = {}) {
  Design design;
  for (const uint32_t rgb : colors) design.threads.emplace_back().rgb = rgb;
  SetNodes(design, nodes);
  return design;
}

// A stitch in each colour, zigzagging so that the design has height, with a
// stop between each two.
inline Design StitchPerColour(const std::vector<uint32_t>& colors) {
  std::vector<Node> nodes;
  for (size_t i = 0; i < colors.size(); ++i) {
    if (i > 0) nodes.emplace_back(0, 0, STITCH_COLORSTOP);
    nodes.emplace_back(10, static_cast<int32_t>(i % 2) * 20, 0);
  }
  return DesignOf(nodes, colors);
}

// Colours 0 to count - 1: they differ in red alone.
inline std::vector<uint32_t> CountingColours(uint32_t count) {
  std::vector<uint32_t> colors(count);
  std::iota(colors.begin(), colors.end(), 0u);
  return colors;
}

inline std::vector<Node> Nodes(const Design& design) {
  std::vector<Node> nodes;
  for (const StitchNode& node : design.stitches) nodes.emplace_back(node.dx, node.dy, node.flags);
  return nodes;
}

inline std::vector<uint8_t> ToBytes(const std::string& text) { return {text.begin(), text.end()}; }

// The file's bytes and the zero byte that ReadDesignFile adds for the readers.
inline std::vector<uint8_t> AsReaderInput(std::vector<uint8_t> bytes) {
  bytes.push_back(0);
  return bytes;
}

std::vector<uint8_t> ReadTestFile(const std::string& name);  // from tests/data

// Reads the sample `name` from tests/data as ReadDesignFile would: named, and
// with the zero byte.
using SampleReader = bool (*)(Design& design, std::span<const uint8_t> bytes);
inline bool ReadSample(SampleReader read, Design& design, const std::string& name) {
  design.name = name;
  return read(design, AsReaderInput(ReadTestFile(name)));
}

// A fresh design read from `bytes` the same way, named `name`.
inline Design ReadBytes(SampleReader read, const std::vector<uint8_t>& bytes, const std::string& name = "") {
  Design design;
  design.name = name;
  EXPECT_TRUE(read(design, AsReaderInput(bytes))) << name;
  return design;
}

// Absolute needle positions, less `origin`.
using Point = std::pair<int64_t, int64_t>;

// Which nodes' landing points count.
enum class Landing {
  kStitch,  // plain stitches that move the needle
  kAny,     // every node
};

inline size_t CountStops(const Design& design) {
  size_t stops = 0;
  for (const StitchNode& node : design.stitches) stops += node.IsColorStop() ? 1 : 0;
  return stops;
}

// The names in a folder, sorted.
inline std::vector<std::string> FolderNames(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  for (const auto& item : std::filesystem::directory_iterator(folder)) names.push_back(item.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

// The threads' colours and names, in order.
inline std::vector<uint32_t> Rgbs(const std::vector<ThreadColor>& threads) {
  std::vector<uint32_t> rgbs;
  for (const ThreadColor& thread : threads) rgbs.push_back(thread.rgb);
  return rgbs;
}
inline std::vector<std::string> Names(const std::vector<ThreadColor>& threads) {
  std::vector<std::string> names;
  for (const ThreadColor& thread : threads) names.push_back(thread.colorName);
  return names;
}

// Where the chosen nodes land, in stitch order.
std::vector<Point> NeedlePath(const Design& design, Landing which = Landing::kStitch, Point origin = {});

// The same as a set, for designs whose readers merge or split some nodes.
std::set<Point> NeedlePoints(const Design& design, Landing which = Landing::kStitch, Point origin = {});

// The path as offsets from its first point.
std::vector<Point> FromFirst(std::vector<Point> path);

// How many of `points` (a set or a path, which counts repeats) are not in `within`.
template <class Points>
size_t CountMissing(const Points& points, const std::set<Point>& within) {
  size_t missing = 0;
  for (const Point& point : points) missing += within.count(point) == 0 ? 1 : 0;
  return missing;
}

// Stands in for the user while it lives: every message box answers OK, and
// its text is kept in `lines`, its caption in `captions`.
class Messages : public QuietUserInterface {
 public:
  MessageAnswer ShowMessage(const std::string& text, const std::string& caption, MessageButtons) override {
    lines.push_back(text);
    captions.push_back(caption);
    return MessageAnswer::kOk;
  }
  std::vector<std::string> lines, captions;
};

// Picks `picks`, answers every question with `answer`, chooses `saveName`,
// reduces to `needles` colours in the Reduce Needles dialog (Cancel without),
// and keeps what the dialogs were asked and what was opened.
class ScriptedUser : public Messages {
 public:
  MessageAnswer ShowMessage(const std::string& text, const std::string& caption, MessageButtons shown) override {
    Messages::ShowMessage(text, caption, shown);
    buttons.push_back(shown);
    return answer;
  }
  std::vector<std::string> ChooseDesigns() override { return picks; }
  std::optional<std::string> ChooseSaveName(const SaveDialogRequest& request) override {
    requests.push_back(request);
    return saveName;
  }
  void ShowPreferences(const std::string& title) override { sheets.push_back(title); }
  FontHeights StockFontHeights() override { return {21, 34}; }
  bool ReduceNeedles(const Design& design, Design& result) override;
  bool OpenWithDesktop(const std::string& path) override {
    opened.push_back(path);
    return true;
  }
  std::optional<int> needles;
  std::vector<std::string> opened;
  MessageAnswer answer = MessageAnswer::kYes;
  std::vector<std::string> picks, sheets;
  std::optional<std::string> saveName;
  std::vector<MessageButtons> buttons;
  std::vector<SaveDialogRequest> requests;
};

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
