#include "control/design_commands.h"

#include <array>
#include <optional>
#include <vector>

#include "archive/file_operations.h"
#include "control/addin_app.h"
#include "control/addin_ctrl.h"
#include "control/host_automation.h"
#include "core/design.h"
#include "core/design_path.h"
#include "core/embroidery_file.h"
#include "core/file_io.h"
#include "core/format_table.h"
#include "core/global_memory.h"
#include "core/preferences.h"
#include "core/user_interface.h"
#include "resize/resize_engine.h"
#include "tools/auto_baste.h"
#include "tools/bitmap_file.h"
#include "tools/color_sort.h"
#include "tools/design_notes.h"

namespace fennick {
namespace {

constexpr std::array<DesignCommand, 10> kCommands{{
    {kCommandNew, "New", "New design.\nNew"},
    {kCommandOpen, "Open", "Open a design.\n Open design"},
    {kCommandSave, "Save", "Save the design.\nSave"},
    {kCommandAutoBaste, "Auto-Baste", "Auto-Baste design.\nAuto-Baste"},
    {kCommandColorSort, "Color Sort", "Color Sort design.\nColor Sort"},
    {kCommandNotes, "Notes", "Create notes about design.\nCreate notes"},
    {kCommandBitmap, "Bitmap", "Save the design preview as a bitmap.\nCreate Bitmap"},
    {kCommandReduceNeedles, "Reduce Needles", "Reduce the needle count in the design.\nReduce needle count"},
    {kCommandPreferences, "Preferences", "Open the Preferences window.\nPreferences"},
    {kCommandFitHoop, "Fit Hoop", "Fit the Hoop.\nFit Hoop"},
}};

// The host's current design, named with the extension the host gives for
// it. False, with nothing shown, when there is no host or no design.
bool FetchDesign(HostDriver& host, Design& design) {
  if (!ConnectHost(host)) return false;
  int32_t handle = 0;
  const bool got = host->GetDesign(handle);
  if (!got || handle == 0) {
    if (handle != 0) GlobalFree(static_cast<GlobalHandle>(handle));
    return false;
  }
  const auto block = static_cast<GlobalHandle>(handle);
  ParseEmbroideryFile(design, block);
  GlobalFree(block);
  DesignPath path(design.name);
  path.ChangeExtension(host->GetDesignExtension());
  design.name = path.ToString();
  return true;
}

// The host copies or keeps what it is given; the block is freed here all the same.
void ReturnDesign(HostDriver& host, Design& design) {
  const GlobalHandle block = BuildEmbroideryFile(design);
  host->PutDesign(static_cast<int32_t>(block));
  GlobalFree(block);
}

void NewCommand() {
  HostDriver host;
  if (ConnectHost(host)) host->NewDesign();
}

void OpenCommand() {
  HostDriver host;
  if (!ConnectHost(host)) return;
  host->PrepareImport();
  std::vector<std::string> picked;
  {
    const WaitCursor wait;
    picked = CurrentUserInterface().ChooseDesigns();
  }
  for (const std::string& path : picked) {
    Design design;
    ReadDesignFile(design, path);
    if (design.stitches.Empty()) continue;  // passed over in silence
    ReturnDesign(host, design);
  }
}

// The save dialog runs and its answer goes nowhere: saving is the Save and
// SaveAs methods' work. Kept so, as the command has always behaved.
void SaveCommand() {
  HostDriver host;
  Design design;
  if (!FetchDesign(host, design)) return;
  design.NormalizeColorStops();
  CurrentUserInterface().ChooseSaveName(SaveAsRequest(DesignPath(design.name)));
}

// A tool that works on the design in place and gives it back.
template <typename Tool>
void ToolCommand(Tool tool) {
  HostDriver host;
  Design design;
  if (!FetchDesign(host, design) || design.stitches.Empty()) return;
  tool(design);
  ReturnDesign(host, design);
}

void ReduceNeedlesCommand() {
  HostDriver host;
  Design design;
  if (!FetchDesign(host, design) || design.stitches.Empty()) return;
  Design result;
  if (!CurrentUserInterface().ReduceNeedles(design, result) || result.stitches.Empty()) return;
  ReturnDesign(host, result);
}

void FitHoopCommand() {
  const WaitCursor wait;
  HostDriver host;
  Design design;
  if (!FetchDesign(host, design) || design.stitches.Empty()) return;
  int32_t width = 0;
  int32_t height = 0;
  host->GetHoopSize(width, height);
  if (width == 0 || height == 0) {
    ConversionSettings record;
    ReadConversion(DesignPath(design.name).GetExtension(), record);
    width = record.hoopWidth * 10;
    height = record.hoopHeight * 10;
  }
  if (width == 0 || height == 0) return;
  ResizeEngine engine;
  engine.FitToHoop(width / 10, height / 10, 1, design);
  // The host owns the block from here.
  host->PutDesign(static_cast<int32_t>(BuildEmbroideryFile(design)));
}

// Where a note or bitmap goes: the workspace folder when it is on and ready,
// else the design's own folder, else the home folder.
std::optional<std::string> OutputFolder(const DesignPath& design, bool& inWorkspace) {
  std::string workspace;
  inWorkspace = GetWorkspace(workspace) != 0;
  if (inWorkspace && FolderTest(workspace)) return workspace;
  inWorkspace = false;
  if (FolderTest(design.GetDirectory())) return design.GetDirectory();
  const std::string home = HomeDirectory();
  if (!home.empty() && FolderTest(home)) return home;
  return std::nullopt;
}

// Notes and Bitmap: the design's picture or text goes to a file beside it,
// or in the workspace, and the desktop's viewer opens it.
void OutputCommand(bool bitmap) {
  HostDriver host;
  Design design;
  if (!FetchDesign(host, design) || design.stitches.Empty()) return;
  DesignPath path(design.name);
  if (path.GetFileName().empty()) path.SetFileName("Untitled");
  std::vector<uint8_t> bytes;
  if (bitmap) {
    if (MakeBitmap(&design, bytes) != 0) return;
  } else {
    const std::string notes = DesignNotes(design);
    bytes.assign(notes.begin(), notes.end());
  }
  bool inWorkspace = false;
  const std::optional<std::string> folder = OutputFolder(path, inWorkspace);
  if (!folder) return;
  path.SetZipFile("");
  path.SetDirectory(*folder);
  path.ChangeExtension(bitmap ? ".bmp" : ".Txt");
  if (WriteFileBlock(bytes, path, kWriteNoDialog) != 0) return;
  if (inWorkspace) TheApp().keptDesigns.push_back(path);
  CurrentUserInterface().OpenWithDesktop(path.FullName());
}

}  // namespace

std::span<const DesignCommand> DesignCommands() { return kCommands; }

const DesignCommand* FindDesignCommand(int32_t id) {
  for (const DesignCommand& command : kCommands) {
    if (command.id == id) return &command;
  }
  return nullptr;
}

std::string TipText(const std::string& resource) {
  const size_t feed = resource.find('\n');
  return feed == std::string::npos ? std::string() : resource.substr(feed + 1);
}

std::string StatusText(const std::string& resource) { return resource.substr(0, resource.find('\n')); }

bool RunDesignCommand(int32_t id) {
  switch (id) {
    case kCommandNew: NewCommand(); return true;
    case kCommandOpen: OpenCommand(); return true;
    case kCommandSave: SaveCommand(); return true;
    case kCommandAutoBaste: ToolCommand([](Design& design) { AutoBaste(design); }); return true;
    case kCommandColorSort: ToolCommand([](Design& design) { ColorSort(design); }); return true;
    case kCommandNotes: OutputCommand(false); return true;
    case kCommandBitmap: OutputCommand(true); return true;
    case kCommandReduceNeedles: ReduceNeedlesCommand(); return true;
    case kCommandPreferences: CurrentUserInterface().ShowPreferences("Fennick Properties"); return true;
    case kCommandFitHoop: FitHoopCommand(); return true;
    default: return false;
  }
}

}  // namespace fennick
