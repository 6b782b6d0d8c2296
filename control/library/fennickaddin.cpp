// The C boundary of the control library: every exported function of
// include/fennick/fennickaddin.h, over the control, the host table and the
// handle table of the core. Nothing C++ crosses it; no exception leaves it.
#include "fennick/fennickaddin.h"

#include <dlfcn.h>

#include <cstring>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <QApplication>
#include <QPointer>

#include "control/addin_app.h"
#include "control/addin_ctrl.h"
#include "control/design_commands.h"
#include "control/host_automation.h"
#include "control/registration.h"
#include "control/ui/qt_user_interface.h"
#include "control/ui/tool_bar_dialog.h"
#include "core/global_memory.h"
#include "core/user_interface.h"

struct FennickControl {
  fennick::CFennickAddinCtrl control;
  QPointer<fennick::ToolBarDialog> toolBar;  // the host's parent may delete it first
};

namespace {

using fennick::Variant;

constexpr int32_t kNoInterface = static_cast<int32_t>(0x80004003);   // E_POINTER
constexpr int32_t kMemberNotFound = static_cast<int32_t>(0x80020003);  // DISP_E_MEMBERNOTFOUND
constexpr int32_t kClassNotAvailable = static_cast<int32_t>(0x80040111);
constexpr int32_t kUnexpected = static_cast<int32_t>(0x8000FFFF);  // E_UNEXPECTED
constexpr int32_t kTextSize = 4096;

// A text a callback writes into a buffer.
template <typename Call>
std::string TextFrom(Call call) {
  std::vector<char> buffer(kTextSize, '\0');
  call(buffer.data(), kTextSize);
  buffer.back() = '\0';
  return buffer.data();
}

class CallbackHost : public fennick::HostAutomation {
 public:
  explicit CallbackHost(const FennickHostCallbacks& table) : table_(table) {}
  void PrepareImport() override {
    if (table_.PrepareImport != nullptr) table_.PrepareImport(table_.context);
  }
  bool GetDesign(int32_t& hDesign) override {
    return table_.GetDesign != nullptr && table_.GetDesign(table_.context, &hDesign) != 0;
  }
  bool PutDesign(int32_t hDesign) override {
    return table_.PutDesign != nullptr && table_.PutDesign(table_.context, hDesign) != 0;
  }
  bool NewDesign() override { return table_.NewDesign != nullptr && table_.NewDesign(table_.context) != 0; }
  void GetHoopSize(int32_t& width, int32_t& height) override {
    if (table_.GetHoopSize != nullptr) table_.GetHoopSize(table_.context, &width, &height);
  }
  void GetFormatHoop(const std::string& extension, int32_t& width, int32_t& height) override {
    if (table_.GetFormatHoop != nullptr) table_.GetFormatHoop(table_.context, extension.c_str(), &width, &height);
  }
  std::string GetDesignExtension() override { return Text(table_.GetDesignExtension); }
  std::string GetImportExtension() override { return Text(table_.GetImportExtension); }
  std::string GetSaveExtension() override { return Text(table_.GetSaveExtension); }
  void GetConversion(const std::string& extension, fennick::ConversionValues& values) override {
    if (table_.GetConversion != nullptr) table_.GetConversion(table_.context, extension.c_str(), values.data());
  }
  void GetResizeSettings(fennick::ResizeSettings& settings) override {
    if (table_.GetResizeSettings == nullptr) return;
    const auto fields = fennick::ResizeFields(settings);
    int32_t values[9];
    for (size_t i = 0; i < fields.size(); ++i) values[i] = *fields[i];
    table_.GetResizeSettings(table_.context, values);
    for (size_t i = 0; i < fields.size(); ++i) *fields[i] = values[i];
  }

