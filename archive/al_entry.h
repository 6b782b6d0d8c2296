// ALEntry and ALEntryList: the members of one archive operation, each with
// its storage object and engines, and marks that say which take part.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "archive/al_engine.h"
#include "archive/al_monitor.h"
#include "archive/al_storage.h"
#include "archive/al_toolkit.h"

namespace fennick {

class ALEntryList;

class ALEntry {
 public:
  // A fresh entry is marked, with size and CRC unknown (-1).
  ALEntry(ALEntryList& list, std::unique_ptr<ALStorage> storageObject, std::unique_ptr<ALCompressor> compressor,
          std::unique_ptr<ALDecompressor> decompressor);

  // The name of the entry's storage object, or "" without one.
  const std::string& GetName() const;
  ALEntryList& GetList() const { return *list_; }

  std::unique_ptr<ALStorage> storage;
  std::unique_ptr<ALCompressor> compressor;
  std::unique_ptr<ALDecompressor> decompressor;
  long compressedSize = -1;
  // The running CRC register: the CRC of the ZIP records inverted.
  uint32_t crc32 = 0xFFFFFFFF;
  long compressedObjectPosition = -1;
  bool mark = true;
  bool encrypted = false;
  std::string comment;
  // Method and flag of the ZIP record the entry was read from, so that a
  // member copied as it is keeps them; -1 for an entry still to be packed.
  int method = -1;
  int flag = 0;

 private:
  ALEntryList* list_;
};

class ALEntryList {
 public:
  explicit ALEntryList(ALMonitor* monitor = nullptr, ALToolKit toolkit = ZipToolKit());
  ALEntryList(const ALEntryList&) = delete;
  ALEntryList& operator=(const ALEntryList&) = delete;

  ALEntry& Add(std::unique_ptr<ALStorage> storageObject, std::unique_ptr<ALCompressor> compressor,
               std::unique_ptr<ALDecompressor> decompressor);

  // File-name match of every entry's name with `pattern` ("*" any run, "?"
  // any one character), under each name's case rule. Return the count changed.
  int SetMarks(std::string_view pattern);
  int ClearMarks(std::string_view pattern);
  int ToggleMarks();
  // Unmarks each marked entry whose name a marked entry of `other` already
  // has (of this list itself: an earlier one), with status AL_DUPLICATE_ENTRY
  // and `message` in its storage. Returns the count unmarked.
  int UnmarkDuplicates(ALEntryList& other, const char* message);
  // Removes the unmarked entries; returns how many went.
  int DeleteUnmarked();

  size_t Size() const { return entries_.size(); }
  ALEntry& operator[](size_t index) { return *entries_[index]; }
  auto begin() { return entries_.begin(); }
  auto end() { return entries_.end(); }
  int MarkedCount() const;

  ALMonitor* monitor;
  ALToolKit toolkit;

 private:
  std::vector<std::unique_ptr<ALEntry>> entries_;
};

// The usual file-name match: "*" any run of characters, "?" any one.
bool ALWildCardMatch(std::string_view pattern, std::string_view name, bool ignoreCase);

}  // namespace fennick
