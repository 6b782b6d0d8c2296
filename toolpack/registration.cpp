#include "toolpack/registration.h"

#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <vector>

#include "core/file_io.h"
#include "toolpack/operations.h"

namespace fennick {
namespace {

namespace fs = std::filesystem;

constexpr char kKeyFile[] = "FennickAddin Tools.reg";
constexpr char kKeyHeader[] =
    "WINE REGISTRY Version 2\n"
    ";; All keys relative to HKEY_LOCAL_MACHINE\\Software\\Selvane\\FennickAddin Tools\n";

fs::path KeyFolder(const std::string& given) {
  if (!given.empty()) return given;
  const char* dirs = std::getenv("XDG_CONFIG_DIRS");
  const std::string list = dirs != nullptr && dirs[0] == '/' ? dirs : "/etc/xdg";
  return list.substr(0, list.find(':'));
}

// A line of the key: "name"="data".
std::string ValueLine(std::string_view name, const std::string& data) {
  std::string line = "\"";
  line.append(name).append("\"=\"").append(data).append("\"\n");
  return line;
}

bool IsOurs(std::string_view line) {
  for (std::string_view program : kToolPrograms) {
    if (line.size() > program.size() + 2 && line[0] == '"' && line.substr(1, program.size()) == program &&
        line.substr(program.size() + 1, 2) == "\"=") {
      return true;
    }
  }
  return false;
}

}  // namespace

bool RegisterTools(const std::string& keyFolder, const std::string& toolFolder, bool add, std::string& error) {
  const fs::path file = KeyFolder(keyFolder) / "selvane" / kKeyFile;
  std::vector<uint8_t> old;
  if (ReadWholeFile(file.string(), old, size_t{1} << 20, &error) == FileRead::kFailed) return false;
  std::istringstream lines(old.empty() ? std::string(kKeyHeader) : std::string(old.begin(), old.end()));
  // The key's own values come before its first sub-key.
  std::string text, line;
  bool placed = false;
  const auto place = [&] {
    if (placed || !add) return;
    for (std::string_view program : kToolPrograms) {
      text += ValueLine(program, (fs::path(toolFolder) / program).string());
    }
    placed = true;
  };
  while (std::getline(lines, line)) {
    if (line.starts_with("[")) place();
    if (!IsOurs(line)) text += line + "\n";
  }
  place();
  std::error_code ignored;
  fs::create_directories(file.parent_path(), ignored);
  return WriteFileAtomic(file.string(), std::vector<uint8_t>(text.begin(), text.end()), &error);
}

}  // namespace fennick
