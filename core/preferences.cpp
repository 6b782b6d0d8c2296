#include "core/preferences.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <string_view>
#include <system_error>

#include "core/file_io.h"
#include "core/format_table.h"
#include "core/text.h"

namespace fennick {
namespace {

namespace fs = std::filesystem;

// Sections that more than one reader uses.
constexpr const char* kSettingsSection = "Settings";
constexpr const char* kConversionSection = "Conversion";
constexpr const char* kWorkspaceSection = "Workspace";

struct TreeFile {
  const char* fileName;
  const char* keyPath;  // written in the file's header comment
};

// Indexed by PreferenceTree.
constexpr std::array<TreeFile, 5> kTreeFiles{{
    {"Brindlemoor.reg", "HKEY_CURRENT_USER\\Software\\Selvane\\Brindlemoor"},
    {"FennickAddin.reg", "HKEY_CURRENT_USER\\Software\\Selvane\\FennickAddin"},
    {"QXTessimo.reg", "HKEY_CURRENT_USER\\Software\\Selvane\\QXTessimo"},
    {"Brindlemoor Tools.reg", "HKEY_CURRENT_USER\\Software\\Selvane\\Brindlemoor Tools"},
    {"FennickAddin Tools.reg", "HKEY_LOCAL_MACHINE\\Software\\Selvane\\FennickAddin Tools"},
}};

const TreeFile& FileOf(PreferenceTree tree) { return kTreeFiles[static_cast<size_t>(tree)]; }

constexpr std::string_view kHeaderLine = "WINE REGISTRY Version 2";
constexpr std::string_view kCommentPrefix = ";; All keys relative to ";

// Settings files hold a few kilobytes; anything far larger is not one of ours.
constexpr size_t kMaxFileSize = size_t{16} << 20;

// The reader's buffer is 255 bytes and the stored string carries its final zero.
constexpr size_t kStringBufferLimit = 255;

// ---------------------------------------------------------------------------
// Locations


// Relative paths in the XDG variables are invalid and are ignored, as the
// base directory rules ask.
fs::path UserConfigDirectory() {
  const char* configHome = std::getenv("XDG_CONFIG_HOME");
  if (configHome != nullptr && configHome[0] == '/') return fs::path(configHome) / "selvane";
  const std::string home = HomeDirectory();
  if (home.empty()) return {};
  return fs::path(home) / ".config" / "selvane";
}

fs::path MachineToolsFile() {
  const char* configDirs = std::getenv("XDG_CONFIG_DIRS");
  const std::string list = configDirs != nullptr && configDirs[0] != '\0' ? configDirs : "/etc/xdg";
  size_t start = 0;
  while (start <= list.size()) {
    size_t end = list.find(':', start);
    if (end == std::string::npos) end = list.size();
    const std::string directory = list.substr(start, end - start);
    if (!directory.empty() && directory[0] == '/') {
      fs::path file = fs::path(directory) / "selvane" / FileOf(PreferenceTree::kMachineTools).fileName;
      std::error_code error;
      if (fs::is_regular_file(file, error)) return file;
    }
    start = end + 1;
  }
  return {};
}

// ---------------------------------------------------------------------------
// Files

FileRead ReadText(const fs::path& file, std::string& text) {
  text.clear();
  if (file.empty()) return FileRead::kMissing;
  std::vector<uint8_t> bytes;
  const FileRead read = ReadWholeFile(file.string(), bytes, kMaxFileSize);
  text.assign(bytes.begin(), bytes.end());
  return read;
}

// ---------------------------------------------------------------------------
// The text form: a header, the tree's own values, then "[Sub\Key]" sections.

struct Entry {
  enum class Kind { kNumber, kText, kOther };
  std::string name;
  Kind kind = Kind::kOther;
  uint32_t number = 0;
  std::string text;
  // kOther: the lines as they stood (with continuations), written back unchanged.
  std::vector<std::string> lines;
};

struct Key {
  std::string name;  // empty for the tree's own key
  std::vector<Entry> entries;
};

// keys.front() is always the tree's own key.
struct RegistryText {
  std::vector<Key> keys{Key{}};
};

Key* FindKey(RegistryText& file, std::string_view name) {
  for (Key& key : file.keys) {
    if (EqualsIgnoringCase(key.name, name)) return &key;
  }
  return nullptr;
}

Entry* FindEntry(Key& key, std::string_view name) {
  for (Entry& entry : key.entries) {
    if (EqualsIgnoringCase(entry.name, name)) return &entry;
  }
  return nullptr;
}

// Reads a quoted text starting at text[pos] == '"'; on success `pos` is just
// past the closing quote. An unknown escape is kept as it stands.
bool ParseQuoted(std::string_view text, size_t& pos, std::string& out) {
  out.clear();
  for (size_t i = pos + 1; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '"') {
      pos = i + 1;
      return true;
    }
    if (c != '\\') {
      out.push_back(c);
      continue;
    }
    if (++i == text.size()) return false;
    switch (text[i]) {
      case 'n': out.push_back('\n'); break;
      case 'r': out.push_back('\r'); break;
      case 't': out.push_back('\t'); break;
      case '\\': out.push_back('\\'); break;
      case '"': out.push_back('"'); break;
      default:
        out.push_back('\\');
        out.push_back(text[i]);
    }
  }
  return false;
}

// Exactly eight digits, as written: fewer are a truncated file, not a number.
std::optional<uint32_t> ParseDword(std::string_view digits) {
  if (digits.size() != 8) return std::nullopt;
  uint32_t value = 0;
  for (const char c : digits) {
    const char lower = AsciiLower(c);
    uint32_t digit = 0;
    if (lower >= '0' && lower <= '9') {
      digit = static_cast<uint32_t>(lower - '0');
    } else if (lower >= 'a' && lower <= 'f') {
      digit = static_cast<uint32_t>(lower - 'a' + 10);
    } else {
      return std::nullopt;
    }
    value = (value << 4) | digit;
  }
  return value;
}

// `"name"=...` or `@=...` (the key's unnamed value). A line whose name can't be
// read is no value line; one whose data is of another type is kept verbatim.
std::optional<Entry> ParseValueLine(std::string_view line) {
  Entry entry;
  size_t pos = 1;
  if (line[0] != '@') {
    pos = 0;
    if (!ParseQuoted(line, pos, entry.name)) return std::nullopt;
  }
  if (pos >= line.size() || line[pos] != '=') return std::nullopt;
  const std::string_view data = line.substr(pos + 1);
  constexpr std::string_view kDword = "dword:";
  if (data.starts_with(kDword)) {
    if (const auto number = ParseDword(data.substr(kDword.size()))) {
      entry.kind = Entry::Kind::kNumber;
      entry.number = *number;
      return entry;
    }
  } else if (!data.empty() && data[0] == '"') {
    size_t end = 0;
    if (ParseQuoted(data, end, entry.text) && end == data.size()) {
      entry.kind = Entry::Kind::kText;
      return entry;
    }
  }
  entry.text.clear();
  entry.lines.emplace_back(line);
  return entry;
}

RegistryText Parse(std::string_view text) {
  RegistryText file;
  size_t keyIndex = 0;
  bool continuing = false;  // the last kept line ended in a backslash
  while (!text.empty()) {
    const size_t newline = text.find('\n');
    std::string_view line = text.substr(0, newline);
    text.remove_prefix(newline == std::string_view::npos ? text.size() : newline + 1);
    while (!line.empty() && (line.back() == '\r' || line.back() == ' ' || line.back() == '\t')) {
      line.remove_suffix(1);
    }
    const bool indented = !line.empty() && (line[0] == ' ' || line[0] == '\t');
    if (continuing && indented) {
      file.keys[keyIndex].entries.back().lines.emplace_back(line);
      continuing = line.back() == '\\';
      continue;
    }
    continuing = false;
    while (!line.empty() && (line[0] == ' ' || line[0] == '\t')) line.remove_prefix(1);
    if (line.empty()) continue;
    if (line[0] == '[') {
      // Taken up to the last ']', so that a trailing timestamp is dropped.
      const size_t close = line.rfind(']');
      if (close == std::string_view::npos) continue;
      const std::string_view name = line.substr(1, close - 1);
      if (Key* key = FindKey(file, name)) {
        keyIndex = static_cast<size_t>(key - file.keys.data());
      } else {
        file.keys.push_back(Key{std::string(name), {}});
        keyIndex = file.keys.size() - 1;
      }
    } else if (line[0] == '"' || line[0] == '@') {
      if (auto entry = ParseValueLine(line)) {
        continuing = entry->kind == Entry::Kind::kOther && line.back() == '\\';
        file.keys[keyIndex].entries.push_back(std::move(*entry));
      }
    }
    // Everything else (the header, comments, stray text) is not kept.
  }
  return file;
}

std::string Quote(std::string_view text) {
  std::string out = "\"";
  for (const char c : text) {
    switch (c) {
      case '\\': out += "\\\\"; break;
      case '"': out += "\\\""; break;
      // Escaped so that a value always stays on one line.
      case '\n': out += "\\n"; break;
      case '\r': out += "\\r"; break;
      default: out.push_back(c);
    }
  }
  out.push_back('"');
  return out;
}

std::string Hex8(uint32_t value) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string out(8, '0');
  for (size_t i = 8; i-- > 0; value >>= 4) out[i] = kDigits[value & 0xF];
  return out;
}

