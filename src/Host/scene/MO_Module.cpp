#include "scene/MO_Module.h"

#include "OwnAttrMeta.h"
#include "scene/AT_ValueAttr.h"
#include "scene/MO_ModuleVisitor.h"
#include "scene/SC_Frames.h"
#include "scene/SC_SceneMetrics.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>

// ---------------------------------------------------------------------------------------------
// MO_Module

MO_Module::MO_Module() : MO_Module(QStringLiteral("MODULE"), 1, 1) {}
MO_Module::MO_Module(QString typeKeyword, int inPorts, int outPorts)
    : MO_Node(std::move(typeKeyword), inPorts, outPorts)
{
}
MO_Module::~MO_Module() = default;

struct MO_Module::TransformCache {
    struct Entry {
        unsigned long dirty = 0;
        unsigned input = 0;
        CC_TransformationPtr parent;  // compared by address; held so that the address stays its own
        SC_SceneMetrics metrics;
        MO_PortTransformPtr value;
    };
    std::map<std::tuple<double, unsigned, int>, Entry> entries;  // by frame, port, context flags
    // Beyond this many entries the map starts again, so that a long session of frames visited
    // one by one does not keep them all.
    static constexpr std::size_t kMaxEntries = 4096;
};

MO_PortTransformPtr MO_Module::getPortTransformation(MO_BaseContext const &context, unsigned port) const
{
    if (port >= static_cast<unsigned>(nOutPorts()))
        return nullptr;
    unsigned const input = static_cast<unsigned>(std::max(0, transformationInput(context.frame())));
    CC_TransformationPtr parent = computeTransformationParent(context, input);
    if (std::isnan(context.frame()))  // no key orders NaN
        return UT_MakeShared<MO_PortTransform>(compose(context, parent ? *parent : CC_Transformation()));
    if (!transformCache_)
        transformCache_ = std::make_unique<TransformCache>();
    if (transformCache_->entries.size() >= TransformCache::kMaxEntries)
        transformCache_->entries.clear();
    TransformCache::Entry &entry = transformCache_->entries[std::make_tuple(context.frame(), port, context.flags())];
    SC_SceneMetrics const &metrics = sceneMetrics();
    if (entry.value && entry.dirty == dirtyCount() && entry.input == input && entry.parent.get() == parent.get() &&
        entry.metrics == metrics)
        return entry.value;
    entry.value = UT_MakeShared<MO_PortTransform>(compose(context, parent ? *parent : CC_Transformation()));
    entry.dirty = dirtyCount();
    entry.input = input;
    entry.parent = std::move(parent);
    entry.metrics = metrics;
    return entry.value;
}

CC_TransformationPtr MO_Module::computeTransformationParent(MO_BaseContext const &context, unsigned port) const
{
    if (port >= static_cast<unsigned>(nInPorts()))
        return nullptr;
    MO_Port const *src = inPort(static_cast<int>(port))->realSrcPort();
    MO_Module const *source = src ? src->node()->toModule() : nullptr;
    if (!source)
        return nullptr;
    MO_PortTransformPtr transform = source->getPortTransformation(context, static_cast<unsigned>(src->index()));
    if (!transform)
        return nullptr;
    // Aliasing: the transformation lives as long as the port transform that holds it.
    return CC_TransformationPtr(transform, &transform->transformation());
}

MO_Module *MO_Module::inputModule(int index) const
{
    MO_Port const *in = inPort(index);
    MO_Port const *src = in ? in->realSrcPort() : nullptr;
    return src ? src->node()->toModule() : nullptr;
}

int MO_Module::transformationInput(double) const
{
    return 0;
}

void MO_Module::accept(MO_ModuleVisitor &visitor)
{
    visitor.visit(*this);
}

CC_Transformation MO_Module::compose(MO_BaseContext const &, CC_Transformation const &parent) const
{
    return CC_Transformation(parent.matrix(true), parent.matrix(true));
}

double MO_Module::readDouble(AT_DoubleAttr const *attr, double frame, double fallback)
{
    return attr ? attr->value(frame, nullptr, nullptr) : fallback;
}

bool MO_Module::readBool(AT_BoolAttr const *attr, double frame, bool fallback)
{
    return attr ? attr->value(frame) : fallback;
}

