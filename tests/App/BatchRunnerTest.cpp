// Batch scripts end to end on a workspace, the workspace's tool switching, and the command line.
#include "AH_BatchRunner.h"
#include "AH_Host.h"
#include "AH_Workspace.h"
#include "TestTools.h"
#include "command/CO_CommandManager.h"
#include "panel/TP_ToolProperties.h"
#include "scene/MO_Node.h"
#include "session/SC_Session.h"
#include "session/SL_Selection.h"
#include "session/TUSceneChangeManager.h"
#include "tool/TO_AbstractTool.h"
#include "tool/TO_AbstractToolContext.h"
#include "tool/TO_ToolFactory.h"
#include "view/VW_View.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTextStream>

#include <gtest/gtest.h>

namespace {

QString const kArm = QStringLiteral(ANIM_SOURCE_DIR "/examples/scenes/arm.xml");

// A tool that records the gestures that reach it, with what the view tells of the modifiers.
class GestureTool : public TO_Tool {
public:
    explicit GestureTool(TO_AbstractToolContext *context) : TO_Tool(context) { last = this; }
    ~GestureTool() override
    {
        if (last == this)
            last = nullptr;
    }
    bool onMouseDown(GR_StylusPoint const &p) override { return record("down", p); }
    bool onMouseMove(std::vector<GR_StylusPoint> const &ps) override { return record("move", ps.back()); }
    bool onMouseUp(GR_StylusPoint const &p) override { return record("up", p); }
    bool onKeyDown(int key, bool) override
    {
        log << QStringLiteral("key %1").arg(key);
        return true;
    }

    static GestureTool *last;
    QStringList log;

private:
    bool record(char const *what, GR_StylusPoint const &p)
    {
        TO_AbstractToolContext *c = context();
        log << QStringLiteral("%1 %2 %3%4%5%6").arg(QLatin1String(what)).arg(p.position().x).arg(p.position().y)
                   .arg(c->extendModifier() ? " shift" : "", c->keepModifier() ? " ctrl" : "", c->thirdModifier() ? " alt" : "");
        return true;
    }
};
GestureTool *GestureTool::last = nullptr;

CX_ToolIds::ID gestureToolId()
{
    return registerTestTool<GestureTool>(QStringLiteral("GestureTool"));
}

class BatchTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(out.isValid());
        runner.setOutputFolder(out.path());
        runner.setOutput(&printed);
    }

    bool run(QString const &script)
    {
        errors.clear();
        return runner.run(script, QStringLiteral("script.txt"), QStringLiteral(ANIM_SOURCE_DIR "/examples/scenes"), &errors);
    }
    QStringList selectionNames() const
    {
        QStringList names;
        for (MO_Node *node : workspace.session()->getSelection()->nodes())
            names << node->instanceName();
        return names;
    }

    QTemporaryDir out;
    AH_Workspace workspace;
    AH_BatchRunner runner{workspace};
    QString printedText;
    QTextStream printed{&printedText};
    QStringList errors;
};

TEST_F(BatchTest, OpensSelectsSetsUndoesAndSavesTheSceneItRead)
{
    ASSERT_TRUE(run(QStringLiteral(
        "# comments and blank lines are skipped\n"
        "\n"
        "open arm.xml\n"
        "select Hand UpperArm-P\n"
        "expect-selection Hand UpperArm-P\n"
        "frame 12\n"
        "expect-frame 12\n"
        "set UpperArm-P rotation 0, 0, 45\n"
        "expect-value UpperArm-P rotation 12 0, 0, 45\n"
        "expect-value UpperArm-P rotation 1 0,0,0\n"
        "expect-keys UpperArm-P rotation 1 12\n"
        "expect-keys UpperArm-P position\n"
        "expect-undo Set Value\n"
        "print UpperArm-P rotation 12\n"
        "undo\n"
        "expect-value UpperArm-P rotation 12 0, 0, -30\n"
        "expect-undo Selection\n"
        "undo\n"
        "expect-selection\n"
        "redo\n"
        "expect-selection Hand UpperArm-P\n"
        "undo\n"
        "save copy.xml\n")))
        << errors.join('\n').toStdString();
    EXPECT_EQ(readAll(out.filePath(QStringLiteral("copy.xml"))), readAll(kArm));
    EXPECT_EQ(printedText, QStringLiteral("UpperArm-P rotation 12: 0, 0, 45\n"));
    EXPECT_FALSE(workspace.isModified());
}

