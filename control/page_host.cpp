#include "control/page_host.h"

#include "core/design_path.h"
#include "core/embroidery_file.h"
#include "core/global_memory.h"
#include "core/preferences.h"

namespace fennick {

DesignPageHost::DesignPageHost() { RegisterActiveObject(kHostClassId, this); }

DesignPageHost::~DesignPageHost() {
  if (GetActiveObject(kHostClassId) == this) RevokeActiveObject(kHostClassId);
}

void DesignPageHost::PrepareImport() { calls.emplace_back("PrepareImport"); }

bool DesignPageHost::GetDesign(int32_t& hDesign) {
  calls.emplace_back("GetDesign");
  Design copy = page;
  hDesign = static_cast<int32_t>(BuildEmbroideryFile(copy));
  return hDesign != 0;
}

bool DesignPageHost::PutDesign(int32_t hDesign) {
  calls.emplace_back("PutDesign");
  const auto handle = static_cast<GlobalHandle>(hDesign);
  if (GlobalSize(handle) == 0) return false;
  page = Design();
  ParseEmbroideryFile(page, handle);
  GlobalFree(handle);
  return true;
}

bool DesignPageHost::NewDesign() {
  calls.emplace_back("NewDesign");
  page = Design();
  return true;
}

void DesignPageHost::GetHoopSize(int32_t& width, int32_t& height) {
  calls.emplace_back("GetHoopSize");
  width = hoopWidth;
  height = hoopHeight;
}

void DesignPageHost::GetFormatHoop(const std::string& extension, int32_t& width, int32_t& height) {
  calls.emplace_back("GetFormatHoop");
  ConversionSettings record;
  ReadConversion(extension, record);
  width = record.hoopWidth * 10;
  height = record.hoopHeight * 10;
}

std::string DesignPageHost::GetDesignExtension() {
  calls.emplace_back("GetDesignExtension");
  const std::string own = DesignPath(page.name).GetExtension();
  return own.empty() ? designExtension : own;
}

std::string DesignPageHost::GetImportExtension() {
  calls.emplace_back("GetImportExtension");
  return importExtension;
}

std::string DesignPageHost::GetSaveExtension() {
  calls.emplace_back("GetSaveExtension");
  return saveExtension;
}

void DesignPageHost::GetConversion(const std::string& extension, ConversionValues& values) {
  calls.emplace_back("GetConversion");
  ConversionSettings record;
  ReadConversion(extension, record);
  values = ToConversionValues(record);
}

void DesignPageHost::GetResizeSettings(ResizeSettings& settings) {
  calls.emplace_back("GetResizeSettings");
  settings = StoredResizeSettings();
}

}  // namespace fennick
