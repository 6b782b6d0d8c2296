#include "control/tool_bar.h"

#include <cstdlib>
#include <filesystem>
#include <utility>

#include "control/addin_app.h"
#include "control/hoop_check.h"
#include "control/host_automation.h"
#include "core/embroidery_file.h"
#include "core/file_io.h"
#include "core/global_memory.h"
#include "core/preferences.h"
#include "core/text.h"
#include "core/user_interface.h"
#include "tools/save_pipeline.h"

namespace fennick {
namespace {

// The enumeration of the tool key reads each name and each text into a
// buffer of this size; a value that does not fit ends the enumeration.
constexpr size_t kEnumBuffer = 256;
// The card tool's value is read into a larger buffer.
constexpr size_t kCardToolBuffer = 512;
constexpr char kCardToolValue[] = "Brindlemoor Pockette II";
constexpr char kCardFileList[] = "filelist.tmp";
constexpr char kToolTip[] = "Launch Tool";
// Lower case "open" would hand a program to the desktop's default
// application instead of starting it with its parameters.
constexpr char kStartVerb[] = "Open";

// A value's data as the enumeration gives it: text up to its first zero; a
// number's four bytes read as text.
std::string ValueText(const PreferenceValue& value) {
  std::string text = value.text;
  if (value.isNumber) {
    text.clear();
    for (int shift = 0; shift < 32; shift += 8) text.push_back(static_cast<char>(value.number >> shift));
  }
  return text.substr(0, text.find('\0'));
}

// The first `limit` characters of UTF-8 text; a character is never split.
std::string CutCharacters(const std::string& text, size_t limit) {
  size_t count = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    const bool starts = (static_cast<unsigned char>(text[i]) & 0xC0) != 0x80;
    if (starts && count++ == limit) return text.substr(0, i);
  }
  return text;
}

bool IsToolCommand(int32_t commandId) { return commandId >= kFirstToolCommand && commandId <= kLastToolCommand; }

bool StartDetached(const ToolStart& start) { return DesignPath(start.file).Execute(start.verb, start.parameters); }

}  // namespace

int32_t TakeToolKind(std::string& entry) {
  const int32_t kind = std::atoi(entry.c_str());
  if (kind != 0 && !entry.empty()) entry.erase(0, 1);
  return kind;
}

ToolBarModel::ToolBarModel(int32_t windowWidth, int32_t ownImages, ToolStarter starter)
    : width_(windowWidth), ownImages_(ownImages), starter_(starter ? std::move(starter) : StartDetached) {}

ToolBarModel::~ToolBarModel() {
  for (const DesignPath& file : toolTempFiles) {
    std::error_code ignored;
    std::filesystem::remove(file.FullName(), ignored);
  }
}

void ToolBarModel::LoadTools() {
  toolList.clear();
  for (const PreferenceValue& value : PreferenceStore(PreferenceTree::kMachineTools).Values("")) {
    const std::string data = ValueText(value);
    if (value.name.size() >= kEnumBuffer || data.size() >= kEnumBuffer) break;
    // The card tool's own value: it is reached through a kind 2 entry.
    if (value.name.find("Pockette") == std::string::npos) toolList.push_back(data);
  }

  if (!toolList.empty()) {
    width_ += kToolSeparatorAdvance;
    hasSeparator_ = true;
  }
  // The host may list itself under the key.
  std::erase_if(toolList, [](const std::string& entry) {
    return EqualsIgnoringCase(DesignPath(entry).GetFileName(), "Brindlemoor.exe");
  });

  int32_t n = 0;
  for (const std::string& listed : toolList) {
    if (listed.empty()) continue;
    std::string entry = listed;
    TakeToolKind(entry);
    DesignPath picture(entry);
    picture.ChangeExtension("bmp");
    StitchBitmap image;
    // A tool without its bitmap gets no button and n stays, so every later
    // button's command points one entry too early in toolList. Kept as it
    // always was: a pack without a bitmap is a faulty installation.
    if (image.LoadBmpFile(picture.FullName()) != 0) continue;
    images_.push_back(std::move(image));
    const int32_t imageIndex = ownImages_ + static_cast<int32_t>(images_.size()) - 1;
    // Twenty commands are handled; more buttons are built all the same.
    buttons_.push_back({kFirstToolCommand + n, imageIndex, n});
    width_ += kToolButtonAdvance;
    ++n;
  }
  if (hasSeparator_ && buttons_.empty()) {
    hasSeparator_ = false;
    width_ -= kToolSeparatorAdvance;
  }
}

