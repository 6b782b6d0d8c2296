// ZIP access: archives of the system's zip program, archives written here,
// the end record search, names, damaged members and malformed files.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>

#include "archive/al_pk_archive.h"
#include "archive/zip_member.h"
#include "core/byte_cursor.h"
#include "tests/test_support.h"

namespace fennick {
namespace {

using Bytes = std::vector<uint8_t>;

DesignPath Member(const std::string& zipFile, const std::string& name) {
  DesignPath path;
  path.SetZipFile(zipFile);
  path.SplitName(name);
  return path;
}

size_t Find(const Bytes& bytes, const std::string& text) {
  const auto at = std::search(bytes.begin(), bytes.end(), text.begin(), text.end());
  return at == bytes.end() ? std::string::npos : static_cast<size_t>(at - bytes.begin());
}

class ZipTest : public ::testing::Test {
 protected:
  test::ScratchFolder folder;

  // Runs a shell command in the scratch folder; the zip tools must be there.
  int Shell(const std::string& command) {
    return std::system(("cd '" + folder.Path().string() + "' && " + command + " >/dev/null 2>&1").c_str());
  }
  void SetUp() override {
    ASSERT_EQ(std::system("command -v zip >/dev/null && command -v unzip >/dev/null"), 0)
        << "zip and unzip must be installed (scripts/setup.sh)";
  }
  // One stored member "m.txt" with `text`, written by the system's zip.
  Bytes StoredZip(const std::string& text) {
    folder.Write("m.txt", test::ToBytes(text));
    EXPECT_EQ(Shell("zip -q -0 -X s.zip m.txt"), 0);
    return folder.Read("s.zip");
  }
  // Extracts every member of `zipFile` with ALPkArchive; the archive status.
  ALStatus ExtractAll(const std::string& zipFile, int& result) {
    ALPkArchive archive(zipFile);
    ALEntryList list;
    result = archive.ReadDirectory(list);
    if (result >= 0) result = archive.Extract(list);
    ALStatus status;
    if (archive.status.GetStatusCode() < 0) status.SetError(archive.status.GetStatusCode(), "%s", archive.status.GetStatusDetail());
    return status;
  }
};

TEST_F(ZipTest, SystemZipMembersReadStoredOrDeflatedAnyCase) {
  const Bytes text = test::ToBytes(std::string(3000, 'a') + "tail");
  folder.Write("rose.dst", text);
  std::filesystem::create_directory(folder.Path() / "sub");
  folder.Write("sub/Tulip.txt", test::ToBytes("tulip"));
  folder.Write("Case.txt", test::ToBytes("first"));  // names equal but for case give the first
  folder.Write("case.txt", test::ToBytes("second"));
  ASSERT_EQ(Shell("zip -q -9 d.zip rose.dst sub/Tulip.txt Case.txt case.txt && zip -q -0 s.zip rose.dst"), 0);
  const struct {
    const char* zip;
    const char* name;
    Bytes expected;
  } cases[] = {{"d.zip", "rose.dst", text}, {"d.zip", "ROSE.DST", text}, {"d.zip", "sub/tulip.TXT", test::ToBytes("tulip")},
               {"d.zip", "CASE.TXT", test::ToBytes("first")}, {"s.zip", "Rose.dst", text}};
  for (const auto& c : cases) {
    Bytes bytes;
    EXPECT_EQ(ReadZipMember(Member(folder.File(c.zip), c.name), bytes), 0) << c.zip << " " << c.name;
    EXPECT_EQ(bytes, c.expected) << c.name;
  }
  Bytes bytes;
  EXPECT_EQ(ReadZipMember(Member(folder.File("d.zip"), "tulip.txt"), bytes), 1) << "folders are part of the name";
  EXPECT_EQ(ReadZipMember(Member(folder.File("none.zip"), "rose.dst"), bytes), 1);
  EXPECT_EQ(ReadZipMember(DesignPath(folder.File("rose.dst")), bytes), 1) << "not a member path";
}

TEST_F(ZipTest, WrittenArchivesPassUnzipAndReadBack) {
  const std::string zip = folder.File("new.zip");
  const Bytes big(70000, 7), small = test::ToBytes("small"), replaced = test::ToBytes("replaced");
  ASSERT_EQ(WriteZipMember(Member(zip, "big.pes"), big), 0) << "a missing archive is created";
  ASSERT_EQ(WriteZipMember(Member(zip, "dir/small.dst"), small), 0);
  ASSERT_EQ(WriteZipMember(Member(zip, "BIG.pes"), replaced), 0) << "same name in other case replaces";
  EXPECT_EQ(Shell("unzip -t new.zip"), 0);
  Bytes bytes;
  ASSERT_EQ(ReadZipMember(Member(zip, "big.pes"), bytes), 0);
  EXPECT_EQ(bytes, replaced);
  ASSERT_EQ(ReadZipMember(Member(zip, "dir/small.dst"), bytes), 0);
  EXPECT_EQ(bytes, small);
  ALPkArchive archive(zip);
  ALEntryList list;
  EXPECT_EQ(archive.ReadDirectory(list), 2);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), 1) << "no temporary file is left";
}

