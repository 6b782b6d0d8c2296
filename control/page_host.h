// A host with one design page and no window: it answers every method of the
// host's automation interface from its page, its hoop and the preference
// store. The command line's host-call, the tests and the reference host
// build on it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "control/host_automation.h"
#include "core/design.h"

namespace fennick {

class DesignPageHost : public HostAutomation {
 public:
  // Announces itself in the running-object table for its lifetime.
  DesignPageHost();
  ~DesignPageHost() override;
  DesignPageHost(const DesignPageHost&) = delete;
  DesignPageHost& operator=(const DesignPageHost&) = delete;

  void PrepareImport() override;
  // A new block of the page's design; false, with handle 0, for an empty page.
  bool GetDesign(int32_t& hDesign) override;
  // The page takes the design; the block is freed.
  bool PutDesign(int32_t hDesign) override;
  bool NewDesign() override;
  void GetHoopSize(int32_t& width, int32_t& height) override;
  // The stored conversion settings' hoop of the format.
  void GetFormatHoop(const std::string& extension, int32_t& width, int32_t& height) override;
  // The page design's own extension, else `designExtension`.
  std::string GetDesignExtension() override;
  std::string GetImportExtension() override;
  std::string GetSaveExtension() override;
  // The stored conversion settings of the format.
  void GetConversion(const std::string& extension, ConversionValues& values) override;
  // The stored resize settings.
  void GetResizeSettings(ResizeSettings& settings) override;

  Design page;
  int32_t hoopWidth = 1000;  // tenths of a millimetre
  int32_t hoopHeight = 1000;
  std::string designExtension;
  std::string importExtension;
  std::string saveExtension = "pes";
  // The methods called, by name, in order.
  std::vector<std::string> calls;
};

}  // namespace fennick
