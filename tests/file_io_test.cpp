#include "core/file_io.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/test_support.h"

namespace fennick {
namespace {

namespace fs = std::filesystem;

TEST(FileIo, WriteReplacesWholeAndKeepsModeAndLinks) {
  test::ScratchFolder folder;
  const std::string path = folder.File("design.dst");
  ASSERT_TRUE(WriteFileAtomic(path, test::ToBytes("first")));
  chmod(path.c_str(), 0640);
  ASSERT_TRUE(WriteFileAtomic(path, test::ToBytes("second")));
  std::vector<uint8_t> bytes;
  ASSERT_EQ(ReadWholeFile(path, bytes), FileRead::kOk);
  EXPECT_EQ(bytes, test::ToBytes("second"));
  struct stat info {};
  stat(path.c_str(), &info);
  EXPECT_EQ(info.st_mode & 0777, 0640u);

  const std::string link = folder.File("link.dst");
  fs::create_symlink(path, link);
  ASSERT_TRUE(WriteFileAtomic(link, test::ToBytes("third")));
  EXPECT_TRUE(fs::is_symlink(link));
  ReadWholeFile(path, bytes);
  EXPECT_EQ(bytes, test::ToBytes("third"));
}

TEST(FileIo, FailedWriteLeavesTheOldAndNoTemporary) {
  test::ScratchFolder folder;
  // A folder where the file should go cannot be replaced by a file.
  const std::string path = folder.File("taken");
  fs::create_directory(path);
  fs::create_directory(folder.File("config"));
  std::string error;
  EXPECT_FALSE(WriteFileAtomic(path, test::ToBytes("data"), &error));
  EXPECT_FALSE(error.empty());
  EXPECT_TRUE(fs::is_directory(path));
  EXPECT_FALSE(WriteFileAtomic(folder.File("no/such/folder/file.dst"), test::ToBytes("data"), &error));
  size_t entries = 0;
  for ([[maybe_unused]] const auto& entry : fs::directory_iterator(folder.Path())) ++entries;
  EXPECT_EQ(entries, 2u);  // "taken" and "config": nothing left behind
}

TEST(FileIo, ReadRefusesWhatIsNoRegularFile) {
  test::ScratchFolder folder;
  std::vector<uint8_t> bytes;
  std::string error;
  EXPECT_EQ(ReadWholeFile(folder.File("missing"), bytes), FileRead::kMissing);
  EXPECT_EQ(ReadWholeFile(folder.Path().string(), bytes, SIZE_MAX, &error), FileRead::kFailed);
  EXPECT_FALSE(error.empty());
  // A pipe must not block the reader.
  const std::string pipe = folder.File("pipe.dst");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_EQ(ReadWholeFile(pipe, bytes), FileRead::kFailed);
  folder.Write("big.dst", std::vector<uint8_t>(100, 7));
  EXPECT_EQ(ReadWholeFile(folder.File("big.dst"), bytes, 99), FileRead::kFailed);
  EXPECT_EQ(ReadWholeFile(folder.File("big.dst"), bytes, 100), FileRead::kOk);
  EXPECT_EQ(bytes.size(), 100u);
}

}  // namespace
}  // namespace fennick