std::string Serialize(const RegistryText& file, std::string_view keyPath) {
  std::string out;
  out.append(kHeaderLine).append("\n").append(kCommentPrefix).append(keyPath).append("\n\n");
  for (size_t k = 0; k < file.keys.size(); ++k) {
    const Key& key = file.keys[k];
    if (k == 0 && key.entries.empty()) continue;
    if (k != 0) out.append("[").append(key.name).append("]\n");
    for (const Entry& entry : key.entries) {
      if (entry.kind == Entry::Kind::kOther) {
        for (const std::string& line : entry.lines) out.append(line).append("\n");
        continue;
      }
      out.append(entry.name.empty() ? "@" : Quote(entry.name)).append("=");
      out.append(entry.kind == Entry::Kind::kNumber ? "dword:" + Hex8(entry.number) : Quote(entry.text));
      out.append("\n");
    }
    out.append("\n");
  }
  return out;
}

// ---------------------------------------------------------------------------
// Reads and writes of one value

std::optional<Entry> ReadEntry(const fs::path& file, const std::string& section, const std::string& name) {
  std::string text;
  if (ReadText(file, text) != FileRead::kOk) return std::nullopt;
  RegistryText parsed = Parse(text);
  Key* key = FindKey(parsed, section);
  if (key == nullptr) return std::nullopt;
  Entry* entry = FindEntry(*key, name);
  if (entry == nullptr) return std::nullopt;
  return std::move(*entry);
}

