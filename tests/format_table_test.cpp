#include "core/format_table.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <span>
#include <string>

#include "core/preferences.h"
#include "tests/test_support.h"

namespace fennick {
namespace {

TEST(FormatTable, CodesAndExtensions) {
  EXPECT_EQ(FormatExtension(16), "TXT");
  EXPECT_EQ(FormatFromExtension("PhD"), kFormatPhd);
  EXPECT_EQ(FormatFromExtension("xyz"), kFormatUnknown);
  for (const FormatEntry& entry : FormatTable()) EXPECT_EQ(FormatFromExtension(entry.extension), entry.code);
  std::vector<std::string> list{"stale"};
  EXPECT_EQ(WritableExtensions(&list), 9);
  EXPECT_EQ(list, (std::vector<std::string>{"dst", "exp", "hus", "jef", "pes", "pcs", "sew", "vip", "xxx"}));
}

// Readers must never crash, hang or read out of bounds: each sample cut at
// every length (at a stride past `everyBelow`, where a long file's reader is
// slow) or with bytes overwritten, and random bytes, through every reader.
// A cut reads from `readsFrom` bytes on (star.pes: its block at 613 with L =
// 5128; the zero byte counts) and fails below. Some readers take any bytes at
// all and give a thread; what a reader keeps has no stop at its tail unless it
// folds no jumps (PCS, SHV).
TEST(FormatTable, EveryReaderTakesCutDamagedAndRandomBytes) {
  constexpr size_t kMayFail = SIZE_MAX;
  const std::set<std::string> alwaysReads = {"DST", "EXP", "JEF"}, keepsTailStop = {"PCS", "SHV"};
  test::Messages messages;  // the HUS and VIP readers report their failures
  std::mt19937 random(11);
  auto read = [&](const FormatEntry& format, const std::string& name, std::span<const uint8_t> bytes, size_t readsFrom) {
    Design design;
    design.name = name;  // as ReadDesignFile names it; some readers need it
    const bool ok = format.read(design, bytes);
    const std::string what = name + ", " + std::to_string(bytes.size()) + " bytes";
    EXPECT_TRUE(readsFrom == kMayFail || ok == (bytes.size() >= readsFrom)) << what;
    EXPECT_TRUE((ok && !design.threads.empty()) || !alwaysReads.contains(format.extension)) << what;
    EXPECT_FALSE(ok && !design.stitches.Empty() && design.stitches.Tail()->IsColorStop() &&
                 !keepsTailStop.contains(format.extension))
        << what;
  };
  const struct {
    const char* file;
    size_t everyBelow, stride, readsFrom;
  } samples[] = {
      {"Star.pcs", 1000, 7, kMayFail},           {"Star.xxx", SIZE_MAX, 1, kMayFail},
      {"geometric_objects.sew", 9544, 61, kMayFail}, {"shamrockin.emd", SIZE_MAX, 1, kMayFail},
      {"Star.shv", SIZE_MAX, 1, kMayFail},       {"Star.phb", SIZE_MAX, 1, 0},
      {"geometric_objects.jef", 2048, 13, 0},    {"geometric_objects.exp", 2048, 13, 0},
      {"geometric_objects.hus", 0, 17, kMayFail}, {"geometric_objects.vip", 0, 17, kMayFail},
      {"Star.vip", SIZE_MAX, 1, kMayFail},       {"star.pes", SIZE_MAX, 1, 613 + 5128},
  };
  for (const auto& sample : samples) {
    const std::string name = sample.file;
    const FormatEntry& format = *FindFormat(FormatFromExtension(name.substr(name.rfind('.') + 1)));
    const std::vector<uint8_t> file = test::ReadTestFile(name);
    for (size_t length = 0; length <= file.size(); length += length < sample.everyBelow ? 1 : sample.stride) {
      read(format, name, test::AsReaderInput({file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length)}),
           sample.readsFrom);
    }
    for (int round = 0; round < 200; ++round) {
      std::vector<uint8_t> damaged = file;
      for (int flips = 0; flips < 4; ++flips) damaged[random() % damaged.size()] = static_cast<uint8_t>(random());
      read(format, name, test::AsReaderInput(damaged), kMayFail);
    }
  }
  for (const FormatEntry& format : FormatTable()) {
    if (format.read == nullptr) continue;
    for (int round = 0; round < 300; ++round) {
      std::vector<uint8_t> bytes(random() % 2000);
      for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
      read(format, std::string("r.") + format.extension, test::AsReaderInput(bytes), kMayFail);
    }
  }
}

class DispatchTest : public ::testing::Test {
 protected:
  test::ScratchFolder folder;
  std::vector<uint8_t> DstBytes() {
    Design design;
    design.threads.resize(2);
    test::SetNodes(design, {{0, 0, STITCH_JUMP}, {0, 0, 0}, {10, 0, 0}, {0, 0, STITCH_COLORSTOP}, {0, 10, 0}});
    std::vector<uint8_t> bytes;
    WriteDst(design, bytes);
    return bytes;
  }
  static int WriteDst(Design& design, std::vector<uint8_t>& out) { return FindFormat(kFormatDst)->write(design, out); }
};

TEST_F(DispatchTest, ReadsByExtensionInAnyCaseAndFillsStatistics) {
  folder.Write("Rose.dSt", DstBytes());
  Design design;
  const std::string path = folder.File("Rose.dSt");
  ASSERT_EQ(ReadDesignFile(design, path), 0);
  EXPECT_EQ(design.name, path);
  ASSERT_EQ(design.threads.size(), 2u);
  EXPECT_GT(design.threads[0].stitchCount, 0);
  EXPECT_GT(design.threads[1].threadLength, 7500);
  EXPECT_EQ(PreferenceStore(PreferenceTree::kProfile).GetString("Settings", "Last File", ""), path);
}

// A second call with the same path, in any case, reads nothing: after a
// success, and after a failure, which keeps the new name.
TEST_F(DispatchTest, SamePathTwiceReadsOnlyOnceAndFailuresKeepTheNewName) {
  folder.Write("a.dst", DstBytes());
  Design read;
  ASSERT_EQ(ReadDesignFile(read, folder.File("a.dst")), 0);
  std::filesystem::remove(folder.File("a.dst"));
  EXPECT_EQ(ReadDesignFile(read, folder.File("A.DST")), 0);
  EXPECT_FALSE(read.stitches.Empty());
  folder.Write("empty.dst", {});
  folder.Write("notes.txt", {'h', 'i'});
  folder.Write("picture.bmp", {'B', 'M', 0, 0});
  for (const char* name : {"empty.dst", "missing.dst", "notes.txt", "picture.bmp", "noextension"}) {
    Design design;
    const std::string path = folder.File(name);
    EXPECT_EQ(ReadDesignFile(design, path), -1) << name;
    EXPECT_EQ(design.name, path) << name;
    EXPECT_EQ(ReadDesignFile(design, path), 0) << name;
  }
}

TEST_F(DispatchTest, WriteTakesTheForcedFormatsExtension) {
  Design source;
  source.threads.resize(1);
  test::SetNodes(source, {{0, 0, STITCH_JUMP}, {5, 5, 0}});
  source.name = "/d/rose.exp";
  std::vector<uint8_t> out;

  Design design = source;
  EXPECT_GT(WriteDesignFile(design, out, kFormatDst), 0u);
  EXPECT_EQ(design.name, "/d/rose.dst");

  // A bitmap or an unknown source is never written, whatever the target.
  for (const char* name : {"/d/rose.bmp", "/d/rose.txt", "/d/rose.abc", "/d/rose"}) {
    design = source;
    design.name = name;
    EXPECT_EQ(WriteDesignFile(design, out, kFormatDst), 0u) << name;
  }
  design = Design();
  design.name = "/d/empty.dst";
  EXPECT_EQ(WriteDesignFile(design, out, kFormatDst), 0u);
}

}  // namespace
}  // namespace fennick