int MO_Module::readInt(AT_IntAttr const *attr, double frame, int fallback)
{
    return attr ? attr->value(frame) : fallback;
}

Math::Point2d MO_Module::readPoint2d(AT_Position2dAttr const *attr, double frame, Math::Point2d const &fallback)
{
    if (!attr)
        return fallback;
    Math::Point2d p;
    attr->getValue(frame, p.x, p.y, nullptr);
    return p;
}

Math::Point3d MO_Module::readPoint3d(AT_Position3dAttr const *attr, double frame, Math::Point3d const &fallback)
{
    if (!attr)
        return fallback;
    Math::Point3d p;
    attr->getValue(frame, p, nullptr, nullptr);
    return p;
}

Math::Angle3d MO_Module::readAngle(AT_Rotation3dAttr const *attr, double frame)
{
    Math::Angle3d a;
    if (attr)
        attr->getValue(frame, a, nullptr, nullptr);
    return a;
}

// ---------------------------------------------------------------------------------------------
// MO_AnimatedModule

MO_AnimatedModule::MO_AnimatedModule(QString typeKeyword, int inPorts, int outPorts)
    : MO_Module(std::move(typeKeyword), inPorts, outPorts)
{
    AT_AttrMeta const &positionMeta = ownAttrMeta(QStringLiteral("position"), QStringLiteral("Position"));
    AT_AttrMeta const &rotationMeta = ownAttrMeta(QStringLiteral("rotation"), QStringLiteral("Rotation"));
    AT_AttrMeta const &scaleMeta = ownAttrMeta(QStringLiteral("scale"), QStringLiteral("Scale"));
    AT_AttrMeta const &pivotMeta = ownAttrMeta(QStringLiteral("pivot"), QStringLiteral("Pivot"));
    AT_AttrMeta const &excludedMeta = ownAttrMeta(QStringLiteral("excludeFromIK"), QStringLiteral("Exclude From IK"),
                                                  AT_AttrMetaContainer::NotAnimatable);
    AT_AttrMeta const &canAnimateMeta = ownAttrMeta(QStringLiteral("CAN_ANIMATE"),
                                                    QStringLiteral("Animate Using Animation Tools"),
                                                    AT_AttrMetaContainer::NotAnimatable);
    position_ = addOwnAttr(std::make_unique<AT_Position3dAttr>(this, positionMeta));
    rotation_ = addOwnAttr(std::make_unique<AT_Rotation3dAttr>(this, rotationMeta));
    scale_ = addOwnAttr(std::make_unique<AT_Position2dAttr>(this, scaleMeta, true, Math::Point2d(1.0, 1.0)));
    pivot_ = addOwnAttr(std::make_unique<AT_Position2dAttr>(this, pivotMeta));
    excludedFromIK_ = addOwnAttr(std::make_unique<AT_BoolAttr>(this, excludedMeta));
    canAnimate_ = addOwnAttr(std::make_unique<AT_BoolAttr>(this, canAnimateMeta, true));
}

MO_AnimatedModule::~MO_AnimatedModule() = default;

Math::Point3d MO_AnimatedModule::pivot(MO_BaseContext const &context) const
{
    Math::Point2d const p = readPoint2d(pivot_, context.frame());
    return {p.x, p.y, 0.0};
}

bool MO_AnimatedModule::isExcludedFromIK() const
{
    return excludedFromIK_->localValue();
}

Math::Matrix4x4 MO_AnimatedModule::localMatrix(MO_BaseContext const &context) const
{
    double const frame = context.frame();
    SC_SceneMetrics const &metrics = sceneMetrics();
    Math::Point3d const position = metrics.toOGL(readPoint3d(position_, frame));
    Math::Point3d const pivotOgl = metrics.toOGL(pivot(context));
    Math::Point2d const scale = readPoint2d(scale_, frame, Math::Point2d(1.0, 1.0));
    Math::Matrix4x4 m;
    m.translate(position.x, position.y, position.z)
        .translate(pivotOgl.x, pivotOgl.y)
        .rotateDegrees(readAngle(rotation_, frame).z)
        .scale(scale.x, scale.y)
        .translate(-pivotOgl.x, -pivotOgl.y);
    return m;
}

