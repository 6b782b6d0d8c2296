#include "fuzz/fuzz_support.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <unistd.h>

#include "core/embroidery_file.h"
#include "core/user_interface.h"

namespace fennick::fuzz {
namespace {

class SilentInterface : public UserInterface {
 public:
  MessageAnswer ShowMessage(const std::string&, const std::string&, MessageButtons buttons) override {
    return buttons == MessageButtons::kYesNo || buttons == MessageButtons::kYesNoCancel ? MessageAnswer::kNo
                                                                                        : MessageAnswer::kOk;
  }
  void SetWaitCursor(bool) override {}
};

[[noreturn]] void Fail(const char* what, const char* check) {
  std::fprintf(stderr, "%s: %s\n", what, check);
  std::abort();
}

}  // namespace

const std::filesystem::path& ScratchFolder() {
  static const std::filesystem::path folder = [] {
    // Memory-backed when there is one: the preference store syncs every write.
    std::error_code error;
    const std::filesystem::path base =
        std::filesystem::is_directory("/dev/shm", error) ? "/dev/shm" : std::filesystem::temp_directory_path();
    std::string pattern = (base / "fennick-fuzz-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) std::abort();
    return std::filesystem::path(pattern);
  }();
  return folder;
}

void Setup() {
  const std::filesystem::path& folder = ScratchFolder();
  std::filesystem::create_directories(folder / "config");
  setenv("HOME", folder.c_str(), 1);
  setenv("XDG_CONFIG_HOME", (folder / "config").c_str(), 1);
  setenv("XDG_CONFIG_DIRS", (folder / "etc").c_str(), 1);
  static SilentInterface silent;
  SetUserInterface(&silent);
  // The folder goes with the process, however it ends but a crash.
  std::atexit([] {
    std::error_code ignored;
    std::filesystem::remove_all(ScratchFolder(), ignored);
  });
}

void WriteFile(const std::filesystem::path& path, std::span<const uint8_t> bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

size_t CountColorStops(const Design& design) {
  size_t stops = 0;
  for (const StitchNode& node : design.stitches) stops += node.IsColorStop() ? 1 : 0;
  return stops;
}

void CheckWellFormed(const Design& design, const char* what) {
  if (design.stitches.Empty()) return;
  if (design.minX > design.maxX || design.minY > design.maxY) Fail(what, "bounds inverted");
  // Not equal: a last colour without stitches may lose its stop where a
  // format's last record ends the stream (HUS), and keeps its thread.
  if (design.threads.size() < CountColorStops(design) + 1) Fail(what, "more colour stops than threads");
}

void CheckUsable(Design& design, const char* what) {
  if (design.stitches.Empty()) return;
  if (design.minX > design.maxX || design.minY > design.maxY) Fail(what, "bounds inverted");
  // A damaged file may leave fewer threads than stops; what every later pass
  // relies on is that normalizing mends it.
  design.ComputeThreadStats();
  if (design.NormalizeColorStops() == 0 && design.threads.size() != CountColorStops(design) + 1) {
    Fail(what, "normalized threads do not match the colour stops");
  }
  design.ComputeThreadStats();
  Design copy = design;
  EncodeEmbroideryFile(copy);
}

}  // namespace fennick::fuzz