// Re-reads the file under the tree's lock, so that a value another process
// wrote meanwhile is kept, changes the one value and replaces the file.
void WriteEntry(PreferenceTree tree, const fs::path& file, const std::string& section, Entry value) {
  if (tree == PreferenceTree::kMachineTools || file.empty()) return;
  std::error_code error;
  fs::create_directories(file.parent_path(), error);
  fs::path lockPath = file;
  lockPath += ".lock";
  FileDescriptor lock(open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666));
  if (lock.Get() < 0) return;
  while (flock(lock.Get(), LOCK_EX) != 0) {
    if (errno != EINTR) return;
  }
  std::string text;
  const FileRead read = ReadText(file, text);
  // A file that exists but can't be read is left alone rather than replaced.
  if (read == FileRead::kFailed) return;
  RegistryText parsed = Parse(text);
  Key* key = FindKey(parsed, section);
  if (key == nullptr) {
    parsed.keys.push_back(Key{section, {}});
    key = &parsed.keys.back();
  }
  if (Entry* entry = FindEntry(*key, value.name)) {
    // The stored name keeps its case, as the registry does.
    value.name = std::move(entry->name);
    *entry = std::move(value);
  } else {
    key->entries.push_back(std::move(value));
  }
  const std::string serialized = Serialize(parsed, FileOf(tree).keyPath);
  WriteFileAtomic(file.string(), std::span(reinterpret_cast<const uint8_t*>(serialized.data()), serialized.size()));
  // The lock goes with the descriptor.
}

// ---------------------------------------------------------------------------
// Conversion rows

