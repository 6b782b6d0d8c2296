#include "core/user_interface.h"

#include <gtest/gtest.h>

namespace fennick {
namespace {

TEST(UserInterface, HeadlessDefaultAnswersWithTheSafeButton) {
  testing::internal::CaptureStderr();
  UserInterface& ui = CurrentUserInterface();
  EXPECT_EQ(ui.ShowMessage("a", "Save Error", MessageButtons::kOk), MessageAnswer::kOk);
  EXPECT_EQ(ui.ShowMessage("b", "", MessageButtons::kOkCancel), MessageAnswer::kCancel);
  EXPECT_EQ(ui.ShowMessage("c", "", MessageButtons::kYesNo), MessageAnswer::kNo);
  EXPECT_EQ(ui.ShowMessage("d", "", MessageButtons::kYesNoCancel), MessageAnswer::kCancel);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Save Error: a\nb\nc\nd\n");
}

TEST(UserInterface, InjectedInterfaceTakesTheErrorChannelUntilRemoved) {
  struct Recorder : UserInterface {
    MessageAnswer ShowMessage(const std::string& text, const std::string& caption, MessageButtons) override {
      seen += caption + "|" + text;
      return MessageAnswer::kYes;
    }
    void SetWaitCursor(bool) override {}
    std::string seen;
  } recorder;
  SetUserInterface(&recorder);
  ReportToUser("rose.hus: Failure processing command data.");
  SetUserInterface(nullptr);
  EXPECT_EQ(recorder.seen, "|rose.hus: Failure processing command data.");
  EXPECT_NE(&CurrentUserInterface(), &recorder);
}

}  // namespace
}  // namespace fennick
