// ReadDesignFile and WriteDesignFile: the dispatch over the format table.
#include <exception>

#include "archive/zip_member.h"
#include "core/design_path.h"
#include "core/file_io.h"
#include "core/format_table.h"
#include "core/preferences.h"
#include "core/text.h"

namespace fennick {
namespace {

constexpr const char* kZipPrefix = "Zip:";

void RememberLastFile(const std::string& fileName) {
  const PreferenceStore profile(PreferenceTree::kProfile);
  // Only a change is written: thumbnails read many files in a row.
  if (profile.GetString("Settings", "Last File", "") != fileName) {
    profile.SetString("Settings", "Last File", fileName);
  }
}

}  // namespace

int ReadDesignBytes(const std::string& path, std::vector<uint8_t>& bytes) {
  const DesignPath location(path);
  if (path.rfind(kZipPrefix, 0) == 0) return ReadZipMember(location, bytes) == 0 ? 0 : -1;
  return ReadWholeFile(location.FullName(), bytes) == FileRead::kOk ? 0 : -1;
}

int ReadDesignFile(Design& design, const std::string& path, LastFile lastFile) {
  if (EqualsIgnoringCase(design.name, path)) return 0;  // already loaded
  const DesignPath location(path);
  design.name = path;
  if (lastFile == LastFile::kRecord) RememberLastFile(location.FullName());

  std::vector<uint8_t> bytes;
  if (ReadDesignBytes(path, bytes) != 0) return -1;
  bytes.push_back(0);  // every reader counts this zero byte in its size

  design.name = location.ToString();
  bool read = false;
  const FormatEntry* format = FindFormat(FormatFromExtension(location.GetExtension()));
  if (bytes.size() > 1 && format != nullptr && format->read != nullptr) {
    design.defaultColors = false;
    try {
      read = format->read(design, bytes);
    } catch (const std::exception&) {
      read = false;
    }
  }
  design.name = path;
  if (!design.stitches.Empty()) design.ComputeThreadStats();
  return read ? 0 : -1;
}

size_t WriteDesignFile(Design& design, std::vector<uint8_t>& out, int forcedFormat) {
  out.clear();
  if (design.stitches.Empty()) return 0;
  DesignPath location(design.name);
  int source = FormatFromExtension(location.GetExtension());
  if (source == kFormatPhb || source == kFormatPhd) source = kFormatPhc;
  int target = forcedFormat;
  if (forcedFormat <= -1) {
    // Only an unforced write asks the tool settings: a batch writes many files.
    const ToolSettings tools = GetToolSettings();
    target = tools.keep != 0 ? source : tools.selected;
  }

  const bool sourceIsDesign = source >= 0 && source != kFormatBmp && source != kFormatTxt;
  const FormatEntry* format = target >= kFormatPes && target <= kFormatVip ? FindFormat(target) : nullptr;
  if (sourceIsDesign && format != nullptr && format->write != nullptr) {
    location.ChangeExtension(AsciiLower(format->extension));
    if (format->write(design, out) != 0) out.clear();
  }
  design.name = location.ToString();
  return out.size();
}

}  // namespace fennick
