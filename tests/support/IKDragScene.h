// Scripted IK drags on a real offscreen view, for the tests and the benchmarks that must drive the
// tool exactly as the mouse does: the rigged character of examples/scenes and chains of pegs of
// any length, each with the IK tool active in a 640 by 480 view.
//
// A gesture goes through VW_View as the window's widget sends it: each move is the paint of the
// picture the last move asked for, the tool's step, and the hover pick that sets the cursor.
//
// Users define ANIM_SOURCE_DIR (the project's folder) and link AnimationToolIK,
// AnimationToolBridge and HostView, with a QApplication made before the first scene opens.
#pragma once

#include "host/HostAPI.h"

#include "bridge/JointDefinition.h"
#include "iktool/IKTool.h"
#include "iktool/IKToolSettings.h"
#include "scene/TUSceneFile.h"
#include "view/VW_View.h"

#include <QFile>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace IKDrag {

inline CX_ToolIds::ID toolId()
{
    static CX_ToolIds::ID const id =
        TO_ToolFactory::instance().registerTool(IKTool::descriptor(), IKTool::createGenerator());
    return id;
}

// One scene in its session, seen by a view with the IK tool, the skeleton's root selected.
struct Scene {
    std::unique_ptr<SC_Session> session;
    std::unique_ptr<VW_View> view;
    MO_Module *root = nullptr;
    MO_Module *dragged = nullptr;  // the module whose joint the drags take

    Scene() = default;
    Scene(Scene const &) = delete;
    Scene &operator=(Scene const &) = delete;
    ~Scene()
    {
        view.reset();
        IKToolSettings::instance().setSkeletonRoot(nullptr);
        PLUG_Services::setSelection(nullptr);
        PLUG_Services::setSessionContext(nullptr);
    }

    MO_Module *module(char const *name) const
    {
        return dynamic_cast<MO_Module *>(session->scene()->getRootGroup()->findNode(QLatin1String(name)));
    }
    CO_CommandManager *commands() const { return session->commandManager(); }

    // Where the dragged joint lies in the view at the current frame.
    Math::Point2d draggedPixel() const
    {
        Math::Point3d const p = IKToolUtil::getModuleJointPositionAtFrame(dragged, int(session->currentFrame()));
        Math::Point2d pixel;
        view->sceneToView(Math::Point2d(p.x, p.y), pixel);
        return pixel;
    }
};

// Drags spread over `frames` frames from 1 (with the current frame at 5, or at 1 for a range that
// ends before it) by `interpolation`; 1 frame turns the range off.
inline void setRange(Scene &scene, int frames, int interpolation = IKToolSettings::Linear)
{
    IKToolSettings &s = IKToolSettings::instance();
    s.setInterpolationEnabled(frames > 1);
    s.setUseCurrentFrame(false);
    s.setFrameRange(1, std::max(1, frames));
    s.setInterpolationType(interpolation);
    scene.session->setCurrentFrame(frames > 1 && frames < 5 ? 1 : 5);
}

inline void startTool(Scene &scene)
{
    IKToolSettings &s = IKToolSettings::instance();
    s.setToolMode(IKToolSettings::ManipulationMode);
    s.setEnableRootTranslation(false);
    s.setEnableShadowPosing(true);
    s.setSkeletonRoot(scene.root);
    scene.session->getSelection()->set({scene.root});
    PLUG_Services::setPluginPath(QStringLiteral("AnimationTool"), QStringLiteral(ANIM_SOURCE_DIR));
    scene.view = std::make_unique<VW_View>(scene.session.get());
    scene.view->resize(640, 480);
    if (!scene.view->setToolId(toolId()))
        throw std::runtime_error("the IK tool could not be made");
    scene.view->render();
}

inline void adopt(Scene &scene, std::unique_ptr<TUScene> tuScene)
{
    scene.session = std::make_unique<SC_Session>(std::move(tuScene));
    PLUG_Services::setSessionContext(scene.session.get());
    PLUG_Services::setSelection(scene.session->getSelection());
}

// The rigged character (by default the shipped one), its hips and chest kept from turning, the
// left wrist dragged.
inline void openCharacter(Scene &scene, QString const &path = QStringLiteral(ANIM_SOURCE_DIR "/examples/scenes/character-rig.xml"))
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("cannot read " + path.toStdString());
    QString error;
    std::unique_ptr<TUScene> tuScene = TUSceneFile::read(file.readAll(), file.fileName(), &error);
    if (!tuScene)
        throw std::runtime_error(error.toStdString());
    adopt(scene, std::move(tuScene));
    scene.root = scene.module("Body-P");
    scene.dragged = scene.module("LWrist-P");
    for (char const *name : {"Body-P", "Chest-P"}) {
        JointAttr *attr = IKToolUtil::jointAttrForModule(scene.module(name));
        if (!attr)
            throw std::runtime_error(std::string("no joint on ") + name);
        if (std::unique_ptr<CO_Command> off = attr->activeAttr()->setTextValue(0.0, QStringLiteral("false")))
            scene.commands()->execute(std::move(off), QStringLiteral("IK Joint Settings"));
    }
    startTool(scene);
}