// A plug-in connects to the change manager once, when it loads; it must go on hearing the
// selection and the frame of every scene opened afterwards, and be told of each new scene.
TEST_F(BatchTest, ListenersOfTheChangeManagerHearEverySceneOpenedAfterThem)
{
    TUSceneChangeManager *changes = workspace.session()->changeManager();
    int selections = 0, frames = 0;
    std::vector<TUScene *> scenes;
    QObject::connect(changes, &TUSceneChangeManager::selectionChanged, [&] { ++selections; });
    QObject::connect(changes, &TUSceneChangeManager::currentFrameChanged, [&] { ++frames; });
    QObject::connect(changes, &TUSceneChangeManager::currentSceneChanged, [&](TUScene *scene) { scenes.push_back(scene); });

    ASSERT_TRUE(run(QStringLiteral("open arm.xml\nselect Hand\nframe 3\nopen character.xml\nselect Head\nframe 4\n")))
        << errors.join('\n').toStdString();
    EXPECT_EQ(workspace.session()->changeManager(), changes);
    EXPECT_EQ(selections, 2);
    EXPECT_EQ(frames, 2);
    ASSERT_EQ(scenes.size(), 2u);
    EXPECT_EQ(scenes.back(), workspace.session()->scene());
    EXPECT_NE(scenes.front(), scenes.back());
}

TEST_F(BatchTest, RendersTheViewToPngAtTheSizeAsked)
{
    ASSERT_TRUE(run(QStringLiteral("open arm.xml\nframe 12\nrender shots/arm.png 160 120\nrender same-size.png\n")))
        << errors.join('\n').toStdString();
    QImage const image(out.filePath(QStringLiteral("shots/arm.png")));
    ASSERT_FALSE(image.isNull());
    EXPECT_EQ(image.size(), QSize(160, 120));
    EXPECT_EQ(QImage(out.filePath(QStringLiteral("same-size.png"))).size(), QSize(160, 120));
    // The upper arm's drawing starts at its peg, (-6, 4) field units = (-0.5, 0.25) OGL units,
    // which lands on pixel (79.5 - 80 * 0.5, 59.5 - 80 * 0.25) of a 160 x 120 view; the corner is paper.
    EXPECT_NE(image.pixelColor(41, 40), QColor(Qt::white));
    EXPECT_EQ(image.pixelColor(2, 2), QColor(Qt::white));
}

TEST_F(BatchTest, GesturesReachTheToolThroughTheViewWithModifiers)
{
    gestureToolId();
    ASSERT_TRUE(run(QStringLiteral(
        "open arm.xml\n"
        "view 200 100\n"
        "tool GestureTool\n"
        "expect-tool GestureTool\n"
        "press 10 20 shift\n"
        "move 30.5 40 ctrl+alt\n"
        "release 31 41\n"
        "press scene 0 0 alt\n"
        "release scene 0 0\n"
        "key Left\n")))
        << errors.join('\n').toStdString();
    ASSERT_NE(GestureTool::last, nullptr);
    EXPECT_EQ(GestureTool::last->log,
              QStringList({QStringLiteral("down 10 20 shift"), QStringLiteral("move 30.5 40 ctrl alt"),
                           QStringLiteral("up 31 41"), QStringLiteral("down 99.5 49.5 alt"), QStringLiteral("up 99.5 49.5"),
                           QStringLiteral("key %1").arg(int(Qt::Key_Left))}));
}

TEST_F(BatchTest, AToolChosenThroughTheCurrentToolRecordReachesTheView)
{
    CX_ToolIds::ID const id = gestureToolId();
    CX_ToolRecord record;
    record.toolId = CX_ToolIds::None;
    CX_Context::GetInstance().SetData(record, nullptr);
    EXPECT_EQ(workspace.view()->toolId(), CX_ToolIds::None);
    record.toolId = id;
    CX_Context::GetInstance().SetData(record, nullptr);  // as a plug-in's "select tool" action does
    EXPECT_EQ(workspace.view()->toolId(), id);
    ASSERT_NE(GestureTool::last, nullptr);
    // A new scene makes the tool anew for the new session.
    GestureTool const *before = GestureTool::last;
    ASSERT_TRUE(run(QStringLiteral("open arm.xml\n")));
    EXPECT_EQ(workspace.view()->toolId(), id);
    EXPECT_NE(GestureTool::last, before);
}

