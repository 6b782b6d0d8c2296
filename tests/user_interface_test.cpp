#include "core/user_interface.h"

#include <gtest/gtest.h>

namespace fennick {
namespace {

TEST(UserInterface, HeadlessDefaultWritesToStandardError) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(CurrentUserInterface().ShowMessage("a", "Save Error", MessageButtons::kOk), MessageAnswer::kOk);
  ReportToUser("b");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Save Error: a\nb\n");
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
