#include <gtest/gtest.h>
#include <unistd.h>

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

TEST(ALStatus, TextsDetailAndClear) {
  const std::pair<int, const char*> rows[] = {
      {0, "Success"},           {-1, "End of file"},       {-1200, "Can't allocate buffer"},
      {-1976, "Duplicate entry"}, {-1984, "CRC Error"},     {-1996, "Error renaming file"},
      {-1999, "Memory allocation failure"}, {-2, "Unknown error"}, {-1973, "Unknown error"}, {1, "Unknown error"}};
  for (const auto& [code, text] : rows) EXPECT_STREQ(ALStatus::StatusText(code), text) << code;

  ALStatus status;
  EXPECT_STREQ(status.GetStatusDetail(), "No errors");
  EXPECT_EQ(status.SetError(AL_CRC_ERROR, "CRC32 was supposed to be %08lx, was %08lx", 0x1234ul, 0xabcdeful), -1984);
  EXPECT_EQ(int{status}, -1984);
  EXPECT_STREQ(status.GetStatusString(), "CRC Error");
  EXPECT_STREQ(status.GetStatusDetail(), "CRC32 was supposed to be 00001234, was 00abcdef");
  status.ClearError();
  EXPECT_EQ(status.GetStatusCode(), 0);
  EXPECT_STREQ(status.GetStatusDetail(), "No errors");
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
  ALName name("first");
  name.Set("second");
  EXPECT_EQ(name.Get(), "second");
  EXPECT_EQ(name.GetOldName(), "first");
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

  // Writing after reading goes on at the next unread byte.
  ASSERT_EQ(memory.Seek(1), 0);
  EXPECT_EQ(memory.ReadChar(), 0xFE);
  EXPECT_EQ(memory.WriteChar('x'), 'x');
  EXPECT_EQ(memory.Seek(0), 0);
  const std::vector<uint8_t> all = ReadAll(memory);
  ASSERT_EQ(all.size(), 10u);
  EXPECT_EQ(all[2], 'x');
  EXPECT_EQ(all[3], rest[1]);
}

TEST(ALMemory, CrcAndMonitorFollowEachLoadAndFlush) {
  struct Recorder : ALMonitor {
    std::vector<long> positions;
    void Progress(long position, ALStorage&) override { positions.push_back(position); }
  } recorder;
  ALMemory memory("m", {}, AL_EXACT_CASE, 4);
  memory.SetCrcEnabled(true);
  memory.monitor = &recorder;
  memory.Create();
  memory.WriteBuffer(test::ToBytes("123456789"));
  memory.Close();
  EXPECT_EQ(memory.GetCrc32(), 0x340BC6D9u);
  EXPECT_EQ(recorder.positions, (std::vector<long>{4, 8, 9}));

  recorder.positions.clear();
  memory.Open();
  EXPECT_EQ(ReadAll(memory), test::ToBytes("123456789"));
  EXPECT_EQ(memory.GetCrc32(), 0x340BC6D9u);
  EXPECT_EQ(recorder.positions, (std::vector<long>{4, 8, 9}));
}

TEST(ALMemory, OwnedBlockGrowsBySteps) {
  ALMemory memory;
  EXPECT_EQ(memory.GetName(), "AL.TMP");
  memory.Create();
  const std::vector<uint8_t> bytes = Counting(20000);
  EXPECT_EQ(memory.WriteBuffer(bytes), bytes.size());
  memory.Close();
  // Flushes of 4,096 bytes: the first grows the block to 16,384, the last to 16,384 more.
  EXPECT_EQ(memory.GetBlockSize(), 32768u);
  EXPECT_EQ(memory.ReleaseBytes(), bytes);
  EXPECT_EQ(memory.GetBlockSize(), 0u);
}

// A user's block never grows, and the failure sticks until ClearError.
template <typename Memory>
void ExpectUserBlockRefusesToGrow(Memory& memory, const char* kind, std::span<const uint8_t> block) {
  ASSERT_EQ(memory.Create(), 0);
  EXPECT_EQ(memory.WriteBuffer(test::ToBytes("abcd")), 4u);  // all still in the storage buffer
  EXPECT_EQ(memory.Close(), AL_CANT_ALLOCATE_MEMORY);
  EXPECT_EQ(memory.status.GetStatusDetail(),
            std::string("Attempt to write past the end of a user owned buffer for ") + kind + " user");
  EXPECT_EQ(std::vector<uint8_t>(block.begin(), block.end()), test::ToBytes("123"));
  EXPECT_EQ(memory.Open(), AL_CANT_ALLOCATE_MEMORY);
  EXPECT_EQ(memory.ReadChar(), AL_CANT_ALLOCATE_MEMORY);
  EXPECT_EQ(memory.WriteChar(1), AL_CANT_ALLOCATE_MEMORY);
  memory.ClearError();
  ASSERT_EQ(memory.Create(), 0);
  EXPECT_EQ(memory.WriteBuffer(test::ToBytes("xyz")), 3u);
  EXPECT_EQ(memory.Close(), 0);
  EXPECT_EQ(std::vector<uint8_t>(block.begin(), block.end()), test::ToBytes("xyz"));
}