// Each bad line is refused with its script and line, and nothing of the script runs.
TEST_F(BatchTest, BadLinesAreEachRefusedWithTheirLineAndNothingRuns)
{
    QStringList const badLines = {
        QStringLiteral("jump 1 2"),
        QStringLiteral("frame"),
        QStringLiteral("frame abc"),
        QStringLiteral("frame nan"),
        QStringLiteral("frame inf"),
        QStringLiteral("frame -inf"),
        QStringLiteral("press 1"),
        QStringLiteral("press 1 2 hyper"),
        QStringLiteral("press nan 2"),
        QStringLiteral("move 1 inf"),
        QStringLiteral("release scene 1"),
        QStringLiteral("view -1 5"),
        QStringLiteral("view 5 20000"),
        QStringLiteral("render x.png 100"),
        QStringLiteral("render x.png 0 10"),
        QStringLiteral("key"),
        QStringLiteral("key NoSuchKey"),
        QStringLiteral("key Ctrl+"),
        QStringLiteral("set Hand"),
        QStringLiteral("undo now"),
        QStringLiteral("pref someKey bool maybe"),
        QStringLiteral("pref someKey int 1.5"),
        QStringLiteral("pref someKey double nan"),
        QStringLiteral("pref someKey colour red"),
        QStringLiteral("print Hand rotation"),
        QStringLiteral("print Hand rotation soon"),
        QStringLiteral("expect-value Hand rotation nan 0"),
        QStringLiteral("expect-keys Hand"),
        QStringLiteral("expect-keys Hand rotation 1 twelve"),
        QStringLiteral("expect-keys Hand rotation 1.5"),
        QStringLiteral("open \"arm.xml"),
        QStringLiteral("save a.xml b.xml"),
        QStringLiteral("widget go"),
        QStringLiteral("widget flag check maybe"),
        QStringLiteral("widget count value nan"),
        QStringLiteral("widget count value 1 2"),
        QStringLiteral("widget go click twice"),
        QStringLiteral("zoom"),
        QStringLiteral("zoom 0"),
        QStringLiteral("zoom 65"),
        QStringLiteral("zoom nan"),
        QStringLiteral("zoom 2 10"),
        QStringLiteral("zoom 2 10 inf"),
        QStringLiteral("pan 1"),
        QStringLiteral("pan 1 nan"),
        QStringLiteral("fit now"),
        QStringLiteral("reset-view 1"),
        QStringLiteral("length 0"),
        QStringLiteral("length 2.5"),
        QStringLiteral("length 100001"),
        QStringLiteral("rate 0"),
        QStringLiteral("rate -24"),
        QStringLiteral("rate 1001"),
        QStringLiteral("rate inf"),
        QStringLiteral("expect-zoom big"),
    };
    for (QString const &bad : badLines) {
        SCOPED_TRACE(bad.toStdString());
        EXPECT_FALSE(run(QStringLiteral("open arm.xml\nselect Hand\n") + bad + QStringLiteral("\nsave never.xml\n")));
        ASSERT_EQ(errors.size(), 1) << errors.join('\n').toStdString();
        EXPECT_TRUE(errors[0].startsWith(QStringLiteral("script.txt:3: expected "))) << errors[0].toStdString();
        // Nothing ran: the scene is still the empty one and nothing was written.
        EXPECT_EQ(workspace.findNode(QStringLiteral("Hand")), nullptr);
        EXPECT_TRUE(selectionNames().isEmpty());
        EXPECT_FALSE(QFile::exists(out.filePath(QStringLiteral("never.xml"))));
    }
    // Every bad line of a script is reported, not only the first.
    EXPECT_FALSE(run(QStringLiteral("frame x\nfly\nframe 2\n")));
    EXPECT_EQ(errors.size(), 2);
}

