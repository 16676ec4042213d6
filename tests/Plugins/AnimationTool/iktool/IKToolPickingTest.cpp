// The IK tool picked through the view's real pick pass on the rigged character (640 by 480, frame
// 5), as a mouse picks: a press a few pixels off what the tool paints must do what a press on its
// centre does. Each case starts from a new tool and the scene as loaded, makes the same gestures at
// the centre and at every pixel within 3 pixels of it, and compares what they left: the tool's
// joint selection, the node selection, the constellation, the joint's constraints and the undo step.
#include "iktool/IKTool.h"
#include "iktool/IKToolImpl.h"
#include "IKToolTestScene.h"

#include "view/VW_View.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

CX_ToolIds::ID toolId()
{
    static CX_ToolIds::ID const id = TO_ToolFactory::instance().registerTool(IKTool::descriptor(), IKTool::createGenerator());
    return id;
}

VS_RGBA rgbaOf(QRgb pixel)
{
    return VS_RGBA(std::uint8_t(qRed(pixel)), std::uint8_t(qGreen(pixel)), std::uint8_t(qBlue(pixel)), std::uint8_t(qAlpha(pixel)));
}

// The name of a joint's node.
std::string nameOf(SkeletonJointDef const &joint)
{
    return joint.module.get() ? joint.module.get()->instanceName().toStdString() : std::string();
}

// The offsets of every pixel within 3 pixels of a point, the point itself first.
std::vector<Math::Vector2d> offsetsWithin3()
{
    std::vector<Math::Vector2d> out{Math::Vector2d(0, 0)};
    for (int dy = -3; dy <= 3; ++dy)
        for (int dx = -3; dx <= 3; ++dx)
            if ((dx || dy) && dx * dx + dy * dy <= 9)
                out.emplace_back(dx, dy);
    return out;
}

class IKToolPicking : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_NO_FATAL_FAILURE(openExampleScene("character-rig.xml", session));
        session->setCurrentFrame(5);
        IKToolSettings &s = IKToolSettings::instance();
        s.setToolMode(IKToolSettings::ManipulationMode);
        s.setInterpolationEnabled(false);
        s.setEnableRootTranslation(false);
        PLUG_Services::setPluginPath(QStringLiteral("AnimationTool"), QStringLiteral(ANIM_SOURCE_DIR));
        view = std::make_unique<VW_View>(session.get());
        view->resize(640, 480);
        baseSteps = session->commandManager()->undoCount();
        startOver();
        start = skeleton();
        for (SkeletonJointDef const &joint : start)
            pixels.push_back(pixelOf(*view, joint.solvedPosition));
    }

    void TearDown() override
    {
        view.reset();
        closeExampleScene();
    }

    // A new tool on the scene as loaded, with the body selected, painted once.
    void startOver()
    {
        while (session->commandManager()->undoCount() > baseSteps)
            session->commandManager()->undo();
        view->setToolId(CX_ToolIds::None);
        session->getSelection()->set({moduleNamed(*session, "Body-P")});
        IKToolSettings::instance().setSkeletonRoot(moduleNamed(*session, "Body-P"));
        ASSERT_TRUE(view->setToolId(toolId()));
        view->render();
    }

    IKTool::Impl &impl() const { return static_cast<IKTool *>(view->tool())->impl(); }
    SkeletonDef const &skeleton() const { return impl().skeleton(); }
    Math::Point2d jointPixel(int k) const { return pixels[std::size_t(k)]; }

    void click(Math::Point2d const &p, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        view->render();
        view->mousePress(p, modifiers);
        view->mouseRelease(p, modifiers);
    }

    // What a gesture left, as one line of text.
    std::string outcome() const
    {
        std::ostringstream out;
        std::set<int> joints;
        impl().selectedJoints(joints);
        out << "joints";
        for (int k : joints)
            out << ' ' << k;
        out << " bone " << impl().bonePicked << " nodes";
        for (MO_Node *node : session->getSelection()->nodes())
            out << ' ' << node->instanceName().toStdString();
        out << " constellation " << (impl().constellationVisible && !joints.empty());
        out << " undo \"" << session->commandManager()->undoName().toStdString() << "\" "
            << session->commandManager()->undoCount();
        if (constraintsOf >= 0) {
            JointAttr *attr = start.getAttribute(constraintsOf);
            out << " constraints " << attr->activeAttr()->localValue() << attr->holdPositionAttr()->localValue()
                << attr->holdOrientationAttr()->localValue() << attr->isBlocker()->localValue()
                << attr->useActualPositionAttr()->localValue() << ' ' << attr->weightAttr()->localValue() << ' '
                << attr->holdPositionGainAttr()->localValue() << ' ' << attr->holdOrientationGainAttr()->localValue();
        }
        return out.str();
    }

    // Runs `gesture` at the centre and at each pixel within 3 pixels of it, each from a new start,
    // and expects every outcome to be the centre's, which holds `centreHas`.
    void expectSameAsCentre(std::string const &what, std::string const &centreHas, std::function<void()> const &prepare,
                            std::function<void(Math::Vector2d const &)> const &gesture)
    {
        std::string centre;
        for (Math::Vector2d const &offset : offsetsWithin3()) {
            startOver();
            prepare();
            gesture(offset);
            std::string const got = outcome();
            if (offset.x == 0 && offset.y == 0) {
                centre = got;
                EXPECT_NE(centre.find(centreHas), std::string::npos) << what << ": " << centre;
            } else {
                EXPECT_EQ(got, centre) << what << ", off by " << offset.x << ", " << offset.y;
            }
        }
    }

    std::unique_ptr<SC_Session> session;
    std::unique_ptr<VW_View> view;
    int baseSteps = 0;
    SkeletonDef start;                  // the skeleton as loaded
    std::vector<Math::Point2d> pixels;  // where its joints are painted, by index
    int constraintsOf = -1;  // the joint whose constraints outcome() shows; -1: none
};

