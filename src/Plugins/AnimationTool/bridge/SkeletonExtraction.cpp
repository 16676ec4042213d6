#include "bridge/SkeletonExtraction.h"

#include "bridge/GraphWalk.h"
#include "bridge/JointDefinition.h"
#include "bridge/ModuleEvaluation.h"

namespace {

using IKToolUtil::isUsableFrame;
using IKToolUtil::sourceNode;

// A handle's name is its joint's followed by this.
char const *const kHandleSuffix = "_handle";
// The attribute whose false keeps a module out of generated skeletons.
QString const kCanAnimateKeyword = QStringLiteral("CAN_ANIMATE");

// The keywords of the module kinds that are joints without an animated part of their own. Filled
// on first use, never cleared.
std::set<QString> const &poseableKeywords()
{
    static std::set<QString> const keywords{BendyBoneModule::Keyword(), GameBoneModule::Keyword(),
                                            CurveModule::Keyword(), OffsetModule::Keyword()};
    return keywords;
}

// Whether the module may become a joint at all: one with an animated part, or a deformer kind.
bool isPoseableModule(MO_Module *module)
{
    if (!module)
        return false;
    if (module->toAnimatedModule())
        return true;
    return poseableKeywords().count(module->typeKeyword()) != 0;
}

std::string jointNameOf(MO_Module *module)
{
    IKJointNameAttr const *name = IKJointNameAttr::forNode(module);
    return name ? name->name : std::string();
}

// Gives the joint at `jointIndex` a synthetic tip along its module's handle, if it has no child or
// `force` holds. Careful: pushing the handle may move every joint of the list.
void addHandleJoint(SkeletonDef &skeleton, int jointIndex, double frame, bool force)
{
    SkeletonJointDef &joint = skeleton[std::size_t(jointIndex)];
    if (joint.childCount != 0 && !force)
        return;
    MO_Module *const module = joint.module.get();
    Math::Matrix4x4 const world =
        module ? IKToolUtil::worldMatrix(module, MO_BaseContext(MO_FrameKey(frame), 0)) : Math::Matrix4x4();

    SkeletonJointDef handle;
    handle.module = joint.module;
    handle.name = joint.name + kHandleSuffix;
    handle.parentName = joint.name;
    handle.isHandle = true;
    handle.index = int(skeleton.size());
    Math::Vector3d const offset = world * IKToolUtil::handleOrientationForModule(module);
    handle.position = joint.solvedPosition + offset;
    handle.solvedPosition = handle.position;
    ++joint.childCount;
    skeleton.push_back(handle);
}

// Every module at or below `root` whose transformation input changes with the frame.
std::set<MO_Module *> collectSwitchModules(MO_Module *root)
{
    std::set<MO_Module *> found;
    IKToolUtil::walkDownward(root, true, [&found](MO_Node *node) {
        MO_Module *module = node->toModule();
        if (module && module->hasSwitchedInputs())
            found.insert(module);
    });
    return found;
}

// Every module below `start` (not `start` itself) whose first "CAN_ANIMATE" attribute is a bool
// that is false.
std::set<MO_Module *> collectNonAnimatableModules(MO_Module *start)
{
    std::set<MO_Module *> found;
    IKToolUtil::walkDownward(start, false, [&found](MO_Node *node) {
        for (auto it = node->attrsBegin(); it != node->attrsEnd(); ++it) {
            if ((*it)->meta().keyword() != kCanAnimateKeyword)
                continue;
            auto const *flag = dynamic_cast<AT_BoolAttr const *>(*it);
            if (flag && !flag->localValue() && node->toModule())
                found.insert(node->toModule());
            break;
        }
    });
    return found;
}

// Walks up from `start` along the transformation in force at `frame`: at a module through its
// transformation input, at any other node through port 0. Visits the modules on the way.
template <class Visit>
void walkTransformationChain(MO_Node *start, int frame, Visit visit)
{
    for (MO_Node *node = start; node;) {
        int port = 0;
        if (MO_Module *module = node->toModule()) {
            visit(module);
            port = module->transformationInput(frame);
        }
        node = sourceNode(node, port);
    }
}

// Puts into `excluded` the modules that feed the inactive inputs of `switcher` at `frame` and do not
// also stand on its active chain.
void excludeInactiveBranches(MO_Module *switcher, std::set<MO_Module *> &excluded, int frame)
{
    std::set<MO_Module *> kept;
    walkTransformationChain(switcher, frame, [&kept](MO_Module *module) { kept.insert(module); });
    int const active = switcher->transformationInput(frame);
    for (int i = 0; i < switcher->nInPorts(); ++i) {
        if (i == active)
            continue;
        walkTransformationChain(switcher->inputModule(i), frame, [&](MO_Module *module) {
            if (!kept.count(module))
                excluded.insert(module);
        });
    }
}

} // namespace