TEST_F(ZipTest, AppendToASystemZipKeepsItValid) {
  // The system's records carry extra fields that the rewritten directory
  // drops, so the new end lies before the old one.
  for (char c = 'a'; c < 'k'; ++c) folder.Write(std::string(1, c) + ".txt", test::ToBytes("text"));
  ASSERT_EQ(Shell("zip -q z.zip ?.txt"), 0);
  ASSERT_EQ(WriteZipMember(Member(folder.File("z.zip"), "new.txt"), test::ToBytes("e")), 0);
  EXPECT_EQ(Shell("unzip -t z.zip"), 0);
  ALPkArchive archive(folder.File("z.zip"));
  ALEntryList entries;
  EXPECT_EQ(archive.ReadDirectory(entries), 11);
}

TEST_F(ZipTest, DeletingMembersKeepsTheOthersAndAUsersBakFile) {
  const std::string zip = folder.File("two.zip");
  ASSERT_EQ(WriteZipMember(Member(zip, "a.pes"), test::ToBytes("a")), 0);
  ASSERT_EQ(WriteZipMember(Member(zip, "b.pes"), test::ToBytes("b")), 0);
  folder.Write("two.bak", test::ToBytes("mine"));
  ASSERT_EQ(DeleteZipMember(Member(zip, "nothere.pes")), 0);
  Bytes bytes;
  EXPECT_EQ(ReadZipMember(Member(zip, "a.pes"), bytes), 0) << "a missing member leaves the archive";
  ASSERT_EQ(DeleteZipMember(Member(zip, "A.pes")), 0);
  EXPECT_EQ(ReadZipMember(Member(zip, "a.pes"), bytes), 1);
  EXPECT_EQ(ReadZipMember(Member(zip, "b.pes"), bytes), 0);
  // The last member gone, the end record alone is left.
  ASSERT_EQ(DeleteZipMember(Member(zip, "b.pes")), 0);
  Bytes empty = test::ToBytes("PK\x05\x06");
  empty.resize(22, 0);
  EXPECT_EQ(folder.Read("two.zip"), empty);
  EXPECT_EQ(folder.Read("two.bak"), test::ToBytes("mine"));
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), 2) << "no backup of its own is left";
}

TEST_F(ZipTest, EndRecordIsFoundWhereverTheCommentPutsIt) {
  const std::string zip = folder.File("c.zip");
  ASSERT_EQ(WriteZipMember(Member(zip, "m.txt"), test::ToBytes("member")), 0);
  const Bytes plain = folder.Read("c.zip");
  // The search reads 256-byte chunks from the end: a comment of 236 bytes puts
  // the signature across the first chunk edge (22 + 236 = 258 bytes from the end).
  for (size_t length : {0u, 233u, 234u, 235u, 236u, 237u, 500u, 65000u}) {
    Bytes bytes = plain;
    ByteWriter(bytes).PatchU16LE(bytes.size() - 2, static_cast<uint16_t>(length));
    bytes.resize(bytes.size() + length, 'c');
    folder.Write("c.zip", bytes);
    ALPkArchive archive(zip);
    ALEntryList list;
    EXPECT_EQ(archive.ReadDirectory(list), 1) << "comment " << length << ": " << archive.status.GetStatusDetail();
    EXPECT_EQ(archive.comment, std::string(length, 'c'));
  }
  // A record in the comment stands later than the real one, so it counts: it
  // names a directory at its own place, which is empty.
  Bytes bytes = plain;
  const uint32_t fake = static_cast<uint32_t>(bytes.size());
  ByteWriter(bytes).PatchU16LE(bytes.size() - 2, 22);
  bytes.resize(bytes.size() + 22, 0);
  std::copy_n("PK\x05\x06", 4, bytes.begin() + fake);
  ByteWriter(bytes).PatchU32LE(fake + 16, fake);
  folder.Write("c.zip", bytes);
  ALPkArchive archive(zip);
  ALEntryList list;
  EXPECT_EQ(archive.ReadDirectory(list), 0);
  // No record within the last 66000 bytes.
  bytes = plain;
  bytes.resize(bytes.size() + 66000, 'x');
  folder.Write("c.zip", bytes);
  ALPkArchive far(zip);
  EXPECT_EQ(far.ReadDirectory(list), AL_INVALID_ARCHIVE);
  EXPECT_EQ(std::string(far.status.GetStatusDetail()), "Can't locate end of central directory in ZIP file " + zip);
}

