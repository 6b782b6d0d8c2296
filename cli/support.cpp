#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iostream>

#include "archive/al_pk_archive.h"
#include "cli/commands.h"
#include "core/design_path.h"
#include "core/file_io.h"
#include "core/format_table.h"
#include "core/text.h"
#include "tools/save_pipeline.h"

namespace fennick::cli {

void ReportError(const std::string& subject, const std::string& cause) {
  std::cerr << "fennick: " << subject << ": " << cause << "\n";
}

int StartWindowProgram(const std::string& command, const std::string& program, const Arguments& arguments) {
  // The one installed beside this program first, so that a build tree runs its own.
  std::error_code error;
  const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
  const std::filesystem::path beside = self.parent_path() / program;
  std::vector<std::string> words{error || !std::filesystem::exists(beside) ? program : beside.string()};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  execvp(argv[0], argv.data());
  ReportError(command, "cannot start " + program + ": " + std::string(std::strerror(errno)));
  return 1;
}

bool ParseCount(const std::string& text, int32_t& value) {
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  return error == std::errc() && stop == end && value >= 0;
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

namespace {

// Why a ZIP member could not be had, or "" when it is there to be read.
std::string ZipMemberCause(const DesignPath& path) {
  ALPkArchive archive(path.GetZipFile());
  ALEntryList entries;
  if (archive.ReadDirectory(entries) < 0) {
    return std::string("the ZIP file cannot be read: ") + archive.status.GetStatusDetail();
  }
  const std::string member = path.FullName();
  for (const auto& entry : entries) {
    if (EqualsIgnoringCase(entry->GetName(), member)) return {};
  }
  return "no member \"" + member + "\" in the ZIP file";
}

}  // namespace

std::string ReadDesignOrCause(const std::string& path, Design& design, LastFile lastFile) {
  const std::string extension = LowerExtension(path);
  const FormatEntry* format = FindFormat(FormatFromExtension(extension));
  if (format == nullptr || format->read == nullptr) {
    return extension.empty() ? "no file extension to tell the design format"
                             : "no reader for the extension \"." + extension + "\"";
  }
  const DesignPath designPath(path);
  const std::string file = designPath.IsZipMember() ? designPath.GetZipFile() : path;
  struct stat info {};
  if (stat(file.c_str(), &info) != 0) return designPath.IsZipMember() ? "no such ZIP file" : "no such file";
  if (S_ISDIR(info.st_mode)) return "is a folder, not a design file";
  if (info.st_size == 0) return "the file is empty";
  if (ReadDesignFile(design, path, lastFile) != 0) {
    if (designPath.IsZipMember()) {
      if (const std::string cause = ZipMemberCause(designPath); !cause.empty()) return cause;
    }
    return std::string("is not a ") + format->extension + " design";
  }
  if (design.stitches.Empty()) return "holds no stitches";
  return {};
}

bool LoadDesign(const std::string& path, Design& design) {
  const std::string cause = ReadDesignOrCause(path, design, LastFile::kRecord);
  if (cause.empty()) return true;
  ReportError(path, cause);
  return false;
}

std::string HoopHint(Design& design, const ConversionSettings& settings, FormatCode format) {
  // A refused fit leaves the design as it was, so this asks the same question again.
  if (format == kFormatTxt || FitDesignToHoop(design, settings) == 0) return {};
  const std::string extension = AsciiLower(FormatExtension(format));
  return FormatText("the %s hoop is %i x %i mm: give another with --hoop WxH or allow --shrink PCT, or store it "
                    "with \"fennick settings set Conversion/%sw\" and \"Conversion/%sh\"",
                    FormatExtension(format).c_str(), settings.hoopWidth, settings.hoopHeight, extension.c_str(),
                    extension.c_str());
}

bool SaveFile(const std::string& path, const std::vector<uint8_t>& bytes) {
  std::string error;
  if (WriteFileAtomic(path, bytes, &error)) return true;
  ReportError(path, "cannot be written: " + error);
  return false;
}

bool ParseHoop(const std::string& text, int32_t& width, int32_t& height) {
  const size_t cross = text.find_first_of("xX");
  return cross != std::string::npos && ParseCount(text.substr(0, cross), width) &&
         ParseCount(text.substr(cross + 1), height) && width > 0 && height > 0;
}

bool TakeFlag(Arguments& arguments, const std::string& flag) {
  const auto found = std::find(arguments.begin(), arguments.end(), flag);
  if (found == arguments.end()) return false;
  arguments.erase(found);
  return true;
}

int TakeNumber(const std::string& command, Arguments& arguments, const std::string& option, int32_t low,
               int32_t high, int32_t& value) {
  const auto found = std::find(arguments.begin(), arguments.end(), option);
  if (found == arguments.end()) return 0;
  const bool read = found + 1 != arguments.end() && ParseCount(*(found + 1), value) && value >= low && value <= high;
  if (!read) {
    ReportError(command, option + " takes a whole number from " + std::to_string(low) + " to " + std::to_string(high));
    return 2;
  }
  arguments.erase(found, found + 2);
  return 0;
}

int TakeDecimal(const std::string& command, Arguments& arguments, const std::string& option, double& value) {
  const auto found = std::find(arguments.begin(), arguments.end(), option);
  if (found == arguments.end()) return 0;
  bool read = found + 1 != arguments.end();
  if (read) {
    const std::string& text = *(found + 1);
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    read = error == std::errc() && stop == text.data() + text.size() && std::isfinite(value);
  }
  if (!read) {
    ReportError(command, option + " takes a number");
    return 2;
  }
  arguments.erase(found, found + 2);
  return 0;
}

}  // namespace fennick::cli