TEST(ALMemory, UserBlocksRefuseToGrowAndOwnedHandlesAreReleased) {
  std::vector<uint8_t> block = test::ToBytes("123");
  ALMemory user("user", block, AL_EXACT_CASE, 8);
  ExpectUserBlockRefusesToGrow(user, "ALMemory", block);
  const GlobalHandle handle = GlobalAllocCopy(test::ToBytes("123"));
  {
    ALWinMemory memory("user", handle, AL_EXACT_CASE, 8);
    ExpectUserBlockRefusesToGrow(memory, "ALWinMemory", std::span<const uint8_t>(GlobalLock(handle), 3));
    GlobalUnlock(handle);
  }
  EXPECT_EQ(GlobalFree(handle), 0u);

  const size_t before = GlobalBlockCount();
  {
    ALWinMemory memory("owned", 0, AL_EXACT_CASE, 4);
    memory.Create();
    memory.WriteBuffer(Counting(10));
    memory.Close();
    const GlobalHandle taken = memory.ReleaseHandle();
    EXPECT_EQ(GlobalCopyOut(taken), Counting(10));
    GlobalFree(taken);
    ALWinMemory dropped("dropped", 0, AL_EXACT_CASE, 4);
    dropped.Create();
    dropped.WriteChar(1);
  }
  EXPECT_EQ(GlobalBlockCount(), before);
}

TEST(ALStorage, ReadStringLengths) {
  std::vector<uint8_t> bytes = {3, 0, 'a', 'b', 'c', 'd'};
  ALMemory memory("s", bytes, AL_EXACT_CASE, 4);
  memory.Open();
  std::string text;
  EXPECT_EQ(memory.ReadString(text), 0);
  EXPECT_EQ(text, "abc");
  EXPECT_EQ(memory.ReadString(text, 2), AL_END_OF_FILE);
  EXPECT_EQ(text, "d");
  EXPECT_EQ(memory.ReadString(text), AL_READ_ERROR);
  EXPECT_STREQ(memory.status.GetStatusDetail(), "Error reading string lengthin ReadString() for object s");
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

TEST(ALFile, TemporaryNamesSkipTakenOnes) {
  test::ScratchFolder folder;
  const fs::path previous = fs::current_path();
  fs::current_path(folder.Path());
  folder.Write("~al~000.tmp", {});
  {
    ALFile file;
    EXPECT_EQ(file.Create(), 0);
    EXPECT_EQ(file.GetName(), "~al~001.tmp");
    EXPECT_TRUE(file.IsTemporary());
  }
  fs::current_path(previous);
  EXPECT_TRUE(fs::exists(folder.Path() / "~al~001.tmp"));
}

TEST(ALFile, RenameBackupAndDelete) {
  test::ScratchFolder folder;
  folder.Write("a.zip", test::ToBytes("a"));
  folder.Write("other", test::ToBytes("o"));
  const std::string zip = folder.File("a.zip");
  ALFile file(zip);

  EXPECT_EQ(file.Rename(zip), AL_RENAME_ERROR);
  EXPECT_EQ(file.status.GetStatusDetail(),
            "Error attempting to rename " + zip + " to " + zip + ".  Can't rename to the same name!");
  file.ClearError();

  EXPECT_EQ(file.Rename(folder.File("other"), false), AL_RENAME_ERROR);
  EXPECT_EQ(file.status.GetStatusDetail(),
            "Error renaming " + zip + " to " + folder.File("other") + ".  errno = " + std::to_string(EEXIST));
  file.ClearError();

  EXPECT_EQ(file.RenameToBackup(), 0);
  EXPECT_EQ(file.GetName(), folder.File("a.bak"));
  EXPECT_EQ(file.GetOldName(), zip);
  EXPECT_EQ(folder.Read("a.bak"), test::ToBytes("a"));
  EXPECT_EQ(file.UnRename(), 0);
  EXPECT_EQ(folder.Read("a.zip"), test::ToBytes("a"));

  EXPECT_EQ(file.Delete(), 0);
  EXPECT_FALSE(fs::exists(zip));
  EXPECT_EQ(file.Delete(), AL_DELETE_ERROR);
  EXPECT_EQ(file.status.GetStatusDetail(), Message("Error deleting file %s, errno = %d", zip, ENOENT));
}

}  // namespace
}  // namespace fennick
