// File operations: writing a design's bytes, deleting designs, folders.
#include <gtest/gtest.h>

#include <filesystem>

#include "archive/file_operations.h"
#include "archive/zip_member.h"
#include "tests/test_support.h"

namespace fennick {
namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<uint8_t>;

class FileOperationsTest : public ::testing::Test {
 protected:
  test::ScratchFolder folder;
};

TEST_F(FileOperationsTest, NewFolderNameCountsFromTwo) {
  const std::string base = folder.File("New Folder");
  EXPECT_EQ(NewFolderName(base), base);
  fs::create_directory(base);
  EXPECT_EQ(NewFolderName(base), base + "(2)");
  EXPECT_EQ(NewFolderName(base + "/"), base + "(2)") << "a final '/' is ignored";
  folder.Write("New Folder(2)", {1});  // a file blocks the name as well
  EXPECT_EQ(NewFolderName(base), base + "(3)");
  EXPECT_EQ(CreateFolderUnique(base), base + "(3)");
  EXPECT_TRUE(FolderTest(base + "(3)"));
  EXPECT_FALSE(FolderTest(folder.File("New Folder(2)")));
}

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

// What a member's deletion keeps is the ZIP tests' matter.
TEST_F(FileOperationsTest, DeleteDesignTakesFilesAndMembers) {
  folder.Write("plain.dst", {1});
  DeleteDesign(DesignPath(folder.File("plain.dst")));
  EXPECT_FALSE(fs::exists(folder.File("plain.dst")));
  DesignPath member;
  member.SetZipFile(folder.File("z.zip"));
  member.SetFileName("b.dst");
  ASSERT_EQ(WriteFileBlock(Bytes{2}, member, kWriteNoDialog), 0);
  DeleteDesign(member);
  Bytes bytes;
  EXPECT_EQ(ReadZipMember(member, bytes), 1);
}

TEST_F(FileOperationsTest, FoldersAreMadeRenamedAndDeleted) {
  const std::string deep = folder.File("a/b/c");
  EXPECT_TRUE(EnsureFolder(deep + "/"));
  EXPECT_TRUE(FolderExists(deep + "/"));
  EXPECT_EQ(RenameFolder(deep, deep), 0);
  EXPECT_EQ(RenameFolder(folder.File("a/b"), folder.File("a/B")), 0);
  EXPECT_TRUE(FolderTest(folder.File("a/B/c")));
  fs::create_directory(folder.File("other"));
  EXPECT_NE(RenameFolder(folder.File("a"), folder.File("other")), 0) << "an existing folder is never replaced";
  folder.Write("a/B/c/file.pes", {1});
  EXPECT_GT(DiskFree(folder.Path().string()), 0);
  EXPECT_LT(DiskFree(folder.File("missing")), 0);
  EXPECT_NE(ShellDelete("/"), 0);
  EXPECT_NE(ShellDelete(folder.Path().string() + "/."), 0) << "the home folder itself is refused";
  EXPECT_EQ(ShellDelete(folder.File("a")), 0);
  EXPECT_FALSE(FolderExists(folder.File("a")));
  EXPECT_TRUE(FolderTest(folder.Path().string())) << "the home folder stays";
}

}  // namespace
}  // namespace fennick
