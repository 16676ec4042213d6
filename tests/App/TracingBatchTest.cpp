// Tracing in animhost: the batch commands of onion skin, the view's kind and new drawings, the
// actions that menus and plug-ins reach them by, and the host's own menu entries and pencil.
#include "TestTools.h"
#include "AH_BatchRunner.h"
#include "AH_Host.h"
#include "AH_TracingActions.h"
#include "AH_Workspace.h"
#include "action/AC_Manager.h"
#include "command/CO_CommandManager.h"
#include "plugin/PLUG_MenuService.h"
#include "plugin/PLUG_ToolbarService.h"
#include "preference/PR_Preference.h"
#include "scene/MO_Module.h"
#include "session/SC_Session.h"
#include "session/SL_Selection.h"
#include "tool/TO_AbstractToolContext.h"
#include "tool/TO_PencilTool.h"
#include "tool/TO_ToolFactory.h"
#include "view/VW_OnionSkin.h"
#include "view/VW_View.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

QString const kInbetween = QStringLiteral(ANIM_SOURCE_DIR "/examples/scenes/inbetween.xml");

class TracingBatchTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(out.isValid());
        runner.setOutputFolder(out.path());
    }
    void TearDown() override
    {
        tuPref->remove(VW_OnionSkinSettings::framesBeforeKey());
        tuPref->remove(VW_OnionSkinSettings::framesAfterKey());
    }
    bool run(QString const &script)
    {
        errors.clear();
        return runner.run(script, QStringLiteral("script.txt"), QStringLiteral(ANIM_SOURCE_DIR "/examples/scenes"), &errors);
    }
    MO_ElementModule *ball() const { return dynamic_cast<MO_ElementModule *>(workspace.findNode(QStringLiteral("Ball"))); }

    QTemporaryDir out;
    AH_Workspace workspace;
    AH_BatchRunner runner{workspace};
    QStringList errors;
};

TEST_F(TracingBatchTest, BadLinesAreRefusedBeforeAnythingRuns)
{
    QStringList const badLines = {
        QStringLiteral("onion"),
        QStringLiteral("onion maybe"),
        QStringLiteral("onion on off"),
        QStringLiteral("onion-frames 3"),
        QStringLiteral("onion-frames 2 11"),
        QStringLiteral("onion-frames -1 2"),
        QStringLiteral("onion-frames 1.5 2"),
        QStringLiteral("view-kind side"),
        QStringLiteral("new-drawing now"),
        QStringLiteral("expect-drawings Ball"),
        QStringLiteral("expect-drawings Ball -1"),
        QStringLiteral("expect-drawings Ball two"),
        QStringLiteral("expect-exposure Ball 5"),
        QStringLiteral("expect-exposure Ball five 5"),
    };
    for (QString const &bad : badLines) {
        SCOPED_TRACE(bad.toStdString());
        EXPECT_FALSE(run(QStringLiteral("open inbetween.xml\nselect Ball\n") + bad + QStringLiteral("\nnew-drawing\n")));
        ASSERT_EQ(errors.size(), 1) << errors.join('\n').toStdString();
        EXPECT_TRUE(errors[0].startsWith(QStringLiteral("script.txt:3: expected "))) << errors[0].toStdString();
        EXPECT_EQ(ball(), nullptr);  // nothing ran: the scene is still the empty one
    }
}

TEST_F(TracingBatchTest, FailuresWhileRunningStopTheScriptAtTheirLine)
{
    struct Case {
        QString line;
        QString expected;  // part of the message
    };
    std::vector<Case> const cases = {
        {QStringLiteral("select\nnew-drawing"), QStringLiteral("a drawing element to be selected")},
        {QStringLiteral("select Ball-P\nnew-drawing"), QStringLiteral("a drawing element to be selected")},
        {QStringLiteral("expect-drawings Ball 4"), QStringLiteral("expected 4 drawings in \"Ball\", found 3")},
        {QStringLiteral("expect-drawings Ball-P 1"), QStringLiteral("drawing element of the scene, not \"Ball-P\"")},
        {QStringLiteral("expect-exposure Ball 6 1"), QStringLiteral("found \"5\"")},
        {QStringLiteral("expect-exposure Ball 0 1"), QStringLiteral("found \"-\"")},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(c.line.toStdString());
        EXPECT_FALSE(run(QStringLiteral("open inbetween.xml\n") + c.line + QStringLiteral("\nframe 7\n")));
        ASSERT_EQ(errors.size(), 1);
        EXPECT_TRUE(errors[0].contains(QStringLiteral(": expected "))) << errors[0].toStdString();
        EXPECT_TRUE(errors[0].contains(c.expected)) << errors[0].toStdString();
        EXPECT_EQ(workspace.session()->currentFrame(), 1.0);  // the line after did not run
        ASSERT_NE(ball(), nullptr);
        EXPECT_EQ(ball()->drawings().size(), 3u);
    }
}