using Row = ConversionSettings;
constexpr std::array<ConversionSettings, 9> kBuiltInRows{{
    Row{0, 0, 1, 100000, 99, 300, 200, 1, 1, 10, 1, 1, 4, 1},  // PES
    Row{1, 1, 1, 60000, 12, 126, 90, 1, 1, 10, 0, 1, 4, 0},    // SEW
    Row{2, 1, 1, 64000, 78, 140, 200, 1, 1, 10, 0, 1, 4, 0},   // JEF
    Row{3, 0, 1, 100000, 99, 150, 240, 1, 1, 10, 1, 1, 4, 0},  // HUS
    Row{4, 1, 1, 28000, 16, 110, 112, 1, 1, 10, 0, 1, 4, 0},   // PCS
    Row{5, 0, 0, 100000, 99, 300, 300, 1, 1, 10, 0, 1, 4, 0},  // DST
    Row{6, 1, 1, 30000, 15, 140, 240, 1, 1, 10, 0, 1, 4, 0},   // XXX
    Row{7, 0, 0, 100000, 99, 300, 300, 1, 1, 10, 0, 1, 4, 0},  // EXP
    Row{8, 0, 1, 100000, 99, 150, 360, 1, 1, 10, 1, 1, 4, 0},  // VIP
}};

// No exception leaves the store: any failure is the caller's default.
template <typename T, typename Body>
T Guarded(const T& fallback, Body&& body) {
  try {
    return body();
  } catch (...) {
    return fallback;
  }
}

}  // namespace

fs::path PreferenceStore::FilePath() const {
  return Guarded(fs::path(), [&] {
    if (tree_ == PreferenceTree::kMachineTools) return MachineToolsFile();
    const fs::path directory = UserConfigDirectory();
    return directory.empty() ? fs::path() : directory / FileOf(tree_).fileName;
  });
}

// Reads never create the file or the key: a read must not write.
int32_t PreferenceStore::GetInt(const std::string& section, const std::string& name,
                                int32_t defaultValue) const {
  return Guarded(defaultValue, [&] {
    const auto entry = ReadEntry(FilePath(), section, name);
    if (!entry || entry->kind != Entry::Kind::kNumber) return defaultValue;
    return static_cast<int32_t>(entry->number);
  });
}

std::string PreferenceStore::GetString(const std::string& section, const std::string& name,
                                       const std::string& defaultValue) const {
  return Guarded(defaultValue, [&] {
    const auto entry = ReadEntry(FilePath(), section, name);
    if (!entry || entry->kind != Entry::Kind::kText) return defaultValue;
    // Stored strings end at their first zero.
    std::string text = entry->text.substr(0, entry->text.find('\0'));
    if (text.size() + 1 > kStringBufferLimit) return defaultValue;
    return text;
  });
}

void PreferenceStore::SetInt(const std::string& section, const std::string& name, int32_t value) const {
  Guarded(0, [&] {
    Entry entry{name, Entry::Kind::kNumber, static_cast<uint32_t>(value), {}, {}};
    WriteEntry(tree_, FilePath(), section, std::move(entry));
    return 0;
  });
}

void PreferenceStore::SetString(const std::string& section, const std::string& name,
                                const std::string& value) const {
  Guarded(0, [&] {
    // Stored as a zero-ended string: anything after a zero is not kept.
    Entry entry{name, Entry::Kind::kText, 0, std::string(value.c_str()), {}};
    WriteEntry(tree_, FilePath(), section, std::move(entry));
    return 0;
  });
}

// Values of types other than 32-bit integers and strings are left out.
std::vector<PreferenceValue> PreferenceStore::Values(const std::string& section) const {
  return Guarded(std::vector<PreferenceValue>(), [&] {
    std::vector<PreferenceValue> values;
    std::string text;
    if (ReadText(FilePath(), text) != FileRead::kOk) return values;
    RegistryText parsed = Parse(text);
    Key* key = FindKey(parsed, section);
    if (key == nullptr) return values;
    for (Entry& entry : key->entries) {
      if (entry.kind == Entry::Kind::kOther) continue;
      values.push_back({std::move(entry.name), entry.kind == Entry::Kind::kNumber, entry.number,
                        std::move(entry.text)});
    }
    return values;
  });
}