// A shift-click that adds a joint to a selected one, then a click on it that narrows the two to it,
// makes its node the selection and opens its constellation: at each joint. A click at the middle
// of each bone.
TEST_F(IKToolPicking, PressesNearAJointOrTheMiddleOfABoneDoWhatAPressOnItsCentreDoes)
{
    int const n = int(start.size());
    ASSERT_GT(n, 10);
    for (int k = 0; k < n; ++k) {
        int const other = k == 0 ? 1 : 0;
        std::string const joint = "joints " + std::to_string(k) + " bone ";
        expectSameAsCentre("joint " + start[std::size_t(k)].name + " of " + nameOf(start[std::size_t(k)]), joint + "0",
                           [&] { click(jointPixel(other)); },
                           [&](Math::Vector2d const &offset) {
                               Math::Point2d const p = jointPixel(k) + offset;
                               click(p, Qt::ShiftModifier);
                               click(p);
                           });
        auto const parent = start.find(start[std::size_t(k)].parentName);
        if (parent == start.end())
            continue;
        int const from = parent->index;
        expectSameAsCentre("bone to " + start[std::size_t(k)].name + " of " + nameOf(start[std::size_t(k)]), joint + "1", [] {},
                           [&](Math::Vector2d const &offset) {
                               click(jointPixel(from) + (jointPixel(k) - jointPixel(from)) * 0.5 + offset);
                           });
    }
}

