// ALPkArchive: ZIP files in their plain single-disk form, members stored or
// deflated.
#pragma once

#include <cstdint>
#include <string>

#include "archive/al_archive.h"

namespace fennick {

class ALPkArchive : public ALArchive {
 public:
  // The archive owns an ALFile on `fileName` with a buffer of 4096 bytes.
  explicit ALPkArchive(const std::string& fileName);

  int ReadDirectory(ALEntryList& list) override;

  // The name as it is written into the records, from a storage's name.
  static std::string StoredName(const std::string& name, bool stripPath);

 protected:
  void PreCompress(ALEntry& entry) override;
  void PostCompress(ALEntry& entry) override;
  void PreDecompress(ALEntry& entry) override;
  void PreCopyInput(ALEntry& entry) override;
  void PreWriteDir() override;
  void WriteDirEntry(ALEntry& entry) override;
  void PostWriteDir() override;

 private:
  // The position of the end record, or -1 with the status set.
  long FindEndRecord();
  int ReadEndRecord();
  // Moves past the local header at the current position.
  void SkipLocalHeader(ALEntry& entry);
  void WriteRecordHead(ALEntry& entry);

  long endRecordPosition_ = -1;
  uint16_t thisDisk_ = 0;
  uint16_t directoryDisk_ = 0;
  uint16_t entriesHere_ = 0;
  uint16_t entriesTotal_ = 0;
  uint32_t directorySize_ = 0;
  long directoryStart_ = 0;
};

}  // namespace fennick