const ConversionSettings& BuiltInConversion(int formatCode) {
  if (formatCode < kFormatPes || formatCode > kFormatVip) return kBuiltInRows[kFormatPes];
  return kBuiltInRows[static_cast<size_t>(formatCode)];
}

namespace {

// Several numbers of one key from a single read of the file: what GetInt
// gives, value by value.
class KeyNumbers {
 public:
  explicit KeyNumbers(const std::string& section) : values_(PreferenceStore().Values(section)) {}
  int32_t Get(std::string_view name, int32_t defaultValue) const {
    for (const PreferenceValue& value : values_) {
      if (EqualsIgnoringCase(value.name, name)) return value.isNumber ? static_cast<int32_t>(value.number) : defaultValue;
    }
    return defaultValue;
  }

 private:
  std::vector<PreferenceValue> values_;
};

}  // namespace

int ReadConversion(const std::string& extension, ConversionSettings& record) {
  // Formats outside 1 to 8 (PHC, an unknown name) stay with the PES row.
  record = BuiltInConversion(FormatFromExtension(extension));
  const KeyNumbers stored(kConversionSection);
  for (const ConversionValue& value : kConversionValues) {
    int32_t& word = record.*value.word;
    word = stored.Get(extension + value.suffix, word);
  }
  record.pes5 = stored.Get("pes5", record.pes5);
  record.ensureTrims = stored.Get("pestrim", record.ensureTrims);
  return 0;
}

namespace {
std::mutex saveAsMutex;
std::optional<ConversionSettings> saveAsRecord;
}  // namespace

void SetSaveAsConversion(const ConversionSettings& record) {
  const std::lock_guard<std::mutex> lock(saveAsMutex);
  saveAsRecord = record;
}

ConversionSettings SaveAsConversion() {
  {
    const std::lock_guard<std::mutex> lock(saveAsMutex);
    if (saveAsRecord) return *saveAsRecord;
  }
  ConversionSettings record;
  ReadConversion("pes", record);
  return record;
}

BasteSettings GetBaste() {
  const KeyNumbers stored(kSettingsSection);
  BasteSettings baste;  // starts out with the defaults
  baste.combine = stored.Get("Baste combine", baste.combine);
  baste.length = stored.Get("Baste length", baste.length);
  baste.cross = stored.Get("Baste cross", baste.cross);
  baste.edge = stored.Get("Baste edge", baste.edge);
  return baste;
}

ToolSettings GetToolSettings() {
  const PreferenceStore store;
  ToolSettings tools;  // starts out with the defaults
  tools.keep = store.GetInt(kSettingsSection, "Tools keep", tools.keep);
  tools.selected = store.GetInt(kSettingsSection, "Tools selected", tools.selected);
  tools.report = store.GetInt(kSettingsSection, "Tools report", tools.report);
  tools.format = store.GetString(kSettingsSection, "Tools otf", tools.format);
  return tools;
}

BitmapSettings GetBitmapSettings() {
  const KeyNumbers stored(kSettingsSection);
  BitmapSettings bitmap;  // starts out with the defaults
  bitmap.size = stored.Get("BMP Size", bitmap.size);
  bitmap.make3D = stored.Get("Make 3D", bitmap.make3D);
  bitmap.outline = stored.Get("Outline", bitmap.outline);
  return bitmap;
}

int32_t GetWorkspace(std::string& directory) {
  const PreferenceStore store;
  const std::string fallback = Guarded(std::string(), [] {
    return (fs::path(HomeDirectory()) / "Brindlemoor" / "My Temps").string();
  });
  directory = store.GetString(kWorkspaceSection, "directory", fallback);
  return store.GetInt(kWorkspaceSection, "workspace", 1);
}

int32_t GetColorSortThreshold() {
  return PreferenceStore().GetInt(kSettingsSection, "Color Sort Threshold", 5);
}

uint32_t GetBackgroundColor() {
  return static_cast<uint32_t>(PreferenceStore().GetInt("BkgColors", "selectedColorRGB", 0xFFFFFF));
}

int32_t GetEnglish() { return PreferenceStore().GetInt(kSettingsSection, "English", 1); }

}  // namespace fennick
