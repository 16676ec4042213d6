// The drawings the Shift and Trace tool works on.
//
// One element of the set is one drawing (one cel of one element module), not a node: a module
// stands in the set once for each of its drawings that is selected. The set is apart from the
// host's node selection but kept in step with it: add() writes through to the node selection, and
// validate() prunes the set by it and refills an empty set from it. The selection is a
// process-wide singleton, published to the host (ShiftAndTraceAbstractSelection) so that the host
// can ask whether a drawing is selected, to draw the cross-hairs over it.
//
// Order of the set: by the module's address (taken when the element was made), then by cel key.
// The frame an element was made at takes no part, so a drawing is in the set at most once. Group
// operations and the first element a panel shows follow this order.
#pragma once

#include "host/HostAPI.h"

#include <cstdint>
#include <memory>
#include <set>

class ShiftAndTraceManipulator;

class ShiftAndTraceSelection : public AT_ShiftAndTraceUtil::ShiftAndTraceAbstractSelection {
public:
    struct SelectionElement {
        SelectionElement() = default;
        SelectionElement(MO_ElementModule *module, CA_CelKey key, int frame, bool fromNodeSelection);

        bool fromNodeSelection = true;  // made by validate() from the node selection; false: picked by add()
        // Made on first use by manipulator(); shared by copies of the element.
        mutable UT_SharedPtr<ShiftAndTraceManipulator> manipulatorPtr;
        CA_CelKey celKey;
        UT_SharedWeakPtr<MO_ElementModule> module;  // reads null once the module is gone
        int frame = -1;                             // the frame the element was made at

        // The drawing's manipulator, made from the element's module and frame at the first call.
        ShiftAndTraceManipulator &manipulator() const;

        // Careful: ordering uses the address the module had when the element was made, so that an
        // element stays in place in the set after its module dies.
        bool operator<(SelectionElement const &o) const;

    private:
        std::uintptr_t moduleAddress_ = 0;  // = address of module at construction, 0 for none
    };

    static ShiftAndTraceSelection &instance();

    std::set<SelectionElement> &elements();

    bool isSelected(MO_ElementModule *module, CA_CelKey const &key) override;
    // The element of (module, key), or null. A null module is looked up as such.
    SelectionElement const *find(MO_ElementModule *module, CA_CelKey const &key);

    // Selects the drawing of `module` at `frame`, writing through to the node selection. With
    // `clear`, the set and the node selection are emptied first and the drawing replaces them;
    // without, a drawing already in the set is taken out (a toggle), and the module leaves the node
    // selection when none of its drawings is left. A module without a drawing at `frame` is
    // selected as a node but adds no element; a null module only clears (with `clear`).
    void add(MO_ElementModule *module, int frame, bool clear);
    // Brings the set in step with the node selection at `frame`: at a new frame everything is
    // forgotten; then elements whose module died, left the node selection or cannot be worked on
    // go, and so do elements made from the node selection at another frame (picked ones of other
    // frames stay). A set left empty is refilled from the selected element modules' drawings at
    // `frame`.
    void validate(int frame);

    // Test support: the frame of the last validate, -1 before the first.
    int currentSelectionFrame() const;

    ShiftAndTraceSelection(ShiftAndTraceSelection const &) = delete;
    ShiftAndTraceSelection &operator=(ShiftAndTraceSelection const &) = delete;

private:
    ShiftAndTraceSelection();
    ~ShiftAndTraceSelection() override;

    struct Impl;
    std::unique_ptr<Impl> d_;
};
