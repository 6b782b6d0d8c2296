// The user interface with windows: Qt message boxes with the system's texts,
// the wait cursor, the design browser, the save and folder dialogs, the
// preference sheet and the Reduce Needles dialog.
#pragma once

#include "core/user_interface.h"

namespace fennick {

class QtUserInterface : public UserInterface {
 public:
  // Injects itself for its lifetime.
  QtUserInterface();
  ~QtUserInterface() override;

  MessageAnswer ShowMessage(const std::string& text, const std::string& caption, MessageButtons buttons) override;
  void SetWaitCursor(bool on) override;
  std::vector<std::string> ChooseDesigns() override;
  std::optional<std::string> ChooseSaveName(const SaveDialogRequest& request) override;
  std::optional<bool> AskWithCheckBox(const std::string& caption, const std::string& text, const std::string& checkBox,
                                      bool checked) override;
  std::optional<std::string> ChooseFolder(const std::string& title, const std::string& start) override;
  void ShowPreferences(const std::string& title) override;
  bool ReduceNeedles(const Design& design, Design& result) override;
};

}  // namespace fennick
