#include "tests/test_support.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <unistd.h>

namespace fennick::test {

std::vector<uint8_t> ReadTestFile(const std::string& name) {
  std::ifstream file(std::string(FENNICK_TEST_DATA) + "/" + name, std::ios::binary);
  if (!file) throw std::runtime_error("missing test file " + name);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

ScratchFolder::ScratchFolder() {
  std::string pattern = (std::filesystem::temp_directory_path() / "fennick-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no scratch folder");
  path_ = pattern;
  if (const char* old = std::getenv("XDG_CONFIG_HOME")) {
    hadConfigHome_ = true;
    oldConfigHome_ = old;
  }
  setenv("XDG_CONFIG_HOME", (path_ / "config").c_str(), 1);
}

ScratchFolder::~ScratchFolder() {
  if (hadConfigHome_) {
    setenv("XDG_CONFIG_HOME", oldConfigHome_.c_str(), 1);
  } else {
    unsetenv("XDG_CONFIG_HOME");
  }
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

void ScratchFolder::Write(const std::string& name, const std::vector<uint8_t>& bytes) const {
  std::ofstream file(path_ / name, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace fennick::test
