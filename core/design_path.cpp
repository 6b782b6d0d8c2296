#include "core/design_path.h"
#include "core/text.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <vector>

namespace fennick {
namespace {

constexpr char kSeparator = '/';
constexpr const char* kZipPrefix = "Zip:";

// Index of the last '.' of a file name, searched from its next-to-last
// character down; a dot in the last place does not count. -1 without one.
long LastDot(const std::string& name) {
  for (long i = static_cast<long>(name.size()) - 2; i >= 0; --i) {
    if (name[static_cast<size_t>(i)] == '.') return i;
  }
  return -1;
}

// Octal escapes of /proc/self/mountinfo fields ("\040" for a blank).
std::string UnescapeMountField(const std::string& field) {
  std::string text;
  for (size_t i = 0; i < field.size(); ++i) {
    if (field[i] == '\\' && i + 3 < field.size()) {
      const std::string digits = field.substr(i + 1, 3);
      if (digits.find_first_not_of("01234567") == std::string::npos) {
        text.push_back(static_cast<char>(std::strtol(digits.c_str(), nullptr, 8)));
        i += 3;
        continue;
      }
    }
    text.push_back(field[i]);
  }
  return text;
}

bool IsRemovableBlockDevice(const std::string& source, const std::string& systemRoot) {
  if (source.rfind("/dev/", 0) != 0) return false;
  std::string device = source.substr(5);
  // A partition's flag stands on its disk: sdb1 -> sdb, mmcblk0p1 -> mmcblk0.
  std::ifstream flag(systemRoot + "/sys/class/block/" + device + "/removable");
  if (!flag) {
    std::ifstream parent(systemRoot + "/sys/class/block/" + device + "/../removable");
    flag.swap(parent);
  }
  char value = '0';
  return flag >> value && value == '1';
}

}  // namespace

std::vector<MountEntry> ReadMountTable(const std::string& file) {
  std::vector<MountEntry> table;
  std::ifstream mounts(file);
  std::string line;
  while (std::getline(mounts, line)) {
    std::istringstream fields(line);
    MountEntry entry;
    std::string parent, root, field;
    fields >> entry.id >> parent >> entry.device >> root >> entry.point;
    while (fields >> field && field != "-") {
    }
    fields >> entry.fsType >> entry.source;
    entry.point = UnescapeMountField(entry.point);
    entry.source = UnescapeMountField(entry.source);
    if (!entry.point.empty()) table.push_back(std::move(entry));
  }
  return table;
}

DriveType DriveTypeOfMount(const MountEntry& mount, const std::string& systemRoot) {
  const std::string& fsType = mount.fsType;
  const std::string& mountPoint = mount.point;
  static const char* const kRemote[] = {"nfs", "nfs4", "cifs", "smb3", "smbfs", "9p", "afs", "ncpfs"};
  if (fsType == "iso9660" || fsType == "udf") return kDriveCdRom;
  for (const char* remote : kRemote) {
    if (fsType == remote) return kDriveRemote;
  }
  if (fsType.rfind("fuse.", 0) == 0 && fsType != "fuse.portal") {
    const std::string kind = fsType.substr(5);
    if (kind == "sshfs" || kind == "rclone" || kind == "davfs" || kind == "gvfsd-fuse" || kind == "s3fs") {
      return kDriveRemote;
    }
  }
  if (fsType == "tmpfs" || fsType == "ramfs") return kDriveRamDisk;
  if (IsRemovableBlockDevice(mount.source, systemRoot) || mountPoint.rfind("/media/", 0) == 0 ||
      mountPoint.rfind("/run/media/", 0) == 0) {
    return kDriveRemovable;
  }
  return kDriveFixed;
}

const MountEntry* MountHolding(const std::vector<MountEntry>& table, const std::string& path) {
  // The longest mount point that holds the path; the later of equal ones, which covers the other.
  const MountEntry* best = nullptr;
  for (const MountEntry& mount : table) {
    const std::string prefix = mount.point == "/" ? mount.point : mount.point + "/";
    if ((path.rfind(prefix, 0) == 0 || path == mount.point) &&
        (best == nullptr || mount.point.size() >= best->point.size())) {
      best = &mount;
    }
  }
  return best;
}

void DesignPath::Parse(const std::string& text) {
  zipFile_.clear();
  volumeLabel_.clear();
  fileName_.clear();
  directory_.clear();
  std::string rest = text;
  if (rest.compare(0, 4, kZipPrefix) == 0) {
    rest.erase(0, 4);
    // From index 2 on, so that a drive letter's colon does not count.
    const size_t colon = rest.size() > 2 ? rest.find(':', 2) : std::string::npos;
    if (colon == std::string::npos) {
      zipFile_ = rest;
      rest.clear();
    } else {
      zipFile_ = rest.substr(0, colon);
      rest.erase(0, colon + 1);
    }
  }
  const size_t tab = rest.find('\t');
  if (tab != std::string::npos) {
    volumeLabel_ = rest.substr(tab + 1);
    rest.erase(tab);
  }
  SplitName(rest);
}

std::string DesignPath::ToString() const {
  std::string text;
  if (!zipFile_.empty()) text = kZipPrefix + zipFile_ + ":";
  text += directory_ + fileName_;
  if (!volumeLabel_.empty()) text += "\t" + volumeLabel_;
  return text;
}

std::string DesignPath::FullName() const { return directory_ + fileName_; }

void DesignPath::SplitName(const std::string& text) {
  for (long i = static_cast<long>(text.size()) - 2; i >= 0; --i) {
    if (text[static_cast<size_t>(i)] == kSeparator) {
      directory_ = text.substr(0, static_cast<size_t>(i) + 1);
      fileName_ = text.substr(static_cast<size_t>(i) + 1);
      return;
    }
  }
  fileName_ = text;
}

void DesignPath::SetDirectory(const std::string& text) {
  directory_ = text;
  if (directory_.empty() || directory_.back() != kSeparator) directory_.push_back(kSeparator);
}

std::string DesignPath::GetExtension() const {
  const long dot = LastDot(fileName_);
  return dot < 0 ? std::string() : fileName_.substr(static_cast<size_t>(dot) + 1);
}

std::string DesignPath::GetStem() const {
  const long dot = LastDot(fileName_);
  return dot < 0 ? std::string() : fileName_.substr(0, static_cast<size_t>(dot));
}

std::string DesignPath::ChangeExtension(const std::string& ext) {
  const long dot = LastDot(fileName_);
  std::string name = dot > 0 ? fileName_.substr(0, static_cast<size_t>(dot)) : fileName_;
  if (!ext.empty()) {
    if (ext.front() != '.') name.push_back('.');
    name += ext;
  }
  fileName_ = name;
  return fileName_;
}

bool DesignPath::HasExtension(const std::string& ext) const {
  const std::string wanted = !ext.empty() && ext.front() == '.' ? ext.substr(1) : ext;
  return EqualsIgnoringCase(wanted, GetExtension());
}

void DesignPath::ChangeFileName(const std::string& name) {
  for (long i = static_cast<long>(directory_.size()) - 2; i >= 0; --i) {
    if (directory_[static_cast<size_t>(i)] == kSeparator) {
      directory_.erase(static_cast<size_t>(i) + 1);
      break;
    }
  }
  directory_ += name;
  if (directory_.empty() || directory_.back() != kSeparator) directory_.push_back(kSeparator);
}

std::string DesignPath::NextVariant() {
  std::string stem = GetStem();
  const std::string ext = GetExtension();
  // -1 when there is no "(": a stem that ends in ")" is then replaced whole by
  // its number plus one, as the cut behind index -1 keeps nothing.
  const size_t found = stem.find('(');
  const long open = found == std::string::npos ? -1 : static_cast<long>(found);
  if ((!stem.empty() && stem.back() == ')') || open == 0) {
    const int number = std::atoi(stem.c_str() + open + 1);
    stem = stem.substr(0, static_cast<size_t>(open + 1)) + std::to_string(number + 1) + ").";
  } else {
    stem += "(2).";
  }
  fileName_ = stem + ext;
  return fileName_;
}

std::string DesignPath::LastExtension(const std::string& separators) const {
  std::string rest = fileName_;
  for (size_t cut = rest.find_first_of(separators); cut != std::string::npos;
       cut = rest.find_first_of(separators)) {
    rest.erase(0, cut + 1);
  }
  return rest;
}

DriveType DesignPath::GetDriveType() const {
  struct stat info {};
  if (directory_.empty() || directory_.front() != kSeparator || stat(directory_.c_str(), &info) != 0 ||
      !S_ISDIR(info.st_mode)) {
    return kDriveNoRootDir;
  }
  const std::vector<MountEntry> table = ReadMountTable();
  const MountEntry* best = MountHolding(table, directory_);
  return best == nullptr ? kDriveUnknown : DriveTypeOfMount(*best);
}

bool DesignPath::Execute(const std::string& verb, const std::string& parameters) const {
  const std::string file = FullName();
  // Everything the child needs is made before fork: a threaded process may
  // only call async-signal-safe functions between fork and exec.
  std::vector<std::string> words;
  if (verb != "open" && access(file.c_str(), X_OK) == 0) {
    words.push_back(file);
    std::istringstream split(parameters);
    for (std::string word; split >> word;) words.push_back(word);
  } else {
    words = {"xdg-open", file};
  }
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  const char* folder = directory_.empty() ? nullptr : directory_.c_str();

  // Detached: the child forks again and exits, so no zombie is left behind.
  const pid_t child = fork();
  if (child < 0) return false;
  if (child == 0) {
    if (fork() != 0) _exit(0);
    setsid();
    if (folder != nullptr && chdir(folder) != 0) _exit(127);
    execvp(argv[0], argv.data());
    _exit(127);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::string DesignPath::TitleCase(const std::string& text) {
  std::string result = text;
  bool startOfWord = true;
  for (char& c : result) {
    c = startOfWord ? AsciiUpper(c) : AsciiLower(c);
    startOfWord = c == ' ' || c == kSeparator;
  }
  return result;
}

}  // namespace fennick