// With two joints selected, a press beside one of them and a drag keeps both (and moves them in one
// step); a shift-press beside the elbow takes it out of the selection.
TEST_F(IKToolPicking, PressesNearASelectedJointKeepOrExtendTheSelectionAsOnItsCentre)
{
    int elbow = -1, wrist = -1;
    for (SkeletonJointDef const &joint : start) {
        if (joint.isHandle)
            continue;
        elbow = nameOf(joint) == "LElbow-P" ? joint.index : elbow;
        wrist = nameOf(joint) == "LWrist-P" ? joint.index : wrist;
    }
    ASSERT_GE(elbow, 0);
    ASSERT_GE(wrist, 0);
    auto const selectBoth = [&] {
        click(jointPixel(elbow));
        click(jointPixel(wrist), Qt::ShiftModifier);
    };
    std::string const both = "joints " + std::to_string(std::min(elbow, wrist)) + ' ' + std::to_string(std::max(elbow, wrist));
    expectSameAsCentre("drag from the elbow", both + " bone 0", selectBoth, [&](Math::Vector2d const &offset) {
        Math::Point2d const p = jointPixel(elbow) + offset;
        view->render();
        view->mousePress(p);
        view->mouseMove(p + Math::Vector2d(10, 0));
        view->mouseRelease(p + Math::Vector2d(10, 0));
    });
    expectSameAsCentre("shift-press on the elbow", "joints " + std::to_string(wrist) + " bone 0", selectBoth,
                       [&](Math::Vector2d const &offset) { click(jointPixel(elbow) + offset, Qt::ShiftModifier); });
}

// The constellation of the right wrist: each flag button, and each slider along its track.
TEST_F(IKToolPicking, PressesNearAConstellationButtonOrSliderDoWhatAPressOnItsCentreDoes)
{
    int wrist = -1;
    for (SkeletonJointDef const &joint : start)
        wrist = nameOf(joint) == "RWrist-P" && !joint.isHandle ? joint.index : wrist;
    ASSERT_GE(wrist, 0);
    constraintsOf = wrist;
    auto const openConstellation = [&] {
        click(jointPixel(wrist));
        click(jointPixel(wrist));
        ASSERT_TRUE(impl().constellationVisible);
    };

    // Where each button is: the centre of its pixels in the pick image.
    startOver();
    openConstellation();
    view->pick(UT_Point(0, 0), false, 0);
    QImage const ids = view->pickImage().copy();
    std::vector<Math::Point2d> buttons;
    for (int item = 0; item <= 4; ++item) {
        unsigned int const id = impl().constellationPickAdaptor.pickingId() + unsigned(item);
        double sx = 0, sy = 0;
        int count = 0;
        for (int y = 0; y < ids.height(); ++y)
            for (int x = 0; x < ids.width(); ++x)
                if (SLB_PickEngine::colorToId(rgbaOf(ids.pixel(x, y))) == id) {
                    sx += x;
                    sy += y;
                    ++count;
                }
        ASSERT_GT(count, 0) << "item " << item;
        buttons.emplace_back(std::round(sx / count), std::round(sy / count));
    }
    for (int item = 0; item <= 4; ++item)
        expectSameAsCentre("button " + std::to_string(item), "undo \"IK Joint Settings\"", openConstellation,
                           [&](Math::Vector2d const &offset) { click(buttons[std::size_t(item)] + offset); });

    // A slider sets the weight from where the press projects on its track: presses above and
    // below a point of the track give what the point gives. The hold flags are switched on first:
    // a slider is offered only with its flag.
    auto const openWithSliders = [&] {
        openConstellation();
        click(buttons[1]);
        click(buttons[2]);
    };
    startOver();
    openWithSliders();
    view->render();  // the drawing keeps where it painted the tracks
    std::vector<Math::Segment2d> const tracks(std::begin(impl().sliderSegments), std::end(impl().sliderSegments));
    for (int slider = 0; slider < 3; ++slider) {
        Math::Segment2d const &track = tracks[std::size_t(slider)];
        ASSERT_GT(track.b.x - track.a.x, 20.0) << "slider " << slider;
        for (double t : {0.1, 0.9}) {  // the pick shape is thinnest at the left end
            Math::Point2d const at(std::round(track.a.x + (track.b.x - track.a.x) * t), std::round(track.a.y));
            std::string centre;
            for (int dy : {0, -3, -2, -1, 1, 2, 3}) {
                startOver();
                openWithSliders();
                click(at + Math::Vector2d(0, dy));
                std::string const got = outcome();
                if (dy == 0) {
                    centre = got;
                    EXPECT_NE(centre.find("undo \"IK Joint Setting\""), std::string::npos) << centre;
                } else
                    EXPECT_EQ(got, centre) << "slider " << slider << " at " << t << ", off by " << dy;
            }
        }
    }
}

} // namespace
