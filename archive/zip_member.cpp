#include "archive/zip_member.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

#include "archive/al_memory.h"
#include "archive/al_pk_archive.h"
#include "archive/al_pk_engine.h"
#include "core/text.h"

namespace fennick {
namespace {

constexpr int kLevel = 6, kWindowBits = 15, kMemLevel = 8;

// A new empty file beside `file`, so that renaming it over `file` is one step
// on one file system. Empty on failure.
std::string TemporaryBeside(const std::string& file) {
  std::string name = file + ".XXXXXX";
  const int fd = mkstemp(name.data());
  if (fd < 0) return {};
  close(fd);
  return name;
}

// The temporary archive takes the place of the old one, with its permissions.
int ReplaceWith(const std::string& temporary, const std::string& zipFile, ALStatus& status) {
  struct stat info {};
  chmod(temporary.c_str(), stat(zipFile.c_str(), &info) == 0 ? (info.st_mode & 07777) : 0644);
  if (rename(temporary.c_str(), zipFile.c_str()) != 0) {
    return status.SetError(AL_RENAME_ERROR, "Error renaming %s to %s.  errno = %d", temporary.c_str(), zipFile.c_str(),
                           errno);
  }
  return AL_SUCCESS;
}

int Finish(int result, const ALStatus& status, std::string* statusText) {
  if (statusText != nullptr) *statusText = status.GetStatusDetail();
  return result < 0 ? result : 0;
}

bool FileExists(const std::string& path) {
  struct stat info {};
  return stat(path.c_str(), &info) == 0;
}

// Marks only the first entry of `name`, whatever its case.
bool MarkMember(ALEntryList& list, const std::string& name) {
  list.ToggleMarks();
  for (auto& entry : list) {
    if (EqualsIgnoringCase(entry->GetName(), name)) {
      entry->mark = true;
      return true;
    }
  }
  return false;
}

}  // namespace

int ReadZipMember(const DesignPath& path, std::vector<uint8_t>& bytes) {
  if (path.GetZipFile().empty() || path.GetFileName().empty()) return 1;
  ALPkArchive archive(path.GetZipFile());
  ALEntryList list(nullptr, ZipToolKit(kLevel, kWindowBits, kMemLevel));
  if (archive.ReadDirectory(list) < 0) return 1;
  MarkMember(list, path.FullName());
  list.UnmarkDuplicates(list, "Duplicate entry");
  list.DeleteUnmarked();
  if (list.Size() == 0 || archive.Extract(list) < 0) return 1;
  auto* memory = dynamic_cast<ALMemory*>(list[0].storage.get());
  if (memory == nullptr) return 1;
  bytes = memory->ReleaseBytes();
  return 0;
}

int WriteZipMember(const DesignPath& path, std::span<const uint8_t> bytes, std::string* statusText) {
  ALStatus status;
  const std::string& zipFile = path.GetZipFile();
  const std::string member = path.FullName();
  if (zipFile.empty() || path.GetFileName().empty()) {
    return Finish(status.SetError(AL_ILLEGAL_PARAMETER, "No ZIP member in %s", path.ToString().c_str()), status,
                  statusText);
  }
  const std::string temporary = TemporaryBeside(zipFile);
  if (temporary.empty()) {
    return Finish(status.SetError(AL_CANT_OPEN_FILE, "Temporary file creation failure beside %s.  errno = %d",
                                  zipFile.c_str(), errno),
                  status, statusText);
  }
  ALPkArchive target(temporary);
  const bool exists = FileExists(zipFile);
  int result = AL_SUCCESS;
  if (exists) {
    ALPkArchive source(zipFile);
    ALEntryList present(nullptr, ZipToolKit(kLevel, kWindowBits, kMemLevel));
    result = source.ReadDirectory(present);
    if (result >= 0) {
      // Every member but the one replaced goes over as it is.
      for (auto& entry : present) entry->mark = !EqualsIgnoringCase(entry->GetName(), member);
      result = source.CopyEntries(present, target);
    }
    if (result < 0) status.SetError(result, "%s", source.status.GetStatusCode() < 0 ? source.status.GetStatusDetail()
                                                                                    : target.status.GetStatusDetail());
  }
  if (result >= 0) {
    std::vector<uint8_t> copy(bytes.begin(), bytes.end());
    auto memory = std::make_unique<ALMemory>(member, std::span<uint8_t>(copy), AL_IGNORE_CASE);
    memory->timeDate = ALTimeDate::FromTime(std::time(nullptr));
    ALEntryList list(nullptr, ZipToolKit(kLevel, kWindowBits, kMemLevel));
    list.Add(std::move(memory), std::make_unique<ALPkCompressor>(kLevel, kWindowBits, kMemLevel),
             std::make_unique<ALPkDecompressor>(kWindowBits));
    result = exists ? target.Append(list) : target.Create(list);
    if (result < 0) status.SetError(result, "%s", target.status.GetStatusDetail());
  }
  if (result >= 0) result = ReplaceWith(temporary, zipFile, status);
  if (result < 0) unlink(temporary.c_str());
  return Finish(result, status, statusText);
}

int DeleteZipMember(const DesignPath& path, std::string* statusText) {
  ALStatus status;
  const std::string& zipFile = path.GetZipFile();
  ALPkArchive archive(zipFile);
  ALEntryList list(nullptr, ZipToolKit(kLevel, kWindowBits, kMemLevel));
  if (zipFile.empty() || archive.ReadDirectory(list) < 0) {
    status.SetError(zipFile.empty() ? AL_ILLEGAL_PARAMETER : archive.status.GetStatusCode(), "%s",
                    archive.status.GetStatusDetail());
    return Finish(status.GetStatusCode(), status, statusText);
  }
  if (!MarkMember(list, path.FullName())) return Finish(AL_SUCCESS, status, statusText);
  const std::string temporary = TemporaryBeside(zipFile);
  if (temporary.empty()) {
    return Finish(status.SetError(AL_CANT_OPEN_FILE, "Temporary file creation failure beside %s.  errno = %d",
                                  zipFile.c_str(), errno),
                  status, statusText);
  }
  ALPkArchive destination(temporary);
  const std::string backup = archive.GetStorageObject().name.WithExtension(".bak");
  int result;
  if (!FileExists(backup)) {
    // The rewrite leaves the old archive under its ".bak" name, removed here.
    struct stat info {};
    const bool known = stat(zipFile.c_str(), &info) == 0;
    result = archive.Delete(list, destination);
    if (result >= 0) {
      if (known) chmod(zipFile.c_str(), info.st_mode & 07777);  // the rewrite keeps the permissions
      unlink(backup.c_str());
    }
  } else {
    // A ".bak" file of the user's own is never replaced: the new archive
    // goes over the old one in a single rename instead.
    list.ToggleMarks();
    result = archive.CopyEntries(list, destination);
    if (result >= 0) result = ReplaceWith(temporary, zipFile, status);
  }
  if (result < 0) {
    unlink(temporary.c_str());
    if (status.GetStatusCode() >= 0) {
      status.SetError(result, "%s", archive.status.GetStatusCode() < 0 ? archive.status.GetStatusDetail()
                                                                        : destination.status.GetStatusDetail());
    }
  }
  return Finish(result, status, statusText);
}

}  // namespace fennick
