#include "core/user_interface.h"

#include <atomic>
#include <cstdio>
#include <mutex>

#include "core/design_path.h"
#include "core/text.h"

namespace fennick {
namespace {

class HeadlessInterface : public UserInterface {
 public:
  MessageAnswer ShowMessage(const std::string& text, const std::string& caption,
                            MessageButtons buttons) override {
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      if (caption.empty()) {
        std::fprintf(stderr, "%s\n", text.c_str());
      } else {
        std::fprintf(stderr, "%s: %s\n", caption.c_str(), text.c_str());
      }
    }
    return SafeAnswer(buttons);
  }
  void SetWaitCursor(bool) override {}

 private:
  std::mutex mutex_;
};

HeadlessInterface headless;
std::atomic<UserInterface*> injected{nullptr};

}  // namespace

bool UserInterface::OpenWithDesktop(const std::string& path) {
  DesignPath target;
  target.SplitName(path);
  return target.Execute("open", "");
}

MessageAnswer SafeAnswer(MessageButtons buttons) {
  switch (buttons) {
    case MessageButtons::kOk: return MessageAnswer::kOk;
    case MessageButtons::kYesNo: return MessageAnswer::kNo;
    case MessageButtons::kOkCancel:
    case MessageButtons::kYesNoCancel: return MessageAnswer::kCancel;
  }
  return MessageAnswer::kCancel;
}

UserInterface& CurrentUserInterface() {
  UserInterface* ui = injected.load();
  return ui != nullptr ? *ui : headless;
}

void SetUserInterface(UserInterface* ui) { injected.store(ui); }

void ReportToUser(const std::string& text) { CurrentUserInterface().ShowMessage(text, "", MessageButtons::kOk); }

void ReportFormatLimit(const std::string& name, const char* format, size_t limit, const char* what, size_t count,
                       const char* option, size_t split) {
  ReportToUser(FormatText("%s: %s holds at most %zu %s; this design has %zu: split it with %s %zu", name.c_str(), format,
                          limit, what, count, option, split));
}

}  // namespace fennick
