#include "shifttrace/ShiftAndTraceSelection.h"

#include "shifttrace/ShiftAndTraceToolUtils.h"

#include <algorithm>
#include <vector>

namespace {

std::uintptr_t addressOf(MO_ElementModule const *module)
{
    return reinterpret_cast<std::uintptr_t>(module);
}

// The key of the drawing `module` exposes at `frame`; an invalid key when none is.
CA_CelKey drawingKeyAt(MO_ElementModule const *module, int frame)
{
    OC_DrawingPtr const drawing = module->oglDrawing(frame);
    return drawing.drawing() ? drawing.drawing()->celKey() : CA_CelKey();
}

} // namespace

ShiftAndTraceSelection::SelectionElement::SelectionElement(MO_ElementModule *module_, CA_CelKey key, int frame_,
                                                           bool fromNodeSelection_)
    : fromNodeSelection(fromNodeSelection_), celKey(std::move(key)), module(module_), frame(frame_),
      moduleAddress_(addressOf(module_))
{
}

bool ShiftAndTraceSelection::SelectionElement::operator<(SelectionElement const &o) const
{
    if (moduleAddress_ != o.moduleAddress_)
        return moduleAddress_ < o.moduleAddress_;
    return celKey < o.celKey;
}

struct ShiftAndTraceSelection::Impl {
    int currentSelectionFrame = -1;  // frame of the last validate
    std::set<SelectionElement> elements;
};

ShiftAndTraceSelection::ShiftAndTraceSelection() : d_(std::make_unique<Impl>())
{
    ShiftAndTraceAbstractSelection::setInstance(this);
}

ShiftAndTraceSelection::~ShiftAndTraceSelection()
{
    ShiftAndTraceAbstractSelection::setInstance(nullptr);
}

ShiftAndTraceSelection &ShiftAndTraceSelection::instance()
{
    static ShiftAndTraceSelection selection;
    return selection;
}

std::set<ShiftAndTraceSelection::SelectionElement> &ShiftAndTraceSelection::elements()
{
    return d_->elements;
}

int ShiftAndTraceSelection::currentSelectionFrame() const
{
    return d_->currentSelectionFrame;
}

bool ShiftAndTraceSelection::isSelected(MO_ElementModule *module, CA_CelKey const &key)
{
    return find(module, key) != nullptr;
}

ShiftAndTraceSelection::SelectionElement const *ShiftAndTraceSelection::find(MO_ElementModule *module,
                                                                              CA_CelKey const &key)
{
    auto const it = d_->elements.find(SelectionElement(module, key, -1, false));
    return it == d_->elements.end() ? nullptr : &*it;
}

void ShiftAndTraceSelection::add(MO_ElementModule *module, int frame, bool clear)
{
    std::set<SelectionElement> &elements = d_->elements;
    if (clear) {
        elements.clear();
        SL_SelectionUtil::clear(PLUG_Services::getSelection());
    }
    if (!module)
        return;
    ShiftAndTraceToolUtils::selectElement(module);
    // Careful: selecting the node tells the selection's listeners, which may fill the set again.
    if (clear)
        elements.clear();

    CA_CelKey const key = drawingKeyAt(module, frame);
    if (!key.isValid())
        return;  // the module stays selected as a node
    SelectionElement element(module, key, frame, false);
    if (clear) {
        elements.insert(std::move(element));
        return;
    }
    auto const existing = elements.find(element);
    if (existing == elements.end()) {
        elements.insert(std::move(element));
        return;
    }
    // A toggle: the drawing leaves, and the module leaves the node selection with its last drawing.
    elements.erase(existing);
    bool const moduleStays = std::any_of(elements.begin(), elements.end(), [module](SelectionElement const &e) {
        return e.module.get() == module;
    });
    if (!moduleStays)
        ShiftAndTraceToolUtils::deselectElement(module);
}

void ShiftAndTraceSelection::validate(int frame)
{
    std::set<SelectionElement> &elements = d_->elements;
    if (frame != d_->currentSelectionFrame)
        elements.clear();
    d_->currentSelectionFrame = frame;

    for (auto it = elements.begin(); it != elements.end();) {
        MO_ElementModule const *module = it->module.get();
        bool const drop = !module || !ShiftAndTraceToolUtils::elementIsSelected(module) ||
                          (it->fromNodeSelection && it->frame != frame) || !module->isUsable();
        it = drop ? elements.erase(it) : std::next(it);
    }
    // Refilled only when it ran empty: a node selected while some drawing is in the set stays out.
    if (!elements.empty())
        return;
    std::vector<MO_ElementModule *> selected;
    ShiftAndTraceToolUtils::selectedElementModules(selected);
    for (MO_ElementModule *module : selected) {
        if (!module->isUsable())
            continue;
        CA_CelKey key = drawingKeyAt(module, frame);
        if (key.isValid())
            elements.insert(SelectionElement(module, std::move(key), frame, true));
    }
}
