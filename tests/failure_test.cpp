// Faults during saves and designs at the edge of the formats: every failure
// is reported, and the file that was there before stays whole.
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "archive/zip_member.h"
#include "core/format_table.h"
#include "core/preferences.h"
#include "formats/dst.h"
#include "tests/test_support.h"
#include "tools/save_pipeline.h"

namespace fennick {
namespace {

namespace fs = std::filesystem;

// While alive, no file of this process can grow past `bytes`: write() then
// fails with EFBIG, as it would on a full disk (SIGXFSZ is ignored meanwhile).
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &saved_);
    previousHandler_ = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit = saved_;
    limit.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &saved_);
    std::signal(SIGXFSZ, previousHandler_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit saved_{};
  void (*previousHandler_)(int) = nullptr;
};

// One thread of `count` moves round a 20 by 20 square, so that it ends where it
// starts; one DST record each.
Design Squares(const std::string& name, size_t count) {
  Design design;
  design.name = name;
  design.threads.resize(1);
  design.stitches.Reserve(count);
  constexpr int32_t kMoves[4][2] = {{20, 0}, {0, 20}, {-20, 0}, {0, -20}};
  for (size_t i = 0; i < count; ++i) design.stitches.PushBack(kMoves[i % 4][0], kMoves[i % 4][1], 0);
  design.ComputeBounds();
  return design;
}

ConversionSettings NoSplitNoHoop() {
  ConversionSettings settings = BuiltInConversion(kFormatDst);
  settings.splitStitches = 0;
  settings.splitColors = 0;
  settings.hoopWidth = 100000;
  settings.hoopHeight = 100000;
  return settings;
}

TEST(SaveFailure, DiskFullKeepsTheOldFile) {
  test::ScratchFolder scratch;
  const std::vector<uint8_t> old = {'o', 'l', 'd'};
  scratch.Write("rose.dst", old);
  Design design = Squares(scratch.File("rose.dst"), 4000);  // about 12 kB
  const ConversionSettings settings = NoSplitNoHoop();
  int written = -1;
  {
    FileSizeLimit full(4096);
    written = SaveDesign(design, nullptr, 1, &settings);
  }
  EXPECT_EQ(written, 0);
  EXPECT_EQ(scratch.Read("rose.dst"), old);
  EXPECT_EQ(test::FolderNames(scratch.Path()), std::vector<std::string>{"rose.dst"}) << "no temporary file may be left";

  // The same save without the fault goes through, so the fault was what stopped it.
  design = Squares(scratch.File("rose.dst"), 4000);
  EXPECT_EQ(SaveDesign(design, nullptr, 1, &settings), 1);
  EXPECT_GT(scratch.Read("rose.dst").size(), 4096u);
}