namespace {
IKToolUtil::SetupKeywordOptions &keywordOptions()
{
    static IKToolUtil::SetupKeywordOptions options;  // main thread only
    return options;
}
} // namespace

IKToolUtil::SetupKeywordOptions IKToolUtil::setupKeywordOptions()
{
    return keywordOptions();
}

void IKToolUtil::setSetupKeywordOptions(SetupKeywordOptions const &options)
{
    keywordOptions() = options;
}

std::set<QString> IKToolUtil::getIgnoredKeywords(SetupKeywordOptions const &options)
{
    std::set<QString> keywords;
    if (!options.usePeg)
        keywords.insert(QStringLiteral("PEG"));
    if (!options.useRead)
        keywords.insert(QStringLiteral("READ"));
    if (!options.useDeformer)
        keywords.insert({QStringLiteral("CurveModule"), QStringLiteral("BoneModule"), QStringLiteral("BendyBoneModule"),
                         QStringLiteral("GameBoneModule"), QStringLiteral("OffsetModule")});
    return keywords;
}

std::set<QString> IKToolUtil::getIgnoredKeywords()
{
    return getIgnoredKeywords(setupKeywordOptions());
}

MO_Module *IKToolUtil::skeletonFromModule(MO_Module *module)
{
    return findRoot(module);
}

void IKToolUtil::skeletonFromModule(MO_Module *module, SkeletonDef &skeleton, SkeletonExtractionSettings const &settings)
{
    skeletonFromModule(module, skeleton, settings, std::set<MO_Module *>());
}

void IKToolUtil::skeletonFromModule(MO_Module *module, SkeletonDef &skeleton, SkeletonExtractionSettings const &settings,
                                    std::set<MO_Module *> const &excludedModules)
{
    skeleton.clear();
    if (!module || !isUsableFrame(settings.frame))
        return;
    MO_Module *root = findRoot(module);
    if (!root) {
        if (settings.definedJointsOnly)
            return;
        root = findTopLevelParent(module);
        if (!root)
            return;
    }

    std::set<MO_Module *> excluded = excludedModules;
    int const frame = int(settings.frame);
    for (MO_Module *switcher : collectSwitchModules(root))
        excludeInactiveBranches(switcher, excluded, frame);

    std::set<MO_Module *> visited{root};
    appendModuleToSkeleton(root, skeleton, settings, visited);
    walkDownwardPruned(root, true, [&](MO_Node *node) {
        MO_Module *const candidate = node->toModule();
        if (candidate && candidate != root && isRoot(candidate))
            return false;  // another skeleton's head: nothing of it enters this one
        if (!isPoseableModule(candidate) || visited.count(candidate) || excluded.count(candidate))
            return true;
        if (settings.ignoredKeywords.count(candidate->typeKeyword()) && !settings.forcedModules.count(candidate))
            return true;
        if (participates(candidate) || !settings.definedJointsOnly)
            appendModuleToSkeleton(candidate, skeleton, settings, visited);
        return true;
    });

    if (settings.definedJointsOnly && skeleton.size() >= 2) {
        int const count = int(skeleton.size());
        for (int i = 1; i < count; ++i)
            addHandleJoint(skeleton, i, settings.frame, false);
    }

    // The first joint keeps its module's name until here, so that children could find it.
    std::string const firstName = skeleton.empty() ? std::string() : skeleton.front().name;
    for (std::size_t i = 1; i < skeleton.size(); ++i)
        if (skeleton[i].parentName == firstName)
            skeleton[i].parentName = "root";
    if (!skeleton.empty())
        skeleton.front().name = "root";
    skeleton.updateLocalReferentials();
}

void IKToolUtil::smartSkeletonFromModule(MO_Module *module, SkeletonDef &skeleton, double frame)
{
    skeleton.clear();
    if (!module)
        return;
    SkeletonExtractionSettings settings;
    settings.definedJointsOnly = false;
    settings.frame = frame;
    skeletonFromModule(module, skeleton, settings, collectNonAnimatableModules(module));
}

