// The window as an animator works in it: the timeline's track, key marks, frame keys and playback;
// the view's zoom from the wheel, the keys and the menu, and its pan from a middle drag; files
// (the unsaved-changes question and its three answers, recent files) and redo on Ctrl+Y.
#include "AH_Host.h"
#include "AH_MainWindow.h"
#include "AH_Timeline.h"
#include "AH_Workspace.h"
#include "TestTools.h"
#include "command/CO_CommandManager.h"
#include "plugin/PLUG_MenuService.h"
#include "session/SC_Session.h"
#include "session/TUSceneChangeManager.h"
#include "view/VW_View.h"
#include "view/VW_ViewWidget.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDoubleSpinBox>
#include <QFile>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QWheelEvent>

#include <gtest/gtest.h>

namespace {

// A tool that takes the Left key for itself, as a tool with arrow-key nudges does.
class LeftKeyTool : public TO_Tool {
public:
    using TO_Tool::TO_Tool;
    bool onKeyDown(int key, bool) override { return key == Qt::Key_Left; }
};

// Answers the next modal message box with `button`, and tells which box it was.
void answerNextMessageBox(QMessageBox::StandardButton button, QString *boxName)
{
    QTimer::singleShot(0, [button, boxName] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        *boxName = box->objectName();
        ASSERT_NE(box->button(button), nullptr);
        box->button(button)->click();
    });
}

class WindowWorkTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        registerTestTool<LeftKeyTool>(QStringLiteral("WindowWorkLeftKey"));
        CX_Context::GetInstance().SetData(CX_ToolRecord(), nullptr);
        ASSERT_TRUE(dir.isValid());
        scenePath = dir.filePath(QStringLiteral("arm.xml"));
        ASSERT_TRUE(QFile::copy(QStringLiteral(ANIM_SOURCE_DIR "/examples/scenes/arm.xml"), scenePath));
        ASSERT_TRUE(workspace.open(scenePath, nullptr));
        window = std::make_unique<AH_MainWindow>(workspace, host);
        track = window->findChild<AH_TimelineTrack *>(QStringLiteral("timeline"));
        viewWidget = window->findChild<VW_ViewWidget *>(QStringLiteral("cameraView"));
        ASSERT_NE(track, nullptr);
        ASSERT_NE(viewWidget, nullptr);
        track->resize(606, 34);
        viewWidget->resize(400, 300);
    }
    void TearDown() override
    {
        if (workspace.isModified())
            workspace.session()->commandManager()->setClean();
        window.reset();
    }
    double frame() const { return workspace.session()->currentFrame(); }
    void sendWheel(QPointF const &at, int delta)
    {
        QWheelEvent wheel(at, viewWidget->mapToGlobal(at.toPoint()), QPoint(), QPoint(0, delta), Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(viewWidget, &wheel);
    }
    void sendMouse(QEvent::Type type, QPointF const &at, Qt::MouseButton button, Qt::MouseButtons buttons)
    {
        QMouseEvent event(type, at, viewWidget->mapToGlobal(at.toPoint()), button, buttons, Qt::NoModifier);
        QApplication::sendEvent(viewWidget, &event);
    }

    QTemporaryDir dir;
    QString scenePath;
    AH_Host host;  // not started: no plug-in
    AH_Workspace workspace;
    std::unique_ptr<AH_MainWindow> window;
    AH_TimelineTrack *track = nullptr;
    VW_ViewWidget *viewWidget = nullptr;
};

