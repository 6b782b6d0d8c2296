// The small file services of the browser and the save pipeline: writing a
// design's bytes to its place, deleting a design wherever it lies, and folders.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "core/design_path.h"

namespace fennick {

// Bits of WriteFileBlock's mode.
inline constexpr int kWriteFreeName = 4;   // take the next free variant of the name
inline constexpr int kWriteNoDialog = 8;   // the save dialog is the window layer's; here it never shows

// Writes `bytes` to the plain file or ZIP member `path`, atomically. The
// file name is reduced to its last part and may change to a free variant.
// 0 on success, otherwise the cause: an errno value for a plain file, the
// negative archive status for a ZIP member; `cause` then tells why in words.
int WriteFileBlock(std::span<const uint8_t> bytes, DesignPath& path, int mode, std::string* cause = nullptr);
// Deletes a plain file or a ZIP member; failures are not reported.
void DeleteDesign(const DesignPath& path);
// 0, or the errno of the failure; an existing `to` is never replaced.
int RenameFolder(const std::string& from, const std::string& to);
// `path`, or "path(2)", "path(3)"... the first that does not exist.
std::string NewFolderName(const std::string& path);
// The folder made under NewFolderName(path), or "" on failure.
std::string CreateFolderUnique(const std::string& path);
// True when anything of that name exists, file or folder: neither can be
// made over it. A final '/' is ignored.
bool FolderExists(const std::string& path);
// True when `path` is a folder.
bool FolderTest(const std::string& path);
// Makes the missing folders of `path` level by level; true when it then is one.
bool EnsureFolder(const std::string& path);
// Bytes free to the user on the file system of `root`, or -errno on failure.
int64_t DiskFree(const std::string& root);
// Deletes `path` and everything under it. "/" and the home folder itself
// are refused. 0, or an errno value.
int ShellDelete(const std::string& path);

}  // namespace fennick
