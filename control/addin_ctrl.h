// The control a host embeds: four properties and thirteen methods, by name
// and by dispatch id 1 to 17. Designs cross as EmbroideryFile blocks by
// handle: a method that takes a handle frees it (the exceptions are noted), a
// handle returned is the caller's. Hoop sizes are in tenths of a millimetre.
// No exception leaves a method; 0 is failure or nothing.
#pragma once

#include <cstdint>
#include <string>

#include "control/variant.h"
#include "core/design_path.h"
#include "core/user_interface.h"

namespace fennick {

inline constexpr char kControlProgId[] = "FENNICKADDIN.FennickAddinCtrl.1";
inline constexpr char kPropertyPageProgId[] = "FENNICKADDIN.FennickAddinPropPage.1";
inline constexpr char kControlTypeName[] = "FennickAddin Control";
// The bar identifier of docking along the top of a frame.
inline constexpr int32_t kDockingTop = 59419;

// The save dialog of Save As: every writable format, the design's own shown
// first, the name without extension, the folder of the last Save As.
SaveDialogRequest SaveAsRequest(const DesignPath& path);

class CFennickAddinCtrl {
 public:
  CFennickAddinCtrl();
  ~CFennickAddinCtrl();
  CFennickAddinCtrl(const CFennickAddinCtrl&) = delete;
  CFennickAddinCtrl& operator=(const CFennickAddinCtrl&) = delete;
  // Controls alive in the module.
  static int LiveCount();

  // Properties 1 to 4: the tool bar window's size in pixels, the name, the dock.
  int32_t Width() const { return toolBarWidth_; }
  int32_t Height() const { return toolBarHeight_; }
  std::string Name() const { return "FennickAddin"; }
  int32_t DockingPos() const { return kDockingTop; }
  // The tool bar sets its window's size as it lays itself out.
  void SetToolBarSize(int32_t width, int32_t height);

  // Methods 5 to 17.
  int32_t FileImport();
  int32_t FileImportTyped(const std::string& ext);
  // With hDesign, cx or cy 0 the block stays with the caller.
  int32_t FitHoop(int32_t cx, int32_t cy, int32_t proportional, int32_t hDesign);
  int32_t GetFormatColors(const std::string& formatExtension);
  int32_t GetWriteFormats();
  // Save, SaveAs and TEReSize leave the block with the caller when no host answers.
  int32_t Save(int32_t hDesign);
  int32_t SaveAs(int32_t hDesign);
  int32_t SortColorListByHue(int32_t hDesign);
  int32_t TEWillRun() { return 1; }
  void TESetRun() {}
  int32_t TEReSize(int32_t hDes, float rot, float hz, float vt);
  void ShowFennickPreferences();
  int32_t ColorSort(int32_t hDesign);

  // A property (ids 1 to 4; putting one is accepted and changes nothing) or a
  // method (5 to 17) by dispatch id, the arguments in the interface's order.
  // An unknown id gives an empty result.
  Variant Invoke(int32_t dispatchId, const DispatchArguments& arguments, bool propertyPut = false);

 private:
  // The tool bar dialog's 130 by 23 dialog units at the default dialog font's
  // base units of 6 by 13 pixels; tool buttons widen it.
  int32_t toolBarWidth_ = 195;
  int32_t toolBarHeight_ = 37;
};

}  // namespace fennick