// Root writes into a 0555 folder all the same, so the save runs in a child
// that is not root.
TEST(SaveFailure, ReadOnlyFolderKeepsTheOldFile) {
  test::ScratchFolder scratch;
  const fs::path folder = scratch.Path() / "locked";
  fs::create_directory(folder);
  const std::vector<uint8_t> old = {'o', 'l', 'd'};
  scratch.Write("locked/rose.dst", old);
  chmod(scratch.Path().c_str(), 0755);
  chmod(folder.c_str(), 0555);
  chmod((folder / "rose.dst").c_str(), 0644);

  const pid_t pid = fork();
  ASSERT_GE(pid, 0);
  if (pid == 0) {
    if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) _exit(3);
    Design design = Squares((folder / "rose.dst").string(), 100);
    const ConversionSettings settings = NoSplitNoHoop();
    _exit(SaveDesign(design, nullptr, 1, &settings) == 0 ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(waitpid(pid, &status, 0), pid);
  chmod(folder.c_str(), 0755);
  ASSERT_TRUE(WIFEXITED(status));
  ASSERT_NE(WEXITSTATUS(status), 3) << "could not leave root";
  EXPECT_EQ(WEXITSTATUS(status), 0) << "the save must report that it wrote nothing";
  EXPECT_EQ(scratch.Read("locked/rose.dst"), old);
  EXPECT_EQ(test::FolderNames(folder), std::vector<std::string>{"rose.dst"});
}

TEST(SaveFailure, ZipMemberReplacedOnAFullDiskKeepsTheOldArchive) {
  test::ScratchFolder scratch;
  const DesignPath member("Zip:" + scratch.File("designs.zip") + ":rose.dst");
  const std::vector<uint8_t> first(2000, 'a');
  ASSERT_EQ(WriteZipMember(member, first), 0);
  const std::vector<uint8_t> archive = scratch.Read("designs.zip");

  std::vector<uint8_t> replacement(200000);
  uint32_t state = 1;  // a linear congruential stream: deflate cannot shrink it
  for (uint8_t& byte : replacement) {
    state = state * 1664525u + 1013904223u;
    byte = static_cast<uint8_t>(state >> 24);
  }
  int result = 0;
  {
    FileSizeLimit full(archive.size() + 4096);
    result = WriteZipMember(member, replacement);
  }
  EXPECT_LT(result, 0);
  EXPECT_EQ(scratch.Read("designs.zip"), archive);
  std::vector<uint8_t> bytes;
  ASSERT_EQ(ReadZipMember(member, bytes), 0);
  EXPECT_EQ(bytes, first);
  EXPECT_EQ(test::FolderNames(scratch.Path()), std::vector<std::string>{"designs.zip"});
}

TEST(LargeDesign, FiveMillionStitchesThroughDst) {
  constexpr size_t kCount = 5'000'000;
  Design design = Squares("big.dst", kCount);
  std::vector<uint8_t> out;
  ASSERT_GT(WriteDesignFile(design, out, kFormatDst), 3 * kCount);
  out.push_back(0);
  Design back;
  back.name = "big.dst";
  ASSERT_TRUE(ReadDst(back, out));
  size_t stitches = 0;
  int64_t x = 0, y = 0;
  for (const StitchNode& node : back.stitches) {
    stitches += node.IsJump() || node.IsColorStop() ? 0 : 1;
    x += node.dx;
    y += node.dy;
  }
  EXPECT_EQ(stitches, kCount);
  // The reader centres the 20 by 20 square, so the path starts and ends at (-10, -10).
  EXPECT_EQ(x, -10);
  EXPECT_EQ(y, -10);
  EXPECT_EQ(back.maxX - back.minX, 20);
  EXPECT_EQ(back.maxY - back.minY, 20);
}

// A 4 m move and a design 6.5 m wide: each writer either writes nothing or
// writes a file the reader takes. XXX keeps a long move in 16 bits without
// splitting it, so the move wraps; the writers that split keep the extent.
TEST(LargeDesign, CoordinatesBeyondSixteenBits) {
  for (const int32_t width : {40000, 65536}) {
    for (int code = kFormatPes; code <= kFormatVip; ++code) {
      const FormatEntry* format = FindFormat(code);
      test::ScratchFolder scratch;
      Design design;
      design.name = "wide.dst";
      design.threads.resize(1);
      test::SetNodes(design, {{0, 0, 0}, {width, 0, 0}, {0, 30, 0}, {-width, 0, 0}});
      design.ComputeBounds();
      std::vector<uint8_t> out;
      if (WriteDesignFile(design, out, code) == 0) continue;
      out.push_back(0);
      Design back;
      back.name = scratch.File(std::string("wide.") + format->extension);
      ASSERT_TRUE(format->read(back, out)) << format->extension << " " << width;
      back.ComputeBounds();
      if (code == kFormatXxx) {
        EXPECT_EQ(back.maxX - back.minX, std::abs(static_cast<int16_t>(width))) << width;
      } else {
        EXPECT_EQ(back.maxX - back.minX, width) << format->extension;
        EXPECT_EQ(back.maxY - back.minY, 30) << format->extension;
      }
    }
  }
}

// Run under ThreadSanitizer too: threads of one process share the store's
// files through their own descriptors and locks.
TEST(ConcurrentAccess, PreferenceWritersInThreadsLoseNothing) {
  test::ScratchFolder scratch;
  constexpr int kWriters = 4;
  constexpr int kValuesEach = 20;
  std::vector<std::thread> writers;
  for (int writer = 0; writer < kWriters; ++writer) {
    writers.emplace_back([writer] {
      const PreferenceStore store;
      for (int i = 0; i < kValuesEach; ++i) {
        store.SetInt("Race", "t" + std::to_string(writer) + "v" + std::to_string(i), i);
        store.GetInt("Race", "t0v0", -1);
      }
    });
  }
  for (std::thread& writer : writers) writer.join();
  EXPECT_EQ(PreferenceStore().Values("Race").size(), static_cast<size_t>(kWriters * kValuesEach));
}

}  // namespace
}  // namespace fennick
