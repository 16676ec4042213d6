#include "skeleton/SkeletonDef.h"

#include "skeleton/IKMetaData.h"

#include <algorithm>

// The only two places that reach a module's joint attributes. Nothing is kept between calls: each
// predicate reads the attributes' local values anew.
JointAttr *SkeletonJointDef::jointAttr() const
{
    return IKToolUtil::jointAttrForModule(module.get());
}

std::optional<JointConstraints> SkeletonJointDef::readConstraints() const
{
    JointAttr const *attr = jointAttr();
    if (!attr)
        return std::nullopt;
    JointConstraints c;
    c.holdPosition = attr->holdPositionAttr()->localValue();
    c.holdOrientation = attr->holdOrientationAttr()->localValue();
    c.useActualPosition = attr->useActualPositionAttr()->localValue();
    c.blocker = attr->isBlocker()->localValue();
    c.active = attr->activeAttr()->localValue();
    c.positionGain = attr->holdPositionGainAttr()->localValue();
    c.orientationGain = attr->holdOrientationGainAttr()->localValue();
    c.mobility = attr->weightAttr()->localValue();
    return c;
}

bool SkeletonJointDef::hasPositionTask() const
{
    if (isHandle)
        return false;
    std::optional<JointConstraints> const c = readConstraints();
    return c && c->holdPosition;
}

bool SkeletonJointDef::hasOrientationTask() const
{
    if (isHandle)
        return false;
    std::optional<JointConstraints> const c = readConstraints();
    return c && c->holdOrientation;
}

bool SkeletonJointDef::useActualPositionWhenInterpolating() const
{
    if (isHandle)
        return false;
    std::optional<JointConstraints> const c = readConstraints();
    return c && c->useActualPosition;
}

bool SkeletonJointDef::isBlocker() const
{
    std::optional<JointConstraints> const c = readConstraints();
    return c && c->blocker;
}

bool SkeletonJointDef::isMobile() const
{
    if (immobile)
        return false;
    std::optional<JointConstraints> const c = readConstraints();
    return c && c->active;
}

double SkeletonJointDef::positionTaskWeight() const
{
    std::optional<JointConstraints> const c = readConstraints();
    return c ? c->positionGain : 1.0;
}

double SkeletonJointDef::orientationTaskWeight() const
{
    std::optional<JointConstraints> const c = readConstraints();
    return c ? c->orientationGain : 1.0;
}

double SkeletonJointDef::mobilityWeight() const
{
    std::optional<JointConstraints> const c = readConstraints();
    return c ? c->mobility : 1.0;
}

bool SkeletonJointDef::isEquivalent(SkeletonJointDef const &other) const
{
    return module.isSameReference(other.module) && name == other.name && parentName == other.parentName &&
           index == other.index && childCount == other.childCount;
}

SkeletonDef::iterator SkeletonDef::find(std::string const &name)
{
    if (name.empty())
        return end();
    return std::find_if(begin(), end(), [&](SkeletonJointDef const &j) { return j.name == name; });
}

SkeletonDef::const_iterator SkeletonDef::find(std::string const &name) const
{
    return const_cast<SkeletonDef *>(this)->find(name);
}

JointAttr *SkeletonDef::getAttribute(int index) const
{
    if (index < 0 || index >= static_cast<int>(size()))
        return nullptr;
    return (*this)[static_cast<size_type>(index)].jointAttr();
}

bool SkeletonDef::isEquivalent(SkeletonDef const &other) const
{
    return size() == other.size() &&
           std::equal(begin(), end(), other.begin(),
                      [](SkeletonJointDef const &a, SkeletonJointDef const &b) { return a.isEquivalent(b); });
}

void SkeletonDef::updateLocal(iterator joint)
{
    if (joint == end())
        return;
    const_iterator const parent = find(joint->parentName);
    joint->localPosition = parent != end() ? Math::Point3d() + (joint->position - parent->position) : joint->position;
}

void SkeletonDef::updateLocalReferentials()
{
    for (iterator joint = begin(); joint != end(); ++joint) {
        updateLocal(joint);
        iterator const parent = find(joint->parentName);
        if (parent != end() && (parent->solvedPosition - joint->solvedPosition).length() < SkeletonJointDef::kImmobileDistance)
            parent->immobile = true;
    }
}