// Checking a script reads it as a run does first, and runs nothing.
TEST_F(BatchTest, CheckingAScriptGivesTheMessagesOfARunAndRunsNothing)
{
    QString const good = QStringLiteral("open arm.xml\nframe 12\nsave checked.xml\n");
    QStringList messages;
    EXPECT_TRUE(AH_BatchRunner::check(good, QStringLiteral("script.txt"), &messages));
    EXPECT_TRUE(messages.isEmpty());
    EXPECT_EQ(workspace.findNode(QStringLiteral("Hand")), nullptr);
    EXPECT_FALSE(QFile::exists(out.filePath(QStringLiteral("checked.xml"))));

    QString const bad = QStringLiteral("frame x\nfly\nframe 3e9\nsave a.xml\n");
    EXPECT_FALSE(AH_BatchRunner::check(bad, QStringLiteral("script.txt"), &messages));
    EXPECT_FALSE(run(bad));
    EXPECT_EQ(messages, errors);
    EXPECT_EQ(messages.size(), 3);
}

// Frames beyond the frame limits (SC_Frames) are refused wherever a line takes one, with the
// limits in the message, before anything runs.
TEST_F(BatchTest, FramesBeyondTheLimitsAreRefusedWithTheLimitsNamed)
{
    QStringList const badLines = {
        QStringLiteral("frame 3e9"),
        QStringLiteral("frame -3e9"),
        QStringLiteral("frame 1000000.5"),
        QStringLiteral("frame 2147483648"),
        QStringLiteral("frame 1e300"),
        QStringLiteral("expect-frame -1000001"),
        QStringLiteral("print Hand rotation 1e10"),
        QStringLiteral("expect-value Hand rotation 3e9 0, 0, 0"),
        QStringLiteral("expect-keys Hand rotation 1 2147483647"),
        QStringLiteral("expect-keys Hand rotation -1000001"),
    };
    for (QString const &bad : badLines) {
        SCOPED_TRACE(bad.toStdString());
        EXPECT_FALSE(run(QStringLiteral("open arm.xml\nframe 5\n") + bad + QStringLiteral("\n")));
        ASSERT_EQ(errors.size(), 1) << errors.join('\n').toStdString();
        EXPECT_TRUE(errors[0].startsWith(QStringLiteral("script.txt:3: expected "))) << errors[0].toStdString();
        EXPECT_TRUE(errors[0].contains(QStringLiteral("from -1000000 to 1000000"))) << errors[0].toStdString();
        EXPECT_EQ(workspace.findNode(QStringLiteral("Hand")), nullptr);
        EXPECT_EQ(workspace.session()->currentFrame(), 1.0);
    }
    // The limits themselves are frames a line may name; the current frame stays within the
    // scene's own frames, a narrower range, checked while the script runs.
    ASSERT_TRUE(run(QStringLiteral("open arm.xml\nframe 7\nprint Hand rotation 1000000\n"
                                   "print Hand rotation -1000000\n")))
        << errors.join('\n').toStdString();
    EXPECT_FALSE(run(QStringLiteral("open arm.xml\nframe 1000000\n")));
    ASSERT_EQ(errors.size(), 1);
    EXPECT_TRUE(errors[0].contains(QStringLiteral("expected a frame of the scene"))) << errors[0].toStdString();
    QString why;
    EXPECT_FALSE(workspace.setFrame(3e9, &why));
    EXPECT_TRUE(why.contains(QStringLiteral("from -1000000 to 1000000"))) << why.toStdString();
    EXPECT_EQ(workspace.session()->currentFrame(), 1.0);  // as the scene opened: neither frame was taken
}