TEST_F(ZipTest, DamagedMembersReportTheirStatus) {
  const Bytes good = StoredZip("hello world");
  const size_t data = Find(good, "hello world");
  const size_t central = Find(good, "PK\x01\x02");
  ASSERT_NE(data, std::string::npos);
  ASSERT_NE(central, std::string::npos);
  const std::string zip = folder.File("s.zip");

  Bytes corrupt = good;
  corrupt[data] = 'j';
  folder.Write("s.zip", corrupt);
  int result = 0;
  ALStatus status = ExtractAll(zip, result);
  char expected[80];
  std::snprintf(expected, sizeof expected, "m.txt: CRC32 was supposed to be %08x, was %08x", Crc32(test::ToBytes("hello world")),
                Crc32(test::ToBytes("jello world")));
  EXPECT_EQ(result, AL_CRC_ERROR);
  EXPECT_EQ(std::string(status.GetStatusDetail()), expected);

  Bytes bzip = good;
  ByteWriter(bzip).PatchU16LE(8, 12);  // local header method
  ByteWriter(bzip).PatchU16LE(central + 10, 12);
  folder.Write("s.zip", bzip);
  status = ExtractAll(zip, result);
  EXPECT_EQ(std::string(status.GetStatusDetail()), "m.txt: Attempt to decompress without a decompressor");
  Bytes bytes;
  EXPECT_EQ(ReadZipMember(Member(zip, "m.txt"), bytes), 1);
}

TEST_F(ZipTest, CutArchivesGiveNoMember) {
  Bytes source(5000);
  std::mt19937 random(1234);
  for (uint8_t& byte : source) byte = static_cast<uint8_t>(random() % 7);
  folder.Write("x.pes", source);
  folder.Write("y.txt", test::ToBytes("y"));
  ASSERT_EQ(Shell("zip -q z.zip x.pes y.txt"), 0);
  const Bytes whole = folder.Read("z.zip");
  const std::string zip = folder.File("t.zip");
  Bytes bytes;
  // Any cut loses the end of the end record; only the last 22 lengths keep its
  // signature, so the rest are taken at a stride.
  for (size_t length = 0; length < whole.size(); length += length + 64 < whole.size() ? 13 : 1) {
    folder.Write("t.zip", Bytes(whole.begin(), whole.begin() + static_cast<long>(length)));
    EXPECT_EQ(ReadZipMember(Member(zip, "x.pes"), bytes), 1) << "cut at " << length;
  }
}

TEST_F(ZipTest, WildCardsMatchFileNames) {
  const struct {
    const char* pattern;
    const char* name;
    bool ignoreCase;
    bool match;
  } cases[] = {{"*.*", "rose.pes", false, true},   {"*.*", "rose", false, true},      {"*", "", false, true},
               {"rose.pes", "ROSE.PES", true, true}, {"rose.pes", "ROSE.PES", false, false},
               {"r?se.*", "rise.dst", false, true}, {"r?se", "rse", false, false},      {"*.pes", "a.pes.dst", false, false},
               {"a*b*c", "axxbyyc", false, true},   {"a*b*c", "axxbyy", false, false}};
  for (const auto& c : cases) {
    EXPECT_EQ(ALWildCardMatch(c.pattern, c.name, c.ignoreCase), c.match) << c.pattern << " / " << c.name;
  }
}

}  // namespace
}  // namespace fennick
