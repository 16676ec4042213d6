// The Shift and Trace commands of batch scripts, held keys, and the workspace as the host's
// interactive view manager.
#include "TestTools.h"
#include "AH_BatchRunner.h"
#include "AH_Workspace.h"
#include "plugin/PLUG_InteractiveViewManager.h"
#include "plugin/PLUG_Services.h"
#include "scene/AT_ShiftAndTraceUtil.h"
#include "session/SC_Session.h"
#include "view/VW_View.h"
#include "widgets/BUIAPP_Application.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>

#include <gtest/gtest.h>

namespace {

QString const kScenes = QStringLiteral(ANIM_SOURCE_DIR "/tests/scenes");

class ShiftAndTraceBatch : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(out.isValid());
        runner.setOutputFolder(out.path());
        runner.setOutput(&printed);
    }
    void TearDown() override
    {
        AT_ShiftAndTraceUtil::setShiftAndTraceEnabled(false);
        AT_ShiftAndTraceUtil::crossHairList().clear();
        BUIAPP_Application::instance().releaseAllKeys();
    }
    bool run(QString const &script)
    {
        errors.clear();
        return runner.run(script, QStringLiteral("script.txt"), kScenes, &errors);
    }

    QTemporaryDir out;
    AH_Workspace workspace;
    AH_BatchRunner runner{workspace};
    QString printedText;
    QTextStream printed{&printedText};
    QStringList errors;
};

TEST_F(ShiftAndTraceBatch, AShiftIsSetCheckedUndoneAndSavedWithTheScene)
{
    ASSERT_TRUE(run(QStringLiteral(
        "open two-drawings.xml\n"
        "shift on\n"
        "expect-shift Hand 2 0 0 0 1 1 0 0\n"
        "set-shift Hand 2 30 1.2 0.8 2 2 -3 2\n"
        "expect-undo Shift and Trace\n"
        "expect-shift Hand 2 30 1.2 0.8 2 2 -3 2\n"
        "expect-shift Hand 1 0 0 0 1 1 0 0\n"
        "save shifted.xml\n"
        "undo\n"
        "expect-shift Hand 2 0 0 0 1 1 0 0\n"
        "save unshifted.xml\n"
        "redo\n"
        "expect-shift Hand 2 30 1.2 0.8 2 2 -3 2.00001\n"
        "shift off\n")))
        << errors.join('\n').toStdString();
    EXPECT_FALSE(AT_ShiftAndTraceUtil::shiftAndTraceEnabled());
    EXPECT_EQ(readAll(out.filePath(QStringLiteral("unshifted.xml"))), readAll(kScenes + "/two-drawings.xml"));
    EXPECT_NE(readAll(out.filePath(QStringLiteral("shifted.xml")))
                  .indexOf(R"(<shift element="Hand" drawing="2" rotation="30" pivotX="1.2" pivotY="0.8" scaleX="2" scaleY="2" positionX="-3" positionY="2"/>)"),
              -1);
}

TEST_F(ShiftAndTraceBatch, ChecksThatFailNameTheLineAndWhatWasFound)
{
    EXPECT_FALSE(run(QStringLiteral("open two-drawings.xml\nset-shift Hand 1 5 0 0 1 1 0 0\nexpect-shift Hand 1 6 0 0 1 1 0 0\n")));
    EXPECT_EQ(errors, QStringList({"script.txt:3: expected the shift of Hand drawing 1 to be \"6 0 0 1 1 0 0\", "
                                   "found \"5 0 0 1 1 0 0\""}));
    EXPECT_FALSE(run(QStringLiteral("open two-drawings.xml\nexpect-shift Top 1 0 0 0 1 1 0 0\n")));
    EXPECT_EQ(errors, QStringList({"script.txt:2: expected the name of a drawing element of the scene, not \"Top\""}));
    EXPECT_FALSE(run(QStringLiteral("open two-drawings.xml\nset-shift Hand 1 0 0 0 2e9 1 0 0\nexpect-shift Hand 1 0 0 0 1 1 0 0\n")));
    EXPECT_EQ(errors, QStringList({"script.txt:2: expected a shift of at most 1e9 in every value"}));
    EXPECT_FALSE(run(QStringLiteral("expect-crosshairs 1\n")));
    EXPECT_EQ(errors, QStringList({"script.txt:1: expected 1 cross-hairs, found 0"}));
    AT_ShiftAndTraceUtil::crossHairList().push_back(Math::Point2d(1, 2));
    EXPECT_TRUE(run(QStringLiteral("expect-crosshairs 1\n"))) << errors.join('\n').toStdString();
}

