// Calls one of the control's properties or methods against a host with one
// design page and no window, for scripts and demos: designs named on the
// command line go in as blocks, dialogs are answered from options, and what
// comes back is described, or saved with --out.
#include <cstring>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "control/addin_ctrl.h"
#include "control/page_host.h"
#include "core/byte_cursor.h"
#include "core/embroidery_file.h"
#include "core/global_memory.h"
#include "core/text.h"

namespace fennick::cli {
namespace {

// A member of the interface: its dispatch id, the kinds of its arguments
// (l long, f float, s string, d a design file passed as a block) and what it
// gives back (n a number, s a string, d a design block, t a text block, h a
// handle list, - nothing).
struct Member {
  const char* name;
  int32_t id;
  const char* arguments;
  char result;
};

constexpr Member kMembers[] = {
    {"Width", 1, "", 'n'},          {"Height", 2, "", 'n'},
    {"Name", 3, "", 's'},           {"DockingPos", 4, "", 'n'},
    {"FileImport", 5, "", 'h'},     {"FileImportTyped", 6, "s", 'h'},
    {"FitHoop", 7, "llld", 'd'},    {"GetFormatColors", 8, "s", 'd'},
    {"GetWriteFormats", 9, "", 't'}, {"Save", 10, "d", 'd'},
    {"SaveAs", 11, "d", 'd'},       {"SortColorListByHue", 12, "d", 'd'},
    {"TEWillRun", 13, "", 'n'},     {"TESetRun", 14, "", '-'},
    {"TEReSize", 15, "dfff", 'd'},  {"ShowFennickPreferences", 16, "", '-'},
    {"ColorSort", 17, "d", 'd'},
};

// The dialogs and questions, answered as the options say; messages go to
// standard error as the headless interface writes them.
class ScriptedInterface : public UserInterface {
 public:
  MessageAnswer ShowMessage(const std::string& text, const std::string& caption, MessageButtons buttons) override {
    std::cerr << (caption.empty() ? "" : caption + ": ") << text << "\n";
    if (buttons == MessageButtons::kYesNo || buttons == MessageButtons::kYesNoCancel) {
      if (answer) return *answer ? MessageAnswer::kYes : MessageAnswer::kNo;
    }
    return SafeAnswer(buttons);
  }
  void SetWaitCursor(bool) override {}
  std::vector<std::string> ChooseDesigns() override { return picked; }
  std::optional<std::string> ChooseSaveName(const SaveDialogRequest&) override { return saveName; }
  void ShowPreferences(const std::string& title) override { std::cerr << title << ": no windows here\n"; }

