#include "control/protocol.h"

#include <algorithm>
#include <optional>
#include <string>

#include "control/addin_app.h"
#include "control/host_automation.h"
#include "core/byte_cursor.h"
#include "core/design_path.h"
#include "core/embroidery_file.h"
#include "core/format_table.h"
#include "core/user_interface.h"
#include "threads/colour_conversion.h"
#include "tools/save_pipeline.h"

namespace fennick {
namespace {

// The registered name of a message of the table, by its place there.
const char* Name(size_t place) { return kProtocolMessages[place].name; }

ProtocolTransport& Transport() { return *TheApp().Transport(); }

// Puts a block on the clipboard under `format`; the clipboard owns it after.
// Returns 1, or 0 (the block freed) when the clipboard does not open.
int32_t PutOnClipboard(const RegisteredName& format, GlobalHandle block) {
  ProtocolTransport& transport = Transport();
  if (!transport.OpenClipboard()) {
    GlobalFree(block);
    return 0;
  }
  transport.SetClipboardData(RegisterClipboardFormat(format.name), block);
  transport.CloseClipboard();
  return 1;
}

// The host's current design, named as a tool gets it: a name without
// extension takes the host's design extension. `freeBlock` frees the host's
// block; some works leave it, as they always have.
std::optional<Design> HostDesign(HostAutomation& host, bool freeBlock) {
  int32_t handle = 0;
  if (!host.GetDesign(handle) || handle == 0) return std::nullopt;
  Design design;
  ParseEmbroideryFile(design, static_cast<GlobalHandle>(handle));
  DesignPath path(design.name);
  if (path.GetExtension().empty()) path.ChangeExtension(host.GetDesignExtension());
  design.name = path.ToString();
  if (freeBlock) GlobalFree(static_cast<GlobalHandle>(handle));
  return design;
}

// Connects to the host and hands `work` the host's design; 0 without either.
template <typename Work>
int32_t WithHostDesign(bool freeBlock, Work work) {
  HostDriver host;
  if (!ConnectHost(host)) return 0;
  std::optional<Design> design = HostDesign(*host, freeBlock);
  return design ? work(*host, *design) : 0;
}

}  // namespace

uint32_t RegisterWindowMessage(const std::string& name) {
  for (const RegisteredName& message : kProtocolMessages) {
    if (name == message.name) return message.number;
  }
  return 0;
}

uint32_t RegisterClipboardFormat(const std::string& name) {
  for (const RegisteredName& format : {kEmbroideryFileFormat, kMultEmbroideryFilesFormat}) {
    if (name == format.name) return format.number;
  }
  return 0;
}

std::string MessageName(uint32_t number) {
  for (const RegisteredName& message : kProtocolMessages) {
    if (number == message.number) return message.name;
  }
  return "";
}

int32_t SendCurrentDesign() {
  return WithHostDesign(true, [](HostAutomation&, Design& design) {
    // A tool gets the plain file name: a "Zip:" prefix and a volume label go.
    design.name = DesignPath(design.name).FullName();
    return PutOnClipboard(kEmbroideryFileFormat, BuildEmbroideryFile(design));
  });
}

int32_t SendSelection() {
  return WithHostDesign(false, [](HostAutomation&, Design& design) {
    design.name = DesignPath(design.name).FullName();
    std::vector<Design> list;
    list.push_back(std::move(design));
    const GlobalHandle block = GlobalAllocCopy(EncodeDesignList(list));
    if (block == 0) return 1;
    ProtocolTransport& transport = Transport();
    // Emptied before it is opened, which empties it only when it happens to be open.
    transport.EmptyClipboard();
    if (transport.OpenClipboard()) {
      transport.SetClipboardData(RegisterClipboardFormat(kMultEmbroideryFilesFormat.name), block);
      transport.CloseClipboard();
    } else {
      GlobalFree(block);
    }
    return 1;
  });
}

void TakeDesign() {
  ProtocolTransport& transport = Transport();
  transport.OpenClipboard();
  const GlobalHandle block = transport.GetClipboardData(RegisterClipboardFormat(kEmbroideryFileFormat.name));
  if (block == 0) return;  // the clipboard stays open
  HostDriver host;
  if (!ConnectHost(host)) return;
  Design design;
  ParseEmbroideryFile(design, block);
  GlobalFree(block);
  // A block that holds no stitches is no design: no page is opened for it.
  if (!design.stitches.Empty()) {
    const GlobalHandle copy = BuildEmbroideryFile(design);
    // A tool's design always arrives on a new page; the host owns the block.
    host->NewDesign();
    host->PutDesign(static_cast<int32_t>(copy));
  }
  transport.EmptyClipboard();
  transport.CloseClipboard();
}

void TakeDesigns() {
  HostDriver host;
  if (!ConnectHost(host)) return;
  ProtocolTransport& transport = Transport();
  transport.OpenClipboard();
  const GlobalHandle block = transport.GetClipboardData(RegisterClipboardFormat(kMultEmbroideryFilesFormat.name));
  if (block == 0) return;
  const std::vector<uint8_t> payload = GlobalCopyOut(block);
  std::vector<Design> designs = DecodeDesignList(payload);
  GlobalFree(block);
  transport.EmptyClipboard();
  transport.CloseClipboard();
  // A payload that does not hold every design it counts, or holds a block that
  // is no design, is refused whole: nothing of it is saved.
  const uint32_t count = ByteReader(payload).U32LE();
  const bool whole = designs.size() == count &&
                     std::none_of(designs.begin(), designs.end(), [](const Design& d) { return d.stitches.Empty(); });
  if (designs.empty() || !whole) return;
  UserInterface& ui = CurrentUserInterface();
  const std::optional<bool> openFolder = ui.AskWithCheckBox(
      "Multiple File Save",
      "The tool you ran sent multiple files back to be saved.\n\nPlease click 'OK' to select a folder for saving.",
      "Open Explorer after saving to view or rename the files.", true);
  if (!openFolder) return;
  const PreferenceStore profile(PreferenceTree::kProfile);
  const std::string start = profile.GetString("Directories", "SaveAs", DesignPath(designs[0].name).GetDirectory());
  const std::optional<std::string> folder = ui.ChooseFolder("Select Folder to Store Files", start);
  if (!folder) return;
  profile.SetString("Directories", "SaveAs", *folder);
  for (Design& design : designs) {
    DesignPath path(design.name);
    path.SetDirectory(*folder);
    design.name = path.FullName();
    ConversionSettings settings;
    AskConversion(*host, path.GetExtension(), settings);
    // A tool's designs are never held back by a hoop.
    settings.hoopWidth = settings.hoopHeight = 100000;
    SaveDesign(std::move(design), nullptr, 0, &settings);
  }
  if (*openFolder) CurrentUserInterface().OpenWithDesktop(*folder);
}

int32_t SendWholeFile() {
  return WithHostDesign(true, [](HostAutomation&, Design& design) {
    std::vector<uint8_t> bytes;
    if (ReadDesignBytes(design.name, bytes) != 0) return 0;
    bytes.push_back(0);
    const GlobalHandle block = GlobalAllocCopy(bytes);
    return block == 0 ? 0 : PutOnClipboard(kEmbroideryFileFormat, block);
  });
}

int32_t SendColorArray() {
  return WithHostDesign(false, [](HostAutomation&, Design& design) {
    Design colors;
    colors.name = design.name;
    BuildFormatColorDesign(colors);
    const GlobalHandle block = BuildEmbroideryFile(colors);
    return block == 0 ? 0 : PutOnClipboard(kEmbroideryFileFormat, block);
  });
}

int32_t SendThreadColors() {
  return WithHostDesign(false, [](HostAutomation& host, Design& design) {
    const DesignPath path(design.name);
    ConversionSettings settings;
    AskConversion(host, path.GetExtension(), settings);
    return static_cast<int32_t>(GetFormatColors(path.ToString(), settings));
  });
}

std::vector<uint8_t> FileTypeList() {
  std::vector<uint8_t> list;
  for (const char* name : WritableExtensionsUpper()) {
    list.insert(list.end(), name, name + std::char_traits<char>::length(name) + 1);
  }
  return list;
}

int32_t SendFileTypes() {
  const GlobalHandle block = GlobalAllocCopy(FileTypeList());
  return block == 0 ? 0 : PutOnClipboard(kEmbroideryFileFormat, block);
}

bool FilterMessage(uint32_t message, int32_t wParam, int64_t lParam) {
  CFennickAddinApp& app = TheApp();
  const std::string name = MessageName(message);
  if (wParam != app.protocolNumber || name.empty() || app.Transport() == nullptr) return false;
  ProtocolTransport& transport = *app.Transport();
  // A work that sets busy for its tool, which acknowledges with QXMessageReceived.
  const auto serve = [&](const char* reply, int32_t (*work)()) {
    if (app.busy != 0) return;
    app.busy = 1;
    const int32_t result = work();
    if (result == 0) app.busy = 0;
    transport.Broadcast(reply, result, lParam);
  };
  if (name == Name(0) || name == Name(1) || name == Name(2) || name == Name(3)) {
    serve("QXCallback", SendCurrentDesign);
  } else if (name == "QXGetSelEmb") {
    if (app.busy != 0) return true;
    const int32_t result = SendSelection();
    app.busy = 1;  // even when there was no design: the tool still acknowledges
    transport.Broadcast("QXEmbSelCB", result, lParam);
  } else if (name == "QXRequestSave" || name == "QXReqMultiSave") {
    if (app.busy != 0) return true;
    name == "QXRequestSave" ? TakeDesign() : TakeDesigns();
    transport.Broadcast("QXFileSaved", 0, lParam);
  } else if (name == "Plug-in ended" || name == "QXMessageReceived") {
    app.busy = 0;
  } else if (name == "QXGetWholeFile") {
    serve("QXWholeFile", SendWholeFile);
  } else if (name == "QXReqColorArray") {
    serve("QXColorArray", SendColorArray);
  } else if (name == "QXReqThreadColorArray") {
    serve("QXThreadColorArray", SendThreadColors);
  } else if (name == "QXGetFileTypeList") {
    serve("QXFileTypeList", SendFileTypes);
  }
  return true;
}

}  // namespace fennick
