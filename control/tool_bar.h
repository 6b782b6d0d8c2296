// The tool bar dialog's state without a window: the tool packs found under
// the machine's tool key, the buttons that start them, their tips, and the
// start of each kind of tool. The window that shows the bar draws what this
// model holds and routes its commands and tip requests here.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "core/design_path.h"
#include "tools/render/stitch_bitmap.h"

namespace fennick {

class HostAutomation;
class Design;

// The bar's geometry, in pixels, and its image list.
inline constexpr int32_t kToolButtonWidth = 40;
inline constexpr int32_t kToolButtonHeight = 38;
inline constexpr int32_t kToolImageWidth = 32;
inline constexpr int32_t kToolImageHeight = 30;
inline constexpr uint32_t kToolImageMask = 0xC0C0C0;  // 0x00RRGGBB
inline constexpr int32_t kToolImageCapacity = 18;     // grows by one image at a time
// Each button widens the window; the separator before the tool buttons too.
inline constexpr int32_t kToolButtonAdvance = 36;
inline constexpr int32_t kToolSeparatorAdvance = 16;
// The commands of tool buttons: twenty tools at most.
inline constexpr int32_t kFirstToolCommand = 32787;
inline constexpr int32_t kLastToolCommand = 32806;
// The status text of every tool button.
inline constexpr char kToolStatusText[] = "Launch this toolpack.";

// One tool button.
struct ToolButton {
  int32_t command = 0;  // kFirstToolCommand + data
  int32_t image = 0;    // index in the bar's image list
  int32_t data = 0;
  bool operator==(const ToolButton&) const = default;
};

// A program to start, or a file or folder to open, for a tool.
struct ToolStart {
  std::string verb;
  std::string file;
  std::string parameters;
  std::string directory;  // the working folder; empty for none
  bool operator==(const ToolStart&) const = default;
};
// Starts what it is given without waiting for it; true when it started.
using ToolStarter = std::function<bool(const ToolStart&)>;

// The kind a tool entry starts with (the value of its leading digits, 0 for
// none); a non-zero kind is stripped from `entry` as one character.
int32_t TakeToolKind(std::string& entry);

class ToolBarModel {
 public:
  // `windowWidth` is the window's width before tool buttons are added, and
  // `ownImages` the count of the program's own images at the start of the
  // bar's image list. The starter defaults to DesignPath::Execute.
  explicit ToolBarModel(int32_t windowWidth = 195, int32_t ownImages = 0, ToolStarter starter = {});
  // Deletes the designs handed to the card tool.
  ~ToolBarModel();
  ToolBarModel(const ToolBarModel&) = delete;
  ToolBarModel& operator=(const ToolBarModel&) = delete;

  // Reads the tool key into toolList and builds the buttons and the width;
  // called once, when the bar is set up.
  void LoadTools();
  // The handler of the tool commands; any other command is ignored.
  void LaunchTool(int32_t commandId);
  // The tip of a tool button; a narrow tip holds at most 80 characters, a
  // wide one 160.
  std::string ToolTipText(int32_t commandId, bool wide = false) const;

  int32_t Width() const { return width_; }
  bool HasSeparator() const { return hasSeparator_; }
  const std::vector<ToolButton>& Buttons() const { return buttons_; }
  // The tools' images in the order they joined the image list, after the
  // program's own.
  const std::vector<StitchBitmap>& Images() const { return images_; }

  std::vector<std::string> toolList;      // tool entries, in the key's order
  std::vector<DesignPath> toolTempFiles;  // designs written for the card tool

 private:
  void StartCardTool(HostAutomation& host, Design& design, const std::string& extension);

  int32_t width_;
  int32_t ownImages_;
  ToolStarter starter_;
  bool hasSeparator_ = false;
  std::vector<ToolButton> buttons_;
  std::vector<StitchBitmap> images_;
};

}  // namespace fennick
