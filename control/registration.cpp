#include "control/registration.h"

#include <cstdlib>
#include <system_error>

#include "control/addin_ctrl.h"
#include "control/host_automation.h"
#include "core/file_io.h"

namespace fennick {
namespace {

namespace fs = std::filesystem;

bool WriteEntry(const std::string& id, const std::string& text) {
  std::error_code error;
  fs::create_directories(ControlRegistrationFolder(), error);
  const std::string path = (ControlRegistrationFolder() / (id + ".ini")).string();
  return WriteFileAtomic(path, std::span(reinterpret_cast<const uint8_t*>(text.data()), text.size()));
}

bool RemoveEntry(const std::string& id) {
  std::error_code error;
  fs::remove(ControlRegistrationFolder() / (id + ".ini"), error);
  return !error;
}

}  // namespace

fs::path ControlRegistrationFolder() {
  const char* data = std::getenv("XDG_DATA_HOME");
  const fs::path root =
      data != nullptr && *data != '\0' ? fs::path(data) : fs::path(HomeDirectory()) / ".local" / "share";
  return root / "fennick" / "controls";
}

int32_t RegisterControl(const std::string& libraryPath) {
  const std::string library = "Library=" + libraryPath + "\n";
  if (!WriteEntry(kTypeLibraryId, std::string("[TypeLibrary]\nName=FENNICKADDINLib\nVersion=1.0\nHelpFile=FennickAddin.hlp\n") +
                                      library)) {
    return SELFREG_E_TYPELIB;
  }
  const bool control =
      WriteEntry(kControlClassId, std::string("[Class]\nProgID=") + kControlProgId + "\nTypeName=" + kControlTypeName +
                                      "\nMiscStatus=0x20191\nInsertable=1\nThreading=Apartment\nVersion=1.0\n" + library);
  const bool page = WriteEntry(kPropertyPageClassId, std::string("[Class]\nProgID=") + kPropertyPageProgId +
                                                         "\nTypeName=FennickAddin Property Page\n" + library);
  return control && page ? 0 : SELFREG_E_CLASS;
}

int32_t UnregisterControl() {
  if (!RemoveEntry(kTypeLibraryId)) return SELFREG_E_TYPELIB;
  const bool control = RemoveEntry(kControlClassId);
  const bool page = RemoveEntry(kPropertyPageClassId);
  return control && page ? 0 : SELFREG_E_CLASS;
}

}  // namespace fennick
