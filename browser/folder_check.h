// The folder dialog's test of the text typed into it, window-free: what is
// wrong with it, the question whether to create a missing folder, and the
// creation itself with the refusal that fits the drive.
#pragma once

#include <string>

#include "browser/drives.h"
#include "core/design_path.h"

namespace fennick {

inline constexpr const char* kFolderDialogTitle = "Select Folder";

enum class FolderVerdict {
  kFolder,    // take it
  kNotValid,  // no folder can have this name
  kNoDrive,   // nothing to create it on
  kIsFile,
  kMissing,   // may be created
};

// A Linux path has no drive letter; what stands for a missing drive is a
// path that is not absolute, or one under /media, /run/media or /mnt that no
// volume is mounted on: a folder made there would land on the disk below.
FolderVerdict JudgeFolderText(const std::string& text, const DriveSources& sources = {});
// The message of a verdict; the one of kMissing is a question. Empty for kFolder.
std::string VerdictMessage(FolderVerdict verdict);

// Makes the missing levels of `path`: 0, or the errno of the level that
// could not be made.
int CreateFolderLevels(const std::string& path);
// Why a folder could not be made on a drive of `type`. The Enter key's
// check words a refused permission more widely.
std::string CreationRefusal(int error, DriveType type, bool fromEnterKey);

// The check on OK, or on Enter in the edit: tells the user through the
// current UserInterface, offers to create a missing folder and does so.
// True when the text may be taken as the chosen folder.
bool AcceptFolderText(const std::string& text, bool fromEnterKey, const DriveSources& sources = {});

}  // namespace fennick
