// ALArchive: the operations shared by archive kinds (create, append, extract,
// delete) over a storage object, with the hooks a kind fills in for its records.
#pragma once

#include <memory>
#include <string>

#include "archive/al_entry.h"
#include "archive/al_status.h"
#include "archive/al_storage.h"

namespace fennick {

class ALArchive {
 public:
  virtual ~ALArchive() = default;
  ALArchive(const ALArchive&) = delete;
  ALArchive& operator=(const ALArchive&) = delete;

  // Fills `list` from the archive's directory: the entry count, or a
  // negative status.
  virtual int ReadDirectory(ALEntryList& list) = 0;
  // Writes the marked entries into a new archive; the count, or the status.
  int Create(ALEntryList& list);
  // Adds the marked entries to the archive; the count added, or the status.
  int Append(ALEntryList& list);
  // Unpacks the marked entries into their storage objects; the count, or the
  // status of the first bad entry ("name: detail").
  int Extract(ALEntryList& list);
  // Copies the archive without the marked entries to `destination`, renames
  // the archive to its ".bak" name and `destination` to the archive's name.
  // The count deleted, or the failure.
  int Delete(ALEntryList& list, ALArchive& destination);
  // Writes the marked entries, packed bytes as they are, into the new
  // archive `destination`; the count, or the failure.
  int CopyEntries(ALEntryList& list, ALArchive& destination);

  ALStorage& GetStorageObject() { return *storage_; }

  ALStatus status;
  std::string comment;
  int version = 0;
  long directoryOffset = 0;
  // Names are stored without their folders when set.
  bool stripPathOnInsert = false;

 protected:
  explicit ALArchive(std::unique_ptr<ALStorage> storage) : storage_(std::move(storage)) {}

  // Hooks of the archive kinds; the failures go into `status` or the entry's
  // storage status.
  virtual void PreCreate() {}
  virtual void PostCreate() {}
  virtual void PreCompress(ALEntry&) {}
  virtual void PostCompress(ALEntry&) {}
  virtual void PreDecompress(ALEntry&) {}
  virtual void PostDecompress(ALEntry&) {}
  virtual void PreWriteDir() {}
  virtual void WriteDirEntry(ALEntry&) {}
  virtual void PostWriteDir() {}
  virtual void PreCopyInput(ALEntry&) {}
  virtual void PostCopyInput(ALEntry&) {}

  // Status of the archive's storage taken into the archive's, when worse.
  int TakeStorageStatus();

  std::unique_ptr<ALStorage> storage_;
  int entriesWritten_ = 0;

 private:
  int WriteArchive(ALEntryList& list, ALEntryList* present, const char* duplicateMessage);
  void CompressEntry(ALEntry& entry);
  void WriteDirectory(ALEntryList* present, ALEntryList& list);
  // The first failed entry of `list` raised to the archive's status.
  void RaiseEntryStatus(ALEntryList& list);
  // Cuts the file after the last record, so that no old bytes trail it.
  void TruncateFile(long end);
};

}  // namespace fennick