 private:
  std::string Text(void (*get)(void*, char*, int32_t)) {
    if (get == nullptr) return "";
    return TextFrom([&](char* buffer, int32_t size) { get(table_.context, buffer, size); });
  }
  FennickHostCallbacks table_;
};

class CallbackInterface : public fennick::UserInterface {
 public:
  explicit CallbackInterface(const FennickUserInterfaceCallbacks& table) : table_(table) {}
  fennick::MessageAnswer ShowMessage(const std::string& text, const std::string& caption,
                                     fennick::MessageButtons buttons) override {
    using fennick::MessageAnswer;
    using fennick::MessageButtons;
    if (table_.ShowMessage == nullptr) return fennick::SafeAnswer(buttons);
    const int32_t style = buttons == MessageButtons::kOk         ? FENNICK_MB_OK
                          : buttons == MessageButtons::kOkCancel ? FENNICK_MB_OKCANCEL
                          : buttons == MessageButtons::kYesNo    ? FENNICK_MB_YESNO
                                                                 : FENNICK_MB_YESNOCANCEL;
    switch (table_.ShowMessage(table_.context, text.c_str(), caption.c_str(), style)) {
      case FENNICK_IDOK: return MessageAnswer::kOk;
      case FENNICK_IDYES: return MessageAnswer::kYes;
      case FENNICK_IDNO: return MessageAnswer::kNo;
      default: return MessageAnswer::kCancel;
    }
  }
  void SetWaitCursor(bool on) override {
    if (table_.SetWaitCursor != nullptr) table_.SetWaitCursor(table_.context, on ? 1 : 0);
  }
  std::vector<std::string> ChooseDesigns() override {
    std::vector<std::string> paths;
    if (table_.ChooseDesigns == nullptr) return paths;
    std::vector<char> buffer(64 * kTextSize, '\0');
    const int32_t count = table_.ChooseDesigns(table_.context, buffer.data(), static_cast<int32_t>(buffer.size()));
    buffer.back() = buffer[buffer.size() - 2] = '\0';
    for (const char* path = buffer.data(); static_cast<int32_t>(paths.size()) < count && *path != '\0';
         path += std::strlen(path) + 1) {
      paths.emplace_back(path);
    }
    return paths;
  }
  std::optional<std::string> ChooseSaveName(const fennick::SaveDialogRequest& request) override {
    if (table_.ChooseSaveName == nullptr) return std::nullopt;
    int32_t chosen = 0;
    std::string path = TextFrom([&](char* buffer, int32_t size) {
      chosen = table_.ChooseSaveName(table_.context, request.filter.c_str(), request.filterIndex,
                                     request.fileTitle.c_str(), request.folder.c_str(), buffer, size);
    });
    if (chosen == 0 || path.empty()) return std::nullopt;
    return path;
  }
  void ShowPreferences(const std::string& title) override {
    if (table_.ShowPreferences != nullptr) table_.ShowPreferences(table_.context, title.c_str());
  }

 private:
  FennickUserInterfaceCallbacks table_;
};

std::mutex boundaryMutex;
std::unique_ptr<CallbackHost> registeredHost;
std::unique_ptr<CallbackInterface> hostInterface;

Variant FromC(const FennickVariant& value) {
  switch (value.type) {
    case FENNICK_VT_I4: return value.i4;
    case FENNICK_VT_R4: return value.r4;
    case FENNICK_VT_BSTR: return std::string(value.text != nullptr ? value.text : "");
    default: return {};
  }
}

void ToC(const Variant& value, FennickVariant& out) {
  out = {};
  if (value.IsInt()) {
    out.type = FENNICK_VT_I4;
    out.i4 = value.AsInt();
  } else if (value.IsFloat()) {
    out.type = FENNICK_VT_R4;
    out.r4 = value.AsFloat();
  } else if (value.IsString()) {
    const std::string text = value.AsString();
    out.type = FENNICK_VT_BSTR;
    out.text = new char[text.size() + 1];
    std::memcpy(out.text, text.c_str(), text.size() + 1);
  }
}

// The library's own dialogs: Qt's when the host runs a Qt application, else
// none (every dialog closed at once). Called with boundaryMutex held.
void UseLibraryInterface() {
  static std::unique_ptr<fennick::QtUserInterface> qtInterface;
  if (qtInterface == nullptr && qobject_cast<QApplication*>(QCoreApplication::instance()) != nullptr) {
    qtInterface = std::make_unique<fennick::QtUserInterface>();
  }
  fennick::SetUserInterface(qtInterface.get());
}

FennickControl* CreateControl() {
  try {
    const std::lock_guard<std::mutex> lock(boundaryMutex);
    if (hostInterface == nullptr) UseLibraryInterface();
    return new FennickControl;
  } catch (...) {
    return nullptr;
  }
}

// The path of this library, as dlopen would load it.
std::string LibraryPath() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<void*>(&DllRegisterServer), &info) == 0 || info.dli_fname == nullptr) return "";
  return info.dli_fname;
}

// Module start and end, as the library is loaded and unloaded.
__attribute__((constructor)) void ModuleStart() { fennick::TheApp().InitInstance(); }
__attribute__((destructor)) void ModuleEnd() { fennick::TheApp().ExitInstance(); }

}  // namespace

