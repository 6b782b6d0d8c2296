// A ZIP file on disk: its directory read, every member extracted into memory,
// and the first member once more through the one-call path.
#include <cstdint>

#include "archive/al_pk_archive.h"
#include "archive/zip_member.h"
#include "fuzz/fuzz_support.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fennick::fuzz::Setup();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace fennick;
  const std::string zipFile = (fuzz::ScratchFolder() / "input.zip").string();
  fuzz::WriteFile(zipFile, {data, size});

  std::string firstName;
  {
    ALPkArchive archive(zipFile);
    ALEntryList list;
    if (archive.ReadDirectory(list) < 0 || list.Size() == 0) return 0;
    firstName = list[0].GetName();
    archive.Extract(list);
  }
  if (firstName.empty()) return 0;
  DesignPath path;
  path.SetZipFile(zipFile);
  path.SplitName(firstName);
  std::vector<uint8_t> bytes;
  ReadZipMember(path, bytes);
  return 0;
}
