// The character with its skeleton drawn by the IK tool, in manipulation, setup and interpolation
// modes and with the constellation open, compared with the pictures kept in reference/ beside this
// file. Run with ANIM_UPDATE_REFERENCES=1 to write them anew after a deliberate change of the
// drawing, and look at them before committing.
#include "iktool/IKTool.h"
#include "iktool/IKToolImpl.h"
#include "IKToolTestScene.h"

#include "bridge/JointDefinition.h"
#include "scene/TUSceneFile.h"
#include "view/VW_View.h"

#include "ReferenceImage.h"

#include <QFile>
#include <QImage>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

namespace {

QString const kReferences = QStringLiteral(ANIM_SOURCE_DIR "/tests/Plugins/AnimationTool/iktool/reference/");

class IKToolCharacter : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_NO_FATAL_FAILURE(openExampleScene("character.xml", session));
        PLUG_Services::setPluginPath(QStringLiteral("AnimationTool"), QStringLiteral(ANIM_SOURCE_DIR));
        CO_CommandManager *manager = session->commandManager();
        MO_Module *body = module("Body-P");
        ASSERT_TRUE(body);
        IKToolUtil::defineRoot(manager, body, true);
        for (char const *name : {"Chest-P", "Neck-P", "LShoulder-P", "LElbow-P", "LWrist-P", "LFingers-P",
                                 "RShoulder-P", "RElbow-P", "RWrist-P", "RFingers-P"})
            IKToolUtil::setParticipation(manager, module(name), true);
        session->getSelection()->set({body});
        session->setCurrentFrame(5);

        IKToolSettings &s = IKToolSettings::instance();
        s.setToolMode(IKToolSettings::ManipulationMode);
        s.setInterpolationEnabled(false);
        s.setUseCurrentFrame(false);
        s.setFrameRange(1, 9);
        s.setSkeletonRoot(body);

        static CX_ToolIds::ID const id =
            TO_ToolFactory::instance().registerTool(IKTool::descriptor(), IKTool::createGenerator());
        view = std::make_unique<VW_View>(session.get());
        view->resize(400, 400);
        ASSERT_TRUE(view->setToolId(id));
    }

    void TearDown() override
    {
        view.reset();
        closeExampleScene();
    }

    MO_Module *module(char const *name) const { return moduleNamed(*session, name); }

    void compare(QString const &name)
    {
        QImage const image = view->render();
        QString const path = kReferences + name;
        if (qEnvironmentVariableIsSet("ANIM_UPDATE_REFERENCES")) {
            ASSERT_TRUE(image.save(path)) << path.toStdString();
            return;
        }
        QImage const reference(path);
        ASSERT_FALSE(reference.isNull()) << path.toStdString();
        double const share = matchingShare(image, reference, 3);
        EXPECT_GE(share, 0.999) << name.toStdString();
        if (share < 0.999)
            image.save(QStringLiteral("/tmp/") + name);
    }

    std::unique_ptr<SC_Session> session;
    std::unique_ptr<VW_View> view;
};

}  // namespace

TEST_F(IKToolCharacter, ManipulationMode) { compare("ikCharacterManipulation.png"); }

TEST_F(IKToolCharacter, SetupMode)
{
    IKToolSettings::instance().setToolMode(IKToolSettings::SetupMode);
    compare("ikCharacterSetup.png");
}

TEST_F(IKToolCharacter, InterpolationModeWithTheConstellationOpen)
{
    IKToolSettings::instance().setInterpolationEnabled(true);
    view->render();
    IKTool::Impl &d = static_cast<IKTool *>(view->tool())->impl();
    MO_Module *elbow = module("LElbow-P");
    for (SkeletonJointDef const &joint : d.skeleton())
        if (joint.module.get() == elbow && !joint.isHandle)
            d.selectedJointMap[joint.index] = joint.solvedPosition;
    ASSERT_EQ(d.selectedJointMap.size(), 1u);
    d.constellationVisible = true;
    compare("ikCharacterConstellation.png");
}
