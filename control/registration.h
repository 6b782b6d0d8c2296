// The control's registration on a desktop without a system registry: one
// file per registered class or type library under
// $XDG_DATA_HOME/fennick/controls/ (default ~/.local/share/...), named after
// its id, holding what a host needs to find and load it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace fennick {

inline constexpr int32_t SELFREG_E_TYPELIB = static_cast<int32_t>(0x80040200);
inline constexpr int32_t SELFREG_E_CLASS = static_cast<int32_t>(0x80040201);

std::filesystem::path ControlRegistrationFolder();
// The type library, then the control's and its property page's classes, each
// naming `libraryPath`. 0, SELFREG_E_TYPELIB or SELFREG_E_CLASS.
int32_t RegisterControl(const std::string& libraryPath);
// Removes what RegisterControl wrote, in the same order; files already gone
// are no failure.
int32_t UnregisterControl();

}  // namespace fennick
