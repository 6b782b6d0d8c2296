#include "archive/al_pk_archive.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <vector>

#include "archive/al_file.h"
#include "archive/al_toolkit.h"

namespace fennick {
namespace {

constexpr long kEndSearchSpan = 66000;
constexpr long kEndSearchChunk = 256;
constexpr long kLocalHeaderSize = 30;
constexpr uint16_t kVersion = 20;
constexpr std::array<uint8_t, 4> kEndSignature = {'P', 'K', 5, 6};

// Bit of the ZIP external attributes (the low byte is the DOS one) for each
// flag of ALFileAttributes.
uint32_t ExternalAttributes(const ALFileAttributes& attributes) {
  return (attributes.readOnly ? 1u : 0u) | (attributes.hidden ? 2u : 0u) | (attributes.system ? 4u : 0u) |
         (attributes.label ? 8u : 0u) | (attributes.directory ? 16u : 0u) | (attributes.archive ? 32u : 0u);
}

ALFileAttributes FileAttributes(uint32_t external) {
  ALFileAttributes attributes;
  attributes.readOnly = (external & 1) != 0;
  attributes.hidden = (external & 2) != 0;
  attributes.system = (external & 4) != 0;
  attributes.label = (external & 8) != 0;
  attributes.directory = (external & 16) != 0;
  attributes.archive = (external & 32) != 0;
  return attributes;
}

// DOS stamps count years from 1980 and seconds in pairs.
uint16_t DosTime(const ALTimeDate& stamp) {
  return static_cast<uint16_t>((std::clamp(stamp.hour, 0, 23) << 11) | (std::clamp(stamp.minute, 0, 59) << 5) |
                               (std::clamp(stamp.second, 0, 59) / 2));
}

uint16_t DosDate(const ALTimeDate& stamp) {
  return static_cast<uint16_t>((std::clamp(stamp.year - 80, 0, 127) << 9) | (std::clamp(stamp.month + 1, 1, 12) << 5) |
                               std::clamp(stamp.day, 1, 31));
}

ALTimeDate FromDos(uint16_t date, uint16_t time) {
  ALTimeDate stamp;
  stamp.year = (date >> 9) + 80;
  stamp.month = ((date >> 5) & 15) - 1;
  stamp.day = date & 31;
  stamp.hour = time >> 11;
  stamp.minute = (time >> 5) & 63;
  stamp.second = (time & 31) * 2;
  return stamp;
}

// Exactly `length` bytes into `text`; false on a short read.
bool ReadText(ALStorage& storage, size_t length, std::string& text) {
  text.resize(length);
  std::span<uint8_t> bytes(reinterpret_cast<uint8_t*>(text.data()), length);
  return storage.ReadBuffer(bytes) == length;
}

void WriteText(ALStorage& storage, const std::string& text) {
  storage.WriteBuffer(std::span(reinterpret_cast<const uint8_t*>(text.data()), text.size()));
}

// Method and flag of a record: as read for a member copied unchanged,
// otherwise from the engine.
void MethodAndFlag(const ALEntry& entry, uint16_t& method, uint16_t& flag) {
  if (entry.method >= 0) {
    method = static_cast<uint16_t>(entry.method);
    flag = static_cast<uint16_t>(entry.flag);
    return;
  }
  flag = 0;
  const int type = entry.compressor ? entry.compressor->GetType() : -1;
  if (type == AL_COMPRESSION_DEFLATE) {
    method = 8;
    const int option = entry.compressor->GetOption();
    flag = option == 1 ? 2 : option == 2 ? 4 : option == 3 ? 6 : 0;
  } else if (type == AL_COMPRESSION_COPY) {
    method = 0;
  } else {
    method = 0xFFFF;
  }
  if (entry.encrypted) flag |= 9;
}

}  // namespace

ALPkArchive::ALPkArchive(const std::string& fileName)
    : ALArchive(std::make_unique<ALFile>(fileName, 4096, AL_EXACT_CASE)) {
  version = 32;
}

std::string ALPkArchive::StoredName(const std::string& name, bool stripPath) {
  std::string stored = name;
  if (stripPath) {
    size_t cut = stored.find_last_of('\\');
    if (cut == std::string::npos) cut = stored.find_last_of('/');
    if (cut == std::string::npos) cut = stored.find_last_of(':');
    if (cut != std::string::npos) stored.erase(0, cut + 1);
  }
  std::replace(stored.begin(), stored.end(), '\\', '/');
  if (stored.size() >= 4 && stored.compare(0, 2, "//") == 0) {
    // UNC: //server/share/
    size_t slash = stored.find('/', 2);
    if (slash != std::string::npos) slash = stored.find('/', slash + 1);
    stored.erase(0, slash == std::string::npos ? stored.size() : slash + 1);
  }
  if (stored.size() >= 2 && stored[1] == ':' && std::isalpha(static_cast<unsigned char>(stored[0]))) stored.erase(0, 2);
  if (!stored.empty() && stored[0] == '/') stored.erase(0, 1);
  return stored;
}

long ALPkArchive::FindEndRecord() {
  const long size = storage_->GetSize();
  long span = std::min(size, kEndSearchSpan);
  long chunkEnd = size;
  std::vector<uint8_t> window(kEndSearchChunk + 4);
  size_t kept = 0;  // first bytes of the previous chunk, behind the new one
  while (span > 0) {
    const long length = std::min(kEndSearchChunk, span);
    const long start = chunkEnd - length;
    std::copy_n(window.begin(), kept, window.begin() + length);
    if (storage_->Seek(start) < 0 ||
        storage_->ReadBuffer(std::span(window).first(static_cast<size_t>(length))) != static_cast<size_t>(length)) {
      break;
    }
    const size_t filled = static_cast<size_t>(length) + kept;
    for (size_t i = filled >= 4 ? filled - 4 + 1 : 0; i-- > 0;) {
      if (std::equal(kEndSignature.begin(), kEndSignature.end(), window.begin() + static_cast<long>(i))) {
        return start + static_cast<long>(i);
      }
    }
    kept = std::min<size_t>(4, static_cast<size_t>(length));
    span -= length;
    chunkEnd = start;
  }
  if (TakeStorageStatus() >= 0) {
    status.SetError(AL_INVALID_ARCHIVE, "Can't locate end of central directory in ZIP file %s", storage_->name.c_str());
  }
  return -1;
}

int ALPkArchive::ReadEndRecord() {
  endRecordPosition_ = FindEndRecord();
  if (endRecordPosition_ < 0) return status.GetStatusCode();
  uint16_t commentLength = 0;
  uint32_t offset = 0;
  storage_->Seek(endRecordPosition_ + 4);
  const bool read = storage_->ReadUint16(thisDisk_) >= 0 && storage_->ReadUint16(directoryDisk_) >= 0 &&
                    storage_->ReadUint16(entriesHere_) >= 0 && storage_->ReadUint16(entriesTotal_) >= 0 &&
                    storage_->ReadUint32(directorySize_) >= 0 && storage_->ReadUint32(offset) >= 0 &&
                    storage_->ReadUint16(commentLength) >= 0 && ReadText(*storage_, commentLength, comment);
  if (!read) {
    if (TakeStorageStatus() < 0) return status.GetStatusCode();
    return status.SetError(AL_INVALID_ARCHIVE, "Can't locate end of central directory in ZIP file %s",
                           storage_->name.c_str());
  }
  directoryOffset = static_cast<long>(offset);
  return AL_SUCCESS;
}

int ALPkArchive::ReadDirectory(ALEntryList& list) {
  if (list.monitor != nullptr) list.monitor->JobStart(-1);
  if (status.GetStatusCode() < 0) return status.GetStatusCode();
  if (storage_->Open() < 0) return TakeStorageStatus();
  int count = 0;
  const auto badRecord = [this] {
    if (TakeStorageStatus() >= 0) {
      status.SetError(AL_INVALID_ARCHIVE, "Bad record in central directory of ZIP file %s", storage_->name.c_str());
    }
  };
  if (ReadEndRecord() >= 0 && storage_->Seek(directoryOffset) >= 0) {
    // Every record takes at least 46 bytes of the file, so the loop ends at
    // the file's end whatever the counts say.
    for (;;) {
      std::array<uint8_t, 4> signature{};
      if (storage_->ReadBuffer(signature) != signature.size()) {
        badRecord();  // a directory cut short is no directory
        break;
      }
      if (signature[0] != 'P' || signature[1] != 'K') {
        badRecord();
        break;
      }
      if (signature[2] == 5 && signature[3] == 6) break;
      if (signature[2] != 1 || signature[3] != 2) {
        badRecord();
        break;
      }
      uint32_t skipped = 0, crc = 0, compressedSize = 0, size = 0, external = 0, offset = 0;
      uint16_t flag = 0, method = 0, time = 0, date = 0, nameLength = 0, extraLength = 0, commentLength = 0;
      uint16_t disk = 0, internal = 0;
      if (storage_->ReadUint32(skipped) < 0 || storage_->ReadUint16(flag) < 0 || storage_->ReadUint16(method) < 0) {
        badRecord();
        break;
      }
      const bool encrypted = (flag & 1) != 0;
      const int recordFlag = flag;
      flag = static_cast<uint16_t>(flag & ~1u);
      const int recordMethod = method;
      int number = method == 8 ? 8 + ((flag >> 1) & 3) : method;
      number += 100;
      std::unique_ptr<ALStorage> object = list.toolkit.CreateStorageObject("", AL_UNDEFINED);
      if (!object) {
        status.SetError(AL_CANT_CREATE_STORAGE_OBJECT, "Failure creating storage object in ZIP file %s",
                        storage_->name.c_str());
        break;
      }
      ALEntry& entry =
          list.Add(std::move(object), list.toolkit.CreateCompressor(number), list.toolkit.CreateDecompressor(number));
      entry.encrypted = encrypted;
      entry.method = recordMethod;
      entry.flag = recordFlag;
      const bool read = storage_->ReadUint16(time) >= 0 && storage_->ReadUint16(date) >= 0 &&
                        storage_->ReadUint32(crc) >= 0 && storage_->ReadUint32(compressedSize) >= 0 &&
                        storage_->ReadUint32(size) >= 0 && storage_->ReadUint16(nameLength) >= 0 &&
                        storage_->ReadUint16(extraLength) >= 0 && storage_->ReadUint16(commentLength) >= 0 &&
                        storage_->ReadUint16(disk) >= 0 && storage_->ReadUint16(internal) >= 0 &&
                        storage_->ReadUint32(external) >= 0 && storage_->ReadUint32(offset) >= 0;
      std::string name;
      if (!read || !ReadText(*storage_, nameLength, name) || storage_->Seek(storage_->Tell() + extraLength) < 0 ||
          !ReadText(*storage_, commentLength, entry.comment)) {
        badRecord();
        break;
      }
      entry.crc32 = ~crc;
      entry.compressedSize = static_cast<long>(compressedSize);
      entry.compressedObjectPosition = static_cast<long>(offset);
      entry.storage->SetSize(static_cast<long>(size));
      entry.storage->timeDate = FromDos(date, time);
      entry.storage->attributes = FileAttributes(external);
      entry.storage->name.Set(name);
      if (entry.storage->status.GetStatusCode() < 0) break;
      ++count;
      if (list.monitor != nullptr) list.monitor->EntryName(name);
    }
  }
  storage_->Close();
  storage_->ClearError();  // a failure is in the archive's status now
  if (list.monitor != nullptr) list.monitor->JobEnd();
  return status.GetStatusCode() < 0 ? status.GetStatusCode() : count;
}

void ALPkArchive::SkipLocalHeader(ALEntry& entry) {
  const long start = storage_->Tell();
  std::array<uint8_t, 4> signature{};
  uint16_t nameLength = 0, extraLength = 0;
  const bool read = storage_->ReadBuffer(signature) == signature.size() && storage_->Seek(start + 26) >= 0 &&
                    storage_->ReadUint16(nameLength) >= 0 && storage_->ReadUint16(extraLength) >= 0;
  if (!read || signature != std::array<uint8_t, 4>{'P', 'K', 3, 4}) {
    if (TakeStorageStatus() >= 0) {
      entry.storage->status.SetError(AL_INVALID_ARCHIVE, "Bad local header in ZIP file %s", storage_->name.c_str());
    }
    return;
  }
  storage_->Seek(start + kLocalHeaderSize + nameLength + extraLength);
}

void ALPkArchive::PreDecompress(ALEntry& entry) { SkipLocalHeader(entry); }
void ALPkArchive::PreCopyInput(ALEntry& entry) { SkipLocalHeader(entry); }

void ALPkArchive::PreCompress(ALEntry& entry) {
  entry.compressedObjectPosition = storage_->Tell();
  storage_->Seek(entry.compressedObjectPosition + kLocalHeaderSize +
                 static_cast<long>(StoredName(entry.GetName(), stripPathOnInsert).size()));
}

void ALPkArchive::WriteRecordHead(ALEntry& entry) {
  uint16_t method = 0, flag = 0;
  MethodAndFlag(entry, method, flag);
  storage_->WriteUint16(flag);
  storage_->WriteUint16(method);
  storage_->WriteUint16(DosTime(entry.storage->timeDate));
  storage_->WriteUint16(DosDate(entry.storage->timeDate));
  storage_->WriteUint32(~entry.crc32);
  storage_->WriteUint32(static_cast<uint32_t>(entry.compressedSize));
  storage_->WriteUint32(static_cast<uint32_t>(entry.storage->GetSize()));
}

void ALPkArchive::PostCompress(ALEntry& entry) {
  const std::string name = StoredName(entry.GetName(), stripPathOnInsert);
  const long end = storage_->Tell();
  entry.compressedSize = end - entry.compressedObjectPosition - kLocalHeaderSize - static_cast<long>(name.size());
  storage_->Seek(entry.compressedObjectPosition);
  WriteText(*storage_, "PK\x03\x04");
  storage_->WriteUint16(kVersion);
  WriteRecordHead(entry);
  storage_->WriteUint16(static_cast<uint16_t>(name.size()));
  storage_->WriteUint16(0);
  WriteText(*storage_, name);
  storage_->Seek(end);
}

void ALPkArchive::PreWriteDir() { directoryStart_ = storage_->Tell(); }

void ALPkArchive::WriteDirEntry(ALEntry& entry) {
  const std::string name = StoredName(entry.GetName(), stripPathOnInsert);
  WriteText(*storage_, "PK\x01\x02");
  storage_->WriteUint16(kVersion);
  storage_->WriteUint16(kVersion);
  WriteRecordHead(entry);
  storage_->WriteUint16(static_cast<uint16_t>(name.size()));
  storage_->WriteUint16(0);
  storage_->WriteUint16(static_cast<uint16_t>(entry.comment.size()));
  storage_->WriteUint16(0);
  storage_->WriteUint16(0);
  storage_->WriteUint32(ExternalAttributes(entry.storage->attributes));
  storage_->WriteUint32(static_cast<uint32_t>(entry.compressedObjectPosition));
  WriteText(*storage_, name);
  WriteText(*storage_, entry.comment);
}

void ALPkArchive::PostWriteDir() {
  const long directorySize = storage_->Tell() - directoryStart_;
  WriteText(*storage_, "PK\x05\x06");
  storage_->WriteUint16(0);
  storage_->WriteUint16(0);
  storage_->WriteUint16(static_cast<uint16_t>(entriesWritten_));
  storage_->WriteUint16(static_cast<uint16_t>(entriesWritten_));
  storage_->WriteUint32(static_cast<uint32_t>(directorySize));
  storage_->WriteUint32(static_cast<uint32_t>(directoryStart_));
  storage_->WriteUint16(static_cast<uint16_t>(comment.size()));
  WriteText(*storage_, comment);
}

}  // namespace fennick