void IKToolUtil::appendModuleToSkeleton(MO_Module *module, SkeletonDef &skeleton,
                                        SkeletonExtractionSettings const &settings, std::set<MO_Module *> &visited)
{
    if (!module || !isUsableFrame(settings.frame))
        return;
    MO_Module *const parent = getAncestorForModuleInSet(module, visited);
    auto const *miniPeg = dynamic_cast<MiniPegModule const *>(module);
    if (miniPeg && !miniPeg->useLocalReferential())
        return;

    int const frame = int(settings.frame);
    SkeletonJointDef joint;
    joint.module = UT_SharedWeakPtr<MO_Module>(module);
    joint.position = dynamic_cast<BendyBoneModule const *>(module) ? getModuleOffsetJointAtFrame(module, frame)
                                                                   : getModuleJointPositionAtFrame(module, frame);
    joint.solvedPosition = joint.position;
    joint.index = int(skeleton.size());
    joint.name = jointNameOf(module);
    if (parent) {
        joint.parentName = jointNameOf(parent);
        auto const found = skeleton.find(joint.parentName);
        if (found != skeleton.end())
            ++found->childCount;
    }
    skeleton.push_back(joint);
    visited.insert(module);
}

void IKToolUtil::copyHandlesToSkeleton(SkeletonDef &target, SkeletonDef const &source, double frame)
{
    if (source.size() < 2 || !isUsableFrame(frame))
        return;
    for (std::size_t i = 1; i < source.size(); ++i) {
        if (!source[i].isHandle)
            continue;
        auto const joint = target.find(source[i].parentName);
        if (joint != target.end())
            addHandleJoint(target, int(joint - target.begin()), frame, true);
    }
}

MO_Module *IKToolUtil::findRoot(MO_Node *node)
{
    for (; node; node = sourceNode(node, 0)) {
        MO_Module *const module = node->toModule();
        if (isRoot(module))
            return module;
    }
    return nullptr;
}

MO_Module *IKToolUtil::findTopLevelParent(MO_Node *node)
{
    if (!node)
        return nullptr;
    for (;;) {
        MO_Node *const above = sourceNode(node, 0);
        if (!above)
            break;
        MO_AnimatedModule const *animated = above->toAnimatedModule();
        if (animated && animated->isExcludedFromIK())
            break;
        node = above;
    }
    return node->toModule();
}

MO_Module *IKToolUtil::getAncestorForModuleInSet(MO_Module *module, std::set<MO_Module *> const &set)
{
    for (MO_Node *node = module ? sourceNode(module, 0) : nullptr; node; node = sourceNode(node, 0)) {
        MO_Module *const candidate = node->toModule();
        if (candidate && set.count(candidate))
            return candidate;
    }
    return nullptr;
}

int IKToolUtil::getModuleDepth(MO_Module *module)
{
    int depth = 0;
    for (MO_Node *node = module ? sourceNode(module, 0) : nullptr; node; node = sourceNode(node, 0))
        ++depth;
    return depth;
}

MO_Module *IKToolUtil::concreteModuleFromSelection()
{
    MO_Node *const first = SL_SelectionUtil::getFirstNode(PLUG_Services::getSelection());
    if (!first)
        return nullptr;
    if (auto const *group = dynamic_cast<TUGroup const *>(first)) {
        for (auto it = group->subNodesBegin(); it != group->subNodesEnd(); ++it)
            if (auto *element = dynamic_cast<MO_ElementModule *>(it->get()))
                return element;
        return nullptr;
    }
    return first->toModule();
}

MO_Module *IKToolUtil::skeletonFromSelection()
{
    return findRoot(concreteModuleFromSelection());
}

MO_Module *IKToolUtil::uniqueSelection()
{
    MO_Node *const node = SL_SelectionUtil::getSingleNode(PLUG_Services::getSelection());
    return node ? node->toModule() : nullptr;
}

bool IKToolUtil::isMultipleSelection()
{
    return SL_SelectionUtil::getNodes(PLUG_Services::getSelection()).size() > 1;
}

std::set<MO_Module *> IKToolUtil::selectedNodes(MO_Module *root)
{
    std::set<MO_Module *> kept;
    if (!root)
        return kept;
    std::set<MO_Module *> const heads{root};
    for (MO_Node *node : SL_SelectionUtil::getNodes(PLUG_Services::getSelection())) {
        MO_Module *const module = node->toModule();
        if (module && (module == root || getAncestorForModuleInSet(module, heads)))
            kept.insert(module);
    }
    return kept;
}

MO_Module *IKToolUtil::moduleFromSelectable(UT_SharedPtr<SLB_SelectableDescriptor> const &descriptor)
{
    auto const *module = dynamic_cast<SLB_ModuleDescriptor const *>(descriptor.get());
    return module ? module->module() : nullptr;
}

void IKToolUtil::addModuleToSelection(MO_Module *module)
{
    if (module)
        SL_SelectionUtil::addToSelection(PLUG_Services::getSelection(), module);
}