CC_Transformation MO_AnimatedModule::compose(MO_BaseContext const &context, CC_Transformation const &parent) const
{
    Math::Matrix4x4 const world = parent.matrix(true) * localMatrix(context);
    return CC_Transformation(world, world);
}

MO_PegModule::MO_PegModule() : MO_AnimatedModule(Keyword(), 1, 1) {}
void MO_PegModule::accept(MO_ModuleVisitor &visitor) { visitor.visit(*this); }

// ---------------------------------------------------------------------------------------------
// MO_ElementModule

struct MO_ElementModule::Impl {
    QString elementName;
    std::map<QString, UT_SharedPtr<OC_Drawing const>> drawings;
    std::map<int, QString> timing;  // each name empty or a key of drawings
};

MO_ElementModule::MO_ElementModule() : MO_AnimatedModule(Keyword(), 1, 1), d_(std::make_unique<Impl>()) {}
MO_ElementModule::~MO_ElementModule() = default;
void MO_ElementModule::accept(MO_ModuleVisitor &visitor) { visitor.visit(*this); }

QString const &MO_ElementModule::elementName() const { return d_->elementName; }
void MO_ElementModule::setElementName(QString const &name)
{
    d_->elementName = name;
    // The drawings carry their key: give them the new one.
    for (auto &entry : d_->drawings)
        entry.second = UT_MakeShared<OC_Drawing const>(CA_CelKey(name, entry.first), entry.second->shapes());
}
std::map<QString, UT_SharedPtr<OC_Drawing const>> const &MO_ElementModule::drawings() const { return d_->drawings; }
std::map<int, QString> const &MO_ElementModule::timing() const { return d_->timing; }

void MO_ElementModule::addDrawing(QString const &name, std::vector<OC_VectorShape> shapes)
{
    d_->drawings[name] = UT_MakeShared<OC_Drawing const>(CA_CelKey(d_->elementName, name), std::move(shapes));
    setDirty();
}

bool MO_ElementModule::setExposure(int frame, QString const &name)
{
    if ((!name.isEmpty() && d_->drawings.count(name) == 0) || !SC_Frames::contains(frame))
        return false;
    d_->timing[frame] = name;
    setDirty();
    return true;
}

OC_DrawingPtr MO_ElementModule::oglDrawing(double frame) const
{
    auto it = d_->timing.upper_bound(SC_Frames::toInt(frame));
    if (it == d_->timing.begin())
        return {};
    --it;
    auto const drawing = d_->drawings.find(it->second);
    return drawing == d_->drawings.end() ? OC_DrawingPtr() : OC_DrawingPtr(drawing->second);
}

MO_ElementModule::Content MO_ElementModule::content() const
{
    return Content{d_->drawings, d_->timing};
}

void MO_ElementModule::setContent(Content content)
{
    d_->drawings = std::move(content.drawings);
    d_->timing = std::move(content.timing);
    setDirty();
}

QString MO_ElementModule::nextDrawingName() const
{
    qlonglong greatest = 0;
    for (auto const &entry : d_->drawings) {
        bool number = false;
        qlonglong const value = entry.first.toLongLong(&number);
        if (number && value > greatest)
            greatest = value;
    }
    return QString::number(greatest + 1);
}

bool MO_ElementModule::isUsable() const
{
    for (auto const &entry : d_->timing)
        if (!entry.second.isEmpty())
            return true;
    return false;
}

// ---------------------------------------------------------------------------------------------
// MO_SwitchModule

MO_SwitchModule::MO_SwitchModule(int inputCount) : MO_Module(Keyword(), std::max(1, inputCount), 1)
{
    AT_AttrMeta const &activeMeta = ownAttrMeta(QStringLiteral("activeInput"), QStringLiteral("Active Input"));
    active_ = addOwnAttr(std::make_unique<AT_IntAttr>(this, activeMeta));
}

int MO_SwitchModule::transformationInput(double frame) const
{
    int const active = readInt(active_, frame);
    return active >= 0 && active < nInPorts() ? active : 0;
}

void MO_SwitchModule::accept(MO_ModuleVisitor &visitor) { visitor.visit(*this); }