extern "C" {

void DllGetActiveXCLSID(char* buffer, int length) {
  if (buffer == nullptr || length <= 0) return;
  std::strncpy(buffer, fennick::kControlClassId, static_cast<size_t>(length));
  buffer[length - 1] = '\0';
}

int32_t DllRegisterServer(void) {
  try {
    return fennick::RegisterControl(LibraryPath());
  } catch (...) {
    return fennick::SELFREG_E_TYPELIB;
  }
}

int32_t DllUnregisterServer(void) {
  try {
    return fennick::UnregisterControl();
  } catch (...) {
    return fennick::SELFREG_E_TYPELIB;
  }
}

int32_t DllGetClassObject(const char* classId, FennickClassFactory* factory) {
  if (factory == nullptr) return kNoInterface;
  if (classId == nullptr || std::strcmp(classId, fennick::kControlClassId) != 0) return kClassNotAvailable;
  factory->CreateInstance = CreateControl;
  return 0;
}

int32_t DllCanUnloadNow(void) { return fennick::CFennickAddinCtrl::LiveCount() == 0 ? 1 : 0; }

FennickControl* FennickCreateControl(void) { return CreateControl(); }

void FennickDestroyControl(FennickControl* control) {
  if (control == nullptr) return;
  delete control->toolBar.data();
  delete control;
}

int32_t FennickInvoke(FennickControl* control, int32_t dispatchId, const FennickVariant* arguments, int32_t count,
                      FennickVariant* result, int32_t put) {
  if (result != nullptr) *result = {};
  if (control == nullptr) return kNoInterface;
  if (dispatchId < 1 || dispatchId > 17 || (put != 0 && dispatchId > 4)) return kMemberNotFound;
  try {
    fennick::DispatchArguments list;
    for (int32_t i = 0; arguments != nullptr && i < count; ++i) list.push_back(FromC(arguments[i]));
    const Variant value = control->control.Invoke(dispatchId, list, put != 0);
    if (result != nullptr) ToC(value, *result);
    return 0;
  } catch (...) {
    return kUnexpected;
  }
}

void FennickVariantClear(FennickVariant* variant) {
  if (variant == nullptr) return;
  if (variant->type == FENNICK_VT_BSTR) delete[] variant->text;
  *variant = {};
}

void* FennickCreateToolBar(FennickControl* control, void* parent) {
  if (control == nullptr || qobject_cast<QApplication*>(QCoreApplication::instance()) == nullptr) return nullptr;
  try {
    if (control->toolBar == nullptr) {
      control->toolBar = new fennick::ToolBarDialog(control->control, static_cast<QWidget*>(parent));
      control->toolBar->show();
    }
    return control->toolBar.data();
  } catch (...) {
    return nullptr;
  }
}

int32_t FennickSendCommand(FennickControl* control, int32_t commandId) {
  if (control == nullptr || control->toolBar == nullptr) return 0;
  try {
    return control->toolBar->Command(commandId) ? 1 : 0;
  } catch (...) {
    return 0;
  }
}

int32_t FennickCommandText(int32_t commandId, int32_t tip, char* buffer, int32_t size) {
  const fennick::DesignCommand* command = fennick::FindDesignCommand(commandId);
  if (command == nullptr || buffer == nullptr || size <= 0) return 0;
  const std::string text = tip != 0 ? fennick::TipText(command->resource) : command->name;
  std::strncpy(buffer, text.c_str(), static_cast<size_t>(size));
  buffer[size - 1] = '\0';
  return 1;
}

void FennickRegisterHost(const FennickHostCallbacks* host) {
  const std::lock_guard<std::mutex> lock(boundaryMutex);
  fennick::RevokeActiveObject(fennick::kHostClassId);
  registeredHost.reset();
  if (host == nullptr) return;
  registeredHost = std::make_unique<CallbackHost>(*host);
  fennick::RegisterActiveObject(fennick::kHostClassId, registeredHost.get());
}

void FennickRevokeHost(void) { FennickRegisterHost(nullptr); }

void FennickSetUserInterface(const FennickUserInterfaceCallbacks* ui) {
  const std::lock_guard<std::mutex> lock(boundaryMutex);
  hostInterface.reset();
  UseLibraryInterface();
  if (ui == nullptr) return;
  hostInterface = std::make_unique<CallbackInterface>(*ui);
  fennick::SetUserInterface(hostInterface.get());
}

uint32_t FennickGlobalAlloc(uint32_t flags, size_t size) { return fennick::GlobalAlloc(flags, size); }
size_t FennickGlobalSize(uint32_t handle) { return fennick::GlobalSize(handle); }
uint8_t* FennickGlobalLock(uint32_t handle) { return fennick::GlobalLock(handle); }
int32_t FennickGlobalUnlock(uint32_t handle) { return fennick::GlobalUnlock(handle) ? 1 : 0; }
uint32_t FennickGlobalFree(uint32_t handle) { return fennick::GlobalFree(handle); }

}  // extern "C"
