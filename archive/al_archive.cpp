#include "archive/al_archive.h"

#include <unistd.h>

namespace fennick {
namespace {

void TakeInto(ALStatus& into, const ALStatus& from) {
  if (into.GetStatusCode() >= 0 && from.GetStatusCode() < 0) into.SetError(from.GetStatusCode(), "%s", from.GetStatusDetail());
}

void Announce(ALEntryList& list, const ALEntry& entry) {
  if (list.monitor != nullptr) list.monitor->EntryName(entry.GetName());
}

}  // namespace

int ALArchive::TakeStorageStatus() {
  TakeInto(status, storage_->status);
  return status.GetStatusCode();
}

void ALArchive::RaiseEntryStatus(ALEntryList& list) {
  if (status.GetStatusCode() < 0) return;
  for (auto& entry : list) {
    if (entry->storage && entry->storage->status.GetStatusCode() < 0) {
      status.SetError(entry->storage->status.GetStatusCode(), "%s: %s", entry->GetName().c_str(),
                      entry->storage->status.GetStatusDetail());
      return;
    }
  }
}

void ALArchive::TruncateFile(long end) {
  if (storage_->GetStorageType() == AL_FILE_OBJECT && status.GetStatusCode() >= 0 &&
      truncate(storage_->GetName().c_str(), end) != 0) {
    status.SetError(AL_WRITE_ERROR, "Error cutting %s to %ld bytes", storage_->GetName().c_str(), end);
  }
}

void ALArchive::CompressEntry(ALEntry& entry) {
  ALStorage& input = *entry.storage;
  const long start = storage_->Tell();
  PreCompress(entry);
  input.SetCrcEnabled(true);
  if (input.Open() >= 0) {
    if (entry.compressor->Compress(input, *storage_) < 0) TakeInto(input.status, entry.compressor->status);
    input.Close();
  }
  entry.crc32 = input.GetCrc32();
  if (input.status.GetStatusCode() >= 0 && TakeStorageStatus() >= 0) PostCompress(entry);
  if (input.status.GetStatusCode() < 0 && TakeStorageStatus() >= 0) {
    entry.mark = false;  // left out of the directory; the next entry writes over its bytes
    storage_->Seek(start);
  }
}

void ALArchive::WriteDirectory(ALEntryList* present, ALEntryList& list) {
  directoryOffset = storage_->Tell();
  entriesWritten_ = 0;
  if (TakeStorageStatus() < 0) return;
  PreWriteDir();
  for (ALEntryList* entries : {present, &list}) {
    if (entries == nullptr) continue;
    for (auto& entry : *entries) {
      if (!entry->mark) continue;
      WriteDirEntry(*entry);
      ++entriesWritten_;
    }
  }
  PostWriteDir();
}

int ALArchive::WriteArchive(ALEntryList& list, ALEntryList* present, const char* duplicateMessage) {
  list.UnmarkDuplicates(list, duplicateMessage);
  if (present != nullptr) {
    list.UnmarkDuplicates(*present, duplicateMessage);
    if (storage_->GetStorageType() == AL_FILE_OBJECT) {
      for (auto& entry : list) {
        if (entry->storage && entry->storage->name.Matches(storage_->GetName())) entry->mark = false;
      }
    }
    if (storage_->Open() < 0 || storage_->Seek(directoryOffset) < 0) {
      TakeStorageStatus();
      storage_->Close();
      return status.GetStatusCode();
    }
  } else {
    if (storage_->Create() < 0) return TakeStorageStatus();
    PreCreate();
  }
  int added = 0;
  for (auto& entry : list) {
    if (!entry->mark || status.GetStatusCode() < 0) continue;
    if (!entry->storage) {
      status.SetError(AL_CANT_CREATE_STORAGE_OBJECT, "No storage object for compression engine");
      continue;
    }
    if (!entry->compressor) {
      entry->storage->status.SetError(AL_CANT_CREATE_ENGINE, "No compression engine for storage object");
      entry->mark = false;
      continue;
    }
    entry->method = -1;
    CompressEntry(*entry);
    if (entry->mark) ++added;
    Announce(list, *entry);
  }
  if (status.GetStatusCode() >= 0) WriteDirectory(present, list);
  if (present == nullptr) PostCreate();
  const long end = storage_->Tell();
  storage_->Close();
  TakeStorageStatus();
  TruncateFile(end);
  RaiseEntryStatus(list);
  return status.GetStatusCode() < 0 ? status.GetStatusCode() : added;
}

int ALArchive::Create(ALEntryList& list) {
  if (list.monitor != nullptr) list.monitor->JobStart(-1);
  if (status.GetStatusCode() < 0) return status.GetStatusCode();
  const int result = WriteArchive(list, nullptr, "Duplicate entry in list passed to Create()");
  if (list.monitor != nullptr) list.monitor->JobEnd();
  return result;
}

int ALArchive::Append(ALEntryList& list) {
  if (status.GetStatusCode() < 0) return status.GetStatusCode();
  ALEntryList present(list.monitor, list.toolkit);
  if (ReadDirectory(present) < 0) return status.GetStatusCode();
  if (list.monitor != nullptr) list.monitor->JobStart(-1);
  const int result = WriteArchive(list, &present, "Duplicate entry in list passed to Append()");
  if (list.monitor != nullptr) list.monitor->JobEnd();
  return result;
}

int ALArchive::Extract(ALEntryList& list) {
  if (list.monitor != nullptr) list.monitor->JobStart(-1);
  if (status.GetStatusCode() < 0) return status.GetStatusCode();
  if (storage_->Open() < 0) return TakeStorageStatus();
  int count = 0;
  for (auto& pointer : list) {
    ALEntry& entry = *pointer;
    if (!entry.mark || !entry.storage) continue;
    ALStorage& output = *entry.storage;
    Announce(list, entry);
    if (!entry.decompressor) {
      output.status.SetError(AL_UNKNOWN_COMPRESSION_TYPE, "Attempt to decompress without a decompressor");
      continue;
    }
    if (entry.encrypted) {
      // There is no crypto engine in this system.
      output.status.SetError(AL_NEED_CRYPTO_ENGINE, "Attempt to extract an object without decryption engine");
      continue;
    }
    if (storage_->Seek(entry.compressedObjectPosition) < 0) break;
    PreDecompress(entry);
    if (output.status.GetStatusCode() < 0) continue;
    if (storage_->status.GetStatusCode() < 0) break;
    const long expectedSize = output.GetSize();
    output.SetCrcEnabled(true);
    if (output.Create() < 0) continue;
    entry.decompressor->outputLimit = expectedSize;
    if (entry.decompressor->Decompress(*storage_, output, entry.compressedSize) < 0) {
      TakeInto(output.status, entry.decompressor->status);
    }
    output.Close();
    if (output.status.GetStatusCode() >= 0 && output.GetCrc32() != entry.crc32) {
      output.status.SetError(AL_CRC_ERROR, "CRC32 was supposed to be %08lx, was %08lx",
                             static_cast<unsigned long>(~entry.crc32), static_cast<unsigned long>(~output.GetCrc32()));
    }
    PostDecompress(entry);
    if (output.status.GetStatusCode() >= 0) ++count;
    if (storage_->status.GetStatusCode() < 0) break;
  }
  storage_->Close();
  TakeStorageStatus();
  RaiseEntryStatus(list);
  if (list.monitor != nullptr) list.monitor->JobEnd();
  return status.GetStatusCode() < 0 ? status.GetStatusCode() : count;
}

int ALArchive::CopyEntries(ALEntryList& list, ALArchive& destination) {
  if (status.GetStatusCode() < 0) return status.GetStatusCode();
  if (destination.status.GetStatusCode() < 0) return destination.status.GetStatusCode();
  if (storage_->Open() < 0) return TakeStorageStatus();
  ALStorage& output = *destination.storage_;
  if (output.Create() < 0) {
    storage_->Close();
    return destination.TakeStorageStatus();
  }
  destination.PreCreate();
  int copied = 0;
  for (auto& pointer : list) {
    ALEntry& entry = *pointer;
    if (!entry.mark || !entry.storage) continue;
    if (storage_->Seek(entry.compressedObjectPosition) < 0) break;
    PreCopyInput(entry);
    if (TakeStorageStatus() < 0 || entry.storage->status.GetStatusCode() < 0) break;
    destination.PreCompress(entry);
    if (ALCopyBytes(*storage_, output, entry.compressedSize, status) < 0) break;
    destination.PostCompress(entry);
    PostCopyInput(entry);
    ++copied;
    Announce(list, entry);
  }
  RaiseEntryStatus(list);
  if (status.GetStatusCode() < 0 && destination.status.GetStatusCode() >= 0) {
    destination.status.SetError(status.GetStatusCode(), "%s", status.GetStatusDetail());
  }
  if (destination.TakeStorageStatus() >= 0) destination.WriteDirectory(nullptr, list);
  destination.PostCreate();
  storage_->Close();
  output.Close();
  TakeStorageStatus();
  if (destination.TakeStorageStatus() < 0) return destination.status.GetStatusCode();
  return status.GetStatusCode() < 0 ? status.GetStatusCode() : copied;
}

int ALArchive::Delete(ALEntryList& list, ALArchive& destination) {
  if (status.GetStatusCode() < 0) return status.GetStatusCode();
  const int deleted = list.MarkedCount();
  list.ToggleMarks();
  const int copied = CopyEntries(list, destination);
  list.ToggleMarks();
  if (copied < 0) return copied;
  const std::string archiveName = storage_->GetName();
  if (storage_->RenameToBackup() < 0) return TakeStorageStatus();
  if (destination.storage_->Rename(archiveName) < 0) {
    storage_->UnRename();  // the archive goes back under its own name
    destination.TakeStorageStatus();
    return destination.status.GetStatusCode();
  }
  return deleted;
}

}  // namespace fennick
