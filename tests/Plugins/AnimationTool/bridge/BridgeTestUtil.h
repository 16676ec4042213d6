// Helpers of the bridge tests: node graphs built in code, joints marked the way the tool marks
// them, and points turned about a centre.
#pragma once

#include "bridge/JointDefinition.h"
#include "bridge/SkeletonExtraction.h"

#include "scene/TUScene.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace BridgeTest {

// A scene with a command manager, and shorthands to fill it.
struct Graph {
    TUScene scene;
    CO_CommandManager manager;

    // Keyframes added at once are recorded on the manager, as in a session.
    Graph() { scene.setCommandManager(&manager); }
    ~Graph() { scene.setCommandManager(nullptr); }

    template <class T, class... Args>
    T *add(char const *name, Args &&...args)
    {
        auto node = UT_MakeShared<T>(std::forward<Args>(args)...);
        node->setInstanceName(QLatin1String(name));
        return static_cast<T *>(scene.getRootGroup()->addNode(node));
    }
    MO_Node *addPassThrough(char const *name, char const *keyword)
    {
        auto node = UT_MakeShared<MO_Node>(QLatin1String(keyword), 1, 1);
        node->setInstanceName(QLatin1String(name));
        return scene.getRootGroup()->addNode(node);
    }
    // Links src's output 0 to dst's input `in`.
    static void link(MO_Node *src, MO_Node *dst, int in = 0) { ASSERT_TRUE(MO_Node::connect(src, 0, dst, in)); }

    void root(MO_Module *module) { IKToolUtil::defineRoot(&manager, module, true); }
    void joint(MO_Module *module, bool participate = true) { IKToolUtil::setParticipation(&manager, module, participate); }

    // Pegs linked in a chain in the order of `names`; the first heads a skeleton, the others take
    // part in it.
    std::vector<MO_PegModule *> pegChain(std::initializer_list<char const *> names)
    {
        std::vector<MO_PegModule *> pegs;
        for (char const *name : names) {
            pegs.push_back(add<MO_PegModule>(name));
            if (pegs.size() == 1) {
                root(pegs.back());
            } else {
                link(pegs[pegs.size() - 2], pegs.back());
                joint(pegs.back());
            }
        }
        return pegs;
    }
};

inline std::string nameOf(MO_Module *module)
{
    return IKJointNameAttr::forNode(module)->name;
}

// The settings of a pose at `frame`: defined joints only, nothing ignored.
inline IKToolUtil::SkeletonExtractionSettings poseSettings(double frame = 0.0)
{
    IKToolUtil::SkeletonExtractionSettings settings;
    settings.frame = frame;
    return settings;
}

inline SkeletonDef extract(MO_Module *module, IKToolUtil::SkeletonExtractionSettings const &settings)
{
    SkeletonDef skeleton;
    IKToolUtil::skeletonFromModule(module, skeleton, settings);
    return skeleton;
}

// The modules of the joints, in list order (handles give their module again).
inline std::vector<MO_Module *> modulesOf(SkeletonDef const &skeleton)
{
    std::vector<MO_Module *> modules;
    for (SkeletonJointDef const &joint : skeleton)
        modules.push_back(joint.module.get());
    return modules;
}

inline SkeletonJointDef const *jointOf(SkeletonDef const &skeleton, MO_Module *module, bool handle = false)
{
    for (SkeletonJointDef const &joint : skeleton)
        if (joint.module.get() == module && joint.isHandle == handle)
            return &joint;
    return nullptr;
}

// `point` turned by `degrees` counter-clockwise about `centre`, in the xy plane.
inline Math::Point3d turned(Math::Point3d const &point, Math::Point3d const &centre, double degrees)
{
    double const r = degrees * 3.141592653589793 / 180.0;
    double const dx = point.x - centre.x;
    double const dy = point.y - centre.y;
    return Math::Point3d(centre.x + dx * std::cos(r) - dy * std::sin(r), centre.y + dx * std::sin(r) + dy * std::cos(r),
                         point.z);
}

inline void expectNear(Math::Point3d const &actual, Math::Point3d const &expected, double tolerance = 1e-9)
{
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
    EXPECT_NEAR(actual.z, expected.z, tolerance);
}

} // namespace BridgeTest
