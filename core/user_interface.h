// How the core speaks to a person. The windows inject their own; without them
// a headless default writes each message to standard error and answers with
// the safe button, so that nothing ever waits for a click that cannot come.
#pragma once

#include <cstddef>
#include <string>

namespace fennick {

enum class MessageButtons { kOk, kOkCancel, kYesNo, kYesNoCancel };
enum class MessageAnswer { kOk, kCancel, kYes, kNo };

class UserInterface {
 public:
  virtual ~UserInterface() = default;
  // A message box with the system's exact text and caption. May be called
  // from any thread.
  virtual MessageAnswer ShowMessage(const std::string& text, const std::string& caption,
                                    MessageButtons buttons) = 0;
  // The wait cursor, on while a long command runs.
  virtual void SetWaitCursor(bool on) = 0;
};

// The answer a message box gives when nobody can click: OK, Cancel or No.
MessageAnswer SafeAnswer(MessageButtons buttons);

// The interface in force: the injected one, else the headless default.
UserInterface& CurrentUserInterface();
// Injects `ui` (not owned; it must outlive its use); nullptr restores the default.
void SetUserInterface(UserInterface* ui);

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
