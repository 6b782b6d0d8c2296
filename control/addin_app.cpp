#include "control/addin_app.h"

#include "archive/file_operations.h"
#include "core/user_interface.h"

namespace fennick {

bool CFennickAddinApp::InitInstance() {
  // The profile root, Software\Selvane\FennickAddin, is the preference
  // store's profile tree; nothing is left to set here.
  const FontHeights heights = CurrentUserInterface().StockFontHeights();
  ansiFontHeight = heights.ansi;
  systemFontHeight = heights.system;
  protocolNumber = 10;
  busy = 0;
  for (size_t i = 0; i < filteredMessages.size(); ++i) {
    filteredMessages[i] = RegisterWindowMessage(kProtocolMessages[i].name);
  }
  return true;
}

int CFennickAddinApp::ExitInstance() {
  for (const DesignPath& path : keptDesigns) DeleteDesign(path);
  for (const DesignPath& path : selectedFiles) DeleteDesign(path);
  keptDesigns.clear();
  selectedFiles.clear();
  if (transport_ != nullptr) transport_->Broadcast("QXPlugInStop", 0, 0);
  return 0;
}

CFennickAddinApp& TheApp() {
  // Never destroyed: the module's end runs when static objects may be gone.
  static CFennickAddinApp* const app = new CFennickAddinApp;
  return *app;
}

}  // namespace fennick
