// fennick zip: list, add and delete the members of a ZIP file.
#include <cstdio>

#include "archive/al_pk_archive.h"
#include "archive/zip_member.h"
#include "cli/commands.h"
#include "core/file_io.h"

namespace fennick::cli {
namespace {

DesignPath MemberPath(const std::string& zipFile, const std::string& member) {
  DesignPath path;
  path.SetZipFile(zipFile);
  path.SplitName(member);
  return path;
}

int List(const std::string& zipFile) {
  ALPkArchive archive(zipFile);
  ALEntryList list;
  if (archive.ReadDirectory(list) < 0) {
    ReportError(zipFile, archive.status.GetStatusDetail());
    return 1;
  }
  std::printf("%10s %10s %-8s %-16s  %s\n", "size", "packed", "method", "date", "name");
  for (auto& entry : list) {
    const ALTimeDate& stamp = entry->storage->timeDate;
    const char* method = entry->method == 0 ? "stored" : entry->method == 8 ? "deflate" : "other";
    std::printf("%10ld %10ld %-8s %04d-%02d-%02d %02d:%02d  %s\n", entry->storage->GetSize(), entry->compressedSize,
                method, stamp.year + 1900, stamp.month + 1, stamp.day, stamp.hour, stamp.minute,
                entry->GetName().c_str());
  }
  return 0;
}

int Add(const std::string& zipFile, const std::string& file, const std::string& member) {
  std::vector<uint8_t> bytes;
  std::string error;
  if (ReadWholeFile(file, bytes, SIZE_MAX, &error) != FileRead::kOk) {
    ReportError(file, error.empty() ? "cannot be read" : error);
    return 1;
  }
  std::string detail;
  if (WriteZipMember(MemberPath(zipFile, member), bytes, &detail) != 0) {
    ReportError(zipFile, detail);
    return 1;
  }
  return 0;
}

int Delete(const std::string& zipFile, const std::string& member) {
  ALPkArchive archive(zipFile);
  ALEntryList list;
  if (archive.ReadDirectory(list) < 0) {
    ReportError(zipFile, archive.status.GetStatusDetail());
    return 1;
  }
  if (list.SetMarks(member) == 0) {
    ReportError(zipFile, "no member \"" + member + "\"");
    return 1;
  }
  std::string detail;
  if (DeleteZipMember(MemberPath(zipFile, member), &detail) != 0) {
    ReportError(zipFile, detail);
    return 1;
  }
  return 0;
}

}  // namespace

int RunZip(const Arguments& arguments) {
  const std::string sub = arguments.empty() ? "" : arguments[0];
  if (sub == "list" && arguments.size() == 2) return List(arguments[1]);
  if (sub == "add" && (arguments.size() == 3 || arguments.size() == 4)) {
    const std::string& file = arguments[2];
    std::string member = arguments.size() == 4 ? arguments[3] : file.substr(file.find_last_of('/') + 1);
    return Add(arguments[1], file, member);
  }
  if (sub == "delete" && arguments.size() == 3) return Delete(arguments[1], arguments[2]);
  ReportError("zip", "use: fennick zip list ZIP | add ZIP FILE [NAME] | delete ZIP NAME");
  return 2;
}

}  // namespace fennick::cli
