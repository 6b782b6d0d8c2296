#include "control/addin_ctrl.h"

#include <atomic>
#include <cstring>
#include <vector>

#include "control/addin_app.h"
#include "control/hoop_check.h"
#include "control/host_automation.h"
#include "core/byte_cursor.h"
#include "core/design_path.h"
#include "core/embroidery_file.h"
#include "core/format_table.h"
#include "core/global_memory.h"
#include "core/text.h"
#include "core/user_interface.h"
#include "threads/colour_conversion.h"
#include "tools/color_sort.h"
#include "tools/hue_sort.h"
#include "tools/save_pipeline.h"

namespace fennick {
namespace {

std::atomic<int> liveControls{0};

GlobalHandle AsHandle(int32_t value) { return static_cast<GlobalHandle>(value); }
int32_t AsLong(GlobalHandle handle) { return static_cast<int32_t>(handle); }

// The design a block holds; the block is freed.
Design TakeDesign(int32_t hDesign) {
  Design design;
  ParseEmbroideryFile(design, AsHandle(hDesign));
  GlobalFree(AsHandle(hDesign));
  return design;
}

int32_t NewBlock(Design& design) { return AsLong(BuildEmbroideryFile(design)); }

// A block of a 32-bit count and the handles, little-endian.
int32_t HandleList(const std::vector<int32_t>& handles) {
  std::vector<uint8_t> bytes;
  ByteWriter list(bytes);
  list.U32LE(static_cast<uint32_t>(handles.size()));
  for (const int32_t handle : handles) list.S32LE(handle);
  const GlobalHandle block = GlobalAllocCopy(bytes);
  if (block == 0) {
    for (const int32_t handle : handles) GlobalFree(AsHandle(handle));
  }
  return AsLong(block);
}

// The designs picked in the import dialog, each as a block, the colours
// mapped to `target`'s format where the design's own extension differs.
int32_t ImportBlocks(const std::vector<std::string>& picked, const std::string& target) {
  // The mapping finds its format by a name made of the extension, where a leading dot changes nothing.
  const std::string_view format = std::string_view(target).substr(target.starts_with('.') ? 1 : 0);
  std::vector<int32_t> handles;
  for (const std::string& path : picked) {
    Design design;
    ReadDesignFile(design, path);  // a design that did not read still gives its block
    if (!target.empty() && !DesignPath(design.name).HasExtension(target)) ConvertThreadsForFormat(design, format);
    handles.push_back(NewBlock(design));
  }
  return HandleList(handles);
}

// Save and SaveAs, step by step.
int32_t SaveThroughHost(int32_t hDesign, bool saveAs) {
  HostDriver host;
  if (!ConnectHost(host)) return 0;
  Design design = TakeDesign(hDesign);
  design.NormalizeColorStops();
  DesignPath path(design.name);
  if (saveAs) {
    if (path.GetExtension().empty()) {
      path.ChangeExtension(host->GetSaveExtension());
      design.name = path.ToString();
    }
    const std::optional<std::string> chosen = CurrentUserInterface().ChooseSaveName(SaveAsRequest(path));
    if (!chosen) return 0;
    design.name = *chosen;
    path = DesignPath(design.name);
    PreferenceStore(PreferenceTree::kProfile).SetString("Directories", "SaveAs", path.GetDirectory());
  }
  const std::string extension = path.GetExtension();
  ConversionSettings record = HostConversion(*host, extension);
  if (saveAs) TheApp().SetLastConversion(record);
  if (!ConfirmHoopForSave(*host, design, record)) return 0;
  const int written = SaveDesign(design, nullptr, 1, saveAs ? &record : nullptr);
  if (written < 1) return 0;
  ConvertThreadsForFormat(design, DesignPath(design.name).GetExtension());
  return NewBlock(design);
}

}  // namespace

SaveDialogRequest SaveAsRequest(const DesignPath& path) {
  SaveDialogRequest request;
  std::vector<std::string> extensions;
  WritableExtensions(&extensions);
  for (size_t i = 0; i < extensions.size(); ++i) {
    const std::string& lower = extensions[i];
    request.filter += AsciiUpper(lower) + " files (*." + lower + ")|*." + lower + "|";
    if (path.HasExtension(lower)) request.filterIndex = static_cast<int>(i) + 1;
  }
  request.fileTitle = path.GetStem().empty() ? path.GetFileName() : path.GetStem();
  request.folder = PreferenceStore(PreferenceTree::kProfile).GetString("Directories", "SaveAs", "");
  return request;
}

CFennickAddinCtrl::CFennickAddinCtrl() { ++liveControls; }
CFennickAddinCtrl::~CFennickAddinCtrl() { --liveControls; }
int CFennickAddinCtrl::LiveCount() { return liveControls; }

void CFennickAddinCtrl::SetToolBarSize(int32_t width, int32_t height) {
  toolBarWidth_ = width;
  toolBarHeight_ = height;
}

int32_t CFennickAddinCtrl::FileImport() {
  const WaitCursor wait;
  const std::vector<std::string> picked = CurrentUserInterface().ChooseDesigns();
  return picked.empty() ? 0 : ImportBlocks(picked, "");
}

int32_t CFennickAddinCtrl::FileImportTyped(const std::string& ext) {
  HostDriver host;
  if (!ConnectHost(host)) return 0;
  const WaitCursor wait;
  const std::vector<std::string> picked = CurrentUserInterface().ChooseDesigns();
  if (picked.empty()) return 0;
  std::string target = ext;
  if (target.empty()) target = host->GetDesignExtension();
  if (target.empty()) target = host->GetImportExtension();
  return ImportBlocks(picked, target);
}

int32_t CFennickAddinCtrl::FitHoop(int32_t cx, int32_t cy, int32_t proportional, int32_t hDesign) {
  if (hDesign == 0 || cx == 0 || cy == 0) return 0;
  const WaitCursor wait;
  Design design = TakeDesign(hDesign);
  if (design.stitches.Empty()) return 0;
  ResizeEngine engine;
  engine.FitToHoop(cx / 10, cy / 10, proportional, design);
  return NewBlock(design);
}

int32_t CFennickAddinCtrl::GetFormatColors(const std::string& formatExtension) {
  HostDriver host;
  if (!ConnectHost(host)) return 0;
  DesignPath path;
  path.ChangeExtension(formatExtension);
  ConversionSettings record;
  AskConversion(*host, formatExtension, record);
  return AsLong(fennick::GetFormatColors(path.ToString(), record));
}

int32_t CFennickAddinCtrl::GetWriteFormats() {
  std::vector<std::string> extensions;
  WritableExtensions(&extensions);
  std::string text;
  for (const std::string& extension : extensions) text += extension + "\r\n";
  std::vector<uint8_t> bytes(text.begin(), text.end());
  bytes.push_back(0);
  return AsLong(GlobalAllocCopy(bytes));
}

int32_t CFennickAddinCtrl::Save(int32_t hDesign) { return SaveThroughHost(hDesign, false); }

int32_t CFennickAddinCtrl::SaveAs(int32_t hDesign) { return SaveThroughHost(hDesign, true); }

int32_t CFennickAddinCtrl::SortColorListByHue(int32_t hDesign) {
  if (hDesign == 0) return 0;
  Design design = TakeDesign(hDesign);
  if (design.threads.size() < 3) return 0;
  HueSortThreads(design.threads);
  return NewBlock(design);
}

int32_t CFennickAddinCtrl::TEReSize(int32_t hDes, float rot, float hz, float vt) {
  HostDriver host;
  if (!ConnectHost(host)) return 0;
  ResizeEngine engine;
  ResizeSettings settings;
  host->GetResizeSettings(settings);
  engine.ApplySettings(settings);  // Sensitivity gets its 6
  engine.Load(AsHandle(hDes));
  return AsLong(engine.Resize(rot, hz, vt));
}

void CFennickAddinCtrl::ShowFennickPreferences() { CurrentUserInterface().ShowPreferences("Fennick Preferences"); }

int32_t CFennickAddinCtrl::ColorSort(int32_t hDesign) {
  if (hDesign == 0) return 0;
  Design design = TakeDesign(hDesign);
  if (design.stitches.Empty()) return 0;
  fennick::ColorSort(design);
  return NewBlock(design);
}

Variant CFennickAddinCtrl::Invoke(int32_t dispatchId, const DispatchArguments& arguments, bool propertyPut) {
  const auto at = [&arguments](size_t index) { return index < arguments.size() ? arguments[index] : Variant(); };
  if (propertyPut) return {};
  switch (dispatchId) {
    case 1: return Width();
    case 2: return Height();
    case 3: return Name();
    case 4: return DockingPos();
    case 5: return FileImport();
    case 6: return FileImportTyped(at(0).AsString());
    case 7: return FitHoop(at(0).AsInt(), at(1).AsInt(), at(2).AsInt(), at(3).AsInt());
    case 8: return GetFormatColors(at(0).AsString());
    case 9: return GetWriteFormats();
    case 10: return Save(at(0).AsInt());
    case 11: return SaveAs(at(0).AsInt());
    case 12: return SortColorListByHue(at(0).AsInt());
    case 13: return TEWillRun();
    case 14: TESetRun(); return {};
    case 15: return TEReSize(at(0).AsInt(), at(1).AsFloat(), at(2).AsFloat(), at(3).AsFloat());
    case 16: ShowFennickPreferences(); return {};
    case 17: return ColorSort(at(0).AsInt());
    default: return {};
  }
}

}  // namespace fennick
