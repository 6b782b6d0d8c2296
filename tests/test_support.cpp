#include "tests/test_support.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <unistd.h>

#include "tools/reduce_needles.h"

namespace fennick::test {

namespace {

std::vector<uint8_t> ReadBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("missing file " + path);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace

std::vector<Point> NeedlePath(const Design& design, Landing which, Point origin) {
  std::vector<Point> path;
  int64_t x = 0, y = 0;
  for (const StitchNode& node : design.stitches) {
    x += node.dx;
    y += node.dy;
    const bool counts = which == Landing::kAny || (node.flags == 0 && node.HasMove());
    if (counts) path.emplace_back(x - origin.first, y - origin.second);
  }
  return path;
}

std::set<Point> NeedlePoints(const Design& design, Landing which, Point origin) {
  const std::vector<Point> path = NeedlePath(design, which, origin);
  return {path.begin(), path.end()};
}

std::vector<Point> FromFirst(std::vector<Point> path) {
  for (size_t i = path.size(); i-- > 0;) path[i] = {path[i].first - path[0].first, path[i].second - path[0].second};
  return path;
}

std::vector<uint8_t> ReadTestFile(const std::string& name) { return ReadBytes(std::string(FENNICK_TEST_DATA) + "/" + name); }

ScratchFolder::ScratchFolder() {
  std::string pattern = (std::filesystem::temp_directory_path() / "fennick-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no scratch folder");
  path_ = pattern;
  const std::pair<const char*, std::string> environment[] = {
      {"HOME", path_.string()},
      {"XDG_CONFIG_HOME", (path_ / "config").string()},
      {"XDG_CONFIG_DIRS", (path_ / "etc1").string() + ":" + (path_ / "etc2").string()},
  };
  for (const auto& [name, value] : environment) {
    const char* old = std::getenv(name);
    savedEnvironment_.emplace_back(name, old != nullptr ? std::optional<std::string>(old) : std::nullopt);
    setenv(name, value.c_str(), 1);
  }
}

ScratchFolder::~ScratchFolder() {
  for (const auto& [name, old] : savedEnvironment_) {
    if (old) {
      setenv(name.c_str(), old->c_str(), 1);
    } else {
      unsetenv(name.c_str());
    }
  }
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::vector<uint8_t> ScratchFolder::Read(const std::string& name) const { return ReadBytes(File(name)); }

void ScratchFolder::Write(const std::string& name, const std::vector<uint8_t>& bytes) const {
  std::ofstream file(path_ / name, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

bool ScriptedUser::ReduceNeedles(const Design& design, Design& result) {
  if (!needles) return false;
  ReduceNeedlesModel dialog;
  dialog.Open(design);
  dialog.SetEditText(std::to_string(*needles));
  std::optional<Design> reduced = dialog.Accept();
  if (!reduced) return false;
  result = std::move(*reduced);
  return true;
}

}  // namespace fennick::test
