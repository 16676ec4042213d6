// What a pick finds, and the objects that own blocks of picking ids.
//
// A pick adaptor reserves a block of consecutive picking ids, one per handle, draws its handles in
// their colours in the pick pass, and turns an id found under the pointer back into a descriptor of
// what was hit (scanHits). Descriptors are shared host objects.
#pragma once

#include "base/UT_SharedPtr.h"

#include <QFlags>
#include <Qt>

#include <cstdint>

class MO_Module;

class SLB_SelectableDescriptor : public UT_ShareBase {
public:
    ~SLB_SelectableDescriptor() override = default;
    // True when the descriptor stands for a thing drawn in the pick pass (a handle), not a node.
    virtual bool hasPickingObject() const { return false; }
};

// A pick that found a module.
class SLB_ModuleDescriptor : public SLB_SelectableDescriptor {
public:
    explicit SLB_ModuleDescriptor(MO_Module *module) : module_(module) {}
    MO_Module *module() const { return module_; }

private:
    MO_Module *module_;  // not owned; valid while the scene that owns it is unchanged
};

// A pick that found a module at a given frame.
class SLB_ModuleDescriptorWithFrame : public SLB_ModuleDescriptor {
public:
    SLB_ModuleDescriptorWithFrame(MO_Module *module, int frame) : SLB_ModuleDescriptor(module), frame_(frame) {}
    int frame() const { return frame_; }

private:
    int frame_;
};

class SLB_SelectablePickAdaptor {
public:
    // Reserves a block of `handles` ids (at least 1).
    explicit SLB_SelectablePickAdaptor(int handles);
    virtual ~SLB_SelectablePickAdaptor();

    // The descriptor of what the id stands for, or null. The default finds nothing.
    virtual UT_SharedPtr<SLB_SelectableDescriptor> scanHits(std::uint32_t id, bool commit, QFlags<Qt::KeyboardModifier> modifiers);
    // The handle index of `id` within this adaptor's block, or -1.
    virtual int handleId(std::uint32_t id) const;
    virtual int nbHandles() const;

    // Replaces the block with a fresh one of `handles` ids (at least 1). Ids of the old block no
    // longer belong to this adaptor.
    void reserveHandles(int handles);
    // The first id of the block.
    std::uint32_t pickingId() const { return firstId_; }

private:
    std::uint32_t firstId_ = 0;  // ids firstId_ .. firstId_ + handles_ - 1 are this adaptor's
    int handles_ = 0;
};
