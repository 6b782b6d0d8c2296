// File operations: writing a design's bytes and making folders.
#include <gtest/gtest.h>

#include <filesystem>

#include "archive/file_operations.h"
#include "tests/test_support.h"

namespace fennick {
namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<uint8_t>;

class FileOperationsTest : public ::testing::Test {
 protected:
  test::ScratchFolder folder;
};

TEST_F(FileOperationsTest, WriteFileBlockTakesAFreeNameOnlyWhenAsked) {
  folder.Write("rose.pes", {1});
  folder.Write("rose(2).pes", {2});
  DesignPath path(folder.File("rose.pes"));
  ASSERT_EQ(WriteFileBlock(Bytes{3}, path, kWriteFreeName | kWriteNoDialog), 0);
  EXPECT_EQ(path.FullName(), folder.File("rose(3).pes"));
  EXPECT_EQ(folder.Read("rose(3).pes"), Bytes{3});
  EXPECT_EQ(folder.Read("rose.pes"), Bytes{1});
  path = DesignPath(folder.File("rose.pes"));
  ASSERT_EQ(WriteFileBlock(Bytes{4}, path, kWriteNoDialog), 0);
  EXPECT_EQ(folder.Read("rose.pes"), Bytes{4}) << "without bit 4 the file is replaced";
}

TEST_F(FileOperationsTest, FailedWritesLeaveTheOldFile) {
  const Bytes notAZip = {'P', 'K', 9, 9, 1, 2, 3};
  folder.Write("bad.zip", notAZip);
  DesignPath member;
  member.SetZipFile(folder.File("bad.zip"));
  member.SetFileName("rose.pes");
  EXPECT_LT(WriteFileBlock(Bytes{1, 2}, member, kWriteNoDialog), 0);
  EXPECT_EQ(folder.Read("bad.zip"), notAZip);
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path()), {}), 1) << "no temporary file is left";
}

TEST_F(FileOperationsTest, EnsureFolderMakesEveryLevel) {
  const std::string deep = folder.File("a/b/c");
  EXPECT_FALSE(FolderExists(deep));
  EXPECT_TRUE(EnsureFolder(deep + "/"));
  EXPECT_TRUE(FolderExists(deep + "/"));
  folder.Write("file", {1});
  EXPECT_FALSE(EnsureFolder(folder.File("file"))) << "a file is no folder";
}

}  // namespace
}  // namespace fennick
