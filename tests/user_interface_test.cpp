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

}  // namespace
}  // namespace fennick