// Lines that read well but fail when they run stop the script there, naming the line.
TEST_F(BatchTest, FailuresWhileRunningStopTheScriptAtTheirLine)
{
    struct Case {
        QString line;
        QString expected;  // part of the message
    };
    std::vector<Case> const cases = {
        {QStringLiteral("select Hand Nobody"), QStringLiteral("\"Nobody\"")},
        {QStringLiteral("set Hand rotation banana"), QStringLiteral("\"banana\"")},
        {QStringLiteral("set Hand noSuchAttr 1"), QStringLiteral("\"noSuchAttr\"")},
        {QStringLiteral("set Nobody rotation 1"), QStringLiteral("\"Nobody\"")},
        {QStringLiteral("tool NoSuchTool"), QStringLiteral("\"NoSuchTool\"")},
        {QStringLiteral("redo"), QStringLiteral("a step to redo")},
        {QStringLiteral("expect-selection Hand"), QStringLiteral("found \"Forearm\"")},
        {QStringLiteral("expect-value Hand position 1 1, 2, 3"), QStringLiteral("found \"0, 0, 0\"")},
        {QStringLiteral("expect-keys UpperArm-P rotation 1"), QStringLiteral("found \"1 12\"")},
        {QStringLiteral("expect-keys Hand noSuchAttr"), QStringLiteral("\"noSuchAttr\"")},
        {QStringLiteral("expect-frame 3"), QStringLiteral("frame 3")},
        {QStringLiteral("frame 100000"), QStringLiteral("a frame of the scene, from 1 to 24, not 100000")},
        {QStringLiteral("frame 0.5"), QStringLiteral("from 1 to 24, not 0.5")},
        {QStringLiteral("expect-zoom 2"), QStringLiteral("found 1")},
        {QStringLiteral("open missing.xml"), QStringLiteral("missing.xml")},
        {QStringLiteral("action SomeResponder onActionDo()"), QStringLiteral("actions")},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(c.line.toStdString());
        EXPECT_FALSE(run(QStringLiteral("open arm.xml\nselect Forearm\n") + c.line + QStringLiteral("\nselect Hand\n")));
        ASSERT_EQ(errors.size(), 1);
        EXPECT_TRUE(errors[0].startsWith(QStringLiteral("script.txt:3: expected "))) << errors[0].toStdString();
        EXPECT_TRUE(errors[0].contains(c.expected)) << errors[0].toStdString();
        EXPECT_EQ(selectionNames(), QStringList{QStringLiteral("Forearm")});  // the line after did not run
        EXPECT_EQ(workspace.session()->commandManager()->undoName(), QStringLiteral("Selection"));
    }
}

TEST_F(BatchTest, ABadSceneFileIsReportedWithItsOwnLine)
{
    QFile bad(out.filePath(QStringLiteral("bad.xml")));
    ASSERT_TRUE(bad.open(QIODevice::WriteOnly));
    bad.write("<?xml version=\"1.0\"?>\n<scene version=\"1\">\n <group name=\"Top\">\n  <node type=\"BOGUS\" name=\"x\"/>\n");
    bad.close();
    EXPECT_FALSE(runner.run(QStringLiteral("open bad.xml\n"), QStringLiteral("s.txt"), out.path(), &errors));
    ASSERT_EQ(errors.size(), 1);
    EXPECT_TRUE(errors[0].startsWith(QStringLiteral("s.txt:1: expected a scene file that reads: "))) << errors[0].toStdString();
    EXPECT_TRUE(errors[0].contains(QStringLiteral("bad.xml:3: expected <metrics>"))) << errors[0].toStdString();

    errors.clear();
    EXPECT_FALSE(runner.runFile(out.filePath(QStringLiteral("no-script.txt")), &errors));
    ASSERT_EQ(errors.size(), 1);
    EXPECT_TRUE(errors[0].contains(QStringLiteral("no-script.txt")));
}

// The panel of the gesture tool: a form with a check box, a line, a spin box and a button.
class GesturePanel : public TP_ToolPropertiesPanel {
public:
    GesturePanel(TP_ToolPropertiesReceiver *receiver, QString ui) : TP_ToolPropertiesPanel(receiver), ui_(std::move(ui)) {}
    int clicks = 0;

protected:
    void load_internal() override
    {
        if (QWidget *content = createContentWidget(ui_))
            QObject::connect(content->findChild<QPushButton *>(QStringLiteral("go")), &QPushButton::clicked, [this] { ++clicks; });
    }

private:
    QString ui_;
};

