// fennick browse: the browser is a program of its own with windows, so that
// this one starts without loading the window libraries.
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include <filesystem>
#include <vector>

#include "cli/commands.h"

namespace fennick::cli {

int RunBrowse(const Arguments& arguments) {
  if (arguments.size() > 1) {
    ReportError("browse", "expected at most one FOLDER");
    return 2;
  }
  std::error_code error;
  const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
  const std::filesystem::path beside = self.parent_path() / "fennick-browse";
  std::vector<std::string> words{error || !std::filesystem::exists(beside) ? "fennick-browse" : beside.string()};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  execvp(argv[0], argv.data());
  ReportError("browse", "cannot start fennick-browse: " + std::string(std::strerror(errno)));
  return 1;
}

}  // namespace fennick::cli