  std::vector<std::string> picked;
  std::optional<std::string> saveName;
  std::optional<bool> answer;
};

const Member* FindMember(const std::string& name) {
  for (const Member& member : kMembers) {
    if (EqualsIgnoringCase(name, member.name) || name == std::to_string(member.id)) return &member;
  }
  return nullptr;
}

// A design file as the block a host would pass; 0 after one line when it does not read.
int32_t DesignBlock(const std::string& path) {
  Design design;
  if (!LoadDesign(path, design)) return 0;
  const GlobalHandle block = BuildEmbroideryFile(design);
  if (block == 0) ReportError(path, "has nothing to pass as a design");
  return static_cast<int32_t>(block);
}

std::string DesignLine(Design& design) {
  return "a design of " + std::to_string(design.DisplayedStitchCount()) + " stitches and " +
         std::to_string(design.threads.size()) + " threads" + (design.name.empty() ? "" : ", named " + design.name);
}

// Says what came back; a design is saved as `out` when one is given.
int Describe(const Member& member, const Variant& result, const std::string& out) {
  const auto handle = static_cast<GlobalHandle>(result.AsInt());
  std::cout << member.name << ": ";
  switch (member.result) {
    case '-':
      std::cout << "done\n";
      return 0;
    case 'n':
      std::cout << result.AsInt() << "\n";
      return 0;
    case 's':
      std::cout << result.AsString() << "\n";
      return 0;
    default:
      break;
  }
  if (handle == 0) {
    std::cout << "0\n";
    return 1;
  }
  const std::vector<uint8_t> bytes = GlobalCopyOut(handle);
  GlobalFree(handle);
  if (member.result == 't') {
    const auto* text = reinterpret_cast<const char*>(bytes.data());
    std::cout << "\n" << std::string(text, strnlen(text, bytes.size()));
    return 0;
  }
  if (member.result == 'h') {
    ByteReader list(bytes);
    const uint32_t count = list.U32LE();
    std::cout << count << (count == 1 ? " design\n" : " designs\n");
    for (uint32_t i = 0; i < count; ++i) {
      Design design;
      const GlobalHandle block = list.U32LE();
      ParseEmbroideryFile(design, block);
      GlobalFree(block);
      std::cout << "  " << DesignLine(design) << "\n";
    }
    return 0;
  }
  Design design;
  DecodeEmbroideryFile(design, bytes);
  std::cout << DesignLine(design) << "\n";
  if (out.empty()) return 0;
  ConversionSettings settings;
  if (const int status = SaveAsSettings(out, LowerExtension(out), {}, settings); status != 0) return status;
  return SaveAs(std::move(design), out, settings);
}

}  // namespace

int RunHostCall(const Arguments& arguments) {
  const std::string command = "host-call";
  ScriptedInterface ui;
  DesignPageHost host;
  std::string out;
  bool withHost = true;
  std::vector<std::string> values;
  for (size_t i = 0; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    const bool hasValue = i + 1 < arguments.size();
    if (argument == "--pick" && hasValue) {
      ui.picked.push_back(arguments[++i]);
    } else if (argument == "--save-name" && hasValue) {
      ui.saveName = arguments[++i];
    } else if (argument == "--out" && hasValue) {
      out = arguments[++i];
    } else if (argument == "--page" && hasValue) {
      if (!LoadDesign(arguments[++i], host.page)) return 1;
    } else if (argument == "--hoop" && hasValue) {
      int32_t width = 0, height = 0;
      if (!ParseHoop(arguments[++i], width, height) || width > 10000 || height > 10000) {
        ReportError(command, "--hoop WxH names the page's hoop in whole millimetres");
        return 2;
      }
      host.hoopWidth = width * 10;
      host.hoopHeight = height * 10;
    } else if (argument == "--yes" || argument == "--no") {
      ui.answer = argument == "--yes";
    } else if (argument == "--no-host") {
      withHost = false;
    } else if (argument.rfind("--", 0) == 0) {
      ReportError(command, "unknown argument \"" + argument + "\"");
      return 2;
    } else {
      values.push_back(argument);
    }
  }
  const Member* member = values.empty() ? nullptr : FindMember(values[0]);
  if (member == nullptr) {
    ReportError(command, values.empty() ? "name a method or property" : "no method or property \"" + values[0] + "\"");
    return 2;
  }
  const std::string kinds = member->arguments;
  if (values.size() - 1 != kinds.size()) {
    ReportError(command, std::string(member->name) + " takes " + std::to_string(kinds.size()) + " arguments");
    return 2;
  }
  if (!withHost) RevokeActiveObject(kHostClassId);
  SetUserInterface(&ui);
  DispatchArguments call;
  int status = 0;
  for (size_t i = 0; i < kinds.size() && status == 0; ++i) {
    const std::string& text = values[i + 1];
    if (kinds[i] == 'd') {
      const int32_t block = DesignBlock(text);
      if (block == 0) status = 1;
      call.emplace_back(block);
    } else if (kinds[i] == 's') {
      call.emplace_back(text);
    } else if (kinds[i] == 'f') {
      call.emplace_back(Variant(text).AsFloat());
    } else {
      call.emplace_back(Variant(text).AsInt());
    }
  }
  if (status == 0) {
    CFennickAddinCtrl control;
    status = Describe(*member, control.Invoke(member->id, call), out);
  }
  SetUserInterface(nullptr);
  return status;
}

}  // namespace fennick::cli