class GesturePanelFactory : public TP_ToolPropertiesPanelFactory {
public:
    GesturePanelFactory(QString ui, GesturePanel **made) : ui_(std::move(ui)), made_(made) {}
    void create(TP_ToolPropertiesReceiver *receiver) override
    {
        auto *panel = new GesturePanel(receiver, ui_);
        panel->load();
        registerPanelForTool(receiver, gestureToolId(), panel);
        addPanelInPlaceholder(receiver, panel);
        *made_ = panel;
    }

private:
    QString ui_;
    GesturePanel **made_;
};

TEST_F(BatchTest, WidgetLinesActOnThePanelOfTheCurrentToolByObjectName)
{
    QFile ui(out.filePath(QStringLiteral("panel.ui")));
    ASSERT_TRUE(ui.open(QIODevice::WriteOnly));
    ui.write(R"(<ui version="4.0"><class>Panel</class><widget class="QWidget" name="Panel"><layout class="QVBoxLayout">
<item><widget class="QCheckBox" name="flag"/></item>
<item><widget class="QLineEdit" name="label"/></item>
<item><widget class="QSpinBox" name="count"><property name="maximum"><number>50</number></property></widget></item>
<item><widget class="QPushButton" name="go"/></item>
</layout></widget></ui>)");
    ui.close();
    GesturePanel *panel = nullptr;
    TP_ToolPropertiesPanelFactory::addPanelFactory(std::make_unique<GesturePanelFactory>(ui.fileName(), &panel));
    gestureToolId();

    bool const ran = run(QStringLiteral(
        "open arm.xml\n"
        "tool GestureTool\n"
        "widget flag check true\n"
        "widget flag check true\n"
        "expect-widget flag true\n"
        "widget label text left arm\n"
        "expect-widget label left arm\n"
        "widget count value 12\n"
        "expect-widget count 12\n"
        "widget go click\n"
        "widget go click\n"));
    EXPECT_TRUE(ran) << errors.join('\n').toStdString();
    ASSERT_NE(panel, nullptr);
    EXPECT_EQ(panel->clicks, 2);

    // A widget the panel lacks, or one that cannot do what is asked, stops the script there.
    EXPECT_FALSE(run(QStringLiteral("widget nothing click\n")));
    ASSERT_EQ(errors.size(), 1);
    EXPECT_TRUE(errors[0].contains(QStringLiteral("\"nothing\""))) << errors[0].toStdString();
    EXPECT_FALSE(run(QStringLiteral("widget label check true\n")));
    EXPECT_FALSE(run(QStringLiteral("expect-widget count 13\n")));
    EXPECT_FALSE(run(QStringLiteral("widget count twist\n")));  // read before running: not an action
    EXPECT_TRUE(errors[0].startsWith(QStringLiteral("script.txt:1: expected \"click\""))) << errors[0].toStdString();
    TP_ToolPropertiesPanelFactory::clearPanelFactories();
}

// The scene's length and rate are undoable and saved; frame keys step within the scene's frames
// when the tool does not take them; zoom, pan and fit reach the view.
TEST_F(BatchTest, LengthRateFrameKeysAndTheViewsCamera)
{
    CX_ToolRecord record = CX_Context::GetInstance().data();
    record.toolId = CX_ToolIds::None;  // keys go past the tool
    CX_Context::GetInstance().SetData(record, nullptr);
    ASSERT_TRUE(run(QStringLiteral(
        "open arm.xml\n"
        "frame 24\n"
        "length 48\n"
        "expect-undo Scene Length\n"
        "frame 40\n"
        "rate 12.5\n"
        "expect-undo Frame Rate\n"
        "save timed.xml\n"
        "undo\n"
        "undo\n"
        "expect-frame 24\n"
        "save plain.xml\n"
        "frame 5\n"
        "key Left\n"
        "expect-frame 4\n"
        "key Right\n"
        "key Right\n"
        "expect-frame 6\n"
        "key Home\n"
        "expect-frame 1\n"
        "key Left\n"
        "expect-frame 1\n"
        "key End\n"
        "expect-frame 24\n"
        "key Right\n"
        "expect-frame 24\n"
        "key Shift+Left\n"
        "expect-frame 24\n"
        "zoom 4 10 20\n"
        "expect-zoom 4\n"
        "pan 5 -7\n"
        "fit\n"
        "reset-view\n"
        "expect-zoom 1\n")))
        << errors.join('\n').toStdString();
    QByteArray const timed = readAll(out.filePath(QStringLiteral("timed.xml")));
    EXPECT_TRUE(timed.contains("\n <timeline frames=\"48\" rate=\"12.5\"/>\n <group name=")) << timed.left(300).toStdString();
    EXPECT_EQ(readAll(out.filePath(QStringLiteral("plain.xml"))), readAll(kArm));

    // The window's "," and "." are the same keys; a tool that takes a key keeps it from the timeline.
    EXPECT_TRUE(workspace.stepFrameForKey(Qt::Key_Comma));
    EXPECT_EQ(workspace.session()->currentFrame(), 23.0);
    EXPECT_TRUE(workspace.stepFrameForKey(Qt::Key_Period));
    EXPECT_EQ(workspace.session()->currentFrame(), 24.0);
    EXPECT_FALSE(workspace.stepFrameForKey(Qt::Key_A));
    workspace.view()->setToolId(gestureToolId());
    ASSERT_TRUE(run(QStringLiteral("key Left\nexpect-frame 24\n"))) << errors.join('\n').toStdString();

    // reset-view: 100% and centred on the camera again, after the zoom, the pan and the fit.
    EXPECT_EQ(workspace.view()->zoom(), 1.0);
    EXPECT_EQ(workspace.view()->centre(), Math::Point2d(0.0, 0.0));
}

