#include "core/format_table.h"

#include <array>

#include "core/design_path.h"
#include "core/preferences.h"
#include "core/text.h"
#include "formats/dst.h"
#include "formats/emd.h"
#include "formats/exp.h"
#include "formats/hus.h"
#include "formats/jef.h"
#include "formats/pcs.h"
#include "formats/pes.h"
#include "formats/ph.h"
#include "formats/sew.h"
#include "formats/shv.h"
#include "formats/vip.h"
#include "formats/xxx.h"

namespace fennick {
namespace {

// PES follows the settings of the last Save As.
int WritePesWithSaveAsSettings(Design& design, std::vector<uint8_t>& out) {
  const ConversionSettings settings = SaveAsConversion();
  return WritePesFile(design, out, {settings.pes5 != 0, settings.ensureTrims != 0, settings.settingsFlag != 0});
}

constexpr std::array<FormatEntry, 17> kFormats{{
    {kFormatPes, "PES", ReadPesFile, WritePesWithSaveAsSettings},
    {kFormatSew, "SEW", ReadSew, WriteSew},
    {kFormatJef, "JEF", ReadJef, WriteJef},
    {kFormatHus, "HUS", ReadHusFile, WriteHusFile},
    {kFormatPcs, "PCS", ReadPcs, WritePcs},
    {kFormatDst, "DST", ReadDst, WriteDst},
    {kFormatXxx, "XXX", ReadXxx, WriteXxx},
    {kFormatExp, "EXP", ReadExp, WriteExp},
    {kFormatVip, "VIP", ReadVipFile, WriteVipFile},
    {kFormatPhc, "PHC", ReadPhFile, nullptr},
    {kFormatPec, "PEC", ReadPesFile, nullptr},
    {kFormatEmd, "EMD", ReadEmd, nullptr},
    {kFormatShv, "SHV", ReadShv, nullptr},
    {kFormatPhb, "PHB", ReadPhFile, nullptr},
    {kFormatPhd, "PHD", ReadPhFile, nullptr},
    {kFormatBmp, "BMP", nullptr, nullptr},
    {kFormatTxt, "TXT", nullptr, nullptr},
}};

// "phd" is in neither list on purpose: a PHD file is read when asked for, and
// the browser does not offer it.
constexpr std::array<const char*, 14> kReadable{"dst", "emd", "exp", "hus", "jef", "pec", "pes",
                                                "phc", "phb", "pcs", "sew", "shv", "vip", "xxx"};
constexpr std::array<const char*, 9> kWritable{"dst", "exp", "hus", "jef", "pes",
                                               "pcs", "sew", "vip", "xxx"};
constexpr std::array<const char*, 9> kWritableUpper{"PES", "HUS", "SEW", "PCS", "JEF",
                                                    "XXX", "EXP", "VIP", "DST"};

int FillList(std::vector<std::string>* list, std::span<const char* const> names) {
  if (list == nullptr) return 14;
  list->assign(names.begin(), names.end());
  return static_cast<int>(names.size());
}

}  // namespace

std::span<const FormatEntry> FormatTable() { return kFormats; }

const FormatEntry* FindFormat(int code) {
  if (code < 0 || code >= static_cast<int>(kFormats.size())) return nullptr;
  return &kFormats[static_cast<size_t>(code)];
}

std::string FormatExtension(int code) {
  const FormatEntry* entry = FindFormat(code);
  return entry != nullptr ? entry->extension : "";
}

FormatCode FormatFromExtension(const std::string& extension) {
  for (const FormatEntry& entry : kFormats) {
    if (EqualsIgnoringCase(entry.extension, extension)) return entry.code;
  }
  return kFormatUnknown;
}

FormatCode WritableFormatFromPath(const std::string& path, std::string* extension) {
  const FormatCode code = FormatFromExtension(DesignPath(path).GetExtension());
  const bool writable = code >= kFormatPes && code <= kFormatVip;
  if (extension != nullptr) {
    *extension = "pes";
    if (writable) *extension = AsciiLower(FormatExtension(code));
  }
  return writable ? code : kFormatUnknown;
}

int ReadableExtensions(std::vector<std::string>* list) { return FillList(list, kReadable); }
int WritableExtensions(std::vector<std::string>* list) { return FillList(list, kWritable); }
std::span<const char* const> WritableExtensionsUpper() { return kWritableUpper; }

}  // namespace fennick