TEST_F(WindowWorkTest, AClickOrADragOnTheTrackGoesToTheFrameUnderThePointer)
{
    ASSERT_EQ(track->frameCount(), 24);
    for (int f : {1, 7, 13, 24}) {
        SCOPED_TRACE(f);
        QTest::mouseClick(track, Qt::LeftButton, Qt::NoModifier, track->frameCell(f).center().toPoint());
        EXPECT_EQ(frame(), double(f));
        EXPECT_EQ(track->currentFrame(), f);
    }
    // The cells share the track: the middle of the track is the middle of the frames.
    QTest::mouseClick(track, Qt::LeftButton, Qt::NoModifier, QPoint(303 - 5, 17));
    EXPECT_EQ(frame(), 12.0);
    QTest::mouseClick(track, Qt::LeftButton, Qt::NoModifier, QPoint(303 + 5, 17));
    EXPECT_EQ(frame(), 13.0);
    // Beyond the first and the last cell: the first and the last frame.
    QTest::mouseClick(track, Qt::LeftButton, Qt::NoModifier, QPoint(0, 17));
    EXPECT_EQ(frame(), 1.0);
    QTest::mouseClick(track, Qt::LeftButton, Qt::NoModifier, QPoint(605, 17));
    EXPECT_EQ(frame(), 24.0);
    // A drag follows the pointer.
    QTest::mousePress(track, Qt::LeftButton, Qt::NoModifier, track->frameCell(3).center().toPoint());
    QMouseEvent move(QEvent::MouseMove, track->frameCell(20).center(), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(track, &move);
    EXPECT_EQ(frame(), 20.0);
}

TEST_F(WindowWorkTest, FrameKeysStepThroughTheScenesFramesUnlessTheToolTakesThem)
{
    workspace.setFrame(5, nullptr);
    struct Step {
        Qt::Key key;
        double frame;
    } const steps[] = {
        {Qt::Key_Right, 6}, {Qt::Key_Period, 7}, {Qt::Key_Left, 6}, {Qt::Key_Comma, 5},
        {Qt::Key_End, 24}, {Qt::Key_Right, 24}, {Qt::Key_Home, 1}, {Qt::Key_Left, 1},
    };
    for (Step const &step : steps) {
        SCOPED_TRACE(QKeySequence(step.key).toString().toStdString());
        QTest::keyClick(viewWidget, step.key);
        EXPECT_EQ(frame(), step.frame);
        EXPECT_EQ(track->currentFrame(), int(step.frame));
    }
    // A tool that takes Left keeps it; the keys it does not take still step.
    workspace.setFrame(10, nullptr);
    ASSERT_TRUE(workspace.setTool(QStringLiteral("WindowWorkLeftKey"), nullptr));
    QTest::keyClick(viewWidget, Qt::Key_Left);
    EXPECT_EQ(frame(), 10.0);
    QTest::keyClick(viewWidget, Qt::Key_Right);
    EXPECT_EQ(frame(), 11.0);
}

TEST_F(WindowWorkTest, TheTrackMarksTheKeysOfTheSelectedNodesAndTheLengthAndRateAreUndoable)
{
    EXPECT_TRUE(track->keyframes().empty());
    ASSERT_TRUE(workspace.selectNodes({QStringLiteral("UpperArm-P")}, nullptr));
    EXPECT_EQ(track->keyframes(), (std::vector<int>{1, 12}));
    workspace.setFrame(5, nullptr);
    ASSERT_TRUE(workspace.setAttribute(QStringLiteral("UpperArm-P"), QStringLiteral("rotation"), QStringLiteral("0, 0, 10"), nullptr));
    EXPECT_EQ(track->keyframes(), (std::vector<int>{1, 5, 12}));
    workspace.undo();
    EXPECT_EQ(track->keyframes(), (std::vector<int>{1, 12}));
    ASSERT_TRUE(workspace.selectNodes({}, nullptr));
    EXPECT_TRUE(track->keyframes().empty());

    auto *length = window->findChild<QSpinBox *>(QStringLiteral("lengthSpin"));
    auto *rate = window->findChild<QDoubleSpinBox *>(QStringLiteral("rateSpin"));
    ASSERT_NE(length, nullptr);
    ASSERT_NE(rate, nullptr);
    EXPECT_EQ(length->value(), 24);
    EXPECT_EQ(rate->value(), 24.0);
    length->setValue(48);
    EXPECT_EQ(workspace.session()->commandManager()->undoName(), QStringLiteral("Scene Length"));
    EXPECT_EQ(track->frameCount(), 48);
    EXPECT_EQ(window->findChild<QSpinBox *>(QStringLiteral("frameSpin"))->maximum(), 48);
    rate->setValue(12.0);
    EXPECT_EQ(workspace.frameRate(), 12.0);
    workspace.undo();
    EXPECT_EQ(rate->value(), 24.0);
    workspace.undo();
    EXPECT_EQ(length->value(), 24);
    EXPECT_EQ(track->frameCount(), 24);
}

TEST_F(WindowWorkTest, PlayingLoopsOverTheScenesFramesAndStops)
{
    auto *timeline = window->findChild<AH_Timeline *>();
    ASSERT_NE(timeline, nullptr);
    workspace.setFrame(24, nullptr);
    QSignalSpy frames(workspace.session()->changeManager(), &TUSceneChangeManager::currentFrameChanged);
    window->findChild<QToolButton *>(QStringLiteral("playButton"))->click();
    EXPECT_TRUE(timeline->isPlaying());
    ASSERT_TRUE(frames.wait(2000));
    EXPECT_EQ(frame(), 1.0);  // past the last frame comes the first
    ASSERT_TRUE(frames.wait(2000));
    EXPECT_EQ(frame(), 2.0);
    window->findChild<QToolButton *>(QStringLiteral("playButton"))->click();
    EXPECT_FALSE(timeline->isPlaying());
}

TEST_F(WindowWorkTest, TheWheelZoomsAboutThePointerAMiddleDragPansAndTheZoomShows)
{
    VW_View *view = workspace.view();
    auto *label = window->findChild<QLabel *>(QStringLiteral("zoomLabel"));
    ASSERT_NE(label, nullptr);
    EXPECT_EQ(label->text(), QStringLiteral("Zoom 100%"));
    QPointF const pointer(120, 90);
    Math::Point2d under, after;
    ASSERT_TRUE(view->viewToScene(Math::Point2d(pointer.x(), pointer.y()), under));
    sendWheel(pointer, 120);
    EXPECT_DOUBLE_EQ(view->zoom(), 1.25);
    ASSERT_TRUE(view->sceneToView(under, after));
    EXPECT_NEAR(after.x, pointer.x(), 1e-9);
    EXPECT_NEAR(after.y, pointer.y(), 1e-9);
    EXPECT_EQ(label->text(), QStringLiteral("Zoom 125%"));
    sendWheel(pointer, -240);
    EXPECT_NEAR(view->zoom(), 1.25 / (1.25 * 1.25), 1e-12);

    // A middle drag moves the picture with the pointer, and goes nowhere near the tool.
    ASSERT_TRUE(view->sceneToView(under, after));
    sendMouse(QEvent::MouseButtonPress, QPointF(200, 150), Qt::MiddleButton, Qt::MiddleButton);
    sendMouse(QEvent::MouseMove, QPointF(230, 140), Qt::NoButton, Qt::MiddleButton);
    sendMouse(QEvent::MouseButtonRelease, QPointF(230, 140), Qt::MiddleButton, Qt::NoButton);
    Math::Point2d panned;
    ASSERT_TRUE(view->sceneToView(under, panned));
    EXPECT_NEAR(panned.x, after.x + 30, 1e-9);
    EXPECT_NEAR(panned.y, after.y - 10, 1e-9);

    // Space held: the left button drags the picture too.
    QTest::keyPress(viewWidget, Qt::Key_Space);
    sendMouse(QEvent::MouseButtonPress, QPointF(200, 150), Qt::LeftButton, Qt::LeftButton);
    sendMouse(QEvent::MouseMove, QPointF(190, 170), Qt::NoButton, Qt::LeftButton);
    sendMouse(QEvent::MouseButtonRelease, QPointF(190, 170), Qt::LeftButton, Qt::NoButton);
    QTest::keyRelease(viewWidget, Qt::Key_Space);
    ASSERT_TRUE(view->sceneToView(under, after));
    EXPECT_NEAR(after.x, panned.x - 10, 1e-9);
    EXPECT_NEAR(after.y, panned.y + 20, 1e-9);
    // Neither drag reached the view as a press: nothing was selected, no step was made.
    EXPECT_FALSE(view->isPressed());
    EXPECT_FALSE(workspace.session()->commandManager()->canUndo());

    // + zooms in (about the pointer, or the centre when the pointer is elsewhere); the menu's
    // entries fit the scene and come back to 100%.
    double const before = view->zoom();
    QTest::keyClick(viewWidget, Qt::Key_Plus);
    EXPECT_DOUBLE_EQ(view->zoom(), before * 1.25);
    QTest::keyClick(viewWidget, Qt::Key_Minus);
    EXPECT_DOUBLE_EQ(view->zoom(), before);
    QMenu *menu = window->findChild<QMenu *>(QStringLiteral("viewMenu"));
    ASSERT_NE(menu, nullptr);
    for (QAction *action : menu->actions())
        if (action->text().contains(QStringLiteral("100%")))
            action->trigger();
    EXPECT_EQ(view->zoom(), 1.0);
    EXPECT_EQ(view->centre(), Math::Point2d(0.0, 0.0));
    EXPECT_EQ(label->text(), QStringLiteral("Zoom 100%"));
}

TEST_F(WindowWorkTest, ClosingWithUnsavedChangesAsksSaveDiscardOrCancel)
{
    QByteArray const original = readAll(scenePath);
    ASSERT_TRUE(workspace.setAttribute(QStringLiteral("UpperArm-P"), QStringLiteral("rotation"), QStringLiteral("0, 0, 10"), nullptr));
    ASSERT_TRUE(workspace.isModified());
    window->show();
    QString boxName;

    answerNextMessageBox(QMessageBox::Cancel, &boxName);
    EXPECT_FALSE(window->close());
    EXPECT_EQ(boxName, QStringLiteral("unsavedChangesBox"));
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(workspace.isModified());
    EXPECT_EQ(readAll(scenePath), original);

    // Opening another scene asks the same, and Cancel keeps this one.
    answerNextMessageBox(QMessageBox::Cancel, &boxName);
    EXPECT_FALSE(window->openScene(QStringLiteral(ANIM_SOURCE_DIR "/examples/scenes/bones.xml")));
    EXPECT_EQ(workspace.filePath(), scenePath);

    answerNextMessageBox(QMessageBox::Save, &boxName);
    EXPECT_TRUE(window->close());
    EXPECT_FALSE(workspace.isModified());
    QByteArray const saved = readAll(scenePath);
    EXPECT_NE(saved, original);
    EXPECT_TRUE(saved.contains("z=\"10\""));

    window->show();
    ASSERT_TRUE(workspace.setAttribute(QStringLiteral("UpperArm-P"), QStringLiteral("rotation"), QStringLiteral("0, 0, 20"), nullptr));
    answerNextMessageBox(QMessageBox::Discard, &boxName);
    EXPECT_TRUE(window->close());
    EXPECT_EQ(readAll(scenePath), saved);

    // Without changes nothing is asked (a question here would wait for an answer forever).
    workspace.session()->commandManager()->setClean();
    window->show();
    EXPECT_TRUE(window->close());
}

TEST_F(WindowWorkTest, RecentFilesListTheScenesOpenedAndSavedAndRedoAnswersCtrlY)
{
    EXPECT_EQ(window->recentFiles().value(0), QFileInfo(scenePath).absoluteFilePath());
    QString const bones = QStringLiteral(ANIM_SOURCE_DIR "/examples/scenes/bones.xml");
    ASSERT_TRUE(window->openScene(bones));
    QStringList const recent = window->recentFiles();
    ASSERT_GE(recent.size(), 2);
    EXPECT_EQ(recent[0], QFileInfo(bones).absoluteFilePath());
    EXPECT_EQ(recent[1], QFileInfo(scenePath).absoluteFilePath());
    ASSERT_TRUE(window->openScene(scenePath));  // again: first, and only once
    EXPECT_EQ(window->recentFiles().value(0), QFileInfo(scenePath).absoluteFilePath());
    EXPECT_EQ(window->recentFiles().count(QFileInfo(scenePath).absoluteFilePath()), 1);

    QMenu *menu = window->findChild<QMenu *>(QStringLiteral("recentMenu"));
    ASSERT_NE(menu, nullptr);
    emit menu->aboutToShow();
    ASSERT_GE(menu->actions().size(), 2);
    EXPECT_TRUE(menu->actions()[1]->text().endsWith(QStringLiteral("bones.xml")));
    menu->actions()[1]->trigger();
    EXPECT_EQ(workspace.filePath(), QFileInfo(bones).absoluteFilePath());

    // Ctrl+Y as the user types it, in the active window.
    window->show();
    QApplication::setActiveWindow(window.get());
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    ASSERT_TRUE(workspace.selectNodes({QStringLiteral("Root-P")}, nullptr));
    ASSERT_TRUE(workspace.undo());
    ASSERT_TRUE(workspace.session()->commandManager()->canRedo());
    QTest::keyClick(window.get(), Qt::Key_Y, Qt::ControlModifier);
    EXPECT_FALSE(workspace.session()->commandManager()->canRedo());
}

} // namespace

