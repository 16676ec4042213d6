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

// The alpha of a ghost, read in the picture: over the white background, the centre of a ghost
// joint is its frame's ghost colour blended at that colour's alpha. The character's left arm
// rises over the range, so the tips of its far frames stand clear of the pose and of each other.
TEST_F(IKToolCharacter, AGhostJointIsItsFramesColourBlendedOverTheBackgroundAtItsAlpha)
{
    IKToolSettings &s = IKToolSettings::instance();
    QImage const alone = view->render();
    s.setInterpolationEnabled(true);
    QImage const ghosts = view->render();
    IKTool::Impl &d = static_cast<IKTool *>(view->tool())->impl();
    ASSERT_EQ(d.frames.size(), 9u);  // frames 1 to 9

    auto pixelAt = [this](Math::Point3d const &p) {
        Math::Point2d const out = pixelOf(*view, p);
        return QPoint(int(std::lround(out.x)), int(std::lround(out.y)));
    };
    // The last joint of the left arm, the fingers' peg (not its handle, which wears a ring in its
    // middle).
    auto tipAt = [&](int frame) {
        for (SkeletonJointDef const &joint : d.frames.at(frame).skeleton)
            if (!joint.isHandle && joint.module.get() == module("LFingers-P"))
                return pixelAt(joint.solvedPosition);
        ADD_FAILURE() << "no tip at frame " << frame;
        return QPoint();
    };
    int checked = 0;
    for (int frame : {1, 2, 8, 9}) {
        QPoint const at = tipAt(frame);
        // Only where the picture without ghosts is background, and no other frame's tip is near.
        if (alone.pixelColor(at) != QColor(Qt::white))
            continue;
        bool crowded = false;
        for (int other = 1; other <= 9; ++other)
            if (other != frame && (tipAt(other) - at).manhattanLength() < 8)
                crowded = true;
        if (crowded)
            continue;
        VS_RGBA const colour = IKTool::Impl::ghostColour(1, 5, 9, frame);
        double const a = colour.a / 255.0;
        QColor const got = ghosts.pixelColor(at);
        EXPECT_NEAR(got.red(), colour.r * a + 255 * (1 - a), 2.0) << frame;
        EXPECT_NEAR(got.green(), colour.g * a + 255 * (1 - a), 2.0) << frame;
        EXPECT_NEAR(got.blue(), colour.b * a + 255 * (1 - a), 2.0) << frame;
        ++checked;
    }
    EXPECT_GE(checked, 3);  // the far ends and a frame beside them were read
}