std::string ToolBarModel::ToolTipText(int32_t commandId, bool wide) const {
  if (!IsToolCommand(commandId)) return {};
  std::string tip = kToolTip;
  const size_t index = static_cast<size_t>(commandId - kFirstToolCommand);
  if (index < toolList.size()) {
    std::string entry = toolList[index];
    TakeToolKind(entry);
    tip = "Launch " + DesignPath(entry).ChangeExtension("");
  }
  return CutCharacters(tip, wide ? 160 : 80);
}

void ToolBarModel::LaunchTool(int32_t commandId) {
  if (!IsToolCommand(commandId)) return;
  const size_t index = static_cast<size_t>(commandId - kFirstToolCommand);
  if (index >= toolList.size()) return;
  std::string entry = toolList[index];
  const int32_t kind = TakeToolKind(entry);

  HostDriver host;
  if (!ConnectHost(host)) return;
  Design design;
  if (kind == 0 || kind == 2) {
    int32_t hDesign = 0;
    if (!host->GetDesign(hDesign) || hDesign == 0) {
      CurrentUserInterface().ShowMessage("The current design page is empty.", "No Design", MessageButtons::kOk);
      return;
    }
    const auto block = static_cast<GlobalHandle>(hDesign);
    ParseEmbroideryFile(design, block);
    GlobalFree(block);
    if (design.stitches.Empty()) {
      CurrentUserInterface().ShowMessage("The design in the current window has no stitches.",
                                         "No Stitches in Design", MessageButtons::kOk);
      return;
    }
  }
  if (kind == 0) {
    // A protocol tool learns the number its requests carry from its command line.
    const DesignPath program(entry);
    starter_({kStartVerb, entry, std::to_string(TheApp().protocolNumber), program.GetDirectory()});
  } else if (kind == 1) {
    starter_({kStartVerb, entry, "", ""});
  }
  const std::string extension = host->GetDesignExtension();
  if (kind == 2) StartCardTool(*host, design, extension);
}

void ToolBarModel::StartCardTool(HostAutomation& host, Design& design, const std::string& extension) {
  std::string cardTool;
  for (const PreferenceValue& value : PreferenceStore(PreferenceTree::kUserTools).Values("")) {
    if (!value.isNumber && EqualsIgnoringCase(value.name, kCardToolValue)) {
      cardTool = ValueText(value);
      break;
    }
  }
  if (cardTool.empty() || cardTool.size() >= kCardToolBuffer) return;
  TakeToolKind(cardTool);
  const DesignPath card(cardTool);
  const std::string& folder = card.GetDirectory();

  DesignPath name(design.name);
  name.SetDirectory(folder);
  name.ChangeExtension(extension);
  design.name = name.ToString();
  ConversionSettings record = HostConversion(host, extension);
  if (!ConfirmHoopForSave(host, design, record)) return;
  std::vector<DesignPath> written;
  if (SaveDesign(std::move(design), &written, 1, nullptr) == 0) return;

  std::string list;
  for (const DesignPath& file : written) list += file.GetFileName() + "\n";
  const std::vector<uint8_t> bytes(list.begin(), list.end());
  if (!WriteFileAtomic(folder + kCardFileList, bytes)) return;
  toolTempFiles.insert(toolTempFiles.end(), written.begin(), written.end());
  starter_({kStartVerb, card.FullName(), kCardFileList, folder});
}

}  // namespace fennick
