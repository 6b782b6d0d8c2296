#include "core/format_table.h"

#include <gtest/gtest.h>

#include "core/preferences.h"
#include "tests/test_support.h"

namespace fennick {
namespace {

TEST(FormatTable, CodesAndExtensions) {
  EXPECT_EQ(FormatExtension(16), "TXT");
  EXPECT_EQ(FormatExtension(17), "");
  EXPECT_EQ(FormatExtension(-1), "");
  EXPECT_EQ(FormatFromExtension("PhD"), kFormatPhd);
  EXPECT_EQ(FormatFromExtension("xyz"), kFormatUnknown);
  for (const FormatEntry& entry : FormatTable()) EXPECT_EQ(FormatFromExtension(entry.extension), entry.code);
}

TEST(FormatTable, WritableFormatFromPath) {
  std::string extension;
  EXPECT_EQ(WritableFormatFromPath("/a/b.DST", &extension), kFormatDst);
  EXPECT_EQ(extension, "dst");
  EXPECT_EQ(WritableFormatFromPath("/a/b.phc", &extension), kFormatUnknown);
  EXPECT_EQ(extension, "pes");
  EXPECT_EQ(WritableFormatFromPath("/a/b", &extension), kFormatUnknown);
  EXPECT_EQ(extension, "pes");
  EXPECT_EQ(WritableFormatFromPath("Zip:/z.zip:a/b.vip"), kFormatVip);
}

TEST(FormatTable, ExtensionLists) {
  std::vector<std::string> list{"stale"};
  EXPECT_EQ(ReadableExtensions(&list), 14);
  EXPECT_EQ(list, (std::vector<std::string>{"dst", "emd", "exp", "hus", "jef", "pec", "pes", "phc", "phb", "pcs",
                                            "sew", "shv", "vip", "xxx"}));
  EXPECT_EQ(WritableExtensions(&list), 9);
  EXPECT_EQ(list, (std::vector<std::string>{"dst", "exp", "hus", "jef", "pes", "pcs", "sew", "vip", "xxx"}));
  // Both say 14 when no list is given.
  EXPECT_EQ(ReadableExtensions(nullptr), 14);
  EXPECT_EQ(WritableExtensions(nullptr), 14);
  const std::vector<std::string> upper(WritableExtensionsUpper().begin(), WritableExtensionsUpper().end());
  EXPECT_EQ(upper, (std::vector<std::string>{"PES", "HUS", "SEW", "PCS", "JEF", "XXX", "EXP", "VIP", "DST"}));
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

TEST_F(DispatchTest, SamePathTwiceReadsOnlyOnce) {
  folder.Write("a.dst", DstBytes());
  Design design;
  ASSERT_EQ(ReadDesignFile(design, folder.File("a.dst")), 0);
  std::filesystem::remove(folder.File("a.dst"));
  EXPECT_EQ(ReadDesignFile(design, folder.File("A.DST")), 0);
  EXPECT_FALSE(design.stitches.Empty());
}

TEST_F(DispatchTest, FailuresKeepTheNewName) {
  folder.Write("empty.dst", {});
  folder.Write("notes.txt", {'h', 'i'});
  folder.Write("picture.bmp", {'B', 'M', 0, 0});
  for (const char* name : {"empty.dst", "missing.dst", "notes.txt", "picture.bmp", "noextension"}) {
    Design design;
    const std::string path = folder.File(name);
    EXPECT_EQ(ReadDesignFile(design, path), -1) << name;
    EXPECT_EQ(design.name, path) << name;
    // The name now matches, so a retry returns at once.
    EXPECT_EQ(ReadDesignFile(design, path), 0) << name;
  }
}

TEST_F(DispatchTest, WriteTargetComesFromSettingsOrForcedFormat) {
  const PreferenceStore store;
  Design source;
  source.threads.resize(1);
  test::SetNodes(source, {{0, 0, STITCH_JUMP}, {5, 5, 0}});
  source.name = "/d/rose.exp";
  std::vector<uint8_t> out;

  Design design = source;
  EXPECT_GT(WriteDesignFile(design, out, kFormatDst), 0u);
  EXPECT_EQ(design.name, "/d/rose.dst");

  store.SetInt("Settings", "Tools selected", kFormatDst);
  design = source;
  EXPECT_GT(WriteDesignFile(design, out, -1), 0u);
  EXPECT_EQ(design.name, "/d/rose.dst");

  // "Tools keep" turns the target into the source format: PHC is not writable.
  store.SetInt("Settings", "Tools keep", 1);
  design = source;
  design.name = "/d/rose.phb";
  EXPECT_EQ(WriteDesignFile(design, out, -1), 0u);
  EXPECT_TRUE(out.empty());
  EXPECT_EQ(design.name, "/d/rose.phb");
  store.SetInt("Settings", "Tools keep", 0);

  store.SetInt("Settings", "Tools selected", kFormatPhc);
  design = source;
  EXPECT_EQ(WriteDesignFile(design, out, -1), 0u);
  EXPECT_EQ(design.name, "/d/rose.exp");

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