TEST_F(TracingBatchTest, NewDrawingsAndTheirExposuresRoundTripThroughTheFile)
{
    ASSERT_TRUE(run(QStringLiteral("open inbetween.xml\n"
                                   "frame 3\n"
                                   "select Ball\n"
                                   "new-drawing\n"
                                   "expect-undo New Drawing\n"
                                   "expect-drawings Ball 4\n"
                                   "expect-exposure Ball 2 1\n"
                                   "expect-exposure Ball 3 10\n"
                                   "expect-exposure Ball 4 1\n"
                                   "expect-exposure Ball 5 5\n"
                                   "frame 7\n"
                                   "new-drawing\n"
                                   "expect-exposure Ball 7 11\n"
                                   "expect-exposure Ball 8 5\n"
                                   "save two.xml\n"
                                   "open %1\n"
                                   "expect-drawings Ball 5\n")
                        .arg(out.filePath(QStringLiteral("two.xml")))))
        << errors.join('\n').toStdString();

    ASSERT_TRUE(run(QStringLiteral("open %1\nexpect-exposure Ball 3 10\nexpect-exposure Ball 7 11\nsave again.xml\n")
                        .arg(out.filePath(QStringLiteral("two.xml")))))
        << errors.join('\n').toStdString();
    EXPECT_EQ(readAll(out.filePath(QStringLiteral("again.xml"))), readAll(out.filePath(QStringLiteral("two.xml"))));

    // Undone, the file is the one that was opened.
    ASSERT_TRUE(run(QStringLiteral("open inbetween.xml\nselect Ball\nframe 3\nnew-drawing\nundo\nsave undone.xml\n")))
        << errors.join('\n').toStdString();
    EXPECT_EQ(readAll(out.filePath(QStringLiteral("undone.xml"))), readAll(kInbetween));
}

TEST_F(TracingBatchTest, OnionSkinViewKindAndThePencilThroughTheirLines)
{
    ASSERT_TRUE(run(QStringLiteral("open inbetween.xml\n"
                                   "onion on\n"
                                   "onion-frames 3 1\n"
                                   "view-kind drawing\n")))
        << errors.join('\n').toStdString();
    EXPECT_TRUE(workspace.view()->onionSkin());
    EXPECT_EQ(workspace.view()->viewKind(), TO_AbstractToolContext::DrawingView);
    VW_OnionSkinSettings const settings = VW_OnionSkinSettings::fromPreferences();
    EXPECT_EQ(settings.framesBefore, 3);
    EXPECT_EQ(settings.framesAfter, 1);

    TO_PencilTool::registerTool();
    ASSERT_TRUE(run(QStringLiteral("onion off\n"
                                   "view-kind camera\n"
                                   "frame 5\n"
                                   "select Ball\n"
                                   "tool Pencil\n"
                                   "press scene 0 -0.4\n"
                                   "move scene 0.1 -0.4\n"
                                   "release scene 0.1 -0.35\n"
                                   "expect-undo Pencil Stroke\n"
                                   "expect-drawings Ball 3\n")))
        << errors.join('\n').toStdString();
    EXPECT_FALSE(workspace.view()->onionSkin());
    EXPECT_EQ(workspace.view()->viewKind(), TO_AbstractToolContext::CameraView);
    // The peg stands at (0, -6) field units = (0, -0.375) OGL at frame 5: the scene points less
    // that place, in the drawing.
    std::vector<Math::Point2d> const &points = ball()->oglDrawing(5)->shapes().at(0).points;
    ASSERT_EQ(points.size(), 3u);
    EXPECT_NEAR(points[0].x, 0.0, 1e-3);
    EXPECT_NEAR(points[0].y, -0.025, 1e-3);
    EXPECT_NEAR(points[2].x, 0.1, 1e-3);
    EXPECT_NEAR(points[2].y, 0.025, 1e-3);
    workspace.setTool(QString(), nullptr);
}