TEST_F(ShiftAndTraceBatch, LinesThatCannotRunAreRefusedBeforeTheScriptStarts)
{
    EXPECT_FALSE(run(QStringLiteral("shift on\nshift maybe\nset-shift Hand 1 0 0 0 1 1 0\n"
                                    "expect-shift Hand 1 0 0 nan 1 1 0 0\nexpect-crosshairs -1\nkey-down Nope\n")));
    EXPECT_EQ(errors.size(), 5) << errors.join('\n').toStdString();
    EXPECT_FALSE(AT_ShiftAndTraceUtil::shiftAndTraceEnabled());  // nothing ran
}

TEST_F(ShiftAndTraceBatch, KeysAreHeldFromKeyDownToKeyUpWithTheirModifiers)
{
    BUIAPP_Application &app = BUIAPP_Application::instance();
    ASSERT_TRUE(run(QStringLiteral("key-down Alt+R\nkey-down Left\n"))) << errors.join('\n').toStdString();
    EXPECT_TRUE(app.isKeyPressed(Qt::Key_R));
    EXPECT_TRUE(app.isKeyPressed(Qt::Key_Alt));
    EXPECT_TRUE(app.isKeyPressed(Qt::Key_Left));
    EXPECT_FALSE(app.isKeyPressed(Qt::Key_Shift));
    ASSERT_TRUE(run(QStringLiteral("key-up Alt+R\n"))) << errors.join('\n').toStdString();
    EXPECT_FALSE(app.isKeyPressed(Qt::Key_R));
    EXPECT_FALSE(app.isKeyPressed(Qt::Key_Alt));
    EXPECT_TRUE(app.isKeyPressed(Qt::Key_Left));
}

TEST_F(ShiftAndTraceBatch, TheWorkspaceRedrawsItsViewForItsOwnFrameOnly)
{
    PLUG_InteractiveViewManager *views = PLUG_Services::getInteractiveViewManager();
    ASSERT_EQ(views, static_cast<PLUG_InteractiveViewManager *>(&workspace));
    workspace.session()->setCurrentFrame(4.5);
    int redraws = 0;
    QObject::connect(workspace.view(), &VW_View::redrawRequested, [&redraws] { ++redraws; });
    views->redrawViewsAtFrame(3);
    EXPECT_EQ(redraws, 0);
    views->redrawViewsAtFrame(4);
    EXPECT_EQ(redraws, 1);
}

TEST_F(ShiftAndTraceBatch, SwitchingShiftAndTraceRedrawsTheView)
{
    int redraws = 0;
    QObject::connect(workspace.view(), &VW_View::redrawRequested, [&redraws] { ++redraws; });
    AT_ShiftAndTraceUtil::setShiftAndTraceEnabled(true);
    EXPECT_EQ(redraws, 1);
    AT_ShiftAndTraceUtil::setShiftAndTraceEnabled(true);  // no change, no redraw
    EXPECT_EQ(redraws, 1);
    AT_ShiftAndTraceUtil::setShiftAndTraceEnabled(false);
    EXPECT_EQ(redraws, 2);
}

TEST(ShiftAndTraceWorkspace, AWorkspaceThatGoesAwayWithdrawsItselfAsTheViewManager)
{
    {
        AH_Workspace workspace;
        EXPECT_NE(PLUG_Services::getInteractiveViewManager(), nullptr);
    }
    EXPECT_EQ(PLUG_Services::getInteractiveViewManager(), nullptr);
}

}  // namespace