namespace {

// A plug-in's "View" menu adds its entries to the window's View menu, after the zoom entries,
// and takes them away again when its menus change.
TEST_F(WindowWorkTest, APluginsViewMenuJoinsTheWindowsViewMenu)
{
    QMenu *view = window->findChild<QMenu *>(QStringLiteral("viewMenu"));
    ASSERT_NE(view, nullptr);
    int const own = view->actions().size();
    QString const path = dir.filePath(QStringLiteral("view.xml"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("<menu><item id=\"SHOW_IT\" text=\"Show It\" responder=\"Nobody\" slot=\"onActionShow()\"/></menu>\n");
    file.close();
    ASSERT_TRUE(host.menus()->addMenu(QStringLiteral("View"), path));
    int views = 0;
    for (QAction *a : window->menuBar()->actions())
        views += a->text().remove(QLatin1Char('&')) == QLatin1String("View");
    EXPECT_EQ(views, 1);
    ASSERT_EQ(view->actions().size(), own + 2);  // a separator and the entry
    EXPECT_TRUE(view->actions()[own]->isSeparator());
    EXPECT_EQ(view->actions()[own + 1]->text(), QStringLiteral("Show It"));

    // Rebuilt when the plug-in's menus change: the entries are there once.
    ASSERT_TRUE(host.menus()->addMenu(QStringLiteral("Other"), path));
    EXPECT_EQ(view->actions().size(), own + 2);
}

} // namespace