TEST_F(TracingBatchTest, TheActionsToggleOnionSkinSwitchTheViewAndMakeDrawings)
{
    AC_Manager actions;
    AH_TracingActions tracing(workspace, &actions);
    ASSERT_TRUE(workspace.open(kInbetween, nullptr));
    bool enabled = false, checked = true;
    QString const onion = QStringLiteral("onionSkinResponder"), toggle = QStringLiteral("onActionOnionSkinToggle()");
    ASSERT_TRUE(actions.actionState(onion, toggle, enabled, checked));
    EXPECT_TRUE(enabled);
    EXPECT_FALSE(checked);
    EXPECT_EQ(actions.trigger(onion, toggle), AC_Result::Handled);
    EXPECT_TRUE(workspace.view()->onionSkin());
    ASSERT_TRUE(actions.actionState(onion, toggle, enabled, checked));
    EXPECT_TRUE(checked);
    EXPECT_EQ(actions.trigger(onion, toggle), AC_Result::Handled);
    EXPECT_FALSE(workspace.view()->onionSkin());

    QString const views = QStringLiteral("tracingResponder");
    EXPECT_EQ(actions.trigger(views, QStringLiteral("onActionDrawingView()")), AC_Result::Handled);
    EXPECT_EQ(workspace.view()->viewKind(), TO_AbstractToolContext::DrawingView);
    ASSERT_TRUE(actions.actionState(views, QStringLiteral("onActionCameraView()"), enabled, checked));
    EXPECT_FALSE(checked);
    EXPECT_EQ(actions.trigger(views, QStringLiteral("onActionCameraView()")), AC_Result::Handled);
    EXPECT_EQ(workspace.view()->viewKind(), TO_AbstractToolContext::CameraView);

    // New Drawing waits for a selected element.
    EXPECT_EQ(actions.trigger(views, QStringLiteral("onActionNewDrawing()")), AC_Result::Disabled);
    ASSERT_TRUE(workspace.selectNodes({QStringLiteral("Ball")}, nullptr));
    EXPECT_EQ(actions.trigger(views, QStringLiteral("onActionNewDrawing()")), AC_Result::Handled);
    EXPECT_EQ(ball()->drawings().size(), 4u);
    EXPECT_EQ(workspace.session()->commandManager()->undoName(), QStringLiteral("New Drawing"));
}

TEST(TracingHost, OffersThePencilAndItsEntriesInTheViewAndInsertMenusAndATracingToolbar)
{
    QTemporaryDir dir;
    AH_Options options;
    options.prefsPath = dir.filePath(QStringLiteral("prefs.xml"));
    options.pluginsDir = dir.filePath(QStringLiteral("no-plugins"));
    AH_Host host;
    host.startup(options);
    EXPECT_NE(TO_ToolFactory::instance().idForName(TO_PencilTool::name()), CX_ToolIds::None);
    auto ids = [](std::vector<PLUG_ActionEntry> const &entries) {
        QStringList list;
        for (PLUG_ActionEntry const &e : entries)
            if (e.kind == PLUG_ActionEntry::Kind::Item)
                list << e.id;
        return list;
    };
    EXPECT_EQ(ids(host.menus()->menu(QStringLiteral("View"))),
              (QStringList{QStringLiteral("ONION_SKIN"), QStringLiteral("CAMERA_VIEW"), QStringLiteral("DRAWING_VIEW")}));
    EXPECT_EQ(ids(host.menus()->menu(QStringLiteral("INSERT_MENU_ID"))), QStringList{QStringLiteral("NEW_DRAWING")});
    PLUG_ToolbarModel::Toolbar const *bar = host.toolbars()->toolbar(QStringLiteral("Tracing"));
    ASSERT_NE(bar, nullptr);
    EXPECT_EQ(ids(bar->entries).value(0), QStringLiteral("ONION_SKIN"));
    EXPECT_EQ(bar->entries.at(0).slot, QStringLiteral("onActionOnionSkinToggle()"));
    EXPECT_EQ(bar->entries.at(0).responderIdentity, QStringLiteral("onionSkinResponder"));
    host.shutdown();
}

} // namespace
