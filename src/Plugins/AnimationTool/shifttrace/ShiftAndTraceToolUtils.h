// Small helpers of the Shift and Trace tool on the host's node selection and scene.
//
// The tool's own selection (ShiftAndTraceSelection) holds drawings; the host's node selection
// holds element modules. These helpers are the one place where the tool reads and changes the
// latter. All accept null where a module is taken and then do nothing (or answer false/empty).
#pragma once

#include "host/HostAPI.h"

#include <vector>

namespace ShiftAndTraceToolUtils {

// Adds the module to the node selection of the plug-in's session.
void selectElement(MO_ElementModule *module);
// Takes the module out of the node selection.
void deselectElement(MO_ElementModule *module);
// Whether the module is selected as a node.
bool elementIsSelected(MO_ElementModule const *module);
// The selected element modules, in the order of the node selection; `modules` is emptied first.
void selectedElementModules(std::vector<MO_ElementModule *> &modules);
// The same, keeping only the modules that hold a Shift and Trace attribute.
void selectedShiftedElementModules(std::vector<MO_ElementModule *> &modules);

} // namespace ShiftAndTraceToolUtils
