#include "tool/SLB_Selectable.h"

#include "tool/SLB_PickEngine.h"

SLB_SelectablePickAdaptor::SLB_SelectablePickAdaptor(int handles)
{
    reserveHandles(handles);
}

SLB_SelectablePickAdaptor::~SLB_SelectablePickAdaptor() = default;

UT_SharedPtr<SLB_SelectableDescriptor> SLB_SelectablePickAdaptor::scanHits(std::uint32_t, bool, QFlags<Qt::KeyboardModifier>)
{
    return nullptr;
}

int SLB_SelectablePickAdaptor::handleId(std::uint32_t id) const
{
    if (firstId_ == SLB_PickEngine::kNoId || id < firstId_ || id - firstId_ >= static_cast<std::uint32_t>(handles_))
        return -1;
    return static_cast<int>(id - firstId_);
}

int SLB_SelectablePickAdaptor::nbHandles() const
{
    return handles_;
}

void SLB_SelectablePickAdaptor::reserveHandles(int handles)
{
    handles_ = handles < 1 ? 1 : handles;
    firstId_ = SLB_PickEngine::generateIdForPickingObject(handles_);
}
