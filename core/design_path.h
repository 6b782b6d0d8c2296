// DesignPath: where a design lives, as one text that can also name a member of
// a ZIP file and carry the label of a removable medium:
//   [ "Zip:" zipFile ":" ] directory fileName [ TAB volumeLabel ]
// Directories end in '/', the separator that every rule here searches for.
#pragma once

#include <string>
#include <vector>

namespace fennick {

// Drive kinds, numbered as the drive-type query of the original platform.
enum DriveType : int {
  kDriveUnknown = 0,
  kDriveNoRootDir = 1,
  kDriveRemovable = 2,
  kDriveFixed = 3,
  kDriveRemote = 4,
  kDriveCdRom = 5,
  kDriveRamDisk = 6,
};

// One line of the mount table, its octal escapes undone.
struct MountEntry {
  int id = 0;
  std::string device;  // "major:minor"
  std::string point;
  std::string fsType;
  std::string source;
  bool operator==(const MountEntry&) const = default;
};

// The mount table in its own order (a later mount covers an earlier one at
// the same point); empty when it cannot be read.
std::vector<MountEntry> ReadMountTable(const std::string& file = "/proc/self/mountinfo");
// The mount that `path` lies on, or nullptr.
const MountEntry* MountHolding(const std::vector<MountEntry>& table, const std::string& path);
// The drive kind of a mount. `systemRoot` goes before /sys, for a fake tree.
DriveType DriveTypeOfMount(const MountEntry& mount, const std::string& systemRoot = "");

class DesignPath {
 public:
  DesignPath() = default;
  explicit DesignPath(const std::string& text) { Parse(text); }

  // Sets all four parts from a text form.
  void Parse(const std::string& text);
  std::string ToString() const;
  // directory + fileName, without ZIP prefix or label.
  std::string FullName() const;
  // Splits into directory and fileName only; the last character is not looked
  // at, so "a/b/" splits at the first '/'.
  void SplitName(const std::string& text);

  const std::string& GetDirectory() const { return directory_; }
  // Stores the text and appends '/' when it is missing.
  void SetDirectory(const std::string& text);
  const std::string& GetFileName() const { return fileName_; }
  void SetFileName(const std::string& text) { fileName_ = text; }
  const std::string& GetVolumeLabel() const { return volumeLabel_; }
  void SetVolumeLabel(const std::string& text) { volumeLabel_ = text; }
  const std::string& GetZipFile() const { return zipFile_; }
  void SetZipFile(const std::string& text) { zipFile_ = text; }
  bool IsZipMember() const { return !zipFile_.empty(); }

  // Right of the last '.' of the file name; a dot in the last place does not count.
  std::string GetExtension() const;
  // Left of that '.'; empty without a dot.
  std::string GetStem() const;
  // Sets and returns the new file name; ext may come with or without its dot,
  // and an empty ext drops the extension.
  std::string ChangeExtension(const std::string& ext);
  // Compares with GetExtension without regard to case; a leading dot is ignored.
  bool HasExtension(const std::string& ext) const;
  // Replaces the last folder of the directory with `name`.
  void ChangeFileName(const std::string& name);
  // Sets and returns the next name for a copy: rose.pes, rose(2).pes, rose(3).pes.
  std::string NextVariant();
  // The text after the last of the `separators` characters in the file name.
  std::string LastExtension(const std::string& separators) const;
  // The kind of medium the directory lies on, from the mount table.
  DriveType GetDriveType() const;
  // Opens the file with the desktop's default application ("open"), or starts
  // it as a program with `parameters` in its own folder. True when started.
  bool Execute(const std::string& verb, const std::string& parameters) const;

  // Upper case for the first character and each one after a blank or '/',
  // lower case for all others.
  static std::string TitleCase(const std::string& text);

 private:
  std::string zipFile_;
  std::string volumeLabel_;
  std::string fileName_;
  std::string directory_;
};

}  // namespace fennick
