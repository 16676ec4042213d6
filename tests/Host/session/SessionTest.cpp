#include "session/SC_Session.h"

#include "command/CO_CommandManager.h"
#include "scene/MO_Context.h"
#include "scene/MO_Module.h"
#include "scene/AT_ValueAttr.h"
#include "scene/TUScene.h"
#include "session/SL_Selection.h"
#include "session/TUSceneChangeManager.h"

#include <QSignalSpy>
#include <gtest/gtest.h>

#include <limits>

namespace {

TEST(SceneChangeManager, NodeChangesAreGatheredAndSentOnceByNotify)
{
    TUSceneChangeManager changes;
    QSignalSpy nodes(&changes, SIGNAL(nodesChanged(const TUNodeSet &)));
    ASSERT_TRUE(nodes.isValid());
    auto a = UT_MakeShared<MO_Node>(QStringLiteral("PEG"), 1, 1);
    auto b = UT_MakeShared<MO_Node>(QStringLiteral("READ"), 1, 1);

    TUNodeSet received;
    QObject::connect(&changes, &TUSceneChangeManager::nodesChanged, [&](TUNodeSet const &set) { received = set; });
    changes.emitNodeChanged(a.get());
    changes.emitNodeChanged(b.get());
    changes.emitNodeChanged(a.get());
    changes.emitNodeChanged(nullptr);
    EXPECT_EQ(nodes.count(), 0);
    changes.notify();
    EXPECT_EQ(nodes.count(), 1);
    EXPECT_EQ(received, (TUNodeSet{a.get(), b.get()}));
    EXPECT_NE(received.find(a.get()), received.end());

    changes.notify();  // nothing pending: nothing sent
    changes.notifyInteractive();
    EXPECT_EQ(nodes.count(), 1);
    changes.emitNodeChanged(b.get());
    bool interactiveSeen = false;
    QObject::connect(&changes, &TUSceneChangeManager::nodesChanged, [&] { interactiveSeen = changes.isInteractive(); });
    changes.notifyInteractive();
    EXPECT_EQ(nodes.count(), 2);
    EXPECT_TRUE(interactiveSeen);
    EXPECT_FALSE(changes.isInteractive());
}

TEST(SceneChangeManager, SignalsConnectByTheirWrittenSignatures)
{
    TUSceneChangeManager changes;
    QObject receiver;
    // The forms plug-ins write, blank included.
    for (char const *signal : {"2currentFrameChanged()", "2selectionChanged()", "2nodesChanged(const TUNodeSet &)",
                               "2currentSceneChanged( TUScene *)"}) {
        EXPECT_TRUE(QObject::connect(&changes, signal, &receiver, SLOT(deleteLater()))) << signal;
    }
}

TEST(Session, InstallsItselfOnItsSceneAndRelaysSelectionAndFrameChanges)
{
    auto scene = std::make_unique<TUScene>();
    TUScene *raw = scene.get();
    auto node = UT_MakeShared<MO_Node>(QStringLiteral("PEG"), 1, 1);
    raw->getRootGroup()->addNode(node);
    {
        SC_Session session(std::move(scene));
        EXPECT_EQ(session.scene(), raw);
        EXPECT_EQ(session.currentScene(), raw);
        EXPECT_EQ(node->sceneCommon(), &session);
        EXPECT_EQ(node->projectCommon(), static_cast<SC_ProjectCommon *>(&session));
        EXPECT_EQ(raw->commandManager(), session.commandManager());
        EXPECT_NE(session.dragManager(), nullptr);

        QSignalSpy selection(session.changeManager(), SIGNAL(selectionChanged()));
        QSignalSpy frame(session.changeManager(), SIGNAL(currentFrameChanged()));
        QSignalSpy sceneChanged(session.changeManager(), SIGNAL(currentSceneChanged(TUScene *)));
        SL_SelectionUtil::addToSelection(session.getSelection(), node.get());
        EXPECT_EQ(selection.count(), 1);

        session.setCurrentFrame(12.5);
        session.setCurrentFrame(12.5);
        for (double bad : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()})
            session.setCurrentFrame(bad);
        EXPECT_EQ(frame.count(), 1);
        EXPECT_EQ(session.currentFrame(), 12.5);

        session.changeManager()->emitSceneChanged();
        ASSERT_EQ(sceneChanged.count(), 1);
        EXPECT_EQ(sceneChanged.at(0).at(0).value<TUScene *>(), raw);

        Math::Matrix4x4 camera;
        camera.translate(3, 4);
        session.setCameraMatrix(camera);
        EXPECT_EQ(session.cameraMatrix(MO_FrameKey(7.0)), camera);
    }
}

// Changes made by commands outside the view (a panel, a menu, a script) are heard when their step
// is recorded, undone or redone, each step once.
TEST(Session, CommandStepsSendTheNodeChangesTheyGathered)
{
    auto scene = std::make_unique<TUScene>();
    auto peg = UT_MakeShared<MO_PegModule>();
    MO_PegModule *raw = static_cast<MO_PegModule *>(scene->getRootGroup()->addNode(peg));
    SC_Session session(std::move(scene));
    CO_CommandManager *manager = session.commandManager();
    QSignalSpy nodes(session.changeManager(), SIGNAL(nodesChanged(const TUNodeSet &)));

    {
        CO_CommandAccumScope step(manager, QStringLiteral("Two Changes"));
        manager->execute(raw->rotationAttr()->setTextValue(1.0, QStringLiteral("0, 0, 10")));
        manager->execute(raw->rotationAttr()->setTextValue(2.0, QStringLiteral("0, 0, 20")));
        EXPECT_EQ(nodes.count(), 0);  // gathered until the step is made
    }
    ASSERT_EQ(nodes.count(), 1);
    EXPECT_EQ(nodes.at(0).at(0).value<TUNodeSet>().count(raw), 1u);
    EXPECT_TRUE(session.changeManager()->pendingNodes().empty());

    ASSERT_TRUE(manager->undo());
    EXPECT_EQ(nodes.count(), 2);
    ASSERT_TRUE(manager->redo());
    EXPECT_EQ(nodes.count(), 3);
    EXPECT_EQ(raw->rotationAttr()->textValue(2.0), QStringLiteral("0, 0, 20"));
}

} // namespace
