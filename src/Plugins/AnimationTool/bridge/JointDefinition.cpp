#include "bridge/JointDefinition.h"

#include "bridge/GraphWalk.h"
#include "bridge/SetLocalValueCmd.h"

#include <set>

namespace {

// The direction of a handle for a module without joint attributes, in scene space.
Math::Vector3d const kDefaultHandle(0.1, 0.0, 0.0);

// Sets `attr` from `text` at frame 0 through its command, if that changes anything.
void executeText(CO_CommandManager *manager, AT_Attr *attr, bool value)
{
    if (std::unique_ptr<CO_Command> cmd = attr->setTextValue(0.0, value ? QStringLiteral("true") : QStringLiteral("false")))
        manager->execute(std::move(cmd), QString());
}

// The module's metadata, created by a command if it has none; null if creation failed.
IKMetaData *ensureMetaData(CO_CommandManager *manager, MO_Module *module)
{
    if (IKMetaData *existing = IKToolUtil::getIKMetaDataForModule(module))
        return existing;
    manager->execute(std::make_unique<IKCreateAttrCmd>(module, IKMetaData::metaForKeyword(IKMetaData::Keyword()),
                                                       IKMetaData::TypeString(), false),
                     QString());
    return IKToolUtil::getIKMetaDataForModule(module);
}

// Every module below `start` (not `start` itself) whose metadata says it participates.
void collectParticipatingModules(MO_Module *start, std::set<MO_Module *> &out)
{
    out.clear();
    IKToolUtil::walkDownward(start, false, [&out](MO_Node *node) {
        MO_Module *module = node->toModule();
        if (IKToolUtil::participates(module))
            out.insert(module);
    });
}

CC_Transformation worldTransformation(MO_Module const *module, MO_BaseContext const &context)
{
    MO_PortTransformPtr const port = module->getPortTransformation(context);
    return port ? port->transformation() : CC_Transformation();
}

Math::Point3d toPoint3d(Math::Point2d const &p)
{
    return Math::Point3d(p.x, p.y, 0.0);
}

} // namespace

void IKToolUtil::setParticipation(CO_CommandManager *manager, MO_Module *module, bool participate)
{
    if (!manager || !module)
        return;
    if (IKMetaData *metaData = ensureMetaData(manager, module))
        executeText(manager, metaData->skeletonMetaData()->participates(), participate);
}

CO_CommandManager *IKToolUtil::commandManagerForModule(MO_Module *module)
{
    SC_ProjectCommon *project = module ? module->projectCommon() : nullptr;
    return project ? project->commandManager() : nullptr;
}

void IKToolUtil::defineRoot(CO_CommandManager *manager, MO_Module *module, bool define)
{
    if (!manager || !module)
        return;
    if (!define) {
        if (!getIKMetaDataForModule(module))
            return;
        std::set<MO_Module *> below;
        collectParticipatingModules(module, below);
        for (MO_Module *m : below)
            setParticipation(manager, m, false);
    }
    IKMetaData *metaData = ensureMetaData(manager, module);
    if (!metaData)
        return;
    executeText(manager, metaData->skeletonMetaData()->jointAttr()->isRoot(), define);
    if (define)
        executeText(manager, metaData->skeletonMetaData()->participates(), true);
}

Math::Vector3d IKToolUtil::handleOrientationForModule(MO_Module *module)
{
    IKMetaData const *metaData = getIKMetaDataForModule(module);
    if (!metaData)
        return kDefaultHandle;
    JointAttr const *joint = metaData->skeletonMetaData()->jointAttr();
    return module->sceneMetrics().toOGL(
        Math::Vector3d(joint->handlePositionX()->localValue(), joint->handlePositionY()->localValue(), 0.0));
}

void IKToolUtil::setHandleOrientationForModule(CO_CommandManager *manager, MO_Module *module,
                                               Math::Vector3d const &vector, double frame)
{
    if (!manager || !module)
        return;
    if (!participates(module))
        setParticipation(manager, module, true);
    IKMetaData const *metaData = getIKMetaDataForModule(module);
    if (!metaData)
        return;
    Math::Matrix4x4 inverse;
    try {
        inverse = worldTransformation(module, MO_BaseContext(MO_FrameKey(frame), 0)).matrix(true).getInverse();
    } catch (Math::SingularMatrixError const &) {
        return;  // a flattened module has no local axes to keep a handle in
    }
    Math::Vector3d const local = module->sceneMetrics().fromOGL(inverse * vector);
    JointAttr *joint = metaData->skeletonMetaData()->jointAttr();
    manager->execute(std::make_unique<tu_attr::SetLocalValueCmd<AT_DoubleAttr>>(joint->handlePositionX(), local.x),
                     QString());
    manager->execute(std::make_unique<tu_attr::SetLocalValueCmd<AT_DoubleAttr>>(joint->handlePositionY(), local.y),
                     QString());
}

Math::Point3d IKToolUtil::getModuleJointPositionAtFrame(MO_Module *module, int frame)
{
    if (!module)
        return Math::Point3d();
    MO_BaseContext const context(MO_FrameKey(double(frame)), 0);
    CC_Transformation const transformation = worldTransformation(module, context);
    Math::Matrix4x4 world = transformation.matrix(true);
    Math::Point3d point;
    if (MO_AnimatedModule const *animated = module->toAnimatedModule())
        point = module->sceneMetrics().toOGL(animated->pivot(context));
    else if (auto const *miniPeg = dynamic_cast<MiniPegModule const *>(module))
        world = transformation.matrix(false) * Math::Matrix4x4(miniPeg->localReferential(context));
    return world * point;
}

Math::Point3d IKToolUtil::getModuleOffsetJointAtFrame(MO_Module *module, int frame)
{
    if (!module)
        return Math::Point3d();
    MO_BaseContext context(MO_FrameKey(double(frame)), 0);
    CC_Transformation const transformation = worldTransformation(module, context);
    Math::Matrix4x4 world;
    if (module->inputModule(0))
        world = transformation.matrix(false);

    QString const &keyword = module->typeKeyword();
    Math::Point3d point;
    if (keyword == BendyBoneModule::Keyword() || keyword == GameBoneModule::Keyword()) {
        if (auto const *bone = dynamic_cast<BendyBoneModule const *>(module)) {
            MO_FramePair offset, start, middle, end;
            bone->computeComponentReference(context, offset, start, middle, end);
            world = world * Math::Matrix4x4(start.second);
        }
    } else if (keyword == CurveModule::Keyword()) {
        if (auto const *curve = dynamic_cast<CurveModule const *>(module)) {
            GR_Bezier2d first(3, 1, 1);
            GR_Bezier2d second(3, 1, 1);
            DeformationInformation const *info = transformation.deformation(DeformationInformation::typeId);
            if (curve->getBeziers(context, first, second, info ? *info : DeformationInformation()))
                point = module->sceneMetrics().toOGL(toPoint3d(second.controlPoint(0)));
        }
    } else if (keyword == OffsetModule::Keyword()) {
        if (auto const *offset = dynamic_cast<OffsetModule const *>(module))
            point = module->sceneMetrics().toOGL(toPoint3d(offset->offset()->value(context.frame())));
    }
    return world * point;
}
