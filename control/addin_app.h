// The control module's one application object: what lives from the module's
// start to its end, and the start and end themselves.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/design_path.h"
#include "core/preferences.h"

namespace fennick {

// Where the tool protocol's broadcasts go. The protocol's transport fills it
// in; until one is set, broadcasts go nowhere.
class ProtocolTransport {
 public:
  virtual ~ProtocolTransport() = default;
  virtual void Broadcast(const std::string& message, int32_t wParam, int64_t lParam) = 0;
};

class CFennickAddinApp {
 public:
  // Module start, in order: the profile root (Software\Selvane\FennickAddin),
  // the stock fonts' text heights, protocolNumber 10 and busy 0. Returns true.
  bool InitInstance();
  // Module end, in order: deletes every file of keptDesigns, then of
  // selectedFiles; broadcasts "QXPlugInStop" with both parameters 0.
  // Returns 0.
  int ExitInstance();

  // The settings of the last Save As, which the PES writers read.
  ConversionSettings lastConversion() const { return SaveAsConversion(); }
  void SetLastConversion(const ConversionSettings& record) { SetSaveAsConversion(record); }
  // Not owned; nullptr sends broadcasts nowhere.
  void SetTransport(ProtocolTransport* transport) { transport_ = transport; }
  ProtocolTransport* Transport() const { return transport_; }

  std::vector<DesignPath> selectedFiles;  // files handed to tools, deleted at the end
  std::vector<DesignPath> keptDesigns;    // temporary designs, deleted at the end
  int32_t ansiFontHeight = 0;
  int32_t systemFontHeight = 0;
  int32_t busy = 0;  // the protocol's state
  int32_t filteredMessages = 0;
  int32_t protocolNumber = 0;

 private:
  ProtocolTransport* transport_ = nullptr;
};

// The module's application object.
CFennickAddinApp& TheApp();

}  // namespace fennick