TEST(CommandLine, ReadsOptionsAndRefusesWhatItDoesNotKnow)
{
    AH_Options options;
    QString error;
    ASSERT_TRUE(AH_Options::parse({"animhost", "--prefs", "p.xml", "--batch", "s.txt", "--output", "o", "scene.xml"}, options, &error));
    EXPECT_EQ(options.prefsPath, QStringLiteral("p.xml"));
    EXPECT_EQ(options.batchScript, QStringLiteral("s.txt"));
    EXPECT_EQ(options.outputDir, QStringLiteral("o"));
    EXPECT_EQ(options.sceneFile, QStringLiteral("scene.xml"));
    EXPECT_TRUE(options.pluginsDir.isEmpty());  // only the installed plug-ins by default

    ASSERT_TRUE(AH_Options::parse({"animhost", "--plugins", "/somewhere"}, options, &error));
    EXPECT_EQ(options.pluginsDir, QStringLiteral("/somewhere"));
    EXPECT_TRUE(options.batchScript.isEmpty());

    for (QStringList const &bad : {QStringList{"animhost", "--colour"}, QStringList{"animhost", "--batch"},
                                   QStringList{"animhost", "a.xml", "b.xml"}}) {
        error.clear();
        EXPECT_FALSE(AH_Options::parse(bad, options, &error)) << bad.join(' ').toStdString();
        EXPECT_FALSE(error.isEmpty());
    }
}

TEST(CommandLine, HelpAndVersionAreFlagsAndTheHelpShowsEveryOptionOfTheTable)
{
    for (QStringList const &args : {QStringList{"animhost", "--help"}, QStringList{"animhost", "-h"}}) {
        AH_Options options;
        QString error;
        ASSERT_TRUE(AH_Options::parse(args, options, &error)) << error.toStdString();
        EXPECT_TRUE(options.help);
        EXPECT_FALSE(options.version);
    }
    AH_Options options;
    QString error;
    ASSERT_TRUE(AH_Options::parse({"animhost", "-v", "scene.xml"}, options, &error)) << error.toStdString();
    EXPECT_TRUE(options.version);
    EXPECT_FALSE(options.help);
    EXPECT_TRUE(AH_Options::versionText().startsWith(QStringLiteral("animhost ")));

    QString const help = AH_Options::helpText();
    EXPECT_TRUE(help.startsWith(AH_Options::usage()));
    for (AH_Options::Option const &option : AH_Options::table()) {
        QString const name = QStringLiteral("--") + option.names.constLast();
        EXPECT_TRUE(help.contains(option.valueName.isEmpty() ? name : name + QLatin1Char(' ') + option.valueName)) << name.toStdString();
        EXPECT_TRUE(help.contains(option.description)) << name.toStdString();
        EXPECT_TRUE((option.text != nullptr) != (option.flag != nullptr)) << name.toStdString();  // fills one field
    }
}

} // namespace