// A chain of `joints` pegs, each the child of the one before, zigzagging across the field from
// left to right; the first is the root, every one a joint, the last dragged. Its rotations are
// keyed at frame 1 and at frame 12, so that the poses of a range differ.
inline void openChain(Scene &scene, int joints)
{
    auto tuScene = std::make_unique<TUScene>();
    TUGroup *group = tuScene->getRootGroup();
    double const step = 18.0 / double(std::max(1, joints - 1));  // field units along x
    MO_PegModule *parent = nullptr;
    std::vector<MO_PegModule *> pegs;
    for (int i = 0; i < joints; ++i) {
        auto node = UT_MakeShared<MO_PegModule>();
        node->setInstanceName(QStringLiteral("J%1").arg(i));
        auto *peg = static_cast<MO_PegModule *>(group->addNode(node));
        if (parent)
            MO_Node::connect(parent, 0, peg, 0);
        double const y = i == 0 ? -2.0 : (i % 2 == 0 ? 0.3 : -0.3) * step;
        peg->positionAttr()->setLocalValue(Math::Point3d(i == 0 ? -9.0 : step, y, 0.0));
        peg->rotationAttr()->setKeyframe(1, Math::Angle3d(0.0, 0.0, 0.0));
        peg->rotationAttr()->setKeyframe(12, Math::Angle3d(0.0, 0.0, i == 0 ? 0.0 : 40.0 / joints));
        pegs.push_back(peg);
        parent = peg;
    }
    adopt(scene, std::move(tuScene));
    scene.root = pegs.front();
    scene.dragged = pegs.back();
    IKToolUtil::defineRoot(scene.commands(), scene.root, true);
    for (std::size_t i = 1; i < pegs.size(); ++i)
        IKToolUtil::setParticipation(scene.commands(), pegs[i], true);
    startTool(scene);
}

// The point of move `i` (from 1) of a drag that starts at `start`: round a circle of 60 pixels
// whose right end is the start, counter-clockwise on the screen, in steps of 9 pixels as a hand
// moves a mouse; a long drag goes round again and stays within reach.
inline Math::Point2d movePoint(Math::Point2d const &start, int i)
{
    double const radius = 60.0;
    double const angle = 0.15 * double(i);
    return Math::Point2d(start.x - radius * (1.0 - std::cos(angle)), start.y - radius * std::sin(angle));
}

// One move as the window makes it: the paint it asked for, the tool's step, the hover pick.
inline void move(Scene &scene, Math::Point2d const &point)
{
    scene.view->render();
    scene.view->mouseMove(point);
    scene.view->cursorAt(point);
}

// A whole drag of `moves` moves from the dragged joint, released where the last move ended.
inline void drag(Scene &scene, int moves)
{
    Math::Point2d const start = scene.draggedPixel();
    scene.view->mousePress(start);
    scene.view->cursorAt(start);
    Math::Point2d point = start;
    for (int i = 1; i <= moves; ++i)
        move(scene, point = movePoint(start, i));
    scene.view->mouseRelease(point);
    scene.view->render();
}

// Every key of every peg's position and rotation, one line each: module, attribute, frame, then
// the components as hexadecimal floats (exact).
inline std::string keyDump(Scene const &scene)
{
    std::string out;
    char line[256];
    auto dumpComponents = [&](QString const &module, char const *attrName, int frame, double const *c, int n) {
        int len = std::snprintf(line, sizeof line, "%s %s %d", module.toUtf8().constData(), attrName, frame);
        for (int i = 0; i < n; ++i)
            len += std::snprintf(line + len, sizeof line - std::size_t(len), " %a", c[i]);
        out += line;
        out += '\n';
    };
    TUGroup const *group = scene.session->scene()->getRootGroup();
    for (auto it = group->subNodesBegin(); it != group->subNodesEnd(); ++it) {
        auto *animated = dynamic_cast<MO_AnimatedModule *>(&**it);
        if (!animated)
            continue;
        QString const name = animated->instanceName();
        for (int frame : animated->positionAttr()->keyframes()) {
            Math::Point3d const p = animated->positionAttr()->value(frame);
            double const c[3] = {p.x, p.y, p.z};
            dumpComponents(name, "position", frame, c, 3);
        }
        for (int frame : animated->rotationAttr()->keyframes()) {
            Math::Angle3d const a = animated->rotationAttr()->value(frame);
            double const c[3] = {a.x, a.y, a.z};
            dumpComponents(name, "rotation", frame, c, 3);
        }
    }
    return out;
}

} // namespace IKDrag
