#include <cstdio>
#include <iostream>
#include <sys/stat.h>

#include "cli/commands.h"
#include "core/design_path.h"
#include "core/file_io.h"
#include "core/format_table.h"
#include "core/text.h"

namespace fennick::cli {

void ReportError(const std::string& subject, const std::string& cause) {
  std::cerr << "fennick: " << subject << ": " << cause << "\n";
}

std::string LowerExtension(const std::string& path) {
  return AsciiLower(DesignPath(path).GetExtension());
}

std::string JsonString(const std::string& text) {
  std::string out = "\"";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      out += '\\';
      out += c;
    } else if (byte < 0x20) {
      static const char* const kHex = "0123456789abcdef";
      out += "\\u00";
      out += kHex[byte >> 4];
      out += kHex[byte & 15];
    } else {
      out += c;
    }
  }
  return out + '"';
}

std::string HexColor(uint32_t rgb) {
  char text[8];
  std::snprintf(text, sizeof text, "#%02x%02x%02x", rgb & 0xFF, (rgb >> 8) & 0xFF, (rgb >> 16) & 0xFF);
  return text;
}

std::string ReadDesignOrCause(const std::string& path, Design& design, LastFile lastFile) {
  const std::string extension = LowerExtension(path);
  const FormatEntry* format = FindFormat(FormatFromExtension(extension));
  if (format == nullptr || format->read == nullptr) {
    return extension.empty() ? "no file extension to tell the design format"
                             : "no reader for the extension \"." + extension + "\"";
  }
  if (path.rfind("Zip:", 0) != 0) {
    struct stat info {};
    if (stat(path.c_str(), &info) != 0) return "no such file";
    if (S_ISDIR(info.st_mode)) return "is a folder, not a design file";
    if (info.st_size == 0) return "the file is empty";
  }
  if (ReadDesignFile(design, path, lastFile) != 0) {
    return std::string("cannot be read as a ") + format->extension + " design";
  }
  if (design.stitches.Empty()) return std::string("holds no stitches (not a ") + format->extension + " design?)";
  return {};
}

bool LoadDesign(const std::string& path, Design& design) {
  const std::string cause = ReadDesignOrCause(path, design, LastFile::kRecord);
  if (cause.empty()) return true;
  ReportError(path, cause);
  return false;
}

bool SaveFile(const std::string& path, const std::vector<uint8_t>& bytes) {
  std::string error;
  if (WriteFileAtomic(path, bytes, &error)) return true;
  ReportError(path, "cannot be written: " + error);
  return false;
}

}  // namespace fennick::cli
