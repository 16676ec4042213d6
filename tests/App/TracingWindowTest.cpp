// Tracing in the window: the View menu and the tracing toolbar drive onion skin and the kind of
// the view through their actions, and the preferences dialog has a page for onion skin.
#include "AH_Host.h"
#include "AH_MainWindow.h"
#include "AH_PreferencesDialog.h"
#include "AH_TracingActions.h"
#include "AH_Workspace.h"
#include "plugin/PLUG_PreferenceUI.h"
#include "preference/PR_Preference.h"
#include "tool/TO_AbstractToolContext.h"
#include "view/VW_OnionSkin.h"
#include "view/VW_View.h"

#include <QAction>
#include <QDoubleSpinBox>
#include <QMenu>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QToolBar>

#include <gtest/gtest.h>

namespace {

class TracingWindowTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        AH_Options options;
        options.prefsPath = dir.filePath(QStringLiteral("prefs.xml"));
        options.pluginsDir = dir.filePath(QStringLiteral("no-plugins"));
        host.startup(options);
        workspace = std::make_unique<AH_Workspace>(host.changeManager());
        tracing = std::make_unique<AH_TracingActions>(*workspace, host.actionManager());
        ASSERT_TRUE(workspace->open(QStringLiteral(ANIM_SOURCE_DIR "/examples/scenes/inbetween.xml"), nullptr));
        window = std::make_unique<AH_MainWindow>(*workspace, host);
    }
    void TearDown() override
    {
        window.reset();
        tracing.reset();
        workspace.reset();
        host.shutdown();
    }
    QAction *menuAction(QString const &menu, QString const &id) const
    {
        auto *m = window->findChild<QMenu *>(menu);
        return m ? m->findChild<QAction *>(id) : nullptr;
    }

    QTemporaryDir dir;
    AH_Host host;
    std::unique_ptr<AH_Workspace> workspace;
    std::unique_ptr<AH_TracingActions> tracing;
    std::unique_ptr<AH_MainWindow> window;
};

TEST_F(TracingWindowTest, TheViewMenuTogglesOnionSkinAndSwitchesTheViewWithCheckMarks)
{
    QAction *onion = menuAction(QStringLiteral("View"), QStringLiteral("ONION_SKIN"));
    QAction *drawing = menuAction(QStringLiteral("View"), QStringLiteral("DRAWING_VIEW"));
    QAction *camera = menuAction(QStringLiteral("View"), QStringLiteral("CAMERA_VIEW"));
    ASSERT_TRUE(onion && drawing && camera);
    EXPECT_FALSE(onion->isChecked());
    EXPECT_TRUE(camera->isChecked());

    onion->trigger();
    EXPECT_TRUE(workspace->view()->onionSkin());
    EXPECT_TRUE(onion->isChecked());
    drawing->trigger();
    EXPECT_EQ(workspace->view()->viewKind(), TO_AbstractToolContext::DrawingView);
    EXPECT_TRUE(drawing->isChecked());
    EXPECT_FALSE(camera->isChecked());

    // A change made elsewhere (a plug-in, a script) shows in the marks too.
    workspace->view()->setOnionSkin(false);
    workspace->view()->setViewKind(TO_AbstractToolContext::CameraView);
    EXPECT_FALSE(onion->isChecked());
    EXPECT_TRUE(camera->isChecked());

    auto *bar = window->findChild<QToolBar *>(QStringLiteral("Tracing"));
    ASSERT_NE(bar, nullptr);
    ASSERT_FALSE(bar->actions().isEmpty());
    bar->actions().front()->trigger();
    EXPECT_TRUE(workspace->view()->onionSkin());
}

TEST(OnionSkinPreferences, TheDrawingPageShowsTheDefaultsAndWritesTheSettingsOnOk)
{
    for (QString const &key : {VW_OnionSkinSettings::framesBeforeKey(), VW_OnionSkinSettings::falloffKey()})
        tuPref->remove(key);
    AH_PreferencesDialog dialog(nullptr);
    QWidget *page = dialog.page(PLUG_PreferenceUI::DrawingPage);
    ASSERT_NE(page, nullptr);
    auto *before = page->findChild<QSpinBox *>(VW_OnionSkinSettings::framesBeforeKey());
    auto *falloff = page->findChild<QDoubleSpinBox *>(VW_OnionSkinSettings::falloffKey());
    ASSERT_TRUE(before && falloff);
    VW_OnionSkinSettings const defaults;
    EXPECT_EQ(before->value(), defaults.framesBefore);
    EXPECT_DOUBLE_EQ(falloff->value(), defaults.falloff);
    EXPECT_EQ(before->maximum(), VW_OnionSkinSettings::kMaxFrames);

    before->setValue(4);
    falloff->setValue(0.8);
    dialog.accept();
    VW_OnionSkinSettings const stored = VW_OnionSkinSettings::fromPreferences();
    EXPECT_EQ(stored.framesBefore, 4);
    EXPECT_DOUBLE_EQ(stored.falloff, 0.8);
    for (QString const &key : {VW_OnionSkinSettings::framesBeforeKey(), VW_OnionSkinSettings::framesAfterKey(),
                               VW_OnionSkinSettings::opacityKey(), VW_OnionSkinSettings::falloffKey()})
        tuPref->remove(key);
}

} // namespace
