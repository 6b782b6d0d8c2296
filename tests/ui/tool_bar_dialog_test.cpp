#include <gtest/gtest.h>

#include <QAction>
#include <QProcess>
#include <QToolButton>
#include <string>
#include <vector>

#include "control/addin_app.h"
#include "control/addin_ctrl.h"
#include "control/design_commands.h"
#include "control/page_host.h"
#include "control/ui/tool_bar_dialog.h"
#include "tests/test_support.h"

namespace fennick {
namespace {

using Texts = std::vector<std::string>;

// The reference pack in the machine tool key, a host with a page, and the
// tools the window starts kept instead of started.
class ToolBarWindow : public testing::Test {
 protected:
  void Register() {
    ASSERT_EQ(QProcess::execute(FENNICK_TOOL, {"--register", QString::fromStdString(scratch.File("etc1")),
                                               FENNICK_TOOL_PACK}),
              0);
  }
  ToolStarter Recorder() {
    return [this](const ToolStart& start) {
      started.push_back(start.file + " " + start.parameters);
      return true;
    };
  }
  test::ScratchFolder scratch;
  CFennickAddinCtrl control;
  Texts started;
};

TEST_F(ToolBarWindow, EachToolPackGetsAButtonWithItsPictureAndTip) {
  Register();
  ToolBarDialog bar(control, nullptr, Recorder());
  const QList<QAction*> actions = bar.Bar().actions();
  ASSERT_EQ(actions.size(), 5);  // the separator, then four tools
  EXPECT_TRUE(actions[0]->isSeparator());
  EXPECT_EQ(control.Width(), 195 + 16 + 4 * 36);
  EXPECT_EQ(bar.width(), control.Width());
  Texts tips;
  for (QAction* action : actions.mid(1)) {
    tips.push_back(action->toolTip().toStdString());
    EXPECT_EQ(action->statusTip(), "Launch this toolpack.");
    const QImage icon = action->icon().pixmap(kToolImageWidth, kToolImageHeight).toImage();
    EXPECT_EQ(icon.pixelColor(0, 0).alpha(), 0) << "the mask colour shows the bar through";
    EXPECT_EQ(bar.Bar().widgetForAction(action)->size(), QSize(kToolButtonWidth, kToolButtonHeight));
  }
  EXPECT_EQ(tips, (Texts{"Launch Mirror", "Launch Auto-Baste", "Launch Color Sort", "Launch Split by Color"}));
  DesignPageHost host;
  host.page = test::DesignOf({{0, 0, 0}, {400, 0, 0}}, {0x2020E0});
  qobject_cast<QToolButton*>(bar.Bar().widgetForAction(actions[3]))->click();
  ASSERT_EQ(started.size(), 1u);
  EXPECT_NE(started[0].find("/Color Sort " + std::to_string(TheApp().protocolNumber)), std::string::npos) << started[0];
}

TEST_F(ToolBarWindow, WithoutToolsTheBarKeepsItsWidthAndStillAnswersCommands) {
  ToolBarDialog bar(control, nullptr, Recorder());
  EXPECT_TRUE(bar.Bar().actions().isEmpty());
  EXPECT_EQ(control.Width(), 195);
  DesignPageHost host;
  host.page = test::DesignOf({{0, 0, 0}, {400, 0, 0}, {0, 300, 0}, {0, 0, STITCH_COLORSTOP}, {-200, 0, 0}},
                             {0x2020E0, 0x20A020});
  const size_t before = host.page.stitches.Size();
  EXPECT_TRUE(bar.Command(kCommandAutoBaste));
  EXPECT_GT(host.page.stitches.Size(), before);
  EXPECT_FALSE(bar.Command(12345));
  EXPECT_TRUE(bar.Command(kFirstToolCommand));  // no tool behind it: nothing starts
  EXPECT_TRUE(started.empty());
}

}  // namespace
}  // namespace fennick
