// The whole road of a pose without a tool: the arm example's pegs marked as joints, its skeleton
// extracted at a frame, the hand dragged by the solver, the solved positions written back through
// the manipulators as keyframes in one undo step, and undo giving back the very file.
#include "BridgeTestUtil.h"

#include "bridge/ModuleManipulator.h"
#include "solver/IKSolver.h"

#include "scene/TUSceneFile.h"
#include "session/SC_Session.h"

#include <QFile>

using namespace BridgeTest;

namespace {

int const kFrame = 6;

struct ArmScene {
    std::unique_ptr<SC_Session> session;
    CO_CommandManager *manager = nullptr;
    MO_Module *upper = nullptr;
    MO_Module *fore = nullptr;
    MO_Module *hand = nullptr;
    QByteArray loaded;  // the scene as written right after loading

    ArmScene()
    {
        QString const path = QStringLiteral(ANIM_EXAMPLE_SCENES_DIR "/arm.xml");
        QString error;
        std::unique_ptr<TUScene> scene = TUSceneFile::readFile(path, &error);
        EXPECT_TRUE(scene) << error.toStdString();
        if (!scene)
            return;
        loaded = TUSceneFile::write(*scene);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_EQ(loaded, file.readAll());
        session = std::make_unique<SC_Session>(std::move(scene));
        manager = session->commandManager();
        TUGroup *top = session->scene()->getRootGroup();
        upper = top->findNode(QStringLiteral("UpperArm-P"))->toModule();
        fore = top->findNode(QStringLiteral("Forearm-P"))->toModule();
        hand = top->findNode(QStringLiteral("Hand-P"))->toModule();

        CO_CommandAccumScope scope(manager, QStringLiteral("Define IK Joint"));
        IKToolUtil::defineRoot(manager, upper, true);
        IKToolUtil::setParticipation(manager, fore, true);
        IKToolUtil::setParticipation(manager, hand, true);
    }
};

AT_Rotation3dAttr *rotationOf(MO_Module *module)
{
    return module->toAnimatedModule()->rotationAttr();
}

} // namespace

TEST(RoundTrip, TheDraggedArmIsKeyedAtTheFrameFollowsTheSolverAndUndoesToTheLoadedFile)
{
    ArmScene arm;
    ASSERT_TRUE(arm.session);

    SkeletonDef skeleton = extract(arm.hand, poseSettings(kFrame));
    ASSERT_EQ(modulesOf(skeleton), (std::vector<MO_Module *>{arm.upper, arm.fore, arm.hand, arm.hand}));

    std::unique_ptr<TIK::IKSolver> solver = TIK::createSolver();
    solver->setSkeleton(skeleton, 0);
    solver->setRootTranslationEnabled(false);
    for (SkeletonJointDef const &joint : skeleton)
        solver->joint(joint.name.c_str())->setMobility(false, false, true, true);
    std::string const handName = skeleton[2].name;
    Math::Point3d const target = skeleton[2].position + Math::Vector3d(-0.15, 0.2, 0.0);
    TIK::IKPositionTask *drag = solver->addPositionTask(handName.c_str(), 0);
    ASSERT_NE(drag, nullptr);
    drag->setWeight(10.0);
    drag->setTarget(target.x, target.y, target.z);
    solver->setShadowPosing(true);

    // Read before the surrogates are attached: while attached they stand for every frame.
    Math::Angle3d const upperAtKeys[2] = {rotationOf(arm.upper)->valueAt(1), rotationOf(arm.upper)->valueAt(12)};
    ManipulatorSet set;
    ASSERT_TRUE(set.build(kFrame, arm.upper, solver.get(), skeleton));
    set.reset();

    ASSERT_TRUE(TIK::solve(solver.get(), 200, 0.5));
    solver->updateJoints();
    for (SkeletonJointDef &joint : skeleton)
        joint.solvedPosition = solver->joint(joint.name.c_str())->position();
    EXPECT_LT((skeleton[2].solvedPosition - target).length(), 0.02);  // the hand went where it was dragged
    EXPECT_GT((skeleton[2].solvedPosition - skeleton[2].position).length(), 0.1);

    set.update();
    auto expectFollows = [&] {
        for (int i = 0; i < 3; ++i)
            expectNear(IKToolUtil::getModuleJointPositionAtFrame(skeleton[std::size_t(i)].module.get(), kFrame),
                       skeleton[std::size_t(i)].solvedPosition, 1e-6);
    };
    expectFollows();

    int const stepsBefore = arm.manager->undoCount();
    {
        CO_CommandAccumScope scope(arm.manager, QStringLiteral("IK Manipulation"));
        set.commit(arm.manager);
    }
    EXPECT_EQ(arm.manager->undoCount(), stepsBefore + 1);
    EXPECT_EQ(arm.manager->undoName(), QStringLiteral("IK Manipulation"));
    expectFollows();  // now from the keyframes, without surrogates

    EXPECT_EQ(rotationOf(arm.upper)->keyframes(), (std::vector<int>{1, kFrame, 12}));
    EXPECT_EQ(rotationOf(arm.fore)->keyframes(), (std::vector<int>{1, kFrame, 12}));
    EXPECT_EQ(rotationOf(arm.hand)->keyframes(), std::vector<int>{kFrame});
    EXPECT_EQ(arm.upper->toAnimatedModule()->positionAttr()->keyframes(), std::vector<int>{kFrame});
    EXPECT_TRUE(arm.fore->toAnimatedModule()->positionAttr()->keyframes().empty());
    EXPECT_EQ(rotationOf(arm.upper)->valueAt(1), upperAtKeys[0]);
    EXPECT_EQ(rotationOf(arm.upper)->valueAt(12), upperAtKeys[1]);
    TUGroup *top = arm.session->scene()->getRootGroup();
    for (char const *drawing : {"UpperArm", "Forearm", "Hand"})
        EXPECT_TRUE(rotationOf(top->findNode(QLatin1String(drawing))->toModule())->keyframes().empty()) << drawing;

    while (arm.manager->undoCount() > 0)
        ASSERT_TRUE(arm.manager->undo());
    EXPECT_EQ(TUSceneFile::write(*arm.session->scene()), arm.loaded);
}
