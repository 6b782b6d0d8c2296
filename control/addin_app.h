// The control module's one application object: what lives from the module's
// start to its end, and the start and end themselves.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "control/protocol.h"
#include "core/design_path.h"
#include "core/preferences.h"

namespace fennick {

class CFennickAddinApp {
 public:
  // Module start, in order: the profile root (Software\Selvane\FennickAddin),
  // the stock fonts' text heights, protocolNumber 10 and busy 0, the
  // protocol's messages registered. Returns true.
  bool InitInstance();
  // Module end, in order: deletes every file of keptDesigns, then of
  // selectedFiles; broadcasts "QXPlugInStop" with both parameters 0.
  // Returns 0.
  int ExitInstance();

  // The settings of the last Save As, which the PES writers read.
  ConversionSettings lastConversion() const { return SaveAsConversion(); }
  void SetLastConversion(const ConversionSettings& record) { SetSaveAsConversion(record); }
  // The protocol's transport; not owned. Without one, broadcasts go nowhere
  // and no message is looked at.
  void SetTransport(ProtocolTransport* transport) { transport_ = transport; }
  ProtocolTransport* Transport() const { return transport_; }

  std::vector<DesignPath> selectedFiles;  // files handed to tools, deleted at the end
  std::vector<DesignPath> keptDesigns;    // temporary designs, deleted at the end
  int32_t ansiFontHeight = 0;
  int32_t systemFontHeight = 0;
  int32_t busy = 0;  // the conversation's one flag: a tool is being served
  std::array<uint32_t, 21> filteredMessages{};  // the registered numbers, in the table's order
  int32_t protocolNumber = 0;  // given to tools on their command line; every request carries it

 private:
  ProtocolTransport* transport_ = nullptr;
};

// The module's application object.
CFennickAddinApp& TheApp();

}  // namespace fennick
