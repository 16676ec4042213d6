#include "shifttrace/ShiftAndTraceToolUtils.h"

#include <algorithm>

void ShiftAndTraceToolUtils::selectElement(MO_ElementModule *module)
{
    if (module)
        SL_SelectionUtil::addToSelection(PLUG_Services::getSelection(), module);
}

void ShiftAndTraceToolUtils::deselectElement(MO_ElementModule *module)
{
    if (module)
        SL_SelectionUtil::removeFromSelection(PLUG_Services::getSelection(), module);
}

bool ShiftAndTraceToolUtils::elementIsSelected(MO_ElementModule const *module)
{
    return module && module->selected();
}

void ShiftAndTraceToolUtils::selectedElementModules(std::vector<MO_ElementModule *> &modules)
{
    modules.clear();
    for (MO_Node *node : SL_SelectionUtil::getNodes(PLUG_Services::getSelection()))
        if (auto *element = dynamic_cast<MO_ElementModule *>(node))
            modules.push_back(element);
}

void ShiftAndTraceToolUtils::selectedShiftedElementModules(std::vector<MO_ElementModule *> &modules)
{
    selectedElementModules(modules);
    modules.erase(std::remove_if(modules.begin(), modules.end(),
                                 [](MO_ElementModule *m) { return !AT_ShiftAndTraceUtil::shiftAndTraceFor(m); }),
                  modules.end());
}

