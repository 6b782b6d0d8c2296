#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include "archive/al_file.h"
#include "archive/al_memory.h"
#include "archive/crc32.h"
#include "tests/test_support.h"

namespace fennick {
namespace {

namespace fs = std::filesystem;

std::vector<uint8_t> Counting(size_t count) {
  std::vector<uint8_t> bytes(count);
  for (size_t i = 0; i < count; ++i) bytes[i] = static_cast<uint8_t>(i * 7 + 1);
  return bytes;
}

std::vector<uint8_t> ReadAll(ALStorage& storage) {
  std::vector<uint8_t> bytes;
  for (int c = storage.ReadChar(); c >= 0; c = storage.ReadChar()) bytes.push_back(static_cast<uint8_t>(c));
  return bytes;
}

std::string Message(const char* format, const std::string& a, int b = 0) {
  char text[512];
  std::snprintf(text, sizeof text, format, a.c_str(), b);
  return text;
}

// The details the archive code writes are held to their text by the ZIP tests.
TEST(ALStatus, TextsOfKnownCodesOnly) {
  // Known codes, a gap between them and a positive code.
  for (const auto& [code, text] : {std::pair{-1984, "CRC Error"}, {-1973, "Unknown error"}, {1, "Unknown error"}}) {
    EXPECT_STREQ(ALStatus::StatusText(code), text) << code;
  }
  EXPECT_STREQ(ALStatus().GetStatusDetail(), "No errors");
}

TEST(Crc32, RunningRegisterIsNotInverted) {
  const std::vector<uint8_t> check = test::ToBytes("123456789");
  // The published CRC-32 of "123456789" is 0xCBF43926; the register holds its complement.
  EXPECT_EQ(Crc32Update(kCrc32Start, check), 0x340BC6D9u);
  EXPECT_EQ(Crc32Update(Crc32Update(kCrc32Start, std::span(check).first(4)), std::span(check).subspan(4)), 0x340BC6D9u);
  EXPECT_EQ(Crc32(check), 0xCBF43926u);
  EXPECT_EQ(Crc32Update(0x12345678, {}), 0x12345678u);
}

TEST(ALName, CaseRuleAndExtension) {
  struct Row {
    ALCase nameCase;
    const char* other;
    bool same;
  };
  for (const Row& row : {Row{AL_EXACT_CASE, "Dir/A.zip", true}, Row{AL_EXACT_CASE, "dir/a.ZIP", false},
                         Row{AL_IGNORE_CASE, "dir/a.ZIP", true}, Row{AL_IGNORE_CASE, "Dir/A.zi", false}}) {
    EXPECT_EQ(ALName("Dir/A.zip", row.nameCase).Matches(row.other), row.same) << row.other;
  }
  for (const auto& [from, to] : {std::pair{"a/b.zip", "a/b.bak"}, {"a.d/b", "a.d/b.bak"}, {"x", "x.bak"}}) {
    EXPECT_EQ(ALName(from).WithExtension(".bak"), to);
  }
}

TEST(ALMemory, ByteEdgesTellAndEndOfData) {
  ALMemory memory("m", {}, AL_EXACT_CASE, 4);
  ASSERT_EQ(memory.Create(), 0);
  EXPECT_EQ(memory.WriteChar(0xFF), 255);
  EXPECT_EQ(memory.WriteChar(0x1FE), 0xFE);
  const std::vector<uint8_t> rest = Counting(8);
  EXPECT_EQ(memory.WriteBuffer(rest), 8u);
  EXPECT_EQ(memory.Tell(), 10);
  EXPECT_EQ(memory.GetSize(), 10);
  memory.Close();

  ASSERT_EQ(memory.Open(), 0);
  std::vector<uint8_t> first(4);
  EXPECT_EQ(memory.ReadBuffer(first), 4u);
  EXPECT_EQ(memory.Tell(), 4);
  EXPECT_EQ(memory.ReadChar(), rest[2]);  // loads bytes 4 to 7
  EXPECT_EQ(memory.Tell(), 5);
  EXPECT_EQ(memory.LoadBuffer(8), 2);
  EXPECT_EQ(memory.Tell(), 8);
  std::vector<uint8_t> tail(5);
  EXPECT_EQ(memory.ReadBuffer(tail), 2u);
  EXPECT_EQ(memory.ReadChar(), AL_END_OF_FILE);
  EXPECT_EQ(memory.status.GetStatusCode(), 0);
  EXPECT_EQ(memory.Tell(), 10);
}

TEST(ALMemory, CrcFollowsEveryFlushAndLoad) {
  ALMemory memory("m", {}, AL_EXACT_CASE, 4);  // the nine bytes go in three flushes and come back in three loads
  memory.SetCrcEnabled(true);
  memory.Create();
  memory.WriteBuffer(test::ToBytes("123456789"));
  memory.Close();
  EXPECT_EQ(memory.GetCrc32(), 0x340BC6D9u);
  memory.Open();
  EXPECT_EQ(ReadAll(memory), test::ToBytes("123456789"));
  EXPECT_EQ(memory.GetCrc32(), 0x340BC6D9u);
}

// A user's block never grows, and the failure sticks until ClearError.
TEST(ALMemory, UserBlockRefusesToGrow) {
  std::vector<uint8_t> block = test::ToBytes("123");
  ALMemory memory("user", block, AL_EXACT_CASE, 8);
  ASSERT_EQ(memory.Create(), 0);
  EXPECT_EQ(memory.WriteBuffer(test::ToBytes("abcd")), 4u);  // all still in the storage buffer
  EXPECT_EQ(memory.Close(), AL_CANT_ALLOCATE_MEMORY);
  EXPECT_STREQ(memory.status.GetStatusDetail(), "Attempt to write past the end of a user owned buffer for ALMemory user");
  EXPECT_EQ(block, test::ToBytes("123"));
  EXPECT_EQ(memory.Open(), AL_CANT_ALLOCATE_MEMORY);
  EXPECT_EQ(memory.ReadChar(), AL_CANT_ALLOCATE_MEMORY);
  memory.ClearError();
  ASSERT_EQ(memory.Create(), 0);
  EXPECT_EQ(memory.WriteBuffer(test::ToBytes("xyz")), 3u);
  EXPECT_EQ(memory.Close(), 0);
  EXPECT_EQ(block, test::ToBytes("xyz"));
}

TEST(ALFile, RoundTripThroughMissingFolders) {
  test::ScratchFolder folder;
  const std::string path = folder.File("a/b/design.bin");
  const std::vector<uint8_t> bytes = Counting(100);
  {
    ALFile file(path, 16);
    ASSERT_EQ(file.Create(), 0) << file.status.GetStatusDetail();
    EXPECT_EQ(file.WriteBuffer(bytes), 100u);
    EXPECT_EQ(file.Close(), 0);
  }
  EXPECT_EQ(folder.Read("a/b/design.bin"), bytes);

  ALFile file(path, 16);
  file.SetCrcEnabled(true);
  ASSERT_EQ(file.Open(), 0);
  EXPECT_EQ(file.GetSize(), 100);
  EXPECT_FALSE(file.attributes.directory);
  EXPECT_EQ(ReadAll(file), bytes);
  EXPECT_EQ(~file.GetCrc32(), Crc32(bytes));
  ASSERT_EQ(file.Seek(50), 0);
  EXPECT_EQ(file.ReadChar(), bytes[50]);
  EXPECT_EQ(file.WriteChar(0xAB), 0xAB);
  file.Close();
  std::vector<uint8_t> changed = bytes;
  changed[51] = 0xAB;
  EXPECT_EQ(folder.Read("a/b/design.bin"), changed);
}

TEST(ALFile, OpenAndCreateFailuresNameTheErrno) {
  test::ScratchFolder folder;
  folder.Write("plain", test::ToBytes("x"));
  fs::create_directory(folder.Path() / "folder");
  struct Row {
    std::string path;
    bool create;
    const char* format;
    int error;
  };
  const Row rows[] = {
      {folder.File("missing"), false, "File open failure.  Open of %s returned errno = %d", ENOENT},
      {folder.File("folder"), false, "File open failure.  Open of %s returned errno = %d", EISDIR},
      {folder.File("plain/inner"), true, "File creation failure.  Open of %s returned errno = %d", ENOTDIR},
  };
  for (const Row& row : rows) {
    ALFile file(row.path);
    EXPECT_EQ(row.create ? file.Create() : file.Open(), AL_CANT_OPEN_FILE) << row.path;
    EXPECT_EQ(file.status.GetStatusDetail(), Message(row.format, row.path, row.error));
    EXPECT_EQ(file.ReadChar(), AL_CANT_OPEN_FILE);
  }
}

TEST(ALFile, RenameToBackupAndBack) {
  test::ScratchFolder folder;
  folder.Write("a.zip", test::ToBytes("a"));
  folder.Write("a.bak", test::ToBytes("old"));  // a clash is deleted
  const std::string zip = folder.File("a.zip");
  ALFile file(zip);
  EXPECT_EQ(file.RenameToBackup(), 0);
  EXPECT_EQ(file.GetName(), folder.File("a.bak"));
  EXPECT_EQ(file.GetOldName(), zip);
  EXPECT_EQ(folder.Read("a.bak"), test::ToBytes("a"));
  EXPECT_EQ(file.UnRename(), 0);
  EXPECT_EQ(folder.Read("a.zip"), test::ToBytes("a"));
}

}  // namespace
}  // namespace fennick
