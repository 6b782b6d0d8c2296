// How the core speaks to a person. The windows inject their own; without them
// a headless default writes each message to standard error and answers with
// the safe button, so that nothing ever waits for a click that cannot come.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace fennick {

class Design;

enum class MessageButtons { kOk, kOkCancel, kYesNo, kYesNoCancel };
enum class MessageAnswer { kOk, kCancel, kYes, kNo };

// What a save dialog opens with.
struct SaveDialogRequest {
  std::string filter;      // pairs of "text|pattern|", e.g. "DST files (*.dst)|*.dst|"
  int filterIndex = 1;     // the pair shown first, counted from 1
  std::string fileTitle;   // the name offered, without folder or extension
  std::string folder;      // where the dialog opens; empty for the desktop's choice
};

// Text heights in pixels of the stock variable-pitch and system fonts.
struct FontHeights {
  int32_t ansi = 13;
  int32_t system = 16;
};

class UserInterface {
 public:
  virtual ~UserInterface() = default;
  // A message box with the system's exact text and caption. May be called
  // from any thread.
  virtual MessageAnswer ShowMessage(const std::string& text, const std::string& caption,
                                    MessageButtons buttons) = 0;
  // The wait cursor, on while a long command runs.
  virtual void SetWaitCursor(bool on) = 0;

  // The dialogs the control opens. Without windows each is closed at once:
  // no design picked, no name chosen, nothing shown.
  // The design browser: the designs picked, in the text form of DesignPath.
  virtual std::vector<std::string> ChooseDesigns() { return {}; }
  // A save dialog: the path chosen, or nothing when it was cancelled.
  virtual std::optional<std::string> ChooseSaveName(const SaveDialogRequest&) { return std::nullopt; }
  // The preference sheet, modal, under `title`.
  virtual void ShowPreferences(const std::string& /*title*/) {}
  // A dialog of `text`, OK and Cancel and a check box: the box's state on OK,
  // nothing on Cancel.
  virtual std::optional<bool> AskWithCheckBox(const std::string& /*caption*/, const std::string& /*text*/,
                                              const std::string& /*checkBox*/, bool /*checked*/) {
    return std::nullopt;
  }
  // The folder dialog: the folder chosen, or nothing when it was cancelled.
  virtual std::optional<std::string> ChooseFolder(const std::string& /*title*/, const std::string& /*start*/) {
    return std::nullopt;
  }
  // The Reduce Needles dialog over `design`: true, with the reduced design in
  // `result`, when it ended with OK and a colour was removed.
  virtual bool ReduceNeedles(const Design& /*design*/, Design& /*result*/) { return false; }
  // Opens a file or folder with the desktop's default application; true
  // when that started.
  virtual bool OpenWithDesktop(const std::string& path);
  virtual FontHeights StockFontHeights() { return {}; }
};

// The answer a message box gives when nobody can click: OK, Cancel or No.
MessageAnswer SafeAnswer(MessageButtons buttons);

// The interface in force: the injected one, else the headless default.
UserInterface& CurrentUserInterface();
// Injects `ui` (not owned; it must outlive its use); nullptr restores the default.
void SetUserInterface(UserInterface* ui);

// Holds the wait cursor on for its lifetime.
class WaitCursor {
 public:
  WaitCursor() { CurrentUserInterface().SetWaitCursor(true); }
  ~WaitCursor() { CurrentUserInterface().SetWaitCursor(false); }
  WaitCursor(const WaitCursor&) = delete;
  WaitCursor& operator=(const WaitCursor&) = delete;
};

// While it lives, message boxes show nothing and answer with their safe
// button: for callers that tell what happened in their own words.
class QuietUserInterface : public UserInterface {
 public:
  QuietUserInterface() { SetUserInterface(this); }
  ~QuietUserInterface() override { SetUserInterface(nullptr); }
  QuietUserInterface(const QuietUserInterface&) = delete;
  QuietUserInterface& operator=(const QuietUserInterface&) = delete;
  MessageAnswer ShowMessage(const std::string&, const std::string&, MessageButtons buttons) override {
    return SafeAnswer(buttons);
  }
  void SetWaitCursor(bool) override {}
};

// The user-visible error channel of readers and writers: a message box with
// no caption and only an OK button.
void ReportToUser(const std::string& text);
// Tells the user that `name` passes what a format holds, and how to split it:
// "<name>: <format> holds at most <limit> <what>; this design has <count>:
// split it with <option> <split>".
void ReportFormatLimit(const std::string& name, const char* format, size_t limit, const char* what, size_t count,
                       const char* option, size_t split);

}  // namespace fennick
